#include "support/Text.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdio>
#include <cstring>

#include <fmt/format.h>

namespace velmora::support {

void appendSwiftDescription(std::string& out, double value) {
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
        char tail[8];
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

std::string swiftDescription(double value) {
    std::string out;
    appendSwiftDescription(out, value);
    return out;
}

void appendQuoted(std::string& out, std::string_view text) {
    static constexpr char hex[] = "0123456789ABCDEF";
    out += '"';
    for (char c : text) {
        const auto byte = static_cast<unsigned char>(c);
        switch (c) {
            case '"': out += "\\\""; break;
            case '\'': out += "\\'"; break;
            case '\\': out += "\\\\"; break;
            case '\0': out += "\\0"; break;
            case '\n': out += "\\n"; break;
            case '\r': out += "\\r"; break;
            case '\t': out += "\\t"; break;
            default:
                // Other ASCII controls and DEL as two upper-case hex digits;
                // everything from U+0080 on stays as it is.
                if (byte < 0x20 || byte == 0x7F) {
                    out += "\\u{";
                    out += hex[byte >> 4];
                    out += hex[byte & 0xF];
                    out += '}';
                } else {
                    out += c;
                }
        }
    }
    out += '"';
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
