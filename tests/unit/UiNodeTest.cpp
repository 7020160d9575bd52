#include <gtest/gtest.h>

#include <cmath>

#include "fake/FakePlatform.h"
#include "ui/HostingView.h"
#include "ui/HtmlRenderer.h"
#include "ui/Images.h"
#include "ui/Measure.h"
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

TEST(UiNode, FindsFieldsAndChoosersByPlaceholderLabelHelpOrIdentifierHiddenOnesIncluded) {
    auto edit = [](const std::string&) {};
    Node tree = vstack({
        textField("Search", "", edit).help("Find a slide").accessibilityId("search-field"),
        popover(text("Dates"), datePicker("2026-11-23", edit).help("From"), false),
        picker("Sort", {button("Name", [] {})}).help("Order").accessibilityId("sort"),
        menu("Tags", {button("Finance", [] {})}),
        text("Search"),
    });
    for (const char* label : {"Search", "Find a slide", "search-field", "From"}) {
        EXPECT_EQ(findEditables(tree, label).size(), 1u) << label;
    }
    EXPECT_TRUE(findEditables(tree, "Sort").empty());
    for (const char* label : {"Sort", "Order", "sort", "Tags"}) {
        EXPECT_EQ(findChoosers(tree, label).size(), 1u) << label;
    }
    EXPECT_TRUE(findChoosers(tree, "Search").empty());
    EXPECT_TRUE(findChoosers(tree, "Finance").empty());
}

TEST(UiNode, GridsHaveAtLeastOneColumnAndDescriptionsShowWhatIsSet) {
    EXPECT_EQ(grid(0, 4, {}).columns, 1);
    EXPECT_EQ(grid(-2, 4, {}).columns, 1);
    EXPECT_EQ(grid(3, 4, {}).columns, 3);

    Node tree = hstack({spacer(12), spacer(1), spacer(),
                        text("Ctrl").font(9, FontWeight::regular, FontDesign::monospaced).fixedSize().foregroundColor(
                            colors::white),
                        scroll(Axis::horizontal, text("Row")).opacity(0.5)});
    EXPECT_EQ(describeTree(tree), (std::vector<std::string>{
                                      "hstack",
                                      "  spacer min 12.0",
                                      "  spacer min 1.0",
                                      "  spacer",
                                      "  text \"Ctrl\" font 9.0 regular monospaced fg rgba(255,255,255,1.0) fixed",
                                      "  scroll horizontal opacity 0.5",
                                      "    text \"Row\"",
                                  }));
}

TEST(UiNode, IdealSizesAddUpChildrenSpacingPaddingAndFrames) {
    // A glyph is 0.55 em wide and a line 1.2 em high.
    auto near = [](platform::Size size, double width, double height) {
        return std::abs(size.width - width) < 1e-9 && std::abs(size.height - height) < 1e-9;
    };
    EXPECT_TRUE(near(idealSize(text("abcdefghij").font(10)), 55, 12));
    EXPECT_TRUE(near(idealSize(hstack(Alignment::center, 4, {text("ab").font(10), text("abcd").font(10)})), 33 + 4, 12));
    EXPECT_TRUE(near(idealSize(vstack({text("ab").font(10), text("abcd").font(20)})), 44, 12 + 8 + 24));
    // A font on the stack reaches its children.
    EXPECT_TRUE(near(idealSize(vstack(Alignment::center, 0, {text("ab"), text("ab")}).font(10)), 11, 24));
    EXPECT_TRUE(near(idealSize(button(hstack(Alignment::center, 2, {text("ab").font(10), text("ab").font(10)}), [] {})),
                     24, 12));
    // A toggle's box is 18 points; a larger font makes its line taller.
    EXPECT_TRUE(near(idealSize(toggle("ab", true, [] {}).font(10)), 18 + 11, 18));
    EXPECT_TRUE(near(idealSize(toggle("ab", true, [] {}).font(20)), 18 + 22, 24));
    // A popover is as large as its anchor; its content floats.
    EXPECT_TRUE(near(idealSize(popover(text("ab").font(10), text("a long content").font(10), true)), 11, 12));
    EXPECT_TRUE(near(idealSize(grid(3, 2, {text("ab").font(10), text("ab").font(10), text("ab").font(10),
                                           text("abcd").font(10)})),
                     3 * 22 + 2 * 2, 2 * 12 + 2));
    EXPECT_TRUE(near(idealSize(spacer(6)), 6, 6));
    EXPECT_TRUE(near(idealSize(text("ab").font(10).padding(Edges{1, 2, 3, 4})), 11 + 6, 12 + 4));
    Frame bounds;
    bounds.minWidth = 40;
    bounds.maxHeight = 5;
    EXPECT_TRUE(near(idealSize(text("ab").font(10).frame(bounds)), 40, 5));
    Frame ideal;
    ideal.idealWidth = 70;
    ideal.maxWidth = 60;
    ideal.height = 30;
    EXPECT_TRUE(near(idealSize(text("ab").font(10).frame(ideal)), 60, 30));
}

class UiHostingTest : public testing::PlatformTest {};

