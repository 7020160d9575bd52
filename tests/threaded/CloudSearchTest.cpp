// The cloud stand-in's icon and photo routes over loopback HTTP: cursor
// paging and the queries that misbehave on purpose, licence quotas, error
// faults as a client meets them, CORS, photo paging and download tracking.

#include <gtest/gtest.h>
#include <httplib.h>
#include <nlohmann/json.hpp>

#include <atomic>
#include <set>
#include <thread>

#include "Cloud.h"
#include "IconFixtures.h"

namespace velmora::cloud {
namespace {

using nlohmann::json;

struct Answer {
    int status = 0;  // 0: no answer
    std::string type, body;
    httplib::Headers headers;

    json parsed() const { return json::parse(body, nullptr, false); }
    std::string header(const std::string& name) const {
        auto it = headers.find(name);
        return it == headers.end() ? "" : it->second;
    }
};

// The PNG's size from its header.
std::pair<unsigned, unsigned> pngSize(const std::string& bytes) {
    if (bytes.size() < 24 || bytes.compare(1, 3, "PNG") != 0) return {0, 0};
    auto be32 = [&](std::size_t at) {
        unsigned value = 0;
        for (std::size_t i = 0; i < 4; ++i) value = value << 8 | static_cast<unsigned char>(bytes[at + i]);
        return value;
    };
    return {be32(16), be32(20)};
}

Answer fetch(int port, const std::string& target, const std::string& method = "GET",
             const httplib::Headers& headers = {}) {
    httplib::Client client("127.0.0.1", port);
    client.set_connection_timeout(2);
    client.set_read_timeout(5);
    httplib::Request request;
    request.method = method;
    request.path = target;
    request.headers = headers;
    auto result = client.send(request);
    if (!result) return {};
    return {result->status, result->get_header_value("Content-Type"), result->body, result->headers};
}

class CloudSearchTest : public ::testing::Test {
protected:
    Answer get(const std::string& target) { return fetch(cloud.port(), target); }
    // Everything after BASE, for URLs the cloud hands out.
    Answer follow(const std::string& url) {
        EXPECT_EQ(url.rfind(cloud.baseURL(), 0), 0u) << url;
        return get(url.substr(cloud.baseURL().size()));
    }
    json search(const std::string& query, const std::string& extra = "") {
        auto answer = get("/api/v2/icons/search?licenseKey=K&query=" + query + extra);
        EXPECT_EQ(answer.status, 200) << query << extra << ": " << answer.body;
        EXPECT_EQ(answer.type, "application/json");
        return answer.parsed();
    }
    // Every page of a search, following the cursor; at most 40 pages.
    std::vector<json> pages(const std::string& query, const std::string& extra) {
        std::vector<json> out{search(query, extra)};
        while (out.size() < 40 && out.back()["paging"].contains("nextCursor")) {
            out.push_back(search(query, extra + "&cursor=" + out.back()["paging"]["nextCursor"].get<std::string>()));
        }
        return out;
    }
    static void expectEnvelope(const Answer& answer, int status, const std::string& code, std::optional<bool> retryable) {
        EXPECT_EQ(answer.status, status) << code;
        EXPECT_EQ(answer.type, "application/json") << code;
        auto body = answer.parsed();
        ASSERT_TRUE(body.is_object()) << answer.body;
        EXPECT_EQ(body["error"]["code"], code);
        EXPECT_TRUE(body["error"]["message"].is_string());
        if (retryable) {
            EXPECT_EQ(body["error"]["retryable"], *retryable) << code;
        } else {
            EXPECT_FALSE(body["error"].contains("retryable")) << code;
        }
    }
    void fault(std::vector<std::string> words) { cloud.addFault(parseFault(words)); }

