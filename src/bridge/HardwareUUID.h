// The device identifier that the cloud service knows this computer by.
//
// Provides: getHardwareUUID(), globalHardwareUUID(), setGlobalHardwareUUID().
// Thread: any. The global is made at first use, which runs the hardware
// report tool and logs the value; reads and writes are safe from any thread
// and the last writer wins.
#pragma once

#include <optional>
#include <string>

namespace velmora {

// Runs the hardware report tool and reads its "Hardware UUID:" line. Gives
// nothing when the tool cannot start, and "UnknownUUID" when no line holds it.
std::optional<std::string> getHardwareUUID();

std::string globalHardwareUUID();
void setGlobalHardwareUUID(std::string value);

}  // namespace velmora
