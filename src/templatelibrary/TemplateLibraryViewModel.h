// The template library's one view model: it syncs the CDN's manifest and
// thumbnails once per process, downloads a template's presentation file
// when it is inserted, and reports each use to the cloud service.
//
// Provides: TemplateLibraryViewModel, allCategories, allPacks.
// Main thread only: network replies come back through the main queue, so
// every field is written there. Thumbnails come one at a time, in manifest
// order; nothing is retried and a cached file is valid while it exists.
#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "platform/Http.h"
#include "platform/Log.h"
#include "support/Published.h"
#include "templatelibrary/TemplateModel.h"

namespace velmora {

inline constexpr const char* allCategories = "All Categories";
inline constexpr const char* allPacks = "All Packs";

class TemplateLibraryViewModel : public std::enable_shared_from_this<TemplateLibraryViewModel> {
public:
    static constexpr const char* loggerSubsystem = "com.velmora.TemplateLibrary";
    static constexpr const char* loggerCategory = "Thumbnail";

    // Makes the view model and starts its sync; nothing else starts one.
    static std::shared_ptr<TemplateLibraryViewModel> make();

    support::Published<std::vector<TemplateMetadataItem>> items;
    support::Published<bool> isLoading{false};
    support::Published<std::vector<std::string>> categories{{allCategories}};
    support::Published<std::vector<std::string>> packs{{allPacks}};

    // The local presentation file of `item`, fetched unless it is cached;
    // or the error's description. The completion runs on the main thread.
    using DownloadCompletion = std::function<void(std::optional<std::string> localPath, std::string error)>;
    void downloadSlide(const TemplateMetadataItem& item, DownloadCompletion completion);

    // Reports one use of a template; the outcome only reaches the log.
    void trackTemplateUsage(const std::string& slideId);

    void log(platform::LogLevel level, const std::string& text) const;
    // The state as lines for the host's `show templates`.
    std::vector<std::string> describe() const;

private:
    TemplateLibraryViewModel() = default;

    void loadRemoteThumbnails();
    void manifestArrived(const std::string& url, const platform::HttpResponse& response);
    // Goes through the slides from `index`: cached ones at once, one
    // download at a time for the rest, then the finishing step.
    void process(std::shared_ptr<const std::vector<SlideManifestItem>> slides, std::size_t index, std::string thumbsDir);
    void manifestFailed(const std::string& description);
    void finish();
    void append(std::vector<TemplateMetadataItem> fresh);

    std::set<std::string> known_;  // the items present, by all their fields
};

}  // namespace velmora
