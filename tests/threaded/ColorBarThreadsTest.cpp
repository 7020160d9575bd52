// The colour bar with real worker threads: theme fetches run on a pool while
// the test thread plays the host's main thread.

#include <gtest/gtest.h>

#include <algorithm>
#include <thread>

#include "bridge/Exports.h"
#include "colorbar/ColorBarPane.h"
#include "fake/FakePlatform.h"
#include "hosts/common/ThreadPool.h"
#include "hosts/common/VirtualClockQueue.h"

namespace velmora {
namespace {

// The main queue runs on the thread that made it, when it drains it; global
// blocks run on a pool meanwhile.
class PooledDispatch : public platform::DispatchPort {
public:
    void mainAsync(platform::Task task) override { main.post(0, std::move(task)); }
    void mainAsyncAfter(double seconds, platform::Task task) override { main.post(seconds, std::move(task)); }
    void globalAsync(platform::QualityOfService, platform::Task task) override { pool.post(std::move(task)); }
    bool isMainThread() const override { return std::this_thread::get_id() == mainThread; }

    void settle() {
        for (;;) {
            pool.waitIdle();
            if (main.runDue() == 0) break;
        }
    }

    hosts::VirtualClockQueue main;
    hosts::ThreadPool pool{4};
    std::thread::id mainThread = std::this_thread::get_id();
};

std::shared_ptr<platform::Platform> platformWith(testing::FakePlatform& fake,
                                                 std::shared_ptr<platform::DispatchPort> dispatch) {
    auto ports = std::make_shared<platform::Platform>();
    ports->script = fake.script;
    ports->dispatch = std::move(dispatch);
    ports->log = fake.log;
    ports->http = fake.http;
    ports->files = fake.files;
    ports->process = fake.process;
    ports->events = fake.events;
    ports->views = fake.views;
    ports->accessibility = fake.accessibility;
    ports->web = fake.web;
    ports->config = fake.config;
    ports->inspection = fake.inspection;
    ports->panes = fake.panes;
    return ports;
}

TEST(ColorBarThreads, AThousandRefreshesWhileThePaneOpensAndCloses) {
    testing::FakePlatform fake;
    auto dispatch = std::make_shared<PooledDispatch>();
    platform::install(platformWith(fake, dispatch));
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
    auto model = ColorBarContentManager::activeViewModel.lock();
    ASSERT_TRUE(model);
    const auto rows = model->rows.get();
    ASSERT_EQ(rows.size(), 10u);
    EXPECT_EQ(rows[4].hex, "#0000FF");
}

}  // namespace
}  // namespace velmora
