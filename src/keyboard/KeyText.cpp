#include "keyboard/KeyText.h"

#include <algorithm>
#include <cstdint>

#include "support/Text.h"
#include "support/Unicode.h"

namespace velmora {

namespace {

// One character of the Private Use Area (U+E000 to U+F8FF), where the
// platform puts the arrow and function keys: it has no case.
bool isOnePrivateUseCharacter(std::string_view text) {
    if (text.size() != 3) return false;
    const auto lead = static_cast<unsigned char>(text[0]);
    const auto second = static_cast<unsigned char>(text[1]);
    const auto third = static_cast<unsigned char>(text[2]);
    const bool continuations = (second & 0xC0) == 0x80 && (third & 0xC0) == 0x80;
    return continuations && (lead == 0xEE || (lead == 0xEF && second <= 0xA3));
}

}  // namespace

std::string lowercasedCharacters(std::string_view text) {
    // Most keys give one ASCII character: lower it in place; the arrow and
    // function keys one character without case. Any other text takes
    // Unicode's full lower-case mapping.
    if (isOnePrivateUseCharacter(text)) return std::string(text);
    for (char c : text) {
        if (static_cast<unsigned char>(c) >= 0x80) return support::lowercasedFully(text);
    }
    std::string out(text);
    for (char& c : out) {
        if (c >= 'A' && c <= 'Z') c = static_cast<char>(c + 32);
    }
    return out;
}

char* writeModifierFlagsDescription(char* at, ModifierFlags flags) {
    constexpr std::string_view head = "ModifierFlags(rawValue: ";
    at = std::copy(head.begin(), head.end(), at);
    at = support::writeUnsigned(at, flags.rawValue);
    *at++ = ')';
    return at;
}

std::string modifierFlagsDescription(ModifierFlags flags) {
    char text[maxModifierFlagsDescriptionLength];
    return std::string(text, writeModifierFlagsDescription(text, flags));
}

}  // namespace velmora
