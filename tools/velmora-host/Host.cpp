#include "Host.h"

#include <fmt/format.h>

#include <dlfcn.h>
#include <stdlib.h>

#include <cstdio>
#include <algorithm>
#include <filesystem>
#include <iostream>

#include "Cloud.h"
#include "document/Macros.h"
#include "platform/Platform.h"
#include "support/Text.h"

namespace velmora::host {

namespace {

constexpr const char* defaultHardwareReport =
    "Hardware:\n\n    Hardware Overview:\n\n      Model Name: Simulated Mac\n"
    "      Hardware UUID: 6D1A3C52-8B4F-4E0A-9C7D-2F5B8E1A4C90\n";

class TranscriptLog : public platform::LogPort {
public:
    void nslog(std::string_view text) override { Host::instance().emit("log: " + Host::oneLine(std::string(text))); }
    void print(std::string_view text) override { nslog(text); }
    void logger(std::string_view subsystem, std::string_view category, platform::LogLevel level,
                std::string_view text) override {
        nslog(fmt::format("[{}:{} {}] {}", subsystem, category, platform::levelName(level), text));
    }
};

// The two base URLs, fixed when the cloud starts.
class CloudConfig : public platform::ConfigPort {
public:
    CloudConfig(std::string service, std::string cdn) : service_(std::move(service)), cdn_(std::move(cdn)) {}
    std::string serviceBaseURL() const override { return service_; }
    std::string cdnBaseURL() const override { return cdn_; }
    // The page is opened in a browser, never fetched; it lies on the cloud too.
    std::string templateRequestPageURL() const override { return service_ + "/templates/request"; }

private:
    const std::string service_, cdn_;
};

class SimulatedDispatch : public platform::DispatchPort {
public:
    void mainAsync(platform::Task task) override { Host::instance().mainQueue().post(0, std::move(task)); }
    void mainAsyncAfter(double seconds, platform::Task task) override {
        Host::instance().mainQueue().post(seconds, std::move(task));
    }
    void globalAsync(platform::QualityOfService, platform::Task task) override {
        Host::instance().pool().post(std::move(task));
    }
    bool isMainThread() const override { return Host::instance().isMainThread(); }
    // The simulator's day starts on Monday 2026-11-23 at 10:00 UTC and moves
    // with the virtual clock, so transcripts and snapshots keep their dates.
    double now() const override { return 1795428000 + Host::instance().mainQueue().now(); }
};

}  // namespace

class MacroProject : public platform::ScriptPort {
public:
    platform::ScriptOutcome run(const std::string& source) override { return Host::instance().runScript(source); }
};

class HostInspection : public platform::InspectionPort {
public:
    void registerInspector(const std::string& name, platform::Inspector inspector) override {
        auto& host = Host::instance();
        host.withMacros([&] { host.inspectors_[name] = std::move(inspector); });
    }
};

class HostPanes : public platform::PaneHostPort {
public:
    void paneCreated(const std::shared_ptr<platform::View>& pane, platform::PaneAccess access) override {
        auto& panes = Host::instance().panes_;
        std::erase_if(panes, [](const auto& entry) { return entry.first.expired(); });
        panes.emplace_back(pane, std::move(access));
    }
    void windowCreated(const std::shared_ptr<platform::ToolWindow>& window, platform::PaneAccess access) override {
        auto& windows = Host::instance().windows_;
        std::erase_if(windows, [](const auto& entry) { return entry.window.expired(); });
        windows.push_back({window, std::move(access), 0});
    }
    std::optional<std::array<double, 4>> namedColor(const std::string& name) const override {
        const auto& colors = Host::instance().namedColors;
        auto it = colors.find(name);
        if (it == colors.end()) return std::nullopt;
        return it->second;
    }
};

// The task pane split view. Its layout places the subviews left to right at
// full height, each keeping its width, with the slide editor (the first)
// taking what the panes leave. A docked pane's width comes from its width
// constraint, which the library solves itself (the shared views port has
// no constraint solver); the host only places the pane.
class SimulatedSplitView : public hosts::MemoryView {
public:
    using MemoryView::MemoryView;
    void layout() override {
        const auto bounds = frame();
        const auto children = subviews();
        double panes = 0;
        for (std::size_t i = 1; i < children.size(); ++i) panes += children[i]->frame().width;
        double x = 0;
        for (std::size_t i = 0; i < children.size(); ++i) {
            auto f = children[i]->frame();
            if (i == 0) f.width = std::max(0.0, bounds.width - panes);
            f.x = x;
            f.y = 0;
            f.height = bounds.height;
            children[i]->setFrame(f);
            x += f.width;
        }
        MemoryView::layout();
    }
};

std::shared_ptr<hosts::MemoryView> makeHostView(const std::string& className, platform::Rect frame,
                                                std::optional<std::string> text) {
    if (className == "CUITaskPaneSplitView") {
        return std::make_shared<SimulatedSplitView>(className, frame, std::move(text));
    }
    return std::make_shared<hosts::MemoryView>(className, frame, std::move(text));
}

namespace {

// The host's own windows: every window but those the library made.
std::vector<std::shared_ptr<platform::View>> hostWindowRoots(const hosts::MemoryViews& views) {
    std::vector<std::shared_ptr<platform::View>> roots;
    for (const auto& window : views.windows()) {
        if (!window || dynamic_cast<const platform::ToolWindow*>(window.get())) continue;
        const auto* memory = dynamic_cast<const hosts::MemoryWindow*>(window.get());
        auto root = memory && memory->frameView() ? memory->frameView() : window->contentView();
        if (root) roots.push_back(std::move(root));
    }
    return roots;
}

void visitViews(const std::shared_ptr<platform::View>& view, const std::function<bool(const std::shared_ptr<platform::View>&)>& visit) {
    if (!visit(view)) return;
    for (const auto& child : view->subviews()) visitViews(child, visit);
}

}  // namespace

std::vector<std::shared_ptr<platform::View>> Host::dockedPanes() const {
    std::vector<std::shared_ptr<platform::View>> panes;
    for (const auto& root : hostWindowRoots(*views_)) {
        visitViews(root, [&](const std::shared_ptr<platform::View>& view) {
            if (!paneAccess(view)) return true;
            panes.push_back(view);
            return false;
        });
    }
    return panes;
}

void Host::layOutSplitViews() {
    for (const auto& root : hostWindowRoots(*views_)) {
        visitViews(root, [this](const std::shared_ptr<platform::View>& view) {
            if (paneAccess(view)) return false;
            if (!dynamic_cast<SimulatedSplitView*>(view.get())) return true;
            view->setNeedsLayout();
            view->layout();
            return true;
        });
    }
}

class SimulatedProcess : public platform::ProcessPort {
public:
    platform::ProcessResult run(const std::string& path, const std::vector<std::string>& arguments) override {
        auto& host = Host::instance();
        platform::ProcessResult result;
        std::optional<std::string> report;
        host.withMacros([&] { report = host.hardwareReport_; });
        if (path == "/usr/sbin/system_profiler" && report) {
            result.started = true;
            result.output = *report;
        } else {
            result.error = "Error Domain=NSCocoaErrorDomain Code=4 \"The file “" +
                           std::filesystem::path(path).filename().string() + "” doesn’t exist.\"";
        }
        return result;
    }
};

std::optional<MacroCall> parseMacroScript(const std::string& script) {
    const std::string head = "tell application \"Microsoft PowerPoint\"\n    ";
    const std::string tail = "\nend tell";
    if (script.size() < head.size() + tail.size() || script.compare(0, head.size(), head) != 0 ||
        script.compare(script.size() - tail.size(), tail.size(), tail) != 0) {
        return std::nullopt;
    }
    std::string command = script.substr(head.size(), script.size() - head.size() - tail.size());
    MacroCall call;
    if (command.rfind("return ", 0) == 0) {
        call.returning = true;
        command.erase(0, 7);
    }
    const std::string start = "run VB macro macro name \"";
    if (command.rfind(start, 0) != 0) return std::nullopt;
    auto nameEnd = command.find('"', start.size());
    if (nameEnd == std::string::npos) return std::nullopt;
    call.name = command.substr(start.size(), nameEnd - start.size());
    std::string rest = command.substr(nameEnd + 1);
    if (rest.empty()) return call;
    const std::string list = " list of parameters {";
    if (call.returning || rest.rfind(list, 0) != 0 || rest.back() != '}') return std::nullopt;
    std::string items = rest.substr(list.size(), rest.size() - list.size() - 1);
    std::size_t at = 0;
    while (at < items.size()) {
        std::string item;
        if (items[at] == '"') {
            // A quoted item ends at the quote before ", " or the end: nothing is escaped.
            std::size_t close = at + 1;
            for (;; ++close) {
                close = items.find('"', close);
                if (close == std::string::npos) return std::nullopt;
                if (close + 1 == items.size() || items.compare(close + 1, 2, ", ") == 0) break;
            }
            item = items.substr(at + 1, close - at - 1);
            at = close + 1;
        } else {
            auto comma = items.find(", ", at);
            item = items.substr(at, comma == std::string::npos ? std::string::npos : comma - at);
            at = comma == std::string::npos ? items.size() : comma;
        }
        call.parameters.push_back(item);
        if (at < items.size()) {
            if (items.compare(at, 2, ", ") != 0) return std::nullopt;
            at += 2;
        }
    }
    return call;
}

Host& Host::instance() {
    static Host host;
    return host;
}

Host::Host()
    : mainThread_(std::this_thread::get_id()),
      views_(std::make_shared<hosts::MemoryViews>()),
      accessibility_(std::make_shared<hosts::MemoryAccessibility>()),
      web_(std::make_shared<hosts::MemoryWeb>()),
      monitors_(std::make_shared<hosts::MonitorRegistry>()) {
    pool_.hold();  // background work waits for the run loop to settle
    auto ports = std::make_shared<platform::Platform>();
    ports->script = std::make_shared<MacroProject>();
    ports->dispatch = std::make_shared<SimulatedDispatch>();
    ports->log = std::make_shared<TranscriptLog>();
    ports->process = std::make_shared<SimulatedProcess>();
    ports->events = monitors_;
    ports->views = views_;
    ports->accessibility = accessibility_;
    ports->web = web_;
    ports->inspection = std::make_shared<HostInspection>();
    ports->panes = std::make_shared<HostPanes>();
    connection_.ports = ports;
    connection_.logToStderr = false;
    connection_.homeDirectory = "/Users/velmora";

    std::string pattern = (std::filesystem::temp_directory_path() / "velmora-host-XXXXXX").string();
    if (mkdtemp(pattern.data())) connection_.fileRoot = pattern;

    // The cloud's fixtures live in the sandbox, so they go with it at exit;
    // no path the library uses lies below "/cloud".
    try {
        cloud::CloudOptions options;
        if (!connection_.fileRoot.empty()) options.dataDirectory = connection_.fileRoot + "/cloud";
        cloud_ = std::make_unique<cloud::Cloud>(options);
        ports->config = std::make_shared<CloudConfig>(cloud_->serviceBaseURL(), cloud_->cdnBaseURL());
        cloudAddress_ = "127.0.0.1:" + std::to_string(cloud_->port());
    } catch (const std::exception& error) {
        std::fprintf(stderr, "velmora-host: the cloud did not start: %s\n", error.what());
        ports->config = std::make_shared<CloudConfig>("http://127.0.0.1:9/api", "http://127.0.0.1:9/cdn/");
    }

    macros_["GetEnableKeyboardShortcuts"].text = "true";
    hardwareReport_ = defaultHardwareReport;
    installDocumentMacros(*this);
    buildWindow();
}

Host::~Host() = default;

void Host::buildWindow() {
    // The document window as the host builds it: the task pane split view
    // holds the slide editor, and panes are added beside it.
    auto content = std::make_shared<hosts::MemoryView>("NSView", platform::Rect{0, 0, 1280, 800});
    auto split = std::make_shared<SimulatedSplitView>("CUITaskPaneSplitView", platform::Rect{0, 0, 1280, 760});
    split->addSubview(std::make_shared<hosts::MemoryView>("CUISlideEditorView", platform::Rect{0, 0, 1280, 760}));
    content->addSubview(std::make_shared<hosts::MemoryView>("CUIRibbonView", platform::Rect{0, 760, 1280, 40}));
    content->addSubview(split);
    splitView_ = split;
    documentWindow_ = std::make_shared<hosts::MemoryWindow>("CUIDocumentShellWindow", content);
    views_->addWindow(documentWindow_);
    views_->setKeyWindow(documentWindow_);
    // The host's own colours for the pane frame.
    namedColors["CUIWindowBackgroundColor"] = {0.925, 0.925, 0.93, 1};
    namedColors["CUIGroupTitleBackgroundColor"] = {0.86, 0.86, 0.87, 1};
    namedColors["CUIWindowTitleColor"] = {0.16, 0.16, 0.18, 1};
}

const platform::PaneAccess* Host::paneAccess(const std::shared_ptr<platform::View>& pane) const {
    for (auto it = panes_.rbegin(); it != panes_.rend(); ++it) {
        if (it->first.lock() == pane) return &it->second;
    }
    return nullptr;
}

void Host::noteWindowOrder() {
    // Closed windows nobody holds go, as the window server lets them go.
    views_->forgetClosedWindows();
    std::erase_if(windows_, [](const auto& entry) { return entry.window.expired(); });
    // Windows that appeared since the last look come front in the order
    // made; the key window, if it changed, comes front last.
    for (auto& entry : windows_) {
        auto window = entry.window.lock();
        if (!window->isVisible()) {
            entry.front = 0;
        } else if (entry.front == 0) {
            entry.front = ++frontCount_;
        }
    }
    auto key = views_->keyWindow();
    if (key == lastKey_.lock()) return;
    lastKey_ = key;
    for (auto& entry : windows_) {
        if (key && entry.window.lock() == key && key->isVisible()) entry.front = ++frontCount_;
    }
}

std::vector<Host::LibraryWindow> Host::visibleWindows() const {
    std::vector<std::pair<std::uint64_t, LibraryWindow>> shown;
    const auto key = views_->keyWindow();
    for (const auto& entry : windows_) {
        auto window = entry.window.lock();
        if (!window || !window->isVisible()) continue;
        // A window shown since the last look counts as the newest.
        const auto front = entry.front ? entry.front : UINT64_MAX;
        shown.push_back({front, {window, entry.access, key && key == window}});
    }
    std::stable_sort(shown.begin(), shown.end(), [](const auto& a, const auto& b) {
        if (a.second.window->level() != b.second.window->level()) return a.second.window->level() > b.second.window->level();
        return a.first > b.first;
    });
    std::vector<LibraryWindow> windows;
    for (auto& [_, window] : shown) windows.push_back(std::move(window));
    return windows;
}

std::optional<std::string> Host::load(const std::string& libraryPath) {
    handle_ = dlopen(libraryPath.c_str(), RTLD_NOW | RTLD_LOCAL);
    if (!handle_) return std::string(dlerror());
    bool missing = false;
    auto bind = [&](auto& slot, const char* name) {
        slot = reinterpret_cast<std::remove_reference_t<decltype(slot)>>(dlsym(handle_, name));
        if (!slot) missing = true;
    };
#define VELMORA_BIND(name) bind(exports_.name, #name)
    VELMORA_BIND(initializeEventMonitor);
    VELMORA_BIND(updateShortcutEnabledState);
    VELMORA_BIND(activateVelmoraTab);
    VELMORA_BIND(triggerAssistant);
    VELMORA_BIND(triggerMissedAssistant);
    VELMORA_BIND(openShortcutsTaskpane);
    VELMORA_BIND(openAssistantTaskpane);
    VELMORA_BIND(openIconTaskpane);
    VELMORA_BIND(openImageTaskpane);
    VELMORA_BIND(openColorBarTaskpane);
    VELMORA_BIND(openSlideLibraryTaskpane);
    VELMORA_BIND(openTemplateLibraryTaskpane);
    VELMORA_BIND(refreshSlideLibraryTaskpane);
    VELMORA_BIND(triggerColorThemeRefresh);
    VELMORA_BIND(initializeTablesOverlay);
    VELMORA_BIND(initializeLinesOverlay);
    VELMORA_BIND(initializeTaggingOverlay);
    VELMORA_BIND(initializeLoginOverlay);
    VELMORA_BIND(initializeFreeTrialOverlay);
#undef VELMORA_BIND
    if (missing) return "the library lacks one of the 19 entry points";
    return std::nullopt;
}

void Host::emit(const std::string& text) {
    // The cloud's port changes from run to run; transcripts must not.
    std::string line = text;
    if (!cloudAddress_.empty()) {
        for (auto at = line.find(cloudAddress_); at != std::string::npos; at = line.find(cloudAddress_, at)) {
            line.replace(at, cloudAddress_.size(), "127.0.0.1:*");
        }
    }
    std::lock_guard lock(outputMutex_);
    std::fwrite(line.data(), 1, line.size(), stdout);
    std::fputc('\n', stdout);
    std::fflush(stdout);
}

// Other control characters (Escape, the keypad's Enter) stay visible.
std::string Host::oneLine(const std::string& text) { return support::oneLine(text); }

bool Host::isMainThread() const { return std::this_thread::get_id() == mainThread_; }

void Host::settle() {
    // Background work runs only while the main thread waits here, so the
    // transcript has one order whatever the threads do.
    for (;;) {
        pool_.release();
        pool_.waitIdle();
        pool_.hold();
        noteWindowOrder();
        if (mainQueue_.runDue() == 0) break;
    }
}

void Host::withMacros(const std::function<void()>& body) const {
    std::lock_guard lock(macroMutex_);
    body();
}

void Host::handleMacro(const std::string& macro, MacroHandler handler) {
    withMacros([&] { macroHandlers_[macro] = std::move(handler); });
}

std::vector<std::pair<std::string, int>> Host::macroCounts() const {
    std::vector<std::pair<std::string, int>> counts;
    withMacros([&] { counts = macroCounts_; });
    return counts;
}

std::optional<std::vector<std::string>> Host::inspect(const std::string& name) {
    platform::Inspector inspector;
    withMacros([&] {
        if (auto it = inspectors_.find(name); it != inspectors_.end()) inspector = it->second;
    });
    if (!inspector) return std::nullopt;
    return inspector();
}

void Host::emitInspected(const std::string& name, const std::vector<std::string>& absent) {
    const auto lines = inspect(name);
    for (const auto& line : lines ? *lines : absent) emit(line);
}

void Host::setHardwareReport(std::optional<std::string> report) {
    withMacros([&] { hardwareReport_ = std::move(report); });
}

namespace {

// An application's error names the application and a brief message too, keys
// the library reads nowhere but prints with the rest of the dictionary.
platform::ScriptError macroFailure(const std::string& macro) {
    const std::string brief = "The macro “" + macro + "” failed.";
    const std::string message = "Microsoft PowerPoint got an error: " + brief;
    return {message, -2700,
            fmt::format("{{NSAppleScriptErrorAppName = \"Microsoft PowerPoint\"; NSAppleScriptErrorBriefMessage = \"{}\"; "
                        "NSAppleScriptErrorMessage = \"{}\"; NSAppleScriptErrorNumber = -2700;}}",
                        brief, message)};
}

}  // namespace

platform::ScriptOutcome Host::runScript(const std::string& source) {
    emit("script: " + oneLine(source));
    auto call = parseMacroScript(source);
    if (!call) return {true, platform::ScriptError{"Expected end of line but found unknown token.", -2741}, std::nullopt};

    MacroAnswer answer;
    MacroHandler handler;
    withMacros([&] {
        auto counted = std::find_if(macroCounts_.begin(), macroCounts_.end(),
                                    [&](const auto& entry) { return entry.first == call->name; });
        if (counted == macroCounts_.end()) {
            macroCounts_.emplace_back(call->name, 1);
        } else {
            ++counted->second;
        }
        if (auto it = macros_.find(call->name); it != macros_.end()) answer = it->second;
        if (auto it = macroHandlers_.find(call->name); it != macroHandlers_.end()) handler = it->second;
    });
    if (answer.fails) return {true, macroFailure(call->name), std::nullopt};
    // A handler runs outside the lock: it may call back into the library.
    std::optional<std::string> result = handler ? handler(*call) : std::nullopt;
    if (answer.text) result = answer.text;
    return {true, std::nullopt, result};
}

}  // namespace velmora::host

extern "C" __attribute__((visibility("default"))) const velmora::hosts::linuxhost::HostConnection* velmoraLinuxHost() {
    return velmora::host::Host::instance().connection();
}
