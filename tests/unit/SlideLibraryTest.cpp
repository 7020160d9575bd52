#include <gtest/gtest.h>

#include <cstdlib>
#include <ctime>
#include <filesystem>
#include <string>

#include "bridge/Exports.h"
#include "fake/FakePlatform.h"
#include "slidelibrary/SlideLibraryPane.h"
#include "slidelibrary/TaggingUI.h"
#include "support/Unicode.h"
#include "taskpane/PaneAccess.h"
#include "templatelibrary/LibraryTaskpane.h"

namespace velmora {
namespace {

using support::Date;

// Central European time, with summer time, written out so no zone database is needed.
void useBerlinTime() {
    setenv("TZ", "CET-1CEST,M3.5.0,M10.5.0/3", 1);
    tzset();
}

Date at(const char* local) { return *support::parseLocalTimestamp(local); }

TEST(SlideDates, TheStoreFormatIsLocalWallClockTimeAndStrict) {
    useBerlinTime();
    EXPECT_EQ(at("2026-07-01T00:30:00"), 1782858600);  // 2026-06-30 22:30 UTC, summer time
    EXPECT_EQ(at("2026-01-15T12:00:00"), 1768474800);  // 11:00 UTC, winter time
    EXPECT_EQ(support::formatLocalTimestamp(at("2026-07-01T00:30:00")), "2026-07-01T00:30:00");
    EXPECT_EQ(support::formatLocalTimestamp(1782858600.9), "2026-07-01T00:30:00") << "fractions are dropped";
    for (const char* bad : {"2026-07-01T00:30:00Z", "2026-07-01T00:30:00.000", "2026-07-01T00:30:00+02:00",
                            "2026-07-01 00:30:00", "2026-7-01T00:30:00", "2026-02-30T10:00:00", "2026-13-01T10:00:00",
                            "2026-10-32T10:00:00", "2026-04-31T10:00:00", "2026-12-32T10:00:00",
                            "2026-07-01T24:00:00", "2026-07-01T10:60:00", "", "0000-01-01T00:00:00",
                            "2026-07-01T00:30:0x"}) {
        EXPECT_FALSE(support::parseLocalTimestamp(bad)) << bad;
    }
    for (const char* last : {"2028-02-29T10:00:00", "2026-10-31T10:00:00", "2026-04-30T10:00:00", "2026-12-31T23:59:59"}) {
        EXPECT_TRUE(support::parseLocalTimestamp(last)) << last;
    }
}

TEST(SlideDates, InternetDateTimesNeedAFractionAndAZone) {
    EXPECT_EQ(support::parseInternetDateTime("2026-11-23T10:00:00.250Z"), 1795428000.25);
    EXPECT_EQ(support::parseInternetDateTime("2026-11-23T11:00:00.5+01:00"), 1795428000.5);
    EXPECT_EQ(support::parseInternetDateTime("2026-11-23T05:30:00.0-04:30"), 1795428000);
    for (const char* bad : {"2026-11-23T10:00:00Z", "2026-11-23T10:00:00.250", "2026-11-23T10:00:00.Z",
                            "2026-11-23T10:00:00.250+0100", "2026-11-23T10:00:00"}) {
        EXPECT_FALSE(support::parseInternetDateTime(bad)) << bad;
    }
}

TEST(SlideDates, DaysFollowTheLocalCalendarAcrossTheClockChange) {
    useBerlinTime();
    // 2026-10-25 has 25 hours: the clocks go back at 03:00.
    const Date noon = at("2026-10-25T12:00:00");
    EXPECT_EQ(support::formatLocalTimestamp(support::startOfDay(noon)), "2026-10-25T00:00:00");
    EXPECT_EQ(support::formatLocalTimestamp(support::endOfDay(noon)), "2026-10-25T23:59:59");
    EXPECT_EQ(support::endOfDay(noon) - support::startOfDay(noon), 25 * 3600 - 1);
    EXPECT_EQ(support::mediumDateText(noon), "Oct 25, 2026");
    EXPECT_EQ(support::dayText(at("2026-07-01T00:30:00")), "2026-07-01");
    EXPECT_EQ(support::dateOnDay("2026-03-02", at("2026-07-01T09:15:30")), at("2026-03-02T09:15:30"));
    EXPECT_FALSE(support::dateOnDay("2026-3-2", noon));
}

TEST(SlideText, SearchIgnoresCaseFullyAndNothingElse) {
    EXPECT_TRUE(support::containsIgnoringCase("Quarterly REVENUE grew", "revenue"));
    EXPECT_TRUE(support::containsIgnoringCase("STRASSE", "straße"));
    EXPECT_TRUE(support::containsIgnoringCase("Ärger", "äRG"));
    EXPECT_FALSE(support::containsIgnoringCase("Cafe", "café"));
    EXPECT_FALSE(support::containsIgnoringCase("abc", ""));
    EXPECT_FALSE(support::containsIgnoringCase("ab", "abc"));
    EXPECT_TRUE(support::containsIgnoringCase("aab", "AB")) << "a failed partial match restarts one later";
    EXPECT_EQ(support::trimWhitespaceAndNewlines("\u00A0 Q3 \n\u2028"), "Q3");
    EXPECT_EQ(support::trimWhitespaceAndNewlines(" a, b "), "a, b");
    EXPECT_EQ(support::lowercasedFully("ÄBC"), "äbc");
}

// --- the file ---------------------------------------------------------------------------

TEST(SlideMetadataFile, TheTypedReaderTakesFourKeysOrNothing) {
    useBerlinTime();
    const std::string good =
        R"([{"FullSlideName":"A","TextContent":"t","Tags":["x","X"],"DateSaved":"2026-07-01T00:30:00","SlidesFileName":"a.pptx","Other":{"n":1}}])";
    auto items = decodeSlideMetadata(good);
    ASSERT_TRUE(items);
    EXPECT_EQ(*items, (std::vector<SlideMetadataItem>{{"A", "t", {"x", "X"}, at("2026-07-01T00:30:00")}}));
    EXPECT_EQ(decodeSlideMetadata("[]")->size(), 0u);

    const std::string other = R"({"FullSlideName":"B","TextContent":"t","Tags":[],"DateSaved":"2026-07-01T00:30:00"})";
    for (const std::string& bad :
         {std::string(R"([{"FullSlideName":"A","Tags":[],"DateSaved":"2026-07-01T00:30:00"}])"),
          std::string(R"([{"TextContent":"t","Tags":[],"DateSaved":"2026-07-01T00:30:00"}])"),
          std::string(R"([{"FullSlideName":"A","TextContent":"t","DateSaved":"2026-07-01T00:30:00"}])"),
          std::string(R"([{"FullSlideName":"A","TextContent":"t","Tags":[]}])"),
          std::string(R"([{"FullSlideName":"A","TextContent":1,"Tags":[],"DateSaved":"2026-07-01T00:30:00"}])"),
          std::string(R"([{"FullSlideName":"A","TextContent":"t","Tags":[1],"DateSaved":"2026-07-01T00:30:00"}])"),
          std::string(R"([{"FullSlideName":"A","TextContent":"t","Tags":null,"DateSaved":"2026-07-01T00:30:00"}])"),
          std::string(R"([{"FullSlideName":"A","TextContent":"t","Tags":[],"DateSaved":"2026-07-01T00:30:00Z"}])"),
          "[" + other + ",1]", "[" + other + "," + other.substr(0, 20) + "]", std::string("{}"), std::string(""),
          std::string("[\"\xFF\"]"), "[" + other + "]garbage"}) {
        EXPECT_FALSE(decodeSlideMetadata(bad)) << bad;
    }
}

TEST(SlideMetadataFile, TheRewriteHasExactlyFourKeysPrettyPrinted) {
    useBerlinTime();
    const std::vector<SlideMetadataItem> items{{"Q3/Review", "Line \"one\"\n", {"a"}, at("2026-07-01T00:30:00")},
                                               {"B", "", {}, at("2026-01-15T12:00:00")}};
    EXPECT_EQ(encodeSlideMetadata(items),
              "[\n  {\n    \"FullSlideName\" : \"Q3\\/Review\",\n    \"TextContent\" : \"Line \\\"one\\\"\\n\",\n"
              "    \"Tags\" : [\n      \"a\"\n    ],\n    \"DateSaved\" : \"2026-07-01T00:30:00\"\n  },\n"
              "  {\n    \"FullSlideName\" : \"B\",\n    \"TextContent\" : \"\",\n    \"Tags\" : [\n\n    ],\n"
              "    \"DateSaved\" : \"2026-01-15T12:00:00\"\n  }\n]");
    EXPECT_EQ(decodeSlideMetadata(encodeSlideMetadata(items)), items);
    EXPECT_EQ(encodeSlideMetadata({}), "[\n\n]");
}

TEST(SlideMetadataFile, TheUntypedReaderKeepsWhatItDoesNotUnderstand) {
    auto read = readJSONArray(R"([{"b":1,"a":[1.5,true,null],"SlidesFileName":"x"}])");
    ASSERT_FALSE(read.parseError);
    ASSERT_EQ(read.records.size(), 1u);
    EXPECT_EQ(prettyJSON(nlohmann::ordered_json(read.records)),
              "[\n  {\n    \"b\" : 1,\n    \"a\" : [\n      1.5,\n      true,\n      null\n    ],\n"
              "    \"SlidesFileName\" : \"x\"\n  }\n]");
    EXPECT_TRUE(readJSONArray(R"({"a":1})").records.empty());
    EXPECT_FALSE(readJSONArray(R"({"a":1})").parseError);
    EXPECT_TRUE(readJSONArray(R"([{"a":1},2])").records.empty());
    for (const char* bad : {"", "not json", "[", "5", "\"text\""}) {
        EXPECT_EQ(readJSONArray(bad).parseError, "The data couldn’t be read because it isn’t in the correct format.") << bad;
    }
}

// --- the store ---------------------------------------------------------------------------

std::string record(const std::string& name, const std::string& date, const std::string& tags = "[]",
                   const std::string& text = "words", const std::string& file = "") {
    return R"({"FullSlideName":")" + name + R"(","TextContent":")" + text + R"(","Tags":)" + tags +
           R"(,"DateSaved":")" + date + R"(","SlidesFileName":")" + (file.empty() ? name + ".pptx" : file) + R"("})";
}

class SlideLibraryTest : public testing::PlatformTest {
protected:
    void SetUp() override {
        PlatformTest::SetUp();
        useBerlinTime();
        fake.files->createDirectories(thumbnails(), nullptr);
        // Each test gets a view model of its own sandbox. The shared one is
        // made first, so the new one's inspector is the one that stays.
        SlideLibraryContentManager::viewModel();
        SlideLibraryContentManager::viewModel() = SlideLibraryViewModel::make();
        fake.dispatch->runUntilIdle();
        globalTaggingController().reset();
    }

