// Script port on macOS: NSAppleScript.
//
// Provides: MacScript. Each text is compiled and run as a new script
// object; the error dictionary is read for its message and number, and the
// result descriptor for its string value. It runs on the caller's thread,
// as the library's callers expect (the colour bar's theme read runs on a
// global queue); each call has its own script object.
#pragma once

#include "platform/Script.h"

namespace velmora::hosts::macos {

class MacScript : public platform::ScriptPort {
public:
    platform::ScriptOutcome run(const std::string& source) override;
};

}  // namespace velmora::hosts::macos
