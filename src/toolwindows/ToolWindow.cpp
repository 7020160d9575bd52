#include "toolwindows/ToolWindow.h"

#include "platform/Platform.h"
#include "support/Text.h"
#include "taskpane/PaneAccess.h"
#include "ui/HtmlRenderer.h"

namespace velmora {

namespace {

// The title bar a titled window draws above its content.
constexpr double titleBarHeight = 28;

std::string px(double value) { return support::swiftDescription(value) + "px"; }

}  // namespace

std::shared_ptr<ToolWindowController> ToolWindowController::make(const ToolWindowSpec& spec, ui::Body body) {
    std::shared_ptr<ToolWindowController> controller(new ToolWindowController());
    controller->hosting_ = ui::HostingView::make(std::move(body));
    auto window = platform::views().makeWindow(spec.contentSize, platform::WindowStyle{true, true});
    controller->window_ = window;
    window->setTitlebarAppearsTransparent(true);
    window->setTitle(spec.title);
    window->setOpaque(false);
    window->setBackgroundAlpha(spec.backgroundAlpha);
    window->setLevel(spec.level);

    auto& hosting = controller->hosting_;
    window->setContentView(hosting);
    hosting->setFrame({0, 0, spec.contentSize.width, spec.contentSize.height});
    hosting->layout();
    const auto fitting = hosting->fittingSize();
    const platform::Size size{fitting.width, fitting.height + 20};
    window->setContentSize(size);
    hosting->setFrame({0, 0, size.width, size.height});
    window->center();

    // Escape closes the window while it is on screen and goes no further.
    std::weak_ptr<ToolWindowController> weak = controller;
    controller->eventMonitor_ =
        platform::addLocalMonitor(platform::maskFor(platform::EventType::keyDown),
                                  [weak](const platform::Event& event) -> std::optional<platform::Event> {
                                      if (event.keyCode != escapeKeyCode) return event;
                                      auto alive = weak.lock();
                                      if (!alive || !alive->hasVisibleWindow()) return event;
                                      alive->close();
                                      return std::nullopt;
                                  });

    const double alpha = spec.backgroundAlpha;
    std::weak_ptr<platform::ToolWindow> weakWindow = window;
    std::weak_ptr<ui::HostingView> weakHosting = hosting;
    platform::PaneAccess access = makeContentAccess([weakHosting] { return weakHosting.lock(); });
    access.describe = [weakWindow, weakHosting, alpha] {
        auto w = weakWindow.lock();
        auto h = weakHosting.lock();
        return w && h ? describeWindow(*w, alpha, *h) : std::vector<std::string>{};
    };
    access.html = [weakWindow, weakHosting, alpha] {
        auto w = weakWindow.lock();
        auto h = weakHosting.lock();
        return w && h ? windowHtml(*w, alpha, *h) : std::string{};
    };
    access.pressClose = [weakWindow] {
        if (auto w = weakWindow.lock()) platform::guarded("close box", [&] { w->close(); });
    };
    platform::windowCreated(window, std::move(access));
    return controller;
}

ToolWindowController::~ToolWindowController() {
    if (eventMonitor_ != 0) platform::guarded("removing a monitor", [&] { platform::events().removeMonitor(eventMonitor_); });
}

void ToolWindowController::showWindow() {
    if (window_) window_->makeKeyAndOrderFront();
}

void ToolWindowController::close() {
    if (window_) window_->close();
}

void presentToolWindow(std::shared_ptr<ToolWindowController>& slot,
                       const std::function<std::shared_ptr<ToolWindowController>()>& make) {
    platform::views().setActivationPolicy(platform::ActivationPolicy::regular);
    if (slot && slot->hasVisibleWindow()) slot->close();
    slot = make();
    slot->showWindow();
    platform::views().activateIgnoringOtherApps(true);
    slot->window()->makeKeyAndOrderFront();
}

void closeKeyWindow() {
    if (auto window = std::dynamic_pointer_cast<platform::ToolWindow>(platform::views().keyWindow())) window->close();
}

std::vector<std::string> describeWindow(const platform::ToolWindow& window, double backgroundAlpha,
                                        ui::HostingView& content) {
    const auto size = window.contentSize();
    std::vector<std::string> lines{"ToolWindow " + support::quoted(window.title()) + " " +
                                   support::swiftDescription(size.width) + "x" + support::swiftDescription(size.height) +
                                   " level " + std::to_string(window.level()) + " alpha " +
                                   support::swiftDescription(backgroundAlpha) +
                                   (window.isVisible() ? " visible" : " closed")};
    for (const auto& line : ui::describeTree(content.tree())) lines.push_back("  " + line);
    return lines;
}

std::string windowHtml(const platform::ToolWindow& window, double backgroundAlpha, ui::HostingView& content) {
    const auto size = window.contentSize();
    const std::string alpha = support::formatFixed(backgroundAlpha, 3);
    return "<style>" + ui::htmlStyleSheet() +
           ".v-window{position:relative;border-radius:10px;overflow:hidden;box-shadow:0 12px 40px rgba(0,0,0,.35),"
           "0 0 0 0.5px rgba(0,0,0,.25);}\n"
           ".v-window-title{height:" + px(titleBarHeight) + ";display:flex;align-items:center;justify-content:center;"
           "position:relative;font-size:13px;font-weight:600;color:rgba(0,0,0,.85);}\n"
           ".v-window-close{position:absolute;left:10px;top:8px;width:12px;height:12px;border-radius:50%;"
           "background:#ff5f57;border:0.5px solid rgba(0,0,0,.2);}\n"
           "</style><div class=\"velmora-root v-window\" data-window-title=\"" + support::htmlEscaped(window.title()) +
           "\" style=\"width:" + px(size.width) + ";height:" + px(size.height + titleBarHeight) +
           ";background:rgba(236,236,236," + alpha + ")\"><div class=\"v-window-title\" data-part=\"titleBar\">"
           "<span class=\"v-window-close\" data-part=\"closeBox\"></span>" + support::htmlEscaped(window.title()) +
           "</div><div class=\"v-hosting\" style=\"position:relative;width:" + px(size.width) + ";height:" +
           px(size.height) + "\">" + ui::renderNode(content.tree()) + "</div></div>";
}

}  // namespace velmora
