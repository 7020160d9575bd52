#include <gtest/gtest.h>

#include <memory>
#include <string>

#include "assistant/AssistantPane.h"
#include "assistant/AssistantViewModel.h"
#include "bridge/Exports.h"
#include "fake/FakePlatform.h"
#include "hosts/common/MemoryViews.h"
#include "taskpane/TaskpaneManager.h"
#include "ui/HostingView.h"

namespace velmora {
namespace {

using ui::Node;

ShortcutRecommendation row(std::string name, std::vector<std::string> keys, std::string image = "AlignLeft.png",
                           std::string timeSaved = "-3s") {
    ShortcutRecommendation recommendation;
    recommendation.Name = std::move(name);
    recommendation.Keys = std::move(keys);
    recommendation.ImagePath = std::move(image);
    recommendation.TimeSaved = std::move(timeSaved);
    return recommendation;
}

const Node* rowNode(const Node& tree, const ShortcutRecommendation& recommendation) {
    auto id = recommendation.id.uuidString();
    return ui::findNode(tree, [&](const Node& node) { return node.mod.identity == id; });
}

class AssistantPaneTest : public testing::PlatformTest {
protected:
    // Loads the pane's content as the task pane host would and lays it out.
    std::shared_ptr<ui::HostingView> open(double width) {
        std::shared_ptr<platform::View> made;
        AssistantContentManager::loadAssistantView([&](std::shared_ptr<platform::View> view) { made = view; });
        EXPECT_FALSE(made) << "made on the main queue, not inside the loader";
        fake.dispatch->advance(0);
        auto hosting = std::dynamic_pointer_cast<ui::HostingView>(made);
        hosting->setFrame({0, 0, width, 600});
        hosting->layout();
        return hosting;
    }
    AssistantViewModel& model = AssistantViewModel::shared();
};

// A pane twice the base width draws every length of a row twice as large.
TEST(AssistantRowTest, EveryLengthOfARowScalesWithThePane) {
    const auto shortcut = row("Align Left", {"Ctrl", "Shift", "L"});
    for (double scale : {1.0, 2.0}) {
        SCOPED_TRACE(scale);
        const Node card = assistantShortcutRowView(shortcut, "/icons/", scale, false, {}, true, [] {});
        EXPECT_EQ(card.spacing, 4 * scale);
        EXPECT_EQ(card.mod.padding, (ui::Edges{8 * scale, 8 * scale, 8 * scale, 8 * scale}));
        EXPECT_EQ(card.mod.cornerRadius, 5 * scale);
        ASSERT_EQ(card.children.size(), 2u);
        const Node& caps = card.children[1];
        EXPECT_EQ(caps.spacing, 4 * scale) << "the gap between key caps";
        ASSERT_EQ(caps.children.size(), 3u);
        EXPECT_EQ(caps.children[0].mod.cornerRadius, 3 * scale);
        EXPECT_EQ(caps.children[0].mod.font->size, 11 * scale);
        EXPECT_EQ(ui::findText(card, "Align Left")->mod.font->size, 12 * scale);
    }
}

TEST_F(AssistantPaneTest, ARowGlowsFullyAfterTwoTenthsAndIsDarkHalfASecondLater) {
    auto pane = open(250);
    auto first = row("Align Left", {"Ctrl", "Cmd", "←"});
    model.recommendations.set({first});
    auto glowOf = [&](const ShortcutRecommendation& r) { return rowNode(pane->tree(), r)->mod.shadow; };
    EXPECT_EQ(glowOf(first)->radius, 0);
    EXPECT_EQ(glowOf(first)->color, ui::colors::green.opacity(0));

    fake.dispatch->advance(0.1);
    EXPECT_GT(glowOf(first)->color.alpha, 0.5);
    EXPECT_LT(glowOf(first)->color.alpha, 1);
    fake.dispatch->advance(0.1);
    EXPECT_EQ(glowOf(first)->radius, 10);
    EXPECT_EQ(glowOf(first)->color, ui::colors::green);
    fake.dispatch->advance(0.45);
    EXPECT_GT(glowOf(first)->color.alpha, 0);
    EXPECT_LT(glowOf(first)->radius, 1);
    fake.dispatch->advance(0.05);
    EXPECT_EQ(glowOf(first)->radius, 0);
    EXPECT_EQ(glowOf(first)->color.alpha, 0);

    // The same rows again appear nowhere new: nothing glows.
    model.recommendations.set({first});
    fake.dispatch->advance(0.2);
    EXPECT_EQ(glowOf(first)->radius, 0);

    // A published change brings fresh rows, and all of them glow together.
    auto a = row("Align Left", {"Ctrl", "Cmd", "←"});
    auto b = row("Align Top", {"Ctrl", "Cmd", "↑"});
    model.recommendations.set({a, b});
    fake.dispatch->advance(0.2);
    EXPECT_EQ(glowOf(a)->radius, 10);
    EXPECT_EQ(glowOf(b)->radius, 10);
    fake.dispatch->advance(0.5);
    EXPECT_EQ(glowOf(b)->radius, 0);
}

TEST_F(AssistantPaneTest, MissedRowsGlowRedAndGlowAgainWhenTheSectionUnfolds) {
    auto missed = row("Group Shapes", {"Cmd", "Opt", "G"});
    model.missed.set({missed});
    auto pane = open(500);
    fake.dispatch->advance(0.2);
    EXPECT_EQ(rowNode(pane->tree(), missed)->mod.shadow->radius, 20);
    EXPECT_EQ(rowNode(pane->tree(), missed)->mod.shadow->color, ui::colors::red);

    // Folded during the glow and opened again: the old fade does not cut the new glow short.
    fake.dispatch->advance(0.1);
    ui::findActionable(pane->tree(), "Missed Shortcuts")->action();
    ui::findActionable(pane->tree(), "Missed Shortcuts")->action();
    fake.dispatch->advance(0.2);
    EXPECT_EQ(rowNode(pane->tree(), missed)->mod.shadow->radius, 20);
    fake.dispatch->advance(0.5);
    EXPECT_EQ(rowNode(pane->tree(), missed)->mod.shadow->radius, 0);
}

TEST_F(AssistantPaneTest, AClosedPaneLeavesTimersAndObserversHarmless) {
    auto pane = open(250);
    model.recommendations.set({row("Align Left", {"Ctrl"})});
    pane.reset();
    model.recommendations.set({row("Align Top", {"Ctrl"})});
    fake.dispatch->advance(1);
    SUCCEED();
}

TEST_F(AssistantPaneTest, AnIconInstalledWhileThePaneIsOpenShowsAtTheNextDrawing) {
    auto pane = open(250);
    auto first = row("Align Left", {"Ctrl"}, "Late.png");
    model.recommendations.set({first});
    auto icon = [&] {
        return ui::findNode(*rowNode(pane->tree(), first), [](const Node& node) {
            return node.kind == ui::Kind::image || node.kind == ui::Kind::symbol;
        });
    };
    EXPECT_EQ(icon()->kind, ui::Kind::symbol);

    const std::string png("\x89PNG\r\n\x1a\n\0\0\0\rIHDR\0\0\0\x01\0\0\0\x01\x08\x06\0\0\0", 29);
    platform::FilesPort& files = *fake.files;  // the port's default arguments
    ASSERT_TRUE(files.createDirectories(assistantIconDirectory));
    ASSERT_TRUE(files.write(std::string(assistantIconDirectory) + "Late.png", png, false));
    pane->invalidate();
    EXPECT_EQ(icon()->kind, ui::Kind::image);
}

TEST_F(AssistantPaneTest, APaneLeftOpenKeepsStateOnlyForTheRowsItShows) {
    // Every publish brings rows with fresh ids; a day of them must not pile up.
    auto state = std::make_shared<AssistantPaneState>();
    auto pane = ui::HostingView::make([state](double width) { return state->body(width); });
    state->attach(pane);
    pane->setFrame({0, 0, 250, 600});
    for (int run = 0; run < 40; ++run) {
        model.recommendations.set({row("Align Left", {"Ctrl"}), row("Align Top", {"Ctrl"})});
        model.missed.set({row("Group", {"Cmd"})});
        pane->invalidate();
        pane->layout();
        fake.dispatch->advance(run % 2 ? 0.1 : 1);
    }
    pane->invalidate();
    pane->layout();
    EXPECT_GT(state->rowStateCount(), 0u) << "the rows on show still glow";
    EXPECT_LE(state->rowStateCount(), 9u) << "three maps, three rows at most";
    fake.dispatch->advance(2);
    SUCCEED() << "the pending steps of forgotten rows find nothing";
}

class AssistantPaneToggleTest : public AssistantPaneTest {
protected:
    void SetUp() override {
        AssistantPaneTest::SetUp();
        auto content = std::make_shared<hosts::MemoryView>("NSView", platform::Rect{0, 0, 1280, 800});
        split = std::make_shared<hosts::MemoryView>("CUITaskPaneSplitView", platform::Rect{0, 0, 1280, 760});
        content->addSubview(split);
        auto window = std::make_shared<hosts::MemoryWindow>("CUIDocumentShellWindow", content);
        fake.views->addWindow(window);
        fake.views->setKeyWindow(window);
    }
    std::shared_ptr<TaskpaneView> pane() const {
        auto views = split->subviews();
        return views.empty() ? nullptr : std::dynamic_pointer_cast<TaskpaneView>(views.back());
    }
    std::shared_ptr<hosts::MemoryView> split;
};

TEST_F(AssistantPaneToggleTest, BothExportsToggleTheirPanesWhoseContentScalesWithThePane) {
    openAssistantTaskpane();
    EXPECT_TRUE(fake.log->contains("Assistant: 🟢 Dylib loaded successfully"));
    ASSERT_TRUE(pane());
    EXPECT_EQ(pane()->paneTitle, "Velmora Assistant");
    EXPECT_FALSE(pane()->contentView()) << "the content comes on the main queue";
    fake.dispatch->advance(0);
    auto content = std::dynamic_pointer_cast<ui::HostingView>(pane()->contentView());
    ASSERT_TRUE(content);
    pane()->widthConstraint->constant = 500;
    pane()->applyWidthConstraint();
    EXPECT_EQ(ui::findText(content->tree(), "Suggested Shortcuts")->mod.font->size, 28);
    EXPECT_EQ(content->tree().children.at(0).mod.padding, (ui::Edges{15, 10, 0, 10}));
    openAssistantTaskpane();
    EXPECT_FALSE(pane());

    openShortcutsTaskpane();
    EXPECT_TRUE(fake.log->contains("Shortcuts: 🟢 Dylib loaded successfully"));
    ASSERT_TRUE(pane());
    EXPECT_EQ(pane()->paneTitle, "Velmora Shortcuts");
    fake.dispatch->runUntilIdle();
    auto reference = std::dynamic_pointer_cast<ui::HostingView>(pane()->contentView());
    ASSERT_TRUE(reference);
    EXPECT_EQ(reference->tree().text, "Failed to load XML file");
    openShortcutsTaskpane();
    EXPECT_FALSE(pane());
}

}  // namespace
}  // namespace velmora
