#include "LoopbackServer.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <cstring>
#include <optional>

namespace velmora::cloud {

namespace {

constexpr std::size_t longestRequestLine = CPPHTTPLIB_REQUEST_URI_MAX_LENGTH + 64;
constexpr int idleSliceMilliseconds = 50;

thread_local const std::string* rewrittenFrom = nullptr;

int milliseconds(time_t seconds, time_t microseconds) {
    return static_cast<int>(seconds * 1000 + microseconds / 1000);
}

bool waitFor(int fd, short events, int timeout) {
    pollfd entry{fd, events, 0};
    for (;;) {
        const int ready = ::poll(&entry, 1, timeout);
        if (ready < 0 && errno == EINTR) continue;
        return ready > 0;
    }
}

void addressOf(int fd, bool peer, std::string& ip, int& port) {
    sockaddr_storage address{};
    socklen_t size = sizeof address;
    const int result = peer ? getpeername(fd, reinterpret_cast<sockaddr*>(&address), &size)
                            : getsockname(fd, reinterpret_cast<sockaddr*>(&address), &size);
    if (result != 0 || address.ss_family != AF_INET) return;
    const auto& in = reinterpret_cast<const sockaddr_in&>(address);
    char text[INET_ADDRSTRLEN] = {};
    inet_ntop(AF_INET, &in.sin_addr, text, sizeof text);
    ip = text;
    port = ntohs(in.sin_port);
}

// "GET /a?b=c?d HTTP/1.1\r\n" to "GET /a?b=c%3Fd HTTP/1.1\r\n"; nothing when
// there is nothing to change.
std::optional<std::string> rewritten(const std::string& line, std::string& target) {
    const auto first = line.find(' ');
    const auto last = line.rfind(' ');
    if (first == std::string::npos || last <= first) return std::nullopt;
    target = line.substr(first + 1, last - first - 1);
    const auto question = target.find('?');
    if (question == std::string::npos || target.find('?', question + 1) == std::string::npos) return std::nullopt;
    std::string fixed = target.substr(0, question + 1);
    for (std::size_t i = question + 1; i < target.size(); ++i) fixed += target[i] == '?' ? "%3F" : std::string(1, target[i]);
    return line.substr(0, first + 1) + fixed + line.substr(last);
}

// The connection as httplib's own socket stream reads and writes it, with
// bytes already read in front.
class RequestStream final : public httplib::Stream {
public:
    RequestStream(int fd, int readTimeout, int writeTimeout)
        : fd_(fd), readTimeout_(readTimeout), writeTimeout_(writeTimeout) {}

    bool is_readable() const override { return !pending_.empty() || waitFor(fd_, POLLIN, readTimeout_); }
    bool is_writable() const override {
        if (!waitFor(fd_, POLLOUT, writeTimeout_)) return false;
        // Alive unless the peer has closed its end.
        char byte = 0;
        return !waitFor(fd_, POLLIN, 0) || ::recv(fd_, &byte, 1, MSG_PEEK | MSG_DONTWAIT) > 0;
    }

    ssize_t read(char* ptr, size_t size) override {
        if (!pending_.empty()) {
            const std::size_t count = std::min(size, pending_.size());
            std::memcpy(ptr, pending_.data(), count);
            pending_.erase(0, count);
            return static_cast<ssize_t>(count);
        }
        if (!waitFor(fd_, POLLIN, readTimeout_)) return -1;
        for (;;) {
            const ssize_t count = ::recv(fd_, ptr, size, 0);
            if (count < 0 && errno == EINTR) continue;
            return count;
        }
    }

    ssize_t write(const char* ptr, size_t size) override {
        if (!waitFor(fd_, POLLOUT, writeTimeout_)) return -1;
        for (;;) {
            const ssize_t count = ::send(fd_, ptr, size, MSG_NOSIGNAL);
            if (count < 0 && errno == EINTR) continue;
            return count;
        }
    }

    void get_remote_ip_and_port(std::string& ip, int& port) const override { addressOf(fd_, true, ip, port); }
    void get_local_ip_and_port(std::string& ip, int& port) const override { addressOf(fd_, false, ip, port); }
    socket_t socket() const override { return fd_; }

    bool hasPending() const { return !pending_.empty(); }

    // Reads on to the end of the next request line and puts it back in front,
    // rewritten when it must be; `target` is the target as sent. False when
    // the peer closes or falls silent first.
    bool takeRequestLine(std::string& target, bool& changed) {
        changed = false;
        target.clear();
        for (;;) {
            const auto end = pending_.find("\r\n");
            if (end != std::string::npos) {
                if (auto fixed = rewritten(pending_.substr(0, end + 2), target)) {
                    pending_.replace(0, end + 2, *fixed);
                    changed = true;
                }
                return true;
            }
            // Too long for a request line: httplib answers it as it would.
            if (pending_.size() > longestRequestLine) return true;
            char buffer[4096];
            const ssize_t count = read(buffer, sizeof buffer);
            if (count <= 0) return false;
            pending_.append(buffer, static_cast<std::size_t>(count));
        }
    }

private:
    int fd_;
    int readTimeout_, writeTimeout_;
    std::string pending_;
};

}  // namespace

bool LoopbackServer::process_and_close_socket(socket_t sock) {
    RequestStream stream(sock, milliseconds(read_timeout_sec_, read_timeout_usec_),
                         milliseconds(write_timeout_sec_, write_timeout_usec_));
    // As httplib's own loop: a few requests a connection, while it is not idle too long.
    for (std::size_t left = keep_alive_max_count_; left > 0 && svr_sock_ != INVALID_SOCKET; --left) {
        if (!stream.hasPending()) {
            const auto idleUntil = std::chrono::steady_clock::now() + std::chrono::seconds(keep_alive_timeout_sec_);
            bool readable = false;
            while (!readable && svr_sock_ != INVALID_SOCKET && std::chrono::steady_clock::now() < idleUntil) {
                readable = waitFor(sock, POLLIN, idleSliceMilliseconds);
            }
            if (!readable) break;
        }
        std::string target;
        bool changed = false;
        if (!stream.takeRequestLine(target, changed)) break;
        rewrittenFrom = changed ? &target : nullptr;
        bool closed = false;
        const bool answered = process_request(stream, left == 1, closed, nullptr);
        rewrittenFrom = nullptr;
        if (!answered || closed) break;
    }
    ::shutdown(sock, SHUT_RDWR);
    ::close(sock);
    return true;
}

const std::string& targetAsSent(const httplib::Request& request) {
    return rewrittenFrom ? *rewrittenFrom : request.target;
}

}  // namespace velmora::cloud
