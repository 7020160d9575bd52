#include "slidelibrary/SlideLibrary.h"

#include "bridge/Exports.h"
#include "platform/Platform.h"
#include "slidelibrary/SlideLibraryPane.h"
#include "support/Text.h"

namespace velmora {

std::shared_ptr<SlideLibraryViewModel> SlideLibraryViewModel::make() {
    const std::string folder = slideLibraryFolder();
    std::shared_ptr<SlideLibraryViewModel> model(
        new SlideLibraryViewModel(folder + "/SlideLibrary_Metadata.json", folder + "/Thumbnail"));
    platform::nslog("SlideLibrary paths → metadataURL: " + model->metadataURL + ", thumbnailDir: " + model->thumbnailDir);
    std::weak_ptr<SlideLibraryViewModel> weak = model;
    platform::registerInspector("slide library", [weak] {
        auto alive = weak.lock();
        return alive ? alive->describe() : std::vector<std::string>{};
    });
    model->loadMetadata();
    return model;
}

SlideLibraryViewModel::SlideLibraryViewModel(std::string metadata, std::string thumbnails)
    : metadataURL(std::move(metadata)), thumbnailDir(std::move(thumbnails)) {}

void SlideLibraryViewModel::loadMetadata() {
    auto self = shared_from_this();
    platform::globalAsync(platform::QualityOfService::userInitiated, [self] {
        auto bytes = platform::files().read(self->metadataURL);
        if (!bytes) return;
        auto decoded = decodeSlideMetadata(*bytes);
        if (!decoded) return;
        auto fresh = std::make_shared<std::vector<SlideMetadataItem>>(std::move(*decoded));
        platform::mainAsync([self, fresh] { self->items.set(std::move(*fresh)); });
    });
}

void SlideLibraryViewModel::deleteItem(const SlideMetadataItem& item) {
    auto updated = std::make_shared<std::vector<SlideMetadataItem>>();
    for (const auto& kept : *items.snapshot()) {
        if (kept.id() != item.id()) updated->push_back(kept);
    }
    auto self = shared_from_this();
    platform::mainAsync([self, updated] { self->items.set(*updated); });
    platform::globalAsync(platform::QualityOfService::background, [self, updated, name = item.fullSlideName] {
        std::string error;
        // In place, not atomically: a reader may meet a half-written file.
        if (!platform::files().write(self->metadataURL, encodeSlideMetadata(*updated), false, &error)) {
            platform::print("⚠️ Failed to write updated metadata: " + error);
        }
        std::string removal;
        if (!platform::files().remove(self->thumbnailDir + "/" + name + ".png", &removal)) {
            platform::print("⚠️ Failed to delete thumbnail: " + removal);
        }
    });
}

std::string SlideLibraryViewModel::thumbnailPath(const SlideMetadataItem& item) const {
    return thumbnailDir + "/" + item.fullSlideName + ".png";
}

std::vector<std::string> SlideLibraryViewModel::describe() const {
    const auto list = items.snapshot();
    std::vector<std::string> lines{"slide library: " + std::to_string(list->size()) + " slides"};
    for (const auto& item : *list) {
        lines.push_back("  " + support::quoted(item.fullSlideName) + " tags " + support::arrayDescription(item.tags) +
                        " saved " + support::formatLocalTimestamp(item.dateSaved));
    }
    return lines;
}

// --- the content manager ------------------------------------------------------------

std::shared_ptr<SlideLibraryViewModel>& SlideLibraryContentManager::viewModel() {
    // Lives as long as the process: queued loads and deletes hold it too.
    static auto& model = *new std::shared_ptr<SlideLibraryViewModel>(SlideLibraryViewModel::make());
    return model;
}

std::shared_ptr<ui::HostingView>& SlideLibraryContentManager::hosting() {
    static auto& view = *new std::shared_ptr<ui::HostingView>();
    return view;
}

void SlideLibraryContentManager::loadSlideLibraryView(ContentCompletion completion) {
    auto view = makeSlideLibraryHostingView(viewModel());
    hosting() = view;
    completion(view);
}

void SlideLibraryContentManager::reloadLibraryUI() {
    platform::mainAsync([] { viewModel()->loadMetadata(); });
}

// Called by the macro project after it changed the library.
void refreshSlideLibraryTaskpane() {
    platform::nslog("Slide Library: 🔄 Refresh requested from host code");
    SlideLibraryContentManager::reloadLibraryUI();
}

}  // namespace velmora
