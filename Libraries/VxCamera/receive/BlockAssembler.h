#pragma once

#include "VxBase/VxClock.h"
#include "VxCamera/receive/IBlockSink.h"
#include "VxCamera/receive/OpenBlock.h"
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
    /// Chosen: longer than any camera pauses inside a block, and well below the second for which a consumer
    /// waits.
    std::chrono::milliseconds blockTimeout{250};
    /// Chosen: how long the trailer of a block may take whose picture is whole.
    std::chrono::milliseconds trailerTimeout{20};
    /// Chosen: how many packets of a newer block prove that an older one gets no more; networks reorder far
    /// fewer.
    std::uint64_t reorderPackets = 32;
};

/// Puts the packets of a stream together to blocks and delivers these in order.
///
/// Several blocks can be open at once, because packets overtake each other. An incomplete block is delivered,
/// too, and says so. Nothing is written outside a buffer, whatever the packets say.
///
/// Owner:  StreamReceiver. Borrows sink and counters.
/// Thread: the receiver's; the counters can be read from any.
class BlockAssembler {
public:
    using Time = IVxClock::Time;

    BlockAssembler(const AssemblySettings& settings, IBlockSink& sink, StreamCounters& counters);

    /// @param datagram  of the camera
    void OnPacket(std::span<const std::byte> datagram, Time now);

    /// Gives up what has waited for too long.
    void OnTime(Time now);

    /// @return  when OnTime must be called unless a packet comes before; none = not at all
    [[nodiscard]] std::optional<Time> NextDeadline() const;

    /// Gives all buffers back and forgets the stream: the next block may have any id.
    void Abort();

private:
    void OnBlockPacket(const gvsp::Packet& packet, Time now);
    [[nodiscard]] OpenBlock* BlockOf(const gvsp::Packet& packet, Time now);
    [[nodiscard]] bool IsRestart(const gvsp::PacketHeader& header, std::int64_t step, Time now) const;
    [[nodiscard]] OpenBlock& Open(const gvsp::Packet& packet, Time now);
    void Count(OpenBlock::Effect effect);
    void CountStatus(gvsp::Status status, OpenBlock& block);
    void FinishWhatIsDue(Time now);
    [[nodiscard]] bool IsOldestDue(Time now) const;
    [[nodiscard]] std::optional<Time> DeadlineOf(std::size_t index) const;
    void FinishOldest();
    void CountBlock(const BlockInfo& info);

    // Chosen: packets of more blocks than this never mix.
    static constexpr std::size_t kMostOpen = 4;

    const AssemblySettings m_settings;
    IBlockSink& m_sink;
    StreamCounters& m_counters;

    std::array<OpenBlock, kMostOpen> m_blocks;
    std::array<OpenBlock*, kMostOpen>
        m_open{}; // the first m_openCount ones, oldest first; the others are unused
    std::size_t m_openCount = 0;
    std::optional<std::uint64_t> m_lastFinished; // block id
    gvsp::IdMode m_idMode = gvsp::IdMode::Standard;
    BlockGeometry m_lastGeometry;
    std::size_t m_stepBytes = 0;
    Time m_lastPacketTime;
};

} // namespace receive
