#include <gtest/gtest.h>

#include <cmath>
#include <string>

#include "bridge/Exports.h"
#include "bridge/HardwareUUID.h"
#include "fake/FakePlatform.h"
#include "taskpane/PaneAccess.h"
#include "websearch/Icons.h"
#include "websearch/Images.h"
#include "websearch/SearchPages.h"

namespace velmora {
namespace {

using platform::HttpResponse;

TEST(SearchPages, ValuesGoInVerbatimAndOnce) {
    const std::string page = iconSearchPage(R"(K"1{{API_BASE}})", "https://svc.test/api/v2/icons");
    EXPECT_NE(page.find(R"(const LICENSE_KEY = "K"1{{API_BASE}}";)"), std::string::npos)
        << "the key is neither escaped nor read for markers";
    EXPECT_NE(page.find(R"(const API_BASE = "https://svc.test/api/v2/icons";)"), std::string::npos);
    EXPECT_EQ(page.find("{{LICENSE_KEY}}"), std::string::npos);
    const std::string photos = imageSearchPage("http://127.0.0.1:9/api");
    EXPECT_NE(photos.find(R"("http://127.0.0.1:9/api/get_searchImage")"), std::string::npos);
    EXPECT_EQ(photos.find("{{"), std::string::npos);
}

TEST(SearchPages, MessageBodiesPrintAsThePlatformPrintsThem) {
    const auto body = nlohmann::json::parse(R"({"provider":"line art","id":"12","n":[true,null]})");
    EXPECT_EQ(describeMessageBody(body), "{\n    id = 12;\n    n =     (\n        1,\n        \"<null>\"\n    );\n"
                                         "    provider = \"line art\";\n}");
    EXPECT_EQ(messageBodyType(body), "__NSDictionaryM");
    EXPECT_EQ(describeMessageBody(true), "1");
    EXPECT_EQ(messageBodyType(true), "__NSCFBoolean");
    EXPECT_EQ(describeMessageBody("plain text"), "plain text");
}

class IconTest : public testing::PlatformTest {
protected:
    void SetUp() override {
        PlatformTest::SetUp();
        setGlobalHardwareUUID("HW-1");
        fake.config->service = "https://svc.test/api";
        currentIconStyle() = IconStyle::normal;
        auto& model = IconViewModel::shared();
        model.isDownloading.set(false);
        model.exhaustedVisible.set(false);
        model.remainingDownloadsText.set("Loading");
        quota(R"({"limit":50,"remaining":49})");
    }
    void quota(const std::string& body, int status = 200) {
        fake.http->route("https://svc.test/api/v2/icons/quota", HttpResponse{status, {}, body, std::nullopt});
    }
    void asset(const std::string& body, int status = 200) {
        fake.http->route("https://svc.test/api/v2/icons/asset", HttpResponse{status, {}, body, std::nullopt});
    }
    void click(const std::string& body) {
        IconCoordinator::userContentController("iconClicked", body);
        fake.dispatch->runUntilIdle();
    }
    std::string cached(const std::string& name) { return iconCacheFolder() + "/" + name; }
    IconViewModel& model() { return IconViewModel::shared(); }
};

TEST_F(IconTest, TheCallsCarryTheirKeysInOrderEncodedAsValues) {
    EXPECT_EQ(assetURL("K 1", "a&b", "c=d+e"),
              "https://svc.test/api/v2/icons/asset?licenseKey=K%201&provider=a%26b&iconId=c%3Dd+e&color=000000");
    EXPECT_EQ(quotaURL("K/1?"), "https://svc.test/api/v2/icons/quota?licenseKey=K/1?");
    fake.config->service = "not a base";
    EXPECT_FALSE(assetURL("k", "p", "i"));
    EXPECT_EQ(trackDownloadURL("x"), std::nullopt);
    fake.config->service = "https://svc.test/api";
    EXPECT_EQ(trackDownloadURL("https://cdn.test/p/1/download?ixid=a b&x=1"),
              "https://svc.test/api/get_trackDownload?downloadLocation=https://cdn.test/p/1/download?ixid=a%20b&x=1");
}

TEST_F(IconTest, AClickDownloadsOnceAndThenInsertsFromTheCache) {
    asset("<svg/>");
    click(R"({"provider":"lineart","id":"42"})");
    EXPECT_TRUE(fake.log->contains("Icon clicked with provider: lineart, id: 42"));
    EXPECT_TRUE(fake.log->contains("Created directory at: " + iconCacheFolder()));
    EXPECT_EQ(fake.files->read(cached("lineart-42.svg"), nullptr), "<svg/>");
    EXPECT_TRUE(fake.log->contains("Icon Download: SVG saved at " + cached("lineart-42.svg")));
    EXPECT_NE(fake.script->scripts().back().find(R"(list of parameters {"lineart-42.svg", "Normal"})"), std::string::npos)
        << "the file's name alone, and the style";
    EXPECT_EQ(model().remainingDownloadsText.get(), "49/50 remaining for month");
    EXPECT_FALSE(model().isDownloading.get());
    const auto requests = fake.http->requests().size();
    EXPECT_EQ(fake.http->requests().at(0).url,
              "https://svc.test/api/v2/icons/asset?licenseKey=HW-1&provider=lineart&iconId=42&color=000000");

    currentIconStyle() = IconStyle::outline;
    quota(R"({"limit":50,"remaining":1})");
    click(R"({"provider":"lineart","id":"42"})");
    EXPECT_EQ(fake.http->requests().size(), requests) << "a cached icon costs no request";
    EXPECT_TRUE(fake.log->contains("SVG already exists locally. Inserting from local file."));
    EXPECT_NE(fake.script->scripts().back().find(R"({"lineart-42.svg", "Outline"})"), std::string::npos);
    EXPECT_EQ(model().remainingDownloadsText.get(), "49/50 remaining for month") << "and leaves the count";
}

TEST_F(IconTest, AssetFailuresEndQuietlyAndOnlyTheQuotaRaisesTheNote) {
    asset(R"({"error":{"code":"DOWNLOAD_QUOTA_EXHAUSTED","message":"Used up","retryable":false}})", 429);
    click(R"({"provider":"p","id":"1"})");
    EXPECT_TRUE(fake.log->contains("Icon Download: DOWNLOAD_QUOTA_EXHAUSTED - Used up"));
    EXPECT_TRUE(model().exhaustedVisible.get());
    EXPECT_TRUE(fake.script->scripts().empty());
    EXPECT_EQ(model().remainingDownloadsText.get(), "Loading");
    EXPECT_FALSE(model().isDownloading.get()) << "the overlay never sticks";

    asset("<html>oops</html>", 502);
    click(R"({"provider":"p","id":"2"})");
    EXPECT_TRUE(fake.log->contains("Icon Download: HTTP 502 from asset endpoint"));
    asset(R"({"error":{}})", 500);
    click(R"({"provider":"p","id":"3"})");
    EXPECT_TRUE(fake.log->contains("Icon Download: UNKNOWN - "));
    fake.http->fault("https://svc.test/api/v2/icons/asset", "The network connection was lost.");
    click(R"({"provider":"p","id":"4"})");
    EXPECT_TRUE(fake.log->contains("Icon Download: Error downloading icon: The network connection was lost."));

    asset("<svg/>");
    click(R"({"provider":"a/b","id":"5"})");
    const auto lines = fake.log->lines();
    EXPECT_TRUE(std::any_of(lines.begin(), lines.end(), [](const std::string& l) {
        return l.rfind("Icon Download: Error writing SVG file: ", 0) == 0;
    })) << "a slash reaches into a folder that does not exist";
    EXPECT_TRUE(fake.script->scripts().empty());

    click(R"({"provider":"p","id":6})");
    EXPECT_TRUE(fake.log->contains("Icon clicked: unexpected message body {\n    id = 6;\n    provider = p;\n}"));
    click("not json");
    IconCoordinator::userContentController("quotaExhausted", "true");
    fake.dispatch->runUntilIdle();
    EXPECT_TRUE(fake.log->contains("Received message: quotaExhausted with body: 1 of type: __NSCFBoolean"));
}

TEST_F(IconTest, EveryQuotaReplyEndsInOneTextAndFlag) {
    struct Case {
        std::string body;
        std::string text;
        bool exhausted;
        std::string line;
    };
    const Case cases[] = {
        {R"({"limit":50,"remaining":0})", "0/50 remaining for month", true, ""},
        {R"({"limit":50.0,"remaining":5,"error":{"code":"DOWNLOAD_QUOTA_EXHAUSTED"}})", "5/50 remaining for month", false, ""},
        {R"({"error":{"code":"DOWNLOAD_QUOTA_EXHAUSTED","message":"m"}})", "Unable to fetch remaining downloads.", true,
         "Icon Quota: DOWNLOAD_QUOTA_EXHAUSTED - m"},
        {R"({"error":{"message":7}})", "Unable to fetch remaining downloads.", false, "Icon Quota: UNKNOWN - Unknown error"},
        {R"({"limit":50,"remaining":"5"})", "Error: Unexpected response structure", false, ""},
        {R"([1,2])", "Error: Unable to parse JSON", false, ""},
        {"", "Error: Unable to parse JSON", false, ""},
    };
    for (const auto& c : cases) {
        quota(c.body, 500);
        int calls = 0;
        std::string text;
        bool exhausted = !c.exhausted;
        updateRemainingDownloads([&](std::string t, bool e) {
            ++calls;
            text = std::move(t);
            exhausted = e;
        });
        fake.dispatch->runUntilIdle();
        EXPECT_EQ(calls, 1) << c.body;
        EXPECT_EQ(text, c.text) << c.body;
        EXPECT_EQ(exhausted, c.exhausted) << c.body;
        if (!c.line.empty()) {
            EXPECT_TRUE(fake.log->contains(c.line)) << c.body;
        }
    }
    fake.http->fault("https://svc.test/api/v2/icons/quota", "offline");
    std::string text;
    updateRemainingDownloads([&](std::string t, bool) { text = std::move(t); });
    fake.dispatch->runUntilIdle();
    EXPECT_EQ(text, "Unable to fetch remaining downloads.");
    EXPECT_TRUE(fake.log->contains("Icon Quota: Error fetching quota: offline"));
    fake.config->service = "";
    updateRemainingDownloads([&](std::string t, bool) { text = std::move(t); });
    fake.dispatch->runUntilIdle();
    EXPECT_EQ(text, "Error: Invalid URL");
}

TEST_F(IconTest, ThePaneScalesItsTogglesAndShowsTheNoteAndTheOverlay) {
    std::shared_ptr<platform::View> shown;
    IconContentManager::loadIconView([&](std::shared_ptr<platform::View> view) { shown = std::move(view); });
    auto hosting = std::dynamic_pointer_cast<ui::HostingView>(shown);
    ASSERT_TRUE(hosting);
    hosting->setFrame({0, 0, 500, 800});
    hosting->layout();
    fake.dispatch->runUntilIdle();
    EXPECT_TRUE(ui::findText(hosting->tree(), "49/50 remaining for month")) << "the pane asks for the quota as it appears";
    const ui::Node* fill = ui::findActionable(hosting->tree(), "Fill");
    ASSERT_TRUE(fill);
    const ui::Node* framed = ui::findNode(*fill, [](const ui::Node& n) { return n.mod.frame.width.has_value(); });
    ASSERT_TRUE(framed);
    EXPECT_EQ(*framed->mod.frame.width, 60 * 2.0);
    EXPECT_EQ(*framed->mod.frame.height, 70 * 2.0);
    // The column under any overlay fills the pane from its top left corner.
    const ui::Node& column = hosting->tree().children.at(0);
    EXPECT_EQ(column.kind, ui::Kind::vstack);
    EXPECT_EQ(column.spacing, 10);
    EXPECT_EQ(column.mod.padding.top, 5);
    EXPECT_TRUE(std::isinf(column.mod.frame.maxWidth.value_or(0)));
    EXPECT_TRUE(std::isinf(column.mod.frame.maxHeight.value_or(0)));
    auto access = makeContentAccess([&] { return hosting; });
    ASSERT_TRUE(access.tap("Fill", 1));
    EXPECT_EQ(currentIconStyle().load(), IconStyle::fill);
    EXPECT_EQ(ui::findText(hosting->tree(), "Fill")->mod.font->weight, ui::FontWeight::bold);

    EXPECT_FALSE(ui::findText(hosting->tree(), "Downloading Icon..."));
    model().isDownloading.set(true);
    model().exhaustedVisible.set(true);
    EXPECT_TRUE(ui::findText(hosting->tree(), "Downloading Icon..."));
    EXPECT_TRUE(ui::findText(hosting->tree(),
                             "You used up all your Icon Downloads this month. The downloads will reset on the 1st of "
                             "the next month."));
    // The page went into the view once, with the licence key in it.
    ASSERT_EQ(fake.web->views().size(), 1u);
    EXPECT_NE(fake.web->views()[0]->html().find(R"(const LICENSE_KEY = "HW-1";)"), std::string::npos);
    EXPECT_TRUE(fake.web->views()[0]->post("quotaExhausted", "true"));
}

TEST_F(IconTest, ThePhotoPaneFillsWithItsPageAndVeilsItWhileDownloading) {
    std::shared_ptr<platform::View> shown;
    ImageContentManager::loadImageView([&](std::shared_ptr<platform::View> view) { shown = std::move(view); });
    auto hosting = std::dynamic_pointer_cast<ui::HostingView>(shown);
    ASSERT_TRUE(hosting);
    hosting->setFrame({0, 0, 250, 760});
    hosting->layout();
    const ui::Node& column = hosting->tree().children.at(0);
    EXPECT_EQ(column.spacing, 10);
    EXPECT_EQ(column.mod.padding.top, 5);
    EXPECT_TRUE(std::isinf(column.mod.frame.maxWidth.value_or(0)));
    EXPECT_TRUE(std::isinf(column.mod.frame.maxHeight.value_or(0)));
    EXPECT_EQ(column.mod.frame.alignment, ui::Alignment::topLeading);
    ImageViewModel::shared().isDownloading.set(true);
    EXPECT_TRUE(ui::findText(hosting->tree(), "Downloading Image..."));
    ImageViewModel::shared().isDownloading.set(false);
    EXPECT_FALSE(ui::findText(hosting->tree(), "Downloading Image..."));
}

TEST_F(IconTest, APhotoClickReportsTheDownloadThenInsertsWhateverTheReport) {
    const std::string location = "https://cdn.test/photos/7/download?ixid=abc&x=1";
    const std::string message =
        R"({"command":"downloadImage","imageUrl":"https://cdn.test/photos/7.png?fit=max&w=1500&dpr=2","downloadLocation":")" +
        location + R"("})";
    fake.http->fault("https://svc.test/api/get_trackDownload", "offline");
    ImageCoordinator::userContentController("downloadImage", message);
    fake.dispatch->runUntilIdle();
    EXPECT_EQ(fake.http->requests().back().url,
              "https://svc.test/api/get_trackDownload?downloadLocation=https://cdn.test/photos/7/download?ixid=abc&x=1");
    EXPECT_TRUE(fake.log->contains("Download tracking failed: offline"));
    ASSERT_EQ(fake.script->scripts().size(), 1u);
    EXPECT_NE(fake.script->scripts()[0].find(
                  R"(run VB macro macro name "InsertImageIntoPowerPoint" list of parameters {"https://cdn.test/photos/7.png?fit=max&w=1500&dpr=2"})"),
              std::string::npos);
    EXPECT_TRUE(fake.log->contains("IMAGES: ✅ downloadImage payload → imageUrl: https://cdn.test/photos/7.png?fit=max&w=1500&dpr=2, "
                                   "downloadLocation: " + location));

    for (const std::string& dropped : {std::string(R"({"command":"other","imageUrl":"u","downloadLocation":"l"})"),
                                      std::string(R"({"command":"downloadImage","imageUrl":1,"downloadLocation":"l"})"),
                                      std::string("[]")}) {
        ImageCoordinator::userContentController("downloadImage", dropped);
    }
    ImageCoordinator::userContentController("other", message);
    fake.dispatch->runUntilIdle();
    EXPECT_EQ(fake.script->scripts().size(), 1u) << "anything else is dropped";
}

}  // namespace
}  // namespace velmora
