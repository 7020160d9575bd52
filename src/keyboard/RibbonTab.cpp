#include "keyboard/RibbonTab.h"

#include "bridge/Exports.h"
#include "platform/Platform.h"

namespace velmora {

namespace {

const std::string* stringValue(const std::optional<platform::AXValue>& value) {
    return value ? std::get_if<std::string>(&*value) : nullptr;
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
    std::vector<platform::AXElementRef> result;
    if (depth > 3) return result;
    if (!visited.insert(element.get()).second) return result;

    auto children = element->copyAttributeValue("AXChildren");
    if (children.error != platform::axSuccess || !children.value) return result;
    auto* list = std::get_if<std::vector<platform::AXElementRef>>(&*children.value);
    if (!list) return result;

    for (const auto& child : *list) {
        if (child) result.push_back(child);
    }
    for (const auto& child : *list) {
        if (!child) continue;
        auto below = fetchElements(child, visited, depth + 1);
        result.insert(result.end(), below.begin(), below.end());
    }
    return result;
}

std::vector<platform::AXElementRef> fetchElementsFromFocusedWindow(const platform::AXElementRef& application) {
    auto window = getFocusedWindow(application);
    if (!window) {
        platform::nslog("VELMORA || Debug: No focused window found");
        return {};
    }
    platform::nslog("VELMORA || Debug: Focused window found, fetching elements");
    AXElementSet visited;
    return fetchElements(window, visited, 0);
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
    auto app = getApplication("com.microsoft.Powerpoint");
    if (!app) {
        platform::nslog("VELMORA || Debug: Failed to get application");
        return;
    }
    auto elements = fetchElementsFromFocusedWindow(app);
    auto tab = findVelmoraElement(elements);
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
