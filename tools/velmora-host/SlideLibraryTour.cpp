// Tour steps for the slide library: the user's saved slides in the library
// pane's first tab, and the tagging window the macro project opens after a
// slide is saved. They follow the template library's steps.

#include "Scenario.h"

namespace velmora::host {

namespace {

[[maybe_unused]] const bool registered[] = {
    registerTourStep({660, "The library pane opens on its templates",
                      "openSlideLibraryTaskpane docks one pane with two tabs; it opens on Templates\n"
                      "every time. The Saved Slides tab makes the store the first time it shows: the\n"
                      "store reads SlideLibrary_Metadata.json on a worker, and the grid lists the\n"
                      "simulator's 24 sample slides newest first, building only the rows in view.",
                      "open slidelibrary\nshow pane 'Slide Library' segmented\ntab 'Slide Library' 'Saved Slides'\n"
                      "show pane 'Slide Library' '[hover]' 0\n"}),
    registerTourStep({670, "Searching, picking tags and inserting a slide",
                      "The search looks in each slide's text, ignoring case; picking tags keeps the\n"
                      "slides with any of them. A tap on a cell inserts the slide through the macro\n"
                      "project, with the Keep Source Formatting choice as True or False; the macro\n"
                      "project adds it after the current slide, drawn from its thumbnail.",
                      "type 'Slide Library' 'Search slides...' percent\nshow pane 'Slide Library' '[hover]' 0\n"
                      "pick 'Slide Library' Tags Finance\npick 'Slide Library' Tags Market\n"
                      "show pane 'Slide Library' 'ax \"Tags\"' 0\nshow pane 'Slide Library' '[hover]' 0\n"
                      "tap 'Slide Library' 'Keep Source Formatting'\ntap 'Slide Library' 'Market Share'\n"
                      "show document\n"}),
    registerTourStep({680, "A preview on rest, and a delete",
                      "Resting the pointer on a cell for half a second opens its preview; while it is\n"
                      "there, the cell's delete button takes taps. The slide leaves the grid at once;\n"
                      "in the background the store rewrites the file with the four keys it knows, so\n"
                      "SlidesFileName is gone from every record, and removes the thumbnail.",
                      "hover 'Slide Library' 'Market Share' in\nwait 0.5\nshow pane 'Slide Library' 'ax \"Market Share\"' 2\n"
                      "tap 'Slide Library' Delete\nshow pane 'Slide Library' '[hover]' 0\nshow library\n"}),
    registerTourStep({690, "Tagging the slides of one file",
                      "After the macro project saves slides (here: it writes the sample again, file\n"
                      "names and all), it opens the tagging window for their file. A typed tag comes\n"
                      "in with Return; a tap on a recently used tag adds that one. The snapshot shows\n"
                      "the window over the document with the pane, the pointer on a cell.",
                      "library sample\ncall initializeTaggingOverlay 'Team Offsite.pptx'\nshow windows\n"
                      "type 'Tag Slides' 'Add a tag…' ' Offsite '\nkey return\ntap 'Tag Slides' Logistics\n"
                      "show window 'Tag Slides' 'Remove ' 0\nhover 'Slide Library' 'Revenue Bridge' in\n"
                      "snapshot velmora-slidelibrary.html\nhover 'Slide Library' 'Revenue Bridge' out\n"}),
    registerTourStep({700, "Saving the tags, and a refresh from the macro project",
                      "Save writes the tags into every record with that file name, keeping the other\n"
                      "keys, reloads the pane and closes the window. refreshSlideLibraryTaskpane, which\n"
                      "the macro project calls after it changes the library, reloads it too.",
                      "tap 'Tag Slides' Save\nshow windows\ncall refreshSlideLibraryTaskpane\nshow library\n"}),
};

}  // namespace

}  // namespace velmora::host
