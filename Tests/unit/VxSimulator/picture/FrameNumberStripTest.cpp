#include "VxSimulator/picture/FrameNumberStrip.h"

#include "VxSimulator/picture/TestPicture.h"

#include "support/Bytes.h"

#include <gtest/gtest.h>

#include <cstdlib>

namespace {

using namespace simulator;

constexpr std::uint32_t kMono8 = 0x01080001;
constexpr std::uint32_t kBayerRG8 = 0x01080009;
constexpr std::uint32_t kBgr8 = 0x02180015;

PictureView Bgr(std::span<const std::byte> pixels, std::uint32_t widthPx, std::uint32_t heightPx)
{
    return {.pixels = pixels, .widthPx = widthPx, .heightPx = heightPx, .strideBytes = widthPx * 3u};
}

/// Bilinear demosaicing of BayerRG, each colour the mean of its samples in the 3x3 pixels around.
bytes::Vector Demosaic(std::span<const std::byte> mosaic, int widthPx, int heightPx)
{
    bytes::Vector result;
    for (int y = 0; y < heightPx; ++y) {
        for (int x = 0; x < widthPx; ++x) {
            std::array<int, 3> sum{}; // blue, green, red
            std::array<int, 3> count{};
            for (int j = std::max(y - 1, 0); j <= std::min(y + 1, heightPx - 1); ++j) {
                for (int i = std::max(x - 1, 0); i <= std::min(x + 1, widthPx - 1); ++i) {
                    const std::size_t colour = j % 2 == 0 ? (i % 2 == 0 ? 2 : 1) : (i % 2 == 0 ? 1 : 0);
                    sum[colour] += static_cast<int>(mosaic[static_cast<std::size_t>(j * widthPx + i)]);
                    ++count[colour];
                }
            }
            for (std::size_t colour = 0; colour < 3; ++colour)
                result.push_back(static_cast<std::byte>(sum[colour] / count[colour]));
        }
    }
    return result;
}

TEST(FrameNumberStripTest, ReadsTheNumberFromBgr)
{
    for (const std::uint32_t number : {0u, 1u, 2u, 1000u, 0x55555555u, 0xAAAAAAAAu, 0xFFFFFFFFu}) {
        const auto picture = TestPicture(number, 320, 240, kBgr8);

        EXPECT_EQ(ReadFrameNumber(Bgr(picture, 320, 240)), number);
    }
}

TEST(FrameNumberStripTest, ReadsTheNumberFromGrey)
{
    const auto picture = TestPicture(12345, 320, 240, kMono8);

    EXPECT_EQ(
        ReadFrameNumber(
            {.pixels = picture, .widthPx = 320, .heightPx = 240, .strideBytes = 320, .bytesPerPixel = 1}),
        12345u);
}

TEST(FrameNumberStripTest, ReadsTheNumberThroughDemosaicing)
{
    for (const std::uint32_t number : {0u, 77u, 0xDEADBEEFu}) {
        const auto picture = Demosaic(TestPicture(number, 128, 64, kBayerRG8), 128, 64);

        EXPECT_EQ(ReadFrameNumber(Bgr(picture, 128, 64)), number);
    }
}

TEST(FrameNumberStripTest, ReadsTheNumberFromABottomUpBitmap)
{
    auto picture = TestPictureBgr(99, 128, 64, kBgr8);
    bytes::Vector bottomUp;
    for (std::size_t row = 64; row > 0; --row)
        bottomUp.insert(bottomUp.end(), picture.begin() + static_cast<std::ptrdiff_t>((row - 1) * 128 * 3),
                        picture.begin() + static_cast<std::ptrdiff_t>(row * 128 * 3));

    auto view = Bgr(bottomUp, 128, 64);
    EXPECT_EQ(ReadFrameNumber(view), std::nullopt) << "upside down";
    view.rowOrder = RowOrder::BottomUp;
    EXPECT_EQ(ReadFrameNumber(view), 99u);
}

TEST(FrameNumberStripTest, ReadsTheSmallestAndOddSizes)
{
    for (const auto& [width, height] : {std::pair{128u, 64u}, std::pair{130u, 66u}, std::pair{641u, 479u}}) {
        const auto picture = TestPictureBgr(4711, width, height, kBgr8);

        EXPECT_EQ(ReadFrameNumber(Bgr(picture, width, height)), 4711u) << width << "x" << height;
    }
}

TEST(FrameNumberStripTest, FindsNoNumberInPicturesOfOneColour)
{
    for (const int value : {0, 128, 255}) {
        const bytes::Vector picture(320 * 240 * 3, static_cast<std::byte>(value));

        EXPECT_EQ(ReadFrameNumber(Bgr(picture, 320, 240)), std::nullopt) << value;
    }
}

TEST(FrameNumberStripTest, FindsNoNumberWhenAnyOneBlockIsWrong)
{
    const auto good = TestPicture(31, 128, 64, kMono8);
    const TestScene scene(128, 64);
    const auto place = scene.StripPlace();
    ASSERT_TRUE(place);
    for (std::uint32_t row = 0; row < FrameNumberStrip::kRows; ++row) {
        for (std::uint32_t column = 0; column < FrameNumberStrip::kColumns; ++column) {
            auto bad = good;
            for (std::uint32_t y = 0; y < 8; ++y)
                for (std::uint32_t x = 0; x < 8; ++x)
                    bad[(place->yPx + row * 8 + y) * 128 + place->xPx + column * 8 + x] ^= std::byte{0xFF};

            EXPECT_EQ(
                ReadFrameNumber(
                    {.pixels = bad, .widthPx = 128, .heightPx = 64, .strideBytes = 128, .bytesPerPixel = 1}),
                std::nullopt);
        }
    }
}

TEST(FrameNumberStripTest, FindsNoNumberInWhatIsNoPicture)
{
    const auto picture = TestPicture(1, 128, 64, kBgr8);

    EXPECT_EQ(ReadFrameNumber(PictureView{}), std::nullopt);
    EXPECT_EQ(ReadFrameNumber(Bgr(picture, 64, 32)), std::nullopt) << "too small for the strip";
    EXPECT_EQ(ReadFrameNumber(Bgr(bytes::First(picture, picture.size() - 1), 128, 64)), std::nullopt);
}

} // namespace
