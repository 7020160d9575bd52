// The eight detectors on their boundaries, grouped by detector.

#include <gtest/gtest.h>

#include "assistant/Detectors.h"
#include "fake/FakePlatform.h"

namespace velmora {
namespace {

ShapeMetadata box(double left, double top, double width = 10, double height = 10) {
    ShapeMetadata shape;
    shape.Left = left;
    shape.Top = top;
    shape.Width = width;
    shape.Height = height;
    shape.ShpType = "1";
    return shape;
}

std::vector<std::string> names(const Recommendations& rows) {
    std::vector<std::string> out;
    for (const auto& row : rows) out.push_back(row.Name);
    return out;
}

using Names = std::vector<std::string>;

class AlignmentDetectorTest : public testing::PlatformTest {};

TEST_F(AlignmentDetectorTest, EdgesWithinOnePointOfTheFirstShapeCountAsAligned) {
    EXPECT_TRUE(detectAlignmentRecommendations({box(0, 0)}).empty());
    EXPECT_TRUE(fake.log->contains("Not enough shapes for alignment recommendation."));
    // Exactly 1.0 apart keeps left aligned; a hair more does not.
    EXPECT_TRUE(detectAlignmentRecommendations({box(0, 0, 10, 20), box(1, 50, 30, 40)}).empty());
    EXPECT_EQ(names(detectAlignmentRecommendations({box(0, 0, 10, 20), box(1.0000001, 50, 30, 40)})),
              Names{"Align Left/Center/Right"});
    // Against the first shape, not pairwise: 1, 0, 2 are aligned; 0, 1, 2 are not.
    EXPECT_TRUE(detectAlignmentRecommendations({box(1, 0, 10, 5), box(0, 40, 20, 7), box(2, 90, 30, 9)}).empty());
    EXPECT_EQ(names(detectAlignmentRecommendations({box(0, 0, 10, 5), box(1, 40, 20, 7), box(2, 90, 30, 9)})),
              Names{"Align Left/Center/Right"});
}

TEST_F(AlignmentDetectorTest, TheDominantSpreadOfLeftAndTopPicksTheAxis) {
    auto row = detectAlignmentRecommendations({box(0, 0, 10, 20), box(100, 50, 30, 40)});
    ASSERT_EQ(names(row), Names{"Align Top/Middle/Bottom"});
    EXPECT_EQ(row[0].Keys, (std::vector<std::string>{"Ctrl", "Cmd", "↑/M/↓"}));
    EXPECT_EQ(row[0].ImagePath, "AlignTop.png");
    EXPECT_EQ(detectAlignmentRecommendations({box(0, 0, 10, 20), box(50, 100, 30, 40)})[0].Keys[2], "←/C/→");
    // Equal spreads: no row.
    EXPECT_TRUE(detectAlignmentRecommendations({box(0, 0, 10, 20), box(100, 100, 30, 40)}).empty());
}

class DistributionDetectorTest : public testing::PlatformTest {};

TEST_F(DistributionDetectorTest, GapsWithinATenthOfTheMeanAreEven) {
    EXPECT_TRUE(detectDistributionRecommendations({box(0, 0), box(50, 0)}).empty());
    EXPECT_TRUE(fake.log->contains("Not enough shapes for distribution recommendation."));
    // Gaps 10.0 and 10.05: even. Gaps 10.0 and 10.4: uneven.
    EXPECT_TRUE(detectDistributionRecommendations({box(0, 0), box(20, 0), box(40.05, 0)}).empty());
    EXPECT_TRUE(fake.log->contains("Shapes are already evenly distributed horizontally."));
    EXPECT_EQ(names(detectDistributionRecommendations({box(40.4, 0), box(0, 0), box(20, 0)})),
              Names{"Distribute Horizontal"});
    // Lefts 0, 0.1, 0.4 at width 0.2: the first gap is off by exactly 0.1 in doubles, which is still even.
    EXPECT_TRUE(detectDistributionRecommendations({box(0, 0, 0.2, 1), box(0.1, 0, 0.2, 1), box(0.4, 0, 0.2, 1)}).empty());
    EXPECT_FALSE(detectDistributionRecommendations({box(0, 0, 0.2, 1), box(0.1, 0, 0.2, 1), box(0.41, 0, 0.2, 1)}).empty());
}

TEST_F(DistributionDetectorTest, VerticalUsesTopAndHeightAndEqualSpreadsSayNothing) {
    EXPECT_EQ(names(detectDistributionRecommendations({box(0, 0, 10, 5), box(0, 20, 10, 30), box(0, 55, 10, 5)})),
              Names{"Distribute Vertical"});
    // Overlapping shapes with equal negative gaps are even.
    EXPECT_TRUE(detectDistributionRecommendations({box(0, 0, 10, 20), box(0, 10, 10, 20), box(0, 20, 10, 20)}).empty());
    EXPECT_TRUE(fake.log->contains("Shapes are already evenly distributed vertically."));
    EXPECT_TRUE(detectDistributionRecommendations({box(0, 0), box(50, 50), box(100, 100)}).empty());
    EXPECT_TRUE(fake.log->contains("No dominant orientation for distribution recommendation."));
}

TEST(ArrangeDetectorTest, OverlapIsOpenAndTheThresholdExclusive) {
    EXPECT_FALSE(isOverlapping(box(0, 0), box(10, 0))) << "a shared edge does not overlap";
    EXPECT_TRUE(isOverlapping(box(0, 0), box(9.5, 9.5)));
    EXPECT_DOUBLE_EQ(calculateOverlapArea(box(0, 0), box(5, 8)), 10.0);
    auto selected = box(0, 0, 10, 10), other = box(5.5, 0, 10, 10);  // exactly 45% of each
    selected.ZOrder = 1;
    other.ID = 2, other.ZOrder = 2;
    EXPECT_TRUE(detectArrangeRecommendations({selected}, {other}).empty());
    other.Left = 5.4;
    EXPECT_EQ(names(detectArrangeRecommendations({selected}, {other})), Names{"Bring to Front"});
    other.ZOrder = 1;
    auto down = detectArrangeRecommendations({selected}, {other});
    ASSERT_EQ(names(down), Names{"Send to Back"}) << "equal ZOrder goes down";
    EXPECT_EQ(down[0].Keys, (std::vector<std::string>{"Cmd", "Shift", "B"}));
}

TEST(ArrangeDetectorTest, TheFirstQualifyingPairDecidesAndAllOverlapsCount) {
    auto selected = box(0, 0, 100, 100);
    selected.ID = 1, selected.ZOrder = 5;
    auto sliver = box(95, 0, 100, 100), inside = box(10, 10, 20, 20), same = box(0, 0, 100, 100), flat = box(0, 0, 0, 0);
    sliver.ID = 2, inside.ID = 3, inside.ZOrder = 9, same.ID = 1;
    flat.ID = 4;  // a zero-size shape gives 0 / 0 and never qualifies
    EXPECT_TRUE(detectArrangeRecommendations({selected}, {same, flat}).empty());
    auto rows = detectArrangeRecommendations({selected}, {sliver, inside});
    EXPECT_EQ(names(rows), (Names{"Bring to Front", "Bring Forward"}));
    EXPECT_EQ(rows[1].Keys, (std::vector<std::string>{"Cmd", "Opt", "Shift", "F"}));
    EXPECT_TRUE(detectArrangeRecommendations({selected}, {}).empty());
}

TEST(ElementsDetectorTest, HarveyBeforeSlantedLines) {
    auto harvey = box(0, 0), line = box(0, 0, -5, 3);
    harvey.Name = "my HARVEY ball";
    line.ShpType = "9";
    EXPECT_EQ(names(detectElementsRecommendations({line, harvey})), Names{"Toggle Harvey"});
    harvey.Name = "\xC3\x89 harvey";  // "É harvey": case folding beyond ASCII finds it too
    EXPECT_EQ(names(detectElementsRecommendations({harvey})), Names{"Toggle Harvey"});
    harvey.Name = "Harve";
    EXPECT_TRUE(detectElementsRecommendations({harvey}).empty());
    EXPECT_EQ(names(detectElementsRecommendations({line})), Names{"Straighten Lines"});
    line.Height = 0;
    EXPECT_TRUE(detectElementsRecommendations({line}).empty());
    EXPECT_EQ(detectInsertRecommendations({}).size(), 3u);
    EXPECT_TRUE(detectInsertRecommendations({line}).empty());
}

TEST(ResizeDetectorTest, SwapAndSameSizeAlongTheDominantAxis) {
    auto a = box(0, 0, 100, 20), b = box(50, 0, 100.0000001, 20);
    b.ShpType = "1";
    EXPECT_EQ(names(detectResizeRecommendations({a, b})), Names{"Swap Objects"}) << "same height in a row";
    b.Height = 30;
    EXPECT_EQ(names(detectResizeRecommendations({a, b})), (Names{"Swap Objects", "Same Height"}));
    a.ShpType = "A", b.ShpType = "a";
    b.Left = 0, b.Top = 50;
    EXPECT_EQ(names(detectResizeRecommendations({a, b})), (Names{"Swap Objects", "Same Width"}));
    EXPECT_TRUE(detectResizeRecommendations({a, b, box(0, 0, 100, 20)}).size() == 1);  // no swap for three
    // Case is folded beyond ASCII, and a decomposed accent equals the composed one.
    b.Width = a.Width = 100, b.Height = a.Height = 20, b.Left = 0, b.Top = 0;
    a.ShpType = "\xC3\x89", b.ShpType = "\xC3\xA9";  // É and é
    EXPECT_EQ(names(detectResizeRecommendations({a, b})), Names{"Swap Objects"});
    a.ShpType = "E\xCC\x81", b.ShpType = "\xC3\xA9";  // E + combining acute, and é
    EXPECT_EQ(names(detectResizeRecommendations({a, b})), Names{"Swap Objects"});
    a.ShpType = "STRASSE", b.ShpType = "stra\xC3\x9F" "e";  // ß folds to ss
    EXPECT_EQ(names(detectResizeRecommendations({a, b})), Names{"Swap Objects"});
    a.ShpType = "\xC3\x89", b.ShpType = "e";
    EXPECT_TRUE(detectResizeRecommendations({a, b}).empty()) << "an accent still counts";
    a.ShpType = b.ShpType = "";
    EXPECT_TRUE(detectResizeRecommendations({a, box(0, 0, 100, 20)}).empty()) << "equal sizes";
}

TEST(TextDetectorTest, OneTextShapeGivesUpToFourRows) {
    auto shape = box(0, 0);
    shape.HasText = shape.AutoSize = shape.WordWrap = shape.HasFill = shape.HasLineBreaks = true;
    auto rows = detectTextRecommendations({shape});
    EXPECT_EQ(names(rows), (Names{"Disable AutoFit", "Toggle WordWrap", "Increase Text Margin", "Adjust Line Spacing"}));
    EXPECT_EQ(rows[1].Keys.size(), 3u);
    shape.WordWrap = false;
    EXPECT_EQ(detectTextRecommendations({shape})[1].Keys, (std::vector<std::string>{"Cmd", "7"}));
    shape.AutoSize = false;
    EXPECT_EQ(names(detectTextRecommendations({shape})), (Names{"Enable AutoFit", "Increase Text Margin", "Adjust Line Spacing"}));
    shape.MarginLeft = -1;
    shape.HasLineBreaks = false;
    EXPECT_EQ(names(detectTextRecommendations({shape})), Names{"Enable AutoFit"}) << "a negative margin gives no margin row";
    shape.MarginTop = 0.5;
    EXPECT_EQ(names(detectTextRecommendations({shape}))[1], "Decrease Text Margin");
    shape.HasText = false;
    EXPECT_TRUE(detectTextRecommendations({shape}).empty());
    EXPECT_EQ(names(detectSendRecommendations({})), Names{"Send Slides"});
}

}  // namespace
}  // namespace velmora
