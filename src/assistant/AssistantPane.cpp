#include "assistant/AssistantPane.h"

#include <algorithm>
#include <cmath>
#include <iterator>
#include <set>

#include "assistant/AssistantViewModel.h"
#include "bridge/Exports.h"
#include "platform/Platform.h"
#include "taskpane/TaskpaneManager.h"
#include "ui/Images.h"

namespace velmora {

namespace {

// A corner radius past half of any badge's height: the badge clips to a capsule.
constexpr double capsuleRadius = 1000;

ui::Node emptyBlock(double scale) {
    using namespace ui;
    return vstack(Alignment::center, 2 * scale,
                  {hstack({symbol("info.circle").font(20 * scale).foregroundColor(colors::gray), spacer()}),
                   hstack({text("No Suggestions found.").font(14 * scale).foregroundColor(colors::gray), spacer()})});
}

}  // namespace

double easeOut(double progress) {
    // cubic-bezier(0, 0, 0.58, 1): solve x(t) = progress by bisection, give y(t).
    double x = std::clamp(progress, 0.0, 1.0);
    auto curve = [](double t, double p1, double p2) {
        double u = 1 - t;
        return 3 * u * u * t * p1 + 3 * u * t * t * p2 + t * t * t;
    };
    double low = 0, high = 1, t = x;
    for (int i = 0; i < 60; ++i) {
        t = (low + high) / 2;
        if (curve(t, 0, 0.58) < x) {
            low = t;
        } else {
            high = t;
        }
    }
    return curve(t, 0, 1);
}

ui::Node assistantShortcutRowView(const ShortcutRecommendation& shortcut, const std::string& iconPath, double scale,
                                  bool isMissed, Glow glow, bool iconLoads, std::function<void()> onAppear) {
    using namespace ui;
    Color accent = isMissed ? colors::red : colors::green;
    std::string path = iconPath + shortcut.ImagePath;
    Node icon = iconLoads ? image(path) : symbol("questionmark.square");
    icon.makeResizable().frame(14 * scale, 14 * scale);

    Nodes upper;
    upper.push_back(std::move(icon));
    upper.push_back(text(shortcut.Name).font(12 * scale, FontWeight::semibold).foregroundColor(colors::black).lineLimit(1));
    upper.push_back(spacer());
    if (!shortcut.TimeSaved.empty()) {
        upper.push_back(text(shortcut.TimeSaved)
                            .font(11 * scale, FontWeight::semibold)
                            .fixedSize()
                            .foregroundColor(colors::white)
                            .padding(Edge::horizontal, 8 * scale)
                            .padding(Edge::vertical, 2 * scale)
                            .background(accent)
                            .cornerRadius(capsuleRadius));
    }

    Nodes caps;
    for (const auto& key : shortcut.Keys) {
        caps.push_back(text(key)
                           .font(11 * scale)
                           .foregroundColor(colors::white)
                           .padding(Edge::horizontal, 4 * scale)
                           .padding(Edge::vertical, 2 * scale)
                           .background(colors::black)
                           .cornerRadius(3 * scale));
    }

    return vstack(Alignment::leading, 4 * scale,
                  {hstack(std::move(upper)), hstack(Alignment::center, 4 * scale, std::move(caps))})
        .padding(8 * scale)
        .background(colors::white)
        .cornerRadius(5 * scale)
        .shadow(accent.opacity(glow.opacity), glow.blur)
        .id(shortcut.id.uuidString())
        .onAppearDo(std::move(onAppear));
}

ui::Node shortcutPaneView(const std::vector<ShortcutRecommendation>& recommendations,
                          const std::vector<ShortcutRecommendation>& missed, double scale,
                          const ShortcutPaneContext& context) {
    using namespace ui;
    auto rows = [&](const std::vector<ShortcutRecommendation>& list, bool isMissed, Nodes& into) {
        for (const auto& row : list) {
            auto id = row.id;
            auto appeared = context.rowAppeared;
            into.push_back(assistantShortcutRowView(row, assistantIconDirectory, scale, isMissed, context.glowOf(id),
                                                    context.iconLoads(assistantIconDirectory + row.ImagePath),
                                                    [appeared, id] { appeared(id); }));
        }
    };

    Nodes column;
    column.push_back(hstack({text("Suggested Shortcuts").font(14 * scale, FontWeight::semibold), spacer()}));
    column.push_back(
        hstack({text("See all shortcuts with Ctrl + Cmd + I").font(12 * scale).foregroundColor(colors::gray), spacer()}));
    if (recommendations.empty()) {
        column.push_back(emptyBlock(scale));
    } else {
        rows(recommendations, false, column);
    }
    column.push_back(button(hstack({text("Missed Shortcuts").font(14 * scale, FontWeight::semibold), spacer(),
                                    symbol(context.missedExpanded ? "chevron.up" : "chevron.down")}),
                            context.toggleMissed)
                         .maxWidth(infinity));
    if (context.missedExpanded) {
        if (missed.empty()) {
            column.push_back(emptyBlock(scale));
        } else {
            rows(missed, true, column);
        }
    }
    // The outer paddings stay as they are at every width.
    return scroll(vstack(Alignment::leading, 10 * scale, std::move(column))
                      .padding(Edge::top, 15)
                      .padding(Edge::horizontal, 10));
}

ui::Node AssistantPaneState::body(double width) {
    double scale = width / 250.0;
    auto& model = AssistantViewModel::shared();
    auto recommendations = model.recommendations.get();
    auto missed = model.missed.get();
    forgetRowsOtherThan(recommendations, missed);
    // Icon files are looked at anew at every drawing, so one installed while
    // the pane is open shows at the next; a glow's frames only restyle the
    // rows and reuse the answers, and a path asked twice is read once.
    if (!glowFrame_) icons_.clear();
    std::weak_ptr<AssistantPaneState> weak = weak_from_this();
    ShortcutPaneContext context;
    context.missedExpanded = missedExpanded_;
    context.toggleMissed = [weak] {
        if (auto state = weak.lock()) {
            state->missedExpanded_ = !state->missedExpanded_;
            if (auto view = state->view_.lock()) view->invalidate();
        }
    };
    context.glowOf = [this](const RecommendationID& id) { return glow(id); };
    context.iconLoads = [this](const std::string& path) { return iconLoads(path); };
    context.rowAppeared = [weak, scale](const RecommendationID& id) {
        if (auto state = weak.lock()) state->animateGlow(id, scale);
    };
    ui::Frame fill;
    fill.maxWidth = ui::infinity;
    fill.maxHeight = ui::infinity;
    return shortcutPaneView(recommendations, missed, scale, context).frame(fill);
}

void AssistantPaneState::forgetRowsOtherThan(const std::vector<ShortcutRecommendation>& recommendations,
                                             const std::vector<ShortcutRecommendation>& missed) {
    // Every publish brings rows with new ids; the state of rows no longer
    // shown goes, so a pane left open does not grow. Their pending glow
    // steps find nothing and stop.
    std::set<std::string> shown;
    for (const auto* list : {&recommendations, &missed}) {
        for (const auto& row : *list) shown.insert(row.id.uuidString());
    }
    auto prune = [&](auto& map) {
        for (auto entry = map.begin(); entry != map.end();) {
            entry = shown.count(entry->first) ? std::next(entry) : map.erase(entry);
        }
    };
    prune(glows_);
    prune(animations_);
    prune(appearances_);
}

std::size_t AssistantPaneState::rowStateCount() const {
    return glows_.size() + animations_.size() + appearances_.size();
}

Glow AssistantPaneState::glow(const RecommendationID& id) const {
    auto entry = glows_.find(id.uuidString());
    return entry == glows_.end() ? Glow{} : entry->second;
}

bool AssistantPaneState::iconLoads(const std::string& path) {
    auto [entry, isNew] = icons_.try_emplace(path, false);
    if (isNew) entry->second = ui::canLoadImage(path);
    return entry->second;
}

void AssistantPaneState::animateGlow(const RecommendationID& id, double scale) {
    std::string key = id.uuidString();
    int appearance = ++appearances_[key];
    animate(key, Glow{10 * scale, 1.0}, riseDuration);
    std::weak_ptr<AssistantPaneState> weak = weak_from_this();
    platform::mainAsyncAfter(riseDuration, [weak, key, appearance] {
        auto state = weak.lock();
        if (!state) return;
        auto latest = state->appearances_.find(key);
        if (latest == state->appearances_.end() || latest->second != appearance) return;
        state->animate(key, Glow{}, fadeDuration);
    });
}

void AssistantPaneState::animate(const std::string& key, Glow to, double duration) {
    auto& animation = animations_[key];
    animation.from = glows_[key];
    animation.to = to;
    animation.duration = duration;
    int generation = ++animation.generation;
    int frames = std::max(1, static_cast<int>(std::lround(duration / frameInterval)));
    std::weak_ptr<AssistantPaneState> weak = weak_from_this();
    for (int frame = 1; frame <= frames; ++frame) {
        platform::mainAsyncAfter(duration * frame / frames, [weak, key, generation, frame, frames] {
            if (auto state = weak.lock()) state->step(key, generation, frame, frames);
        });
    }
}

void AssistantPaneState::step(const std::string& key, int generation, int frame, int frames) {
    auto entry = animations_.find(key);
    if (entry == animations_.end() || entry->second.generation != generation) return;
    const Animation& animation = entry->second;
    if (frame == frames) {
        if (animation.to.blur == 0 && animation.to.opacity == 0) {
            glows_.erase(key);
        } else {
            glows_[key] = animation.to;
        }
    } else {
        double share = easeOut(static_cast<double>(frame) / frames);
        glows_[key] = Glow{animation.from.blur + (animation.to.blur - animation.from.blur) * share,
                           animation.from.opacity + (animation.to.opacity - animation.from.opacity) * share};
    }
    redraw();
}

void AssistantPaneState::redraw() {
    if (redrawPending_) return;
    redrawPending_ = true;
    std::weak_ptr<AssistantPaneState> weak = weak_from_this();
    platform::mainAsync([weak] {
        auto state = weak.lock();
        if (!state) return;
        state->redrawPending_ = false;
        if (auto view = state->view_.lock()) {
            state->glowFrame_ = true;
            view->invalidate();
            state->glowFrame_ = false;
        }
    });
}

void AssistantContentManager::loadAssistantView(std::function<void(std::shared_ptr<platform::View>)> completion) {
    platform::mainAsync([completion = std::move(completion)] {
        auto state = std::make_shared<AssistantPaneState>();
        auto hosting = ui::HostingView::make([state](double width) { return state->body(width); });
        state->attach(hosting);

        // Each published change of either list redraws the pane; rows new
        // to it appear and glow.
        auto& model = AssistantViewModel::shared();
        ui::invalidateOnChange(hosting, model.recommendations);
        ui::invalidateOnChange(hosting, model.missed);
        completion(hosting);
    });
}

// Called by the macro project on the main thread.
void openAssistantTaskpane() {
    platform::nslog("Assistant: 🟢 Dylib loaded successfully");
    TaskpaneManager::toggleTaskpane("Velmora Assistant", 250, AssistantContentManager::loadAssistantView);
}

}  // namespace velmora
