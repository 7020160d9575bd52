// The assistant's intake beside its bound: from the host's two JSON texts
// (decoding, the detectors, the logged shape list, the publish) against a
// bare simdjson DOM parse of the same two texts, at 20, 200 and 2,000
// selected shapes (read where they lie, as padded strings). Also the
// arrange detector alone, selected times others.

#include <benchmark/benchmark.h>
#include <simdjson.h>

#include <memory>
#include <random>
#include <string>

#include <fmt/format.h>

#include "Pairs.h"
#include "QuietLog.h"
#include "assistant/AssistantViewModel.h"
#include "assistant/Detectors.h"
#include "assistant/ShapeMetadata.h"
#include "bridge/Exports.h"
#include "fake/FakePlatform.h"

namespace velmora {
namespace {

// The fake platform with a log that keeps nothing, so the run measures the
// formatting of the lines but not their storage; installed by enter().
struct AssistantPlatform {
    AssistantPlatform() {
        ports = fake.ports();
        ports->log = std::make_shared<QuietLog>();
    }
    void enter() const { platform::install(ports); }
    testing::FakePlatform fake;
    std::shared_ptr<platform::Platform> ports;
};

AssistantPlatform& benchPlatform() {
    static auto* shared = new AssistantPlatform;  // lives for the process
    return *shared;
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

bench::PairSides intake(int count) {
    auto& platform = benchPlatform();
    struct Input {
        // Two selections whose row names differ, so every call publishes.
        std::string selections[2];
        std::string others;
        std::size_t measuredTurn = 0, boundTurn = 0;
        simdjson::dom::parser parser;
    };
    auto in = std::make_shared<Input>();
    in->selections[0] = shapesJSON(count, 1, "Shape");
    in->selections[1] = shapesJSON(count, 2, "Harvey");
    in->others = shapesJSON(20, 3, "Other");
    // Room after each text, so the bound parses them where they lie.
    for (auto* text : {&in->selections[0], &in->selections[1], &in->others}) {
        text->reserve(text->size() + simdjson::SIMDJSON_PADDING);
    }
    bench::PairSides sides;
    sides.enter = [&platform] { platform.enter(); };
    sides.measured = [in, &platform] {
        triggerAssistant(in->selections[in->measuredTurn++ % 2].c_str(), in->others.c_str());
        platform.fake.dispatch->runUntilIdle();
    };
    sides.bound = [in] {
        const std::string& selected = in->selections[in->boundTurn++ % 2];
        simdjson::dom::element root;
        benchmark::DoNotOptimize(in->parser.parse(selected).get(root));
        benchmark::DoNotOptimize(in->parser.parse(in->others).get(root));
    };
    sides.counters = [count](benchmark::State& state) {
        benchmark::DoNotOptimize(AssistantViewModel::shared().recommendations.get().size());
        state.counters["shapes/s"] = benchmark::Counter(static_cast<double>(state.iterations() * count),
                                                        benchmark::Counter::kIsRate);
    };
    return sides;
}

const bool intakePairs = bench::registerPair("assistant_intake/20", [] { return intake(20); }, {benchmark::kMicrosecond, 400}) &&
                         bench::registerPair("assistant_intake/200", [] { return intake(200); }, {benchmark::kMicrosecond, 60}) &&
                         bench::registerPair("assistant_intake/2000", [] { return intake(2000); }, {benchmark::kMicrosecond, 8});

void BM_ArrangeDetector(benchmark::State& state) {
    benchPlatform().enter();
    const int count = static_cast<int>(state.range(0));
    // Selected shapes on one side of the slide and the others on the other:
    // no pair qualifies, so every pair is tested.
    auto selected = decodeShapeList(shapesJSON(count, 4, "Selected")).shapes;
    auto others = decodeShapeList(shapesJSON(count, 5, "Other")).shapes;
    for (auto& shape : others) shape.Left += 1000;
    for (auto _ : state) benchmark::DoNotOptimize(detectArrangeRecommendations(selected, others));
    state.SetItemsProcessed(state.iterations() * count);
    state.counters["pairs/s"] = benchmark::Counter(static_cast<double>(state.iterations()) * count * count,
                                                   benchmark::Counter::kIsRate);
}
BENCHMARK(BM_ArrangeDetector)->Arg(200)->Unit(benchmark::kMicrosecond);

}  // namespace
}  // namespace velmora
