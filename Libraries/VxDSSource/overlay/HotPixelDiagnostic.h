#pragma once

#include <opencv2/core.hpp>

#include <cstdint>

namespace vxds {

/// Counts the pixels that stand out from their neighbourhood, and leaves two pictures for a person to look at
/// in the folder "HotPixelDiagnostic" of the current directory: the picture beside its median, and a map of
/// what was counted. Both are written anew each time, which takes far longer than a frame. Files that cannot
/// be written are left out.
///
/// @param frame       8 bits, three or four channels (blue, green, red first); not changed
/// @param kernelSize  width and height of the neighbourhood in pixels: odd, at least 3; the picture library
///                    throws for another one
/// @return  pixels whose grey level differs by more than 20 from the median of their neighbourhood
[[nodiscard]] std::int32_t RunHotPixelDiagnostic(const cv::Mat& frame, std::int32_t kernelSize);

} // namespace vxds
