#include "VxCamera/pixel/VxPixelConverter.h"

#include "VxCamera/pixel/PixelFormatTable.h"
#include "VxCamera/pixel/VxPixelFormat.h"
#include "unit/VxCamera/pixel/AllocationCount.h"
#include "unit/VxCamera/pixel/ConversionTrial.h"
#include "unit/VxCamera/pixel/GuardedPicture.h"
#include "unit/VxCamera/pixel/ReferencePicture.h"

#include <gmock/gmock.h>

#include <array>
#include <cstdint>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

// Packed pictures whose rows run together: each begins at the bit behind the last one of the row before.

using testing::ElementsAre;
using testing::HasSubstr;

namespace {

constexpr std::uint32_t kMono10p = 0x010A0046;
constexpr std::uint32_t kMono12p = 0x010C0047;
constexpr std::uint32_t kMono12Packed = 0x010C0006;
constexpr std::uint32_t kBayerRG12p = 0x010C0059;

/// Whether the rows of a format may end inside a byte, and its pixels share nothing.
bool IsJoinable(const VxPixelFormat& format)
{
    const bool isShared = format.name.find("422") != std::string_view::npos ||
                          format.name.find("411") != std::string_view::npos ||
                          format.name.find("420") != std::string_view::npos;
    return !isShared && VxBitsPerPixel(format.code) % 8 != 0 &&
           reference::FromFormat(format.name, {}).has_value() &&
           VxPixelConverter::CheckFormats(format.code, VxPfnc::kBgr8).IsOK();
}

std::vector<std::uint8_t> JoinedToBgr(std::uint32_t code, std::uint32_t widthPx, std::uint32_t heightPx,
                                      const std::vector<std::uint8_t>& bytes)
{
    std::vector<std::uint8_t> converted(std::size_t{widthPx} * heightPx * 3);
    const VxResult result =
        VxPixelConverter().Convert({bytes, code, widthPx, heightPx, 0, true},
                                   {converted, VxPfnc::kBgr8, widthPx, heightPx, 0}, VxRowOrder::TopDown);
    EXPECT_TRUE(result.IsOK()) << result.GetDescription().GetAscii();
    return converted;
}

} // namespace

// 0x10F, 0x20E, 0x30D in the first row and 0x40C, 0x50B, 0x60A in the second.
TEST(VxPixelConverterJoinedTest, ARowBeginsInsideAByte)
{
    const auto grey = ElementsAre(0x10, 0x10, 0x10, 0x20, 0x20, 0x20, 0x30, 0x30, 0x30, //
                                  0x40, 0x40, 0x40, 0x50, 0x50, 0x50, 0x60, 0x60, 0x60);

    EXPECT_THAT(JoinedToBgr(kMono12p, 3, 2, {0x0F, 0xE1, 0x20, 0x0D, 0xC3, 0x40, 0x0B, 0xA5, 0x60}), grey);
    EXPECT_THAT(JoinedToBgr(kMono12Packed, 3, 2, {0x10, 0xEF, 0x20, 0x30, 0xCD, 0x40, 0x50, 0xAB, 0x60}),
                grey);
}

// Every packing of the table, in every instruction set, either way up: a row that is alone, columns that are,
// rows that begin at every bit, and rows that are long enough for registers of every size.
TEST(VxPixelConverterJoinedTest, EveryPackedFormatEqualsTheReference)
{
    constexpr std::array<std::pair<std::uint32_t, std::uint32_t>, 12> kSizesPx{{{1, 1},
                                                                                {3, 1},
                                                                                {1281, 1},
                                                                                {1, 9},
                                                                                {2, 3},
                                                                                {3, 5},
                                                                                {5, 4},
                                                                                {7, 9},
                                                                                {64, 3},
                                                                                {67, 6},
                                                                                {131, 10},
                                                                                {1281, 3}}};
    auto converters = ConvertersOfAllSets();
    std::vector<std::string_view> tried;
    for (const VxPixelFormat& format : pixel::FormatTable()) {
        if (!IsJoinable(format))
            continue;
        tried.push_back(format.name);
        for (const auto& [widthPx, heightPx] : kSizesPx)
            for (const VxRowOrder order : {VxRowOrder::TopDown, VxRowOrder::BottomUp})
                for (const std::uint32_t targetCode : {VxPfnc::kBgr8, VxPfnc::kBgra8})
                    for (VxPixelConverter& converter : converters) {
                        TryConversion(converter, {format.code, targetCode, widthPx, heightPx, widthPx,
                                                  heightPx, 0, 3, order, true});
                        if (HasFatalFailure())
                            return;
                    }
    }
    for (const char* name :
         {"Mono1p", "Mono2p", "Mono4p", "Mono10p", "Mono12p", "Mono14p", "Mono10Packed", "Mono12Packed",
          "BayerGR10p", "BayerRG12p", "BayerGB14p", "BayerBG4p", "BayerGR10Packed", "BayerBG12Packed",
          "RGB10p", "BGR12p", "YCbCr10p_CbYCr", "BiColorRGBG10p"})
        EXPECT_THAT(tried, testing::Contains(name));
}

