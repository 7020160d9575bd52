// The shortcut reference pane's views: the catalogue under category
// headings, scaled with the pane's width, with the rows lit whose modifiers
// the user is holding.
//
// Provides: isRelevant(), shortcutRowView(), categorySectionView(),
// ResponsiveShortcutsView.
// Pure functions from state and width to nodes; main thread only, since
// they read the icon files through the files port.
#pragma once

#include <functional>
#include <map>
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

// Whether the file at `path` can be shown as an image; asked once per path
// and pane.
using IconCheck = std::function<bool(const std::string& path)>;

ui::Node shortcutRowView(const Shortcut& shortcut, const std::string& iconPath, double scale, ModifierFlags held,
                         const IconCheck& iconLoads);

ui::Node categorySectionView(const std::string& category, const std::vector<Shortcut>& shortcuts, double scale,
                             ModifierFlags held, const IconCheck& iconLoads);

struct ResponsiveShortcutsView {
    std::vector<std::string> categories;
    std::map<std::string, std::vector<Shortcut>> grouped;

    // scale = width / 250, with no upper bound.
    ui::Node body(double width, ModifierFlags held, const IconCheck& iconLoads) const;
};

}  // namespace velmora
