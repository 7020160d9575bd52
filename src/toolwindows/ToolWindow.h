// The floating-window layer: a window of the library's own that hosts a
// pane description, floats above the documents, and closes on Escape.
//
// Provides: ToolWindowSpec, ToolWindowController, presentToolWindow(),
// windowHtml(), describeWindow(), escapeKeyCode.
// A controller owns its window, the hosting view inside it, and its
// key-down monitor; dropping the controller removes the monitor. The host
// gets a PaneAccess for each window made (platform::windowCreated). Main
// thread only.
#pragma once

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "platform/Events.h"
#include "platform/Views.h"
#include "ui/HostingView.h"

namespace velmora {

inline constexpr std::uint16_t escapeKeyCode = 53;

struct ToolWindowSpec {
    std::string title;
    platform::Size contentSize;  // before the window fits its content
    double backgroundAlpha = 1;
    int level = 3;  // floats above document windows
};

class ToolWindowController : public std::enable_shared_from_this<ToolWindowController> {
public:
    // Makes the window hidden and centred, its content laid out and the
    // content size fitted (the fitting width, the fitting height plus 20),
    // with an Escape monitor that closes it while it is visible.
    static std::shared_ptr<ToolWindowController> make(const ToolWindowSpec& spec, ui::Body body);
    ~ToolWindowController();
    ToolWindowController(const ToolWindowController&) = delete;
    ToolWindowController& operator=(const ToolWindowController&) = delete;

    const std::shared_ptr<platform::ToolWindow>& window() const { return window_; }
    const std::shared_ptr<ui::HostingView>& hostingView() const { return hosting_; }
    platform::MonitorToken eventMonitor() const { return eventMonitor_; }

    // Shows the window in front and makes it key.
    void showWindow();
    // True when the window is on screen.
    bool hasVisibleWindow() const { return window_ && window_->isVisible(); }
    void close();

private:
    ToolWindowController() = default;

    std::shared_ptr<platform::ToolWindow> window_;
    std::shared_ptr<ui::HostingView> hosting_;
    platform::MonitorToken eventMonitor_ = 0;
};

// Opens a tool window as the macro project asks for one: the application
// becomes a regular one, a visible window in `slot` closes, and a new one
// from `make` takes its place, in front and key. Main thread.
void presentToolWindow(std::shared_ptr<ToolWindowController>& slot,
                       const std::function<std::shared_ptr<ToolWindowController>()>& make);

// Closes the application's key window. Only windows the library made can
// be closed from here; a document window that is key is left to the host.
void closeKeyWindow();

// "ToolWindow \"Insert Table\" 320.0x251.0 level 3 alpha 0.9 visible", then
// the content's node tree, indented.
std::vector<std::string> describeWindow(const platform::ToolWindow& window, double backgroundAlpha,
                                        ui::HostingView& content);

// The window as one self-contained HTML fragment: title bar and content,
// sized to the window; the host places it.
std::string windowHtml(const platform::ToolWindow& window, double backgroundAlpha, ui::HostingView& content);

}  // namespace velmora
