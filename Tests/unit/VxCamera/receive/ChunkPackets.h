#pragma once

#include "StreamPackets.h"

#include "VxBase/VxByteWriter.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <numeric>
#include <span>
#include <vector>

namespace receive {

/// Packets of blocks with chunks, as cameras send them: the picture is the first chunk, and two more follow
/// it in the last packet.
struct ChunkPackets {
    using Packet = StreamPackets::Packet;

    /// What the trailer says of the bytes of all chunks.
    enum class Told { All, BehindPicture, Zero, Short, TooMany };

    static constexpr std::uint32_t kWidthPx = 64;
    static constexpr std::uint32_t kHeightPx = 40;
    static constexpr std::size_t kPictureBytes = std::size_t{kWidthPx} * kHeightPx;
    static constexpr std::size_t kStepBytes = 500;
    static constexpr std::size_t kPacketWithPictureEnd = 6; ///< of bytes 2500 to 2999

    gvsp::IdMode idMode = gvsp::IdMode::Standard;
    gvsp::PayloadType payloadType{0x4001};
    Told told = Told::All;
    std::uint32_t leaderHeightPx = kHeightPx; ///< as it was announced
    std::vector<std::size_t> chunks{kPictureBytes, 700, 100, 64};
    bool isPictureAChunk = true;
    bool isListReadable = true;
    bool isLastChunkZero = false;
    std::size_t fillBytes = 0; ///< behind the list

    [[nodiscard]] std::vector<std::byte> PayloadOf(std::uint64_t blockId) const
    {
        std::vector<std::byte> payload;
        for (std::size_t i = 0; i < chunks.size(); ++i) {
            const bool isZero = isLastChunkZero && i + 1 == chunks.size();
            for (std::size_t k = 0; k < chunks[i]; ++k)
                payload.push_back(isZero ? std::byte{0} : StreamPackets::ByteAt(blockId, payload.size()));
            if (i > 0 || isPictureAChunk)
                AppendChunkTrailer(payload, static_cast<std::uint32_t>(i + 1), chunks[i]);
        }
        payload.resize(payload.size() + fillBytes);
        return payload;
    }
    [[nodiscard]] std::size_t PayloadBytes() const
    {
        const std::size_t trailers = chunks.size() - (isPictureAChunk ? 0 : 1);
        return std::accumulate(chunks.begin(), chunks.end(), std::size_t{0}) + 8 * trailers + fillBytes;
    }
    [[nodiscard]] std::uint32_t LastId() const
    {
        return static_cast<std::uint32_t>((PayloadBytes() + kStepBytes - 1) / kStepBytes); // few
    }
    [[nodiscard]] std::size_t LastBytes() const { return PayloadBytes() - (LastId() - 1) * kStepBytes; }

    /// Where in the last packet a chunk ends and the next one begins.
    [[nodiscard]] std::vector<std::size_t> ChunkEndsInLastPacket() const
    {
        std::vector<std::size_t> ends;
        std::size_t end = 0;
        for (std::size_t i = 0; i + 1 < chunks.size(); ++i) {
            end += chunks[i] + (i > 0 || isPictureAChunk ? 8 : 0);
            if (end > (LastId() - 1) * kStepBytes)
                ends.push_back(end - (LastId() - 1) * kStepBytes);
        }
        return ends;
    }

    [[nodiscard]] Packet Leader(std::uint64_t blockId) const
    {
        StreamPackets stream;
        stream.idMode = idMode;
        stream.leader = StreamPackets::Mono8(kWidthPx, leaderHeightPx);
        stream.leader.start.payloadType = payloadType;
        Packet packet = stream.Leader(blockId);
        if (payloadType.Type() == gvsp::PayloadType::kChunkData)
            packet.resize(gvsp::HeaderBytes(idMode) + 12); // it tells nothing of a picture
        return packet;
    }
    [[nodiscard]] Packet Payload(std::uint64_t blockId, std::uint32_t packetId) const
    {
        return PayloadFrom(PayloadOf(blockId), blockId, packetId);
    }
    [[nodiscard]] Packet PayloadFrom(const std::vector<std::byte>& payload, std::uint64_t blockId,
                                     std::uint32_t packetId) const
    {
        Packet packet = Head(blockId, gvsp::PacketFormat::Payload, packetId);
        const std::size_t begin = (packetId - 1) * kStepBytes;
        const std::size_t end = std::min(begin + kStepBytes, payload.size());
        packet.insert(packet.end(), payload.begin() + static_cast<std::ptrdiff_t>(begin),
                      payload.begin() + static_cast<std::ptrdiff_t>(end));
        return packet;
    }
    [[nodiscard]] Packet Trailer(std::uint64_t blockId) const
    {
        Packet packet = Head(blockId, gvsp::PacketFormat::Trailer, LastId() + 1);
        std::vector<std::byte> data(20);
        VxByteWriter out(data);
        out.U16be(0);
        out.U16be(payloadType.bits);
        const bool isImage = payloadType.Type() == gvsp::PayloadType::kImage;
        if (isImage)
            out.U32be(kHeightPx);
        if (told != Told::Short) {
            out.U32be(ToldBytes());
            if (payloadType.Type() == gvsp::PayloadType::kExtendedChunkData)
                out.U32be(kHeightPx);
            if (payloadType.Type() != gvsp::PayloadType::kChunkData)
                out.U32be(9); // which list of chunks it is
        }
        packet.insert(packet.end(), out.Written().begin(), out.Written().end());
        return packet;
    }

    /// All packets in order: the leader is at 0, payload packet i at i, the trailer at the end.
    [[nodiscard]] std::vector<Packet> Block(std::uint64_t blockId) const
    {
        const auto payload = PayloadOf(blockId);
        std::vector<Packet> packets{Leader(blockId)};
        for (std::uint32_t id = 1; id <= LastId(); ++id)
            packets.push_back(PayloadFrom(payload, blockId, id));
        packets.push_back(Trailer(blockId));
        return packets;
    }
    /// @param left  bytes of payload
    [[nodiscard]] std::vector<Packet> BlockWithLastCutTo(std::uint64_t blockId, std::size_t left) const
    {
        auto packets = Block(blockId);
        packets[LastId()].resize(gvsp::HeaderBytes(idMode) + left);
        return packets;
    }

private:
    [[nodiscard]] Packet Head(std::uint64_t blockId, gvsp::PacketFormat format, std::uint32_t packetId) const
    {
        StreamPackets stream;
        stream.idMode = idMode;
        return stream.Header(blockId, format, packetId);
    }
    void AppendChunkTrailer(std::vector<std::byte>& payload, std::uint32_t id, std::size_t bytes) const
    {
        payload.resize(payload.size() + 8);
        VxByteWriter out{std::span(payload).last(8)};
        out.U32be(id);
        out.U32be(isListReadable ? static_cast<std::uint32_t>(bytes) : 0xFFFF'FFFF); // small
    }
    [[nodiscard]] std::uint32_t ToldBytes() const
    {
        if (told == Told::Zero)
            return 0;
        const std::size_t counted = PayloadBytes() - fillBytes + (told == Told::TooMany ? 1000 : 0);
        return static_cast<std::uint32_t>(told == Told::BehindPicture ? counted - kPictureBytes
                                                                      : counted); // small
    }
};

} // namespace receive
