#include <gtest/gtest.h>

#include <memory>
#include <string>

#include "fake/FakePlatform.h"
#include "keyboard/ModifierKeyState.h"
#include "shortcuts/ShortcutContentManager.h"
#include "shortcuts/ShortcutReferenceView.h"
#include "ui/HostingView.h"

namespace velmora {
namespace {

using ui::Node;
using Keys = std::vector<std::string>;

constexpr auto ctrl = ModifierFlags::control;
constexpr auto cmd = ModifierFlags::command;

TEST(ShortcutReferenceTest, ARowIsRelevantWhenItsModifiersAreExactlyTheHeldOnes) {
    Keys alignTop{"Ctrl", "Cmd", "Up"};
    EXPECT_TRUE(isRelevant(alignTop, {ctrl | cmd}));
    EXPECT_FALSE(isRelevant(alignTop, {ctrl}));
    EXPECT_FALSE(isRelevant(alignTop, {ctrl | cmd | ModifierFlags::shift}));
    // Caps lock, the function key and the numeric pad play no part.
    EXPECT_TRUE(isRelevant(alignTop, {ctrl | cmd | ModifierFlags::capsLock | ModifierFlags::function}));
    EXPECT_TRUE(isRelevant({"SHIFT", "opt", "x"}, {ModifierFlags::shift | ModifierFlags::option}));
    // With nothing held, rows without modifiers light up.
    EXPECT_TRUE(isRelevant({"F5"}, {}));
    EXPECT_TRUE(isRelevant({""}, {}));
    EXPECT_FALSE(isRelevant({"F5"}, {cmd}));
    EXPECT_FALSE(isRelevant({"Control", "M"}, {ctrl}));
}

Shortcut record(std::string category, std::string name, Keys keys, std::string image = "Icon.png") {
    Shortcut shortcut;
    shortcut.category = std::move(category);
    shortcut.name = std::move(name);
    shortcut.keys = std::move(keys);
    shortcut.imageName = std::move(image);
    return shortcut;
}

const Node* rowNamed(const Node& tree, const std::string& name) {
    return ui::findNode(tree, [&](const Node& node) {
        return node.kind == ui::Kind::hstack && node.alignment == ui::Alignment::top &&
               ui::findText(node, name) != nullptr;
    });
}

TEST(ShortcutReferenceTest, SizesScaleWithWidthButTheChipSpacingAndListPaddingDoNot) {
    ResponsiveShortcutsView view{{"Arrange"}, {{"Arrange", {record("Arrange", "Align Top", {"Ctrl", "Cmd", "Up"})}}}};
    auto loads = [](const std::string&) { return true; };
    for (double width : {250.0, 500.0}) {
        double s = width / 250;
        Node tree = view.body(width, {}, loads);
        ASSERT_EQ(tree.kind, ui::Kind::scroll);
        const Node& list = tree.children.at(0);
        EXPECT_EQ(list.mod.padding, (ui::Edges{10, 10, 10, 10}));
        EXPECT_EQ(list.spacing, 0);

        const Node& section = list.children.at(0);
        EXPECT_EQ(section.spacing, 2);
        const Node* heading = ui::findText(tree, "Arrange");
        EXPECT_EQ(heading->mod.font->size, 11 * s);
        EXPECT_EQ(heading->mod.font->weight, ui::FontWeight::bold);
        EXPECT_EQ(heading->mod.padding.top, 2 * s);

        const Node* row = rowNamed(tree, "Align Top");
        ASSERT_NE(row, nullptr);
        EXPECT_EQ(row->spacing, 2 * s);
        EXPECT_EQ(row->mod.padding, (ui::Edges{2 * s, 2 * s, 2 * s, 2 * s}));
        EXPECT_EQ(row->mod.cornerRadius, 5 * s);
        EXPECT_EQ(row->children.at(0).mod.frame.width, 14 * s);
        EXPECT_EQ(row->children.at(0).mod.frame.height, 14 * s);

        const Node* name = ui::findText(tree, "Align Top");
        EXPECT_EQ(name->mod.font->size, 10 * s);
        EXPECT_EQ(name->mod.font->weight, ui::FontWeight::semibold);

        const Node& chips = row->children.at(1).children.at(2);
        EXPECT_EQ(chips.spacing, 4);
        const Node& chip = chips.children.at(0);
        EXPECT_EQ(chip.text, "Ctrl");
        EXPECT_EQ(chip.mod.font->size, 9 * s);
        EXPECT_EQ(chip.mod.font->design, ui::FontDesign::monospaced);
        EXPECT_EQ(chip.mod.padding, (ui::Edges{2 * s, 2.2 * s, 2 * s, 2.2 * s}));
        EXPECT_EQ(chip.mod.background, ui::colors::black);
        EXPECT_EQ(chip.mod.foreground, ui::colors::white);
        EXPECT_EQ(chip.mod.cornerRadius, 3 * s);
    }
}

TEST(ShortcutReferenceTest, HeldModifiersLightTheMatchingRowsAndAMissingIconLeavesAnEmptyFrame) {
    ResponsiveShortcutsView view{{"A"},
                                 {{"A",
                                   {record("A", "Both", {"Ctrl", "Cmd", "Up"}, "Here.png"),
                                    record("A", "Ctrl only", {"ctrl", "M"}, "Gone.png")}}}};
    auto loads = [](const std::string& path) { return path.ends_with("Here.png"); };
    Node tree = view.body(250, {ctrl | cmd}, loads);
    EXPECT_EQ(rowNamed(tree, "Both")->mod.background, ui::colors::green.opacity(0.3));
    EXPECT_EQ(rowNamed(tree, "Ctrl only")->mod.background, ui::colors::clear);
    EXPECT_EQ(rowNamed(tree, "Both")->children.at(0).text, std::string(shortcutIconsDirectory) + "Here.png");
    const Node& missing = rowNamed(tree, "Ctrl only")->children.at(0);
    EXPECT_EQ(missing.kind, ui::Kind::image);
    EXPECT_EQ(missing.text, "");
    EXPECT_EQ(missing.mod.frame.width, 14);
}

class ShortcutContentTest : public testing::PlatformTest {
protected:
    std::shared_ptr<ui::HostingView> load() {
        std::shared_ptr<platform::View> view;
        int calls = 0;
        ShortcutContentManager::loadShortcutsView([&](std::shared_ptr<platform::View> made) {
            view = std::move(made);
            ++calls;
        });
        EXPECT_EQ(fake.dispatch->pendingGlobal(), 1u);
        EXPECT_EQ(fake.dispatch->globalQualities().back(), platform::QualityOfService::userInitiated);
        EXPECT_EQ(calls, 0);
        fake.dispatch->runUntilIdle();
        EXPECT_EQ(calls, 1);
        auto hosting = std::dynamic_pointer_cast<ui::HostingView>(view);
        if (hosting) {
            hosting->setFrame({0, 0, 250, 400});
            hosting->layout();
        }
        return hosting;
    }
    void writeCatalogue(const std::string& xml) {
        fake.files->createDirectories("/Library/Application Support/Microsoft/Velmora/PowerPoint", nullptr);
        ASSERT_TRUE(fake.files->write(shortcutCataloguePath, xml, false, nullptr));
    }
};

TEST_F(ShortcutContentTest, AnUnreadableFileShowsTheLoadFailureInRed) {
    auto view = load();
    ASSERT_TRUE(view);
    const Node& tree = view->tree();
    EXPECT_EQ(tree.text, "Failed to load XML file");
    EXPECT_EQ(tree.mod.foreground, ui::colors::red);
}

TEST_F(ShortcutContentTest, ACatalogueWithoutRecordsShowsNoShortcutsFoundInGrey) {
    writeCatalogue("<shortcuts><note>none</note></shortcuts>");
    auto view = load();
    EXPECT_EQ(view->tree().text, "No shortcuts found");
    EXPECT_EQ(view->tree().mod.foreground, ui::colors::gray);
}

TEST_F(ShortcutContentTest, TheCatalogueIsReadAtEveryOpeningAndFollowsTheHeldModifiers) {
    writeCatalogue(
        "<s><object><category>Arrange</category><name>Align Top</name><shortcut>Ctrl, Cmd, Up</shortcut></object>"
        "<object><category>Slides</category><name>Start</name><shortcut>F5</shortcut></object>"
        "<object><category>Arrange</category><name>Group</name><shortcut>Cmd, Opt, G</shortcut></object>"
        "<object><name>Broken</oops></s>");
    auto view = load();
    ASSERT_TRUE(view);
    const Node& list = view->tree().children.at(0);
    ASSERT_EQ(list.children.size(), 2u);
    EXPECT_EQ(list.children[0].children.at(0).text, "Arrange");
    EXPECT_EQ(list.children[0].children.size(), 3u);  // heading and two rows, the second from further down
    EXPECT_EQ(list.children[1].children.at(0).text, "Slides");
    EXPECT_EQ(rowNamed(view->tree(), "Start")->mod.background, ui::colors::green.opacity(0.3));

    globalModifierKeyState().modifierFlags.set({ctrl | cmd});
    EXPECT_EQ(rowNamed(view->tree(), "Align Top")->mod.background, ui::colors::green.opacity(0.3));
    EXPECT_EQ(rowNamed(view->tree(), "Start")->mod.background, ui::colors::clear);

    // A pane that is gone stops following; the next opening reads the file anew.
    view.reset();
    globalModifierKeyState().modifierFlags.set({});
    writeCatalogue("<s><object><category>Other</category><name>Only</name></object></s>");
    auto again = load();
    EXPECT_NE(ui::findText(again->tree(), "Only"), nullptr);
    EXPECT_EQ(ui::findText(again->tree(), "Align Top"), nullptr);
}

}  // namespace
}  // namespace velmora
