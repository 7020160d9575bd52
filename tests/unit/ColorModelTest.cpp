#include <gtest/gtest.h>

#include <clocale>
#include <set>
#include <string>

#include "bridge/MacroRunner.h"
#include "colorbar/ColorModel.h"
#include "fake/FakePlatform.h"

namespace velmora {
namespace {

using ui::Color;

// Components in 0-255 with the opacity last, rounded to a tenth.
void expectColor(const Color& c, double r, double g, double b, double a = 255) {
    EXPECT_NEAR(c.red * 255, r, 0.05);
    EXPECT_NEAR(c.green * 255, g, 0.05);
    EXPECT_NEAR(c.blue * 255, b, 0.05);
    EXPECT_NEAR(c.alpha * 255, a, 0.05);
}

TEST(ColorWithHex, ReadsThreeSixAndEightDigitFormsAlphaFirst) {
    expectColor(colorWithHex("#FFF"), 255, 255, 255);
    expectColor(colorWithHex("FFF"), 255, 255, 255);
    expectColor(colorWithHex("#F0A"), 255, 0, 170);
    expectColor(colorWithHex("#4472c4"), 68, 114, 196);
    expectColor(colorWithHex("80FF0000"), 255, 0, 0, 128);
    // Blanks and marks around the digits go; the form follows what is left.
    expectColor(colorWithHex("  #ED7D31;\n"), 237, 125, 49);
    // A hex prefix is read past, as the platform's scanner does.
    expectColor(colorWithHex("0x12AB"), 0, 0x12, 0xAB);
}

TEST(ColorWithHex, BranchesOnTheCharacterCountNotOnTheDigitsRead) {
    // Six characters, but the scan stops at the X: 0x12 goes through the six-digit row.
    expectColor(colorWithHex("12XY56"), 0, 0, 0x12);
    expectColor(colorWithHex("GGGGGG"), 0, 0, 0);
    expectColor(colorWithHex("12345"), 0, 0, 0);
    expectColor(colorWithHex(""), 0, 0, 0);
    expectColor(colorWithHex("#"), 0, 0, 0);
    expectColor(colorWithHex("FFFFFFFFF"), 0, 0, 0);
    // "ó" written as o and a combining accent is one character: three in all.
    expectColor(colorWithHex("1o\u03012"), 0, 0, 17);
    // A blank inside stays and counts.
    expectColor(colorWithHex("F F"), 0, 0, 255);
    // Bytes that are no UTF-8 read as replacement characters: trimmed at the
    // ends like any symbol, counted inside.
    expectColor(colorWithHex("\xFF\xFE" "ABC\xC3"), 0xA * 17, 0xB * 17, 0xC * 17);
    expectColor(colorWithHex("A\xC3" "B"), 0, 0, 0xA * 17);
}

TEST(Adjust, MovesOnlyTheLightnessTowardsWhiteOrBlack) {
    // Grey has no hue or saturation: the factor sets the lightness alone.
    expectColor(adjust(ui::colors::black, 0.8), 204, 204, 204);
    expectColor(adjust(ui::colors::white, -0.5), 127.5, 127.5, 127.5);
    // Against an independent HSL conversion of the theme's accents.
    const Color accent1 = colorWithHex("4472C4");
    expectColor(adjust(accent1, 0.4), 0.56 * 255, 0.668235 * 255, 0.861176 * 255);
    expectColor(adjust(accent1, -0.25), 0.186227 * 255, 0.33142 * 255, 0.590244 * 255);
    const Color accent2 = colorWithHex("ED7D31");
    expectColor(adjust(accent2, 0.8), 0.985882 * 255, 0.898039 * 255, 0.838431 * 255);
    expectColor(adjust(accent2, -0.5), 0.515721 * 255, 0.235329 * 255, 0.045063 * 255);
}

TEST(Adjust, KeepsOpacityAndTheColourAtZeroAndDoesNotClampTheFactor) {
    const Color translucent{0.2, 0.6, 0.4, 0.3};
    const Color same = adjust(translucent, 0.0);
    EXPECT_NEAR(same.red, 0.2, 1e-12);
    EXPECT_NEAR(same.green, 0.6, 1e-12);
    EXPECT_NEAR(same.blue, 0.4, 1e-12);
    EXPECT_EQ(same.alpha, 0.3);
    const Color grey{0.5, 0.5, 0.5, 1};
    EXPECT_DOUBLE_EQ(adjust(grey, 1.5).red, 1.25);
    EXPECT_DOUBLE_EQ(adjust(grey, -2).red, -0.5);
}

TEST(HueToRgb, WrapsTAndPicksTheSegment) {
    EXPECT_DOUBLE_EQ(hueToRgb(0.2, 0.8, -0.9), 0.2 + 0.6 * 6 * (0.1 + 1e-17));  // -0.9 wraps to 0.1
    EXPECT_DOUBLE_EQ(hueToRgb(0.2, 0.8, 0.3), 0.8);
    EXPECT_NEAR(hueToRgb(0.2, 0.8, 0.6), 0.2 + 0.6 * (0.6666666666666666 - 0.6) * 6, 1e-15);
    EXPECT_DOUBLE_EQ(hueToRgb(0.2, 0.8, 0.9), 0.2);
    EXPECT_DOUBLE_EQ(hueToRgb(0.2, 0.8, 1.5), 0.8);  // 1.5 wraps to 0.5: the third segment starts there
}

TEST(HexToColor, AcceptsExactlySixDigitsBetweenHashes) {
    ASSERT_TRUE(hexToColor("#4472c4"));
    expectColor(*hexToColor("#4472c4"), 68, 114, 196);
    expectColor(*hexToColor("##4472C4##"), 68, 114, 196);
    EXPECT_FALSE(hexToColor("4472C4 "));
    EXPECT_FALSE(hexToColor("#FFF"));
    EXPECT_FALSE(hexToColor("12XY56"));
    EXPECT_FALSE(hexToColor(""));
    EXPECT_FALSE(hexToColor("######"));
    // Each pair parses as an integer would: a sign is allowed, and "-0" is 0.
    expectColor(*hexToColor("+F-0AB"), 15, 0, 171);
    EXPECT_FALSE(hexToColor("-1FFFF"));
    // Upper-casing comes first and may lengthen the text: the ligature "ﬀ" is "FF".
    expectColor(*hexToColor("ABCD\uFB00"), 0xAB, 0xCD, 0xFF);
    EXPECT_FALSE(hexToColor("ABC\u00DF"));  // "ß" becomes "SS"
    EXPECT_FALSE(hexToColor("ABCDE\xFF"));
}

TEST(Luminance, FollowsTheStandardAndTreatsBadTextAsMidGrey) {
    EXPECT_NEAR(relativeLuminance("#ffffff"), 1.0, 1e-12);
    EXPECT_EQ(relativeLuminance("000000"), 0.0);
    EXPECT_NEAR(relativeLuminance("808080"), 0.2158605, 1e-6);
    EXPECT_NEAR(relativeLuminance("FF0000"), 0.2126, 1e-12);
    // 10/255 lies below the knee and is divided, not raised.
    EXPECT_NEAR(relativeLuminance("0A0000"), 0.2126 * (10 / 255.0) / 12.92, 1e-15);
    EXPECT_EQ(relativeLuminance("zz"), 0.5);
    EXPECT_EQ(relativeLuminance("#FFF"), 0.5);

    EXPECT_EQ(contrastStroke("FFFFFF"), ui::colors::black.opacity(0.28));
    EXPECT_EQ(contrastStroke("000000"), ui::colors::white.opacity(0.28));
    EXPECT_EQ(contrastStroke("bad"), ui::colors::white.opacity(0.28));  // 0.5 is not above 0.6
    EXPECT_EQ(textGlow("FFFFFF"), ui::colors::black.opacity(0.55));
}

TEST(ThemeCsv, FillsTheSlotsInOrderDroppingEmptyPiecesAndKeepingTheText) {
    auto rows = themeCsvToColors("#000000,#FFFFFF,#44546A,#E7E6E6,#4472C4,#ED7D31,#A5A5A5,#FFC000,#5B9BD5,#70AD47,#123456");
    ASSERT_EQ(rows.size(), 10u);
    EXPECT_EQ(rows[0].name, "Dark1");
    EXPECT_EQ(rows[9].name, "Accent6");
    EXPECT_EQ(rows[9].hex, "#70AD47");
    expectColor(rows[4].color, 68, 114, 196);

    rows = themeCsvToColors("a,,  #fff ,");
    ASSERT_EQ(rows.size(), 2u);
    EXPECT_EQ(rows[1].name, "Light1");
    EXPECT_EQ(rows[1].hex, "  #fff ");  // neither trimmed nor upper-cased
    expectColor(rows[1].color, 255, 255, 255);

    EXPECT_TRUE(themeCsvToColors("").empty());
    EXPECT_TRUE(themeCsvToColors(",,,").empty());
    // A comma that an accent joins is another character and splits nothing.
    EXPECT_EQ(themeCsvToColors("FFF,\u0301000").size(), 1u);

    const auto first = themeCsvToColors("FFF");
    const auto second = themeCsvToColors("FFF");
    EXPECT_NE(first[0].id, second[0].id);
}

TEST(ThemeCsv, TakesAMegabyteReplyInOnePass) {
    std::string reply;
    while (reply.size() < (1u << 20)) reply += "#ABCDEF,";
    const auto rows = themeCsvToColors(reply);
    ASSERT_EQ(rows.size(), 10u);
    EXPECT_EQ(rows[9].hex, "#ABCDEF");
}

TEST(FallbackTheme, ShowsTheNamedColoursNotTheHexTexts) {
    const auto rows = fallbackTheme();
    ASSERT_EQ(rows.size(), 10u);
    for (std::size_t i = 0; i < rows.size(); ++i) EXPECT_EQ(rows[i].name, themeSlotNames[i]);
    EXPECT_EQ(rows[8].hex, "5B9BD5");
    EXPECT_EQ(rows[8].color, ui::colors::purple);
    EXPECT_EQ(rows[2].color, (Color{0.12, 0.23, 0.58, 1.0}));
    EXPECT_EQ(rows[3].color, (Color{0.91, 0.91, 0.91, 1.0}));
    EXPECT_EQ(shades[3].factor, -0.25);
    EXPECT_STREQ(shades[3].name, "Darker 25%");
}

class TintText : public ::testing::Test {
protected:
    void TearDown() override { std::setlocale(LC_ALL, "C"); }
};

TEST_F(TintText, KeepsAPointUnderADecimalCommaLocale) {
    if (!std::setlocale(LC_ALL, "de_DE.UTF-8")) GTEST_SKIP() << "locale de_DE.UTF-8 is not installed";
    char probe[16];
    std::snprintf(probe, sizeof probe, "%.2f", 0.5);
    ASSERT_STREQ(probe, "0,50") << "the locale must use a decimal comma for this test to mean anything";
    for (const auto& [factor, expected] : {std::pair{0.0, "0.00"}, {0.8, "0.80"}, {0.6, "0.60"}, {0.4, "0.40"},
                                           {-0.25, "-0.25"}, {-0.5, "-0.50"}}) {
        EXPECT_EQ(tintText(factor), expected);
    }
}

class ThemeFetch : public testing::PlatformTest {};

TEST_F(ThemeFetch, RunsTheReturningMacroAndGivesItsText) {
    fake.script->answer("GetThemeColorsHexCsv", "#000000,#FFFFFF");
    EXPECT_EQ(fetchThemeColorsHexCsv(), "#000000,#FFFFFF");
    EXPECT_EQ(fake.script->scripts().at(0),
              "tell application \"Microsoft PowerPoint\"\n    return run VB macro macro name \"GetThemeColorsHexCsv\"\nend tell");
    EXPECT_EQ(fake.log->lines(), std::vector<std::string>{"ColorBar: Executing GetThemeColorsHexCsv…"});
}

TEST_F(ThemeFetch, AFailureLogsTheErrorAndGivesNothing) {
    fake.script->fail("GetThemeColorsHexCsv", {"The macro failed.", -2700});
    EXPECT_EQ(fetchThemeColorsHexCsv(), std::nullopt);
    EXPECT_TRUE(fake.log->contains(
        "ColorBar: AppleScript Error: {NSAppleScriptErrorMessage = \"The macro failed.\"; NSAppleScriptErrorNumber = -2700;}"));

    fake.log->clear();
    fake.script->refuseToCreate();
    EXPECT_EQ(fetchThemeColorsHexCsv(), std::nullopt);
    EXPECT_EQ(fake.log->lines(), std::vector<std::string>{"ColorBar: Executing GetThemeColorsHexCsv…"});
}

}  // namespace
}  // namespace velmora
