#include "bridge/HardwareUUID.h"

#include <mutex>
#include <sstream>

#include "platform/Platform.h"
#include "support/Text.h"

namespace velmora {

namespace {

struct GlobalUUID {
    std::mutex mutex;
    std::string value;

    GlobalUUID() : value(getHardwareUUID().value_or("UnknownUUID")) {
        platform::nslog("Hardware UUID retrieved: " + value);
    }
};

// Made at first use, reads and writes included, and never destroyed.
GlobalUUID& global() {
    static auto& instance = *new GlobalUUID;
    return instance;
}

}  // namespace

std::optional<std::string> getHardwareUUID() {
    auto result = platform::process().run("/usr/sbin/system_profiler", {"SPHardwareDataType"});
    if (!result.started) {
        platform::nslog("Error running system_profiler: " + result.error);
        return std::nullopt;
    }
    std::istringstream lines(result.output);
    for (std::string line; std::getline(lines, line);) {
        if (line.find("Hardware UUID:") == std::string::npos) continue;
        auto colon = line.find(':');
        auto rest = line.substr(colon + 1);
        auto next = rest.find(':');
        return std::string(support::trimWhitespace(next == std::string::npos ? rest : rest.substr(0, next)));
    }
    return "UnknownUUID";
}

std::string globalHardwareUUID() {
    auto& uuid = global();
    std::lock_guard lock(uuid.mutex);
    return uuid.value;
}

void setGlobalHardwareUUID(std::string value) {
    auto& uuid = global();
    std::lock_guard lock(uuid.mutex);
    uuid.value = std::move(value);
}

}  // namespace velmora
