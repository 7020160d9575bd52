// cpp-httplib's server with one change: it reads each request line itself
// and writes a second "?" in the target as "%3F" before httplib parses it.
// httplib refuses such a target with 400 before any handler runs, while a
// query may hold "?" as it stands, and clients send one when a URL travels
// unencoded inside another query.
//
// Provides: LoopbackServer, targetAsSent().
#pragma once

#include <httplib.h>

#include <string>

namespace velmora::cloud {

class LoopbackServer : public httplib::Server {
private:
    bool process_and_close_socket(socket_t sock) override;
};

// The request target as the client sent it, for the handler running on this
// thread; the one httplib parsed when nothing was rewritten.
const std::string& targetAsSent(const httplib::Request& request);

}  // namespace velmora::cloud
