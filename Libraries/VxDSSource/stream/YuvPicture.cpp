#include "VxDSSource/stream/YuvPicture.h"

#include "VxDSSource/camera/VxImage.h"
#include "VxDSSource/stream/PictureDiagnosis.h"
#include "VxDSSource/yuv422/Yuv422Formula.h"

#include <opencv2/imgproc.hpp>

#include <algorithm>
#include <cstring>

namespace vxds {

namespace {

constexpr std::size_t kPackedBytes = 2; // a pixel
constexpr std::size_t kBgrBytes = 3;    // a pixel

std::size_t StrideOf(const VxImage& image)
{
    return image.GetWidth() * kPackedBytes + image.GetRowPadding();
}

/// Whether the image holds every pixel of a picture of this size.
bool Covers(const VxImage& image, PictureSize size)
{
    if (image.GetWidth() < size.widthPx || image.GetHeight() < size.heightPx || size.heightPx == 0)
        return false;
    return (size.heightPx - 1) * StrideOf(image) + size.widthPx * kPackedBytes <= image.GetSize();
}

constexpr std::uint8_t kNoColour = 128;

/// Where in a pixel's two bytes the luma is; the other one is chroma.
std::size_t LumaIndex(Yuv422Layout layout)
{
    return layout == Yuv422Layout::Uyvy ? 1 : 0;
}

/// Not by the picture library, which takes memory for it each time.
void Blacken(cv::Mat& packed, Yuv422Layout layout)
{
    const std::size_t luma = LumaIndex(layout);
    for (int y = 0; y < packed.rows; ++y)
        for (int x = 0; x < packed.cols; ++x) {
            std::uint8_t* const pixel = packed.ptr(y, x);
            pixel[luma] = 0;
            pixel[1 - luma] = kNoColour;
        }
}

/// Gives the pixel behind an odd width's last one the luma of that one and the chroma of the pair before.
void CompleteLastPair(std::uint8_t* row, std::size_t widthPx, Yuv422Layout layout)
{
    const std::size_t luma = LumaIndex(layout);
    const std::size_t chroma = 1 - luma;
    std::uint8_t* const added = row + widthPx * kPackedBytes;
    added[luma] = (added - kPackedBytes)[luma];
    added[chroma] = widthPx > 1 ? (added - 2 * kPackedBytes)[chroma] : kNoColour;
}

} // namespace

void YuvPicture::Draw(VxImage& image, Yuv422Layout layout, const FrameTarget& target)
{
    // Fixed: these read brightness from 16 to 235, whatever range the format's name implies. A camera of the
    // YUV family, whose range is 0 to 255, is shown with more contrast here than as RGB, where the name
    // counts.
    const int code = layout == Yuv422Layout::Uyvy ? cv::COLOR_YUV2BGR_UYVY : cv::COLOR_YUV2BGR_YUY2;
    cv::cvtColor(PackedSource(image, layout, target.source), m_bgr, code);
    const cv::Mat source = m_bgr.colRange(0, static_cast<int>(target.source.widthPx));
    DiagnosePicture(source, target, m_statistics);
    const cv::Mat result = m_processor.Process(source, target, cv::Mat());

    const std::uint64_t pixels = std::uint64_t{target.delivered.widthPx} * target.delivered.heightPx;
    const std::uint64_t bytes = pixels * std::min<std::uint64_t>(target.format.bitCount / 8U, kPackedBytes);
    std::span<std::uint8_t> rest = target.First(bytes);
    for (int y = 0; y < result.rows && !rest.empty(); ++y) {
        const std::span<const std::uint8_t> row(result.ptr(y),
                                                static_cast<std::size_t>(result.cols) * kBgrBytes);
        const std::size_t rowBytes =
            std::min(rest.size(), static_cast<std::size_t>(result.cols) * kPackedBytes);
        BgrRowToYuy2(row, rest.first(rowBytes));
        rest = rest.subspan(rowBytes);
    }
}

cv::Mat YuvPicture::PackedSource(VxImage& image, Yuv422Layout layout, PictureSize source)
{
    const bool isWhole = source.widthPx % 2 == 0 && Covers(image, source);
    if (!isWhole)
        return CompletedSource(image, layout, source);
    return {static_cast<int>(source.heightPx), static_cast<int>(source.widthPx), CV_8UC2,
            image.GetDataPointer(), StrideOf(image)};
}

cv::Mat YuvPicture::CompletedSource(const VxImage& image, Yuv422Layout layout, PictureSize source)
{
    // The colour conversion works on pairs of pixels; of an image that is too small the common part is shown.
    const std::uint32_t evenWidth = source.widthPx + source.widthPx % 2;
    m_completed.create(static_cast<int>(source.heightPx), static_cast<int>(evenWidth), CV_8UC2);
    if (!Covers(image, source))
        Blacken(m_completed, layout);
    const std::size_t stride = StrideOf(image);
    const std::size_t rowBytes = std::min(source.widthPx, image.GetWidth()) * kPackedBytes;
    const std::uint32_t rows = std::min(source.heightPx, image.GetHeight());
    for (std::uint32_t y = 0; y < rows && y * stride + rowBytes <= image.GetSize(); ++y)
        std::memcpy(m_completed.ptr(static_cast<int>(y)), image.GetDataPointer() + y * stride, rowBytes);
    if (evenWidth != source.widthPx)
        for (std::uint32_t y = 0; y < source.heightPx; ++y)
            CompleteLastPair(m_completed.ptr(static_cast<int>(y)), source.widthPx, layout);
    return m_completed;
}

} // namespace vxds
