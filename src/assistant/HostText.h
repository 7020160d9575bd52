// Text arguments from the host, as the assistant's entry points read them.
//
// Provides: textFromHost(), appendTextFromHost(), PrefixedHostText.
#pragma once

#include <cstddef>
#include <memory>
#include <string>
#include <string_view>

namespace velmora {

// The NUL-terminated text as UTF-8; ill-formed sequences become U+FFFD, one
// per maximal ill-formed part. A null pointer reads as the empty text.
std::string textFromHost(const char* text);
// The same, appended to `out`: a log line's prefix and the text in one buffer.
void appendTextFromHost(std::string& out, const char* text);

// A host text read into one buffer after a prefix (the log line that shows
// it), with `padding` bytes of room after it, so a parser may read past its
// end. Well-formed text is copied and checked in one pass.
class PrefixedHostText {
public:
    PrefixedHostText(std::string_view prefix, const char* text, std::size_t padding);
    // The prefix and the text.
    std::string_view line() const { return {buffer_.get(), size_}; }
    // The text alone.
    std::string_view text() const { return line().substr(prefixSize_); }

private:
    std::unique_ptr<char[]> buffer_;
    std::size_t prefixSize_;
    std::size_t size_;
};

}  // namespace velmora
