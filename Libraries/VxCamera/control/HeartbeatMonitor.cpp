#include "VxCamera/control/HeartbeatMonitor.h"

#include <algorithm>

namespace control {

namespace {

using namespace std::chrono_literals;

// Used where the camera does not tell; it is what cameras are delivered with. Also the longest that is made
// use of: a user who lengthens the time-out for debugging still wants to know soon that the cable is out.
constexpr auto kUsualTimeout = 3000ms;

// Chosen: two heartbeats may be lost and the third is still in time.
constexpr int kBeatsPerTimeout = 3;

// Chosen: several tries fit between the first heartbeat that fails and the end of the time-out.
constexpr int kTriesPerTimeout = 6;
constexpr auto kLongestTry = 500ms;

// Chosen: so that a system that refuses to send is not asked without pause.
constexpr auto kRetryDelay = 50ms;

// Chosen: one heartbeat that fails can still be repeated in time.
constexpr int kFewestBeatsPerTimeout = 2;

// Chosen: no network keeps a shorter one, and a camera that tells nonsense must not be flooded.
constexpr auto kShortestTimeout = 150ms;

std::chrono::milliseconds TimeoutOf(const HeartbeatMonitor::Timing& timing)
{
    return timing.cameraTimeout <= 0ms
               ? kUsualTimeout
               : std::clamp<std::chrono::milliseconds>(timing.cameraTimeout, kShortestTimeout, kUsualTimeout);
}

} // namespace

HeartbeatMonitor::HeartbeatMonitor(const Timing& timing, Time lastAnswer)
    : m_timeout(TimeoutOf(timing)),
      m_interval(IntervalOf(timing)),
      m_lastAnswer(lastAnswer),
      m_lastBeat(lastAnswer)
{
}

std::chrono::milliseconds HeartbeatMonitor::IntervalOf(const Timing& timing)
{
    const auto timeout = TimeoutOf(timing);
    return timing.interval <= 0ms ? timeout / kBeatsPerTimeout
                                  : std::min(timing.interval, timeout / kFewestBeatsPerTimeout);
}

void HeartbeatMonitor::SetTiming(const Timing& timing)
{
    m_timeout = TimeoutOf(timing);
    m_interval = IntervalOf(timing);
}

void HeartbeatMonitor::OnBeat(Time now)
{
    m_lastBeat = now;
    m_lastFailure.reset();
}

void HeartbeatMonitor::OnAnswer(Time lastAnswer)
{
    if (lastAnswer <= m_lastAnswer)
        return; // known already
    m_lastAnswer = lastAnswer;
    m_lastFailure.reset();
}

void HeartbeatMonitor::OnFailure(Time now)
{
    m_lastFailure = now;
}

HeartbeatMonitor::Time HeartbeatMonitor::NextBeat() const
{
    if (m_lastFailure)
        return *m_lastFailure +
               std::min<std::chrono::milliseconds>(kRetryDelay, m_timeout / kTriesPerTimeout);
    return m_lastBeat + m_interval;
}

bool HeartbeatMonitor::IsLost(Time now) const
{
    // Not the whole time-out, so that the loss is known before the camera has given control to somebody else.
    return m_lastFailure && now - m_lastAnswer >= m_timeout * 9 / 10;
}

CommandSettings HeartbeatMonitor::BeatSettings() const
{
    return {std::min<std::chrono::milliseconds>(kLongestTry, m_timeout / kTriesPerTimeout), 0};
}

} // namespace control
