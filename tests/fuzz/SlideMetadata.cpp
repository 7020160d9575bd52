// SlideLibrary_Metadata.json through each of its four readers: the store's
// load (with the pane that shows it), the store's delete, which writes the
// file back through the same records, the tagging window's recent tags,
// and its save, which keeps every key and value it does not change.

#include <algorithm>
#include <set>

#include "FuzzPlatform.h"
#include "slidelibrary/SlideLibrary.h"
#include "slidelibrary/SlideLibraryPane.h"
#include "slidelibrary/SlideMetadata.h"
#include "slidelibrary/TaggingUI.h"

using namespace velmora;

namespace {

bool sameButDates(const std::vector<SlideMetadataItem>& a, const std::vector<SlideMetadataItem>& b) {
    return std::equal(a.begin(), a.end(), b.begin(), b.end(), [](const SlideMetadataItem& x, const SlideMetadataItem& y) {
        return x.fullSlideName == y.fullSlideName && x.textContent == y.textContent && x.tags == y.tags;
    });
}

// The typed pair: what decodes writes back and reads again the same; a
// second rewrite changes nothing (a date in a clock change's gap may move
// once, to the wall-clock time it stands for).
void typedRoundTrip(std::string_view bytes) {
    const auto items = decodeSlideMetadata(bytes);
    if (!items) return;
    const std::string written = encodeSlideMetadata(*items);
    const auto again = decodeSlideMetadata(written);
    if (!again) fuzz::fail("the store's rewrite does not read back:\n" + written);
    if (!sameButDates(*items, *again)) fuzz::fail("the store's rewrite changes the records:\n" + written);
    if (encodeSlideMetadata(*again) != written) fuzz::fail("a second rewrite differs from the first:\n" + written);
}

// The untyped pair: the records read back as they were.
void untypedRoundTrip(std::string_view bytes) {
    const auto read = readJSONArray(bytes);
    if (read.parseError && !read.records.empty()) fuzz::fail("records and a parse error at once");
    if (read.records.empty()) return;
    const std::string written = prettyJSON(nlohmann::ordered_json(read.records));
    const auto again = readJSONArray(written);
    if (again.parseError) fuzz::fail("the pretty form does not parse:\n" + written);
    if (again.records != read.records) fuzz::fail("the pretty form changes a value:\n" + written);
}

void recentTags() {
    const auto tags = TaggingView::loadRecentTags(TaggingView::maxSuggestions);
    if (tags.size() > TaggingView::maxSuggestions) fuzz::fail("more suggestions than asked for");
    std::set<std::string> seen;
    for (const auto& tag : tags) {
        if (tag.empty() || !seen.insert(tag).second) fuzz::fail("an empty or repeated suggestion");
    }
}

// The name the tagging window is opened for: the first record's, so saves
// find something to change.
std::string firstSlidesFileName(std::string_view bytes) {
    const auto read = readJSONArray(bytes);
    for (const auto& record : read.records) {
        auto name = record.find("SlidesFileName");
        if (name != record.end() && name->is_string()) return name->get<std::string>();
    }
    return "Deck.pptx";
}

void saveTags(fuzz::Session& session, const std::string& path, std::string_view bytes) {
    const auto before = readJSONArray(bytes);
    auto view = std::make_shared<TaggingView>(firstSlidesFileName(bytes));
    fuzz::look(view->body(320));
    view->addTag("fuzz");
    view->saveTags();
    session.settle();
    const auto after = session.fake.files->read(path, nullptr);
    if (!after) fuzz::fail("the save lost the file");
    if (*after == bytes) return;
    const auto read = readJSONArray(*after);
    if (read.parseError) fuzz::fail("the save wrote a file that does not parse:\n" + *after);
    if (read.records.size() != before.records.size()) fuzz::fail("the save changed the record count");
    for (std::size_t i = 0; i < read.records.size(); ++i) {
        auto was = before.records[i], now = read.records[i];
        was.erase("Tags");
        now.erase("Tags");
        if (was != now) fuzz::fail("the save changed a key it does not own:\n" + *after);
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view bytes(reinterpret_cast<const char*>(data), size);
    typedRoundTrip(bytes);
    untypedRoundTrip(bytes);

    fuzz::Session session;
    const std::string path = slideLibraryFolder() + "/SlideLibrary_Metadata.json";
    if (path != taggingMetadataPath()) fuzz::fail("the store and the tagging window name two files");
    session.write(path, bytes);

    // The store: load, show, delete the first slide, load the rewrite.
    auto model = SlideLibraryViewModel::make();
    session.settle();
    auto pane = makeSlideLibraryHostingView(model);
    fuzz::look(pane, 400, 900);
    const auto items = model->items.get();
    if (!items.empty()) {
        model->deleteItem(items.front());
        session.settle();
        const auto rewritten = decodeSlideMetadata(session.fake.files->read(path, nullptr).value_or(""));
        if (!rewritten) fuzz::fail("the file a delete wrote does not load");
        if (rewritten->size() != model->items.get().size()) fuzz::fail("the file and the list part after a delete");
        session.write(path, bytes);
    }

    recentTags();
    saveTags(session, path, bytes);
    return 0;
}
