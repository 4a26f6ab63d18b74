#pragma once

#include "VxCamera/transport/win/WinTimerSystem.h"

#include <chrono>
#include <functional>
#include <span>
#include <utility>
#include <vector>

namespace transport {

/// What a test says of a system whose waits end with a tick, and what was asked of it.
struct TimerNotes {
    std::chrono::milliseconds tick{1}; ///< waits end by themselves at multiples of it
    bool knowsHighResolution = true;
    bool hasTimers = true;
    bool grantsShortTick = true;
    bool setsTimers = true;
    std::function<void()> onWait; ///< run once, when a wait begins

    std::vector<DWORD> flags; ///< of the timers asked for
    int ticksBegun = 0;
    int ticksEnded = 0;
    int sets = 0;
    int waits = 0;
    int timedWaits = 0; ///< among them: for a timer, too
};

/// Stands for a Windows whose tick is as coarse as a test wants it, with the real system's events and timers:
/// those of Wine are fine, whatever they are asked for.
///
/// Owner:  the socket. Borrows the notes.
/// Thread: one at a time.
class CoarseTimers final : public ITimerSystem {
public:
    static constexpr DWORD kHighResolution = 2; // fixed by Windows

    explicit CoarseTimers(TimerNotes& notes) : m_notes(notes) {}

    KernelHandle MakeTimer(DWORD flags) override
    {
        m_notes.flags.push_back(flags);
        const bool isKnown = flags == 0 || (flags == kHighResolution && m_notes.knowsHighResolution);
        return m_notes.hasTimers && isKnown ? m_real.MakeTimer(flags) : KernelHandle(nullptr);
    }
    bool BeginShortTick() override
    {
        m_notes.ticksBegun += m_notes.grantsShortTick ? 1 : 0;
        return m_notes.grantsShortTick;
    }
    void EndShortTick() override { ++m_notes.ticksEnded; }
    bool Set(HANDLE timer, std::chrono::nanoseconds duration) override
    {
        ++m_notes.sets;
        return m_notes.setsTimers && m_real.Set(timer, duration);
    }
    DWORD Wait(std::span<const HANDLE> handles, DWORD timeoutMs) override
    {
        ++m_notes.waits;
        m_notes.timedWaits += handles.size() > 1 ? 1 : 0;
        if (const auto act = std::exchange(m_notes.onWait, nullptr))
            act();
        const auto tickMs = static_cast<DWORD>(m_notes.tick.count()); // some seconds
        return m_real.Wait(handles, (timeoutMs + tickMs - 1) / tickMs * tickMs);
    }

private:
    TimerNotes& m_notes;
    WinTimerSystem m_real;
};

} // namespace transport
