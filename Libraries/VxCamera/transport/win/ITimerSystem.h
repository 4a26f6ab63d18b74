#pragma once

#include "VxCamera/transport/win/WinSystem.h"

#include <windows.h>

#include <chrono>
#include <span>

namespace transport {

/// What of the system ends waits: the real functions, or what a test puts there.
///
/// Owner:  the timer.
/// Thread: the socket's opener, then its receiving one.
class ITimerSystem {
public:
    ITimerSystem(const ITimerSystem&) = delete;
    ITimerSystem& operator=(const ITimerSystem&) = delete;
    virtual ~ITimerSystem() = default;

    /// A waitable timer that resets itself: CreateWaitableTimerExW.
    /// @return  null when the system refuses, for instance flags that it does not know
    virtual KernelHandle MakeTimer(DWORD flags) = 0;

    /// Asks for a tick of 1 ms until EndShortTick.
    /// @return  whether the system does so
    virtual bool BeginShortTick() = 0;
    virtual void EndShortTick() = 0;

    /// @return  whether the timer is signalled after that time, and not before
    virtual bool Set(HANDLE timer, std::chrono::nanoseconds duration) = 0;

    /// WaitForMultipleObjects, for any of them.
    virtual DWORD Wait(std::span<const HANDLE> handles, DWORD timeoutMs) = 0;

protected:
    ITimerSystem() = default;
};

} // namespace transport
