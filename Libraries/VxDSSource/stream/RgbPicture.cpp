#include "VxDSSource/stream/RgbPicture.h"

#include "VxDSSource/camera/VxImage.h"
#include "VxDSSource/stream/CameraPixelTypes.h"
#include "VxDSSource/stream/PictureDiagnosis.h"

#include <algorithm>
#include <limits>
#include <tuple>

namespace vxds {

namespace {

constexpr std::uint16_t kBits24 = 24;
constexpr std::uint16_t kBits32 = 32;

std::uint32_t TargetPixelType(const FrameTarget& target)
{
    return target.format.bitCount == kBits24 ? kPixelBgr8 : kPixelBgra8;
}

VxVerticalFlip FlipOf(const FrameTarget& target)
{
    return target.format.bitmapHeightPx > 0 ? VxVerticalFlip::On : VxVerticalFlip::Off;
}

/// Bytes behind each row where the bitmap is wider than the picture.
std::uint64_t RowPaddingBytes(const FrameTarget& target)
{
    const std::uint64_t extra =
        static_cast<std::uint32_t>(target.format.bitmapWidthPx) - target.delivered.widthPx; // not negative
    return extra * target.format.bitCount / 8;
}

} // namespace

void RgbPicture::Draw(const VxBuffer& camera, const FrameTarget& target)
{
    if (target.NeedsProcessing())
        DrawProcessed(camera, target);
    else
        DrawDirect(camera, target);
}

void RgbPicture::DrawDirect(const VxBuffer& camera, const FrameTarget& target)
{
    const std::uint64_t padding = RowPaddingBytes(target);
    VxResult attached = VxError::BufferTooSmall;
    if (padding <= std::numeric_limits<std::uint32_t>::max())
        attached =
            m_sample.GetImage()->Attach(target.memory, target.delivered.widthPx, target.delivered.heightPx,
                                        TargetPixelType(target), static_cast<std::uint32_t>(padding), 0, 0);
    if (!attached.IsOK()) {
        target.ZeroFill(); // the format was changed to one that this sample cannot hold
        return;
    }
    // What cannot be converted stays as it is.
    std::ignore = m_converter.Convert(camera, m_sample, VxReallocate::No, FlipOf(target));
}

cv::Mat RgbPicture::ConvertAtSourceSize(const VxBuffer& camera, const FrameTarget& target)
{
    VxImage& picture = *m_source.GetImage();
    if (!picture.Alloc(target.source.widthPx, target.source.heightPx, TargetPixelType(target), 0, 0, 0)
             .IsOK())
        return {};
    const VxImage& image = *camera.GetImage();
    const bool isCovered =
        image.GetWidth() >= target.source.widthPx && image.GetHeight() >= target.source.heightPx;
    if (!isCovered)
        std::fill_n(picture.GetDataPointer(), picture.GetSize(),
                    std::uint8_t{0}); // no remains of the frame before
    // What cannot be converted stays as it is.
    std::ignore = m_converter.Convert(camera, m_source, VxReallocate::No, FlipOf(target));
    const int channels = target.format.bitCount == kBits32 ? 4 : 3;
    return {static_cast<int>(target.source.heightPx), static_cast<int>(target.source.widthPx),
            CV_8UC(channels), picture.GetDataPointer()};
}

void RgbPicture::DrawProcessed(const VxBuffer& camera, const FrameTarget& target)
{
    const cv::Mat source = ConvertAtSourceSize(camera, target);
    if (source.empty()) {
        target.ZeroFill();
        return;
    }
    DiagnosePicture(source, target, m_statistics);

    const std::uint64_t pixels = std::uint64_t{target.delivered.widthPx} * target.delivered.heightPx;
    const std::span<std::uint8_t> drawn = target.First(pixels * (target.format.bitCount / 8U));
    cv::Mat final;
    if (drawn.size() == pixels * source.elemSize())
        final = cv::Mat(static_cast<int>(target.delivered.heightPx),
                        static_cast<int>(target.delivered.widthPx), source.type(), drawn.data());

    const cv::Mat result = m_processor.Process(source, target, final);
    if (result.data == drawn.data())
        return;
    const std::size_t bytes = std::min(drawn.size(), result.total() * result.elemSize());
    std::copy_n(result.data, bytes, drawn.data());
}

} // namespace vxds
