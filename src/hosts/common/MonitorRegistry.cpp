#include "hosts/common/MonitorRegistry.h"

#include <algorithm>

namespace velmora::hosts {

platform::MonitorToken MonitorRegistry::addLocalMonitor(std::uint64_t mask, platform::EventMonitorHandler handler) {
    if (!handler) return 0;
    monitors_.push_back({nextToken_, mask, std::move(handler)});
    return nextToken_++;
}

void MonitorRegistry::removeMonitor(platform::MonitorToken token) {
    std::erase_if(monitors_, [token](const Monitor& monitor) { return monitor.token == token; });
}

std::optional<platform::Event> MonitorRegistry::dispatch(const platform::Event& event) {
    // A handler may add or remove monitors; walk a copy.
    auto monitors = monitors_;
    std::optional<platform::Event> current = event;
    for (const auto& monitor : monitors) {
        if (!(monitor.mask & platform::maskFor(current->type))) continue;
        current = monitor.handler(*current);
        if (!current) return std::nullopt;
    }
    return current;
}

}  // namespace velmora::hosts
