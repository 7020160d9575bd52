#include "colorbar/ColorModel.h"

#include <algorithm>
#include <cmath>
#include <cstdint>

#include "bridge/MacroRunner.h"
#include "platform/Platform.h"
#include "support/Text.h"
#include "support/Unicode.h"

namespace velmora {

namespace {

// A hex scan as the platform's scanner does it: an optional "0x", then every
// leading digit; the value stays 0 when none is there. It saturates rather
// than wraps, which no count the caller uses can reach.
std::uint64_t scanHex(std::string_view text) {
    if (text.size() > 2 && text[0] == '0' && (text[1] == 'x' || text[1] == 'X') && support::hexDigitValue(text[2]) >= 0) {
        text.remove_prefix(2);
    }
    std::uint64_t value = 0;
    for (char c : text) {
        const int digit = support::hexDigitValue(c);
        if (digit < 0) break;
        if (value > (UINT64_MAX >> 4)) return UINT64_MAX;
        value = value << 4 | static_cast<std::uint64_t>(digit);
    }
    return value;
}

// An unsigned 8-bit integer in radix 16 as the language's parser reads one:
// an optional sign, then one or more digits, nothing else. "-0" is 0.
std::optional<int> parseByte(std::string_view text) {
    bool negative = false;
    if (!text.empty() && (text[0] == '+' || text[0] == '-')) {
        negative = text[0] == '-';
        text.remove_prefix(1);
    }
    if (text.empty()) return std::nullopt;
    int value = 0;
    for (char c : text) {
        const int digit = support::hexDigitValue(c);
        if (digit < 0) return std::nullopt;
        value = value * 16 + digit;
    }
    if (negative) return value == 0 ? std::optional<int>(0) : std::nullopt;
    if (value > 255) return std::nullopt;
    return value;
}

// The three bytes of a strict colour text, or nothing.
std::optional<std::array<int, 3>> strictChannels(std::string_view hex) {
    std::size_t start = hex.find_first_not_of('#');
    if (start == std::string_view::npos) return std::nullopt;
    hex = hex.substr(start, hex.find_last_not_of('#') - start + 1);
    const std::string cleaned = support::uppercasedFully(hex);
    if (support::characterCount(cleaned) != 6) return std::nullopt;
    // Six characters that are hex digits or signs are six bytes; anything
    // longer in bytes holds a character no pair can parse.
    if (cleaned.size() != 6) return std::nullopt;
    std::array<int, 3> channels{};
    for (std::size_t i = 0; i < 3; ++i) {
        auto byte = parseByte(std::string_view(cleaned).substr(i * 2, 2));
        if (!byte) return std::nullopt;
        channels[i] = *byte;
    }
    return channels;
}

}  // namespace

ui::Color colorWithHex(std::string_view hex) {
    const std::string trimmed = support::trimNonAlphanumerics(hex);
    const std::uint64_t v = scanHex(trimmed);
    std::uint64_t a = 255, r = 0, g = 0, b = 0;
    switch (support::characterCount(trimmed)) {
        case 3:
            r = (v >> 8) * 17;
            g = (v >> 4 & 0xF) * 17;
            b = (v & 0xF) * 17;
            break;
        case 6:
            r = v >> 16;
            g = v >> 8 & 0xFF;
            b = v & 0xFF;
            break;
        case 8:
            a = v >> 24;
            r = v >> 16 & 0xFF;
            g = v >> 8 & 0xFF;
            b = v & 0xFF;
            break;
        default:
            break;
    }
    return {static_cast<double>(r) / 255.0, static_cast<double>(g) / 255.0, static_cast<double>(b) / 255.0,
            static_cast<double>(a) / 255.0};
}

double hueToRgb(double p, double q, double t) {
    if (t < 0.0) t += 1.0;
    if (t > 1.0) t -= 1.0;
    if (t * 6.0 < 1.0) return p + (q - p) * 6.0 * t;
    if (t * 2.0 < 1.0) return q;
    if (t * 3.0 < 2.0) return p + (q - p) * (0.6666666666666666 - t) * 6.0;
    return p;
}

ui::Color adjust(const ui::Color& color, double factor) {
    const double r = color.red, g = color.green, b = color.blue;
    const double maxV = std::max(r, std::max(g, b));
    const double minV = std::min(r, std::min(g, b));
    const double delta = maxV - minV;
    const double l = (maxV + minV) / 2.0;
    double h = 0.0, s = 0.0;
    if (delta != 0.0) {
        s = l >= 0.5 ? delta / (2.0 - maxV - minV) : delta / (maxV + minV);
        if (r == maxV) {
            h = (g - b) / delta;
        } else if (g == maxV) {
            h = (b - r) / delta + 2.0;
        } else {
            h = (r - g) / delta + 4.0;
        }
        h = h / 6.0;
        if (h < 0.0) h = h + 1.0;
    }
    const double l2 = factor > 0.0 ? l * (1.0 - factor) + factor : l * (factor + 1.0);
    if (s == 0.0) return {l2, l2, l2, color.alpha};
    const double q = l2 >= 0.5 ? l2 + s - l2 * s : l2 * (1.0 + s);
    const double p = 2.0 * l2 - q;
    constexpr double third = 0.3333333333333333;
    return {hueToRgb(p, q, h + third), hueToRgb(p, q, h), hueToRgb(p, q, h - third), color.alpha};
}

std::optional<ui::Color> hexToColor(std::string_view hex) {
    auto channels = strictChannels(hex);
    if (!channels) return std::nullopt;
    return ui::Color{(*channels)[0] / 255.0, (*channels)[1] / 255.0, (*channels)[2] / 255.0, 1.0};
}

double relativeLuminance(std::string_view hex) {
    auto channels = strictChannels(hex);
    if (!channels) return 0.5;
    auto linear = [](int value) {
        const double c = value / 255.0;
        return c > 0.04045 ? std::pow((c + 0.055) / 1.055, 2.4) : c / 12.92;
    };
    return 0.2126 * linear((*channels)[0]) + 0.7152 * linear((*channels)[1]) + 0.0722 * linear((*channels)[2]);
}

ui::Color contrastStroke(std::string_view hex) {
    return relativeLuminance(hex) > 0.6 ? ui::colors::black.opacity(0.28) : ui::colors::white.opacity(0.28);
}

ui::Color textGlow(std::string_view) { return ui::colors::black.opacity(0.55); }

std::vector<ThemeColor> fallbackTheme() {
    auto row = [](const char* name, const char* hex, ui::Color color) { return ThemeColor{support::UUID::random(), name, hex, color}; };
    return {
        row("Dark1", "000000", ui::colors::black),
        row("Light1", "FFFFFF", ui::colors::white),
        row("Dark2", "1F3A93", {0.12, 0.23, 0.58, 1.0}),
        row("Light2", "E8E8E8", {0.91, 0.91, 0.91, 1.0}),
        row("Accent1", "4472C4", ui::colors::blue),
        row("Accent2", "ED7D31", ui::colors::orange),
        row("Accent3", "A5A5A5", ui::colors::gray),
        row("Accent4", "FFC000", ui::colors::yellow),
        row("Accent5", "5B9BD5", ui::colors::purple),
        row("Accent6", "70AD47", ui::colors::green),
    };
}

std::optional<std::string> fetchThemeColorsHexCsv() {
    platform::nslog("ColorBar: Executing GetThemeColorsHexCsv…");
    // The one place in the bar that reads a macro's result; it does not go
    // through the macro runner's logging.
    const auto outcome = platform::runScript(macroScript(returningMacroCommand("GetThemeColorsHexCsv")));
    if (!outcome.created) return std::nullopt;
    if (outcome.error) platform::nslog("ColorBar: AppleScript Error: " + platform::describe(*outcome.error));
    return outcome.stringValue;
}

std::vector<ThemeColor> themeCsvToColors(std::string_view csv) {
    std::vector<ThemeColor> rows;
    for (auto& piece : support::splitOmittingEmpty(csv, ',')) {
        if (rows.size() == themeSlotNames.size()) break;
        ui::Color color = colorWithHex(piece);
        rows.push_back(ThemeColor{support::UUID::random(), themeSlotNames[rows.size()], std::move(piece), color});
    }
    return rows;
}

}  // namespace velmora
