#include "ui/HostingView.h"

#include <cmath>
#include <vector>

#include "ui/Measure.h"

namespace velmora::ui {

namespace {

// Collects the paths of nodes with an onAppear closure, and the closures.
void collectAppearing(const Node& node, const std::string& path, std::set<std::string>& paths,
                      std::vector<std::pair<std::string, std::function<void()>>>& closures) {
    if (node.onAppear) {
        paths.insert(path);
        closures.emplace_back(path, node.onAppear);
    }
    // Popover content is not on screen until presented.
    std::size_t limit = node.children.size();
    if (node.kind == Kind::popover && !node.isOn && limit > 1) limit = 1;
    for (std::size_t i = 0; i < limit; ++i) {
        const Node& child = node.children[i];
        std::string step = child.mod.identity.empty() ? "#" + std::to_string(i) : "=" + child.mod.identity;
        collectAppearing(child, path + "/" + step, paths, closures);
    }
}

}  // namespace

HostingView::HostingView(Body body) : body_(std::move(body)) {}

void HostingView::setFrame(const platform::Rect& frame) {
    bool resized = frame.width != View::frame().width;
    View::setFrame(frame);
    if (resized && built_) update();
}

void HostingView::layout() {
    View::layout();
    if (!built_) update();
}

void HostingView::invalidate() { update(); }

platform::Size HostingView::fittingSize() const {
    // Whole points, as a toolkit's fitting size comes.
    const auto size = idealSize(body_ ? body_(frame().width) : Node{});
    return {std::ceil(size.width), std::ceil(size.height)};
}

const Node& HostingView::tree() {
    if (!built_) update();
    return tree_;
}

void HostingView::update() {
    // A closure run below may change state and invalidate again; that
    // rebuild happens once this one is done.
    if (updating_) {
        again_ = true;
        return;
    }
    updating_ = true;
    do {
        again_ = false;
        tree_ = body_ ? body_(frame().width) : Node{};
        built_ = true;
        ++updates_;
        std::set<std::string> paths;
        std::vector<std::pair<std::string, std::function<void()>>> closures;
        collectAppearing(tree_, "", paths, closures);
        std::vector<std::function<void()>> fresh;
        for (auto& [path, closure] : closures) {
            if (!shown_.count(path)) fresh.push_back(std::move(closure));
        }
        shown_ = std::move(paths);
        for (auto& closure : fresh) closure();
    } while (again_);
    updating_ = false;
}

}  // namespace velmora::ui
