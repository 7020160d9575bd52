#include <curl/curl.h>

#include <cctype>

#include "hosts/linux/LinuxAdapters.h"

namespace velmora::hosts::linuxhost {

namespace {

size_t appendBody(char* data, size_t size, size_t count, void* target) {
    static_cast<std::string*>(target)->append(data, size * count);
    return size * count;
}

size_t appendHeader(char* data, size_t size, size_t count, void* target) {
    std::string line(data, size * count);
    auto colon = line.find(':');
    if (colon != std::string::npos) {
        std::string name = line.substr(0, colon);
        for (char& c : name) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
        std::string value = line.substr(colon + 1);
        auto first = value.find_first_not_of(" \t");
        auto last = value.find_last_not_of(" \t\r\n");
        value = first == std::string::npos ? "" : value.substr(first, last - first + 1);
        (*static_cast<std::map<std::string, std::string>*>(target))[name] = value;
    }
    return size * count;
}

}  // namespace

CurlHttp::CurlHttp(std::shared_ptr<platform::DispatchPort> dispatch) : dispatch_(std::move(dispatch)) {}

platform::HttpResponse CurlHttp::perform(const platform::HttpRequest& request) {
    platform::HttpResponse response;
    CURL* curl = curl_easy_init();
    if (!curl) {
        response.transportError = "The network connection could not be created.";
        return response;
    }
    curl_slist* headers = nullptr;
    for (const auto& [name, value] : request.headers) headers = curl_slist_append(headers, (name + ": " + value).c_str());

    curl_easy_setopt(curl, CURLOPT_URL, request.url.c_str());
    curl_easy_setopt(curl, CURLOPT_NOSIGNAL, 1L);
    curl_easy_setopt(curl, CURLOPT_NOPROXY, "*");
    curl_easy_setopt(curl, CURLOPT_FOLLOWLOCATION, 1L);
    curl_easy_setopt(curl, CURLOPT_TIMEOUT_MS, static_cast<long>(request.timeoutSeconds * 1000));
    curl_easy_setopt(curl, CURLOPT_HTTPHEADER, headers);
    curl_easy_setopt(curl, CURLOPT_WRITEFUNCTION, appendBody);
    curl_easy_setopt(curl, CURLOPT_WRITEDATA, &response.body);
    curl_easy_setopt(curl, CURLOPT_HEADERFUNCTION, appendHeader);
    curl_easy_setopt(curl, CURLOPT_HEADERDATA, &response.headers);
    if (request.method == "POST") {
        curl_easy_setopt(curl, CURLOPT_POST, 1L);
        curl_easy_setopt(curl, CURLOPT_POSTFIELDS, request.body.c_str());
        curl_easy_setopt(curl, CURLOPT_POSTFIELDSIZE, static_cast<long>(request.body.size()));
    } else if (request.method != "GET") {
        curl_easy_setopt(curl, CURLOPT_CUSTOMREQUEST, request.method.c_str());
    }

    CURLcode code = curl_easy_perform(curl);
    if (code == CURLE_OK) {
        long status = 0;
        curl_easy_getinfo(curl, CURLINFO_RESPONSE_CODE, &status);
        response.status = static_cast<int>(status);
    } else {
        response.transportError = curl_easy_strerror(code);
        response.body.clear();
        response.headers.clear();
    }
    curl_slist_free_all(headers);
    curl_easy_cleanup(curl);
    return response;
}

void CurlHttp::send(platform::HttpRequest request, std::function<void(platform::HttpResponse)> completion) {
    dispatch_->globalAsync(platform::QualityOfService::utility,
                           [request = std::move(request), completion = std::move(completion)] {
                               auto response = perform(request);
                               if (completion) completion(std::move(response));
                           });
}

}  // namespace velmora::hosts::linuxhost
