// Script port: runs one script text in the host and gives back its result.
//
// Provides: ScriptError, ScriptOutcome, ScriptPort.
// On macOS this is NSAppleScript; on Linux the host's macro project answers.
// Thread: called on any thread; blocks until the host has answered.
#pragma once

#include <optional>
#include <string>
#include <utility>

namespace velmora::platform {

// The host's error dictionary, reduced to what the library reads and prints.
struct ScriptError {
    ScriptError() = default;
    ScriptError(std::string message, long number, std::string printed = {})
        : message(std::move(message)), number(number), printed(std::move(printed)) {}

    std::string message;  // NSAppleScriptErrorMessage
    long number = 0;      // NSAppleScriptErrorNumber
    // The whole dictionary as the platform prints it, which may hold keys the
    // two above do not carry; empty: those two are printed in that form.
    std::string printed;
};

struct ScriptOutcome {
    // False when no script object could be made from the text: nothing ran.
    bool created = true;
    // Set when running reported an error.
    std::optional<ScriptError> error;
    // The result descriptor's stringValue, when it has one.
    std::optional<std::string> stringValue;
};

class ScriptPort {
public:
    virtual ~ScriptPort() = default;
    virtual ScriptOutcome run(const std::string& source) = 0;
};

// The printed form of an error dictionary, on one line.
std::string describe(const ScriptError& error);

}  // namespace velmora::platform
