#pragma once

#include "VxBase/VxClock.h"
#include "VxCamera/control/CommandSettings.h"

#include <chrono>
#include <optional>

namespace control {

/// Decides when the camera must hear from us, and when it has been silent for too long.
///
/// Every acknowledged command is a sign of life, and restarts the camera's timer. But only a heartbeat tells
/// who controls the camera: so heartbeats keep their own time, however busy the link is.
///
/// Owner:  DeviceSession, by value.
/// Thread: the heartbeat thread.
class HeartbeatMonitor {
public:
    using Time = IVxClock::Time;

    struct Timing {
        std::chrono::milliseconds
            cameraTimeout{}; ///< after which the camera takes control away; 0 = it does not tell
        std::chrono::milliseconds interval{}; ///< between heartbeats; 0 = a third of the time-out

        friend bool operator==(const Timing&, const Timing&) = default;
    };

    /// @param lastAnswer     when the camera was last heard of
    HeartbeatMonitor(const Timing& timing, Time lastAnswer);

    /// @return  the time between heartbeats that comes of it: at most half of the time-out
    [[nodiscard]] static std::chrono::milliseconds IntervalOf(const Timing& timing);

    /// Another timing is in force; what is known of the link stays.
    void SetTiming(const Timing& timing);

    /// The camera was heard of, by a heartbeat or another command.
    void OnAnswer(Time lastAnswer);

    /// A heartbeat was answered.
    void OnBeat(Time now);

    /// A heartbeat was not acknowledged, or could not be sent.
    void OnFailure(Time now);

    [[nodiscard]] Time NextBeat() const;

    /// Whether the link is lost: a heartbeat failed, and what the camera allows is nearly used up.
    [[nodiscard]] bool IsLost(Time now) const;

    /// How a heartbeat is sent: once, with a short wait, so that several of them fit.
    [[nodiscard]] CommandSettings BeatSettings() const;

private:
    std::chrono::milliseconds m_timeout;
    std::chrono::milliseconds m_interval;
    Time m_lastAnswer;
    Time m_lastBeat; // that was answered; at first the last answer, for taking control tells who has it
    std::optional<Time> m_lastFailure; // empty: none since the last answer
};

} // namespace control
