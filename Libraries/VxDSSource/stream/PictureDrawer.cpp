#include "VxDSSource/stream/PictureDrawer.h"

#include "VxDSSource/camera/VxBuffer.h"
#include "VxDSSource/camera/VxImage.h"
#include "VxDSSource/filter/SettingsTable.h"
#include "VxDSSource/stream/CameraPixelTypes.h"

#include <cstdlib>

namespace vxds {

namespace {

std::int64_t BitmapRows(const FrameFormat& format)
{
    return std::abs(std::int64_t{format.bitmapHeightPx});
}

/// Bytes of an image at the output's depth, with what the bitmap adds to each row; 32-bit arithmetic.
std::uint32_t BytesAtOutputDepth(PictureSize image, const FrameTarget& target)
{
    const std::uint32_t bits = target.format.bitCount;
    const auto extraPx = static_cast<std::uint32_t>(target.format.bitmapWidthPx) - target.delivered.widthPx;
    return (bits * image.widthPx / 8 + extraPx * bits / 8) * image.heightPx;
}

} // namespace

void PictureDrawer::Draw(VxBuffer& camera, const FrameTarget& target)
{
    if (camera.GetImage() == nullptr || camera.GetImage()->GetDataPointer() == nullptr) {
        target.ZeroFill();
        return;
    }
    if (target.outputPixelType == kOutputRgb)
        DrawRgb(camera, target);
    else if (target.outputPixelType == kOutputYuv422)
        DrawYuv(camera, target);
    // Any other code matches no media type: the sample stays as the allocator gave it.
}

void PictureDrawer::DrawRgb(const VxBuffer& camera, const FrameTarget& target)
{
    if (!PrepareBitmap(target))
        return;
    const PictureSize size{camera.GetImage()->GetWidth(), camera.GetImage()->GetHeight()};
    m_statistics.NoteImage(size, BytesAtOutputDepth(size, target));
    m_rgb.Draw(camera, target);
}

void PictureDrawer::DrawYuv(VxBuffer& camera, const FrameTarget& target)
{
    const Yuv422Layout layout = LayoutOf(camera.GetImage()->GetPixelType());
    if (layout == Yuv422Layout::None) {
        target.ZeroFill();
        m_statistics.NoteError(L"No pixel conversion available to YUV422");
        return;
    }
    if (PrepareBitmap(target))
        m_yuv.Draw(*camera.GetImage(), layout, target);
}

bool PictureDrawer::PrepareBitmap(const FrameTarget& target)
{
    const FrameFormat& format = target.format;
    const bool isEmpty = target.delivered.widthPx == 0 || target.delivered.heightPx == 0;
    if (!format.isUsable || isEmpty || !target.HasUsableKernel()) {
        target.ZeroFill();
        return false;
    }
    const std::int64_t width = target.delivered.widthPx;
    const std::int64_t height = target.delivered.heightPx;
    if (format.bitmapWidthPx < width || BitmapRows(format) < height) {
        target.ZeroFill(format.imageBytes);
        return false;
    }
    const bool hasMargins = format.bitmapWidthPx > width || BitmapRows(format) > height;
    if (m_statistics.IsClearPending() || (target.hasDiagnostics && hasMargins)) {
        target.ZeroFill(format.imageBytes); // margins, and the remains of an overlay
        m_statistics.NoteCleared();
    }
    if (target.hasDiagnostics && target.kernelSize <= 0)
        m_statistics.NotePixelVariation(0, {}); // nothing is counted without a kernel
    return true;
}

} // namespace vxds
