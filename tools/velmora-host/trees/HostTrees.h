// Host trees from files: the view tree of the host's windows and the
// accessibility tree of the host application, as captured from one host
// version, replayed in place of the simulator's own.
//
// Provides: TreeFileError, CapturedWindow, ViewTree, parseViewTree(), AxTree,
// parseAxTree(), showLoadedRibbon(), showRibbonWalk(), forgetLoadedAxTree(),
// rebuildBuiltInAccessibilityTree().
// Commands (trees/TreeCommands.cpp): `viewtree FILE|builtin`,
// `axtree FILE|builtin`; shows: `show viewtree`, `show ribbon walk`.
//
// View tree file, one object:
//   {"windows": [WINDOW...]}                    in the host's window order
//   WINDOW {"class": "CUIDocumentShellWindow",  required
//           "title": "Deck.pptx",               shown by `show viewtree` only
//           "key": true,                        the key window (one at most)
//           "main": true,                       the window `keywindow document` makes key
//                                               (one at most; else the first document window,
//                                               else the key window, else the first)
//           "contentView": VIEW | null,         null or left out: no content view
//           "frameView": VIEW}                  instead of contentView: the view above it (the
//                                               platform's "NSThemeFrame"), in which the view
//                                               marked "contentView": true is the content view
//   VIEW   {"class": "NSView",                  required
//           "frame": [x, y, width, height],     points; zeros when left out
//           "text": "Icons",                    a text field with this string value
//           "subviews": [VIEW...]}
//
// Accessibility tree file, one object:
//   {"application": "present"|"absent"|"untrusted",  default present; untrusted: every read of
//                                               the application fails with -25211
//    "bundleIdentifier": "com.microsoft.Powerpoint",  the default
//    "title": "...",                            the application's "AXTitle"
//    "focusedWindow": ELEMENT | null,           null or left out: the read gives no window
//    "fails": FAILS}                            reads of the application that fail
//   ELEMENT {"id": "tab",                       names it for "ref" and in `ax: press` lines
//            "role", "title", "description": "...",   AXRole, AXTitle, AXDescription
//            "value": 0 | 1.5 | true | "1" | null,    AXValue; null: read with no value
//            "children": [ELEMENT | {"ref": "id"}...], AXChildren; a ref makes shared
//                                               elements and cycles
//            "fails": FAILS,                    reads that fail
//            "press": "fails" | CODE}           AXPress fails (with -25204, or CODE)
//   FAILS   ["AXValue", ...] (each with -25204) or {"AXValue": -25205, ...}
// An attribute left out is not there: its read fails with -25212, as the
// platform answers for a missing one. Unknown keys, wrong types and bad
// references are errors, each named by its place in the file.
#pragma once

#include <map>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

#include "hosts/common/MemoryAccessibility.h"
#include "hosts/common/MemoryViews.h"

namespace velmora::host {

// A file the simulator cannot read as a tree; the text names the place.
struct TreeFileError : std::runtime_error {
    using std::runtime_error::runtime_error;
};

// A window of a captured tree, with what only the simulator shows.
class CapturedWindow : public hosts::MemoryWindow {
public:
    using MemoryWindow::MemoryWindow;
    std::optional<std::string> title;
};

struct ViewTree {
    std::vector<std::shared_ptr<CapturedWindow>> windows;
    std::shared_ptr<CapturedWindow> key;   // nothing: no window is key
    std::shared_ptr<CapturedWindow> main;  // nothing only when there are no windows
};

ViewTree parseViewTree(const std::string& json);

struct AxTree {
    enum class Presence { present, absent, untrusted };
    Presence presence = Presence::present;
    std::string bundleIdentifier = "com.microsoft.Powerpoint";
    std::shared_ptr<hosts::MemoryAXElement> application;
    // Every element made, so the tree's cycles can be broken when it goes.
    std::vector<std::shared_ptr<hosts::MemoryAXElement>> elements;

    // Clears every element's children, so elements that refer to each other go.
    void release();
};

// Elements press as the host's controls do: "ax: press TITLE" (with " #id"
// for an element that has one), and a readable value turns to 1 of its own
// kind (1, 1.0, true, "1"); a failing press prints that it failed and
// changes nothing.
AxTree parseAxTree(const std::string& json);

// `show ribbon` and `show ribbon walk` for a loaded accessibility tree;
// false when the simulator's own tree is in place.
bool showLoadedRibbon();
void showRibbonWalk();
// The simulator's own tree has replaced a loaded one (KeyboardCommands.cpp).
void forgetLoadedAxTree();
// Builds the simulator's own tree again with its current settings
// (defined beside it, in KeyboardCommands.cpp).
void rebuildBuiltInAccessibilityTree();

}  // namespace velmora::host
