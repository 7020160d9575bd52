// Text helpers shared by every subsystem: the printed forms of values as
// the log shows them, and locale-independent number formatting.
//
// Provides: swiftDescription(double), quoted() (and their append forms), oneLine(), arrayDescription(),
// formatFixed(), trim helpers, lowercased(), hexDigitValue(), base64Encoded(),
// base64Decoded(), percentEncoded(), percentDecoded().
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace velmora::support {

// The platform's printed form of a double: the shortest digits that read
// back as the same value, written plainly from 0.0001 up to 2^54 ("250.0",
// "100000.0", "0.0001") and with an exponent outside it ("1e-05",
// "1e+20").
std::string swiftDescription(double value);
void appendSwiftDescription(std::string& out, double value);
// The same written at `at`, which has room for maxSwiftDescriptionLength
// bytes (more than it writes: it copies in fixed blocks); gives the end.
inline constexpr std::size_t maxSwiftDescriptionLength = 48;
char* writeSwiftDescription(char* at, double value);
// A whole number's decimal digits, with a minus sign when negative, written
// at `at` (room for 20 bytes); gives the end.
char* writeInteger(char* at, std::int64_t value);
// The same for an unsigned number.
char* writeUnsigned(char* at, std::uint64_t value);
namespace detail {
// The general way, from the shortest digits of any double; appendSwiftDescription
// takes a shortcut for values with a few decimals. For tests that compare them.
void appendSwiftDescriptionByDigits(std::string& out, double value);
}  // namespace detail

// The platform's printed form of a string: in double quotes, with the
// quote, apostrophe, backslash, NUL (as \0), tab, line feed and carriage
// return escaped, the other ASCII controls and DEL as \u{1B}; the rest as
// it is.
std::string quoted(std::string_view text);
void appendQuoted(std::string& out, std::string_view text);
// The same written at `at`, which has room for quotedLengthBound(text.size())
// bytes; gives the end.
constexpr std::size_t quotedLengthBound(std::size_t size) { return 2 + 6 * size; }
char* writeQuoted(char* at, std::string_view text);

// The text on one line: line feed and carriage return written as \n and
// \r, other control characters and DEL as \u{1b}.
std::string oneLine(std::string_view text);

// A bracketed, comma-separated list of quoted strings: ["a", "b"].
std::string arrayDescription(const std::vector<std::string>& items);

// printf's "%.Nf" in the C locale, whatever the process locale is.
std::string formatFixed(double value, int decimals);

// The text with &, <, >, " and ' written as HTML entities.
std::string htmlEscaped(std::string_view text);

// Base64 with padding, as data URIs carry bytes.
std::string base64Encoded(std::string_view data);
// The bytes of a base64 text; nothing when it holds anything else.
std::optional<std::string> base64Decoded(std::string_view text);

// The characters a URL part may hold as they are; every other byte is
// percent-encoded. `path` also keeps "%", so an encoded path stays as it
// is; `query` is the platform's URL-query set, which keeps "&", "=" and
// "?"; `queryItem` is what a URL builder leaves in one query value: the
// query set without "&" and "=", so a value cannot run on into the next
// key ("+" stays, as the platform's builder leaves it).
enum class PercentSet { path, query, queryItem };
std::string percentEncoded(std::string_view text, PercentSet allowed);
// "%41" to "A"; a "%" without two hex digits stays as it is.
std::string percentDecoded(std::string_view text);

// The value of an ASCII hexadecimal digit, or -1 for any other byte.
int hexDigitValue(char c);

// Lower-cases ASCII letters and leaves every other byte as it is.
std::string lowercased(std::string_view text);

// Trims blanks, tabs, line feeds and carriage returns from both ends.
std::string_view trimWhitespace(std::string_view text);

}  // namespace velmora::support
