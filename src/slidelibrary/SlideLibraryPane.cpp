#include "slidelibrary/SlideLibraryPane.h"

#include <algorithm>
#include <cmath>

#include "bridge/MacroRunner.h"
#include "platform/Platform.h"
#include "support/Unicode.h"
#include "ui/Images.h"

namespace velmora {

namespace {

using namespace ui;

constexpr Color deleteRed = Color::rgb255(251, 105, 105);

// All four tests must hold; the cheap ones go first, the text search last.
bool passes(const SlideMetadataItem& item, const SlideFilters& filters, std::optional<support::Date> from,
            std::optional<support::Date> to) {
    if (from && item.dateSaved < *from) return false;
    if (to && item.dateSaved > *to) return false;
    if (!filters.selectedTags.empty() &&
        std::none_of(item.tags.begin(), item.tags.end(),
                     [&](const std::string& tag) { return filters.selectedTags.count(tag) != 0; })) {
        return false;
    }
    return filters.searchText.empty() || support::containsIgnoringCase(item.textContent, filters.searchText);
}

}  // namespace

std::vector<const SlideMetadataItem*> filteredItems(const std::vector<SlideMetadataItem>& items,
                                                    const SlideFilters& filters) {
    // The day bounds once per evaluation, not once per slide.
    std::optional<support::Date> from, to;
    if (filters.dateFrom) from = support::startOfDay(*filters.dateFrom);
    if (filters.dateTo) to = support::endOfDay(*filters.dateTo);
    std::vector<const SlideMetadataItem*> shown;
    for (const auto& item : items) {
        if (passes(item, filters, from, to)) shown.push_back(&item);
    }
    std::stable_sort(shown.begin(), shown.end(),
                     [](const SlideMetadataItem* a, const SlideMetadataItem* b) { return a->dateSaved > b->dateSaved; });
    return shown;
}

std::vector<std::string> tagOptions(const std::vector<SlideMetadataItem>& items) {
    std::set<std::string> unique;
    for (const auto& item : items) unique.insert(item.tags.begin(), item.tags.end());
    return {unique.begin(), unique.end()};
}

// --- the pane ---------------------------------------------------------------------------

SlideLibraryTaskpane::SlideLibraryTaskpane(std::shared_ptr<SlideLibraryViewModel> viewModel)
    : thumbnailDir(platform::files().homeDirectory() +
                   "/Library/Containers/com.microsoft.Powerpoint/Data/Library/Application Support/Microsoft/Velmora/"
                   "User/SlideLibrary/Thumbnail"),
      viewModel_(std::move(viewModel)) {}

void SlideLibraryTaskpane::redraw() {
    if (auto view = view_.lock()) view->invalidate();
}

template <typename Edit>
std::function<void()> SlideLibraryTaskpane::change(Edit edit) {
    std::weak_ptr<SlideLibraryTaskpane> weak = weak_from_this();
    return [weak, edit] {
        if (auto self = weak.lock()) {
            edit(*self);
            self->redraw();
        }
    };
}

void SlideLibraryTaskpane::scrollTo(double offset) {
    scrollOffset_ = std::max(0.0, offset);
    redraw();
}

bool SlideLibraryTaskpane::showsPopover(const std::string& id) const {
    auto cell = cells_.find(id);
    return cell != cells_.end() && cell->second.showPopover;
}

bool SlideLibraryTaskpane::isHovering(const std::string& id) const {
    auto cell = cells_.find(id);
    return cell != cells_.end() && cell->second.isHovering;
}

void SlideLibraryTaskpane::hover(const std::string& id, bool inside) {
    auto& cell = cells_[id];
    cell.isHovering = inside;
    const int workItem = ++cell.hoverWorkItem;  // cancels a pending preview
    if (inside) {
        std::weak_ptr<SlideLibraryTaskpane> weak = weak_from_this();
        platform::mainAsyncAfter(previewDelay, [weak, id, workItem] {
            auto self = weak.lock();
            if (!self) return;
            auto& again = self->cells_[id];
            if (again.hoverWorkItem != workItem) return;
            again.showPopover = true;
            self->redraw();
        });
    } else {
        cell.showPopover = false;
    }
    redraw();
}

void SlideLibraryTaskpane::insert(const SlideMetadataItem& item) const {
    runInsertSlideWithArguments({item.fullSlideName, keepSourceFormatting ? "True" : "False"});
}

Node SlideLibraryTaskpane::searchField() {
    std::weak_ptr<SlideLibraryTaskpane> weak = weak_from_this();
    return textField("Search slides...", filters.searchText,
                     [weak](const std::string& text) {
                         if (auto self = weak.lock()) {
                             self->filters.searchText = text;
                             self->redraw();
                         }
                     })
        .padding(Edge::horizontal, defaultPadding);
}

Node SlideLibraryTaskpane::datePicker(const char* label, std::optional<support::Date> SlideFilters::*date,
                                      bool SlideLibraryTaskpane::*showing) {
    const std::optional<support::Date> value = filters.*date;
    std::weak_ptr<SlideLibraryTaskpane> weak = weak_from_this();

    Frame minimum;
    minimum.minWidth = 80;
    Node toggleButton =
        button(text(value ? support::mediumDateText(*value) : "Any").frame(minimum),
               change([showing](SlideLibraryTaskpane& self) { self.*showing = !(self.*showing); }))
            .padding(Edge::horizontal, 2);
    // Choosing a day keeps the time of day of the date on show, as the
    // calendar control does; with no date that is the present moment.
    Node calendar = ui::datePicker(support::dayText(value.value_or(platform::now())),
                                   [weak, date](const std::string& day) {
                                       auto self = weak.lock();
                                       if (!self) return;
                                       const auto current = self->filters.*date;
                                       if (auto chosen = support::dateOnDay(day, current.value_or(platform::now()))) {
                                           self->filters.*date = *chosen;
                                           self->redraw();
                                       }
                                   })
                        .accessibilityId(label)
                        .padding(defaultPadding);
    Nodes parts{text(label).font(subheadlineSize), popover(std::move(toggleButton), std::move(calendar), this->*showing)};
    if (value) {
        parts.push_back(button(symbol("xmark.circle.fill").foregroundColor(colors::secondary),
                               change([date](SlideLibraryTaskpane& self) { self.filters.*date = std::nullopt; }))
                            .accessibilityId(std::string("Clear ") + label));
    }
    return hstack(Alignment::center, 4, std::move(parts));
}

Node SlideLibraryTaskpane::tagSelection(const std::vector<std::string>& options) {
    const auto& selected = filters.selectedTags;
    Nodes items;
    Node clear = button("Clear Selection", nullptr);
    if (!selected.empty()) {
        clear.action = change([](SlideLibraryTaskpane& self) { self.filters.selectedTags.clear(); });
    } else {
        clear.foregroundColor(colors::secondary);  // disabled
    }
    items.push_back(std::move(clear));
    items.push_back(divider());
    for (const auto& tag : options) {
        const bool isSelected = selected.count(tag) != 0;
        Nodes row{text(tag), spacer()};
        if (isSelected) row.push_back(symbol("checkmark.circle.fill").foregroundColor(colors::blue));
        Node item = button(hstack(std::move(row)), change([tag](SlideLibraryTaskpane& self) {
                               auto& set = self.filters.selectedTags;
                               if (!set.erase(tag)) set.insert(tag);
                           }));
        item.isOn = isSelected;
        items.push_back(std::move(item));
    }
    std::string label = "All Tags";
    if (!selected.empty()) {
        label.clear();
        for (const auto& tag : selected) label += (label.empty() ? "" : ", ") + tag;
    }
    // The identity follows the selection, so the menu is rebuilt with fresh marks.
    return menu(label, std::move(items))
        .padding(Edge::vertical, 6)
        .padding(Edge::horizontal, 10)
        .border(colors::secondary, 1)
        .cornerRadius(6)
        .accessibilityId("Tags")
        .id("tags:" + label);
}

Node SlideLibraryTaskpane::cell(const SlideMetadataItem& item) {
    const std::string id = item.id();
    const std::string path = viewModel_->thumbnailPath(item);
    // Read from disk at every evaluation: there is no image cache.
    const bool loads = canLoadImage(path);
    const bool hovering = isHovering(id);

    Node thumbnail = loads ? image(path).makeResizable()
                           : zstack({rectangle().foregroundColor(colors::gray.opacity(0.2)),
                                     text("Missing: " + item.fullSlideName + ".png").font(captionSize)})
                                 .aspectRatio(4.0 / 3.0);
    Frame previewBounds;
    previewBounds.maxWidth = 500;
    previewBounds.maxHeight = 350;
    Node preview = loads ? image(path).makeResizable().padding(defaultPadding).frame(previewBounds)
                         : text("Preview unavailable").padding(defaultPadding);

    std::weak_ptr<SlideLibraryTaskpane> weak = weak_from_this();
    auto model = viewModel_;
    // Hit-testable only while the pointer is on the cell.
    Node remove = button(symbol("xmark.bin")
                             .font(headlineSize, FontWeight::bold)
                             .foregroundColor(colors::white)
                             .padding(6)
                             .background(deleteRed)
                             .cornerRadius((headlineSize + 12) / 2),
                         hovering ? std::function<void()>([model, item] { model->deleteItem(item); }) : nullptr)
                      .accessibilityId("Delete")
                      .opacity(hovering ? 1 : 0)
                      .animation(0.15)
                      .padding(4);

    Node shown = zstack(Alignment::topTrailing,
                        {popover(std::move(thumbnail).cornerRadius(4).shadow(Shadow{}.color, 2), std::move(preview),
                                 showsPopover(id)),
                         std::move(remove)})
                     .accessibilityId(id)
                     .id(id);
    shown.action = [weak, item] {
        if (auto self = weak.lock()) self->insert(item);
    };
    shown.onHover = [weak, id](bool inside) {
        if (auto self = weak.lock()) self->hover(id, inside);
    };
    return shown;
}

// The grid is lazy: it builds cells only for the rows within the view's
// height of the scroll position (and one more each way); rows above and
// below are blank space of their estimated height (4:3 thumbnails).
Node SlideLibraryTaskpane::grid(const std::vector<const SlideMetadataItem*>& shown, double width) {
    const double cellWidth = std::max(1.0, (width - 2 * defaultPadding - gridSpacing) / 2);
    const double rowHeight = cellWidth * 3 / 4 + gridSpacing;
    const std::size_t rows = (shown.size() + 1) / 2;
    std::size_t firstRow = 0, lastRow = rows;
    auto view = view_.lock();
    if (view && view->frame().height > 0) {
        // A list that shrank under a scrolled grid shows its last rows, not blank space.
        scrollOffset_ = std::min(scrollOffset_, std::max(0.0, static_cast<double>(rows) * rowHeight - view->frame().height));
        const auto above = static_cast<long long>(std::floor(scrollOffset_ / rowHeight)) - overscanRows;
        const auto below = static_cast<long long>(std::ceil((scrollOffset_ + view->frame().height) / rowHeight)) + overscanRows;
        firstRow = static_cast<std::size_t>(std::clamp<long long>(above, 0, static_cast<long long>(rows)));
        lastRow = static_cast<std::size_t>(std::clamp<long long>(below, static_cast<long long>(firstRow),
                                                                  static_cast<long long>(rows)));
    }
    built_ = {firstRow * 2, std::min(shown.size(), lastRow * 2)};

    Nodes cells;
    for (std::size_t i = built_.first; i < built_.second; ++i) cells.push_back(cell(*shown[i]));
    Nodes column;
    if (firstRow > 0) column.push_back(rectangle().foregroundColor(colors::clear).frameHeight(firstRow * rowHeight));
    column.push_back(ui::grid(2, gridSpacing, std::move(cells)));
    if (lastRow < rows) {
        column.push_back(rectangle().foregroundColor(colors::clear).frameHeight((rows - lastRow) * rowHeight));
    }
    Node scrolled = scroll(vstack(Alignment::leading, 0, std::move(column)).padding(defaultPadding));
    std::weak_ptr<SlideLibraryTaskpane> weak = weak_from_this();
    scrolled.onScroll = [weak](double offset) {
        if (auto self = weak.lock()) self->scrollTo(offset);
    };
    return scrolled;
}

Node SlideLibraryTaskpane::body(double width) {
    const auto items = viewModel_->items.snapshot();
    const auto shown = filteredItems(*items, filters);

    Frame minimum;
    minimum.minWidth = 400;
    minimum.minHeight = 400;
    return vstack(Alignment::leading, 7,
                  {searchField(),
                   hstack(Alignment::center, 10,
                          {datePicker("From:", &SlideFilters::dateFrom, &SlideLibraryTaskpane::showingFromPicker_),
                           datePicker("To:", &SlideFilters::dateTo, &SlideLibraryTaskpane::showingToPicker_)})
                       .padding(Edge::horizontal, defaultPadding),
                   hstack({text("Tags:").font(subheadlineSize), tagSelection(tagOptions(*items)).frameWidth(200)})
                       .padding(Edge::horizontal, defaultPadding),
                   toggle("Keep Source Formatting", keepSourceFormatting,
                          change([](SlideLibraryTaskpane& self) { self.keepSourceFormatting = !self.keepSourceFormatting; }))
                       .padding(Edge::horizontal, defaultPadding),
                   grid(shown, width)})
        .frame(minimum);
}

std::shared_ptr<ui::HostingView> makeSlideLibraryHostingView(const std::shared_ptr<SlideLibraryViewModel>& model) {
    auto pane = std::make_shared<SlideLibraryTaskpane>(model);
    std::shared_ptr<ui::HostingView> hosting =
        std::make_shared<ClickThroughHostingView>([pane](double width) { return pane->body(width); });
    pane->attach(hosting);
    ui::invalidateOnChange(hosting, model->items);
    return hosting;
}

}  // namespace velmora
