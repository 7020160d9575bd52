// Tour steps for the icon and photo panes, whose search pages the simulator
// plays by posting their messages. They follow the slide library's steps.

#include "Scenario.h"

namespace velmora::host {

namespace {

[[maybe_unused]] const bool registered[] = {
    registerTourStep({710, "The icon pane and the downloads left this month",
                      "openIconTaskpane docks a pane with three style toggles, the line with the\n"
                      "downloads left and the search page in a web view. The page has the licence key\n"
                      "and the service's address filled in; it cannot run here, so the simulator plays\n"
                      "it. On appearing, the pane asks the service for the month's quota. The\n"
                      "assistant, shortcut, colour and template panes close to make room.",
                      "close Templates\nclose Color\nclose 'Velmora Shortcuts'\n"
                      "close 'Velmora Assistant'\ncloud clear requests\nopen icons\nshow panes\n"
                      "show page Icons\nshow icons\n"}),
    registerTourStep({720, "A click on an icon downloads and inserts it",
                      "The page posts iconClicked with the icon's provider and id. The library\n"
                      "downloads the SVG into the user's icon folder, runs InsertIconSvgIntoPowerPoint\n"
                      "with the file's name and the style, and asks for the quota again: 50 becomes 49.\n"
                      "The macro project reads the file from that folder and adds it to the slide.",
                      "slide 5\nicon lineart 4100\nshow icons\nshow document\n"}),
    registerTourStep({730, "Another style, from the cache",
                      "The style toggles decide what the macro is told. An icon already in the folder\n"
                      "goes in at once: no download, no quota spent, no new quota request.",
                      "tap Icons Fill\nicon lineart 4100\nshow icons\nshow document\nshow cloud\n"}),
    registerTourStep({740, "When the month's downloads are used up",
                      "With no download left the service answers 429 DOWNLOAD_QUOTA_EXHAUSTED: the\n"
                      "library logs the code and message, shows the note and inserts nothing.\n"
                      "The simulator then records a search for arrows, so the snapshot's page\n"
                      "replays it and shows results though the cloud is gone by then.",
                      "cloud fault quota 0\nicon flatshape 9101\nshow icons\n"
                      "show document\nweb Icons search arrow\nsnapshot velmora-icons.html\n"}),
    registerTourStep({750, "A photo from the photo pane",
                      "A pick in the photo page posts downloadImage with the photo's address (its\n"
                      "size added) and its download location. The library reports the download to the\n"
                      "service, the location's own query running on into the report's, then runs\n"
                      "InsertImageIntoPowerPoint; the macro project fetches the photo from the cloud\n"
                      "and fits it to a slide of its own. A recorded search for mountains fills the\n"
                      "snapshot's photo page.",
                      "cloud clear requests\nopen images\nshow panes\nshow page Images\nslide 6\nphoto mountain-01\n"
                      "show cloud\nshow document\nweb Images search mountain\nsnapshot velmora-websearch.html\n"}),
};

}  // namespace

}  // namespace velmora::host
