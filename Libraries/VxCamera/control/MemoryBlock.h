#pragma once

#include <cstddef>
#include <cstdint>

namespace control {

/// A piece of device memory that one command can carry, and the part of it that is wanted.
///
/// Cameras refuse addresses and lengths that are no multiple of 4, so the piece may begin earlier and end
/// later.
struct MemoryBlock {
    std::uint32_t address = 0; ///< multiple of 4
    std::size_t bytes = 0;     ///< multiple of 4
    std::size_t skipBytes = 0; ///< in front of the wanted ones, 0 to 3
    std::size_t wantedBytes = 0;

    bool operator==(const MemoryBlock&) const = default;
};

/// @param address  of the first wanted byte
/// @param bytes    wanted in all, not 0; address + bytes must not exceed 2^32
/// @return  the first piece; go on behind its wanted bytes
[[nodiscard]] MemoryBlock FirstBlock(std::uint32_t address, std::size_t bytes);

/// @return  whether a camera has addresses for these bytes: 32 bits are all that the protocol can name
[[nodiscard]] constexpr bool IsAddressable(std::uint64_t address, std::size_t bytes)
{
    constexpr std::uint64_t kEnd = std::uint64_t{1} << 32;
    return address < kEnd && bytes <= kEnd - address;
}

} // namespace control
