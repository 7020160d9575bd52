// Text arguments from the host, as the assistant's entry points read them.
//
// Provides: textFromHost(), appendTextFromHost().
#pragma once

#include <string>

namespace velmora {

// The NUL-terminated text as UTF-8; ill-formed sequences become U+FFFD, one
// per maximal ill-formed part. A null pointer reads as the empty text.
std::string textFromHost(const char* text);
// The same, appended to `out`: a log line's prefix and the text in one buffer.
void appendTextFromHost(std::string& out, const char* text);

}  // namespace velmora
