// The cloud stand-in: the service and the CDN on loopback, with its own
// fixtures, a record of every request and faults on demand.
//
// Provides: QueryItem, RecordedRequest, describe(), CloudOptions, FaultKind,
// ErrorBody, Fault, parseFault(), faultUsage, Quota, Cloud.
//
// One HTTP server on 127.0.0.1 (never another address) answers
//   CDN      BASE/cdn/...   manifest.json and the files it names, from the
//                           data folder, or drawn on demand for generated
//                           names; icons/<provider>-<id>.svg, photos/<id>.png,
//                           photos/<id>-small.png, photos/<id>/download and
//                           people/<handle>, drawn on demand
//   service  BASE/api/...   get_downloadTemplate (200 {"ok":true}),
//                           v2/icons/search, v2/icons/asset, v2/icons/quota,
//                           get_searchImage, get_trackDownload (Service.h)
// Every answer carries Access-Control-Allow-Origin: *, and OPTIONS
// preflights are answered (recorded, but they meet no fault).
// Routes by name: manifest, thumb (.png below cdn), pptx (.pptx below cdn),
// icon (below cdn/icons/), photo (below cdn/photos/), cdn (anything below
// /cdn/), usage (get_downloadTemplate), icons-search, icons-asset,
// icons-quota, images (get_searchImage), track (get_trackDownload), api
// (anything below /api/), any; or an exact path such as /cdn/thumbs/cover.png.
//
// Every member is safe from any thread. Handlers run on the server's pool.
#pragma once

#include <condition_variable>
#include <cstddef>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <thread>
#include <vector>

namespace httplib {
class Server;
struct Request;
struct Response;
}  // namespace httplib

namespace velmora::cloud {

struct QueryItem {
    std::string rawKey, rawValue;  // as sent
    std::string key, value;        // percent-decoded, '+' as a blank
};

struct RecordedRequest {
    std::string method;
    std::string path;     // as sent, without the query
    std::string rawQuery;
    std::vector<QueryItem> query;  // in the order sent
    std::string route;    // the most specific route name, or "other"
    std::optional<std::string> fault;  // the fault it met, described
};

struct CloudOptions {
    std::string dataDirectory;  // empty: a temporary folder, removed with the cloud
    int port = 0;               // 0: an ephemeral one
    std::size_t templates = 12;
    bool generate = true;       // false: serve the data folder as it stands
    int quotaLimit = 50;        // icon downloads a month, per licence key
    // Told of each request as it is recorded, on a server thread.
    std::function<void(const RecordedRequest&)> onRequest;
};

enum class FaultKind {
    status,      // answer `value` with a short HTML page
    delay,       // wait `seconds` (0..60), then answer as usual
    garbage,     // 200 with bytes that are neither JSON, text nor an image
    truncate,    // announce the whole body, send its first half, close
    half,        // a complete answer whose body is the first half
    drop,        // close the connection without an answer
    wrongType,   // manifest: the first slide's "id" is a number (no slides: "slides" is an object)
    missingKey,  // manifest: the first slide lacks "pptx" (no slides: there is no "slides")
    empty,       // manifest: {"slides":[]}
    slides,      // manifest: `value` generated slides instead of the catalogue
    error,       // status `value` with the error envelope of `code`, as `body` says
    quota,       // not a fault: sets every licence's remaining downloads to `value` (and the limit)
};

// What an error fault sends: the envelope with "retryable" true or false or
// left out, or no body at all.
enum class ErrorBody { retryable, final, noFlag, none };

struct Fault {
    std::string route;  // a route name or an exact path (see above)
    FaultKind kind = FaultKind::status;
    int value = 0;       // status code, slide count or remaining downloads
    double seconds = 0;  // delay
    std::string code;    // error
    ErrorBody body = ErrorBody::final;  // error
    std::optional<int> limit;  // quota: the new monthly limit; nothing: as it was
    std::optional<int> times;  // the next N matching requests; nothing: always

    // "status 500", "delay 0.5", "slides 10000", "drop",
    // "error 504 PROVIDER_TIMEOUT retryable", "quota 0 of 50".
    std::string describe() const;
};

// Reads ROUTE KIND [VALUE] [N] from words such as {"manifest","status","500","2"},
// {"icons-search","error","503","PROVIDER_TIMEOUT","retryable","2"} or {"quota","0"}.
// Throws std::invalid_argument with a message naming what is wrong.
Fault parseFault(const std::vector<std::string>& words);
extern const char* const faultUsage;

// "GET /api/get_downloadTemplate licenseKey=K slideId=S", the query decoded
// (an icon search's cursor followed by what it holds: "cursor=X (arrow|all|30)"),
// then " [status 500]" when it met a fault.
std::string describe(const RecordedRequest& request);

struct Quota {
    int limit = 0;
    int remaining = 0;
};

class Cloud {
public:
    // Makes the fixtures and starts listening; throws std::runtime_error
    // when it cannot (port taken, folder not writable).
    explicit Cloud(CloudOptions options = {});
    ~Cloud();
    Cloud(const Cloud&) = delete;
    Cloud& operator=(const Cloud&) = delete;

    int port() const { return port_; }
    std::string baseURL() const;         // http://127.0.0.1:P
    std::string serviceBaseURL() const;  // http://127.0.0.1:P/api
    std::string cdnBaseURL() const;      // http://127.0.0.1:P/cdn/
    const std::string& dataDirectory() const { return dataDirectory_; }
    std::size_t templateCount() const { return options_.templates; }

    // Faults meet requests in the order added: a request takes the first
    // one whose route matches, and a counted one goes when spent. A quota
    // "fault" is not kept: it calls setQuota for every licence at once.
    void addFault(Fault fault);
    void clearFaults();
    std::vector<Fault> faults() const;

    std::vector<RecordedRequest> requests() const;
    void clearRequests();

    // A licence key's monthly icon downloads; a key starts with the limit.
    Quota quota(const std::string& licenseKey) const;
    // Sets one key's remaining downloads (and its limit), or, without a key,
    // every key's, those not seen yet included.
    void setQuota(const std::optional<std::string>& licenseKey, int remaining, std::optional<int> limit = std::nullopt);

    // Stops answering: later connections are refused. Waits for the
    // requests under way; a delay in progress ends at once.
    void stop();
    bool running() const;

private:
    void handle(const httplib::Request& request, httplib::Response& response);
    std::optional<Fault> takeFault(const std::string& route, const std::string& path);
    bool waitFor(double seconds);
    std::string manifestBody(const std::optional<Fault>& fault) const;
    Quota& quotaLocked(const std::string& licenseKey);
    bool spendDownload(const std::string& licenseKey);

    CloudOptions options_;
    std::string dataDirectory_;
    bool ownsDirectory_ = false;
    int port_ = 0;
    std::unique_ptr<httplib::Server> server_;
    std::thread thread_;

    mutable std::mutex mutex_;
    std::condition_variable wake_;
    bool stopping_ = false;
    bool stopped_ = false;
    std::vector<Fault> faults_;
    std::vector<RecordedRequest> requests_;
    std::map<std::string, Quota> quotas_;
    int quotaLimit_ = 0;                   // for keys not seen yet
    std::optional<int> quotaRemaining_;    // the same; nothing: the limit
};

}  // namespace velmora::cloud
