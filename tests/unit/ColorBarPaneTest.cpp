#include <gtest/gtest.h>

#include <memory>
#include <string>

#include "bridge/Exports.h"
#include "colorbar/ColorBarPane.h"
#include "fake/FakePlatform.h"
#include "ui/HostingView.h"

namespace velmora {
namespace {

using ui::Node;

constexpr const char* tenColours = "#000000,#FFFFFF,#44546A,#E7E6E6,#4472C4,#ED7D31,#A5A5A5,#FFC000,#5B9BD5,#70AD47";

std::string colorScript(const std::string& macro, const std::string& parameters) {
    return "tell application \"Microsoft PowerPoint\"\n    run VB macro macro name \"" + macro + "\"" + parameters +
           "\nend tell";
}

class ColorBarPaneTest : public testing::PlatformTest {
protected:
    void SetUp() override {
        PlatformTest::SetUp();
        // The manager's slots live as long as the process; each test starts without a pane.
        ColorBarContentManager::hostingController().reset();
        fake.script->answer("GetThemeColorsHexCsv", tenColours);
    }

    // Loads the pane's content as the task pane manager does and lays it out.
    void open() {
        ColorBarContentManager::loadColorBarView([&](std::shared_ptr<platform::View> view) {
            pane = std::dynamic_pointer_cast<ui::HostingView>(view);
        });
        ASSERT_TRUE(pane) << "the view is handed over at once";
        pane->setFrame({0, 0, 120, 700});
        pane->layout();
    }

    const Node& tree() { return pane->tree(); }

    // A user's tap: the action of the n-th control so labelled, then a redraw.
    void tap(const std::string& label, int n = 1) {
        auto hits = ui::findActionables(tree(), label);
        ASSERT_GE(hits.size(), static_cast<std::size_t>(n)) << label;
        auto action = hits[n - 1]->action;
        action();
        pane->invalidate();
    }

    const Node& chip(const std::string& label, int n = 1) {
        auto hits = ui::findActionables(tree(), label);
        EXPECT_GE(hits.size(), static_cast<std::size_t>(n)) << label;
        return *hits.at(n - 1);
    }
    // The colour a fill chip shows: the filled shape inside its content.
    ui::Color fillOf(const std::string& label, int n = 1) { return *chip(label, n).children.at(2).children.at(0).mod.foreground; }

    std::vector<std::string> rowNames() {
        std::vector<std::string> names;
        for (const auto& row : ColorBarContentManager::activeViewModel().lock()->rows.get()) names.push_back(row.name);
        return names;
    }

