// The colour bar with real worker threads: theme fetches run on a pool while
// the test thread plays the host's main thread.

#include <gtest/gtest.h>

#include <algorithm>
#include <thread>

#include "bridge/Exports.h"
#include "colorbar/ColorBarPane.h"
#include "fake/FakePlatform.h"

namespace velmora {
namespace {

TEST(ColorBarThreads, AThousandRefreshesWhileThePaneOpensAndCloses) {
    testing::FakePlatform fake;
    auto dispatch = std::make_shared<testing::PooledDispatch>();
    auto ports = fake.ports();
    ports->dispatch = dispatch;
    platform::install(ports);
    const std::string first = "#000000,#FFFFFF,#44546A,#E7E6E6,#4472C4,#ED7D31,#A5A5A5,#FFC000,#5B9BD5,#70AD47";
    const std::string second = "#111111,#EEEEEE,#222222,#DDDDDD,#0000FF,#00FF00,#FF0000,#00FFFF,#FF00FF,#FFFF00";
    fake.script->answer("GetThemeColorsHexCsv", first);

    auto content = std::make_shared<hosts::MemoryView>("NSView", platform::Rect{0, 0, 1280, 800});
    content->addSubview(std::make_shared<hosts::MemoryView>("CUITaskPaneSplitView", platform::Rect{0, 0, 1280, 760}));
    auto window = std::make_shared<hosts::MemoryWindow>("CUIDocumentShellWindow", content);
    fake.views->addWindow(window);
    fake.views->setKeyWindow(window);

    int opens = 0;
    for (int i = 0; i < 1000; ++i) {
        triggerColorThemeRefresh();
        if (i % 10 == 0) {
            openColorBarTaskpane();  // opens, and closes at the next call
            ++opens;
        }
        if (i == 500) fake.script->answer("GetThemeColorsHexCsv", second);
        dispatch->main.runDue();  // the run loop turns while fetches are under way
    }
    dispatch->settle();

    const auto lines = fake.log->lines();
    EXPECT_EQ(std::count(lines.begin(), lines.end(), "ColorBar: 🎨 Theme refresh triggered from VBA"), 1000);
    EXPECT_EQ(std::count(lines.begin(), lines.end(), "ColorBar: 🟢 Dylib loaded successfully"), opens);
    const auto macros = fake.script->macros();
    EXPECT_GT(std::count(macros.begin(), macros.end(), "GetThemeColorsHexCsv"), 500);

    // Every fetch that ended after the theme changed read the new one.
    auto model = ColorBarContentManager::activeViewModel().lock();
    ASSERT_TRUE(model);
    const auto rows = model->rows.get();
    ASSERT_EQ(rows.size(), 10u);
    EXPECT_EQ(rows[4].hex, "#0000FF");
}

}  // namespace
}  // namespace velmora
