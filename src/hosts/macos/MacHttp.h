// HTTP port on macOS: NSURLSession.
//
// Provides: MacHttp. One data task per request on an ephemeral session (no
// cookies or cache kept between requests, as the library expects none); the
// completion runs on the session's delegate queue, a background thread, as
// the platform's data task completion does. Header names are lower-cased.
#pragma once

#include "platform/Http.h"

#ifdef __OBJC__
@class NSURLSession;
#endif

namespace velmora::hosts::macos {

class MacHttp : public platform::HttpPort {
public:
    MacHttp();
    void send(platform::HttpRequest request, std::function<void(platform::HttpResponse)> completion) override;

private:
#ifdef __OBJC__
    NSURLSession* session_;
#endif
};

}  // namespace velmora::hosts::macos
