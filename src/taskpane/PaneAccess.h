// What the host gets to look at and act on one pane (see platform/PaneHost.h).
//
// Provides: makePaneAccess(), describePane(), paneHtml().
// Every closure holds the pane weakly. Main thread only.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "platform/PaneHost.h"
#include "taskpane/TaskpaneView.h"

namespace velmora {

platform::PaneAccess makePaneAccess(const std::shared_ptr<TaskpaneView>& pane);

// "TaskpaneView \"Icons\" (0.0, 0.0, 250.0, 760.0) minWidth 250.0 constraint 250.0",
// then the content: a pane description's node tree, indented.
std::vector<std::string> describePane(TaskpaneView& pane);

// The pane as a self-contained fragment, placed at its frame in whatever
// positioned box the host puts it in.
std::string paneHtml(TaskpaneView& pane);

}  // namespace velmora
