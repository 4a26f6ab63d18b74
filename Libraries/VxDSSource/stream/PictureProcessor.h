#pragma once

#include "VxDSSource/stream/FrameTarget.h"

#include <opencv2/core.hpp>

namespace vxds {

/// Zoom, resize and median of a picture. Temporary pictures are kept from frame to frame.
///
/// Owner:  the picture paths, by value.
/// Thread: the streaming thread.
class PictureProcessor {
public:
    /// @param source  picture at source size, 8 bits, 3 or 4 channels; not changed
    /// @param final   where the result goes if it has its size and type; else, and when it is empty, kept
    ///                memory is used
    /// @return  the result: over `final`, over memory kept here until the next call, or `source` itself when
    ///          there was nothing to do
    [[nodiscard]] cv::Mat Process(const cv::Mat& source, const FrameTarget& target, const cv::Mat& final);

private:
    [[nodiscard]] cv::Mat Resize(const cv::Mat& source, const FrameTarget& target, const cv::Mat& final);
    [[nodiscard]] cv::Mat Filter(const cv::Mat& picture, int kernelSize, const cv::Mat& final);

    cv::Mat m_resized;
    cv::Mat m_filtered;
};

} // namespace vxds
