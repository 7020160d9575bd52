#include "ui/HtmlRenderer.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <optional>
#include <map>

#include "platform/Platform.h"
#include "support/Text.h"
#include "ui/HostingView.h"

namespace velmora::ui {

namespace {

std::string px(double value) { return support::swiftDescription(value) + "px"; }

std::string num(double value) { return support::swiftDescription(value); }

std::string cssColor(const Color& c) {
    auto channel = [](double v) { return std::to_string(static_cast<int>(std::lround(std::clamp(v, 0.0, 1.0) * 255))); };
    return "rgba(" + channel(c.red) + "," + channel(c.green) + "," + channel(c.blue) + "," +
           support::formatFixed(std::clamp(c.alpha, 0.0, 1.0), 3) + ")";
}

// Days from 1970-01-01 to a civil date (proleptic Gregorian).
long daysFromCivil(long year, unsigned month, unsigned day) {
    year -= month <= 2;
    const long era = (year >= 0 ? year : year - 399) / 400;
    const unsigned yearOfEra = static_cast<unsigned>(year - era * 400);
    const unsigned dayOfYear = (153 * (month + (month > 2 ? -3 : 9)) + 2) / 5 + day - 1;
    const unsigned dayOfEra = yearOfEra * 365 + yearOfEra / 4 - yearOfEra / 100 + dayOfYear;
    return era * 146097 + static_cast<long>(dayOfEra) - 719468;
}

// A month sheet for a "yyyy-MM-dd" day: the month's name, the weekdays from
// Sunday, and the days with the chosen one marked. Anything else draws empty.
std::string calendarHtml(const std::string& day) {
    static const char* const months[] = {"January", "February", "March",     "April",   "May",      "June",
                                         "July",    "August",   "September", "October", "November", "December"};
    int year = 0;
    unsigned month = 0, chosen = 0;
    if (day.size() != 10 || std::sscanf(day.c_str(), "%4d-%2u-%2u", &year, &month, &chosen) != 3 || month < 1 ||
        month > 12) {
        return {};
    }
    const long first = daysFromCivil(year, month, 1);
    const long next = month == 12 ? daysFromCivil(year + 1, 1, 1) : daysFromCivil(year, month + 1, 1);
    const long weekday = ((first % 7) + 7 + 4) % 7;  // 1970-01-01 was a Thursday; Sunday is 0
    std::string out = "<div class=\"v-calendar-head\">" + std::string(months[month - 1]) + " " + std::to_string(year) +
                      "</div><div class=\"v-calendar-days\">";
    for (const char* name : {"S", "M", "T", "W", "T", "F", "S"}) {
        out += "<span class=\"v-calendar-weekday\">" + std::string(name) + "</span>";
    }
    for (long blank = 0; blank < weekday; ++blank) out += "<span></span>";
    for (long d = 1; d <= next - first; ++d) {
        out += "<span" + std::string(d == chosen ? " class=\"v-calendar-day-on\"" : "") + ">" + std::to_string(d) +
               "</span>";
    }
    return out + "</div>";
}

// The image type by its first bytes, then by the name; nothing for data no
// browser would draw.
std::string mimeType(const std::string& path, const std::string& data) {
    if (data.rfind("\x89PNG", 0) == 0) return "image/png";
    if (data.rfind("\xFF\xD8\xFF", 0) == 0) return "image/jpeg";
    if (data.rfind("GIF8", 0) == 0) return "image/gif";
    if (data.size() > 12 && data.rfind("RIFF", 0) == 0 && data.compare(8, 4, "WEBP") == 0) return "image/webp";
    const auto head = support::trimWhitespace(std::string_view(data).substr(0, 256));
    if (head.rfind("<svg", 0) == 0 || (head.rfind("<?xml", 0) == 0 && data.find("<svg") != std::string::npos)) {
        return "image/svg+xml";
    }
    const std::string lower = support::lowercased(path);
    auto endsWith = [&](std::string_view tail) {
        return lower.size() >= tail.size() && lower.compare(lower.size() - tail.size(), tail.size(), tail) == 0;
    };
    if (endsWith(".svg")) return "image/svg+xml";
    return {};
}

// A data URI for the file, or nothing when it cannot be read as an image.
std::optional<std::string> imageDataURI(const std::string& path) {
    if (path.empty()) return std::nullopt;
    auto data = platform::files().read(path);
    if (!data || data->empty()) return std::nullopt;
    const std::string mime = mimeType(path, *data);
    if (mime.empty()) return std::nullopt;
    return "data:" + mime + ";base64," + support::base64Encoded(*data);
}

const char* weightNumber(FontWeight weight) {
    switch (weight) {
        case FontWeight::ultraLight: return "100";
        case FontWeight::thin: return "200";
        case FontWeight::light: return "300";
        case FontWeight::regular: return "400";
        case FontWeight::medium: return "500";
        case FontWeight::semibold: return "600";
        case FontWeight::bold: return "700";
        case FontWeight::heavy: return "800";
        case FontWeight::black: return "900";
    }
    return "400";
}

const char* fontFamily(FontDesign design) {
    switch (design) {
        case FontDesign::standard: return "var(--v-font)";
        case FontDesign::rounded: return "ui-rounded, var(--v-font)";
        case FontDesign::monospaced: return "ui-monospace, Menlo, 'DejaVu Sans Mono', monospace";
        case FontDesign::serif: return "ui-serif, Georgia, serif";
    }
    return "var(--v-font)";
}

// Cross-axis placement of a stack's children.
const char* crossAlign(Kind kind, Alignment alignment) {
    const bool vertical = kind == Kind::vstack;
    switch (alignment) {
        case Alignment::leading:
        case Alignment::topLeading:
        case Alignment::bottomLeading:
            return vertical ? "flex-start" : "center";
        case Alignment::trailing:
        case Alignment::topTrailing:
        case Alignment::bottomTrailing:
            return vertical ? "flex-end" : "center";
        case Alignment::top:
            return vertical ? "center" : "flex-start";
        case Alignment::bottom:
            return vertical ? "center" : "flex-end";
        case Alignment::center:
            return "center";
    }
    return "center";
}

// Where content sits inside a frame or a layered stack: justify, align.
std::pair<const char*, const char*> placement(Alignment alignment) {
    switch (alignment) {
        case Alignment::center: return {"center", "center"};
        case Alignment::leading: return {"flex-start", "center"};
        case Alignment::trailing: return {"flex-end", "center"};
        case Alignment::top: return {"center", "flex-start"};
        case Alignment::bottom: return {"center", "flex-end"};
        case Alignment::topLeading: return {"flex-start", "flex-start"};
        case Alignment::topTrailing: return {"flex-end", "flex-start"};
        case Alignment::bottomLeading: return {"flex-start", "flex-end"};
        case Alignment::bottomTrailing: return {"flex-end", "flex-end"};
    }
    return {"center", "center"};
}

// The same placement in grid terms.
const char* gridPlace(std::string_view flex) {
    if (flex == "flex-start") return "start";
    if (flex == "flex-end") return "end";
    return "center";
}

bool isShape(Kind kind) {
    return kind == Kind::rectangle || kind == Kind::roundedRectangle || kind == Kind::circle || kind == Kind::capsule;
}

bool isShapeLike(Kind kind) {
    return isShape(kind) || kind == Kind::line || kind == Kind::checkerboard || kind == Kind::path;
}

// SVG path data; ellipses as two arcs.
std::string pathData(const std::vector<PathElement>& elements) {
    std::string d;
    auto n = [](double v) { return support::swiftDescription(v); };
    for (const auto& e : elements) {
        switch (e.kind) {
            case PathElement::Kind::move: d += "M" + n(e.x) + " " + n(e.y) + " "; break;
            case PathElement::Kind::line: d += "L" + n(e.x) + " " + n(e.y) + " "; break;
            case PathElement::Kind::close: d += "Z "; break;
            case PathElement::Kind::rect:
                d += "M" + n(e.x) + " " + n(e.y) + " h" + n(e.width) + " v" + n(e.height) + " h" + n(-e.width) + " Z ";
                break;
            case PathElement::Kind::ellipse: {
                const double rx = e.width / 2, ry = e.height / 2;
                d += "M" + n(e.x) + " " + n(e.y + ry) + " a" + n(rx) + " " + n(ry) + " 0 1 0 " + n(e.width) + " 0 a" + n(rx) +
                     " " + n(ry) + " 0 1 0 " + n(-e.width) + " 0 Z ";
                break;
            }
        }
    }
    return d;
}

const char* lineCap(LineCap cap) {
    switch (cap) {
        case LineCap::round: return "round";
        case LineCap::square: return "square";
        case LineCap::butt: break;
    }
    return "butt";
}

// The direction of the parent's flow, for spacers, dividers and fills.
enum class Flow { none, column, row };

// Whether a node takes all the width offered, as a spacer in a row makes its
// row do, and as that row makes every stack around it do.
bool fillsWidth(const Node& n, Flow flow) {
    const Frame& f = n.mod.frame;
    if (f.width) return false;
    if (f.maxWidth) return std::isinf(*f.maxWidth);
    switch (n.kind) {
        case Kind::spacer: return flow == Flow::row;
        case Kind::divider: return flow != Flow::row;
        case Kind::textField:
        case Kind::rectangle:
        case Kind::roundedRectangle:
        case Kind::capsule:
        case Kind::line:
        case Kind::checkerboard:
            return true;
        case Kind::scroll: return true;
        case Kind::webView: return true;
        case Kind::text:
        case Kind::image:
        case Kind::symbol:
        case Kind::toggle:
        case Kind::picker:
        case Kind::menu:
        case Kind::circle:
            return false;
        default: break;
    }
    const Flow inner = n.kind == Kind::hstack || n.kind == Kind::button ? Flow::row : Flow::column;
    for (const auto& child : n.children) {
        if (fillsWidth(child, inner)) return true;
        if (n.kind == Kind::popover) break;
    }
    return false;
}

bool fillsBoth(const Node& n) {
    if (n.mod.frame.isSet()) return false;
    if (isShapeLike(n.kind)) return true;
    if (n.kind != Kind::zstack) return false;
    for (const auto& child : n.children) {
        if (fillsBoth(child)) return true;
    }
    return false;
}

bool holdsScroll(const Node& n) {
    if (n.kind == Kind::scroll || n.kind == Kind::webView) return true;
    if (n.kind != Kind::vstack && n.kind != Kind::zstack) return false;
    for (const auto& child : n.children) {
        if (!child.mod.frame.height && holdsScroll(child)) return true;
    }
    return false;
}

// Whether a node takes all the height offered: a spacer in a column, a frame
// with an endless maximum height, and a stack that holds one along its axis.
bool fillsHeight(const Node& n, Flow flow) {
    const Frame& f = n.mod.frame;
    if (f.height) return false;
    if (f.maxHeight) return std::isinf(*f.maxHeight);
    if (n.kind == Kind::spacer) return flow == Flow::column;
    if (n.kind != Kind::vstack && n.kind != Kind::zstack) return false;
    const Flow inner = n.kind == Kind::vstack ? Flow::column : Flow::none;
    for (const auto& child : n.children) {
        if (fillsHeight(child, inner)) return true;
    }
    return false;
}

void fillStyle(Flow flow, std::string& style) {
    if (flow == Flow::row) {
        style += "flex:1 1 auto;min-width:0;";
    } else if (flow == Flow::column) {
        style += "align-self:stretch;";
    } else {
        style += "justify-self:stretch;";  // a layer of a layered stack
    }
}

class Writer {
public:
    std::string out;

