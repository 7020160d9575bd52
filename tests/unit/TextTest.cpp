#include <gtest/gtest.h>

#include "platform/Script.h"
#include "platform/Views.h"
#include "support/Text.h"

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
