#include "Service.h"

#include <fmt/format.h>
#include <nlohmann/json.hpp>

#include <algorithm>
#include <cctype>
#include <charconv>
#include <map>

#include "IconFixtures.h"
#include "PhotoFixtures.h"

namespace velmora::cloud::service {

namespace {

using Json = nlohmann::ordered_json;

constexpr int defaultIconLimit = 30, mostIcons = 100;
constexpr int defaultPerPage = 10, mostPerPage = 30;

struct KnownError {
    int status;
    bool retryable;
    const char* message;
};

const std::map<std::string, KnownError>& knownErrors() {
    static const std::map<std::string, KnownError> errors = {
        {"DOWNLOAD_QUOTA_EXHAUSTED", {429, false, "This month's icon downloads are used up."}},
        {"PROVIDER_TIMEOUT", {504, true, "The icon provider did not answer in time."}},
        {"PROVIDER_RATE_LIMITED", {429, true, "The icon provider is receiving too many requests."}},
        {"PROVIDER_UNAVAILABLE", {503, true, "The icon provider is unavailable."}},
        {"PROVIDER_AUTHENTICATION_FAILED", {502, false, "The service could not sign in to the icon provider."}},
        {"PROVIDER_INVALID_RESPONSE", {502, false, "The icon provider sent an answer the service could not read."}},
        {"NETWORK_ERROR", {502, true, "The service could not reach the icon provider."}},
        {"INVALID_CURSOR", {400, false, "The cursor does not belong to this search."}},
        {"INVALID_REQUEST", {400, false, "The request is missing a value or has one that is off."}},
        {"NOT_FOUND", {404, false, "There is no such icon."}},
    };
    return errors;
}

Reply json(int status, const Json& body) { return {status, "application/json", body.dump()}; }

Reply failure(const std::string& code, const std::string& message) {
    return {errorStatus(code), "application/json", errorEnvelope(code, message, errorRetryable(code))};
}

// The first value sent under `key`, decoded.
std::optional<std::string> valueOf(const Query& query, const std::string& key) {
    for (const auto& item : query) {
        if (item.key == key) return item.value;
    }
    return std::nullopt;
}

// A whole number within [low, high] (outside it: the nearer end), `fallback`
// when the key is missing or empty; nothing when it is not a number.
std::optional<int> boundedNumber(const Query& query, const std::string& key, int fallback, int low, int high) {
    auto text = valueOf(query, key);
    if (!text || text->empty()) return fallback;
    long value = 0;
    auto [end, error] = std::from_chars(text->data(), text->data() + text->size(), value);
    if (error != std::errc{} || end != text->data() + text->size()) return std::nullopt;
    return static_cast<int>(std::clamp<long>(value, low, high));
}

std::optional<std::string> licenseKeyOf(const Query& query) {
    auto key = valueOf(query, "licenseKey");
    if (!key || key->empty()) return std::nullopt;
    return key;
}

Json iconItem(const IconFixture& icon, const std::string& cdnBase) {
    Json item;
    if (icon.numericId) {
        item["id"] = std::stol(icon.id);
    } else {
        item["id"] = icon.id;
    }
    item["provider"] = icon.provider;
    if (icon.title) item["title"] = *icon.title;
    if (icon.attribution) item["attribution"] = *icon.attribution;
    item["thumbnailUrl"] = cdnBase + icon.file();
    return item;
}

Json photoItem(const PhotoFixture& photo, const std::string& cdnBase) {
    const auto& person = photographers()[photo.photographer];
    Json item;
    item["id"] = photo.id;
    item["width"] = photoWidth;
    item["height"] = photoHeight;
    if (photo.alt) {
        item["alt_description"] = *photo.alt;
    } else if (photo.altIsNull) {
        item["alt_description"] = nullptr;
    }
    const std::string file = cdnBase + "photos/" + photo.id;
    // The raw address has a query of its own; clients add their size to it with "&".
    item["urls"] = {{"small", file + "-small.png"}, {"raw", file + ".png?fit=max"}};
    Json user;
    if (person.name) user["name"] = *person.name;
    user["username"] = person.handle;
    user["links"] = {{"html", cdnBase + "people/" + person.handle}};
    item["user"] = std::move(user);
    // "&" and "=" in the location on purpose: it travels inside another query.
    item["links"] = {{"download_location", fmt::format("{}/download?ref={}&x=1", file, photo.id)}};
    return item;
}

bool isColour(const std::string& text) {
    return text.size() == 6 && std::all_of(text.begin(), text.end(), [](char c) { return std::isxdigit(static_cast<unsigned char>(c)); });
}

}  // namespace

std::string errorEnvelope(const std::string& code, const std::string& message, std::optional<bool> retryable) {
    Json error = {{"code", code}, {"message", message}};
    if (retryable) error["retryable"] = *retryable;
    return Json{{"error", std::move(error)}}.dump();
}

int errorStatus(const std::string& code) {
    auto it = knownErrors().find(code);
    return it == knownErrors().end() ? 500 : it->second.status;
}

bool errorRetryable(const std::string& code) {
    auto it = knownErrors().find(code);
    return it != knownErrors().end() && it->second.retryable;
}

std::string errorMessage(const std::string& code) {
    auto it = knownErrors().find(code);
    return it == knownErrors().end() ? "The service failed with " + code + "." : it->second.message;
}

Reply iconSearch(const Query& query, const std::string& cdnBase) {
    if (!licenseKeyOf(query)) return failure("INVALID_REQUEST", "licenseKey is required.");
    auto limit = boundedNumber(query, "limit", defaultIconLimit, 1, mostIcons);
    if (!limit) return failure("INVALID_REQUEST", "limit is a whole number.");
    std::string creator = valueOf(query, "creator").value_or("");
    if (creator.empty()) creator = "all";
    std::optional<std::string> cursor = valueOf(query, "cursor");
    if (cursor && cursor->empty()) cursor.reset();

    auto page = searchIcons(valueOf(query, "query").value_or(""), creator, static_cast<std::size_t>(*limit), cursor);
    if (!page) return failure("INVALID_CURSOR", errorMessage("INVALID_CURSOR"));
    Json items = Json::array();
    for (const auto* icon : page->items) items.push_back(iconItem(*icon, cdnBase));
    Json paging = Json::object();
    if (page->nextCursor) paging["nextCursor"] = *page->nextCursor;
    if (page->total) paging["total"] = *page->total;
    return json(200, {{"items", std::move(items)}, {"paging", std::move(paging)}});
}

Reply iconAsset(const Query& query, const std::function<bool(const std::string&)>& spend) {
    auto key = licenseKeyOf(query);
    if (!key) return failure("INVALID_REQUEST", "licenseKey is required.");
    auto provider = valueOf(query, "provider"), id = valueOf(query, "iconId");
    if (!provider || !id || provider->empty() || id->empty()) {
        return failure("INVALID_REQUEST", "provider and iconId are required.");
    }
    std::string colour = valueOf(query, "color").value_or("000000");
    if (!colour.empty() && colour.front() == '#') colour.erase(0, 1);
    if (!isColour(colour)) return failure("INVALID_REQUEST", "color is six hexadecimal digits.");
    const IconFixture* icon = findIcon(*provider, *id);
    if (!icon) return failure("NOT_FOUND", errorMessage("NOT_FOUND"));
    if (!spend(*key)) return failure("DOWNLOAD_QUOTA_EXHAUSTED", errorMessage("DOWNLOAD_QUOTA_EXHAUSTED"));
    return {200, "image/svg+xml", iconSVG(*icon, "#" + colour)};
}

Reply iconQuota(const Query& query, const std::function<Quota(const std::string&)>& quotaOf) {
    auto key = licenseKeyOf(query);
    if (!key) return failure("INVALID_REQUEST", "licenseKey is required.");
    const Quota quota = quotaOf(*key);
    return json(200, {{"limit", quota.limit}, {"remaining", quota.remaining}});
}

Reply photoSearch(const Query& query, const std::string& cdnBase) {
    auto page = boundedNumber(query, "page", 1, 1, 1'000'000);
    auto perPage = boundedNumber(query, "per_page", defaultPerPage, 1, mostPerPage);
    if (!page || !perPage) return failure("INVALID_REQUEST", "page and per_page are whole numbers.");
    const PhotoPage found = searchPhotos(valueOf(query, "query").value_or(""), *page, *perPage);
    Json body = Json::object();
    if (found.totalPages) body["total_pages"] = *found.totalPages;
    Json results = Json::array();
    for (const auto* photo : found.results) results.push_back(photoItem(*photo, cdnBase));
    body["results"] = std::move(results);
    return json(200, body);
}

Reply trackDownload(const Query& query) {
    if (!valueOf(query, "downloadLocation")) return failure("INVALID_REQUEST", "downloadLocation is required.");
    return json(200, {{"ok", true}});
}

std::optional<Reply> photoDownload(const std::string& relativePath, const std::string& cdnBase) {
    const std::string prefix = "photos/", suffix = "/download";
    if (relativePath.size() <= prefix.size() + suffix.size() || relativePath.compare(0, prefix.size(), prefix) != 0 ||
        relativePath.compare(relativePath.size() - suffix.size(), suffix.size(), suffix) != 0) {
        return std::nullopt;
    }
    const std::string id = relativePath.substr(prefix.size(), relativePath.size() - prefix.size() - suffix.size());
    if (!findPhoto(id)) return std::nullopt;
    return json(200, {{"url", cdnBase + "photos/" + id + ".png"}});
}

}  // namespace velmora::cloud::service
