// How the key monitor spells what it saw: the lower-cased key characters and
// the printed form of a modifier set.
//
// Provides: lowercasedCharacters(), appendModifierFlagsDescription(),
// modifierFlagsDescription().
// Thread: any; pure functions.
#pragma once

#include <fmt/format.h>

#include <string>
#include <string_view>

#include "keyboard/ModifierFlags.h"

namespace velmora {

// Lower-cases UTF-8 text the way the platform's string lower-casing does for
// the scripts a keyboard layout produces: ASCII, Latin (with the extended
// blocks), Greek, Cyrillic, full-width Latin and the letter-like symbols
// that fold to Latin or Greek. Other characters and malformed bytes stay as
// they are. Text of 15 bytes or fewer is lower-cased without touching the heap.
std::string lowercasedCharacters(std::string_view text);

// The option set as the platform prints it: "ModifierFlags(rawValue: 1310720)".
// The one place that spells it; the append form writes into a stack buffer.
void appendModifierFlagsDescription(fmt::memory_buffer& out, ModifierFlags flags);
std::string modifierFlagsDescription(ModifierFlags flags);

}  // namespace velmora
