// HTTP port: one request, one completion.
//
// Provides: HttpRequest, HttpResponse, HttpPort.
// The completion runs once, on a worker thread, never on the caller's stack.
// A transport failure sets `transportError` and leaves status 0; any status,
// 404 or 500 included, is a response and not an error.
#pragma once

#include <functional>
#include <map>
#include <optional>
#include <string>

namespace velmora::platform {

struct HttpRequest {
    std::string method = "GET";
    std::string url;
    std::map<std::string, std::string> headers;
    std::string body;
    double timeoutSeconds = 60;
};

struct HttpResponse {
    int status = 0;
    std::map<std::string, std::string> headers;  // names lower-cased
    std::string body;
    std::optional<std::string> transportError;
};

class HttpPort {
public:
    virtual ~HttpPort() = default;
    virtual void send(HttpRequest request, std::function<void(HttpResponse)> completion) = 0;
};

}  // namespace velmora::platform
