#pragma once

#include "VxBase/VxClock.h"

#include <atomic>
#include <chrono>

/// A clock that stands still until a test, or a fake that waits, moves it.
///
/// Owner:  the test, by value.
/// Thread: any.
class FakeClock final : public IVxClock {
public:
    [[nodiscard]] Time Now() const override { return Time(m_now.load()); }
    void Advance(Time::duration duration) { m_now = m_now.load() + duration; }

    /// Moves forward only.
    void AdvanceTo(Time time)
    {
        if (time.time_since_epoch() > m_now.load())
            m_now = time.time_since_epoch();
    }

private:
    std::atomic<Time::duration> m_now{std::chrono::hours(1)}; // chosen: any time but the epoch
};
