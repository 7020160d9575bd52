#include "platform/Platform.h"

#include <atomic>
#include <mutex>


namespace velmora::platform {

namespace {

// The installed platform lives in a shared_ptr that is only swapped by
// install(); readers take the raw pointer, which stays valid because an
// installed platform is kept until the process ends or a test replaces it.
std::mutex installMutex;
std::shared_ptr<Platform> installed;
std::atomic<Platform*> current{nullptr};

}  // namespace

Platform& get() {
    Platform* platform = current.load(std::memory_order_acquire);
    if (platform) return *platform;
    std::lock_guard lock(installMutex);
    if (!installed) {
        installed = makeDefaultPlatform();
        current.store(installed.get(), std::memory_order_release);
    }
    return *installed;
}

void install(std::shared_ptr<Platform> platform) {
    std::lock_guard lock(installMutex);
    installed = std::move(platform);
    current.store(installed.get(), std::memory_order_release);
}

}  // namespace velmora::platform
