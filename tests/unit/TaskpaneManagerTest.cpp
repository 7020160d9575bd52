#include <gtest/gtest.h>

#include "fake/FakePlatform.h"
#include "hosts/common/MemoryViews.h"
#include "keyboard/ModifierKeyState.h"
#include "taskpane/TaskpaneManager.h"
#include "ui/HostingView.h"

namespace velmora {
namespace {

using hosts::MemoryView;
using hosts::MemoryWindow;

class TaskpaneManagerTest : public testing::PlatformTest {
protected:
    void SetUp() override {
        PlatformTest::SetUp();
        content = std::make_shared<MemoryView>("NSView", platform::Rect{0, 0, 1280, 800});
        split = std::make_shared<MemoryView>("CUITaskPaneSplitView", platform::Rect{0, 0, 1280, 760});
        split->addSubview(std::make_shared<MemoryView>("CUISlideEditorView"));
        content->addSubview(split);
        document = std::make_shared<MemoryWindow>("CUIDocumentShellWindow", content);
        fake.views->addWindow(document);
        fake.views->setKeyWindow(document);
    }

    // A loader that counts its runs and fills the pane at once.
    ContentLoader countingLoader(int& runs) {
        return [&runs](ContentCompletion completion) {
            ++runs;
            completion(ui::HostingView::make([](double) { return ui::text("content"); }));
        };
    }

    std::vector<std::string> paneTitles() const {
        std::vector<std::string> titles;
        for (const auto& view : split->subviews()) {
            if (auto pane = std::dynamic_pointer_cast<TaskpaneView>(view)) titles.push_back(pane->paneTitle);
        }
        return titles;
    }

    std::shared_ptr<TaskpaneView> pane(std::size_t index) const {
        return std::dynamic_pointer_cast<TaskpaneView>(split->subviews().at(index));
    }

