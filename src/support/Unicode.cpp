#include "support/Unicode.h"

#include <unicode/brkiter.h>
#include <unicode/normalizer2.h>
#include <unicode/uchar.h>
#include <unicode/unistr.h>
#include <unicode/ustring.h>

#include <algorithm>
#include <memory>

namespace velmora::support {

namespace {

icu::UnicodeString decode(std::string_view text) {
    return icu::UnicodeString::fromUTF8(icu::StringPiece(text.data(), static_cast<int32_t>(text.size())));
}

std::string encode(const icu::UnicodeString& text) {
    std::string out;
    text.toUTF8String(out);
    return out;
}

// Calls `visit(start, end)` for each character; false when ICU could not
// give a break iterator (then nothing is visited).
template <typename Visit>
bool forEachCharacter(const icu::UnicodeString& text, Visit&& visit) {
    UErrorCode status = U_ZERO_ERROR;
    std::unique_ptr<icu::BreakIterator> breaks(icu::BreakIterator::createCharacterInstance(icu::Locale::getRoot(), status));
    if (U_FAILURE(status) || !breaks) return false;
    breaks->setText(text);
    int32_t start = breaks->first();
    for (int32_t end = breaks->next(); end != icu::BreakIterator::DONE; start = end, end = breaks->next()) {
        visit(start, end);
    }
    return true;
}

bool isAlphanumeric(UChar32 c) { return (U_GET_GC_MASK(c) & (U_GC_L_MASK | U_GC_M_MASK | U_GC_N_MASK)) != 0; }

}  // namespace

std::size_t characterCount(std::string_view text) {
    const auto decoded = decode(text);
    std::size_t count = 0;
    if (!forEachCharacter(decoded, [&](int32_t, int32_t) { ++count; })) {
        return static_cast<std::size_t>(decoded.countChar32());
    }
    return count;
}

std::string trimNonAlphanumerics(std::string_view text) {
    const auto decoded = decode(text);
    int32_t start = 0, end = decoded.length();
    while (start < end && !isAlphanumeric(decoded.char32At(start))) start = decoded.moveIndex32(start, 1);
    while (end > start) {
        const int32_t last = decoded.moveIndex32(end, -1);
        if (isAlphanumeric(decoded.char32At(last))) break;
        end = last;
    }
    return encode(decoded.tempSubStringBetween(start, end));
}

std::string uppercasedFully(std::string_view text) {
    auto decoded = decode(text);
    decoded.toUpper(icu::Locale::getRoot());
    return encode(decoded);
}

std::string trimWhitespaceAndNewlines(std::string_view text) {
    const auto decoded = decode(text);
    int32_t start = 0, end = decoded.length();
    while (start < end && u_isUWhiteSpace(decoded.char32At(start))) start = decoded.moveIndex32(start, 1);
    while (end > start) {
        const int32_t before = decoded.moveIndex32(end, -1);
        if (!u_isUWhiteSpace(decoded.char32At(before))) break;
        end = before;
    }
    return encode(decoded.tempSubStringBetween(start, end));
}

std::string lowercasedFully(std::string_view text) {
    auto decoded = decode(text);
    decoded.toLower(icu::Locale::getRoot());
    return encode(decoded);
}

std::vector<std::string> splitOmittingEmpty(std::string_view text, char separator) {
    const auto decoded = decode(text);
    std::vector<std::string> pieces;
    int32_t pieceStart = 0;
    auto flush = [&](int32_t pieceEnd) {
        if (pieceEnd > pieceStart) pieces.push_back(encode(decoded.tempSubStringBetween(pieceStart, pieceEnd)));
    };
    const bool split = forEachCharacter(decoded, [&](int32_t start, int32_t end) {
        if (end - start == 1 && decoded.charAt(start) == static_cast<char16_t>(separator)) {
            flush(start);
            pieceStart = end;
        }
    });
    if (!split) return {encode(decoded)};
    flush(decoded.length());
    return pieces;
}

std::string repairedUTF8(std::string_view bytes) { return encode(decode(bytes)); }

bool isValidUTF8(std::string_view bytes) {
    UErrorCode status = U_ZERO_ERROR;
    int32_t length = 0;
    u_strFromUTF8(nullptr, 0, &length, bytes.data(), static_cast<int32_t>(bytes.size()), &status);
    return status == U_BUFFER_OVERFLOW_ERROR || status == U_ZERO_ERROR || status == U_STRING_NOT_TERMINATED_WARNING;
}

namespace {

bool isASCII(std::string_view text) {
    for (unsigned char c : text) {
        if (c >= 0x80) return false;
    }
    return true;
}

char lowerASCII(char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c + ('a' - 'A')) : c; }

std::string folded(std::string_view text) {
    icu::UnicodeString unicode = decode(text);
    unicode.foldCase(U_FOLD_CASE_DEFAULT);
    return encode(unicode);
}

}  // namespace

bool equalsIgnoringCase(std::string_view a, std::string_view b) {
    if (isASCII(a) && isASCII(b)) {
        return a.size() == b.size() && std::equal(a.begin(), a.end(), b.begin(), [](char x, char y) {
                   return lowerASCII(x) == lowerASCII(y);
               });
    }
    // Folded, then decomposed, so "É" written as one code point or as E and
    // an accent compare equal, as a non-literal comparison has it.
    UErrorCode status = U_ZERO_ERROR;
    const icu::Normalizer2* nfd = icu::Normalizer2::getNFDInstance(status);
    icu::UnicodeString left = decode(a), right = decode(b);
    left.foldCase(U_FOLD_CASE_DEFAULT);
    right.foldCase(U_FOLD_CASE_DEFAULT);
    if (U_FAILURE(status)) return left == right;
    icu::UnicodeString leftNormal = nfd->normalize(left, status);
    icu::UnicodeString rightNormal = nfd->normalize(right, status);
    return U_SUCCESS(status) ? leftNormal == rightNormal : left == right;
}

bool containsIgnoringCase(std::string_view text, std::string_view part) {
    if (part.empty() || text.empty()) return false;
    // Plain ASCII on both sides folds byte by byte, without a copy: a search
    // runs over every saved slide at each keystroke.
    if (isASCII(part) && isASCII(text)) {
        if (part.size() > text.size()) return false;
        const char first = lowerASCII(part[0]);
        for (std::size_t at = 0; at + part.size() <= text.size(); ++at) {
            if (lowerASCII(text[at]) != first) continue;
            std::size_t i = 1;
            while (i < part.size() && lowerASCII(text[at + i]) == lowerASCII(part[i])) ++i;
            if (i == part.size()) return true;
        }
        return false;
    }
    const std::string foldedPart = folded(part);
    return !foldedPart.empty() && folded(text).find(foldedPart) != std::string::npos;
}

}  // namespace velmora::support
