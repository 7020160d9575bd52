// Pane descriptions: a pane or window is a pure function from its state and
// its width to a tree of `Node`s. Renderers (ui/HtmlRenderer.h) draw trees;
// tests read the numbers straight off them.
//
// Provides: Color (+ colors::), FontWeight, FontDesign, Font, Alignment, Axis,
// Edge, Edges, Frame, Shadow, Border, Kind, Node, and one builder per kind:
//   containers  vstack, hstack, zstack, scroll, grid
//   content     text, image (file path, read through the files port when
//               drawn), symbol (system symbol by name), spacer, divider
//   controls    button (label or content), toggle, textField, picker (a
//               pop-up or segmented), menu, popover, datePicker (a graphical
//               month, one day chosen)
//   shapes      rectangle, roundedRectangle, circle, capsule, line (between
//               two unit points of its rectangle), checkerboard, path (in a
//               box of its own, stretched to the frame)
//
// Modifiers are member functions that chain on both temporaries and named
// nodes: text("Hi").font(14, FontWeight::semibold).padding(8).background(c).
// Within one node the layout modifiers apply from the inside out in a fixed
// order: padding, frame, background, border, cornerRadius (clips), shadow,
// opacity, scale and rotation. A modifier that would go inside one already applied (a
// padding after a background, a second frame) wraps the node first in a
// one-child layered stack (Kind::zstack) that carries the new modifier, so a
// chain reads as in a declarative toolkit. Rotation goes with scale, outermost. Paddings and opacities that meet
// with nothing between them combine (sum, product). font, foreground,
// lineLimit, help, identity, accessibilityIdentifier and the closures never
// wrap; font and foreground colour are inherited by descendants that set
// none. fixedSize does not wrap either.
//
// Closures (action, onEdit, onAppear, onHover) run on the main thread. A
// host invokes an action by the node's label (text) or help text, the N-th
// of several in reading order; see ui::findActionables.
// Timed behaviour (a glow, a flash) is view state changed by main-queue
// timers (platform::mainAsyncAfter), and the view is rebuilt from it.
#pragma once

#include <cstdint>
#include <functional>
#include <initializer_list>
#include <limits>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "platform/Web.h"

