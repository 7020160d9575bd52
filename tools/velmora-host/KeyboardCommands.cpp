// The simulator's keyboard side: key and mouse events through the host's
// monitors, the ribbon in the host's accessibility tree, and their tour.

#include <fmt/format.h>

#include <memory>
#include <optional>
#include <variant>
#include <vector>

#include "Host.h"
#include "KeyboardLayout.h"
#include "Scenario.h"
#include "support/Text.h"
#include "trees/HostTrees.h"

namespace velmora::host {

namespace {

using hosts::MemoryAXElement;

constexpr int hostProcessIdentifier = 4242;
constexpr platform::AXError apiDisabled = -25211;

const char* const ribbonTabs[] = {"Home", "Insert", "Draw", "Design", "Transitions", "Animations",
                                  "Slide Show", "Review", "View", "Velmora"};

std::shared_ptr<MemoryAXElement> element(const std::string& role, const std::string& title = "") {
    auto made = std::make_shared<MemoryAXElement>();
    made->set("AXRole", role);
    if (!title.empty()) made->set("AXTitle", title);
    return made;
}

// The host application as the accessibility interface shows it: a focused
// document window whose ribbon holds the tabs as radio buttons, the add-in's
// among them, beside the slide editor.
struct HostApplication {
    enum class Presence { present, absent, untrusted };
    Presence presence = Presence::present;
    int tabDepth = 3;  // levels below the window
    bool tabPresent = true;
    std::optional<platform::AXValue> tabValue = std::int64_t{0};  // nothing: unreadable

    std::shared_ptr<MemoryAXElement> app;
    std::shared_ptr<MemoryAXElement> window;
    std::shared_ptr<MemoryAXElement> velmoraTab;

    static HostApplication& shared() {
        static HostApplication host;
        return host;
    }

    void rebuild() {
        forgetLoadedAxTree();
        auto& accessibility = Host::instance().accessibility();
        accessibility.removeApplication(hostProcessIdentifier);
        if (presence == Presence::absent) return;

        app = element("AXApplication", "Microsoft PowerPoint");
        window = element("AXWindow", "Presentation1");
        if (presence == Presence::untrusted) {
            app->setResult("AXFocusedWindow", {apiDisabled, std::nullopt});
        } else {
            app->set("AXFocusedWindow", platform::AXElementRef(window));
        }
        app->setChildren({window});

        // The tabs sit at tabDepth: a chain of groups leads down to them.
        std::vector<platform::AXElementRef> tabs;
        velmoraTab.reset();
        for (const char* title : ribbonTabs) {
            const bool isVelmora = std::string(title) == "Velmora";
            if (isVelmora && !tabPresent) continue;
            auto tab = element("AXRadioButton", title);
            tab->set("AXSubrole", std::string("AXTabButton"));
            if (isVelmora) {
                tab->set("AXDescription", std::string("Velmora add-in tab"));
                setValue(*tab);
                tab->onAction([](const std::string& action) { return HostApplication::shared().press(action); });
                velmoraTab = tab;
            } else {
                tab->set("AXValue", std::int64_t{0});
            }
            tabs.push_back(tab);
        }
        platform::AXElementRef holder;
        std::vector<platform::AXElementRef> level = tabs;
        for (int depth = tabDepth; depth > 1; --depth) {
            auto group = element(depth == tabDepth ? "AXTabGroup" : "AXGroup", depth == 2 ? "Ribbon" : "");
            group->setChildren(level);
            level = {group};
        }
        auto editor = element("AXSplitGroup");
        auto slide = element("AXScrollArea", "Slide 1");
        slide->setChildren({element("AXTextArea", "Click to add title"), element("AXTextArea", "Click to add text")});
        editor->setChildren({element("AXList", "Thumbnails"), slide});
        level.push_back(editor);
        window->setChildren(level);

        accessibility.addApplication({"com.microsoft.Powerpoint", hostProcessIdentifier}, app);
    }

    void setValue(MemoryAXElement& tab) const {
        if (tabValue) {
            tab.set("AXValue", *tabValue);
        } else {
            tab.setResult("AXValue", {platform::axAttributeUnsupported, std::nullopt});
        }
    }

