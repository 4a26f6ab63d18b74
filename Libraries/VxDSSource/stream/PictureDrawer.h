#pragma once

#include "VxDSSource/stream/FrameStatistics.h"
#include "VxDSSource/stream/FrameTarget.h"
#include "VxDSSource/stream/RgbPicture.h"
#include "VxDSSource/stream/YuvPicture.h"

class VxBuffer;

namespace vxds {

/// Draws the picture in a camera's buffer into a sample, in the output's pixel type.
///
/// Every write is bounded by the sample's own size. What cannot be drawn gives a zero frame.
///
/// Owner:  VxDSStream, by value.
/// Thread: the streaming thread, which holds the acquisition mutex.
class PictureDrawer {
public:
    /// @param statistics  borrowed: the pin's, as this object is
    explicit PictureDrawer(FrameStatistics& statistics)
        : m_statistics(statistics), m_rgb(statistics), m_yuv(statistics)
    {
    }

    void Draw(VxBuffer& camera, const FrameTarget& target);

private:
    void DrawRgb(const VxBuffer& camera, const FrameTarget& target);
    void DrawYuv(VxBuffer& camera, const FrameTarget& target);
    [[nodiscard]] bool PrepareBitmap(const FrameTarget& target);

    FrameStatistics& m_statistics;
    RgbPicture m_rgb;
    YuvPicture m_yuv;
};

} // namespace vxds