namespace velmora::ui {

// sRGB components and opacity, each 0...1.
struct Color {
    double red = 0, green = 0, blue = 0, alpha = 1;
    bool operator==(const Color&) const = default;
    constexpr Color opacity(double factor) const { return {red, green, blue, alpha * factor}; }
    static constexpr Color rgb255(double r, double g, double b, double a = 1) { return {r / 255, g / 255, b / 255, a}; }
};

namespace colors {
inline constexpr Color clear{0, 0, 0, 0};
inline constexpr Color black{0, 0, 0, 1};
inline constexpr Color white{1, 1, 1, 1};
// The platform's standard tints, light appearance, as its published design
// guidelines give them in sRGB (0-255 per channel).
inline constexpr Color gray = Color::rgb255(142, 142, 147);
inline constexpr Color red = Color::rgb255(255, 59, 48);
inline constexpr Color green = Color::rgb255(52, 199, 89);
inline constexpr Color blue = Color::rgb255(0, 122, 255);
inline constexpr Color orange = Color::rgb255(255, 149, 0);
inline constexpr Color yellow = Color::rgb255(255, 204, 0);
inline constexpr Color purple = Color::rgb255(175, 82, 222);
// Secondary label text: black at half strength.
inline constexpr Color secondary{0, 0, 0, 0.5};
// The add-in's accent, "#FE6B6B".
inline constexpr Color subtleRed = Color::rgb255(254, 107, 107);
}  // namespace colors

enum class FontWeight { ultraLight, thin, light, regular, medium, semibold, bold, heavy, black };
enum class FontDesign { standard, rounded, monospaced, serif };

// The platform's text styles, in points.
inline constexpr double bodySize = 13;
inline constexpr double headlineSize = 13;  // drawn bold
inline constexpr double subheadlineSize = 11;
inline constexpr double captionSize = 10;
inline constexpr double footnoteSize = 10;
// The padding a view gets when none is given.
inline constexpr double defaultPadding = 16;

struct Font {
    double size = 13;  // the platform's body size
    FontWeight weight = FontWeight::regular;
    FontDesign design = FontDesign::standard;
    bool operator==(const Font&) const = default;
};

// Alignment of children in a stack or of content in a frame. A vertical
// stack uses the horizontal part (leading/center/trailing), a horizontal one
// the vertical part (top/center/bottom).
enum class Alignment { center, leading, trailing, top, bottom, topLeading, topTrailing, bottomLeading, bottomTrailing };
// The alignment's name as descriptions write it: "topLeading".
const char* alignmentName(Alignment alignment);

enum class Axis { vertical, horizontal };

// Edge sets for padding, as bits.
enum Edge : std::uint8_t {
    top = 1,
    leading = 2,
    bottom = 4,
    trailing = 8,
    horizontal = leading | trailing,
    vertical = top | bottom,
    all = 15,
};

struct Edges {
    double top = 0, leading = 0, bottom = 0, trailing = 0;
    bool operator==(const Edges&) const = default;
    bool isZero() const { return top == 0 && leading == 0 && bottom == 0 && trailing == 0; }
};

inline constexpr double infinity = std::numeric_limits<double>::infinity();

// A frame: a fixed width/height, or minimum/ideal/maximum bounds (a maximum
// of `infinity` fills the space offered). Unset values leave the content's
// own size.
struct Frame {
    std::optional<double> width, height;
    std::optional<double> minWidth, idealWidth, maxWidth;
    std::optional<double> minHeight, idealHeight, maxHeight;
    Alignment alignment = Alignment::center;
    bool isSet() const {
        return width || height || minWidth || idealWidth || maxWidth || minHeight || idealHeight || maxHeight;
    }
};

struct Shadow {
    Color color = colors::black.opacity(0.33);
    double radius = 0, x = 0, y = 0;
};

struct Border {
    Color color = colors::black;
    double width = 1;
};

enum class LineCap { butt, round, square };

// A shape drawn as its outline, centred on its edge, instead of filled.
struct Stroke {
    Color color = colors::black;
    double width = 1;
    LineCap cap = LineCap::butt;
};

// A point of a rectangle in shares of its size: (0, 0) top left, (1, 1) bottom right.
struct UnitPoint {
    double x = 0, y = 0;
};

// One step of a path, in the points of the path's own box.
struct PathElement {
    enum class Kind { move, line, close, rect, ellipse };
    Kind kind = Kind::move;
    double x = 0, y = 0;           // move, line: the point; rect, ellipse: the box's origin
    double width = 0, height = 0;  // rect, ellipse
    bool operator==(const PathElement&) const = default;
};

enum class Kind {
    vstack, hstack, zstack, scroll, grid,
    text, image, symbol, spacer, divider,
    button, toggle, textField, picker, menu, popover, datePicker, webView,
    rectangle, roundedRectangle, circle, capsule, line, checkerboard, path,
};

// The printed name of a kind: "vstack", "roundedRectangle", ...
const char* kindName(Kind kind);

struct Node {
    Kind kind = Kind::zstack;

    // text: the string; image: the file path; symbol: the symbol name;
    // button/toggle/picker/menu: the label (empty when `children` hold the
    // label content); textField: the current value.
    std::string text;
    // textField: the placeholder. image: the system symbol drawn when the
    // file cannot be read (empty: nothing, the frame stays).
    std::string placeholder;

    // Children. Stacks, scroll, grid: the content. button: the label content
    // (when `text` is empty). picker/menu: the items (buttons; a picker marks
    // the chosen one with isOn). popover: [anchor, content].
    std::vector<Node> children;

    // Containers.
    std::optional<double> spacing;  // unset: the platform's default (8)
    Alignment alignment = Alignment::center;
    Axis axis = Axis::vertical;     // scroll
    int columns = 1;                // grid: children fill rows left to right

    // Images.
    bool resizable = false;
    bool aspectFit = true;  // with `resizable`: fit (true) or fill (false), proportions kept

    // Shapes. The fill is the foreground colour unless `strokeStyle` is set.
    double shapeCornerRadius = 0;  // roundedRectangle, checkerboard
    std::optional<Stroke> strokeStyle;
    UnitPoint lineFrom, lineTo;  // line
    double lineInset = 0;        // line: both ends moved this far inwards, in points
    double tile = 0;             // checkerboard: side of one square
    std::vector<PathElement> pathElements;  // path
    double pathWidth = 0, pathHeight = 0;   // path: its box

    // webView: the view, which lives as long as its pane, not as the node.
    std::shared_ptr<platform::WebView> webView;

    // Controls.
    bool isOn = false;  // toggle: on; popover: presented; picker item: chosen
    bool isDefaultAction = false;  // button: pressed by Return
    bool segmented = false;        // picker: a row of segments instead of a pop-up

