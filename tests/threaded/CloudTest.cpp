// The cloud stand-in seen through the library's own libcurl adapter: the
// fixtures it serves, the record it keeps, and each fault as a client meets it.

#include <curl/curl.h>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <chrono>
#include <filesystem>
#include <set>
#include <thread>

#include "Cloud.h"
#include "Fixtures.h"
#include "hosts/linux/LinuxAdapters.h"

namespace velmora::cloud {
namespace {

using hosts::linuxhost::CurlHttp;

// libcurl's global set-up, once, before any client thread.
const bool curlReady = curl_global_init(CURL_GLOBAL_DEFAULT) == CURLE_OK;

class CloudTest : public ::testing::Test {
protected:
    platform::HttpResponse get(const std::string& url, double timeout = 5) {
        return CurlHttp::perform({"GET", url, {}, {}, timeout});
    }
    platform::HttpResponse cdn(const std::string& file) { return get(cloud.cdnBaseURL() + file); }
    void fault(std::vector<std::string> words) { cloud.addFault(parseFault(words)); }

    Cloud cloud;
};

TEST_F(CloudTest, ServesTheCatalogueItsManifestNamesInEveryLocationForm) {
    auto manifest = cdn("manifest.json");
    ASSERT_EQ(manifest.status, 200);
    EXPECT_EQ(manifest.headers["content-type"], "application/json");
    auto json = nlohmann::json::parse(manifest.body);
    const auto& slides = json.at("slides");
    ASSERT_EQ(slides.size(), 12u);

    std::set<std::string> forms, thumbNames, thumbBodies, cats, packs;
    for (const auto& slide : slides) {
        for (const char* key : {"id", "title", "thumb", "pptx", "cat", "pack"}) ASSERT_TRUE(slide.at(key).is_string());
        for (const char* key : {"thumb", "pptx"}) {
            const std::string location = slide[key];
            const bool absolute = location.rfind("http://", 0) == 0;
            forms.insert(absolute ? "absolute" : location.front() == '/' ? "slash" : "relative");
            // Where the library would fetch it: absolute as it stands, else below the base without leading slashes.
            const std::string url = absolute ? location : cloud.cdnBaseURL() + location.substr(location.find_first_not_of('/'));
            auto file = get(url);
            ASSERT_EQ(file.status, 200) << url;
            if (std::string(key) == "thumb") {
                EXPECT_EQ(file.headers["content-type"], "image/png");
                EXPECT_EQ(file.body.substr(1, 3), "PNG");
                thumbNames.insert(location.substr(location.rfind('/') + 1));
                thumbBodies.insert(file.body);
            } else {
                EXPECT_NE(file.body.find(slide["id"].get<std::string>()), std::string::npos);
            }
        }
        cats.insert(slide["cat"].get<std::string>());
        packs.insert(slide["pack"].get<std::string>());
    }
    EXPECT_EQ(forms, (std::set<std::string>{"absolute", "slash", "relative"}));
    EXPECT_EQ(thumbNames.size(), 11u);   // two share a file name...
    EXPECT_EQ(thumbBodies.size(), 12u);  // ...but not a picture
    EXPECT_TRUE(cats.count("") && cats.size() >= 3);
    EXPECT_TRUE(packs.count("") && packs.size() >= 3);

    // Generated names are drawn on demand beyond the catalogue; others are 404 pages.
    EXPECT_EQ(cdn("thumbs/tpl-9999.png").status, 200);
    EXPECT_EQ(cdn("thumbs/tpl-99.png").status, 404);
    auto missing = cdn("../../etc/passwd");
    EXPECT_EQ(missing.status, 404);
    EXPECT_EQ(missing.headers["content-type"], "text/html");
}

TEST_F(CloudTest, FixturesAreTheSameEachRun) {
    EXPECT_EQ(manifestText(12, "http://127.0.0.1:1/cdn/"), manifestText(12, "http://127.0.0.1:1/cdn/"));
    EXPECT_EQ(thumbnailPNG(7), thumbnailPNG(7));
    EXPECT_NE(thumbnailPNG(7), thumbnailPNG(8));
    Cloud second;
    EXPECT_NE(second.port(), cloud.port());
    EXPECT_EQ(cdn("thumbs/tpl-0004.png").body, get(second.cdnBaseURL() + "thumbs/tpl-0004.png").body);
}

TEST_F(CloudTest, RecordsEveryRequestInOrderWithItsQueryRawAndDecoded) {
    EXPECT_EQ(get(cloud.serviceBaseURL() + "/get_downloadTemplate?licenseKey=A%20B%2BC&slideId=tpl-0001").body,
              R"({"ok":true})");
    for (const char* route : {"/v2/icons/search?q=x", "/v2/icons/asset", "/v2/icons/quota", "/get_searchImage",
                              "/get_trackDownload"}) {
        EXPECT_NE(get(cloud.serviceBaseURL() + route).status, 0) << route;
    }
    cdn("nothing-here");
    auto requests = cloud.requests();
    ASSERT_EQ(requests.size(), 7u);
    const auto& usage = requests[0];
    EXPECT_EQ(usage.method, "GET");
    EXPECT_EQ(usage.path, "/api/get_downloadTemplate");
    EXPECT_EQ(usage.route, "usage");
    EXPECT_EQ(usage.rawQuery, "licenseKey=A%20B%2BC&slideId=tpl-0001");
    ASSERT_EQ(usage.query.size(), 2u);
    EXPECT_EQ(usage.query[0].rawValue, "A%20B%2BC");
    EXPECT_EQ(usage.query[0].value, "A B+C");
    EXPECT_EQ(usage.query[1].key, "slideId");
    EXPECT_EQ(describe(usage), "GET /api/get_downloadTemplate licenseKey=A B+C slideId=tpl-0001");
    std::vector<std::string> routes;
    for (const auto& request : requests) routes.push_back(request.route);
    EXPECT_EQ(routes, (std::vector<std::string>{"usage", "icons-search", "icons-asset", "icons-quota", "images",
                                                "track", "cdn"}));
    cloud.clearRequests();
    EXPECT_TRUE(cloud.requests().empty());
}

TEST_F(CloudTest, EachFaultKindAsTheAdapterMeetsIt) {
    fault({"manifest", "status", "503", "1"});
    auto unavailable = cdn("manifest.json");
    EXPECT_EQ(unavailable.status, 503);
    EXPECT_NE(unavailable.body.find("503 Service Unavailable"), std::string::npos);

    fault({"thumb", "status", "404", "1"});
    auto notFound = cdn("thumbs/tpl-0001.png");
    EXPECT_EQ(notFound.status, 404);
    EXPECT_EQ(notFound.headers["content-type"], "text/html");

    fault({"manifest", "garbage", "1"});
    auto garbage = cdn("manifest.json");
    EXPECT_EQ(garbage.status, 200);
    EXPECT_TRUE(nlohmann::json::parse(garbage.body, nullptr, false).is_discarded());

    const auto whole = cdn("slides/tpl-0002.pptx").body;
    fault({"pptx", "half", "1"});
    auto half = cdn("slides/tpl-0002.pptx");
    EXPECT_EQ(half.status, 200);
    EXPECT_EQ(half.body, whole.substr(0, whole.size() / 2));

    fault({"pptx", "truncate", "1"});
    auto truncated = cdn("slides/tpl-0002.pptx");
    EXPECT_EQ(truncated.status, 0);
    EXPECT_TRUE(truncated.transportError);

    fault({"usage", "drop", "1"});
    auto dropped = get(cloud.serviceBaseURL() + "/get_downloadTemplate");
    EXPECT_EQ(dropped.status, 0);
    EXPECT_TRUE(dropped.transportError);

    fault({"manifest", "delay", "0.3", "1"});
    const auto start = std::chrono::steady_clock::now();
    EXPECT_EQ(cdn("manifest.json").status, 200);
    EXPECT_GE(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(290));
    fault({"manifest", "delay", "2", "1"});
    auto late = get(cloud.cdnBaseURL() + "manifest.json", 0.3);  // the client gives up first
    EXPECT_TRUE(late.transportError);

    // After all of that, everything answers as usual again.
    EXPECT_TRUE(cloud.faults().empty());
    EXPECT_EQ(cdn("slides/tpl-0002.pptx").body, whole);
    EXPECT_EQ(get(cloud.serviceBaseURL() + "/get_downloadTemplate").status, 200);
}

TEST_F(CloudTest, ManifestFaultsChangeItsContent) {
    auto slides = [&] { return nlohmann::json::parse(cdn("manifest.json").body); };
    fault({"manifest", "wrongtype", "1"});
    EXPECT_TRUE(slides()["slides"][0]["id"].is_number());
    fault({"manifest", "missingkey", "1"});
    auto missing = slides();
    EXPECT_FALSE(missing["slides"][0].contains("pptx"));
    EXPECT_TRUE(missing["slides"][1].contains("pptx"));
    fault({"manifest", "empty", "1"});
    EXPECT_EQ(slides(), nlohmann::json::parse(R"({"slides":[]})"));
    fault({"/cdn/manifest.json", "slides", "10000", "1"});
    auto many = slides();
    ASSERT_EQ(many["slides"].size(), 10000u);
    EXPECT_EQ(many["slides"][9999]["id"], "tpl-10000");
    EXPECT_EQ(cdn("thumbs/tpl-10000.png").status, 200);  // its files are drawn when asked for
    EXPECT_EQ(slides()["slides"].size(), 12u);
}

TEST_F(CloudTest, CountedFaultsRunOutInOrderAlwaysFaultsStayUntilCleared) {
    fault({"thumb", "status", "500", "2"});
    fault({"thumb", "status", "404", "1"});
    std::vector<int> statuses;
    for (int i = 0; i < 4; ++i) statuses.push_back(cdn("thumbs/tpl-0001.png").status);
    EXPECT_EQ(statuses, (std::vector<int>{500, 500, 404, 200}));

    fault({"cdn", "status", "503"});
    for (int i = 0; i < 3; ++i) EXPECT_EQ(cdn("manifest.json").status, 503);
    EXPECT_EQ(get(cloud.serviceBaseURL() + "/get_downloadTemplate").status, 200);  // another route
    ASSERT_EQ(cloud.faults().size(), 1u);
    EXPECT_FALSE(cloud.faults()[0].times);
    cloud.clearFaults();
    EXPECT_EQ(cdn("manifest.json").status, 200);

    auto requests = cloud.requests();
    ASSERT_EQ(requests.size(), 9u);
    EXPECT_EQ(requests[0].fault, "status 500");
    EXPECT_EQ(requests[2].fault, "status 404");
    EXPECT_FALSE(requests[3].fault);
    EXPECT_FALSE(requests[8].fault);
}

TEST(CloudFaultWords, ReadsTheSyntaxAndRefusesWhatIsOff) {
    auto parsed = parseFault({"manifest", "slides", "500", "3"});
    EXPECT_EQ(parsed.kind, FaultKind::slides);
    EXPECT_EQ(parsed.value, 500);
    EXPECT_EQ(parsed.times, 3);
    EXPECT_EQ(parseFault({"/api/get_trackDownload", "drop"}).times, std::nullopt);
    EXPECT_EQ(parseFault({"any", "delay", "0.25"}).describe(), "delay 0.25");
    for (std::vector<std::string> bad : std::vector<std::vector<std::string>>{
             {"manifest"}, {"nowhere", "drop"}, {"thumb", "explode"}, {"thumb", "status"}, {"thumb", "status", "99"},
             {"thumb", "delay", "61"}, {"thumb", "delay", "-1"}, {"thumb", "delay", "1,5"}, {"thumb", "empty"},
             {"manifest", "slides", "100001"}, {"thumb", "drop", "0"}, {"thumb", "drop", "2", "3"}}) {
        EXPECT_THROW(parseFault(bad), std::invalid_argument) << bad.size();
    }
}

TEST(CloudLifetime, StopRefusesLaterConnectionsAndCutsADelayShort) {
    Cloud cloud;
    cloud.addFault(parseFault({"manifest", "delay", "60"}));
    std::thread waiting([&] { CurlHttp::perform({"GET", cloud.cdnBaseURL() + "manifest.json", {}, {}, 10}); });
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(5);
    while (cloud.requests().empty() && std::chrono::steady_clock::now() < deadline) {
        std::this_thread::sleep_for(std::chrono::milliseconds(2));
    }
    const auto start = std::chrono::steady_clock::now();
    cloud.stop();
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(5));
    waiting.join();
    EXPECT_FALSE(cloud.running());
    auto refused = CurlHttp::perform({"GET", cloud.cdnBaseURL() + "manifest.json", {}, {}, 2});
    EXPECT_TRUE(refused.transportError);

