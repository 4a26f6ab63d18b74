#pragma once

#include "VxBase/VxClock.h"
#include "VxCamera/receive/BlockBuffer.h"
#include "VxCamera/receive/BlockGeometry.h"
#include "VxCamera/receive/MissingRanges.h"
#include "VxCamera/receive/PacketBitmap.h"
#include "VxCamera/receive/PartPieces.h"
#include "VxCamera/receive/ResendPolicy.h"
#include "VxCamera/wire/gvsp/PacketHeader.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <vector>

namespace receive {

/// Where the data of a payload packet are.
enum class Arrival { InDatagram, AtPlace };

/// Where last packets may end although trailer or list of chunks tell otherwise.
struct BelievedEnds {
    bool areAll = false;            ///< wherever the picture is whole
    std::uint64_t same = 0;         ///< where blocks in a row ended, in bytes of payload; 0 = they did not
    std::uint32_t joinedFormat = 0; ///< pixel format whose lines run together; 0 = none is known
};

/// One block while its packets arrive, in any order.
///
/// Every payload packet but the last carries equally many bytes, the step; a packet's place is its id times
/// that. The step is that of the block before, until the packets tell another one. A packet cut short never
/// counts as received. Packets of a multi-part block tell their place themselves.
///
/// Owner:  BlockAssembler, which uses the same few objects again and again.
/// Thread: one.
class OpenBlock {
public:
    using Time = IVxClock::Time;

    enum class Effect { Stored, Duplicate, OutOfRange, WrongSize, Malformed, Unsupported };

    struct Start {
        std::uint64_t blockId = 0;
        gvsp::IdMode idMode = gvsp::IdMode::Standard;
        std::size_t stepBytes = 0;   ///< of the block before; 0 = not known
        BlockGeometry lastGeometry;  ///< of the block before
        std::uint32_t lastEndId = 0; ///< of the trailer of the block before; 0 = not known
        bool hasChunkLists = false;  ///< those of blocks before could be read
        BelievedEnds believed;       ///< because of blocks before
        Time now;
    };

    /// Begins a block without buffer: its packets are then only followed.
    void Begin(const Start& start);

    /// @param buffer  borrowed until Finish; null: none is free
    void SetBuffer(BlockBuffer* buffer) { m_buffer = buffer; }

    /// Goes on in another buffer, with what has come without a leader.
    /// @param larger  than the buffer that it has; borrowed until Finish
    /// @return  the buffer that it had
    [[nodiscard]] BlockBuffer& MoveTo(BlockBuffer& larger, Time now);

    /// Holds for what comes from now on.
    void Believe(const BelievedEnds& ends) { m_start.believed = ends; }

    Effect OnLeader(const BlockGeometry& geometry, Time now);
    /// @param arrival  AtPlace: the data lie where PlaceOf said, and are not copied
    Effect OnPayload(const gvsp::Packet& packet, Arrival arrival, Time now);
    Effect OnTrailer(std::uint32_t packetId, std::span<const std::byte> data, Time now);
    /// A block in one packet: leader, trailer and payload, one behind the other.
    Effect OnAllIn(std::span<const std::byte> data, Time now);

    /// The camera says that it lost data of this block itself.
    void MarkDamaged() { m_isDamaged = true; }

    /// @return  where the data of this packet go, as many bytes as it will have; empty when it is not wanted
    /// or not certain
    [[nodiscard]] std::span<std::byte> PlaceOf(std::uint32_t packetId) const;

    /// Whether payload goes into the buffer.
    [[nodiscard]] bool IsStored() const;

    /// Everything is here, the trailer included; or nothing more is wanted of a block without picture.
    [[nodiscard]] bool IsDone() const;

    /// The whole picture is here, but not the trailer, which may be lost.
    [[nodiscard]] bool IsPictureWhole() const;

    /// A camera that waits for its exposure has sent no more than this.
    [[nodiscard]] bool IsLeaderOnly() const { return m_hasLeader && !m_hasTrailer && m_payloadPackets == 0; }

    /// The camera has sent the end of the block, or should have: whatever is not here is missing.
    void ExpectEnd(Time now);

    [[nodiscard]] bool HasTrailer() const { return m_hasTrailer; }

