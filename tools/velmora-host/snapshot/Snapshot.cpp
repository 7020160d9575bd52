#include "snapshot/Snapshot.h"

#include <algorithm>

#include "Host.h"
#include "document/Document.h"
#include "support/Text.h"

namespace velmora::host {

namespace {

std::string px(double value) { return support::swiftDescription(value) + "px"; }

constexpr double editorMargin = 24;
constexpr double fontPoints = 18;    // the host's default body size
constexpr double marginTop = 3.6, marginLeft = 7.2;

std::string number(double value) { return support::swiftDescription(value); }

// The end of a line: a marker in stroke widths, its tip on the end point.
std::string marker(LineEnd end, const std::string& id, const std::string& color) {
    const std::string head = "<marker id=\"" + id + "\" viewBox=\"0 0 10 10\" markerWidth=\"6\" markerHeight=\"6\" orient=\"auto\" ";
    switch (end) {
        case LineEnd::none: return {};
        case LineEnd::triangle:
            return head + "refX=\"10\" refY=\"5\"><path d=\"M0 0 L10 5 L0 10 Z\" fill=\"" + color + "\"/></marker>";
        case LineEnd::open:
            return head + "refX=\"9\" refY=\"5\"><path d=\"M1 1 L9 5 L1 9\" fill=\"none\" stroke=\"" + color +
                   "\" stroke-width=\"1.5\"/></marker>";
        case LineEnd::circle:
            return head + "refX=\"5\" refY=\"5\"><circle cx=\"5\" cy=\"5\" r=\"4\" fill=\"" + color + "\"/></marker>";
    }
    return {};
}

// Drawn from the top left corner to the bottom right one, as the model places a line.
std::string lineSvg(const Shape& shape, double scale) {
    const std::string w = number(shape.width * scale), h = number(shape.height * scale);
    // An svg with a side of zero draws nothing, so a level line gets a box of one pixel.
    const std::string boxW = number(std::max(1.0, shape.width * scale)), boxH = number(std::max(1.0, shape.height * scale));
    const std::string color = shape.line ? shape.line->hex() : "none";
    const std::string id = "line-end-" + std::to_string(shape.id);
    const std::string defs = shape.line ? marker(shape.end, id, color) : std::string();
    return "<svg width=\"" + boxW + "\" height=\"" + boxH + "\">" + (defs.empty() ? "" : "<defs>" + defs + "</defs>") +
           "<line x1=\"0\" y1=\"0\" x2=\"" + w + "\" y2=\"" + h + "\" stroke=\"" + color + "\" stroke-width=\"" +
           number(shape.lineWeight * scale) + "\"" + (defs.empty() ? "" : " marker-end=\"url(#" + id + ")\"") + "/></svg>";
}

// Cells in the theme's first accent for the header row and column; with
// separator lines off, the editor still shows the grid dashed and faint.
std::string tableGrid(const TableGrid& grid, Rgb accent) {
    std::string html = std::string("<table class=\"host-grid") + (grid.separators ? "" : " host-grid-faint") + "\">";
    for (int r = 0; r < grid.rows; ++r) {
        html += "<tr>";
        for (int c = 0; c < grid.columns; ++c) {
            const bool header = (grid.headerRow && r == 0) || (grid.headerColumn && c == 0);
            html += header ? "<td data-header=\"1\" style=\"background-color:" + accent.hex() + "\"></td>" : std::string("<td></td>");
        }
        html += "</tr>";
    }
    return html + "</table>";
}

std::string shapeElement(const Shape& shape, int order, double scale, Rgb accent) {
    const std::string kind(kindName(shape.kind));
    std::string style = "left:" + px(shape.left * scale) + ";top:" + px(shape.top * scale) +
                        ";width:" + px(shape.width * scale) + ";height:" + px(shape.height * scale) +
                        ";color:" + shape.font.hex() + ";font-size:" + px(fontPoints * scale);
    if (shape.rotation != 0) style += ";transform:rotate(" + number(shape.rotation) + "deg)";
    std::string inner, data;
    if (shape.kind == ShapeKind::line) {
        inner = lineSvg(shape, scale);
        data = " data-weight=\"" + number(shape.lineWeight) + "\" data-end=\"" + std::string(lineEndName(shape.end)) + "\"";
    } else if (shape.kind == ShapeKind::picture) {
        // The picture fills its frame; one without an image shows its title.
        // An SVG goes in as an image too, so nothing in it runs.
        const std::string_view type = pictureType(shape.picture);
        if (!type.empty()) {
            inner = "<img alt=\"\" style=\"width:100%;height:100%;object-fit:contain;display:block\" src=\"data:" +
                    std::string(type) + ";base64," + support::base64Encoded(shape.picture) + "\">";
        } else {
            style += ";background-color:#e8e8e8";
            inner = "<span>" + support::htmlEscaped(shape.text) + "</span>";
        }
        data = " data-source=\"" + support::htmlEscaped(shape.source) + "\"";
        if (shape.keepSourceFormatting) data += std::string(" data-keep=\"") + (*shape.keepSourceFormatting ? "yes" : "no") + "\"";
        if (shape.iconStyle) data += " data-style=\"" + support::htmlEscaped(*shape.iconStyle) + "\"";
    } else if (shape.kind == ShapeKind::table && shape.table) {
        style += ";background-color:" + (shape.fill ? shape.fill->hex() : std::string("transparent"));
        inner = tableGrid(*shape.table, accent);
        data = " data-rows=\"" + std::to_string(shape.table->rows) + "\" data-columns=\"" +
               std::to_string(shape.table->columns) + "\"";
    } else {
        // Borders keep at least a pixel, so a thin one still shows at a small scale.
        const std::string weight = px(std::max(1.0, shape.lineWeight * scale));
        style += ";background-color:" + (shape.fill ? shape.fill->hex() : std::string("transparent"));
        style += shape.line ? ";border:" + weight + " solid " + shape.line->hex() : std::string(";border:none;border-color:transparent");
        style += ";padding:" + px(marginTop * scale) + " " + px(marginLeft * scale);
        if (!shape.text.empty()) inner += "<span>" + support::htmlEscaped(shape.text) + "</span>";
    }
    return "<div class=\"host-shape host-" + kind + "\" data-shape=\"" + support::htmlEscaped(shape.name) +
           "\" data-type=\"" + kind + "\"" + data +
           (order ? " data-selected=\"1\" data-order=\"" + std::to_string(order) + "\"" : std::string()) +
           " style=\"" + style + "\">" + inner + "</div>";
}

// The current slide at the largest scale that fits the editor with a margin.
std::string slideElement(double editorWidth, double editorHeight) {
    const auto doc = Host::instance().document().copy();
    const double scale = std::max(0.0, std::min((editorWidth - 2 * editorMargin) / slideWidth,
                                                (editorHeight - 2 * editorMargin) / slideHeight));
    std::string html = "<div class=\"host-slide\" data-slide=\"" + std::to_string(doc.current + 1) + "\" data-scale=\"" +
                       support::swiftDescription(scale) + "\" style=\"width:" + px(slideWidth * scale) + ";height:" +
                       px(slideHeight * scale) + "\">";
    const Rgb accent = doc.themeSlot("Accent1").value_or(Rgb{0x44, 0x72, 0xC4});
    for (const auto& shape : doc.currentSlide().shapes) {
        html += "\n" + shapeElement(shape, doc.selectionOrder(shape.id), scale, accent);
    }
    return html + "</div>";
}

}  // namespace

std::string snapshotPage() {
    auto& host = Host::instance();
    auto split = host.splitView();
    const auto bounds = split->frame();
    std::string page =
        "<!DOCTYPE html>\n<html><head><meta charset=\"utf-8\"><title>Velmora host snapshot</title>\n<style>\n"
        "body{margin:0;background:#b9bcc2;font-family:-apple-system,'Helvetica Neue','Liberation Sans','DejaVu Sans',sans-serif;}\n"
        ".host-desk{position:relative;margin:16px;width:" + px(bounds.width) + ";}\n"
        ".host-floating{position:absolute;left:50%;top:50%;transform:translate(-50%,-50%);}\n"
        ".host-window{position:relative;width:" + px(bounds.width) + ";background:#fff;"
        "box-shadow:0 8px 30px rgba(0,0,0,.35);border-radius:10px;overflow:hidden;}\n"
        ".host-ribbon{height:40px;display:flex;align-items:center;gap:18px;padding:0 16px;background:#b7472a;color:#fff;font-size:13px;}\n"
        ".host-ribbon .tab-on{font-weight:600;border-bottom:2px solid #fff;}\n"
        ".host-split{position:relative;height:" + px(bounds.height) + ";overflow:hidden;}\n"
        ".host-view{position:absolute;}\n"
        ".host-editor{background:#e6e6e6;display:flex;align-items:center;justify-content:center;}\n"
        ".host-slide{position:relative;flex:none;aspect-ratio:16/9;background:#fff;box-shadow:0 1px 4px rgba(0,0,0,.3);}\n"
        ".host-shape{position:absolute;box-sizing:border-box;display:flex;align-items:center;justify-content:center;"
        "text-align:center;white-space:pre-wrap;overflow-wrap:anywhere;line-height:1.2;}\n"
        ".host-ellipse{border-radius:50%;}\n"
        ".host-line svg{position:absolute;left:0;top:0;overflow:visible;}\n"
        ".host-grid{width:100%;height:100%;border-collapse:collapse;table-layout:fixed;}\n"
        ".host-grid td{border:1px solid #7F7F7F;padding:0;}\n"
        ".host-grid-faint td{border:1px dashed #D0D0D0;}\n"
        ".host-shape[data-selected]{outline:2px dashed #1a73e8;outline-offset:3px;}\n"
        ".host-divider{position:absolute;top:0;width:1px;background:#c6c6c8;z-index:5;pointer-events:none;}\n"
        "</style></head>\n<body>\n<div class=\"host-desk\">\n<div class=\"host-window\" data-class=\"CUIDocumentShellWindow\">\n"
        "<div class=\"host-ribbon\"><span>Home</span><span>Insert</span><span>Design</span><span>Slide Show</span>"
        "<span class=\"tab-on\">Velmora</span></div>\n"
        "<div class=\"host-split\" data-class=\"CUITaskPaneSplitView\">\n";
    for (const auto& view : split->subviews()) {
        const auto f = view->frame();
        if (const auto* access = host.paneAccess(view)) {
            page += access->html() + "\n";
            continue;
        }
        const bool editor = view->className() == "CUISlideEditorView";
        page += "<div class=\"host-view" + std::string(editor ? " host-editor" : "") + "\" data-class=\"" +
                support::htmlEscaped(view->className()) + "\" style=\"left:" + px(f.x) + ";top:" + px(f.y) + ";width:" +
                px(f.width) + ";height:" + px(f.height) + "\">";
        if (editor) page += slideElement(f.width, f.height);
        if (auto text = firstTextField(view)) page += "<span data-label=\"" + support::htmlEscaped(*text) + "\">" + support::htmlEscaped(*text) + "</span>";
        page += "</div>\n";
    }
    // The split view draws a thin divider where two arranged subviews meet.
    const auto arranged = split->subviews();
    for (std::size_t i = 1; i < arranged.size(); ++i) {
        const auto f = arranged[i]->frame();
        page += "<div class=\"host-divider\" data-divider=\"" + std::to_string(i) + "\" style=\"left:" +
                px(f.x - 1) + ";height:" + px(bounds.height) + "\"></div>\n";
    }
    page += "</div>\n</div>\n";
    // Floating windows over the document window, centred on it, back to
    // front; the z-index keeps them above whatever a pane stacks.
    const auto floating = host.visibleWindows();
    int stack = 1000;
    for (auto it = floating.rbegin(); it != floating.rend(); ++it) {
        const auto& w = *it->window;
        page += "<div class=\"host-floating\" data-window=\"" + support::htmlEscaped(w.title()) + "\" data-level=\"" +
                std::to_string(w.level()) + "\"" + (it->key ? " data-key=\"1\"" : "") + " style=\"z-index:" +
                std::to_string(++stack) + "\">" + (it->access.html ? it->access.html() : std::string()) + "</div>\n";
    }
    page += "</div>\n</body></html>\n";
    return page;
}

std::optional<std::string> firstTextField(const std::shared_ptr<platform::View>& root) {
    if (!root) return std::nullopt;
    if (auto value = root->textFieldValue()) return value;
    for (const auto& child : root->subviews()) {
        if (auto hit = firstTextField(child)) return hit;
    }
    return std::nullopt;
}

}  // namespace velmora::host
