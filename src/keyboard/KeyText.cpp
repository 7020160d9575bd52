#include "keyboard/KeyText.h"

#include <charconv>
#include <cstdint>

namespace velmora {

namespace {

// One code point's lower-case form, or the code point itself. U+0130 (a
// capital I with a dot) is the one letter whose lower case is two code
// points; the caller handles it.
char32_t lowerCodePoint(char32_t c) {
    if (c < 0x80) return (c >= 'A' && c <= 'Z') ? c + 32 : c;
    if (c >= 0xC0 && c <= 0xDE && c != 0xD7) return c + 32;
    if (c >= 0x100 && c <= 0x17F) {
        if (c == 0x178) return 0xFF;
        if (c == 0x130 || c == 0x131 || c == 0x138 || c == 0x149 || c == 0x17F) return c;
        const bool evenPairs = c < 0x138 || (c >= 0x14A && c < 0x178);
        if (evenPairs) return (c % 2 == 0) ? c + 1 : c;
        return (c % 2 == 1) ? c + 1 : c;
    }
    if (c >= 0x391 && c <= 0x3A9 && c != 0x3A2) return c + 32;
    if (c == 0x386) return 0x3AC;
    if (c >= 0x388 && c <= 0x38A) return c + 37;
    if (c == 0x38C) return 0x3CC;
    if (c == 0x38E || c == 0x38F) return c + 63;
    if (c >= 0x400 && c <= 0x40F) return c + 80;
    if (c >= 0x410 && c <= 0x42F) return c + 32;
    if ((c >= 0x460 && c <= 0x481) || (c >= 0x48A && c <= 0x4BF)) return (c % 2 == 0) ? c + 1 : c;
    if ((c >= 0x1E00 && c <= 0x1E95) || (c >= 0x1EA0 && c <= 0x1EFF)) return (c % 2 == 0) ? c + 1 : c;
    if (c == 0x1E9E) return 0xDF;
    if (c == 0x2126) return 0x3C9;  // ohm sign
    if (c == 0x212A) return 'k';    // kelvin sign
    if (c == 0x212B) return 0xE5;   // angstrom sign
    if (c >= 0xFF21 && c <= 0xFF3A) return c + 32;
    return c;
}

// Decodes one well-formed UTF-8 sequence at `at`; gives its length, or 0
// when the bytes there are not one.
std::size_t decode(std::string_view text, std::size_t at, char32_t& out) {
    const auto byte = [&](std::size_t i) { return static_cast<unsigned char>(text[i]); };
    const unsigned char lead = byte(at);
    std::size_t length = lead >= 0xF0 && lead <= 0xF4 ? 4 : lead >= 0xE0 ? 3 : lead >= 0xC2 && lead < 0xE0 ? 2 : 0;
    if (length == 0 || at + length > text.size()) return 0;
    char32_t c = lead & (0x7F >> length);
    for (std::size_t i = 1; i < length; ++i) {
        if ((byte(at + i) & 0xC0) != 0x80) return 0;
        c = (c << 6) | (byte(at + i) & 0x3F);
    }
    const char32_t smallest[] = {0, 0, 0x80, 0x800, 0x10000};
    if (c < smallest[length] || c > 0x10FFFF || (c >= 0xD800 && c <= 0xDFFF)) return 0;
    out = c;
    return length;
}

void encode(char32_t c, std::string& out) {
    if (c < 0x80) {
        out += static_cast<char>(c);
    } else if (c < 0x800) {
        out += static_cast<char>(0xC0 | (c >> 6));
        out += static_cast<char>(0x80 | (c & 0x3F));
    } else if (c < 0x10000) {
        out += static_cast<char>(0xE0 | (c >> 12));
        out += static_cast<char>(0x80 | ((c >> 6) & 0x3F));
        out += static_cast<char>(0x80 | (c & 0x3F));
    } else {
        out += static_cast<char>(0xF0 | (c >> 18));
        out += static_cast<char>(0x80 | ((c >> 12) & 0x3F));
        out += static_cast<char>(0x80 | ((c >> 6) & 0x3F));
        out += static_cast<char>(0x80 | (c & 0x3F));
    }
}

}  // namespace

std::string lowercasedCharacters(std::string_view text) {
    // Most keys give one ASCII character: lower it in place.
    bool ascii = true;
    for (char c : text) ascii = ascii && static_cast<unsigned char>(c) < 0x80;
    if (ascii) {
        std::string out(text);
        for (char& c : out) {
            if (c >= 'A' && c <= 'Z') c = static_cast<char>(c + 32);
        }
        return out;
    }
    std::string out;
    out.reserve(text.size());
    for (std::size_t at = 0; at < text.size();) {
        const unsigned char lead = static_cast<unsigned char>(text[at]);
        if (lead < 0x80) {
            out += static_cast<char>(lead >= 'A' && lead <= 'Z' ? lead + 32 : lead);
            ++at;
            continue;
        }
        char32_t c = 0;
        const std::size_t length = decode(text, at, c);
        if (length == 0) {
            out += text[at++];
            continue;
        }
        if (c == 0x130) {
            encode('i', out);
            encode(0x307, out);
        } else {
            encode(lowerCodePoint(c), out);
        }
        at += length;
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
