// The simulator's assistant commands: the document's selected and other
// shapes, the macro project's triggerAssistant call, the slide sentinel,
// missed commands, and the rows the library publishes.

#include "Host.h"
#include "Scenario.h"

namespace velmora::host {

namespace {

[[maybe_unused]] const bool registered[] = {
    // Raw texts in place of the document's shapes, until a document command ends them.
    registerCommand({"select", "select JSON", 1, 1,
                     [](const Arguments& a) {
                         Host::instance().document().with([&](DocumentState& doc) { doc.rawSelected = a[0]; });
                     }}),
    registerCommand({"others", "others JSON", 1, 1,
                     [](const Arguments& a) {
                         Host::instance().document().with([&](DocumentState& doc) { doc.rawOthers = a[0]; });
                     }}),
    // As the macro project answers CallTriggerAssistant: with the document's
    // shapes, or with the two texts given.
    registerCommand({"assistant", "assistant [SELECTED OTHERS]", 0, 2,
                     [](const Arguments& a) {
                         auto& host = Host::instance();
                         if (a.size() == 1) throw ScenarioError("usage: assistant [SELECTED OTHERS]");
                         auto doc = host.document().copy();
                         const std::string selected = a.empty() ? doc.selectedShapesJSON() : a[0];
                         const std::string others = a.empty() ? doc.otherShapesJSON() : a[1];
                         host.exports().triggerAssistant(selected.c_str(), others.c_str());
                     }}),
    registerCommand({"slide-selected", "slide-selected", 0, 0,
                     [](const Arguments&) {
                         auto& host = Host::instance();
                         const std::string others =
                             host.document().with([](DocumentState& doc) { return doc.otherShapesJSON(); });
                         host.exports().triggerAssistant("[SlideSelected]", others.c_str());
                     }}),
    registerCommand({"missed", "missed COMMAND", 1, 1,
                     [](const Arguments& a) { Host::instance().exports().triggerMissedAssistant(a[0].c_str()); }}),
    registerShow({"assistant", "show assistant", 0, 0,
                  [](const Arguments&) {
                      Host::instance().emitInspected("assistant", {"suggested: (none)", "missed: (none)"});
                  }}),

    registerTourStep({300, "The assistant recommends shortcuts",
                      "The macro project sends the selected shapes and the others as JSON. Three boxes\n"
                      "in a row, unevenly spaced and of different heights, earn align, distribute and\n"
                      "same-height rows; the rows appear on the main queue.",
                      "select @Shapes/three-boxes.json\n"
                      "others '[]'\nassistant\nshow assistant\n"}),
    registerTourStep({310, "An unchanged selection publishes nothing",
                      "Only the row names are compared with the last run: the same selection logs that\n"
                      "the rows remain unchanged, and the pane keeps its rows. The slide itself\n"
                      "selected gives the send row.",
                      "assistant\nslide-selected\nshow assistant\n"}),
    registerTourStep({320, "Missed shortcuts",
                      "A command run from the menu is remembered with its shortcut, newest first and at\n"
                      "most three; a repeat of a listed name is not added twice.",
                      "missed Group\nmissed BringToFrontMenu\nmissed BringToFront\nmissed NewSlide\n"
                      "missed AlignLeft\nshow assistant\n"}),
};

}  // namespace

}  // namespace velmora::host
