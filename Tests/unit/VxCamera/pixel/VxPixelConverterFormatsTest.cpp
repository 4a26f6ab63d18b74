#include "VxCamera/pixel/VxPixelConverter.h"

#include "VxCamera/pixel/PixelFormatTable.h"
#include "VxCamera/pixel/RowKernels.h"
#include "VxCamera/pixel/VxPixelFormat.h"
#include "unit/VxCamera/pixel/ConversionTrial.h"
#include "unit/VxCamera/pixel/GuardedPicture.h"
#include "unit/VxCamera/pixel/ReferencePicture.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <string>
#include <utility>
#include <vector>

// Every format of the convention, against references that know it by its name.

using testing::ElementsAre;
using testing::HasSubstr;

namespace {

/// One format for every kernel that reads bytes.
const std::vector<std::uint32_t>& ConvertedCodes()
{
    static const std::vector<std::uint32_t> codes{VxPfnc::kMono8,
                                                  VxPfnc::kBayerGR8,
                                                  VxPfnc::kBayerRG8,
                                                  VxPfnc::kBayerGB8,
                                                  VxPfnc::kBayerBG8,
                                                  VxPfnc::kRgb8,
                                                  VxPfnc::kBgr8,
                                                  VxPfnc::kRgba8,
                                                  VxPfnc::kBgra8,
                                                  VxPfnc::kYuv422_8,
                                                  VxPfnc::kYuv422_8_Uyvy,
                                                  0x0210003B,
                                                  0x02100043,
                                                  0x0210003E,
                                                  0x02100044,
                                                  0x02100041,
                                                  0x02100045,
                                                  0x021000FA,
                                                  0x021000FB,
                                                  0x020C001E,  // YUV411_8_UYYVYY
                                                  0x020C005A,  // YCbCr411_8
                                                  0x02180020,  // YUV8_UYV
                                                  0x0218005B,  // YCbCr8
                                                  0x020C0112,  // YCbCr420_8_YY_CbCr_Semiplanar
                                                  0x02100115,  // YCbCr422_8_YY_CrCb_Semiplanar
                                                  0x02180021,  // RGB8_Planar
                                                  0x021000A5,  // BiColorRGBG8
                                                  0x02100035,  // RGB565p
                                                  0x0220001C,  // RGB10V1Packed
                                                  0x0220001D,  // RGB10p32
                                                  0x01200111}; // Mono32
    return codes;
}

} // namespace

TEST(VxPixelConverterFormatsTest, EveryFormatOfEverySizeEqualsTheReference)
{
    constexpr std::array<std::uint32_t, 7> kHeightsPx{1, 2, 3, 4, 5, 6, 17};
    constexpr std::array<std::uint32_t, 14> kWidthsPx{1, 2, 3, 4, 5, 15, 16, 17, 33, 64, 66, 67, 97, 131};
    auto converters = ConvertersOfAllSets();
    for (const std::uint32_t code : ConvertedCodes())
        for (const std::uint32_t widthPx : kWidthsPx)
            for (const std::uint32_t heightPx : kHeightsPx)
                for (const std::uint32_t targetCode : {VxPfnc::kBgr8, VxPfnc::kBgra8})
                    for (VxPixelConverter& converter : converters) {
                        const bool isOdd = (widthPx + heightPx) % 2 != 0;
                        TryConversion(converter, {code, targetCode, widthPx, heightPx, widthPx, heightPx,
                                                  isOdd ? 5u : 0u, isOdd ? 0u : 3u,
                                                  isOdd ? VxRowOrder::TopDown : VxRowOrder::BottomUp});
                        if (HasFatalFailure())
                            return;
                    }
}

