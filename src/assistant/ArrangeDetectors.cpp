#include <algorithm>
#include <cmath>

#include "assistant/Detectors.h"
#include "support/Unicode.h"

namespace velmora {

namespace {

// Share of a shape's own area that must be covered, exclusive.
constexpr double overlapThreshold = 0.45;
constexpr const char* lineType = "9";
constexpr const char* harveyWord = "Harvey";
// A line is straight when its width or its height is not beyond this.
constexpr double lineTolerance = 0.0;

using detail::row;

}  // namespace

bool isOverlapping(const ShapeMetadata& shapeA, const ShapeMetadata& shapeB) {
    return shapeA.Left < shapeB.Left + shapeB.Width && shapeB.Left < shapeA.Left + shapeA.Width &&
           shapeA.Top < shapeB.Top + shapeB.Height && shapeB.Top < shapeA.Top + shapeA.Height;
}

double calculateOverlapArea(const ShapeMetadata& shapeA, const ShapeMetadata& shapeB) {
    double width = std::min(shapeA.Left + shapeA.Width, shapeB.Left + shapeB.Width) - std::max(shapeA.Left, shapeB.Left);
    double height = std::min(shapeA.Top + shapeA.Height, shapeB.Top + shapeB.Height) - std::max(shapeA.Top, shapeB.Top);
    return std::max(width, 0.0) * std::max(height, 0.0);
}

Recommendations detectArrangeRecommendations(const Shapes& selectedShapes, const Shapes& otherShapes) {
    std::vector<const ShapeMetadata*> overlapping;
    for (const auto& selected : selectedShapes) {
        overlapping.clear();
        for (const auto& other : otherShapes) {
            if (other.ID != selected.ID && isOverlapping(other, selected)) overlapping.push_back(&other);
        }
        if (overlapping.empty()) continue;
        for (const auto* other : overlapping) {
            double area = calculateOverlapArea(selected, *other);
            // A zero-size shape gives 0 / 0, which is not a number and passes nothing.
            double selectedRatio = area / (selected.Width * selected.Height);
            double otherRatio = area / (other->Width * other->Height);
            if (!(selectedRatio > overlapThreshold) && !(otherRatio > overlapThreshold)) continue;

            // The count is of every overlapping shape, qualifying or not.
            bool up = selected.ZOrder < other->ZOrder;
            if (overlapping.size() == 1) {
                if (up) return {row("Bring to Front", {"Cmd", "Shift", "F"}, "BringToFront.png", "-3s")};
                return {row("Send to Back", {"Cmd", "Shift", "B"}, "SendToBack.png", "-3s")};
            }
            if (up) {
                return {row("Bring to Front", {"Cmd", "Shift", "F"}, "BringToFront.png", "-3s"),
                        row("Bring Forward", {"Cmd", "Opt", "Shift", "F"}, "BringForward.png", "-3s")};
            }
            return {row("Send to Back", {"Cmd", "Shift", "B"}, "SendToBack.png", "-3s"),
                    row("Send Backward", {"Cmd", "Opt", "Shift", "B"}, "SendBackward.png", "-3s")};
        }
    }
    return {};
}

Recommendations detectElementsRecommendations(const Shapes& shapes) {
    if (shapes.empty()) return {};
    bool harvey = std::any_of(shapes.begin(), shapes.end(), [](const ShapeMetadata& shape) {
        return support::containsIgnoringCase(shape.Name, harveyWord);
    });
    bool slantedLine = std::any_of(shapes.begin(), shapes.end(), [](const ShapeMetadata& shape) {
        return shape.ShpType == lineType && std::fabs(shape.Height) > lineTolerance &&
               std::fabs(shape.Width) > lineTolerance;
    });
    if (harvey) return {row("Toggle Harvey", {"Ctrl", "T"}, "ToggleHarvey.png", "-10s")};
    if (slantedLine) return {row("Straighten Lines", {"Ctrl", "T"}, "Lines.png", "-5s")};
    return {};
}

Recommendations detectInsertRecommendations(const Shapes& shapes) {
    if (!shapes.empty()) return {};
    return {row("TextBox", {"Ctrl", "Q"}, "Textbox.png", "-3s"),
            row("Text Table", {"Cmd", "T"}, "VelmoraTable.png", "-30s"),
            row("Sticky Notes", {"Cmd", "0"}, "Sticky.png", "-5s")};
}

}  // namespace velmora
