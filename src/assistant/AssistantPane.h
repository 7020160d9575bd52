// The assistant pane: suggested shortcuts and, under a folding header, the
// missed ones, both from AssistantViewModel::shared(), scaled with the
// pane's width.
//
// Provides: assistantIconDirectory, Glow, assistantShortcutRowView(),
// shortcutPaneView(), AssistantPaneState (the view state of one open pane:
// the fold and the rows' glow), AssistantContentManager::loadAssistantView().
// Main thread only. The pane reads the lists and changes nothing in them.
#pragma once

#include <functional>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "assistant/ShortcutRecommendation.h"
#include "platform/Views.h"
#include "ui/HostingView.h"
#include "ui/Node.h"

namespace velmora {

inline constexpr const char* assistantIconDirectory = "/Library/Application Support/Microsoft/Velmora/PowerPoint/Icons/";

// A row's glow as shown now: the shadow's radius and strength.
struct Glow {
    double blur = 0;
    double opacity = 0;
};

// One row: icon (or the question-mark symbol when its file cannot be
// loaded), name, time badge (green, or red for a missed row; none when
// empty), and a key cap per key. `onAppear` starts the row's glow.
ui::Node assistantShortcutRowView(const ShortcutRecommendation& shortcut, const std::string& iconPath, double scale,
                                  bool isMissed, Glow glow, bool iconLoads, std::function<void()> onAppear);

// What a pane view needs besides the two lists.
struct ShortcutPaneContext {
    bool missedExpanded = true;
    std::function<void()> toggleMissed;
    std::function<Glow(const RecommendationID&)> glowOf;
    std::function<bool(const std::string& path)> iconLoads;
    // Called when a row appears, with its id and whether it is missed.
    std::function<void(const RecommendationID&)> rowAppeared;
};

ui::Node shortcutPaneView(const std::vector<ShortcutRecommendation>& recommendations,
                          const std::vector<ShortcutRecommendation>& missed, double scale,
                          const ShortcutPaneContext& context);

// The state one open pane owns; it goes with the pane. Glows run on
// main-queue timers: full 0.2 s after a row appears (ease-out), then back
// to nothing over 0.5 s (ease-out), shown in steps of a twentieth of a
// second. A row that appears anew restarts its glow.
class AssistantPaneState : public std::enable_shared_from_this<AssistantPaneState> {
public:
    static constexpr double riseDuration = 0.2;
    static constexpr double fadeDuration = 0.5;
    static constexpr double frameInterval = 0.05;

    // The pane's tree at `width` (scale = width / 250) from the shared view model.
    ui::Node body(double width);

    void attach(const std::weak_ptr<ui::HostingView>& view) { view_ = view; }
    bool missedExpanded() const { return missedExpanded_; }
    Glow glow(const RecommendationID& id) const;

    // animateGlow of a row that has just appeared.
    void animateGlow(const RecommendationID& id, double scale);

    // Entries of per-row state held: only rows shown at the last drawing keep any.
    std::size_t rowStateCount() const;

private:
    struct Animation {
        Glow from, to;
        double duration = 0;
        int generation = 0;
    };
    void animate(const std::string& key, Glow to, double duration);
    void step(const std::string& key, int generation, int frame, int frames);
    void redraw();
    bool iconLoads(const std::string& path);
    void forgetRowsOtherThan(const std::vector<ShortcutRecommendation>& recommendations,
                             const std::vector<ShortcutRecommendation>& missed);

    bool missedExpanded_ = true;
    std::map<std::string, Glow> glows_;
    std::map<std::string, Animation> animations_;
    std::map<std::string, int> appearances_;
    std::map<std::string, bool> icons_;
    std::weak_ptr<ui::HostingView> view_;
    bool redrawPending_ = false;
    bool glowFrame_ = false;  // the drawing under way is a glow's frame
};

// The ease-out timing curve: the share of the change done at `progress`.
double easeOut(double progress);

class AssistantContentManager {
public:
    // Posts to the main queue a block that makes the pane's hosting view,
    // observing the shared view model, and calls the completion with it.
    static void loadAssistantView(std::function<void(std::shared_ptr<platform::View>)> completion);
};

}  // namespace velmora