    const std::string folder = cloud.dataDirectory();
    EXPECT_TRUE(std::filesystem::exists(folder + "/thumbs/extra/cover.png"));
    {
        Cloud other;
        EXPECT_NE(other.dataDirectory(), folder);
    }
}

TEST(CloudConcurrency, RecordsConcurrentRequestsAndSpendsEachCountedFaultOnce) {
    Cloud cloud;
    cloud.addFault(parseFault({"thumb", "status", "500", "10"}));
    constexpr int threads = 8, each = 10;
    std::vector<std::thread> clients;
    std::vector<int> failures(threads, 0);
    for (int t = 0; t < threads; ++t) {
        clients.emplace_back([&, t] {
            for (int i = 0; i < each; ++i) {
                auto response = CurlHttp::perform(
                    {"GET", cloud.cdnBaseURL() + "thumbs/tpl-000" + std::to_string(1 + i % 9) + ".png", {}, {}, 5});
                if (response.status == 500) ++failures[t];
            }
        });
    }
    for (auto& client : clients) client.join();
    int total = 0;
    for (int f : failures) total += f;
    EXPECT_EQ(total, 10);
    auto requests = cloud.requests();
    EXPECT_EQ(requests.size(), static_cast<std::size_t>(threads * each));
    int recordedFaults = 0;
    for (const auto& request : requests) recordedFaults += request.fault.has_value();
    EXPECT_EQ(recordedFaults, 10);
    for (int i = 0; i < 10; ++i) EXPECT_TRUE(requests[i].fault) << i;  // the first ten in the record met it
}

}  // namespace
}  // namespace velmora::cloud
