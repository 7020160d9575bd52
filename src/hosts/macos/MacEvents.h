// Events port on macOS: NSEvent local monitors.
//
// Provides: MacEvents. Each monitor is one local monitor of the platform
// for the same event types (the masks are the platform's raw bits); a
// handler that gives nothing consumes the event. Main thread only.
#pragma once

#include <map>

#include "platform/Events.h"

namespace velmora::hosts::macos {

class MacEvents : public platform::EventsPort {
public:
    platform::MonitorToken addLocalMonitor(std::uint64_t mask, platform::EventMonitorHandler handler) override;
    void removeMonitor(platform::MonitorToken token) override;

private:
#ifdef __OBJC__
    std::map<platform::MonitorToken, id> monitors_;
#endif
    platform::MonitorToken nextToken_ = 1;
};

}  // namespace velmora::hosts::macos
