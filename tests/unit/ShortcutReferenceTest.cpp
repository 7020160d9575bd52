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

const Node* rowNamed(const Node& tree, const std::string& name) {
    return ui::findNode(tree, [&](const Node& node) {
        return node.kind == ui::Kind::hstack && node.alignment == ui::Alignment::top &&
               ui::findText(node, name) != nullptr;
    });
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

TEST_F(ShortcutContentTest, TheFailureTextsComeInRedAndGrey) {
    auto missing = load();
    EXPECT_EQ(missing->tree().text, "Failed to load XML file");
    EXPECT_EQ(missing->tree().mod.foreground, ui::colors::red);
    writeCatalogue("<shortcuts><note>none</note></shortcuts>");
    auto empty = load();
    EXPECT_EQ(empty->tree().text, "No shortcuts found");
    EXPECT_EQ(empty->tree().mod.foreground, ui::colors::gray);
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

TEST_F(ShortcutContentTest, AnIconInstalledWhileThePaneIsOpenShowsAtTheNextDrawing) {
    writeCatalogue("<s><object><category>Arrange</category><name>Align Top</name><shortcut>Ctrl</shortcut>"
                   "<img>Late.png</img></object></s>");
    auto view = load();
    ASSERT_TRUE(view);
    auto icon = [&] {
        return ui::findNode(view->tree(), [](const Node& node) { return node.kind == ui::Kind::image; });
    };
    ASSERT_TRUE(icon());
    EXPECT_EQ(icon()->text, "") << "an empty image keeps the frame";

    const std::string png("\x89PNG\r\n\x1a\n\0\0\0\rIHDR\0\0\0\x01\0\0\0\x01\x08\x06\0\0\0", 29);
    fake.files->createDirectories(shortcutIconsDirectory, nullptr);
    ASSERT_TRUE(fake.files->write(std::string(shortcutIconsDirectory) + "Late.png", png, false, nullptr));
    globalModifierKeyState().modifierFlags.set({ctrl});  // any change redraws
    EXPECT_EQ(icon()->text, std::string(shortcutIconsDirectory) + "Late.png");
}

}  // namespace
}  // namespace velmora
