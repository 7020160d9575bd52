// How a Linux host hands its services to the library.
//
// Provides: HostConnection, velmoraLinuxHost (the symbol a host exports).
// On macOS the host's services are the system's own. On Linux the program
// that loads the library plays that part: it exports `velmoraLinuxHost`,
// and at first use the library looks the symbol up in the process. Every
// port the host sets is used as it stands (its macro project, main loop,
// windows, accessibility tree, web views, events); the library supplies
// the rest (files below `fileRoot`, HTTP, processes, config defaults). The
// log always goes to the host's port when there is one, and to stderr as
// well when `logToStderr` is set. A host that sets `faults` gets the
// assembled ports wrapped in fault injection (see FaultInjection.h).
#pragma once

#include <memory>
#include <string>

#include "hosts/common/FaultInjection.h"
#include "platform/Platform.h"

namespace velmora::hosts::linuxhost {

struct HostConnection {
    std::shared_ptr<platform::Platform> ports;
    // Absolute paths the library uses are mapped below this folder; empty
    // means the real file system.
    std::string fileRoot;
    // The home directory as the library sees it; empty means $HOME.
    std::string homeDirectory;
    bool logToStderr = true;
    // Counts the calls of every port and fails the one it names; none: no wrapper.
    std::shared_ptr<hosts::FaultPlan> faults;
};

using HostEntry = const HostConnection* (*)();
inline constexpr const char* hostEntrySymbol = "velmoraLinuxHost";

}  // namespace velmora::hosts::linuxhost
