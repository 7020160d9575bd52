// The slide library's hot paths at 10,000 slides, each beside its bound on
// the same bytes, with the ratio as the counter "x bound":
// - the metadata load (read and strict decode) beside a bare nlohmann parse;
// - one keystroke's filtering (a text and two tags, then the sort) beside a
//   plain substring scan of the same texts;
// - the pane's whole description beside the filtering it cannot skip: the
//   grid builds cells only for the rows on show ("cells" counts them).

#include <benchmark/benchmark.h>

#include <nlohmann/json.hpp>

#include <algorithm>
#include <chrono>
#include <cstdlib>

#include "QuietLog.h"
#include "fake/FakePlatform.h"
#include "slidelibrary/SlideLibraryPane.h"

namespace velmora {
namespace {

constexpr int slideCount = 10000;

std::string sampleFile() {
    static const char* const tags[] = {"Finance", "finance", "Q3", "Q4", "Roadmap", "team", "Hiring", "Charts",
                                       "Sales", "Board", "Ops", "Design", "Legal", "Marketing", "Product", "Growth"};
    static const char* const words[] = {"revenue", "plan", "Quarterly", "growth", "hiring", "ROADMAP", "customers",
                                        "margin", "launch", "timeline", "budget", "review"};
    std::string json = "[";
    for (int i = 0; i < slideCount; ++i) {
        std::string text;
        for (int w = 0; w < 16; ++w) text += std::string(words[(i * 7 + w * 3) % 12]) + " ";
        char date[32];
        std::snprintf(date, sizeof date, "2026-%02d-%02dT%02d:%02d:00", 1 + i % 11, 1 + i % 28, i % 24, i % 60);
        json += (i ? ",\n" : "") + std::string(R"({"FullSlideName":"Slide )") + std::to_string(i) +
                R"(","TextContent":")" + text + R"(","Tags":[")" + tags[i % 16] + R"(",")" + tags[(i / 3) % 16] +
                R"("],"DateSaved":")" + date + R"(","SlidesFileName":"Deck )" + std::to_string(i / 10) + R"(.pptx"})";
    }
    return json + "]";
}

// The fastest of a few timed runs of `work`, in seconds.
template <typename Work>
double bound(Work&& work) {
    double best = 1e9;
    for (int run = 0; run < 5; ++run) {
        const auto start = std::chrono::steady_clock::now();
        work();
        best = std::min(best, std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count());
    }
    return best;
}

// Times the benchmark's loop itself, so the ratio compares like with like.
class LoopTimer {
public:
    LoopTimer() : start_(std::chrono::steady_clock::now()) {}
    void report(benchmark::State& state, double boundSeconds) const {
        const double loop = std::chrono::duration<double>(std::chrono::steady_clock::now() - start_).count();
        const double each = loop / static_cast<double>(std::max<benchmark::IterationCount>(1, state.iterations()));
        state.counters["x bound"] = each / boundSeconds;
        state.counters["bound ms"] = boundSeconds * 1000;
    }

private:
    std::chrono::steady_clock::time_point start_;
};

struct SlideBench {
    SlideBench() {
        setenv("TZ", "CET-1CEST,M3.5.0,M10.5.0/3", 1);
        tzset();
        auto ports = fake.ports();
        ports->log = std::make_shared<QuietLog>();
        platform::install(ports);
        bytes = sampleFile();
        items = *decodeSlideMetadata(bytes);
        filters.searchText = "roadmap";
        filters.selectedTags = {"Q3", "Hiring"};
    }
    testing::FakePlatform fake;
    std::string bytes;
    std::vector<SlideMetadataItem> items;
    SlideFilters filters;
};

SlideBench& bench() {
    static auto* shared = new SlideBench;
    return *shared;
}

void BM_SlideMetadataDecode(benchmark::State& state) {
    auto& b = bench();
    const double parse = bound([&] { benchmark::DoNotOptimize(nlohmann::json::parse(b.bytes)); });
    const LoopTimer timer;
    for (auto _ : state) {
        auto decoded = decodeSlideMetadata(b.bytes);
        if (!decoded || decoded->size() != slideCount) state.SkipWithError("the file did not decode");
        benchmark::DoNotOptimize(decoded);
    }
    timer.report(state, parse);
    state.counters["MB"] = static_cast<double>(b.bytes.size()) / 1e6;
}
BENCHMARK(BM_SlideMetadataDecode)->Unit(benchmark::kMillisecond)->UseRealTime();

void BM_SlideFilter(benchmark::State& state) {
    auto& b = bench();
    const double scan = bound([&] {
        std::size_t hits = 0;
        for (const auto& item : b.items) hits += item.textContent.find("ROADMAP") != std::string::npos;
        benchmark::DoNotOptimize(hits);
    });
    std::size_t shown = 0;
    const LoopTimer timer;
    for (auto _ : state) {
        auto result = filteredItems(b.items, b.filters);
        shown = result.size();
        benchmark::DoNotOptimize(result.data());
    }
    timer.report(state, scan);
    state.counters["shown"] = static_cast<double>(shown);
}
BENCHMARK(BM_SlideFilter)->Unit(benchmark::kMillisecond)->UseRealTime();

void BM_SlidePaneBody(benchmark::State& state) {
    auto& b = bench();
    auto model = SlideLibraryViewModel::make();
    model->items.set(b.items);
    auto view = makeSlideLibraryHostingView(model);
    view->setFrame({0, 0, 400, 900});
    SlideFilters none;
    const double filtering = bound([&] { benchmark::DoNotOptimize(filteredItems(b.items, none).data()); });
    std::size_t cells = 0;
    const LoopTimer timer;
    for (auto _ : state) {
        const ui::Node tree = view->treeAt(400);
        cells = 0;
        std::function<void(const ui::Node&)> count = [&](const ui::Node& n) {
            if (n.onHover) ++cells;
            for (const auto& c : n.children) count(c);
        };
        count(tree);
    }
    timer.report(state, filtering);
    state.counters["cells"] = static_cast<double>(cells);
}
BENCHMARK(BM_SlidePaneBody)->Unit(benchmark::kMillisecond)->UseRealTime();

}  // namespace
}  // namespace velmora
