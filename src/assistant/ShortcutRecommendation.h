// One row of the assistant: a shortcut that would help, or one that was missed.
//
// Provides: RecommendationID, ShortcutRecommendation.
// Plain values, safe to copy between threads. Every row made by default
// carries a fresh random identity, so two runs never share one; the pane
// identifies its rows by it, which is what makes new rows glow.
#pragma once

#include <string>
#include <vector>

#include "support/UUID.h"

namespace velmora {

using RecommendationID = support::UUID;

struct ShortcutRecommendation {
    RecommendationID id = RecommendationID::random();
    // The label; it also identifies the recommendation across runs.
    std::string Name;
    // Key caps, left to right, in display text ("Cmd", "Ctrl", "↑/M/↓").
    std::vector<std::string> Keys;
    // File name of the icon in the installed icon folder.
    std::string ImagePath;
    // A short label such as "-3s"; empty shows no badge.
    std::string TimeSaved;

    bool operator==(const ShortcutRecommendation&) const = default;
};

}  // namespace velmora