    std::string folder() const { return "/Users/tester/Library/Application Support/Microsoft/Velmora/User/SlideLibrary"; }
    std::string metadata() const { return folder() + "/SlideLibrary_Metadata.json"; }
    std::string thumbnails() const { return folder() + "/Thumbnail"; }
    std::shared_ptr<SlideLibraryViewModel>& model() { return SlideLibraryContentManager::viewModel(); }

    void library(const std::vector<std::string>& records) {
        std::string json = "[";
        for (const auto& r : records) json += (json.size() > 1 ? "," : "") + r;
        fake.files->write(metadata(), json + "]", false, nullptr);
    }
    void thumbnail(const std::string& name) {
        static const std::string png("\x89PNG\r\n\x1a\n", 8);
        fake.files->write(thumbnails() + "/" + name + ".png", png, false, nullptr);
    }
    std::vector<std::string> names() {
        std::vector<std::string> out;
        for (const auto& item : model()->items.get()) out.push_back(item.fullSlideName);
        return out;
    }
    std::string file() { return fake.files->read(metadata(), nullptr).value_or("(missing)"); }
    void reload() {
        model()->loadMetadata();
        fake.dispatch->runUntilIdle();
    }
};

TEST_F(SlideLibraryTest, LoadsOnAUserInitiatedWorkerAndKeepsTheListWhenALoadFails) {
    EXPECT_TRUE(fake.log->contains("SlideLibrary paths → metadataURL: " + metadata() + ", thumbnailDir: " + thumbnails()));
    library({record("A", "2026-07-01T00:30:00"), record("B", "2026-07-02T00:30:00")});
    reload();
    EXPECT_EQ(names(), (std::vector<std::string>{"A", "B"}));
    EXPECT_EQ(fake.dispatch->globalQualities().back(), platform::QualityOfService::userInitiated);

    for (const std::string& broken : {std::string("not json"), std::string("[") + record("C", "2026-07-01T00:30:00Z") + "]",
                                     std::string("{}")}) {
        fake.files->write(metadata(), broken, false, nullptr);
        reload();
        EXPECT_EQ(names(), (std::vector<std::string>{"A", "B"})) << broken;
    }
    fake.files->remove(metadata(), nullptr);
    reload();
    EXPECT_EQ(names(), (std::vector<std::string>{"A", "B"})) << "a vanished file does not empty the grid";
    fake.files->write(metadata(), "[]", false, nullptr);
    reload();
    EXPECT_TRUE(names().empty());
}

TEST_F(SlideLibraryTest, DeleteUpdatesTheListFirstThenRewritesAndRemovesTheThumbnail) {
    library({record("A", "2026-07-01T00:30:00", R"(["x"])"), record("B", "2026-07-02T00:30:00"),
             record("A", "2026-07-03T00:30:00")});
    thumbnail("A");
    thumbnail("B");
    reload();
    const auto a = model()->items.get().front();
    model()->deleteItem(a);
    // The list changes on the main queue, before the background write.
    fake.dispatch->main.runDue();
    EXPECT_EQ(names(), (std::vector<std::string>{"B"})) << "both records named A go";
    EXPECT_NE(file().find("\"A\""), std::string::npos) << "the file is not written yet";
    EXPECT_EQ(fake.dispatch->globalQualities().back(), platform::QualityOfService::background);
    fake.dispatch->runUntilIdle();
    EXPECT_EQ(file(), encodeSlideMetadata(model()->items.get()));
    EXPECT_EQ(file().find("SlidesFileName"), std::string::npos) << "the rewrite strips the key the store does not know";
    EXPECT_FALSE(fake.files->exists(thumbnails() + "/A.png"));
    EXPECT_TRUE(fake.files->exists(thumbnails() + "/B.png"));
    EXPECT_TRUE(fake.log->lines().size() > 0);
    EXPECT_FALSE(fake.log->contains("⚠️"));

    // A missing thumbnail is reported; the record goes all the same.
    fake.files->remove(thumbnails() + "/B.png", nullptr);
    model()->deleteItem(model()->items.get().front());
    fake.dispatch->runUntilIdle();
    EXPECT_TRUE(names().empty());
    EXPECT_EQ(file(), "[\n\n]");
    EXPECT_TRUE(fake.log->contains("⚠️ Failed to delete thumbnail: “B.png” couldn’t be removed."));
}

TEST_F(SlideLibraryTest, AFailedRewriteIsReportedAndTheThumbnailStillGoes) {
    library({record("A", "2026-07-01T00:30:00"), record("B", "2026-07-02T00:30:00")});
    thumbnail("A");
    reload();
    // A folder where the file was: the write fails, as on a read-only disk.
    fake.files->remove(metadata(), nullptr);
    fake.files->createDirectories(metadata() + "/blocked", nullptr);
    model()->deleteItem(model()->items.get().front());
    fake.dispatch->runUntilIdle();
    EXPECT_EQ(names(), (std::vector<std::string>{"B"}));
    const auto lines = fake.log->linesWithChannel();
    auto write = std::find_if(lines.begin(), lines.end(), [](const std::string& l) {
        return l.rfind("print: ⚠️ Failed to write updated metadata: ", 0) == 0;
    });
    ASSERT_NE(write, lines.end());
    EXPECT_FALSE(fake.files->exists(thumbnails() + "/A.png"));
}

TEST_F(SlideLibraryTest, RefreshLogsAndReloadsThroughTheMainQueue) {
    library({record("A", "2026-07-01T00:30:00")});
    refreshSlideLibraryTaskpane();
    EXPECT_TRUE(fake.log->contains("Slide Library: 🔄 Refresh requested from host code"));
    EXPECT_EQ(fake.dispatch->pendingGlobal(), 0u) << "the reload is scheduled on the main queue first";
    fake.dispatch->runUntilIdle();
    EXPECT_EQ(names(), (std::vector<std::string>{"A"}));
    auto shown = fake.inspection->inspect("slide library");
    ASSERT_TRUE(shown);
    EXPECT_EQ(shown->at(1), "  \"A\" tags [] saved 2026-07-01T00:30:00");
}

// --- the filters ---------------------------------------------------------------------------

TEST(SlideFilters, EachFilterAndTheSort) {
    useBerlinTime();
    const std::vector<SlideMetadataItem> items{
        {"early", "Budget PLAN", {"Finance"}, at("2026-06-01T00:00:00")},
        {"late", "hiring plan", {"team", "Q3"}, at("2026-06-01T23:59:59")},
        {"next", "plan", {"finance"}, at("2026-06-02T00:00:00")},
        {"tie", "other", {}, at("2026-06-02T00:00:00")},
        {"budget", "nothing here", {"Budget"}, at("2026-05-31T23:59:59")},
    };
    auto shown = [&](const SlideFilters& filters) {
        std::string out;
        for (const auto* item : filteredItems(items, filters)) out += (out.empty() ? "" : " ") + item->fullSlideName;
        return out;
    };
    SlideFilters f;
    EXPECT_EQ(shown(f), "next tie late early budget") << "newest first; equal dates keep file order";
    f.searchText = "budget";
    EXPECT_EQ(shown(f), "early") << "only the text is searched, not names or tags";
    f.searchText = "plan ";
    EXPECT_EQ(shown(f), "") << "the search text is not trimmed";
    f.searchText.clear();
    f.selectedTags = {"Finance", "Q3"};
    EXPECT_EQ(shown(f), "late early") << "any tag, compared exactly";
    f.selectedTags.clear();
    f.dateFrom = at("2026-06-01T15:00:00");
    f.dateTo = at("2026-06-01T08:00:00");
    EXPECT_EQ(shown(f), "late early") << "From and To on one day take the whole day";
    f.dateFrom = at("2026-06-02T10:00:00");
    EXPECT_EQ(shown(f), "") << "a reversed range shows nothing";
    f.dateTo.reset();
    EXPECT_EQ(shown(f), "next tie");

    EXPECT_EQ(tagOptions(items), (std::vector<std::string>{"Budget", "Finance", "Q3", "finance", "team"}));
}

// --- the pane ---------------------------------------------------------------------------

class SlidePaneTest : public SlideLibraryTest {
protected:
    void SetUp() override {
        SlideLibraryTest::SetUp();
        library({record("A", "2026-07-01T09:00:00", R"(["x"])", "Alpha"), record("B", "2026-07-02T09:00:00", R"(["y"])")});
        thumbnail("A");
        reload();
        view = makeSlideLibraryHostingView(model());
        view->setFrame({0, 0, 400, 900});
        view->layout();
        access = makeContentAccess([this] { return view; });
    }
    const ui::Node& tree() { return view->tree(); }

