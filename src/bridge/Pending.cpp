// Entry points whose subsystems are not in the library yet: each writes the
// line it opens with and does nothing more. A subsystem that lands moves its
// entry point out of this file.

#include "bridge/Exports.h"
#include "platform/Platform.h"

namespace velmora {

// The licence windows are not part of this library's behaviour.
void initializeLoginOverlay() { platform::nslog("VL: initializeLoginOverlay called"); }
void initializeFreeTrialOverlay() { platform::nslog("VL: initializeFreeTrialOverlay called"); }

}  // namespace velmora
