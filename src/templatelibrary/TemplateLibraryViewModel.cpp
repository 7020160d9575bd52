#include "templatelibrary/TemplateLibraryViewModel.h"

#include <algorithm>

#include "bridge/HardwareUUID.h"
#include "platform/Platform.h"
#include "support/Text.h"
#include "support/Unicode.h"

namespace velmora {

namespace {

using platform::LogLevel;

std::string itemKey(const TemplateMetadataItem& item) {
    std::string key = item.id + '\0' + item.thumb + '\0' + item.pptx;
    for (const auto& cat : item.cat) key += '\0' + cat;
    key += '\1';
    for (const auto& pack : item.pack) key += '\0' + pack;
    return key;
}

// "All Categories" (or "All Packs") before the unique values, sorted.
std::vector<std::string> withAll(const char* all, const std::vector<TemplateMetadataItem>& items,
                                 std::vector<std::string> TemplateMetadataItem::*field) {
    std::set<std::string> unique;
    for (const auto& item : items) unique.insert((item.*field).begin(), (item.*field).end());
    std::vector<std::string> list{all};
    list.insert(list.end(), unique.begin(), unique.end());
    return list;
}

std::string cdnBase() {
    std::string base = platform::config().cdnBaseURL();
    if (!base.empty() && base.back() != '/') base += '/';
    return base;
}

}  // namespace

std::shared_ptr<TemplateLibraryViewModel> TemplateLibraryViewModel::make() {
    std::shared_ptr<TemplateLibraryViewModel> model(new TemplateLibraryViewModel());
    std::weak_ptr<TemplateLibraryViewModel> weak = model;
    platform::registerInspector("templates", [weak] {
        auto alive = weak.lock();
        return alive ? alive->describe() : std::vector<std::string>{};
    });
    model->loadRemoteThumbnails();
    return model;
}

std::vector<std::string> TemplateLibraryViewModel::describe() const {
    std::vector<std::string> lines{std::string("templates: loading ") + (isLoading.get() ? "yes" : "no"),
                                   "templates: categories " + support::arrayDescription(categories.get()),
                                   "templates: packs " + support::arrayDescription(packs.get())};
    // Locations below the CDN show relative to it, so the lines do not
    // depend on where the CDN is.
    const std::string base = cdnBase();
    for (const auto& item : items.get()) {
        const bool below = !base.empty() && item.pptx.rfind(base, 0) == 0;
        lines.push_back("templates: " + item.id + " cat=" + support::arrayDescription(item.cat) +
                        " pack=" + support::arrayDescription(item.pack) + " thumb=" + lastPathComponent(item.thumb) +
                        " pptx=" + (below ? "<cdn>/" + item.pptx.substr(base.size()) : item.pptx));
    }
    return lines;
}

void TemplateLibraryViewModel::log(LogLevel level, const std::string& text) const {
    platform::logger(loggerSubsystem, loggerCategory, level, text);
}

void TemplateLibraryViewModel::loadRemoteThumbnails() {
    auto self = shared_from_this();
    platform::mainAsync([self] { self->isLoading.set(true); });
    const std::string url = cdnBase() + "manifest.json";
    platform::http().send({"GET", url, {}, {}, 60}, [self, url](platform::HttpResponse response) {
        platform::mainAsync([self, url, response = std::move(response)] { self->manifestArrived(url, response); });
    });
}

void TemplateLibraryViewModel::manifestArrived(const std::string& url, const platform::HttpResponse& response) {
    if (response.transportError) return manifestFailed(*response.transportError);
    log(LogLevel::debug, "Manifest loaded from → " + url);
    log(LogLevel::debug, "Manifest snippet → " + support::repairedUTF8(std::string_view(response.body).substr(0, 300)));
    auto decoded = decodeManifest(response.body);
    if (!decoded.manifest) return manifestFailed(decoded.error);
    const std::string thumbsDir = templateThumbnailsFolder();
    std::string error;
    if (!platform::files().createDirectories(thumbsDir, &error)) return manifestFailed(error);
    auto slides = std::make_shared<const std::vector<SlideManifestItem>>(std::move(decoded.manifest->slides));
    process(std::move(slides), 0, thumbsDir);
}

void TemplateLibraryViewModel::manifestFailed(const std::string& description) {
    log(LogLevel::error, "Remote manifest failed → " + description);
    auto self = shared_from_this();
    platform::mainAsync([self] { self->finish(); });
}

void TemplateLibraryViewModel::process(std::shared_ptr<const std::vector<SlideManifestItem>> slides, std::size_t index,
                                       std::string thumbsDir) {
    const std::string base = cdnBase();
    std::vector<TemplateMetadataItem> cached;
    for (; index < slides->size(); ++index) {
        const auto& slide = (*slides)[index];
        const std::string remoteThumb = absoluteURL(slide.thumb, base);
        const std::string remotePptx = absoluteURL(slide.pptx, base);
        const std::string localThumb = thumbsDir + "/" + lastPathComponent(remoteThumb);
        if (platform::files().exists(localThumb)) {
            cached.emplace_back(slide, localThumb, remotePptx);
            continue;
        }
        // The grid shows what is cached before the next download starts.
        append(std::move(cached));
        auto self = shared_from_this();
        platform::http().send({"GET", remoteThumb, {}, {}, 60}, [self, slides, index, thumbsDir, localThumb,
                                                              remotePptx](platform::HttpResponse response) {
            platform::mainAsync([self, slides, index, thumbsDir, localThumb, remotePptx, response = std::move(response)] {
                const auto& slide = (*slides)[index];
                std::string error;
                if (response.transportError) {
                    error = *response.transportError;
                } else if (!platform::files().write(localThumb, response.body, true, &error) && error.empty()) {
                    error = "The file could not be saved.";
                }
                if (error.empty()) {
                    self->append({TemplateMetadataItem(slide, localThumb, remotePptx)});
                } else {
                    self->log(LogLevel::error, "Thumbnail download failed for " + slide.id + " → " + error);
                }
                self->process(slides, index + 1, thumbsDir);
            });
        });
        return;
    }
    append(std::move(cached));
    log(LogLevel::notice, "Total remote thumbnails loaded → " + std::to_string(items.get().size()));
    auto self = shared_from_this();
    platform::mainAsync([self] { self->finish(); });
}

void TemplateLibraryViewModel::append(std::vector<TemplateMetadataItem> fresh) {
    std::vector<TemplateMetadataItem> added;
    for (auto& item : fresh) {
        if (known_.insert(itemKey(item)).second) added.push_back(std::move(item));
    }
    if (added.empty()) return;
    items.modify([&](std::vector<TemplateMetadataItem>& list) {
        list.insert(list.end(), std::make_move_iterator(added.begin()), std::make_move_iterator(added.end()));
    });
}

void TemplateLibraryViewModel::finish() {
    const auto list = items.get();
    categories.set(withAll(allCategories, list, &TemplateMetadataItem::cat));
    packs.set(withAll(allPacks, list, &TemplateMetadataItem::pack));
    log(LogLevel::notice, "Categories loaded → " + support::arrayDescription(categories.get()));
    log(LogLevel::notice, "Packs loaded → " + support::arrayDescription(packs.get()));
    isLoading.set(false);
}

void TemplateLibraryViewModel::downloadSlide(const TemplateMetadataItem& item, DownloadCompletion completion) {
    const std::string folder = templateSlidesFolder();
    std::string error;
    if (!platform::files().createDirectories(folder, &error)) return completion(std::nullopt, error);
    const std::string local = folder + "/" + lastPathComponent(item.pptx);
    if (platform::files().exists(local)) return completion(local, {});
    platform::http().send({"GET", item.pptx, {}, {}, 60}, [local, completion](platform::HttpResponse response) {
        platform::mainAsync([local, completion, response = std::move(response)] {
            if (response.transportError) return completion(std::nullopt, *response.transportError);
            std::string writeError;
            if (!platform::files().write(local, response.body, true, &writeError)) {
                return completion(std::nullopt, writeError.empty() ? "The file could not be saved." : writeError);
            }
            completion(local, {});
        });
    });
}

void TemplateLibraryViewModel::trackTemplateUsage(const std::string& slideId) {
    auto url = usageURL(platform::config().serviceBaseURL(), globalHardwareUUID(), slideId);
    if (!url) {
        log(LogLevel::error, "[Usage] Failed to construct URL");
        return;
    }
    auto self = shared_from_this();
    platform::http().send({"GET", *url, {}, {}, 60}, [self](platform::HttpResponse response) {
        platform::mainAsync([self, response = std::move(response)] {
            if (response.transportError) {
                self->log(LogLevel::error, "[Usage] Failed to update template usage: " + *response.transportError);
                return;
            }
            const std::string body = support::isValidUTF8(response.body) ? response.body : "<empty>";
            if (response.status == 200) {
                self->log(LogLevel::notice, "[Usage] Success: " + body);
            } else {
                self->log(LogLevel::error, "[Usage] Error " + std::to_string(response.status) + ": " + body);
            }
        });
    });
}

}  // namespace velmora
