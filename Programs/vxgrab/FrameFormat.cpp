#include "vxgrab/FrameFormat.h"

#include <dshow.h>
#include <dvdmedia.h>

#include <array>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <optional>

namespace vxgrab {
namespace {

struct KnownSubtype {
    const GUID* subtype;
    const char* name;     // as it is shown
    const char* argument; // as it is typed
    std::size_t bytesPerPixel;
    bool isRgb; // only RGB bitmaps may be bottom-up; YUV ones never are
};

constexpr std::array kKnownSubtypes{
    KnownSubtype{&MEDIASUBTYPE_RGB24, "RGB24", "rgb24", 3, true},
    KnownSubtype{&MEDIASUBTYPE_RGB32, "RGB32", "rgb32", 4, true},
    KnownSubtype{&MEDIASUBTYPE_ARGB32, "ARGB32", "argb32", 4, true},
    KnownSubtype{&MEDIASUBTYPE_YUY2, "YUY2", "yuy2", 2, false},
};

// Chosen: no camera delivers more, and three of them multiplied stay far inside 64 bits.
constexpr LONG kLargestSidePx = 65536;

const KnownSubtype* Find(const GUID& subtype)
{
    for (const KnownSubtype& known : kKnownSubtypes) {
        if (::IsEqualGUID(*known.subtype, subtype))
            return &known;
    }
    return nullptr;
}

std::optional<BITMAPINFOHEADER> BitmapHeader(const AM_MEDIA_TYPE& type)
{
    if (type.pbFormat == nullptr)
        return std::nullopt;
    if (::IsEqualGUID(type.formattype, FORMAT_VideoInfo) && type.cbFormat >= sizeof(VIDEOINFOHEADER)) {
        VIDEOINFOHEADER header{};
        std::memcpy(&header, type.pbFormat, sizeof(header));
        return header.bmiHeader;
    }
    if (::IsEqualGUID(type.formattype, FORMAT_VideoInfo2) && type.cbFormat >= sizeof(VIDEOINFOHEADER2)) {
        VIDEOINFOHEADER2 header{};
        std::memcpy(&header, type.pbFormat, sizeof(header));
        return header.bmiHeader;
    }
    return std::nullopt;
}

} // namespace

VxExpected<FrameFormat> ReadFrameFormat(const AM_MEDIA_TYPE& type)
{
    const auto header = BitmapHeader(type);
    if (!::IsEqualGUID(type.majortype, MEDIATYPE_Video) || !header)
        return VxResult(VxError::NotSupported, "the connection does not carry plain video");
    if (header->biWidth <= 0 || header->biWidth > kLargestSidePx || header->biHeight == 0 ||
        std::labs(header->biHeight) > kLargestSidePx)
        return VxResult(VxError::InvalidData, "the connection's picture size " +
                                                  std::to_string(header->biWidth) + " x " +
                                                  std::to_string(header->biHeight) + " makes no sense");
    const KnownSubtype* const known = Find(type.subtype);
    FrameFormat format;
    format.subtype = type.subtype;
    format.widthPx = header->biWidth;
    format.heightPx = std::abs(header->biHeight);
    format.isBottomUp = known != nullptr && known->isRgb && header->biHeight > 0;
    format.bytesPerPixel = known != nullptr ? known->bytesPerPixel : 0;
    return format;
}

std::size_t RowBytes(const FrameFormat& format, std::size_t frameBytes)
{
    const std::size_t rows = static_cast<std::size_t>(format.heightPx);
    const std::size_t dense = static_cast<std::size_t>(format.widthPx) * format.bytesPerPixel;
    const std::size_t padded = (dense + 3) / 4 * 4;
    if (dense == 0)
        return 0;
    if (frameBytes >= padded * rows)
        return padded;
    return frameBytes >= dense * rows ? dense : 0;
}

std::string SubtypeName(const GUID& subtype)
{
    if (const KnownSubtype* const known = Find(subtype); known != nullptr)
        return known->name;
    std::array<char, sizeof("0x00000000")> text{};
    std::memcpy(text.data(), &subtype.Data1, sizeof(subtype.Data1)); // a FOURCC lies there in reading order
    for (std::size_t i = 0; i < sizeof(subtype.Data1); ++i) {
        if (text[i] < ' ' || text[i] > '~') {
            std::snprintf(text.data(), text.size(), "0x%08lX", static_cast<unsigned long>(subtype.Data1));
            break;
        }
    }
    return text.data();
}

VxExpected<GUID> SubtypeFromName(std::string_view name)
{
    std::string names;
    for (const KnownSubtype& known : kKnownSubtypes) {
        if (name == known.argument)
            return *known.subtype;
        names += (names.empty() ? "" : ", ") + std::string(known.argument);
    }
    return VxResult(VxError::InvalidParameter,
                    "unknown subtype '" + std::string(name) + "': take one of " + names);
}

} // namespace vxgrab
