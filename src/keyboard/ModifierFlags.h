// The platform's modifier and event-type option sets, with its raw values.
//
// Provides: ModifierFlags, EventTypeMask.
#pragma once

#include <cstdint>

namespace velmora {

struct ModifierFlags {
    std::uint64_t rawValue = 0;

    static constexpr std::uint64_t capsLock = 0x10000;
    static constexpr std::uint64_t shift = 0x20000;
    static constexpr std::uint64_t control = 0x40000;
    static constexpr std::uint64_t option = 0x80000;
    static constexpr std::uint64_t command = 0x100000;
    static constexpr std::uint64_t numericPad = 0x200000;
    static constexpr std::uint64_t function = 0x800000;

    constexpr bool contains(std::uint64_t flags) const { return (rawValue & flags) == flags; }
    constexpr ModifierFlags intersection(std::uint64_t flags) const { return {rawValue & flags}; }
    constexpr bool operator==(const ModifierFlags&) const = default;
};

struct EventTypeMask {
    std::uint64_t rawValue = 0;
    constexpr bool operator==(const EventTypeMask&) const = default;
};

}  // namespace velmora
