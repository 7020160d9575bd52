// A host that exits while the library is busy.
//
//   velmora_exit_test LIBRARY SANDBOX
//
// Loads the library and leaves it its own main thread, worker pool and HTTP
// (it offers only a macro project, a log, events, a document window,
// process and config ports). It then sets work going: a few hundred queued
// key blocks on the library's main thread, the template manifest's
// download, held up by the loopback cloud, and a theme fetch on a worker,
// held up by the macro project. Then it calls exit(0) at once, and its own
// teardown takes a while, as a host's may. Whatever the library still runs
// meanwhile must find its objects alive: the run passes when the process
// exits with 0 and the sanitizers, leak check included, stay quiet.
// Library objects made once and kept are reachable from its statics, so
// the leak check does not count them.

#include <dlfcn.h>

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "Cloud.h"
#include "hosts/common/MemoryViews.h"
#include "hosts/linux/HostConnection.h"

namespace {

using namespace velmora;
using namespace std::chrono_literals;

constexpr int keyPresses = 1000;

struct Exports {
    void (*initializeEventMonitor)();
    void (*openTemplateLibraryTaskpane)();
    void (*openColorBarTaskpane)();
    void (*triggerColorThemeRefresh)();
    void (*triggerAssistant)(const char*, const char*);
};

// What the test waits for before it exits; each flag is set once.
struct Progress {
    std::mutex mutex;
    std::condition_variable changed;
    platform::EventMonitorHandler keyMonitor;
    bool panesOpened = false;
    bool themeFetchStarted = false;
    bool manifestRequested = false;
    int macrosRun = 0;

    template <typename Change>
    void update(Change change) {
        {
            std::lock_guard lock(mutex);
            change();
        }
        changed.notify_all();
    }
    // False when the wait ran out.
    template <typename Ready>
    bool waitFor(Ready ready) {
        std::unique_lock lock(mutex);
        return changed.wait_for(lock, 20s, ready);
    }
};

// Made once and never destroyed, like everything the library holds of the host.
Progress& progress = *new Progress;
Exports exports{};
hosts::linuxhost::HostConnection* connection = nullptr;

std::string macroName(const std::string& script) {
    const std::string marker = "macro name \"";
    auto start = script.find(marker);
    if (start == std::string::npos) return {};
    start += marker.size();
    return script.substr(start, script.find('"', start) - start);
}

// The macro project. The first table shortcut that arrives opens the
// template and colour panes and asks for a theme refresh, from the
// library's main thread, as a macro calling back into the library would.
class MacroProject : public platform::ScriptPort {
public:
    platform::ScriptOutcome run(const std::string& source) override {
        const std::string name = macroName(source);
        if (name == "GetThemeColorsHexCsv") {
            progress.update([] { progress.themeFetchStarted = true; });
            std::this_thread::sleep_for(300ms);
            return {true, std::nullopt, "#000000,#FFFFFF,#44546A,#E7E6E6,#4472C4,#ED7D31,#A5A5A5,#FFC000,#5B9BD5,#70AD47"};
        }
        if (name == "ShowTablesForm") {
            bool first = false;
            progress.update([&] { first = progress.macrosRun++ == 0; });
            if (first) {
                exports.openTemplateLibraryTaskpane();
                exports.openColorBarTaskpane();
                exports.triggerColorThemeRefresh();
                progress.update([] { progress.panesOpened = true; });
            }
            std::this_thread::sleep_for(1ms);
        }
        if (name == "CallTriggerAssistant") exports.triggerAssistant("[]", "[]");
        return {true, std::nullopt, std::nullopt};
    }
};

class QuietLog : public platform::LogPort {
public:
    void nslog(std::string_view) override { ++lines_; }
    void print(std::string_view) override { ++lines_; }
    void logger(std::string_view, std::string_view, platform::LogLevel, std::string_view) override { ++lines_; }

private:
    std::atomic<long> lines_{0};
};

// Keeps the key monitor for the test to call; the others are accepted and left alone.
class Events : public platform::EventsPort {
public:
    platform::MonitorToken addLocalMonitor(std::uint64_t mask, platform::EventMonitorHandler handler) override {
        if (mask & platform::maskFor(platform::EventType::keyDown)) {
            progress.update([&] {
                if (!progress.keyMonitor) progress.keyMonitor = std::move(handler);
            });
        }
        return next_++;
    }
    void removeMonitor(platform::MonitorToken) override {}

private:
    std::atomic<platform::MonitorToken> next_{1};
};

class HardwareReport : public platform::ProcessPort {
public:
    platform::ProcessResult run(const std::string&, const std::vector<std::string>&) override {
        platform::ProcessResult result;
        result.started = true;
        result.output = "Hardware UUID: 00000000-0000-4000-8000-000000000001\n";
        return result;
    }
};

class CloudConfig : public platform::ConfigPort {
public:
    explicit CloudConfig(const cloud::Cloud& cloud) : service_(cloud.serviceBaseURL()), cdn_(cloud.cdnBaseURL()) {}
    std::string serviceBaseURL() const override { return service_; }
    std::string cdnBaseURL() const override { return cdn_; }
    std::string templateRequestPageURL() const override { return service_ + "/templates/request"; }

private:
    const std::string service_, cdn_;
};

std::shared_ptr<platform::ViewsPort> documentWindow() {
    auto views = std::make_shared<hosts::MemoryViews>();
    auto content = std::make_shared<hosts::MemoryView>("NSView", platform::Rect{0, 0, 1280, 800});
    auto split = std::make_shared<hosts::MemoryView>("CUITaskPaneSplitView", platform::Rect{0, 0, 1280, 800});
    split->addSubview(std::make_shared<hosts::MemoryView>("CUISlideEditorView", platform::Rect{0, 0, 1280, 800}));
    content->addSubview(split);
    auto window = std::make_shared<hosts::MemoryWindow>("CUIDocumentShellWindow", content);
    views->addWindow(window);
    views->setKeyWindow(window);
    return views;
}

template <typename Function>
void bind(void* library, const char* name, Function& function) {
    function = reinterpret_cast<Function>(dlsym(library, name));
    if (!function) {
        std::fprintf(stderr, "velmora_exit_test: %s is missing\n", name);
        std::exit(1);
    }
}

bool expect(bool condition, const char* what) {
    if (!condition) std::fprintf(stderr, "velmora_exit_test: timed out waiting for %s\n", what);
    return condition;
}

}  // namespace

