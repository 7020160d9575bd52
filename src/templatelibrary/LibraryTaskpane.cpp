#include "templatelibrary/LibraryTaskpane.h"

#include "bridge/Exports.h"
#include "platform/Platform.h"

namespace velmora {

namespace {

using namespace ui;

// Redraws the container on each write of `value` while `tab` is on show.
template <typename T>
void redrawOnChange(const std::weak_ptr<LibraryTaskpane>& weak, const std::weak_ptr<HostingView>& view,
                    support::Published<T>& value, LibraryTab tab) {
    auto token = std::make_shared<typename support::Published<T>::Token>(0);
    *token = value.observe([weak, view, token, &value, tab](const T&) {
        auto pane = weak.lock();
        auto hosting = view.lock();
        if (!pane || !hosting) {
            value.removeObserver(*token);
        } else if (pane->selectedTab() == tab) {
            hosting->invalidate();
        }
    });
}

}  // namespace

const char* libraryTabLabel(LibraryTab tab) {
    return tab == LibraryTab::savedSlides ? "Saved Slides" : "Templates";
}

void LibraryTaskpane::attach(const std::weak_ptr<ui::HostingView>& view) { view_ = view; }

void LibraryTaskpane::redraw() {
    if (auto view = view_.lock()) view->invalidate();
}

void LibraryTaskpane::select(LibraryTab tab) {
    if (tab == selectedTab_) return;
    selectedTab_ = tab;
    // The pane that is left goes with all its view state.
    slides_.reset();
    templates_.reset();
    redraw();
}

void LibraryTaskpane::ensurePane() {
    if (selectedTab_ == LibraryTab::templates && !templates_) {
        auto& model = TemplateLibraryContentManager::viewModel();
        templates_ = std::make_shared<TemplateLibraryTaskpane>(model);
        templates_->attach(view_);
        if (!observesTemplates_) {
            observesTemplates_ = true;
            redrawOnChange(weak_from_this(), view_, model->items, LibraryTab::templates);
            redrawOnChange(weak_from_this(), view_, model->isLoading, LibraryTab::templates);
            redrawOnChange(weak_from_this(), view_, model->categories, LibraryTab::templates);
            redrawOnChange(weak_from_this(), view_, model->packs, LibraryTab::templates);
        }
    }
    if (selectedTab_ == LibraryTab::savedSlides && !slides_) {
        auto& model = SlideLibraryContentManager::viewModel();
        slides_ = std::make_shared<SlideLibraryTaskpane>(model);
        slides_->attach(view_);
        if (!observesSlides_) {
            observesSlides_ = true;
            redrawOnChange(weak_from_this(), view_, model->items, LibraryTab::savedSlides);
        }
    }
}

Node LibraryTaskpane::body(double width) {
    ensurePane();
    std::weak_ptr<LibraryTaskpane> weak = weak_from_this();
    Nodes segments;
    for (LibraryTab tab : {LibraryTab::savedSlides, LibraryTab::templates}) {
        Node segment = button(libraryTabLabel(tab), [weak, tab] {
            if (auto self = weak.lock()) self->select(tab);
        });
        segment.isOn = tab == selectedTab_;
        segments.push_back(std::move(segment));
    }
    Node tabs = picker("", std::move(segments)).padding(Edge::horizontal | Edge::top, defaultPadding);
    tabs.segmented = true;

    Frame minimum;
    minimum.minWidth = 400;
    minimum.minHeight = 400;
    Node content = selectedTab_ == LibraryTab::templates ? templates_->body(width) : slides_->body(width);
    return vstack(Alignment::leading, std::nullopt, {std::move(tabs), divider(), std::move(content)}).frame(minimum);
}

std::shared_ptr<ui::HostingView>& LibraryContentManager::hostingController() {
    static auto& view = *new std::shared_ptr<ui::HostingView>();
    return view;
}

void LibraryContentManager::loadLibraryView(ContentCompletion completion) {
    auto pane = std::make_shared<LibraryTaskpane>();
    auto hosting = ui::HostingView::make([pane](double width) { return pane->body(width); });
    pane->attach(hosting);
    // The new view is in no window yet, so there is no first responder to set.
    hostingController() = hosting;
    completion(hosting);
}

// Called by the macro project on the main thread.
void openSlideLibraryTaskpane() {
    platform::nslog("Slide Library: 🟢 Dylib loaded successfully");
    TaskpaneManager::toggleTaskpane("Slide Library", 250, LibraryContentManager::loadLibraryView);
}

}  // namespace velmora
