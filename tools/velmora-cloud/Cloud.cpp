#include "Cloud.h"

#include <arpa/inet.h>
#include <fmt/format.h>
#include <httplib.h>
#include <netinet/in.h>
#include <nlohmann/json.hpp>
#include <stdlib.h>
#include <sys/socket.h>

#include <charconv>
#include <chrono>
#include <csignal>
#include <filesystem>
#include <fstream>
#include <map>
#include <sstream>
#include <stdexcept>

#include "Fixtures.h"
#include "IconFixtures.h"
#include "LoopbackServer.h"
#include "Service.h"

namespace velmora::cloud {

namespace fs = std::filesystem;

const char* const faultUsage =
    "ROUTE KIND [N]: ROUTE manifest, thumb, pptx, icon, photo, cdn, usage, icons-search, icons-asset, "
    "icons-quota, images, track, api, any or a path; KIND status CODE, delay SECONDS, garbage, truncate, half, "
    "drop, error [STATUS] CODE [retryable|final|noflag|nobody], and for the manifest wrongtype, missingkey, "
    "empty, slides COUNT; N: the next N requests (none: always); or quota REMAINING [LIMIT]: every licence's "
    "icon downloads left this month";

namespace {

constexpr double longestDelay = 60;
constexpr int mostSlides = 100'000;
constexpr int mostDownloads = 1'000'000;

// Made at first use: a cloud may start serving before this file's globals
// are built, when a program makes one during its own static start-up.
const std::map<std::string, std::string>& servicePaths() {
    static const std::map<std::string, std::string> paths = {
        {"/api/get_downloadTemplate", "usage"},   {"/api/v2/icons/search", "icons-search"},
        {"/api/v2/icons/asset", "icons-asset"},   {"/api/v2/icons/quota", "icons-quota"},
        {"/api/get_searchImage", "images"},       {"/api/get_trackDownload", "track"},
    };
    return paths;
}

bool knownRoute(const std::string& route) {
    static const std::vector<std::string> names = {"manifest", "thumb", "pptx", "icon", "photo", "cdn", "api", "any"};
    if (std::find(names.begin(), names.end(), route) != names.end()) return true;
    for (const auto& [path, name] : servicePaths()) {
        if (name == route) return true;
    }
    return !route.empty() && route.front() == '/';
}

bool startsWith(const std::string& text, std::string_view prefix) { return text.rfind(prefix, 0) == 0; }
bool endsWith(const std::string& text, std::string_view suffix) {
    return text.size() >= suffix.size() && text.compare(text.size() - suffix.size(), suffix.size(), suffix) == 0;
}

// The path below /cdn/ with runs of slashes as one and no leading one;
// nothing when it climbs out ("..").
std::optional<std::string> cdnRelative(const std::string& path) {
    std::string relative;
    std::stringstream parts(path.substr(5));
    std::string part;
    while (std::getline(parts, part, '/')) {
        if (part.empty() || part == ".") continue;
        if (part == "..") return std::nullopt;
        relative += (relative.empty() ? "" : "/") + part;
    }
    return relative;
}

std::string routeOf(const std::string& path) {
    if (startsWith(path, "/cdn/")) {
        auto relative = cdnRelative(path);
        if (relative == "manifest.json") return "manifest";
        if (relative && startsWith(*relative, "icons/")) return "icon";
        if (relative && startsWith(*relative, "photos/")) return "photo";
        if (endsWith(path, ".png")) return "thumb";
        if (endsWith(path, ".pptx")) return "pptx";
        return "cdn";
    }
    if (auto it = servicePaths().find(path); it != servicePaths().end()) return it->second;
    if (startsWith(path, "/api/")) return "api";
    return "other";
}

bool matches(const Fault& fault, const std::string& route, const std::string& path) {
    if (fault.route == "any" || fault.route == route || fault.route == path) return true;
    if (fault.route == "cdn") return startsWith(path, "/cdn/");
    if (fault.route == "api") return startsWith(path, "/api/");
    return false;
}

std::string percentDecoded(std::string_view text, bool plusIsBlank) {
    auto hex = [](char c) -> int {
        if (c >= '0' && c <= '9') return c - '0';
        if (c >= 'a' && c <= 'f') return c - 'a' + 10;
        if (c >= 'A' && c <= 'F') return c - 'A' + 10;
        return -1;
    };
    std::string out;
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] == '%' && i + 2 < text.size() && hex(text[i + 1]) >= 0 && hex(text[i + 2]) >= 0) {
            out += static_cast<char>(hex(text[i + 1]) * 16 + hex(text[i + 2]));
            i += 2;
        } else if (text[i] == '+' && plusIsBlank) {
            out += ' ';
        } else {
            out += text[i];
        }
    }
    return out;
}

