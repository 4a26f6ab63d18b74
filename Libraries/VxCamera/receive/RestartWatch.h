#pragma once

#include "VxBase/VxClock.h"
#include "VxCamera/receive/OpenBlock.h"
#include "VxCamera/wire/gvsp/PacketHeader.h"

#include <cstdint>

namespace receive {

/// Tells the leader of a camera that began anew from one that comes late or once more.
///
/// Block ids begin at 1 with every acquisition, so of two blocks with the same id one may be a new picture.
///
/// Owner:  BlockAssembler, by value.
/// Thread: one. Time is an argument.
class RestartWatch {
public:
    using Time = IVxClock::Time;

    /// @param block  which has just taken a leader
    void OnLeader(const OpenBlock& block);
    /// @param block  that is finished
    void OnFinished(const OpenBlock& block, Time now);
    /// The next block may have any id.
    void Forget() { m_newest = {}; }

    /// Whether the packet is a leader of a camera that began anew, whatever came when: the block that was the
    /// newest until now has this id or a later one, and an earlier timestamp.
    [[nodiscard]] bool IsProven(const gvsp::Packet& packet) const;

    /// Whether a packet is, or must be taken for, a leader of a camera that began anew.
    /// @param step  from the last block that is finished or, before there is one, the newest; not above 0
    /// @param silence  since the packet before
    [[nodiscard]] bool IsRestart(const gvsp::Packet& packet, std::int64_t step, Time::duration silence,
                                 Time now) const;

private:
    [[nodiscard]] bool IsOfFinished(const gvsp::Packet& leader, std::int64_t step, Time now) const;

    struct Newest {
        std::uint64_t blockId = 0;
        std::uint64_t timestampTicks = 0; ///< 0: no leader has told the time yet
    };
    Newest m_newest; // of this acquisition, by the camera's clock

    std::uint64_t m_lastTimestamp = 0; // ticks, of the block finished last or, without leader, of one before
    Time m_lastFinishedAt;
};

} // namespace receive
