#pragma once

#include "VxDSSource/camera/VxBuffer.h"
#include "VxDSSource/camera/VxBufferConverter.h"
#include "VxDSSource/stream/FrameStatistics.h"
#include "VxDSSource/stream/FrameTarget.h"
#include "VxDSSource/stream/PictureProcessor.h"

namespace vxds {

/// Draws a camera's picture as RGB with 24 or 32 bits a pixel.
///
/// Without processing the converter writes straight into the sample.
///
/// Owner:  PictureDrawer, by value.
/// Thread: the streaming thread.
class RgbPicture {
public:
    /// @param statistics  borrowed: the pin's, as this object is
    explicit RgbPicture(FrameStatistics& statistics) : m_statistics(statistics) {}

    /// @param target  its bitmap is at least as large as what is delivered
    void Draw(const VxBuffer& camera, const FrameTarget& target);

private:
    void DrawDirect(const VxBuffer& camera, const FrameTarget& target);
    void DrawProcessed(const VxBuffer& camera, const FrameTarget& target);
    [[nodiscard]] cv::Mat ConvertAtSourceSize(const VxBuffer& camera, const FrameTarget& target);

    FrameStatistics& m_statistics;
    VxBufferConverter m_converter{-1};
    VxBuffer m_sample{VxPayloadType::Image}; // describes the memory of the sample that is drawn
    VxBuffer m_source{VxPayloadType::Image}; // picture at source size; its memory is kept
    PictureProcessor m_processor;
};

} // namespace vxds
