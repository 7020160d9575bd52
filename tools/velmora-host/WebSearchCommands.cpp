// The icon and photo panes' search pages, played by the simulator: it has no
// browser engine, so it posts the messages a page would to the pane's web
// view, and shows what the library loaded into it and what it saved.
//
// Commands: `page TARGET NAME JSON` (also `web TARGET post NAME JSON`),
// `web TARGET search TERM`, `icon PROVIDER ID`, `photo ID`.
// Shows: `show icons`, `show page TARGET`.
// A TARGET is a docked pane's title or a library window's on screen, panes
// first, as for `tap`. A missing pane, web view or handler prints a line
// rather than stopping the run: a page posts into whatever is there.

#include <fmt/format.h>
#include <nlohmann/json.hpp>

#include <algorithm>
#include <filesystem>
#include <regex>
#include <sstream>

#include "Cloud.h"
#include "Host.h"
#include "Scenario.h"
#include "Service.h"
#include "WebReplay.h"
#include "document/Macros.h"
#include "support/Text.h"

namespace velmora::host {

namespace {

namespace fs = std::filesystem;

bool holdsText(const std::shared_ptr<platform::View>& root, const std::string& text) {
    if (!root) return false;
    if (root->textFieldValue() == text) return true;
    for (const auto& child : root->subviews()) {
        if (holdsText(child, text)) return true;
    }
    return false;
}

// The web view of the pane or window so titled; nothing, with a line saying
// why, when there is none.
std::shared_ptr<hosts::MemoryWebView> webViewOf(const std::string& title, const std::string& verb) {
    auto& host = Host::instance();
    std::optional<platform::PaneAccess> access;
    for (const auto& view : host.dockedPanes()) {
        const auto* pane = host.paneAccess(view);
        if (pane && holdsText(view, title)) {
            access = *pane;
            break;
        }
    }
    if (!access) {
        for (const auto& shown : host.visibleWindows()) {
            if (shown.window->title() == title) access = shown.access;
        }
    }
    if (!access) {
        host.emit(verb + ": no open pane or window titled " + support::quoted(title));
        return nullptr;
    }
    const auto views = access->webViews ? access->webViews() : std::vector<std::shared_ptr<platform::WebView>>{};
    auto view = views.empty() ? nullptr : std::dynamic_pointer_cast<hosts::MemoryWebView>(views.front());
    if (!view) host.emit(verb + ": no web view in " + support::quoted(title));
    return view;
}

// A page posts structured values only, so the body has to be JSON.
void post(const std::string& title, const std::string& name, const std::string& body) {
    if (nlohmann::json::parse(body, nullptr, false).is_discarded()) {
        throw ScenarioError("a page posts JSON, and this is none: " + body);
    }
    auto view = webViewOf(title, "page");
    if (view && !view->post(name, body)) {
        Host::instance().emit("page: no handler named " + support::quoted(name) + " in " + support::quoted(title));
    }
}

// The body the photo page posts for a pick: the photo as the cloud's search
// lists it, its raw address with the size the page asks for.
std::string photoBody(const std::string& id) {
    auto* cloud = Host::instance().cloud();
    if (!cloud) throw ScenarioError("the cloud did not start");
    // The search lists every photo for an empty query; a few pages hold them all.
    for (int page = 1; page <= 10; ++page) {
        cloud::service::Query query{{"page", std::to_string(page), "page", std::to_string(page)},
                                    {"per_page", "30", "per_page", "30"}};
        const auto reply = cloud::service::photoSearch(query, cloud->cdnBaseURL());
        const auto body = nlohmann::json::parse(reply.body, nullptr, false);
        if (!body.is_object() || !body.contains("results") || body["results"].empty()) break;
        for (const auto& photo : body["results"]) {
            if (!photo.contains("id") || photo["id"] != id) continue;
            nlohmann::ordered_json message = {{"command", "downloadImage"},
                                              {"imageUrl", photo["urls"]["raw"].get<std::string>() + "&w=1500&dpr=2"},
                                              {"downloadLocation", photo["links"]["download_location"]}};
            return message.dump();
        }
    }
    throw ScenarioError("the cloud has no photo '" + id + "' (mountain-01, sea-02, ...)");
}

// `web TARGET search TERM` records a search for the snapshot to replay;
// `web TARGET post NAME JSON` is `page TARGET NAME JSON`.
void web(const Arguments& a) {
    if (a[1] == "post" && a.size() == 4) {
        post(a[0], a[2], a[3]);
    } else if (a[1] == "search" && a.size() == 3) {
        if (auto view = webViewOf(a[0], "web")) recordSearch(*view, a[0], a[2]);
    } else {
        throw ScenarioError("web takes TARGET search TERM or TARGET post NAME JSON");
    }
}

void showIcons() {
    auto& host = Host::instance();
    host.emitInspected("icons", {"icons: not made yet (the icon pane never opened)"});
    const fs::path folder = userIconFolder();
    std::error_code ec;
    if (!fs::is_directory(folder, ec)) {
        host.emit("icons folder: not there yet");
        return;
    }
    std::vector<std::pair<std::string, std::uintmax_t>> files;
    for (const auto& entry : fs::directory_iterator(folder, ec)) {
        if (entry.is_regular_file(ec)) files.emplace_back(entry.path().filename().string(), entry.file_size(ec));
    }
    std::sort(files.begin(), files.end());
    if (files.empty()) host.emit("icons folder: empty");
    for (const auto& [name, size] : files) host.emit(fmt::format("icons file: {} {} bytes", name, size));
}

// The title, how often a page was loaded, its text constants (where the
// licence key and the service's address go in) and any marker left unfilled.
void showPage(const std::string& title) {
    auto view = webViewOf(title, "page");
    if (!view) return;
    auto& host = Host::instance();
    const std::string& html = view->html();
    if (view->loads() == 0) {
        host.emit("page: nothing loaded in " + support::quoted(title));
        return;
    }
    std::istringstream lines(html);
    std::vector<std::string> constants;
    std::string pageTitle = "(none)";
    std::size_t count = 0, unfilled = 0;
    for (std::string line; std::getline(lines, line);) {
        ++count;
        const auto start = line.find_first_not_of(" \t");
        const std::string trimmed = start == std::string::npos ? std::string() : line.substr(start);
        if (const auto open = trimmed.find("<title>"); open != std::string::npos) {
            const auto close = trimmed.find("</title>", open);
            if (close != std::string::npos) pageTitle = trimmed.substr(open + 7, close - open - 7);
        }
        if (trimmed.rfind("const ", 0) == 0 && trimmed.find(" = \"") != std::string::npos) constants.push_back(trimmed);
        for (auto at = line.find("{{"); at != std::string::npos; at = line.find("{{", at + 2)) ++unfilled;
    }
    host.emit(fmt::format("page: {} lines, title {}, loaded {} time{}", count, support::quoted(pageTitle), view->loads(),
                          view->loads() == 1 ? "" : "s"));
    for (const auto& line : constants) host.emit("page: " + line);
    host.emit(unfilled ? fmt::format("page: {} markers left unfilled", unfilled) : "page: no markers left unfilled");
    if (view->replay().empty()) return;
    // Where the replay sits in what a snapshot draws, and what it answers.
    const std::string drawn = view->loadedHTML();
    const auto at = drawn.find("<script>" + view->replay());
    const auto line = at == std::string::npos ? 0 : std::count(drawn.begin(), drawn.begin() + at, '\n') + 1;
    std::smatch url;
    const bool found = std::regex_search(view->replay(), url, std::regex("new URL\\(\"([^\"]*)\"\\)"));
    host.emit(fmt::format("page: replays {} from line {}, the page itself unchanged: {}",
                          found ? url[1].str() : "(no address)", line, html.find(view->replay()) == std::string::npos));
}

[[maybe_unused]] const bool registered[] = {
    registerCommand({"page", "page TARGET NAME JSON (a message as the pane's page posts it)", 3, 3,
                     [](const Arguments& a) { post(a[0], a[1], a[2]); }}),
    registerCommand({"web", "web TARGET search TERM (a search recorded for the snapshot) | web TARGET post NAME JSON", 3,
                     4, web}),
    // The icon page sends every id as a text, digits included.
    registerCommand({"icon", "icon PROVIDER ID (a click on that icon in the Icons page)", 2, 2,
                     [](const Arguments& a) {
                         post("Icons", "iconClicked", nlohmann::ordered_json{{"provider", a[0]}, {"id", a[1]}}.dump());
                     }}),
    registerCommand({"photo", "photo ID (a pick of the cloud's photo in the Images page: photo mountain-01)", 1, 1,
                     [](const Arguments& a) { post("Images", "downloadImage", photoBody(a[0])); }}),
    registerShow({"icons", "show icons", 0, 0, [](const Arguments&) { showIcons(); }}),
    registerShow({"page", "show page TARGET", 1, 1, [](const Arguments& a) { showPage(a[0]); }}),
};

}  // namespace

}  // namespace velmora::host