std::vector<QueryItem> queryItems(const std::string& raw) {
    std::vector<QueryItem> items;
    std::size_t at = 0;
    while (at <= raw.size() && !raw.empty()) {
        auto end = raw.find('&', at);
        if (end == std::string::npos) end = raw.size();
        std::string piece = raw.substr(at, end - at);
        if (!piece.empty()) {
            QueryItem item;
            auto equals = piece.find('=');
            item.rawKey = piece.substr(0, equals);
            item.rawValue = equals == std::string::npos ? "" : piece.substr(equals + 1);
            item.key = percentDecoded(item.rawKey, true);
            item.value = percentDecoded(item.rawValue, true);
            items.push_back(std::move(item));
        }
        at = end + 1;
    }
    return items;
}

std::string contentType(const std::string& path) {
    if (endsWith(path, ".json")) return "application/json";
    if (endsWith(path, ".png")) return "image/png";
    if (endsWith(path, ".pptx")) return "application/vnd.openxmlformats-officedocument.presentationml.presentation";
    if (endsWith(path, ".svg")) return "image/svg+xml";
    if (startsWith(path, "/cdn/people/")) return "text/html";
    return "application/octet-stream";
}

std::string reason(int status) {
    static const std::map<int, std::string> reasons = {
        {200, "OK"},          {400, "Bad Request"},           {401, "Unauthorized"},
        {403, "Forbidden"},   {404, "Not Found"},             {408, "Request Timeout"},
        {429, "Too Many Requests"}, {500, "Internal Server Error"}, {501, "Not Implemented"},
        {502, "Bad Gateway"}, {503, "Service Unavailable"},   {504, "Gateway Timeout"}};
    auto it = reasons.find(status);
    return it == reasons.end() ? "Error" : it->second;
}

// What a web server or a CDN edge sends with an error: a small HTML page.
void answerPage(httplib::Response& response, int status) {
    const std::string title = fmt::format("{} {}", status, reason(status));
    response.status = status;
    response.set_content(fmt::format("<!DOCTYPE html>\n<html><head><title>{0}</title></head>"
                                     "<body><h1>{0}</h1></body></html>\n",
                                     title),
                         "text/html");
}

void answer(httplib::Response& response, const service::Reply& reply) {
    response.status = reply.status;
    if (!reply.type.empty()) response.set_content(reply.body, reply.type.c_str());
}

std::string garbageBytes() {
    // Starts with bytes that are not UTF-8, then a fixed pseudo-random run.
    std::string bytes = "\xff\xfe\x00\x01";
    std::uint32_t state = 0x5eed1234;
    while (bytes.size() < 512) {
        state = state * 1664525u + 1013904223u;
        bytes += static_cast<char>(state >> 24);
    }
    return bytes;
}

std::optional<std::string> readFile(const fs::path& path) {
    std::error_code ec;
    if (!fs::is_regular_file(path, ec)) return std::nullopt;
    std::ifstream in(path, std::ios::binary);
    if (!in) return std::nullopt;
    std::ostringstream bytes;
    bytes << in.rdbuf();
    return bytes.str();
}

