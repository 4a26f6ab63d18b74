#include "VxSimulator/picture/PictureOrientation.h"

#include "VxSimulator/picture/TestPicture.h"

#include "support/Bytes.h"

#include <gtest/gtest.h>

namespace {

using namespace simulator;

constexpr std::uint32_t kBgr8 = 0x02180015;

enum class Flip { None, Exchanged };

PictureOrientation OrientationAfter(Flip vertical, Flip horizontal, std::uint32_t width, std::uint32_t height)
{
    const auto picture = TestPictureBgr(5, width, height, kBgr8);
    bytes::Vector flipped(picture.size());
    for (std::uint32_t y = 0; y < height; ++y) {
        for (std::uint32_t x = 0; x < width; ++x) {
            const std::uint32_t fromX = horizontal == Flip::None ? x : width - 1 - x;
            const std::uint32_t fromY = vertical == Flip::None ? y : height - 1 - y;
            for (std::uint32_t i = 0; i < 3; ++i)
                flipped[(y * width + x) * 3 + i] = picture[(fromY * width + fromX) * 3 + i];
        }
    }
    return ReadOrientation(
        {.pixels = flipped, .widthPx = width, .heightPx = height, .strideBytes = width * 3u});
}

TEST(PictureOrientationTest, TellsEveryOrientationInEverySize)
{
    for (const auto& [width, height] :
         {std::pair{128u, 64u}, std::pair{132u, 66u}, std::pair{640u, 480u}, std::pair{1280u, 722u}}) {
        EXPECT_EQ(OrientationAfter(Flip::None, Flip::None, width, height), PictureOrientation::Upright);
        EXPECT_EQ(OrientationAfter(Flip::Exchanged, Flip::None, width, height),
                  PictureOrientation::UpsideDown);
        EXPECT_EQ(OrientationAfter(Flip::None, Flip::Exchanged, width, height), PictureOrientation::Mirrored);
        EXPECT_EQ(OrientationAfter(Flip::Exchanged, Flip::Exchanged, width, height),
                  PictureOrientation::UpsideDownAndMirrored);
    }
}

TEST(PictureOrientationTest, IsTheSameInEveryFrame)
{
    for (std::uint64_t frame = 0; frame < 200; ++frame) {
        const auto picture = TestPictureBgr(frame, 128, 64, kBgr8);

        EXPECT_EQ(
            ReadOrientation({.pixels = picture, .widthPx = 128, .heightPx = 64, .strideBytes = 128u * 3}),
            PictureOrientation::Upright)
            << frame;
    }
}

TEST(PictureOrientationTest, IsUnknownForOtherPictures)
{
    for (const int value : {0, 128, 255}) {
        const bytes::Vector picture(320 * 240 * 3, static_cast<std::byte>(value));

        EXPECT_EQ(
            ReadOrientation({.pixels = picture, .widthPx = 320, .heightPx = 240, .strideBytes = 320u * 3}),
            PictureOrientation::Unknown);
    }
    EXPECT_EQ(ReadOrientation(PictureView{}), PictureOrientation::Unknown);
}

} // namespace
