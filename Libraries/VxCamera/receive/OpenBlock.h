#pragma once

#include "VxBase/VxClock.h"
#include "VxCamera/receive/BlockBuffer.h"
#include "VxCamera/receive/BlockGeometry.h"
#include "VxCamera/receive/PacketBitmap.h"

#include <cstddef>
#include <cstdint>
#include <span>

namespace receive {

/// One block while its packets arrive, in any order.
///
/// Every payload packet but the last carries equally many bytes, the step; a packet's place is its id times
/// that. The step is that of the block before, until the packets tell another one. A packet cut short never
/// counts as received.
///
/// Owner:  BlockAssembler, which uses the same few objects again and again.
/// Thread: one.
class OpenBlock {
public:
    using Time = IVxClock::Time;

    enum class Effect { Stored, Duplicate, OutOfRange, WrongSize, Malformed };

    struct Start {
        std::uint64_t blockId = 0;
        std::size_t stepBytes = 0; ///< of the block before; 0 = not known
        Time now;
    };

    /// Begins a block without buffer: its packets are then only followed.
    void Begin(const Start& start);

    /// @param buffer  borrowed until Finish; null: none is free
    void SetBuffer(BlockBuffer* buffer) { m_buffer = buffer; }

    Effect OnLeader(const BlockGeometry& geometry, Time now);
    Effect OnPayload(std::uint32_t packetId, std::span<const std::byte> data, Time now);
    Effect OnTrailer(std::uint32_t packetId, std::span<const std::byte> data, Time now);

    /// The camera says that it lost data of this block itself.
    void MarkDamaged() { m_isDamaged = true; }

    /// Everything is here, the trailer included; or nothing more is wanted of a block without picture.
    [[nodiscard]] bool IsDone() const;

    /// The whole picture is here, but not the trailer, which may be lost.
    [[nodiscard]] bool IsPictureWhole() const;

    /// A camera that waits for its exposure has sent no more than this.
    [[nodiscard]] bool IsLeaderOnly() const { return m_hasLeader && !m_hasTrailer && m_payloadPackets == 0; }

    /// Fills in the buffer's info and lets go of it.
    /// @param lastGeometry  for a block whose leader is missing
    /// @return  the buffer; null when there was none
    BlockBuffer* Finish(const BlockGeometry& lastGeometry);

    [[nodiscard]] std::uint64_t BlockId() const { return m_blockId; }
    [[nodiscard]] bool HasBuffer() const { return m_buffer != nullptr; }
    [[nodiscard]] bool HasLeader() const { return m_hasLeader; }
    [[nodiscard]] const BlockGeometry& Geometry() const { return m_geometry; }
    [[nodiscard]] std::size_t StepBytes() const { return m_stepBytes; }
    [[nodiscard]] Time LastPacketTime() const { return m_lastPacketTime; }
    [[nodiscard]] std::uint64_t PayloadPackets() const { return m_payloadPackets; }

    /// How many packets were stored before it showed that they were cut.
    [[nodiscard]] std::uint64_t WithdrawnPackets() const { return m_withdrawnPackets; }

private:
    [[nodiscard]] std::size_t Capacity() const { return m_buffer != nullptr ? m_buffer->memory.size() : 0; }
    [[nodiscard]] bool IsStored() const;
    [[nodiscard]] bool FitStep(std::uint32_t packetId, std::size_t bytes);
    [[nodiscard]] bool FitLength(std::uint32_t packetId, std::size_t bytes);
    void Store(std::uint32_t packetId, std::size_t offset, std::span<const std::byte> data);
    void Withdraw(std::uint32_t packetId, std::size_t bytes);
    [[nodiscard]] std::uint64_t PacketsMissing() const;
    [[nodiscard]] BlockGeometry GeometryAsSent() const;
    [[nodiscard]] VxError Code(const BlockGeometry& sent) const;
    void Forget();

    std::uint64_t m_blockId = 0;
    BlockBuffer* m_buffer = nullptr; // borrowed from the sink
    BlockGeometry m_geometry;
    PacketBitmap m_received; // by packet id
    std::size_t m_stepBytes = 0;
    std::uint64_t m_payloadPackets = 0;
    std::uint64_t m_withdrawnPackets = 0;
    std::size_t m_payloadBytes = 0;
    std::uint32_t m_highestId = 0; // of the payload packets stored
    std::uint32_t m_shortId =
        0; // of the one that is shorter than the step, which only the last may be; 0 = none
    std::size_t m_shortBytes = 0;
    std::uint64_t m_trailerId = 0;
    std::uint32_t m_trailerHeightPx = 0; // 0: not told
    Time m_lastPacketTime;
    bool m_hasLeader = false;
    bool m_hasTrailer = false;
    bool m_isDamaged = false;
};

} // namespace receive