    void node(const Node& n, Flow flow) {
        if ((isShapeLike(n.kind) || n.kind == Kind::divider) && !n.mod.padding.isZero()) {
            // A padded shape is drawn inset in a box of its own, so its
            // outline follows the smaller rectangle.
            Node box;
            box.kind = Kind::zstack;
            box.mod = n.mod;
            box.mod.foreground.reset();
            Node shape = n;
            shape.mod = Node::Modifiers{};
            shape.mod.foreground = n.mod.foreground;
            box.children.push_back(std::move(shape));
            node(box, flow);
            return;
        }
        const auto& m = n.mod;
        const bool framed = m.frame.isSet();
        std::string outer;  // frame, background, border, clip, shadow, opacity, scale
        std::string inner;  // content styles and padding
        contentStyle(n, flow, inner);
        if (!m.padding.isZero()) {
            inner += "padding:" + px(m.padding.top) + " " + px(m.padding.trailing) + " " + px(m.padding.bottom) + " " +
                     px(m.padding.leading) + ";";
        }
        std::string& decor = framed ? outer : inner;
        if (framed) frameStyle(m.frame, flow, outer);
        // Spacers and fills stretch their stacks, as in a declarative toolkit.
        if (n.kind != Kind::spacer) {
            Node content = n;
            content.mod.frame = Frame{};
            const bool contentFills = fillsWidth(content, flow);
            if (framed) {
                if (contentFills) fillStyle(Flow::column, inner);
                if (contentFills && !m.frame.width && !m.frame.maxWidth) fillStyle(flow, outer);
            } else if (contentFills) {
                fillStyle(flow, inner);
            }
            // A column with a spacer grows to the height its frame or its
            // column gives it, so the spacer has room to take.
            if (framed && fillsHeight(content, Flow::column)) inner += "flex-grow:1;";
            if (flow == Flow::column && (fillsHeight(n, flow) || (!m.frame.height && holdsScroll(content)))) {
                (framed ? outer : inner) += "flex-grow:1;";
            }
            // Shapes take all the room offered, and so do layered stacks of them.
            if (fillsBoth(content)) {
                inner += "flex:1 1 auto;align-self:stretch;justify-self:stretch;min-width:0;min-height:0;";
            } else if (holdsScroll(content)) {
                // A scroll view takes all the height offered, and so does a
                // stack that holds one, within its frame or its layered stack.
                if (framed) inner += "flex:1 1 auto;min-height:0;";
                if (flow == Flow::none) (framed ? outer : inner) += "align-self:stretch;";
            }
        }
        if (m.background) decor += "background:" + cssColor(*m.background) + ";";
        if (m.border) {
            decor += "outline:" + px(m.border->width) + " solid " + cssColor(m.border->color) + ";outline-offset:-" +
                     px(m.border->width) + ";";
        }
        // Clipping leaves the layout alone: a clipped text still keeps its words whole.
        if (m.cornerRadius > 0) decor += "border-radius:" + px(m.cornerRadius) + ";overflow:clip;";
        if (m.shadow) {
            decor += "filter:drop-shadow(" + px(m.shadow->x) + " " + px(m.shadow->y) + " " + px(m.shadow->radius) +
                     " " + cssColor(m.shadow->color) + ");";
        }
        if (m.opacity != 1) decor += "opacity:" + num(m.opacity) + ";";
        if (m.scale != 1 || m.rotation != 0 || m.offsetX != 0 || m.offsetY != 0) {
            std::string transform;
            if (m.offsetX != 0 || m.offsetY != 0) transform += "translate(" + px(m.offsetX) + "," + px(m.offsetY) + ") ";
            if (m.rotation != 0) transform += "rotate(" + num(m.rotation) + "deg) ";
            if (m.scale != 1) transform += "scale(" + num(m.scale) + ")";
            decor += "transform:" + transform + ";";
        }
        // Text styles go on the outermost element so the whole node inherits them.
        std::string& text = framed ? outer : inner;
        if (m.font) {
            text += "font-size:" + px(m.font->size) + ";font-weight:" + weightNumber(m.font->weight) +
                    ";font-family:" + fontFamily(m.font->design) + ";";
        }
        if (m.foreground) text += "color:" + cssColor(*m.foreground) + ";";

        if (framed) out += "<div class=\"v-frame\" style=\"" + outer + "\">";
        element(n, flow, inner);
        if (framed) out += "</div>";
    }

private:
    void contentStyle(const Node& n, Flow flow, std::string& style) {
        switch (n.kind) {
            case Kind::vstack:
            case Kind::hstack:
                style += std::string("align-items:") + crossAlign(n.kind, n.alignment) + ";gap:" +
                         px(n.spacing.value_or(8)) + ";";
                break;
            case Kind::zstack: {
                auto [justify, align] = placement(n.alignment);
                style += std::string("justify-items:") + gridPlace(justify) + ";align-items:" + gridPlace(align) + ";";
                break;
            }
            case Kind::grid:
                style += "grid-template-columns:repeat(" + std::to_string(n.columns) + ",minmax(0,1fr));gap:" +
                         px(n.spacing.value_or(8)) + ";";
                break;
            case Kind::spacer:
                if (n.spacing && *n.spacing > 0) {
                    style += std::string(flow == Flow::row ? "min-width:" : "min-height:") + px(*n.spacing) + ";";
                }
                break;
            default:
                break;
        }
        if (n.mod.fixedSize) style += "white-space:nowrap;flex-shrink:0;max-width:none;";
        if (n.mod.animation) style += "transition:all " + num(*n.mod.animation) + "s ease-in-out;";
        if (n.mod.aspectRatio) style += "aspect-ratio:" + num(*n.mod.aspectRatio) + ";";
        if (n.mod.lineLimit) {
            if (*n.mod.lineLimit == 1) {
                style += "white-space:nowrap;overflow:hidden;text-overflow:ellipsis;";
            } else {
                style += "display:-webkit-box;-webkit-box-orient:vertical;overflow:hidden;-webkit-line-clamp:" +
                         std::to_string(*n.mod.lineLimit) + ";";
            }
        }
        if (isShape(n.kind)) {
            if (n.strokeStyle) {
                // Half the line inside the edge, half outside, as a stroked path.
                const std::string half = px(n.strokeStyle->width / 2);
                const std::string color = cssColor(n.strokeStyle->color);
                style += "background:transparent;box-shadow:inset 0 0 0 " + half + " " + color + ",0 0 0 " + half + " " +
                         color + ";";
            } else {
                style += "background:" + (n.mod.foreground ? cssColor(*n.mod.foreground) : std::string("currentColor")) + ";";
            }
            if (n.kind == Kind::roundedRectangle) style += "border-radius:" + px(n.shapeCornerRadius) + ";";
            if (n.kind == Kind::circle) style += "border-radius:50%;aspect-ratio:1;";
            if (n.kind == Kind::capsule) style += "border-radius:9999px;";
        }
        if (n.kind == Kind::checkerboard) {
            // Squares where row + column is even: the top left and bottom right
            // quarters of each repeat of two tiles.
            const std::string square = cssColor(colors::gray.opacity(0.22));
            style += "background-color:#fff;background-image:repeating-conic-gradient(transparent 0 25%," + square +
                     " 0 50%);background-size:" + px(2 * n.tile) + " " + px(2 * n.tile) + ";border-radius:" +
                     px(n.shapeCornerRadius) + ";";
        }
    }

