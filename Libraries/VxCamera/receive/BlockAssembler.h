#pragma once

#include "VxBase/VxClock.h"
#include "VxCamera/receive/IBlockSink.h"
#include "VxCamera/receive/OpenBlock.h"
#include "VxCamera/receive/PacketGathering.h"
#include "VxCamera/receive/ResendPolicy.h"
#include "VxCamera/receive/RestartWatch.h"
#include "VxCamera/receive/StreamCounters.h"
#include "VxCamera/wire/gvsp/PacketHeader.h"

#include <array>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>

namespace receive {

/// When an incomplete block is given up.
struct AssemblySettings {
    /// After its last packet. Chosen: longer than any camera pauses inside a block, and well below the second
    /// for which a consumer waits.
    std::chrono::milliseconds blockTimeout{250};
    /// After a newer block has gone far enough, while packets are asked for again. Chosen: longer than
    /// cameras keep packets.
    std::chrono::milliseconds resendTimeout{100};
    /// Chosen: how long the trailer of a block may take whose picture is whole.
    std::chrono::milliseconds trailerTimeout{20};
    /// Chosen: how many packets of a newer block prove that an older one gets no more; networks reorder far
    /// fewer.
    std::uint64_t reorderPackets = 32;
    ResendSettings resend;
};

/// Asks the camera for packets.
///
/// Owner:  borrowed by BlockAssembler.
/// Thread: the receiver's; must not wait.
class IResendChannel {
public:
    IResendChannel() = default;
    IResendChannel(const IResendChannel&) = delete;
    IResendChannel& operator=(const IResendChannel&) = delete;
    virtual ~IResendChannel() = default;

    /// Whether the camera is asked at all: this host controls it, and it offers to send packets again.
    [[nodiscard]] virtual bool IsOpen() const = 0;

    virtual void Ask(gvsp::IdMode idMode, std::uint64_t blockId, std::uint32_t firstPacketId,
                     std::uint32_t lastPacketId) = 0;
};

/// A payload packet that is expected, and where its data belong.
struct ExpectedPacket {
    std::uint64_t blockId = 0;
    std::uint32_t packetId = 0;
    std::span<std::byte> place; ///< as long as the data will be
};

/// Puts the packets of a stream together to blocks and delivers these in order.
///
/// Several blocks can be open at once, because packets overtake each other or are sent again. Blocks are
/// delivered in order; an incomplete one is delivered, too, and says so. Nothing is written outside a buffer,
/// whatever the packets say.
///
/// Owner:  StreamReceiver. Borrows sink and counters.
/// Thread: the receiver's; the counters can be read from any.
class BlockAssembler {
public:
    using Time = IVxClock::Time;

    /// @param resend  borrowed; null: packets are never asked for
    BlockAssembler(const AssemblySettings& settings, IBlockSink& sink, StreamCounters& counters,
                   IResendChannel* resend = nullptr);

    void SetSettings(const AssemblySettings& settings);

    /// @param blocks  how many are filled at the same time, at most; 1 to 64
    void SetMostOpen(std::size_t blocks);

    /// @param picture  what the first chunk of chunk data is; none: not known
    void SetCameraPicture(const std::optional<PictureShape>& picture) { m_cameraPicture = picture; }

    /// @param datagram  of the camera
    void OnPacket(std::span<const std::byte> datagram, Time now);

    struct Received {
        std::size_t datagramBytes = 0; ///< header included
        Arrival arrival = Arrival::InDatagram;
    };
    /// A packet whose header has been read, and whose data may lie at their place already.
    void OnPacket(const gvsp::Packet& packet, const Received& received, Time now);

    /// Tells which payload packets should come next, so that they can be received at their places.
    /// @param expected  the first N are filled
    /// @return  N; 0 while the next packets are not certain
    [[nodiscard]] std::size_t Expect(std::span<ExpectedPacket> expected) const;

    /// @return  how far the newest block has come; none when it is not certain that more of it comes
    [[nodiscard]] std::optional<PacketGathering::Progress> NewestProgress() const;

    /// @return  which kind of ids, and so which header, the stream has
    [[nodiscard]] gvsp::IdMode IdMode() const { return m_idMode; }

    /// Asks for what is missing, and gives up what has waited for too long.
    void OnTime(Time now);
    /// The same without giving up: packets may be here that have not been looked at, and may be what is
    /// waited for.
    /// @return  whether something is due to be given up
    [[nodiscard]] bool OnTimeBehind(Time now);

