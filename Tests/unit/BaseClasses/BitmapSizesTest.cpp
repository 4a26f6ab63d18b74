#include "BaseClasses/BitmapSizes.h"

#include <dvdmedia.h>

#include <gtest/gtest.h>

namespace {

BITMAPINFOHEADER Header(LONG widthPx, LONG heightPx, WORD bitsPerPixel)
{
    BITMAPINFOHEADER header = {};
    header.biWidth = widthPx;
    header.biHeight = heightPx;
    header.biBitCount = bitsPerPixel;
    return header;
}

TEST(BitmapSizesTest, RoundsRowsUpToFourBytes)
{
    EXPECT_EQ(DIBSIZE(Header(4, 2, 24)), 24u);
    EXPECT_EQ(DIBSIZE(Header(5, 2, 24)), 32u); // 15 bytes become 16
    EXPECT_EQ(DIBSIZE(Header(3, 2, 16)), 16u); // 6 become 8
    EXPECT_EQ(DIBSIZE(Header(33, 1, 1)), 8u);
    EXPECT_EQ(WIDTHBYTES(1), 4u);
    EXPECT_EQ(DIBWIDTHBYTES(Header(5, 2, 24)), 16u);
}

TEST(BitmapSizesTest, TopDownBitmapHasTheSameSize)
{
    EXPECT_EQ(DIBSIZE(Header(1920, -1080, 32)), 1920u * 1080u * 4u);
    const BITMAPINFOHEADER upright = Header(1920, 1080, 32);
    EXPECT_EQ(GetBitmapSize(&upright), 1920u * 1080u * 4u);
}

TEST(BitmapSizesTest, FindsTheBitmapHeaderInAVideoInfoHeader)
{
    VIDEOINFOHEADER info = {};

    EXPECT_EQ(HEADER(&info), &info.bmiHeader);
    EXPECT_EQ(SIZE_PREHEADER, 48u);
}

// What every reader of a format block relies on; fixed by DirectShow on 64-bit Windows.
TEST(BitmapSizesTest, PlatformStructuresHaveTheirSizes)
{
    EXPECT_EQ(sizeof(AM_MEDIA_TYPE), 88u);
    EXPECT_EQ(sizeof(VIDEOINFOHEADER), 88u);
    EXPECT_EQ(sizeof(VIDEOINFOHEADER2), 112u);
    EXPECT_EQ(offsetof(VIDEOINFOHEADER2, bmiHeader), 72u);
    EXPECT_EQ(sizeof(VIDEO_STREAM_CONFIG_CAPS), 128u);
    EXPECT_EQ(sizeof(REGFILTERPINS), 56u);
    EXPECT_EQ(sizeof(REGFILTER2), 24u);
}

} // namespace
