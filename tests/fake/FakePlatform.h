// A deterministic platform for tests.
//
// Provides: FakeScript, FakeDispatch, CapturedLog, FakeHttp, FakeProcess,
// FakeConfig, FakePlatform, PlatformTest (a GoogleTest fixture).
// The main queue runs on a virtual clock; global-queue blocks wait in a
// FIFO and run on the test's thread when the test drains them. Scripts are
// recorded and answered from a table; log lines are captured; HTTP is
// answered from in-memory routes; files live below a fresh temporary root.
#pragma once

#include <gtest/gtest.h>

#include <deque>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <thread>
#include <vector>

#include "hosts/common/MemoryAccessibility.h"
#include "hosts/common/MemoryViews.h"
#include "hosts/common/MemoryWeb.h"
#include "hosts/common/MonitorRegistry.h"
#include "hosts/common/ThreadPool.h"
#include "hosts/common/VirtualClockQueue.h"
#include "hosts/linux/LinuxAdapters.h"
#include "platform/Platform.h"

namespace velmora::testing {

// The macro name in a script, or the empty text.
std::string macroNameIn(const std::string& script);

class FakeScript : public platform::ScriptPort {
public:
    platform::ScriptOutcome run(const std::string& source) override;

    void answer(const std::string& macro, std::string text);
    void fail(const std::string& macro, platform::ScriptError error = {"The macro failed.", -2700});
    // Any outcome, say an error that comes with a value.
    void respond(const std::string& macro, platform::ScriptOutcome outcome);
    // The next scripts cannot be made into script objects.
    void refuseToCreate(bool refuse = true);
    // Runs instead of the table's answer, on the thread that ran the script.
    void onMacro(const std::string& macro, std::function<void()> action);

    std::vector<std::string> scripts() const;
    std::vector<std::string> macros() const;  // the macro name of each script, in order

private:
    mutable std::mutex mutex_;
    std::vector<std::string> scripts_;
    std::map<std::string, platform::ScriptOutcome> table_;
    std::map<std::string, std::function<void()>> actions_;
    bool refuse_ = false;
};

class FakeDispatch : public platform::DispatchPort {
public:
    void mainAsync(platform::Task task) override { main.post(0, std::move(task)); }
    void mainAsyncAfter(double seconds, platform::Task task) override { main.post(seconds, std::move(task)); }
    void globalAsync(platform::QualityOfService qos, platform::Task task) override;
    bool isMainThread() const override { return true; }
    // The wall clock starts at `epoch` and moves with the virtual clock.
    double now() const override { return epoch + main.now(); }
    double epoch = 1795428000;  // 2026-11-23 10:00:00 UTC

    // Runs global blocks, then due main blocks, until neither has work.
    void runUntilIdle();
    // Moves the virtual clock, running what falls due (global blocks first).
    void advance(double seconds);
    std::size_t pendingGlobal() const;
    std::vector<platform::QualityOfService> globalQualities() const;

    hosts::VirtualClockQueue main;

private:
    bool runGlobal();
    mutable std::mutex mutex_;
    std::deque<platform::Task> global_;
    std::vector<platform::QualityOfService> qualities_;
};

class CapturedLog : public platform::LogPort {
public:
    void nslog(std::string_view text) override { add("nslog", text); }
    void print(std::string_view text) override { add("print", text); }
    void logger(std::string_view subsystem, std::string_view category, platform::LogLevel level,
                std::string_view text) override;

    std::vector<std::string> lines() const;
    // "channel: text" for each line, to check the channel as well.
    std::vector<std::string> linesWithChannel() const;
    bool contains(std::string_view text) const;
    void clear();

private:
    void add(std::string_view channel, std::string_view text);
    mutable std::mutex mutex_;
    std::vector<std::pair<std::string, std::string>> lines_;
};

class FakeHttp : public platform::HttpPort {
public:
    explicit FakeHttp(std::shared_ptr<platform::DispatchPort> dispatch) : dispatch_(std::move(dispatch)) {}
    void send(platform::HttpRequest request, std::function<void(platform::HttpResponse)> completion) override;

