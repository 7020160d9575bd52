// What a pathological catalogue costs the reference pane: the tree it
// builds stays small however many keys and rows the file holds, and what
// is on screen is still built.

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "fake/FakePlatform.h"
#include "keyboard/ModifierKeyState.h"
#include "shortcuts/ShortcutContentManager.h"
#include "shortcuts/ShortcutReferenceView.h"
#include "ui/HostingView.h"

namespace velmora {
namespace {

using ui::Kind;
using ui::Node;

std::size_t countNodes(const Node& node) {
    std::size_t count = 1;
    for (const auto& child : node.children) count += countNodes(child);
    return count;
}

std::size_t countChips(const Node& node) {
    // A chip is the only text with a black background.
    std::size_t count = node.kind == Kind::text && node.mod.background == ui::colors::black ? 1 : 0;
    for (const auto& child : node.children) count += countChips(child);
    return count;
}

const Node* rowNamed(const Node& tree, const std::string& name) {
    return ui::findNode(tree, [&](const Node& node) {
        return node.kind == Kind::hstack && node.alignment == ui::Alignment::top && ui::findText(node, name) != nullptr;
    });
}

// The blank rectangles that stand for lines not built, top to bottom.
std::vector<double> blanks(const Node& tree) {
    std::vector<double> heights;
    for (const auto& child : tree.children.at(0).children) {
        if (child.kind == Kind::rectangle) heights.push_back(child.mod.frame.height.value_or(-1));
    }
    return heights;
}

Shortcut record(std::string category, std::string name, std::vector<std::string> keys) {
    Shortcut shortcut;
    shortcut.category = std::move(category);
    shortcut.name = std::move(name);
    shortcut.keys = std::move(keys);
    return shortcut;
}

const IconCheck noIcons = [](const std::string&) { return false; };
constexpr ModifierFlags nothingHeld{};
constexpr ModifierFlags ctrlHeld{ModifierFlags::control};

// Rows and headings are ~8 nodes each, a chip one more, and the list 3.
constexpr std::size_t nodesPerLine = 8 + maxShownChips;
constexpr std::size_t treeBound = 3 + 2 + nodesPerLine * maxBuiltLines;

TEST(ShortcutReferenceBounds, ARowBuildsTheChipsThePaneCanShowAndIsLitByAllItsKeys) {
    // A million keys, the one modifier last: far beyond any chip that shows,
    // it still decides when the row lights up.
    std::vector<std::string> keys(1'000'000, "a");
    keys.back() = "Ctrl";
    auto view = ResponsiveShortcutsView::make({record("Many", "Everything", std::move(keys))});
    EXPECT_EQ(view.records.at(0).keys.size(), maxShownChips);

    for (double width : {250.0, 1000.0, 25000.0}) {
        const Node plain = view.body(width, nothingHeld, noIcons);
        EXPECT_EQ(countChips(plain), maxShownChips) << width;
        EXPECT_LE(countNodes(plain), 3 + 2 + nodesPerLine) << width;
        EXPECT_EQ(rowNamed(plain, "Everything")->mod.background, ui::colors::clear);
        const Node lit = view.body(width, ctrlHeld, noIcons);
        EXPECT_EQ(rowNamed(lit, "Everything")->mod.background, ui::colors::green.opacity(0.3));
    }
    // A row of an ordinary length keeps every chip.
    auto ordinary = ResponsiveShortcutsView::make({record("Few", "Align Top", {"Ctrl", "Cmd", "Up"})});
    EXPECT_EQ(countChips(ordinary.body(250, nothingHeld, noIcons)), 3u);
}

TEST(ShortcutReferenceBounds, AListOfUpToTheLimitIsBuiltWholeAndALongerOneAroundTheScrollPosition) {
    // Two categories taking turns, so each section is spread over the file.
    auto records = [](std::size_t count) {
        std::vector<Shortcut> made;
        for (std::size_t i = 0; i < count; ++i) {
            made.push_back(record(i % 2 ? "Odd" : "Even", "Row " + std::to_string(i), {"Cmd", std::to_string(i)}));
        }
        return made;
    };
    // 248 rows and two headings: whole, as ever.
    auto whole = ResponsiveShortcutsView::make(records(maxBuiltLines - 2));
    EXPECT_FALSE(whole.buildsWindow());
    const Node all = whole.body(250, nothingHeld, noIcons, {0, 760});
    EXPECT_TRUE(blanks(all).empty());
    EXPECT_NE(rowNamed(all, "Row 247"), nullptr);

    auto many = ResponsiveShortcutsView::make(records(100'000));
    EXPECT_TRUE(many.buildsWindow());
    ASSERT_EQ(many.sections.size(), 2u);
    EXPECT_EQ(many.sections[1].rows.at(3), 7u);  // indices into the records, none copied

    // At the top: the first rows, blank space below for the rest.
    const Node top = many.body(250, nothingHeld, noIcons, {0, 760});
    EXPECT_LE(countNodes(top), treeBound);
    EXPECT_NE(rowNamed(top, "Row 0"), nullptr);
    EXPECT_NE(rowNamed(top, "Row 60"), nullptr);
    EXPECT_EQ(blanks(top).size(), 1u);

    // Half-way down the estimated list: the rows there are built, and the
    // blank space above is about the rows left out. The estimate scales
    // with the pane as the rows do.
    for (double width : {250.0, 500.0, 125.0}) {
        const double scale = width / 250;
        const double row = 9 * scale * 1.2 + 8 * scale + 2;  // a row and the spacing after it
        const double offset = 10 + (11 * scale * 1.2 + 2 * scale + 2) + 25'000 * row;  // the 25,000th even row
        const Node middle = many.body(width, nothingHeld, noIcons, {offset, 760});
        EXPECT_LE(countNodes(middle), treeBound) << width;
        EXPECT_NE(rowNamed(middle, "Row 50000"), nullptr) << width;
        EXPECT_NE(rowNamed(middle, "Row 50030"), nullptr) << width;
        EXPECT_EQ(rowNamed(middle, "Row 0"), nullptr) << width;
        const auto around = blanks(middle);
        ASSERT_EQ(around.size(), 2u) << width;
        EXPECT_GT(around[0], offset - 250 * row) << width;
        EXPECT_LT(around[0], offset) << width;
    }

    // Scrolled past the end: the last rows.
    const Node end = many.body(250, nothingHeld, noIcons, {1e12, 760});
    EXPECT_NE(rowNamed(end, "Row 99999"), nullptr);
    EXPECT_EQ(blanks(end).size(), 1u);

    // A view taller than the window's usual share builds enough to fill it.
    const Node tall = many.body(250, nothingHeld, noIcons, {0, 20'000});
    EXPECT_NE(rowNamed(tall, "Row 1000"), nullptr);
}

class ShortcutReferencePaneBounds : public testing::PlatformTest {};

TEST_F(ShortcutReferencePaneBounds, ALongCatalogueFollowsItsScrollPositionAndAShortOneDoesNot) {
    auto load = [&](const std::string& xml) {
        fake.files->createDirectories("/Library/Application Support/Microsoft/Velmora/PowerPoint", nullptr);
        EXPECT_TRUE(fake.files->write(shortcutCataloguePath, xml, false, nullptr));
        std::shared_ptr<platform::View> view;
        ShortcutContentManager::loadShortcutsView([&](std::shared_ptr<platform::View> made) { view = std::move(made); });
        fake.dispatch->runUntilIdle();
        auto hosting = std::dynamic_pointer_cast<ui::HostingView>(view);
        if (hosting) {
            hosting->setFrame({0, 0, 250, 400});
            hosting->layout();
        }
        return hosting;
    };
    auto scrollable = [](const Node& tree) { return ui::findNode(tree, [](const Node& n) { return bool(n.onScroll); }); };

    auto small = load("<s><object><name>Only</name><shortcut>F5</shortcut></object></s>");
    ASSERT_TRUE(small);
    EXPECT_EQ(scrollable(small->tree()), nullptr);

    std::string xml = "<s>";
    for (int i = 0; i < 5000; ++i) {
        xml += "<object><name>Row " + std::to_string(i) + "</name><shortcut>Cmd, " + std::to_string(i) +
               "</shortcut></object>";
    }
    auto large = load(xml + "</s>");
    ASSERT_TRUE(large);
    EXPECT_LE(countNodes(large->tree()), treeBound);
    EXPECT_EQ(rowNamed(large->tree(), "Row 3000"), nullptr);
    const Node* list = scrollable(large->tree());
    ASSERT_NE(list, nullptr);
    auto onScroll = list->onScroll;
    onScroll(10 + 11 * 1.2 + 2 + 2 + 3000 * (9 * 1.2 + 8 + 2));
    EXPECT_NE(rowNamed(large->tree(), "Row 3000"), nullptr);
    EXPECT_EQ(rowNamed(large->tree(), "Row 0"), nullptr);

    // Held modifiers still light the rows of a window.
    globalModifierKeyState().modifierFlags.set({ModifierFlags::command});
    EXPECT_EQ(rowNamed(large->tree(), "Row 3000")->mod.background, ui::colors::green.opacity(0.3));
}

}  // namespace
}  // namespace velmora
