#pragma once

#include "VxBase/VxByteWriter.h"
#include "VxBase/VxClock.h"

#include "VxCamera/wire/gvsp/PayloadType.h"

#include "VxSimulator/stream/FrameOrder.h"

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <vector>

namespace simulator {

/// Whether a packet is sent for the first time.
enum class Sending { First, Again };

/// One frame, and the packets it is sent in: leader, payload with the chunks that were ordered, trailer.
///
/// Owner:  BlockStore and whoever is sending, together: a block may be asked for again while the next is
/// sent. Thread: immutable once it is filled.
class Block {
public:
    /// @param picture  of the order's size and format
    Block(const FrameOrder& order, std::vector<std::byte> picture);

    [[nodiscard]] const FrameOrder& Order() const { return m_order; }

    /// Leader and trailer included.
    [[nodiscard]] std::uint32_t PacketCount() const { return m_payloadPackets + 2; }

    /// Writes one datagram.
    /// @param packetId  below PacketCount
    /// @param memory    at least the order's packet size
    /// @return  its bytes, in that memory
    [[nodiscard]] std::span<const std::byte> WritePacket(std::uint32_t packetId, Sending sending,
                                                         std::span<std::byte> memory) const;

    /// Notes when a packet was sent; only of a block that was told to.
    void NoteSent(std::uint32_t packetId, IVxClock::Time now);
    /// @return  none for a packet that has not been sent yet, or of a block that takes no notes
    [[nodiscard]] std::optional<IVxClock::Time> SentAt(std::uint32_t packetId) const;
    /// Before the block is sent.
    void TakeNotes() { m_sentAt = std::make_unique<std::atomic<IVxClock::Time::rep>[]>(PacketCount()); }

    /// Gives the picture's memory back for another block.
    [[nodiscard]] std::vector<std::byte> TakePicture() { return std::move(m_payload); }

private:
    [[nodiscard]] gvsp::PayloadType PayloadType() const;
    void WriteLeader(VxByteWriter& out) const;
    void WriteTrailer(VxByteWriter& out) const;

    FrameOrder m_order;
    std::vector<std::byte> m_payload; // the picture, and chunks behind it
    std::size_t m_bytesPerPacket;
    std::uint32_t m_payloadPackets;
    // Of each packet; 0: not sent yet. Written by the thread that sends, read by others; empty without notes.
    std::unique_ptr<std::atomic<IVxClock::Time::rep>[]> m_sentAt;
};

} // namespace simulator
