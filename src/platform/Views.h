// Views port: the host's windows and view tree.
//
// Provides: Rect, Size, View, Window, ActivationPolicy, WindowStyle,
// ToolWindow, ViewsPort.
// A view has a class name, an ordered list of subviews and a frame; a text
// field is a view that also has a string value. Views are shared objects:
// the parent holds its subviews. The library also makes floating windows of
// its own (ToolWindow). Used on the main thread only.
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace velmora::platform {

struct Rect {
    double x = 0, y = 0, width = 0, height = 0;
    bool operator==(const Rect&) const = default;
};

// "(x, y, width, height)", as a frame is printed.
std::string describe(const Rect& rect);

struct Size {
    double width = 0, height = 0;
    bool operator==(const Size&) const = default;
};

// The tree links live in the base, so views made by the host and views made
// by the library hang in one tree; an adapter over a real toolkit overrides
// the tree operations.
class View : public std::enable_shared_from_this<View> {
public:
    virtual ~View() = default;
    virtual std::string className() const = 0;
    // Set for text fields (subclasses included), empty for other views.
    virtual std::optional<std::string> textFieldValue() const { return std::nullopt; }

    virtual std::vector<std::shared_ptr<View>> subviews() const { return subviews_; }
    virtual std::shared_ptr<View> superview() const { return superview_.lock(); }
    virtual Rect frame() const { return frame_; }
    virtual void setFrame(const Rect& frame) { frame_ = frame; }

    // Appends `view` as the last subview, taking it from any earlier parent.
    virtual void addSubview(const std::shared_ptr<View>& view) {
        if (!view || view.get() == this) return;
        view->removeFromSuperview();
        subviews_.push_back(view);
        view->superview_ = weak_from_this();
    }
    virtual void removeFromSuperview() {
        auto parent = superview_.lock();
        superview_.reset();
        if (!parent) return;
        auto& siblings = parent->subviews_;
        for (auto it = siblings.begin(); it != siblings.end(); ++it) {
            if (it->get() == this) {
                siblings.erase(it);
                break;
            }
        }
    }

    // Layout belongs to the host; these record that it was asked for.
    virtual void setNeedsLayout() { needsLayout_ = true; }
    virtual void layout() {
        needsLayout_ = false;
        ++layoutPasses_;
    }
    bool needsLayout() const { return needsLayout_; }
    int layoutPasses() const { return layoutPasses_; }

protected:
    View() = default;
    explicit View(Rect frame) : frame_(frame) {}

private:
    std::vector<std::shared_ptr<View>> subviews_;
    std::weak_ptr<View> superview_;
    Rect frame_;
    bool needsLayout_ = false;
    int layoutPasses_ = 0;
};

class Window {
public:
    virtual ~Window() = default;
    virtual std::string className() const = 0;
    virtual std::shared_ptr<View> contentView() const = 0;
    virtual bool isVisible() const = 0;
};

// The application's activation policy, with the platform's raw values.
enum class ActivationPolicy { regular = 0, accessory = 1, prohibited = 2 };

// The style mask of a window the library makes.
struct WindowStyle {
    bool titled = true;
    bool closable = true;
};

// A floating window the library makes. It starts hidden; ordering it front
// shows it and makes it key, closing hides it and hands the key status back.
// The window levels are the platform's: 0 normal, 3 floating above documents.
class ToolWindow : public Window {
public:
    virtual std::string title() const = 0;
    virtual void setTitle(const std::string& title) = 0;
    virtual void setTitlebarAppearsTransparent(bool transparent) = 0;
    virtual void setOpaque(bool opaque) = 0;
    // The platform's window background colour at this opacity.
    virtual void setBackgroundAlpha(double alpha) = 0;
    virtual int level() const = 0;
    virtual void setLevel(int level) = 0;
    virtual void setContentView(std::shared_ptr<View> view) = 0;
    virtual Size contentSize() const = 0;
    virtual void setContentSize(Size size) = 0;
    // Centres the window on the screen.
    virtual void center() = 0;
    virtual void makeKeyAndOrderFront() = 0;
    virtual void close() = 0;
};

class ViewsPort {
public:
    virtual ~ViewsPort() = default;
    virtual std::shared_ptr<Window> keyWindow() const = 0;
    // In the host's window order.
    virtual std::vector<std::shared_ptr<Window>> windows() const = 0;
    // A plain view of the given class, and a text field, made by the host.
    virtual std::shared_ptr<View> makeView(const std::string& className, const Rect& frame) = 0;
    virtual std::shared_ptr<View> makeTextField(const std::string& text) = 0;
    // A hidden window with a content area of the given size.
    virtual std::shared_ptr<ToolWindow> makeWindow(Size contentSize, WindowStyle style) = 0;
    virtual void setActivationPolicy(ActivationPolicy policy) = 0;
    virtual void activateIgnoringOtherApps(bool flag) = 0;
    // Opens a web address in the user's default browser.
    virtual void openURL(const std::string& url) = 0;
};

}  // namespace velmora::platform
