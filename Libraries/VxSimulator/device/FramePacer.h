#pragma once

#include "VxBase/VxClock.h"

#include <chrono>
#include <cstdint>
#include <optional>

namespace simulator {

/// Decides when frames are due.
///
/// Owner:  CameraModel, by value.
/// Thread: one at a time; time is an argument.
class FramePacer {
public:
    using Time = IVxClock::Time;
    enum class Mode {
        FreeRunning, ///< a frame every period
        Triggered,   ///< a frame for each trigger, not faster than one per period
    };

    /// @param frames  how many there will be; none: without end
    void Start(Time now, std::optional<std::uint64_t> frames);
    void Stop();

    void SetMode(Mode mode) { m_mode = mode; }
    /// @param period  more than 0
    void SetPeriod(std::chrono::nanoseconds period) { m_period = period; }

    /// One trigger; it counts only while acquisition is active and no earlier one is waiting.
    void Trigger();

    /// False again after the last of a limited number of frames.
    [[nodiscard]] bool IsActive() const { return m_isActive; }

    /// @return  when the next frame is due, perhaps in the past; none when nothing is due without a trigger
    /// or start
    [[nodiscard]] std::optional<Time> NextDue() const;

    /// @return  whether a frame is due; it is then taken. Who comes late gets one frame, not those missed.
    [[nodiscard]] bool Take(Time now);

private:
    bool m_isActive = false;
    Mode m_mode = Mode::FreeRunning;
    std::chrono::nanoseconds m_period = std::chrono::milliseconds(40);
    Time m_nextDue{};
    bool m_isTriggered = false;
    std::optional<std::uint64_t> m_framesLeft;
};

} // namespace simulator
