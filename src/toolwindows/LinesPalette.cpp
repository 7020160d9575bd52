#include "toolwindows/LinesPalette.h"

#include "bridge/Exports.h"
#include "bridge/MacroRunner.h"
#include "platform/Platform.h"

namespace velmora {

namespace {

using namespace ui;
using Element = PathElement;

struct ArrowHead {
    double minX, midY, maxX, head;
};

ArrowHead headOf(const platform::Rect& r) {
    return {r.x, r.y + r.height / 2, r.x + r.width, r.width * 0.15};
}

Element rect(double x, double y, double width, double height) { return {Element::Kind::rect, x, y, width, height}; }
Element move(double x, double y) { return {Element::Kind::move, x, y}; }
Element lineTo(double x, double y) { return {Element::Kind::line, x, y}; }

// The palette's own padding around its groups.
constexpr double palettePadding = 16;

}  // namespace

std::vector<PathElement> triangleLineArrow(const platform::Rect& r) {
    const auto a = headOf(r);
    return {rect(a.minX, a.midY - 0.5, a.maxX - a.head - a.minX, 1.0), move(a.maxX - a.head, a.midY - a.head / 2),
            lineTo(a.maxX, a.midY), lineTo(a.maxX - a.head, a.midY + a.head / 2), {Element::Kind::close}};
}

std::vector<PathElement> openLineArrow(const platform::Rect& r) {
    const auto a = headOf(r);
    return {rect(a.minX, a.midY - 0.05, a.maxX - a.head - a.minX, 0.1), move(a.maxX - a.head, a.midY - a.head / 2),
            lineTo(a.maxX, a.midY), move(a.maxX - a.head, a.midY + a.head / 2), lineTo(a.maxX, a.midY)};
}

std::vector<PathElement> circleLineArrow(const platform::Rect& r) {
    const auto a = headOf(r);
    const double d = a.head * 0.8;
    return {rect(a.minX, a.midY - 0.5, a.maxX - a.head - a.minX, 1.0),
            {Element::Kind::ellipse, (a.maxX - a.head) + (a.head - d) / 2, a.midY - d / 2, d, d}};
}

Node macroOptionView(const LinePreset& preset, bool isHovered, Color highlightColor, std::function<void()> click,
                     std::function<void(bool)> hover) {
    Node sample;
    if (preset.sample == LineSample::line) {
        sample = rectangle().foregroundColor(preset.gray ? colors::gray : colors::black).frame(80, preset.thickness);
    } else {
        const platform::Rect box{0, 0, 80, 10};
        auto elements = preset.sample == LineSample::triangleArrow ? triangleLineArrow(box)
                        : preset.sample == LineSample::openArrow   ? openLineArrow(box)
                                                                   : circleLineArrow(box);
        sample = path(std::move(elements), 80, 10);
        if (preset.fill) {
            sample.foregroundColor(colors::black);
        } else {
            sample.stroke(colors::black, 1);
        }
        sample.frame(80, 10);
    }
    Node card = vstack(Alignment::center, 5,
                       {std::move(sample).frame(80, 30), text(preset.label).font(captionSize).foregroundColor(colors::black)})
                    .padding(5)
                    .background(colors::white)
                    .cornerRadius(5);
    Node option = button(zstack({std::move(card), roundedRectangle(5).stroke(isHovered ? highlightColor : colors::clear, 2)})
                             .shadow(isHovered ? highlightColor.opacity(0.3) : colors::gray.opacity(0.2), 4, 2, 2)
                             .animation(0.2),
                         std::move(click))
                      .id(preset.argument);
    option.onHover = std::move(hover);
    return option;
}

Node SlideInsertionOptionsView::body(double) {
    std::weak_ptr<SlideInsertionOptionsView> weak = weak_from_this();
    Nodes groups;
    for (std::size_t first = 0; first < linePresets.size(); first += 3) {
        Nodes options;
        for (std::size_t i = first; i < first + 3; ++i) {
            const LinePreset& preset = linePresets[i];
            options.push_back(macroOptionView(
                preset, hovered_.count(i) > 0, highlightColor,
                [argument = std::string(preset.argument)] { runInsertLineMacroWithArguments({argument}); },
                [weak, i](bool inside) {
                    auto self = weak.lock();
                    if (!self) return;
                    if (inside) {
                        self->hovered_.insert(i);
                    } else {
                        self->hovered_.erase(i);
                    }
                    if (auto view = self->view_.lock()) view->invalidate();
                }));
        }
        groups.push_back(text(linePresets[first].group).font(headlineSize, FontWeight::bold));
        groups.push_back(hstack(Alignment::center, 20, std::move(options)));
    }
    return vstack(Alignment::leading, 10, std::move(groups)).padding(palettePadding);
}

std::shared_ptr<ToolWindowController>& globalLineController() {
    // Lives as long as the process: a main-queue block may still use it at exit.
    static auto& controller = *new std::shared_ptr<ToolWindowController>();
    return controller;
}

std::shared_ptr<ToolWindowController> LinesWindowController::make() {
    auto view = std::make_shared<SlideInsertionOptionsView>();
    auto controller = ToolWindowController::make({"Insert Lines", {600, 200}, 0.95},
                                                 [view](double width) { return view->body(width); });
    view->attach(controller->hostingView());
    return controller;
}

// Called by the macro project. In spite of the log line a second call does
// not close the palette: it opens a fresh one.
void initializeLinesOverlay() {
    platform::nslog("Velmora Lines: toggling");
    platform::mainAsync([] { presentToolWindow(globalLineController(), LinesWindowController::make); });
}

}  // namespace velmora
