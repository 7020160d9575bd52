// Accessibility port on macOS: AXUIElement and NSWorkspace.
//
// Provides: MacAXElement, MacAccessibility. An element holds its
// AXUIElementRef (retained for the element's life); attribute values come
// back as the port's variant: texts, whole and fractional numbers,
// booleans, elements and arrays of elements (an array's other members are
// left out). Other value kinds read as absent. Main thread, as the host's
// accessibility client.
#pragma once

#include "platform/Accessibility.h"

namespace velmora::hosts::macos {

class MacAXElement : public platform::AXElement {
public:
    // Takes over one retain of `element` (a Create or Copy result).
    explicit MacAXElement(const void* element) : element_(element) {}
    ~MacAXElement() override;
    MacAXElement(const MacAXElement&) = delete;
    MacAXElement& operator=(const MacAXElement&) = delete;

    platform::AXResult copyAttributeValue(const std::string& attribute) const override;
    platform::AXError performAction(const std::string& action) override;

private:
    const void* element_;  // AXUIElementRef
};

class MacAccessibility : public platform::AccessibilityPort {
public:
    std::vector<platform::RunningApplication> runningApplications() const override;
    platform::AXElementRef createApplicationElement(int processIdentifier) override;
};

}  // namespace velmora::hosts::macos
