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

const Node* symbolNamed(const Node& tree, const std::string& name) {
    return ui::findNode(tree, [&](const Node& n) { return n.kind == ui::Kind::symbol && n.text == name; });
}

int countTexts(const Node& node, const std::string& text) {
    int count = node.kind == ui::Kind::text && node.text == text ? 1 : 0;
    for (const auto& child : node.children) count += countTexts(child, text);
    return count;
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
    void writeIcon(const std::string& name, const std::string& bytes) {
        fake.files->createDirectories(assistantIconDirectory, nullptr);
        fake.files->write(assistantIconDirectory + name, bytes, false, nullptr);
    }
    AssistantViewModel& model = AssistantViewModel::shared();
};

TEST_F(AssistantPaneTest, EmptyListsShowTheEmptyBlockUnderBothHeadersUntilTheSectionFolds) {
    auto pane = open(250);
    EXPECT_EQ(countTexts(pane->tree(), "No Suggestions found."), 2);
    const Node* info = symbolNamed(pane->tree(), "info.circle");
    EXPECT_EQ(info->mod.font->size, 20);
    EXPECT_EQ(info->mod.foreground, ui::colors::gray);
    EXPECT_EQ(ui::findText(pane->tree(), "No Suggestions found.")->mod.font->size, 14);
    EXPECT_NE(symbolNamed(pane->tree(), "chevron.up"), nullptr);

    ui::findActionable(pane->tree(), "Missed Shortcuts")->action();
    EXPECT_EQ(countTexts(pane->tree(), "No Suggestions found."), 1);
    EXPECT_NE(ui::findText(pane->tree(), "Missed Shortcuts"), nullptr);
    EXPECT_NE(symbolNamed(pane->tree(), "chevron.down"), nullptr);

    // Folded, the missed rows are hidden too; the suggested ones are not.
    model.missed.set({row("Group Shapes", {"Cmd", "Opt", "G"})});
    model.recommendations.set({row("Align Left", {"Ctrl", "Cmd", "←"})});
    EXPECT_EQ(ui::findText(pane->tree(), "Group Shapes"), nullptr);
    EXPECT_NE(ui::findText(pane->tree(), "Align Left"), nullptr);
    EXPECT_EQ(countTexts(pane->tree(), "No Suggestions found."), 0);
}

TEST_F(AssistantPaneTest, AtWidth500EverythingIsTwiceAsLargeButTheOuterPaddings) {
    writeIcon("AlignLeft.png", "\x89PNG\r\n\x1a\nrest");
    auto suggested = row("Align Left", {"Ctrl", "Cmd", "←"});
    auto missed = row("Group Shapes", {"Cmd", "Opt", "G"}, "Nowhere.png", "+3s");
    model.recommendations.set({suggested});
    model.missed.set({missed});
    for (double width : {250.0, 500.0}) {
        double s = width / 250;
        auto pane = open(width);
        const Node& tree = pane->tree();
        const Node& column = tree.children.at(0);
        EXPECT_EQ(column.spacing, 10 * s);
        EXPECT_EQ(column.mod.padding, (ui::Edges{15, 10, 0, 10}));
        EXPECT_EQ(ui::findText(tree, "Suggested Shortcuts")->mod.font->size, 14 * s);
        EXPECT_EQ(ui::findText(tree, "See all shortcuts with Ctrl + Cmd + I")->mod.font->size, 12 * s);
        EXPECT_EQ(ui::findText(tree, "Missed Shortcuts")->mod.font->size, 14 * s);

        const Node* card = rowNode(tree, suggested);
        ASSERT_NE(card, nullptr);
        EXPECT_EQ(card->spacing, 4 * s);
        EXPECT_EQ(card->mod.padding, (ui::Edges{8 * s, 8 * s, 8 * s, 8 * s}));
        EXPECT_EQ(card->mod.cornerRadius, 5 * s);
        EXPECT_EQ(card->mod.background, ui::colors::white);
        const Node& icon = card->children.at(0).children.at(0);
        EXPECT_EQ(icon.kind, ui::Kind::image);
        EXPECT_EQ(icon.mod.frame.width, 14 * s);
        const Node* name = ui::findText(*card, "Align Left");
        EXPECT_EQ(name->mod.font->size, 12 * s);
        EXPECT_EQ(name->mod.lineLimit, 1);
        const Node* badge = ui::findText(*card, "-3s");
        EXPECT_EQ(badge->mod.font->size, 11 * s);
        EXPECT_EQ(badge->mod.padding, (ui::Edges{2 * s, 8 * s, 2 * s, 8 * s}));
        EXPECT_EQ(badge->mod.background, ui::colors::green);
        const Node& caps = card->children.at(1);
        EXPECT_EQ(caps.spacing, 4 * s);
        const Node& cap = caps.children.at(0);
        EXPECT_EQ(cap.mod.font->size, 11 * s);
        EXPECT_EQ(cap.mod.padding, (ui::Edges{2 * s, 4 * s, 2 * s, 4 * s}));
        EXPECT_EQ(cap.mod.cornerRadius, 3 * s);

        // A missed row: red badge, and the question mark when its icon cannot be loaded.
        const Node* missedCard = rowNode(tree, missed);
        ASSERT_NE(missedCard, nullptr);
        EXPECT_EQ(ui::findText(*missedCard, "+3s")->mod.background, ui::colors::red);
        const Node& fallback = missedCard->children.at(0).children.at(0);
        EXPECT_EQ(fallback.kind, ui::Kind::symbol);
        EXPECT_EQ(fallback.text, "questionmark.square");
        EXPECT_EQ(fallback.mod.frame.height, 14 * s);
    }
}

