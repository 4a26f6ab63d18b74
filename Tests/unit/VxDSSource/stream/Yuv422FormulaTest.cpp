#include "VxDSSource/stream/Yuv422Formula.h"

#include <gtest/gtest.h>

#include <array>
#include <vector>

namespace vxds {
namespace {

/// The rule, word by word, for one pixel.
std::array<std::uint8_t, 2> ByTheRule(std::uint8_t blue, std::uint8_t green, std::uint8_t red,
                                      bool isEvenColumn)
{
    const double exactLuma = 0.299 * red + 0.587 * green + 0.114 * blue;
    const volatile float luma = static_cast<float>(exactLuma);
    const volatile float difference =
        isEvenColumn ? static_cast<float>(blue) - luma : static_cast<float>(red) - luma;
    const double factor = isEvenColumn ? 0.565 : 0.713;
    const double chroma = static_cast<double>(difference) * factor + 128.0;
    return {static_cast<std::uint8_t>(static_cast<int>(luma)),
            static_cast<std::uint8_t>(static_cast<int>(chroma))};
}

TEST(Yuv422FormulaTest, KeepsGreyWithoutColour)
{
    const std::array<std::uint8_t, 12> bgr = {0, 0, 0, 255, 255, 255, 1, 1, 1, 0, 0, 0};
    std::array<std::uint8_t, 8> yuy2{};

    BgrRowToYuy2(bgr, yuy2);

    EXPECT_EQ(yuy2[0], 0);
    EXPECT_EQ(yuy2[1], 128);
    EXPECT_EQ(yuy2[2], 255);
    EXPECT_EQ(yuy2[3], 128);
    EXPECT_EQ(yuy2[5], 128);
    EXPECT_EQ(yuy2[7], 128);
}

TEST(Yuv422FormulaTest, TruncatesColoursComputedByHand)
{
    // Blue 255: Y = 29.07, U = (255 - 29.07) x 0.565 + 128 = 255.65. Red 255: Y = 76.245, V = 178.755 x 0.713
    // + 128 = 255.45. Green 255: Y = 149.685, U = 128 - 84.57 = 43.43, V = 128 - 106.73 = 21.27.
    const std::array<std::uint8_t, 12> bgr = {255, 0, 0, 0, 0, 255, 0, 255, 0, 0, 255, 0};
    std::array<std::uint8_t, 8> yuy2{};

    BgrRowToYuy2(bgr, yuy2);

    EXPECT_EQ(yuy2, (std::array<std::uint8_t, 8>{29, 255, 76, 255, 149, 43, 149, 21}));
}

TEST(Yuv422FormulaTest, FollowsTheRuleForEveryColourInEvenAndOddColumns)
{
    std::vector<std::uint8_t> bgr(2 * 256 * 3);
    std::vector<std::uint8_t> yuy2(2 * 256 * 2);
    int differences = 0;
    for (int red = 0; red < 256; ++red) {
        for (int green = 0; green < 256; ++green) {
            for (int blue = 0; blue < 256; ++blue) { // each colour twice: in an even and in an odd column
                for (int twice = 0; twice < 2; ++twice) {
                    std::uint8_t* pixel = &bgr[static_cast<std::size_t>(blue * 2 + twice) * 3];
                    pixel[0] = static_cast<std::uint8_t>(blue);
                    pixel[1] = static_cast<std::uint8_t>(green);
                    pixel[2] = static_cast<std::uint8_t>(red);
                }
            }
            BgrRowToYuy2(bgr, yuy2);
            for (std::size_t x = 0; x < 512; ++x) {
                const auto expected =
                    ByTheRule(static_cast<std::uint8_t>(x / 2), static_cast<std::uint8_t>(green),
                              static_cast<std::uint8_t>(red), x % 2 == 0);
                differences += yuy2[x * 2] != expected[0] || yuy2[x * 2 + 1] != expected[1] ? 1 : 0;
            }
        }
    }
    EXPECT_EQ(differences, 0);
}

TEST(Yuv422FormulaTest, EndsWithTheShorterRow)
{
    const std::array<std::uint8_t, 6> bgr = {10, 20, 30, 40, 50, 60};
    std::array<std::uint8_t, 4> yuy2 = {1, 2, 3, 4};

    BgrRowToYuy2(bgr, std::span(yuy2).first(3));

    EXPECT_EQ(yuy2[2], 3);
    EXPECT_EQ(yuy2[3], 4);
    EXPECT_NE(yuy2[0], 1);
}

} // namespace
} // namespace vxds