    void frameStyle(const Frame& f, Flow flow, std::string& style) {
        // A frame is a column: its main axis is the vertical one.
        auto [horizontal, vertical] = placement(f.alignment);
        style += std::string("justify-content:") + vertical + ";align-items:" + horizontal + ";";
        if (f.width) style += "width:" + px(*f.width) + ";min-width:" + px(*f.width) + ";max-width:" + px(*f.width) + ";";
        if (f.height) {
            style += "height:" + px(*f.height) + ";min-height:" + px(*f.height) + ";max-height:" + px(*f.height) + ";";
        }
        if (f.minWidth) style += "min-width:" + px(*f.minWidth) + ";";
        if (f.idealWidth && !f.width) style += "width:" + px(*f.idealWidth) + ";";
        if (f.minHeight) style += "min-height:" + px(*f.minHeight) + ";";
        if (f.idealHeight && !f.height) style += "height:" + px(*f.idealHeight) + ";";
        const bool fillWidth = f.maxWidth && std::isinf(*f.maxWidth);
        const bool fillHeight = f.maxHeight && std::isinf(*f.maxHeight);
        if (f.maxWidth && !fillWidth) style += "max-width:" + px(*f.maxWidth) + ";";
        if (f.maxHeight && !fillHeight) style += "max-height:" + px(*f.maxHeight) + ";";
        if (fillWidth) style += flow == Flow::row ? "flex:1 1 0;min-width:0;" : "align-self:stretch;width:100%;";
        if (fillHeight) style += flow == Flow::column ? "flex:1 1 0;min-height:0;" : "align-self:stretch;height:100%;";
        if (f.width || f.height) style += "flex-shrink:0;";
    }

