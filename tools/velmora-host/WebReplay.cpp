// The recorded search behind `web TITLE search TERM`: the request the page's
// own script would send, answered by the live cloud, its thumbnails inlined,
// and a script that replays it when the snapshot's page runs.

#include "WebReplay.h"

#include <fmt/format.h>
#include <httplib.h>
#include <nlohmann/json.hpp>

#include <cctype>
#include <charconv>
#include <optional>
#include <regex>

#include "Host.h"
#include "support/Text.h"

namespace velmora::host {

namespace {

// As the page's encodeURIComponent writes a value.
std::string componentEncoded(const std::string& text) {
    static const char* hex = "0123456789ABCDEF";
    std::string out;
    for (char c : text) {
        const auto byte = static_cast<unsigned char>(c);
        if (std::isalnum(byte) || std::string_view("-_.!~*'()").find(c) != std::string_view::npos) {
            out += c;
        } else {
            out += '%';
            out += hex[byte >> 4];
            out += hex[byte & 15];
        }
    }
    return out;
}

// A text constant of the page's script: `const NAME = "VALUE";`.
std::optional<std::string> constantOf(const std::string& html, const std::string& name) {
    std::smatch match;
    if (!std::regex_search(html, match, std::regex("const " + name + " = \"([^\"]*)\";"))) return std::nullopt;
    return match[1].str();
}

struct Fetched {
    int status = 0;
    std::string type, body, error;  // error: why there is no answer
};

// The simulator reaches the cloud on loopback only.
Fetched get(const std::string& url) {
    const std::string head = "http://127.0.0.1:";
    Fetched fetched;
    if (url.rfind(head, 0) != 0) {
        fetched.error = "not a loopback address";
        return fetched;
    }
    const auto slash = url.find('/', head.size());
    int port = 0;
    const char* first = url.data() + head.size();
    const char* last = url.data() + (slash == std::string::npos ? url.size() : slash);
    if (slash == std::string::npos || std::from_chars(first, last, port).ptr != last || port < 1 || port > 65535) {
        fetched.error = "not a loopback address";
        return fetched;
    }
    httplib::Client client("127.0.0.1", port);
    client.set_connection_timeout(5);
    client.set_read_timeout(65);  // the cloud's longest delay and then some
    auto result = client.Get(url.substr(slash).c_str());
    if (!result) {
        fetched.error = httplib::to_string(result.error());
        return fetched;
    }
    fetched.status = result->status;
    fetched.type = result->get_header_value("Content-Type");
    if (const auto semicolon = fetched.type.find(';'); semicolon != std::string::npos) fetched.type.resize(semicolon);
    fetched.body = std::move(result->body);
    return fetched;
}

// JSON text safe inside a <script> element: a "<" only occurs in strings,
// where its escape reads the same and cannot end the element.
std::string scriptSafe(const std::string& json) {
    std::string out;
    for (char c : json) out += c == '<' ? std::string("\\u003c") : std::string(1, c);
    return out;
}

std::string replayScript(const std::string& url, const std::vector<std::string>& keys, const std::string& reply,
                         const std::string& term) {
    const nlohmann::json keyList = keys;
    return fmt::format(
        R"JS(
(function () {{
  // The search recorded when the snapshot was taken; the cloud is gone now.
  const recordedUrl = new URL({0});
  const recordedKeys = {1};
  const recordedBody = {2};
  window.fetch = function (input) {{
    let url = null;
    try {{
      url = new URL(typeof input === "string" ? input : input.url, recordedUrl);
    }} catch (ignored) {{
      url = null;
    }}
    const same = url !== null && url.pathname === recordedUrl.pathname &&
      recordedKeys.every((key) => url.searchParams.get(key) === recordedUrl.searchParams.get(key));
    if (!same) return Promise.reject(new TypeError("Failed to fetch"));
    const response = new Response(JSON.stringify(recordedBody),
      {{ status: 200, headers: {{ "Content-Type": "application/json" }} }});
    // Read at once, so the results are drawn before the page counts as loaded.
    response.json = () => Promise.resolve(recordedBody);
    return Promise.resolve(response);
  }};
  document.addEventListener("DOMContentLoaded", function () {{
    const input = document.getElementById("searchInput");
    const form = document.getElementById("searchForm");
    if (!input || !form) return;
    input.value = {3};
    let submitted = false;
    form.addEventListener("submit", () => {{ submitted = true; }}, {{ once: true }});
    form.requestSubmit();
    // A sandbox without allow-forms drops the submission before its event fires.
    if (!submitted) form.dispatchEvent(new Event("submit", {{ bubbles: true, cancelable: true }}));
  }});
}})();
)JS",
        scriptSafe(nlohmann::json(url).dump()), keyList.dump(), scriptSafe(reply),
        scriptSafe(nlohmann::json(term).dump()));
}

}  // namespace

void recordSearch(hosts::MemoryWebView& view, const std::string& title, const std::string& term) {
    auto& host = Host::instance();
    const std::string what = fmt::format("web: {} search {}", support::quoted(title), support::quoted(term));
    const std::string& html = view.html();
    std::string url;
    std::vector<std::string> keys;
    bool icons = false;
    if (const auto apiBase = constantOf(html, "API_BASE")) {
        icons = true;
        url = *apiBase + "/search?licenseKey=" + componentEncoded(constantOf(html, "LICENSE_KEY").value_or("")) +
              "&query=" + componentEncoded(term) + "&creator=all&limit=30";
        keys = {"query"};
    } else if (const auto baseUrl = constantOf(html, "baseUrl")) {
        url = *baseUrl + "?query=" + componentEncoded(term) + "&page=1&per_page=30";
        keys = {"query", "page"};
    } else {
        host.emit(what + ": no search page in the web view");
        return;
    }
    const Fetched reply = get(url);
    if (!reply.error.empty()) {
        host.emit(fmt::format("{}: GET {}: no answer ({})", what, Host::oneLine(url), reply.error));
        return;
    }
    auto body = nlohmann::ordered_json::parse(reply.body, nullptr, false);
    const char* listKey = icons ? "items" : "results";
    if (reply.status != 200 || !body.is_object() || !body.contains(listKey) || !body[listKey].is_array()) {
        host.emit(fmt::format("{}: GET {}: {}, no results", what, Host::oneLine(url), reply.status));
        return;
    }
    std::size_t thumbnails = 0;
    for (auto& item : body[listKey]) {
        if (!item.is_object()) continue;
        auto* slot = icons ? (item.contains("thumbnailUrl") ? &item["thumbnailUrl"] : nullptr)
                           : (item.contains("urls") && item["urls"].is_object() && item["urls"].contains("small")
                                  ? &item["urls"]["small"]
                                  : nullptr);
        if (!slot || !slot->is_string()) continue;
        const Fetched picture = get(slot->get<std::string>());
        if (!picture.error.empty() || picture.status != 200) continue;  // drawn as a broken image, as live
        const std::string type = picture.type.empty() ? "application/octet-stream" : picture.type;
        *slot = "data:" + type + ";base64," + support::base64Encoded(picture.body);
        ++thumbnails;
    }
    view.setReplay(replayScript(url, keys, body.dump(), term));
    host.emit(fmt::format("{}: {} item{}, {} thumbnail{}", what, body[listKey].size(),
                          body[listKey].size() == 1 ? "" : "s", thumbnails, thumbnails == 1 ? "" : "s"));
}

}  // namespace velmora::host
