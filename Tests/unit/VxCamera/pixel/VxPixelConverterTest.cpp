#include "VxCamera/pixel/VxPixelConverter.h"

#include "VxCamera/pixel/VxPixelFormat.h"
#include "unit/VxCamera/pixel/AllocationCount.h"
#include "unit/VxCamera/pixel/ConversionTrial.h"
#include "unit/VxCamera/pixel/GuardedPicture.h"
#include "unit/VxCamera/pixel/ReferencePicture.h"

#include <opencv2/imgproc.hpp>

#include <gmock/gmock.h>

#include <array>
#include <cstdint>
#include <limits>
#include <utility>
#include <vector>

using testing::ElementsAre;
using testing::HasSubstr;

TEST(VxPixelConverterTest, GreyBecomesThreeEqualColors)
{
    EXPECT_THAT(ToBgr(VxPfnc::kMono8, 2, 1, {7, 200}), ElementsAre(7, 7, 7, 200, 200, 200));
}

TEST(VxPixelConverterTest, RedAndBlueChangePlaces)
{
    EXPECT_THAT(ToBgr(VxPfnc::kRgb8, 2, 1, {1, 2, 3, 4, 5, 6}), ElementsAre(3, 2, 1, 6, 5, 4));
}

TEST(VxPixelConverterTest, BottomUpStartsWithTheLastRow)
{
    EXPECT_THAT(ToBgr(VxPfnc::kMono8, 1, 3, {1, 2, 3}, VxRowOrder::BottomUp),
                ElementsAre(3, 3, 3, 2, 2, 2, 1, 1, 1));
}

TEST(VxPixelConverterTest, AlphaIsKeptWhereTheSourceHasIt)
{
    const std::array<std::uint8_t, 4> source{1, 2, 3, 77};
    std::array<std::uint8_t, 4> converted{};

    ASSERT_TRUE(VxPixelConverter()
                    .Convert({source, VxPfnc::kRgba8, 1, 1, 0}, {converted, VxPfnc::kBgra8, 1, 1, 0},
                             VxRowOrder::TopDown)
                    .IsOK());

    EXPECT_THAT(converted, ElementsAre(3, 2, 1, 77));
}

TEST(VxPixelConverterTest, AlphaIsOpaqueWhereTheSourceHasNone)
{
    const std::array<std::uint8_t, 1> source{9};
    std::array<std::uint8_t, 4> converted{};

    ASSERT_TRUE(VxPixelConverter()
                    .Convert({source, VxPfnc::kMono8, 1, 1, 0}, {converted, VxPfnc::kBgra8, 1, 1, 0},
                             VxRowOrder::TopDown)
                    .IsOK());

    EXPECT_THAT(converted, ElementsAre(9, 9, 9, 255));
}

//   R  10  G  20  R  30        The pixel in the middle is blue: its green is the mean of 20, 40, 60 and 81
//   (50.25), G  40  B  50  G  60        its red that of 10, 30, 70 and 93 (50.75). R  70  G  81  R  93
TEST(VxPixelConverterTest, DemosaicsByMeansOfNeighbours)
{
    const auto converted = ToBgr(VxPfnc::kBayerRG8, 3, 3, {10, 20, 30, 40, 50, 60, 70, 81, 93});
    const auto at = [&](std::size_t x, std::size_t y) {
        const std::size_t first = (y * 3 + x) * 3;
        return std::array{converted[first], converted[first + 1], converted[first + 2]};
    };

    EXPECT_THAT(at(1, 1), ElementsAre(50, 50, 51));
    // Corner: red 10; green of the mirrored picture (20 + 20 + 40 + 40) / 4, blue 50 from all corners.
    EXPECT_THAT(at(0, 0), ElementsAre(50, 30, 10));
    // Upper edge: green 20; red (10 + 30) / 2, blue (50 + 50) / 2.
    EXPECT_THAT(at(1, 0), ElementsAre(50, 20, 20));
    // Left edge: green 40; blue (50 + 50) / 2, red (10 + 70) / 2.
    EXPECT_THAT(at(0, 1), ElementsAre(50, 40, 40));
    // Last corner: red 93; green (81 + 81 + 60 + 60 + 2) / 4 = 71, blue 50.
    EXPECT_THAT(at(2, 2), ElementsAre(50, 71, 93));
}

