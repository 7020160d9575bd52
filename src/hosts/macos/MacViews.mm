#import <AppKit/AppKit.h>

#include <algorithm>
#include <unordered_map>

#include "hosts/macos/MacMirror.h"
#include "hosts/macos/MacStrings.h"
#include "hosts/macos/MacViews.h"

namespace velmora::hosts::macos {

namespace {

// Wrappers by AppKit object. A live wrapper holds its object, so an address
// in the table is never reused while its entry can still be locked.
template <typename Wrapper, typename Object>
std::shared_ptr<Wrapper> wrapperFor(std::unordered_map<const void*, std::weak_ptr<Wrapper>>& table, Object* object) {
    if (!object) return nullptr;
    const void* key = (__bridge const void*)object;
    if (auto alive = table[key].lock()) return alive;
    auto made = std::make_shared<Wrapper>(object);
    table[key] = made;
    // Dead entries go now and then, so the table stays as small as the live set.
    if (table.size() > 64 && table.size() % 64 == 0) {
        for (auto it = table.begin(); it != table.end();) it = it->second.expired() ? table.erase(it) : std::next(it);
    }
    return made;
}

std::unordered_map<const void*, std::weak_ptr<MacHostView>>& viewTable() {
    static auto* table = new std::unordered_map<const void*, std::weak_ptr<MacHostView>>;
    return *table;
}

// Host views that hold library views (see MacHostView::releaseIdleParents).
std::vector<std::shared_ptr<MacHostView>>& busyParents() {
    static auto* parents = new std::vector<std::shared_ptr<MacHostView>>;
    return *parents;
}

std::unordered_map<const void*, std::weak_ptr<MacHostWindow>>& windowTable() {
    static auto* table = new std::unordered_map<const void*, std::weak_ptr<MacHostWindow>>;
    return *table;
}

}  // namespace

platform::Rect rectFrom(NSRect rect) {
    return {rect.origin.x, rect.origin.y, rect.size.width, rect.size.height};
}

NSRect nsRectFrom(const platform::Rect& rect) { return NSMakeRect(rect.x, rect.y, rect.width, rect.height); }

std::shared_ptr<platform::View> platformViewFor(NSView* view) {
    if (!view) return nullptr;
    if (auto mirrored = mirroredView(view)) return mirrored;
    return MacHostView::wrap(view);
}

NSView* nsViewFor(const std::shared_ptr<platform::View>& view) {
    if (!view) return nil;
    if (auto* host = dynamic_cast<MacHostView*>(view.get())) return host->nsView();
    return mirrorFor(view);
}

// --- host views ---------------------------------------------------------------------

std::shared_ptr<MacHostView> MacHostView::wrap(NSView* view) { return wrapperFor(viewTable(), view); }

std::shared_ptr<MacHostView> MacHostView::own(NSView* view) {
    auto wrapper = wrap(view);
    if (wrapper) wrapper->owned_ = view;
    return wrapper;
}

void MacHostView::releaseIdleParents() {
    auto& parents = busyParents();
    std::erase_if(parents, [](const std::shared_ptr<MacHostView>& parent) {
        return !parent->nsView() || parent->View::subviews().empty();
    });
}

std::string MacHostView::className() const {
    NSView* view = view_;
    return view ? toStdString(NSStringFromClass([view class])) : "NSView";
}

std::optional<std::string> MacHostView::textFieldValue() const {
    if (![view_ isKindOfClass:[NSTextField class]]) return std::nullopt;
    return toStdString([(NSTextField*)view_ stringValue]);
}

std::vector<std::shared_ptr<platform::View>> MacHostView::subviews() const {
    std::vector<std::shared_ptr<platform::View>> views;
    for (NSView* subview in [view_ subviews]) {
        if (auto view = platformViewFor(subview)) views.push_back(std::move(view));
    }
    return views;
}

std::shared_ptr<platform::View> MacHostView::superview() const {
    // A host view placed inside a library view (a pane's title label) has
    // the library view as its parent.
    if (auto parent = View::superview()) return parent;
    return platformViewFor([view_ superview]);
}

platform::Rect MacHostView::frame() const { return rectFrom([view_ frame]); }

void MacHostView::setFrame(const platform::Rect& frame) { [view_ setFrame:nsRectFrom(frame)]; }

void MacHostView::addSubview(const std::shared_ptr<platform::View>& view) {
    if (!view || view.get() == this) return;
    if (auto* host = dynamic_cast<MacHostView*>(view.get())) {
        host->View::removeFromSuperview();
        if (NSView* child = host->nsView()) [view_ addSubview:child];
        return;
    }
    // A library view: its own parent link is kept, so that it finds this
    // view as its superview and can leave it; its mirror goes into AppKit.
    View::addSubview(view);
    auto self = std::static_pointer_cast<MacHostView>(shared_from_this());
    auto& parents = busyParents();
    if (std::find(parents.begin(), parents.end(), self) == parents.end()) parents.push_back(self);
    [view_ addSubview:mirrorFor(view)];
}

void MacHostView::removeFromSuperview() {
    View::removeFromSuperview();
    [view_ removeFromSuperview];
}

void MacHostView::setNeedsLayout() {
    View::setNeedsLayout();
    [view_ setNeedsLayout:YES];
}

void MacHostView::layout() {
    View::layout();
    [view_ layoutSubtreeIfNeeded];
}

// --- host windows -------------------------------------------------------------------

std::shared_ptr<MacHostWindow> MacHostWindow::wrap(NSWindow* window) { return wrapperFor(windowTable(), window); }

std::string MacHostWindow::className() const { return toStdString(NSStringFromClass([window_ class])); }

std::shared_ptr<platform::View> MacHostWindow::contentView() const { return platformViewFor([window_ contentView]); }

bool MacHostWindow::isVisible() const { return [window_ isVisible]; }

// --- tool windows -------------------------------------------------------------------

MacToolWindow::MacToolWindow(platform::Size contentSize, platform::WindowStyle style) {
    NSWindowStyleMask mask = 0;
    if (style.titled) mask |= NSWindowStyleMaskTitled;
    if (style.closable) mask |= NSWindowStyleMaskClosable;
    window_ = [[NSWindow alloc] initWithContentRect:NSMakeRect(0, 0, contentSize.width, contentSize.height)
                                          styleMask:mask
                                            backing:NSBackingStoreBuffered
                                              defer:YES];
    // The library keeps the window and may show it again after a close.
    [window_ setReleasedWhenClosed:NO];
}

std::string MacToolWindow::className() const { return toStdString(NSStringFromClass([window_ class])); }

std::shared_ptr<platform::View> MacToolWindow::contentView() const {
    return content_ ? content_ : platformViewFor([window_ contentView]);
}

bool MacToolWindow::isVisible() const { return [window_ isVisible]; }

std::string MacToolWindow::title() const { return toStdString([window_ title]); }

void MacToolWindow::setTitle(const std::string& title) { [window_ setTitle:toNSString(title)]; }

void MacToolWindow::setTitlebarAppearsTransparent(bool transparent) { window_.titlebarAppearsTransparent = transparent; }

void MacToolWindow::setOpaque(bool opaque) { [window_ setOpaque:opaque]; }

void MacToolWindow::setBackgroundAlpha(double alpha) {
    [window_ setBackgroundColor:[[NSColor windowBackgroundColor] colorWithAlphaComponent:alpha]];
}

int MacToolWindow::level() const { return static_cast<int>([window_ level]); }

void MacToolWindow::setLevel(int level) { [window_ setLevel:level]; }

void MacToolWindow::setContentView(std::shared_ptr<platform::View> view) {
    content_ = std::move(view);
    if (!content_) {
        [window_ setContentView:nil];
        return;
    }
    content_->setFrame({0, 0, contentSize().width, contentSize().height});
    [window_ setContentView:nsViewFor(content_)];
}

platform::Size MacToolWindow::contentSize() const {
    const NSRect content = [window_ contentRectForFrameRect:[window_ frame]];
    return {content.size.width, content.size.height};
}

void MacToolWindow::setContentSize(platform::Size size) {
    [window_ setContentSize:NSMakeSize(size.width, size.height)];
    if (content_) content_->setFrame({0, 0, size.width, size.height});
}

void MacToolWindow::center() { [window_ center]; }

void MacToolWindow::makeKeyAndOrderFront() { [window_ makeKeyAndOrderFront:nil]; }

void MacToolWindow::close() { [window_ close]; }

// --- the port -----------------------------------------------------------------------

std::shared_ptr<platform::Window> MacViews::keyWindow() const { return MacHostWindow::wrap([NSApp keyWindow]); }

std::vector<std::shared_ptr<platform::Window>> MacViews::windows() const {
    std::vector<std::shared_ptr<platform::Window>> windows;
    for (NSWindow* window in [NSApp windows]) windows.push_back(MacHostWindow::wrap(window));
    return windows;
}

std::shared_ptr<platform::View> MacViews::makeView(const std::string& className, const platform::Rect& frame) {
    Class viewClass = NSClassFromString(toNSString(className));
    if (!viewClass || ![viewClass isSubclassOfClass:[NSView class]]) viewClass = [NSView class];
    NSView* view = [[viewClass alloc] initWithFrame:nsRectFrom(frame)];
    return MacHostView::own(view);
}

std::shared_ptr<platform::View> MacViews::makeTextField(const std::string& text) {
    return MacHostView::own([NSTextField labelWithString:toNSString(text)]);
}

std::shared_ptr<platform::ToolWindow> MacViews::makeWindow(platform::Size contentSize, platform::WindowStyle style) {
    return std::make_shared<MacToolWindow>(contentSize, style);
}

void MacViews::setActivationPolicy(platform::ActivationPolicy policy) {
    [NSApp setActivationPolicy:static_cast<NSApplicationActivationPolicy>(policy)];
}

void MacViews::activateIgnoringOtherApps(bool flag) { [NSApp activateIgnoringOtherApps:flag]; }

void MacViews::openURL(const std::string& url) {
    if (NSURL* address = [NSURL URLWithString:toNSString(url)]) [[NSWorkspace sharedWorkspace] openURL:address];
}

}  // namespace velmora::hosts::macos
