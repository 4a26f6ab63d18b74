#include "VxDSSource/stream/VxMediaTypes.h"

#include "BaseClasses/CMediaType.h"

#include <amvideo.h>
#include <dvdmedia.h>
#include <uuids.h>

#include <gtest/gtest.h>

#include <cstring>

namespace vxds {
namespace {

constexpr DWORD kYuy2 = MAKEFOURCC('Y', 'U', 'Y', '2');
constexpr std::uint32_t kRgb = 0;
constexpr std::uint32_t kYuv = 1;

const VIDEOINFOHEADER& BlockOf(const CMediaType& type)
{
    EXPECT_EQ(type.formattype, FORMAT_VideoInfo);
    EXPECT_EQ(type.cbFormat, sizeof(VIDEOINFOHEADER));
    return *reinterpret_cast<const VIDEOINFOHEADER*>(type.Format());
}

CMediaType Offered(int position, PictureSize size = {640, 480})
{
    CMediaType type;
    EXPECT_TRUE(BuildOfferedType(position, size, type));
    return type;
}

TEST(VxMediaTypesTest, OffersFourTypesWithTheFieldsOfTheirSubtypes)
{
    struct Row {
        const GUID* subtype;
        WORD bits;
        DWORD compression;
        DWORD bytes;
    };
    const Row rows[] = {{&MEDIASUBTYPE_RGB24, 24, BI_RGB, 641 * 479 * 3},
                        {&MEDIASUBTYPE_RGB32, 32, BI_RGB, 641 * 479 * 4},
                        {&MEDIASUBTYPE_ARGB32, 32, BI_RGB, 641 * 479 * 4},
                        {&MEDIASUBTYPE_YUY2, 16, kYuy2, 641 * 479 * 2}};
    for (int position = 0; position < 4; ++position) {
        const CMediaType type = Offered(position, {641, 479});
        const Row& row = rows[position];

        EXPECT_EQ(type.majortype, MEDIATYPE_Video);
        EXPECT_EQ(type.subtype, *row.subtype) << position;
        EXPECT_FALSE(type.IsTemporalCompressed());
        EXPECT_TRUE(type.IsFixedSize());
        EXPECT_EQ(type.GetSampleSize(), row.bytes) << "no row is rounded";

        VIDEOINFOHEADER expected{};
        expected.AvgTimePerFrame = 333333;
        expected.bmiHeader = {40, 641, 479, 1, row.bits, row.compression, row.bytes, 0, 0, 0, 0};
        EXPECT_EQ(std::memcmp(&BlockOf(type), &expected, sizeof(expected)), 0) << position;
    }
}

TEST(VxMediaTypesTest, CountsBytesBeyond32BitsAsTheLargestNumber)
{
    EXPECT_EQ(UnpaddedBitmapBytes({32768, 32768}, 24), 3221225472u);
    EXPECT_EQ(UnpaddedBitmapBytes({65536, 65536}, 24), 0xFFFFFFFFu);
    EXPECT_EQ(UnpaddedBitmapBytes({0x80000000u, 0x80000000u}, 32), 0xFFFFFFFFu);
    EXPECT_EQ(UnpaddedBitmapBytes({50000, 50000}, 32), 0xFFFFFFFFu);
}

TEST(VxMediaTypesTest, CountsATopDownHeightWithoutItsSign)
{
    const auto minus480 = static_cast<std::uint32_t>(-480);

    EXPECT_EQ(UnpaddedBitmapBytes({640, minus480}, 24), 921600u);
    EXPECT_EQ(BlockOf(Offered(0, {640, minus480})).bmiHeader.biHeight, -480);
}

TEST(VxMediaTypesTest, AcceptsTheFamilyInForceOnly)
{
    EXPECT_TRUE(IsAcceptedType(Offered(0), kRgb));
    EXPECT_TRUE(IsAcceptedType(Offered(1), kRgb));
    EXPECT_TRUE(IsAcceptedType(Offered(2), kRgb));
    EXPECT_FALSE(IsAcceptedType(Offered(3), kRgb));

    EXPECT_FALSE(IsAcceptedType(Offered(0), kYuv));
    EXPECT_FALSE(IsAcceptedType(Offered(1), kYuv));
    EXPECT_FALSE(IsAcceptedType(Offered(2), kYuv));
    EXPECT_TRUE(IsAcceptedType(Offered(3), kYuv));

    for (int position = 0; position < 4; ++position)
        EXPECT_FALSE(IsAcceptedType(Offered(position), 2)) << position;
}

TEST(VxMediaTypesTest, AcceptsEverySize)
{
    EXPECT_TRUE(IsAcceptedType(Offered(0, {1, 1}), kRgb));
    EXPECT_TRUE(IsAcceptedType(Offered(3, {4096, 2160}), kYuv));
}

TEST(VxMediaTypesTest, AcceptsRgbWithBitFields)
{
    CMediaType type = Offered(1);
    reinterpret_cast<VIDEOINFOHEADER*>(type.Format())->bmiHeader.biCompression = BI_BITFIELDS;

    EXPECT_TRUE(IsAcceptedType(type, kRgb));
}

TEST(VxMediaTypesTest, AcceptsAnyRgbSubtypeWithEitherDepth)
{
    CMediaType type = Offered(0);
    type.SetSubtype(&MEDIASUBTYPE_ARGB32); // 24 bits: an odd couple, but each is admitted

    EXPECT_TRUE(IsAcceptedType(type, kRgb));
}

TEST(VxMediaTypesTest, RefusesTypesThatDifferInOneField)
{
    const auto isRefused = [](std::uint32_t family, int position, auto change) {
        CMediaType type = Offered(position);
        change(type, reinterpret_cast<VIDEOINFOHEADER*>(type.Format())->bmiHeader);
        return !IsAcceptedType(type, family);
    };
    using Bitmap = BITMAPINFOHEADER;
    EXPECT_TRUE(isRefused(kRgb, 0, [](CMediaType& type, Bitmap&) { type.SetType(&MEDIATYPE_Stream); }));
    EXPECT_TRUE(isRefused(kRgb, 0, [](CMediaType& type, Bitmap&) { type.SetSubtype(&MEDIASUBTYPE_RGB565); }));
    EXPECT_TRUE(isRefused(kRgb, 0, [](CMediaType& type, Bitmap&) { type.SetSubtype(&GUID_NULL); }));
    EXPECT_TRUE(isRefused(kRgb, 0, [](CMediaType&, Bitmap& bitmap) { bitmap.biBitCount = 16; }));
    EXPECT_TRUE(isRefused(kRgb, 0, [](CMediaType&, Bitmap& bitmap) { bitmap.biCompression = kYuy2; }));
    EXPECT_TRUE(isRefused(kYuv, 3, [](CMediaType& type, Bitmap&) { type.SetType(&MEDIATYPE_Audio); }));
    EXPECT_TRUE(isRefused(kYuv, 3, [](CMediaType& type, Bitmap&) { type.SetSubtype(&MEDIASUBTYPE_UYVY); }));
    EXPECT_TRUE(isRefused(kYuv, 3, [](CMediaType&, Bitmap& bitmap) { bitmap.biBitCount = 24; }));
    EXPECT_TRUE(isRefused(kYuv, 3, [](CMediaType&, Bitmap& bitmap) { bitmap.biCompression = BI_RGB; }));
}

TEST(VxMediaTypesTest, RefusesTheLongerFormatBlock)
{
    CMediaType type = Offered(0);
    VIDEOINFOHEADER2 block{};
    block.bmiHeader = BlockOf(type).bmiHeader;
    type.SetFormat(reinterpret_cast<BYTE*>(&block), sizeof(block));
    type.SetFormatType(&FORMAT_VideoInfo2);

    EXPECT_FALSE(IsAcceptedType(type, kRgb));
}

TEST(VxMediaTypesTest, RefusesTypesWithoutAUsableBlock)
{
    CMediaType type = Offered(0);
    type.ResetFormatBuffer();
    EXPECT_FALSE(IsAcceptedType(type, kRgb));

    AM_MEDIA_TYPE claimed = Offered(0);
    claimed.pbFormat = nullptr;
    claimed.pUnk = nullptr;
    EXPECT_FALSE(IsAcceptedType(claimed, kRgb));

    EXPECT_FALSE(IsAcceptedType(CMediaType(), kRgb));
}

TEST(VxMediaTypesTest, ResizesWithTheOldDepthInTheSizeAndTheFamilysDepthInTheHeader)
{
    const CMediaType rgb32 = Offered(1, {1280, 720});
    CMediaType resized;

    ASSERT_TRUE(BuildResizedType(rgb32, {640, 480}, kRgb, resized));

    EXPECT_EQ(resized.subtype, MEDIASUBTYPE_RGB32);
    EXPECT_EQ(resized.majortype, MEDIATYPE_Video);
    VIDEOINFOHEADER expected{};
    expected.AvgTimePerFrame = 333333;
    expected.bmiHeader = {40, 640, 480, 1, 24, BI_RGB, 640 * 480 * 4, 0, 0, 0, 0};
    EXPECT_EQ(std::memcmp(&BlockOf(resized), &expected, sizeof(expected)), 0);
    EXPECT_EQ(resized.GetSampleSize(), 640u * 480u * 4u);
}

TEST(VxMediaTypesTest, ResizesWithoutCompressionAndWithSixteenBitsForYuv)
{
    CMediaType resized;
    ASSERT_TRUE(BuildResizedType(Offered(3), {320, 240}, kYuv, resized));

    EXPECT_EQ(resized.subtype, MEDIASUBTYPE_YUY2);
    EXPECT_EQ(BlockOf(resized).bmiHeader.biBitCount, 16);
    EXPECT_EQ(BlockOf(resized).bmiHeader.biCompression, static_cast<DWORD>(BI_RGB));
    EXPECT_EQ(BlockOf(resized).bmiHeader.biSizeImage, 320u * 240u * 2u);
}

TEST(VxMediaTypesTest, ResizesWithoutADepthForAnotherFamily)
{
    CMediaType resized;
    ASSERT_TRUE(BuildResizedType(Offered(0), {320, 240}, 7, resized));

    EXPECT_EQ(BlockOf(resized).bmiHeader.biBitCount, 0);
    EXPECT_EQ(BlockOf(resized).bmiHeader.biSizeImage, 320u * 240u * 3u);
}

TEST(VxMediaTypesTest, ResizesInSigned32BitArithmetic)
{
    CMediaType resized;
    ASSERT_TRUE(BuildResizedType(Offered(1), {16384, 8192}, kRgb, resized));

    // 32 x 8192 x 16384 = 2^32, which is 0 in 32 bits.
    EXPECT_EQ(BlockOf(resized).bmiHeader.biSizeImage, 0u);

    ASSERT_TRUE(BuildResizedType(Offered(1), {8192, 8192}, kRgb, resized));
    // 2^31 is -2^31; divided by 8: -2^28.
    EXPECT_EQ(static_cast<std::int32_t>(BlockOf(resized).bmiHeader.biSizeImage), -268435456);
}

TEST(VxMediaTypesTest, ResizesATypeWithTheLongerBlockOrNone)
{
    CMediaType longer = Offered(0);
    VIDEOINFOHEADER2 block{};
    block.bmiHeader.biBitCount = 32;
    longer.SetFormat(reinterpret_cast<BYTE*>(&block), sizeof(block));
    longer.SetFormatType(&FORMAT_VideoInfo2);
    CMediaType resized;
    ASSERT_TRUE(BuildResizedType(longer, {10, 10}, kRgb, resized));
    EXPECT_EQ(BlockOf(resized).bmiHeader.biSizeImage, 400u);

    ASSERT_TRUE(BuildResizedType(CMediaType(), {10, 10}, kRgb, resized));
    EXPECT_EQ(BlockOf(resized).bmiHeader.biSizeImage, 0u);
    EXPECT_EQ(BlockOf(resized).bmiHeader.biWidth, 10);
}

TEST(VxMediaTypesTest, DescribesTheCapabilityOfEachFamily)
{
    CMediaType rgb;
    ASSERT_TRUE(BuildCapabilityType(Offered(1, {1280, 720}), {641, 480}, kRgb, rgb));
    EXPECT_EQ(rgb.majortype, MEDIATYPE_Video);
    EXPECT_EQ(rgb.subtype, MEDIASUBTYPE_RGB24);
    EXPECT_FALSE(rgb.bFixedSizeSamples);
    EXPECT_FALSE(rgb.bTemporalCompression);
    EXPECT_EQ(rgb.lSampleSize, 641u * 480u * 3u);
    VIDEOINFOHEADER expected{};
    expected.AvgTimePerFrame = 333333;
    expected.bmiHeader = {40, 641, 480, 1, 24, BI_RGB, 641 * 480 * 3, 0, 0, 0, 0};
    EXPECT_EQ(std::memcmp(&BlockOf(rgb), &expected, sizeof(expected)), 0);

    CMediaType yuv;
    ASSERT_TRUE(BuildCapabilityType(Offered(1, {1280, 720}), {640, 480}, kYuv, yuv));
    EXPECT_EQ(yuv.subtype, MEDIASUBTYPE_YUY2);
    EXPECT_EQ(BlockOf(yuv).bmiHeader.biCompression, kYuy2);
    EXPECT_EQ(BlockOf(yuv).bmiHeader.biBitCount, 16);
    EXPECT_EQ(yuv.lSampleSize, 640u * 480u * 2u);
}

TEST(VxMediaTypesTest, KeepsTheSubtypeOfTheCapabilityForAnotherFamily)
{
    CMediaType type;
    ASSERT_TRUE(BuildCapabilityType(Offered(2), {640, 480}, 9, type));

    EXPECT_EQ(type.subtype, MEDIASUBTYPE_ARGB32);
    EXPECT_EQ(BlockOf(type).bmiHeader.biBitCount, 32);
}

TEST(VxMediaTypesTest, FillsTheCapability)
{
    const VIDEO_STREAM_CONFIG_CAPS caps = CapabilityOf({640, 480});

    VIDEO_STREAM_CONFIG_CAPS expected{};
    expected.guid = FORMAT_VideoInfo2;
    expected.InputSize = {640, 480};
    expected.MinCroppingSize = {80, 60};
    expected.MaxCroppingSize = {640, 480};
    expected.CropGranularityX = 80;
    expected.CropGranularityY = 60;
    expected.MinOutputSize = {80, 60};
    expected.MaxOutputSize = {640, 480};
    expected.MinFrameInterval = 100000;
    expected.MaxFrameInterval = 50000000;
    expected.MinBitsPerSecond = 23040;
    expected.MaxBitsPerSecond = 737280000;
    EXPECT_EQ(std::memcmp(&caps, &expected, sizeof(caps)), 0);
}

TEST(VxMediaTypesTest, WrapsTheBitsPerSecondOfLargePictures)
{
    // 1920 x 1080 x 2400 = 4976640000, less 2^32 = 681672704.
    EXPECT_EQ(CapabilityOf({1920, 1080}).MaxBitsPerSecond, 681672704);
}

} // namespace
} // namespace vxds
