#include "bridge/MacroRunner.h"

#include <optional>

#include "platform/Platform.h"
#include "support/Text.h"

namespace velmora {

namespace {

// The body every runner shares: log, run once, log the error if any.
// `beforeRunning` is empty for the runners that log nothing first.
platform::ScriptOutcome runMacro(const std::string& command, const std::optional<std::string>& beforeRunning,
                                 const char* errorPrefix) {
    const std::string script = macroScript(command);
    if (beforeRunning) platform::nslog(*beforeRunning);
    auto outcome = platform::runScript(script);
    if (outcome.created && outcome.error) {
        platform::nslog(std::string(errorPrefix) + platform::describe(*outcome.error));
    }
    return outcome;
}

std::string withArgs(const std::string& prefix, const std::vector<std::string>& arguments) {
    return prefix + support::arrayDescription(arguments);
}

}  // namespace

std::string plainMacroCommand(const std::string& macroName) { return "run VB macro macro name \"" + macroName + "\""; }

std::string macroCommandWithParameters(const std::string& macroName, const std::vector<std::string>& arguments) {
    std::string command = "run VB macro macro name \"" + macroName + "\" list of parameters {";
    for (std::size_t i = 0; i < arguments.size(); ++i) {
        if (i) command += ", ";
        command += '"';
        command += arguments[i];
        command += '"';
    }
    command += '}';
    return command;
}

std::string returningMacroCommand(const std::string& macroName) { return "return " + plainMacroCommand(macroName); }

std::string macroScript(const std::string& command) {
    return "tell application \"Microsoft PowerPoint\"\n    " + command + "\nend tell";
}

// formatFixed ignores the C locale, so a decimal-comma locale still gets "0.50".
std::string tintText(double tint) { return support::formatFixed(tint, 2); }

void runPowerPointMacro(const std::string& macroName) {
    runMacro(plainMacroCommand(macroName), "VL: Executing " + macroName, "VL: AppleScript Error: ");
}

void runPowerPointMacroWithArguments(const std::string& macroName, const std::vector<std::string>& arguments) {
    runMacro(macroCommandWithParameters(macroName, arguments),
             withArgs("VL: Executing " + macroName + " with args: ", arguments), "VL: AppleScript Error: ");
}

void runInsertLineMacroWithArguments(const std::string& macroName, const std::vector<std::string>& arguments) {
    runMacro(macroCommandWithParameters(macroName, arguments),
             withArgs("Executing " + macroName + " with args: ", arguments), "AppleScript Error: ");
}

void runInsertLineMacroWithArguments(const std::vector<std::string>& arguments) {
    runMacro(macroCommandWithParameters("InsertLine", arguments), withArgs("VL: Executing with args: ", arguments),
             "VL: AppleScript Error: ");
}

void runInsertIconWithArguments(const std::vector<std::string>& arguments) {
    runMacro(macroCommandWithParameters("InsertIconSvgIntoPowerPoint", arguments),
             withArgs("VL: Executing Insert Icons with args: ", arguments), "VL: AppleScript Error: ");
}

void runInsertImageWithArguments(const std::vector<std::string>& arguments) {
    runMacro(macroCommandWithParameters("InsertImageIntoPowerPoint", arguments),
             withArgs("VL: Executing InsertImageIntoPowerPoint with args: ", arguments), "VL: AppleScript Error: ");
}

void runInsertSlideWithArguments(const std::vector<std::string>& arguments) {
    runMacro(macroCommandWithParameters("InsertFromSlideLibrary", arguments),
             withArgs("VL: Executing with args: ", arguments), "VL: AppleScript Error: ");
}

void runInsertTemplatesWithArguments(const std::vector<std::string>& arguments) {
    runMacro(macroCommandWithParameters("InsertFromTemplateLibrary", arguments),
             withArgs("VL: Executing with args: ", arguments), "VL: AppleScript Error: ");
}

void runColorMacroNoArgs(const std::string& macroName) {
    runMacro(plainMacroCommand(macroName), "ColorBar: Executing " + macroName, "ColorBar: AppleScript Error: ");
}

void runColorMacroWithHex(const std::string& macroName, const std::vector<std::string>& arguments, double tint) {
    const std::string tintValue = tintText(tint);
    if (arguments.empty()) return;
    const std::string command =
        "run VB macro macro name \"" + macroName + "\" list of parameters {\"" + arguments.front() + "\", " + tintValue + "}";
    runMacro(command, std::nullopt, "ColorBar: AppleScript Error: ");
}

void triggerRecommendationUpdateMacro() {
    runMacro(plainMacroCommand("CallTriggerAssistant"), "Assistant: Executing", "Assistant: AppleScript Error: ");
}

bool getEnableKeyboardShortcuts() {
    auto outcome = runMacro(returningMacroCommand("GetEnableKeyboardShortcuts"), std::nullopt, "VL: AppleScript Error: ");
    if (!outcome.created || outcome.error || !outcome.stringValue) return true;
    return support::lowercased(*outcome.stringValue) == "true";
}

}  // namespace velmora
