// Missed shortcuts: a command the user ran the slow way, remembered with its
// keyboard shortcut in a short list, newest first.
//
// Provides: missedRecommendation(), isModifierRelevant(), maximumMissed.
// triggerMissedAssistant itself is one of the entry points (bridge/Exports.h).
#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "assistant/ShortcutRecommendation.h"
#include "keyboard/ModifierKeyState.h"

namespace velmora {

inline constexpr std::size_t maximumMissed = 3;

// The row for a command name, compared exactly and with case; any other
// name gives a row named after it, with no keys and "Default.png".
ShortcutRecommendation missedRecommendation(const std::string& commandName);

// Whether exactly the row's modifiers (ctrl, cmd, opt, shift) are held right
// now; letters, digits and arrows in `keys` play no part.
bool isModifierRelevant(const std::vector<std::string>& keys, const ModifierKeyState& state);

}  // namespace velmora
