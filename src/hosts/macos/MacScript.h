// Script port on macOS: NSAppleScript.
//
// Provides: MacScript. Each text is compiled and run as a new script
// object; the error dictionary is read for its message and number, and the
// result descriptor for its string value. NSAppleScript belongs to the main
// thread, so a call from another thread waits for the main queue to run it.
#pragma once

#include "platform/Script.h"

namespace velmora::hosts::macos {

class MacScript : public platform::ScriptPort {
public:
    platform::ScriptOutcome run(const std::string& source) override;
};

}  // namespace velmora::hosts::macos
