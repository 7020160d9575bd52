#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <random>
#include <set>
#include <thread>
#include <vector>

#include "platform/Script.h"
#include "platform/Views.h"
#include "support/Text.h"
#include "support/UUID.h"

namespace velmora::support {
namespace {

TEST(Text, PrintsValuesAsTheLogShowsThem) {
    EXPECT_EQ(swiftDescription(250), "250.0");
    EXPECT_EQ(swiftDescription(0.1), "0.1");
    EXPECT_EQ(swiftDescription(-3.5), "-3.5");
    EXPECT_EQ(swiftDescription(100.0000001), "100.0000001");
    EXPECT_EQ(arrayDescription({}), "[]");
    EXPECT_EQ(arrayDescription({"a", "b\"c\\"}), "[\"a\", \"b\\\"c\\\\\"]");
    EXPECT_EQ(platform::describe(platform::Rect{0, 5, 250, 760.5}), "(0.0, 5.0, 250.0, 760.5)");
    EXPECT_EQ(platform::describe(platform::ScriptError{"Nope.", -1728}),
              "{NSAppleScriptErrorMessage = \"Nope.\"; NSAppleScriptErrorNumber = -1728;}");
    platform::ScriptError printed{"Nope.", -1728};
    printed.printed = "{\n    NSAppleScriptErrorRange = \"NSRange: {0, 4}\";\n}";
    EXPECT_EQ(platform::describe(printed), printed.printed) << "the port's own printing wins";
}

TEST(Text, DoublesArePlainFromATenThousandthUpToTwoToTheFiftyFourth) {
    const std::pair<double, const char*> cases[] = {
        {100000, "100000.0"},
        {0.0001, "0.0001"},
        {0.00001, "1e-05"},
        {0.000123, "0.000123"},
        {0.0000123, "1.23e-05"},
        {1234567.25, "1234567.25"},
        {9007199254740992.0, "9007199254740992.0"},
        {18014398509481984.0, "18014398509481984.0"},  // 2^54 itself
        {18014398509481988.0, "1.8014398509481988e+16"},
        {1e20, "1e+20"},
        {-2.5e-7, "-2.5e-07"},
        {1.5e300, "1.5e+300"},
        {5e-324, "5e-324"},
        {0.0, "0.0"},
        {-0.0, "-0.0"},
        {123456789012345678901234567890.0, "1.2345678901234568e+29"},
    };
    for (const auto& [value, text] : cases) EXPECT_EQ(swiftDescription(value), text);
}

// The shortcut for values with a few decimals must print exactly what the
// general way prints, around every edge of its range and its rounding.
TEST(Text, DoublesWithFewDecimalsPrintAsTheGeneralWayDoes) {
    auto general = [](double value) {
        std::string out;
        detail::appendSwiftDescriptionByDigits(out, value);
        return out;
    };
    std::mt19937_64 random(20261124);
    std::uniform_int_distribution<std::int64_t> mantissa(-99999999999999, 99999999999999);
    std::uniform_int_distribution<int> decimals(0, 7);
    std::uniform_int_distribution<std::uint64_t> bits;
    std::vector<double> values = {0.0001, 0.00011, 0.00009999, 1e11, 99999999999.9999, 1e11 - 1, 0.1 + 0.2,
                                  2.675, 1.005, 0.5, 1.0, 10.0, 7.2, 3.6, 123.45, -0.0001, 16777216.5,
                                  4503599627370496.5, 1e-5, 0.3, 1e10 + 0.25};
    for (int i = 0; i < 200000; ++i) {
        const double scale[] = {1, 10, 100, 1000, 10000, 1e5, 1e6, 1e7};
        values.push_back(static_cast<double>(mantissa(random) % 1000000000000) / scale[decimals(random)]);
        double any;
        const std::uint64_t pattern = bits(random);
        std::memcpy(&any, &pattern, sizeof any);
        if (std::isfinite(any)) values.push_back(any);
    }
    for (double value : values) {
        ASSERT_EQ(swiftDescription(value), general(value)) << std::hexfloat << value;
    }
}

TEST(Text, WholeNumbersPrintEveryDigitAndTheirSign) {
    auto printed = [](std::int64_t value) {
        char text[20];
        return std::string(text, writeInteger(text, value));
    };
    EXPECT_EQ(printed(0), "0");
    EXPECT_EQ(printed(7), "7");
    EXPECT_EQ(printed(-10), "-10");
    EXPECT_EQ(printed(16777215), "16777215");
    EXPECT_EQ(printed(INT64_MAX), "9223372036854775807");
    EXPECT_EQ(printed(INT64_MIN), "-9223372036854775808");
}

TEST(Text, RandomIdentitiesAreVersionFourAndPrintTheirBytes) {
    UUID known;
    for (std::size_t i = 0; i < known.bytes.size(); ++i) known.bytes[i] = static_cast<std::uint8_t>(i * 17);
    EXPECT_EQ(known.uuidString(), "00112233-4455-6677-8899-AABBCCDDEEFF");

    std::set<std::string> seen;
    for (int i = 0; i < 2000; ++i) {
        const UUID id = UUID::random();
        ASSERT_EQ(id.bytes[6] >> 4, 4) << "version";
        ASSERT_EQ(id.bytes[8] >> 6, 2) << "variant";
        seen.insert(id.uuidString());
    }
    EXPECT_EQ(seen.size(), 2000u);
    // Each thread draws from its own seed: no two threads repeat each other.
    std::vector<std::string> firsts(4);
    std::vector<std::thread> threads;
    for (auto& first : firsts) threads.emplace_back([&first] { first = UUID::random().uuidString(); });
    for (auto& thread : threads) thread.join();
    for (const auto& first : firsts) EXPECT_TRUE(seen.insert(first).second) << first;
}

TEST(Text, StringsEscapeAsThePlatformPrintsThem) {
    EXPECT_EQ(support::quoted("Bob's \"deck\""), R"("Bob\'s \"deck\"")");
    EXPECT_EQ(support::quoted(std::string("a\0b", 3)), R"("a\0b")");
    EXPECT_EQ(support::quoted("\x1b[1m\x7f\x01"), R"("\u{1B}[1m\u{7F}\u{01}")");
    EXPECT_EQ(support::quoted("tab\there\r\n"), R"("tab\there\r\n")");
    EXPECT_EQ(support::quoted("caf\xC3\xA9 \xE2\x86\x90"), "\"caf\xC3\xA9 \xE2\x86\x90\"") << "beyond ASCII as it is";
    EXPECT_EQ(arrayDescription({"O'Neil", "x"}), R"(["O\'Neil", "x"])");
}

TEST(Text, LowercasesAsciiOnlyAndTrimsWhitespace) {
    EXPECT_EQ(lowercased("TrUe \xC3\x89"), "true \xC3\x89");
    EXPECT_EQ(trimWhitespace(" \t a b \r\n"), "a b");
    EXPECT_EQ(trimWhitespace(" \n "), "");
}

TEST(Text, Base64RoundTripsEveryLengthAndRefusesOtherText) {
    EXPECT_EQ(base64Encoded(""), "");
    EXPECT_EQ(base64Encoded("f"), "Zg==");
    EXPECT_EQ(base64Encoded("fo"), "Zm8=");
    EXPECT_EQ(base64Encoded("foo"), "Zm9v");
    std::string bytes;
    for (int i = 0; i < 256; ++i) bytes += static_cast<char>(i);
    for (std::size_t length = 0; length < 8; ++length) {
        const auto part = bytes.substr(250 - length);
        EXPECT_EQ(base64Decoded(base64Encoded(part)), part) << length;
    }
    EXPECT_EQ(base64Decoded(base64Encoded(bytes)), bytes);
    EXPECT_EQ(base64Decoded("Zm9v!"), std::nullopt);
    EXPECT_EQ(base64Decoded(std::string_view("Zg\0=", 4)), std::nullopt);
}

}  // namespace
}  // namespace velmora::support