// Shuts the request's own connection, found by its two ports among the
// process's sockets: httplib gives a handler no socket, and closing without
// an answer is the point.
void dropConnection(const httplib::Request& request) {
    std::error_code ec;
    for (const auto& entry : fs::directory_iterator("/proc/self/fd", ec)) {
        int fd = -1;
        const auto name = entry.path().filename().string();
        if (std::from_chars(name.data(), name.data() + name.size(), fd).ec != std::errc{}) continue;
        sockaddr_in local{}, peer{};
        socklen_t localSize = sizeof local, peerSize = sizeof peer;
        if (getsockname(fd, reinterpret_cast<sockaddr*>(&local), &localSize) != 0 || local.sin_family != AF_INET) continue;
        if (getpeername(fd, reinterpret_cast<sockaddr*>(&peer), &peerSize) != 0 || peer.sin_family != AF_INET) continue;
        if (ntohs(local.sin_port) == request.local_port && ntohs(peer.sin_port) == request.remote_port) {
            shutdown(fd, SHUT_RDWR);
            return;
        }
    }
}

const std::map<std::string, ErrorBody>& errorBodies() {
    static const std::map<std::string, ErrorBody> bodies = {{"retryable", ErrorBody::retryable},
                                                            {"final", ErrorBody::final},
                                                            {"noflag", ErrorBody::noFlag},
                                                            {"nobody", ErrorBody::none}};
    return bodies;
}

std::string errorBodyName(ErrorBody body) {
    for (const auto& [name, value] : errorBodies()) {
        if (value == body) return name;
    }
    return "?";
}

std::optional<int> wholeNumber(const std::string& text) {
    int value = 0;
    auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (error != std::errc{} || end != text.data() + text.size()) return std::nullopt;
    return value;
}

std::string kindName(FaultKind kind) {
    switch (kind) {
        case FaultKind::status: return "status";
        case FaultKind::delay: return "delay";
        case FaultKind::garbage: return "garbage";
        case FaultKind::truncate: return "truncate";
        case FaultKind::half: return "half";
        case FaultKind::drop: return "drop";
        case FaultKind::wrongType: return "wrongtype";
        case FaultKind::missingKey: return "missingkey";
        case FaultKind::empty: return "empty";
        case FaultKind::slides: return "slides";
        case FaultKind::error: return "error";
        case FaultKind::quota: return "quota";
    }
    return "?";
}

// error [STATUS] CODE [retryable|final|noflag|nobody], from words[next]; the
// index after what it read.
template <typename Fail>
std::size_t parseError(const std::vector<std::string>& words, std::size_t next, Fault& fault, Fail fail) {
    std::optional<int> status;
    if (next < words.size() && wholeNumber(words[next])) {
        status = wholeNumber(words[next]);
        if (*status < 200 || *status > 599) fail("a status is a number from 200 to 599, not '" + words[next] + "'");
        ++next;
    }
    if (next >= words.size() || wholeNumber(words[next]) || errorBodies().count(words[next])) {
        fail("error needs a code such as PROVIDER_TIMEOUT");
    }
    fault.code = words[next++];
    fault.value = status.value_or(service::errorStatus(fault.code));
    fault.body = service::errorRetryable(fault.code) ? ErrorBody::retryable : ErrorBody::final;
    if (next < words.size()) {
        auto body = errorBodies().find(words[next]);
        if (body != errorBodies().end()) {
            fault.body = body->second;
            ++next;
        }
    }
    return next;
}

// quota REMAINING [LIMIT]
template <typename Fail>
Fault parseQuota(const std::vector<std::string>& words, Fail fail) {
    if (words.size() < 2 || words.size() > 3) fail("quota takes the remaining downloads and maybe a limit");
    auto count = [&](const std::string& text) {
        auto number = wholeNumber(text);
        if (!number || *number < 0 || *number > mostDownloads) {
            fail(fmt::format("a download count is 0 to {}, not '{}'", mostDownloads, text));
        }
        return *number;
    };
    Fault fault;
    fault.route = "quota";
    fault.kind = FaultKind::quota;
    fault.value = count(words[1]);
    if (words.size() == 3) fault.limit = count(words[2]);
    return fault;
}

}  // namespace

