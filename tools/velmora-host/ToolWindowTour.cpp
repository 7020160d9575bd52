// Tour steps for the two tool windows, on a slide of their own after the
// colour bar's.

#include "Scenario.h"

namespace velmora::host {

namespace {

[[maybe_unused]] const bool registered[] = {
    registerTourStep({620, "The table builder",
                      "The macro project opens the table builder with its current settings: 4 rows,\n"
                      "5 columns, a title row and separator lines. The window floats above the\n"
                      "document and fits its content. Here the columns are changed to 6 and Return\n"
                      "presses Insert, which sends all seven values as quoted text to InsertTable\n"
                      "and closes the window; the macro project draws the table.",
                      "slide 2\ncall initializeTablesOverlay 4 5 true false true false false\nshow windows\n"
                      "type 'Insert Table' Columns 6\nkey return\nshow windows\nshow document\n"}),
    registerTourStep({630, "The lines palette",
                      "The palette stays open while its presets are clicked: each sends its one number\n"
                      "to InsertLine. The snapshot shows it over the slide with the new table and\n"
                      "lines; Escape then closes it, and the key goes no further.",
                      "call initializeLinesOverlay\nhover 'Insert Lines' Triangle in\ntap 'Insert Lines' Triangle\n"
                      "tap 'Insert Lines' Impact#2\nshow document\nsnapshot velmora-windows.html\nkey escape\n"
                      "show windows\n"}),
};

}  // namespace

}  // namespace velmora::host
