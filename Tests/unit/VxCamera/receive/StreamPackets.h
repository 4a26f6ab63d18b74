#pragma once

#include "VxBase/VxByteWriter.h"
#include "VxCamera/wire/gvsp/ImageLeader.h"
#include "VxCamera/wire/gvsp/ImageTrailer.h"
#include "VxCamera/wire/gvsp/PacketHeader.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace receive {

/// Packets of pictures as a camera sends them: each byte of a picture tells block and place.
struct StreamPackets {
    using Packet = std::vector<std::byte>;

    gvsp::ImageLeader leader = Mono8(64, 48);
    gvsp::IdMode idMode = gvsp::IdMode::Standard;
    std::size_t stepBytes = 500;
    std::size_t payloadBytes = 64 * 48;

    static gvsp::ImageLeader Mono8(std::uint32_t widthPx, std::uint32_t heightPx)
    {
        gvsp::ImageLeader leader;
        leader.start.payloadType = {gvsp::PayloadType::kImage};
        leader.start.timestampTicks = 4711;
        leader.pixelFormat = 0x01080001; // Mono8
        leader.widthPx = widthPx;
        leader.heightPx = heightPx;
        return leader;
    }

    static std::byte ByteAt(std::uint64_t blockId, std::size_t offset)
    {
        return static_cast<std::byte>(blockId * 31 + offset * 7 +
                                      offset / 251); // any pattern; the low byte is enough
    }

    [[nodiscard]] Packet Header(std::uint64_t blockId, gvsp::PacketFormat format,
                                std::uint32_t packetId) const
    {
        Packet packet(gvsp::HeaderBytes(idMode));
        VxByteWriter out(packet);
        gvsp::PacketHeader header;
        header.idMode = idMode;
        header.format = format;
        header.blockId = blockId;
        header.packetId = packetId;
        gvsp::WritePacketHeader(out, header);
        return packet;
    }

    [[nodiscard]] Packet Leader(std::uint64_t blockId) const
    {
        Packet packet = Header(blockId, gvsp::PacketFormat::Leader, 0);
        std::vector<std::byte> data(gvsp::kImageLeaderBytes);
        VxByteWriter out(data);
        gvsp::WriteImageLeader(out, leader);
        packet.insert(packet.end(), data.begin(), data.end());
        return packet;
    }

    [[nodiscard]] std::uint32_t PayloadCount() const
    {
        return static_cast<std::uint32_t>((payloadBytes + stepBytes - 1) / stepBytes); // small pictures
    }

    [[nodiscard]] Packet Payload(std::uint64_t blockId, std::uint32_t packetId) const
    {
        const Packet header = Header(blockId, gvsp::PacketFormat::Payload, packetId);
        const std::size_t begin = (packetId - 1) * stepBytes;
        const std::size_t end = std::min(begin + stepBytes, payloadBytes);
        // Not one by one to the end: that is most of what a test costs that is built without optimisation.
        Packet packet(header.size() + end - begin);
        std::byte* to = std::ranges::copy(header, packet.data()).out;
        for (std::size_t offset = begin; offset < end; ++offset)
            *to++ = ByteAt(blockId, offset);
        return packet;
    }

    [[nodiscard]] Packet Trailer(std::uint64_t blockId) const { return Trailer(blockId, leader.heightPx); }
    [[nodiscard]] Packet Trailer(std::uint64_t blockId, std::uint32_t heightPx) const
    {
        Packet packet = Header(blockId, gvsp::PacketFormat::Trailer, PayloadCount() + 1);
        std::vector<std::byte> data(gvsp::kImageTrailerBytes);
        VxByteWriter out(data);
        gvsp::WriteImageTrailer(out, {leader.start.payloadType, heightPx});
        packet.insert(packet.end(), data.begin(), data.end());
        return packet;
    }

    /// All packets in order: the leader is at 0, payload packet i at i, the trailer at the end.
    [[nodiscard]] std::vector<Packet> Block(std::uint64_t blockId) const
    {
        std::vector<Packet> packets{Leader(blockId)};
        for (std::uint32_t id = 1; id <= PayloadCount(); ++id)
            packets.push_back(Payload(blockId, id));
        packets.push_back(Trailer(blockId));
        return packets;
    }
};

} // namespace receive
