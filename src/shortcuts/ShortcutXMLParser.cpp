#include "shortcuts/ShortcutXMLParser.h"

#include <expat.h>
#include <iconv.h>

#include <algorithm>
#include <climits>
#include <cstdio>

#include "support/UUID.h"

namespace velmora {

namespace {

// The code point that starts at `at`, and its length; a broken sequence
// reads as one byte that is no blank.
char32_t codePointAt(std::string_view text, std::size_t at, std::size_t& length) {
    auto byte = static_cast<unsigned char>(text[at]);
    std::size_t need = byte < 0x80 ? 1 : (byte >> 5) == 0x6 ? 2 : (byte >> 4) == 0xE ? 3 : (byte >> 3) == 0x1E ? 4 : 0;
    if (need == 0 || at + need > text.size()) {
        length = 1;
        return 0xFFFD;
    }
    char32_t value = need == 1 ? byte : byte & (0x7F >> need);
    for (std::size_t i = 1; i < need; ++i) {
        auto next = static_cast<unsigned char>(text[at + i]);
        if ((next & 0xC0) != 0x80) {
            length = 1;
            return 0xFFFD;
        }
        value = (value << 6) | (next & 0x3F);
    }
    length = need;
    return value;
}

// Tab and the Unicode space separators: what the catalogue calls blanks.
bool isBlank(char32_t c) {
    return c == 0x09 || c == 0x20 || c == 0xA0 || c == 0x1680 || (c >= 0x2000 && c <= 0x200A) || c == 0x202F ||
           c == 0x205F || c == 0x3000;
}

bool isLineEnd(char32_t c) { return (c >= 0x0A && c <= 0x0D) || c == 0x85 || c == 0x2028 || c == 0x2029; }

template <typename Predicate>
std::string_view trimmed(std::string_view text, Predicate drop) {
    std::size_t begin = 0;
    while (begin < text.size()) {
        std::size_t length = 0;
        if (!drop(codePointAt(text, begin, length))) break;
        begin += length;
    }
    std::size_t end = text.size();
    while (end > begin) {
        std::size_t start = end - 1;
        while (start > begin && (static_cast<unsigned char>(text[start]) & 0xC0) == 0x80 && end - start < 4) --start;
        std::size_t length = 0;
        char32_t c = codePointAt(text, start, length);
        if (start + length != end || !drop(c)) break;
        end = start;
    }
    return text.substr(begin, end - begin);
}

// expat reads UTF-8, UTF-16, ISO-8859-1 and US-ASCII by itself; any other
// encoding that a catalogue declares is taken when it has one byte per
// character (windows-1252, macintosh, the ISO-8859 family, ...): iconv
// tells the character of each byte. A byte it cannot map is an error where
// it appears, as expat treats it.
int onUnknownEncoding(void*, const XML_Char* name, XML_Encoding* info) {
    iconv_t converter = iconv_open("UTF-32LE", name);
    if (converter == reinterpret_cast<iconv_t>(-1)) return XML_STATUS_ERROR;
    for (int byte = 0; byte < 256; ++byte) {
        char in = static_cast<char>(byte);
        unsigned char out[8] = {};
        char* inAt = &in;
        char* outAt = reinterpret_cast<char*>(out);
        std::size_t inLeft = 1;
        std::size_t outLeft = sizeof out;
        iconv(converter, nullptr, nullptr, nullptr, nullptr);
        const bool one = iconv(converter, &inAt, &inLeft, &outAt, &outLeft) != static_cast<std::size_t>(-1) &&
                         inLeft == 0 && outLeft == sizeof out - 4;
        info->map[byte] = one ? static_cast<int>(out[0] | out[1] << 8 | out[2] << 16 | out[3] << 24) : -1;
        // Bytes that begin longer sequences mean the encoding is not one
        // byte a character; expat then refuses it.
        if (!one && byte < 0x80) {
            iconv_close(converter);
            return XML_STATUS_ERROR;
        }
    }
    iconv_close(converter);
    info->data = nullptr;
    info->convert = nullptr;
    info->release = nullptr;
    return XML_STATUS_OK;
}

// expat's callbacks gather plain text into one chunk until markup or a
// reference ends it, as the catalogue's chunk rule expects.
struct Driver {
    ShortcutXMLParser& delegate;
    XML_Parser parser = nullptr;
    std::string pending;
    bool inCDATA = false;

    void flush() {
        if (pending.empty()) return;
        delegate.foundCharacters(pending);
        pending.clear();  // keeps its room for the next chunk
    }

