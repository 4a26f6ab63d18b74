#include "VxDSSource/stream/VxMediaTypes.h"

#include "VxDSSource/filter/SettingsTable.h"
#include "VxDSSource/stream/FrameFormat.h"
#include "VxDSSource/stream/IVideoInfoHeader.h"
#include "VxDSSource/stream/VideoInfoHeader.h"

#include <uuids.h>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <limits>
#include <optional>

namespace vxds {

namespace {

constexpr DWORD kFourccYuy2 = 0x32595559; // fixed: 'Y' 'U' 'Y' '2', first character lowest
constexpr WORD kYuy2Bits = 16;
constexpr WORD kRgb24Bits = 24;

/// What a subtype means for the bitmap header.
struct SubtypeForm {
    const GUID* subtype;
    WORD bitCount;
    DWORD compression;
};

const std::array<SubtypeForm, kOfferedTypeCount> kOfferedForms = {{
    {&MEDIASUBTYPE_RGB24, kRgb24Bits, BI_RGB},
    {&MEDIASUBTYPE_RGB32, 32, BI_RGB},
    {&MEDIASUBTYPE_ARGB32, 32, BI_RGB},
    {&MEDIASUBTYPE_YUY2, kYuy2Bits, kFourccYuy2},
}};

std::uint64_t Magnitude(std::uint32_t pixels)
{
    const auto count = static_cast<std::int32_t>(pixels); // the same 32 bits, as bitmap headers hold them
    return static_cast<std::uint64_t>(std::abs(static_cast<std::int64_t>(count)));
}

LONG HeaderPixels(std::uint32_t pixels)
{
    return static_cast<LONG>(pixels); // the same 32 bits
}

SIZE SizeOf(PictureSize size)
{
    return {HeaderPixels(size.widthPx), HeaderPixels(size.heightPx)};
}

/// Replaces the format block by a zeroed one of the shorter form.
std::optional<VideoInfoHeader> ClearedHeader(CMediaType& type)
{
    auto* block = reinterpret_cast<VIDEOINFOHEADER*>(type.AllocFormatBuffer(sizeof(VIDEOINFOHEADER)));
    if (block == nullptr || type.cbFormat != sizeof(VIDEOINFOHEADER))
        return std::nullopt;
    type.SetFormatType(&FORMAT_VideoInfo);
    VideoInfoHeader header(block);
    header.Clear();
    return header;
}

void FillBitmapHeader(BITMAPINFOHEADER& bitmap, PictureSize size, WORD bitCount, DWORD compression)
{
    bitmap.biSize = sizeof(BITMAPINFOHEADER);
    bitmap.biWidth = HeaderPixels(size.widthPx);
    bitmap.biHeight = HeaderPixels(size.heightPx); // positive: bottom-up
    bitmap.biPlanes = 1;
    bitmap.biBitCount = bitCount;
    bitmap.biCompression = compression;
    bitmap.biSizeImage = UnpaddedBitmapBytes(size, bitCount);
}

bool IsRgbSubtype(const GUID& subtype)
{
    return subtype == MEDIASUBTYPE_RGB24 || subtype == MEDIASUBTYPE_RGB32 || subtype == MEDIASUBTYPE_ARGB32;
}

} // namespace

std::uint32_t UnpaddedBitmapBytes(PictureSize size, std::uint32_t bitCount)
{
    constexpr std::uint64_t kLargest = std::numeric_limits<std::uint32_t>::max();
    const std::uint64_t pixels = Magnitude(size.widthPx) * Magnitude(size.heightPx); // at most 2^62
    if (pixels > kLargest)
        return static_cast<std::uint32_t>(kLargest);
    return static_cast<std::uint32_t>(std::min(pixels * bitCount / 8, kLargest));
}

bool BuildOfferedType(int position, PictureSize size, CMediaType& type)
{
    const SubtypeForm& form = kOfferedForms.at(static_cast<std::size_t>(position));
    auto header = ClearedHeader(type);
    if (!header)
        return false;
    FillBitmapHeader(*header->BitmapHeader(), size, form.bitCount, form.compression);
    *header->AverageTimePerFrame() = kNominalTimePerFrame;
    *header->CopyProtectFlags() = 0;
    *header->PictureAspectRatioX() = size.widthPx;
    *header->PictureAspectRatioY() = size.heightPx;

    type.SetType(&MEDIATYPE_Video);
    type.SetSubtype(form.subtype);
    type.SetTemporalCompression(FALSE);
    type.SetSampleSize(header->BitmapHeader()->biSizeImage);
    return true;
}

bool IsAcceptedType(const AM_MEDIA_TYPE& type, std::uint32_t outputPixelType)
{
    AM_MEDIA_TYPE view = type; // only looked at: the block stays with its owner
    const auto header = MakeVideoInfoHeader(view);
    if (header == nullptr || type.majortype != MEDIATYPE_Video || type.formattype != FORMAT_VideoInfo)
        return false;
    const BITMAPINFOHEADER& bitmap = *header->BitmapHeader();
    switch (outputPixelType) {
    case kOutputYuv422:
        return bitmap.biCompression == kFourccYuy2 && bitmap.biBitCount == kYuy2Bits &&
               type.subtype == MEDIASUBTYPE_YUY2;
    case kOutputRgb:
        return (bitmap.biCompression == BI_RGB || bitmap.biCompression == BI_BITFIELDS) &&
               (bitmap.biBitCount == kRgb24Bits || bitmap.biBitCount == 32) && IsRgbSubtype(type.subtype);
    default:
        return false;
    }
}

bool BuildResizedType(const AM_MEDIA_TYPE& current, PictureSize size, std::uint32_t outputPixelType,
                      CMediaType& type)
{
    const FrameFormat old = FrameFormat::Of(current);
    if (FAILED(type.Set(current)))
        return false;
    auto header = ClearedHeader(type);
    if (!header)
        return false;
    // Unsigned products wrap like the signed ones are meant to; the division is signed.
    const std::uint32_t bits = old.bitCount * size.heightPx * size.widthPx;
    BITMAPINFOHEADER& bitmap = *header->BitmapHeader();
    bitmap.biSize = sizeof(BITMAPINFOHEADER);
    bitmap.biWidth = HeaderPixels(size.widthPx);
    bitmap.biHeight = HeaderPixels(size.heightPx);
    bitmap.biPlanes = 1;
    bitmap.biSizeImage = static_cast<DWORD>(static_cast<std::int32_t>(bits) / 8);
    if (outputPixelType == kOutputYuv422)
        bitmap.biBitCount = kYuy2Bits;
    else if (outputPixelType == kOutputRgb)
        bitmap.biBitCount = kRgb24Bits;
    *header->AverageTimePerFrame() = kNominalTimePerFrame;
    type.SetSampleSize(bitmap.biSizeImage);
    return true;
}

bool BuildCapabilityType(const AM_MEDIA_TYPE& current, PictureSize size, std::uint32_t outputPixelType,
                         CMediaType& type)
{
    VIDEOINFOHEADER kept{};
    AM_MEDIA_TYPE view = current; // only looked at: the block stays with its owner
    if (const auto header = MakeVideoInfoHeader(view)) {
        kept.dwBitRate = *header->BitRate();
        kept.dwBitErrorRate = *header->BitErrorRate();
        kept.AvgTimePerFrame = *header->AverageTimePerFrame();
        kept.bmiHeader = *header->BitmapHeader();
    }
    if (FAILED(type.Set(current)))
        return false;
    auto header = ClearedHeader(type);
    if (!header)
        return false;
    *header->BitRate() = kept.dwBitRate;
    *header->BitErrorRate() = kept.dwBitErrorRate;
    *header->AverageTimePerFrame() = kept.AvgTimePerFrame;
    BITMAPINFOHEADER& bitmap = *header->BitmapHeader();
    bitmap = kept.bmiHeader;
    bitmap.biClrImportant = 0;
    FillBitmapHeader(bitmap, size, kept.bmiHeader.biBitCount, kept.bmiHeader.biCompression);
    if (outputPixelType == kOutputRgb) {
        type.SetSubtype(&MEDIASUBTYPE_RGB24);
        FillBitmapHeader(bitmap, size, kRgb24Bits, BI_RGB);
    } else if (outputPixelType == kOutputYuv422) {
        type.SetSubtype(&MEDIASUBTYPE_YUY2);
        FillBitmapHeader(bitmap, size, kYuy2Bits, kFourccYuy2);
    }
    type.SetType(&MEDIATYPE_Video);
    type.bFixedSizeSamples = FALSE;
    type.SetTemporalCompression(FALSE);
    type.lSampleSize = bitmap.biSizeImage;
    return true;
}

VIDEO_STREAM_CONFIG_CAPS CapabilityOf(PictureSize size)
{
    // Fixed: part of the pin's contract with applications. The smallest sizes and steps are nominal, and the
    // identifier names the longer form although the type has the shorter one.
    constexpr SIZE kSmallest = {80, 60};
    constexpr REFERENCE_TIME kShortestInterval = 100000;  // 100 frames a second, in 100 ns units
    constexpr REFERENCE_TIME kLongestInterval = 50000000; // one frame in 5 seconds
    constexpr LONG kFewestBitsPerSecond = 23040;
    constexpr std::uint32_t kBitsPerSecondAndPixel = 2400; // 24 bits, 100 frames a second

    VIDEO_STREAM_CONFIG_CAPS caps{};
    caps.guid = FORMAT_VideoInfo2;
    caps.InputSize = SizeOf(size);
    caps.MinCroppingSize = kSmallest;
    caps.MaxCroppingSize = SizeOf(size);
    caps.CropGranularityX = kSmallest.cx;
    caps.CropGranularityY = kSmallest.cy;
    caps.MinOutputSize = kSmallest;
    caps.MaxOutputSize = SizeOf(size);
    caps.MinFrameInterval = kShortestInterval;
    caps.MaxFrameInterval = kLongestInterval;
    caps.MinBitsPerSecond = kFewestBitsPerSecond;
    // Fixed: wraps at 32 bits for large pictures; the field has no more.
    const std::uint32_t bitsPerSecond = size.heightPx * size.widthPx * kBitsPerSecondAndPixel;
    caps.MaxBitsPerSecond = static_cast<LONG>(bitsPerSecond);
    return caps;
}

} // namespace vxds
