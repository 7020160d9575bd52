// The slide library pane: the saved slides as a two-column grid of
// thumbnails, narrowed by text, a date range and tags; a tap inserts a
// slide, a rest of the pointer previews it, a button on it deletes it.
//
// Provides: SlideFilters, filteredItems(), tagOptions(), SlideLibraryTaskpane,
// ClickThroughHostingView, makeSlideLibraryHostingView().
// The filters are pure logic over the view model's list. The grid builds
// cells only for the rows on show (see SlideLibraryTaskpane::body). Main
// thread only.
#pragma once

#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "slidelibrary/SlideLibrary.h"
#include "ui/HostingView.h"
#include "ui/Node.h"

namespace velmora {

struct SlideFilters {
    std::string searchText;  // as typed, not trimmed
    std::set<std::string> selectedTags;
    std::optional<support::Date> dateFrom, dateTo;
};

// Every slide that passes all four filters, newest first (equal dates keep
// file order): the text in `textContent` only, ignoring case; any selected
// tag, exactly; saved at or after the start of From's local day; at or
// before 23:59:59 of To's. The pointers are into `items`.
std::vector<const SlideMetadataItem*> filteredItems(const std::vector<SlideMetadataItem>& items,
                                                    const SlideFilters& filters);

// Every tag of every slide once, in plain byte order (capitals first).
std::vector<std::string> tagOptions(const std::vector<SlideMetadataItem>& items);

class SlideLibraryTaskpane : public std::enable_shared_from_this<SlideLibraryTaskpane> {
public:
    static constexpr double previewDelay = 0.5;
    static constexpr double gridSpacing = 10;
    // Rows built beyond those on show, above and below.
    static constexpr int overscanRows = 1;

    explicit SlideLibraryTaskpane(std::shared_ptr<SlideLibraryViewModel> viewModel);

    ui::Node body(double width);
    // The view the pane redraws and whose height bounds the rows built.
    void attach(const std::weak_ptr<ui::HostingView>& view) { view_ = view; }

    SlideFilters filters;
    bool keepSourceFormatting = false;
    // Kept as a field and read by nothing: thumbnails come from the view model.
    const std::string thumbnailDir;

    // The grid's scroll position, in points from its top.
    void scrollTo(double offset);
    double scrollOffset() const { return scrollOffset_; }
    // The range of slides the last body built cells for: [first, last).
    std::pair<std::size_t, std::size_t> builtRange() const { return built_; }

    void hover(const std::string& id, bool inside);
    bool showsPopover(const std::string& id) const;
    bool isHovering(const std::string& id) const;
    void insert(const SlideMetadataItem& item) const;

private:
    struct Cell {
        bool isHovering = false;
        bool showPopover = false;
        int hoverWorkItem = 0;  // the pending preview; a new hover change cancels it
    };
    ui::Node searchField();
    ui::Node datePicker(const char* label, std::optional<support::Date> SlideFilters::*date,
                        bool SlideLibraryTaskpane::*showing);
    ui::Node tagSelection(const std::vector<std::string>& options);
    ui::Node cell(const SlideMetadataItem& item);
    ui::Node grid(const std::vector<const SlideMetadataItem*>& shown, double width);
    template <typename Edit>
    std::function<void()> change(Edit edit);
    void redraw();

    std::shared_ptr<SlideLibraryViewModel> viewModel_;
    std::map<std::string, Cell> cells_;
    bool showingFromPicker_ = false, showingToPicker_ = false;
    double scrollOffset_ = 0;
    std::pair<std::size_t, std::size_t> built_{0, 0};
    std::weak_ptr<ui::HostingView> view_;
};

// A hosting view that acts on the first click, without first activating
// the pane, and takes the keyboard focus when it lands in a window.
class ClickThroughHostingView : public ui::HostingView {
public:
    using HostingView::HostingView;
    bool acceptsFirstMouse() const { return true; }
    bool acceptsFirstResponder() const { return true; }
    bool canBecomeKeyView() const { return true; }
};

// A fresh pane on `model`, in a click-through view that redraws on every
// change of the list.
std::shared_ptr<ui::HostingView> makeSlideLibraryHostingView(const std::shared_ptr<SlideLibraryViewModel>& model);

}  // namespace velmora