std::string Fault::describe() const {
    switch (kind) {
        case FaultKind::status:
        case FaultKind::slides: return fmt::format("{} {}", kindName(kind), value);
        case FaultKind::delay: return fmt::format("delay {}", seconds);
        case FaultKind::error: return fmt::format("error {} {} {}", value, code, errorBodyName(body));
        case FaultKind::quota: return limit ? fmt::format("quota {} of {}", value, *limit) : fmt::format("quota {}", value);
        default: return kindName(kind);
    }
}

std::string describe(const RecordedRequest& request) {
    std::string line = request.method + " " + request.path;
    for (const auto& item : request.query) {
        line += " " + item.key + "=" + item.value;
        if (request.route == "icons-search" && item.key == "cursor") {
            if (auto text = iconCursorText(item.value)) line += " (" + *text + ")";
        }
    }
    if (request.fault) line += " [" + *request.fault + "]";
    return line;
}

Fault parseFault(const std::vector<std::string>& words) {
    auto fail = [](const std::string& what) { throw std::invalid_argument(what + " (" + faultUsage + ")"); };
    if (!words.empty() && words[0] == "quota") return parseQuota(words, fail);
    if (words.size() < 2) fail("a fault needs a route and a kind");
    Fault fault;
    fault.route = words[0];
    if (!knownRoute(fault.route)) fail("no route named '" + fault.route + "'");
    static const std::map<std::string, FaultKind> kinds = {
        {"status", FaultKind::status},     {"delay", FaultKind::delay},     {"garbage", FaultKind::garbage},
        {"truncate", FaultKind::truncate}, {"half", FaultKind::half},       {"drop", FaultKind::drop},
        {"wrongtype", FaultKind::wrongType}, {"missingkey", FaultKind::missingKey}, {"empty", FaultKind::empty},
        {"slides", FaultKind::slides},     {"error", FaultKind::error}};
    auto kind = kinds.find(words[1]);
    if (kind == kinds.end()) fail("no fault kind '" + words[1] + "'");
    fault.kind = kind->second;
    std::size_t next = 2;
    const bool takesValue = fault.kind == FaultKind::status || fault.kind == FaultKind::delay ||
                            fault.kind == FaultKind::slides;
    if (takesValue) {
        if (words.size() <= next) fail(words[1] + " needs a value");
        const std::string& value = words[next++];
        if (fault.kind == FaultKind::delay) {
            double seconds = -1;
            auto [end, error] = std::from_chars(value.data(), value.data() + value.size(), seconds);
            if (error != std::errc{} || end != value.data() + value.size() || !(seconds >= 0 && seconds <= longestDelay)) {
                fail(fmt::format("a delay is 0 to {} seconds, not '{}'", longestDelay, value));
            }
            fault.seconds = seconds;
        } else {
            auto number = wholeNumber(value);
            if (fault.kind == FaultKind::status && !(number && *number >= 200 && *number <= 599)) {
                fail("a status is a number from 200 to 599, not '" + value + "'");
            }
            if (fault.kind == FaultKind::slides && !(number && *number >= 0 && *number <= mostSlides)) {
                fail(fmt::format("a slide count is 0 to {}, not '{}'", mostSlides, value));
            }
            fault.value = *number;
        }
    }
    if (fault.kind == FaultKind::error) next = parseError(words, next, fault, fail);
    const bool changesManifest = fault.kind == FaultKind::wrongType || fault.kind == FaultKind::missingKey ||
                                 fault.kind == FaultKind::empty || fault.kind == FaultKind::slides;
    if (changesManifest && fault.route != "manifest" && fault.route != "/cdn/manifest.json") {
        fail(words[1] + " changes the manifest; its route is manifest");
    }
    if (words.size() > next) {
        auto times = wholeNumber(words[next++]);
        if (!times || *times < 1) fail("a count is a whole number of 1 or more, not '" + words[next - 1] + "'");
        fault.times = *times;
    }
    if (words.size() > next) fail("too many words in a fault");
    return fault;
}

