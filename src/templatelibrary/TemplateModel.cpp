#include "templatelibrary/TemplateModel.h"

#include <nlohmann/json.hpp>

#include "platform/Platform.h"
#include "support/Text.h"

namespace velmora {

namespace {

constexpr const char* slideKeys[] = {"id", "title", "thumb", "pptx", "cat", "pack"};

bool isAlpha(char c) { return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z'); }
bool isDigit(char c) { return c >= '0' && c <= '9'; }

// The scheme of a URL text ("https" of "https://..."), or nothing.
std::optional<std::string> schemeOf(const std::string& text) {
    if (text.empty() || !isAlpha(text[0])) return std::nullopt;
    for (std::size_t i = 1; i < text.size(); ++i) {
        const char c = text[i];
        if (c == ':') return text.substr(0, i);
        if (!isAlpha(c) && !isDigit(c) && c != '+' && c != '-' && c != '.') return std::nullopt;
    }
    return std::nullopt;
}

}  // namespace

ManifestDecoding decodeManifest(std::string_view json) {
    ManifestDecoding result;
    const auto document = nlohmann::json::parse(json, nullptr, false);
    if (document.is_discarded()) {
        result.error = "The data couldn’t be read because it isn’t in the correct format.";
        return result;
    }
    if (!document.is_object()) {
        result.error = "typeMismatch: expected an object at the top level";
        return result;
    }
    const auto slides = document.find("slides");
    if (slides == document.end()) {
        result.error = "keyNotFound: \"slides\"";
        return result;
    }
    if (!slides->is_array()) {
        result.error = "typeMismatch: \"slides\" is not an array";
        return result;
    }
    Manifest manifest;
    manifest.slides.reserve(slides->size());
    for (std::size_t index = 0; index < slides->size(); ++index) {
        const auto& object = (*slides)[index];
        const std::string where = "slides[" + std::to_string(index) + "]";
        if (!object.is_object()) {
            result.error = "typeMismatch: " + where + " is not an object";
            return result;
        }
        std::string values[6];
        for (std::size_t key = 0; key < 6; ++key) {
            const auto found = object.find(slideKeys[key]);
            if (found == object.end()) {
                result.error = std::string("keyNotFound: \"") + slideKeys[key] + "\" in " + where;
                return result;
            }
            if (!found->is_string()) {
                result.error = std::string("typeMismatch: \"") + slideKeys[key] + "\" in " + where + " is not a string";
                return result;
            }
            values[key] = found->get<std::string>();
        }
        manifest.slides.push_back({std::move(values[0]), std::move(values[1]), std::move(values[2]),
                                   std::move(values[3]), std::move(values[4]), std::move(values[5])});
    }
    result.manifest = std::move(manifest);
    return result;
}

TemplateMetadataItem::TemplateMetadataItem(const SlideManifestItem& slide, std::string thumbPath, std::string pptURL)
    : id(slide.id), thumb(std::move(thumbPath)), pptx(std::move(pptURL)) {
    if (!slide.cat.empty()) cat.push_back(slide.cat);
    if (!slide.pack.empty()) pack.push_back(slide.pack);
}

std::string absoluteURL(const std::string& path, const std::string& base) {
    if (auto scheme = schemeOf(path); scheme && scheme->rfind("http", 0) == 0) return path;
    const auto first = path.find_first_not_of('/');
    if (first == std::string::npos) return base;
    const std::string inner = path.substr(first, path.find_last_not_of('/') - first + 1);
    return base + (!base.empty() && base.back() == '/' ? "" : "/") + support::percentEncoded(inner, support::PercentSet::path);
}

std::string lastPathComponent(const std::string& url) {
    std::string_view path = url;
    if (auto scheme = schemeOf(url)) {
        path.remove_prefix(scheme->size() + 1);
        if (path.rfind("//", 0) == 0) {
            path.remove_prefix(2);
            const auto slash = path.find('/');
            path = slash == std::string_view::npos ? std::string_view{} : path.substr(slash);
        }
    }
    path = path.substr(0, path.find_first_of("?#"));
    while (path.size() > 1 && path.back() == '/') path.remove_suffix(1);
    const auto slash = path.rfind('/');
    if (slash != std::string_view::npos && path.size() > 1) path.remove_prefix(slash + 1);
    return support::percentDecoded(path);
}

std::string templateThumbnailsFolder() {
    return platform::files().applicationSupportDirectory() + "/Microsoft/Velmora/User/TemplateLibrary/Thumbnails";
}

std::string templateSlidesFolder() {
    return platform::files().applicationSupportDirectory() + "/Microsoft/Velmora/User/TemplateLibrary/Slides";
}

std::optional<std::string> usageURL(const std::string& serviceBase, const std::string& licenseKey,
                                    const std::string& slideId) {
    if (!schemeOf(serviceBase)) return std::nullopt;
    std::string url = serviceBase;
    while (!url.empty() && url.back() == '/') url.pop_back();
    return url + "/get_downloadTemplate?licenseKey=" + support::percentEncoded(licenseKey, support::PercentSet::query) +
           "&slideId=" + support::percentEncoded(slideId, support::PercentSet::query);
}

}  // namespace velmora
