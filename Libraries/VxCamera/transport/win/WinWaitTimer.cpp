#include "VxCamera/transport/win/WinWaitTimer.h"

#include <array>
#include <span>
#include <utility>

namespace transport {

namespace {

// Fixed by Windows 10, version 1803 and later. The headers of MinGW lack it.
constexpr DWORD kHighResolution = 0x00000002; // CREATE_WAITABLE_TIMER_HIGH_RESOLUTION

constexpr DWORD kTimerEnded = WAIT_OBJECT_0 + 1;

} // namespace

WinWaitTimer::WinWaitTimer(std::unique_ptr<ITimerSystem> system)
    : m_system(std::move(system)), m_timer(MakeTimer())
{
}

WinWaitTimer::~WinWaitTimer()
{
    if (m_isTickShort)
        m_system->EndShortTick();
}

KernelHandle WinWaitTimer::MakeTimer()
{
    KernelHandle timer = m_system->MakeTimer(kHighResolution);
    if (timer.Get() != nullptr)
        return timer;
    m_isTickShort = m_system->BeginShortTick();
    return m_system->MakeTimer(0);
}

/// The timer is set anew only when it would end too late. While packets come, each moves the deadline on:
/// to set it for every wait would cost as many calls of the system. It ends one wait too early then, which
/// is waited on.
DWORD WinWaitTimer::WaitFor(HANDLE event, Time deadline)
{
    const std::array<HANDLE, 2> handles{event, m_timer.Get()};
    for (;;) {
        const auto now = Time::clock::now();
        if (deadline <= now)
            return WAIT_TIMEOUT;
        const bool isTimed = IsSetWithin(now, deadline) || Set(now, deadline);
        // The system's own time-out stays: no timer can make a wait longer than it was without.
        const DWORD waited =
            m_system->Wait(std::span(handles).first(isTimed ? 2 : 1), ToWaitMs(deadline - now));
        if (waited != kTimerEnded)
            return waited;
        m_due.reset();
    }
}

bool WinWaitTimer::IsSetWithin(Time now, Time deadline) const
{
    return m_due && *m_due > now && *m_due <= deadline;
}

/// Also takes back that the timer has ended meanwhile.
bool WinWaitTimer::Set(Time now, Time deadline)
{
    m_due.reset();
    if (m_timer.Get() == nullptr || !m_system->Set(m_timer.Get(), deadline - now))
        return false;
    m_due = deadline;
    return true;
}

} // namespace transport
