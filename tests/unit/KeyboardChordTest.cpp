// Key events nobody wrote by hand: seeded random chords and raw events go
// through the host simulator, and what it consumes and which macros it runs
// are checked against the reference table.

#include <gtest/gtest.h>

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <random>
#include <sstream>
#include <string>
#include <vector>

#include "KeyboardReferenceTable.h"
#include "fake/FakePlatform.h"

namespace velmora {
namespace {

namespace ref = testing::reference;
using Strings = std::vector<std::string>;

// A US keyboard as the platform reports it, written out independently.
struct UsKey {
    const char* name;
    int keyCode;
    const char* plain;
    const char* shifted;
};
const UsKey usKeys[] = {
    {"a", 0, "a", "A"},   {"s", 1, "s", "S"},   {"d", 2, "d", "D"},   {"f", 3, "f", "F"},   {"h", 4, "h", "H"},
    {"g", 5, "g", "G"},   {"z", 6, "z", "Z"},   {"x", 7, "x", "X"},   {"c", 8, "c", "C"},   {"v", 9, "v", "V"},
    {"b", 11, "b", "B"},  {"q", 12, "q", "Q"},  {"w", 13, "w", "W"},  {"e", 14, "e", "E"},  {"r", 15, "r", "R"},
    {"y", 16, "y", "Y"},  {"t", 17, "t", "T"},  {"o", 31, "o", "O"},  {"u", 32, "u", "U"},  {"i", 34, "i", "I"},
    {"p", 35, "p", "P"},  {"l", 37, "l", "L"},  {"j", 38, "j", "J"},  {"k", 40, "k", "K"},  {"n", 45, "n", "N"},
    {"m", 46, "m", "M"},  {"1", 18, "1", "!"},  {"2", 19, "2", "@"},  {"3", 20, "3", "#"},  {"4", 21, "4", "$"},
    {"5", 23, "5", "%"},  {"6", 22, "6", "^"},  {"7", 26, "7", "&"},  {"8", 28, "8", "*"},  {"9", 25, "9", "("},
    {"0", 29, "0", ")"},  {"period", 47, ".", ">"}, {"comma", 43, ",", "<"}, {"slash", 44, "/", "?"},
    {"return", 36, "\r", "\r"}, {"enter", 76, "\x03", "\x03"}, {"escape", 53, "\x1b", "\x1b"},
    {"up", 126, "\xEF\x9C\x80", "\xEF\x9C\x80"}, {"down", 125, "\xEF\x9C\x81", "\xEF\x9C\x81"},
    {"left", 123, "\xEF\x9C\x82", "\xEF\x9C\x82"}, {"right", 124, "\xEF\x9C\x83", "\xEF\x9C\x83"},
};

std::string asciiLower(std::string text) {
    for (char& c : text) {
        if (c >= 'A' && c <= 'Z') c = static_cast<char>(c + 32);
    }
    return text;
}

struct Probe {
    std::string command;
    std::optional<std::string> macro;  // the row it must run, or nothing: it passes
};

std::vector<Probe> makeProbes(unsigned seed, int chords, int raws) {
    std::mt19937 random(seed);
    auto chance = [&](double p) { return std::uniform_real_distribution<>(0, 1)(random) < p; };
    std::vector<Probe> probes;
    for (int i = 0; i < chords; ++i) {
        const UsKey& key = usKeys[random() % std::size(usKeys)];
        std::string chord;
        std::uint64_t flags = 0;
        // Control and command often, so that many chords land on a row.
        const std::pair<const char*, std::uint64_t> modifiers[] = {
            {"ctrl", ref::C}, {"cmd", ref::M}, {"shift", ref::S}, {"opt", ref::O}, {"caps", 0}, {"fn", 0}};
        const double odds[] = {0.6, 0.6, 0.3, 0.1, 0.1, 0.05};
        for (std::size_t m = 0; m < std::size(modifiers); ++m) {
            if (!chance(odds[m])) continue;
            chord += std::string(modifiers[m].first) + "+";
            flags |= modifiers[m].second;
        }
        chord += key.name;
        const std::string characters = (flags & ref::S) ? key.shifted : key.plain;
        probes.push_back({"key " + chord, ref::expectedMacro(asciiLower(characters), key.keyCode, flags)});
    }
    const char* texts[] = {"-", "t", "T", "c", "&", "l", "\xC3\xA9", "U+F701", "U+F700", "U+000D", "U+0003", "tt", ".", "e", "E", "''"};
    for (int i = 0; i < raws; ++i) {
        std::string text = texts[random() % std::size(texts)];
        const int keyCode = chance(0.5) ? 17 + static_cast<int>(random() % 14) : static_cast<int>(random() % 128);
        std::uint64_t flags = 0;
        for (std::uint64_t bit : {ref::S, ref::C, ref::O, ref::M}) {
            if (chance(bit == ref::O ? 0.1 : 0.5)) flags |= bit;
        }
        const std::uint64_t noise[] = {0x1, 0x2, 0x8, 0x20, 0x100, 0x10000, 0x200000, 0x800000};
        for (auto bit : noise) {
            if (chance(0.2)) flags |= bit;
        }
        std::optional<std::string> characters;
        if (text == "U+F701") characters = "\xEF\x9C\x81";
        else if (text == "U+F700") characters = "\xEF\x9C\x80";
        else if (text == "U+000D") characters = "\r";
        else if (text == "U+0003") characters = "\x03";
        else if (text == "''") characters = "";
        else if (text != "-") characters = asciiLower(text);
        char hex[32];
        std::snprintf(hex, sizeof hex, "%llx", static_cast<unsigned long long>(flags));
        probes.push_back({"key-raw " + text + " " + std::to_string(keyCode) + " " + hex,
                          ref::expectedMacro(characters, keyCode, flags)});
    }
    std::shuffle(probes.begin(), probes.end(), random);
    return probes;
}

// Runs the scenario text through the simulator and gives its transcript.
std::string runSimulator(const std::string& scenario) {
    const std::filesystem::path library = VELMORA_LIBRARY_PATH;
    const auto host = library.parent_path().parent_path() / "tools" / "velmora-host" / "velmora-host";
    if (!std::filesystem::exists(host)) {
        ADD_FAILURE() << "the simulator is not built: " << host;
        return {};
    }
    const auto file = std::filesystem::temp_directory_path() / ("velmora-chords-" + std::to_string(::getpid()) + ".scenario");
    std::ofstream(file) << scenario;
    const std::string command = host.string() + " --library " + library.string() + " run " + file.string() + " 2>&1";
    std::string transcript;
    if (FILE* pipe = ::popen(command.c_str(), "r")) {
        char buffer[4096];
        for (std::size_t n; (n = std::fread(buffer, 1, sizeof buffer, pipe)) > 0;) transcript.append(buffer, n);
        EXPECT_EQ(::pclose(pipe), 0) << transcript.substr(transcript.size() > 2000 ? transcript.size() - 2000 : 0);
    }
    std::filesystem::remove(file);
    return transcript;
}

TEST(KeyboardChords, RandomKeysAreTakenAndRunTheirRowExactlyAsTheTableSays) {
    const auto probes = makeProbes(20240611, 600, 300);
    // The refresh fails, so nothing the assistant does afterwards mixes in.
    std::string scenario = "fail CallTriggerAssistant\ncall initializeEventMonitor\n";
    for (std::size_t i = 0; i < probes.size(); ++i) {
        scenario += "echo probe " + std::to_string(i) + "\n" + probes[i].command + "\n";
    }
    std::istringstream transcript(runSimulator(scenario));

    // Each probe's part of the transcript: the verdict and the macros its block ran.
    std::vector<std::string> verdicts(probes.size());
    std::vector<Strings> macros(probes.size());
    long current = -1;
    for (std::string line; std::getline(transcript, line);) {
        if (line.rfind("probe ", 0) == 0) {
            current = std::stol(line.substr(6));
        } else if (current >= 0 && line.rfind("key: ", 0) == 0) {
            verdicts[current] = line.substr(5);
        } else if (current >= 0 && line.rfind("script: ", 0) == 0) {
            macros[current].push_back(testing::macroNameIn(line));
        }
    }
    int matched = 0;
    for (std::size_t i = 0; i < probes.size(); ++i) {
        SCOPED_TRACE(probes[i].command);
        const auto& expected = probes[i].macro;
        matched += expected.has_value();
        EXPECT_EQ(verdicts[i], expected ? "consumed" : "passed");
        EXPECT_EQ(macros[i], (expected ? Strings{*expected, "CallTriggerAssistant"} : Strings{}));
    }
    // The draw must exercise both sides well.
    EXPECT_GT(matched, 100);
    EXPECT_LT(matched, static_cast<int>(probes.size()) - 100);
}

}  // namespace
}  // namespace velmora
