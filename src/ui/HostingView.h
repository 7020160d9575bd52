// A platform view that hosts a pane description.
//
// Provides: HostingView, Body, invalidateOnChange().
// The body is the pane's pure function from its width to a node tree; the
// hosting view evaluates it at its current width whenever it is asked to
// update: when its width changes, when it is laid out for the first time,
// and when the pane's state calls invalidate() (for a published change or a
// timer). After each evaluation it runs the onAppear closures of the nodes
// that are new: a node is known by the path of identities (or sibling
// indices where a node has none) from the root. This is what makes a row
// "appear" and start its glow. Main thread only.
#pragma once

#include <functional>
#include <memory>
#include <set>
#include <string>

#include "platform/Views.h"
#include "support/Published.h"
#include "ui/Node.h"

namespace velmora::ui {

using Body = std::function<Node(double width)>;

class HostingView : public platform::View {
public:
    static constexpr const char* kClassName = "NSHostingView";

    explicit HostingView(Body body);
    static std::shared_ptr<HostingView> make(Body body) { return std::make_shared<HostingView>(std::move(body)); }

    std::string className() const override { return kClassName; }
    void setFrame(const platform::Rect& frame) override;
    void layout() override;

    // Rebuilds the tree at the current width and runs the new onAppear closures.
    void invalidate();
    // The tree as last built; builds it first if it never was.
    const Node& tree();
    // Builds the tree at another width without touching the current one.
    Node treeAt(double width) const { return body_(width); }
    // The size the tree asks for at the current width (see ui/Measure.h).
    platform::Size fittingSize() const;
    // Times the body has been evaluated by update(); for tests.
    int updates() const { return updates_; }

    // How the host's constraint system is to treat the view, as a toolkit
    // host reads them; the pane frame lays the view out itself.
    bool translatesAutoresizingMaskIntoConstraints = true;
    double horizontalContentHuggingPriority = 250;
    double horizontalCompressionResistancePriority = 750;
    // Follows its parent's width and height (the autoresizing mask).
    bool autoresizesWithParent = false;

private:
    void update();

    Body body_;
    Node tree_;
    bool built_ = false;
    bool updating_ = false;
    bool again_ = false;
    int updates_ = 0;
    std::set<std::string> shown_;
};

// Rebuilds `view` on every write of `value`, which outlives it: the
// observer removes itself at the first write after the view is gone.
template <typename T>
void invalidateOnChange(const std::shared_ptr<HostingView>& view, support::Published<T>& value) {
    std::weak_ptr<HostingView> weak = view;
    auto token = std::make_shared<typename support::Published<T>::Token>(0);
    *token = value.observe([weak, token, &value](const T&) {
        if (auto alive = weak.lock()) {
            alive->invalidate();
        } else {
            value.removeObserver(*token);
        }
    });
}

}  // namespace velmora::ui
