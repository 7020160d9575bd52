// Accessibility port: running applications and their element trees.
//
// Provides: AXError, AXElement, AXValue, AXResult, RunningApplication,
// AccessibilityPort.
// Elements are shared objects compared by identity. Reads and actions block
// until the platform answers and report an error code, 0 for success.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <variant>
#include <vector>

namespace velmora::platform {

using AXError = int;
constexpr AXError axSuccess = 0;
constexpr AXError axFailure = -25200;
constexpr AXError axAttributeUnsupported = -25205;
constexpr AXError axNoValue = -25212;
constexpr AXError axCannotComplete = -25204;

class AXElement;
using AXElementRef = std::shared_ptr<AXElement>;

// An attribute's value: a string, an integer, a real, a boolean, one element
// or a list of elements.
using AXValue = std::variant<std::string, std::int64_t, double, bool, AXElementRef, std::vector<AXElementRef>>;

struct AXResult {
    AXError error = axSuccess;
    std::optional<AXValue> value;  // may be absent even on success
};

class AXElement {
public:
    virtual ~AXElement() = default;
    virtual AXResult copyAttributeValue(const std::string& attribute) const = 0;
    virtual AXError performAction(const std::string& action) = 0;
};

struct RunningApplication {
    std::optional<std::string> bundleIdentifier;
    int processIdentifier = 0;
};

class AccessibilityPort {
public:
    virtual ~AccessibilityPort() = default;
    virtual std::vector<RunningApplication> runningApplications() const = 0;
    virtual AXElementRef createApplicationElement(int processIdentifier) = 0;
};

}  // namespace velmora::platform
