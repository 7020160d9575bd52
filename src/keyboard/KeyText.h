// How the key monitor spells what it saw: the lower-cased key characters and
// the printed form of a modifier set.
//
// Provides: lowercasedCharacters(), writeModifierFlagsDescription(),
// modifierFlagsDescription().
// Thread: any; pure functions.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "keyboard/ModifierFlags.h"

namespace velmora {

// Lower-cases UTF-8 text as the platform's string lower-casing does: the
// full Unicode mapping of every script ("İ" gives "i" and a combining dot,
// "Σ" gives "σ"). Plain ASCII of 15 bytes or fewer is lower-cased without
// touching the heap; a malformed byte reads as U+FFFD.
std::string lowercasedCharacters(std::string_view text);

// The option set as the platform prints it: "ModifierFlags(rawValue: 1310720)".
// The one place that spells it; the write form needs room for
// maxModifierFlagsDescriptionLength bytes at `at` and gives the end.
inline constexpr std::size_t maxModifierFlagsDescriptionLength = 48;
char* writeModifierFlagsDescription(char* at, ModifierFlags flags);
std::string modifierFlagsDescription(ModifierFlags flags);

}  // namespace velmora
