#include "VxCamera/receive/BlockAssembler.h"

#include <algorithm>

// Which block is over, and when: what is asked for, waited for and given up. How packets come to their blocks
// is in BlockAssembler.cpp.

namespace receive {

namespace {

using namespace std::chrono_literals;

// Chosen: how long the end of a block may be silent before it counts as lost; longer where blocks of this
// camera have shown longer pauses.
constexpr IVxClock::Time::duration kLeastTailTimeout = 3ms;
constexpr IVxClock::Time::duration kLongestTailTimeout = 20ms;

/// Turns the requests of one block into those of the stream, and counts them.
class BlockRequests final : public IResendRequests {
public:
    BlockRequests(IResendChannel& channel, const OpenBlock& block, StreamCounters& counters)
        : m_channel(channel), m_block(block), m_counters(counters)
    {
    }

    void Ask(std::uint32_t firstPacketId, std::uint32_t lastPacketId) override
    {
        m_counters.resendRequests.Add();
        m_counters.packetsRequestedAgain.Add(std::uint64_t{lastPacketId} - firstPacketId + 1);
        m_channel.Ask(m_block.IdMode(), m_block.BlockId(), firstPacketId, lastPacketId);
    }

private:
    IResendChannel& m_channel;
    const OpenBlock& m_block;
    StreamCounters& m_counters;
};

} // namespace

/// What becomes over by packets alone, whatever the time is: more of them may be here already.
void BlockAssembler::FinishWhatIsOver(Time now)
{
    MarkOvertaken(now);
    while (m_openCount > 0 && IsOldestOver())
        FinishOldest(now);
}

void BlockAssembler::GiveUpWhatIsDue(Time now)
{
    MarkOvertaken(now);
    while (m_openCount > 0 && (IsOldestOver() || IsOldestDue(now)))
        FinishOldest(now);
}

/// Notes which blocks should be complete because a newer one has gone far enough.
void BlockAssembler::MarkOvertaken(Time now)
{
    bool isOvertaken = false;
    for (std::size_t i = m_openCount; i-- > 0;) {
        OpenBlock& block = *m_open[i];
        if (block.overtakenAt)
            return; // and so are those before it
        if (isOvertaken)
            block.overtakenAt = now;
        // Of small blocks no single one has so many packets, and each may have lost some.
        const bool isPassed = block.HasTrailer() && i + 1 < m_openCount;
        isOvertaken =
            isOvertaken || isPassed || block.IsDone() || block.PayloadPackets() >= m_settings.reorderPackets;
    }
}

bool BlockAssembler::IsAsking() const
{
    return m_resend != nullptr && m_settings.resend.isOn && m_resend->IsOpen();
}

/// Whether packets of the block are on their way, or may be.
bool BlockAssembler::IsHoped(const OpenBlock& block, Time now) const
{
    return IsAsking() && block.IsStored() && !m_policy.IsHopeless(block.Missing(), block.asking, now);
}

/// Whether the camera has sent all of it, as far as anybody can tell.
bool BlockAssembler::IsOldestEnded() const
{
    const OpenBlock& block = *m_open[0];
    // An end that nobody has seen is a guess: who does not answer either may only have paused.
    const bool isEndKnown = block.HasTrailer() || block.asking.isRefused;
    return block.overtakenAt || (block.IsEnded() && isEndKnown && block.asking.isGivenUp);
}

bool BlockAssembler::IsOldestOver() const
{
    const OpenBlock& block = *m_open[0];
    if (block.IsDone() || (block.overtakenAt && block.IsPictureWhole()))
        return true;
    const bool comesAgain = IsAsking() && block.IsStored() && !block.asking.isRefused;
    return IsOldestEnded() && !comesAgain;
}

bool BlockAssembler::IsOldestDue(Time now) const
{
    const OpenBlock& block = *m_open[0];
    const bool isAskedOut = IsAsking() && block.HasTrailer() && !block.Missing().IsEmpty();
    if ((IsOldestEnded() || isAskedOut) && !IsHoped(block, now))
        return true;
    const auto deadline = DeadlineOf(0);
    return deadline && now >= *deadline;
}

/// @return  none for a block that may wait for ever: the newest one, when the camera still waits for its
/// exposure
std::optional<BlockAssembler::Time> BlockAssembler::DeadlineOf(std::size_t index) const
{
    const OpenBlock& block = *m_open[index];
    if (block.IsPictureWhole())
        return block.LastPacketTime() + m_settings.trailerTimeout;
    if (block.IsLeaderOnly() && index + 1 == m_openCount)
        return std::nullopt;
    const Time bySilence = block.LastPacketTime() + m_settings.blockTimeout;
    return block.overtakenAt ? std::min(bySilence, *block.overtakenAt + m_settings.resendTimeout) : bySilence;
}

BlockAssembler::Time::duration BlockAssembler::TailTimeout() const
{
    return std::clamp(2 * m_longestPause, kLeastTailTimeout, kLongestTailTimeout);
}

/// @return  when what is missing at the end of the block counts as lost; none when that is known, or cannot
/// be
std::optional<BlockAssembler::Time> BlockAssembler::EndExpectedAt(std::size_t index) const
{
    const OpenBlock& block = *m_open[index];
    const bool isNewest = index + 1 == m_openCount;
    if (block.IsEnded() || block.EndId() == 0 || !block.IsStored() || (block.IsLeaderOnly() && isNewest))
        return std::nullopt;
    const Time bySilence = block.LastAdvance() + TailTimeout();
    if (block.overtakenAt)
        return std::min(bySilence, *block.overtakenAt);
    // More than may be asked for: counting it as lost would end the block. The camera, or this computer, may
    // only have paused.
    const std::uint64_t rest = block.EndId() + 1 - block.Missing().Next(); // not ended: not negative
    return m_policy.IsWithinBudget(rest, block.asking, block.EndId()) ? std::optional(bySilence)
                                                                      : std::nullopt;
}

void BlockAssembler::AskForMissing(Time now)
{
    if (!IsAsking())
        return;
    for (std::size_t i = 0; i < m_openCount; ++i) {
        OpenBlock& block = *m_open[i];
        if (!block.IsStored())
            continue;
        if (const auto due = EndExpectedAt(i); due && now >= *due)
            block.ExpectEnd(now);
        if (block.Missing().IsEmpty())
            continue;
        BlockRequests requests(*m_resend, block, m_counters);
        m_policy.Ask(block.Missing(), block.asking, block.LeastPackets(), now, requests);
    }
}

std::optional<BlockAssembler::Time> BlockAssembler::NextAsking(Time now) const
{
    std::optional<Time> next;
    const auto consider = [&next](std::optional<Time> time) {
        if (time)
            next = std::min(next.value_or(*time), *time);
    };
    for (std::size_t i = 0; i < m_openCount; ++i) {
        const OpenBlock& block = *m_open[i];
        if (!block.IsStored())
            continue;
        consider(EndExpectedAt(i));
        consider(m_policy.NextDue(block.Missing(), block.asking, now));
    }
    return next;
}

void BlockAssembler::OnTime(Time now)
{
    AskForMissing(now);
    GiveUpWhatIsDue(now);
}

bool BlockAssembler::OnTimeBehind(Time now)
{
    AskForMissing(now);
    FinishWhatIsOver(now);
    return m_openCount > 0 && IsOldestDue(now);
}

std::optional<BlockAssembler::Time> BlockAssembler::NextDeadline(Time now) const
{
    if (m_openCount == 0)
        return std::nullopt;
    const auto deadline = DeadlineOf(0); // blocks are finished in order
    const auto asking = IsAsking() ? NextAsking(now) : std::nullopt;
    if (!deadline || !asking)
        return deadline ? deadline : asking;
    return std::min(*deadline, *asking);
}

} // namespace receive
