// Pane host port: how a host that draws nothing itself looks at the panes
// the library docks and acts on them as a user would.
//
// Provides: PaneAccess, PaneHostPort (pane and window hand-over, named colours).
// The library hands over one PaneAccess for each pane it makes, together
// with the pane's view (the view the host finds in its split view), and one
// for each floating window it makes. The
// closures hold the pane weakly: once the pane is dropped they do nothing
// and give empty results. Main thread only. A host with no use for them
// (a real toolkit draws and clicks panes itself) ignores the calls.
#pragma once

#include <array>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "platform/Views.h"
#include "platform/Web.h"

namespace velmora::platform {

struct PaneAccess {
    // The pane's frame and content as indented lines: kinds, texts, sizes.
    std::function<std::vector<std::string>()> describe;
    // The pane at its current frame as one self-contained HTML fragment
    // (its own <style>, images inlined), ready to place in a page.
    std::function<std::string()> html;
    // Runs the action of the `occurrence`-th content node (from 1, in
    // reading order) labelled or helped so; false when there is none.
    std::function<bool(const std::string& labelOrHelp, int occurrence)> tap;
    // Moves the pointer into (true) or out of such a node; false when there is none.
    std::function<bool(const std::string& labelOrHelp, int occurrence, bool inside)> hover;
    // Replaces the text of the `occurrence`-th text field with that
    // placeholder or help text; false when there is none.
    std::function<bool(const std::string& labelOrHelp, int occurrence, const std::string& text)> type;
    // Chooses `value` in the `occurrence`-th picker or menu so labelled (the
    // item with that text), or in such a date picker (a day as "yyyy-MM-dd");
    // false when there is no such control or item.
    std::function<bool(const std::string& label, int occurrence, const std::string& value)> pick;
    // Scrolls the first scroll view that follows its position to `offset`
    // points from its top; false when there is none.
    std::function<bool(double offset)> scroll;
    // The web views the content shows, in reading order, for a host that
    // plays their pages (posts the messages a page would).
    std::function<std::vector<std::shared_ptr<WebView>>()> webViews;
    // Presses the default button (Return); false when there is none.
    std::function<bool()> pressDefault;
    // A drag on the resize handle: press, move `dx` points, release. Panes only.
    std::function<void(double dx)> dragResizeHandle;
    // A click on the close button (a window's close box).
    std::function<void()> pressClose;
};

class PaneHostPort {
public:
    virtual ~PaneHostPort() = default;
    virtual void paneCreated(const std::shared_ptr<View>& pane, PaneAccess access) = 0;
    // The same for a floating window the library made; `dragResizeHandle` is empty.
    virtual void windowCreated(const std::shared_ptr<ToolWindow>& window, PaneAccess access) {
        (void)window;
        (void)access;
    }
    // A colour of the host's own catalogue by name, as sRGB red, green,
    // blue and opacity (0...1); nothing when the host has none of that name.
    virtual std::optional<std::array<double, 4>> namedColor(const std::string& name) const {
        (void)name;
        return std::nullopt;
    }
};

}  // namespace velmora::platform
