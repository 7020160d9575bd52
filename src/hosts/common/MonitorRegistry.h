// Local event monitors kept in install order: the events port for hosts
// that feed events themselves.
//
// Provides: MonitorRegistry. Main thread only.
#pragma once

#include <optional>
#include <vector>

#include "platform/Events.h"

namespace velmora::hosts {

class MonitorRegistry : public platform::EventsPort {
public:
    platform::MonitorToken addLocalMonitor(std::uint64_t mask, platform::EventMonitorHandler handler) override;
    void removeMonitor(platform::MonitorToken token) override;

    // Runs the monitors whose mask covers the event, in install order, until
    // one consumes it. Gives the event that reaches the host, or nothing.
    std::optional<platform::Event> dispatch(const platform::Event& event);
    std::size_t count() const { return monitors_.size(); }

private:
    struct Monitor {
        platform::MonitorToken token;
        std::uint64_t mask;
        platform::EventMonitorHandler handler;
    };
    std::vector<Monitor> monitors_;
    platform::MonitorToken nextToken_ = 1;
};

}  // namespace velmora::hosts
