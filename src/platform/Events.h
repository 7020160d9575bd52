// Events port: local monitors on the host's own event stream.
//
// Provides: EventType, EventTypeMask bits, Event, EventMonitorHandler,
// MonitorToken, EventsPort.
// Handlers run on the main thread before the host dispatches the event. A
// handler returns the event to pass it on, or nothing to consume it; once
// one handler consumes, the later ones do not see the event.
#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>

namespace velmora::platform {

// The platform's raw event type numbers.
enum class EventType : std::uint32_t {
    leftMouseDown = 1,
    leftMouseUp = 2,
    rightMouseDown = 3,
    rightMouseUp = 4,
    keyDown = 10,
    keyUp = 11,
    flagsChanged = 12,
    otherMouseDown = 25,
    otherMouseUp = 26,
};

constexpr std::uint64_t maskFor(EventType type) { return std::uint64_t{1} << static_cast<std::uint32_t>(type); }

struct Event {
    EventType type = EventType::keyDown;
    std::uint64_t modifierFlags = 0;  // the platform's raw modifier bits
    std::optional<std::string> charactersIgnoringModifiers;
    std::uint16_t keyCode = 0;
};

using EventMonitorHandler = std::function<std::optional<Event>(const Event&)>;

// Zero is never a valid token.
using MonitorToken = std::uint64_t;

class EventsPort {
public:
    virtual ~EventsPort() = default;
    // Gives 0 when no monitor could be installed.
    virtual MonitorToken addLocalMonitor(std::uint64_t mask, EventMonitorHandler handler) = 0;
    virtual void removeMonitor(MonitorToken token) = 0;
};

}  // namespace velmora::platform
