// Script port: runs one script text in the host and gives back its result.
//
// Provides: ScriptError, ScriptOutcome, ScriptPort.
// On macOS this is NSAppleScript; on Linux the host's macro project answers.
// Thread: called on any thread; blocks until the host has answered.
#pragma once

#include <optional>
#include <string>

namespace velmora::platform {

// The host's error dictionary, reduced to what the library reads and prints.
struct ScriptError {
    std::string message;  // NSAppleScriptErrorMessage
    long number = 0;      // NSAppleScriptErrorNumber
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