TEST_F(AssistantPaneTest, UnloadableIconsEmptyKeysAndEmptyTimeSaved) {
    writeIcon("Broken.png", "not an image");
    auto plain = row("Other", {}, "Broken.png", "");
    model.missed.set({plain});
    auto pane = open(250);
    const Node* card = rowNode(pane->tree(), plain);
    ASSERT_NE(card, nullptr);
    EXPECT_EQ(card->children.at(0).children.at(0).text, "questionmark.square");
    EXPECT_EQ(card->children.at(0).children.size(), 3u);  // icon, name, spacer: no badge
    EXPECT_TRUE(card->children.at(1).children.empty());
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

TEST_F(AssistantPaneToggleTest, TheExportTogglesTheAssistantPaneAndItsContentScalesWithThePane) {
    openAssistantTaskpane();
    EXPECT_TRUE(fake.log->contains("Assistant: 🟢 Dylib loaded successfully"));
    ASSERT_TRUE(pane());
    EXPECT_EQ(pane()->paneTitle, "Velmora Assistant");
    EXPECT_FALSE(pane()->contentView()) << "the content comes on the main queue";
    fake.dispatch->advance(0);
    auto content = std::dynamic_pointer_cast<ui::HostingView>(pane()->contentView());
    ASSERT_TRUE(content);
    EXPECT_EQ(ui::findText(content->tree(), "Suggested Shortcuts")->mod.font->size, 14);

    pane()->widthConstraint->constant = 500;
    pane()->applyWidthConstraint();
    EXPECT_EQ(ui::findText(content->tree(), "Suggested Shortcuts")->mod.font->size, 28);
    EXPECT_EQ(content->tree().children.at(0).mod.padding, (ui::Edges{15, 10, 0, 10}));

    openAssistantTaskpane();
    EXPECT_FALSE(pane());
}

TEST_F(AssistantPaneToggleTest, TheShortcutsExportTogglesTheReferencePane) {
    fake.files->createDirectories("/Library/Application Support/Microsoft/Velmora/PowerPoint", nullptr);
    fake.files->write("/Library/Application Support/Microsoft/Velmora/PowerPoint/Shortcuts.xml",
                      "<s><object><category>Arrange</category><name>Align Top</name>"
                      "<shortcut>Ctrl, Cmd, Up</shortcut></object></s>",
                      false, nullptr);
    openShortcutsTaskpane();
    EXPECT_TRUE(fake.log->contains("Shortcuts: 🟢 Dylib loaded successfully"));
    ASSERT_TRUE(pane());
    EXPECT_EQ(pane()->paneTitle, "Velmora Shortcuts");
    fake.dispatch->runUntilIdle();
    pane()->widthConstraint->constant = 500;
    pane()->applyWidthConstraint();
    auto content = std::dynamic_pointer_cast<ui::HostingView>(pane()->contentView());
    ASSERT_TRUE(content);
    EXPECT_EQ(ui::findText(content->tree(), "Align Top")->mod.font->size, 20);
    EXPECT_EQ(ui::findText(content->tree(), "Ctrl")->mod.font->size, 18);
    EXPECT_EQ(content->tree().children.at(0).mod.padding.leading, 10);

    openShortcutsTaskpane();
    EXPECT_FALSE(pane());
}

}  // namespace
}  // namespace velmora
