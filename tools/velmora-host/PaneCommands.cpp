// Docked panes and the library's floating windows in the simulator: which
// window is key, opening panes through their entry points, and acting on
// panes and windows as a user would (close, drag the handle, resize,
// modifier keys, taps, typing), with a text view of each and an HTML
// snapshot of the window.
//
// Commands: `keywindow document|tool|none|TITLE`, `open NAME`, `close TARGET`,
// `drag TITLE DX`, `width TITLE W`, `flags MODS`, `tap TARGET LABEL`,
// `hover TARGET LABEL in|out`, `type TARGET LABEL TEXT`, `pick TARGET LABEL
// VALUE`, `tab TITLE LABEL`, `scroll TARGET OFFSET`, `snapshot FILE`;
// shows: `show panes`, `show pane TITLE [TEXT [DEPTH]]`, `show windows`,
// `show window TITLE [TEXT [DEPTH]]` (with TEXT, only the lines holding it
// and what they nest, DEPTH levels down).
// A TARGET is a pane's title or the title of a library window on screen. A
// control is named by its label or help text (a text field also by its
// placeholder), and `LABEL#N` names the N-th of several in reading order.
// Panes are found as the library finds them, by a text field holding the
// title inside a direct subview of the split view; what the host can do
// with a pane or window comes from the access the library handed over when
// it made it.

#include <fmt/format.h>

#include <cmath>
#include <filesystem>
#include <fstream>
#include <limits>
#include <map>
#include <optional>

#include "Host.h"
#include "Scenario.h"
#include "snapshot/Snapshot.h"
#include "support/Text.h"

