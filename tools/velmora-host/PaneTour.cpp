// Tour steps for the assistant pane and the shortcut reference pane. They
// follow the docking steps, so both panes are open when they start.

#include "Scenario.h"

namespace velmora::host {

namespace {

// A three-record catalogue: "Align" comes back after "Panes", and one icon
// file does not exist.
const char* const smallCatalogue =
    "catalogue '<shortcuts>"
    "<object><category>Align</category><name>Align Top</name><shortcut>Ctrl, Cmd, ↑</shortcut>"
    "<img>AlignTop.png</img></object>"
    "<object><category>Panes</category><name>Close Tool Window</name><shortcut>Esc</shortcut>"
    "<img>Missing.png</img></object>"
    "<object><category>Align</category><name>Align Left</name><shortcut>ctrl, CMD, ←</shortcut>"
    "<img>AlignLeft.png</img></object>"
    "</shortcuts>'\n";

[[maybe_unused]] const bool registered[] = {
    registerTourStep({500, "The shortcut reference reads Shortcuts.xml at every opening",
                      "The simulator installs a sample catalogue and button images of its own making.\n"
                      "The reference pane parses the file on a background queue each time it opens and\n"
                      "groups the records by category in order of first appearance. Here the file is\n"
                      "swapped for a small one and the pane reopened: with no modifier held, only the\n"
                      "row without one (Esc) is lit; a missing icon leaves an empty frame.",
                      std::string("show samples\n") + smallCatalogue +
                          "open shortcuts\nopen shortcuts\nshow pane 'Velmora Shortcuts'\n"}),
    registerTourStep({510, "Held modifiers light the matching rows",
                      "Holding control and command lights the rows whose modifiers are exactly those,\n"
                      "whatever their capitals; adding shift lights none of them.",
                      "flags ctrl+cmd\nshow pane 'Velmora Shortcuts'\nflags ctrl+cmd+shift\n"
                      "show pane 'Velmora Shortcuts'\nflags none\n"}),
    registerTourStep({520, "Twice as wide, twice as large",
                      "Every size scales with width / 250: at 500 the names are 20 points and the\n"
                      "chips 18, while the 4 points between chips and the 10 around the list stay.",
                      "width 'Velmora Shortcuts' 500\nshow pane 'Velmora Shortcuts'\n"}),
    registerTourStep({530, "When the catalogue cannot be read",
                      "No file: the pane says so in red. A file without records: in grey. The sample\n"
                      "comes back for the rest of the tour.",
                      "catalogue none\nopen shortcuts\nopen shortcuts\nshow pane 'Velmora Shortcuts'\n"
                      "catalogue '<shortcuts/>'\nopen shortcuts\nopen shortcuts\nshow pane 'Velmora Shortcuts'\n"
                      "catalogue sample\nopen shortcuts\nopen shortcuts\n"}),
    registerTourStep({540, "The assistant pane folds its missed section",
                      "A missed command that has no row of its own shows the question mark, since its\n"
                      "icon file (Default.png) is not installed. Folding hides the missed rows; opening\n"
                      "the section again makes them appear anew, and they glow red.",
                      "flags cmd\nmissed RotateLeft\nflags none\ntap 'Velmora Assistant' 'Missed Shortcuts'\n"
                      "show pane 'Velmora Assistant'\ntap 'Velmora Assistant' 'Missed Shortcuts'\nwait 0.2\n"
                      "show pane 'Velmora Assistant'\nwait 0.5\n"}),
    registerTourStep({550, "Both panes in a browser",
                      "The snapshot is the document window with both panes, control and command held.\n"
                      "Open the printed file in a browser to see the layout.",
                      "flags ctrl+cmd\nsnapshot velmora-panes.html\nflags none\n"}),
};

}  // namespace

}  // namespace velmora::host
