// The host simulator: plays the presentation program and its macro project
// around the library, which it loads with dlopen and drives through the 19
// exported functions alone.
//
// Provides: Host (the process-wide simulator state), Exports (the loaded
// entry points), ScenarioError.
// The host's services reach the library through the `velmoraLinuxHost`
// symbol this program exports (see src/hosts/linux/HostConnection.h): its
// main loop on a virtual clock, a worker pool, its macro project, windows,
// accessibility tree, web views, event monitors and a sandbox for files.
// Its config port points the library at the cloud stand-in, which the host
// starts on loopback before the library's first use.
#pragma once

#include <array>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

#include "document/Document.h"
#include "hosts/common/MemoryAccessibility.h"
#include "hosts/common/MemoryViews.h"
#include "hosts/common/MemoryWeb.h"
#include "hosts/common/MonitorRegistry.h"
#include "hosts/common/ThreadPool.h"
#include "hosts/common/VirtualClockQueue.h"
#include "hosts/linux/HostConnection.h"

namespace velmora::cloud {
class Cloud;
}

namespace velmora::host {

// A scenario line the simulator cannot carry out.
struct ScenarioError : std::runtime_error {
    using std::runtime_error::runtime_error;
};

// The 19 entry points as loaded from the library.
struct Exports {
    void (*initializeEventMonitor)() = nullptr;
    void (*updateShortcutEnabledState)() = nullptr;
    void (*activateVelmoraTab)() = nullptr;
    void (*triggerAssistant)(const char*, const char*) = nullptr;
    void (*triggerMissedAssistant)(const char*) = nullptr;
    void (*openShortcutsTaskpane)() = nullptr;
    void (*openAssistantTaskpane)() = nullptr;
    void (*openIconTaskpane)() = nullptr;
    void (*openImageTaskpane)() = nullptr;
    void (*openColorBarTaskpane)() = nullptr;
    void (*openSlideLibraryTaskpane)() = nullptr;
    void (*openTemplateLibraryTaskpane)() = nullptr;
    void (*refreshSlideLibraryTaskpane)() = nullptr;
    void (*triggerColorThemeRefresh)() = nullptr;
    void (*initializeTablesOverlay)(const char*, const char*, std::uint8_t, std::uint8_t, std::uint8_t, std::uint8_t,
                                    std::uint8_t) = nullptr;
    void (*initializeLinesOverlay)() = nullptr;
    void (*initializeTaggingOverlay)(const char*) = nullptr;
    void (*initializeLoginOverlay)() = nullptr;
    void (*initializeFreeTrialOverlay)() = nullptr;
};

// One macro call as the macro project saw it.
struct MacroCall {
    std::string name;
    std::vector<std::string> parameters;  // quoted ones without their quotes; a bare one as written
    bool returning = false;
};

// Parses the script the library sends; nothing when it is not a macro call.
std::optional<MacroCall> parseMacroScript(const std::string& script);

// A view as the host makes it: one of class "CUITaskPaneSplitView" lays its
// subviews out as the host's split view does; one with a text is a text field.
std::shared_ptr<hosts::MemoryView> makeHostView(const std::string& className, platform::Rect frame,
                                                std::optional<std::string> text = std::nullopt);

class Host {
public:
    static Host& instance();

    // Loads the library; gives an error text on failure.
    std::optional<std::string> load(const std::string& libraryPath);
    const Exports& exports() const { return exports_; }

    // The transcript: one line per event, safe from any thread. The cloud's
    // port is written as "*".
    void emit(const std::string& line);
    // Line feeds written as \n (other control characters as \u{1b}), so one
    // event stays one line and a terminal shows it as it is.
    static std::string oneLine(const std::string& text);

    // Main loop.
    hosts::VirtualClockQueue& mainQueue() { return mainQueue_; }
    hosts::ThreadPool& pool() { return pool_; }
    bool isMainThread() const;
    // Runs the main queue's due blocks; what the host's run loop does between events.
    void turnRunLoop() { mainQueue_.runDue(); }
    // Waits for background work and runs the main queue until nothing is due.
    void settle();

    // Macro project.
    struct MacroAnswer {
        std::optional<std::string> text;
        bool fails = false;
    };
    // An answer also ends an earlier `fail`.
    void setAnswer(const std::string& macro, std::string text) {
        withMacros([&] { macros_[macro] = {std::move(text), false}; });
    }
    void setFailing(const std::string& macro) { withMacros([&] { macros_[macro].fails = true; }); }
    // Ends an answer and a failure: the macro's handler speaks again.
    void clearAnswer(const std::string& macro) { withMacros([&] { macros_.erase(macro); }); }
    std::vector<std::pair<std::string, int>> macroCounts() const;
    // Lets later parts of the simulator answer a macro themselves; the
    // handler gives the result text, or nothing for none.
    using MacroHandler = std::function<std::optional<std::string>(const MacroCall&)>;
    void handleMacro(const std::string& macro, MacroHandler handler);

