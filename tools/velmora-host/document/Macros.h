// The macros of the host's macro project that read or change its document.
//
// Provides: installDocumentMacros().
#pragma once

namespace velmora::host {

class Host;

// Registers the document's macro handlers; the host calls it once while it
// is being made.
void installDocumentMacros(Host& host);

}  // namespace velmora::host
