#pragma once

#include "VxCamera/transport/win/ITimerSystem.h"
#include "VxCamera/transport/win/WinSystem.h"

#include <windows.h>

#include <chrono>
#include <memory>
#include <optional>

namespace transport {

/// Ends waits for an event in time. The system's own end with its tick, up to 16 ms late: longer than all
/// that a lost packet is waited for.
///
/// Owner:  the socket.
/// Thread: the socket's opener, then its receiving one.
class WinWaitTimer final {
public:
    using Time = std::chrono::steady_clock::time_point;

    /// Asks the system for a timer of high resolution, else for an ordinary one and a shorter tick, which it
    /// keeps for as long as this object lives. A system that refuses all of it ends waits as it can.
    explicit WinWaitTimer(std::unique_ptr<ITimerSystem> system);
    WinWaitTimer(const WinWaitTimer&) = delete;
    WinWaitTimer& operator=(const WinWaitTimer&) = delete;
    ~WinWaitTimer();

    /// @return  WAIT_OBJECT_0: the event; WAIT_TIMEOUT, which may come early; WAIT_FAILED, see GetLastError
    DWORD WaitFor(HANDLE event, Time deadline);

private:
    KernelHandle MakeTimer();
    bool IsSetWithin(Time now, Time deadline) const;
    bool Set(Time now, Time deadline);

    const std::unique_ptr<ITimerSystem> m_system;
    bool m_isTickShort = false;
    const KernelHandle m_timer;
    std::optional<Time> m_due; // of the timer; none: it is not set
};

} // namespace transport
