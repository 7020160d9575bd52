#include "support/UUID.h"

#include <cstring>
#include <random>

namespace velmora::support {

namespace {

// xoshiro256** per thread, seeded from the system's entropy at its first
// use. Identities need to be unique, not secret: 256 bits of seed per
// thread make a repeat as unlikely as the platform's own, and drawing one
// costs a few instructions instead of a system call. Trivially
// destructible, so a thread leaves nothing to tear down.
struct Generator {
    std::uint64_t state[4];
    bool seeded;
};

thread_local Generator generator{{0, 0, 0, 0}, false};

std::uint64_t rotateLeft(std::uint64_t value, int bits) { return (value << bits) | (value >> (64 - bits)); }

std::uint64_t next(Generator& g) {
    std::uint64_t* s = g.state;
    const std::uint64_t result = rotateLeft(s[1] * 5, 7) * 9;
    const std::uint64_t t = s[1] << 17;
    s[2] ^= s[0];
    s[3] ^= s[1];
    s[1] ^= s[2];
    s[0] ^= s[3];
    s[2] ^= t;
    s[3] = rotateLeft(s[3], 45);
    return result;
}

void seed(Generator& g) {
    std::random_device entropy;
    for (auto& word : g.state) word = (static_cast<std::uint64_t>(entropy()) << 32) | entropy();
    if ((g.state[0] | g.state[1] | g.state[2] | g.state[3]) == 0) g.state[0] = 1;  // the one state it cannot leave
    g.seeded = true;
}

}  // namespace

UUID UUID::random() {
    Generator& g = generator;
    if (!g.seeded) seed(g);
    const std::uint64_t high = next(g), low = next(g);
    UUID id;
    std::memcpy(id.bytes.data(), &high, sizeof high);
    std::memcpy(id.bytes.data() + 8, &low, sizeof low);
    id.bytes[6] = static_cast<std::uint8_t>((id.bytes[6] & 0x0F) | 0x40);  // version 4
    id.bytes[8] = static_cast<std::uint8_t>((id.bytes[8] & 0x3F) | 0x80);  // the RFC 4122 variant
    return id;
}

std::string UUID::uuidString() const {
    static constexpr char hex[] = "0123456789ABCDEF";
    std::string text(36, '-');
    std::size_t at = 0;
    for (std::size_t i = 0; i < bytes.size(); ++i) {
        if (i == 4 || i == 6 || i == 8 || i == 10) ++at;  // the dashes stay
        text[at++] = hex[bytes[i] >> 4];
        text[at++] = hex[bytes[i] & 0xF];
    }
    return text;
}

}  // namespace velmora::support
