#pragma once

#include "VxDSSource/stream/FrameStatistics.h"
#include "VxDSSource/stream/FrameTarget.h"

#include <opencv2/core.hpp>

namespace vxds {

/// Counts a picture's hot pixels into the statistics, where diagnostics are on and a kernel is set.
///
/// @param source  picture at source size, 8 bits, 3 or 4 channels; not changed
/// Thread: the streaming thread.
void DiagnosePicture(const cv::Mat& source, const FrameTarget& target, FrameStatistics& statistics);

} // namespace vxds
