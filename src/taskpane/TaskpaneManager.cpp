#include "taskpane/TaskpaneManager.h"

#include <algorithm>
#include <atomic>

#include "keyboard/KeyText.h"
#include "keyboard/ModifierKeyState.h"
#include "platform/Platform.h"
#include "taskpane/PaneAccess.h"

namespace velmora {

namespace {

// The unified monitor's token; non-zero is the only guard against a second
// installation. Never removed.
std::atomic<platform::MonitorToken> unifiedKeyEventMonitor{0};

}  // namespace

void TaskpaneManager::toggleTaskpane(const std::string& title, ContentLoader contentLoader) {
    toggleTaskpane(title, 250, std::move(contentLoader));
}

void TaskpaneManager::toggleTaskpane(const std::string& title, double desiredWidth, ContentLoader contentLoader) {
    // First, so the modifier monitor is there even when the toggle stops.
    initializeKeyEventMonitor();

    auto window = activeWindow();
    if (!window) return;
    if (window->className() != documentWindowClass) return;
    auto splitView = findSplitView(window);
    if (!splitView) return;

    if (auto existing = taskpaneView(splitView, title)) {
        existing->removeFromSuperview();
        return;
    }

    const double minWidth = std::max(84.0, desiredWidth);
    auto pane = createTaskpaneView(title, minWidth, desiredWidth);
    splitView->addSubview(pane);
    setupConstraints(pane, splitView);
    if (contentLoader) {
        contentLoader([pane](std::shared_ptr<platform::View> view) { pane->setContentView(view); });
    }
    updateLayout(splitView, pane);
}

void TaskpaneManager::initializeKeyEventMonitor() { setupUnifiedKeyEventMonitorIfNeeded(); }

std::shared_ptr<platform::Window> TaskpaneManager::activeWindow() {
    auto& views = platform::views();
    if (auto key = views.keyWindow()) return key;
    for (const auto& window : views.windows()) {
        if (window && window->className() == documentWindowClass) return window;
    }
    return nullptr;
}

std::shared_ptr<platform::View> TaskpaneManager::findSplitView(const std::shared_ptr<platform::Window>& window) {
    auto content = window->contentView();
    if (!content) return nullptr;
    if (auto split = findSubviewRecursively(content, splitViewClass)) return split;
    // The fallback searches from the content view too, not from its parent.
    auto themeFrame = findSubviewRecursively(content, themeFrameClass);
    if (!themeFrame) return nullptr;
    for (const auto& child : themeFrame->subviews()) {
        if (child && child->className() == splitViewClass) return child;
    }
    return nullptr;
}

std::shared_ptr<platform::View> TaskpaneManager::findSubviewRecursively(const std::shared_ptr<platform::View>& root,
                                                                        const std::string& className) {
    if (!root) return nullptr;
    if (root->className() == className) return root;
    for (const auto& child : root->subviews()) {
        if (auto hit = findSubviewRecursively(child, className)) return hit;
    }
    return nullptr;
}

std::shared_ptr<platform::View> TaskpaneManager::taskpaneView(const std::shared_ptr<platform::View>& splitView,
                                                              const std::string& title) {
    for (const auto& subview : splitView->subviews()) {
        if (findTextField(subview, title)) return subview;
    }
    return nullptr;
}

std::shared_ptr<platform::View> TaskpaneManager::findTextField(const std::shared_ptr<platform::View>& root,
                                                               const std::string& text) {
    if (!root) return nullptr;
    if (auto value = root->textFieldValue(); value && *value == text) return root;
    for (const auto& child : root->subviews()) {
        if (auto hit = findTextField(child, text)) return hit;
    }
    return nullptr;
}

std::shared_ptr<TaskpaneView> TaskpaneManager::createTaskpaneView(const std::string& title, double minWidth,
                                                                  double initialWidth) {
    auto pane = TaskpaneView::make(title, minWidth);
    auto constraint = std::make_shared<LayoutConstraint>();
    constraint->attribute = LayoutConstraint::Attribute::width;
    constraint->constant = initialWidth;
    pane->widthConstraint = constraint;
    constraint->priority = 750;
    constraint->isActive = true;
    pane->applyWidthConstraint();
    if (pane->layer) pane->layer->zPosition = 999;
    platform::paneCreated(pane, makePaneAccess(pane));
    return pane;
}

void TaskpaneManager::setupConstraints(const std::shared_ptr<TaskpaneView>& pane,
                                       const std::shared_ptr<platform::View>& splitView) {
    pane->translatesAutoresizingMaskIntoConstraints = false;
    LayoutConstraint top{LayoutConstraint::Attribute::top, splitView, 0, 1000, true};
    LayoutConstraint bottom{LayoutConstraint::Attribute::bottom, splitView, 0, 1000, true};
    pane->constraints.push_back(top);
    pane->constraints.push_back(bottom);
    // Solved at once: the pane spans the split view's height. The split
    // view places it horizontally when it lays out (the host's own layout,
    // which keeps the width the constraint gave).
    auto f = pane->frame();
    f.y = 0;
    f.height = splitView->frame().height;
    pane->setFrame(f);
}

void TaskpaneManager::updateLayout(const std::shared_ptr<platform::View>& splitView,
                                   const std::shared_ptr<TaskpaneView>& pane) {
    platform::mainAsync([splitView, pane] {
        splitView->setNeedsLayout();
        splitView->layout();
        platform::print("Taskpane: Final task view frame: " + platform::describe(pane->frame()));
    });
}

void TaskpaneManager::setupUnifiedKeyEventMonitorIfNeeded() {
    if (unifiedKeyEventMonitor.load() != 0) return;
    const std::uint64_t mask = 0x1000 | 0x400;  // flags changed, key down
    auto token = platform::addLocalMonitor(mask, [](const platform::Event& event) {
        platform::mainAsync([event] {
            if (event.type != platform::EventType::flagsChanged) return;
            const ModifierFlags flags{event.modifierFlags};
            globalModifierKeyState().modifierFlags.set(flags);
            platform::print("Velmora Shortcuts: Modifier keys: " + modifierFlagsDescription(flags));
        });
        return std::optional<platform::Event>(event);
    });
    unifiedKeyEventMonitor.store(token);
}

}  // namespace velmora