    bool isReference(const XML_Char* text, int length) const {
        int count = XML_GetCurrentByteCount(parser);
        if (count == 0) return true;  // text from an internal entity's replacement
        int offset = 0, size = 0;
        if (const char* context = XML_GetInputContext(parser, &offset, &size); context && offset < size) {
            return context[offset] == '&';
        }
        bool lineEnd = length == 1 && text[0] == '\n' && (count == 1 || count == 2);
        return !lineEnd && count != length;
    }
};

void XMLCALL onStart(void* data, const XML_Char* name, const XML_Char**) {
    auto& driver = *static_cast<Driver*>(data);
    driver.flush();
    driver.delegate.didStartElement(name);
}

void XMLCALL onEnd(void* data, const XML_Char* name) {
    auto& driver = *static_cast<Driver*>(data);
    driver.flush();
    driver.delegate.didEndElement(name);
}

void XMLCALL onText(void* data, const XML_Char* text, int length) {
    auto& driver = *static_cast<Driver*>(data);
    if (driver.inCDATA) return;
    if (driver.isReference(text, length)) {
        driver.flush();
        driver.pending.assign(text, static_cast<std::size_t>(length));
        driver.flush();
        return;
    }
    driver.pending.append(text, static_cast<std::size_t>(length));
}

void XMLCALL onMarkup(void* data) { static_cast<Driver*>(data)->flush(); }
void XMLCALL onComment(void* data, const XML_Char*) { onMarkup(data); }
void XMLCALL onInstruction(void* data, const XML_Char*, const XML_Char*) { onMarkup(data); }
void XMLCALL onCDATAStart(void* data) {
    onMarkup(data);
    static_cast<Driver*>(data)->inCDATA = true;
}
void XMLCALL onCDATAEnd(void* data) { static_cast<Driver*>(data)->inCDATA = false; }

}  // namespace

ShortcutID ShortcutID::random() { return {support::UUID::random().bytes}; }

std::string ShortcutID::uuidString() const { return support::UUID{bytes}.uuidString(); }

void ShortcutXMLParser::didStartElement(std::string_view elementName) {
    if (elementName == "name") {
        currentElement = Element::name;
    } else if (elementName == "category") {
        currentElement = Element::category;
    } else if (elementName == "shortcut") {
        currentElement = Element::shortcut;
    } else if (elementName == "img") {
        currentElement = Element::img;
    } else {
        currentElement = Element::other;
    }
}

namespace {

// Whether the chunk is blanks and line ends only. Most chunks are the
// indentation between elements or plain ASCII text, told apart byte by
// byte; one with other characters takes the full rule.
bool isBlankChunk(std::string_view chunk) {
    for (char c : chunk) {
        const auto byte = static_cast<unsigned char>(c);
        if (byte == ' ' || byte == '\t' || (byte >= 0x0A && byte <= 0x0D)) continue;
        if (byte < 0x80) return false;
        return trimmed(chunk, [](char32_t point) { return isBlank(point) || isLineEnd(point); }).empty();
    }
    return true;
}

}  // namespace

void ShortcutXMLParser::foundCharacters(std::string_view chunk) {
    if (isBlankChunk(chunk)) return;
    switch (currentElement) {
        case Element::name: currentName += chunk; break;
        case Element::category: currentCategory += chunk; break;
        case Element::shortcut: currentShortcut += chunk; break;
        case Element::img: currentImage += chunk; break;
        case Element::none:
        case Element::other: break;
    }
}

void ShortcutXMLParser::didEndElement(std::string_view elementName) {
    if (elementName == "object") {
        // Trimmed in place: a catalogue may hold a great many keys.
        std::vector<std::string> keys = splitShortcutKeys(currentShortcut);
        for (auto& key : keys) {
            const std::string_view kept = trimmed(key, isBlank);
            if (kept.size() != key.size()) key = std::string(kept);
        }
        Shortcut& shortcut = shortcuts.emplace_back();
        shortcut.category = std::move(currentCategory);
        shortcut.name = std::move(currentName);
        shortcut.keys = std::move(keys);
        shortcut.imageName = std::move(currentImage);
        resetCurrent();
    }
    currentElement = Element::none;
}

void ShortcutXMLParser::resetCurrent() {
    currentName.clear();
    currentCategory.clear();
    currentShortcut.clear();
    currentImage.clear();
}

std::vector<std::string> splitShortcutKeys(std::string_view text) {
    std::size_t count = 1;
    for (auto at = text.find(", "); at != std::string_view::npos; at = text.find(", ", at + 2)) ++count;
    std::vector<std::string> parts;
    parts.reserve(count);
    std::size_t at = 0;
    for (;;) {
        auto separator = text.find(", ", at);
        if (separator == std::string_view::npos) break;
        parts.emplace_back(text.substr(at, separator - at));
        at = separator + 2;
    }
    parts.emplace_back(text.substr(at));
    return parts;
}

bool parseShortcutXML(std::string_view document, ShortcutXMLParser& delegate, std::size_t feedSize) {
    // The file's own declaration (or byte-order mark) names its encoding;
    // without one it is UTF-8.
    XML_Parser parser = XML_ParserCreate(nullptr);
    if (!parser) return false;
    XML_SetUnknownEncodingHandler(parser, onUnknownEncoding, nullptr);
    Driver driver{delegate, parser, {}, false};
    XML_SetUserData(parser, &driver);
    XML_SetElementHandler(parser, onStart, onEnd);
    XML_SetCharacterDataHandler(parser, onText);
    XML_SetCommentHandler(parser, onComment);
    XML_SetProcessingInstructionHandler(parser, onInstruction);
    XML_SetCdataSectionHandler(parser, onCDATAStart, onCDATAEnd);

    constexpr std::size_t largestPiece = INT_MAX / 2;
    std::size_t piece = feedSize == 0 ? largestPiece : std::min(feedSize, largestPiece);
    bool wellFormed = true;
    std::size_t at = 0;
    do {
        std::size_t length = std::min(piece, document.size() - at);
        bool last = at + length == document.size();
        if (XML_Parse(parser, document.data() + at, static_cast<int>(length), last) == XML_STATUS_ERROR) {
            wellFormed = false;
            break;
        }
        at += length;
    } while (at < document.size());
    driver.flush();
    XML_ParserFree(parser);
    return wellFormed;
}

ShortcutGroups groupShortcuts(const std::vector<Shortcut>& shortcuts) {
    ShortcutGroups groups;
    for (const auto& shortcut : shortcuts) {
        auto [entry, isNew] = groups.grouped.try_emplace(shortcut.category);
        if (isNew) groups.categories.push_back(shortcut.category);
        entry->second.push_back(shortcut);
    }
    return groups;
}

}  // namespace velmora
