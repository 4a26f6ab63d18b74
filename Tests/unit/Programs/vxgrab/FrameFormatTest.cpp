#include "vxgrab/FrameFormat.h"

#include <gtest/gtest.h>

#include <dshow.h>
#include <dvdmedia.h>

namespace vxgrab {
namespace {

/// A media type over a format block of the caller.
template <typename Header>
AM_MEDIA_TYPE TypeOver(Header& header, const GUID& formatType, const GUID& subtype)
{
    AM_MEDIA_TYPE type{};
    type.majortype = MEDIATYPE_Video;
    type.subtype = subtype;
    type.formattype = formatType;
    type.cbFormat = sizeof(Header);
    type.pbFormat = reinterpret_cast<BYTE*>(&header);
    return type;
}

template <typename Header>
Header HeaderOf(LONG widthPx, LONG height)
{
    Header header{};
    header.bmiHeader.biWidth = widthPx;
    header.bmiHeader.biHeight = height;
    return header;
}

FrameFormat FormatOf(int widthPx, int heightPx, std::size_t bytesPerPixel)
{
    FrameFormat format;
    format.widthPx = widthPx;
    format.heightPx = heightPx;
    format.bytesPerPixel = bytesPerPixel;
    return format;
}

TEST(ReadFrameFormatTest, RgbWithPositiveHeightIsBottomUp)
{
    auto header = HeaderOf<VIDEOINFOHEADER>(640, 480);
    const auto format = ReadFrameFormat(TypeOver(header, FORMAT_VideoInfo, MEDIASUBTYPE_RGB24));

    ASSERT_TRUE(format);
    EXPECT_EQ(format->widthPx, 640);
    EXPECT_EQ(format->heightPx, 480);
    EXPECT_TRUE(format->isBottomUp);
    EXPECT_EQ(format->bytesPerPixel, 3u);
}

TEST(ReadFrameFormatTest, RgbWithNegativeHeightIsTopDown)
{
    auto header = HeaderOf<VIDEOINFOHEADER2>(640, -480);
    const auto format = ReadFrameFormat(TypeOver(header, FORMAT_VideoInfo2, MEDIASUBTYPE_RGB32));

    ASSERT_TRUE(format);
    EXPECT_EQ(format->heightPx, 480);
    EXPECT_FALSE(format->isBottomUp);
    EXPECT_EQ(format->bytesPerPixel, 4u);
}

TEST(ReadFrameFormatTest, YuvIsNeverBottomUp)
{
    auto header = HeaderOf<VIDEOINFOHEADER>(640, 480);
    const auto format = ReadFrameFormat(TypeOver(header, FORMAT_VideoInfo, MEDIASUBTYPE_YUY2));

    ASSERT_TRUE(format);
    EXPECT_FALSE(format->isBottomUp);
    EXPECT_EQ(format->bytesPerPixel, 2u);
}

TEST(ReadFrameFormatTest, KnowsTheSizeOfFramesItCannotRead)
{
    auto header = HeaderOf<VIDEOINFOHEADER>(640, 480);
    const auto format = ReadFrameFormat(TypeOver(header, FORMAT_VideoInfo, MEDIASUBTYPE_MJPG));

    ASSERT_TRUE(format);
    EXPECT_EQ(format->widthPx, 640);
    EXPECT_EQ(format->bytesPerPixel, 0u);
}

TEST(ReadFrameFormatTest, RejectsHalfMediaTypes)
{
    auto header = HeaderOf<VIDEOINFOHEADER>(640, 480);
    const AM_MEDIA_TYPE whole = TypeOver(header, FORMAT_VideoInfo, MEDIASUBTYPE_RGB24);

    AM_MEDIA_TYPE noBlock = whole;
    noBlock.pbFormat = nullptr;
    EXPECT_FALSE(ReadFrameFormat(noBlock));
    AM_MEDIA_TYPE shortBlock = whole;
    shortBlock.cbFormat = sizeof(VIDEOINFOHEADER) - 1;
    EXPECT_FALSE(ReadFrameFormat(shortBlock));
    AM_MEDIA_TYPE audio = whole;
    audio.majortype = MEDIATYPE_Audio;
    EXPECT_FALSE(ReadFrameFormat(audio));
    AM_MEDIA_TYPE otherFormat = whole;
    otherFormat.formattype = FORMAT_WaveFormatEx;
    EXPECT_FALSE(ReadFrameFormat(otherFormat));
}

TEST(ReadFrameFormatTest, RejectsSizesThatMakeNoSense)
{
    for (const auto& [width, height] :
         {std::pair{0L, 480L}, {-640L, 480L}, {640L, 0L}, {70000L, 480L}, {640L, 70000L}}) {
        auto header = HeaderOf<VIDEOINFOHEADER>(width, height);
        EXPECT_FALSE(ReadFrameFormat(TypeOver(header, FORMAT_VideoInfo, MEDIASUBTYPE_RGB24)))
            << width << " x " << height;
    }
}

TEST(RowBytesTest, TellsPaddedRowsFromDenseOnesByTheFrameSize)
{
    const FrameFormat format = FormatOf(5, 2, 3);

    EXPECT_EQ(RowBytes(format, 2 * 15), 15u);
    EXPECT_EQ(RowBytes(format, 2 * 16), 16u);
    EXPECT_EQ(RowBytes(format, 2 * 15 - 1), 0u);
}

TEST(RowBytesTest, IsZeroForFramesThatCannotBeRead)
{
    EXPECT_EQ(RowBytes(FormatOf(5, 2, 0), 1000), 0u);
}

TEST(SubtypeNameTest, ShowsFourCharactersOrANumber)
{
    const GUID unreadable{0x00000001, 0, 0, {}};

    EXPECT_EQ(SubtypeName(MEDIASUBTYPE_RGB24), "RGB24");
    EXPECT_EQ(SubtypeName(MEDIASUBTYPE_ARGB32), "ARGB32");
    EXPECT_EQ(SubtypeName(MEDIASUBTYPE_MJPG), "MJPG");
    EXPECT_EQ(SubtypeName(unreadable), "0x00000001");
}

TEST(SubtypeFromNameTest, KnowsTheNamesOnTheCommandLine)
{
    EXPECT_TRUE(::IsEqualGUID(SubtypeFromName("rgb32").ValueOr(GUID_NULL), MEDIASUBTYPE_RGB32));
    EXPECT_TRUE(::IsEqualGUID(SubtypeFromName("yuy2").ValueOr(GUID_NULL), MEDIASUBTYPE_YUY2));
    EXPECT_EQ(SubtypeFromName("RGB32").Result().Code(), VxError::InvalidParameter);
}

} // namespace
} // namespace vxgrab
