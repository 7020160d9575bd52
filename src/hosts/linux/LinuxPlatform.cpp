// The default platform on Linux: the host's services where the loading
// program offers them (see HostConnection.h), the library's own otherwise.

#include <curl/curl.h>
#include <dlfcn.h>

#include <chrono>
#include <condition_variable>
#include <cstdlib>
#include <map>
#include <mutex>

#include "hosts/common/MemoryAccessibility.h"
#include "hosts/common/MemoryViews.h"
#include "hosts/common/MemoryWeb.h"
#include "hosts/common/MonitorRegistry.h"
#include "hosts/linux/HostConnection.h"
#include "hosts/linux/LinuxAdapters.h"

namespace velmora::hosts::linuxhost {

struct StandaloneDispatch::State {
    using Clock = std::chrono::steady_clock;
    std::mutex mutex;
    std::condition_variable wake;
    std::multimap<std::pair<Clock::time_point, std::uint64_t>, platform::Task> queue;
    std::uint64_t sequence = 0;
    bool stopping = false;
    std::thread::id mainThread;
};

StandaloneDispatch::StandaloneDispatch() : state_(std::make_shared<State>()), pool_(4) {
    main_ = std::thread([state = state_] {
        std::unique_lock lock(state->mutex);
        state->mainThread = std::this_thread::get_id();
        while (!state->stopping) {
            if (state->queue.empty()) {
                state->wake.wait(lock);
                continue;
            }
            auto first = state->queue.begin();
            if (first->first.first > State::Clock::now()) {
                state->wake.wait_until(lock, first->first.first);
                continue;
            }
            auto task = std::move(first->second);
            state->queue.erase(first);
            lock.unlock();
            task();
            task = nullptr;
            lock.lock();
        }
    });
}

StandaloneDispatch::~StandaloneDispatch() {
    {
        std::lock_guard lock(state_->mutex);
        state_->stopping = true;
    }
    state_->wake.notify_all();
    main_.join();
}

void StandaloneDispatch::mainAsyncAfter(double seconds, platform::Task task) {
    const auto deadline = State::Clock::now() + std::chrono::duration_cast<State::Clock::duration>(
                                                     std::chrono::duration<double>(std::max(0.0, seconds)));
    {
        std::lock_guard lock(state_->mutex);
        state_->queue.emplace(std::make_pair(deadline, state_->sequence++), std::move(task));
    }
    state_->wake.notify_all();
}

void StandaloneDispatch::globalAsync(platform::QualityOfService, platform::Task task) { pool_.post(std::move(task)); }

bool StandaloneDispatch::isMainThread() const {
    std::lock_guard lock(state_->mutex);
    return std::this_thread::get_id() == state_->mainThread;
}

platform::ScriptOutcome StandaloneScript::run(const std::string&) {
    return {true, platform::ScriptError{"Microsoft PowerPoint got an error: Application isn’t running.", -600},
            std::nullopt};
}

namespace {

const HostConnection* findHost() {
    auto entry = reinterpret_cast<HostEntry>(dlsym(RTLD_DEFAULT, hostEntrySymbol));
    return entry ? entry() : nullptr;
}

std::string environmentHome() {
    const char* home = std::getenv("HOME");
    return home && *home ? home : "/root";
}

}  // namespace

}  // namespace velmora::hosts::linuxhost

namespace velmora::platform {

std::shared_ptr<Platform> makeDefaultPlatform() {
    using namespace hosts::linuxhost;
    // libcurl wants its global set-up once, before any thread uses it.
    static const bool curlReady = curl_global_init(CURL_GLOBAL_DEFAULT) == CURLE_OK;
    (void)curlReady;

    const HostConnection* host = findHost();
    auto platform = std::make_shared<Platform>();
    if (host && host->ports) *platform = *host->ports;

    auto stderrLog = std::make_shared<StderrLog>();
    if (!platform->log) {
        platform->log = stderrLog;
    } else if (host->logToStderr) {
        platform->log = std::make_shared<TeeLog>(platform->log, stderrLog);
    }
    if (!platform->dispatch) platform->dispatch = std::make_shared<StandaloneDispatch>();
    if (!platform->script) platform->script = std::make_shared<StandaloneScript>();
    if (!platform->http) platform->http = std::make_shared<CurlHttp>(platform->dispatch);
    if (!platform->files) {
        const std::string home = host && !host->homeDirectory.empty() ? host->homeDirectory : environmentHome();
        platform->files = std::make_shared<LinuxFiles>(host ? host->fileRoot : std::string{}, home);
    }
    if (!platform->process) platform->process = std::make_shared<LinuxProcess>();
    if (!platform->events) platform->events = std::make_shared<hosts::MonitorRegistry>();
    if (!platform->views) platform->views = std::make_shared<hosts::MemoryViews>();
    if (!platform->accessibility) platform->accessibility = std::make_shared<hosts::MemoryAccessibility>();
    if (!platform->web) platform->web = std::make_shared<hosts::MemoryWeb>();
    // The compiled-in endpoints, unless the host gives its own.
    if (!platform->config) {
        platform->config = std::make_shared<StaticConfig>(platform::defaultServiceBaseURL, platform::defaultCdnBaseURL,
                                                          platform::defaultTemplateRequestPageURL);
    }
    if (!platform->inspection) platform->inspection = std::make_shared<IgnoredInspection>();
    if (!platform->panes) platform->panes = std::make_shared<IgnoredPaneHost>();
    // Last, so that the host's ports and the library's own are wrapped alike.
    if (host && host->faults) return hosts::withFaults(platform, host->faults);
    return platform;
}

}  // namespace velmora::platform