    /// Whether the end of the block has come, or counts as lost.
    [[nodiscard]] bool IsEnded() const;

    /// Fills in the buffer's info and lets go of it.
    /// @param lastGeometry  for a block whose leader is missing
    /// @return  the buffer; null when there was none
    BlockBuffer* Finish(const BlockGeometry& lastGeometry);

    /// What the assembler keeps with the block.
    BlockAsking asking;
    std::size_t wantedBytes = 0; ///< asked for when it got its buffer; 0 = not known then
    std::optional<Time>
        overtakenAt; ///< since when a newer block has gone so far that this one should be done

    [[nodiscard]] std::uint64_t BlockId() const { return m_start.blockId; }
    [[nodiscard]] gvsp::IdMode IdMode() const { return m_start.idMode; }
    [[nodiscard]] bool HasBuffer() const { return m_buffer != nullptr; }
    [[nodiscard]] std::size_t Capacity() const { return m_buffer != nullptr ? m_buffer->memory.size() : 0; }
    [[nodiscard]] bool HasLeader() const { return m_hasLeader; }
    [[nodiscard]] const BlockGeometry& Geometry() const { return m_geometry; }
    [[nodiscard]] std::size_t StepBytes() const { return m_stepBytes; }
    [[nodiscard]] Time FirstPacketTime() const { return m_start.now; }
    [[nodiscard]] Time LastPacketTime() const { return m_lastPacketTime; }
    [[nodiscard]] std::uint64_t PayloadPackets() const { return m_payloadPackets; }
    [[nodiscard]] std::size_t PayloadBytes() const { return m_payloadBytes; }
    [[nodiscard]] std::uint32_t HighestId() const { return m_highestId; }

    /// When a packet came that no later one had overtaken, and the longest time between two such packets.
    [[nodiscard]] Time LastAdvance() const { return m_lastAdvance; }
    [[nodiscard]] Time::duration LongestPause() const { return m_longestPause; }

    /// Whether packets can be missing of which the block knows.
    [[nodiscard]] MissingRanges& Missing() { return m_missing; }
    [[nodiscard]] const MissingRanges& Missing() const { return m_missing; }

    /// @return  how often a packet that is missing was asked for; 0 for one that is not
    [[nodiscard]] unsigned AsksFor(std::uint32_t packetId) const;

    /// The missing packet that the last packet was, as it stood before; none when it had not been missing.
    [[nodiscard]] const std::optional<MissingRange>& LastFound() const { return m_lastFound; }

    /// @return  id of the trailer; 0 while it can only be guessed and there is nothing to guess from
    [[nodiscard]] std::uint32_t EndId() const;

    /// @return  how many packets the block has at least, as far as is known
    [[nodiscard]] std::uint64_t LeastPackets() const;

    /// Whether everything is here and ends with a list of chunks that can be read.
    [[nodiscard]] bool HasChunkList() const;

    /// Whether the block ends where no trailer or list of chunks tells, and was not cut there.
    [[nodiscard]] bool IsEndBelieved() const { return m_isEndBelieved; }

    /// Where the last packet ended that was taken for one that was cut.
    /// @return  bytes of payload; 0 when there was none, when it came whole, or when the block lacks
    ///          more than that
    [[nodiscard]] std::uint64_t CutEnd() const;

    /// @return  how often the last packet was asked for that is missing in front of the trailer; 0 when none
    /// is
    [[nodiscard]] unsigned AsksForLast() const { return m_trailerId == 0 ? 0 : AsksFor(m_trailerId - 1); }

    /// Whether the lines of a picture that is here run together; none: it does not tell, or lacks something.
    [[nodiscard]] std::optional<bool> AreLinesJoined() const;

