#include <cmath>

#include "assistant/Detectors.h"
#include "support/Unicode.h"

namespace velmora {

namespace {

// Same size means no difference at all.
constexpr double sizeTolerance = 0.0;

using detail::row;

bool differs(double a, double b) { return std::fabs(a - b) > sizeTolerance; }

// True with fewer than two shapes; otherwise every shape, the first
// included, must match the first.
template <typename Differs>
bool allLikeFirst(const Shapes& shapes, Differs differsFromReference) {
    if (shapes.size() < 2) return true;
    const auto& reference = shapes.front();
    for (const auto& shape : shapes) {
        if (differsFromReference(shape, reference)) return false;
    }
    return true;
}

bool checkSameSize(const Shapes& shapes) {
    return allLikeFirst(shapes, [](const ShapeMetadata& s, const ShapeMetadata& r) {
        return differs(s.Width, r.Width) || differs(s.Height, r.Height);
    });
}

bool checkSameHeight(const Shapes& shapes) {
    return allLikeFirst(shapes, [](const ShapeMetadata& s, const ShapeMetadata& r) { return differs(s.Height, r.Height); });
}

bool checkSameWidth(const Shapes& shapes) {
    return allLikeFirst(shapes, [](const ShapeMetadata& s, const ShapeMetadata& r) { return differs(s.Width, r.Width); });
}

}  // namespace

Recommendations detectResizeRecommendations(const Shapes& shapes) {
    if (shapes.empty()) return {};
    Recommendations result;
    if (shapes.size() == 2 && !shapes[0].ShpType.empty() && !shapes[1].ShpType.empty() &&
        support::equalsIgnoringCase(shapes[0].ShpType, shapes[1].ShpType)) {
        result.push_back(row("Swap Objects", {"Ctrl", "3"}, "SwapIcon.png", "-6s"));
    }
    auto spreads = detail::spreadsOf(shapes);
    bool horizontalDominance = spreads.horizontal > spreads.vertical * detail::dominanceFactor;
    bool verticalDominance = spreads.vertical > spreads.horizontal * detail::dominanceFactor;
    if (checkSameSize(shapes)) return result;
    // A row is to match in height, a column in width; the other dimension is not offered.
    if (horizontalDominance) {
        if (!checkSameHeight(shapes)) result.push_back(row("Same Height", {"Cmd", "Shift", "E"}, "SameHeight.png", "-5s"));
    } else if (verticalDominance) {
        if (!checkSameWidth(shapes)) result.push_back(row("Same Width", {"Ctrl", "Cmd", "E"}, "SameWidth.png", "-5s"));
    }
    return result;
}

Recommendations detectTextRecommendations(const Shapes& shapes) {
    if (shapes.size() != 1) return {};
    const auto& shape = shapes.front();
    if (!shape.HasText) return {};  // HasTextFrame is not consulted
    Recommendations result;
    if (!shape.AutoSize) {
        result.push_back(row("Enable AutoFit", {"Cmd", "8"}, "Autofit.png", "-6s"));
    } else {
        result.push_back(row("Disable AutoFit", {"Cmd", "Shift", "8"}, "DisableAutofit.png", "-6s"));
        if (shape.WordWrap) {
            result.push_back(row("Toggle WordWrap", {"Cmd", "Shift", "7"}, "WordWrap.png", "-6s"));
        } else {
            result.push_back(row("Toggle WordWrap", {"Cmd", "7"}, "WordWrap.png", "-6s"));
        }
    }
    if (shape.MarginTop == 0.0 && shape.MarginLeft == 0.0 && shape.HasFill) {
        result.push_back(row("Increase Text Margin", {"Cmd", "Ctrl", "0"}, "IncreaseMargin.png", "-6s"));
    } else if (shape.MarginTop > 0.0 || shape.MarginLeft > 0.0) {
        result.push_back(row("Decrease Text Margin", {"Cmd", "Ctrl", "9"}, "DecreaseMargin.png", "-6s"));
    }
    if (shape.HasLineBreaks) result.push_back(row("Adjust Line Spacing", {"Cmd", "Shift", "L"}, "ListLineSpacing.png", "-6s"));
    return result;
}

Recommendations detectSendRecommendations(const Shapes& shapes) {
    if (!shapes.empty()) return {};
    return {row("Send Slides", {"Ctrl", "Cmd", "↵"}, "Send.png", "-60s")};
}

}  // namespace velmora
