// Whether the keyboard shortcuts are on: the user's setting as last read
// from the macro project.
//
// Provides: ShortcutState. Read on the main thread by the key handler and
// written by whichever thread calls updateShortcutEnabledState.
#pragma once

#include <atomic>

namespace velmora {

struct ShortcutState {
    // Starts true; the setting fails open.
    static inline std::atomic<bool> isEnabled{true};
};

}  // namespace velmora
