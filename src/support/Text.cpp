#include "support/Text.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <cstdio>
#include <cstring>

#include <fmt/format.h>

namespace velmora::support {

namespace {

// The decimal digits of `value`, written right to left ending at `end`, two
// at a time; gives where they start. Always inlined: it is the inner step
// of every number on the shape list.
[[gnu::always_inline]] inline char* writeDigitsBefore(char* end, std::uint64_t value) {
    static constexpr char pairs[] =
        "00010203040506070809101112131415161718192021222324252627282930313233343536373839"
        "40414243444546474849505152535455565758596061626364656667686970717273747576777879"
        "8081828384858687888990919293949596979899";
    char* first = end;
    while (value >= 100) {
        const auto pair = static_cast<std::size_t>(value % 100) * 2;
        value /= 100;
        *--first = pairs[pair + 1];
        *--first = pairs[pair];
    }
    if (value >= 10) {
        *--first = pairs[value * 2 + 1];
        *--first = pairs[value * 2];
    } else {
        *--first = static_cast<char>('0' + value);
    }
    return first;
}

// Most values the host sends carry a few decimals. When the fewest decimals
// (up to four) that read back as the value are found, they are its
// shortest digits: below 1e11 a double's neighbours lie closer together
// than 1e-4, so at most one number with that many decimals reads back as
// it, and the scaled value rounds to that number's digits. Gives nullptr
// for everything else, which the general way prints.
char* writeFewDecimals(char* at, double value) {
    const double magnitude = std::fabs(value);
    if (!(magnitude >= 1e-4 && magnitude < 1e11)) return nullptr;
    static constexpr double scales[] = {1, 10, 100, 1000, 10000};
    for (int decimals = 0; decimals <= 4; ++decimals) {
        // Rounded to the nearest whole number, ties to even, by the sum's own
        // rounding: below 2^52 adding 2^52 leaves no fraction bits.
        const double scaled = (magnitude * scales[decimals] + 0x1p52) - 0x1p52;
        // Both are exact doubles, so the quotient is the double the decimal text reads as.
        if (scaled / scales[decimals] != magnitude) continue;
        // Room for 16 bytes after the digits: they are copied sixteen at a
        // time, however many there are (the writer's room allows for it).
        char digits[32];
        char* first = writeDigitsBefore(digits + 16, static_cast<std::uint64_t>(scaled));
        const char* end = digits + 16;
        const auto count = static_cast<std::size_t>(end - first);
        const auto fraction = static_cast<std::size_t>(decimals);
        auto copy = [&](const char* from, std::size_t length) {
            std::memcpy(at, from, 16);
            at += length;
        };
        if (value < 0) *at++ = '-';
        if (fraction == 0) {
            copy(first, count);
            *at++ = '.';
            *at++ = '0';
        } else if (count > fraction) {
            copy(first, count - fraction);
            *at++ = '.';
            copy(end - fraction, fraction);
        } else {
            *at++ = '0';
            *at++ = '.';
            for (std::size_t i = count; i < fraction; ++i) *at++ = '0';
            copy(first, count);
        }
        return at;
    }
    return nullptr;
}

}  // namespace

char* writeUnsigned(char* at, std::uint64_t value) {
    char digits[20];
    char* end = digits + sizeof digits;
    const char* first = writeDigitsBefore(end, value);
    return std::copy(first, static_cast<const char*>(end), at);
}

char* writeInteger(char* at, std::int64_t value) {
    char digits[20];
    char* end = digits + sizeof digits;
    // The magnitude as unsigned, so the most negative value has one too.
    const std::uint64_t magnitude = value < 0 ? 0 - static_cast<std::uint64_t>(value) : static_cast<std::uint64_t>(value);
    const char* first = writeDigitsBefore(end, magnitude);
    if (value < 0) *at++ = '-';
    return std::copy(first, static_cast<const char*>(end), at);
}

char* writeSwiftDescription(char* at, double value) {
    if (char* end = writeFewDecimals(at, value)) return end;
    std::string general;
    detail::appendSwiftDescriptionByDigits(general, value);
    return std::copy(general.begin(), general.end(), at);
}

void appendSwiftDescription(std::string& out, double value) {
    char text[maxSwiftDescriptionLength];
    out.append(text, writeSwiftDescription(text, value));
}

namespace detail {

void appendSwiftDescriptionByDigits(std::string& out, double value) {
    if (std::isnan(value)) {
        out += "nan";
        return;
    }
    if (std::isinf(value)) {
        out += value < 0 ? "-inf" : "inf";
        return;
    }
    // The shortest digits that read back as the value, then laid out the
    // platform's way: plain decimals from 0.0001 up to 2^54, exponents
    // outside that range.
    char buffer[40];
    const char* end = std::to_chars(buffer, buffer + sizeof buffer, value, std::chars_format::scientific).ptr;
    const char* at = buffer;
    if (*at == '-') {
        out += '-';
        ++at;
    }
    const char* e = std::find(at, end, 'e');
    char digits[20];
    std::size_t count = 0;
    for (const char* p = at; p < e; ++p) {
        if (*p != '.') digits[count++] = *p;
    }
    int exponent = 0;
    std::from_chars(e + (e[1] == '+' ? 2 : 1), end, exponent);
    // The value is 0.DIGITS times ten to `decimalExponent`.
    const int decimalExponent = exponent + 1;
    if (value != 0 && (decimalExponent < -3 || std::fabs(value) > 0x1.0p54)) {
        out += digits[0];
        if (count > 1) {
            out += '.';
            out.append(digits + 1, count - 1);
        }
        char tail[16];
        std::snprintf(tail, sizeof tail, "e%c%02d", exponent < 0 ? '-' : '+', std::abs(exponent));
        out += tail;
    } else if (value == 0) {
        out += "0.0";
    } else if (decimalExponent <= 0) {
        out += "0.";
        out.append(static_cast<std::size_t>(-decimalExponent), '0');
        out.append(digits, count);
    } else if (static_cast<std::size_t>(decimalExponent) >= count) {
        out.append(digits, count);
        out.append(static_cast<std::size_t>(decimalExponent) - count, '0');
        out += ".0";
    } else {
        out.append(digits, static_cast<std::size_t>(decimalExponent));
        out += '.';
        out.append(digits + decimalExponent, count - static_cast<std::size_t>(decimalExponent));
    }
}

}  // namespace detail

std::string swiftDescription(double value) {
    std::string out;
    appendSwiftDescription(out, value);
    return out;
}

namespace {

// The bytes a quoted text writes as an escape: quotes, the backslash, ASCII
// controls and DEL.
constexpr std::array<bool, 256> escapedBytes = [] {
    std::array<bool, 256> table{};
    for (int byte = 0; byte < 0x20; ++byte) table[byte] = true;
    table['"'] = table['\''] = table['\\'] = table[0x7F] = true;
    return table;
}();

}  // namespace

char* writeQuoted(char* at, std::string_view text) {
    static constexpr char hex[] = "0123456789ABCDEF";
    *at++ = '"';
    std::size_t run = 0;  // start of the bytes that stand as they are
    auto put = [&](std::string_view escape) { at = std::copy(escape.begin(), escape.end(), at); };
    for (std::size_t i = 0; i < text.size(); ++i) {
        const auto byte = static_cast<unsigned char>(text[i]);
        if (!escapedBytes[byte]) continue;
        at = std::copy(text.data() + run, text.data() + i, at);
        run = i + 1;
        switch (byte) {
            case '"': put("\\\""); break;
            case '\'': put("\\'"); break;
            case '\\': put("\\\\"); break;
            case '\0': put("\\0"); break;
            case '\n': put("\\n"); break;
            case '\r': put("\\r"); break;
            case '\t': put("\\t"); break;
            default:
                // Other ASCII controls and DEL as two upper-case hex digits;
                // everything from U+0080 on stays as it is.
                put("\\u{");
                *at++ = hex[byte >> 4];
                *at++ = hex[byte & 0xF];
                *at++ = '}';
        }
    }
    at = std::copy(text.data() + run, text.data() + text.size(), at);
    *at++ = '"';
    return at;
}

void appendQuoted(std::string& out, std::string_view text) {
    const std::size_t start = out.size();
    out.resize(start + quotedLengthBound(text.size()));
    char* end = writeQuoted(out.data() + start, text);
    out.resize(static_cast<std::size_t>(end - out.data()));
}

std::string quoted(std::string_view text) {
    std::string out;
    out.reserve(text.size() + 2);
    appendQuoted(out, text);
    return out;
}

std::string oneLine(std::string_view text) {
    std::string out;
    out.reserve(text.size());
    for (char c : text) {
        if (c == '\n') {
            out += "\\n";
        } else if (c == '\r') {
            out += "\\r";
        } else if (static_cast<unsigned char>(c) < 0x20 || c == 0x7f) {
            out += fmt::format("\\u{{{:x}}}", static_cast<unsigned>(static_cast<unsigned char>(c)));
        } else {
            out += c;
        }
    }
    return out;
}

std::string arrayDescription(const std::vector<std::string>& items) {
    std::string out = "[";
    for (std::size_t i = 0; i < items.size(); ++i) {
        if (i) out += ", ";
        out += quoted(items[i]);
    }
    out += ']';
    return out;
}

std::string formatFixed(double value, int decimals) {
    // fmt never consults the C locale for a plain "f" presentation.
    return fmt::format("{:.{}f}", value, decimals);
}

std::string htmlEscaped(std::string_view text) {
    std::string out;
    out.reserve(text.size());
    for (char c : text) {
        switch (c) {
            case '&': out += "&amp;"; break;
            case '<': out += "&lt;"; break;
            case '>': out += "&gt;"; break;
            case '"': out += "&quot;"; break;
            case '\'': out += "&#39;"; break;
            default: out += c;
        }
    }
    return out;
}

std::string lowercased(std::string_view text) {
    std::string out(text);
    for (char& c : out) {
        if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
    }
    return out;
}

std::string_view trimWhitespace(std::string_view text) {
    constexpr std::string_view blanks = " \t\n\r";
    auto first = text.find_first_not_of(blanks);
    if (first == std::string_view::npos) return {};
    auto last = text.find_last_not_of(blanks);
    return text.substr(first, last - first + 1);
}

namespace {

bool isUnreserved(char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '-' || c == '.' ||
           c == '_' || c == '~';
}

bool pathAllowed(char c) {
    return isUnreserved(c) || c == '/' || c == '!' || c == '$' || c == '&' || c == '\'' || c == '(' || c == ')' ||
           c == '*' || c == '+' || c == ',' || c == ';' || c == '=' || c == ':' || c == '@' || c == '%';
}

bool allowedIn(char c, PercentSet set) {
    switch (set) {
        case PercentSet::path: return pathAllowed(c);
        case PercentSet::query: return (pathAllowed(c) && c != '%') || c == '?';
        case PercentSet::queryItem: return (pathAllowed(c) && c != '%' && c != '&' && c != '=') || c == '?';
    }
    return false;
}

}  // namespace

std::string percentEncoded(std::string_view text, PercentSet allowed) {
    static const char* hex = "0123456789ABCDEF";
    std::string out;
    out.reserve(text.size());
    for (char c : text) {
        if (allowedIn(c, allowed)) {
            out += c;
        } else {
            const auto byte = static_cast<unsigned char>(c);
            out += '%';
            out += hex[byte >> 4];
            out += hex[byte & 15];
        }
    }
    return out;
}

std::string percentDecoded(std::string_view text) {
    std::string out;
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] == '%' && i + 2 < text.size()) {
            const int high = hexDigitValue(text[i + 1]), low = hexDigitValue(text[i + 2]);
            if (high >= 0 && low >= 0) {
                out += static_cast<char>(high * 16 + low);
                i += 2;
                continue;
            }
        }
        out += text[i];
    }
    return out;
}

