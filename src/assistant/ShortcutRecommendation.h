// One row of the assistant: a shortcut that would help, or one that was missed.
//
// Provides: RecommendationID, ShortcutRecommendation.
// Plain values, safe to copy between threads. Every row made by default
// carries a fresh random identity, so two runs never share one; the pane
// identifies its rows by it, which is what makes new rows glow.
#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <vector>

namespace velmora {

// A random (version 4) UUID.
struct RecommendationID {
    std::array<std::uint8_t, 16> bytes{};

    // A fresh random identity.
    static RecommendationID random();
    // The canonical 36-character form, upper-case: "1B4E28BA-2FA1-11D2-883F-B9A761BDE3FB".
    std::string uuidString() const;

    bool operator==(const RecommendationID&) const = default;
};

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
