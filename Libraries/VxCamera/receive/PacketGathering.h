#pragma once

#include "VxBase/VxClock.h"

#include <chrono>
#include <cstddef>
#include <cstdint>

namespace receive {

/// Decides how long the packets of a block may gather in the socket before they are received.
///
/// To be woken for each packet costs several times what receiving it costs. In the middle of a block nobody
/// waits for the packets, only for the last one: so the receiver sleeps for half of the time that the rest of
/// the block should take (more where the backlog is near), again and again, and is awake when the end comes.
/// A block begins with a quarter, by the pace of the one before, because its own is not known yet.
///
/// Owner:  StreamReceiver, by value.
/// Thread: one. Time is an argument.
class PacketGathering {
public:
    using Time = IVxClock::Time;

    /// How far the newest block has come.
    struct Progress {
        std::uint64_t blockId = 0;
        std::uint32_t highestId = 0; ///< of the packets that are here
        std::uint32_t endId = 0;     ///< of the trailer
        std::size_t stepBytes = 0;   ///< payload of a packet
        Time lastAdvance;            ///< when the packet of the highest id came
    };

    /// Which part of a time.
    struct Share {
        int num = 0;
        int den = 1;
    };

    /// How packets wait while the receiver sleeps; see transport::IUdpSocket.
    enum class Backlog { InSystem, Near };

    /// For a new acquisition.
    /// @param bufferBytes  for packets that wait
    void SetSocket(std::size_t bufferBytes, Backlog backlog);

    /// @return  how long to sleep now; 0: not at all
    [[nodiscard]] std::chrono::microseconds TimeFor(const Progress& progress);

private:
    std::size_t m_socketBufferBytes = 0;
    Share m_share;
    bool m_hasStart = false;
    Progress m_start;  // of the block, from where its pace is measured
    Progress m_latest; // the one before

    struct Pace {
        Time::duration perPacket{};
        std::size_t stepBytes = 0;
    };
    Pace m_pace; // of this block, or else of the one before
};

} // namespace receive