    // Every modifier as a number; tests read them here: node.mod.font->size.
    struct Modifiers {
        // Layout, applied in this order from the inside out.
        Edges padding;
        Frame frame;
        std::optional<Color> background;
        std::optional<Border> border;
        double cornerRadius = 0;
        std::optional<Shadow> shadow;
        double opacity = 1;
        double scale = 1;
        double rotation = 0;  // degrees, clockwise, about the centre
        double offsetX = 0, offsetY = 0;  // drawn moved by this much; layout is unchanged
        // Text and symbols; unset means inherited.
        std::optional<Font> font;
        std::optional<Color> foreground;  // text colour or shape fill
        std::optional<int> lineLimit;
        bool fixedSize = false;  // keeps its ideal size: never wraps, never shrinks
        std::optional<double> animation;  // seconds, ease in and out, over which changes are shown
        std::optional<double> aspectRatio;  // width over height, kept when the width is set by the layout
        // Descriptive.
        std::string help;
        std::string identity;  // stable identity among siblings
        std::string accessibilityIdentifier;
    } mod;

    // Closures, run on the main thread.
    std::function<void()> action;                    // button, toggle, menu/picker items
    std::function<void(const std::string&)> onEdit;  // textField; datePicker, with "yyyy-MM-dd"
    std::function<void()> onAppear;                  // run by ui::HostingView when the node first shows
    std::function<void(bool)> onHover;               // the pointer came in (true) or left (false)
    std::function<void()> onSubmit;                  // textField: Return while it has the focus
    std::function<void(double)> onScroll;            // scroll: moved to this many points from the top

    // --- modifiers (each also callable on a temporary) ---
    Node& padding(double length) &;
    Node& padding(std::uint8_t edges, double length) &;
    Node& padding(const Edges& edges) &;
    Node& frame(const Frame& frame) &;
    Node& frame(double width, double height, Alignment alignment = Alignment::center) &;
    Node& frameWidth(double width) &;
    Node& frameHeight(double height) &;
    Node& maxWidth(double width, Alignment alignment = Alignment::center) &;
    Node& background(Color color) &;
    Node& border(Color color, double width = 1) &;
    Node& cornerRadius(double radius) &;
    Node& shadow(Color color, double radius, double x = 0, double y = 0) &;
    Node& opacity(double value) &;
    Node& scale(double value) &;
    Node& rotation(double degrees) &;
    Node& offset(double x, double y = 0) &;
    Node& stroke(Color color, double width = 1, LineCap cap = LineCap::butt) &;

    Node& font(double size, FontWeight weight = FontWeight::regular, FontDesign design = FontDesign::standard) &;
    Node& foregroundColor(Color color) &;
    Node& lineLimit(int lines) &;
    Node& fixedSize() &;
    Node& animation(double seconds) &;
    Node& aspectRatio(double widthOverHeight) &;
    Node& defaultAction() &;
    Node& makeResizable(bool fit = true) &;
    Node& help(std::string text) &;
    Node& id(std::string identity) &;
    Node& accessibilityId(std::string identifier) &;
    Node& onAppearDo(std::function<void()> closure) &;
    Node& onHoverDo(std::function<void(bool)> closure) &;
    Node& onSubmitDo(std::function<void()> closure) &;

#define VELMORA_UI_RVALUE(name) \
    template <class... A>       \
    Node&& name(A&&... a) && { return std::move(this->name(std::forward<A>(a)...)); }
    VELMORA_UI_RVALUE(padding)
    VELMORA_UI_RVALUE(frame)
    VELMORA_UI_RVALUE(frameWidth)
    VELMORA_UI_RVALUE(frameHeight)
    VELMORA_UI_RVALUE(maxWidth)
    VELMORA_UI_RVALUE(background)
    VELMORA_UI_RVALUE(border)
    VELMORA_UI_RVALUE(cornerRadius)
    VELMORA_UI_RVALUE(shadow)
    VELMORA_UI_RVALUE(opacity)
    VELMORA_UI_RVALUE(scale)
    VELMORA_UI_RVALUE(rotation)
    VELMORA_UI_RVALUE(offset)
    VELMORA_UI_RVALUE(stroke)
    VELMORA_UI_RVALUE(font)
    VELMORA_UI_RVALUE(foregroundColor)
    VELMORA_UI_RVALUE(lineLimit)
    VELMORA_UI_RVALUE(fixedSize)
    VELMORA_UI_RVALUE(animation)
    VELMORA_UI_RVALUE(aspectRatio)
    VELMORA_UI_RVALUE(defaultAction)
    VELMORA_UI_RVALUE(makeResizable)
    VELMORA_UI_RVALUE(help)
    VELMORA_UI_RVALUE(id)
    VELMORA_UI_RVALUE(accessibilityId)
    VELMORA_UI_RVALUE(onAppearDo)
    VELMORA_UI_RVALUE(onHoverDo)
    VELMORA_UI_RVALUE(onSubmitDo)
#undef VELMORA_UI_RVALUE

