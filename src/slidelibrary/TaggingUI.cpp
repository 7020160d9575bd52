#include "slidelibrary/TaggingUI.h"

#include <algorithm>
#include <cmath>
#include <set>

#include "bridge/Exports.h"
#include "platform/Platform.h"
#include "slidelibrary/SlideLibrary.h"
#include "slidelibrary/SlideMetadata.h"
#include "support/Unicode.h"
#include "ui/Measure.h"

namespace velmora {

namespace {

using namespace ui;

constexpr Color tagRed = Color::rgb255(251, 105, 105);
constexpr double chipPadding = 4;

bool contains(const std::vector<std::string>& list, const std::string& value) {
    return std::find(list.begin(), list.end(), value) != list.end();
}

Node tagChip(const std::string& label, std::function<void()> onRemove) {
    return hstack(Alignment::center, 8,
                  {text(label).font(subheadlineSize).foregroundColor(colors::black),
                   button(symbol("xmark.circle.fill").font(subheadlineSize).foregroundColor(colors::black),
                          std::move(onRemove))
                       .accessibilityId("Remove " + label)})
        .padding(Edge::vertical, 6)
        .padding(Edge::horizontal, 12)
        .background(colors::white)
        .border(tagRed, 1)
        .cornerRadius(16);
}

Node suggestionChip(const std::string& label, std::function<void()> action, Color backgroundColor) {
    return button(text(label)
                      .font(subheadlineSize)
                      .foregroundColor(colors::black)
                      .padding(Edge::vertical, 6)
                      .padding(Edge::horizontal, 12)
                      .background(backgroundColor)
                      .cornerRadius(16),
                  std::move(action));
}

}  // namespace

std::vector<FlowPosition> flowLayout(const std::vector<platform::Size>& sizes, double width, double* totalHeight) {
    // The two running numbers of the alignment guides: a guide's value is
    // the negated offset of the chip it places.
    double runWidth = 0, runHeight = 0, bottom = 0;
    std::vector<FlowPosition> positions;
    positions.reserve(sizes.size());
    for (std::size_t i = 0; i < sizes.size(); ++i) {
        const auto& d = sizes[i];
        const bool last = i + 1 == sizes.size();
        if (std::abs(runWidth - d.width) > width) {
            runWidth = 0;
            runHeight -= d.height;
        }
        const FlowPosition at{-runWidth, -runHeight};
        runWidth = last ? 0 : runWidth - d.width;
        if (last) runHeight = 0;
        positions.push_back(at);
        bottom = std::max(bottom, at.y + d.height);
    }
    if (totalHeight) *totalHeight = bottom;
    return positions;
}

// --- the view ---------------------------------------------------------------------------

TaggingView::TaggingView(std::string name)
    : allSuggestions(loadRecentTags(maxSuggestions)), slidesFileName(std::move(name)) {}

std::vector<std::string> TaggingView::loadRecentTags(std::size_t maxCount) {
    auto bytes = platform::files().read(taggingMetadataPath());
    if (!bytes) return {};
    auto records = decodeRecentTagRecords(*bytes);
    if (!records) return {};
    // Oldest first, as the list has always been built.
    std::stable_sort(records->begin(), records->end(),
                     [](const RecentTagRecord& a, const RecentTagRecord& b) { return a.dateSaved < b.dateSaved; });
    std::vector<std::string> result;
    std::set<std::string> seen;
    for (const auto& record : *records) {
        for (const auto& tag : record.tags) {
            if (tag.empty() || !seen.insert(tag).second) continue;
            result.push_back(tag);
            if (result.size() == maxCount) return result;
        }
    }
    return result;
}

std::vector<std::string> TaggingView::filteredSuggestions() const {
    const std::string typed = support::lowercasedFully(inputText);
    std::vector<std::string> shown;
    for (const auto& suggestion : allSuggestions) {
        if (contains(selectedTags, suggestion)) continue;
        if (typed.empty() || support::lowercasedFully(suggestion).rfind(typed, 0) == 0) shown.push_back(suggestion);
    }
    return shown;
}

void TaggingView::addInputAsTag() {
    std::string tag = support::trimWhitespaceAndNewlines(inputText);
    if (tag.empty() || contains(selectedTags, tag)) return;
    selectedTags.push_back(std::move(tag));
    inputText.clear();
}

void TaggingView::addTag(const std::string& tag) {
    selectedTags.push_back(tag);
    inputText.clear();
}

void TaggingView::removeTag(const std::string& tag) { std::erase(selectedTags, tag); }

void TaggingView::saveTags() {
    if (selectedTags.empty()) return;
    const std::string path = taggingMetadataPath();
    // A file that cannot be read has no records, so no match, and no line.
    if (auto bytes = platform::files().read(path)) {
        auto read = readJSONArray(*bytes);
        if (read.parseError) {
            platform::nslog("Velmora Tagging: " + *read.parseError);
        } else {
            bool matched = false;
            for (auto& record : read.records) {
                auto name = record.find("SlidesFileName");
                if (name != record.end() && name->is_string() && name->get_ref<const std::string&>() == slidesFileName) {
                    record["Tags"] = selectedTags;
                    matched = true;
                }
            }
            std::string error;
            if (matched && !platform::files().write(path, prettyJSON(nlohmann::ordered_json(read.records)), true, &error)) {
                platform::nslog("Velmora Tagging: " + error);
            }
        }
    }
    // Whatever happened, the pane shows the file as it is and the window goes.
    SlideLibraryContentManager::reloadLibraryUI();
    closeKeyWindow();
}

void TaggingView::redraw() {
    if (auto view = view_.lock()) view->invalidate();
}

Node TaggingView::chips(const std::vector<std::string>& tags, bool suggestions, double width) {
    std::weak_ptr<TaggingView> weak = weak_from_this();
    Nodes placed;
    std::vector<platform::Size> sizes;
    for (const auto& tag : tags) {
        auto act = [weak, tag, suggestions] {
            auto self = weak.lock();
            if (!self) return;
            if (suggestions) {
                self->addTag(tag);
            } else {
                self->removeTag(tag);
            }
            self->redraw();
        };
        Node chip = (suggestions ? suggestionChip(tag, act, tagRed.opacity(0.4)) : tagChip(tag, act))
                        .padding(chipPadding)
                        .id(tag);
        sizes.push_back(ui::idealSize(chip));
        placed.push_back(std::move(chip));
    }
    double height = 0;
    const auto positions = flowLayout(sizes, width, &height);
    for (std::size_t i = 0; i < placed.size(); ++i) placed[i].offset(positions[i].x, positions[i].y);
    // The layout reads the width it is given and asks for none of its own,
    // so a long tag does not widen the window.
    Frame frame;
    frame.idealWidth = 10;
    frame.maxWidth = infinity;
    frame.height = height;
    frame.alignment = Alignment::topLeading;
    return zstack(Alignment::topLeading, std::move(placed)).frame(frame);
}

Node TaggingView::body(double width) {
    std::weak_ptr<TaggingView> weak = weak_from_this();
    auto act = [weak](void (TaggingView::*operation)()) {
        return [weak, operation] {
            if (auto self = weak.lock()) {
                ((*self).*operation)();
                self->redraw();
            }
        };
    };
    const double flowWidth = std::max(0.0, width - 2 * defaultPadding);

    Frame fieldFrame;
    fieldFrame.minWidth = 200;
    Nodes children{
        hstack({symbol("tag").foregroundColor(colors::secondary).font(bodySize), spacer().frameWidth(6),
                textField("Add a tag…", inputText,
                          [weak](const std::string& text) {
                              if (auto self = weak.lock()) {
                                  self->inputText = text;
                                  self->redraw();
                              }
                          })
                    .frame(fieldFrame)
                    .onSubmitDo(act(&TaggingView::addInputAsTag))}),
        vstack(Alignment::leading, std::nullopt,
               {text("Tagging allows you to find slides easier in the slide library."), text("Press Enter to add Tag.")})
            .font(bodySize)
            .padding(Edge::vertical, 4)};
    const auto suggestions = filteredSuggestions();
    if (!suggestions.empty()) {
        Frame capped;
        capped.maxHeight = 100;
        children.push_back(text("Recently used Tags:").font(subheadlineSize).foregroundColor(colors::gray));
        children.push_back(scroll(chips(suggestions, true, flowWidth)).frame(capped));
    }
    if (!selectedTags.empty()) {
        children.push_back(text("Selected Tags:").font(subheadlineSize).foregroundColor(colors::gray));
        children.push_back(chips(selectedTags, false, flowWidth));
    }
    children.push_back(spacer());
    children.push_back(hstack({spacer(), button("Save", act(&TaggingView::saveTags)), button("Cancel", [] { closeKeyWindow(); }),
                               spacer()})
                           .padding(Edge::bottom, 10));
    return vstack(Alignment::leading, 6, std::move(children)).padding(defaultPadding);
}

// --- the window -----------------------------------------------------------------------------

std::shared_ptr<ToolWindowController>& globalTaggingController() {
    // Lives as long as the process: a main-queue block may still use it at exit.
    static auto& controller = *new std::shared_ptr<ToolWindowController>();
    return controller;
}

void toggleTaggingWindow(const std::string& slidesFileName) {
    platform::views().setActivationPolicy(platform::ActivationPolicy::regular);
    auto& controller = globalTaggingController();
    if (controller && controller->hasVisibleWindow()) {
        controller->close();
        controller = nullptr;
        return;
    }
    auto view = std::make_shared<TaggingView>(slidesFileName);
    controller = ToolWindowController::make({"Tag Slides", {300, 400}, 0.95, 3},
                                            [view](double width) { return view->body(width); });
    view->attach(controller->hostingView());
    controller->showWindow();
    platform::views().activateIgnoringOtherApps(true);
    controller->window()->makeKeyAndOrderFront();
}

// Called by the macro project after it saved a slide; any thread.
void initializeTaggingOverlay(const char* slidesFileName) {
    if (!slidesFileName) {
        platform::nslog("Velmora Tagging: no slide file name given");
        return;
    }
    // Bytes that are not UTF-8 are repaired, as the platform reads a C string.
    std::string name = support::repairedUTF8(slidesFileName);
    platform::mainAsync([name = std::move(name)] { toggleTaggingWindow(name); });
}

}  // namespace velmora
