#include "KeyboardLayout.h"

#include <charconv>
#include <map>
#include <vector>

#include "Host.h"

namespace velmora::host {

namespace {

constexpr std::uint64_t capsLockBit = 0x10000;
constexpr std::uint64_t shiftBit = 0x20000;
constexpr std::uint64_t controlBit = 0x40000;
constexpr std::uint64_t optionBit = 0x80000;
constexpr std::uint64_t commandBit = 0x100000;
constexpr std::uint64_t numericPadBit = 0x200000;
constexpr std::uint64_t functionBit = 0x800000;
// Device-dependent bits: the left-hand keys, and "not coalesced".
constexpr std::uint64_t leftControlBit = 0x1;
constexpr std::uint64_t leftShiftBit = 0x2;
constexpr std::uint64_t leftCommandBit = 0x8;
constexpr std::uint64_t leftOptionBit = 0x20;
constexpr std::uint64_t nonCoalescedBit = 0x100;

struct Key {
    std::uint16_t keyCode;
    std::string plain;
    std::string shifted;
    std::uint64_t flags = 0;  // bits the key itself adds
};

const std::map<std::string, Key>& keys() {
    static const std::map<std::string, Key> table = [] {
        std::map<std::string, Key> k;
        const std::pair<char, std::uint16_t> letters[] = {
            {'a', 0},  {'s', 1},  {'d', 2},  {'f', 3},  {'h', 4},  {'g', 5},  {'z', 6},  {'x', 7},  {'c', 8},
            {'v', 9},  {'b', 11}, {'q', 12}, {'w', 13}, {'e', 14}, {'r', 15}, {'y', 16}, {'t', 17}, {'o', 31},
            {'u', 32}, {'i', 34}, {'p', 35}, {'l', 37}, {'j', 38}, {'k', 40}, {'n', 45}, {'m', 46}};
        for (auto [letter, code] : letters) {
            k[std::string(1, letter)] = {code, std::string(1, letter), std::string(1, char(letter - 32))};
        }
        struct Symbol {
            const char* name;
            const char* alias;
            std::uint16_t code;
            const char* plain;
            const char* shifted;
        };
        const Symbol symbols[] = {
            {"1", nullptr, 18, "1", "!"},          {"2", nullptr, 19, "2", "@"},
            {"3", nullptr, 20, "3", "#"},          {"4", nullptr, 21, "4", "$"},
            {"6", nullptr, 22, "6", "^"},          {"5", nullptr, 23, "5", "%"},
            {"=", "equal", 24, "=", "+"},          {"9", nullptr, 25, "9", "("},
            {"7", nullptr, 26, "7", "&"},          {"-", "minus", 27, "-", "_"},
            {"8", nullptr, 28, "8", "*"},          {"0", nullptr, 29, "0", ")"},
            {"]", "rbracket", 30, "]", "}"},       {"[", "lbracket", 33, "[", "{"},
            {"'", "quote", 39, "'", "\""},         {";", "semicolon", 41, ";", ":"},
            {"\\", "backslash", 42, "\\", "|"},    {",", "comma", 43, ",", "<"},
            {"/", "slash", 44, "/", "?"},          {".", "period", 47, ".", ">"},
            {"`", "grave", 50, "`", "~"},          {"space", nullptr, 49, " ", " "},
            {"tab", nullptr, 48, "\t", "\t"},      {"return", nullptr, 36, "\r", "\r"},
            {"delete", nullptr, 51, "\x7f", "\x7f"}, {"escape", "esc", 53, "\x1b", "\x1b"},
        };
        for (const auto& s : symbols) {
            k[s.name] = {s.code, s.plain, s.shifted};
            if (s.alias) k[s.alias] = k[s.name];
        }
        // The keypad Enter is a key of its own, with another character than Return.
        k["enter"] = {76, "\x03", "\x03", numericPadBit};
        // Arrow keys report private-use characters and the function and numeric-pad bits.
        const std::uint64_t arrow = functionBit | numericPadBit;
        k["left"] = {123, "\uF702", "\uF702", arrow};
        k["right"] = {124, "\uF703", "\uF703", arrow};
        k["down"] = {125, "\uF701", "\uF701", arrow};
        k["up"] = {126, "\uF700", "\uF700", arrow};
        return k;
    }();
    return table;
}

const std::map<std::string, std::uint64_t>& modifiers() {
    static const std::map<std::string, std::uint64_t> table = {
        {"ctrl", controlBit | leftControlBit}, {"cmd", commandBit | leftCommandBit},
        {"opt", optionBit | leftOptionBit},    {"shift", shiftBit | leftShiftBit},
        {"caps", capsLockBit},                 {"fn", functionBit},
    };
    return table;
}

std::string utf8(char32_t c) {
    std::string out;
    if (c < 0x80) {
        out += char(c);
    } else if (c < 0x800) {
        out += char(0xC0 | (c >> 6));
        out += char(0x80 | (c & 0x3F));
    } else if (c < 0x10000) {
        out += char(0xE0 | (c >> 12));
        out += char(0x80 | ((c >> 6) & 0x3F));
        out += char(0x80 | (c & 0x3F));
    } else {
        out += char(0xF0 | (c >> 18));
        out += char(0x80 | ((c >> 12) & 0x3F));
        out += char(0x80 | ((c >> 6) & 0x3F));
        out += char(0x80 | (c & 0x3F));
    }
    return out;
}

template <typename Number>
Number parse(const std::string& text, int base, const char* what) {
    Number value{};
    auto [end, ec] = std::from_chars(text.data(), text.data() + text.size(), value, base);
    if (text.empty() || ec != std::errc{} || end != text.data() + text.size()) {
        throw ScenarioError(std::string("not a ") + what + ": '" + text + "'");
    }
    return value;
}

}  // namespace

platform::Event keyDownEvent(const std::string& chord) {
    std::vector<std::string> parts;
    std::size_t at = 0;
    for (;;) {
        auto plus = chord.find('+', at);
        parts.push_back(chord.substr(at, plus == std::string::npos ? std::string::npos : plus - at));
        if (plus == std::string::npos) break;
        at = plus + 1;
    }
    auto key = keys().find(parts.back());
    if (key == keys().end()) throw ScenarioError("no key named '" + parts.back() + "' on the US layout");

    std::uint64_t flags = nonCoalescedBit | key->second.flags;
    for (std::size_t i = 0; i + 1 < parts.size(); ++i) {
        auto modifier = modifiers().find(parts[i]);
        if (modifier == modifiers().end()) {
            throw ScenarioError("no modifier named '" + parts[i] + "' (ctrl, cmd, opt, shift, caps, fn)");
        }
        flags |= modifier->second;
    }
    platform::Event event;
    event.type = platform::EventType::keyDown;
    event.keyCode = key->second.keyCode;
    event.modifierFlags = flags;
    event.charactersIgnoringModifiers = (flags & shiftBit) ? key->second.shifted : key->second.plain;
    return event;
}

platform::Event rawKeyDownEvent(const std::string& characters, const std::string& keyCode, const std::string& flags) {
    platform::Event event;
    event.type = platform::EventType::keyDown;
    if (characters.size() > 2 && characters.compare(0, 2, "U+") == 0) {
        auto code = parse<std::uint32_t>(characters.substr(2), 16, "code point");
        if (code > 0x10FFFF || (code >= 0xD800 && code <= 0xDFFF)) throw ScenarioError("not a code point: " + characters);
        event.charactersIgnoringModifiers = utf8(code);
    } else if (characters != "-") {
        event.charactersIgnoringModifiers = characters;
    }
    event.keyCode = parse<std::uint16_t>(keyCode, 10, "key code");
    std::string hex = flags;
    if (hex.size() > 2 && (hex.compare(0, 2, "0x") == 0 || hex.compare(0, 2, "0X") == 0)) hex.erase(0, 2);
    event.modifierFlags = parse<std::uint64_t>(hex, 16, "hexadecimal flag set");
    return event;
}

}  // namespace velmora::host
