// The assistant's hot path: from the host's two JSON texts to the published
// rows, and the arrange detector, which is selected times unselected.

#include <benchmark/benchmark.h>

#include <random>
#include <string>

#include <fmt/format.h>

#include "assistant/AssistantViewModel.h"
#include "assistant/Detectors.h"
#include "assistant/ShapeMetadata.h"
#include "QuietLog.h"
#include "bridge/Exports.h"
#include "fake/FakePlatform.h"

namespace velmora {
namespace {

// The fake platform with a log that keeps nothing, so the run measures the
// formatting of the lines but not their storage.
testing::FakePlatform& benchPlatform() {
    static auto* fake = [] {
        auto* platform = new testing::FakePlatform;
        platform->install();
        auto ports = std::make_shared<platform::Platform>(platform::get());
        ports->log = std::make_shared<QuietLog>();
        platform::install(ports);
        return platform;
    }();
    return *fake;
}

std::string shapesJSON(int count, unsigned seed, const char* name) {
    std::mt19937 random(seed);
    std::uniform_real_distribution<double> position(0, 700), size(5, 200);
    std::string json = "[";
    for (int i = 0; i < count; ++i) {
        json += fmt::format(
            R"({}{{"ID":{},"Name":"{} {}","Top":{:.2f},"Left":{:.2f},"Width":{:.2f},"Height":{:.2f},"ShpType":"1",)"
            R"("HasFill":true,"FillColor":16777215,"HasTextFrame":true,"HasText":{},"AutoSize":false,"WordWrap":true,)"
            R"("MarginTop":3.6,"MarginLeft":7.2,"ZOrder":{},"HasLineBreaks":false}})",
            i ? "," : "", seed * 10000 + i, name, i, position(random), position(random), size(random), size(random),
            i % 2 ? "true" : "false", i);
    }
    return json + "]";
}

void BM_TriggerAssistant(benchmark::State& state) {
    auto& fake = benchPlatform();
    const int count = static_cast<int>(state.range(0));
    // Two selections whose row names differ, so every run publishes.
    const std::string selections[] = {shapesJSON(count, 1, "Shape"), shapesJSON(count, 2, "Harvey")};
    const std::string others = shapesJSON(20, 3, "Other");
    std::size_t turn = 0;
    for (auto _ : state) {
        triggerAssistant(selections[turn++ % 2].c_str(), others.c_str());
        fake.dispatch->runUntilIdle();
    }
    benchmark::DoNotOptimize(AssistantViewModel::shared().recommendations.get().size());
    state.SetItemsProcessed(state.iterations() * count);
    state.counters["shapes/s"] = benchmark::Counter(static_cast<double>(state.iterations() * count),
                                                    benchmark::Counter::kIsRate);
}
BENCHMARK(BM_TriggerAssistant)->Arg(20)->Arg(200)->Arg(2000)->Unit(benchmark::kMicrosecond);

void BM_ArrangeDetector(benchmark::State& state) {
    benchPlatform();
    const int count = static_cast<int>(state.range(0));
    // Selected shapes on one side of the slide and the others on the other:
    // no pair qualifies, so every pair is tested.
    auto selected = decodeShapeList(shapesJSON(count, 4, "Selected")).shapes;
    auto others = decodeShapeList(shapesJSON(count, 5, "Other")).shapes;
    for (auto& shape : others) shape.Left += 1000;
    for (auto _ : state) benchmark::DoNotOptimize(detectArrangeRecommendations(selected, others));
    state.SetItemsProcessed(state.iterations() * count);
    state.counters["shapes/s"] = benchmark::Counter(static_cast<double>(state.iterations() * count),
                                                    benchmark::Counter::kIsRate);
    state.counters["pairs/s"] = benchmark::Counter(static_cast<double>(state.iterations()) * count * count,
                                                   benchmark::Counter::kIsRate);
}
BENCHMARK(BM_ArrangeDetector)->Arg(200)->Unit(benchmark::kMicrosecond);

}  // namespace
}  // namespace velmora
