// The simulator's scenario language: every line split into words as the
// simulator splits it, and the words read by the readers that stand apart
// from the simulator's state: key chords and raw keys (each event then goes
// to the library's key handler, as the simulator's `key` delivers it),
// cloud faults, and the kinds and colours of `shape`.

#include <stdexcept>

#include "Cloud.h"
#include "FuzzPlatform.h"
#include "Host.h"
#include "KeyboardLayout.h"
#include "Scenario.h"
#include "document/Document.h"
#include "keyboard/KeyEventMonitor.h"
#include "keyboard/ShortcutState.h"

using namespace velmora;
using host::LineWord;

namespace {

void checkWords(const std::string& line, const std::vector<LineWord>& words) {
    if (words.size() > line.size()) fuzz::fail("more words than bytes: " + line);
    for (const auto& word : words) {
        if (word.file && word.text.empty()) fuzz::fail("a file word without a path: " + line);
    }
}

void key(const platform::Event& event) {
    if (event.type != platform::EventType::keyDown) fuzz::fail("a key line made another kind of event");
    (void)handleKeyDown(event);
}

void run(const std::vector<std::string>& words) {
    const auto& command = words.front();
    const std::size_t count = words.size() - 1;
    try {
        if (command == "key" && count == 1) {
            key(host::keyDownEvent(words[1]));
        } else if (command == "key-raw" && count == 3) {
            key(host::rawKeyDownEvent(words[1], words[2], words[3]));
        } else if (command == "cloud" && count >= 1 && words[1] == "fault") {
            (void)cloud::parseFault(std::vector<std::string>(words.begin() + 2, words.end()));
        } else if (command == "shape" && count >= 1) {
            for (std::size_t i = 2; i < words.size(); ++i) {
                const auto equals = words[i].find('=');
                if (equals == std::string::npos) continue;
                const auto key = words[i].substr(0, equals), value = words[i].substr(equals + 1);
                if (key == "type") {
                    if (auto kind = host::kindNamed(value); kind && host::kindName(*kind) != value) {
                        fuzz::fail("a kind reads back under another name");
                    }
                } else if (key == "fill" || key == "line" || key == "font") {
                    if (auto color = host::parseHexColor(value)) (void)color->hex();
                }
            }
        }
    } catch (const host::ScenarioError&) {
        // A line the simulator refuses, with its message: what such lines get.
    } catch (const std::invalid_argument&) {
        // A fault the cloud refuses: the same.
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view text(reinterpret_cast<const char*>(data), size);
    fuzz::Session session;
    ShortcutState::isEnabled = true;
    std::size_t start = 0;
    while (start <= text.size()) {
        auto end = text.find('\n', start);
        if (end == std::string_view::npos) end = text.size();
        const std::string line(text.substr(start, end - start));
        start = end + 1;
        std::vector<LineWord> words;
        try {
            words = host::splitLine(line);
        } catch (const host::ScenarioError&) {
            continue;
        }
        checkWords(line, words);
        if (words.empty()) continue;
        std::vector<std::string> texts;
        for (const auto& word : words) texts.push_back(word.file ? "@" + word.text : word.text);
        run(texts);
        session.settle();
    }
    return 0;
}
