#include "platform/Platform.h"

#include <atomic>
#include <mutex>


namespace velmora::platform {

namespace {

// The installed platform lives in a shared_ptr that is only swapped by
// install(); readers take the raw pointer, which stays valid because an
// installed platform is kept until the process ends or a test replaces it.
constinit std::mutex installMutex;
constinit std::atomic<Platform*> current{nullptr};

// Made at first use and never destroyed: the library's own threads may still
// run while the process exits, and nothing of the library is torn down.
std::shared_ptr<Platform>& installed() {
    static auto& platform = *new std::shared_ptr<Platform>();
    return platform;
}

}  // namespace

Platform& get() {
    Platform* platform = current.load(std::memory_order_acquire);
    if (platform) return *platform;
    std::lock_guard lock(installMutex);
    auto& made = installed();
    if (!made) {
        made = makeDefaultPlatform();
        current.store(made.get(), std::memory_order_release);
    }
    return *made;
}

void install(std::shared_ptr<Platform> platform) {
    std::lock_guard lock(installMutex);
    installed() = std::move(platform);
    current.store(installed().get(), std::memory_order_release);
}

void reportUncaught(std::string_view where, std::exception_ptr error) noexcept {
    try {
        std::string text = "VL: " + std::string(where) + " failed";
        try {
            std::rethrow_exception(error);
        } catch (const std::exception& exception) {
            text += std::string(": ") + exception.what();
        } catch (...) {
        }
        nslog(text);
    } catch (...) {
        // Not even the log line could be written: nothing is left to do.
    }
}

}  // namespace velmora::platform
