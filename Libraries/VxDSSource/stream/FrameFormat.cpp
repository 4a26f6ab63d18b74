#include "VxDSSource/stream/FrameFormat.h"

#include "VxDSSource/stream/IVideoInfoHeader.h"

namespace vxds {

FrameFormat FrameFormat::Of(const AM_MEDIA_TYPE& type)
{
    AM_MEDIA_TYPE view = type; // only looked at: the block stays with its owner
    const auto header = MakeVideoInfoHeader(view);
    if (header == nullptr)
        return {};
    const BITMAPINFOHEADER& bitmap = *header->BitmapHeader();
    FrameFormat format;
    format.isUsable = true;
    format.bitmapWidthPx = bitmap.biWidth;
    format.bitmapHeightPx = bitmap.biHeight;
    format.bitCount = bitmap.biBitCount;
    format.imageBytes = bitmap.biSizeImage;
    format.bitmap = bitmap;
    return format;
}

} // namespace vxds
