#include "taskpane/TaskpaneView.h"

#include <algorithm>

#include "platform/Platform.h"
#include "support/Text.h"
#include "ui/HostingView.h"

namespace velmora {

namespace {

std::string px(double value) { return support::swiftDescription(value) + "px"; }

std::string css(const ui::Color& c) {
    auto channel = [](double v) { return std::to_string(static_cast<int>(std::clamp(v, 0.0, 1.0) * 255 + 0.5)); };
    return "rgba(" + channel(c.red) + "," + channel(c.green) + "," + channel(c.blue) + "," +
           support::formatFixed(c.alpha, 3) + ")";
}

// The platform's system colours in the light appearance.
constexpr ui::Color windowBackgroundColor = ui::Color::rgb255(236, 236, 236);
constexpr ui::Color controlBackgroundColor = ui::colors::white;
constexpr ui::Color controlTextColor = ui::colors::black.opacity(0.85);

// Sizes the platform gives the label and the inline button by their text.
constexpr double labelHeight = 17;
constexpr double closeButtonWidth = 20;
constexpr double closeButtonHeight = 16;

}  // namespace

ui::Color NamedColor::resolve() const {
    if (auto host = platform::namedColor(name)) return {(*host)[0], (*host)[1], (*host)[2], (*host)[3]};
    return fallback;
}

// --- parts --------------------------------------------------------------------------

std::string TaskpaneViewPart::htmlStyle() const {
    std::string style;
    if (layer && layerBackground) style += "background:" + css(layerBackground->resolve()) + ";";
    if (textColor) style += "color:" + css(textColor->resolve()) + ";";
    if (font) style += "font-size:" + px(font->size) + ";font-weight:600;";
    return style;
}

std::string TaskpaneViewPart::htmlAttributes() const {
    std::string attributes = " data-part=\"" + support::htmlEscaped(role_) + "\"";
    if (!accessibilityLabel.empty()) attributes += " aria-label=\"" + support::htmlEscaped(accessibilityLabel) + "\"";
    return attributes;
}

std::string TaskpaneButton::htmlAttributes() const {
    return " data-part=\"closeButton\" data-label=\"" + support::htmlEscaped(title) + "\" role=\"button\"";
}

std::string TaskpaneButton::htmlContent() const {
    return "<span style=\"display:flex;align-items:center;justify-content:center;width:100%;height:100%;"
           "font-size:12px;cursor:pointer\">" +
           support::htmlEscaped(title) + "</span>";
}

void TaskpaneButton::performClick() const {
    if (auto run = action) run();
}

// --- resize handle ------------------------------------------------------------------

TaskpaneResizeHandle::TaskpaneResizeHandle(platform::Rect frame, bool layerBacked)
    : View(frame), layerBacked(layerBacked) {
    // Made with empty bounds, so this rectangle covers nothing; the hand
    // cursors of resetCursorRects are the ones in effect.
    cursorRects.push_back({platform::Rect{0, 0, frame.width, frame.height}, "resizeLeftRightCursor"});
}

std::string TaskpaneResizeHandle::htmlStyle() const { return "cursor:grab;"; }

std::string TaskpaneResizeHandle::htmlAttributes() const { return " data-part=\"resizeHandle\""; }

void TaskpaneResizeHandle::resetCursorRects() {
    const auto f = frame();
    cursorRects.push_back({platform::Rect{0, 0, f.width, f.height}, "openHandCursor"});
}

Point TaskpaneResizeHandle::convertToWindow(Point local) const {
    Point at = local;
    const platform::View* view = this;
    std::shared_ptr<platform::View> holder;
    while (view) {
        const auto f = view->frame();
        at.x += f.x;
        at.y += f.y;
        holder = view->superview();
        view = holder.get();
    }
    return at;
}

Point TaskpaneResizeHandle::convertFromWindow(Point inWindow) const {
    const Point origin = convertToWindow({0, 0});
    return {inWindow.x - origin.x, inWindow.y - origin.y};
}

void TaskpaneResizeHandle::mouseDown(Point locationInWindow) {
    cursorStack.push_back("closedHandCursor");
    initialLocation = convertFromWindow(locationInWindow);
}

void TaskpaneResizeHandle::mouseDragged(Point locationInWindow) {
    const Point current = convertFromWindow(locationInWindow);
    const double deltaX = current.x - initialLocation.x;
    initialLocation = current;
    // The handle is on the left edge: moving left widens the pane.
    if (auto handler = resizeHandler) handler(-deltaX * 0.5);
}

void TaskpaneResizeHandle::mouseUp() {
    if (!cursorStack.empty()) cursorStack.pop_back();
}

// --- pane -----------------------------------------------------------------------------

TaskpaneView::TaskpaneView(Token, std::string title, double minWidth)
    : paneTitle(std::move(title)),
      minWidth(minWidth),
      containerView(std::make_shared<TaskpaneViewPart>("containerView")),
      titleBar(std::make_shared<TaskpaneViewPart>("titleBar")),
      titleLabel(platform::views().makeTextField(paneTitle)),
      closeButton(std::make_shared<TaskpaneButton>("\u2715", nullptr)),
      resizeHandle(std::make_shared<TaskpaneResizeHandle>(platform::Rect{})),
      contentContainer(std::make_shared<TaskpaneViewPart>("contentContainer")) {}

std::shared_ptr<TaskpaneView> TaskpaneView::make(const std::string& title, double minWidth) {
    auto pane = std::make_shared<TaskpaneView>(Token{}, title, minWidth);
    pane->setupView();
    return pane;
}

std::shared_ptr<TaskpaneView> TaskpaneView::makeFromCoder() { return make("Velmora", 250); }

void TaskpaneView::setupView() {
    identifier = "CUIColorView";
    accessibilityRole = "AXSplitGroup";
    accessibilityTitle = "Velmora Pane";

    containerView->layer = Layer{};
    containerView->layerBackground = NamedColor{"CUIWindowBackgroundColor", "windowBackgroundColor", windowBackgroundColor};
    containerView->isAccessibilityElement = true;
    containerView->accessibilityRole = "AXGroup";
    containerView->accessibilityLabel = "Taskpane Container";

    titleBar->layer = Layer{};
    titleBar->layerBackground =
        NamedColor{"CUIGroupTitleBackgroundColor", "controlBackgroundColor", controlBackgroundColor};
    // The label is the host's text field; its colour and font ride on the bar.
    titleBar->textColor = NamedColor{"CUIWindowTitleColor", "controlTextColor", controlTextColor};
    titleBar->font = titleFont;

    std::weak_ptr<TaskpaneView> weak = std::static_pointer_cast<TaskpaneView>(shared_from_this());
    closeButton->action = [weak] {
        if (auto pane = weak.lock()) pane->closeTaskpane();
    };
    resizeHandle->resizeHandler = [weak](double change) {
        auto pane = weak.lock();
        if (!pane || !pane->widthConstraint) return;
        pane->widthConstraint->constant = std::max(pane->minWidth, pane->widthConstraint->constant + change);
        pane->applyWidthConstraint();
        pane->setNeedsLayout();
    };

    translatesAutoresizingMaskIntoConstraints = false;
    containerView->translatesAutoresizingMaskIntoConstraints = false;
    titleBar->translatesAutoresizingMaskIntoConstraints = false;
    closeButton->translatesAutoresizingMaskIntoConstraints = false;
    resizeHandle->translatesAutoresizingMaskIntoConstraints = false;
    contentContainer->translatesAutoresizingMaskIntoConstraints = false;

    addSubview(containerView);
    containerView->addSubview(titleBar);
    containerView->addSubview(contentContainer);
    // Added last, so the handle lies above the content.
    containerView->addSubview(resizeHandle);
    titleBar->addSubview(titleLabel);
    titleBar->addSubview(closeButton);
    layoutParts();
}

void TaskpaneView::setFrame(const platform::Rect& frame) {
    View::setFrame(frame);
    layoutParts();
}

void TaskpaneView::layoutParts() {
    const auto f = frame();
    const double width = f.width, height = f.height;
    containerView->setFrame({0, 0, width, height});
    titleBar->setFrame({0, 0, width, titleBarHeight});
    const double closeX = width - 10 - closeButtonWidth;
    closeButton->setFrame({closeX, (titleBarHeight - closeButtonHeight) / 2, closeButtonWidth, closeButtonHeight});
    titleLabel->setFrame({10, (titleBarHeight - labelHeight) / 2, std::max(0.0, closeX - 8 - 10), labelHeight});
    // The content reaches 5 points up into the title bar.
    const double contentTop = titleBarHeight - contentOverlap;
    contentContainer->setFrame({0, contentTop, width, std::max(0.0, height - contentTop)});
    resizeHandle->setFrame({0, 0, handleWidth, height});
    const auto inner = contentContainer->frame();
    for (const auto& content : contentContainer->subviews()) content->setFrame({0, 0, inner.width, inner.height});
}

std::string TaskpaneView::htmlAttributes() const {
    return " data-pane-title=\"" + support::htmlEscaped(paneTitle) + "\" id=\"" + support::htmlEscaped(identifier) +
           "\" role=\"group\" aria-label=\"" + support::htmlEscaped(accessibilityTitle) + "\"";
}

void TaskpaneView::setContentView(const std::shared_ptr<platform::View>& view) {
    for (const auto& old : contentContainer->subviews()) old->removeFromSuperview();
    if (!view) return;
    contentContainer->addSubview(view);
    // Leading, trailing, top and bottom equal to the container's.
    const auto inner = contentContainer->frame();
    view->setFrame({0, 0, inner.width, inner.height});
    view->setNeedsLayout();
    view->layout();
}

void TaskpaneView::closeTaskpane() { removeFromSuperview(); }

std::shared_ptr<platform::View> TaskpaneView::contentView() const {
    auto views = contentContainer->subviews();
    return views.empty() ? nullptr : views.front();
}

void TaskpaneView::applyWidthConstraint() {
    if (!widthConstraint || !widthConstraint->isActive) return;
    auto f = frame();
    f.width = widthConstraint->constant;
    setFrame(f);
}

}  // namespace velmora
