// What the host gets to look at and act on one pane (see platform/PaneHost.h).
//
// Provides: makePaneAccess(), makeContentAccess(), describePane(), paneHtml().
// Every closure holds the pane weakly. Main thread only.
#pragma once

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "platform/PaneHost.h"
#include "taskpane/TaskpaneView.h"
#include "ui/HostingView.h"

namespace velmora {

platform::PaneAccess makePaneAccess(const std::shared_ptr<TaskpaneView>& pane);

// The closures that act on a pane description wherever it is hosted (tap,
// hover, type, default button), for the hosting view that `hosting` gives
// at the time of each call (nothing: the closures do nothing).
platform::PaneAccess makeContentAccess(std::function<std::shared_ptr<ui::HostingView>()> hosting);

// "TaskpaneView \"Icons\" (0.0, 0.0, 250.0, 760.0) minWidth 250.0 constraint 250.0",
// then the content: a pane description's node tree, indented.
std::vector<std::string> describePane(TaskpaneView& pane);

// The pane as a self-contained fragment, placed at its frame in whatever
// positioned box the host puts it in.
std::string paneHtml(TaskpaneView& pane);

}  // namespace velmora
