#include "VxDSSource/yuv422/Yuv422Formula.h"

#include <gtest/gtest.h>

#include <array>
#include <cstdio>
#include <string>
#include <utility>
#include <vector>

namespace vxds {
namespace {

/// The rule, word by word, for one pixel.
std::array<std::uint8_t, 2> ByTheRule(std::uint8_t blue, std::uint8_t green, std::uint8_t red,
                                      bool isEvenColumn)
{
    // volatile: rounded to single precision here, whatever the compiler would rather keep.
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

/// Every blue beside one green and one red, each in an even and in an odd column.
void FillBlues(std::vector<std::uint8_t>& bgr, int green, int red)
{
    for (std::size_t x = 0; x < 512; ++x) {
        bgr[x * 3] = static_cast<std::uint8_t>(x / 2);
        bgr[x * 3 + 1] = static_cast<std::uint8_t>(green);
        bgr[x * 3 + 2] = static_cast<std::uint8_t>(red);
    }
}

/// Those that this machine can try; says which these are, so that a run tells what it has shown.
std::vector<Yuv422Set> AvailableSets()
{
    constexpr std::array<std::pair<Yuv422Set, const char*>, 4> kSets{
        {{Yuv422Set::Scalar, "scalar"},
         {Yuv422Set::Sse41, "SSE4.1"},
         {Yuv422Set::Avx2, "AVX2"},
         {Yuv422Set::Avx512Vbmi, "AVX-512 VBMI"}}};
    std::vector<Yuv422Set> sets;
    std::string tried;
    std::string notThere;
    for (const auto& [set, name] : kSets) {
        std::string& list = IsAvailable(set) ? tried : notThere;
        list += std::string(list.empty() ? "" : ", ") + name;
        if (IsAvailable(set))
            sets.push_back(set);
    }
    std::printf("tried: %s; not on this machine: %s\n", tried.c_str(),
                notThere.empty() ? "none" : notThere.c_str());
    testing::Test::RecordProperty("sets", tried);
    return sets;
}

TEST(Yuv422FormulaTest, EverySetFollowsTheRuleForEveryColourInEvenAndOddColumns)
{
    const std::vector<Yuv422Set> sets = AvailableSets();
    std::vector<std::uint8_t> bgr(512 * 3);
    std::vector<std::uint8_t> expected(512 * 2);
    std::vector<std::uint8_t> actual(512 * 2);
    int differences = 0;
    for (int red = 0; red < 256; ++red)
        for (int green = 0; green < 256; ++green) {
            FillBlues(bgr, green, red);
            for (std::size_t x = 0; x < 512; ++x) {
                const auto pixel =
                    ByTheRule(static_cast<std::uint8_t>(x / 2), static_cast<std::uint8_t>(green),
                              static_cast<std::uint8_t>(red), x % 2 == 0);
                expected[x * 2] = pixel[0];
                expected[x * 2 + 1] = pixel[1];
            }
            for (const Yuv422Set set : sets) {
                BgrRowToYuy2(bgr, actual, set);
                differences += actual != expected ? 1 : 0;
            }
        }
    EXPECT_EQ(differences, 0);
}

// Rows of every length, from memory and into memory of exactly their size: a byte too many is noticed by the
// sanitizer, one too few by the comparison.
TEST(Yuv422FormulaTest, EverySetConvertsRowsOfEveryLength)
{
    for (const Yuv422Set set : AvailableSets())
        for (std::size_t widthPx = 0; widthPx <= 100; ++widthPx) {
            std::vector<std::uint8_t> bgr(widthPx * 3);
            for (std::size_t i = 0; i < bgr.size(); ++i)
                bgr[i] = static_cast<std::uint8_t>(i * 89 + i / 7);
            std::vector<std::uint8_t> yuy2(widthPx * 2);

            BgrRowToYuy2(bgr, yuy2, set);

            for (std::size_t x = 0; x < widthPx; ++x) {
                const auto expected = ByTheRule(bgr[x * 3], bgr[x * 3 + 1], bgr[x * 3 + 2], x % 2 == 0);
                ASSERT_EQ(yuy2[x * 2], expected[0]) << widthPx << " pixels, set " << static_cast<int>(set);
                ASSERT_EQ(yuy2[x * 2 + 1], expected[1])
                    << widthPx << " pixels, set " << static_cast<int>(set);
            }
        }
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
