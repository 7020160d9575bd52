#include <gtest/gtest.h>

#include <memory>
#include <string>

#include "bridge/Exports.h"
#include "fake/FakePlatform.h"
#include "toolwindows/LinesPalette.h"
#include "toolwindows/TableBuilder.h"

namespace velmora {
namespace {

using ui::Node;

TEST(TableCount, ReadsTheTextAsAnIntegerOrFallsBackToThree) {
    EXPECT_EQ(tableCount("4"), 4);
    EXPECT_EQ(tableCount("007"), 7);
    EXPECT_EQ(tableCount("-2"), -2);
    EXPECT_EQ(tableCount("+5"), 5);
    EXPECT_EQ(tableCount("-0"), 0);
    EXPECT_EQ(tableCount("0"), 0);
    EXPECT_EQ(tableCount("9223372036854775807"), 9223372036854775807);
    EXPECT_EQ(tableCount("-9223372036854775808"), std::numeric_limits<long long>::min());
    for (const char* bad : {"", "abc", " 5", "5 ", "1 000", "+-5", "--5", "+", "-", "0x10", "1e3", "12345678901234567890",
                            "9223372036854775808", "\xC3\xA9"}) {
        EXPECT_EQ(tableCount(bad), 3) << bad;
    }
}

TEST(TableCount, SendsSevenQuotedValuesWithFlagsInCapitals) {
    EXPECT_EQ(insertTableArguments({}), (std::vector<std::string>{"3", "3", "False", "False", "False", "False", "False"}));
    TableBuilderValues values{"007", "-2", true, false, true, false, true};
    EXPECT_EQ(insertTableArguments(values), (std::vector<std::string>{"7", "-2", "True", "False", "True", "False", "True"}));
}

TEST(LineArrows, DrawShaftAndHeadFromTheRectangle) {
    using E = ui::PathElement;
    const platform::Rect box{0, 0, 80, 10};  // head 12 wide
    EXPECT_EQ(triangleLineArrow(box), (std::vector<E>{{E::Kind::rect, 0, 4.5, 68, 1},
                                                      {E::Kind::move, 68, -1},
                                                      {E::Kind::line, 80, 5},
                                                      {E::Kind::line, 68, 11},
                                                      {E::Kind::close}}));
    EXPECT_EQ(openLineArrow(box), (std::vector<E>{{E::Kind::rect, 0, 4.95, 68, 0.1},
                                                  {E::Kind::move, 68, -1},
                                                  {E::Kind::line, 80, 5},
                                                  {E::Kind::move, 68, 11},
                                                  {E::Kind::line, 80, 5}}));
    const auto circle = circleLineArrow({10, 20, 100, 40});  // head 15, circle 12 across
    ASSERT_EQ(circle.size(), 2u);
    EXPECT_EQ(circle[0], (E{E::Kind::rect, 10, 39.5, 85, 1}));
    EXPECT_DOUBLE_EQ(circle[1].x, 95 + 1.5);
    EXPECT_DOUBLE_EQ(circle[1].y, 40 - 6);
    EXPECT_DOUBLE_EQ(circle[1].width, 12);
}

class ToolWindowsTest : public testing::PlatformTest {
protected:
    void SetUp() override {
        PlatformTest::SetUp();
        globalTableController().reset();
        globalLineController().reset();
        document = std::make_shared<hosts::MemoryWindow>("CUIDocumentShellWindow", nullptr);
        fake.views->addWindow(document);
        fake.views->setKeyWindow(document);
        // The host keeps what it is handed for each window.
        auto ports = std::make_shared<platform::Platform>(platform::get());
        ports->panes = std::make_shared<Recorder>(*this);
        platform::install(ports);
    }

    void openTable(const char* rows = "4", const char* columns = "5", bool headerRow = true) {
        initializeTablesOverlay(rows, columns, headerRow, false, true, false, false);
        fake.dispatch->runUntilIdle();
    }

