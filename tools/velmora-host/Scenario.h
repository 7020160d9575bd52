// Scenario files and the command language of the simulator.
//
// Provides: tokenize(), Command, registerCommand(), registerShow(),
// TourStep, registerTourStep(), runScenario(), runTour().
// One command a line; `#` starts a comment; arguments split on blanks; single
// quotes keep blanks inside one argument; `@path` stands for the bytes of a
// file (relative to the scenario's folder). Each part of the simulator
// registers its own commands, shows and tour steps from its own file.
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

namespace velmora::host {

// Splits one line; throws ScenarioError on an unclosed quote or an unreadable @file.
std::vector<std::string> tokenize(const std::string& line, const std::string& baseDirectory);

// One word of a line before any file is read.
struct LineWord {
    std::string text;
    bool file = false;  // `@path`: `text` is the path, and the file's bytes stand for the word
};
// The words of one line as tokenize() splits them, reading no file; throws
// ScenarioError on an unclosed quote. Apart from the simulator's state, so
// the fuzz target can call it.
std::vector<LineWord> splitLine(const std::string& line);

using Arguments = std::vector<std::string>;

struct Command {
    std::string name;
    std::string usage;  // shown when the arguments are wrong
    std::size_t minArguments = 0;
    std::size_t maxArguments = 0;
    std::function<void(const Arguments&)> run;  // throws ScenarioError when the arguments are off
};

// Registers at static initialisation; returns true so it can seed a static.
bool registerCommand(Command command);
// `show TOPIC ...`: topics register like commands, named by their first word.
bool registerShow(Command topic);

struct TourStep {
    int order;                // steps run by this number
    std::string title;
    std::string explanation;  // printed before the step
    std::string scenario;     // lines of the command language
};
bool registerTourStep(TourStep step);

// Runs scenario text; gives the exit code (0, or 2 with a message on stderr
// naming the line that could not be carried out).
int runScenario(const std::string& text, const std::string& name, const std::string& baseDirectory,
                bool echoCommands = false);
int runTour();

// Reads a number or a boolean argument, or throws ScenarioError.
double numberArgument(const std::string& text);
std::uint8_t booleanArgument(const std::string& text);

}  // namespace velmora::host
