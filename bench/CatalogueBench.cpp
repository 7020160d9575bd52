// The shortcut catalogue's parse beside its bound: a Shortcuts.xml of 200
// records read into records (the reference pane's work before it groups
// them) against expat with no handlers on the same bytes.

#include <benchmark/benchmark.h>
#include <expat.h>

#include <memory>
#include <string>

#include "Pairs.h"
#include "QuietLog.h"
#include "fake/FakePlatform.h"
#include "shortcuts/ShortcutXMLParser.h"

namespace velmora {
namespace {

constexpr int recordCount = 200;

std::string sampleCatalogue() {
    static const char* const categories[] = {"Alignment", "Arrange", "Text", "Insert", "Format", "View", "Slides",
                                             "Colour"};
    static const char* const keys[] = {"Ctrl+Shift+L", "Ctrl+Alt+R", "Cmd+Opt+T", "Ctrl+Shift+Up", "Shift+F5",
                                       "Cmd+Shift+7", "Ctrl+Alt+Shift+D"};
    std::string xml = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<shortcuts>\n";
    for (int i = 0; i < recordCount; ++i) {
        xml += "  <object>\n    <name>Command number " + std::to_string(i) + " &amp; more</name>\n";
        xml += std::string("    <category>") + categories[i % 8] + "</category>\n";
        xml += std::string("    <shortcut>") + keys[i % 7] + "</shortcut>\n";
        xml += "    <img>Icon" + std::to_string(i % 40) + ".png</img>\n  </object>\n";
    }
    return xml + "</shortcuts>\n";
}

const bool cataloguePair = bench::registerPair(
    "catalogue/parse",
    [] {
        struct State {
            testing::FakePlatform fake;
            std::shared_ptr<platform::Platform> ports;
            std::string xml = sampleCatalogue();
        };
        auto state = std::make_shared<State>();
        state->ports = state->fake.ports();
        state->ports->log = std::make_shared<QuietLog>();
        bench::PairSides sides;
        sides.enter = [state] { platform::install(state->ports); };
        sides.measured = [state] {
            ShortcutXMLParser delegate;
            if (!parseShortcutXML(state->xml, delegate) || delegate.shortcuts.size() != recordCount) std::abort();
            benchmark::DoNotOptimize(delegate.shortcuts.data());
        };
        sides.bound = [state] {
            XML_Parser parser = XML_ParserCreate(nullptr);
            benchmark::DoNotOptimize(
                XML_Parse(parser, state->xml.data(), static_cast<int>(state->xml.size()), XML_TRUE));
            XML_ParserFree(parser);
        };
        sides.counters = [state](benchmark::State& run) {
            run.counters["KB"] = static_cast<double>(state->xml.size()) / 1e3;
        };
        return sides;
    },
    {benchmark::kMicrosecond, 200});

}  // namespace
}  // namespace velmora