    Cloud cloud;
};

std::string idText(const json& item) {
    return item["id"].is_number() ? std::to_string(item["id"].get<long>()) : item["id"].get<std::string>();
}

// "lineart/#4100" for a numeric id, "flatshape/9101" for a text.
std::string key(const json& item) {
    return item["provider"].get<std::string>() + "/" + (item["id"].is_number() ? "#" : "") + idText(item);
}

TEST_F(CloudSearchTest, CursorPagingWalksEveryHitOnceWithItsTotalAndFixturesOfEveryShape) {
    auto walk = pages("arrow", "&limit=5");
    ASSERT_EQ(walk.size(), 3u);
    std::set<std::string> seen;
    std::vector<std::size_t> sizes;
    for (const auto& page : walk) {
        EXPECT_EQ(page["paging"]["total"], 12);
        sizes.push_back(page["items"].size());
        for (const auto& item : page["items"]) EXPECT_TRUE(seen.insert(key(item)).second) << key(item);
    }
    EXPECT_EQ(sizes, (std::vector<std::size_t>{5, 5, 2}));
    EXPECT_FALSE(walk.back()["paging"].contains("nextCursor"));

    // The whole set: numbers and texts as ids, one number in both providers, optional keys left out.
    auto all = search("", "&limit=100")["items"];
    ASSERT_GE(all.size(), 60u);
    std::set<std::string> providers, keys;
    std::size_t numeric = 0, untitled = 0, credited = 0;
    for (const auto& item : all) {
        providers.insert(item["provider"].get<std::string>());
        keys.insert(key(item));
        numeric += item["id"].is_number();
        untitled += !item.contains("title");
        credited += item.contains("attribution");
        EXPECT_EQ(item["thumbnailUrl"], cloud.cdnBaseURL() + "icons/" + item["provider"].get<std::string>() + "-" +
                                            idText(item) + ".svg");
    }
    EXPECT_EQ(keys.size(), all.size());
    EXPECT_EQ(providers, (std::set<std::string>{"flatshape", "lineart"}));
    EXPECT_TRUE(numeric > 0 && numeric < all.size());
    EXPECT_TRUE(keys.count("lineart/#4100") && keys.count("flatshape/#4100"));
    EXPECT_TRUE(keys.count("flatshape/9101"));  // digits, but a text
    EXPECT_TRUE(untitled > 0 && untitled < all.size());
    EXPECT_TRUE(credited > 0 && credited < all.size());

    auto thumb = follow(all[0]["thumbnailUrl"]);
    EXPECT_EQ(thumb.status, 200);
    EXPECT_EQ(thumb.type, "image/svg+xml");
    EXPECT_EQ(thumb.body.rfind("<svg ", 0), 0u);

    // Query words match titles and tags whatever their case, all of them.
    EXPECT_EQ(search("BAR%20Chart")["paging"]["total"], 3);
    EXPECT_EQ(search("arrow%20left")["paging"]["total"], 3);

    // The two styles are different parts of "all"; an unknown one finds nothing.
    std::set<std::string> styles[2];
    int s = 0;
    for (const char* creator : {"eucalyp", "prosymbols"}) {
        for (const auto& page : pages("", std::string("&limit=7&creator=") + creator)) {
            for (const auto& item : page["items"]) styles[s].insert(key(item));
        }
        EXPECT_FALSE(styles[s].empty());
        for (const auto& k : styles[s]) EXPECT_TRUE(keys.count(k)) << k;
        ++s;
    }
    for (const auto& k : styles[0]) EXPECT_FALSE(styles[1].count(k)) << k;
    EXPECT_LT(styles[0].size() + styles[1].size(), keys.size());
    EXPECT_EQ(search("arrow", "&creator=somebody")["items"].size(), 0u);
}

TEST_F(CloudSearchTest, QueriesThatMisbehaveOnPurpose) {
    auto noTotal = pages("nototal%20arrow", "&limit=5");
    ASSERT_EQ(noTotal.size(), 3u);
    for (const auto& page : noTotal) EXPECT_FALSE(page["paging"].contains("total"));

    auto zero = search("zerototal", "&limit=10");
    EXPECT_EQ(zero["paging"]["total"], 0);
    EXPECT_EQ(zero["items"].size(), 10u);
    EXPECT_TRUE(zero["paging"].contains("nextCursor"));

    // N empty pages, each with a cursor, then the hits.
    for (int n = 1; n <= 4; ++n) {
        auto walk = pages("empty" + std::to_string(n) + "%20star", "&limit=2");
        ASSERT_EQ(walk.size(), static_cast<std::size_t>(n) + 2) << n;
        for (int i = 0; i < n; ++i) {
            EXPECT_TRUE(walk[static_cast<std::size_t>(i)]["items"].empty()) << n;
            EXPECT_TRUE(walk[static_cast<std::size_t>(i)]["paging"].contains("nextCursor")) << n;
        }
        EXPECT_EQ(walk[static_cast<std::size_t>(n)]["items"].size(), 2u) << n;
        EXPECT_EQ(walk.back()["items"].size(), 1u) << n;
        EXPECT_EQ(walk.back()["paging"]["total"], 3) << n;
    }

    for (const char* nothing : {"noresults", "zzzz"}) {
        auto none = search(nothing);
        EXPECT_TRUE(none["items"].empty());
        EXPECT_EQ(none["paging"], json({{"total", 0}})) << nothing;
    }
}

TEST_F(CloudSearchTest, RefusesForeignCursorsAndRequestsWithoutALicence) {
    const std::string first = search("arrow", "&limit=5")["paging"]["nextCursor"];
    const std::string elsewhere = search("chart", "&limit=5")["paging"]["nextCursor"];
    const std::string base = "/api/v2/icons/search?licenseKey=K&query=arrow&limit=5&cursor=";
    EXPECT_EQ(get(base + first).status, 200);
    for (const std::string& cursor : {elsewhere, std::string("%21%21not-base64"), iconCursor("arrow", "all", 500),
                                      iconCursor("arrow", "all", -1), iconCursor("arrow", "eucalyp", 5)}) {
        expectEnvelope(get(base + cursor), 400, "INVALID_CURSOR", false);
    }
    expectEnvelope(get(base.substr(0, base.find("query")) + "creator=eucalyp&query=arrow&cursor=" + first), 400,
                   "INVALID_CURSOR", false);

    for (const char* target : {"/api/v2/icons/search?query=arrow", "/api/v2/icons/search?licenseKey=&query=arrow",
                               "/api/v2/icons/search?licenseKey=K&limit=ten", "/api/v2/icons/quota",
                               "/api/v2/icons/asset?provider=lineart&iconId=4100",
                               "/api/v2/icons/asset?licenseKey=K&provider=lineart&iconId=4100&color=red",
                               "/api/get_searchImage?query=sea&page=two", "/api/get_trackDownload"}) {
        expectEnvelope(get(target), 400, "INVALID_REQUEST", false);
    }
    // Limits beyond the range are brought into it.
    EXPECT_EQ(search("", "&limit=1000")["items"].size(), 78u);
    EXPECT_EQ(search("", "&limit=0")["items"].size(), 1u);
    EXPECT_EQ(search("")["items"].size(), 30u);
}

CloudOptions withQuota(int limit) {
    CloudOptions options;
    options.quotaLimit = limit;
    return options;
}

TEST(CloudQuota, EachDownloadSpendsOneOfItsKeysQuotaUntilNoneIsLeft) {
    Cloud cloud(withQuota(3));
    auto asset = [&](const std::string& licence, const std::string& icon) {
        return fetch(cloud.port(), "/api/v2/icons/asset?licenseKey=" + licence + "&provider=lineart&iconId=" + icon +
                                       "&color=c0ffee");
    };
    auto quota = [&](const std::string& licence) {
        return fetch(cloud.port(), "/api/v2/icons/quota?licenseKey=" + licence).parsed();
    };
    EXPECT_EQ(quota("A"), json({{"limit", 3}, {"remaining", 3}}));
    auto svg = asset("A", "4100");
    EXPECT_EQ(svg.status, 200);
    EXPECT_EQ(svg.type, "image/svg+xml");
    EXPECT_NE(svg.body.find("#c0ffee"), std::string::npos);
    for (int i = 0; i < 2; ++i) {  // black unless told otherwise
        auto black = fetch(cloud.port(), "/api/v2/icons/asset?licenseKey=A&provider=flatshape&iconId=4100");
        EXPECT_NE(black.body.find("fill=\"#000000\""), std::string::npos);
        EXPECT_NE(black.body, svg.body);
    }
    EXPECT_EQ(quota("A")["remaining"], 0);
    EXPECT_EQ(quota("B")["remaining"], 3);  // each key its own

    // Unknown icons cost nothing; an exhausted key gets the envelope and no picture.
    cloud.setQuota("A", 1);
    auto unknown = asset("A", "no-such-icon");
    EXPECT_EQ(unknown.status, 404);
    EXPECT_EQ(unknown.parsed()["error"]["code"], "NOT_FOUND");
    EXPECT_EQ(asset("A", "bold-star").status, 200);
    auto refused = asset("A", "bold-star");
    EXPECT_EQ(refused.status, 429);
    EXPECT_EQ(refused.parsed(), json::parse(R"({"error":{"code":"DOWNLOAD_QUOTA_EXHAUSTED",
        "message":"This month's icon downloads are used up.","retryable":false}})"));
    EXPECT_EQ(quota("A")["remaining"], 0);

