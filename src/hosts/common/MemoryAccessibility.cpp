#include "hosts/common/MemoryAccessibility.h"

#include <algorithm>

namespace velmora::hosts {

platform::AXResult MemoryAXElement::copyAttributeValue(const std::string& attribute) const {
    auto it = attributes_.find(attribute);
    if (it == attributes_.end()) return {platform::axNoValue, std::nullopt};
    return it->second;
}

platform::AXError MemoryAXElement::performAction(const std::string& action) {
    if (actionHandler_) return actionHandler_(action);
    return platform::axSuccess;
}

std::vector<platform::RunningApplication> MemoryAccessibility::runningApplications() const {
    std::vector<platform::RunningApplication> apps;
    for (const auto& entry : apps_) apps.push_back(entry.app);
    return apps;
}

platform::AXElementRef MemoryAccessibility::createApplicationElement(int processIdentifier) {
    for (const auto& entry : apps_) {
        if (entry.app.processIdentifier == processIdentifier) return entry.element;
    }
    // The platform hands out an element for any process; reads on it fail.
    return std::make_shared<MemoryAXElement>();
}

void MemoryAccessibility::addApplication(platform::RunningApplication app, std::shared_ptr<MemoryAXElement> element) {
    apps_.push_back({std::move(app), std::move(element)});
}

void MemoryAccessibility::removeApplication(int processIdentifier) {
    std::erase_if(apps_, [&](const Entry& entry) { return entry.app.processIdentifier == processIdentifier; });
}

}  // namespace velmora::hosts
