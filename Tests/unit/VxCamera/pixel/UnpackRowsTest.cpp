#include "VxCamera/pixel/UnpackRows.h"

#include "VxCamera/pixel/RowKernels.h"

#include <gmock/gmock.h>

#include <array>
#include <cstdint>
#include <initializer_list>
#include <vector>

using testing::ElementsAre;

namespace {

/// Unpacks from memory of exactly the bytes given, so that a read beyond them is noticed by the sanitizer.
std::vector<std::uint8_t> Unpacked(pixel::UnpackKind kind, std::initializer_list<std::uint8_t> bytes,
                                   std::size_t components)
{
    const std::vector<std::uint8_t> packed(bytes);
    std::vector<std::uint8_t> unpacked(components);
    pixel::ScalarKernels().unpack[static_cast<std::size_t>(kind)](packed, unpacked);
    return unpacked;
}

std::vector<std::uint8_t> Unpacked(VxPixelPacking packing, unsigned bits,
                                   std::initializer_list<std::uint8_t> bytes, std::size_t components)
{
    const auto kind = pixel::UnpackKindOf(packing, bits);
    return kind ? Unpacked(*kind, bytes, components) : std::vector<std::uint8_t>();
}

} // namespace

TEST(UnpackRowsTest, RefusesWhatIsNotReadByComponents)
{
    EXPECT_FALSE(pixel::UnpackKindOf(VxPixelPacking::Cells, 8)); // bytes already
    EXPECT_FALSE(pixel::UnpackKindOf(VxPixelPacking::Cells, 11));
    EXPECT_FALSE(pixel::UnpackKindOf(VxPixelPacking::Cells, 32));
    EXPECT_FALSE(pixel::UnpackKindOf(VxPixelPacking::GevPackedV1, 12));
}

// 0x234 of 10 bits, 0xDAB of 12, 0x2DAB of 14, 0xADAB of 16.
TEST(UnpackRowsTest, CellsKeepTheirHighestBits)
{
    EXPECT_THAT(Unpacked(VxPixelPacking::Cells, 10, {0x34, 0x02}, 1), ElementsAre(0x234 >> 2));
    EXPECT_THAT(Unpacked(VxPixelPacking::Cells, 12, {0xAB, 0x0D}, 1), ElementsAre(0xDA));
    EXPECT_THAT(Unpacked(VxPixelPacking::Cells, 14, {0xAB, 0x2D}, 1), ElementsAre(0x2DAB >> 6));
    EXPECT_THAT(Unpacked(VxPixelPacking::Cells, 16, {0xAB, 0xAD, 0x00, 0x01}, 2), ElementsAre(0xAD, 0x01));
}

TEST(UnpackRowsTest, BitsAboveACellsValueDoNotCount)
{
    EXPECT_THAT(Unpacked(VxPixelPacking::Cells, 10, {0x34, 0xFE}, 1), ElementsAre(0x234 >> 2));
}

TEST(UnpackRowsTest, ReadsTenBitsInAStream)
{
    EXPECT_THAT(Unpacked(VxPixelPacking::LsbPacked, 10, {0x12, 0x34, 0x56, 0x78, 0x9A}, 4),
                ElementsAre(0x012 >> 2, 0x18D >> 2, 0x385 >> 2, 0x269 >> 2));
}

TEST(UnpackRowsTest, ReadsTwelveBitsInAStream)
{
    EXPECT_THAT(Unpacked(VxPixelPacking::LsbPacked, 12, {0xAB, 0xCD, 0xEF}, 2), ElementsAre(0xDA, 0xEF));
}

TEST(UnpackRowsTest, ReadsFourteenBitsInAStream)
{
    EXPECT_THAT(Unpacked(VxPixelPacking::LsbPacked, 14, {0x12, 0x34, 0x56, 0x78, 0x9A, 0xBC, 0xDE}, 4),
                ElementsAre(0x3412 >> 6, 0x2158 >> 6, 0x09A7 >> 6, 0x37AF >> 6));
}

TEST(UnpackRowsTest, StretchesFewBitsToTheWholeRange)
{
    EXPECT_THAT(Unpacked(VxPixelPacking::LsbPacked, 1, {0xB4}, 8),
                ElementsAre(0, 0, 255, 0, 255, 255, 0, 255));
    EXPECT_THAT(Unpacked(VxPixelPacking::LsbPacked, 2, {0xB4}, 4), ElementsAre(0, 85, 255, 170));
    EXPECT_THAT(Unpacked(VxPixelPacking::LsbPacked, 4, {0xB4}, 2), ElementsAre(4 * 17, 11 * 17));
}

// 0xABD and 0xEFC of 12 bits; 0x2AD and 0x3BC of 10.
TEST(UnpackRowsTest, ReadsTheOldPacking)
{
    EXPECT_THAT(Unpacked(VxPixelPacking::GevPacked, 12, {0xAB, 0xCD, 0xEF}, 2), ElementsAre(0xAB, 0xEF));
    EXPECT_THAT(Unpacked(VxPixelPacking::GevPacked, 10, {0xAB, 0xCD, 0xEF}, 2),
                ElementsAre(0x2AD >> 2, 0x3BC >> 2));
}

TEST(UnpackRowsTest, EndsInTheMiddleOfAGroup)
{
    EXPECT_THAT(Unpacked(VxPixelPacking::GevPacked, 12, {0xAB, 0xCD}, 1), ElementsAre(0xAB));
    EXPECT_THAT(Unpacked(VxPixelPacking::LsbPacked, 10, {0x12, 0x34}, 1), ElementsAre(0x012 >> 2));
    EXPECT_THAT(Unpacked(VxPixelPacking::LsbPacked, 1, {0xB4, 0x01}, 9),
                ElementsAre(0, 0, 255, 0, 255, 255, 0, 255, 255));
}

TEST(UnpackRowsTest, ReadsThreeOfTenBitsInAWord)
{
    const auto unpacked = Unpacked(pixel::UnpackKind::Rgb10p32, {0x12, 0x34, 0x56, 0x78}, 4);

    EXPECT_EQ(unpacked[0], 0x012 >> 2);
    EXPECT_EQ(unpacked[1], 0x18D >> 2);
    EXPECT_EQ(unpacked[2], 0x385 >> 2);
}

TEST(UnpackRowsTest, SpreadsDifferencesOfFourPixelsOverPairs)
{
    EXPECT_THAT(Unpacked(pixel::UnpackKind::Uyyvyy, {90, 1, 2, 160, 3, 4}, 8),
                ElementsAre(1, 90, 2, 160, 3, 90, 4, 160));
    EXPECT_THAT(Unpacked(pixel::UnpackKind::Yyuyyv, {1, 2, 90, 3, 4, 160}, 8),
                ElementsAre(1, 90, 2, 160, 3, 90, 4, 160));
}

TEST(UnpackRowsTest, MissingDifferencesAreThoseOfTheGroupBefore)
{
    EXPECT_THAT(Unpacked(pixel::UnpackKind::Yyuyyv, {1, 2, 90, 3, 4, 160, 5, 6}, 10),
                ElementsAre(1, 90, 2, 160, 3, 90, 4, 160, 5, 90));
    EXPECT_THAT(Unpacked(pixel::UnpackKind::Yyuyyv, {1, 2}, 4), ElementsAre(1, 128, 2, 128));
}
