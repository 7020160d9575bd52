#include "ui/Images.h"

#include <string_view>

#include "platform/Platform.h"

namespace velmora::ui {

namespace {

bool startsWith(const std::string& data, std::string_view prefix, std::size_t at = 0) {
    return data.size() >= at + prefix.size() && data.compare(at, prefix.size(), prefix) == 0;
}

}  // namespace

bool canLoadImage(const std::string& path) {
    auto data = platform::files().read(path);
    if (!data) return false;
    const auto text = std::string_view(*data).substr(0, 512);
    const auto start = text.find_first_not_of(" \t\r\n");
    if (start != std::string_view::npos &&
        (text.substr(start, 4) == "<svg" || (text.substr(start, 5) == "<?xml" && data->find("<svg") != std::string::npos))) {
        return true;
    }
    return startsWith(*data, "\x89PNG\r\n\x1a\n") || startsWith(*data, "\xFF\xD8\xFF") || startsWith(*data, "GIF8") ||
           startsWith(*data, std::string_view("II*\0", 4)) || startsWith(*data, std::string_view("MM\0*", 4)) ||
           startsWith(*data, "BM") || startsWith(*data, "icns") || startsWith(*data, "%PDF") ||
           (startsWith(*data, "RIFF") && startsWith(*data, "WEBP", 8)) || startsWith(*data, "ftyp", 4);
}

}  // namespace velmora::ui
