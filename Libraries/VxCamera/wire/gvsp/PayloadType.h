#pragma once

#include <array>
#include <cstdint>
#include <string_view>

namespace gvsp {

/// What a block carries, from leader and trailer: a type, and whether chunks follow the payload.
///
/// Kept as the 16 bits of the wire, because cameras send combinations such as 0x4001.
struct PayloadType {
    // All fixed by the protocol.
    static constexpr std::uint16_t kImage = 0x0001;
    static constexpr std::uint16_t kRawData = 0x0002;
    static constexpr std::uint16_t kFile = 0x0003;
    static constexpr std::uint16_t kChunkData = 0x0004;
    static constexpr std::uint16_t kExtendedChunkData = 0x0005;
    static constexpr std::uint16_t kJpeg = 0x0006;
    static constexpr std::uint16_t kJpeg2000 = 0x0007;
    static constexpr std::uint16_t kH264 = 0x0008;
    static constexpr std::uint16_t kMultiZone = 0x0009;
    static constexpr std::uint16_t kMultiPart = 0x000A;
    static constexpr std::uint16_t kGenDc = 0x000B;
    static constexpr std::uint16_t kFirstDeviceSpecific = 0x8000;
    static constexpr std::uint16_t kChunksFollow = 0x4000;
    static constexpr std::uint16_t kTypeMask = 0x3FFF;

    std::uint16_t bits = 0;

    /// @return  the type without the mark for chunks; from 0x8000 on types are the device's own and stay
    /// whole
    [[nodiscard]] constexpr std::uint16_t Type() const
    {
        return bits >= kFirstDeviceSpecific ? bits
                                            : static_cast<std::uint16_t>(bits & kTypeMask); // only fewer bits
    }

    [[nodiscard]] constexpr bool HasChunks() const
    {
        return Type() == kChunkData || Type() == kExtendedChunkData || (bits & kChunksFollow) != 0;
    }

    /// @return  whether the leader has the fields of an image
    [[nodiscard]] constexpr bool HasImageLeader() const
    {
        return Type() == kImage || Type() == kExtendedChunkData;
    }

    /// @return  what it is in words, for people
    [[nodiscard]] constexpr std::string_view Name() const
    {
        constexpr std::array<std::string_view, 12> kNames{
            "nothing known",       "an image", "raw data",  "a file", "chunk data",
            "extended chunk data", "JPEG",     "JPEG 2000", "H.264",  "a multi-zone image",
            "several parts",       "GenDC"};
        if (Type() >= kFirstDeviceSpecific)
            return "what only its maker knows";
        return kNames[Type() < kNames.size() ? Type() : 0];
    }

    bool operator==(const PayloadType&) const = default;
};

} // namespace gvsp
