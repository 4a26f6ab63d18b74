#pragma once

#include "VxDSSource/stream/CameraPixelTypes.h"
#include "VxDSSource/stream/FrameStatistics.h"
#include "VxDSSource/stream/FrameTarget.h"
#include "VxDSSource/stream/PictureProcessor.h"

#include <opencv2/core.hpp>

class VxImage;

namespace vxds {

/// Draws a camera's packed 4:2:2 picture as YUY2.
///
/// Owner:  PictureDrawer, by value.
/// Thread: the streaming thread.
class YuvPicture {
public:
    /// @param statistics  borrowed: the pin's, as this object is
    explicit YuvPicture(FrameStatistics& statistics) : m_statistics(statistics) {}

    /// @param layout  not None
    /// @param target  its bitmap is at least as large as what is delivered
    void Draw(VxImage& image, Yuv422Layout layout, const FrameTarget& target);

private:
    [[nodiscard]] cv::Mat PackedSource(VxImage& image, Yuv422Layout layout, PictureSize source);
    [[nodiscard]] cv::Mat CompletedSource(const VxImage& image, Yuv422Layout layout, PictureSize source);

    FrameStatistics& m_statistics;
    cv::Mat m_completed; // packed, with an even width
    cv::Mat m_bgr;
    PictureProcessor m_processor;
};

} // namespace vxds
