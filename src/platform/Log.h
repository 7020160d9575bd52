// Log port: the three channels a line can take.
//
// Provides: LogLevel, LogPort.
// nslog: an NSLog line; print: a plain line on standard output; logger: a
// Logger(subsystem, category) line at a level. Callable from any thread.
#pragma once

#include <string_view>

namespace velmora::platform {

enum class LogLevel { debug, info, notice, warning, error, fault };

class LogPort {
public:
    virtual ~LogPort() = default;
    virtual void nslog(std::string_view text) = 0;
    virtual void print(std::string_view text) = 0;
    virtual void logger(std::string_view subsystem, std::string_view category, LogLevel level,
                        std::string_view text) = 0;
};

std::string_view levelName(LogLevel level);

}  // namespace velmora::platform
