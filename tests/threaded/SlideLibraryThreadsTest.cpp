// The slide library with real worker threads: deletes write the file on a
// pool while the test thread, playing the host's main thread, saves tags
// and reloads, and another thread calls the exports as the macro project does.

#include <gtest/gtest.h>

#include <algorithm>
#include <set>
#include <thread>

#include "bridge/Exports.h"
#include "fake/FakePlatform.h"
#include "slidelibrary/SlideLibrary.h"
#include "slidelibrary/TaggingUI.h"

namespace velmora {
namespace {

TEST(SlideLibraryThreads, DeletesSavesAndReloadsAtOnce) {
    testing::FakePlatform fake;
    auto dispatch = std::make_shared<testing::PooledDispatch>();
    auto ports = fake.ports();
    ports->dispatch = dispatch;
    platform::install(ports);
    const std::string folder = "/Users/tester/Library/Application Support/Microsoft/Velmora/User/SlideLibrary";
    fake.files->createDirectories(folder + "/Thumbnail", nullptr);
    std::string json = "[";
    std::set<std::string> names;
    for (int i = 0; i < 120; ++i) {
        const std::string name = "S" + std::to_string(i);
        names.insert(name);
        json += (i ? "," : "") + std::string(R"({"FullSlideName":")") + name +
                R"(","TextContent":"t","Tags":["a"],"DateSaved":"2026-07-01T09:00:00","SlidesFileName":"deck.pptx"})";
        fake.files->write(folder + "/Thumbnail/" + name + ".png", "\x89PNG", false, nullptr);
    }
    fake.files->write(folder + "/SlideLibrary_Metadata.json", json + "]", false, nullptr);

    auto& model = SlideLibraryContentManager::viewModel();  // made first, then replaced
    model = SlideLibraryViewModel::make();
    dispatch->settle();
    ASSERT_EQ(model->items.get().size(), 120u);

    std::thread macroProject([] {
        for (int i = 0; i < 200; ++i) {
            refreshSlideLibraryTaskpane();
            if (i % 50 == 0) initializeTaggingOverlay("deck.pptx");
        }
    });
    for (int round = 0; round < 60; ++round) {
        const auto items = model->items.get();
        if (!items.empty()) model->deleteItem(items.front());
        if (round % 3 == 0) {
            auto view = std::make_shared<TaggingView>("deck.pptx");
            view->addTag("round " + std::to_string(round));
            view->saveTags();
        }
        dispatch->main.runDue();
    }
    macroProject.join();
    dispatch->settle();

    // The last writer wins; whatever is on show came from the file.
    for (const auto& item : model->items.get()) EXPECT_TRUE(names.count(item.fullSlideName)) << item.fullSlideName;
    EXPECT_LE(model->items.get().size(), 120u);
    for (const auto& line : fake.log->lines()) EXPECT_EQ(line.find(" failed: "), std::string::npos) << line;
}

}  // namespace
}  // namespace velmora
