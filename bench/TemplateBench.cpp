// The template library's start against the cloud stand-in on loopback, 500
// templates: a warm start (every thumbnail cached) beside its bound, one
// bare GET of the same manifest and 500 existence tests; and a cold start,
// whose downloads go one at a time.

#include <benchmark/benchmark.h>

#include <filesystem>

#include "Cloud.h"
#include "Pairs.h"
#include "QuietLog.h"
#include "fake/FakePlatform.h"
#include "hosts/linux/LinuxAdapters.h"
#include "templatelibrary/TemplateLibraryViewModel.h"

namespace velmora {
namespace {

constexpr std::size_t templateCount = 500;

// One cloud and one platform for the whole run, with the cache filled once.
struct TemplateBench {
    TemplateBench() {
        cloud::CloudOptions options;
        options.templates = templateCount;
        cloud = std::make_unique<cloud::Cloud>(options);
        fake.config->service = cloud->serviceBaseURL();
        fake.config->cdn = cloud->cdnBaseURL();
        ports = fake.ports();
        ports->dispatch = dispatch;
        ports->http = std::make_shared<hosts::linuxhost::CurlHttp>(dispatch);
        ports->log = std::make_shared<QuietLog>();
        enter();
        sync();
        for (const auto& item : model->items.get()) cachedThumbs.push_back(item.thumb);
    }
    void enter() const { platform::install(ports); }
    void sync() {
        model = TemplateLibraryViewModel::make();
        dispatch->settle();
    }

    std::unique_ptr<cloud::Cloud> cloud;
    testing::FakePlatform fake;
    std::shared_ptr<testing::PooledDispatch> dispatch = std::make_shared<testing::PooledDispatch>();
    std::shared_ptr<platform::Platform> ports;
    std::shared_ptr<TemplateLibraryViewModel> model;
    std::vector<std::string> cachedThumbs;
};

TemplateBench& templates() {
    static auto* shared = new TemplateBench;
    return *shared;
}

const bool warmStart = bench::registerPair(
    "templates/warm_start",
    [] {
        auto& b = templates();
        b.enter();
        bench::PairSides sides;
        sides.enter = [&b] { b.enter(); };
        sides.measured = [&b] {
            b.sync();
            if (b.model->items.get().size() < templateCount - 1) std::abort();  // the stand-in serves them all
        };
        // What a warm start cannot do without.
        sides.bound = [&b] {
            const platform::HttpRequest request{"GET", b.cloud->cdnBaseURL() + "manifest.json", {}, {}, 60};
            auto response = hosts::linuxhost::CurlHttp::perform(request);
            benchmark::DoNotOptimize(response.body.data());
            for (const auto& path : b.cachedThumbs) benchmark::DoNotOptimize(platform::files().exists(path));
        };
        sides.counters = [&b](benchmark::State& state) {
            state.counters["templates"] = static_cast<double>(b.model->items.get().size());
        };
        return sides;
    },
    {benchmark::kMillisecond, 3});

void BM_TemplateColdStart(benchmark::State& state) {
    auto& b = templates();
    b.enter();
    std::size_t downloads = 0;
    for (auto _ : state) {
        state.PauseTiming();
        for (const auto& path : b.cachedThumbs) platform::files().remove(path);
        state.ResumeTiming();
        b.sync();
        downloads += b.cachedThumbs.size();
    }
    state.counters["downloads/s"] = benchmark::Counter(static_cast<double>(downloads), benchmark::Counter::kIsRate);
}
BENCHMARK(BM_TemplateColdStart)->Unit(benchmark::kMillisecond)->UseRealTime()->Iterations(3);

}  // namespace
}  // namespace velmora
