// The template library's data: the CDN's manifest, the items the pane
// shows, where the caches live, and how a location in the manifest becomes
// a URL.
//
// Provides: SlideManifestItem, Manifest, decodeManifest(),
// TemplateMetadataItem, absoluteURL(), lastPathComponent(),
// templateThumbnailsFolder(), templateSlidesFolder(), usageURL().
// Pure, but for the two folders, which ask the files port. Any thread.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace velmora {

struct SlideManifestItem {
    std::string id;
    std::string title;  // decoded, then dropped
    std::string thumb;  // absolute, or relative to the CDN base URL
    std::string pptx;
    std::string cat;    // one category, or empty for none
    std::string pack;   // one pack, or empty for none
};

struct Manifest {
    std::vector<SlideManifestItem> slides;
};

struct ManifestDecoding {
    std::optional<Manifest> manifest;
    std::string error;  // what failed, where; empty on success
};

// Strict: an object whose "slides" is an array of objects, each with all
// six keys as strings. Unknown keys are ignored; anything else fails the
// whole manifest.
ManifestDecoding decodeManifest(std::string_view json);

struct TemplateMetadataItem {
    std::string id;
    std::string thumb;  // the local cached thumbnail
    std::string pptx;   // the remote presentation file
    std::vector<std::string> cat;   // empty or one element
    std::vector<std::string> pack;  // empty or one element

    TemplateMetadataItem() = default;
    TemplateMetadataItem(const SlideManifestItem& slide, std::string thumbPath, std::string pptURL);
    bool operator==(const TemplateMetadataItem&) const = default;
};

// A location that is a web address (its scheme begins with "http") as it
// stands; anything else, its leading and trailing slashes stripped, as a
// path below `base`.
std::string absoluteURL(const std::string& path, const std::string& base);

// The last component of a URL's path, percent-decoded: the cache file name.
std::string lastPathComponent(const std::string& url);

// Below the user's application support directory.
std::string templateThumbnailsFolder();
std::string templateSlidesFolder();

// The usage report's URL: the service base URL, "/get_downloadTemplate",
// then "licenseKey" and "slideId" in that order, percent-encoded as a URL
// query is. Nothing when the base does not make a URL.
std::optional<std::string> usageURL(const std::string& serviceBase, const std::string& licenseKey,
                                    const std::string& slideId);

}  // namespace velmora