TEST(VxPixelConverterTest, EveryBayerPatternGivesItsUniformColor)
{
    constexpr std::uint8_t kRed = 200;
    constexpr std::uint8_t kGreen = 120;
    constexpr std::uint8_t kBlue = 40;
    const std::array patterns{
        std::pair{VxPfnc::kBayerGR8, std::array{kGreen, kRed, kBlue, kGreen}},
        std::pair{VxPfnc::kBayerRG8, std::array{kRed, kGreen, kGreen, kBlue}},
        std::pair{VxPfnc::kBayerGB8, std::array{kGreen, kBlue, kRed, kGreen}},
        std::pair{VxPfnc::kBayerBG8, std::array{kBlue, kGreen, kGreen, kRed}},
    };
    constexpr std::uint32_t kSizePx = 7;
    for (const auto& [code, cell] : patterns) {
        std::vector<std::uint8_t> bytes;
        for (std::uint32_t i = 0; i < kSizePx * kSizePx; ++i)
            bytes.push_back(cell[i / kSizePx % 2 * 2 + i % kSizePx % 2]);

        const auto converted = ToBgr(code, kSizePx, kSizePx, bytes);

        for (std::size_t i = 0; i < converted.size(); i += 3)
            ASSERT_THAT(std::vector(converted.begin() + static_cast<std::ptrdiff_t>(i),
                                    converted.begin() + static_cast<std::ptrdiff_t>(i + 3)),
                        ElementsAre(kBlue, kGreen, kRed))
                << VxFindPixelFormat(code)->name << " pixel " << i / 3;
    }
}

TEST(VxPixelConverterTest, OneBayerPixelGivesGrey)
{
    EXPECT_THAT(ToBgr(VxPfnc::kBayerRG8, 1, 1, {90}), ElementsAre(90, 90, 90));
    EXPECT_THAT(ToBgr(VxPfnc::kBayerGR8, 1, 1, {90}), ElementsAre(90, 90, 90));
}

// Y 100, Cb 90, Cr 160 in three families; 16 and 32 with no difference are greys.
TEST(VxPixelConverterTest, DifferencesFollowTheMatrixOfTheName)
{
    const std::vector<std::uint8_t> yuyv{100, 90, 100, 160};
    const std::vector<std::uint8_t> uyvy{90, 100, 160, 100};

    EXPECT_THAT(ToBgr(VxPfnc::kYuv422_8, 2, 1, yuyv), ElementsAre(33, 90, 145, 33, 90, 145));
    EXPECT_THAT(ToBgr(VxPfnc::kYuv422_8_Uyvy, 2, 1, uyvy), ElementsAre(33, 90, 145, 33, 90, 145));
    EXPECT_THAT(ToBgr(0x0210003E, 2, 1, yuyv), ElementsAre(21, 87, 149, 21, 87, 149)); // YCbCr601_422_8
    EXPECT_THAT(ToBgr(0x02100041, 2, 1, yuyv), ElementsAre(18, 89, 155, 18, 89, 155)); // YCbCr709_422_8
    EXPECT_THAT(ToBgr(VxPfnc::kYuv422_8, 2, 1, {16, 128, 32, 128}), ElementsAre(16, 16, 16, 32, 32, 32));
}

TEST(VxPixelConverterTest, LastPixelOfAnOddRowTakesTheDifferenceOfThePairBefore)
{
    EXPECT_THAT(ToBgr(VxPfnc::kYuv422_8, 3, 1, {100, 90, 100, 160, 100, 90}),
                ElementsAre(33, 90, 145, 33, 90, 145, 33, 90, 145));
    EXPECT_THAT(ToBgr(VxPfnc::kYuv422_8, 1, 1, {100, 128}), ElementsAre(100, 100, 100));
}

TEST(VxPixelConverterTest, SecondPictureOfTheSameSizeTakesNoMemory)
{
    constexpr std::uint32_t kBayerGB12Packed = 0x010C002C;
    constexpr std::uint32_t kRgb16Planar = 0x02300024;
    for (const std::uint32_t code :
         {VxPfnc::kMono8, VxPfnc::kBayerRG8, kBayerGB12Packed, VxPfnc::kYuv422_8, kRgb16Planar}) {
        const GuardedPicture from(code, 65, 7, 0);
        GuardedPicture to(VxPfnc::kBgr8, 65, 7, 0);
        VxPixelConverter converter;
        ASSERT_TRUE(converter.Convert(from.ConstView(), to.View(), VxRowOrder::TopDown).IsOK());

        const std::size_t before = AllocationCount();
        const bool isConverted = converter.Convert(from.ConstView(), to.View(), VxRowOrder::BottomUp).IsOK();
        const std::size_t after = AllocationCount();

        EXPECT_TRUE(isConverted);
        EXPECT_EQ(after, before) << VxFindPixelFormat(code)->name;
    }
}

