#include "platform/Platform.h"

#include <atomic>
#include <mutex>


namespace velmora::platform {

namespace {

// The installed platform lives in a shared_ptr that is only swapped by
// install(); readers take the raw pointer, which stays valid because an
// installed platform is kept until the process ends or a test replaces it.
std::mutex installMutex;
// Never destroyed: the library's own threads may still run while the
// process exits, and nothing of the library is torn down.
std::shared_ptr<Platform>& installed = *new std::shared_ptr<Platform>();
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