    // The modifier stage reached so far (see the header comment); internal.
    int stage = 0;
};

// --- builders ---------------------------------------------------------------

using Nodes = std::vector<Node>;

Node vstack(Alignment alignment, std::optional<double> spacing, Nodes children);
Node vstack(Nodes children);
Node hstack(Alignment alignment, std::optional<double> spacing, Nodes children);
Node hstack(Nodes children);
Node zstack(Alignment alignment, Nodes children);
Node zstack(Nodes children);
Node scroll(Axis axis, Node content);
Node scroll(Node content);
// `columns` equal columns; `spacing` between rows and between columns.
Node grid(int columns, double spacing, Nodes children);

Node text(std::string string);
Node image(std::string filePath, std::string fallbackSymbol = {});
Node symbol(std::string name);
Node spacer(double minLength = 0);
Node divider();

Node button(std::string label, std::function<void()> action);
Node button(Node label, std::function<void()> action);
Node toggle(std::string label, bool isOn, std::function<void()> action);
Node textField(std::string placeholder, std::string value, std::function<void(const std::string&)> onEdit);
// Items are buttons; a picker marks its chosen item with isOn.
Node picker(std::string label, Nodes items);
Node menu(std::string label, Nodes items);
Node popover(Node anchor, Node content, bool isPresented);
// A platform web view placed in the layout; it fills the room offered.
Node webView(std::shared_ptr<platform::WebView> view);
// A graphical month showing `day` ("yyyy-MM-dd") chosen; choosing a day
// calls `onPick` with it.
Node datePicker(std::string day, std::function<void(const std::string&)> onPick);

Node rectangle();
Node roundedRectangle(double cornerRadius);
Node circle();
Node capsule();
// A straight line across its rectangle from `from` to `to`; draw it with stroke().
Node line(UnitPoint from, UnitPoint to, double inset = 0);
// White under squares of `tile` points in light grey wherever row + column
// is even, counted from the top left: as many as ceil(width / tile) by
// ceil(height / tile) cover the space offered.
Node checkerboard(double tile, double cornerRadius);
// A path drawn in a box of `width` by `height` points, stretched to its frame.
Node path(std::vector<PathElement> elements, double width, double height);

// --- reading trees ------------------------------------------------------------

// Depth first, parent before children: the first node for which `match` holds.
const Node* findNode(const Node& root, const std::function<bool(const Node&)>& match);
// The first node with this text (label, string) and a kind of its own, or
// nullptr. Useful in tests: findText(tree, "Suggested Shortcuts")->font->size.
const Node* findText(const Node& root, const std::string& text);
// The first node that carries an action and whose label, help text or
// accessibility identifier is `labelOrHelp`. A button whose label is content counts when any text inside
// it matches. Picker/menu items count; popover content only when presented.
const Node* findActionable(const Node& root, const std::string& labelOrHelp);
// Every such node, in reading order (depth first, parent before children).
std::vector<const Node*> findActionables(const Node& root, const std::string& labelOrHelp);
// The same for nodes that react to the pointer coming in or leaving.
std::vector<const Node*> findHoverables(const Node& root, const std::string& labelOrHelp);
// Text fields and date pickers whose placeholder, help text or accessibility
// identifier is `label`, hidden popover content included.
std::vector<const Node*> findEditables(const Node& root, const std::string& label);
// Pickers and menus whose label, help text or accessibility identifier is `label`.
std::vector<const Node*> findChoosers(const Node& root, const std::string& label);
// What Return acts on: the first text field that submits (it holds the
// focus), else the default button; nullptr when there is neither.
const Node* findDefaultAction(const Node& root);

// The tree as indented lines: "vstack spacing 10 padding 15/10/0/10", ...
// Kinds, texts and the numbers that are set.
std::vector<std::string> describeTree(const Node& root);

}  // namespace velmora::ui
