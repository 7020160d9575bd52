// Process port on macOS: NSTask.
//
// Provides: MacProcess. Runs the tool at `path` ("/usr/sbin/system_profiler"
// for the hardware report) with standard output captured through a pipe,
// waits for it to exit and gives its output as UTF-8. Blocks the caller:
// call it from a global queue.
#pragma once

#include "platform/Process.h"

namespace velmora::hosts::macos {

class MacProcess : public platform::ProcessPort {
public:
    platform::ProcessResult run(const std::string& path, const std::vector<std::string>& arguments) override;
};

}  // namespace velmora::hosts::macos
