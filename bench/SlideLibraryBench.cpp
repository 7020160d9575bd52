// The slide library's hot paths at 10,000 slides, each beside its bound on
// the same bytes:
// - the metadata load (the strict decode of the file's bytes) beside a bare
//   simdjson DOM parse of them;
// - one keystroke's filtering (a text and two tags, then the sort) beside a
//   plain substring scan of the same texts;
// - the pane's whole description beside the filtering it cannot skip: the
//   grid builds cells only for the rows on show ("cells" counts them).

#include <benchmark/benchmark.h>
#include <simdjson.h>

#include <cstdlib>
#include <functional>

#include "Pairs.h"
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

struct SlideBench {
    SlideBench() {
        setenv("TZ", "CET-1CEST,M3.5.0,M10.5.0/3", 1);
        tzset();
        ports = fake.ports();
        ports->log = std::make_shared<QuietLog>();
        platform::install(ports);
        bytes = sampleFile();
        items = *decodeSlideMetadata(bytes);
        filters.searchText = "roadmap";
        filters.selectedTags = {"Q3", "Hiring"};
    }
    void enter() const { platform::install(ports); }
    testing::FakePlatform fake;
    std::shared_ptr<platform::Platform> ports;
    std::string bytes;
    std::vector<SlideMetadataItem> items;
    SlideFilters filters;
};

SlideBench& slides() {
    static auto* shared = new SlideBench;
    return *shared;
}

const bench::PairOptions perFile{benchmark::kMillisecond, 3};

const bool slidePairs =
    bench::registerPair(
        "slides/metadata_load",
        [] {
            auto& b = slides();
            b.enter();
            auto parser = std::make_shared<simdjson::dom::parser>();
            bench::PairSides sides;
            sides.enter = [&b] { b.enter(); };
            sides.measured = [&b] {
                auto decoded = decodeSlideMetadata(b.bytes);
                if (!decoded || decoded->size() != slideCount) std::abort();  // the sample always decodes
                benchmark::DoNotOptimize(decoded);
            };
            sides.bound = [&b, parser] {
                simdjson::dom::element root;
                benchmark::DoNotOptimize(parser->parse(b.bytes).get(root));
            };
            sides.counters = [&b](benchmark::State& state) {
                state.counters["MB"] = static_cast<double>(b.bytes.size()) / 1e6;
            };
            return sides;
        },
        perFile) &&
    bench::registerPair(
        "slides/filter",
        [] {
            auto& b = slides();
            b.enter();
            auto shown = std::make_shared<std::size_t>(0);
            bench::PairSides sides;
            sides.enter = [&b] { b.enter(); };
            sides.measured = [&b, shown] {
                auto result = filteredItems(b.items, b.filters);
                *shown = result.size();
                benchmark::DoNotOptimize(result.data());
            };
            sides.bound = [&b] {
                std::size_t hits = 0;
                for (const auto& item : b.items) hits += item.textContent.find("ROADMAP") != std::string::npos;
                benchmark::DoNotOptimize(hits);
            };
            sides.counters = [shown](benchmark::State& state) { state.counters["shown"] = static_cast<double>(*shown); };
            return sides;
        },
        perFile) &&
    bench::registerPair(
        "slides/pane_body",
        [] {
            auto& b = slides();
            b.enter();
            auto model = SlideLibraryViewModel::make();
            model->items.set(b.items);
            auto view = makeSlideLibraryHostingView(model);
            view->setFrame({0, 0, 400, 900});
            auto cells = std::make_shared<std::size_t>(0);
            bench::PairSides sides;
            sides.enter = [&b] { b.enter(); };
            sides.measured = [model, view, cells] {
                const ui::Node tree = view->treeAt(400);
                *cells = 0;
                std::function<void(const ui::Node&)> count = [&](const ui::Node& n) {
                    if (n.onHover) ++*cells;
                    for (const auto& c : n.children) count(c);
                };
                count(tree);
            };
            sides.bound = [&b] {
                const SlideFilters none;
                benchmark::DoNotOptimize(filteredItems(b.items, none).data());
            };
            sides.counters = [cells](benchmark::State& state) { state.counters["cells"] = static_cast<double>(*cells); };
            return sides;
        },
        perFile);

}  // namespace
}  // namespace velmora
