// The hex texts of colours: the lenient reader every theme piece goes
// through, the strict six-digit reader and the luminance built on it, and
// the shades made from what they read.

#include <algorithm>
#include <cctype>

#include "ColorCheck.h"
#include "colorbar/ColorModel.h"

using namespace velmora;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view hex(reinterpret_cast<const char*>(data), size);

    const auto lenient = colorWithHex(hex);
    fuzz::checkColor(lenient, "colorWithHex");
    for (const auto& shade : shades) fuzz::checkColor(adjust(lenient, shade.factor), std::string("the shade ") + shade.name);

    const auto strict = hexToColor(hex);
    if (strict) {
        fuzz::checkColor(*strict, "hexToColor");
        if (strict->alpha != 1) fuzz::fail("a strict colour that is not opaque");
        // Six plain digits between hashes read the same leniently (a sign
        // before a pair is the strict reader's alone).
        const auto inner = hex.substr(0, hex.find_last_not_of('#') + 1).substr(hex.find_first_not_of('#'));
        const bool plain = std::all_of(inner.begin(), inner.end(), [](char c) { return std::isxdigit(static_cast<unsigned char>(c)); });
        const auto again = colorWithHex(hex);
        if (plain && (again.red != strict->red || again.green != strict->green || again.blue != strict->blue)) {
            fuzz::fail("the strict and the lenient reader disagree on six digits");
        }
    }
    const double luminance = relativeLuminance(hex);
    if (!(luminance >= 0 && luminance <= 1)) fuzz::fail("a luminance outside 0...1");
    if (!strict && luminance != 0.5) fuzz::fail("a text the strict reader refuses has a luminance");
    fuzz::checkColor(contrastStroke(hex), "contrastStroke");
    return 0;
}
