// The window snapshot: the document window with its open panes as one HTML
// page that a browser shows as the host would.
//
// Provides: snapshotPage(), firstTextField().
// Main thread; the caller settles and lays the split view out first.
#pragma once

#include <memory>
#include <optional>
#include <string>

#include "platform/Views.h"

namespace velmora::host {

// The ribbon on top, the split view below with the slide editor and every
// pane at its frame. The editor draws the document's current slide to scale:
// the slide carries data-scale, each shape data-shape with its name and,
// when selected, data-selected="1" and data-order; a line data-weight and
// data-end, a table data-rows and data-columns and data-header="1" on its
// header cells, a picture data-source and, for a saved slide, data-keep, for
// an icon data-style.
// The library's windows on screen float over the document window, centred
// on it, each in an element with data-window (its title), data-level and,
// for the key window, data-key="1".
std::string snapshotPage();

// The value of the first text field in the subtree, depth first.
std::optional<std::string> firstTextField(const std::shared_ptr<platform::View>& root);

}  // namespace velmora::host