    // The access the host got for the newest window of that title.
    const platform::PaneAccess& access(const std::string& title) {
        auto window = newest(title);
        for (auto it = windows.rbegin(); it != windows.rend(); ++it) {
            if (it->first.lock() == window) return it->second;
        }
        ADD_FAILURE() << "no access for " << title;
        static platform::PaneAccess none;
        return none;
    }
    std::shared_ptr<platform::ToolWindow> newest(const std::string& title) {
        std::shared_ptr<platform::ToolWindow> found;
        for (const auto& window : fake.views->windows()) {
            auto tool = std::dynamic_pointer_cast<platform::ToolWindow>(window);
            if (tool && tool->title() == title) found = tool;
        }
        return found;
    }
    int visibleTools() {
        int count = 0;
        for (const auto& window : fake.views->windows()) {
            if (std::dynamic_pointer_cast<platform::ToolWindow>(window) && window->isVisible()) ++count;
        }
        return count;
    }
    std::optional<platform::Event> press(std::uint16_t keyCode) {
        platform::Event event;
        event.keyCode = keyCode;
        return fake.events->dispatch(event);
    }

    std::shared_ptr<hosts::MemoryWindow> document;
    std::vector<std::pair<std::weak_ptr<platform::ToolWindow>, platform::PaneAccess>> windows;

