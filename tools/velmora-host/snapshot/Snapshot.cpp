#include "snapshot/Snapshot.h"

#include "Host.h"
#include "support/Text.h"

namespace velmora::host {

namespace {

std::string px(double value) { return support::swiftDescription(value) + "px"; }

}  // namespace

std::string snapshotPage() {
    auto& host = Host::instance();
    auto split = host.splitView();
    const auto bounds = split->frame();
    std::string page =
        "<!DOCTYPE html>\n<html><head><meta charset=\"utf-8\"><title>Velmora host snapshot</title>\n<style>\n"
        "body{margin:0;background:#b9bcc2;font-family:-apple-system,'Helvetica Neue','Liberation Sans','DejaVu Sans',sans-serif;}\n"
        ".host-window{position:relative;margin:16px;width:" + px(bounds.width) + ";background:#fff;"
        "box-shadow:0 8px 30px rgba(0,0,0,.35);border-radius:10px;overflow:hidden;}\n"
        ".host-ribbon{height:40px;display:flex;align-items:center;gap:18px;padding:0 16px;background:#b7472a;color:#fff;font-size:13px;}\n"
        ".host-ribbon .tab-on{font-weight:600;border-bottom:2px solid #fff;}\n"
        ".host-split{position:relative;height:" + px(bounds.height) + ";overflow:hidden;}\n"
        ".host-view{position:absolute;}\n"
        ".host-editor{background:#e6e6e6;display:flex;align-items:center;justify-content:center;}\n"
        ".host-slide{width:80%;aspect-ratio:16/9;background:#fff;box-shadow:0 1px 4px rgba(0,0,0,.3);}\n"
        "</style></head>\n<body>\n<div class=\"host-window\" data-class=\"CUIDocumentShellWindow\">\n"
        "<div class=\"host-ribbon\"><span>Home</span><span>Insert</span><span>Design</span><span>Slide Show</span>"
        "<span class=\"tab-on\">Velmora</span></div>\n"
        "<div class=\"host-split\" data-class=\"CUITaskPaneSplitView\">\n";
    for (const auto& view : split->subviews()) {
        const auto f = view->frame();
        if (const auto* access = host.paneAccess(view)) {
            page += access->html() + "\n";
            continue;
        }
        const bool editor = view->className() == "CUISlideEditorView";
        page += "<div class=\"host-view" + std::string(editor ? " host-editor" : "") + "\" data-class=\"" +
                support::htmlEscaped(view->className()) + "\" style=\"left:" + px(f.x) + ";top:" + px(f.y) + ";width:" +
                px(f.width) + ";height:" + px(f.height) + "\">";
        if (editor) page += "<div class=\"host-slide\"></div>";
        if (auto text = firstTextField(view)) page += "<span data-label=\"" + support::htmlEscaped(*text) + "\">" + support::htmlEscaped(*text) + "</span>";
        page += "</div>\n";
    }
    page += "</div>\n</div>\n</body></html>\n";
    return page;
}

std::optional<std::string> firstTextField(const std::shared_ptr<platform::View>& root) {
    if (!root) return std::nullopt;
    if (auto value = root->textFieldValue()) return value;
    for (const auto& child : root->subviews()) {
        if (auto hit = firstTextField(child)) return hit;
    }
    return std::nullopt;
}

}  // namespace velmora::host
