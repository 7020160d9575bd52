#include "assistant/MissedAssistant.h"

#include <algorithm>
#include <array>
#include <set>

#include "assistant/AssistantViewModel.h"
#include "assistant/HostText.h"
#include "bridge/Exports.h"
#include "platform/Platform.h"
#include "support/Text.h"

namespace velmora {

namespace {

struct MissedRow {
    const char* command;
    const char* name;
    std::vector<std::string> keys;
    const char* imagePath;
    const char* timeSaved;
};

// These keys are the missed list's own: "Cmd" before "Ctrl", "+3s", and the
// bring and send pairs the other way round from the arrange detector's.
const std::vector<MissedRow>& missedTable() {
    static const std::vector<MissedRow>* table = new std::vector<MissedRow>{
        {"IncreaseFontSize", "Increase Font", {"Cmd", "Shift", "."}, "FontIncrease.png", "+3s"},
        {"DecreaseFontSize", "Decrease Font", {"Cmd", "Shift", ","}, "FontDecrease.png", "+3s"},
        {"AlignLeft", "Align Left", {"Cmd", "Ctrl", "←"}, "AlignLeft.png", "+3s"},
        {"AlignRight", "Align Right", {"Cmd", "Ctrl", "→"}, "AlignRight.png", "+3s"},
        {"AlignCenter", "Align Center", {"Cmd", "Ctrl", "C"}, "AlignCenter.png", "+3s"},
        {"AlignTop", "Align Top", {"Cmd", "Ctrl", "↑"}, "AlignTop.png", "+3s"},
        {"AlignMiddle", "Align Middle", {"Cmd", "Ctrl", "M"}, "AlignMiddle.png", "+3s"},
        {"AlignBottom", "Align Bottom", {"Cmd", "Ctrl", "↓"}, "AlignBottom.png", "+3s"},
        {"DistributeHorizontally", "Distribute Horizontal", {"Cmd", "Ctrl", "H"}, "DistributeHorizontal.png", "+3s"},
        {"DistributeVertically", "Distribute Vertical", {"Cmd", "Ctrl", "V"}, "DistributeVertical.png", "+3s"},
        {"BringToFrontMenu", "Bring to Front", {"Cmd", "Opt", "Shift", "F"}, "BringToFront.png", "-3s"},
        {"BringToFront", "Bring to Front", {"Cmd", "Opt", "Shift", "F"}, "BringToFront.png", "-3s"},
        {"BringForward", "Bring Forward", {"Cmd", "Shift", "F"}, "BringForward.png", "-3s"},
        {"SendToBackMenu", "Send to Back", {"Cmd", "Opt", "Shift", "B"}, "SendToBack.png", "-3s"},
        {"SendToBack", "Send to Back", {"Cmd", "Opt", "Shift", "B"}, "SendToBack.png", "-3s"},
        {"SendBackward", "Send Backward", {"Cmd", "Shift", "B"}, "SendBackward.png", "-3s"},
        {"Group", "Group Shapes", {"Cmd", "Opt", "G"}, "Group.png", "+3s"},
        {"Ungroup", "Ungroup Shapes", {"Cmd", "Opt", "Shift", "G"}, "Ungroup.png", "+3s"},
        {"NewSlide", "New Slide", {"Ctrl", "M"}, "NewSlide.png", "+3s"},
    };
    return *table;
}

constexpr std::array<const char*, 4> relevantModifiers = {"ctrl", "cmd", "opt", "shift"};

}  // namespace

ShortcutRecommendation missedRecommendation(const std::string& commandName) {
    ShortcutRecommendation recommendation;
    for (const auto& row : missedTable()) {
        if (commandName == row.command) {
            recommendation.Name = row.name;
            recommendation.Keys = row.keys;
            recommendation.ImagePath = row.imagePath;
            recommendation.TimeSaved = row.timeSaved;
            return recommendation;
        }
    }
    recommendation.Name = commandName;
    recommendation.ImagePath = "Default.png";
    return recommendation;
}

bool isModifierRelevant(const std::vector<std::string>& keys, const ModifierKeyState& state) {
    std::set<std::string> required;
    for (const auto& key : keys) {
        auto lower = support::lowercased(key);
        if (std::find(relevantModifiers.begin(), relevantModifiers.end(), lower) != relevantModifiers.end()) {
            required.insert(lower);
        }
    }
    // Caps lock and the function key play no part.
    ModifierFlags flags = state.modifierFlags.get();
    std::set<std::string> active;
    if (flags.contains(ModifierFlags::control)) active.insert("ctrl");
    if (flags.contains(ModifierFlags::command)) active.insert("cmd");
    if (flags.contains(ModifierFlags::option)) active.insert("opt");
    if (flags.contains(ModifierFlags::shift)) active.insert("shift");
    return required == active;
}

void triggerMissedAssistant(const char* missedShortcut) {
    auto recommendation = missedRecommendation(textFromHost(missedShortcut));
    if (isModifierRelevant(recommendation.Keys, globalModifierKeyState())) {
        // The command came from the keyboard after all.
        platform::nslog("Modifiers active for " + recommendation.Name + "; skipping missed recommendation.");
        return;
    }
    platform::mainAsync([recommendation = std::move(recommendation)] {
        auto& missed = AssistantViewModel::shared().missed;
        auto rows = missed.get();
        // The duplicate test runs here, on the main queue, so two quick calls give one row.
        bool exists = std::any_of(rows.begin(), rows.end(),
                                  [&](const ShortcutRecommendation& row) { return row.Name == recommendation.Name; });
        if (exists) {
            platform::nslog("Missed recommendation already exists: " + recommendation.Name);
            return;
        }
        // Two writes, so observers hear of the insert and of the trim apart.
        missed.modify([&](auto& list) { list.insert(list.begin(), recommendation); });
        if (missed.get().size() > maximumMissed) missed.modify([](auto& list) { list.pop_back(); });
        platform::nslog("Added missed recommendation: " + recommendation.Name);
    });
}

}  // namespace velmora
