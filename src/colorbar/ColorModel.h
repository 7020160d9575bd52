// The colour bar's model: colour values from hexadecimal text, lighter and
// darker shades in HSL, luminance, the ten theme slots with their fallback
// colours, the five shades, and the live theme read from the host.
//
// Provides: colorWithHex(), adjust(), hueToRgb(), hexToColor(),
// relativeLuminance(), contrastStroke(), textGlow(), ThemeColor,
// themeSlotNames, fallbackTheme(), Shade, shades, tintText (bridge),
// fetchThemeColorsHexCsv(), themeCsvToColors().
// Everything is pure and runs on any thread, but fetchThemeColorsHexCsv(),
// which blocks on the host and must not run on the main thread.
#pragma once

#include <array>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "support/UUID.h"
#include "ui/Node.h"

namespace velmora {

// Total: any text gives a colour. Characters outside letters and digits are
// trimmed from both ends ("#" and blanks); then as many leading hex digits
// as there are are read (an "0x" first is allowed), and the trimmed text's
// character count picks the form: 3 (RGB), 6 (RRGGBB), 8 (AARRGGBB, alpha
// first); any other count is opaque black, and so is a text with no
// leading digit.
ui::Color colorWithHex(std::string_view hex);

// Changes only the HSL lightness: a factor above 0 moves it that share of
// the way to white, 0 or below scales it towards black (l x (1 + factor)).
// The factor is not clamped; opacity is kept.
ui::Color adjust(const ui::Color& color, double factor);

// One channel of the HSL to RGB conversion.
double hueToRgb(double p, double q, double t);

// Strict: "#" trimmed from both ends, then exactly six hex digits, else nothing.
std::optional<ui::Color> hexToColor(std::string_view hex);

// The sRGB relative luminance of a strict six-digit text; 0.5 for anything else.
double relativeLuminance(std::string_view hex);

// Black or white at 0.28 opacity, whichever stands out on the colour.
ui::Color contrastStroke(std::string_view hex);

// The font chip's glow: black at 0.55 opacity, whatever the colour.
ui::Color textGlow(std::string_view hex);

// One row of the colour bar. Each value made gets a fresh identity, so two
// refreshes never yield equal rows.
struct ThemeColor {
    support::UUID id = support::UUID::random();
    std::string name;  // the slot's name
    std::string hex;   // exactly as the host reported it
    ui::Color color;   // what the chip shows
};

// Slot names in theme order; the position ties a slot to a value.
inline constexpr std::array<const char*, 10> themeSlotNames = {
    "Dark1", "Light1", "Dark2", "Light2", "Accent1", "Accent2", "Accent3", "Accent4", "Accent5", "Accent6"};

// The rows shown until a refresh succeeds. The chips show the platform's
// named colours, not the colours of the hex texts ("Accent5" is purple).
std::vector<ThemeColor> fallbackTheme();

struct Shade {
    double factor;
    const char* name;  // reaches no view and no macro
};
inline constexpr std::array<Shade, 5> shades = {Shade{0.8, "Lighter 80%"}, Shade{0.6, "Lighter 60%"},
                                                Shade{0.4, "Lighter 40%"}, Shade{-0.25, "Darker 25%"},
                                                Shade{-0.5, "Darker 50%"}};

// Runs GetThemeColorsHexCsv in its returning form and gives the host's
// text, or nothing. Logs before running and on an error.
std::optional<std::string> fetchThemeColorsHexCsv();

// The pieces between commas, empty ones dropped, as rows of the slots in
// order; at most ten, fewer when fewer pieces came.
std::vector<ThemeColor> themeCsvToColors(std::string_view csv);

}  // namespace velmora
