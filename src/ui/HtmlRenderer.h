// The HTML renderer: node trees and view trees as HTML with CSS (flexbox),
// so that any pane can be looked at in a real browser.
//
// Provides: htmlStyleSheet(), renderNode(), renderPage(), renderView(),
// HtmlStyled, symbolGlyph().
// Images are read through the files port and inlined as data URIs; an
// image that cannot be read draws its fallback symbol, or nothing. Every
// node carries data attributes so a page test can find it: data-kind,
// data-label (its text), data-help, data-id, data-ax, data-action when it
// has one. Points map to CSS pixels one to one. Main thread (it reads
// files through the port, which any thread may do, but views are main-only).
#pragma once

#include <string>
#include <string_view>

#include "platform/Views.h"
#include "ui/Node.h"

namespace velmora::ui {

// The rules every fragment relies on; one <style> body.
const std::string& htmlStyleSheet();

// One node tree as an HTML fragment, without the style sheet.
std::string renderNode(const Node& root);

// A whole page: the style sheet and the tree in a box of the given size.
std::string renderPage(const Node& root, double width, double height, const std::string& title);

// A library-made view that knows how it looks: the renderer adds its CSS
// declarations and data attributes to the view's element and puts its
// inner HTML before the subviews.
class HtmlStyled {
public:
    virtual ~HtmlStyled() = default;
    virtual std::string htmlStyle() const { return {}; }
    virtual std::string htmlAttributes() const { return {}; }
    virtual std::string htmlContent() const { return {}; }
};

// A view and its subviews, each placed absolutely at its frame within its
// parent (origin top left, y down). A HostingView draws its node tree; a
// text field its value; an HtmlStyled view adds its own parts.
std::string renderView(const platform::View& view);

// The glyph drawn for a system symbol name ("info.circle" -> "ⓘ").
std::string symbolGlyph(const std::string& name);

}  // namespace velmora::ui
