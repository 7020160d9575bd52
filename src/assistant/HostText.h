// Text arguments from the host, as the assistant's entry points read them.
//
// Provides: textFromHost().
#pragma once

#include <string>

namespace velmora {

// The NUL-terminated text as UTF-8; ill-formed sequences become U+FFFD, one
// per maximal ill-formed part. A null pointer reads as the empty text.
std::string textFromHost(const char* text);

}  // namespace velmora
