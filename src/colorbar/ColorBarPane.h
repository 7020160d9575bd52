// The colour bar pane: a "Transparent" group, the theme's four base colours
// and six accents, each with fill, border and font chips and a control that
// unfolds five shades. A chip's tap runs one colour macro; the macro
// project applies it. `triggerColorThemeRefresh` re-reads the theme.
//
// Provides: ColorBarViewModel, TapAreaState, ColorBarContext,
// hoverableTapArea(), checkerboardChip(), colorBarTaskpane(),
// ColorBarPaneState, ColorBarContentManager, ColorBarMetrics.
// Main thread, but for the theme fetch, which runs on the user-initiated
// global queue and hands its rows back through the main queue.
#pragma once

#include <functional>
#include <map>
#include <memory>
#include <set>
#include <string>
#include <vector>

#include "colorbar/ColorModel.h"
#include "support/Published.h"
#include "taskpane/TaskpaneManager.h"
#include "ui/HostingView.h"
#include "ui/Node.h"

namespace velmora {

// One per loaded pane; it outlives the pane while ColorBarContentManager
// holds the pane's hosting view.
class ColorBarViewModel : public std::enable_shared_from_this<ColorBarViewModel> {
public:
    support::Published<std::vector<ThemeColor>> rows{fallbackTheme()};
    support::Published<std::set<std::string>> expandedThemes;

    // Fetches the theme on a global queue; a reply that yields rows replaces
    // `rows` on the main queue, anything else leaves them. Expansion is
    // kept by name. Refreshes are not cancelled: the last to finish wins.
    void refreshFromTheme();
    bool isExpanded(const std::string& name) const;
    void toggleExpansion(const std::string& name);
};

// Sizes shared by every row, in points.
struct ColorBarMetrics {
    static constexpr double colWidth = 18;
    static constexpr double chipSize = 16;
    static constexpr double corner = 3;
};

// The pointer and press state of one chip.
struct TapAreaState {
    bool hovered = false;
    bool flash = false;
    bool isPressed = false;
};

// What the pure layout needs from the pane's state. Chips are keyed by
// row, shade and help text ("Accent1/0.8/Fill").
struct ColorBarContext {
    std::function<TapAreaState(const std::string& key)> stateOf;
    std::function<void(const std::string& key, bool inside)> hover;
    std::function<void(const std::string& key, std::function<void()> onTap)> tap;
    std::function<bool(const std::string& name)> isExpanded;
    std::function<void(const std::string& name)> toggleExpansion;
};

// A chip's hit area: `content` in a colWidth by chipSize frame, grey while
// hovered, a white flash and a slight shrink while pressed.
ui::Node hoverableTapArea(double colWidth, double chipSize, const std::string& help, ui::Node content,
                          const TapAreaState& state);

// The whole pane from its rows.
ui::Node colorBarTaskpane(const std::vector<ThemeColor>& rows, const ColorBarContext& context);

// The view state one open pane owns: each chip's pointer and press state.
// A tap presses and flashes the chip, runs its action at once, and lets go
// 0.2 s later on the main queue (later when the action blocks the thread).
class ColorBarPaneState : public std::enable_shared_from_this<ColorBarPaneState> {
public:
    static constexpr double releaseDelay = 0.2;

    explicit ColorBarPaneState(std::shared_ptr<ColorBarViewModel> viewModel) : viewModel_(std::move(viewModel)) {}

    ui::Node body(double width);
    void attach(const std::weak_ptr<ui::HostingView>& view) { view_ = view; }

    TapAreaState tapArea(const std::string& key) const;
    void hover(const std::string& key, bool inside);
    void tap(const std::string& key, const std::function<void()>& onTap);

private:
    void redraw();

    std::shared_ptr<ColorBarViewModel> viewModel_;
    std::map<std::string, TapAreaState> areas_;
    std::weak_ptr<ui::HostingView> view_;
};

class ColorBarContentManager {
public:
    // The pane's hosting view, held strongly: it and its view model live on
    // after the pane closes, until the next load replaces them. Made at
    // first use and never destroyed, as late main-queue blocks may read it.
    static std::shared_ptr<ui::HostingView>& hostingController();
    // The view model that theme refreshes go to; made and kept the same way.
    static std::weak_ptr<ColorBarViewModel>& activeViewModel();

    // Makes the view model and the pane's view, hands the view to the
    // completion, then starts a theme refresh. Main thread.
    static void loadColorBarView(ContentCompletion completion);
};

}  // namespace velmora
