// The macro runner: every change to a document leaves the library as one
// script that runs a named macro of the host's macro project.
//
// Provides: the script composers (plainMacroCommand, macroCommandWithParameters,
// returningMacroCommand, macroScript) and the family of runners, one per
// feature, each with its own log texts.
// Thread: every function runs on its caller's thread and blocks until the
// host has answered. Nothing throws; errors are logged and swallowed.
#pragma once

#include <string>
#include <vector>

namespace velmora {

// --- composition ---------------------------------------------------------

// `run VB macro macro name "NAME"`
std::string plainMacroCommand(const std::string& macroName);
// `run VB macro macro name "NAME" list of parameters {"a", "b"}`. The
// arguments go in exactly as given: the host's macros receive these bytes,
// so nothing is escaped.
std::string macroCommandWithParameters(const std::string& macroName, const std::vector<std::string>& arguments);
// `return run VB macro macro name "NAME"`
std::string returningMacroCommand(const std::string& macroName);
// The three-line script around one command.
std::string macroScript(const std::string& command);
// The tint as a bare number with two decimals and a point in any locale.
std::string tintText(double tint);

// --- the runners ---------------------------------------------------------

void runPowerPointMacro(const std::string& macroName);
void runPowerPointMacroWithArguments(const std::string& macroName, const std::vector<std::string>& arguments);
// A spare with unprefixed log texts; the lines window uses the form below.
void runInsertLineMacroWithArguments(const std::string& macroName, const std::vector<std::string>& arguments);
void runInsertLineMacroWithArguments(const std::vector<std::string>& arguments);
void runInsertIconWithArguments(const std::vector<std::string>& arguments);
void runInsertImageWithArguments(const std::vector<std::string>& arguments);
void runInsertSlideWithArguments(const std::vector<std::string>& arguments);
void runInsertTemplatesWithArguments(const std::vector<std::string>& arguments);
void runColorMacroNoArgs(const std::string& macroName);
// Runs nothing and logs nothing when `arguments` is empty; items after the
// first are ignored.
void runColorMacroWithHex(const std::string& macroName, const std::vector<std::string>& arguments, double tint);
// Asks the macro project for fresh shapes; it answers through triggerAssistant.
void triggerRecommendationUpdateMacro();
// The user's shortcut setting. Every failure counts as enabled.
bool getEnableKeyboardShortcuts();

}  // namespace velmora
