#pragma once

#include <cstdint>

namespace vxds {

/// Times of one frame.
struct FrameTimes {
    std::int64_t start = 0;      ///< stream time, 100 ns units: arrival of the frame before
    std::int64_t stop = 0;       ///< stream time, 100 ns units: arrival of this frame
    std::int64_t mediaStart = 0; ///< number of the frame, from 0
    std::int64_t mediaStop = 0;  ///< that of the next one
};

/// Stamps frames: each lasts from the arrival of the one before to its own, counted from the first.
///
/// Owner:  FrameStatistics, by value.
/// Thread: the streaming thread; Reset also under the acquisition mutex.
class FrameStamper {
public:
    void Reset() { *this = {}; }

    /// @param now  the graph's clock, 100 ns units; 0 when it has none: all times are 0 then, frames still
    /// count
    [[nodiscard]] FrameTimes Next(std::int64_t now);

    /// Frames stamped since Reset.
    [[nodiscard]] std::uint64_t FrameCount() const { return m_frameCounter; }

private:
    std::int64_t m_firstFrameTime = 0; // 0 = not taken yet
    std::int64_t m_previousFrameTime = 0;
    std::uint64_t m_frameCounter = 0;
};

} // namespace vxds
