#include "assistant/HostText.h"

#include <cstdint>
#include <cstring>

namespace velmora {

namespace {

bool inRange(unsigned char byte, unsigned char low, unsigned char high) { return byte >= low && byte <= high; }

// The length of the well-formed sequence at `at`, or 0 with `consumed` set
// to the length of its longest well-formed prefix (at least 1).
std::size_t sequenceAt(const unsigned char* data, std::size_t size, std::size_t at, std::size_t& consumed) {
    unsigned char lead = data[at];
    if (lead < 0x80) return 1;
    std::size_t length = 0;
    unsigned char low = 0x80, high = 0xBF;  // bounds of the second byte
    if (inRange(lead, 0xC2, 0xDF)) {
        length = 2;
    } else if (inRange(lead, 0xE0, 0xEF)) {
        length = 3;
        if (lead == 0xE0) low = 0xA0;
        if (lead == 0xED) high = 0x9F;
    } else if (inRange(lead, 0xF0, 0xF4)) {
        length = 4;
        if (lead == 0xF0) low = 0x90;
        if (lead == 0xF4) high = 0x8F;
    } else {
        consumed = 1;
        return 0;
    }
    std::size_t i = 1;
    for (; i < length; ++i) {
        if (at + i >= size) break;
        unsigned char byte = data[at + i];
        bool ok = i == 1 ? inRange(byte, low, high) : inRange(byte, 0x80, 0xBF);
        if (!ok) break;
    }
    if (i == length) return length;
    consumed = i;
    return 0;
}

// Whether the whole text is well-formed, skipping ASCII eight bytes at a
// time. Not simdjson's check: that goes through an object the simdjson
// library destroys at exit, while a queued call may still run.
bool wellFormed(const unsigned char* data, std::size_t size) {
    std::size_t at = 0;
    while (at < size) {
        // Four words at a time through long ASCII runs (the shape lists), then one.
        while (at + 32 <= size) {
            std::uint64_t words[4];
            std::memcpy(words, data + at, sizeof words);
            if (((words[0] | words[1] | words[2] | words[3]) & 0x8080808080808080u) != 0) break;
            at += 32;
        }
        if (at + 8 <= size) {
            std::uint64_t word;
            std::memcpy(&word, data + at, sizeof word);
            if ((word & 0x8080808080808080u) == 0) {
                at += 8;
                continue;
            }
        }
        std::size_t consumed = 0;
        const std::size_t length = sequenceAt(data, size, at, consumed);
        if (!length) return false;
        at += length;
    }
    return true;
}

// Copies `size` bytes to `to` while they are well-formed; gives how many
// were copied (all of them when the text is well-formed). ASCII goes four
// words at a time.
std::size_t copyWellFormed(char* to, const unsigned char* data, std::size_t size) {
    std::size_t at = 0;
    while (at < size) {
        while (at + 32 <= size) {
            std::uint64_t words[4];
            std::memcpy(words, data + at, sizeof words);
            std::memcpy(to + at, words, sizeof words);
            if (((words[0] | words[1] | words[2] | words[3]) & 0x8080808080808080u) != 0) break;
            at += 32;
        }
        std::size_t consumed = 0;
        const std::size_t length = sequenceAt(data, size, at, consumed);
        if (!length) return at;
        std::memcpy(to + at, data + at, length);
        at += length;
    }
    return at;
}

}  // namespace

PrefixedHostText::PrefixedHostText(std::string_view prefix, const char* text, std::size_t padding)
    : prefixSize_(prefix.size()) {
    const std::size_t size = text ? std::strlen(text) : 0;
    // Made without zeroing: every byte up to size_ is written before it is read.
    buffer_ = std::make_unique_for_overwrite<char[]>(prefix.size() + size + padding);
    std::memcpy(buffer_.get(), prefix.data(), prefix.size());
    size_ = prefix.size() + size;
    if (copyWellFormed(buffer_.get() + prefix.size(), reinterpret_cast<const unsigned char*>(text), size) == size) return;
    // Ill-formed: the repaired text is longer, made the usual way.
    std::string repaired(prefix);
    appendTextFromHost(repaired, text);
    buffer_ = std::make_unique_for_overwrite<char[]>(repaired.size() + padding);
    std::memcpy(buffer_.get(), repaired.data(), repaired.size());
    size_ = repaired.size();
}

std::string textFromHost(const char* text) {
    std::string out;
    appendTextFromHost(out, text);
    return out;
}

void appendTextFromHost(std::string& out, const char* text) {
    if (!text) return;
    const std::size_t size = std::strlen(text);
    const auto* data = reinterpret_cast<const unsigned char*>(text);
    if (wellFormed(data, size)) {
        out.append(text, size);
        return;
    }
    out.reserve(out.size() + size + 16);
    std::size_t at = 0;
    while (at < size) {
        std::size_t consumed = 0;
        std::size_t length = sequenceAt(data, size, at, consumed);
        if (length) {
            out.append(text + at, length);
            at += length;
        } else {
            out += "\xEF\xBF\xBD";
            at += consumed;
        }
    }
}

}  // namespace velmora