    /// @return  when OnTime must be called unless a packet comes before; none = not at all
    [[nodiscard]] std::optional<Time> NextDeadline(Time now) const;
    /// The same, as of the last packet.
    [[nodiscard]] std::optional<Time> NextDeadline() const { return NextDeadline(m_lastPacketTime); }

    /// Gives all buffers back and forgets the stream: the next block may have any id.
    void Abort();

    /// What was learnt about the camera that sends again.
    [[nodiscard]] const ResendPolicy& Resend() const { return m_policy; }

private:
    // Chosen: 64 blocks are more than a second of any camera whose blocks are still being completed.
    static constexpr std::size_t kMostOpen = 64;

    void OnBlockPacket(const gvsp::Packet& packet, Arrival arrival, Time now);
    [[nodiscard]] OpenBlock::Effect Take(OpenBlock& block, const gvsp::Packet& packet, Arrival arrival,
                                         Time now);
    [[nodiscard]] OpenBlock* BlockOf(const gvsp::Packet& packet, Time now);
    [[nodiscard]] OpenBlock& Open(const gvsp::Packet& packet, Time now);
    void MakeRoom(OpenBlock& block, const BlockGeometry& geometry, Time now);
    void Count(OpenBlock::Effect effect);
    void TakeStatus(const gvsp::PacketHeader& header, OpenBlock& block, Time now);
    void FinishWhatIsOver(Time now);
    void GiveUpWhatIsDue(Time now);
    void MarkOvertaken(Time now);
    [[nodiscard]] bool IsOldestEnded() const;
    [[nodiscard]] bool IsOldestOver() const;
    [[nodiscard]] bool IsOldestDue(Time now) const;
    [[nodiscard]] bool IsHoped(const OpenBlock& block, Time now) const;
    [[nodiscard]] std::optional<Time> DeadlineOf(std::size_t index) const;
    [[nodiscard]] bool IsAsking() const;
    void AskForMissing(Time now);
    [[nodiscard]] std::optional<Time> EndExpectedAt(std::size_t index) const;
    [[nodiscard]] std::optional<Time> NextAsking(Time now) const;
    [[nodiscard]] Time::duration TailTimeout() const;
    void BeginAnew(Time now);
    [[nodiscard]] bool IsOfBefore(const gvsp::PacketHeader& header, unsigned asks, Time now) const;
    [[nodiscard]] OpenBlock& TakeOldest();
    void FinishOldest(Time now);
    void LearnFrom(const OpenBlock& block);
    void LearnEnd(const OpenBlock& block);
    [[nodiscard]] bool IsAnswer(const gvsp::PacketHeader& header, const OpenBlock* block) const;
    void NoteThatItAnswers();
    void ForgetAcquisition();
    void ForgetEnds();
    [[nodiscard]] std::size_t WantedBytes(const BlockGeometry& geometry) const;
    void CountBlock(const BlockInfo& info);

    AssemblySettings m_settings;
    IBlockSink& m_sink;
    StreamCounters& m_counters;
    IResendChannel* const m_resend; // borrowed, see the constructor
    ResendPolicy m_policy;

    std::array<OpenBlock, kMostOpen> m_blocks;
    std::array<OpenBlock*, kMostOpen>
        m_open{}; // the first m_openCount ones, oldest first; the others are unused
    std::size_t m_openCount = 0;
    std::size_t m_mostOpen = kMostOpen;
    std::optional<std::uint64_t> m_lastFinished; // block id
    RestartWatch m_restarts;
    std::optional<Time> m_begunAnewAt; // none: it has not
    gvsp::IdMode m_idMode = gvsp::IdMode::Standard;
    BlockGeometry m_lastGeometry;
    std::optional<PictureShape> m_cameraPicture;
    std::size_t m_chunkDataBytes = 0; // of the block of chunk data before
    bool m_hasChunkLists = false;     // of this acquisition some could be read
    BelievedEnds m_believed;          // in this acquisition
    bool m_isAnswering = false;       // in this acquisition something came because it was asked for
    bool m_isSilenceBelieved = false; // m_believed holds only because nothing did
    std::uint64_t m_lastCutEnd = 0;   // of the block before, see OpenBlock::CutEnd
    unsigned m_sameCutEnds = 0;       // how many blocks in a row had that one
    std::size_t m_stepBytes = 0;
    std::uint32_t m_lastEndId = 0;   // of a block that was complete; 0: none was
    Time::duration m_longestPause{}; // inside such blocks, lately
    Time m_lastPacketTime;
};

} // namespace receive
