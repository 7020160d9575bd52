// The size a node tree asks for when nothing constrains it, as a toolkit's
// fitting size gives it: what a window sizes itself to.
//
// Provides: idealSize().
// Text is measured from its font size alone (an average glyph is 0.55 em
// wide, a line 1.2 em high), which is close enough to size a window; shapes
// and spacers ask for nothing and take what is offered. Pure.
#pragma once

#include "platform/Views.h"
#include "ui/Node.h"

namespace velmora::ui {

platform::Size idealSize(const Node& node);

}  // namespace velmora::ui