extern "C" __attribute__((visibility("default"))) const hosts::linuxhost::HostConnection* velmoraLinuxHost() {
    return connection;
}

int main(int argc, char** argv) {
    if (argc != 3) {
        std::fprintf(stderr, "usage: velmora_exit_test LIBRARY SANDBOX\n");
        return 2;
    }
    const std::filesystem::path sandbox = argv[2];
    std::error_code ec;
    std::filesystem::remove_all(sandbox, ec);
    std::filesystem::create_directories(sandbox / "cloud", ec);

    // Registered before the library's first use, so it runs after whatever
    // the library registers: the host's own teardown, while the library's
    // threads go on.
    std::atexit([] { std::this_thread::sleep_for(200ms); });

    cloud::CloudOptions options;
    options.dataDirectory = (sandbox / "cloud").string();
    options.onRequest = [](const cloud::RecordedRequest& request) {
        if (request.route == "manifest") progress.update([] { progress.manifestRequested = true; });
    };
    // Kept running through exit, as the library's transfer to it is.
    auto* server = new cloud::Cloud(options);
    server->addFault(cloud::parseFault({"manifest", "delay", "10"}));

    auto ports = std::make_shared<platform::Platform>();
    ports->script = std::make_shared<MacroProject>();
    ports->log = std::make_shared<QuietLog>();
    ports->events = std::make_shared<Events>();
    ports->views = documentWindow();
    ports->process = std::make_shared<HardwareReport>();
    ports->config = std::make_shared<CloudConfig>(*server);
    connection = new hosts::linuxhost::HostConnection;
    connection->ports = ports;
    connection->fileRoot = (sandbox / "root").string();
    connection->homeDirectory = "/Users/tester";
    connection->logToStderr = false;

    void* library = dlopen(argv[1], RTLD_NOW | RTLD_LOCAL);
    if (!library) {
        std::fprintf(stderr, "velmora_exit_test: %s\n", dlerror());
        return 1;
    }
    bind(library, "initializeEventMonitor", exports.initializeEventMonitor);
    bind(library, "openTemplateLibraryTaskpane", exports.openTemplateLibraryTaskpane);
    bind(library, "openColorBarTaskpane", exports.openColorBarTaskpane);
    bind(library, "triggerColorThemeRefresh", exports.triggerColorThemeRefresh);
    bind(library, "triggerAssistant", exports.triggerAssistant);

    exports.initializeEventMonitor();
    if (!expect(progress.waitFor([] { return bool(progress.keyMonitor); }), "the key monitor")) return 1;

    // Command-T, the table shortcut, again and again: each press queues a
    // block on the library's main thread that runs its macro.
    platform::Event press{platform::EventType::keyDown, 0x100000, std::string("t"), 17};
    for (int i = 0; i < keyPresses; ++i) {
        if (progress.keyMonitor(press)) {
            std::fprintf(stderr, "velmora_exit_test: the library passed Command-T on\n");
            return 1;
        }
    }
    if (!expect(progress.waitFor([] { return progress.panesOpened; }), "the panes") ||
        !expect(progress.waitFor([] { return progress.themeFetchStarted; }), "the theme fetch") ||
        !expect(progress.waitFor([] { return progress.manifestRequested; }), "the manifest request")) {
        return 1;
    }
    int run = 0;
    progress.update([&] { run = progress.macrosRun; });
    if (run == keyPresses) {
        std::fprintf(stderr, "velmora_exit_test: every key block ran before the exit\n");
        return 1;
    }
    std::printf("exiting with %d of %d key blocks run, the manifest and the theme on their way\n", run, keyPresses);
    std::fflush(stdout);
    std::exit(0);
}
