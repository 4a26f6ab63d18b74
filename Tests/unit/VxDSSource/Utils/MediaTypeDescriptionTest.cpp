#include "VxDSSource/Utils/MediaTypeDescription.h"

#include <amvideo.h>
#include <dvdmedia.h>
#include <uuids.h>

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

// The exceptions that carry text to a debugger. Wine 8 knows the narrow one only.
constexpr DWORD kWideOutput = 0x4001000A;
constexpr DWORD kNarrowOutput = 0x40010006;

/// What the program sends to a debugger meanwhile: each call arrives as an exception.
class DebuggerOutput {
public:
    DebuggerOutput() : m_handler(::AddVectoredExceptionHandler(1, &DebuggerOutput::Take))
    {
        Texts().clear();
        EXPECT_NE(m_handler, nullptr);
    }
    ~DebuggerOutput() { ::RemoveVectoredExceptionHandler(m_handler); }
    DebuggerOutput(const DebuggerOutput&) = delete;
    DebuggerOutput& operator=(const DebuggerOutput&) = delete;

    static std::vector<std::wstring>& Texts()
    {
        static std::vector<std::wstring> texts;
        return texts;
    }

private:
    static LONG CALLBACK Take(EXCEPTION_POINTERS* pointers)
    {
        const EXCEPTION_RECORD& record = *pointers->ExceptionRecord;
        // Length with the terminator, then the text.
        const std::size_t length = record.ExceptionInformation[0] - 1;
        if (record.ExceptionCode == kWideOutput) {
            Texts().emplace_back(reinterpret_cast<const wchar_t*>(record.ExceptionInformation[1]), length);
        } else if (record.ExceptionCode == kNarrowOutput) {
            const auto* const text = reinterpret_cast<const char*>(record.ExceptionInformation[1]);
            Texts().emplace_back(text, text + length);
        } else {
            return EXCEPTION_CONTINUE_SEARCH;
        }
        return EXCEPTION_CONTINUE_EXECUTION;
    }

    void* m_handler;
};

template <typename Header>
struct VideoType {
    VideoType(const GUID& subtype, const GUID& format)
    {
        type.majortype = MEDIATYPE_Video;
        type.subtype = subtype;
        type.bFixedSizeSamples = TRUE;
        type.lSampleSize = 921600;
        type.formattype = format;
        type.cbFormat = sizeof(Header);
        type.pbFormat = reinterpret_cast<BYTE*>(&header);
        header.AvgTimePerFrame = 333333;
        header.bmiHeader.biSize = 40;
        header.bmiHeader.biWidth = 640;
        header.bmiHeader.biHeight = 480;
        header.bmiHeader.biPlanes = 1;
        header.bmiHeader.biBitCount = 24;
        header.bmiHeader.biSizeImage = 921600;
    }
    VideoType(const VideoType&) = delete;
    VideoType& operator=(const VideoType&) = delete;

    Header header{};
    AM_MEDIA_TYPE type{};
};

struct Rgb24 : VideoType<VIDEOINFOHEADER> {
    Rgb24() : VideoType(MEDIASUBTYPE_RGB24, FORMAT_VideoInfo) {}
};

constexpr wchar_t kRgb24Text[] = L"====[ Proposed ]=================\n"
                                 L"majortype: MEDIATYPE_Video\n"
                                 L"subtype: MEDIASUBTYPE_RGB24\n"
                                 L"bFixedSizeSamples: TRUE\n"
                                 L"bTemporalCompression: FALSE\n"
                                 L"lSampleSize: 921600\n"
                                 L"formattype: FORMAT_VideoInfo\n"
                                 L"    rcSource: t0, l0, r0, b0\n"
                                 L"    rcTarget: t0, l0, r0, b0\n"
                                 L"    dwBitRate: 0\n"
                                 L"    dwBitErrorRate: 0\n"
                                 L"    AvgTimePerFrame: 333333\n"
                                 L"    biSize: 40\n"
                                 L"    biWidth: 640\n"
                                 L"    biHeight: 480\n"
                                 L"    biPlanes: 1\n"
                                 L"    biBitCount: 24\n"
                                 L"    biCompression: 0\n"
                                 L"    biSizeImage: 921600\n"
                                 L"    biXPelsPerMeter: 0\n"
                                 L"    biYPelsPerMeter: 0\n"
                                 L"    biClrUsed: 0\n"
                                 L"    biClrImportant: 0\n"
                                 L"cbFormat: 88\n";

TEST(MediaTypeDescriptionTest, DescribesAVideoType)
{
    EXPECT_EQ(vxds::MediaTypeDescription(L"Proposed", Rgb24().type), kRgb24Text);
}

TEST(MediaTypeDescriptionTest, SendsTheWholeTextToTheDebuggerInOneCall)
{
    const Rgb24 video;
    const DebuggerOutput output;

    DescribeMediaType(L"Proposed", video.type);

    EXPECT_EQ(DebuggerOutput::Texts(), std::vector<std::wstring>{kRgb24Text});
}

