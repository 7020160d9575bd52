#include <gtest/gtest.h>

#include <algorithm>
#include <string>

#include "bridge/Exports.h"
#include "fake/FakePlatform.h"
#include "taskpane/PaneAccess.h"
#include "templatelibrary/TemplateLibraryPane.h"

namespace velmora {
namespace {

using platform::HttpResponse;

TEST(TemplateURLs, WebAddressesStandAndEverythingElseHangsFromTheBase) {
    const std::string base = "https://cdn.test/templates/";
    EXPECT_EQ(absoluteURL("thumbs/a.png", base), "https://cdn.test/templates/thumbs/a.png");
    EXPECT_EQ(absoluteURL("//thumbs/a.png//", base), "https://cdn.test/templates/thumbs/a.png");
    EXPECT_EQ(absoluteURL("thumbs/a.png", "https://cdn.test/templates"), "https://cdn.test/templates/thumbs/a.png");
    EXPECT_EQ(absoluteURL("https://other.test/x.pptx", base), "https://other.test/x.pptx");
    EXPECT_EQ(absoluteURL("http://other.test/x.pptx", base), "http://other.test/x.pptx");
    EXPECT_EQ(absoluteURL("httpfoo:x", base), "httpfoo:x");  // the scheme test is a prefix test
    // Another scheme is a relative path like any other.
    EXPECT_EQ(absoluteURL("file:///tmp/x.pptx", base), "https://cdn.test/templates/file:///tmp/x.pptx");
    EXPECT_EQ(absoluteURL("a b.png", base), "https://cdn.test/templates/a%20b.png");
    EXPECT_EQ(absoluteURL("/", base), base);

    EXPECT_EQ(lastPathComponent("https://cdn.test/t/a%20b.png?size=2#top"), "a b.png");
    EXPECT_EQ(lastPathComponent("https://cdn.test/t/dir/"), "dir");
    EXPECT_EQ(lastPathComponent("https://cdn.test/a.png"), "a.png");
    // An address without a path names no file: the host is not one.
    EXPECT_EQ(lastPathComponent("https://cdn.test"), "");
    EXPECT_EQ(lastPathComponent("https://cdn.test/"), "/");

    EXPECT_EQ(usageURL("https://api.test/", "6D1A 3C52+x", "tpl&1"),
              "https://api.test/get_downloadTemplate?licenseKey=6D1A%203C52+x&slideId=tpl&1");
    EXPECT_EQ(usageURL("", "k", "s"), std::nullopt);
    EXPECT_EQ(usageURL("not a url", "k", "s"), std::nullopt);
}

TEST(TemplateManifest, DecodesStrictlyAndIgnoresUnknownKeys) {
    const std::string slide = R"({"id":"a","title":"A","thumb":"t/a.png","pptx":"p/a.pptx","cat":"","pack":"P","extra":1})";
    auto ok = decodeManifest(R"({"slides":[)" + slide + "]}");
    ASSERT_TRUE(ok.manifest) << ok.error;
    EXPECT_EQ(ok.manifest->slides.at(0).pack, "P");
    EXPECT_TRUE(decodeManifest(R"({"slides":[]})").manifest);

    for (const std::string& bad : {std::string(R"({"slides":[{"id":"a","title":"A","thumb":"t","pptx":"p","cat":""}]})"),
                                  std::string(R"({"slides":[{"id":1,"title":"A","thumb":"t","pptx":"p","cat":"","pack":""}]})"),
                                  std::string(R"({"slides":[)") + slide + R"(,{"id":"b","title":null,"thumb":"t","pptx":"p","cat":"","pack":""}]})",
                                  std::string(R"({"slides":{}})"), std::string(R"({"items":[]})"), std::string("[]"),
                                  std::string(R"({"slides":[)") + slide, std::string("<html>404</html>")}) {
        auto decoded = decodeManifest(bad);
        EXPECT_FALSE(decoded.manifest) << bad;
        EXPECT_FALSE(decoded.error.empty()) << bad;
    }
}

TEST(TemplateFilters, OneFilterAtATimeAndTheCategoryWins) {
    SlideManifestItem a{"a", "", "", "", "Sales", "Pitch"}, b{"b", "", "", "", "", "Pitch"}, c{"c", "", "", "", "Ops", ""};
    const std::vector<TemplateMetadataItem> items{{a, "ta", "pa"}, {b, "tb", "pb"}, {c, "tc", "pc"}};
    auto ids = [&](const TemplateFilters& f) {
        std::string out;
        for (const auto& item : filteredItems(items, f)) out += item.id;
        return out;
    };
    TemplateFilters filters;
    EXPECT_EQ(ids(filters), "abc");
    filters.selectPack("Pitch");
    EXPECT_EQ(ids(filters), "ab");
    filters.selectCategory("Ops");
    EXPECT_EQ(filters.pack, allPacks) << "a category clears the pack";
    EXPECT_EQ(ids(filters), "c");
    filters.selectPack("Pitch");
    EXPECT_EQ(filters.category, allCategories) << "a pack clears the category";
    filters.selectCategory(allCategories);
    EXPECT_EQ(filters.pack, "Pitch") << "going back to all keeps the other";
    filters.correct({allCategories, "Ops"}, {"Only"});
    EXPECT_EQ(filters.pack, "Only");
    filters.category = "Gone";
    filters.correct({}, {"Only"});
    EXPECT_EQ(filters.category, allCategories);
}

class TemplateSyncTest : public testing::PlatformTest {
protected:
    void SetUp() override {
        PlatformTest::SetUp();
        fake.process->set("/usr/sbin/system_profiler", {true, {}, "      Hardware UUID: UUID-1\n"});
    }
    static HttpResponse ok(std::string body) { return {200, {}, std::move(body), std::nullopt}; }

