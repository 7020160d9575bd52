// Text as the platform's string type sees it: characters are extended
// grapheme clusters, and the character classes and case mappings are
// Unicode's, whatever the process locale.
//
// Provides: characterCount(), trimNonAlphanumerics(), uppercasedFully(), lowercasedFully(),
// trimWhitespaceAndNewlines(),
// splitOmittingEmpty(), repairedUTF8(), isValidUTF8(), containsIgnoringCase(),
// equalsIgnoringCase().
// Input is UTF-8; an ill-formed sequence reads as U+FFFD, as the platform
// repairs text it is handed. Pure; any thread.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace velmora::support {

// User-perceived characters: "é" written as e and a combining accent is one.
std::size_t characterCount(std::string_view text);

// Removes from both ends every code point that is not a letter, a mark or a
// number ("#FF 00" -> "FF 00"); what lies between stays.
std::string trimNonAlphanumerics(std::string_view text);

// Full upper-case mapping: "ß" becomes "SS", the ligature "ﬀ" "FF".
std::string uppercasedFully(std::string_view text);

// Removes white space and line breaks of every script from both ends.
std::string trimWhitespaceAndNewlines(std::string_view text);

// Full lower-case mapping, by Unicode's rules and no locale's: "İ" becomes
// "i" and a combining dot.
std::string lowercasedFully(std::string_view text);

// The pieces between characters equal to `separator`, empty ones left out.
// A separator that a combining mark joins is another character and does not split.
std::vector<std::string> splitOmittingEmpty(std::string_view text, char separator);

// The bytes as text: each ill-formed sequence becomes U+FFFD, as the
// platform decodes bytes it is handed as UTF-8.
std::string repairedUTF8(std::string_view bytes);

// True when the bytes decode as UTF-8 without a single repair.
bool isValidUTF8(std::string_view bytes);

// Whether `text` holds `part` when case is ignored: both are full-case
// folded ("STRASSE" holds "straße"); marks and widths still count. An
// empty `part` is held nowhere.
bool containsIgnoringCase(std::string_view text, std::string_view part);

// Whether the two texts are equal when case is ignored: full case folding,
// and a character written precomposed equals its decomposed form.
bool equalsIgnoringCase(std::string_view a, std::string_view b);

}  // namespace velmora::support