Cloud::Cloud(CloudOptions options) : options_(std::move(options)), quotaLimit_(options_.quotaLimit) {
    // A client that goes away mid-answer must not end the process.
    static const bool ignoringBrokenPipes = std::signal(SIGPIPE, SIG_IGN) != SIG_ERR;
    (void)ignoringBrokenPipes;

    dataDirectory_ = options_.dataDirectory;
    if (dataDirectory_.empty()) {
        std::string pattern = (fs::temp_directory_path() / "velmora-cloud-XXXXXX").string();
        if (!mkdtemp(pattern.data())) throw std::runtime_error("cannot make a folder for the fixtures");
        dataDirectory_ = pattern;
        ownsDirectory_ = true;
    }

    server_ = std::make_unique<LoopbackServer>();
    // Enough workers that delayed answers do not hold up the rest.
    server_->new_task_queue = [] { return new httplib::ThreadPool(16); };
    server_->set_pre_routing_handler([this](const httplib::Request& request, httplib::Response& response) {
        handle(request, response);
        return httplib::Server::HandlerResponse::Handled;
    });
    if (options_.port == 0) {
        port_ = server_->bind_to_any_port("127.0.0.1");
    } else if (server_->bind_to_port("127.0.0.1", options_.port)) {
        port_ = options_.port;
    }
    try {
        if (port_ <= 0) throw std::runtime_error(fmt::format("cannot listen on 127.0.0.1:{}", options_.port));
        if (options_.generate) writeFixtures(dataDirectory_, options_.templates, cdnBaseURL());
    } catch (...) {
        server_->stop();
        if (ownsDirectory_) fs::remove_all(dataDirectory_);
        throw;
    }
    thread_ = std::thread([server = server_.get()] { server->listen_after_bind(); });
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(10);
    while (!server_->is_running() && std::chrono::steady_clock::now() < deadline) {
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
}

Cloud::~Cloud() {
    stop();
    std::error_code ec;
    if (ownsDirectory_) fs::remove_all(dataDirectory_, ec);
}

std::string Cloud::baseURL() const { return fmt::format("http://127.0.0.1:{}", port_); }
std::string Cloud::serviceBaseURL() const { return baseURL() + "/api"; }
std::string Cloud::cdnBaseURL() const { return baseURL() + "/cdn/"; }

void Cloud::addFault(Fault fault) {
    if (fault.kind == FaultKind::quota) {
        setQuota(std::nullopt, fault.value, fault.limit);
        return;
    }
    std::lock_guard lock(mutex_);
    faults_.push_back(std::move(fault));
}

void Cloud::clearFaults() {
    std::lock_guard lock(mutex_);
    faults_.clear();
}

std::vector<Fault> Cloud::faults() const {
    std::lock_guard lock(mutex_);
    return faults_;
}

std::vector<RecordedRequest> Cloud::requests() const {
    std::lock_guard lock(mutex_);
    return requests_;
}

void Cloud::clearRequests() {
    std::lock_guard lock(mutex_);
    requests_.clear();
}

Quota Cloud::quota(const std::string& licenseKey) const {
    std::lock_guard lock(mutex_);
    auto it = quotas_.find(licenseKey);
    if (it != quotas_.end()) return it->second;
    return {quotaLimit_, quotaRemaining_.value_or(quotaLimit_)};
}

void Cloud::setQuota(const std::optional<std::string>& licenseKey, int remaining, std::optional<int> limit) {
    std::lock_guard lock(mutex_);
    if (licenseKey) {
        Quota& quota = quotaLocked(*licenseKey);
        quota.remaining = remaining;
        if (limit) quota.limit = *limit;
        return;
    }
    if (limit) quotaLimit_ = *limit;
    quotaRemaining_ = remaining;
    for (auto& [key, quota] : quotas_) {
        quota.remaining = remaining;
        if (limit) quota.limit = *limit;
    }
}

Quota& Cloud::quotaLocked(const std::string& licenseKey) {
    auto [it, added] = quotas_.try_emplace(licenseKey, Quota{quotaLimit_, quotaRemaining_.value_or(quotaLimit_)});
    return it->second;
}

bool Cloud::spendDownload(const std::string& licenseKey) {
    std::lock_guard lock(mutex_);
    Quota& quota = quotaLocked(licenseKey);
    if (quota.remaining <= 0) return false;
    --quota.remaining;
    return true;
}

void Cloud::stop() {
    {
        std::lock_guard lock(mutex_);
        if (stopped_) return;
        stopping_ = stopped_ = true;
    }
    wake_.notify_all();
    server_->stop();
    if (thread_.joinable()) thread_.join();
}

bool Cloud::running() const {
    std::lock_guard lock(mutex_);
    return !stopped_;
}

bool Cloud::waitFor(double seconds) {
    std::unique_lock lock(mutex_);
    return !wake_.wait_for(lock, std::chrono::duration<double>(seconds), [this] { return stopping_; });
}

std::optional<Fault> Cloud::takeFault(const std::string& route, const std::string& path) {
    for (auto it = faults_.begin(); it != faults_.end(); ++it) {
        if (!matches(*it, route, path)) continue;
        Fault fault = *it;
        if (it->times && --*it->times == 0) faults_.erase(it);
        return fault;
    }
    return std::nullopt;
}

std::string Cloud::manifestBody(const std::optional<Fault>& fault) const {
    if (fault && fault->kind == FaultKind::slides) {
        return manifestText(static_cast<std::size_t>(fault->value), cdnBaseURL());
    }
    if (fault && fault->kind == FaultKind::empty) return R"({"slides":[]})";
    auto text = readFile(fs::path(dataDirectory_) / "manifest.json").value_or("");
    if (!fault || (fault->kind != FaultKind::wrongType && fault->kind != FaultKind::missingKey)) return text;
    auto json = nlohmann::ordered_json::parse(text, nullptr, false);
    if (!json.is_object()) return text;
    auto slides = json.find("slides");
    const bool hasSlide = slides != json.end() && slides->is_array() && !slides->empty() && slides->front().is_object();
    if (fault->kind == FaultKind::wrongType) {
        if (hasSlide) {
            slides->front()["id"] = 1;
        } else {
            json["slides"] = nlohmann::ordered_json::object();
        }
    } else if (hasSlide) {
        slides->front().erase("pptx");
    } else {
        json.erase("slides");
    }
    return json.dump();
}

void Cloud::handle(const httplib::Request& request, httplib::Response& response) {
    RecordedRequest record;
    record.method = request.method;
    const std::string& target = targetAsSent(request);
    const auto question = target.find('?');
    record.path = target.substr(0, question);
    if (question != std::string::npos) record.rawQuery = target.substr(question + 1);
    record.query = queryItems(record.rawQuery);
    const std::string path = percentDecoded(record.path, false);
    record.route = routeOf(path);

    // Pages loaded from a string fetch from origin "null": every answer allows any origin.
    response.set_header("Access-Control-Allow-Origin", "*");
    const bool preflight = request.method == "OPTIONS";
    std::optional<Fault> fault;
    {
        // One lock for both, so faults are spent in the order requests are recorded.
        std::lock_guard lock(mutex_);
        // A preflight spends no fault: the request it clears the way for does.
        if (!preflight) fault = takeFault(record.route, path);
        if (fault) record.fault = fault->describe();
        requests_.push_back(record);
    }
    if (options_.onRequest) options_.onRequest(record);

    if (preflight) {
        response.status = 204;
        response.set_header("Access-Control-Allow-Methods", "GET, HEAD, OPTIONS");
        const std::string headers = request.get_header_value("Access-Control-Request-Headers");
        response.set_header("Access-Control-Allow-Headers", headers.empty() ? "*" : headers);
        if (request.has_header("Access-Control-Request-Private-Network")) {
            response.set_header("Access-Control-Allow-Private-Network", "true");
        }
        response.set_header("Access-Control-Max-Age", "600");
        return;
    }

    if (fault) {
        switch (fault->kind) {
            case FaultKind::drop:
                dropConnection(request);
                response.status = 500;
                return;
            case FaultKind::status: answerPage(response, fault->value); return;
            case FaultKind::delay: waitFor(fault->seconds); break;
            case FaultKind::garbage:
                response.status = 200;
                response.set_content(garbageBytes(), contentType(path).c_str());
                return;
            case FaultKind::error:
                response.status = fault->value;
                if (fault->body != ErrorBody::none) {
                    std::optional<bool> retryable;
                    if (fault->body != ErrorBody::noFlag) retryable = fault->body == ErrorBody::retryable;
                    response.set_content(service::errorEnvelope(fault->code, service::errorMessage(fault->code), retryable),
                                         "application/json");
                }
                return;
            default: break;
        }
    }

    // The usual answer.
    if (record.route == "manifest") {
        if (fault || fs::exists(fs::path(dataDirectory_) / "manifest.json")) {
            response.status = 200;
            response.set_content(manifestBody(fault), "application/json");
        } else {
            answerPage(response, 404);
        }
    } else if (startsWith(path, "/cdn/")) {
        auto relative = cdnRelative(path);
        std::optional<std::string> bytes;
        if (auto reply = relative ? service::photoDownload(*relative, cdnBaseURL()) : std::nullopt) {
            answer(response, *reply);
        } else {
            if (relative && !relative->empty()) {
                bytes = readFile(fs::path(dataDirectory_) / *relative);
                if (!bytes) bytes = fixtureBytes(*relative);
            }
            if (bytes) {
                response.status = 200;
                response.set_content(std::move(*bytes), contentType(path).c_str());
            } else {
                answerPage(response, 404);
            }
        }
    } else if (record.route == "usage") {
        response.status = 200;
        response.set_content(R"({"ok":true})", "application/json");
    } else if (record.route == "icons-search") {
        answer(response, service::iconSearch(record.query, cdnBaseURL()));
    } else if (record.route == "icons-asset") {
        answer(response, service::iconAsset(record.query, [this](const std::string& key) { return spendDownload(key); }));
    } else if (record.route == "icons-quota") {
        answer(response, service::iconQuota(record.query, [this](const std::string& key) { return quota(key); }));
    } else if (record.route == "images") {
        answer(response, service::photoSearch(record.query, cdnBaseURL()));
    } else if (record.route == "track") {
        answer(response, service::trackDownload(record.query));
    } else {
        answerPage(response, 404);
    }

    if (fault && (fault->kind == FaultKind::half || fault->kind == FaultKind::truncate)) {
        auto body = std::make_shared<std::string>(std::move(response.body));
        const std::size_t half = body->size() / 2;
        const std::string type = response.get_header_value("Content-Type");
        response.body.clear();
        response.headers.erase("Content-Type");
        if (fault->kind == FaultKind::half) {
            response.set_content(body->substr(0, half), type.c_str());
        } else {
            // The length announced is the whole; the connection closes after half.
            response.set_content_provider(body->size(), type.c_str(),
                                          [body, half](std::size_t offset, std::size_t length, httplib::DataSink& sink) {
                                              if (offset >= half) return false;
                                              sink.write(body->data() + offset, std::min(length, half - offset));
                                              return true;
                                          });
        }
    }
}

}  // namespace velmora::cloud
