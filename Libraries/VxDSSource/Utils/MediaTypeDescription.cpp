#include "VxDSSource/Utils/MediaTypeDescription.h"

#include "VxDSSource/Utils/MediaTypeNames.h"

#include <amvideo.h>
#include <dvdmedia.h>
#include <uuids.h>

#include <locale>
#include <sstream>

namespace vxds {

namespace {

constexpr char kUnknown[] = "???";

const char* NameOr(std::span<const NamedGuid> table, const GUID& id, const char* otherwise)
{
    const char* const name = NameIn(table, id);
    return name != nullptr ? name : otherwise;
}

const char* Statement(BOOL value)
{
    return value != FALSE ? "TRUE" : "FALSE";
}

void AddRectangle(std::wostream& text, const char* name, const RECT& rectangle)
{
    text << "    " << name << ": t" << rectangle.top << ", l" << rectangle.left << ", r" << rectangle.right
         << ", b" << rectangle.bottom << "\n";
}

void AddInterlacing(std::wostream&, const VIDEOINFOHEADER&) {}

void AddInterlacing(std::wostream& text, const VIDEOINFOHEADER2& header)
{
    text << "    dwInterlaceFlags: " << header.dwInterlaceFlags << "\n"
         << "    dwCopyProtectFlags: " << header.dwCopyProtectFlags << "\n"
         << "    dwPictAspectRatioX: " << header.dwPictAspectRatioX << "\n"
         << "    dwPictAspectRatioY: " << header.dwPictAspectRatioY << "\n";
}

void AddBitmap(std::wostream& text, const BITMAPINFOHEADER& bitmap)
{
    text << "    biSize: " << bitmap.biSize << "\n"
         << "    biWidth: " << bitmap.biWidth << "\n"
         << "    biHeight: " << bitmap.biHeight << "\n"
         << "    biPlanes: " << bitmap.biPlanes << "\n"
         << "    biBitCount: " << bitmap.biBitCount << "\n"
         << "    biCompression: " << bitmap.biCompression << "\n"
         << "    biSizeImage: " << bitmap.biSizeImage << "\n"
         << "    biXPelsPerMeter: " << bitmap.biXPelsPerMeter << "\n"
         << "    biYPelsPerMeter: " << bitmap.biYPelsPerMeter << "\n"
         << "    biClrUsed: " << bitmap.biClrUsed << "\n"
         << "    biClrImportant: " << bitmap.biClrImportant << "\n";
}

template <typename Header>
void AddBlock(std::wostream& text, const AM_MEDIA_TYPE& mediaType)
{
    if (mediaType.pbFormat == nullptr)
        return;
    const auto& header = *reinterpret_cast<const Header*>(mediaType.pbFormat);
    AddRectangle(text, "rcSource", header.rcSource);
    AddRectangle(text, "rcTarget", header.rcTarget);
    text << "    dwBitRate: " << header.dwBitRate << "\n"
         << "    dwBitErrorRate: " << header.dwBitErrorRate << "\n"
         << "    AvgTimePerFrame: " << header.AvgTimePerFrame << "\n";
    AddInterlacing(text, header);
    AddBitmap(text, header.bmiHeader);
}

void AddTypes(std::wostream& text, const AM_MEDIA_TYPE& mediaType)
{
    const char* const majorType = NameIn(MajorTypeNames(), mediaType.majortype);
    if (majorType == nullptr)
        return;
    text << "majortype: " << majorType << "\n";
    if (mediaType.majortype == MEDIATYPE_Video)
        text << "subtype: " << NameOr(SubtypeNames(), mediaType.subtype, kUnknown) << "\n";
}

} // namespace

std::wstring MediaTypeDescription(std::wstring_view title, const AM_MEDIA_TYPE& mediaType)
{
    std::wostringstream text;
    text.imbue(std::locale::classic());
    text << "====[ " << title << " ]=================\n";
    AddTypes(text, mediaType);
    text << "bFixedSizeSamples: " << Statement(mediaType.bFixedSizeSamples) << "\n"
         << "bTemporalCompression: " << Statement(mediaType.bTemporalCompression) << "\n"
         << "lSampleSize: " << mediaType.lSampleSize << "\n"
         << "formattype: " << NameOr(FormatTypeNames(), mediaType.formattype, kUnknown) << "\n";
    if (mediaType.formattype == FORMAT_VideoInfo)
        AddBlock<VIDEOINFOHEADER>(text, mediaType);
    else if (mediaType.formattype == FORMAT_VideoInfo2)
        AddBlock<VIDEOINFOHEADER2>(text, mediaType);
    text << "cbFormat: " << mediaType.cbFormat << "\n";
    return text.str();
}

} // namespace vxds

void DescribeMediaType(std::wstring_view title, const AM_MEDIA_TYPE& mediaType)
{
    ::OutputDebugStringW(vxds::MediaTypeDescription(title, mediaType).c_str());
}
