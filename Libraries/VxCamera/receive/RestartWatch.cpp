#include "VxCamera/receive/RestartWatch.h"

#include "VxCamera/receive/PacketKinds.h"
#include "VxCamera/wire/gvsp/BlockLayout.h"

#include <chrono>

namespace receive {

namespace {

using namespace std::chrono_literals;

// Chosen: no packet is overtaken by this many blocks, so a leader from further back is that of a camera that
// began anew.
constexpr std::int64_t kLateBlocks = 8;

// Chosen: overtaken packets come within microseconds; a leader after this much silence is that of a new
// acquisition.
constexpr auto kRestartPause = 20ms;

// Chosen: no camera answers a request later than this.
constexpr auto kLongestAnswer = 1s;

/// Whether the packet is a leader, and not marked as sent again.
bool IsNewLeader(const gvsp::PacketHeader& header)
{
    return gvsp::HasLeader(header.format) && !IsSentAgain(header);
}

} // namespace

void RestartWatch::OnLeader(const OpenBlock& block)
{
    const std::uint64_t timestamp = block.Geometry().timestampTicks;
    if (timestamp == 0)
        return; // a camera that does not tell the time
    // An earlier time is that of a block that was overtaken; or the camera's clock was set back, and then the
    // time before counts as long as such blocks can come.
    const bool isNewer = timestamp > m_newest.timestampTicks ||
                         gvsp::BlockIdStep(m_newest.blockId, block.BlockId(), block.IdMode()) > kLateBlocks;
    if (isNewer)
        m_newest = {block.BlockId(), timestamp};
}

void RestartWatch::OnFinished(const OpenBlock& block, Time now)
{
    m_lastFinishedAt = now;
    if (block.HasLeader())
        m_lastTimestamp = block.Geometry().timestampTicks;
}

bool RestartWatch::IsProven(const gvsp::Packet& packet) const
{
    const gvsp::PacketHeader& header = packet.header;
    if (m_newest.timestampTicks == 0 || !IsNewLeader(header))
        return false;
    // The leader of a block that has none yet may come late, too, and be later than all before it: not one
    // whose id was there.
    return gvsp::BlockIdStep(m_newest.blockId, header.blockId, header.idMode) <= 0 &&
           ReadGeometry(packet.data).timestampTicks > m_newest.timestampTicks;
}

bool RestartWatch::IsRestart(const gvsp::Packet& packet, std::int64_t step, Time::duration silence,
                             Time now) const
{
    if (!IsNewLeader(packet.header))
        return false;
    return step < -kLateBlocks || IsProven(packet) ||
           (silence >= kRestartPause && !IsOfFinished(packet, step, now));
}

/// Whether a leader is that of a block which is finished. Not every camera marks what it sends again.
bool RestartWatch::IsOfFinished(const gvsp::Packet& leader, std::int64_t step, Time now) const
{
    const std::uint64_t timestamp = ReadGeometry(leader.data).timestampTicks;
    if (m_lastTimestamp == 0 || timestamp == 0)
        return false; // a camera that does not tell the time
    if (step == 0)
        return timestamp == m_lastTimestamp;
    // A restart is later than what was before it, unless the camera's clock was set back, too.
    return timestamp < m_lastTimestamp && now - m_lastFinishedAt < kLongestAnswer;
}

} // namespace receive
