// The shortcut reference pane's views: the catalogue under category
// headings, scaled with the pane's width, with the rows lit whose modifiers
// the user is holding.
//
// Provides: isRelevant(), namedModifiers(), maxShownChips, shortcutRowView(),
// ReferenceSection, ReferenceViewport, maxBuiltLines, ResponsiveShortcutsView.
// Pure functions from state and width to nodes; main thread only, since
// they read the icon files through the files port.
//
// What a catalogue can cost is bounded whatever its size: a row builds at
// most maxShownChips chips, and a list of more than maxBuiltLines headings
// and rows builds only a window of them around the scroll position, with
// blank space of their estimated height standing for the rest.
#pragma once

#include <cstddef>
#include <functional>
#include <string>
#include <vector>

#include "keyboard/ModifierFlags.h"
#include "shortcuts/Shortcut.h"
#include "ui/Node.h"

namespace velmora {

// A row is relevant when the modifiers among its keys ("ctrl", "cmd", "opt",
// "shift", after lower-casing) are exactly the ones held. Caps lock, the
// function key and non-modifier tokens play no part.
bool isRelevant(const std::vector<std::string>& keys, ModifierFlags held);
// The modifiers that `keys` name, as their flags: what isRelevant compares.
ModifierFlags namedModifiers(const std::vector<std::string>& keys);

// The most chips a row can show. A row's chips sit side by side without
// wrapping, and each is at least its padding wide, 2.2 points a side at
// the pane's 250 points and scaled with the pane; so a chip past the 57th
// starts beyond the pane's right edge at any width and is never built.
inline constexpr std::size_t maxShownChips = 57;
static_assert(maxShownChips * 2 * 2.2 >= 250);

// Whether the file at `path` can be shown as an image; asked once per path
// and drawing.
using IconCheck = std::function<bool(const std::string& path)>;

// One catalogue row: its first maxShownChips keys as chips, lit by
// `modifiers` (the modifiers of all its keys).
ui::Node shortcutRowView(const Shortcut& shortcut, ModifierFlags modifiers, const std::string& iconPath, double scale,
                         ModifierFlags held, const IconCheck& iconLoads);
// The same, the modifiers read from the row's keys.
ui::Node shortcutRowView(const Shortcut& shortcut, const std::string& iconPath, double scale, ModifierFlags held,
                         const IconCheck& iconLoads);

struct ReferenceSection {
    std::string category;
    std::vector<std::size_t> rows;  // indices into the records, in document order
};

// The part of the list on screen: points from the scroll view's top, and
// its height (0: not laid out yet).
struct ReferenceViewport {
    double offset = 0;
    double height = 0;
};

// Lists of up to this many headings and rows are built whole; a longer one
// builds this many around the scroll position (more if the view is so tall
// that a third of them is not enough to fill it).
inline constexpr std::size_t maxBuiltLines = 250;

struct ResponsiveShortcutsView {
    // The records as read, each cut to the keys a row can show.
    std::vector<Shortcut> records;
    // The modifiers each record's whole key list names, which light its row.
    std::vector<ModifierFlags> modifiers;
    // Distinct categories in order of first appearance: the display order.
    std::vector<ReferenceSection> sections;

    // Takes the records over and groups them by category without copying them.
    static ResponsiveShortcutsView make(std::vector<Shortcut> shortcuts);

    // scale = width / 250, with no upper bound.
    ui::Node body(double width, ModifierFlags held, const IconCheck& iconLoads, ReferenceViewport viewport = {}) const;
    // Whether body() builds a window of the list, which then follows the viewport.
    bool buildsWindow() const;
};

}  // namespace velmora
