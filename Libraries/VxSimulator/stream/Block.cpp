#include "VxSimulator/stream/Block.h"

#include "VxCamera/wire/gvsp/BlockLayout.h"
#include "VxCamera/wire/gvsp/ImageLeader.h"
#include "VxCamera/wire/gvsp/ImageTrailer.h"

#include <algorithm>
#include <cassert>
#include <utility>

namespace simulator {

Block::Block(const FrameOrder& order, std::vector<std::byte> picture)
    : m_order(order),
      m_picture(std::move(picture)),
      m_bytesPerPacket(gvsp::PayloadBytesPerPacket(order.packetSizeBytes, order.idMode)),
      // Even 16384 x 16384 pixels of 4 bytes in the smallest packets are fewer than 2^23.
      m_payloadPackets(static_cast<std::uint32_t>(gvsp::PayloadPackets(m_picture.size(), m_bytesPerPacket)))
{
}

void Block::NoteSent(std::uint32_t packetId, IVxClock::Time now)
{
    if (m_sentAt)
        m_sentAt[packetId] = now.time_since_epoch().count();
}

std::optional<IVxClock::Time> Block::SentAt(std::uint32_t packetId) const
{
    const auto ticks = m_sentAt ? m_sentAt[packetId].load() : 0;
    return ticks != 0 ? std::optional(IVxClock::Time(IVxClock::Time::duration(ticks))) : std::nullopt;
}

std::span<const std::byte> Block::WritePacket(std::uint32_t packetId, Sending sending,
                                              std::span<std::byte> memory) const
{
    assert(packetId < PacketCount());
    gvsp::PacketHeader header{.idMode = m_order.idMode, .blockId = m_order.blockId, .packetId = packetId};
    if (sending == Sending::Again) {
        header.status = gvsp::Status::PacketResend;
        header.flags = gvsp::kFlagIsResend;
    }
    VxByteWriter out(memory);
    if (packetId == 0) {
        header.format = gvsp::PacketFormat::Leader;
        gvsp::WritePacketHeader(out, header);
        gvsp::WriteImageLeader(out, {.start = {.payloadType = {gvsp::PayloadType::kImage},
                                               .timestampTicks = m_order.timestampTicks},
                                     .pixelFormat = m_order.format.code,
                                     .widthPx = m_order.widthPx,
                                     .heightPx = m_order.heightPx,
                                     .offsetXPx = m_order.offsetXPx,
                                     .offsetYPx = m_order.offsetYPx});
    } else if (packetId <= m_payloadPackets) {
        gvsp::WritePacketHeader(out, header);
        const auto offset =
            static_cast<std::size_t>(gvsp::PayloadOffset(packetId, m_bytesPerPacket)); // in m_picture
        const std::size_t size = std::min(m_bytesPerPacket, m_picture.size() - offset);
        out.Bytes(std::span(m_picture).subspan(offset, size));
    } else {
        header.format = gvsp::PacketFormat::Trailer;
        gvsp::WritePacketHeader(out, header);
        gvsp::WriteImageTrailer(out, {.heightPx = m_order.heightPx});
    }
    assert(out.Ok());
    return out.Written();
}

} // namespace simulator
