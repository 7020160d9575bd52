// The key-down and mouse-up monitors that initializeEventMonitor installs.
//
// Provides: keyDownMonitorMask, mouseUpMonitorMask, handleKeyDown(),
// handleMouseUp().
// Both handlers run on the main thread, inside the host's event dispatch.
// They never run a macro themselves: they post to the main queue and return
// at once, so the event is answered before any macro starts.
#pragma once

#include <optional>

#include "keyboard/ModifierFlags.h"
#include "platform/Events.h"

namespace velmora {

// Key down.
inline constexpr EventTypeMask keyDownMonitorMask{platform::maskFor(platform::EventType::keyDown)};
// Left, right and other mouse up.
inline constexpr EventTypeMask mouseUpMonitorMask{platform::maskFor(platform::EventType::leftMouseUp) |
                                                  platform::maskFor(platform::EventType::rightMouseUp) |
                                                  platform::maskFor(platform::EventType::otherMouseUp)};

// Matches the event against shortcutMappings. A match is consumed (nothing is
// returned) and its macro, then the assistant refresh, run in one main-queue
// block; anything else comes back unchanged. While shortcuts are disabled
// every event passes without a log line. Allocation-free for an event whose
// characters fit in 15 bytes and that matches no row.
std::optional<platform::Event> handleKeyDown(const platform::Event& event);

// Logs the release and asks for an assistant refresh 0.3 s later; always
// passes the event on. One refresh per release, whatever the setting.
std::optional<platform::Event> handleMouseUp(const platform::Event& event);

}  // namespace velmora