// Every row of the table: what is a picture by its name equals the reference, in every instruction set,
// either way up, and for sizes that no group of packed pixels fills; everything else is refused.
TEST(VxPixelConverterFormatsTest, EveryFormatOfTheTableEqualsWhatItsNameSays)
{
    // Codes that count fewer bits per pixel than their components may take.
    constexpr std::array<std::uint32_t, 6> kDoubtful{0x010A00CA, 0x010C00CB, 0x010A00CE,
                                                     0x010C00CF, 0x010A00D2, 0x010C00D3};
    constexpr std::array<std::pair<std::uint32_t, std::uint32_t>, 8> kSizesPx{
        {{1, 1}, {2, 3}, {3, 2}, {1, 6}, {9, 1}, {5, 5}, {67, 4}, {142, 3}}};
    auto converters = ConvertersOfAllSets();
    std::size_t converted = 0;
    for (const VxPixelFormat& format : pixel::FormatTable()) {
        const bool isPicture = reference::FromFormat(format.name, {}).has_value() &&
                               std::ranges::find(kDoubtful, format.code) == kDoubtful.end();
        ASSERT_EQ(VxPixelConverter::CheckFormats(format.code, VxPfnc::kBgr8).IsOK(), isPicture)
            << format.name;
        if (!isPicture)
            continue;
        ++converted;
        for (const auto& [widthPx, heightPx] : kSizesPx)
            for (const VxRowOrder order : {VxRowOrder::TopDown, VxRowOrder::BottomUp})
                for (const std::uint32_t targetCode : {VxPfnc::kBgr8, VxPfnc::kBgra8})
                    for (VxPixelConverter& converter : converters) {
                        const std::size_t padding = order == VxRowOrder::TopDown ? 0 : 5;
                        TryConversion(converter, {format.code, targetCode, widthPx, heightPx, widthPx,
                                                  heightPx, padding, padding * 2, order});
                        if (HasFatalFailure())
                            return;
                    }
    }

    // All but 35 of coordinates, 5 of confidence, 10 of data, RGB12V1Packed and the doubtful ones.
    constexpr std::size_t kPictures = 276 - 35 - 5 - 10 - 1 - kDoubtful.size();
    EXPECT_EQ(converted, kPictures);
}

TEST(VxPixelConverterFormatsTest, CommonPartIsWrittenWhenSizesDiffer)
{
    constexpr std::array<std::uint32_t, 5> kTargetWidthsPx{1, 33, 69, 70, 90};
    constexpr std::array<std::uint32_t, 5> kTargetHeightsPx{1, 2, 5, 6, 9};
    auto converters = ConvertersOfAllSets();
    for (const std::uint32_t code : ConvertedCodes())
        for (const std::uint32_t widthPx : kTargetWidthsPx)
            for (const std::uint32_t heightPx : kTargetHeightsPx)
                for (const VxRowOrder order : {VxRowOrder::TopDown, VxRowOrder::BottomUp})
                    for (VxPixelConverter& converter : converters) {
                        TryConversion(converter,
                                      {code, VxPfnc::kBgr8, 70, 6, widthPx, heightPx, 0, 4, order});
                        if (HasFatalFailure())
                            return;
                    }
}

TEST(VxPixelConverterFormatsTest, PicturesOfManySizesCanFollowEachOther)
{
    VxPixelConverter converter;
    for (const std::uint32_t widthPx : {9u, 200u, 1u, 80u})
        for (const std::uint32_t code : ConvertedCodes())
            TryConversion(converter,
                          {code, VxPfnc::kBgra8, widthPx, 3, widthPx, 3, 0, 0, VxRowOrder::BottomUp});
}

TEST(VxPixelConverterFormatsTest, GroupsOfThreeColorsInFewBitsAreStretched)
{
    // E3 B4: R 3, G 39 and B 22 of 31, 63 and 31.
    EXPECT_THAT(ToBgr(0x02100035, 1, 1, {0xE3, 0xB4}), ElementsAre(181, 158, 25)); // RGB565p
    EXPECT_THAT(ToBgr(0x02100036, 1, 1, {0xE3, 0xB4}), ElementsAre(25, 158, 181)); // BGR565p
    EXPECT_THAT(ToBgr(0x02100035, 1, 1, {0xFF, 0xFF}), ElementsAre(255, 255, 255));
}

// R 0x012, G 0x18D, B 0x385 and R 0x1E2, G 0x158, B 0x0D1 of 10 bits.
TEST(VxPixelConverterFormatsTest, ThreeColorsOfTenBitsInAWordKeepTheirHighestBits)
{
    EXPECT_THAT(ToBgr(0x0220001D, 1, 1, {0x12, 0x34, 0x56, 0x78}),
                ElementsAre(0x385 >> 2, 0x18D >> 2, 0x012 >> 2)); // RGB10p32
    EXPECT_THAT(ToBgr(0x0220001C, 1, 1, {0x12, 0x34, 0x56, 0x78}),
                ElementsAre(0x0D1 >> 2, 0x158 >> 2, 0x1E2 >> 2)); // RGB10V1Packed
}

TEST(VxPixelConverterFormatsTest, PlanesFollowEachOther)
{
    EXPECT_THAT(ToBgr(0x02180021, 2, 1, {1, 2, 3, 4, 5, 6}), ElementsAre(5, 3, 1, 6, 4, 2)); // RGB8_Planar
    EXPECT_THAT(ToBgr(0x02300023, 1, 1, {0x10, 0x01, 0x20, 0x02, 0x30, 0x03}),
                ElementsAre(0x33, 0x22, 0x11)); // RGB12_Planar
}

