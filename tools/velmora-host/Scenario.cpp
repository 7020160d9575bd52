#include "Scenario.h"

#include <algorithm>
#include <charconv>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <map>
#include <sstream>

#include "Host.h"

namespace velmora::host {

namespace {

std::map<std::string, Command>& commands() {
    static std::map<std::string, Command> table;
    return table;
}

std::map<std::string, Command>& shows() {
    static std::map<std::string, Command> table;
    return table;
}

std::vector<TourStep>& tourSteps() {
    static std::vector<TourStep> steps;
    return steps;
}

std::string readFile(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    if (!in) throw ScenarioError("cannot read " + path);
    std::ostringstream data;
    data << in.rdbuf();
    return std::move(data).str();
}

void checkCount(const Command& command, const Arguments& arguments) {
    if (arguments.size() < command.minArguments || arguments.size() > command.maxArguments) {
        throw ScenarioError("usage: " + command.usage);
    }
}

void runLine(const Arguments& words) {
    auto found = commands().find(words.front());
    if (found == commands().end()) throw ScenarioError("unknown command '" + words.front() + "'");
    Arguments arguments(words.begin() + 1, words.end());
    checkCount(found->second, arguments);
    found->second.run(arguments);
}

[[maybe_unused]] const bool showCommand = registerCommand(
    {"show", "show TOPIC ...", 1, 64, [](const Arguments& arguments) {
         auto topic = shows().find(arguments.front());
         if (topic == shows().end()) {
             std::string known;
             for (const auto& [name, _] : shows()) known += (known.empty() ? "" : ", ") + name;
             throw ScenarioError("unknown show topic '" + arguments.front() + "' (known: " + known + ")");
         }
         Arguments rest(arguments.begin() + 1, arguments.end());
         checkCount(topic->second, rest);
         Host::instance().settle();
         topic->second.run(rest);
     }});

}  // namespace

std::vector<std::string> tokenize(const std::string& line, const std::string& baseDirectory) {
    std::vector<std::string> words;
    for (auto& word : splitLine(line)) {
        if (!word.file) {
            words.push_back(std::move(word.text));
            continue;
        }
        std::filesystem::path path(word.text);
        if (path.is_relative() && !baseDirectory.empty()) path = std::filesystem::path(baseDirectory) / path;
        words.push_back(readFile(path.string()));
    }
    return words;
}

bool registerCommand(Command command) {
    auto name = command.name;
    commands()[name] = std::move(command);
    return true;
}

bool registerShow(Command topic) {
    auto name = topic.name;
    shows()[name] = std::move(topic);
    return true;
}

bool registerTourStep(TourStep step) {
    tourSteps().push_back(std::move(step));
    return true;
}

double numberArgument(const std::string& text) {
    double value = 0;
    auto [end, ec] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (ec != std::errc{} || end != text.data() + text.size()) throw ScenarioError("not a number: '" + text + "'");
    return value;
}

std::uint8_t booleanArgument(const std::string& text) {
    if (text == "true") return 1;
    if (text == "false") return 0;
    // The byte as the macro language passes it: its True is -1, all bits set.
    int value = 0;
    auto [end, ec] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (ec == std::errc{} && end == text.data() + text.size() && value >= -128 && value <= 255) {
        return static_cast<std::uint8_t>(value);
    }
    throw ScenarioError("not true, false or a byte: '" + text + "'");
}

int runScenario(const std::string& text, const std::string& name, const std::string& baseDirectory,
                bool echoCommands) {
    auto& host = Host::instance();
    std::istringstream lines(text);
    int number = 0;
    for (std::string line; std::getline(lines, line);) {
        ++number;
        try {
            auto words = tokenize(line, baseDirectory);
            if (words.empty()) continue;
            if (echoCommands) host.emit("> " + line.substr(line.find_first_not_of(" \t")));
            runLine(words);
            // Background work finishes before the run loop turns, so each
            // transcript has one order whatever the threads do.
            host.settle();
        } catch (const ScenarioError& error) {
            std::cerr << "velmora-host: " << name << ":" << number << ": " << error.what() << "\n";
            return 2;
        }
    }
    return 0;
}

int runTour() {
    auto steps = tourSteps();
    std::stable_sort(steps.begin(), steps.end(), [](const TourStep& a, const TourStep& b) { return a.order < b.order; });
    auto& host = Host::instance();
    for (const auto& step : steps) {
        host.emit("");
        host.emit("== " + step.title);
        std::istringstream explanation(step.explanation);
        for (std::string line; std::getline(explanation, line);) host.emit("   " + line);
        if (int code = runScenario(step.scenario, "tour: " + step.title, host.sandboxRoot(), true)) return code;
        host.settle();
    }
    host.emit("");
    host.emit("== The tour is over.");
    return 0;
}

}  // namespace velmora::host