    struct Recorder : platform::PaneHostPort {
        explicit Recorder(ToolWindowsTest& test) : test(test) {}
        void paneCreated(const std::shared_ptr<platform::View>&, platform::PaneAccess) override {}
        void windowCreated(const std::shared_ptr<platform::ToolWindow>& window, platform::PaneAccess access) override {
            test.windows.emplace_back(window, std::move(access));
        }
        ToolWindowsTest& test;
    };
};

TEST_F(ToolWindowsTest, OpensOneFloatingWindowWithTheValuesItWasGiven) {
    openTable();
    EXPECT_TRUE(fake.log->contains("Initializing Table Builder with rows: 4, columns: 5, headerRow: true, headerColumn: "
                                   "false, separatorLines: true, pasteContent: false, useReferenceShape: false"));
    auto window = newest("Insert Table");
    ASSERT_TRUE(window);
    EXPECT_TRUE(window->isVisible());
    EXPECT_EQ(window->level(), 3);
    EXPECT_EQ(fake.views->keyWindow(), window);
    EXPECT_EQ(fake.views->activationPolicy(), platform::ActivationPolicy::regular);
    auto memory = std::dynamic_pointer_cast<hosts::MemoryToolWindow>(window);
    EXPECT_EQ(memory->backgroundAlpha(), 0.9);
    EXPECT_TRUE(memory->isCentered());
    EXPECT_TRUE(memory->titlebarAppearsTransparent());
    EXPECT_FALSE(memory->isOpaque());
    // The window fits its content, 20 points taller, and never narrower than the view's minimum.
    EXPECT_GE(window->contentSize().width, 300);
    EXPECT_GT(window->contentSize().height, 100);
    EXPECT_EQ(fake.events->count(), 1u);

    const auto lines = access("Insert Table").describe();
    auto has = [&](const std::string& part) {
        return std::any_of(lines.begin(), lines.end(), [&](const auto& line) { return line.find(part) != std::string::npos; });
    };
    EXPECT_TRUE(has("textField \"4\" placeholder \"Rows\""));
    EXPECT_TRUE(has("textField \"5\" placeholder \"Columns\""));
    EXPECT_TRUE(has("toggle \"Title row\" on"));
    EXPECT_TRUE(has("toggle \"Title column\" off"));
}

TEST_F(ToolWindowsTest, ASecondCallReplacesTheWindowAndItsMonitor) {
    openTable();
    auto first = newest("Insert Table");
    openTable("9", "2");
    EXPECT_FALSE(first->isVisible());
    EXPECT_EQ(visibleTools(), 1);
    EXPECT_EQ(fake.events->count(), 1u) << "the old controller's monitor went with it";
    for (int i = 0; i < 100; ++i) initializeTablesOverlay("1", "1", false, false, false, false, false);
    fake.dispatch->runUntilIdle();
    EXPECT_EQ(visibleTools(), 1);
    EXPECT_EQ(fake.events->count(), 1u);
    EXPECT_TRUE(access("Insert Table").tap("Insert", 1));
    EXPECT_EQ(fake.script->scripts().back(),
              "tell application \"Microsoft PowerPoint\"\n    run VB macro macro name \"InsertTable\" list of parameters "
              "{\"1\", \"1\", \"False\", \"False\", \"False\", \"False\", \"False\"}\nend tell");
}

TEST_F(ToolWindowsTest, InsertSendsWhatIsTypedAndToggledThenCloses) {
    openTable("4", "5");
    const auto& host = access("Insert Table");
    EXPECT_TRUE(host.type("Rows", 1, "007"));
    EXPECT_TRUE(host.type("Columns", 1, "x"));
    EXPECT_TRUE(host.tap("Title row", 1));  // on to off
    EXPECT_TRUE(host.tap("Paste from Clipboard", 1));
    EXPECT_TRUE(host.pressDefault());  // Return presses Insert
    EXPECT_EQ(fake.script->macros(), std::vector<std::string>{"InsertTable"});
    EXPECT_TRUE(fake.log->contains(
        "VL: Executing InsertTable with args: [\"7\", \"3\", \"False\", \"False\", \"True\", \"True\", \"False\"]"));
    EXPECT_FALSE(newest("Insert Table")->isVisible());
    EXPECT_EQ(fake.views->keyWindow(), document) << "the key goes back to the document";
}

TEST_F(ToolWindowsTest, AFailingInsertIsLoggedAndTheWindowClosesAllTheSame) {
    openTable();
    fake.script->fail("InsertTable", {"The macro failed.", -2700});
    EXPECT_TRUE(access("Insert Table").tap("Insert", 1));
    EXPECT_TRUE(fake.log->contains("VL: AppleScript Error: {NSAppleScriptErrorMessage = \"The macro failed.\"; "
                                   "NSAppleScriptErrorNumber = -2700;}"));
    EXPECT_FALSE(newest("Insert Table")->isVisible());
}

TEST_F(ToolWindowsTest, CancelEscapeAndTheCloseBoxCloseAndSendNothing) {
    openTable();
    EXPECT_TRUE(access("Insert Table").tap("Cancel", 1));
    EXPECT_FALSE(newest("Insert Table")->isVisible());

    openTable();
    EXPECT_TRUE(press(36)) << "any other key passes";
    EXPECT_EQ(press(escapeKeyCode), std::nullopt) << "Escape with the window open is swallowed";
    EXPECT_FALSE(newest("Insert Table")->isVisible());
    EXPECT_TRUE(press(escapeKeyCode)) << "with no window open Escape passes";

    openTable();
    access("Insert Table").pressClose();
    EXPECT_FALSE(newest("Insert Table")->isVisible());
    EXPECT_TRUE(fake.script->scripts().empty());
}

TEST_F(ToolWindowsTest, ANullTextAtTheExportReadsAsEmpty) {
    initializeTablesOverlay(nullptr, "\xFF\xFE", false, false, false, false, false);
    fake.dispatch->runUntilIdle();
    EXPECT_TRUE(access("Insert Table").tap("Insert", 1));
    EXPECT_NE(fake.script->scripts().back().find("{\"3\", \"3\", "), std::string::npos);
}

TEST_F(ToolWindowsTest, IconsComeFromTheInstallFolderSvgFirst) {
    const std::string folder = tablesIconDirectory;
    platform::FilesPort& files = *fake.files;  // the port's default arguments
    ASSERT_TRUE(files.createDirectories(folder));
    ASSERT_TRUE(files.write(folder + "Rows.svg", "<svg xmlns=\"http://www.w3.org/2000/svg\"/>", false));
    ASSERT_TRUE(files.write(folder + "Rows.png", std::string("\x89PNG\r\n\x1a\n", 8), false));
    ASSERT_TRUE(files.write(folder + "Columns.png", std::string("\x89PNG\r\n\x1a\n", 8), false));
    ASSERT_TRUE(files.write(folder + "TitleRow.svg", "not an image", false));
    EXPECT_EQ(loadIcon("Rows").text, folder + "Rows.svg");
    EXPECT_EQ(loadIcon("Columns").text, folder + "Columns.png");
    EXPECT_EQ(loadIcon("TitleRow").kind, ui::Kind::symbol);
    EXPECT_EQ(loadIcon("TitleColumn").text, "questionmark.square");
}

TEST_F(ToolWindowsTest, TheSwitchAndButtonsCarryTheirLook) {
    openTable();
    auto hosting = globalTableController()->hostingView();
    const Node* on = ui::findActionable(hosting->tree(), "Title row");
    ASSERT_TRUE(on);
    const Node* track = ui::findNode(*on, [](const Node& n) { return n.kind == ui::Kind::roundedRectangle; });
    const Node* knob = ui::findNode(*on, [](const Node& n) { return n.kind == ui::Kind::circle; });
    ASSERT_TRUE(track && knob);
    EXPECT_EQ(track->mod.foreground, ui::colors::subtleRed);
    EXPECT_EQ(track->shapeCornerRadius, 8);
    const Node* knobBox = ui::findNode(*on, [](const Node& n) { return n.mod.offsetX != 0; });
    ASSERT_TRUE(knobBox);
    EXPECT_EQ(knobBox->mod.offsetX, 7);
    EXPECT_EQ(knobBox->mod.animation, 0.2);

    const Node* insert = ui::findActionable(hosting->tree(), "Insert");
    ASSERT_TRUE(insert);
    EXPECT_TRUE(insert->isDefaultAction);
    EXPECT_TRUE(ui::findNode(*insert, [](const Node& n) { return n.mod.background == ui::colors::subtleRed; }));
    const Node* cancel = ui::findActionable(hosting->tree(), "Cancel");
    ASSERT_TRUE(cancel);
    EXPECT_FALSE(cancel->isDefaultAction);
    EXPECT_TRUE(ui::findNode(*cancel, [](const Node& n) { return n.mod.foreground == ui::colors::subtleRed; }));
}

TEST_F(ToolWindowsTest, TheLinesPaletteSendsEachPresetsNumberAndStaysOpen) {
    initializeLinesOverlay();
    fake.dispatch->runUntilIdle();
    EXPECT_TRUE(fake.log->contains("Velmora Lines: toggling"));
    auto window = newest("Insert Lines");
    ASSERT_TRUE(window);
    EXPECT_EQ(std::dynamic_pointer_cast<hosts::MemoryToolWindow>(window)->backgroundAlpha(), 0.95);
    const auto& host = access("Insert Lines");
    for (const char* label : {"Default", "Strong", "Impact"}) {
        EXPECT_TRUE(host.tap(label, 1));
        EXPECT_TRUE(host.tap(label, 2));
    }
    for (const char* label : {"Triangle", "Open", "Circle"}) EXPECT_TRUE(host.tap(label, 1));
    std::vector<std::string> sent;
    for (const auto& script : fake.script->scripts()) {
        const auto open = script.find('{');
        sent.push_back(script.substr(open, script.find('}') - open + 1));
    }
    EXPECT_EQ(sent, (std::vector<std::string>{"{\"1\"}", "{\"4\"}", "{\"2\"}", "{\"5\"}", "{\"3\"}", "{\"6\"}", "{\"7\"}",
                                              "{\"8\"}", "{\"9\"}"}));
    EXPECT_TRUE(fake.log->contains("VL: Executing with args: [\"9\"]"));
    EXPECT_TRUE(window->isVisible());

    EXPECT_TRUE(host.hover("Triangle", 1, true));
    const Node* triangle = ui::findActionable(globalLineController()->hostingView()->tree(), "Triangle");
    EXPECT_EQ(triangle->children.at(0).mod.shadow->color, ui::colors::subtleRed.opacity(0.3));
    // The hovered option is ringed in the highlight colour, two points wide.
    const Node& ring = triangle->children.at(0).children.at(1);
    ASSERT_TRUE(ring.strokeStyle);
    EXPECT_EQ(ring.strokeStyle->color, ui::colors::subtleRed);
    EXPECT_EQ(ring.strokeStyle->width, 2);

    initializeLinesOverlay();
    fake.dispatch->runUntilIdle();
    EXPECT_FALSE(window->isVisible()) << "a second call opens a fresh palette";
    EXPECT_EQ(visibleTools(), 1);
    EXPECT_EQ(press(escapeKeyCode), std::nullopt);
    EXPECT_EQ(visibleTools(), 0);
}

TEST_F(ToolWindowsTest, TheBuilderEmbedsInAHostViewWithItsDefaults) {
    auto parent = std::make_shared<hosts::MemoryView>("NSView", platform::Rect{50, 60, 400, 300});
    auto embedded = embedTableBuilder(parent);
    EXPECT_EQ(parent->subviews().at(0), embedded);
    EXPECT_EQ(embedded->frame(), (platform::Rect{0, 0, 400, 300}));
    EXPECT_TRUE(embedded->autoresizesWithParent);
    EXPECT_TRUE(ui::findNode(embedded->tree(), [](const Node& n) { return n.kind == ui::Kind::textField && n.text == "3"; }));
}

}  // namespace
}  // namespace velmora