TEST(VxPixelConverterJoinedTest, CommonPartIsWrittenWhenSizesDiffer)
{
    auto converters = ConvertersOfAllSets();
    for (const std::uint32_t code : {kMono10p, kMono12Packed, kBayerRG12p})
        for (const std::uint32_t widthPx : {1u, 70u, 71u, 90u})
            for (const std::uint32_t heightPx : {1u, 2u, 6u, 7u, 9u})
                for (const VxRowOrder order : {VxRowOrder::TopDown, VxRowOrder::BottomUp})
                    for (VxPixelConverter& converter : converters) {
                        TryConversion(converter,
                                      {code, VxPfnc::kBgr8, 71, 7, widthPx, heightPx, 0, 4, order, true});
                        if (HasFatalFailure())
                            return;
                    }
}

TEST(VxPixelConverterJoinedTest, PicturesOfBothKindsCanFollowEachOther)
{
    VxPixelConverter converter;
    for (const std::uint32_t widthPx : {9u, 201u, 1u, 81u})
        for (const std::uint32_t code : {kMono10p, kMono12Packed, kBayerRG12p})
            for (const bool areRowsJoined : {false, true, false})
                TryConversion(converter, {code, VxPfnc::kBgra8, widthPx, 3, widthPx, 3, 0, 0,
                                          VxRowOrder::BottomUp, areRowsJoined});
}

TEST(VxPixelConverterJoinedTest, SecondPictureOfTheSameSizeTakesNoMemory)
{
    const auto source = reference::RandomSource((65 * 7 * 12 + 7) / 8, 1, 1, 5);
    GuardedPicture to(VxPfnc::kBgr8, 65, 7, 0);
    VxPixelConverter converter;
    ASSERT_TRUE(converter.Convert({source.bytes, kBayerRG12p, 65, 7, 0, true}, to.View(), VxRowOrder::TopDown)
                    .IsOK());

    const std::size_t before = AllocationCount();
    const bool isConverted =
        converter.Convert({source.bytes, kBayerRG12p, 65, 7, 0, true}, to.View(), VxRowOrder::BottomUp)
            .IsOK();
    const std::size_t after = AllocationCount();

    EXPECT_TRUE(isConverted);
    EXPECT_EQ(after, before);
}

TEST(VxPixelConverterJoinedTest, RefusesASourceThatIsOneByteTooSmall)
{
    const std::vector<std::uint8_t> bytes(38); // 5 * 5 * 12 bits take 37.5
    GuardedPicture to(VxPfnc::kBgr8, 5, 5, 0);
    const VxPictureView whole{bytes, kMono12p, 5, 5, 0, true};
    VxPictureView cut = whole;
    cut.bytes = cut.bytes.first(37);

    const VxResult refused = VxPixelConverter().Convert(cut, to.View(), VxRowOrder::TopDown);

    EXPECT_EQ(refused.Code(), VxError::InvalidParameter);
    EXPECT_THAT(refused.GetDescription().GetAscii(), HasSubstr("needs 38 bytes of memory and has 37"));
    EXPECT_THAT(refused.GetDescription().GetAscii(), HasSubstr("rows that run together"));
    EXPECT_TRUE(to.IsIntactOutside(0, 0, 0));
    EXPECT_TRUE(VxPixelConverter().Convert(whole, to.View(), VxRowOrder::TopDown).IsOK());
}

TEST(VxPixelConverterJoinedTest, RefusesFormatsOfWhichNobodySaysWhereARowWouldBegin)
{
    const std::vector<std::uint8_t> bytes(1000);
    for (const char* name : {"Mono8", "Mono12", "YCbCr422_10p", "YCbCr411_8", "YUV411_8_UYYVYY",
                             "YCbCr420_8_YY_CbCr_Semiplanar", "RGB12V1Packed"}) {
        const std::uint32_t code = VxFindPixelFormat(std::string_view(name))->code;
        GuardedPicture to(VxPfnc::kBgr8, 5, 5, 0);

        EXPECT_FALSE(
            VxPixelConverter().Convert({bytes, code, 5, 5, 0, true}, to.View(), VxRowOrder::TopDown).IsOK())
            << name;
        EXPECT_FALSE(VxJoinedPictureBytes(code, 5, 5)) << name;
        EXPECT_TRUE(to.IsIntactOutside(0, 0, 0)) << name;
    }
}

TEST(VxPixelConverterJoinedTest, OnlyTheWholePictureIsRoundedUpToBytes)
{
    EXPECT_EQ(VxJoinedPictureBytes(kMono10p, 3, 5), 19u); // 150 bits
    EXPECT_EQ(VxJoinedPictureBytes(kMono12p, 1281, 720), 1'383'480u);
    EXPECT_EQ(VxJoinedPictureBytes(kMono12Packed, 1, 1), 2u); // 12 bits
    EXPECT_EQ(VxJoinedPictureBytes(0x01010037, 1, 9), 2u);    // Mono1p
    EXPECT_FALSE(VxJoinedPictureBytes(kMono10p, 0, 5));
    EXPECT_FALSE(VxJoinedPictureBytes(kMono10p, 5, 0));
    EXPECT_FALSE(VxJoinedPictureBytes(kMono10p, 0xFFFFFFFF, 0xFFFFFFFF));
    EXPECT_FALSE(VxJoinedPictureBytes(0x810C0001, 5, 5)); // a maker's own
}