    std::shared_ptr<ui::HostingView> view;
    platform::PaneAccess access;
};

TEST_F(SlidePaneTest, ATapInsertsAndTheDeleteButtonActsOnlyUnderThePointer) {
    ASSERT_TRUE(access.tap("A", 1));
    EXPECT_EQ(fake.script->macros().back(), "InsertFromSlideLibrary");
    EXPECT_NE(fake.script->scripts().back().find(R"(list of parameters {"A", "False"})"), std::string::npos);
    EXPECT_TRUE(fake.log->contains(R"(VL: Executing with args: ["A", "False"])"));
    ASSERT_TRUE(access.tap("Keep Source Formatting", 1));
    ASSERT_TRUE(access.tap("B", 1));
    EXPECT_NE(fake.script->scripts().back().find(R"({"B", "True"})"), std::string::npos);

    EXPECT_FALSE(access.tap("Delete", 1)) << "not hit-testable while the pointer is elsewhere";
    ASSERT_TRUE(access.hover("A", 1, true));
    const auto scripts = fake.script->scripts().size();
    ASSERT_TRUE(access.tap("Delete", 1));
    EXPECT_EQ(fake.script->scripts().size(), scripts) << "a delete does not insert too";
    fake.dispatch->runUntilIdle();
    EXPECT_EQ(names(), (std::vector<std::string>{"B"}));
    EXPECT_FALSE(ui::findActionable(tree(), "A")) << "the cell goes at once";
}

TEST_F(SlidePaneTest, ThePreviewOpensAfterHalfASecondAndALeaveCancelsIt) {
    auto presented = [&](const std::string& id) {
        const ui::Node* cell = ui::findActionable(tree(), id);
        return cell && ui::findNode(*cell, [](const ui::Node& n) { return n.kind == ui::Kind::popover && n.isOn; });
    };
    ASSERT_TRUE(access.hover("A", 1, true));
    fake.dispatch->advance(0.49);
    EXPECT_FALSE(presented("A"));
    access.hover("A", 1, false);
    fake.dispatch->advance(1);
    EXPECT_FALSE(presented("A")) << "leaving within half a second cancels the preview";
    access.hover("A", 1, true);
    fake.dispatch->advance(0.5);
    EXPECT_TRUE(presented("A"));

    // B's thumbnail is missing: a placeholder, and a preview without an image.
    EXPECT_TRUE(ui::findText(tree(), "Missing: B.png"));
    access.hover("B", 1, true);
    fake.dispatch->advance(0.5);
    ASSERT_TRUE(presented("B"));
    EXPECT_TRUE(ui::findText(*ui::findActionable(tree(), "B"), "Preview unavailable"));
    access.hover("B", 1, false);
    EXPECT_FALSE(presented("B")) << "leaving closes at once";
}

TEST_F(SlidePaneTest, TheTagMenuAndTheDatePickersFilter) {
    const ui::Node* menu = ui::findChoosers(tree(), "Tags").at(0);
    EXPECT_EQ(menu->text, "All Tags");
    EXPECT_FALSE(menu->children.at(0).action) << "Clear Selection is disabled with nothing selected";
    ASSERT_TRUE(access.pick("Tags", 1, "y"));
    ASSERT_TRUE(access.pick("Tags", 1, "x"));
    EXPECT_EQ(ui::findChoosers(tree(), "Tags").at(0)->text, "x, y");
    ASSERT_TRUE(access.pick("Tags", 1, "y"));
    EXPECT_FALSE(ui::findActionable(tree(), "B"));
    ASSERT_TRUE(access.pick("Tags", 1, "Clear Selection"));
    EXPECT_TRUE(ui::findActionable(tree(), "B"));

    EXPECT_TRUE(ui::findText(tree(), "Any"));
    ASSERT_TRUE(access.pick("From:", 1, "2026-07-02"));
    EXPECT_TRUE(ui::findText(tree(), "Jul 2, 2026"));
    EXPECT_FALSE(ui::findActionable(tree(), "A"));
    ASSERT_TRUE(access.tap("Clear From:", 1));
    EXPECT_TRUE(ui::findActionable(tree(), "A"));
    access.pick("From:", 1, "July");
    EXPECT_EQ(ui::findText(tree(), "Any")->kind, ui::Kind::text) << "a text that is no day changes nothing";
}

TEST_F(SlidePaneTest, TheGridBuildsOnlyTheRowsOnShow) {
    std::vector<std::string> many;
    for (int i = 0; i < 1000; ++i) many.push_back(record("S" + std::to_string(i), "2026-07-01T09:00:00"));
    library(many);
    reload();
    int cells = 0;
    std::function<void(const ui::Node&)> count = [&](const ui::Node& n) {
        if (n.onHover) ++cells;
        for (const auto& c : n.children) count(c);
    };
    count(tree());
    // 400 wide: cells of 179 by 134 plus 10 between rows; 900 high.
    EXPECT_GT(cells, 10);
    EXPECT_LT(cells, 30);
    // Far down, the first cells built are those of the rows in view.
    ASSERT_TRUE(access.scroll(144 * 300));
    const ui::Node* first = ui::findNode(tree(), [](const ui::Node& n) { return static_cast<bool>(n.onHover); });
    ASSERT_TRUE(first);
    const int index = std::stoi(first->mod.accessibilityIdentifier.substr(1));
    EXPECT_GE(index, 590);
    EXPECT_LE(index, 600);
}

// --- the tagging window ---------------------------------------------------------------------------

TEST_F(SlideLibraryTest, RecentTagsComeOldestFirstOnceEachAndAtMostFifty) {
    library({record("A", "2026-07-01T09:00:00", R"(["late", "Shared"])"),
             record("B", "2026-07-01T09:00:00", R"(["file", "", "shared"])")});
    EXPECT_EQ(TaggingView::loadRecentTags(50), (std::vector<std::string>{"late", "Shared", "file", "shared"}))
        << "the store's own dates tie, so file order holds";
    fake.files->write(metadata(),
                      R"([{"DateSaved":"2026-07-02T09:00:00.000Z","Tags":["new"]},{"DateSaved":"2026-07-01T09:00:00.5+02:00","Tags":["old","new"]},{"DateSaved":"x","Tags":["past"]}])",
                      false, nullptr);
    EXPECT_EQ(TaggingView::loadRecentTags(50), (std::vector<std::string>{"past", "old", "new"}));
    std::string fifty = "[";
    for (int i = 0; i < 60; ++i) fifty += (i ? "," : "") + std::string(R"({"DateSaved":"","Tags":["t)") + std::to_string(i) + "\"]}";
    fake.files->write(metadata(), fifty + "]", false, nullptr);
    const auto capped = TaggingView::loadRecentTags(50);
    ASSERT_EQ(capped.size(), 50u);
    EXPECT_EQ(capped.back(), "t49");
    fake.files->write(metadata(), R"([{"DateSaved":"","Tags":["a"]},{"Tags":["b"]}])", false, nullptr);
    EXPECT_TRUE(TaggingView::loadRecentTags(50).empty()) << "one record without a date hides every suggestion";
}

TEST_F(SlideLibraryTest, TheTagInputAndTheSuggestions) {
    library({record("A", "2026-07-01T09:00:00", R"(["Finance", "fiscal", "Reef", "Q3"])")});
    TaggingView view("A.pptx");
    view.inputText = "FI";
    EXPECT_EQ(view.filteredSuggestions(), (std::vector<std::string>{"Finance", "fiscal"})) << "prefixes only, any case";
    view.inputText = "  Q4 \n";
    view.addInputAsTag();
    EXPECT_EQ(view.selectedTags, (std::vector<std::string>{"Q4"}));
    EXPECT_EQ(view.inputText, "");
    view.inputText = "Q4";
    view.addInputAsTag();
    EXPECT_EQ(view.inputText, "Q4") << "a tag already chosen leaves the input";
    view.inputText = "q4";
    view.addInputAsTag();
    view.inputText = " \t";
    view.addInputAsTag();
    EXPECT_EQ(view.inputText, " \t");
    view.addTag("Reef");
    EXPECT_EQ(view.selectedTags, (std::vector<std::string>{"Q4", "q4", "Reef"}));
    view.inputText.clear();
    EXPECT_EQ(view.filteredSuggestions(), (std::vector<std::string>{"Finance", "fiscal", "Q3"}));
    view.removeTag("q4");
    EXPECT_EQ(view.selectedTags, (std::vector<std::string>{"Q4", "Reef"}));
}

TEST_F(SlideLibraryTest, SaveWritesEveryMatchingRecordAndKeepsTheRest) {
    const std::string first = R"({"FullSlideName":"A","Tags":["old"],"DateSaved":"2026-07-01T09:00:00","SlidesFileName":"deck.pptx","Extra":[1,2.5]})";
    const std::string other = R"({"SlidesFileName":"other.pptx","Tags":["keep"],"DateSaved":""})";
    const std::string second = R"({"SlidesFileName":"deck.pptx","Tags":[],"DateSaved":""})";
    fake.files->write(metadata(), "[" + first + "," + other + "," + second + "]", false, nullptr);
    initializeTaggingOverlay("deck.pptx");
    fake.dispatch->runUntilIdle();
    auto& controller = globalTaggingController();
    ASSERT_TRUE(controller && controller->hasVisibleWindow());
    EXPECT_EQ(controller->window()->title(), "Tag Slides");

    auto access = makeContentAccess([&] { return controller->hostingView(); });
    ASSERT_TRUE(access.tap("Save", 1));
    EXPECT_TRUE(controller->hasVisibleWindow()) << "nothing to save keeps the window open";
    ASSERT_TRUE(access.type("Add a tag…", 1, " New "));
    ASSERT_TRUE(access.pressDefault());
    ASSERT_TRUE(access.tap("old", 1)) << "a suggestion chip adds its tag";
    ASSERT_TRUE(access.tap("Save", 1));
    fake.dispatch->runUntilIdle();
    EXPECT_FALSE(controller->hasVisibleWindow());
    const auto saved = nlohmann::ordered_json::parse(file());
    EXPECT_EQ(saved[0]["Tags"], nlohmann::ordered_json({"New", "old"}));
    EXPECT_EQ(saved[0]["Extra"], nlohmann::ordered_json({1, 2.5}));
    EXPECT_EQ(saved[0].begin().key(), "FullSlideName") << "keys keep their order";
    EXPECT_EQ(saved[1]["Tags"], nlohmann::ordered_json({"keep"}));
    EXPECT_EQ(saved[2]["Tags"], nlohmann::ordered_json({"New", "old"}));
    EXPECT_EQ(file().find(" : "), file().find("\"FullSlideName\" : ") + 15) << "pretty-printed";
}

TEST_F(SlideLibraryTest, SaveFailuresCloseTheWindowAndOnlyBrokenJSONIsLogged) {
    auto saveOnce = [&](const char* name) {
        initializeTaggingOverlay(name);
        fake.dispatch->runUntilIdle();
        auto& controller = globalTaggingController();
        EXPECT_TRUE(controller->hasVisibleWindow());
        auto access = makeContentAccess([&] { return controller->hostingView(); });
        access.type("Add a tag…", 1, "t");
        access.pressDefault();
        access.tap("Save", 1);
        fake.dispatch->runUntilIdle();
        EXPECT_FALSE(controller->hasVisibleWindow()) << name;
    };
    library({record("A", "2026-07-01T09:00:00")});
    const std::string before = file();
    saveOnce("nobody.pptx");
    EXPECT_EQ(file(), before) << "no match, no write";
    fake.files->remove(metadata(), nullptr);
    saveOnce("A.pptx");
    EXPECT_FALSE(fake.files->exists(metadata()));
    EXPECT_FALSE(fake.log->contains("Velmora Tagging"));
    fake.files->write(metadata(), "{broken", false, nullptr);
    saveOnce("A.pptx");
    EXPECT_TRUE(fake.log->contains("Velmora Tagging: The data couldn’t be read because it isn’t in the correct format."));
    EXPECT_EQ(file(), "{broken");
}

TEST_F(SlideLibraryTest, ASecondCallClosesTheWindowWhicheverSlideItNames) {
    initializeTaggingOverlay("a.pptx");
    fake.dispatch->runUntilIdle();
    auto first = globalTaggingController();
    ASSERT_TRUE(first && first->hasVisibleWindow());
    EXPECT_EQ(fake.views->keyWindow(), first->window());
    initializeTaggingOverlay("b.pptx");
    fake.dispatch->runUntilIdle();
    EXPECT_FALSE(first->hasVisibleWindow());
    EXPECT_FALSE(globalTaggingController());
    initializeTaggingOverlay("b.pptx");
    fake.dispatch->runUntilIdle();
    ASSERT_TRUE(globalTaggingController());
    platform::Event escape;
    escape.keyCode = escapeKeyCode;
    EXPECT_FALSE(fake.events->dispatch(escape)) << "Escape closes the visible window";
    EXPECT_TRUE(globalTaggingController()) << "and the closed controller stays";
    EXPECT_TRUE(fake.events->dispatch(escape)) << "then it is passed on";

    initializeTaggingOverlay(nullptr);
    initializeTaggingOverlay("\xFF\xFE");
    fake.dispatch->runUntilIdle();
    EXPECT_TRUE(fake.log->contains("Velmora Tagging: no slide file name given"));
    EXPECT_TRUE(globalTaggingController()->hasVisibleWindow());
}

TEST_F(SlideLibraryTest, ALongOrOddTagNeitherWidensTheWindowNorBreaksTheFile) {
    library({record("A", "2026-07-01T09:00:00", "[\"" + std::string(10000, 'x') + "\"]", "t", "a.pptx")});
    initializeTaggingOverlay("a.pptx");
    fake.dispatch->runUntilIdle();
    auto& controller = globalTaggingController();
    EXPECT_LT(controller->window()->contentSize().width, 600);
    auto view = std::make_shared<TaggingView>("a.pptx");
    view->inputText = "say \"hi\"\nthen / go";
    view->addInputAsTag();
    view->saveTags();
    const auto saved = nlohmann::json::parse(file());
    EXPECT_EQ(saved[0]["Tags"][0], "say \"hi\"\nthen / go");
}

TEST(TagFlow, ChipsWrapWhenTheyWouldPassTheWidth) {
    double height = 0;
    const auto at = flowLayout({{60, 30}, {60, 30}, {60, 30}, {200, 30}}, 130, &height);
    ASSERT_EQ(at.size(), 4u);
    EXPECT_EQ(at[1].x, 60);
    EXPECT_EQ(at[2].x, 0) << "120 + 60 passes 130";
    EXPECT_EQ(at[2].y, 30);
    EXPECT_EQ(at[3].y, 60);
    EXPECT_EQ(height, 90);
    flowLayout({}, 100, &height);
    EXPECT_EQ(height, 0);
}

// --- the tabs ---------------------------------------------------------------------------

TEST_F(SlideLibraryTest, TheLibraryOpensOnTemplatesAndEachSwitchStartsAfresh) {
    library({record("A", "2026-07-01T09:00:00", "[]", "Alpha"), record("B", "2026-07-02T09:00:00")});
    reload();
    std::shared_ptr<platform::View> shown;
    LibraryContentManager::loadLibraryView([&](std::shared_ptr<platform::View> view) { shown = std::move(view); });
    auto hosting = std::dynamic_pointer_cast<ui::HostingView>(shown);
    ASSERT_TRUE(hosting);
    hosting->setFrame({0, 0, 400, 900});
    hosting->layout();
    auto access = makeContentAccess([&] { return hosting; });
    const auto* tabs = ui::findNode(hosting->tree(), [](const ui::Node& n) { return n.segmented; });
    ASSERT_TRUE(tabs);
    EXPECT_TRUE(tabs->children.at(1).isOn) << "Templates first";
    EXPECT_FALSE(ui::findEditables(hosting->tree(), "Search slides...").size());

    ASSERT_TRUE(access.tap("Saved Slides", 1));
    ASSERT_TRUE(access.type("Search slides...", 1, "alpha"));
    EXPECT_FALSE(ui::findActionable(hosting->tree(), "B"));
    ASSERT_TRUE(access.tap("Saved Slides", 1));
    EXPECT_EQ(ui::findEditables(hosting->tree(), "Search slides...").at(0)->text, "alpha")
        << "the tab on show, tapped again, is no switch";
    ASSERT_TRUE(access.hover("A", 1, true));
    ASSERT_TRUE(access.tap("Delete", 1));
    fake.dispatch->runUntilIdle();
    ASSERT_TRUE(access.tap("Templates", 1));
    ASSERT_TRUE(access.tap("Saved Slides", 1));
    EXPECT_EQ(ui::findEditables(hosting->tree(), "Search slides...").at(0)->text, "") << "the search is gone";
    EXPECT_TRUE(ui::findActionable(hosting->tree(), "B"));
    EXPECT_FALSE(ui::findActionable(hosting->tree(), "A")) << "the delete stays";
}

}  // namespace
}  // namespace velmora
