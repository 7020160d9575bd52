// The lines palette: a floating window of nine line presets; each click
// sends its number to the macro InsertLine and the window stays open.
//
// Provides: LinePreset, linePresets, triangleLineArrow(), openLineArrow(),
// circleLineArrow(), macroOptionView(), SlideInsertionOptionsView,
// LinesWindowController, globalLineController().
// Main thread only.
#pragma once

#include <array>
#include <functional>
#include <memory>
#include <set>
#include <string>
#include <vector>

#include "platform/Views.h"
#include "toolwindows/ToolWindow.h"
#include "ui/Node.h"

namespace velmora {

enum class LineSample { line, triangleArrow, openArrow, circleArrow };

struct LinePreset {
    const char* group;
    const char* label;
    LineSample sample;
    double thickness;    // line samples
    bool gray;           // line samples: the separator colour
    bool fill;           // arrow samples: filled, else stroked
    const char* argument;  // InsertLine's one argument
};

inline constexpr std::array<LinePreset, 9> linePresets = {{
    {"Default (Black)", "Default", LineSample::line, 0.5, false, true, "1"},
    {"Default (Black)", "Strong", LineSample::line, 1.0, false, true, "2"},
    {"Default (Black)", "Impact", LineSample::line, 1.5, false, true, "3"},
    {"Separator (Gray)", "Default", LineSample::line, 0.5, true, true, "4"},
    {"Separator (Gray)", "Strong", LineSample::line, 1.0, true, true, "5"},
    {"Separator (Gray)", "Impact", LineSample::line, 1.5, true, true, "6"},
    {"Arrow", "Triangle", LineSample::triangleArrow, 0, false, true, "7"},
    {"Arrow", "Open", LineSample::openArrow, 0, false, false, "8"},
    {"Arrow", "Circle", LineSample::circleArrow, 0, false, true, "9"},
}};

// The arrow samples within a rectangle r: a shaft along the middle from the
// left edge to where the head starts, 0.15 of the width from the right.
std::vector<ui::PathElement> triangleLineArrow(const platform::Rect& r);
std::vector<ui::PathElement> openLineArrow(const platform::Rect& r);
std::vector<ui::PathElement> circleLineArrow(const platform::Rect& r);

// One option: its sample over its label in a white card, outlined and
// shadowed in `highlightColor` while hovered.
ui::Node macroOptionView(const LinePreset& preset, bool isHovered, ui::Color highlightColor,
                         std::function<void()> click, std::function<void(bool)> hover);

// The palette and which options the pointer is over.
class SlideInsertionOptionsView : public std::enable_shared_from_this<SlideInsertionOptionsView> {
public:
    ui::Color highlightColor = ui::colors::subtleRed;

    ui::Node body(double width);
    void attach(const std::weak_ptr<ui::HostingView>& view) { view_ = view; }

private:
    std::set<std::size_t> hovered_;
    std::weak_ptr<ui::HostingView> view_;
};

class LinesWindowController {
public:
    // A window "Insert Lines" of 600 by 200 before it fits its content, at
    // 0.95 background opacity.
    static std::shared_ptr<ToolWindowController> make();
};

// The lines window now shown or last shown; replaced at each opening.
std::shared_ptr<ToolWindowController>& globalLineController();

}  // namespace velmora