// Y 100, Cb 90, Cr 160 is the colour 33, 90, 145 in full range; four pixels share it, or two by two.
TEST(VxPixelConverterFormatsTest, DifferencesAreSharedAsTheNameSays)
{
    const auto color = [](std::size_t pixels) {
        constexpr std::array<std::uint8_t, 3> kPixel{33, 90, 145};
        std::vector<std::uint8_t> bytes(pixels * kPixel.size());
        for (std::size_t i = 0; i < bytes.size(); ++i)
            bytes[i] = kPixel[i % kPixel.size()];
        return bytes;
    };

    EXPECT_EQ(ToBgr(0x020C001E, 4, 1, {90, 100, 100, 160, 100, 100}), color(4)); // YUV411_8_UYYVYY
    EXPECT_EQ(ToBgr(0x020C005A, 4, 1, {100, 100, 90, 100, 100, 160}), color(4)); // YCbCr411_8
    EXPECT_EQ(ToBgr(0x02180020, 1, 1, {90, 100, 160}), color(1));                // YUV8_UYV
    EXPECT_EQ(ToBgr(0x0218005B, 1, 1, {100, 90, 160}), color(1));                // YCbCr8
    EXPECT_EQ(ToBgr(0x020C0112, 2, 2, {100, 100, 100, 100, 90, 160}), color(4)); // 4:2:0, Cb first
    EXPECT_EQ(ToBgr(0x020C0114, 2, 2, {100, 100, 100, 100, 160, 90}), color(4)); // 4:2:0, Cr first
    EXPECT_EQ(ToBgr(0x02100113, 2, 1, {100, 100, 90, 160}), color(2));           // 4:2:2, Cb first
}

TEST(VxPixelConverterFormatsTest, PlanesHavePaddingOfTheirOwn)
{
    const std::vector<std::uint8_t> bytes{100, 100, 7, 100, 100, 7, 90, 160, 7}; // 4:2:0, 2x2
    std::vector<std::uint8_t> converted(12);

    ASSERT_TRUE(
        VxPixelConverter()
            .Convert({bytes, 0x020C0112, 2, 2, 1}, {converted, VxPfnc::kBgr8, 2, 2, 0}, VxRowOrder::TopDown)
            .IsOK());

    EXPECT_THAT(converted, ElementsAre(33, 90, 145, 33, 90, 145, 33, 90, 145, 33, 90, 145));
}

TEST(VxPixelConverterFormatsTest, LastPixelsOfAGroupOfFourTakeTheDifferencesOfTheGroupBefore)
{
    // The fifth pixel of YCbCr411_8: brightness only, and a byte of the next.
    EXPECT_THAT(ToBgr(0x020C005A, 5, 1, {0, 0, 90, 0, 0, 160, 100, 100}),
                testing::Contains(90).Times(1)); // green of the fifth; the others are dark
    EXPECT_THAT(ToBgr(0x020C005A, 1, 1, {100, 100}), ElementsAre(100, 100, 100));
}

TEST(VxPixelConverterFormatsTest, SignedBrightnessIsCentred)
{
    EXPECT_THAT(ToBgr(0x01080002, 3, 1, {0x80, 0x00, 0x7F}),
                ElementsAre(0, 0, 0, 128, 128, 128, 255, 255, 255)); // Mono8s
}

// Row 0 holds red and green, row 1 blue and green: the colour that a row lacks is that of its neighbours.
TEST(VxPixelConverterFormatsTest, TwoColorsPerPixelTakeTheThirdFromTheRowsAround)
{
    EXPECT_THAT(ToBgr(0x021000A5, 1, 3, {10, 20, 30, 40, 51, 60}),
                ElementsAre(30, 20, 10, 30, 40, 31, 30, 60, 51));            // BiColorRGBG8
    EXPECT_THAT(ToBgr(0x021000A6, 1, 1, {10, 20}), ElementsAre(10, 20, 10)); // BiColorBGRG8
}

// Every row of the table: either it is converted, or the refusal names both formats; memory is never left.
TEST(VxPixelConverterFormatsTest, EveryFormatIsConvertedOrRefusedByName)
{
    for (const VxPixelFormat& format : pixel::FormatTable()) {
        const GuardedPicture from(format.code, 13, 5, 2);
        GuardedPicture to(VxPfnc::kBgra8, 13, 5, 0);

        const VxResult result = VxPixelConverter().Convert(from.ConstView(), to.View(), VxRowOrder::TopDown);

        if (result.IsOK()) {
            EXPECT_TRUE(to.IsIntactOutside(13 * 4, 0, 5)) << format.name;
            continue;
        }
        EXPECT_EQ(result.Code(), VxError::NotSupported) << format.name;
        EXPECT_THAT(result.GetDescription().GetAscii(), HasSubstr(std::string(format.name)));
        EXPECT_THAT(result.GetDescription().GetAscii(), HasSubstr("BGRa8"));
        EXPECT_TRUE(to.IsIntactOutside(0, 0, 0)) << format.name;
    }
}
