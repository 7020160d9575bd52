// The simulator's core commands: calling entry points, steering the macro
// project and the clock, and the foundation's tour steps.

#include <fmt/format.h>

#include <functional>
#include <map>

#include "Host.h"
#include "Scenario.h"

namespace velmora::host {

namespace {

// How `call` turns its words into an entry point's arguments.
struct Entry {
    std::size_t arity;
    std::function<void(const Exports&, const Arguments&)> invoke;
};

const std::map<std::string, Entry>& entries() {
    using A = const Arguments&;
    using E = const Exports&;
    static const std::map<std::string, Entry> table = {
        {"initializeEventMonitor", {0, [](E e, A) { e.initializeEventMonitor(); }}},
        {"updateShortcutEnabledState", {0, [](E e, A) { e.updateShortcutEnabledState(); }}},
        {"activateVelmoraTab", {0, [](E e, A) { e.activateVelmoraTab(); }}},
        {"triggerAssistant", {2, [](E e, A a) { e.triggerAssistant(a[0].c_str(), a[1].c_str()); }}},
        {"triggerMissedAssistant", {1, [](E e, A a) { e.triggerMissedAssistant(a[0].c_str()); }}},
        {"openShortcutsTaskpane", {0, [](E e, A) { e.openShortcutsTaskpane(); }}},
        {"openAssistantTaskpane", {0, [](E e, A) { e.openAssistantTaskpane(); }}},
        {"openIconTaskpane", {0, [](E e, A) { e.openIconTaskpane(); }}},
        {"openImageTaskpane", {0, [](E e, A) { e.openImageTaskpane(); }}},
        {"openColorBarTaskpane", {0, [](E e, A) { e.openColorBarTaskpane(); }}},
        {"openSlideLibraryTaskpane", {0, [](E e, A) { e.openSlideLibraryTaskpane(); }}},
        {"openTemplateLibraryTaskpane", {0, [](E e, A) { e.openTemplateLibraryTaskpane(); }}},
        {"refreshSlideLibraryTaskpane", {0, [](E e, A) { e.refreshSlideLibraryTaskpane(); }}},
        {"triggerColorThemeRefresh", {0, [](E e, A) { e.triggerColorThemeRefresh(); }}},
        {"initializeTablesOverlay",
         {7,
          [](E e, A a) {
              e.initializeTablesOverlay(a[0].c_str(), a[1].c_str(), booleanArgument(a[2]), booleanArgument(a[3]),
                                        booleanArgument(a[4]), booleanArgument(a[5]), booleanArgument(a[6]));
          }}},
        {"initializeLinesOverlay", {0, [](E e, A) { e.initializeLinesOverlay(); }}},
        {"initializeTaggingOverlay", {1, [](E e, A a) { e.initializeTaggingOverlay(a[0].c_str()); }}},
        {"initializeLoginOverlay", {0, [](E e, A) { e.initializeLoginOverlay(); }}},
        {"initializeFreeTrialOverlay", {0, [](E e, A) { e.initializeFreeTrialOverlay(); }}},
    };
    return table;
}

[[maybe_unused]] const bool registered[] = {
    registerCommand({"call", "call EXPORT ARGS...", 1, 8,
                     [](const Arguments& a) {
                         auto entry = entries().find(a[0]);
                         if (entry == entries().end()) throw ScenarioError("no entry point named '" + a[0] + "'");
                         Arguments rest(a.begin() + 1, a.end());
                         if (rest.size() != entry->second.arity) {
                             throw ScenarioError(fmt::format("{} takes {} arguments", a[0], entry->second.arity));
                         }
                         entry->second.invoke(Host::instance().exports(), rest);
                     }}),
    registerCommand({"answer", "answer MACRO TEXT", 2, 2,
                     [](const Arguments& a) { Host::instance().setAnswer(a[0], a[1]); }}),
    registerCommand({"fail", "fail MACRO", 1, 1, [](const Arguments& a) { Host::instance().setFailing(a[0]); }}),
    registerCommand({"wait", "wait SECONDS", 1, 1,
                     [](const Arguments& a) {
                         double seconds = numberArgument(a[0]);
                         if (seconds < 0) throw ScenarioError("wait takes a duration of zero or more");
                         Host::instance().mainQueue().advance(seconds);
                     }}),
    registerCommand({"settle", "settle", 0, 0, [](const Arguments&) { Host::instance().settle(); }}),
    registerCommand({"echo", "echo TEXT...", 0, 64,
                     [](const Arguments& a) {
                         std::string text;
                         for (const auto& word : a) text += (text.empty() ? "" : " ") + word;
                         Host::instance().emit(text);
                     }}),
    registerCommand({"hardware", "hardware UUID|none|fail", 1, 1,
                     [](const Arguments& a) {
                         auto& host = Host::instance();
                         if (a[0] == "fail") {
                             host.setHardwareReport(std::nullopt);
                         } else if (a[0] == "none") {
                             host.setHardwareReport("Hardware:\n\n    Hardware Overview:\n\n      Model Name: Simulated Mac\n");
                         } else {
                             host.setHardwareReport("Hardware:\n\n    Hardware Overview:\n\n      Hardware UUID: " + a[0] + "\n");
                         }
                     }}),
    registerShow({"time", "show time", 0, 0,
                  [](const Arguments&) {
                      Host::instance().emit(fmt::format("time: {:.3f}", Host::instance().mainQueue().now()));
                  }}),
    registerShow({"macros", "show macros", 0, 0,
                  [](const Arguments&) {
                      auto counts = Host::instance().macroCounts();
                      if (counts.empty()) Host::instance().emit("macros: (none)");
                      for (const auto& [name, count] : counts) Host::instance().emit(fmt::format("macros: {} x{}", name, count));
                  }}),

    registerTourStep({10, "Loading the library",
                      "The host loads the library and calls its entry points by name. Loading runs\n"
                      "nothing; the macro project starts it with initializeEventMonitor, which reads\n"
                      "the device identifier and the user's shortcut setting through a macro.",
                      "call initializeEventMonitor\nshow macros\n"}),
    registerTourStep({20, "The shortcut setting, read through a macro",
                      "updateShortcutEnabledState asks the macro project for the setting. Any answer\n"
                      "but \"true\" (in any capitals) turns the shortcuts off; an error leaves them on.",
                      "answer GetEnableKeyboardShortcuts FALSE\ncall updateShortcutEnabledState\n"
                      "fail GetEnableKeyboardShortcuts\ncall updateShortcutEnabledState\n"
                      "answer GetEnableKeyboardShortcuts true\ncall updateShortcutEnabledState\n"}),
    registerTourStep({30, "Tool windows and other entry points",
                      "Each entry point writes its first log line; the table builder logs its seven values.\n"
                      "The table builder and the lines palette float above the document as key windows;\n"
                      "Escape or the close box puts them away and gives the key back to the document.",
                      "call initializeTablesOverlay 3 4 true false true false false\nshow windows\nkey escape\n"
                      "call initializeLinesOverlay\nshow windows\nclose 'Insert Lines'\nshow windows\n"
                      "call initializeLoginOverlay\n"}),
};

}  // namespace

}  // namespace velmora::host
