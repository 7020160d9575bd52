// The words of a scenario line: pure, apart from the simulator's state.

#include "Host.h"
#include "Scenario.h"

namespace velmora::host {

std::vector<LineWord> splitLine(const std::string& line) {
    std::vector<LineWord> words;
    std::size_t at = 0;
    while (at < line.size()) {
        if (line[at] == ' ' || line[at] == '\t' || line[at] == '\r') {
            ++at;
            continue;
        }
        if (line[at] == '#') break;
        LineWord word;
        if (line[at] == '\'') {
            auto close = line.find('\'', at + 1);
            if (close == std::string::npos) throw ScenarioError("unclosed single quote");
            word.text = line.substr(at + 1, close - at - 1);
            at = close + 1;
        } else {
            auto end = line.find_first_of(" \t\r", at);
            word.text = line.substr(at, end == std::string::npos ? std::string::npos : end - at);
            at = end == std::string::npos ? line.size() : end;
            if (word.text.size() > 1 && word.text.front() == '@') {
                word.text.erase(0, 1);
                word.file = true;
            }
        }
        words.push_back(std::move(word));
    }
    return words;
}

}  // namespace velmora::host