    std::shared_ptr<MemoryView> content, split;
    std::shared_ptr<MemoryWindow> document;
};

TEST_F(TaskpaneManagerTest, TogglesByTitleAndRunsTheLoaderForEachNewPane) {
    int runs = 0;
    TaskpaneManager::toggleTaskpane("Velmora Assistant", countingLoader(runs));
    EXPECT_EQ(paneTitles(), std::vector<std::string>{"Velmora Assistant"});
    auto first = pane(1);
    TaskpaneManager::toggleTaskpane("Velmora Assistant", countingLoader(runs));
    EXPECT_TRUE(paneTitles().empty());
    TaskpaneManager::toggleTaskpane("Velmora Assistant", countingLoader(runs));
    EXPECT_EQ(runs, 2);
    EXPECT_NE(pane(1), first);

    // Different titles stand side by side.
    TaskpaneManager::toggleTaskpane("Images", countingLoader(runs));
    TaskpaneManager::toggleTaskpane("Icons", countingLoader(runs));
    EXPECT_EQ(paneTitles(), (std::vector<std::string>{"Velmora Assistant", "Images", "Icons"}));
}

TEST_F(TaskpaneManagerTest, DocksWithAWidthConstraintOfPriority750AndLogsTheFrameLater) {
    int runs = 0;
    TaskpaneManager::toggleTaskpane("Color", 120, countingLoader(runs));
    auto color = pane(1);
    ASSERT_TRUE(color->widthConstraint);
    EXPECT_EQ(color->widthConstraint->priority, 750);
    EXPECT_TRUE(color->widthConstraint->isActive);
    EXPECT_EQ(color->minWidth, 120);
    EXPECT_EQ(color->frame(), (platform::Rect{0, 0, 120, 760}));
    ASSERT_EQ(color->constraints.size(), 2u);
    EXPECT_FALSE(color->translatesAutoresizingMaskIntoConstraints);

    EXPECT_FALSE(fake.log.get()->contains("Taskpane: Final task view frame"));
    const int passes = split->layoutPasses();
    fake.dispatch->runUntilIdle();
    EXPECT_EQ(split->layoutPasses(), passes + 1);
    EXPECT_TRUE(fake.log->contains("Taskpane: Final task view frame: (0.0, 0.0, 120.0, 760.0)"));

    // A desired width under 84 opens at that width with 84 as its minimum.
    TaskpaneManager::toggleTaskpane("Narrow", 50, countingLoader(runs));
    EXPECT_EQ(pane(2)->minWidth, 84);
    EXPECT_EQ(pane(2)->frame().width, 50);
}

TEST_F(TaskpaneManagerTest, AnyTextFieldWithTheExactTitleInADirectSubviewCountsAsThePane) {
    auto hostPane = std::make_shared<MemoryView>("CUIHostPane");
    auto deep = std::make_shared<MemoryView>("NSView");
    deep->addSubview(std::make_shared<MemoryView>("NSTextField", platform::Rect{}, "icons"));
    deep->addSubview(std::make_shared<MemoryView>("NSTextField", platform::Rect{}, "Icons"));
    hostPane->addSubview(deep);
    split->addSubview(hostPane);

    int runs = 0;
    TaskpaneManager::toggleTaskpane("icons ", countingLoader(runs));  // not a match: made anew
    EXPECT_EQ(runs, 1);
    TaskpaneManager::toggleTaskpane("Icons", countingLoader(runs));
    EXPECT_EQ(hostPane->superview(), nullptr);
    EXPECT_EQ(runs, 1);
}

TEST_F(TaskpaneManagerTest, StopsSilentlyWithoutADocumentWindowOrSplitView) {
    int runs = 0;
    auto tool = std::make_shared<MemoryWindow>("NSPanel", std::make_shared<MemoryView>("NSView"));
    fake.views->setKeyWindow(tool);
    TaskpaneManager::toggleTaskpane("Icons", countingLoader(runs));
    EXPECT_EQ(runs, 0);  // the document window behind does not count

    // No key window: the first document window in window order is used.
    fake.views->setKeyWindow(nullptr);
    TaskpaneManager::toggleTaskpane("Icons", countingLoader(runs));
    EXPECT_EQ(runs, 1);

    split->removeFromSuperview();
    TaskpaneManager::toggleTaskpane("Images", countingLoader(runs));
    EXPECT_EQ(runs, 1);
    EXPECT_TRUE(fake.log->lines().empty());
    // The monitor is installed even so.
    EXPECT_EQ(fake.events->count(), 1u);
}

TEST_F(TaskpaneManagerTest, SearchesTheContentViewDepthFirstForTheSplitView) {
    // A split view under a theme frame inside the content view is found by
    // the plain search already; the fallback starts from the same view.
    split->removeFromSuperview();
    auto theme = std::make_shared<MemoryView>("NSThemeFrame");
    auto nested = std::make_shared<MemoryView>("CUITaskPaneSplitView", platform::Rect{0, 0, 800, 600});
    theme->addSubview(nested);
    content->addSubview(theme);
    int runs = 0;
    TaskpaneManager::toggleTaskpane("Icons", countingLoader(runs));
    EXPECT_EQ(nested->subviews().size(), 1u);

    // The first split view in depth-first order wins.
    theme->removeFromSuperview();
    content->addSubview(split);
    content->addSubview(theme);
    TaskpaneManager::toggleTaskpane("Images", countingLoader(runs));
    EXPECT_EQ(nested->subviews().size(), 1u);
    EXPECT_EQ(paneTitles(), std::vector<std::string>{"Images"});

    // A window without a content view stops the toggle.
    fake.views->setKeyWindow(std::make_shared<MemoryWindow>("CUIDocumentShellWindow", nullptr));
    TaskpaneManager::toggleTaskpane("Color", countingLoader(runs));
    EXPECT_EQ(runs, 2);
}

TEST_F(TaskpaneManagerTest, LateCompletionsAndClosedPanes) {
    ContentCompletion later;
    TaskpaneManager::toggleTaskpane("Templates", [&](ContentCompletion completion) { later = completion; });
    auto templates = pane(1);
    EXPECT_EQ(templates->contentView(), nullptr);  // an empty pane under its title bar

    templates->closeButton->performClick();
    EXPECT_TRUE(paneTitles().empty());
    later(ui::HostingView::make([](double) { return ui::text("late"); }));
    EXPECT_NE(templates->contentView(), nullptr);  // the detached pane takes it, harmlessly

    int runs = 0;
    TaskpaneManager::toggleTaskpane("Templates", countingLoader(runs));
    EXPECT_EQ(runs, 1);
}

TEST_F(TaskpaneManagerTest, TheUnifiedMonitorWritesTheHeldModifiersOnTheMainQueue) {
    int runs = 0;
    TaskpaneManager::toggleTaskpane("A", countingLoader(runs));
    TaskpaneManager::toggleTaskpane("B", countingLoader(runs));
    TaskpaneManager::initializeKeyEventMonitor();
    EXPECT_EQ(fake.events->count(), 1u);
    fake.dispatch->runUntilIdle();
    fake.log->clear();

    platform::Event flags{platform::EventType::flagsChanged, 0x140000 | 0x10000, std::nullopt, 0};
    auto passed = fake.events->dispatch(flags);
    ASSERT_TRUE(passed);  // never consumed
    EXPECT_EQ(globalModifierKeyState().modifierFlags.get().rawValue, 0u);
    fake.dispatch->runUntilIdle();
    EXPECT_EQ(globalModifierKeyState().modifierFlags.get().rawValue, 0x150000u);  // unmasked
    EXPECT_EQ(fake.log->lines(),
              std::vector<std::string>{"Velmora Shortcuts: Modifier keys: ModifierFlags(rawValue: 1376256)"});

    platform::Event key{platform::EventType::keyDown, 0, std::nullopt, 0};
    EXPECT_TRUE(fake.events->dispatch(key));
    fake.dispatch->runUntilIdle();
    EXPECT_EQ(globalModifierKeyState().modifierFlags.get().rawValue, 0x150000u);
}

}  // namespace
}  // namespace velmora
