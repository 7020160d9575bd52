// The macros of the host's macro project that read or change its document.
//
// Provides: installDocumentMacros(), userIconFolder().
#pragma once

#include <filesystem>

namespace velmora::host {

class Host;

// Registers the document's macro handlers; the host calls it once while it
// is being made.
void installDocumentMacros(Host& host);

// "<sandbox><home>/Library/Application Support/Microsoft/Velmora/User/Icons":
// where the library saves icons and the add-in's macro reads them.
std::filesystem::path userIconFolder();

}  // namespace velmora::host
