// The template pane: the synced templates as a two-column grid, filtered by
// one category or one pack; a tap downloads a template, inserts it through
// the macro project and reports the use.
//
// Provides: filteredItems(), TemplateFilters, TemplateLibraryTaskpane,
// TemplateLibraryContentManager.
// Main thread only.
#pragma once

#include <map>
#include <memory>
#include <string>
#include <vector>

#include "taskpane/TaskpaneManager.h"
#include "templatelibrary/TemplateLibraryViewModel.h"
#include "ui/HostingView.h"
#include "ui/Node.h"

namespace velmora {

// At most one filter is active: choosing a category clears the pack, and
// the reverse.
struct TemplateFilters {
    std::string category = allCategories;
    std::string pack = allPacks;

    void selectCategory(const std::string& value);
    void selectPack(const std::string& value);
    // A choice the lists no longer hold falls back to their first entry.
    void correct(const std::vector<std::string>& categories, const std::vector<std::string>& packs);
};

// The category wins over the pack; manifest order is kept.
std::vector<TemplateMetadataItem> filteredItems(const std::vector<TemplateMetadataItem>& items,
                                                const TemplateFilters& filters);

// One open pane's state: the filters, "Keep Source Formatting", and each
// cell's hover preview.
class TemplateLibraryTaskpane : public std::enable_shared_from_this<TemplateLibraryTaskpane> {
public:
    static constexpr double previewDelay = 0.5;
    static constexpr double warmUpFlash = 0.1;

    explicit TemplateLibraryTaskpane(std::shared_ptr<TemplateLibraryViewModel> viewModel)
        : viewModel_(std::move(viewModel)) {}

    ui::Node body(double width);
    void attach(const std::weak_ptr<ui::HostingView>& view) { view_ = view; }

    TemplateFilters filters;
    bool keepSourceFormatting = false;

    bool showsPopover(const std::string& id) const;
    void hover(const std::string& id, bool inside);
    void cellAppeared(const std::string& id);
    void tap(const TemplateMetadataItem& item) const;

    // Whether a cell has flashed its preview yet in this process.
    static bool& hasActivatedPreview();

private:
    struct Cell {
        bool showPopover = false;
        int hoverGeneration = 0;
    };
    void setPopover(const std::string& id, bool shown);
    void redraw();
    bool thumbnailLoads(const std::string& path);

    std::shared_ptr<TemplateLibraryViewModel> viewModel_;
    std::map<std::string, Cell> cells_;
    std::map<std::string, bool> thumbnails_;
    std::weak_ptr<ui::HostingView> view_;
};

class TemplateLibraryContentManager {
public:
    // The process's one view model, made (and its sync started) at first use.
    static std::shared_ptr<TemplateLibraryViewModel>& viewModel();
    // Makes a pane on the shared view model and hands its view over at once.
    static void loadTemplateLibraryView(ContentCompletion completion);

private:
    // Made at first use and never destroyed, like the view model.
    static std::shared_ptr<ui::HostingView>& hostingController();
};

}  // namespace velmora
