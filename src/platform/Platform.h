// The Platform aggregate and the thin wrappers that every subsystem calls.
//
// Provides: Platform, platform::get(), platform::install(), and one wrapper
// per operation (runScript, nslog, mainAsync, ...).
// The ports are installed once, at first use: the build's adapter supplies
// makeDefaultPlatform(). Tests install their own with install() before the
// code under test runs and while no other thread uses the platform.
// Subsystems never reach an adapter directly; they call the wrappers below,
// so checks and test hooks sit in one place.
#pragma once

#include <exception>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "platform/Accessibility.h"
#include "platform/Config.h"
#include "platform/Dispatch.h"
#include "platform/Events.h"
#include "platform/Files.h"
#include "platform/Http.h"
#include "platform/Inspection.h"
#include "platform/Log.h"
#include "platform/PaneHost.h"
#include "platform/Process.h"
#include "platform/Script.h"
#include "platform/Views.h"
#include "platform/Web.h"

namespace velmora::platform {

struct Platform {
    std::shared_ptr<ScriptPort> script;
    std::shared_ptr<DispatchPort> dispatch;
    std::shared_ptr<LogPort> log;
    std::shared_ptr<HttpPort> http;
    std::shared_ptr<FilesPort> files;
    std::shared_ptr<ProcessPort> process;
    std::shared_ptr<EventsPort> events;
    std::shared_ptr<ViewsPort> views;
    std::shared_ptr<AccessibilityPort> accessibility;
    std::shared_ptr<WebPort> web;
    std::shared_ptr<ConfigPort> config;
    std::shared_ptr<InspectionPort> inspection;
    std::shared_ptr<PaneHostPort> panes;
};

// Supplied by the adapter that the build links in (hosts/linux today).
std::shared_ptr<Platform> makeDefaultPlatform();

// The installed platform; installs the default one at first use.
Platform& get();
// Replaces the installed platform. Every port must be set.
void install(std::shared_ptr<Platform> platform);

// --- wrappers -------------------------------------------------------------

inline ScriptOutcome runScript(const std::string& source) { return get().script->run(source); }

inline void nslog(std::string_view text) { get().log->nslog(text); }
inline void print(std::string_view text) { get().log->print(text); }
inline void logger(std::string_view subsystem, std::string_view category, LogLevel level, std::string_view text) {
    get().log->logger(subsystem, category, level, text);
}

// Logs an exception that reached the edge of the library ("VL: WHERE
// failed: what") and never throws itself.
void reportUncaught(std::string_view where, std::exception_ptr error) noexcept;

// Runs `body`; an exception is logged and swallowed. Every way into the
// library (an export, a queued block, an event handler, a tap) passes
// through here, since nothing above it can handle one.
template <typename Body>
void guarded(std::string_view where, Body&& body) noexcept {
    try {
        body();
    } catch (...) {
        reportUncaught(where, std::current_exception());
    }
}

inline Task guardedTask(Task task) {
    return [task = std::move(task)] { guarded("queued block", task); };
}
inline void mainAsync(Task task) { get().dispatch->mainAsync(guardedTask(std::move(task))); }
inline void mainAsyncAfter(double seconds, Task task) {
    get().dispatch->mainAsyncAfter(seconds, guardedTask(std::move(task)));
}
inline void globalAsync(QualityOfService qos, Task task) {
    get().dispatch->globalAsync(qos, guardedTask(std::move(task)));
}
// A local monitor whose handler passes the event on if it throws.
inline MonitorToken addLocalMonitor(std::uint64_t mask, EventMonitorHandler handler) {
    return get().events->addLocalMonitor(mask, [handler = std::move(handler)](const Event& event) {
        std::optional<Event> result = event;
        guarded("event monitor", [&] { result = handler(event); });
        return result;
    });
}
inline bool isMainThread() { return get().dispatch->isMainThread(); }
inline double now() { return get().dispatch->now(); }

inline FilesPort& files() { return *get().files; }
inline HttpPort& http() { return *get().http; }
inline ProcessPort& process() { return *get().process; }
inline EventsPort& events() { return *get().events; }
inline ViewsPort& views() { return *get().views; }
inline AccessibilityPort& accessibility() { return *get().accessibility; }
inline WebPort& web() { return *get().web; }
inline ConfigPort& config() { return *get().config; }
inline void registerInspector(const std::string& name, Inspector inspector) {
    get().inspection->registerInspector(name, std::move(inspector));
}
inline void paneCreated(const std::shared_ptr<View>& pane, PaneAccess access) {
    // Optional: a platform assembled by hand may leave it out.
    if (auto& panes = get().panes) panes->paneCreated(pane, std::move(access));
}
inline void windowCreated(const std::shared_ptr<ToolWindow>& window, PaneAccess access) {
    if (auto& panes = get().panes) panes->windowCreated(window, std::move(access));
}
inline std::optional<std::array<double, 4>> namedColor(const std::string& name) {
    auto& panes = get().panes;
    return panes ? panes->namedColor(name) : std::nullopt;
}

}  // namespace velmora::platform
