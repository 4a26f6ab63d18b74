#include "VxDSSource/Utils/MediaTypeLog.h"

#include "VxDSSource/Utils/MediaTypeNames.h"

#include <amvideo.h>

using ZtUtilsLib::Logger;

namespace {

constexpr int kPriority = 20000; // fixed
constexpr char kSourceFile[] = "Libraries\\VxDSSource\\Utils";
constexpr char kFunction[] = "LogMediaType";

/// Asked before each record: a sink may come and go between two of them.
bool IsEnabled()
{
    return Logger::IsPriorityEnabled(kPriority);
}

const char* NameOrUnknown(std::span<const vxds::NamedGuid> table, const GUID& id)
{
    const char* const name = vxds::NameIn(table, id);
    return name != nullptr ? name : "Unknown";
}

/// The records' formats print signed numbers.
int AsSigned(DWORD value)
{
    return static_cast<int>(value); // the same 32 bits
}

void LogBlock(const VIDEOINFOHEADER& block)
{
    const BITMAPINFOHEADER& bitmap = block.bmiHeader;
    if (IsEnabled())
        Logger::Log(kPriority, kSourceFile, __LINE__, kFunction, "   pbFormat.AvgTimePerFrame = %lld",
                    static_cast<long long>(block.AvgTimePerFrame));
    if (IsEnabled())
        Logger::Log(kPriority, kSourceFile, __LINE__, kFunction, "   pbFormat.bmiHeader.biSize = %d",
                    AsSigned(bitmap.biSize));
    if (IsEnabled())
        Logger::Log(kPriority, kSourceFile, __LINE__, kFunction, "   pbFormat.bmiHeader.biWidth = %d",
                    static_cast<int>(bitmap.biWidth));
    if (IsEnabled())
        Logger::Log(kPriority, kSourceFile, __LINE__, kFunction, "   pbFormat.bmiHeader.biHeight = %d",
                    static_cast<int>(bitmap.biHeight));
    if (IsEnabled())
        Logger::Log(kPriority, kSourceFile, __LINE__, kFunction, "   pbFormat.bmiHeader.biBitCount = %d",
                    static_cast<int>(bitmap.biBitCount));
    if (IsEnabled())
        Logger::Log(kPriority, kSourceFile, __LINE__, kFunction, "   pbFormat.bmiHeader.biSizeImage = %d",
                    AsSigned(bitmap.biSizeImage));
}

} // namespace

void LogMediaType(const Logger* logger, const AM_MEDIA_TYPE& mediaType)
{
    if (logger == nullptr)
        return;
    if (IsEnabled())
        Logger::Log(kPriority, kSourceFile, __LINE__, kFunction, "  AM_MEDIA_TYPE");
    if (IsEnabled())
        Logger::Log(kPriority, kSourceFile, __LINE__, kFunction, "    majortype = %s",
                    NameOrUnknown(vxds::MajorTypeNames(), mediaType.majortype));
    if (IsEnabled())
        Logger::Log(kPriority, kSourceFile, __LINE__, kFunction, "   subtype = %s",
                    NameOrUnknown(vxds::SubtypeNames(), mediaType.subtype));
    if (IsEnabled())
        Logger::Log(kPriority, kSourceFile, __LINE__, kFunction, "   lSampleSize = %d",
                    AsSigned(mediaType.lSampleSize));
    if (mediaType.pbFormat != nullptr)
        LogBlock(*reinterpret_cast<const VIDEOINFOHEADER*>(mediaType.pbFormat));
}
