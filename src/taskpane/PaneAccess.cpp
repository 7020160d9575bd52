#include "taskpane/PaneAccess.h"

#include "platform/Platform.h"
#include "support/Text.h"
#include "ui/HostingView.h"
#include "ui/HtmlRenderer.h"

namespace velmora {

namespace {

std::shared_ptr<ui::HostingView> hostingContent(const TaskpaneView& pane) {
    return std::dynamic_pointer_cast<ui::HostingView>(pane.contentView());
}

std::shared_ptr<ui::HostingView> hostingOf(const std::weak_ptr<TaskpaneView>& weak) {
    auto pane = weak.lock();
    return pane ? hostingContent(*pane) : nullptr;
}

const ui::Node* nth(const std::vector<const ui::Node*>& nodes, int occurrence) {
    if (occurrence < 1 || static_cast<std::size_t>(occurrence) > nodes.size()) return nullptr;
    return nodes[static_cast<std::size_t>(occurrence) - 1];
}

}  // namespace

std::vector<std::string> describePane(TaskpaneView& pane) {
    std::string head = "TaskpaneView " + support::quoted(pane.paneTitle) + " " + platform::describe(pane.frame()) +
                       " minWidth " + support::swiftDescription(pane.minWidth);
    if (pane.widthConstraint) head += " constraint " + support::swiftDescription(pane.widthConstraint->constant);
    std::vector<std::string> lines{head};
    auto content = pane.contentView();
    if (!content) {
        lines.push_back("  (no content)");
    } else if (auto hosting = hostingContent(pane)) {
        for (const auto& line : ui::describeTree(hosting->tree())) lines.push_back("  " + line);
    } else {
        lines.push_back("  " + content->className() + " " + platform::describe(content->frame()));
    }
    return lines;
}

std::string paneHtml(TaskpaneView& pane) {
    return "<style>" + ui::htmlStyleSheet() + "</style><div class=\"velmora-root\" style=\"display:contents\">" +
           ui::renderView(pane) + "</div>";
}

platform::PaneAccess makeContentAccess(std::function<std::shared_ptr<ui::HostingView>()> hostingOf) {
    platform::PaneAccess access;
    access.tap = [hostingOf](const std::string& labelOrHelp, int occurrence) {
        auto hosting = hostingOf();
        if (!hosting) return false;
        const ui::Node* node = nth(ui::findActionables(hosting->tree(), labelOrHelp), occurrence);
        if (!node) return false;
        // A copy: the action may rebuild the tree that holds it.
        auto action = node->action;
        platform::guarded("tap", action);
        // A tap may change view state; the view is rebuilt from it.
        hosting->invalidate();
        return true;
    };
    access.hover = [hostingOf](const std::string& labelOrHelp, int occurrence, bool inside) {
        auto hosting = hostingOf();
        if (!hosting) return false;
        const ui::Node* node = nth(ui::findHoverables(hosting->tree(), labelOrHelp), occurrence);
        if (!node) return false;
        auto onHover = node->onHover;
        platform::guarded("hover", [&] { onHover(inside); });
        hosting->invalidate();
        return true;
    };
    access.type = [hostingOf](const std::string& label, int occurrence, const std::string& text) {
        auto hosting = hostingOf();
        if (!hosting) return false;
        const ui::Node* node = nth(ui::findEditables(hosting->tree(), label), occurrence);
        if (!node) return false;
        auto onEdit = node->onEdit;
        platform::guarded("type", [&] { onEdit(text); });
        hosting->invalidate();
        return true;
    };
    access.pick = [hostingOf](const std::string& label, int occurrence, const std::string& value) {
        auto hosting = hostingOf();
        if (!hosting) return false;
        std::function<void()> choose;
        if (const ui::Node* chooser = nth(ui::findChoosers(hosting->tree(), label), occurrence)) {
            for (const auto& item : chooser->children) {
                if (item.action && (item.text == value || (item.text.empty() && ui::findText(item, value)))) {
                    choose = item.action;
                    break;
                }
            }
        } else {
            std::vector<const ui::Node*> days;
            for (const ui::Node* node : ui::findEditables(hosting->tree(), label)) {
                if (node->kind == ui::Kind::datePicker) days.push_back(node);
            }
            if (const ui::Node* picker = nth(days, occurrence)) {
                choose = [onEdit = picker->onEdit, value] { onEdit(value); };
            }
        }
        if (!choose) return false;
        platform::guarded("pick", choose);
        if (auto still = hostingOf()) still->invalidate();
        return true;
    };
    access.scroll = [hostingOf](double offset) {
        auto hosting = hostingOf();
        if (!hosting) return false;
        const ui::Node* node = ui::findNode(hosting->tree(), [](const ui::Node& n) { return static_cast<bool>(n.onScroll); });
        if (!node) return false;
        auto onScroll = node->onScroll;
        platform::guarded("scroll", [&] { onScroll(offset); });
        if (auto still = hostingOf()) still->invalidate();
        return true;
    };
    access.webViews = [hostingOf] {
        std::vector<std::shared_ptr<platform::WebView>> views;
        auto hosting = hostingOf();
        if (!hosting) return views;
        std::function<void(const ui::Node&)> visit = [&](const ui::Node& node) {
            if (node.kind == ui::Kind::webView && node.webView) views.push_back(node.webView);
            for (const auto& child : node.children) visit(child);
        };
        visit(hosting->tree());
        return views;
    };
    access.pressDefault = [hostingOf] {
        auto hosting = hostingOf();
        if (!hosting) return false;
        const ui::Node* node = ui::findDefaultAction(hosting->tree());
        if (!node) return false;
        auto action = node->onSubmit ? node->onSubmit : node->action;
        platform::guarded("default button", action);
        if (auto still = hostingOf()) still->invalidate();
        return true;
    };
    return access;
}

platform::PaneAccess makePaneAccess(const std::shared_ptr<TaskpaneView>& pane) {
    std::weak_ptr<TaskpaneView> weak = pane;
    platform::PaneAccess access = makeContentAccess([weak] { return hostingOf(weak); });
    access.describe = [weak] {
        auto p = weak.lock();
        return p ? describePane(*p) : std::vector<std::string>{};
    };
    access.html = [weak] {
        auto p = weak.lock();
        return p ? paneHtml(*p) : std::string{};
    };
    access.dragResizeHandle = [weak](double dx) {
        auto p = weak.lock();
        if (!p) return;
        auto& handle = *p->resizeHandle;
        const Point start = handle.convertToWindow({TaskpaneView::handleWidth / 2, handle.frame().height / 2});
        platform::guarded("drag", [&] {
            handle.mouseDown(start);
            handle.mouseDragged({start.x + dx, start.y});
            handle.mouseUp();
        });
    };
    access.pressClose = [weak] {
        if (auto p = weak.lock()) platform::guarded("close", [&] { p->closeButton->performClick(); });
    };
    return access;
}

}  // namespace velmora