    // Routes match the whole URL, or its part before "?" when no whole match exists.
    void route(const std::string& url, platform::HttpResponse response);
    void fault(const std::string& url, std::string transportError);
    std::vector<platform::HttpRequest> requests() const;

private:
    std::shared_ptr<platform::DispatchPort> dispatch_;
    mutable std::mutex mutex_;
    std::map<std::string, platform::HttpResponse> routes_;
    std::vector<platform::HttpRequest> requests_;
};

class FakeProcess : public platform::ProcessPort {
public:
    platform::ProcessResult run(const std::string& path, const std::vector<std::string>& arguments) override;
    void set(const std::string& path, platform::ProcessResult result) { results_[path] = std::move(result); }
    int runs(const std::string& path) const;

private:
    std::map<std::string, platform::ProcessResult> results_;
    std::map<std::string, int> runs_;
};

class FakeConfig : public platform::ConfigPort {
public:
    std::string serviceBaseURL() const override { return service; }
    std::string cdnBaseURL() const override { return cdn; }
    std::string templateRequestPageURL() const override { return requestPage; }
    std::string service = "https://service.test";
    std::string cdn = "https://cdn.test/";
    std::string requestPage = "https://service.test/templates/request";
};

class FakeInspection : public platform::InspectionPort {
public:
    void registerInspector(const std::string& name, platform::Inspector inspector) override;
    // The inspector's lines, or nothing when none has that name.
    std::optional<std::vector<std::string>> inspect(const std::string& name) const;

private:
    mutable std::mutex mutex_;
    std::map<std::string, platform::Inspector> inspectors_;
};

// Keeps what the library hands over for each pane it makes.
class FakePaneHost : public platform::PaneHostPort {
public:
    void paneCreated(const std::shared_ptr<platform::View>& pane, platform::PaneAccess access) override {
        panes.push_back({pane, std::move(access)});
    }
    // The access of the newest pane made for this view, or nullptr.
    const platform::PaneAccess* accessFor(const std::shared_ptr<platform::View>& pane) const {
        for (auto it = panes.rbegin(); it != panes.rend(); ++it) {
            if (it->first.lock() == pane) return &it->second;
        }
        return nullptr;
    }
    std::vector<std::pair<std::weak_ptr<platform::View>, platform::PaneAccess>> panes;
};

// The main queue runs on the thread that made it, when that thread drains
// it; global blocks run on a real pool meanwhile. For tests of the library
// with truly concurrent threads.
class PooledDispatch : public platform::DispatchPort {
public:
    void mainAsync(platform::Task task) override { main.post(0, std::move(task)); }
    void mainAsyncAfter(double seconds, platform::Task task) override { main.post(seconds, std::move(task)); }
    void globalAsync(platform::QualityOfService, platform::Task task) override { pool.post(std::move(task)); }
    bool isMainThread() const override { return std::this_thread::get_id() == mainThread; }

    // Waits for the pool and runs the main queue until neither has work.
    void settle() {
        for (;;) {
            pool.waitIdle();
            if (main.runDue() == 0) break;
        }
    }

    hosts::VirtualClockQueue main;
    hosts::ThreadPool pool{4};
    std::thread::id mainThread = std::this_thread::get_id();
};

// Owns one fake of every port and the temporary root below which files live.
class FakePlatform {
public:
    FakePlatform();
    ~FakePlatform();
    FakePlatform(const FakePlatform&) = delete;
    FakePlatform& operator=(const FakePlatform&) = delete;

    // Installs this platform as the one the library uses.
    void install();
    // The ports as an aggregate, to install with some of them replaced.
    std::shared_ptr<platform::Platform> ports() const;

    std::shared_ptr<FakeScript> script = std::make_shared<FakeScript>();
    std::shared_ptr<FakeDispatch> dispatch = std::make_shared<FakeDispatch>();
    std::shared_ptr<CapturedLog> log = std::make_shared<CapturedLog>();
    std::shared_ptr<FakeHttp> http = std::make_shared<FakeHttp>(dispatch);
    std::shared_ptr<hosts::linuxhost::LinuxFiles> files;
    std::shared_ptr<FakeProcess> process = std::make_shared<FakeProcess>();
    std::shared_ptr<hosts::MonitorRegistry> events = std::make_shared<hosts::MonitorRegistry>();
    std::shared_ptr<hosts::MemoryViews> views = std::make_shared<hosts::MemoryViews>();
    std::shared_ptr<hosts::MemoryAccessibility> accessibility = std::make_shared<hosts::MemoryAccessibility>();
    std::shared_ptr<hosts::MemoryWeb> web = std::make_shared<hosts::MemoryWeb>();
    std::shared_ptr<FakeConfig> config = std::make_shared<FakeConfig>();
    std::shared_ptr<FakeInspection> inspection = std::make_shared<FakeInspection>();
    std::shared_ptr<FakePaneHost> panes = std::make_shared<FakePaneHost>();

    const std::string& root() const { return root_; }

private:
    std::string root_;
};

// A fixture that installs a fresh fake platform for each test.
class PlatformTest : public ::testing::Test {
protected:
    void SetUp() override { fake.install(); }
    FakePlatform fake;
};

}  // namespace velmora::testing
