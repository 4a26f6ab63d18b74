#pragma once

#include "VxCamera/wire/gvsp/PacketHeader.h"

#include <cstddef>
#include <cstdint>

namespace gvsp {

// Fixed by IPv4 and UDP: headers counted in the packet size but not in the datagram.
constexpr std::size_t kIpUdpHeaderBytes = 20 + 8;

/// @param packetSizeBytes  as in the register: with the headers of IP, UDP and GVSP
/// @return  bytes of picture in every payload packet except the last; 0 when the packet has no room for any
[[nodiscard]] constexpr std::size_t PayloadBytesPerPacket(std::size_t packetSizeBytes, IdMode mode)
{
    const std::size_t overhead = kIpUdpHeaderBytes + HeaderBytes(mode);
    return packetSizeBytes > overhead ? packetSizeBytes - overhead : 0;
}

/// @param bytesPerPacket  not 0
/// @return  number of payload packets of a block; leader and trailer come on top
[[nodiscard]] constexpr std::uint64_t PayloadPackets(std::uint64_t payloadBytes, std::size_t bytesPerPacket)
{
    return payloadBytes / bytesPerPacket + (payloadBytes % bytesPerPacket != 0 ? 1 : 0);
}

/// @param packetId  of a payload packet, from 1
/// @return  where in the block its data begin
[[nodiscard]] constexpr std::uint64_t PayloadOffset(std::uint32_t packetId, std::size_t bytesPerPacket)
{
    return static_cast<std::uint64_t>(packetId - 1) * bytesPerPacket;
}

/// @return  the id of the block after this one; 0 is skipped
[[nodiscard]] constexpr std::uint64_t NextBlockId(std::uint64_t blockId, IdMode mode)
{
    const std::uint64_t last = mode == IdMode::Extended ? UINT64_MAX : UINT16_MAX;
    return blockId >= last ? 1 : blockId + 1;
}

/// @param from, to  ids of blocks, not 0; in standard mode they are taken modulo 65535, whatever they are
/// @return  how many blocks lie between them along the shorter way round, negative when `to` is the older
///          one: 1 from 65535 to 1 in standard mode
[[nodiscard]] constexpr std::int64_t BlockIdStep(std::uint64_t from, std::uint64_t to, IdMode mode)
{
    if (mode == IdMode::Extended)
        return static_cast<std::int64_t>(to - from); // modulo 2^64; 2^63 blocks are never sent
    constexpr std::int64_t kIds = UINT16_MAX;        // 1 to 65535: 0 does not count
    std::int64_t step = static_cast<std::int64_t>(to % kIds) - static_cast<std::int64_t>(from % kIds);
    if (step > kIds / 2)
        step -= kIds;
    if (step < -(kIds / 2))
        step += kIds;
    return step;
}

} // namespace gvsp
