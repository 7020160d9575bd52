// The cloud stand-in in the simulator: faults on demand, fetches of its own,
// and what it was asked.
//
// Commands: `cloud fault ROUTE KIND [VALUE...] [N]`, `cloud fault quota
// REMAINING [LIMIT]`, `cloud clear [faults|requests|all]`, `cloud stop`,
// `cloud get PATH`. Show: `show cloud [sorted]`.
// The port never reaches the transcript: base URLs print with `*` for it.

#include <fmt/format.h>
#include <httplib.h>
#include <nlohmann/json.hpp>

#include <algorithm>
#include <stdexcept>

#include "Cloud.h"
#include "Host.h"
#include "Scenario.h"

namespace velmora::host {

namespace {

cloud::Cloud& theCloud() {
    auto* cloud = Host::instance().cloud();
    if (!cloud) throw ScenarioError("the cloud did not start");
    return *cloud;
}

std::string withoutPort(const std::string& url, const cloud::Cloud& cloud) {
    const std::string base = cloud.baseURL();
    std::string out = url;
    for (auto at = out.find(base); at != std::string::npos; at = out.find(base, at + 1)) {
        out.replace(at, base.size(), "http://127.0.0.1:*");
    }
    return out;
}

// What a body is, in words that do not depend on the port.
std::string summary(const std::string& type, const std::string& body) {
    if (type.rfind("application/json", 0) == 0) {
        auto json = nlohmann::json::parse(body, nullptr, false);
        // No byte count: a manifest's length follows the port's digits.
        if (json.is_discarded()) return "not JSON";
        if (json.is_object() && json.contains("slides") && json["slides"].is_array()) {
            std::size_t malformed = 0;
            for (const auto& slide : json["slides"]) {
                bool whole = slide.is_object();
                for (const char* key : {"id", "title", "thumb", "pptx", "cat", "pack"}) {
                    whole = whole && slide.contains(key) && slide[key].is_string();
                }
                if (!whole) ++malformed;
            }
            return fmt::format("{} slides{}", json["slides"].size(),
                               malformed ? fmt::format(", {} without six strings", malformed) : "");
        }
        // The service's failures share one envelope; its code says more than its length.
        if (json.is_object() && json.contains("error") && json["error"].is_object()) {
            const auto& error = json["error"];
            const auto code = error.find("code");
            return "error " + (code != error.end() && code->is_string() ? code->get<std::string>() : std::string("without a code"));
        }
        if (body.size() <= 80) return Host::oneLine(body);
        return json.is_object() ? "an object without a slides array" : "JSON that is no object";
    }
    if (type == "image/png") {
        const std::string signature = "\x89PNG\r\n\x1a\n";
        if (body.size() < 24 || body.compare(0, signature.size(), signature) != 0) {
            return fmt::format("{} bytes, not a PNG", body.size());
        }
        auto be32 = [&](std::size_t at) {
            return (static_cast<unsigned>(static_cast<unsigned char>(body[at])) << 24) |
                   (static_cast<unsigned>(static_cast<unsigned char>(body[at + 1])) << 16) |
                   (static_cast<unsigned>(static_cast<unsigned char>(body[at + 2])) << 8) |
                   static_cast<unsigned>(static_cast<unsigned char>(body[at + 3]));
        };
        return fmt::format("PNG {}x{}", be32(16), be32(20));
    }
    return fmt::format("{} bytes", body.size());
}

void showCloud(bool sorted) {
    auto& host = Host::instance();
    auto* cloud = host.cloud();
    if (!cloud) {
        host.emit("cloud: not started");
        return;
    }
    host.emit("cloud: service " + withoutPort(cloud->serviceBaseURL(), *cloud));
    host.emit("cloud: cdn " + withoutPort(cloud->cdnBaseURL(), *cloud));
    if (!cloud->running()) host.emit("cloud: stopped");
    for (const auto& fault : cloud->faults()) {
        host.emit(fmt::format("cloud: fault {} {} {}", fault.route, fault.describe(),
                              fault.times ? fmt::format("x{}", *fault.times) : std::string("always")));
    }
    std::vector<std::string> lines;
    for (const auto& request : cloud->requests()) lines.push_back(Host::oneLine(cloud::describe(request)));
    // Requests sent side by side arrive in any order; sorted, they read the same each run.
    if (sorted) std::sort(lines.begin(), lines.end());
    if (lines.empty()) host.emit("cloud: no requests");
    for (const auto& line : lines) host.emit("cloud: " + withoutPort(line, *cloud));
}

[[maybe_unused]] const bool registered[] = {
    // The longest fault is seven words: fault icons-search error 503 PROVIDER_TIMEOUT retryable 2.
    registerCommand({"cloud",
                     "cloud fault ROUTE KIND [VALUE...] [N] | fault quota REMAINING [LIMIT] | clear [faults|requests|all] | "
                     "stop | get PATH",
                     1, 7,
                     [](const Arguments& a) {
                         const std::string& verb = a[0];
                         if (verb == "fault") {
                             try {
                                 theCloud().addFault(cloud::parseFault(Arguments(a.begin() + 1, a.end())));
                             } catch (const std::invalid_argument& error) {
                                 throw ScenarioError(error.what());
                             }
                         } else if (verb == "clear" && a.size() <= 2) {
                             const std::string what = a.size() == 2 ? a[1] : "faults";
                             if (what != "faults" && what != "requests" && what != "all") {
                                 throw ScenarioError("cloud clear takes faults, requests or all");
                             }
                             if (what != "requests") theCloud().clearFaults();
                             if (what != "faults") theCloud().clearRequests();
                         } else if (verb == "stop" && a.size() == 1) {
                             theCloud().stop();
                         } else if (verb == "get" && a.size() == 2 && a[1].rfind('/', 0) == 0) {
                             auto& cloud = theCloud();
                             httplib::Client client("127.0.0.1", cloud.port());
                             client.set_connection_timeout(5);
                             client.set_read_timeout(65);  // the longest delay and then some
                             auto result = client.Get(a[1].c_str());
                             if (!result) {
                                 Host::instance().emit("cloud: get " + a[1] + ": no answer (" +
                                                       httplib::to_string(result.error()) + ")");
                                 return;
                             }
                             const std::string type = result->get_header_value("Content-Type");
                             Host::instance().emit(fmt::format("cloud: get {}: {} {}, {}", a[1], result->status, type,
                                                               summary(type, result->body)));
                         } else {
                             throw ScenarioError(
                                 "cloud takes fault ROUTE KIND [VALUE...] [N], fault quota REMAINING [LIMIT], "
                                 "clear [faults|requests|all], stop or get PATH");
                         }
                     }}),
    registerShow({"cloud", "show cloud [sorted]", 0, 1,
                  [](const Arguments& a) {
                      if (!a.empty() && a[0] != "sorted") throw ScenarioError("show cloud takes only 'sorted'");
                      showCloud(!a.empty());
                  }}),
};

}  // namespace

}  // namespace velmora::host
