// The library's start: the device identifier, the shortcut setting, and
// the key and mouse monitors.

#include "bridge/Exports.h"
#include "bridge/HardwareUUID.h"
#include "bridge/MacroRunner.h"
#include "keyboard/ShortcutState.h"
#include "platform/Platform.h"

namespace velmora {

void initializeEventMonitor() {
    platform::nslog("VL: initializeEventMonitor function called");
    // The global's first use runs the report tool and logs; the value stored
    // is a second run, without the log line.
    (void)globalHardwareUUID();
    setGlobalHardwareUUID(getHardwareUUID().value_or("UnknownUUID"));
    updateShortcutEnabledState();
}

void updateShortcutEnabledState() { ShortcutState::isEnabled = getEnableKeyboardShortcuts(); }

}  // namespace velmora