    // An enclosed symbol ("info.circle", "questionmark.square") is its base
    // glyph in a drawn outline, so it shows whatever fonts the browser has.
    void symbolInner(const std::string& name) {
        auto endsWith = [&](std::string_view tail) {
            return name.size() > tail.size() && name.compare(name.size() - tail.size(), tail.size(), tail) == 0;
        };
        const char* shape = endsWith(".circle") ? "v-sym-circle" : endsWith(".square") ? "v-sym-square" : nullptr;
        if (!shape) {
            out += support::htmlEscaped(symbolGlyph(name));
            return;
        }
        const std::string base = name.substr(0, name.rfind('.'));
        std::string glyph = base == "info" ? "i" : base == "questionmark" ? "?" : base == "xmark" ? "\u2715"
                                                                            : base == "checkmark" ? "\u2713" : symbolGlyph(base);
        out += std::string("<span class=\"") + shape + "\"><span>" + support::htmlEscaped(glyph) + "</span></span>";
    }

    std::string attributes(const Node& n) {
        std::string a = std::string(" data-kind=\"") + kindName(n.kind) + "\"";
        if (!n.text.empty() && n.kind != Kind::image) a += " data-label=\"" + support::htmlEscaped(n.text) + "\"";
        if (!n.mod.help.empty()) {
            a += " data-help=\"" + support::htmlEscaped(n.mod.help) + "\" title=\"" + support::htmlEscaped(n.mod.help) + "\"";
        }
        if (!n.mod.identity.empty()) a += " data-id=\"" + support::htmlEscaped(n.mod.identity) + "\"";
        if (!n.mod.accessibilityIdentifier.empty()) {
            a += " data-ax=\"" + support::htmlEscaped(n.mod.accessibilityIdentifier) + "\"";
        }
        if (n.action || n.onEdit) a += " data-action=\"1\"";
        if (n.isOn) a += " data-on=\"1\"";
        if (n.isDefaultAction) a += " data-default=\"1\"";
        return a;
    }

