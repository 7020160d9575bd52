#import <Foundation/Foundation.h>

#include <cstdio>

#include "hosts/macos/MacLog.h"
#include "hosts/macos/MacStrings.h"

namespace velmora::hosts::macos {

namespace {

os_log_type_t typeFor(platform::LogLevel level) {
    switch (level) {
        case platform::LogLevel::debug: return OS_LOG_TYPE_DEBUG;
        case platform::LogLevel::info: return OS_LOG_TYPE_INFO;
        case platform::LogLevel::notice: return OS_LOG_TYPE_DEFAULT;
        case platform::LogLevel::warning: return OS_LOG_TYPE_ERROR;
        case platform::LogLevel::error: return OS_LOG_TYPE_ERROR;
        case platform::LogLevel::fault: return OS_LOG_TYPE_FAULT;
    }
    return OS_LOG_TYPE_DEFAULT;
}

}  // namespace

void MacLog::nslog(std::string_view text) {
    // Through %@, so a per cent sign in the text is printed, not read.
    NSLog(@"%@", toNSString(text));
}

void MacLog::print(std::string_view text) {
    static std::mutex output;
    std::lock_guard lock(output);
    std::fwrite(text.data(), 1, text.size(), stdout);
    std::fputc('\n', stdout);
    std::fflush(stdout);
}

os_log_t MacLog::logFor(std::string_view subsystem, std::string_view category) {
    std::lock_guard lock(mutex_);
    auto key = std::make_pair(std::string(subsystem), std::string(category));
    auto found = logs_.find(key);
    if (found != logs_.end()) return found->second;
    os_log_t log = os_log_create(key.first.c_str(), key.second.c_str());
    logs_.emplace(std::move(key), log);
    return log;
}

void MacLog::logger(std::string_view subsystem, std::string_view category, platform::LogLevel level,
                    std::string_view text) {
    const std::string line(text);
    os_log_with_type(logFor(subsystem, category), typeFor(level), "%{public}s", line.c_str());
}

}  // namespace velmora::hosts::macos
