// The modifier keys held right now, as one observable process-wide object.
//
// Provides: ModifierKeyState, globalModifierKeyState().
// Written on the main queue by the task pane host's flags-changed monitor;
// read from any thread (the missed-shortcut lookup reads it on its caller's).
#pragma once

#include "keyboard/ModifierFlags.h"
#include "support/Published.h"

namespace velmora {

class ModifierKeyState {
public:
    support::Published<ModifierFlags> modifierFlags;
};

// Made at first use, never replaced and never destroyed.
inline ModifierKeyState& globalModifierKeyState() {
    static auto& state = *new ModifierKeyState;
    return state;
}

}  // namespace velmora
