// The assistant's observable state: the suggested rows and the missed rows.
//
// Provides: AssistantViewModel, AssistantViewModel::shared().
// Both lists are written only on the main queue (suggested rows by
// triggerAssistant's publish block, missed rows by triggerMissedAssistant's
// block); observers are notified on each write, on the main queue. Reads
// are safe from any thread.
#pragma once

#include <vector>

#include "assistant/ShortcutRecommendation.h"
#include "support/Published.h"

namespace velmora {

class AssistantViewModel {
public:
    // Made at first use and never replaced; lives as long as the process.
    static AssistantViewModel& shared();

    support::Published<std::vector<ShortcutRecommendation>> recommendations;
    // Newest first, at most three rows.
    support::Published<std::vector<ShortcutRecommendation>> missed;
};

}  // namespace velmora