TEST(MediaTypeDescriptionTest, DescribesEveryFieldOfTheLongerBlock)
{
    VideoType<VIDEOINFOHEADER2> video(MEDIASUBTYPE_YUY2, FORMAT_VideoInfo2);
    video.type.bFixedSizeSamples = FALSE;
    video.type.bTemporalCompression = TRUE;
    video.type.lSampleSize = 4294967295;
    video.header.rcSource = {-1, 2, 3, 4}; // left, top, right, bottom
    video.header.rcTarget = {5, 6, 7, -8};
    video.header.dwBitRate = 4294967294;
    video.header.dwBitErrorRate = 9;
    video.header.AvgTimePerFrame = -9223372036854775807LL;
    video.header.dwInterlaceFlags = 10;
    video.header.dwCopyProtectFlags = 11;
    video.header.dwPictAspectRatioX = 12;
    video.header.dwPictAspectRatioY = 13;
    video.header.bmiHeader = {14, 15, -16, 17, 18, 0x32595559, 20, -21, 22, 23, 24};

    EXPECT_EQ(vxds::MediaTypeDescription(L"", video.type), L"====[  ]=================\n"
                                                           L"majortype: MEDIATYPE_Video\n"
                                                           L"subtype: MEDIASUBTYPE_YUY2\n"
                                                           L"bFixedSizeSamples: FALSE\n"
                                                           L"bTemporalCompression: TRUE\n"
                                                           L"lSampleSize: 4294967295\n"
                                                           L"formattype: FORMAT_VideoInfo2\n"
                                                           L"    rcSource: t2, l-1, r3, b4\n"
                                                           L"    rcTarget: t6, l5, r7, b-8\n"
                                                           L"    dwBitRate: 4294967294\n"
                                                           L"    dwBitErrorRate: 9\n"
                                                           L"    AvgTimePerFrame: -9223372036854775807\n"
                                                           L"    dwInterlaceFlags: 10\n"
                                                           L"    dwCopyProtectFlags: 11\n"
                                                           L"    dwPictAspectRatioX: 12\n"
                                                           L"    dwPictAspectRatioY: 13\n"
                                                           L"    biSize: 14\n"
                                                           L"    biWidth: 15\n"
                                                           L"    biHeight: -16\n"
                                                           L"    biPlanes: 17\n"
                                                           L"    biBitCount: 18\n"
                                                           L"    biCompression: 844715353\n"
                                                           L"    biSizeImage: 20\n"
                                                           L"    biXPelsPerMeter: -21\n"
                                                           L"    biYPelsPerMeter: 22\n"
                                                           L"    biClrUsed: 23\n"
                                                           L"    biClrImportant: 24\n"
                                                           L"cbFormat: 112\n");
}

TEST(MediaTypeDescriptionTest, WritesNoTypeLinesForAnUnknownMajorType)
{
    AM_MEDIA_TYPE type{};
    type.subtype = MEDIASUBTYPE_RGB24;
    type.formattype = FORMAT_None;
    type.cbFormat = 3;

    EXPECT_EQ(vxds::MediaTypeDescription(L"x", type), L"====[ x ]=================\n"
                                                      L"bFixedSizeSamples: FALSE\n"
                                                      L"bTemporalCompression: FALSE\n"
                                                      L"lSampleSize: 0\n"
                                                      L"formattype: FORMAT_None\n"
                                                      L"cbFormat: 3\n");
}

TEST(MediaTypeDescriptionTest, WritesNoSubtypeOfAnAudioType)
{
    AM_MEDIA_TYPE type{};
    type.majortype = MEDIATYPE_Audio;
    type.subtype = MEDIASUBTYPE_RGB24;

    EXPECT_EQ(vxds::MediaTypeDescription(L"x", type), L"====[ x ]=================\n"
                                                      L"majortype: MEDIATYPE_Audio\n"
                                                      L"bFixedSizeSamples: FALSE\n"
                                                      L"bTemporalCompression: FALSE\n"
                                                      L"lSampleSize: 0\n"
                                                      L"formattype: ???\n"
                                                      L"cbFormat: 0\n");
}

TEST(MediaTypeDescriptionTest, MarksASubtypeThatHasNoName)
{
    Rgb24 video;
    video.type.subtype = MEDIATYPE_Video;

    EXPECT_NE(vxds::MediaTypeDescription(L"x", video.type).find(L"\nsubtype: ???\n"), std::wstring::npos);
}

TEST(MediaTypeDescriptionTest, ReadsTheBlockWhateverItsLengthSays)
{
    Rgb24 video;
    video.type.cbFormat = 1;

    const std::wstring text = vxds::MediaTypeDescription(L"x", video.type);

    EXPECT_NE(text.find(L"\n    biWidth: 640\n"), std::wstring::npos);
    EXPECT_TRUE(text.ends_with(L"\ncbFormat: 1\n"));
}

TEST(MediaTypeDescriptionTest, SurvivesATypeWhoseBlockIsMissing)
{
    Rgb24 video;
    video.type.pbFormat = nullptr;

    EXPECT_NE(
        vxds::MediaTypeDescription(L"x", video.type).find(L"formattype: FORMAT_VideoInfo\ncbFormat: 88\n"),
        std::wstring::npos);
}

} // namespace
