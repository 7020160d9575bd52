#include "templatelibrary/TemplateLibraryPane.h"

#include <algorithm>

#include "bridge/Exports.h"
#include "bridge/MacroRunner.h"
#include "platform/Platform.h"
#include "support/Text.h"
#include "ui/Images.h"

namespace velmora {

namespace {

using namespace ui;

bool contains(const std::vector<std::string>& list, const std::string& value) {
    return std::find(list.begin(), list.end(), value) != list.end();
}

Node menuPicker(const std::vector<std::string>& values, const std::string& chosen,
                std::function<void(const std::string&)> pick) {
    Nodes items;
    for (const auto& value : values) {
        Node item = button(value, [pick, value] { pick(value); });
        item.isOn = value == chosen;
        items.push_back(std::move(item));
    }
    return picker("", std::move(items));
}

Node missingImage(const char* message) {
    return zstack({rectangle().foregroundColor(colors::gray.opacity(0.2)), text(message).font(captionSize)})
        .aspectRatio(4.0 / 3.0);
}

Node loadingOverlay() {
    return zstack({rectangle().foregroundColor(colors::white.opacity(0.8)),
                   symbol("progress.indicator").foregroundColor(colors::red).scale(1.8)});
}

}  // namespace

// --- filters ---------------------------------------------------------------------

void TemplateFilters::selectCategory(const std::string& value) {
    category = value;
    if (value != allCategories) pack = allPacks;
}

void TemplateFilters::selectPack(const std::string& value) {
    pack = value;
    if (value != allPacks) category = allCategories;
}

void TemplateFilters::correct(const std::vector<std::string>& categories, const std::vector<std::string>& packs) {
    if (!contains(categories, category)) category = categories.empty() ? allCategories : categories.front();
    if (!contains(packs, pack)) pack = packs.empty() ? allPacks : packs.front();
}

std::vector<TemplateMetadataItem> filteredItems(const std::vector<TemplateMetadataItem>& items,
                                                const TemplateFilters& filters) {
    std::vector<TemplateMetadataItem> shown;
    for (const auto& item : items) {
        if (filters.category != allCategories) {
            if (contains(item.cat, filters.category)) shown.push_back(item);
        } else if (filters.pack != allPacks) {
            if (contains(item.pack, filters.pack)) shown.push_back(item);
        } else {
            shown.push_back(item);
        }
    }
    return shown;
}

// --- the pane ----------------------------------------------------------------------

bool& TemplateLibraryTaskpane::hasActivatedPreview() {
    static bool activated = false;
    return activated;
}

bool TemplateLibraryTaskpane::showsPopover(const std::string& id) const {
    auto cell = cells_.find(id);
    return cell != cells_.end() && cell->second.showPopover;
}

void TemplateLibraryTaskpane::setPopover(const std::string& id, bool shown) {
    cells_[id].showPopover = shown;
    redraw();
}

void TemplateLibraryTaskpane::hover(const std::string& id, bool inside) {
    auto& cell = cells_[id];
    const int generation = ++cell.hoverGeneration;  // a later move cancels the pending preview
    if (!inside) {
        setPopover(id, false);
        return;
    }
    std::weak_ptr<TemplateLibraryTaskpane> weak = weak_from_this();
    platform::mainAsyncAfter(previewDelay, [weak, id, generation] {
        auto self = weak.lock();
        if (self && self->cells_[id].hoverGeneration == generation) self->setPopover(id, true);
    });
}

void TemplateLibraryTaskpane::cellAppeared(const std::string& id) {
    if (hasActivatedPreview()) return;
    hasActivatedPreview() = true;
    std::weak_ptr<TemplateLibraryTaskpane> weak = weak_from_this();
    platform::mainAsyncAfter(previewDelay, [weak, id] {
        auto self = weak.lock();
        if (!self) return;
        self->setPopover(id, true);
        platform::mainAsyncAfter(warmUpFlash, [weak, id] {
            if (auto again = weak.lock()) again->setPopover(id, false);
        });
    });
}

void TemplateLibraryTaskpane::tap(const TemplateMetadataItem& item) const {
    auto model = viewModel_;
    const bool keep = keepSourceFormatting;
    const std::string id = item.id;
    model->downloadSlide(item, [model, keep, id](std::optional<std::string> local, std::string error) {
        if (local) {
            runInsertTemplatesWithArguments({*local, keep ? "True" : "False"});
        } else {
            platform::print("❌ Failed to download slide: " + error);
        }
        // A failed download counts as a use all the same.
        platform::mainAsync([model, id] { model->trackTemplateUsage(id); });
    });
}

bool TemplateLibraryTaskpane::thumbnailLoads(const std::string& path) {
    auto [entry, isNew] = thumbnails_.try_emplace(path, false);
    if (isNew) entry->second = canLoadImage(path);
    return entry->second;
}

void TemplateLibraryTaskpane::redraw() {
    if (auto view = view_.lock()) view->invalidate();
}

Node TemplateLibraryTaskpane::body(double) {
    std::weak_ptr<TemplateLibraryTaskpane> weak = weak_from_this();
    auto change = [weak](auto&& edit) {
        return [weak, edit](auto&&... arguments) {
            if (auto self = weak.lock()) {
                edit(*self, arguments...);
                self->redraw();
            }
        };
    };
    const auto categories = viewModel_->categories.get();
    const auto packs = viewModel_->packs.get();

    Node filterRow =
        hstack(Alignment::center, 5,
               {menuPicker(categories, filters.category,
                           change([](TemplateLibraryTaskpane& s, const std::string& v) { s.filters.selectCategory(v); })),
                menuPicker(packs, filters.pack,
                           change([](TemplateLibraryTaskpane& s, const std::string& v) { s.filters.selectPack(v); }))})
            .padding(Edge::horizontal, defaultPadding)
            .onAppearDo([weak, categories, packs] {
                if (auto self = weak.lock()) {
                    const auto before = self->filters;
                    self->filters.correct(categories, packs);
                    if (before.category != self->filters.category || before.pack != self->filters.pack) self->redraw();
                }
            });

    Nodes cells;
    for (const auto& item : filteredItems(viewModel_->items.get(), filters)) {
        const std::string id = item.id;
        Node thumbnail = thumbnailLoads(item.thumb) ? image(item.thumb).makeResizable() : missingImage("Missing image");
        Frame previewBounds;
        previewBounds.maxWidth = 500;
        previewBounds.maxHeight = 350;
        Node preview = thumbnailLoads(item.thumb)
                           ? image(item.thumb).makeResizable().padding(defaultPadding).frame(previewBounds)
                           : text("Preview unavailable").padding(defaultPadding);
        Node cell = popover(std::move(thumbnail).cornerRadius(4).shadow(Shadow{}.color, 2), std::move(preview),
                            showsPopover(id))
                        .accessibilityId(id)
                        .id(id);
        cell.action = [weak, item] {
            if (auto self = weak.lock()) self->tap(item);
        };
        cell.onHover = [weak, id](bool inside) {
            if (auto self = weak.lock()) self->hover(id, inside);
        };
        cell.onAppear = [weak, id] {
            if (auto self = weak.lock()) self->cellAppeared(id);
        };
        cells.push_back(std::move(cell));
    }

    Node request = button(hstack(Alignment::center, 4,
                                 {text("Didn’t find the slide you need? Request it"), symbol("arrow.right.circle")})
                              .font(12, FontWeight::medium)
                              .padding(10)
                              .background(colors::white)
                              .foregroundColor(colors::black)
                              .cornerRadius(8),
                          [] { platform::views().openURL(platform::config().templateRequestPageURL()); });

    Frame minimum;
    minimum.minWidth = 400;
    minimum.minHeight = 400;
    Nodes layers;
    layers.push_back(
        vstack(Alignment::leading, 10,
               {std::move(filterRow),
                toggle("Keep Source Formatting", keepSourceFormatting,
                       change([](TemplateLibraryTaskpane& s) { s.keepSourceFormatting = !s.keepSourceFormatting; }))
                    .padding(Edge::horizontal, defaultPadding),
                scroll(grid(2, 10, std::move(cells))),
                hstack({spacer(), std::move(request), spacer()}).padding(Edge::bottom, defaultPadding)})
            .frame(minimum));
    if (viewModel_->isLoading.get()) layers.push_back(loadingOverlay());
    return zstack(std::move(layers));
}

// --- loading -------------------------------------------------------------------------

std::shared_ptr<ui::HostingView>& TemplateLibraryContentManager::hostingController() {
    static auto& view = *new std::shared_ptr<ui::HostingView>();
    return view;
}

std::shared_ptr<TemplateLibraryViewModel>& TemplateLibraryContentManager::viewModel() {
    // Lives as long as the process, as the sync it started may.
    static auto& model = *new std::shared_ptr<TemplateLibraryViewModel>(TemplateLibraryViewModel::make());
    return model;
}

void TemplateLibraryContentManager::loadTemplateLibraryView(ContentCompletion completion) {
    auto model = viewModel();
    auto pane = std::make_shared<TemplateLibraryTaskpane>(model);
    auto hosting = ui::HostingView::make([pane](double width) { return pane->body(width); });
    pane->attach(hosting);
    ui::invalidateOnChange(hosting, model->items);
    ui::invalidateOnChange(hosting, model->isLoading);
    ui::invalidateOnChange(hosting, model->categories);
    ui::invalidateOnChange(hosting, model->packs);
    hostingController() = hosting;
    completion(hosting);
}

// Called by the macro project on the main thread.
void openTemplateLibraryTaskpane() {
    platform::nslog("Slide Library: 🟢 Dylib loaded successfully");
    TaskpaneManager::toggleTaskpane("Templates", 250, TemplateLibraryContentManager::loadTemplateLibraryView);
}

}  // namespace velmora
