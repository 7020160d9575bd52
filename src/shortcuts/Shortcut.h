// One entry of the shortcut reference catalogue.
//
// Provides: ShortcutID, Shortcut, shortcutCataloguePath, shortcutIconsDirectory.
// Plain values, safe to copy between threads. Every record gets a fresh
// random identity when it is built, so two loads of one file give equal
// records with different ids.
#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <vector>

namespace velmora {

inline constexpr const char* shortcutCataloguePath =
    "/Library/Application Support/Microsoft/Velmora/PowerPoint/Shortcuts.xml";
// With its closing slash: an icon's path is this followed by its file name.
inline constexpr const char* shortcutIconsDirectory = "/Library/Application Support/Microsoft/Velmora/PowerPoint/Icons/";

// A random (version 4) UUID.
struct ShortcutID {
    std::array<std::uint8_t, 16> bytes{};

    static ShortcutID random();
    // Canonical upper-case form, 36 characters.
    std::string uuidString() const;

    bool operator==(const ShortcutID&) const = default;
};

struct Shortcut {
    ShortcutID id = ShortcutID::random();
    std::string category;
    std::string name;
    // The key tokens as shown, one chip each; display text, not parsed.
    std::vector<std::string> keys;
    // The icon's file name relative to the icons directory, extension included.
    std::string imageName;
};

}  // namespace velmora
