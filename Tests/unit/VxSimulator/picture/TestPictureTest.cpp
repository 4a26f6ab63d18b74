#include "VxSimulator/picture/TestPicture.h"

#include "VxSimulator/picture/PictureFormat.h"

#include "support/Bytes.h"

#include <gtest/gtest.h>

#include <cstdlib>

namespace {

using namespace simulator;
using bytes::FromHex;

constexpr std::uint32_t kWidth = 320;
constexpr std::uint32_t kHeight = 240;
constexpr std::uint32_t kFullRow = 30;  // full colours, below the up mark
constexpr std::uint32_t kToneRow = 140; // half-tones, below the square

bytes::Vector At(std::uint32_t format, std::uint32_t x, std::uint32_t y, std::size_t pixels = 1)
{
    const auto picture = TestPicture(0, kWidth, kHeight, format);
    const std::size_t bytesPerPixel = picture.size() / (kWidth * kHeight);
    const auto from = picture.begin() + static_cast<std::ptrdiff_t>((y * kWidth + x) * bytesPerPixel);
    return {from, from + static_cast<std::ptrdiff_t>(pixels * bytesPerPixel)};
}

TEST(TestPictureTest, HasTheBytesOfItsSizeInEveryFormat)
{
    for (const PictureFormat& format : PictureFormats())
        EXPECT_EQ(TestPicture(0, kWidth, kHeight, format.code).size(),
                  std::size_t{kWidth} * kHeight * format.bytesPerPixel)
            << format.name;
}

// The yellow bar begins at 40, the first half-tone (200, 60, 30) at 0.
TEST(TestPictureTest, ShowsKnownColoursInEveryFormat)
{
    EXPECT_EQ(At(0x02180014, 44, kFullRow), FromHex("FF FF 00"));    // RGB8
    EXPECT_EQ(At(0x02180015, 44, kFullRow), FromHex("00 FF FF"));    // BGR8
    EXPECT_EQ(At(0x02200016, 44, kFullRow), FromHex("FF FF 00 FF")); // RGBa8
    EXPECT_EQ(At(0x02200017, 44, kFullRow), FromHex("00 FF FF FF")); // BGRa8
    EXPECT_EQ(At(0x02180014, 8, kToneRow), FromHex("C8 3C 1E"));
    EXPECT_EQ(At(0x01080001, 44, kFullRow), FromHex("E2"));             // Mono8: 0.886 * 255
    EXPECT_EQ(At(0x02100032, 44, kFullRow, 2), FromHex("E2 00 E2 95")); // YUV422_8
    EXPECT_EQ(At(0x0210001F, 44, kFullRow, 2), FromHex("00 E2 95 E2")); // UYVY
    EXPECT_EQ(At(0x01080009, 8, kToneRow, 2), FromHex("C8 3C"));        // BayerRG8, even row
    EXPECT_EQ(At(0x01080009, 8, kToneRow + 1, 2), FromHex("3C 1E"));    // and odd row
    EXPECT_EQ(At(0x01080008, 8, kToneRow, 2), FromHex("3C C8"));        // BayerGR8
    EXPECT_EQ(At(0x0108000A, 8, kToneRow, 2), FromHex("3C 1E"));        // BayerGB8
    EXPECT_EQ(At(0x0108000B, 8, kToneRow, 2), FromHex("1E 3C"));        // BayerBG8
}

TEST(TestPictureTest, ChangesFromFrameToFrame)
{
    for (const PictureFormat& format : PictureFormats())
        EXPECT_NE(TestPicture(1, kWidth, kHeight, format.code), TestPicture(2, kWidth, kHeight, format.code))
            << format.name;
}

TEST(TestPictureTest, IsTheSameForTheSameFrame)
{
    for (const PictureFormat& format : PictureFormats())
        EXPECT_EQ(TestPicture(7, kWidth, kHeight, format.code), TestPicture(7, kWidth, kHeight, format.code))
            << format.name;
}

TEST(TestPictureTest, TheReferenceOfBgr8IsThePictureItself)
{
    EXPECT_EQ(TestPictureBgr(3, kWidth, kHeight, 0x02180015), TestPicture(3, kWidth, kHeight, 0x02180015));
}

TEST(TestPictureTest, TheReferenceOfRgb8HasRedAndBlueExchanged)
{
    const auto picture = TestPicture(3, kWidth, kHeight, 0x02180014);
    const auto reference = TestPictureBgr(3, kWidth, kHeight, 0x02180014);

    ASSERT_EQ(reference.size(), picture.size());
    for (std::size_t i = 0; i < picture.size(); i += 3) {
        ASSERT_EQ(reference[i], picture[i + 2]);
        ASSERT_EQ(reference[i + 1], picture[i + 1]);
        ASSERT_EQ(reference[i + 2], picture[i]);
    }
}

TEST(TestPictureTest, TheReferenceOfMono8RepeatsEachByte)
{
    const auto picture = TestPicture(3, kWidth, kHeight, 0x01080001);
    const auto reference = TestPictureBgr(3, kWidth, kHeight, 0x01080001);

    ASSERT_EQ(reference.size(), picture.size() * 3);
    for (std::size_t i = 0; i < reference.size(); ++i)
        ASSERT_EQ(reference[i], picture[i / 3]);
}

TEST(TestPictureTest, TheReferenceOfBayerHasTheSensorsValuesAtTheirPlaces)
{
    const auto picture = TestPicture(3, kWidth, kHeight, 0x01080009); // BayerRG8
    const auto reference = TestPictureBgr(3, kWidth, kHeight, 0x01080009);

    for (std::size_t y = 0; y < kHeight; ++y) {
        for (std::size_t x = 0; x < kWidth; ++x) {
            const std::size_t blueGreenRed = y % 2 == 0 ? (x % 2 == 0 ? 2 : 1) : (x % 2 == 0 ? 1 : 0);
            ASSERT_EQ(picture[y * kWidth + x], reference[(y * kWidth + x) * 3 + blueGreenRed]);
        }
    }
}

TEST(TestPictureTest, MostOfThePictureIsFlat)
{
    int flat = 0;
    for (std::uint32_t y = 0; y < kHeight; ++y)
        for (std::uint32_t x = 0; x < kWidth; ++x)
            flat += IsFlat(0, kWidth, kHeight, x, y, 2) ? 1 : 0;

    EXPECT_GT(flat, static_cast<int>(kWidth * kHeight) / 2);
}

TEST(TestPictureTest, EdgesAreNotFlat)
{
    EXPECT_TRUE(IsFlat(0, kWidth, kHeight, 20, kFullRow, 2));
    EXPECT_TRUE(IsFlat(0, kWidth, kHeight, 42, kFullRow, 2));
    EXPECT_FALSE(IsFlat(0, kWidth, kHeight, 41, kFullRow, 2)) << "white ends at 40";
    EXPECT_FALSE(IsFlat(0, kWidth, kHeight, 1, kFullRow, 2)) << "the picture ends";
    EXPECT_FALSE(IsFlat(0, kWidth, kHeight, kWidth, kFullRow, 2)) << "outside";
}

TEST(TestPictureTest, BlackAndWhitePatternsAreOneColour)
{
    for (const PictureFormat& format : PictureFormats()) {
        const bool isYuv = SharesColour(format.layout);
        const auto black = TestPicture(0, kWidth, kHeight, format.code, TestPattern::Black);
        const auto white = TestPicture(0, kWidth, kHeight, format.code, TestPattern::White);

        const std::size_t brightness = format.layout == PixelLayout::Uyvy ? 1 : 0;
        EXPECT_EQ(black[brightness], std::byte{0}) << format.name;
        EXPECT_EQ(white[brightness], std::byte{255}) << format.name;
        if (isYuv) {
            EXPECT_EQ(black[1 - brightness], std::byte{128}) << format.name;
        }
        EXPECT_EQ(black, TestPicture(1, kWidth, kHeight, format.code, TestPattern::Black)) << format.name;
    }
}

TEST(TestPictureTest, IsEmptyWhereThereIsNoPicture)
{
    EXPECT_TRUE(TestPicture(0, kWidth, kHeight, 0x01100003).empty()) << "Mono10";
    EXPECT_TRUE(TestPicture(0, 0, kHeight, 0x01080001).empty());
    EXPECT_TRUE(TestPicture(0, kWidth, 0, 0x01080001).empty());
    EXPECT_TRUE(TestPicture(0, 321, kHeight, 0x02100032).empty()) << "odd width of a 4:2:2 format";
    EXPECT_TRUE(TestPictureBgr(0, 0, kHeight, 0x01080001).empty());
}

TEST(TestPictureTest, ExistsInTheSmallestSizes)
{
    for (const PictureFormat& format : PictureFormats())
        for (std::uint32_t height = 1; height < 10; ++height)
            for (std::uint32_t width = 2; width < 20; width += 2)
                EXPECT_EQ(TestPicture(5, width, height, format.code).size(),
                          std::size_t{width} * height * format.bytesPerPixel);
}

} // namespace
