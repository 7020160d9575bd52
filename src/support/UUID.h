// A random (version 4) UUID, as the platform's UUID type makes them.
//
// Provides: UUID.
// A plain value, safe to copy between threads.
#pragma once

#include <array>
#include <cstdint>
#include <string>

namespace velmora::support {

struct UUID {
    std::array<std::uint8_t, 16> bytes{};

    // A fresh random identity.
    static UUID random();
    // The canonical 36-character form, upper-case: "1B4E28BA-2FA1-11D2-883F-B9A761BDE3FB".
    std::string uuidString() const;

    bool operator==(const UUID&) const = default;
};

}  // namespace velmora::support
