// The add-in's keyboard vocabulary: which key combination runs which macro.
//
// Provides: ShortcutMapping, shortcutMappings().
// The table is compiled in, built at its first read and never changed. The
// key-down monitor is its only reader; row order is matching order.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "keyboard/ModifierFlags.h"

namespace velmora {

struct ShortcutMapping {
    // Handed as it stands to runPowerPointMacro.
    std::string macroName;
    // A second name for the same command; nothing in the library reads it.
    std::string shortCutRecord;
    // The exact set of modifiers that must be held.
    ModifierFlags modifiers;
    // A physical key's virtual code. Zero is a real key, so absence is its own state.
    std::optional<std::uint16_t> keyCode;
    // One key character, compared after lower-casing.
    std::optional<std::string> character;
};

// All 47 rows in table order; alive for the life of the process. Thread: any.
const std::vector<ShortcutMapping>& shortcutMappings();

}  // namespace velmora