    // Pressing selects the tab; an unreadable value stays unreadable.
    platform::AXError press(const std::string& action) {
        if (action != "AXPress") return platform::axFailure;
        Host::instance().emit("ax: press Velmora");
        if (tabValue) {
            tabValue = std::int64_t{1};
            if (velmoraTab) setValue(*velmoraTab);
        }
        return platform::axSuccess;
    }

    std::string valueText() const {
        if (!tabValue) return "none";
        if (auto* number = std::get_if<std::int64_t>(&*tabValue)) return std::to_string(*number);
        if (auto* real = std::get_if<double>(&*tabValue)) return fmt::format("{}", *real);
        return "?";
    }
};

// Built as the host starts, before any scenario line runs.
[[maybe_unused]] const bool hostApplicationBuilt = (HostApplication::shared().rebuild(), true);

// Return and the keypad's Enter with no command modifier held.
bool pressesDefaultButton(const platform::Event& event) {
    constexpr std::uint64_t shiftControlOptionCommand = 0x20000 | 0x40000 | 0x80000 | 0x100000;
    return (event.keyCode == 36 || event.keyCode == 76) && (event.modifierFlags & shiftControlOptionCommand) == 0;
}

// A key the monitors let through reaches the key window: in one of the
// library's windows, Return presses its default button.
void deliverKey(const platform::Event& event) {
    auto& host = Host::instance();
    auto passed = host.monitors().dispatch(event);
    host.emit(passed ? "key: passed" : "key: consumed");
    if (!passed || !pressesDefaultButton(event)) return;
    for (const auto& shown : host.visibleWindows()) {
        if (!shown.key) continue;
        const auto title = support::quoted(shown.window->title());
        if (shown.access.pressDefault && shown.access.pressDefault()) {
            host.emit("key: pressed the default button of " + title);
        } else {
            host.emit("key: no default button in " + title);
        }
    }
}

std::optional<platform::AXValue> valueArgument(const std::string& text) {
    if (text == "none") return std::nullopt;
    if (text.find_first_of(".eE") != std::string::npos) return numberArgument(text);
    double number = numberArgument(text);
    if (number != static_cast<double>(static_cast<std::int64_t>(number))) throw ScenarioError("not a value: " + text);
    return static_cast<std::int64_t>(number);
}

[[maybe_unused]] const bool registered[] = {
    registerCommand({"key", "key CHORD (e.g. ctrl+cmd+left, cmd+shift+7, enter)", 1, 1,
                     [](const Arguments& a) { deliverKey(keyDownEvent(a[0])); }}),
    registerCommand({"key-raw", "key-raw CHARS|- KEYCODE FLAGS-HEX", 3, 3,
                     [](const Arguments& a) { deliverKey(rawKeyDownEvent(a[0], a[1], a[2])); }}),
    registerCommand({"mouseup", "mouseup left|right|other", 1, 1,
                     [](const Arguments& a) {
                         platform::Event event;
                         if (a[0] == "left") {
                             event.type = platform::EventType::leftMouseUp;
                         } else if (a[0] == "right") {
                             event.type = platform::EventType::rightMouseUp;
                         } else if (a[0] == "other") {
                             event.type = platform::EventType::otherMouseUp;
                         } else {
                             throw ScenarioError("usage: mouseup left|right|other");
                         }
                         event.charactersIgnoringModifiers.reset();
                         auto passed = Host::instance().monitors().dispatch(event);
                         Host::instance().emit(passed ? "mouse: passed" : "mouse: consumed");
                     }}),
    registerCommand({"ribbon", "ribbon DEPTH VALUE|none, or ribbon absent", 1, 2,
                     [](const Arguments& a) {
                         auto& host = HostApplication::shared();
                         if (a.size() == 1) {
                             if (a[0] != "absent") throw ScenarioError("usage: ribbon DEPTH VALUE|none, or ribbon absent");
                             host.tabPresent = false;
                         } else {
                             double depth = numberArgument(a[0]);
                             if (depth < 1 || depth > 12 || depth != static_cast<int>(depth)) {
                                 throw ScenarioError("the ribbon's depth is a whole number from 1 to 12");
                             }
                             host.tabDepth = static_cast<int>(depth);
                             host.tabValue = valueArgument(a[1]);
                             host.tabPresent = true;
                         }
                         host.rebuild();
                     }}),
    registerCommand({"app", "app present|absent|untrusted", 1, 1,
                     [](const Arguments& a) {
                         auto& host = HostApplication::shared();
                         if (a[0] == "present") {
                             host.presence = HostApplication::Presence::present;
                         } else if (a[0] == "absent") {
                             host.presence = HostApplication::Presence::absent;
                         } else if (a[0] == "untrusted") {
                             host.presence = HostApplication::Presence::untrusted;
                         } else {
                             throw ScenarioError("usage: app present|absent|untrusted");
                         }
                         host.rebuild();
                     }}),
    registerShow({"ribbon", "show ribbon [walk]", 0, 1,
                  [](const Arguments& a) {
                      if (!a.empty()) {
                          if (a[0] != "walk") throw ScenarioError("usage: show ribbon [walk]");
                          showRibbonWalk();
                          return;
                      }
                      if (showLoadedRibbon()) return;
                      const auto& host = HostApplication::shared();
                      const char* presence = host.presence == HostApplication::Presence::present ? "present"
                                             : host.presence == HostApplication::Presence::absent ? "absent"
                                                                                                   : "untrusted";
                      Host::instance().emit(std::string("ribbon: app ") + presence);
                      if (!host.tabPresent) {
                          Host::instance().emit("ribbon: Velmora tab absent");
                      } else {
                          Host::instance().emit(
                              fmt::format("ribbon: Velmora tab at depth {}, value {}", host.tabDepth, host.valueText()));
                      }
                  }}),
    registerShow({"shortcuts", "show shortcuts", 0, 0,
                  [](const Arguments&) {
                      auto lines = Host::instance().inspect("shortcuts");
                      if (!lines) lines = std::vector<std::string>{"shortcuts: enabled"};
                      for (const auto& line : *lines) Host::instance().emit(line);
                  }}),
    registerShow({"monitors", "show monitors", 0, 0,
                  [](const Arguments&) {
                      Host::instance().emit(fmt::format("monitors: {}", Host::instance().monitors().count()));
                  }}),

    registerTourStep({12, "A keyboard shortcut runs its macro",
                      "The key-down monitor matches each key press against the 47-row shortcut table.\n"
                      "control + command + Down is Align Bottom: the key is taken from the host, and\n"
                      "one main-queue block runs the macro, then asks the assistant to refresh.\n"
                      "command + shift + 7 matches by physical key code, whatever the layout prints.",
                      "show monitors\nkey ctrl+cmd+down\nkey cmd+shift+7\nshow macros\n"}),
    registerTourStep({13, "Keys that pass to the host",
                      "A key outside the table passes on, as does a superset of a row's modifiers\n"
                      "(control + shift + t) and any chord with option held. Every key is logged.\n"
                      "A mouse release passes too, and refreshes the assistant 0.3 seconds later.",
                      "key cmd+s\nkey ctrl+shift+t\nkey opt+ctrl+t\nmouseup left\nwait 0.3\n"}),
    registerTourStep({14, "The shortcut setting switched off",
                      "With the user's setting off, every key passes unexamined and unlogged; the\n"
                      "setting is read again only when the macro project asks for it.",
                      "answer GetEnableKeyboardShortcuts false\ncall updateShortcutEnabledState\nshow shortcuts\n"
                      "key ctrl+cmd+down\nanswer GetEnableKeyboardShortcuts true\ncall updateShortcutEnabledState\n"
                      "show shortcuts\n"}),
    registerTourStep({15, "The add-in's ribbon tab",
                      "activateVelmoraTab walks the focused window's accessibility tree four levels\n"
                      "deep, finds the radio button titled Velmora and presses it unless its value\n"
                      "is already 1. Deeper than four levels, the tab is not found.",
                      "show ribbon\ncall activateVelmoraTab\ncall activateVelmoraTab\nribbon 5 0\n"
                      "call activateVelmoraTab\n"}),
};

}  // namespace

void rebuildBuiltInAccessibilityTree() { HostApplication::shared().rebuild(); }

}  // namespace velmora::host
