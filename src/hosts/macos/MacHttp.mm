#import <Foundation/Foundation.h>

#include <memory>

#include "hosts/macos/MacHttp.h"
#include "hosts/macos/MacStrings.h"

namespace velmora::hosts::macos {

MacHttp::MacHttp() {
    NSURLSessionConfiguration* configuration = [NSURLSessionConfiguration ephemeralSessionConfiguration];
    session_ = [NSURLSession sessionWithConfiguration:configuration];
}

void MacHttp::send(platform::HttpRequest request, std::function<void(platform::HttpResponse)> completion) {
    auto done = std::make_shared<std::function<void(platform::HttpResponse)>>(std::move(completion));
    @autoreleasepool {
        NSURL* url = [NSURL URLWithString:toNSString(request.url)];
        if (!url) {
            platform::HttpResponse response;
            response.transportError = "unsupported URL";
            (*done)(std::move(response));
            return;
        }
        NSMutableURLRequest* urlRequest = [NSMutableURLRequest requestWithURL:url];
        urlRequest.HTTPMethod = toNSString(request.method);
        urlRequest.timeoutInterval = request.timeoutSeconds;
        for (const auto& [name, value] : request.headers) {
            [urlRequest setValue:toNSString(value) forHTTPHeaderField:toNSString(name)];
        }
        if (!request.body.empty()) urlRequest.HTTPBody = toNSData(request.body);

        NSURLSessionDataTask* task =
            [session_ dataTaskWithRequest:urlRequest
                        completionHandler:^(NSData* data, NSURLResponse* urlResponse, NSError* error) {
                          __block platform::HttpResponse response;
                          if (error) {
                              response.transportError = toStdString([error localizedDescription]);
                          } else if ([urlResponse isKindOfClass:[NSHTTPURLResponse class]]) {
                              NSHTTPURLResponse* http = (NSHTTPURLResponse*)urlResponse;
                              response.status = static_cast<int>([http statusCode]);
                              [[http allHeaderFields] enumerateKeysAndObjectsUsingBlock:^(id key, id value, BOOL*) {
                                if ([key isKindOfClass:[NSString class]] && [value isKindOfClass:[NSString class]]) {
                                    response.headers[toStdString([(NSString*)key lowercaseString])] = toStdString((NSString*)value);
                                }
                              }];
                          }
                          response.body = toStdString(data);
                          (*done)(std::move(response));
                        }];
        [task resume];
    }
}

}  // namespace velmora::hosts::macos
