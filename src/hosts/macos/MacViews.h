// Views port on macOS: the host's views and windows over AppKit, and the
// floating windows the library makes.
//
// Provides: MacHostView, MacHostWindow, MacToolWindow, MacViews,
// platformViewFor(), nsViewFor().
// A host view is the platform view over one NSView, one wrapper per NSView
// (so the same view compares equal however it is reached); its tree
// operations are AppKit's. A view the library makes itself (a pane and its
// parts, a hosting view) is shown by a mirror (MacMirror.h); adding one to
// a host view adds its mirror. Main thread only.
#pragma once

#import <AppKit/AppKit.h>

#include <memory>
#include <string>
#include <vector>

#include "platform/Views.h"

namespace velmora::hosts::macos {

// A wrapper holds the host's view weakly (the host decides its life: once
// gone, the wrapper reads as an empty plain view), and a view made through
// the port strongly, until AppKit's tree holds it too.
class MacHostView : public platform::View {
public:
    // The wrapper of a host's `view`, made at first use; nullptr for nil.
    static std::shared_ptr<MacHostView> wrap(NSView* view);
    // The wrapper of a view made for the library, which it owns.
    static std::shared_ptr<MacHostView> own(NSView* view);
    explicit MacHostView(NSView* view) : view_(view) {}

    NSView* nsView() const { return view_; }

    // Library views placed in host views keep their host parent's wrapper
    // alive (their link to it is weak); forgets the parents that hold none
    // any more.
    static void releaseIdleParents();

    std::string className() const override;
    std::optional<std::string> textFieldValue() const override;
    std::vector<std::shared_ptr<platform::View>> subviews() const override;
    std::shared_ptr<platform::View> superview() const override;
    platform::Rect frame() const override;
    void setFrame(const platform::Rect& frame) override;
    void addSubview(const std::shared_ptr<platform::View>& view) override;
    void removeFromSuperview() override;
    void setNeedsLayout() override;
    void layout() override;

private:
    __weak NSView* view_;
    NSView* owned_ = nil;
};

// A window of the host's.
class MacHostWindow : public platform::Window {
public:
    static std::shared_ptr<MacHostWindow> wrap(NSWindow* window);
    explicit MacHostWindow(NSWindow* window) : window_(window) {}
    std::string className() const override;
    std::shared_ptr<platform::View> contentView() const override;
    bool isVisible() const override;

private:
    __weak NSWindow* window_;
};

// A window the library makes: an NSWindow that is not released when closed,
// so it can be shown again.
class MacToolWindow : public platform::ToolWindow {
public:
    MacToolWindow(platform::Size contentSize, platform::WindowStyle style);
    std::string className() const override;
    std::shared_ptr<platform::View> contentView() const override;
    bool isVisible() const override;
    std::string title() const override;
    void setTitle(const std::string& title) override;
    void setTitlebarAppearsTransparent(bool transparent) override;
    void setOpaque(bool opaque) override;
    void setBackgroundAlpha(double alpha) override;
    int level() const override;
    void setLevel(int level) override;
    void setContentView(std::shared_ptr<platform::View> view) override;
    platform::Size contentSize() const override;
    void setContentSize(platform::Size size) override;
    void center() override;
    void makeKeyAndOrderFront() override;
    void close() override;

private:
    NSWindow* window_;
    std::shared_ptr<platform::View> content_;
};

class MacViews : public platform::ViewsPort {
public:
    std::shared_ptr<platform::Window> keyWindow() const override;
    std::vector<std::shared_ptr<platform::Window>> windows() const override;
    std::shared_ptr<platform::View> makeView(const std::string& className, const platform::Rect& frame) override;
    std::shared_ptr<platform::View> makeTextField(const std::string& text) override;
    std::shared_ptr<platform::ToolWindow> makeWindow(platform::Size contentSize, platform::WindowStyle style) override;
    void setActivationPolicy(platform::ActivationPolicy policy) override;
    void activateIgnoringOtherApps(bool flag) override;
    void openURL(const std::string& url) override;
};

// The platform view an AppKit view stands for: the library's view that a
// mirror shows, or the host view's wrapper. nullptr for nil.
std::shared_ptr<platform::View> platformViewFor(NSView* view);
// The AppKit view that shows a platform view: a host view's own NSView, or
// the mirror of a library view (made at first use).
NSView* nsViewFor(const std::shared_ptr<platform::View>& view);

// Frames as the two sides write them, component for component: the library
// reads y downwards, which holds inside the mirrors (they are flipped); a
// host view's frame is AppKit's own.
platform::Rect rectFrom(NSRect rect);
NSRect nsRectFrom(const platform::Rect& rect);

}  // namespace velmora::hosts::macos
