#pragma once

#include "VxBase/VxByteWriter.h"
#include "VxBase/VxExpected.h"

#include "VxCamera/wire/gvsp/Leader.h"

#include <cstddef>
#include <cstdint>
#include <span>

namespace gvsp {

/// One of the parts that the leader of a multi-part block announces.
struct PartDescriptor {
    // Kinds of parts. Fixed by the protocol.
    static constexpr std::uint16_t kImage2D = 0x0001;
    static constexpr std::uint16_t kConfidenceMap = 0x0009;
    static constexpr std::uint16_t kChunkData = 0x000A;

    std::uint16_t dataType = 0;
    std::uint64_t lengthBytes = 0; ///< 48 bits
    std::uint32_t pixelFormat = 0; ///< PFNC code; another data format for parts that are no image
    std::uint8_t sourceId = 0;
    std::uint16_t purposeId = 0;
    std::uint16_t regionId = 0;
    std::uint32_t widthPx = 0;
    std::uint32_t heightPx = 0;
    std::uint32_t offsetXPx = 0;
    std::uint32_t offsetYPx = 0;
    std::uint16_t linePaddingBytes = 0;  ///< after each line
    std::uint16_t imagePaddingBytes = 0; ///< after the image

    bool operator==(const PartDescriptor&) const = default;
};

// Fixed by the protocol.
constexpr std::size_t kPartDescriptorBytes = 48;
constexpr std::size_t kPartPrefixBytes = 8;

/// @param leader  data of a multi-part leader: the start of every leader, then the descriptors
/// @return  how many whole descriptors there are
[[nodiscard]] constexpr std::size_t PartCount(std::span<const std::byte> leader)
{
    return leader.size() < kLeaderStartBytes ? 0 : (leader.size() - kLeaderStartBytes) / kPartDescriptorBytes;
}

/// Sizes are not judged. Does not allocate.
/// @param index  of the part, from 0
/// @return  VxError::Truncated when the leader has no such part
[[nodiscard]] VxExpected<PartDescriptor> ParsePartDescriptor(std::span<const std::byte> leader,
                                                             std::size_t index);

void WritePartDescriptor(VxByteWriter& out, const PartDescriptor& part);

/// What a payload packet of a multi-part block carries.
struct PartPayload {
    std::uint8_t partId = 0; ///< index of the descriptor in the leader
    std::uint8_t zoneInfo = 0;
    std::uint64_t offsetBytes = 0;     ///< inside the part, 48 bits
    std::span<const std::byte> data{}; ///< borrowed from the datagram
};

/// Does not allocate.
/// @param data  all after the packet's header
/// @return  VxError::Truncated
[[nodiscard]] VxExpected<PartPayload> ParsePartPayload(std::span<const std::byte> data);

/// Writes all but the data.
void WritePartPrefix(VxByteWriter& out, const PartPayload& payload);

} // namespace gvsp
