// Docks panes in the host's document window, keyed by title, and feeds the
// held modifiers to globalModifierKeyState.
//
// Provides: TaskpaneManager (static operations only), ContentLoader,
// ContentCompletion.
// The view tree is the only record of what is open: a toggle finds the
// host's split view, removes a pane whose subtree holds a text field with
// the title, or else makes a TaskpaneView, docks it and runs the loader.
// Main thread only; the exported open...Taskpane functions call in there
// and do not hop.
//
// Content loader contract: called once, synchronously inside the toggle,
// only when a new pane was made; it calls its completion on the main
// thread with the view to show (a ui::HostingView for a pane description),
// before it returns or later. The pane is docked already, so a slow loader
// shows an empty pane under its title bar; a completion that comes after
// the pane was closed fills the detached pane and does no harm.
#pragma once

#include <functional>
#include <memory>
#include <string>

#include "platform/Views.h"
#include "taskpane/TaskpaneView.h"

namespace velmora {

using ContentCompletion = std::function<void(std::shared_ptr<platform::View>)>;
using ContentLoader = std::function<void(ContentCompletion)>;

class TaskpaneManager {
public:
    static constexpr const char* documentWindowClass = "CUIDocumentShellWindow";
    static constexpr const char* splitViewClass = "CUITaskPaneSplitView";
    static constexpr const char* themeFrameClass = "NSThemeFrame";

    // desiredWidth 250.
    static void toggleTaskpane(const std::string& title, ContentLoader contentLoader);
    static void toggleTaskpane(const std::string& title, double desiredWidth, ContentLoader contentLoader);
    // Installs the unified flags-changed monitor once.
    static void initializeKeyEventMonitor();

    // The first direct subview of the split view that holds a text field
    // with exactly this text at any depth, or nullptr.
    static std::shared_ptr<platform::View> taskpaneView(const std::shared_ptr<platform::View>& splitView,
                                                        const std::string& title);
    // The pane with its width constraint (priority 750, active); its frame
    // starts at that width. Hands the pane's access to the host.
    static std::shared_ptr<TaskpaneView> createTaskpaneView(const std::string& title, double minWidth,
                                                            double initialWidth);
    // Top and bottom equal to the split view's; the horizontal place is the split view's.
    static void setupConstraints(const std::shared_ptr<TaskpaneView>& pane,
                                 const std::shared_ptr<platform::View>& splitView);
    // Posts the layout pass and its log line to the main queue.
    static void updateLayout(const std::shared_ptr<platform::View>& splitView,
                             const std::shared_ptr<TaskpaneView>& pane);

private:
    static std::shared_ptr<platform::Window> activeWindow();
    static std::shared_ptr<platform::View> findSplitView(const std::shared_ptr<platform::Window>& window);
    static std::shared_ptr<platform::View> findSubviewRecursively(const std::shared_ptr<platform::View>& root,
                                                                  const std::string& className);
    static std::shared_ptr<platform::View> findTextField(const std::shared_ptr<platform::View>& root,
                                                         const std::string& text);
    static void setupUnifiedKeyEventMonitorIfNeeded();
};

}  // namespace velmora
