#include <algorithm>
#include <cmath>

#include "assistant/Detectors.h"
#include "platform/Platform.h"

namespace velmora {

namespace {

constexpr double alignmentTolerance = 1.0;
constexpr double evenGapTolerance = 0.1;
constexpr std::size_t alignmentMinimum = 2;
constexpr std::size_t distributionMinimum = 3;

bool within(double a, double b) { return !(std::fabs(a - b) > alignmentTolerance); }

// The gaps between neighbours along one axis, measured from `position` and
// `size`, all lie within the tolerance of their mean. Gaps may be negative.
template <typename Position, typename Size>
bool evenlyDistributed(const Shapes& shapes, Position position, Size size) {
    if (shapes.size() < 2) return true;
    // Sorted by position; ties keep the host's order, as a stable sort does.
    std::vector<const ShapeMetadata*> sorted;
    sorted.reserve(shapes.size());
    for (const auto& shape : shapes) sorted.push_back(&shape);
    std::stable_sort(sorted.begin(), sorted.end(),
                     [&](const ShapeMetadata* a, const ShapeMetadata* b) { return position(*a) < position(*b); });
    const auto& first = *sorted.front();
    const auto& last = *sorted.back();
    double totalSpan = position(last) + size(last) - position(first);
    double totalSize = 0.0;
    for (const auto* shape : sorted) totalSize += size(*shape);
    std::size_t n = sorted.size() - 1;
    if (n < 1) return true;
    double expectedGap = (totalSpan - totalSize) / static_cast<double>(n);
    for (std::size_t i = 0; i < n; ++i) {
        double actualGap = position(*sorted[i + 1]) - (position(*sorted[i]) + size(*sorted[i]));
        if (std::fabs(actualGap - expectedGap) > evenGapTolerance) return false;
    }
    return true;
}

bool checkEvenDistributionHorizontally(const Shapes& shapes) {
    return evenlyDistributed(shapes, [](const ShapeMetadata& s) { return s.Left; },
                             [](const ShapeMetadata& s) { return s.Width; });
}

bool checkEvenDistributionVertically(const Shapes& shapes) {
    return evenlyDistributed(shapes, [](const ShapeMetadata& s) { return s.Top; },
                             [](const ShapeMetadata& s) { return s.Height; });
}

}  // namespace

namespace detail {

Spreads spreadsOf(const Shapes& shapes) {
    if (shapes.empty()) return {};
    double minLeft = shapes.front().Left, maxLeft = minLeft;
    double minTop = shapes.front().Top, maxTop = minTop;
    for (const auto& shape : shapes) {
        if (shape.Left < minLeft) minLeft = shape.Left;
        if (maxLeft < shape.Left) maxLeft = shape.Left;
        if (shape.Top < minTop) minTop = shape.Top;
        if (maxTop < shape.Top) maxTop = shape.Top;
    }
    return {maxLeft - minLeft, maxTop - minTop};
}

ShortcutRecommendation row(const char* name, std::vector<std::string> keys, const char* imagePath,
                           const char* timeSaved) {
    ShortcutRecommendation recommendation;
    recommendation.Name = name;
    recommendation.Keys = std::move(keys);
    recommendation.ImagePath = imagePath;
    recommendation.TimeSaved = timeSaved;
    return recommendation;
}

}  // namespace detail

Recommendations detectAlignmentRecommendations(const Shapes& shapes) {
    if (shapes.size() < alignmentMinimum) {
        platform::nslog("Not enough shapes for alignment recommendation.");
        return {};
    }
    // Every shape is measured against the first one as the host sent it, not pairwise.
    const auto& reference = shapes.front();
    const double refLeft = reference.Left, refCenterX = reference.Left + reference.Width / 2,
                 refRight = reference.Left + reference.Width;
    const double refTop = reference.Top, refCenterY = reference.Top + reference.Height / 2,
                 refBottom = reference.Top + reference.Height;
    bool left = true, center = true, right = true, top = true, middle = true, bottom = true;
    for (const auto& shape : shapes) {
        left = left && within(shape.Left, refLeft);
        center = center && within(shape.Left + shape.Width / 2, refCenterX);
        right = right && within(shape.Left + shape.Width, refRight);
        top = top && within(shape.Top, refTop);
        middle = middle && within(shape.Top + shape.Height / 2, refCenterY);
        bottom = bottom && within(shape.Top + shape.Height, refBottom);
    }
    if (left || center || right || top || middle || bottom) return {};

    auto spreads = detail::spreadsOf(shapes);
    if (spreads.horizontal > spreads.vertical * detail::dominanceFactor) {
        return {detail::row("Align Top/Middle/Bottom", {"Ctrl", "Cmd", "↑/M/↓"}, "AlignTop.png", "-3s")};
    }
    if (spreads.vertical > spreads.horizontal * detail::dominanceFactor) {
        return {detail::row("Align Left/Center/Right", {"Ctrl", "Cmd", "←/C/→"}, "AlignLeft.png", "-3s")};
    }
    return {};
}

Recommendations detectDistributionRecommendations(const Shapes& shapes) {
    if (shapes.size() < distributionMinimum) {
        platform::nslog("Not enough shapes for distribution recommendation.");
        return {};
    }
    auto spreads = detail::spreadsOf(shapes);
    bool horizontalDominance = spreads.horizontal > spreads.vertical * detail::dominanceFactor;
    bool verticalDominance = spreads.vertical > spreads.horizontal * detail::dominanceFactor;
    if (horizontalDominance) {
        if (checkEvenDistributionHorizontally(shapes)) {
            platform::nslog("Shapes are already evenly distributed horizontally.");
            return {};
        }
        return {detail::row("Distribute Horizontal", {"Ctrl", "Cmd", "H"}, "DistributeHorizontal.png", "-3s")};
    }
    if (verticalDominance) {
        if (checkEvenDistributionVertically(shapes)) {
            platform::nslog("Shapes are already evenly distributed vertically.");
            return {};
        }
        return {detail::row("Distribute Vertical", {"Ctrl", "Cmd", "V"}, "DistributeVertical.png", "-3s")};
    }
    platform::nslog("No dominant orientation for distribution recommendation.");
    return {};
}

}  // namespace velmora