    void open(const char* tag, const char* cls, const Node& n, const std::string& style, const std::string& extra = {}) {
        out += std::string("<") + tag + " class=\"" + cls + "\"" + attributes(n) + extra;
        if (!style.empty()) out += " style=\"" + style + "\"";
        out += ">";
    }

    void children(const Node& n, Flow flow) {
        for (const auto& child : n.children) node(child, flow);
    }

    // A stack, scroll view or grid: a div whose children flow as given.
    void container(const char* cls, const Node& n, const std::string& style, Flow flow) {
        open("div", cls, n, style);
        children(n, flow);
        out += "</div>";
    }

    void element(const Node& n, Flow flow, const std::string& style) {
        switch (n.kind) {
            case Kind::vstack: container("v-vstack", n, style, Flow::column); break;
            case Kind::hstack: container("v-hstack", n, style, Flow::row); break;
            case Kind::zstack: container("v-zstack", n, style, Flow::none); break;
            case Kind::scroll:
                if (n.axis == Axis::horizontal) {
                    container("v-scroll v-scroll-h", n, style, Flow::row);
                } else {
                    container("v-scroll", n, style, Flow::column);
                }
                break;
            case Kind::grid: container("v-grid", n, style, Flow::none); break;
            case Kind::text:
                open("span", "v-text", n, style);
                out += support::htmlEscaped(n.text);
                out += "</span>";
                break;
            case Kind::image: {
                auto uri = imageDataURI(n.text);
                std::string extra = " data-src=\"" + support::htmlEscaped(n.text) + "\"";
                if (!uri) extra += " data-missing=\"1\"";
                open("div", n.resizable ? "v-image v-resizable" : "v-image", n, style, extra);
                if (uri) {
                    out += "<img alt=\"\" src=\"" + *uri + "\" style=\"object-fit:" +
                           (n.aspectFit ? "contain" : "cover") + "\">";
                } else if (!n.placeholder.empty()) {
                    out += "<span class=\"v-glyph\" data-symbol=\"" + support::htmlEscaped(n.placeholder) + "\">";
                    symbolInner(n.placeholder);
                    out += "</span>";
                }
                out += "</div>";
                break;
            }
            case Kind::symbol:
                open("span", "v-symbol", n, style, " data-symbol=\"" + support::htmlEscaped(n.text) + "\"");
                symbolInner(n.text);
                out += "</span>";
                break;
            case Kind::spacer:
                open("div", "v-spacer", n, style);
                out += "</div>";
                break;
            case Kind::divider:
                open("div", flow == Flow::row ? "v-divider v-divider-v" : "v-divider", n, style);
                out += "</div>";
                break;
            case Kind::button:
                open("button", "v-button", n, style, " type=\"button\"");
                if (n.text.empty()) {
                    children(n, Flow::row);
                } else {
                    out += support::htmlEscaped(n.text);
                }
                out += "</button>";
                break;
            case Kind::toggle:
                if (!n.children.empty()) {
                    open("div", "v-toggle", n, style);
                    children(n, Flow::row);
                    out += "</div>";
                    break;
                }
                open("label", "v-toggle", n, style);
                out += std::string("<input type=\"checkbox\"") + (n.isOn ? " checked" : "") + "><span>" +
                       support::htmlEscaped(n.text) + "</span></label>";
                break;
            case Kind::textField:
                open("input", "v-field", n, style,
                     " type=\"text\" value=\"" + support::htmlEscaped(n.text) + "\" placeholder=\"" + support::htmlEscaped(n.placeholder) +
                         "\"");
                break;
            case Kind::picker:
                if (n.segmented) {
                    open("div", "v-segments", n, style);
                    for (const auto& item : n.children) {
                        out += "<span class=\"v-segment" + std::string(item.isOn ? " v-segment-on" : "") + "\">" +
                               support::htmlEscaped(item.text) + "</span>";
                    }
                    out += "</div>";
                    break;
                }
                open("label", "v-picker", n, style);
                if (!n.text.empty()) out += "<span>" + support::htmlEscaped(n.text) + "</span>";
                out += "<select>";
                for (const auto& item : n.children) {
                    out += "<option" + std::string(item.isOn ? " selected" : "") + ">" + support::htmlEscaped(item.text) +
                           "</option>";
                }
                out += "</select></label>";
                break;
            case Kind::menu:
                open("div", "v-menu", n, style);
                out += "<span class=\"v-menu-label\">" + support::htmlEscaped(n.text) + " \u25BE</span><div class=\"v-menu-items\">";
                children(n, Flow::column);
                out += "</div></div>";
                break;
            case Kind::webView: {
                // The page runs in a frame of its own, as in the real web view.
                open("iframe", "v-web", n, style,
                     " sandbox=\"allow-scripts\" srcdoc=\"" +
                         support::htmlEscaped(n.webView ? n.webView->loadedHTML() : std::string{}) + "\"");
                out += "</iframe>";
                break;
            }
            case Kind::datePicker:
                open("div", "v-calendar", n, style);
                out += calendarHtml(n.text);
                out += "</div>";
                break;
            case Kind::popover:
                open("div", "v-popover", n, style);
                if (!n.children.empty()) node(n.children[0], Flow::none);
                if (n.isOn && n.children.size() > 1) {
                    out += "<div class=\"v-popover-content\">";
                    node(n.children[1], Flow::none);
                    out += "</div>";
                }
                out += "</div>";
                break;
            case Kind::rectangle:
            case Kind::roundedRectangle:
            case Kind::circle:
            case Kind::capsule:
            case Kind::checkerboard:
                open("div", "v-shape", n, style);
                out += "</div>";
                break;
            case Kind::path: {
                open("div", "v-shape v-line", n, style);
                const std::string fill = n.strokeStyle ? "none" : cssColor(n.mod.foreground.value_or(colors::black));
                std::string stroke = "none", width = "0";
                if (n.strokeStyle) {
                    stroke = cssColor(n.strokeStyle->color);
                    width = num(n.strokeStyle->width);
                }
                out += "<svg class=\"v-line-svg\" style=\"left:0;top:0;width:100%;height:100%\" viewBox=\"0 0 " +
                       num(n.pathWidth) + " " + num(n.pathHeight) + "\" preserveAspectRatio=\"none\"><path d=\"" +
                       pathData(n.pathElements) + "\" fill=\"" + fill + "\" stroke=\"" + stroke + "\" stroke-width=\"" +
                       width + "\" vector-effect=\"non-scaling-stroke\"/></svg></div>";
                break;
            }
            case Kind::line: {
                open("div", "v-shape v-line", n, style);
                const Stroke stroke = n.strokeStyle.value_or(Stroke{n.mod.foreground.value_or(colors::black), 1});
                const std::string inset = px(n.lineInset);
                out += "<svg class=\"v-line-svg\" style=\"left:" + inset + ";top:" + inset + ";width:calc(100% - 2 * " +
                       inset + ");height:calc(100% - 2 * " + inset + ")\"><line x1=\"" + num(n.lineFrom.x * 100) +
                       "%\" y1=\"" + num(n.lineFrom.y * 100) + "%\" x2=\"" + num(n.lineTo.x * 100) + "%\" y2=\"" +
                       num(n.lineTo.y * 100) + "%\" stroke=\"" + cssColor(stroke.color) + "\" stroke-width=\"" +
                       num(stroke.width) + "\" stroke-linecap=\"" + lineCap(stroke.cap) + "\"/></svg></div>";
                break;
            }
        }
    }
};

const char* kStyleSheet = R"CSS(
.velmora-root, .velmora-root * { box-sizing: border-box; }
.velmora-root { --v-font: -apple-system, BlinkMacSystemFont, "Helvetica Neue", "Liberation Sans", "DejaVu Sans", sans-serif;
  font-family: var(--v-font); font-size: 13px; font-weight: 400; color: rgba(0,0,0,0.85); line-height: 1.2; }
.velmora-root div, .velmora-root span, .velmora-root button, .velmora-root label { margin: 0; }
.v-vstack { display: flex; flex-direction: column; min-width: 0; }
.v-hstack { display: flex; flex-direction: row; min-width: 0; }
.v-hstack > .v-hstack { min-width: auto; }
.v-zstack { display: grid; grid-template-rows: minmax(0, 1fr); }
.v-zstack > * { grid-area: 1 / 1; position: relative; }
.v-grid { display: grid; }
.v-frame { display: flex; flex-direction: column; flex-shrink: 1; }
.v-frame > * { flex-shrink: 1; }
.v-scroll { display: flex; flex-direction: column; overflow-x: hidden; overflow-y: auto; align-self: stretch; flex: 1 1 auto; min-height: 0; height: 100%; }
.v-scroll > * { flex-shrink: 0; }
.v-scroll-h { flex-direction: row; overflow-x: auto; overflow-y: hidden; }
.v-text { display: block; white-space: pre-wrap; overflow-wrap: break-word; }
.v-vstack > .v-text, .v-frame > .v-text, .v-hosting > .v-text { max-width: 100%; }
.v-symbol, .v-glyph { display: inline-flex; align-items: center; justify-content: center; line-height: 1; }
.v-sym-circle, .v-sym-square { display: inline-flex; align-items: center; justify-content: center; width: 1em; height: 1em;
  border: 0.08em solid currentColor; border-radius: 50%; }
.v-sym-square { border-radius: 0.2em; }
.v-sym-circle > span, .v-sym-square > span { font-size: 0.7em; font-weight: 600; line-height: 1; }
.v-image { display: flex; align-items: center; justify-content: center; overflow: hidden; flex-shrink: 0; }
.v-image img { display: block; max-width: 100%; max-height: 100%; }
.v-resizable { align-self: stretch; width: 100%; height: 100%; }
.v-resizable img { width: 100%; height: 100%; }
.v-spacer { flex: 1 1 0; min-width: 0; min-height: 0; }
.v-divider { align-self: stretch; height: 1px; min-height: 1px; background: rgba(0,0,0,0.1); }
.v-divider-v { height: auto; width: 1px; min-width: 1px; }
.v-button { font: inherit; color: inherit; background: none; border: none; padding: 0; margin: 0; text-align: inherit;
  cursor: pointer; display: flex; align-items: center; }
.v-toggle { display: inline-flex; align-items: center; gap: 6px; }
.v-field { font: inherit; border: 1px solid rgba(0,0,0,0.2); border-radius: 5px; padding: 3px 6px; min-width: 0; }
.v-picker { display: inline-flex; align-items: center; gap: 6px; }
.v-menu-items { display: none; }
.v-segments { display: flex; align-self: stretch; background: rgba(0,0,0,0.06); border-radius: 6px; padding: 2px; gap: 2px; }
.v-segment { flex: 1 1 0; text-align: center; padding: 3px 8px; border-radius: 5px; }
.v-segment-on { background: #fff; box-shadow: 0 1px 2px rgba(0,0,0,0.2); }
.v-web { display: block; border: 0; width: 100%; flex: 1 1 auto; min-height: 0; align-self: stretch; background: #fff; }
.v-calendar { display: flex; flex-direction: column; gap: 4px; font-size: 11px; }
.v-calendar-head { font-weight: 600; text-align: center; }
.v-calendar-days { display: grid; grid-template-columns: repeat(7, 20px); gap: 2px; text-align: center; }
.v-calendar-weekday { color: rgba(0,0,0,0.5); }
.v-calendar-day-on { background: rgb(0,122,255); color: #fff; border-radius: 50%; }
.v-popover { position: relative; display: flex; }
.v-popover-content { position: absolute; top: 100%; left: 0; z-index: 10; background: #fff;
  border-radius: 8px; box-shadow: 0 4px 16px rgba(0,0,0,0.25); }
.v-shape { flex: 1 1 0; align-self: stretch; min-width: 0; min-height: 0; }
.v-zstack > .v-shape { justify-self: stretch; align-self: stretch; }
.v-zstack > .v-divider { justify-self: stretch; }
.v-line { position: relative; }
.v-line-svg { position: absolute; overflow: visible; }
.v-view { position: absolute; overflow: hidden; }
.v-textfield-view { display: flex; align-items: center; white-space: nowrap; overflow: hidden; text-overflow: ellipsis; }
.v-hosting { display: flex; flex-direction: column; justify-content: center; align-items: center; }
.v-hosting > * { flex: 0 1 auto; min-height: 0; max-width: 100%; }
)CSS";

void renderViewInto(const platform::View& view, std::string& out) {
    const auto frame = view.frame();
    const auto* styled = dynamic_cast<const HtmlStyled*>(&view);
    const auto* hosting = dynamic_cast<const HostingView*>(&view);
    const auto value = view.textFieldValue();
    std::string cls = "v-view";
    if (value) cls += " v-textfield-view";
    if (hosting) cls += " v-hosting";
    out += "<div class=\"" + cls + "\" data-class=\"" + support::htmlEscaped(view.className()) + "\"";
    if (value) out += " data-label=\"" + support::htmlEscaped(*value) + "\"";
    if (styled) out += styled->htmlAttributes();
    out += " style=\"left:" + px(frame.x) + ";top:" + px(frame.y) + ";width:" + px(frame.width) +
           ";height:" + px(frame.height) + ";";
    if (styled) out += styled->htmlStyle();
    out += "\">";
    if (value) out += support::htmlEscaped(*value);
    if (styled) out += styled->htmlContent();
    if (hosting) {
        // Rendering reads the tree as last built; a host snapshot does not rebuild it.
        auto* mutableHosting = const_cast<HostingView*>(hosting);
        out += renderNode(mutableHosting->tree());
    }
    for (const auto& child : view.subviews()) {
        if (child) renderViewInto(*child, out);
    }
    out += "</div>";
}

}  // namespace

const std::string& htmlStyleSheet() {
    static const auto& sheet = *new const std::string(kStyleSheet);
    return sheet;
}

std::string renderNode(const Node& root) {
    Writer writer;
    writer.node(root, Flow::column);
    return std::move(writer.out);
}

std::string renderPage(const Node& root, double width, double height, const std::string& title) {
    std::string page = "<!DOCTYPE html>\n<html><head><meta charset=\"utf-8\"><title>" + support::htmlEscaped(title) +
                       "</title>\n<style>body{margin:0;background:#ececec;}" + htmlStyleSheet() +
                       "</style></head>\n<body><div class=\"velmora-root v-hosting\" style=\"position:relative;width:" +
                       px(width) + ";height:" + px(height) + ";background:#fff;\">";
    page += renderNode(root);
    page += "</div></body></html>\n";
    return page;
}

std::string renderView(const platform::View& view) {
    std::string out;
    renderViewInto(view, out);
    return out;
}

std::string symbolGlyph(const std::string& name) {
    static const auto& glyphs = *new const std::map<std::string, std::string>{
        {"info.circle", "\u24D8"},
        {"chevron.up", "\u2303"},
        {"chevron.down", "\u2304"},
        {"chevron.left", "\u2039"},
        {"chevron.right", "\u203A"},
        {"questionmark.square", "\u2370"},
        {"questionmark", "?"},
        {"xmark", "\u2715"},
        {"xmark.circle", "\u24E7"},
        {"xmark.circle.fill", "\u2716"},
        {"magnifyingglass", "\u2315"},
        {"plus", "+"},
        {"minus", "\u2212"},
        {"trash", "\u2672"},
        {"star", "\u2606"},
        {"star.fill", "\u2605"},
        {"tag", "\u2302"},
        {"checkmark", "\u2713"},
        {"checkmark.circle.fill", "\u2714"},
        {"arrow.down.circle", "\u2B07"},
        {"arrow.clockwise", "\u21BB"},
        {"photo", "\u25A3"},
        {"folder", "\u25A4"},
        {"square.grid.2x2", "\u25A6"},
        {"exclamationmark.triangle", "\u26A0"},
        {"keyboard", "\u2328"},
        {"progress.indicator", "\u25CC"},
        {"arrow.right", "\u2192"},
    };
    auto it = glyphs.find(name);
    return it != glyphs.end() ? it->second : std::string("\u25A1");
}

}  // namespace velmora::ui
