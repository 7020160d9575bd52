// The tagging window: the macro project opens it after saving a slide; the
// user types tags or picks recently used ones, and Save writes them into
// every record of the metadata file that carries the slide's file name.
//
// Provides: TaggingView, FlowPosition, flowLayout(), toggleTaggingWindow(),
// globalTaggingController().
// The window works on the raw JSON, keeping every key it does not change,
// and writes atomically. Main thread only, file work included.
#pragma once

#include <cstddef>
#include <memory>
#include <string>
#include <vector>

#include "platform/Views.h"
#include "toolwindows/ToolWindow.h"
#include "ui/HostingView.h"
#include "ui/Node.h"

namespace velmora {

class TaggingView : public std::enable_shared_from_this<TaggingView> {
public:
    static constexpr std::size_t maxSuggestions = 50;

    // Starts with no tags selected, whatever the slide has on file.
    explicit TaggingView(std::string slidesFileName);

    // Tags of the file's records, oldest record first (a date that is not an
    // internet date-time with fraction and zone counts as the distant past,
    // so records in the store's own form keep file order), each tag once,
    // compared exactly; the first `maxCount`. Empty when the file cannot be
    // read or any record lacks "DateSaved" or "Tags".
    static std::vector<std::string> loadRecentTags(std::size_t maxCount);

    // The suggestions not selected that begin with the input, ignoring case.
    std::vector<std::string> filteredSuggestions() const;
    // Return in the field: the input, trimmed, becomes a tag unless it is
    // empty or already selected (then the input stays as it is).
    void addInputAsTag();
    void addTag(const std::string& tag);
    void removeTag(const std::string& tag);
    // Writes the selection as the "Tags" of every record with this slide's
    // "SlidesFileName", reloads the library and closes the key window; does
    // nothing at all while no tag is selected.
    void saveTags();

    ui::Node body(double width);
    void attach(const std::weak_ptr<ui::HostingView>& view) { view_ = view; }

    std::string inputText;
    std::vector<std::string> selectedTags;
    const std::vector<std::string> allSuggestions;
    const std::string slidesFileName;

private:
    void redraw();
    ui::Node chips(const std::vector<std::string>& tags, bool suggestions, double width);

    std::weak_ptr<ui::HostingView> view_;
};

// Where the flow layout puts each chip, top left, for chips of `sizes` in a
// width of `width`: left to right, a new line when a chip would end beyond
// the width, each line lower by the height of the chip that opened it.
struct FlowPosition {
    double x = 0, y = 0;
};
std::vector<FlowPosition> flowLayout(const std::vector<platform::Size>& sizes, double width, double* totalHeight);

// The one tagging window of the process, kept after it closes until the
// next toggle replaces it.
std::shared_ptr<ToolWindowController>& globalTaggingController();

// A visible window closes, whichever slide it is for; otherwise a new
// window opens for `slidesFileName`, in front and key.
void toggleTaggingWindow(const std::string& slidesFileName);

}  // namespace velmora
