// What every fuzz target shares: a fresh fake platform per input, and the
// checks that turn a swallowed failure into a finding.
//
// Provides: fuzz::Session, fuzz::fail(), fuzz::splitAtNul(), fuzz::look(), fuzz::Bytes.
// A target makes one Session per input, feeds the bytes in and lets the
// Session settle the queues when it ends. An exception that reached one of
// the library's guards is logged there as "VL: WHERE failed..." and passes
// in a unit test unseen; here it aborts, so libFuzzer keeps the input.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <utility>

#include "fake/FakePlatform.h"
#include "ui/Node.h"

namespace velmora::fuzz {

// The input as text; it may hold NULs and bytes that are no UTF-8.
struct Bytes {
    Bytes(const std::uint8_t* data, std::size_t size) : text(reinterpret_cast<const char*>(data), size) {}
    std::string_view text;
    // Takes the first byte off as a choice (0 when there is none).
    std::uint8_t take() {
        if (text.empty()) return 0;
        const auto first = static_cast<std::uint8_t>(text.front());
        text.remove_prefix(1);
        return first;
    }
};

// The part before the first NUL and the part after it (empty when none).
std::pair<std::string, std::string> splitAtNul(std::string_view text);

// Lays a view out at this width and draws it as HTML, as a snapshot would:
// the texts from outside go through measuring and escaping. Nothing for a
// view that is not one of the library's hosting views.
void look(const std::shared_ptr<platform::View>& view, double width, double height = 800);
// Draws a node tree as HTML.
void look(const ui::Node& tree);

// Prints the message and aborts: libFuzzer reports the input as a crash.
[[noreturn]] void fail(const std::string& message);

class Session {
public:
    // Installs a fresh fake platform: its own files root, queues and log.
    Session();
    // Settles, then fails when an exception reached a guard.
    ~Session();
    Session(const Session&) = delete;
    Session& operator=(const Session&) = delete;

    // Runs global and due main blocks until neither has work.
    void settle() { fake.dispatch->runUntilIdle(); }
    // Moves the virtual clock, running what falls due.
    void advance(double seconds) { fake.dispatch->advance(seconds); }
    // Writes a file below the platform's root (a path as the library names it).
    void write(const std::string& path, std::string_view bytes);

    testing::FakePlatform fake;
};

}  // namespace velmora::fuzz
