#include <gtest/gtest.h>

#include "fake/FakePlatform.h"
#include "hosts/common/MemoryViews.h"
#include "taskpane/PaneAccess.h"
#include "taskpane/TaskpaneManager.h"
#include "ui/HostingView.h"

namespace velmora {
namespace {

class TaskpaneViewTest : public testing::PlatformTest {
protected:
    // A pane docked in a split view at x 300, as the manager makes it.
    std::shared_ptr<TaskpaneView> dockedPane(double width = 250) {
        split = std::make_shared<hosts::MemoryView>("CUITaskPaneSplitView", platform::Rect{0, 0, 1000, 700});
        auto pane = TaskpaneManager::createTaskpaneView("Icons", std::max(84.0, width), width);
        split->addSubview(pane);
        TaskpaneManager::setupConstraints(pane, split);
        auto f = pane->frame();
        f.x = 300;
        pane->setFrame(f);
        return pane;
    }

    // One drag step on the handle, in window coordinates.
    static void drag(TaskpaneView& pane, double from, double to) {
        pane.resizeHandle->mouseDown({from, 10});
        pane.resizeHandle->mouseDragged({to, 10});
        pane.resizeHandle->mouseUp();
    }

    std::shared_ptr<hosts::MemoryView> split;
};

TEST_F(TaskpaneViewTest, PartsSettledValuesAndLayout) {
    auto pane = dockedPane();
    EXPECT_EQ(pane->identifier, "CUIColorView");
    EXPECT_EQ(pane->accessibilityRole, "AXSplitGroup");
    EXPECT_EQ(pane->accessibilityTitle, "Velmora Pane");
    EXPECT_EQ(pane->containerView->accessibilityLabel, "Taskpane Container");
    EXPECT_TRUE(pane->containerView->isAccessibilityElement);
    EXPECT_EQ(pane->titleLabel->textFieldValue(), "Icons");
    EXPECT_EQ(pane->closeButton->title, "\u2715");
    EXPECT_EQ(pane->closeButton->bezelStyle, 15);
    EXPECT_EQ(pane->titleFont.size, 14);
    EXPECT_FALSE(pane->layer);  // so no zPosition is set

    // The handle lies above the content, which lies above the title bar.
    auto parts = pane->containerView->subviews();
    ASSERT_EQ(parts.size(), 3u);
    EXPECT_EQ(parts[0], pane->titleBar);
    EXPECT_EQ(parts[1], pane->contentContainer);
    EXPECT_EQ(parts[2], pane->resizeHandle);

    EXPECT_EQ(pane->titleBar->frame(), (platform::Rect{0, 0, 250, 28}));
    EXPECT_EQ(pane->contentContainer->frame(), (platform::Rect{0, 23, 250, 677}));
    EXPECT_EQ(pane->resizeHandle->frame(), (platform::Rect{0, 0, 10, 700}));
    EXPECT_EQ(pane->closeButton->frame().x + pane->closeButton->frame().width, 240);
    EXPECT_EQ(pane->titleLabel->frame().x, 10);

    // The open hand covers the whole handle, from its own origin.
    pane->resizeHandle->cursorRects.clear();
    pane->resizeHandle->resetCursorRects();
    ASSERT_EQ(pane->resizeHandle->cursorRects.size(), 1u);
    EXPECT_EQ(pane->resizeHandle->cursorRects[0].rect, (platform::Rect{0, 0, 10, 700}));
    EXPECT_EQ(pane->resizeHandle->cursorRects[0].cursor, "openHandCursor");
}

TEST_F(TaskpaneViewTest, NamedColoursFallBackToSystemColoursWhenTheHostHasNone) {
    auto pane = dockedPane();
    EXPECT_EQ(pane->containerView->layerBackground->name, "CUIWindowBackgroundColor");
    EXPECT_EQ(pane->containerView->layerBackground->resolve(), ui::Color::rgb255(236, 236, 236));
    EXPECT_EQ(pane->titleBar->layerBackground->resolve(), ui::colors::white);
    EXPECT_EQ(pane->titleBar->textColor->name, "CUIWindowTitleColor");
}

TEST_F(TaskpaneViewTest, DragsChangeTheWidthByHalfTheDistanceAndStopAtMinWidth) {
    auto pane = dockedPane();
    drag(*pane, 305, 285);  // 20 to the left
    EXPECT_EQ(pane->widthConstraint->constant, 260);
    EXPECT_EQ(pane->frame().width, 260);
    EXPECT_TRUE(pane->needsLayout());

    drag(*pane, 305, 345);  // 40 to the right would give 240
    EXPECT_EQ(pane->widthConstraint->constant, 250);

    // Within one press: the next step starts from minWidth, so moving back widens at once.
    pane->resizeHandle->mouseDown({305, 10});
    pane->resizeHandle->mouseDragged({405, 10});
    EXPECT_EQ(pane->widthConstraint->constant, 250);
    pane->resizeHandle->mouseDragged({395, 10});
    EXPECT_EQ(pane->widthConstraint->constant, 255);
    EXPECT_EQ(pane->resizeHandle->cursorStack, std::vector<std::string>{"closedHandCursor"});
    pane->resizeHandle->mouseUp();
    EXPECT_TRUE(pane->resizeHandle->cursorStack.empty());
}

TEST_F(TaskpaneViewTest, ADragBeforeTheConstraintIsSetDoesNothing) {
    auto pane = TaskpaneView::make("Loose", 250);
    pane->setFrame({0, 0, 300, 500});
    drag(*pane, 5, -95);
    EXPECT_FALSE(pane->widthConstraint);
    EXPECT_EQ(pane->frame().width, 300);

    auto archived = TaskpaneView::makeFromCoder();
    EXPECT_EQ(archived->paneTitle, "Velmora");
    EXPECT_EQ(archived->minWidth, 250);
}

TEST_F(TaskpaneViewTest, SetContentViewReplacesAndFillsTheContainer) {
    auto pane = dockedPane();
    int builtAt = 0;
    auto first = ui::HostingView::make([&](double width) {
        builtAt = static_cast<int>(width);
        return ui::text("first");
    });
    pane->setContentView(first);
    EXPECT_EQ(first->frame(), (platform::Rect{0, 0, 250, 677}));
    EXPECT_EQ(builtAt, 250);

    auto second = ui::HostingView::make([](double) { return ui::text("second"); });
    pane->setContentView(second);
    EXPECT_EQ(pane->contentContainer->subviews().size(), 1u);
    EXPECT_EQ(first->superview(), nullptr);

    // The content follows the pane's width.
    pane->setFrame({300, 0, 500, 700});
    EXPECT_EQ(second->frame().width, 500);
}

TEST_F(TaskpaneViewTest, TheHostReachesThePaneThroughItsAccess) {
    auto pane = dockedPane();
    int taps = 0;
    std::vector<bool> hovers;
    pane->setContentView(ui::HostingView::make([&](double) {
        return ui::vstack({ui::text("Taps " + std::to_string(taps)), ui::button("Add", [&] { ++taps; }),
                           ui::button("Add", [&] { taps += 10; }).onHoverDo([&](bool in) { hovers.push_back(in); })});
    }));
    const auto* access = fake.panes->accessFor(pane);
    ASSERT_NE(access, nullptr);

    // Controls that share a label are told apart by their place in reading order.
    EXPECT_TRUE(access->tap("Add", 2));
    EXPECT_EQ(taps, 10);
    EXPECT_TRUE(access->tap("Add", 1));
    EXPECT_FALSE(access->tap("Add", 3));
    EXPECT_FALSE(access->tap("Add", 0));
    EXPECT_FALSE(access->tap("Nothing", 1));
    EXPECT_TRUE(access->hover("Add", 1, true));  // the only one that reacts to the pointer
    EXPECT_TRUE(access->hover("Add", 1, false));
    EXPECT_FALSE(access->hover("Add", 2, true));
    EXPECT_EQ(hovers, (std::vector<bool>{true, false}));
    auto lines = access->describe();
    ASSERT_GE(lines.size(), 3u);
    EXPECT_EQ(lines[0], "TaskpaneView \"Icons\" (300.0, 0.0, 250.0, 700.0) minWidth 250.0 constraint 250.0");
    EXPECT_EQ(lines[2], "    text \"Taps 11\"");

    const std::string html = access->html();
    EXPECT_NE(html.find("data-pane-title=\"Icons\""), std::string::npos);
    EXPECT_NE(html.find("data-label=\"Taps 11\""), std::string::npos);

    access->dragResizeHandle(-30);
    EXPECT_EQ(pane->frame().width, 265);
    access->pressClose();
    EXPECT_EQ(pane->superview(), nullptr);

    pane.reset();
    EXPECT_TRUE(access->describe().empty());  // the access holds the pane weakly
    EXPECT_FALSE(access->tap("Add", 1));
}

TEST_F(TaskpaneViewTest, APaneWithoutHostedContentOffersNoControlsButSaysWhatItHolds) {
    auto pane = dockedPane();
    const auto* access = fake.panes->accessFor(pane);
    ASSERT_NE(access, nullptr);
    auto reachesNothing = [&] {
        EXPECT_FALSE(access->tap("Add", 1));
        EXPECT_FALSE(access->hover("Add", 1, true));
        EXPECT_FALSE(access->type("Name", 1, "x"));
        EXPECT_FALSE(access->pick("Tags", 1, "x"));
        EXPECT_FALSE(access->scroll(10));
        EXPECT_FALSE(access->pressDefault());
        EXPECT_TRUE(access->webViews().empty());
    };
    ASSERT_EQ(access->describe().size(), 2u);
    EXPECT_EQ(access->describe()[1], "  (no content)");
    reachesNothing();

    pane->setContentView(std::make_shared<hosts::MemoryView>("NSTextView"));
    ASSERT_EQ(access->describe().size(), 2u);
    EXPECT_EQ(access->describe()[1], "  NSTextView (0.0, 0.0, 250.0, 677.0)");
    reachesNothing();

    // Setting no content empties the container.
    pane->setContentView(nullptr);
    EXPECT_TRUE(pane->contentContainer->subviews().empty());
    EXPECT_EQ(access->describe()[1], "  (no content)");
}

}  // namespace
}  // namespace velmora
