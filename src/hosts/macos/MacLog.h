// Log port on macOS: NSLog, standard output and the unified log.
//
// Provides: MacLog. nslog() is NSLog (the host's console line with its own
// prefix), print() a plain line on standard output, logger() an os_log
// entry of the given subsystem and category at the level's type, public.
// Callable from any thread.
#pragma once

#include <map>
#include <mutex>
#include <string>
#include <utility>

#include <os/log.h>

#include "platform/Log.h"

namespace velmora::hosts::macos {

class MacLog : public platform::LogPort {
public:
    void nslog(std::string_view text) override;
    void print(std::string_view text) override;
    void logger(std::string_view subsystem, std::string_view category, platform::LogLevel level,
                std::string_view text) override;

private:
    // One log object per subsystem and category, kept for the process's life
    // as the platform's Logger keeps its own.
    os_log_t logFor(std::string_view subsystem, std::string_view category);

    std::mutex mutex_;
    std::map<std::pair<std::string, std::string>, os_log_t> logs_;
};

}  // namespace velmora::hosts::macos
