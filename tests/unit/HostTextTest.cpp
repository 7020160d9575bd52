#include <gtest/gtest.h>

#include <string>

#include "assistant/HostText.h"

namespace velmora {
namespace {

// The well-formedness check skips ASCII a word at a time; a sequence that
// starts, ends or breaks at any offset around a word's edge must still be
// read byte by byte.
TEST(HostText, ReadsSequencesAtEveryOffsetAroundTheWordEdge) {
    const std::string wellFormed[] = {"\xC3\xA9", "\xE2\x86\x91", "\xF0\x9F\x98\x80", "\xF4\x8F\xBF\xBF",
                                      "\xED\x9F\xBF", "\xEF\xBF\xBD"};
    // Each ill-formed piece with what it reads as: one U+FFFD per maximal ill-formed part.
    const std::pair<std::string, std::string> illFormed[] = {
        {"\xFF", "\xEF\xBF\xBD"},                        // never a lead byte
        {"\xC0\xAF", "\xEF\xBF\xBD\xEF\xBF\xBD"},        // overlong
        {"\xED\xA0\x80", "\xEF\xBF\xBD\xEF\xBF\xBD\xEF\xBF\xBD"},  // a surrogate
        {"\xF4\x90\x80\x80", "\xEF\xBF\xBD\xEF\xBF\xBD\xEF\xBF\xBD\xEF\xBF\xBD"},  // beyond U+10FFFF
        {"\xE2\x86", "\xEF\xBF\xBD"},                    // cut short
        {"\x80", "\xEF\xBF\xBD"},                        // a lone continuation
    };
    // The prefixed reader copies and checks four words at a time: the
    // pieces also go on both sides of 32- and 64-byte edges.
    for (std::size_t prefix = 0; prefix <= 70; ++prefix) {
        const std::string before(prefix, 'a');
        const std::string after = "tail of twelve";
        auto prefixed = [](const std::string& text) {
            const PrefixedHostText read("Assistant: ", text.c_str(), 64);
            EXPECT_EQ(read.line().substr(0, 11), "Assistant: ");
            return std::string(read.text());
        };
        for (const auto& piece : wellFormed) {
            const std::string text = before + piece + after;
            EXPECT_EQ(textFromHost(text.c_str()), text) << "prefix " << prefix;
            EXPECT_EQ(prefixed(text), text) << "prefix " << prefix;
        }
        for (const auto& [piece, read] : illFormed) {
            const std::string text = before + piece + after;
            EXPECT_EQ(textFromHost(text.c_str()), before + read + after) << "prefix " << prefix;
            EXPECT_EQ(prefixed(text), before + read + after) << "prefix " << prefix;
            // At the very end, with nothing after it.
            EXPECT_EQ(textFromHost((before + piece).c_str()), before + read) << "prefix " << prefix;
            EXPECT_EQ(prefixed(before + piece), before + read) << "prefix " << prefix;
        }
    }
    EXPECT_EQ(PrefixedHostText("Assistant: ", nullptr, 64).line(), "Assistant: ") << "no text reads as empty";
}

}  // namespace
}  // namespace velmora
