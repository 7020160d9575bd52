#include <gtest/gtest.h>

#include <clocale>
#include <cstdio>
#include <functional>
#include <string>
#include <vector>

#include "bridge/MacroRunner.h"
#include "fake/FakePlatform.h"

namespace velmora {
namespace {

using testing::PlatformTest;
using Lines = std::vector<std::string>;

std::string script(const std::string& command) {
    return "tell application \"Microsoft PowerPoint\"\n    " + command + "\nend tell";
}

class MacroRunnerTest : public PlatformTest {};

struct Case {
    const char* name;
    std::function<void()> call;
    std::string command;
    std::string logBefore;  // empty: nothing is logged before running
    std::string errorPrefix;
};

// Every runner: its script to the byte, its first line, and its error line.
TEST_F(MacroRunnerTest, EachRunnerComposesItsScriptAndLogsItsOwnTexts) {
    const std::vector<std::string> two = {"a b", "C:\\x"};
    const std::vector<Case> cases = {
        {"plain", [] { runPowerPointMacro("AlignLeft"); }, "run VB macro macro name \"AlignLeft\"",
         "VL: Executing AlignLeft", "VL: AppleScript Error: "},
        {"with arguments", [&] { runPowerPointMacroWithArguments("InsertTable", {"3", "4", "True"}); },
         "run VB macro macro name \"InsertTable\" list of parameters {\"3\", \"4\", \"True\"}",
         "VL: Executing InsertTable with args: [\"3\", \"4\", \"True\"]", "VL: AppleScript Error: "},
        {"spare line runner", [&] { runInsertLineMacroWithArguments("InsertLine", two); },
         "run VB macro macro name \"InsertLine\" list of parameters {\"a b\", \"C:\\x\"}",
         "Executing InsertLine with args: [\"a b\", \"C:\\\\x\"]", "AppleScript Error: "},
        {"line runner", [&] { runInsertLineMacroWithArguments(two); },
         "run VB macro macro name \"InsertLine\" list of parameters {\"a b\", \"C:\\x\"}",
         "VL: Executing with args: [\"a b\", \"C:\\\\x\"]", "VL: AppleScript Error: "},
        {"icon", [] { runInsertIconWithArguments({"cat.svg", "Fill"}); },
         "run VB macro macro name \"InsertIconSvgIntoPowerPoint\" list of parameters {\"cat.svg\", \"Fill\"}",
         "VL: Executing Insert Icons with args: [\"cat.svg\", \"Fill\"]", "VL: AppleScript Error: "},
        {"image", [] { runInsertImageWithArguments({"https://x.test/a?b=1&c=2"}); },
         "run VB macro macro name \"InsertImageIntoPowerPoint\" list of parameters {\"https://x.test/a?b=1&c=2\"}",
         "VL: Executing InsertImageIntoPowerPoint with args: [\"https://x.test/a?b=1&c=2\"]", "VL: AppleScript Error: "},
        {"slide", [] { runInsertSlideWithArguments({"Slide 1.pptx", "False"}); },
         "run VB macro macro name \"InsertFromSlideLibrary\" list of parameters {\"Slide 1.pptx\", \"False\"}",
         "VL: Executing with args: [\"Slide 1.pptx\", \"False\"]", "VL: AppleScript Error: "},
        {"template", [] { runInsertTemplatesWithArguments({"pack/one", "True"}); },
         "run VB macro macro name \"InsertFromTemplateLibrary\" list of parameters {\"pack/one\", \"True\"}",
         "VL: Executing with args: [\"pack/one\", \"True\"]", "VL: AppleScript Error: "},
        {"colour, plain", [] { runColorMacroNoArgs("ClearFill"); }, "run VB macro macro name \"ClearFill\"",
         "ColorBar: Executing ClearFill", "ColorBar: AppleScript Error: "},
        {"colour with tint", [] { runColorMacroWithHex("ApplyFillColor", {"#FE6B6B", "ignored"}, -0.25); },
         "run VB macro macro name \"ApplyFillColor\" list of parameters {\"#FE6B6B\", -0.25}", "",
         "ColorBar: AppleScript Error: "},
        {"assistant refresh", [] { triggerRecommendationUpdateMacro(); },
         "run VB macro macro name \"CallTriggerAssistant\"", "Assistant: Executing", "Assistant: AppleScript Error: "},
        {"setting", [] { getEnableKeyboardShortcuts(); },
         "return run VB macro macro name \"GetEnableKeyboardShortcuts\"", "", "VL: AppleScript Error: "},
    };
    const std::string error = "{NSAppleScriptErrorMessage = \"boom\"; NSAppleScriptErrorNumber = -2753;}";
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        for (bool failing : {false, true}) {
            testing::FakePlatform fresh;
            fresh.install();
            if (failing) {
                const auto macro = testing::macroNameIn(script(c.command));
                fresh.script->fail(macro, {"boom", -2753});
            }
            c.call();
            EXPECT_EQ(fresh.script->scripts(), Lines{script(c.command)});
            Lines expected;
            if (!c.logBefore.empty()) expected.push_back(c.logBefore);
            if (failing) expected.push_back(c.errorPrefix + error);
            EXPECT_EQ(fresh.log->lines(), expected);
        }
    }
}

TEST_F(MacroRunnerTest, ArgumentsGoInUnescapedAndEmptyArraysGiveEmptyBraces) {
    runPowerPointMacroWithArguments("M", {});
    runPowerPointMacroWithArguments("M", {"say \"hi\"\nnow"});
    runInsertIconWithArguments({});
    EXPECT_EQ(fake.script->scripts(),
              (Lines{script("run VB macro macro name \"M\" list of parameters {}"),
                     script("run VB macro macro name \"M\" list of parameters {\"say \"hi\"\nnow\"}"),
                     script("run VB macro macro name \"InsertIconSvgIntoPowerPoint\" list of parameters {}")}));
    EXPECT_EQ(fake.log->lines()[1], "VL: Executing M with args: [\"say \\\"hi\\\"\\nnow\"]");
}

TEST_F(MacroRunnerTest, ColourMacroWithNoArgumentsRunsAndLogsNothing) {
    runColorMacroWithHex("ApplyFontColor", {}, 0.5);
    EXPECT_TRUE(fake.script->scripts().empty());
    EXPECT_TRUE(fake.log->lines().empty());
}

TEST_F(MacroRunnerTest, TintIsABarePointNumberEvenUnderADecimalCommaLocale) {
    const char* previous = std::setlocale(LC_ALL, nullptr);
    const std::string saved = previous ? previous : "C";
    if (!std::setlocale(LC_ALL, "de_DE.UTF-8")) GTEST_SKIP() << "locale de_DE.UTF-8 is not installed";
    char probe[16];
    std::snprintf(probe, sizeof probe, "%.2f", 0.5);
    EXPECT_STREQ(probe, "0,50") << "the locale should write a decimal comma";

    runColorMacroWithHex("ApplyBorderColor", {"#112233"}, 0.5);
    EXPECT_EQ(tintText(0.5), "0.50");
    EXPECT_EQ(tintText(-0.125), "-0.12");  // round half to even, as %.2f does
    EXPECT_EQ(tintText(1), "1.00");
    std::setlocale(LC_ALL, saved.c_str());
    EXPECT_EQ(fake.script->scripts(),
              Lines{script("run VB macro macro name \"ApplyBorderColor\" list of parameters {\"#112233\", 0.50}")});
}

TEST_F(MacroRunnerTest, ShortcutSettingFailsOpen) {
    struct Answer {
        std::function<void(testing::FakeScript&)> arrange;
        bool enabled;
    };
    const std::vector<std::pair<const char*, Answer>> answers = {
        {"true", {[](auto& s) { s.answer("GetEnableKeyboardShortcuts", "true"); }, true}},
        {"TRUE", {[](auto& s) { s.answer("GetEnableKeyboardShortcuts", "TRUE"); }, true}},
        {"tRuE", {[](auto& s) { s.answer("GetEnableKeyboardShortcuts", "tRuE"); }, true}},
        {"false", {[](auto& s) { s.answer("GetEnableKeyboardShortcuts", "false"); }, false}},
        {"0", {[](auto& s) { s.answer("GetEnableKeyboardShortcuts", "0"); }, false}},
        {"empty", {[](auto& s) { s.answer("GetEnableKeyboardShortcuts", ""); }, false}},
        {"true with a blank", {[](auto& s) { s.answer("GetEnableKeyboardShortcuts", "true "); }, false}},
        {"no string value", {[](auto&) {}, true}},
        {"error", {[](auto& s) { s.fail("GetEnableKeyboardShortcuts"); }, true}},
        {"error that comes with a value",
         {[](auto& s) {
              s.respond("GetEnableKeyboardShortcuts", {true, platform::ScriptError{"failed", -1}, "false"});
          },
          true}},
        {"no script object", {[](auto& s) { s.refuseToCreate(); }, true}},
    };
    for (const auto& [name, answer] : answers) {
        SCOPED_TRACE(name);
        testing::FakePlatform fresh;
        fresh.install();
        answer.arrange(*fresh.script);
        EXPECT_EQ(getEnableKeyboardShortcuts(), answer.enabled);
    }
}

TEST_F(MacroRunnerTest, AScriptThatCannotBeMadeLogsOnlyTheFirstLine) {
    fake.script->refuseToCreate();
    fake.script->fail("AlignTop");
    runPowerPointMacro("AlignTop");
    EXPECT_EQ(fake.log->lines(), Lines{"VL: Executing AlignTop"});
}

}  // namespace
}  // namespace velmora
