// triggerAssistant: from the host's two shape arrays to the published rows.

#include <mutex>
#include <string>
#include <vector>

#include "assistant/AssistantViewModel.h"
#include "assistant/Detectors.h"
#include "assistant/HostText.h"
#include "assistant/ShapeMetadata.h"
#include "bridge/Exports.h"
#include "platform/Platform.h"

namespace velmora {

namespace {

constexpr const char* slideSelectedSentinel = "[SlideSelected]";

// The rows of the last publish. Read on the caller's thread, written only in
// the publish block on the main queue; the lock only guards the copy, so an
// overlapping call may still compare against names about to be replaced.
class StaticData {
public:
    static StaticData& shared() {
        static StaticData* instance = new StaticData;  // never destroyed: late main-queue blocks use it
        return *instance;
    }

    bool sameNames(const Recommendations& rows) const {
        std::lock_guard lock(mutex_);
        if (rows.size() != previousRecommendations_.size()) return false;
        for (std::size_t i = 0; i < rows.size(); ++i) {
            if (rows[i].Name != previousRecommendations_[i].Name) return false;
        }
        return true;
    }

    void setPrevious(Recommendations rows) {
        std::lock_guard lock(mutex_);
        previousRecommendations_ = std::move(rows);
    }

private:
    mutable std::mutex mutex_;
    Recommendations previousRecommendations_;
};

void publish(Recommendations rows) {
    platform::mainAsync([rows = std::move(rows)]() mutable {
        AssistantViewModel::shared().recommendations.set(rows);
        StaticData::shared().setPrevious(std::move(rows));
        platform::nslog("Assistant: Recommendations updated.");
    });
}

void append(Recommendations& into, Recommendations rows) {
    for (auto& row : rows) into.push_back(std::move(row));
}

}  // namespace

void triggerAssistant(const char* selectedJSON, const char* nonSelectedJSON) {
    // The selection is read once, into the buffer of its log line, with
    // room after it for the parser to read it where it lies.
    constexpr std::string_view prefix = "Assistant: ";
    const PrefixedHostText selection(prefix, selectedJSON, shapeTextPadding);
    platform::nslog(selection.line());
    const std::string_view selectedText = selection.text();

    if (selectedText == slideSelectedSentinel) {
        // The slide itself is selected: only the send row applies, and an
        // unchanged result says nothing at all.
        auto rows = detectSendRecommendations({});
        if (!StaticData::shared().sameNames(rows)) publish(std::move(rows));
        return;
    }

    Shapes selected;
    auto selectedDecoding = decodeShapeList(selectedText, true);
    if (selectedDecoding.ok) {
        selected = std::move(selectedDecoding.shapes);
        platform::nslog("Assistant: Successfully decoded Selected Shapes JSON. Count: " + std::to_string(selected.size()));
    } else {
        platform::nslog("Assistant: Failed to decode Selected JSON. Error: " + selectedDecoding.error);
    }
    std::string line(prefix);
    appendShapesDescription(line, selected);
    platform::nslog(line);

    Shapes unselected;
    auto unselectedDecoding = decodeShapeList(textFromHost(nonSelectedJSON));
    if (unselectedDecoding.ok) {
        unselected = std::move(unselectedDecoding.shapes);
        platform::nslog("Assistant: Successfully decoded NonSelected Shapes JSON. Count: " +
                        std::to_string(unselected.size()));
    } else {
        platform::nslog("Assistant: Failed to decode NonSelected JSON. Error: " + unselectedDecoding.error);
    }

    // A failed decoding stops nothing: broken JSON gives the rows of an empty list.
    Recommendations rows = detectAlignmentRecommendations(selected);
    append(rows, detectDistributionRecommendations(selected));
    append(rows, detectArrangeRecommendations(selected, unselected));
    append(rows, detectElementsRecommendations(selected));
    append(rows, detectSendRecommendations(selected));
    append(rows, detectInsertRecommendations(selected));
    append(rows, detectResizeRecommendations(selected));
    append(rows, detectTextRecommendations(selected));

    if (StaticData::shared().sameNames(rows)) {
        platform::nslog("Assistant: Recommendations remain unchanged.");
        return;
    }
    publish(std::move(rows));
}

}  // namespace velmora
