#include "keyboard/RibbonTab.h"

#include <memory>
#include <mutex>
#include <string>
#include <type_traits>
#include <variant>
#include <vector>

#include "bridge/Exports.h"
#include "platform/Platform.h"
#include "support/Text.h"

namespace velmora {

namespace {

const std::string* stringValue(const std::optional<platform::AXValue>& value) {
    return value ? std::get_if<std::string>(&*value) : nullptr;
}

// One element as the walk listed it: how far below the window, and whether
// the walk went on to read its children there.
struct WalkStep {
    std::weak_ptr<platform::AXElement> element;
    int depth = 0;
    bool opened = false;
};

// The last walk of activateVelmoraTab, for the host's "ribbon walk"
// inspector. The walk keeps only references and depths, so it reads
// nothing more than it always did; the inspector reads the attributes when
// it is asked. Never destroyed, like the rest of the library's state.
struct LastWalk {
    enum class Start { noApplication, noFocusedWindow, window };
    Start start = Start::noApplication;
    std::weak_ptr<platform::AXElement> window;
    std::vector<WalkStep> steps;
    std::weak_ptr<platform::AXElement> found;
};

constinit std::mutex lastWalkMutex;
LastWalk& lastWalk() {
    static auto& walk = *new LastWalk();
    return walk;
}

std::vector<platform::AXElementRef> walkElements(const platform::AXElementRef& element, AXElementSet& visited,
                                                 int depth, std::vector<WalkStep>* trace) {
    std::vector<platform::AXElementRef> result;
    if (depth > 3) return result;
    if (!visited.insert(element.get()).second) return result;

    auto children = element->copyAttributeValue("AXChildren");
    if (children.error != platform::axSuccess || !children.value) return result;
    auto* list = std::get_if<std::vector<platform::AXElementRef>>(&*children.value);
    if (!list) return result;

    const std::size_t first = trace ? trace->size() : 0;
    for (const auto& child : *list) {
        if (!child) continue;
        result.push_back(child);
        if (trace) trace->push_back({child, depth + 1, false});
    }
    std::size_t listed = first;
    for (const auto& child : *list) {
        if (!child) continue;
        // The same two guards the call below meets first.
        if (trace) (*trace)[listed++].opened = depth + 1 <= 3 && !visited.contains(child.get());
        auto below = walkElements(child, visited, depth + 1, trace);
        result.insert(result.end(), below.begin(), below.end());
    }
    return result;
}

std::vector<platform::AXElementRef> walkFocusedWindow(const platform::AXElementRef& application, LastWalk& record) {
    auto window = getFocusedWindow(application);
    if (!window) {
        record.start = LastWalk::Start::noFocusedWindow;
        platform::nslog("VELMORA || Debug: No focused window found");
        return {};
    }
    record.start = LastWalk::Start::window;
    record.window = window;
    platform::nslog("VELMORA || Debug: Focused window found, fetching elements");
    AXElementSet visited;
    return walkElements(window, visited, 0, &record.steps);
}

// An attribute as the inspector prints it; nothing for one the element
// lacks (the platform answers "no value" or "unsupported").
std::string attributeText(const platform::AXElement& element, const std::string& attribute, const char* label) {
    const auto read = element.copyAttributeValue(attribute);
    if (read.error == platform::axNoValue || read.error == platform::axAttributeUnsupported) return {};
    std::string text = std::string(" ") + label + " ";
    if (read.error != platform::axSuccess) return text + "error " + std::to_string(read.error);
    if (!read.value) return text + "none";
    return text + std::visit(
                      [](const auto& value) -> std::string {
                          using T = std::decay_t<decltype(value)>;
                          if constexpr (std::is_same_v<T, std::string>) return support::quoted(value);
                          else if constexpr (std::is_same_v<T, std::int64_t>) return std::to_string(value);
                          else if constexpr (std::is_same_v<T, double>) return support::swiftDescription(value);
                          else if constexpr (std::is_same_v<T, bool>) return value ? "true" : "false";
                          else if constexpr (std::is_same_v<T, platform::AXElementRef>) return "<element>";
                          else return "<" + std::to_string(value.size()) + " elements>";
                      },
                      *read.value);
}

std::string elementText(const platform::AXElement& element) {
    return attributeText(element, "AXRole", "role") + attributeText(element, "AXTitle", "title") +
           attributeText(element, "AXDescription", "description") + attributeText(element, "AXValue", "value");
}

void keepWalk(LastWalk record) {
    std::lock_guard lock(lastWalkMutex);
    lastWalk() = std::move(record);
}

std::vector<std::string> describeLastWalk() {
    LastWalk walk;
    {
        std::lock_guard lock(lastWalkMutex);
        walk = lastWalk();
    }
    const std::string prefix = "ribbon walk: ";
    if (walk.start == LastWalk::Start::noApplication) return {prefix + "no application"};
    if (walk.start == LastWalk::Start::noFocusedWindow) return {prefix + "no focused window"};
    std::vector<std::string> lines;
    const auto window = walk.window.lock();
    lines.push_back(prefix + "focused window" + (window ? elementText(*window) : " (gone)") + ", " +
                    std::to_string(walk.steps.size()) + (walk.steps.size() == 1 ? " element" : " elements"));
    const auto found = walk.found.lock();
    bool foundMarked = false;
    for (const auto& step : walk.steps) {
        const auto element = step.element.lock();
        std::string line = prefix + std::to_string(step.depth) + (element ? elementText(*element) : " (gone)");
        if (element && step.depth <= 3) {
            const auto children = element->copyAttributeValue("AXChildren");
            if (children.error != platform::axSuccess && children.error != platform::axNoValue &&
                children.error != platform::axAttributeUnsupported) {
                line += " children error " + std::to_string(children.error);
            }
            if (!step.opened) line += " [opened before]";
        }
        if (element && element == found && !foundMarked) {
            line += " [found]";
            foundMarked = true;
        }
        lines.push_back(std::move(line));
    }
    return lines;
}

}  // namespace

platform::AXElementRef getApplication(const std::string& bundleIdentifier) {
    for (const auto& app : platform::accessibility().runningApplications()) {
        if (app.bundleIdentifier == bundleIdentifier) {
            return platform::accessibility().createApplicationElement(app.processIdentifier);
        }
    }
    return nullptr;
}

platform::AXElementRef getFocusedWindow(const platform::AXElementRef& application) {
    auto window = getAttribute(application, "AXFocusedWindow");
    if (!window) return nullptr;
    auto* element = std::get_if<platform::AXElementRef>(&*window);
    return element ? *element : nullptr;
}

std::vector<platform::AXElementRef> fetchElements(const platform::AXElementRef& element, AXElementSet& visited,
                                                  int depth) {
    return walkElements(element, visited, depth, nullptr);
}

std::vector<platform::AXElementRef> fetchElementsFromFocusedWindow(const platform::AXElementRef& application) {
    LastWalk unrecorded;
    return walkFocusedWindow(application, unrecorded);
}

std::optional<platform::AXValue> getAttribute(const platform::AXElementRef& element, const std::string& attribute) {
    auto read = element->copyAttributeValue(attribute);
    if (read.error != platform::axSuccess) return std::nullopt;
    return read.value;
}

platform::AXElementRef findVelmoraElement(const std::vector<platform::AXElementRef>& elements) {
    for (const auto& element : elements) {
        auto role = getAttribute(element, "AXRole");
        const std::string* roleText = stringValue(role);
        if (!roleText || *roleText != "AXRadioButton") continue;
        auto title = getAttribute(element, "AXTitle");
        const std::string* titleText = stringValue(title);
        if (!titleText || *titleText != "Velmora") continue;

        platform::nslog("Found matching element:");
        platform::nslog("Role: " + *roleText);
        platform::nslog("Title: " + *titleText);
        auto description = getAttribute(element, "AXDescription");
        if (const std::string* text = stringValue(description)) platform::nslog("Description: " + *text);
        return element;
    }
    platform::nslog("No matching element found");
    return nullptr;
}

void performAction(const platform::AXElementRef& element) {
    platform::nslog("VELMORA || Performing press action on element");
    if (element->performAction("AXPress") != platform::axSuccess) {
        platform::nslog("VELMORA || Error: Could not perform press action");
    }
}

void activateVelmoraTab() {
    platform::registerInspector("ribbon walk", describeLastWalk);
    auto app = getApplication("com.microsoft.Powerpoint");
    if (!app) {
        keepWalk({});
        platform::nslog("VELMORA || Debug: Failed to get application");
        return;
    }
    LastWalk record;
    auto elements = walkFocusedWindow(app, record);
    auto tab = findVelmoraElement(elements);
    record.found = tab;
    keepWalk(std::move(record));
    if (!tab) {
        platform::nslog("VELMORA || Debug: 'Velmora' element not found");
        return;
    }
    // Any doubt about the value ends in a press: a failed read, no value, a
    // value of another type or another number.
    auto value = tab->copyAttributeValue("AXValue");
    if (value.error != platform::axSuccess) {
        platform::nslog("VELMORA ||Failed to get value attribute of element with title Velmora");
    } else if (value.value) {
        const auto* number = std::get_if<std::int64_t>(&*value.value);
        if (number && *number == 1) {
            platform::nslog("VELMORA || Value is 1");
            return;
        }
    }
    performAction(tab);
}

}  // namespace velmora