namespace velmora::host {

namespace {

using platform::View;

bool holdsText(const std::shared_ptr<View>& root, const std::string& text) {
    if (!root) return false;
    if (root->textFieldValue() == text) return true;
    for (const auto& child : root->subviews()) {
        if (holdsText(child, text)) return true;
    }
    return false;
}

// The library's panes in split-view order.
std::vector<std::shared_ptr<View>> dockedPanes() { return Host::instance().dockedPanes(); }

std::pair<std::shared_ptr<View>, const platform::PaneAccess*> paneTitled(const std::string& title) {
    for (const auto& view : dockedPanes()) {
        if (holdsText(view, title)) return {view, Host::instance().paneAccess(view)};
    }
    throw ScenarioError("no open pane titled '" + title + "'");
}

// A pane or a library window on screen, panes first; the access is a copy,
// so a window the action closes or replaces cannot pull it away.
struct Target {
    platform::PaneAccess access;
    bool window = false;
};

Target targetTitled(const std::string& title) {
    for (const auto& view : dockedPanes()) {
        if (holdsText(view, title)) return {*Host::instance().paneAccess(view), false};
    }
    for (auto& shown : Host::instance().visibleWindows()) {
        if (shown.window->title() == title) return {std::move(shown.access), true};
    }
    throw ScenarioError("no open pane or window titled '" + title + "'");
}

Host::LibraryWindow windowTitled(const std::string& title) {
    for (auto& shown : Host::instance().visibleWindows()) {
        if (shown.window->title() == title) return std::move(shown);
    }
    throw ScenarioError("no open window titled '" + title + "'");
}

std::string sizeText(platform::Size size) { return fmt::format("{}x{}", size.width, size.height); }

void layOutSplitView() { Host::instance().layOutSplitViews(); }

std::shared_ptr<hosts::MemoryWindow> toolWindow() {
    static std::shared_ptr<hosts::MemoryWindow> window = [] {
        auto made = std::make_shared<hosts::MemoryWindow>(
            "NSPanel", std::make_shared<hosts::MemoryView>("NSView", platform::Rect{0, 0, 320, 240}));
        Host::instance().views().addWindow(made);
        return made;
    }();
    return window;
}

std::uint64_t parseModifiers(const std::string& text) {
    static const std::map<std::string, std::uint64_t> bits = {
        {"caps", 0x10000}, {"shift", 0x20000}, {"ctrl", 0x40000},    {"opt", 0x80000},
        {"cmd", 0x100000}, {"num", 0x200000},  {"fn", 0x800000},
    };
    if (text == "none") return 0;
    std::uint64_t flags = 0;
    std::size_t at = 0;
    while (at <= text.size()) {
        auto plus = text.find('+', at);
        const std::string word = text.substr(at, plus == std::string::npos ? std::string::npos : plus - at);
        auto bit = bits.find(word);
        if (bit == bits.end()) throw ScenarioError("unknown modifier '" + word + "' (caps shift ctrl opt cmd num fn, or none)");
        flags |= bit->second;
        if (plus == std::string::npos) break;
        at = plus + 1;
    }
    return flags;
}

// "Apply Fill#5" names the fifth control so labelled; a name without a
// number after its last '#' names the first.
struct ControlName {
    std::string label;
    int occurrence = 1;
};

ControlName controlName(const std::string& text) {
    const auto hash = text.rfind('#');
    if (hash == std::string::npos || hash == 0 || hash + 1 == text.size()) return {text, 1};
    const std::string digits = text.substr(hash + 1);
    if (digits.size() > 6 || digits.find_first_not_of("0123456789") != std::string::npos) return {text, 1};
    const int occurrence = std::stoi(digits);
    if (occurrence < 1) throw ScenarioError("control numbers count from 1: '" + text + "'");
    return {text.substr(0, hash), occurrence};
}

std::string notFound(const std::string& title, const std::string& control) {
    return support::quoted(control) + " in " + support::quoted(title);
}

std::size_t indentation(const std::string& line) {
    const auto first = line.find_first_not_of(' ');
    return first == std::string::npos ? line.size() : first;
}

// A description, or with `text` only the lines that hold it, each with the
// lines nested under it down to `levels` deeper, so one cell or one menu
// reads on its own.
struct DescriptionFilter {
    std::string text;
    std::size_t levels = std::numeric_limits<std::size_t>::max();
};

std::optional<DescriptionFilter> descriptionFilter(const Arguments& a) {
    if (a.size() < 2) return std::nullopt;
    DescriptionFilter filter{a[1]};
    if (a.size() > 2) {
        const double levels = numberArgument(a[2]);
        if (levels < 0 || levels != std::floor(levels)) throw ScenarioError("the depth is a whole number of levels, 0 or more");
        filter.levels = static_cast<std::size_t>(levels);
    }
    return filter;
}

void emitDescription(const std::string& prefix, const std::vector<std::string>& lines,
                     const std::optional<DescriptionFilter>& filter) {
    auto& host = Host::instance();
    for (std::size_t i = 0; i < lines.size(); ++i) {
        if (filter && lines[i].find(filter->text) == std::string::npos) continue;
        host.emit(prefix + lines[i]);
        if (!filter) continue;
        const auto depth = indentation(lines[i]);
        while (i + 1 < lines.size() && indentation(lines[i + 1]) > depth) {
            ++i;
            // Two spaces a level.
            if ((indentation(lines[i]) - depth) / 2 <= filter->levels) host.emit(prefix + lines[i]);
        }
    }
}

void callOpen(const std::string& name) {
    const auto& e = Host::instance().exports();
    static const std::map<std::string, void (*Exports::*)()> opens = {
        {"assistant", &Exports::openAssistantTaskpane},     {"shortcuts", &Exports::openShortcutsTaskpane},
        {"icons", &Exports::openIconTaskpane},              {"images", &Exports::openImageTaskpane},
        {"color", &Exports::openColorBarTaskpane},          {"slidelibrary", &Exports::openSlideLibraryTaskpane},
        {"templates", &Exports::openTemplateLibraryTaskpane},
    };
    auto it = opens.find(name);
    if (it == opens.end()) {
        throw ScenarioError("no pane named '" + name + "' (assistant shortcuts icons images color slidelibrary templates)");
    }
    (e.*(it->second))();
}

[[maybe_unused]] const bool registered[] = {
    registerCommand({"keywindow", "keywindow document|tool|none|TITLE", 1, 1,
                     [](const Arguments& a) {
                         auto& host = Host::instance();
                         if (a[0] == "document") {
                             host.views().setKeyWindow(host.documentWindow());
                         } else if (a[0] == "tool") {
                             host.views().setKeyWindow(toolWindow());
                         } else if (a[0] == "none") {
                             host.views().setKeyWindow(nullptr);
                         } else {
                             // A click on one of the library's windows brings it front as key.
                             for (const auto& shown : host.visibleWindows()) {
                                 if (shown.window->title() != a[0]) continue;
                                 shown.window->makeKeyAndOrderFront();
                                 return;
                             }
                             throw ScenarioError("keywindow takes document, tool, none or the title of a window on screen, not '" +
                                                 a[0] + "'");
                         }
                     }}),
    registerCommand({"open", "open assistant|shortcuts|icons|images|color|slidelibrary|templates", 1, 1,
                     [](const Arguments& a) { callOpen(a[0]); }}),
    registerCommand({"close", "close TARGET", 1, 1,
                     [](const Arguments& a) {
                         const auto target = targetTitled(a[0]);
                         if (!target.access.pressClose) {
                             Host::instance().emit("close: no close button on " + support::quoted(a[0]));
                             return;
                         }
                         target.access.pressClose();
                         if (!target.window) layOutSplitView();
                     }}),
    registerCommand({"drag", "drag TITLE DX", 2, 2,
                     [](const Arguments& a) {
                         const double dx = numberArgument(a[1]);
                         paneTitled(a[0]).second->dragResizeHandle(dx);
                         layOutSplitView();
                     }}),
    registerCommand({"width", "width TITLE W", 2, 2,
                     [](const Arguments& a) {
                         const double width = numberArgument(a[1]);
                         if (width < 0) throw ScenarioError("width takes zero or more points");
                         // The host lays the pane out at that width; the
                         // pane's own width constraint stays as it was.
                         auto pane = paneTitled(a[0]).first;
                         auto f = pane->frame();
                         f.width = width;
                         pane->setFrame(f);
                         layOutSplitView();
                     }}),
    registerCommand({"flags", "flags MODS (ctrl+cmd, shift, none, ...)", 1, 1,
                     [](const Arguments& a) {
                         platform::Event event;
                         event.type = platform::EventType::flagsChanged;
                         event.modifierFlags = parseModifiers(a[0]);
                         Host::instance().monitors().dispatch(event);
                     }}),
    registerCommand({"tap", "tap TARGET LABEL[#N]", 2, 2,
                     [](const Arguments& a) {
                         const auto control = controlName(a[1]);
                         const auto target = targetTitled(a[0]);
                         if (!target.access.tap || !target.access.tap(control.label, control.occurrence)) {
                             Host::instance().emit("tap: nothing labelled " + notFound(a[0], a[1]));
                         }
                     }}),
    registerCommand({"hover", "hover TARGET LABEL[#N] in|out", 3, 3,
                     [](const Arguments& a) {
                         if (a[2] != "in" && a[2] != "out") throw ScenarioError("hover takes in or out");
                         const auto control = controlName(a[1]);
                         const auto target = targetTitled(a[0]);
                         if (!target.access.hover || !target.access.hover(control.label, control.occurrence, a[2] == "in")) {
                             Host::instance().emit("hover: nothing that follows the pointer labelled " +
                                                   notFound(a[0], a[1]));
                         }
                     }}),
    registerCommand({"type", "type TARGET LABEL[#N] TEXT ('' for none)", 3, 3,
                     [](const Arguments& a) {
                         const auto control = controlName(a[1]);
                         const auto target = targetTitled(a[0]);
                         if (!target.access.type || !target.access.type(control.label, control.occurrence, a[2])) {
                             Host::instance().emit("type: no text field labelled " + notFound(a[0], a[1]));
                         }
                     }}),
    registerCommand({"pick", "pick TARGET LABEL[#N] VALUE (a day as yyyy-MM-dd for a date picker)", 3, 3,
                     [](const Arguments& a) {
                         const auto control = controlName(a[1]);
                         const auto target = targetTitled(a[0]);
                         if (!target.access.pick || !target.access.pick(control.label, control.occurrence, a[2])) {
                             Host::instance().emit("pick: no " + support::quoted(a[2]) + " to pick in a control labelled " +
                                                   notFound(a[0], a[1]));
                         }
                     }}),
    // A tab container's segments are plain controls; the command only reads better.
    registerCommand({"tab", "tab TITLE LABEL", 2, 2,
                     [](const Arguments& a) {
                         const auto control = controlName(a[1]);
                         const auto target = targetTitled(a[0]);
                         if (!target.access.tap || !target.access.tap(control.label, control.occurrence)) {
                             Host::instance().emit("tab: no segment labelled " + notFound(a[0], a[1]));
                         }
                     }}),
    registerCommand({"scroll", "scroll TARGET OFFSET (points from the top)", 2, 2,
                     [](const Arguments& a) {
                         const double offset = numberArgument(a[1]);
                         if (!std::isfinite(offset)) throw ScenarioError("scroll takes a number of points, not '" + a[1] + "'");
                         const auto target = targetTitled(a[0]);
                         if (!target.access.scroll || !target.access.scroll(offset)) {
                             Host::instance().emit("scroll: no scroll view that follows its position in " +
                                                   support::quoted(a[0]));
                         }
                     }}),
    registerCommand({"snapshot", "snapshot FILE", 1, 1,
                     [](const Arguments& a) {
                         auto& host = Host::instance();
                         host.settle();
                         layOutSplitView();
                         const auto path = std::filesystem::absolute(a[0]).string();
                         std::ofstream out(path, std::ios::binary);
                         if (!out) throw ScenarioError("cannot write '" + path + "'");
                         out << snapshotPage();
                         if (!out.flush()) throw ScenarioError("cannot write '" + path + "'");
                         host.emit("snapshot: " + path);
                     }}),
    registerShow({"panes", "show panes", 0, 0,
                  [](const Arguments&) {
                      auto panes = dockedPanes();
                      if (panes.empty()) Host::instance().emit("panes: (none)");
                      for (const auto& view : panes) {
                          Host::instance().emit("panes: " + firstTextField(view).value_or("?") + " " +
                                                support::swiftDescription(view->frame().width));
                      }
                  }}),
    registerShow({"pane", "show pane TITLE [TEXT [DEPTH]]", 1, 3,
                  [](const Arguments& a) {
                      const auto filter = descriptionFilter(a);
                      emitDescription("pane: ", paneTitled(a[0]).second->describe(), filter);
                  }}),
    registerShow({"windows", "show windows", 0, 0,
                  [](const Arguments&) {
                      auto& host = Host::instance();
                      const auto shown = host.visibleWindows();
                      if (shown.empty()) host.emit("windows: (none)");
                      for (const auto& w : shown) {
                          host.emit(fmt::format("windows: {} content {} level {} key={} visible=yes",
                                                support::quoted(w.window->title()), sizeText(w.window->contentSize()),
                                                w.window->level(), w.key ? "yes" : "no"));
                      }
                  }}),
    registerShow({"window", "show window TITLE [TEXT [DEPTH]]", 1, 3,
                  [](const Arguments& a) {
                      const auto shown = windowTitled(a[0]);
                      if (!shown.access.describe) return;
                      emitDescription("window: ", shown.access.describe(), descriptionFilter(a));
                  }}),

    registerTourStep({450, "Docking panes beside the slide",
                      "Each open... entry point toggles a pane by its title in the window's task pane\n"
                      "split view: the first call docks a framed pane and runs its content loader, a\n"
                      "second call removes it. Panes of different titles stand side by side.",
                      "open assistant\nopen shortcuts\nshow panes\nopen shortcuts\nshow panes\nopen shortcuts\n"
                      "keywindow tool\nopen icons\nkeywindow document\nshow panes\n"}),
    registerTourStep({460, "The frame: drag handle and close button",
                      "Dragging the handle on a pane's left edge changes its width by half the distance\n"
                      "and never below its opening width; the close button removes the pane.",
                      "drag 'Velmora Shortcuts' -100\ndrag 'Velmora Shortcuts' 400\nshow panes\n"
                      "drag 'Velmora Shortcuts' -100\nshow panes\n"}),
    registerTourStep({470, "Rows glow when they appear",
                      "New assistant rows come in with a glow that is full 0.2 s later and gone 0.5 s\n"
                      "after that, driven by main-queue timers.",
                      "select @Shapes/two-boxes.json\n"
                      "others '[]'\nassistant\nwait 0.2\nshow pane 'Velmora Assistant'\nwait 0.5\n"
                      "show pane 'Velmora Assistant'\n"}),
};

}  // namespace

}  // namespace velmora::host