int hexDigitValue(char c) {
    if (c >= '0' && c <= '9') return c - '0';
    if (c >= 'a' && c <= 'f') return c - 'a' + 10;
    if (c >= 'A' && c <= 'F') return c - 'A' + 10;
    return -1;
}

namespace {
constexpr const char* base64Alphabet = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
}  // namespace

std::string base64Encoded(std::string_view data) {
    std::string out;
    out.reserve((data.size() + 2) / 3 * 4);
    std::size_t i = 0;
    for (; i + 2 < data.size(); i += 3) {
        const unsigned v = (static_cast<unsigned char>(data[i]) << 16) | (static_cast<unsigned char>(data[i + 1]) << 8) |
                           static_cast<unsigned char>(data[i + 2]);
        for (int shift : {18, 12, 6, 0}) out += base64Alphabet[(v >> shift) & 63];
    }
    if (i < data.size()) {
        unsigned v = static_cast<unsigned char>(data[i]) << 16;
        if (i + 1 < data.size()) v |= static_cast<unsigned char>(data[i + 1]) << 8;
        out += base64Alphabet[(v >> 18) & 63];
        out += base64Alphabet[(v >> 12) & 63];
        out += i + 1 < data.size() ? base64Alphabet[(v >> 6) & 63] : '=';
        out += '=';
    }
    return out;
}

std::optional<std::string> base64Decoded(std::string_view text) {
    while (!text.empty() && text.back() == '=') text.remove_suffix(1);
    std::string out;
    unsigned buffer = 0;
    int bits = 0;
    for (char c : text) {
        const char* at = c ? std::strchr(base64Alphabet, c) : nullptr;
        if (!at) return std::nullopt;
        buffer = buffer << 6 | static_cast<unsigned>(at - base64Alphabet);
        bits += 6;
        if (bits >= 8) {
            bits -= 8;
            out += static_cast<char>((buffer >> bits) & 0xFF);
        }
    }
    return out;
}

}  // namespace velmora::support
