// The slide library's store: the saved slides as one process-wide list,
// loaded from SlideLibrary_Metadata.json and changed by deleting a slide.
//
// Provides: SlideLibraryViewModel, SlideLibraryContentManager.
// The list changes only by whole assignment on the main queue. Loads read
// and decode on a user-initiated worker; a delete rewrites the file and
// removes the thumbnail on a background worker. Nothing orders a load
// against a delete's write, and no lock guards the file: the last writer
// wins.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "slidelibrary/SlideMetadata.h"
#include "support/Published.h"
#include "taskpane/TaskpaneManager.h"
#include "ui/HostingView.h"

namespace velmora {

class SlideLibraryViewModel : public std::enable_shared_from_this<SlideLibraryViewModel> {
public:
    // Builds the paths, logs them and starts the first load.
    static std::shared_ptr<SlideLibraryViewModel> make();

    // File order; the pane sorts.
    support::Published<std::vector<SlideMetadataItem>> items;
    const std::string metadataURL;
    const std::string thumbnailDir;

    // Rereads the file on a worker; a failed read or decode leaves the list.
    void loadMetadata();
    // Drops every slide with the item's name at once, then rewrites the
    // file with what is left and removes the thumbnail, in the background.
    void deleteItem(const SlideMetadataItem& item);

    std::string thumbnailPath(const SlideMetadataItem& item) const;
    // The state as lines for the host's inspector.
    std::vector<std::string> describe() const;

private:
    SlideLibraryViewModel(std::string metadataURL, std::string thumbnailDir);
};

class SlideLibraryContentManager {
public:
    // The process's one view model, made (and its first load started) at first use.
    static std::shared_ptr<SlideLibraryViewModel>& viewModel();
    // The pane alone, without the library's tabs.
    static void loadSlideLibraryView(ContentCompletion completion);
    // Schedules a reload of the shared list on the main queue.
    static void reloadLibraryUI();

private:
    static std::shared_ptr<ui::HostingView>& hosting();
};

}  // namespace velmora
