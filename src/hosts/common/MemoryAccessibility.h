// In-memory accessibility tree: the accessibility port for hosts without one.
//
// Provides: MemoryAXElement, MemoryAccessibility.
// Attributes are stored results (error code and optional value), so a host
// can make any read fail; children are the "AXChildren" attribute.
#pragma once

#include <functional>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "platform/Accessibility.h"

namespace velmora::hosts {

class MemoryAXElement : public platform::AXElement {
public:
    platform::AXResult copyAttributeValue(const std::string& attribute) const override;
    platform::AXError performAction(const std::string& action) override;

    void set(const std::string& attribute, platform::AXValue value) { attributes_[attribute] = {platform::axSuccess, std::move(value)}; }
    void setResult(const std::string& attribute, platform::AXResult result) { attributes_[attribute] = std::move(result); }
    void erase(const std::string& attribute) { attributes_.erase(attribute); }
    void setChildren(std::vector<platform::AXElementRef> children) { set("AXChildren", std::move(children)); }
    // Runs on every action; its result is the action's result.
    void onAction(std::function<platform::AXError(const std::string&)> handler) { actionHandler_ = std::move(handler); }

private:
    std::map<std::string, platform::AXResult> attributes_;
    std::function<platform::AXError(const std::string&)> actionHandler_;
};

class MemoryAccessibility : public platform::AccessibilityPort {
public:
    std::vector<platform::RunningApplication> runningApplications() const override;
    platform::AXElementRef createApplicationElement(int processIdentifier) override;

    void addApplication(platform::RunningApplication app, std::shared_ptr<MemoryAXElement> element);
    void removeApplication(int processIdentifier);

private:
    struct Entry {
        platform::RunningApplication app;
        std::shared_ptr<MemoryAXElement> element;
    };
    std::vector<Entry> apps_;
};

}  // namespace velmora::hosts
