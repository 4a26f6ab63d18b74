#pragma once

#include <chrono>
#include <cstdint>
#include <optional>

namespace vxgrab {

enum class FrameContent {
    Picture, ///< from the camera
    Zero,    ///< what a filter delivers when it has no picture
};

/// Counts frames and their rate; time is an argument.
///
/// Owner:  FrameRecorder, by value.
/// Thread: not locked.
class FrameTally final {
public:
    using TimePoint = std::chrono::steady_clock::time_point;

    void Count(FrameContent content, TimePoint arrival);

    [[nodiscard]] std::uint64_t Delivered() const { return m_pictures + m_zeroFrames; }
    [[nodiscard]] std::uint64_t Pictures() const { return m_pictures; }
    [[nodiscard]] std::uint64_t ZeroFrames() const { return m_zeroFrames; }

    /// @return  frames per second between the first and the last frame, zero frames included; 0 with fewer
    /// than two
    [[nodiscard]] double FramesPerSecond() const;

private:
    std::uint64_t m_pictures = 0;
    std::uint64_t m_zeroFrames = 0;
    std::optional<TimePoint> m_first;
    TimePoint m_last{};
};

} // namespace vxgrab
