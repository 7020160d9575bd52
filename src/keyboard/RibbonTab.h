// The press of the add-in's ribbon tab through the accessibility port.
//
// Provides: getApplication(), getFocusedWindow(), fetchElements(),
// fetchElementsFromFocusedWindow(), getAttribute(), findVelmoraElement(),
// performAction(); activateVelmoraTab() itself is declared in bridge/Exports.h.
// Thread: the caller's; every read blocks until the platform answers.
// Failures are log lines, never errors.
#pragma once

#include <optional>
#include <string>
#include <unordered_set>
#include <vector>

#include "platform/Accessibility.h"

namespace velmora {

// Elements are told apart by identity.
using AXElementSet = std::unordered_set<const platform::AXElement*>;

// The element of the first running application with this bundle identifier.
platform::AXElementRef getApplication(const std::string& bundleIdentifier);

// The application's "AXFocusedWindow", or nothing.
platform::AXElementRef getFocusedWindow(const platform::AXElementRef& application);

// The elements below `element`, each node's children before their own
// descendants. Nodes deeper than 3 are not opened, so levels 1 to 4 below
// the start are listed. `visited` guards the whole walk: an element reached
// twice is listed twice but opened once.
std::vector<platform::AXElementRef> fetchElements(const platform::AXElementRef& element, AXElementSet& visited,
                                                  int depth = 0);

std::vector<platform::AXElementRef> fetchElementsFromFocusedWindow(const platform::AXElementRef& application);

// The attribute's value when the read succeeded and gave one.
std::optional<platform::AXValue> getAttribute(const platform::AXElementRef& element, const std::string& attribute);

// The first element with role "AXRadioButton" and title "Velmora", both exact.
platform::AXElementRef findVelmoraElement(const std::vector<platform::AXElementRef>& elements);

// Presses the element, logging a failure.
void performAction(const platform::AXElementRef& element);

}  // namespace velmora
