// The colour bar in the simulator: what its view model holds. Its chips are
// tapped and hovered with the pane commands (`tap Color 'Apply Fill#5'`).
//
// Show: `show colorbar`.

#include "Host.h"
#include "Scenario.h"

namespace velmora::host {

namespace {

[[maybe_unused]] const bool registered[] = {
    registerShow({"colorbar", "show colorbar", 0, 0,
                  [](const Arguments&) { Host::instance().emitInspected("colorbar", {"colorbar: (never opened)"}); }}),

    registerTourStep({600, "The colour bar paints the selection",
                      "The colour bar shows the presentation's theme, read through a macro that\n"
                      "returns its ten colours. Each chip sends one macro with the slot's name and a\n"
                      "bare tint; the macro project paints the selected shapes. Accent2 becomes the\n"
                      "fill of both boxes, and Accent1's third shade (lighter by 0.40) their border.",
                      "shape Title left=60 top=30 width=840 height=90 'text=Quarterly review' fill=none line=none "
                      "font=#44546A\n"
                      "shape Revenue left=80 top=170 width=360 height=300 'text=Revenue'\n"
                      "shape Costs left=520 top=170 width=360 height=300 type=ellipse 'text=Costs'\n"
                      "selectshapes Revenue Costs\nopen color\ntap Color 'Apply Fill#6'\n"
                      "tap Color 'More Shades#5'\ntap Color 'Border#3'\nshow document\n"}),
    registerTourStep({610, "A new theme reaches the bar",
                      "When the theme changes, the macro project calls triggerColorThemeRefresh; the\n"
                      "bar fetches the colours on a background queue and keeps Accent1 unfolded. The\n"
                      "snapshot shows the painted shapes beside the bar.",
                      "theme '#1B1B1B,#FFFFFF,#2E3A59,#EEF0F4,#2F6FDE,#E4572E,#17BEBB,#FFC914,#76B041,#9B5DE5'\n"
                      "call triggerColorThemeRefresh\nshow colorbar\nsnapshot velmora-colorbar.html\n"}),
};

}  // namespace

}  // namespace velmora::host