    void serveCatalogue() {
        fake.http->route(cdn + "manifest.json",
                         ok(R"({"slides":[)"
                            R"({"id":"t1","title":"One","thumb":"thumbs/one.png","pptx":"decks/one.pptx","cat":"Sales","pack":"Q1"},)"
                            R"({"id":"t2","title":"Two","thumb":"/thumbs/two.png/","pptx":"https://files.test/two.pptx","cat":"","pack":"Q1"},)"
                            R"({"id":"t1","title":"Again","thumb":"thumbs/one.png","pptx":"decks/one.pptx","cat":"Sales","pack":"Q1"},)"
                            R"({"id":"t3","title":"Three","thumb":"https://cdn.test/thumbs/three.png","pptx":"decks/three.pptx","cat":"Ops","pack":""}]})"));
        for (const char* name : {"one", "two", "three"}) fake.http->route(cdn + "thumbs/" + name + ".png", ok(std::string("png ") + name));
    }
    std::vector<std::string> requested() {
        std::vector<std::string> urls;
        for (const auto& request : fake.http->requests()) urls.push_back(request.url);
        return urls;
    }
    std::vector<std::string> ids(const std::vector<TemplateMetadataItem>& items) {
        std::vector<std::string> out;
        for (const auto& item : items) out.push_back(item.id);
        return out;
    }
    bool logged(const std::string& level, const std::string& text) {
        const auto lines = fake.log->linesWithChannel();
        const std::string line = "logger com.velmora.TemplateLibrary/Thumbnail " + level + ": " + text;
        return std::find(lines.begin(), lines.end(), line) != lines.end();
    }

    const std::string cdn = "https://cdn.test/";
};

TEST_F(TemplateSyncTest, FetchesTheManifestThenEachThumbnailInTurn) {
    serveCatalogue();
    auto model = TemplateLibraryViewModel::make();
    std::vector<bool> loading;
    model->isLoading.observe([&](bool value) { loading.push_back(value); });
    fake.dispatch->runUntilIdle();
    EXPECT_EQ(loading, (std::vector<bool>{true, false}));
    EXPECT_EQ(requested(), (std::vector<std::string>{cdn + "manifest.json", cdn + "thumbs/one.png", cdn + "thumbs/two.png",
                                                     "https://cdn.test/thumbs/three.png"}));
    const auto items = model->items.get();
    EXPECT_EQ(ids(items), (std::vector<std::string>{"t1", "t2", "t3"})) << "the equal slide is kept once";
    EXPECT_EQ(items[0].thumb, templateThumbnailsFolder() + "/one.png");
    EXPECT_EQ(items[0].pptx, cdn + "decks/one.pptx");
    EXPECT_EQ(items[1].pptx, "https://files.test/two.pptx");
    EXPECT_TRUE(items[1].cat.empty());
    EXPECT_EQ(platform::files().read(items[1].thumb), "png two");
    EXPECT_EQ(model->categories.get(), (std::vector<std::string>{allCategories, "Ops", "Sales"}));
    EXPECT_EQ(model->packs.get(), (std::vector<std::string>{allPacks, "Q1"}));
    EXPECT_TRUE(logged("debug", "Manifest loaded from → " + cdn + "manifest.json"));
    EXPECT_TRUE(logged("notice", "Total remote thumbnails loaded → 3"));
    EXPECT_TRUE(logged("notice", "Categories loaded → [\"All Categories\", \"Ops\", \"Sales\"]"));
}

TEST_F(TemplateSyncTest, AWarmStartAsksForTheManifestAlone) {
    serveCatalogue();
    platform::FilesPort& files = *fake.files;
    ASSERT_TRUE(files.createDirectories(templateThumbnailsFolder()));
    for (const char* name : {"one", "two", "three"}) ASSERT_TRUE(files.write(templateThumbnailsFolder() + "/" + name + ".png", "old", false));
    auto model = TemplateLibraryViewModel::make();
    fake.dispatch->runUntilIdle();
    EXPECT_EQ(requested(), std::vector<std::string>{cdn + "manifest.json"});
    EXPECT_EQ(model->items.get().size(), 3u);
    EXPECT_EQ(platform::files().read(templateThumbnailsFolder() + "/one.png"), "old") << "a cached file is never refreshed";
}

TEST_F(TemplateSyncTest, AFailedThumbnailLeavesItsTemplateOutAndTheRestGoOn) {
    serveCatalogue();
    fake.http->fault(cdn + "thumbs/two.png", "The network connection was lost.");
    auto model = TemplateLibraryViewModel::make();
    fake.dispatch->runUntilIdle();
    EXPECT_EQ(ids(model->items.get()), (std::vector<std::string>{"t1", "t3"}));
    EXPECT_TRUE(logged("error", "Thumbnail download failed for t2 → The network connection was lost."));
    EXPECT_EQ(model->packs.get(), (std::vector<std::string>{allPacks, "Q1"}));
}

TEST_F(TemplateSyncTest, ABadManifestLeavesOnlyTheAllEntries) {
    fake.http->route(cdn + "manifest.json", ok(R"({"slides":[{"id":"x"}]})"));
    auto model = TemplateLibraryViewModel::make();
    fake.dispatch->runUntilIdle();
    EXPECT_TRUE(model->items.get().empty());
    EXPECT_EQ(model->categories.get(), std::vector<std::string>{allCategories});
    EXPECT_FALSE(model->isLoading.get());
    const auto lines = fake.log->lines();
    EXPECT_TRUE(std::any_of(lines.begin(), lines.end(), [](const auto& l) { return l.rfind("Remote manifest failed → ", 0) == 0; }));
}

TEST_F(TemplateSyncTest, ATapDownloadsOnceInsertsAndReportsEvenAFailure) {
    serveCatalogue();
    fake.http->route(cdn + "decks/one.pptx", ok("deck one"));
    fake.http->fault(cdn + "decks/three.pptx", "The request timed out.");
    fake.http->route("https://service.test/get_downloadTemplate", {404, {}, "no such slide", std::nullopt});
    auto model = TemplateLibraryViewModel::make();
    auto pane = std::make_shared<TemplateLibraryTaskpane>(model);
    fake.dispatch->runUntilIdle();
    const auto items = model->items.get();
    ASSERT_EQ(items.size(), 3u);
    pane->keepSourceFormatting = true;
    pane->tap(items[0]);
    fake.dispatch->runUntilIdle();
    pane->tap(items[0]);
    fake.dispatch->runUntilIdle();

    const std::string local = templateSlidesFolder() + "/one.pptx";
    EXPECT_EQ(platform::files().read(local), "deck one");
    const std::string insert = "tell application \"Microsoft PowerPoint\"\n    run VB macro macro name "
                               "\"InsertFromTemplateLibrary\" list of parameters {\"" + local + "\", \"True\"}\nend tell";
    EXPECT_EQ(fake.script->scripts(), (std::vector<std::string>{insert, insert}));
    const auto urls = requested();
    EXPECT_EQ(std::count(urls.begin(), urls.end(), cdn + "decks/one.pptx"), 1) << "the second insert uses the cache";
    const std::string usage = "https://service.test/get_downloadTemplate?licenseKey=UUID-1&slideId=t1";
    EXPECT_EQ(std::count(urls.begin(), urls.end(), usage), 2);
    EXPECT_TRUE(logged("error", "[Usage] Error 404: no such slide"));

    fake.http->route("https://service.test/get_downloadTemplate", ok("\xFF\xFE"));
    pane->tap(items[2]);
    fake.dispatch->runUntilIdle();
    EXPECT_EQ(fake.script->scripts().size(), 2u) << "nothing is inserted when the download fails";
    EXPECT_TRUE(fake.log->contains("❌ Failed to download slide: The request timed out."));
    EXPECT_EQ(requested().back(), "https://service.test/get_downloadTemplate?licenseKey=UUID-1&slideId=t3");
    EXPECT_TRUE(logged("notice", "[Usage] Success: <empty>"));
}

TEST_F(TemplateSyncTest, AServiceAddressWithoutASchemeLogsTheUsageAndSendsNothing) {
    serveCatalogue();
    fake.http->route(cdn + "decks/one.pptx", ok("deck one"));
    fake.config->service = "service.test";
    auto model = TemplateLibraryViewModel::make();
    auto pane = std::make_shared<TemplateLibraryTaskpane>(model);
    fake.dispatch->runUntilIdle();
    const auto before = fake.http->requests().size();
    pane->tap(model->items.get().at(0));
    fake.dispatch->runUntilIdle();
    EXPECT_EQ(fake.script->scripts().size(), 1u) << "the slide still goes in";
    EXPECT_TRUE(logged("error", "[Usage] Failed to construct URL"));
    EXPECT_EQ(fake.http->requests().size(), before + 1) << "the download alone";
}

TEST_F(TemplateSyncTest, AnUnwritableCacheFailsTheSyncOrTheDownloadAndNothingElse) {
    serveCatalogue();
    // A file where the cache folders would go: neither can be made.
    platform::FilesPort& files = *fake.files;
    const std::string library = platform::files().applicationSupportDirectory() + "/Microsoft/Velmora/User/TemplateLibrary";
    ASSERT_TRUE(files.createDirectories(platform::files().applicationSupportDirectory() + "/Microsoft/Velmora/User"));
    ASSERT_TRUE(files.write(library, "in the way", false));
    auto model = TemplateLibraryViewModel::make();
    fake.dispatch->runUntilIdle();
    EXPECT_TRUE(model->items.get().empty());
    EXPECT_FALSE(model->isLoading.get());
    const auto lines = fake.log->lines();
    EXPECT_TRUE(std::any_of(lines.begin(), lines.end(), [](const auto& l) { return l.rfind("Remote manifest failed → ", 0) == 0; }));

    auto pane = std::make_shared<TemplateLibraryTaskpane>(model);
    SlideManifestItem slide{"t1", "", "", "", "", ""};
    pane->tap(TemplateMetadataItem(slide, "thumb", cdn + "decks/one.pptx"));
    fake.dispatch->runUntilIdle();
    EXPECT_TRUE(fake.script->scripts().empty());
    const auto after = fake.log->lines();
    EXPECT_TRUE(std::any_of(after.begin(), after.end(), [](const auto& l) { return l.rfind("❌ Failed to download slide: ", 0) == 0; }));
}

TEST_F(TemplateSyncTest, TenThousandTemplatesComeInOrder) {
    std::string manifest = R"({"slides":[)";
    for (int i = 0; i < 10000; ++i) {
        const std::string id = "t" + std::to_string(i);
        manifest += (i ? "," : "") + std::string(R"({"id":")") + id + R"(","title":"","thumb":"th/)" + id +
                    R"(.png","pptx":"p/)" + id + R"(.pptx","cat":"c)" + std::to_string(i % 7) + R"(","pack":""})";
        fake.http->route(cdn + "th/" + id + ".png", ok("png"));
    }
    fake.http->route(cdn + "manifest.json", ok(manifest + "]}"));
    auto model = TemplateLibraryViewModel::make();
    fake.dispatch->runUntilIdle();
    const auto items = model->items.get();
    ASSERT_EQ(items.size(), 10000u);
    EXPECT_EQ(items.front().id, "t0");
    EXPECT_EQ(items.back().id, "t9999");
    EXPECT_EQ(model->categories.get().size(), 8u);
}

TEST_F(TemplateSyncTest, TheOverlayCoversThePaneWhileTheSyncRuns) {
    serveCatalogue();
    auto model = TemplateLibraryViewModel::make();
    auto pane = std::make_shared<TemplateLibraryTaskpane>(model);
    auto overlaid = [&] {
        const auto tree = pane->body(250);
        return ui::findNode(tree, [](const ui::Node& n) { return n.text == "progress.indicator"; }) != nullptr;
    };
    fake.dispatch->main.runDue();  // the main queue turns before any reply
    EXPECT_TRUE(model->isLoading.get());
    EXPECT_TRUE(overlaid());
    // A veil of white the pane still shows through, under a red spinner.
    const auto tree = pane->body(250);
    const ui::Node* overlay = ui::findNode(tree, [](const ui::Node& n) {
        return n.kind == ui::Kind::zstack && n.children.size() == 2 && n.children[1].text == "progress.indicator";
    });
    ASSERT_TRUE(overlay);
    EXPECT_EQ(overlay->children[0].mod.foreground, ui::colors::white.opacity(0.8));
    EXPECT_EQ(overlay->children[1].mod.foreground, ui::colors::red);
    EXPECT_EQ(overlay->children[1].mod.scale, 1.8);
    EXPECT_EQ(model->categories.get(), std::vector<std::string>{allCategories}) << "the lists wait for the end";
    fake.dispatch->runUntilIdle();
    EXPECT_FALSE(overlaid());
}

TEST_F(TemplateSyncTest, APreviewOpensHalfASecondAfterThePointerComesIn) {
    serveCatalogue();
    auto pane = std::make_shared<TemplateLibraryTaskpane>(TemplateLibraryViewModel::make());
    fake.dispatch->runUntilIdle();
    pane->hover("t1", true);
    fake.dispatch->advance(0.4);
    EXPECT_FALSE(pane->showsPopover("t1"));
    fake.dispatch->advance(0.1);
    EXPECT_TRUE(pane->showsPopover("t1"));
    pane->hover("t1", false);
    EXPECT_FALSE(pane->showsPopover("t1"));
    pane->hover("t1", true);
    fake.dispatch->advance(0.3);
    pane->hover("t1", false);
    fake.dispatch->advance(1);
    EXPECT_FALSE(pane->showsPopover("t1")) << "leaving cancels the pending preview";

    // The cells of the drawn pane pass the pointer on.
    TemplateLibraryTaskpane::hasActivatedPreview() = true;
    auto hosting = ui::HostingView::make([pane](double width) { return pane->body(width); });
    pane->attach(hosting);
    hosting->setFrame({0, 0, 250, 760});
    hosting->layout();
    auto access = makeContentAccess([&] { return hosting; });
    ASSERT_TRUE(access.hover("t2", 1, true));
    fake.dispatch->advance(0.5);
    EXPECT_TRUE(pane->showsPopover("t2"));
    ASSERT_TRUE(access.hover("t2", 1, false));
    EXPECT_FALSE(pane->showsPopover("t2"));

    // The first cell ever to appear flashes its preview once; no other does.
    TemplateLibraryTaskpane::hasActivatedPreview() = false;
    pane->cellAppeared("t2");
    pane->cellAppeared("t3");
    auto other = std::make_shared<TemplateLibraryTaskpane>(TemplateLibraryViewModel::make());
    other->cellAppeared("t2");
    fake.dispatch->advance(0.5);
    EXPECT_TRUE(pane->showsPopover("t2"));
    EXPECT_FALSE(pane->showsPopover("t3"));
    EXPECT_FALSE(other->showsPopover("t2"));
    fake.dispatch->advance(0.1);
    EXPECT_FALSE(pane->showsPopover("t2"));
}

}  // namespace
}  // namespace velmora