TEST_F(UiHostingTest, RunsOnAppearOfPopoverContentOnlyOncePresented) {
    bool presented = false;
    int appeared = 0;
    auto view = HostingView::make([&](double) {
        return popover(text("Anchor"), text("Content").onAppearDo([&] { ++appeared; }), presented);
    });
    view->setFrame({0, 0, 200, 100});
    view->layout();
    EXPECT_EQ(appeared, 0);
    presented = true;
    view->invalidate();
    EXPECT_EQ(appeared, 1);
}

TEST_F(UiHostingTest, KnowsImagesByTheirFirstBytesOrName) {
    ASSERT_TRUE(fake.files->createDirectories("/Library/Icons", nullptr));
    const std::vector<std::pair<std::string, std::string>> files = {
        {"a.png", std::string("\x89PNG\r\n\x1a\n0000", 12)},
        {"b.jpg", "\xFF\xD8\xFF\xE0rest"},
        {"c.gif", "GIF89a...."},
        {"d.webp", std::string("RIFF\0\0\0\0WEBPVP8 ", 16)},
        {"e.img", "  <svg xmlns='http://www.w3.org/2000/svg'/>"},
        {"f.img", "<?xml version='1.0'?>\n<svg/>"},
        {"g.svg", "not svg at all"},
        {"h.bin", "no picture"},
        {"i.webp", "RIFF0000WEB"},
    };
    for (const auto& [name, data] : files) ASSERT_TRUE(fake.files->write("/Library/Icons/" + name, data, false, nullptr));
    const std::vector<std::pair<std::string, std::string>> mime = {
        {"a.png", "image/png"}, {"b.jpg", "image/jpeg"},    {"c.gif", "image/gif"},     {"d.webp", "image/webp"},
        {"e.img", "image/svg+xml"}, {"f.img", "image/svg+xml"}, {"g.svg", "image/svg+xml"},
    };
    for (const auto& [name, type] : mime) {
        const std::string html = renderNode(image("/Library/Icons/" + name));
        EXPECT_NE(html.find("src=\"data:" + type + ";base64,"), std::string::npos) << name;
    }
    for (const char* name : {"h.bin", "i.webp", "missing.png"}) {
        EXPECT_NE(renderNode(image(std::string("/Library/Icons/") + name)).find("data-missing=\"1\""), std::string::npos)
            << name;
    }

    for (const char* name : {"a.png", "b.jpg", "c.gif", "d.webp", "e.img", "f.img"}) {
        EXPECT_TRUE(canLoadImage(std::string("/Library/Icons/") + name)) << name;
    }
    for (const char* name : {"g.svg", "h.bin", "missing.png"}) {
        EXPECT_FALSE(canLoadImage(std::string("/Library/Icons/") + name)) << name;
    }
}

TEST_F(UiHostingTest, DrawsAMonthFromItsFirstWeekdayWithTheChosenDayMarked) {
    // Blank cells before the 1st, the number of days, and the day marked.
    auto sheet = [](const std::string& day) {
        const std::string html = renderNode(datePicker(day, [](const std::string&) {}));
        struct { std::string head; int blanks = 0, days = 0, chosen = 0; } month;
        auto head = html.find("v-calendar-head\">");
        if (head == std::string::npos) return month;
        head += 17;
        month.head = html.substr(head, html.find('<', head) - head);
        for (auto at = html.find("<span></span>"); at != std::string::npos; at = html.find("<span></span>", at + 1)) {
            ++month.blanks;
        }
        for (int d = 1; d <= 31; ++d) {
            if (html.find(">" + std::to_string(d) + "</span>") != std::string::npos) month.days = d;
        }
        const auto on = html.find("v-calendar-day-on\">");
        if (on != std::string::npos) month.chosen = std::stoi(html.substr(on + 19));
        return month;
    };
    auto nov = sheet("2026-11-23");  // 1 November 2026 is a Sunday
    EXPECT_EQ(nov.head, "November 2026");
    EXPECT_EQ(nov.blanks, 0);
    EXPECT_EQ(nov.days, 30);
    EXPECT_EQ(nov.chosen, 23);
    auto dec = sheet("2026-12-05");  // a Tuesday; the month ends at the year's end
    EXPECT_EQ(dec.head, "December 2026");
    EXPECT_EQ(dec.blanks, 2);
    EXPECT_EQ(dec.days, 31);
    auto feb = sheet("2028-02-29");  // a leap year, from a Tuesday
    EXPECT_EQ(feb.blanks, 2);
    EXPECT_EQ(feb.days, 29);
    EXPECT_EQ(feb.chosen, 29);
    EXPECT_EQ(sheet("2027-02-01").days, 28);
    // Whole 400-year cycles repeat the weekdays, before year 1 too: 1 March
    // 2000 was a Wednesday.
    EXPECT_EQ(sheet("-400-03-01").head, "March -400");
    EXPECT_EQ(sheet("-400-03-01").blanks, 3);
    EXPECT_EQ(sheet("-401-03-01").blanks, 1);  // a Monday, as 1 March 1999
    EXPECT_EQ(sheet("2026-13-01").head, "");
    EXPECT_EQ(sheet("2026-00-01").head, "");
    EXPECT_EQ(sheet("2026-1-1").head, "");
}

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