    std::shared_ptr<ui::HostingView> pane;
};

TEST_F(ColorBarPaneTest, HandsOverItsViewFirstAndThenFetchesTheTheme) {
    open();
    EXPECT_FALSE(pane->translatesAutoresizingMaskIntoConstraints);
    EXPECT_EQ(pane->horizontalContentHuggingPriority, 750);
    EXPECT_EQ(pane->horizontalCompressionResistancePriority, 1000);
    EXPECT_EQ(ColorBarContentManager::hostingController(), pane);
    // Until the fetch is back the chips show the fallback theme's named colours.
    EXPECT_TRUE(fake.script->scripts().empty());
    EXPECT_EQ(fake.dispatch->globalQualities(), std::vector{platform::QualityOfService::userInitiated});
    EXPECT_EQ(fillOf("Apply Fill", 9), ui::colors::purple);

    fake.dispatch->runUntilIdle();
    EXPECT_EQ(fake.script->macros(), std::vector<std::string>{"GetThemeColorsHexCsv"});
    EXPECT_EQ(fillOf("Apply Fill", 9), ui::Color::rgb255(0x5B, 0x9B, 0xD5));
}

TEST_F(ColorBarPaneTest, AShortReplyLeavesTheThemeSectionEmptyUnderItsHeading) {
    fake.script->answer("GetThemeColorsHexCsv", "#111111,#222222,#333333");
    open();
    fake.dispatch->runUntilIdle();
    EXPECT_EQ(rowNames(), (std::vector<std::string>{"Dark1", "Light1", "Dark2"}));
    EXPECT_EQ(ui::findActionables(tree(), "Apply Fill").size(), 3u);
    const Node& column = tree().children.at(0);  // scroll > vstack
    ASSERT_FALSE(column.children.empty());
    EXPECT_TRUE(ui::findText(column.children.back(), "Theme Colors"));
    EXPECT_TRUE(ui::findText(tree(), "Base Colors"));

    // The three sections in order, a divider between each two.
    std::vector<std::string> outline;
    for (const Node& item : column.children) {
        if (item.kind == ui::Kind::divider) outline.push_back("---");
        for (const char* heading : {"Transparent", "Base Colors", "Theme Colors"}) {
            if (ui::findText(item, heading)) outline.push_back(heading);
        }
    }
    EXPECT_EQ(outline, (std::vector<std::string>{"Transparent", "---", "Base Colors", "---", "Theme Colors"}));
}

TEST_F(ColorBarPaneTest, RepliesThatGiveNoRowsKeepWhatIsShown) {
    open();
    for (const char* reply : {"", ",,,"}) {
        fake.script->answer("GetThemeColorsHexCsv", reply);
        ColorBarContentManager::activeViewModel().lock()->refreshFromTheme();
        fake.dispatch->runUntilIdle();
        EXPECT_EQ(rowNames().size(), 10u) << reply;
        EXPECT_EQ(fillOf("Apply Fill", 9), ui::colors::purple) << "still the fallback after " << reply;
    }
    fake.script->fail("GetThemeColorsHexCsv");
    triggerColorThemeRefresh();
    fake.dispatch->runUntilIdle();
    EXPECT_EQ(fillOf("Apply Fill", 9), ui::colors::purple);
    EXPECT_TRUE(fake.log->contains("ColorBar: 🎨 Theme refresh triggered from VBA"));
}

TEST_F(ColorBarPaneTest, AnUnfoldedRowStaysUnfoldedAcrossARefreshAndShadesTheNewColour) {
    open();
    fake.dispatch->runUntilIdle();
    tap("More Shades", 6);  // Accent2
    EXPECT_EQ(ui::findActionables(tree(), "Fill").size(), 5u);
    EXPECT_EQ(chip("More Shades", 6).children.at(2).children.at(0).mod.rotation, 180);
    EXPECT_EQ(chip("More Shades", 5).children.at(2).children.at(0).mod.rotation, 0);

    fake.script->answer("GetThemeColorsHexCsv", "#000000,#FFFFFF,#44546A,#E7E6E6,#4472C4,#00FF00,#A5A5A5,#FFC000,#5B9BD5,#70AD47");
    triggerColorThemeRefresh();
    fake.dispatch->runUntilIdle();
    EXPECT_EQ(ColorBarContentManager::activeViewModel().lock()->expandedThemes.get(), std::set<std::string>{"Accent2"});
    EXPECT_EQ(fillOf("Fill", 1), adjust(ui::Color{0, 1, 0, 1}, 0.8));
    EXPECT_EQ(fillOf("Fill", 5), adjust(ui::Color{0, 1, 0, 1}, -0.5));

    tap("More Shades", 6);
    EXPECT_TRUE(ui::findActionables(tree(), "Fill").empty());
}

// The pane follows the model's unfolded rows however they change, not only by its own taps.
TEST_F(ColorBarPaneTest, UnfoldingARowInTheModelRedrawsThePane) {
    open();
    fake.dispatch->runUntilIdle();
    ColorBarContentManager::activeViewModel().lock()->toggleExpansion("Accent2");
    EXPECT_EQ(ui::findActionables(tree(), "Fill").size(), 5u);
    ColorBarContentManager::activeViewModel().lock()->toggleExpansion("Accent2");
    EXPECT_TRUE(ui::findActionables(tree(), "Fill").empty());
}

TEST_F(ColorBarPaneTest, ATriggerWithoutALiveViewModelDoesNothing) {
    triggerColorThemeRefresh();
    fake.dispatch->runUntilIdle();
    EXPECT_TRUE(fake.script->scripts().empty());
    EXPECT_EQ(fake.log->lines(), std::vector<std::string>{"ColorBar: 🎨 Theme refresh triggered from VBA"});
}

TEST_F(ColorBarPaneTest, EachChipSendsItsMacroWithTheSlotNameAndABareTint) {
    open();
    fake.dispatch->runUntilIdle();
    const auto before = fake.script->scripts().size();
    tap("Apply Fill", 5);
    tap("Apply Fill", 5);  // two quick taps, two macros
    tap("Apply Border", 1);
    tap("Apply Font", 10);
    tap("More Shades", 5);
    tap("Fill", 1);
    tap("Border", 4);
    tap("Font", 5);
    tap("No Fill");
    tap("No Border");
    const auto scripts = fake.script->scripts();
    ASSERT_EQ(scripts.size() - before, 9u);
    EXPECT_EQ(scripts[before], colorScript("ApplyFillColor", " list of parameters {\"Accent1\", 0.00}"));
    EXPECT_EQ(scripts[before + 1], scripts[before]);
    EXPECT_EQ(scripts[before + 2], colorScript("ApplyBorderColor", " list of parameters {\"Dark1\", 0.00}"));
    EXPECT_EQ(scripts[before + 3], colorScript("ApplyFontColor", " list of parameters {\"Accent6\", 0.00}"));
    EXPECT_EQ(scripts[before + 4], colorScript("ApplyFillColor", " list of parameters {\"Accent1\", 0.80}"));
    EXPECT_EQ(scripts[before + 5], colorScript("ApplyBorderColor", " list of parameters {\"Accent1\", -0.25}"));
    EXPECT_EQ(scripts[before + 6], colorScript("ApplyFontColor", " list of parameters {\"Accent1\", -0.50}"));
    EXPECT_EQ(scripts[before + 7], colorScript("ClearFill", ""));
    EXPECT_EQ(scripts[before + 8], colorScript("ClearBorder", ""));
    // Only the two clears log before running.
    EXPECT_TRUE(fake.log->contains("ColorBar: Executing ClearFill"));
    EXPECT_FALSE(fake.log->contains("ColorBar: Executing ApplyFillColor"));
}

TEST_F(ColorBarPaneTest, AFailingColourMacroIsLoggedAndChangesNothing) {
    open();
    fake.dispatch->runUntilIdle();
    fake.script->fail("ApplyFillColor", {"The macro failed.", -2700});
    tap("Apply Fill", 2);
    EXPECT_TRUE(fake.log->contains(
        "ColorBar: AppleScript Error: {NSAppleScriptErrorMessage = \"The macro failed.\"; NSAppleScriptErrorNumber = -2700;}"));
    EXPECT_EQ(rowNames().size(), 10u);
}

TEST_F(ColorBarPaneTest, ATapPressesAndFlashesTheChipAndLetsGoTwoTenthsLater) {
    open();
    fake.dispatch->runUntilIdle();
    bool pressedWhileRunning = false;
    fake.script->onMacro("ApplyFillColor", [&] { pressedWhileRunning = true; });
    tap("Apply Fill", 5);
    EXPECT_TRUE(pressedWhileRunning) << "the macro runs at once, not after the release";
    auto pressed = [&] { return chip("Apply Fill", 5).mod.scale == 0.95; };
    auto flashColor = [&] { return *chip("Apply Fill", 5).children.at(1).mod.foreground; };
    EXPECT_TRUE(pressed());
    EXPECT_EQ(flashColor(), ui::colors::white.opacity(0.4));
    EXPECT_FALSE(chip("Apply Fill", 4).mod.scale == 0.95) << "only the tapped chip";

    fake.dispatch->advance(0.19);
    EXPECT_TRUE(pressed());
    fake.dispatch->advance(0.01);
    EXPECT_FALSE(pressed());
    EXPECT_EQ(flashColor(), ui::colors::clear);
}

TEST_F(ColorBarPaneTest, HoverGreysTheChipUntilThePointerLeaves) {
    open();
    auto hoverColor = [&] { return *chip("Apply Border", 3).children.at(0).mod.foreground; };
    auto hover = [&](bool inside) {
        auto onHover = chip("Apply Border", 3).onHover;
        onHover(inside);
    };
    EXPECT_EQ(hoverColor(), ui::colors::clear);
    hover(true);
    EXPECT_EQ(hoverColor(), ui::colors::gray.opacity(0.15));
    hover(false);
    EXPECT_EQ(hoverColor(), ui::colors::clear);
}

TEST_F(ColorBarPaneTest, TheLayoutCarriesItsSizes) {
    open();
    const Node& root = tree();
    EXPECT_EQ(root.kind, ui::Kind::scroll);
    EXPECT_EQ(root.mod.frame.minWidth, 70);
    EXPECT_EQ(root.mod.frame.idealWidth, 85);
    EXPECT_EQ(root.mod.frame.maxWidth, 95);
    const Node& column = root.children.at(0);
    EXPECT_EQ(column.spacing, 6);
    EXPECT_EQ(column.mod.padding, (ui::Edges{4, 4, 4, 4}));
    EXPECT_EQ(column.mod.frame.maxWidth, 95);

    const Node& noFill = chip("No Fill");
    EXPECT_EQ(noFill.mod.frame.width, 18);
    EXPECT_EQ(noFill.mod.frame.height, 16);
    EXPECT_EQ(noFill.mod.cornerRadius, 4);
    const Node* slash = ui::findNode(noFill, [](const Node& n) { return n.kind == ui::Kind::line; });
    ASSERT_TRUE(slash);
    EXPECT_EQ(slash->lineInset, 2);
    EXPECT_EQ(slash->strokeStyle->width, 2);
    EXPECT_EQ(slash->strokeStyle->cap, ui::LineCap::round);
    EXPECT_EQ(slash->strokeStyle->color, ui::colors::red.opacity(0.85));
    const Node* board = ui::findNode(noFill, [](const Node& n) { return n.kind == ui::Kind::checkerboard; });
    ASSERT_TRUE(board);
    EXPECT_EQ(board->tile, 2);

    tap("More Shades", 1);
    const Node* shadeRow = ui::findNode(tree(), [](const Node& n) { return n.mod.identity == "0.80"; });
    ASSERT_TRUE(shadeRow);
    ASSERT_EQ(shadeRow->children.size(), 4u);
    EXPECT_EQ(shadeRow->children[3].mod.frame.width, 12);
    EXPECT_EQ(shadeRow->spacing, 4);
    // The shade's font chip has no glow; the row's has.
    EXPECT_FALSE(chip("Font").children.at(2).mod.shadow);
    EXPECT_EQ(chip("Apply Font").children.at(2).children.at(0).mod.shadow->color, ui::colors::black.opacity(0.55));
}

}  // namespace
}  // namespace velmora
