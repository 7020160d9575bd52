// The renderer of pane descriptions in AppKit: a node tree (ui/Node.h) as
// views.
//
// Provides: renderTree(), fontFrom(), colorFrom().
// Each node becomes one flipped container view that carries its modifiers
// (padding as insets, frame as size constraints, background, border,
// corner radius, shadow, opacity, scale, rotation and offset on its layer,
// help as tool tip, hover through a tracking area) around the AppKit view
// of its kind: stacks are stack views, grids grid views, scroll a scroll
// view, text a label, images image views (their files read through the
// files port), symbols system symbol images, buttons push buttons (or the
// label content, clickable), toggles checkboxes, text fields editable text
// fields, pickers pop-up buttons or segmented controls, menus pull-down
// buttons, popovers the platform's popover, date pickers graphical date
// pickers, web views the page's own view, and shapes are drawn. Layout is
// Auto Layout's. A tree rebuilt by the library is applied to the views in
// place where a node keeps its kind and place, so a text field keeps its
// focus and a scroll view its position. Main thread only.
#pragma once

#import <AppKit/AppKit.h>

#include "ui/Node.h"

namespace velmora::hosts::macos {

// Shows `tree` filling `container`, replacing or updating what it shows.
void renderTree(NSView* container, const ui::Node& tree);

NSFont* fontFrom(const ui::Font& font);
NSColor* colorFrom(const ui::Color& color);

}  // namespace velmora::hosts::macos
