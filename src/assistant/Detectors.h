// The eight detectors that turn the selected shapes into recommended
// shortcuts, and the geometry helpers they share.
//
// Provides: detectAlignmentRecommendations, detectDistributionRecommendations,
// detectArrangeRecommendations, isOverlapping, calculateOverlapArea,
// detectElementsRecommendations, detectInsertRecommendations,
// detectResizeRecommendations, detectTextRecommendations,
// detectSendRecommendations.
// Thread: any. Pure functions of their arguments; every row has a fresh id.
// Only alignment and distribution log, through NSLog.
#pragma once

#include <vector>

#include "assistant/ShapeMetadata.h"
#include "assistant/ShortcutRecommendation.h"

namespace velmora {

using Recommendations = std::vector<ShortcutRecommendation>;
using Shapes = std::vector<ShapeMetadata>;

// Two or more shapes spread along one axis that line up on no edge or centre
// of the first shape: align along the dominant axis. Zero or one row.
Recommendations detectAlignmentRecommendations(const Shapes& shapes);
// Three or more shapes with uneven gaps along the dominant axis. Zero or one row.
Recommendations detectDistributionRecommendations(const Shapes& shapes);

// A selected shape and another one that cover a good share of each other:
// bring it up or send it down. The first qualifying pair decides. Zero to two rows.
Recommendations detectArrangeRecommendations(const Shapes& selectedShapes, const Shapes& otherShapes);
// Open rectangles: shapes that only touch do not overlap.
bool isOverlapping(const ShapeMetadata& shapeA, const ShapeMetadata& shapeB);
double calculateOverlapArea(const ShapeMetadata& shapeA, const ShapeMetadata& shapeB);
// "Toggle Harvey" before "Straighten Lines". Zero or one row.
Recommendations detectElementsRecommendations(const Shapes& shapes);
// Nothing selected: the three insert rows.
Recommendations detectInsertRecommendations(const Shapes& shapes);

// Swap two like shapes; same height for a row, same width for a column.
Recommendations detectResizeRecommendations(const Shapes& shapes);
// One text shape: autofit, word wrap, margin and line spacing. Zero to four rows.
Recommendations detectTextRecommendations(const Shapes& shapes);
// Nothing selected: "Send Slides".
Recommendations detectSendRecommendations(const Shapes& shapes);

namespace detail {
// Largest minus smallest `Left` (horizontal) and `Top` (vertical); sizes do not enter.
struct Spreads {
    double horizontal = 0;
    double vertical = 0;
};
Spreads spreadsOf(const Shapes& shapes);
// Strictly greater than the other spread times this factor.
inline constexpr double dominanceFactor = 1.0;

ShortcutRecommendation row(const char* name, std::vector<std::string> keys, const char* imagePath,
                           const char* timeSaved);
}  // namespace detail

}  // namespace velmora
