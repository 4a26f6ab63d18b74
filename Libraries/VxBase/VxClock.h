#pragma once

#include <chrono>

/// Tells the time. Whoever waits or measures takes one as an argument, so that tests need not wait.
///
/// Owner:  the composition root; everybody else borrows it.
/// Thread: any.
class IVxClock {
public:
    using Time = std::chrono::steady_clock::time_point;

    IVxClock() = default;
    IVxClock(const IVxClock&) = delete;
    IVxClock& operator=(const IVxClock&) = delete;
    virtual ~IVxClock() = default;

    /// @return  never earlier than what an earlier call returned
    [[nodiscard]] virtual Time Now() const = 0;
};

/// The system's monotonic clock.
class VxSteadyClock final : public IVxClock {
public:
    [[nodiscard]] Time Now() const override { return std::chrono::steady_clock::now(); }
};
