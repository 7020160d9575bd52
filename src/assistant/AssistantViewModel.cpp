#include "assistant/AssistantViewModel.h"

#include <string>

#include "platform/Platform.h"

namespace velmora {

namespace {

std::string rowLine(const char* list, const ShortcutRecommendation& row) {
    std::string keys;
    for (const auto& key : row.Keys) keys += (keys.empty() ? "" : " ") + key;
    return std::string(list) + ": " + row.Name + " | " + keys + " | " + row.ImagePath + " | " + row.TimeSaved;
}

void appendRows(std::vector<std::string>& lines, const char* list, const std::vector<ShortcutRecommendation>& rows) {
    if (rows.empty()) lines.push_back(std::string(list) + ": (none)");
    for (const auto& row : rows) lines.push_back(rowLine(list, row));
}

}  // namespace

AssistantViewModel& AssistantViewModel::shared() {
    // Never destroyed: blocks on the main queue may still reach it at exit.
    static AssistantViewModel* instance = [] {
        auto* model = new AssistantViewModel;
        platform::registerInspector("assistant", [model] {
            std::vector<std::string> lines;
            appendRows(lines, "suggested", model->recommendations.get());
            appendRows(lines, "missed", model->missed.get());
            return lines;
        });
        return model;
    }();
    return *instance;
}

}  // namespace velmora
