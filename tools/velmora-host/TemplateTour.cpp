// Tour steps for the template library, against the simulator's own cloud.

#include "Scenario.h"

namespace velmora::host {

namespace {

[[maybe_unused]] const bool registered[] = {
    registerTourStep({640, "The template library syncs from the CDN",
                      "The first opening makes the library's one view model, which fetches the CDN's\n"
                      "manifest and then each thumbnail, one at a time, into a cache; the pane shows a\n"
                      "loading overlay until the lists of categories and packs are known. The\n"
                      "simulator's cloud stand-in answers on loopback, and it is told to lose one\n"
                      "thumbnail: that template is left out, the others come in order.",
                      "cloud fault /cdn/thumbs/tpl-0004.png drop 1\nopen templates\nshow templates\n"}),
    registerTourStep({650, "Picking a category and inserting a template",
                      "A category and a pack never filter together: picking one clears the other. A tap\n"
                      "on a template downloads its file once, inserts it through the macro project,\n"
                      "which adds it as a slide, and reports the use to the cloud service.",
                      "tap Templates Charts\ntap Templates 'Keep Source Formatting'\ntap Templates tpl-0006\n"
                      "show document\nshow cloud\nsnapshot velmora-templates.html\n"}),
};

}  // namespace

}  // namespace velmora::host
