// The frame around every docked pane: title bar, close button, content
// area and a drag handle on the left edge that changes the pane's width.
//
// Provides: Point, LayoutConstraint, Layer, TaskpaneViewPart,
// TaskpaneButton, TaskpaneResizeHandle, TaskpaneView.
// Views are platform views in the host's tree; the title label is a text
// field made by the host, so the manager's title search sees it. Layout
// constraints are plain data solved at once: the width constraint sets the
// pane's frame width, the top/bottom pair its height, and the pane lays its
// parts out inside its frame (origin top left, y down). Main thread only.
#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "platform/Views.h"
#include "ui/HtmlRenderer.h"
#include "ui/Node.h"

namespace velmora {

struct Point {
    double x = 0, y = 0;
    bool operator==(const Point&) const = default;
};

// A constraint as data: which attribute, the constant and the priority.
struct LayoutConstraint {
    enum class Attribute { width, top, bottom };
    Attribute attribute = Attribute::width;
    std::weak_ptr<platform::View> toItem;  // top/bottom: the view whose edge it equals
    double constant = 0;
    double priority = 1000;
    bool isActive = false;
};

struct Layer {
    std::optional<ui::Color> backgroundColor;
    double zPosition = 0;
};

// A named colour of the host's catalogue and the system colour behind it.
struct NamedColor {
    std::string name;
    std::string fallbackName;
    ui::Color fallback;
    ui::Color resolve() const;  // the host's colour when it has one, else the fallback
};

// A plain part of the frame (container, title bar, content container).
class TaskpaneViewPart : public platform::View, public ui::HtmlStyled {
public:
    explicit TaskpaneViewPart(std::string role) : role_(std::move(role)) {}
    std::string className() const override { return "NSView"; }
    std::string htmlStyle() const override;
    std::string htmlAttributes() const override;

    std::optional<Layer> layer;  // set when layer-backed
    std::optional<NamedColor> layerBackground;
    std::optional<NamedColor> textColor;  // drawn by the text inside (the title bar's label)
    std::optional<ui::Font> font;
    bool translatesAutoresizingMaskIntoConstraints = true;
    bool isAccessibilityElement = false;
    std::string accessibilityRole;
    std::string accessibilityLabel;

private:
    std::string role_;
};

// The close button: a titled push button with a target action.
class TaskpaneButton : public platform::View, public ui::HtmlStyled {
public:
    TaskpaneButton(std::string title, std::function<void()> action)
        : title(std::move(title)), action(std::move(action)) {}
    std::string className() const override { return "NSButton"; }
    std::string htmlAttributes() const override;
    std::string htmlContent() const override;
    // What a click does: runs the action.
    void performClick() const;

    std::string title;
    int bezelStyle = 15;  // inline
    std::function<void()> action;
    bool translatesAutoresizingMaskIntoConstraints = true;
};

class TaskpaneResizeHandle : public platform::View, public ui::HtmlStyled {
public:
    explicit TaskpaneResizeHandle(platform::Rect frame, bool layerBacked = true);
    std::string className() const override { return "TaskpaneResizeHandle"; }
    std::string htmlStyle() const override;
    std::string htmlAttributes() const override;

    struct CursorRect {
        platform::Rect rect;
        std::string cursor;
    };
    void resetCursorRects();
    // Pointer positions in window coordinates, as events carry them.
    void mouseDown(Point locationInWindow);
    void mouseDragged(Point locationInWindow);
    void mouseUp();

    // The window position of a point in this view, and back.
    Point convertToWindow(Point local) const;
    Point convertFromWindow(Point inWindow) const;

    Point initialLocation;
    std::function<void(double)> resizeHandler;

    // What the platform would hold: cursor rectangles and the cursor stack.
    std::vector<CursorRect> cursorRects;
    std::vector<std::string> cursorStack;
    bool layerBacked = false;
    bool translatesAutoresizingMaskIntoConstraints = true;
};

class TaskpaneView : public platform::View, public ui::HtmlStyled {
public:
    static constexpr double titleBarHeight = 28;
    static constexpr double contentOverlap = 5;
    static constexpr double handleWidth = 10;

    // Makes the pane and its parts and runs setupView.
    static std::shared_ptr<TaskpaneView> make(const std::string& title, double minWidth);
    // As the platform makes one from an archive: "Velmora", minWidth 250.
    static std::shared_ptr<TaskpaneView> makeFromCoder();

    std::string className() const override { return "TaskpaneView"; }
    void setFrame(const platform::Rect& frame) override;
    std::string htmlAttributes() const override;

    // Shows `view` as the content, replacing any earlier one.
    void setContentView(const std::shared_ptr<platform::View>& view);
    // The close button's action: removes the pane from its superview.
    void closeTaskpane();
    // The current content view, or nullptr.
    std::shared_ptr<platform::View> contentView() const;
    // Sets the frame's width from the width constraint when it is active.
    void applyWidthConstraint();

    std::string paneTitle;
    const double minWidth;
    const std::shared_ptr<TaskpaneViewPart> containerView;
    const std::shared_ptr<TaskpaneViewPart> titleBar;
    const std::shared_ptr<platform::View> titleLabel;
    const std::shared_ptr<TaskpaneButton> closeButton;
    const std::shared_ptr<TaskpaneResizeHandle> resizeHandle;
    const std::shared_ptr<TaskpaneViewPart> contentContainer;
    std::shared_ptr<LayoutConstraint> widthConstraint;

    // Plain data the platform would keep on the view.
    std::vector<LayoutConstraint> constraints;  // top and bottom to the split view
    std::optional<Layer> layer;                 // the pane itself is not layer-backed
    bool translatesAutoresizingMaskIntoConstraints = true;
    std::string identifier;
    std::string accessibilityRole;
    std::string accessibilityTitle;
    ui::Font titleFont{14, ui::FontWeight::semibold};

    // Public for make_shared; use make().
    struct Token {};
    TaskpaneView(Token, std::string title, double minWidth);

private:
    void setupView();
    void layoutParts();
};

}  // namespace velmora