// OpenCV names the pattern by the second row from its second column on, so its "BG" is our RG. It has no rule
// for the outermost pixels but to repeat the next ones, so these are left out.
TEST(VxPixelConverterTest, InnerBayerPixelsEqualThoseOfOpenCv)
{
    const std::array patterns{std::pair{VxPfnc::kBayerRG8, cv::COLOR_BayerBG2BGR},
                              std::pair{VxPfnc::kBayerGR8, cv::COLOR_BayerGB2BGR},
                              std::pair{VxPfnc::kBayerGB8, cv::COLOR_BayerGR2BGR},
                              std::pair{VxPfnc::kBayerBG8, cv::COLOR_BayerRG2BGR}};
    constexpr int kWidthPx = 150;
    constexpr int kHeightPx = 21;
    for (const auto& [code, openCvCode] : patterns) {
        auto source = reference::RandomSource(kWidthPx, kHeightPx, 1, code);
        cv::Mat expected;
        cv::cvtColor(cv::Mat(kHeightPx, kWidthPx, CV_8UC1, source.bytes.data()), expected, openCvCode);

        const auto converted = ToBgr(code, kWidthPx, kHeightPx, source.bytes);

        for (int y = 1; y < kHeightPx - 1; ++y)
            for (int x = 1; x < kWidthPx - 1; ++x)
                for (int channel = 0; channel < 3; ++channel)
                    ASSERT_EQ(converted[static_cast<std::size_t>((y * kWidthPx + x) * 3 + channel)],
                              expected.at<cv::Vec3b>(y, x)[channel])
                        << VxFindPixelFormat(code)->name << " pixel " << x << ", " << y;
    }
}

TEST(VxPixelConverterTest, DeepAndPackedFormatsKeepTheirHighestBits)
{
    EXPECT_THAT(ToBgr(0x010C0047, 2, 1, {0xAB, 0xCD, 0xEF}),
                ElementsAre(0xDA, 0xDA, 0xDA, 0xEF, 0xEF, 0xEF)); // Mono12p
    EXPECT_THAT(ToBgr(0x02300033, 1, 1, {0x11, 0x22, 0x33, 0x44, 0x55, 0x66}),
                ElementsAre(0x66, 0x44, 0x22)); // RGB16
}

// A 12-bit Bayer picture is the 8-bit one of its high bits, whatever the low bits are.
TEST(VxPixelConverterTest, PackedBayerPicturesEqualThoseOfTheirHighBits)
{
    constexpr std::uint32_t kBayerGB12Packed = 0x010C002C;
    for (const std::uint32_t widthPx : {1u, 2u, 7u, 70u})
        for (const std::uint32_t heightPx : {1u, 2u, 3u, 4u, 5u, 8u, 9u}) {
            const auto high = reference::RandomSource(widthPx, heightPx, 1, widthPx);
            const std::size_t rowBytes = VxRowBytes(kBayerGB12Packed, widthPx);
            auto packed = reference::RandomSource(rowBytes, heightPx, 1, heightPx).bytes;
            for (std::size_t y = 0; y < heightPx; ++y)
                for (std::size_t x = 0; x < widthPx; ++x)
                    packed[y * rowBytes + x / 2 * 3 + (x % 2 == 0 ? 0 : 2)] = high.bytes[y * widthPx + x];

            EXPECT_EQ(ToBgr(kBayerGB12Packed, widthPx, heightPx, packed),
                      ToBgr(VxPfnc::kBayerGB8, widthPx, heightPx, high.bytes))
                << widthPx << "x" << heightPx;
        }
}

TEST(VxPixelConverterTest, RefusesOtherTargets)
{
    const GuardedPicture from(VxPfnc::kMono8, 4, 4, 0);
    GuardedPicture to(VxPfnc::kRgb8, 4, 4, 0);

    const VxResult result = VxPixelConverter().Convert(from.ConstView(), to.View(), VxRowOrder::TopDown);

    EXPECT_EQ(result.Code(), VxError::NotSupported);
    EXPECT_THAT(result.GetDescription().GetAscii(), HasSubstr("4x4 Mono8 (0x01080001)"));
    EXPECT_THAT(result.GetDescription().GetAscii(), HasSubstr("4x4 RGB8 (0x02180014)"));
    EXPECT_TRUE(to.IsIntactOutside(0, 0, 0));
}

