#include <gtest/gtest.h>

#include <cmath>

#include "fake/FakePlatform.h"
#include "ui/HostingView.h"
#include "ui/HtmlRenderer.h"
#include "ui/Node.h"

namespace velmora::ui {
namespace {

TEST(UiNode, ModifiersApplyInsideOutAndWrapWhenChainedOutOfOrder) {
    // Padding inside a background stays on the node; adjacent paddings add up.
    Node chip = text("Ctrl").padding(Edge::horizontal, 4).padding(Edge::vertical, 2).background(colors::black).cornerRadius(3);
    EXPECT_EQ(chip.kind, Kind::text);
    EXPECT_EQ(chip.mod.padding, (Edges{2, 4, 2, 4}));
    EXPECT_EQ(chip.mod.cornerRadius, 3);

    // A padding after a background goes around it: a wrapper carries it.
    Node outer = text("Row").padding(8).background(colors::white).padding(Edge::top, 15);
    ASSERT_EQ(outer.kind, Kind::zstack);
    EXPECT_EQ(outer.mod.padding.top, 15);
    ASSERT_EQ(outer.children.size(), 1u);
    EXPECT_EQ(outer.children[0].mod.padding.top, 8);
    EXPECT_EQ(outer.children[0].mod.background, colors::white);

    // A second frame wraps the first; text styles never wrap.
    Node framed = symbol("info.circle").frame(14, 14).font(20).maxWidth(infinity, Alignment::leading);
    ASSERT_EQ(framed.kind, Kind::zstack);
    EXPECT_EQ(framed.children[0].mod.frame.width, 14);
    EXPECT_TRUE(std::isinf(*framed.mod.frame.maxWidth));
    EXPECT_EQ(framed.children[0].mod.font->size, 20);

    Node faded = rectangle().opacity(0.5).opacity(0.5);
    EXPECT_EQ(faded.mod.opacity, 0.25);
}

TEST(UiNode, FindsActionsByLabelHelpOrInnerTextButNotInHiddenPopovers) {
    int pressed = 0;
    Node tree = vstack({
        button(hstack({text("Missed Shortcuts"), spacer(), symbol("chevron.up")}), [&] { pressed = 1; }),
        button("Go", [&] { pressed = 2; }).help("Insert the slide"),
        popover(text("anchor"), button("Hidden", [&] { pressed = 3; }), false),
        text("Plain"),
    });
    findActionable(tree, "Missed Shortcuts")->action();
    EXPECT_EQ(pressed, 1);
    findActionable(tree, "Insert the slide")->action();
    EXPECT_EQ(pressed, 2);
    EXPECT_EQ(findActionable(tree, "Hidden"), nullptr);
    EXPECT_EQ(findActionable(tree, "Plain"), nullptr);
    tree.children[2].isOn = true;
    EXPECT_NE(findActionable(tree, "Hidden"), nullptr);
}

TEST(UiNode, DescribesKindsTextsAndNumbers) {
    Node tree = vstack(Alignment::leading, 10, {text("Title").font(14, FontWeight::semibold).lineLimit(1)})
                    .padding(Edges{15, 10, 0, 10});
    EXPECT_EQ(describeTree(tree), (std::vector<std::string>{
                                      "vstack align leading spacing 10.0 padding 15.0/10.0/0.0/10.0",
                                      "  text \"Title\" font 14.0 semibold lines 1",
                                  }));
}

class UiHostingTest : public testing::PlatformTest {};

TEST_F(UiHostingTest, RebuildsOnWidthAndRunsOnAppearOnlyForNewIdentities) {
    std::vector<std::string> rows{"a", "b"};
    std::vector<std::string> appeared;
    auto view = HostingView::make([&](double width) {
        Nodes children;
        for (const auto& row : rows) {
            children.push_back(text(row).id(row).onAppearDo([&appeared, row] { appeared.push_back(row); }));
        }
        return vstack(Alignment::leading, width / 25, std::move(children));
    });
    view->setFrame({0, 0, 250, 400});
    view->layout();
    EXPECT_EQ(appeared, (std::vector<std::string>{"a", "b"}));
    EXPECT_EQ(*view->tree().spacing, 10);

    view->setFrame({0, 0, 500, 400});
    EXPECT_EQ(*view->tree().spacing, 20);
    EXPECT_EQ(appeared.size(), 2u);  // same rows: nothing new appears

    rows = {"b", "c"};
    view->invalidate();
    EXPECT_EQ(appeared, (std::vector<std::string>{"a", "b", "c"}));
}

TEST_F(UiHostingTest, RendersImagesInlineAndFallsBackToTheSymbolAsked) {
    const std::string png("\x89PNG\r\n\x1a\n0000", 12);
    ASSERT_TRUE(fake.files->createDirectories("/Library/Icons", nullptr));
    ASSERT_TRUE(fake.files->write("/Library/Icons/a.png", png, false, nullptr));
    Node tree = hstack({
        image("/Library/Icons/a.png").makeResizable().frame(14, 14),
        image("/Library/Icons/missing.png", "questionmark.square").makeResizable().frame(14, 14),
        text("A & <B>").font(12, FontWeight::semibold).foregroundColor(colors::black),
    });
    const std::string html = renderPage(tree, 250, 100, "Pane");
    EXPECT_NE(html.find("src=\"data:image/png;base64,iVBORw0KGgowMDAw\""), std::string::npos);
    EXPECT_NE(html.find("data-missing=\"1\""), std::string::npos);
    EXPECT_NE(html.find("data-symbol=\"questionmark.square\"><span class=\"v-sym-square\"><span>?</span>"),
              std::string::npos);
    EXPECT_NE(html.find("data-label=\"A &amp; &lt;B&gt;\""), std::string::npos);
    EXPECT_NE(html.find("font-size:12.0px;font-weight:600"), std::string::npos);
    EXPECT_NE(html.find("width:14.0px"), std::string::npos);
}

}  // namespace
}  // namespace velmora::ui
