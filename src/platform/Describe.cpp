// Printed forms of port values, shared by the library and its hosts.

#include <fmt/format.h>

#include "platform/Log.h"
#include "platform/Script.h"
#include "platform/Views.h"
#include "support/Text.h"

namespace velmora::platform {

std::string describe(const ScriptError& error) {
    if (!error.printed.empty()) return error.printed;
    return fmt::format("{{NSAppleScriptErrorMessage = \"{}\"; NSAppleScriptErrorNumber = {};}}", error.message,
                       error.number);
}

std::string describe(const Rect& rect) {
    return "(" + support::swiftDescription(rect.x) + ", " + support::swiftDescription(rect.y) + ", " +
           support::swiftDescription(rect.width) + ", " + support::swiftDescription(rect.height) + ")";
}

std::string_view levelName(LogLevel level) {
    switch (level) {
        case LogLevel::debug: return "debug";
        case LogLevel::info: return "info";
        case LogLevel::notice: return "notice";
        case LogLevel::warning: return "warning";
        case LogLevel::error: return "error";
        case LogLevel::fault: return "fault";
    }
    return "default";
}

}  // namespace velmora::platform