    // For every key, those not seen yet too, through the fault words.
    cloud.addFault(parseFault({"quota", "5", "10"}));
    EXPECT_TRUE(cloud.faults().empty());
    EXPECT_EQ(quota("A"), json({{"limit", 10}, {"remaining", 5}}));
    EXPECT_EQ(quota("new"), json({{"limit", 10}, {"remaining", 5}}));
    cloud.setQuota(std::nullopt, 0);
    EXPECT_EQ(asset("B", "4100").status, 429);
    EXPECT_EQ(cloud.quota("B").limit, 10);
}

TEST(CloudQuota, ConcurrentDownloadsSpendExactlyTheQuota) {
    Cloud cloud(withQuota(20));
    std::atomic<int> served = 0, refused = 0;
    std::vector<std::thread> clients;
    for (int t = 0; t < 6; ++t) {
        clients.emplace_back([&] {
            for (int i = 0; i < 5; ++i) {
                auto answer = fetch(cloud.port(), "/api/v2/icons/asset?licenseKey=K&provider=lineart&iconId=4101");
                (answer.status == 200 ? served : refused) += 1;
            }
        });
    }
    for (auto& client : clients) client.join();
    EXPECT_EQ(served, 20);
    EXPECT_EQ(refused, 10);
    EXPECT_EQ(cloud.quota("K").remaining, 0);
}

TEST_F(CloudSearchTest, ErrorFaultsWithAndWithoutABody) {
    const std::vector<std::pair<std::string, int>> codes = {
        {"DOWNLOAD_QUOTA_EXHAUSTED", 429},       {"PROVIDER_TIMEOUT", 504},          {"PROVIDER_RATE_LIMITED", 429},
        {"PROVIDER_UNAVAILABLE", 503},           {"PROVIDER_AUTHENTICATION_FAILED", 502},
        {"PROVIDER_INVALID_RESPONSE", 502},      {"NETWORK_ERROR", 502},            {"INVALID_CURSOR", 400},
        {"SOMETHING_ELSE", 500}};
    const std::string searchTarget = "/api/v2/icons/search?licenseKey=K&query=arrow";
    for (const auto& [code, status] : codes) {
        fault({"icons-search", "error", code, "retryable", "1"});
        fault({"icons-search", "error", "503", code, "final", "1"});
        fault({"icons-asset", "error", code, "noflag", "1"});
        fault({"icons-quota", "error", code, "nobody", "1"});
        expectEnvelope(get(searchTarget), status, code, true);
        expectEnvelope(get(searchTarget), 503, code, false);
        expectEnvelope(get("/api/v2/icons/asset?licenseKey=K&provider=lineart&iconId=4100"), status, code,
                       std::nullopt);
        auto bare = get("/api/v2/icons/quota?licenseKey=K");
        EXPECT_EQ(bare.status, status) << code;
        EXPECT_TRUE(bare.body.empty()) << code;
        EXPECT_TRUE(bare.parsed().is_discarded()) << code;
    }
    // Spent, they leave the usual answers; the quota was not touched by a faulted download.
    EXPECT_TRUE(cloud.faults().empty());
    EXPECT_EQ(get(searchTarget).status, 200);
    EXPECT_EQ(cloud.quota("K").remaining, 50);

    // Without a code's own defaults: a status page that is no JSON, and a count that runs out.
    fault({"icons-search", "status", "503", "1"});
    auto page = get(searchTarget);
    EXPECT_EQ(page.status, 503);
    EXPECT_TRUE(page.parsed().is_discarded());
    fault({"icons-search", "error", "PROVIDER_TIMEOUT", "2"});
    EXPECT_EQ(get(searchTarget).status, 504);
    EXPECT_EQ(get(searchTarget).parsed()["error"]["retryable"], true);  // its own default
    EXPECT_EQ(get(searchTarget).status, 200);

    // The record spells each out in full.
    auto requests = cloud.requests();
    ASSERT_GE(requests.size(), 4u);
    EXPECT_EQ(requests[0].fault, "error 429 DOWNLOAD_QUOTA_EXHAUSTED retryable");
    EXPECT_EQ(requests[1].fault, "error 503 DOWNLOAD_QUOTA_EXHAUSTED final");
    EXPECT_EQ(requests[2].fault, "error 429 DOWNLOAD_QUOTA_EXHAUSTED noflag");
    EXPECT_EQ(requests[3].fault, "error 429 DOWNLOAD_QUOTA_EXHAUSTED nobody");
}

TEST(CloudFaultWords, ReadsErrorAndQuotaWordsAndRefusesWhatIsOff) {
    auto timeout = parseFault({"icons-search", "error", "503", "PROVIDER_TIMEOUT", "retryable", "2"});
    EXPECT_EQ(timeout.kind, FaultKind::error);
    EXPECT_EQ(timeout.value, 503);
    EXPECT_EQ(timeout.code, "PROVIDER_TIMEOUT");
    EXPECT_EQ(timeout.body, ErrorBody::retryable);
    EXPECT_EQ(timeout.times, 2);
    auto plain = parseFault({"api", "error", "NOT_PLANNED"});
    EXPECT_EQ(plain.describe(), "error 500 NOT_PLANNED final");
    EXPECT_FALSE(plain.times);
    EXPECT_EQ(parseFault({"icons-asset", "error", "INVALID_CURSOR", "3"}).describe(), "error 400 INVALID_CURSOR final");
    EXPECT_EQ(parseFault({"quota", "0"}).describe(), "quota 0");
    EXPECT_EQ(parseFault({"quota", "7", "9"}).describe(), "quota 7 of 9");
    EXPECT_EQ(parseFault({"photo", "drop"}).route, "photo");
    EXPECT_EQ(parseFault({"icon", "status", "404"}).route, "icon");
    for (std::vector<std::string> bad : std::vector<std::vector<std::string>>{
             {"icons-search", "error"}, {"icons-search", "error", "503"}, {"icons-search", "error", "99", "X"},
             {"icons-search", "error", "retryable"}, {"icons-search", "error", "X", "retryable", "0"},
             {"icons-search", "error", "X", "sometimes"}, {"quota"}, {"quota", "-1"}, {"quota", "1", "2", "3"},
             {"quota", "lots"}}) {
        EXPECT_THROW(parseFault(bad), std::invalid_argument) << bad.size();
    }
}

TEST_F(CloudSearchTest, EveryAnswerAllowsAnyOriginAndPreflightsAreAnswered) {
    fault({"icons-asset", "error", "PROVIDER_UNAVAILABLE", "1"});
    fault({"thumb", "status", "500", "1"});
    for (const char* target : {"/api/v2/icons/search?licenseKey=K", "/api/v2/icons/asset?licenseKey=K",
                               "/cdn/thumbs/tpl-0001.png", "/cdn/icons/lineart-4100.svg", "/cdn/manifest.json",
                               "/cdn/nothing", "/api/get_searchImage?query=sea", "/api/nothing"}) {
        auto answer = get(target);
        EXPECT_NE(answer.status, 0) << target;
        EXPECT_EQ(answer.header("Access-Control-Allow-Origin"), "*") << target;
    }

    fault({"icons-search", "status", "500", "1"});
    auto preflight = fetch(cloud.port(), "/api/v2/icons/search?licenseKey=K", "OPTIONS",
                           {{"Origin", "null"},
                            {"Access-Control-Request-Method", "GET"},
                            {"Access-Control-Request-Headers", "content-type"},
                            {"Access-Control-Request-Private-Network", "true"}});
    EXPECT_EQ(preflight.status, 204);
    EXPECT_EQ(preflight.header("Access-Control-Allow-Origin"), "*");
    EXPECT_NE(preflight.header("Access-Control-Allow-Methods").find("GET"), std::string::npos);
    EXPECT_EQ(preflight.header("Access-Control-Allow-Headers"), "content-type");
    EXPECT_EQ(preflight.header("Access-Control-Allow-Private-Network"), "true");
    // The preflight is recorded but leaves the fault to the request it clears.
    EXPECT_EQ(cloud.requests().back().method, "OPTIONS");
    EXPECT_FALSE(cloud.requests().back().fault);
    EXPECT_EQ(get("/api/v2/icons/search?licenseKey=K").status, 500);
}

TEST_F(CloudSearchTest, PhotoPagesCoverEveryHitWithFilesThatOpen) {
    auto page = [&](const std::string& query, int number) {
        auto answer = get("/api/get_searchImage?query=" + query + "&page=" + std::to_string(number) + "&per_page=7");
        EXPECT_EQ(answer.status, 200);
        EXPECT_EQ(answer.type, "application/json");
        return answer.parsed();
    };
    auto first = page("nature", 1);
    const int totalPages = first["total_pages"];
    ASSERT_GT(totalPages, 2);
    std::set<std::string> ids;
    std::size_t count = 0, withoutAlt = 0, nullAlt = 0, anonymous = 0;
    for (int n = 1; n <= totalPages; ++n) {
        auto results = (n == 1 ? first : page("nature", n))["results"];
        EXPECT_TRUE(n == totalPages ? !results.empty() && results.size() <= 7 : results.size() == 7) << n;
        for (const auto& photo : results) {
            ids.insert(photo["id"].get<std::string>());
            ++count;
            withoutAlt += !photo.contains("alt_description");
            nullAlt += photo.contains("alt_description") && photo["alt_description"].is_null();
            anonymous += !photo["user"].contains("name");
            const std::string raw = photo["urls"]["raw"];
            EXPECT_EQ(raw.substr(raw.find('?')), "?fit=max");
            EXPECT_NE(photo["links"]["download_location"].get<std::string>().find("&x=1"), std::string::npos);
        }
    }
    EXPECT_EQ(ids.size(), count);
    EXPECT_GE(count, 25u);
    EXPECT_TRUE(withoutAlt > 0 && nullAlt > 0 && anonymous > 0);
    EXPECT_TRUE(page("nature", totalPages + 1)["results"].empty());
    EXPECT_EQ(page("", 1)["total_pages"], 7);  // 48 photos

    const auto& photo = first["results"][0];
    auto small = follow(photo["urls"]["small"]);
    EXPECT_EQ(small.type, "image/png");
    EXPECT_EQ(pngSize(small.body), (std::pair<unsigned, unsigned>{400, 267}));
    // Clients add their size to the raw address with "&".
    auto raw = follow(photo["urls"]["raw"].get<std::string>() + "&w=1500&dpr=2");
    EXPECT_EQ(pngSize(raw.body), (std::pair<unsigned, unsigned>{960, 640}));
    EXPECT_NE(raw.body, follow(first["results"][1]["urls"]["raw"]).body);
    auto person = follow(photo["user"]["links"]["html"]);
    EXPECT_EQ(person.status, 200);
    EXPECT_EQ(person.type, "text/html");
    EXPECT_EQ(follow(photo["links"]["download_location"]).parsed()["url"],
              photo["urls"]["raw"].get<std::string>().substr(0, photo["urls"]["raw"].get<std::string>().find('?')));

    auto none = page("nophotos", 1);
    EXPECT_EQ(none, json::parse(R"({"total_pages":0,"results":[]})"));
    auto unnumbered = page("nopages%20sea", 1);
    EXPECT_FALSE(unnumbered.contains("total_pages"));
    EXPECT_EQ(unnumbered["results"].size(), 6u);
}

TEST_F(CloudSearchTest, TrackingRecordsTheQueryAsSentAndTheRecordReadsWell) {
    const std::string location = cloud.cdnBaseURL() + "photos/sea-02/download?ref=sea-02&x=1";
    // As a client sends it when its encoding keeps "?", "&" and "=": the location runs on into the query.
    auto tracked = get("/api/get_trackDownload?downloadLocation=" + location);
    EXPECT_EQ(tracked.status, 200);
    EXPECT_EQ(tracked.parsed(), json({{"ok", true}}));
    EXPECT_EQ(get("/api/get_trackDownload?downloadLocation=http%3A%2F%2F127.0.0.1%2Fp%3Fa%3D1%26b%3D2").status, 200);

    const std::string cursor = search("arrow", "&limit=5")["paging"]["nextCursor"];
    search("arrow", "&limit=5&cursor=" + cursor);

    auto requests = cloud.requests();
    ASSERT_EQ(requests.size(), 4u);
    EXPECT_EQ(requests[0].route, "track");
    EXPECT_EQ(requests[0].rawQuery, "downloadLocation=" + location);
    ASSERT_EQ(requests[0].query.size(), 2u);
    EXPECT_EQ(requests[0].query[1].key, "x");
    EXPECT_EQ(requests[1].query[0].value, "http://127.0.0.1/p?a=1&b=2");
    EXPECT_EQ(describe(requests[0]),
              "GET /api/get_trackDownload downloadLocation=" + location.substr(0, location.find('&')) + " x=1");
    EXPECT_EQ(describe(requests[3]),
              "GET /api/v2/icons/search licenseKey=K query=arrow limit=5 cursor=" + cursor + " (arrow|all|5)");
}

}  // namespace
}  // namespace velmora::cloud
