#include "VxCamera/receive/RateMeter.h"

#include <algorithm>
#include <chrono>

namespace receive {

namespace {

using namespace std::chrono_literals;

// Chosen: long enough for cameras of one block a second, short enough to follow a change.
constexpr auto kWindow = 3s;

// Chosen: after this many usual intervals without a block the rate begins to sink.
constexpr int kLateIntervals = 2;

} // namespace

void RateMeter::OnBlock(Time now, std::uint64_t receivedBytes)
{
    const VxLock lock(m_mutex);
    m_blocks[m_next] = {now, receivedBytes};
    m_next = (m_next + 1) % kBlocks;
    m_count = std::min(m_count + 1, kBlocks);
}

RateMeter::Rates RateMeter::Read(Time now) const
{
    const VxLock lock(m_mutex);
    std::size_t inWindow = 0;
    while (inWindow < m_count && now - At(inWindow).time <= kWindow)
        ++inWindow;
    if (inWindow < 2)
        return {};
    const Block& latest = At(0);
    const Block& earliest = At(inWindow - 1);
    const auto intervals = static_cast<double>(inWindow - 1);
    std::chrono::duration<double> span = latest.time - earliest.time;
    const std::chrono::duration<double> silence = now - latest.time;
    if (silence > kLateIntervals * span / intervals)
        span += silence;
    if (span.count() <= 0)
        return {}; // all at the same instant: no rate can be told
    constexpr double kBitsPerByte = 8;
    // A reset between two blocks sets the bytes back.
    const bool isReset = latest.receivedBytes < earliest.receivedBytes;
    const auto bytes = isReset ? 0.0 : static_cast<double>(latest.receivedBytes - earliest.receivedBytes);
    return {intervals / span.count(), bytes * kBitsPerByte / span.count()};
}

const RateMeter::Block& RateMeter::At(std::size_t back) const
{
    return m_blocks[(m_next + kBlocks - 1 - back) % kBlocks];
}

void RateMeter::Reset()
{
    const VxLock lock(m_mutex);
    m_count = 0;
}

} // namespace receive
