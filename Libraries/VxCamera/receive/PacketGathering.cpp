#include "VxCamera/receive/PacketGathering.h"

#include <algorithm>

namespace receive {

namespace {

using namespace std::chrono_literals;

// Chosen: what a camera that suddenly sends faster can cost in latency, and a missing packet in the time
// until it is asked for; small beside the 8 ms that a picture of 1 MB takes on a link of 1 Gbit/s.
constexpr std::chrono::microseconds kLongest = 1ms;

// Measured: falling asleep and being woken takes 3 to 5 us of a processor; what is shorter saves nothing.
constexpr std::chrono::microseconds kShortest = 40us;

// Chosen: before that the pace is a matter of luck.
constexpr std::uint32_t kPacketsForPace = 8;

// Measured: Linux counts 2,304 bytes for a packet of 1,500 bytes, and up to twice the size of larger ones.
constexpr std::size_t kBookkeepingBytes = 1024;
constexpr std::size_t kBufferShare = 4; // chosen: a quarter may fill while the receiver sleeps

} // namespace

std::chrono::microseconds PacketGathering::TimeFor(const Progress& progress)
{
    const bool isOther = !m_hasStart || progress.blockId != m_start.blockId;
    if (isOther || progress.highestId < m_start.highestId) {
        m_start = progress;
        m_hasStart = true;
    }
    const std::uint32_t packets = progress.highestId - m_start.highestId;
    if (packets < kPacketsForPace || progress.endId <= progress.highestId)
        return 0us;
    const auto perPacket = (progress.lastAdvance - m_start.lastAdvance) / packets;
    const auto rest = perPacket * (progress.endId - progress.highestId);
    const std::size_t packetMemory = 2 * (progress.stepBytes + kBookkeepingBytes);
    const auto untilFull =
        perPacket * static_cast<std::int64_t>(m_socketBufferBytes / kBufferShare / packetMemory); // thousands
    const auto sleep = std::chrono::duration_cast<std::chrono::microseconds>(std::min(rest / 2, untilFull));
    return sleep < kShortest ? 0us : std::min(sleep, kLongest);
}

} // namespace receive
