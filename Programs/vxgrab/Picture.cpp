#include "vxgrab/Picture.h"

#include "vxgrab/OutputFile.h"

#include <opencv2/core.hpp>
#include <opencv2/imgcodecs.hpp>
#include <opencv2/imgproc.hpp>

#include <dshow.h>

#include <exception>
#include <string>
#include <vector>

namespace vxgrab {
namespace {

/// Top-down copy with 3 bytes a pixel: blue, green, red.
cv::Mat UprightBgr(const FrameFormat& format, std::span<const std::byte> frame, std::size_t rowBytes)
{
    // The picture is only read; OpenCV has no read-only view.
    void* const bytes = const_cast<std::byte*>(frame.data());
    const int type = CV_MAKETYPE(CV_8U, static_cast<int>(format.bytesPerPixel));
    const cv::Mat asDelivered(format.heightPx, format.widthPx, type, bytes, rowBytes);

    cv::Mat bgr;
    if (::IsEqualGUID(format.subtype, MEDIASUBTYPE_YUY2))
        cv::cvtColor(asDelivered, bgr, cv::COLOR_YUV2BGR_YUY2);
    else if (asDelivered.channels() == 4)
        cv::cvtColor(asDelivered, bgr, cv::COLOR_BGRA2BGR);
    else
        bgr = asDelivered;
    if (!format.isBottomUp)
        return bgr;
    cv::Mat upright;
    cv::flip(bgr, upright, 0); // 0: about the horizontal axis
    return upright;
}

} // namespace

VxResult WritePng(const FrameFormat& format, std::span<const std::byte> frame,
                  const std::filesystem::path& file)
{
    if (format.bytesPerPixel == 0)
        return VxResult(VxError::NotSupported, "no picture can be made of subtype " +
                                                   SubtypeName(format.subtype) +
                                                   ": choose one with --subtype rgb24");
    const std::size_t rowBytes = RowBytes(format, frame.size());
    if (rowBytes == 0)
        return VxResult(VxError::Truncated, "a frame of " + std::to_string(frame.size()) +
                                                " bytes is too short for " + std::to_string(format.widthPx) +
                                                " x " + std::to_string(format.heightPx) + " pixels");
    try {
        std::vector<unsigned char> encoded;
        if (!cv::imencode(".png", UprightBgr(format, frame, rowBytes), encoded))
            return VxResult(VxError::Failed, "the PNG encoder refused the picture");
        OutputFile output;
        VxResult result = output.Create(file);
        return result.IsOK() ? output.Append(std::as_bytes(std::span(encoded))) : result;
    } catch (const std::exception& error) {
        return VxResult(VxError::Failed, std::string("the picture cannot be encoded: ") + error.what());
    }
}

} // namespace vxgrab
