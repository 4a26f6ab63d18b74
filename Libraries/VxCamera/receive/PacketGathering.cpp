#include "VxCamera/receive/PacketGathering.h"

#include <algorithm>

namespace receive {

namespace {

using namespace std::chrono_literals;

// Chosen: what a camera that suddenly sends faster can cost in latency, and a missing packet in the time
// until it is asked for; small beside the 8 ms that a picture of 1 MB takes on a link of 1 Gbit/s.
constexpr std::chrono::microseconds kLongest = 1ms;

// Measured: falling asleep and being woken takes 3 to 5 us of a processor, and waking some more; what is
// shorter saves nothing. (To sleep for all of such a rest saves a little more, and has the end wait for 50
// us.)
constexpr std::chrono::microseconds kShortest = 20us;

// Measured: what has gathered in the system takes so long to receive that after two thirds of the rest the
// end of a block waits for 250 us and more, instead of 55; what lies near is received at once, and the end
// does not wait longer than after half of it.
constexpr PacketGathering::Share kShare{1, 2};
constexpr PacketGathering::Share kShareOfNear{2, 3};

// Chosen: before that the pace is a matter of luck.
constexpr std::uint32_t kPacketsForPace = 8;

// Measured: Linux counts 2,304 bytes for a packet of 1,500 bytes, and up to twice the size of larger ones.
constexpr std::size_t kBookkeepingBytes = 1024;
constexpr std::size_t kBufferShare = 4; // chosen: a quarter may fill while the receiver sleeps

} // namespace

void PacketGathering::SetSocket(std::size_t bufferBytes, Backlog backlog)
{
    *this = PacketGathering();
    m_socketBufferBytes = bufferBytes;
    m_share = backlog == Backlog::Near ? kShareOfNear : kShare;
}

std::chrono::microseconds PacketGathering::TimeFor(const Progress& progress)
{
    const bool isOther = !m_hasStart || progress.blockId != m_start.blockId;
    if (isOther || progress.highestId < m_latest.highestId) {
        m_start = progress;
        m_hasStart = true;
    }
    m_latest = progress;
    const std::uint32_t packets = progress.highestId - m_start.highestId;
    if (progress.endId <= progress.highestId)
        return 0us;
    const bool isPaceKnown = packets >= kPacketsForPace;
    if (isPaceKnown)
        m_pace = {(progress.lastAdvance - m_start.lastAdvance) / packets, progress.stepBytes};
    else if (m_pace.stepBytes != progress.stepBytes)
        return 0us;
    const auto rest = m_pace.perPacket * (progress.endId - progress.highestId);
    const std::size_t packetMemory = 2 * (progress.stepBytes + kBookkeepingBytes);
    const auto untilFull = m_pace.perPacket * static_cast<std::int64_t>(m_socketBufferBytes / kBufferShare /
                                                                        packetMemory); // thousands
    const auto part = isPaceKnown ? m_share.num * rest / m_share.den : rest / 4;
    const auto sleep = std::chrono::duration_cast<std::chrono::microseconds>(std::min(part, untilFull));
    return sleep < kShortest ? 0us : std::min(sleep, kLongest);
}

} // namespace receive
