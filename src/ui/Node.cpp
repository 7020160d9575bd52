#include "ui/Node.h"

#include <cmath>

#include "support/Text.h"

namespace velmora::ui {

namespace {

// Modifier stages, inside to outside.
enum Stage { kPadding = 1, kFrame, kBackground, kBorder, kCornerRadius, kShadow, kOpacity, kTransform };

// A modifier at `stage` can go on this node unless one further out was
// already applied; `combines` lets a repeat of the same stage merge.
void prepare(Node& node, int stage, bool combines) {
    if (node.stage < stage || (node.stage == stage && combines)) {
        node.stage = stage;
        return;
    }
    Node wrapper;
    wrapper.kind = Kind::zstack;
    wrapper.children.push_back(std::move(node));
    node = std::move(wrapper);
    node.stage = stage;
}

}  // namespace

const char* kindName(Kind kind) {
    switch (kind) {
        case Kind::vstack: return "vstack";
        case Kind::hstack: return "hstack";
        case Kind::zstack: return "zstack";
        case Kind::scroll: return "scroll";
        case Kind::grid: return "grid";
        case Kind::text: return "text";
        case Kind::image: return "image";
        case Kind::symbol: return "symbol";
        case Kind::spacer: return "spacer";
        case Kind::divider: return "divider";
        case Kind::button: return "button";
        case Kind::toggle: return "toggle";
        case Kind::textField: return "textField";
        case Kind::picker: return "picker";
        case Kind::menu: return "menu";
        case Kind::popover: return "popover";
        case Kind::datePicker: return "datePicker";
        case Kind::webView: return "webView";
        case Kind::rectangle: return "rectangle";
        case Kind::roundedRectangle: return "roundedRectangle";
        case Kind::circle: return "circle";
        case Kind::capsule: return "capsule";
        case Kind::line: return "line";
        case Kind::checkerboard: return "checkerboard";
        case Kind::path: return "path";
    }
    return "node";
}

// --- modifiers ----------------------------------------------------------------

Node& Node::padding(double length) & { return padding(Edge::all, length); }

Node& Node::padding(std::uint8_t edges, double length) & {
    Edges add;
    if (edges & Edge::top) add.top = length;
    if (edges & Edge::leading) add.leading = length;
    if (edges & Edge::bottom) add.bottom = length;
    if (edges & Edge::trailing) add.trailing = length;
    return padding(add);
}

Node& Node::padding(const Edges& edges) & {
    prepare(*this, kPadding, true);
    mod.padding.top += edges.top;
    mod.padding.leading += edges.leading;
    mod.padding.bottom += edges.bottom;
    mod.padding.trailing += edges.trailing;
    return *this;
}

Node& Node::frame(const Frame& value) & {
    prepare(*this, kFrame, false);
    mod.frame = value;
    return *this;
}

Node& Node::frame(double width, double height, Alignment alignment) & {
    Frame value;
    value.width = width;
    value.height = height;
    value.alignment = alignment;
    return frame(value);
}

Node& Node::frameWidth(double width) & {
    Frame value;
    value.width = width;
    return frame(value);
}

Node& Node::frameHeight(double height) & {
    Frame value;
    value.height = height;
    return frame(value);
}

Node& Node::maxWidth(double width, Alignment alignment) & {
    Frame value;
    value.maxWidth = width;
    value.alignment = alignment;
    return frame(value);
}

Node& Node::background(Color color) & {
    prepare(*this, kBackground, false);
    mod.background = color;
    return *this;
}

Node& Node::border(Color color, double width) & {
    prepare(*this, kBorder, false);
    mod.border = Border{color, width};
    return *this;
}

Node& Node::cornerRadius(double radius) & {
    prepare(*this, kCornerRadius, false);
    mod.cornerRadius = radius;
    return *this;
}

Node& Node::shadow(Color color, double radius, double x, double y) & {
    prepare(*this, kShadow, false);
    mod.shadow = Shadow{color, radius, x, y};
    return *this;
}

Node& Node::opacity(double value) & {
    prepare(*this, kOpacity, true);
    mod.opacity *= value;
    return *this;
}

Node& Node::scale(double value) & {
    prepare(*this, kTransform, true);
    mod.scale *= value;
    return *this;
}

Node& Node::rotation(double degrees) & {
    prepare(*this, kTransform, true);
    mod.rotation += degrees;
    return *this;
}

Node& Node::offset(double x, double y) & {
    prepare(*this, kTransform, true);
    mod.offsetX += x;
    mod.offsetY += y;
    return *this;
}

Node& Node::stroke(Color color, double width, LineCap cap) & {
    strokeStyle = Stroke{color, width, cap};
    return *this;
}

Node& Node::font(double size, FontWeight weight, FontDesign design) & {
    mod.font = Font{size, weight, design};
    return *this;
}

Node& Node::foregroundColor(Color color) & {
    mod.foreground = color;
    return *this;
}

Node& Node::lineLimit(int lines) & {
    mod.lineLimit = lines;
    return *this;
}

Node& Node::fixedSize() & {
    mod.fixedSize = true;
    return *this;
}

Node& Node::animation(double seconds) & {
    mod.animation = seconds;
    return *this;
}

Node& Node::aspectRatio(double widthOverHeight) & {
    mod.aspectRatio = widthOverHeight;
    return *this;
}

Node& Node::defaultAction() & {
    isDefaultAction = true;
    return *this;
}

Node& Node::makeResizable(bool fit) & {
    resizable = true;
    aspectFit = fit;
    return *this;
}

Node& Node::help(std::string value) & {
    mod.help = std::move(value);
    return *this;
}

Node& Node::id(std::string value) & {
    mod.identity = std::move(value);
    return *this;
}

Node& Node::accessibilityId(std::string value) & {
    mod.accessibilityIdentifier = std::move(value);
    return *this;
}

Node& Node::onAppearDo(std::function<void()> closure) & {
    onAppear = std::move(closure);
    return *this;
}

Node& Node::onHoverDo(std::function<void(bool)> closure) & {
    onHover = std::move(closure);
    return *this;
}

Node& Node::onSubmitDo(std::function<void()> closure) & {
    onSubmit = std::move(closure);
    return *this;
}

// --- builders -------------------------------------------------------------------

namespace {

Node make(Kind kind) {
    Node node;
    node.kind = kind;
    return node;
}

Node stack(Kind kind, Alignment alignment, std::optional<double> spacing, Nodes children) {
    Node node = make(kind);
    node.alignment = alignment;
    node.spacing = spacing;
    node.children = std::move(children);
    return node;
}

Node withText(Kind kind, std::string string) {
    Node node = make(kind);
    node.text = std::move(string);
    return node;
}

}  // namespace

Node vstack(Alignment alignment, std::optional<double> spacing, Nodes children) {
    return stack(Kind::vstack, alignment, spacing, std::move(children));
}
Node vstack(Nodes children) { return vstack(Alignment::center, std::nullopt, std::move(children)); }
Node hstack(Alignment alignment, std::optional<double> spacing, Nodes children) {
    return stack(Kind::hstack, alignment, spacing, std::move(children));
}
Node hstack(Nodes children) { return hstack(Alignment::center, std::nullopt, std::move(children)); }
Node zstack(Alignment alignment, Nodes children) {
    return stack(Kind::zstack, alignment, std::nullopt, std::move(children));
}
Node zstack(Nodes children) { return zstack(Alignment::center, std::move(children)); }

Node scroll(Axis axis, Node content) {
    Node node = make(Kind::scroll);
    node.axis = axis;
    node.children.push_back(std::move(content));
    return node;
}
Node scroll(Node content) { return scroll(Axis::vertical, std::move(content)); }

Node grid(int columns, double spacing, Nodes children) {
    Node node = stack(Kind::grid, Alignment::center, spacing, std::move(children));
    node.columns = columns < 1 ? 1 : columns;
    return node;
}

Node text(std::string string) { return withText(Kind::text, std::move(string)); }
Node image(std::string filePath, std::string fallbackSymbol) {
    Node node = withText(Kind::image, std::move(filePath));
    node.placeholder = std::move(fallbackSymbol);
    return node;
}
Node symbol(std::string name) { return withText(Kind::symbol, std::move(name)); }

Node spacer(double minLength) {
    Node node = make(Kind::spacer);
    node.spacing = minLength;
    return node;
}

Node divider() { return make(Kind::divider); }

Node button(std::string label, std::function<void()> action) {
    Node node = withText(Kind::button, std::move(label));
    node.action = std::move(action);
    return node;
}

Node button(Node label, std::function<void()> action) {
    Node node = make(Kind::button);
    node.children.push_back(std::move(label));
    node.action = std::move(action);
    return node;
}

Node toggle(std::string label, bool isOn, std::function<void()> action) {
    Node node = withText(Kind::toggle, std::move(label));
    node.isOn = isOn;
    node.action = std::move(action);
    return node;
}

Node textField(std::string placeholder, std::string value, std::function<void(const std::string&)> onEdit) {
    Node node = withText(Kind::textField, std::move(value));
    node.placeholder = std::move(placeholder);
    node.onEdit = std::move(onEdit);
    return node;
}

Node picker(std::string label, Nodes items) {
    Node node = withText(Kind::picker, std::move(label));
    node.children = std::move(items);
    return node;
}

Node menu(std::string label, Nodes items) {
    Node node = withText(Kind::menu, std::move(label));
    node.children = std::move(items);
    return node;
}

Node popover(Node anchor, Node content, bool isPresented) {
    Node node = make(Kind::popover);
    node.children.push_back(std::move(anchor));
    node.children.push_back(std::move(content));
    node.isOn = isPresented;
    return node;
}

Node webView(std::shared_ptr<platform::WebView> view) {
    Node node = make(Kind::webView);
    node.webView = std::move(view);
    return node;
}

Node datePicker(std::string day, std::function<void(const std::string&)> onPick) {
    Node node = withText(Kind::datePicker, std::move(day));
    node.onEdit = std::move(onPick);
    return node;
}

Node rectangle() { return make(Kind::rectangle); }
Node roundedRectangle(double cornerRadius) {
    Node node = make(Kind::roundedRectangle);
    node.shapeCornerRadius = cornerRadius;
    return node;
}
Node circle() { return make(Kind::circle); }
Node capsule() { return make(Kind::capsule); }

Node line(UnitPoint from, UnitPoint to, double inset) {
    Node node = make(Kind::line);
    node.lineFrom = from;
    node.lineTo = to;
    node.lineInset = inset;
    return node;
}

Node path(std::vector<PathElement> elements, double width, double height) {
    Node node = make(Kind::path);
    node.pathElements = std::move(elements);
    node.pathWidth = width;
    node.pathHeight = height;
    return node;
}

Node checkerboard(double tile, double cornerRadius) {
    Node node = make(Kind::checkerboard);
    node.tile = tile;
    node.shapeCornerRadius = cornerRadius;
    return node;
}

// --- reading trees ----------------------------------------------------------------

const Node* findNode(const Node& root, const std::function<bool(const Node&)>& match) {
    if (match(root)) return &root;
    for (const auto& child : root.children) {
        if (const Node* hit = findNode(child, match)) return hit;
    }
    return nullptr;
}

const Node* findText(const Node& root, const std::string& string) {
    return findNode(root, [&](const Node& node) {
        switch (node.kind) {
            case Kind::text:
            case Kind::button:
            case Kind::toggle:
            case Kind::picker:
            case Kind::menu:
            case Kind::textField:
                return node.text == string;
            default:
                return false;
        }
    });
}

namespace {

bool hasAction(const Node& node) { return static_cast<bool>(node.action); }
bool hasHover(const Node& node) { return static_cast<bool>(node.onHover); }

void collectIn(const Node& node, const std::string& key, bool (*carries)(const Node&), std::vector<const Node*>& hits) {
    if (carries(node)) {
        if (node.text == key || node.mod.help == key || node.mod.accessibilityIdentifier == key ||
            (node.kind == Kind::button && node.text.empty() && findText(node, key))) {
            hits.push_back(&node);
        }
    }
    if (node.kind == Kind::popover) {
        if (!node.children.empty()) collectIn(node.children[0], key, carries, hits);
        if (node.isOn && node.children.size() > 1) collectIn(node.children[1], key, carries, hits);
        return;
    }
    for (const auto& child : node.children) collectIn(child, key, carries, hits);
}

std::string number(double value) {
    if (std::isinf(value)) return "inf";
    return support::swiftDescription(value);
}

std::string edgesText(const Edges& e) {
    if (e.top == e.leading && e.top == e.bottom && e.top == e.trailing) return number(e.top);
    return number(e.top) + "/" + number(e.leading) + "/" + number(e.bottom) + "/" + number(e.trailing);
}

std::string colorText(const Color& c) {
    auto channel = [](double v) { return std::to_string(static_cast<int>(std::lround(v * 255))); };
    return "rgba(" + channel(c.red) + "," + channel(c.green) + "," + channel(c.blue) + "," + number(c.alpha) + ")";
}

const char* weightName(FontWeight weight) {
    switch (weight) {
        case FontWeight::ultraLight: return "ultraLight";
        case FontWeight::thin: return "thin";
        case FontWeight::light: return "light";
        case FontWeight::regular: return "regular";
        case FontWeight::medium: return "medium";
        case FontWeight::semibold: return "semibold";
        case FontWeight::bold: return "bold";
        case FontWeight::heavy: return "heavy";
        case FontWeight::black: return "black";
    }
    return "regular";
}

const char* designName(FontDesign design) {
    switch (design) {
        case FontDesign::standard: return "standard";
        case FontDesign::rounded: return "rounded";
        case FontDesign::monospaced: return "monospaced";
        case FontDesign::serif: return "serif";
    }
    return "standard";
}


void describeInto(const Node& node, int depth, std::vector<std::string>& lines) {
    std::string line(static_cast<std::size_t>(depth) * 2, ' ');
    line += kindName(node.kind);
    if (!node.text.empty()) line += " " + support::quoted(node.text);
    switch (node.kind) {
        case Kind::vstack:
        case Kind::hstack:
        case Kind::zstack:
            if (node.alignment != Alignment::center) line += std::string(" align ") + alignmentName(node.alignment);
            if (node.spacing) line += " spacing " + number(*node.spacing);
            break;
        case Kind::grid:
            line += " columns " + std::to_string(node.columns);
            if (node.spacing) line += " spacing " + number(*node.spacing);
            break;
        case Kind::scroll:
            if (node.axis == Axis::horizontal) line += " horizontal";
            break;
        case Kind::spacer:
            if (node.spacing && *node.spacing > 0) line += " min " + number(*node.spacing);
            break;
        case Kind::roundedRectangle:
            line += " radius " + number(node.shapeCornerRadius);
            break;
        case Kind::line:
            line += " from " + number(node.lineFrom.x) + "," + number(node.lineFrom.y) + " to " + number(node.lineTo.x) +
                    "," + number(node.lineTo.y);
            if (node.lineInset != 0) line += " inset " + number(node.lineInset);
            break;
        case Kind::checkerboard:
            line += " tile " + number(node.tile) + " radius " + number(node.shapeCornerRadius);
            break;
        case Kind::path:
            line += " box " + number(node.pathWidth) + "x" + number(node.pathHeight) + " elements " +
                    std::to_string(node.pathElements.size());
            break;
        case Kind::toggle:
            line += node.isOn ? " on" : " off";
            break;
        case Kind::popover:
            line += node.isOn ? " presented" : " hidden";
            break;
        case Kind::picker:
            if (node.segmented) line += " segmented";
            break;
        case Kind::textField:
            if (!node.placeholder.empty()) line += " placeholder " + support::quoted(node.placeholder);
            break;
        default:
            break;
    }
    if (node.isOn && node.kind == Kind::button) line += " chosen";
    const auto& m = node.mod;
    if (m.font) {
        line += " font " + number(m.font->size) + " " + weightName(m.font->weight);
        if (m.font->design != FontDesign::standard) line += std::string(" ") + designName(m.font->design);
    }
    if (m.foreground) line += " fg " + colorText(*m.foreground);
    if (node.strokeStyle) {
        line += " stroke " + colorText(node.strokeStyle->color) + " " + number(node.strokeStyle->width);
        if (node.strokeStyle->cap == LineCap::round) line += " round";
        if (node.strokeStyle->cap == LineCap::square) line += " square";
    }
    if (m.lineLimit) line += " lines " + std::to_string(*m.lineLimit);
    if (m.fixedSize) line += " fixed";
    if (m.animation) line += " animation " + number(*m.animation);
    if (m.aspectRatio) line += " aspect " + number(*m.aspectRatio);
    if (node.isDefaultAction) line += " default";
    if (node.resizable) line += node.aspectFit ? " fit" : " fill";
    if (!m.padding.isZero()) line += " padding " + edgesText(m.padding);
    const Frame& f = m.frame;
    if (f.width) line += " width " + number(*f.width);
    if (f.height) line += " height " + number(*f.height);
    if (f.minWidth) line += " minWidth " + number(*f.minWidth);
    if (f.idealWidth) line += " idealWidth " + number(*f.idealWidth);
    if (f.maxWidth) line += " maxWidth " + number(*f.maxWidth);
    if (f.minHeight) line += " minHeight " + number(*f.minHeight);
    if (f.idealHeight) line += " idealHeight " + number(*f.idealHeight);
    if (f.maxHeight) line += " maxHeight " + number(*f.maxHeight);
    if (f.isSet() && f.alignment != Alignment::center) line += std::string(" frameAlign ") + alignmentName(f.alignment);
    if (m.background) line += " bg " + colorText(*m.background);
    if (m.border) line += " border " + colorText(m.border->color) + " " + number(m.border->width);
    if (m.cornerRadius != 0) line += " corner " + number(m.cornerRadius);
    if (m.shadow) {
        line += " shadow " + colorText(m.shadow->color) + " " + number(m.shadow->radius);
        if (m.shadow->x != 0 || m.shadow->y != 0) line += " " + number(m.shadow->x) + "," + number(m.shadow->y);
    }
    if (m.opacity != 1) line += " opacity " + number(m.opacity);
    if (m.scale != 1) line += " scale " + number(m.scale);
    if (m.rotation != 0) line += " rotation " + number(m.rotation);
    if (m.offsetX != 0 || m.offsetY != 0) line += " offset " + number(m.offsetX) + "," + number(m.offsetY);
    if (!m.help.empty()) line += " help " + support::quoted(m.help);
    // Identities are left out: rows carry fresh UUIDs, and the lines must stay comparable.
    if (!m.accessibilityIdentifier.empty()) line += " ax " + support::quoted(m.accessibilityIdentifier);
    if (node.action) line += " [action]";
    if (node.onHover) line += " [hover]";
    if (node.onSubmit) line += " [submit]";
    lines.push_back(std::move(line));
    for (const auto& child : node.children) describeInto(child, depth + 1, lines);
}

}  // namespace

const Node* findActionable(const Node& root, const std::string& labelOrHelp) {
    auto hits = findActionables(root, labelOrHelp);
    return hits.empty() ? nullptr : hits.front();
}

std::vector<const Node*> findActionables(const Node& root, const std::string& labelOrHelp) {
    std::vector<const Node*> hits;
    collectIn(root, labelOrHelp, hasAction, hits);
    return hits;
}

std::vector<const Node*> findHoverables(const Node& root, const std::string& labelOrHelp) {
    std::vector<const Node*> hits;
    collectIn(root, labelOrHelp, hasHover, hits);
    return hits;
}

std::vector<const Node*> findEditables(const Node& root, const std::string& label) {
    std::vector<const Node*> hits;
    std::function<void(const Node&)> visit = [&](const Node& node) {
        if (node.onEdit &&
            (node.placeholder == label || node.mod.help == label || node.mod.accessibilityIdentifier == label)) {
            hits.push_back(&node);
        }
        for (const auto& child : node.children) visit(child);
    };
    visit(root);
    return hits;
}

std::vector<const Node*> findChoosers(const Node& root, const std::string& label) {
    std::vector<const Node*> hits;
    std::function<void(const Node&)> visit = [&](const Node& node) {
        if ((node.kind == Kind::picker || node.kind == Kind::menu) &&
            (node.text == label || node.mod.help == label || node.mod.accessibilityIdentifier == label)) {
            hits.push_back(&node);
        }
        for (const auto& child : node.children) visit(child);
    };
    visit(root);
    return hits;
}

const Node* findDefaultAction(const Node& root) {
    if (const Node* field = findNode(root, [](const Node& node) { return static_cast<bool>(node.onSubmit); })) {
        return field;
    }
    return findNode(root, [](const Node& node) { return node.isDefaultAction && node.action; });
}

std::vector<std::string> describeTree(const Node& root) {
    std::vector<std::string> lines;
    describeInto(root, 0, lines);
    return lines;
}

const char* alignmentName(Alignment alignment) {
    switch (alignment) {
        case Alignment::center: return "center";
        case Alignment::leading: return "leading";
        case Alignment::trailing: return "trailing";
        case Alignment::top: return "top";
        case Alignment::bottom: return "bottom";
        case Alignment::topLeading: return "topLeading";
        case Alignment::topTrailing: return "topTrailing";
        case Alignment::bottomLeading: return "bottomLeading";
        case Alignment::bottomTrailing: return "bottomTrailing";
    }
    return "center";
}

}  // namespace velmora::ui