TEST(VxPixelConverterTest, RefusesUnknownFormats)
{
    const std::vector<std::uint8_t> bytes(64);
    GuardedPicture to(VxPfnc::kBgr8, 4, 4, 0);

    const VxResult result =
        VxPixelConverter().Convert({bytes, 0x810C0001, 4, 4, 0}, to.View(), VxRowOrder::TopDown);

    EXPECT_EQ(result.Code(), VxError::NotSupported);
    EXPECT_THAT(result.GetDescription().GetAscii(), HasSubstr("0x810C0001"));
}

TEST(VxPixelConverterTest, RefusesADestinationThatIsOneByteTooSmall)
{
    const GuardedPicture from(VxPfnc::kMono8, 5, 4, 0);
    GuardedPicture to(VxPfnc::kBgr8, 5, 4, 1);
    VxWritablePictureView view = to.View();
    view.bytes = view.bytes.first(view.bytes.size() - 1);

    const VxResult result = VxPixelConverter().Convert(from.ConstView(), view, VxRowOrder::TopDown);

    EXPECT_EQ(result.Code(), VxError::BufferTooSmall);
    EXPECT_THAT(result.GetDescription().GetAscii(), HasSubstr("needs 63 bytes of memory and has 62"));
    EXPECT_THAT(result.GetDescription().GetAscii(), HasSubstr("5x4 BGR8 (0x02180015)"));
    EXPECT_THAT(result.GetDescription().GetAscii(), HasSubstr("5x4 Mono8 (0x01080001)"));
    EXPECT_TRUE(to.IsIntactOutside(0, 0, 0));
}

TEST(VxPixelConverterTest, RefusesASourceThatIsOneByteTooSmall)
{
    const GuardedPicture from(VxPfnc::kBayerRG8, 5, 4, 1);
    GuardedPicture to(VxPfnc::kBgr8, 5, 4, 0);
    VxPictureView view = from.ConstView();
    view.bytes = view.bytes.first(view.bytes.size() - 1);

    const VxResult result = VxPixelConverter().Convert(view, to.View(), VxRowOrder::TopDown);

    EXPECT_EQ(result.Code(), VxError::InvalidParameter);
    EXPECT_THAT(result.GetDescription().GetAscii(), HasSubstr("source"));
    EXPECT_TRUE(to.IsIntactOutside(0, 0, 0));
}

TEST(VxPixelConverterTest, RefusesPicturesWithoutSize)
{
    const GuardedPicture from(VxPfnc::kMono8, 4, 4, 0);
    GuardedPicture to(VxPfnc::kBgr8, 4, 4, 0);
    VxPictureView emptySource = from.ConstView();
    emptySource.widthPx = 0;
    VxWritablePictureView emptyTarget = to.View();
    emptyTarget.heightPx = 0;

    EXPECT_EQ(VxPixelConverter().Convert(emptySource, to.View(), VxRowOrder::TopDown).Code(),
              VxError::InvalidParameter);
    EXPECT_EQ(VxPixelConverter().Convert(from.ConstView(), emptyTarget, VxRowOrder::TopDown).Code(),
              VxError::InvalidParameter);
}

TEST(VxPixelConverterTest, RefusesSizesThatOverflow)
{
    constexpr std::uint32_t kLargest = std::numeric_limits<std::uint32_t>::max();
    const GuardedPicture from(VxPfnc::kMono8, 4, 4, 0);
    GuardedPicture to(VxPfnc::kBgr8, 4, 4, 0);
    VxPictureView huge = from.ConstView();
    huge.rowPaddingBytes = std::numeric_limits<std::size_t>::max() / 2;
    VxWritablePictureView wide = to.View();
    wide.widthPx = kLargest;
    wide.heightPx = kLargest;

    EXPECT_EQ(VxPixelConverter().Convert(huge, to.View(), VxRowOrder::TopDown).Code(),
              VxError::InvalidParameter);
    EXPECT_FALSE(VxPixelConverter().Convert(from.ConstView(), wide, VxRowOrder::TopDown).IsOK());
    EXPECT_TRUE(to.IsIntactOutside(0, 0, 0));
}

TEST(VxPixelConverterTest, RefusesPicturesThatOverlap)
{
    std::vector<std::uint8_t> memory(100);

    const VxResult result = VxPixelConverter().Convert(
        {std::span<const std::uint8_t>(memory).subspan(10), VxPfnc::kMono8, 3, 3, 0},
        {memory, VxPfnc::kBgr8, 3, 3, 0}, VxRowOrder::TopDown);

    EXPECT_EQ(result.Code(), VxError::InvalidParameter);
}
