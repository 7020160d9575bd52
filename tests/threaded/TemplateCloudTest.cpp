// The template library over real HTTP: libcurl against the cloud stand-in
// on loopback, with the sync's replies coming back on worker threads.

#include <gtest/gtest.h>

#include <chrono>

#include "Cloud.h"
#include "fake/FakePlatform.h"
#include "hosts/linux/LinuxAdapters.h"
#include "templatelibrary/TemplateLibraryViewModel.h"

namespace velmora {
namespace {

class TemplateCloudTest : public ::testing::Test {
protected:
    void SetUp() override {
        fake.config->service = cloud.serviceBaseURL();
        fake.config->cdn = cloud.cdnBaseURL();
        auto ports = fake.ports();
        ports->dispatch = dispatch;
        ports->http = std::make_shared<hosts::linuxhost::CurlHttp>(dispatch);
        platform::install(ports);
    }

    std::vector<std::string> paths() {
        std::vector<std::string> out;
        for (const auto& request : cloud.requests()) out.push_back(request.path);
        return out;
    }

    cloud::Cloud cloud;
    testing::FakePlatform fake;
    std::shared_ptr<testing::PooledDispatch> dispatch = std::make_shared<testing::PooledDispatch>();
};

TEST_F(TemplateCloudTest, AColdStartFetchesEachThumbnailOnceAndAWarmStartTheManifestAlone) {
    auto cold = TemplateLibraryViewModel::make();
    dispatch->settle();
    const auto items = cold->items.get();
    ASSERT_EQ(items.size(), 12u);
    const auto first = paths();
    ASSERT_FALSE(first.empty());
    EXPECT_EQ(first.front(), "/cdn/manifest.json");
    // Two templates share cover.png: eleven thumbnails, one after another.
    EXPECT_EQ(first.size(), 1u + 11u);
    for (const auto& item : items) EXPECT_TRUE(platform::files().exists(item.thumb)) << item.id;

    cloud.clearRequests();
    auto warm = TemplateLibraryViewModel::make();
    dispatch->settle();
    EXPECT_EQ(paths(), std::vector<std::string>{"/cdn/manifest.json"});
    EXPECT_EQ(warm->items.get(), items);
    EXPECT_FALSE(warm->isLoading.get());
}

TEST_F(TemplateCloudTest, ADroppedManifestConnectionEndsTheSyncAsAFailure) {
    cloud.addFault(cloud::parseFault({"manifest", "drop"}));
    auto model = TemplateLibraryViewModel::make();
    dispatch->settle();
    EXPECT_TRUE(model->items.get().empty());
    EXPECT_FALSE(model->isLoading.get());
    EXPECT_EQ(model->categories.get(), std::vector<std::string>{allCategories});
}

TEST_F(TemplateCloudTest, ASlowUsageReportKeepsNoOneWaiting) {
    cloud.addFault(cloud::parseFault({"usage", "delay", "1"}));
    fake.process->set("/usr/sbin/system_profiler", {true, {}, "      Hardware UUID: K\n"});
    auto model = TemplateLibraryViewModel::make();
    dispatch->settle();
    model->trackTemplateUsage("tpl-0001");
    // The main queue goes on at once while the report waits on a worker.
    bool ran = false;
    const auto started = std::chrono::steady_clock::now();
    platform::mainAsync([&] { ran = true; });
    dispatch->main.runDue();
    EXPECT_TRUE(ran);
    EXPECT_LT(std::chrono::steady_clock::now() - started, std::chrono::milliseconds(500));
    dispatch->settle();
    EXPECT_TRUE(fake.log->contains("[Usage] Success: {\"ok\":true}"));
}

}  // namespace
}  // namespace velmora
