#include "keyboard/KeyText.h"

#include <charconv>
#include <cstdint>

#include "support/Unicode.h"

namespace velmora {

std::string lowercasedCharacters(std::string_view text) {
    // Most keys give one ASCII character: lower it in place. Any other text
    // takes Unicode's full lower-case mapping.
    for (char c : text) {
        if (static_cast<unsigned char>(c) >= 0x80) return support::lowercasedFully(text);
    }
    std::string out(text);
    for (char& c : out) {
        if (c >= 'A' && c <= 'Z') c = static_cast<char>(c + 32);
    }
    return out;
}

void appendModifierFlagsDescription(fmt::memory_buffer& out, ModifierFlags flags) {
    constexpr std::string_view head = "ModifierFlags(rawValue: ";
    char digits[24];
    const auto end = std::to_chars(digits, digits + sizeof digits, flags.rawValue).ptr;
    out.append(head.data(), head.data() + head.size());
    out.append(digits, end);
    out.push_back(')');
}

std::string modifierFlagsDescription(ModifierFlags flags) {
    fmt::memory_buffer out;
    appendModifierFlagsDescription(out, flags);
    return fmt::to_string(out);
}

}  // namespace velmora
