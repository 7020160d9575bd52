// Images as panes load them.
//
// Provides: canLoadImage().
#pragma once

#include <string>

namespace velmora::ui {

// What the platform's image loader accepts: a file readable through the
// files port whose first bytes name a known image format, or an SVG document. Panes show their
// fallback symbol for anything else.
bool canLoadImage(const std::string& path);

}  // namespace velmora::ui