    // The macro project's document, which its macros change.
    Document& document() { return document_; }

    // Hardware report the simulated machine prints; nothing: the tool fails to start.
    void setHardwareReport(std::optional<std::string> report);

    // Windows and trees.
    hosts::MemoryViews& views() { return *views_; }
    hosts::MemoryAccessibility& accessibility() { return *accessibility_; }
    hosts::MemoryWeb& web() { return *web_; }
    hosts::MonitorRegistry& monitors() { return *monitors_; }
    std::shared_ptr<hosts::MemoryWindow> documentWindow() const { return documentWindow_; }
    std::shared_ptr<platform::View> splitView() const { return splitView_; }
    // Another window becomes the document window (`keywindow document`), and
    // `splitView` the split view the snapshot draws, as when a captured view
    // tree replaces the simulator's own.
    void setDocumentWindow(std::shared_ptr<hosts::MemoryWindow> window, std::shared_ptr<platform::View> splitView) {
        documentWindow_ = std::move(window);
        splitView_ = std::move(splitView);
    }
    // The library's docked panes wherever they hang in the host's windows:
    // window by window, depth first, each view before its subviews.
    std::vector<std::shared_ptr<platform::View>> dockedPanes() const;
    // Lays out every task pane split view in the host's windows, as the host does after a change.
    void layOutSplitViews();
    const std::string& sandboxRoot() const { return connection_.fileRoot; }

    // What the library handed over for a pane it docked (see
    // platform/PaneHost.h), or nullptr for a view it did not make.
    const platform::PaneAccess* paneAccess(const std::shared_ptr<platform::View>& pane) const;

    // A floating window the library made, with what it handed over for it.
    struct LibraryWindow {
        std::shared_ptr<platform::ToolWindow> window;
        platform::PaneAccess access;
        bool key = false;
    };
    // The library's windows on screen, front to back: the higher level
    // first, then the one that came front last. Main thread.
    std::vector<LibraryWindow> visibleWindows() const;
    // The host's catalogue of named colours, as sRGB and opacity.
    std::map<std::string, std::array<double, 4>> namedColors;

    // The library's text rendering of one part of its state, when that part
    // has been made; nothing before its first use.
    std::optional<std::vector<std::string>> inspect(const std::string& name);
    // Prints those lines, or `absent` lines when that part was never made.
    void emitInspected(const std::string& name, const std::vector<std::string>& absent);

    const hosts::linuxhost::HostConnection* connection() const { return &connection_; }

    // The cloud stand-in the library's config points at; nullptr when it
    // could not start (the library then meets refused connections).
    cloud::Cloud* cloud() const { return cloud_.get(); }
    void setLogToStderr(bool on) { connection_.logToStderr = on; }
    // Before the library's first use: its ports count calls and fail as the plan says.
    void setFaultPlan(std::shared_ptr<hosts::FaultPlan> plan) { connection_.faults = std::move(plan); }

private:
    Host();
    ~Host();
    void buildWindow();
    void withMacros(const std::function<void()>& body) const;
    platform::ScriptOutcome runScript(const std::string& source);
    friend class MacroProject;
    friend class SimulatedProcess;

    Exports exports_;
    void* handle_ = nullptr;
    std::mutex outputMutex_;
    hosts::VirtualClockQueue mainQueue_;
    hosts::ThreadPool pool_{4};
    std::thread::id mainThread_;

    mutable std::recursive_mutex macroMutex_;
    std::map<std::string, MacroAnswer> macros_;
    std::map<std::string, MacroHandler> macroHandlers_;
    std::map<std::string, platform::Inspector> inspectors_;
    friend class HostInspection;
    friend class HostPanes;
    std::vector<std::pair<std::weak_ptr<platform::View>, platform::PaneAccess>> panes_;
    // The library's windows in the order made; `front` grows each time the
    // host sees one come front, and is 0 while it is hidden.
    struct WindowEntry {
        std::weak_ptr<platform::ToolWindow> window;
        platform::PaneAccess access;
        std::uint64_t front = 0;
    };
    std::vector<WindowEntry> windows_;
    std::uint64_t frontCount_ = 0;
    std::weak_ptr<platform::Window> lastKey_;
    void noteWindowOrder();
    std::vector<std::pair<std::string, int>> macroCounts_;
    std::optional<std::string> hardwareReport_;
    Document document_;

    std::shared_ptr<hosts::MemoryViews> views_;
    std::shared_ptr<hosts::MemoryAccessibility> accessibility_;
    std::shared_ptr<hosts::MemoryWeb> web_;
    std::shared_ptr<hosts::MonitorRegistry> monitors_;
    std::shared_ptr<hosts::MemoryWindow> documentWindow_;
    std::shared_ptr<platform::View> splitView_;
    hosts::linuxhost::HostConnection connection_;
    std::unique_ptr<cloud::Cloud> cloud_;
    std::string cloudAddress_;  // "127.0.0.1:PORT", written as "127.0.0.1:*" in the transcript
};

}  // namespace velmora::host