    /// How many packets were stored before it showed that they were cut.
    [[nodiscard]] std::uint64_t WithdrawnPackets() const { return m_withdrawnPackets; }

private:
    [[nodiscard]] std::optional<std::uint8_t> PartId() const;
    Effect OnPlainPayload(std::uint32_t packetId, std::span<const std::byte> data, Time now);
    Effect OnPartPayload(std::uint32_t packetId, std::span<const std::byte> data, Time now);
    [[nodiscard]] bool FitStep(std::uint32_t packetId, std::size_t bytes, Time now);
    [[nodiscard]] bool IsStepTooLong(std::uint32_t packetId, std::size_t bytes) const;
    [[nodiscard]] bool FitLength(std::uint32_t packetId, std::size_t bytes, Time now);
    void Store(std::uint64_t offset, std::span<const std::byte> data);
    void Count(std::uint32_t packetId, Time now);
    void Withdraw(std::uint32_t packetId, std::size_t bytes, Time now);
    void WithdrawBehindTrailer(Time now);
    void KeepAside(std::uint32_t packetId, std::span<const std::byte> data);
    [[nodiscard]] bool MakesTwo(std::uint32_t packetId, std::size_t bytes) const;
    void StoreTwo(std::span<const std::byte> first, Time now);
    [[nodiscard]] std::uint32_t ToldChunkBytes() const;
    [[nodiscard]] std::uint64_t WholeBytes() const;
    [[nodiscard]] std::uint64_t NeededBytes() const;
    [[nodiscard]] bool AreEndsBelieved() const { return m_start.believed.areAll || m_isEndBelieved; }
    [[nodiscard]] bool IsEndAgain(std::uint32_t packetId, std::size_t bytes, unsigned asks);
    [[nodiscard]] bool LacksBytes(std::uint64_t bytes) const;
    [[nodiscard]] bool IsCutEnd(std::uint32_t packetId, std::size_t bytes) const;
    [[nodiscard]] bool IsChunkListCut() const;
    void WithdrawCutEnd(Time now);
    void WithdrawCutPieces(Time now);
    void Follow(std::uint32_t packetId, Time now);
    [[nodiscard]] bool HasAllPackets() const;
    [[nodiscard]] std::uint64_t EndOfLast(std::uint64_t packetId) const;
    [[nodiscard]] std::uint64_t PacketsMissing() const;
    [[nodiscard]] BlockGeometry GeometryAsSent() const;
    [[nodiscard]] VxError Code(const BlockGeometry& sent) const;
    [[nodiscard]] bool IsJoined(const BlockGeometry& sent) const;
    [[nodiscard]] bool IsJoinable() const;
    [[nodiscard]] bool IsCutAtJoinedEnd() const;
    void JoinLines();
    /// @return  for a picture whose lines run together, as is certain
    [[nodiscard]] VxError CodeOfJoined() const
    {
        return m_geometry.joinedMemoryBytes != 0 ? VxError::Ok : VxError::NotSupported;
    }
    [[nodiscard]] std::optional<std::size_t> FirstChunkBytes() const;
    [[nodiscard]] VxError CodeOfChunkData() const;
    void Forget();

    Start m_start;
    BlockBuffer* m_buffer = nullptr; // borrowed from the sink
    BlockGeometry m_geometry;
    PacketBitmap m_received; // by packet id
    MissingRanges m_missing;
    std::optional<MissingRange> m_lastFound;
    std::size_t m_stepBytes = 0;
    std::uint64_t m_payloadPackets = 0;
    std::uint64_t m_withdrawnPackets = 0;
    std::size_t m_payloadBytes = 0; // of the picture's part
    PartPieces m_pieces;            // of the picture's part
    std::vector<std::byte> m_aside; // of packet 2, when none came before it; memory is kept
    std::uint32_t m_highestId = 0;  // of the payload packets stored
    std::uint32_t m_shortId =
        0; // of the one that is shorter than the step, which only the last may be; 0 = none
    std::size_t m_shortBytes = 0;
    std::uint32_t m_trailerId = 0;
    std::uint32_t m_trailerHeightPx = 0;   // 0: not told
    std::uint32_t m_trailerChunkBytes = 0; // 0: not told
    std::uint64_t m_cutEnd = 0;            // in bytes of payload; 0: no last packet looked cut
    unsigned m_cutAsks = 0;                // how often that packet had been asked for by then
    Time m_lastPacketTime;
    Time m_lastAdvance;
    Time::duration m_longestPause{};
    bool m_hasLeader = false;
    bool m_hasTrailer = false;
    bool m_isDamaged = false;
    bool m_isEndBelieved = false;
    bool m_isMixedUp = false; // parts came under ids that the block does not have
};

} // namespace receive
