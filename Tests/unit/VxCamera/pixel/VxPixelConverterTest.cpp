#include "VxCamera/pixel/VxPixelConverter.h"

#include "VxCamera/pixel/PixelFormatTable.h"
#include "VxCamera/pixel/RowKernels.h"
#include "VxCamera/pixel/VxPixelFormat.h"
#include "unit/VxCamera/pixel/AllocationCount.h"
#include "unit/VxCamera/pixel/ReferencePicture.h"

#include <opencv2/imgproc.hpp>

#include <gmock/gmock.h>

#include <array>
#include <cmath>
#include <cstdint>
#include <limits>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

using testing::ElementsAre;
using testing::HasSubstr;

namespace {

constexpr std::size_t kCanaryBytes = 64;
constexpr std::uint8_t kCanary = 0xC5;

/// A picture in memory of exactly its size, between canaries; padding bytes are canaries, too.
class GuardedPicture {
public:
    GuardedPicture(std::uint32_t code, std::uint32_t widthPx, std::uint32_t heightPx,
                   std::size_t rowPaddingBytes)
        : m_layout(*VxLayOutPicture(code, widthPx, heightPx, rowPaddingBytes)),
          m_code(code),
          m_widthPx(widthPx),
          m_heightPx(heightPx),
          m_rowPaddingBytes(rowPaddingBytes),
          m_bytes(m_layout.usedBytes + 2 * kCanaryBytes, kCanary)
    {
    }

    [[nodiscard]] VxWritablePictureView View()
    {
        return {std::span(m_bytes).subspan(kCanaryBytes, m_layout.usedBytes), m_code, m_widthPx, m_heightPx,
                m_rowPaddingBytes};
    }
    [[nodiscard]] VxPictureView ConstView() const
    {
        return {std::span(m_bytes).subspan(kCanaryBytes, m_layout.usedBytes), m_code, m_widthPx, m_heightPx,
                m_rowPaddingBytes};
    }

    void SetRows(std::span<const std::uint8_t> unpadded)
    {
        for (std::size_t y = 0; y < m_heightPx; ++y)
            std::ranges::copy(unpadded.subspan(y * m_layout.rowBytes, m_layout.rowBytes),
                              m_bytes.begin() +
                                  static_cast<std::ptrdiff_t>(kCanaryBytes + y * m_layout.strideBytes));
    }

    [[nodiscard]] std::span<const std::uint8_t> MemoryRow(std::size_t y) const
    {
        return std::span(m_bytes).subspan(kCanaryBytes + y * m_layout.strideBytes, m_layout.rowBytes);
    }

    /// Whether every byte outside the part (widthPx x heightPx from the top left in memory) is a canary
    /// still.
    [[nodiscard]] bool IsIntactOutside(std::size_t usedRowBytes, std::size_t firstRow,
                                       std::size_t endRow) const
    {
        for (std::size_t i = 0; i < m_bytes.size(); ++i) {
            const std::size_t offset = i - kCanaryBytes; // wraps for the canaries in front, and is large then
            const std::size_t row = offset / m_layout.strideBytes;
            const bool isPixel = i >= kCanaryBytes && row >= firstRow && row < endRow &&
                                 offset % m_layout.strideBytes < usedRowBytes;
            if (!isPixel && m_bytes[i] != kCanary)
                return false;
        }
        return true;
    }

private:
    VxPictureLayout m_layout;
    std::uint32_t m_code;
    std::uint32_t m_widthPx;
    std::uint32_t m_heightPx;
    std::size_t m_rowPaddingBytes;
    std::vector<std::uint8_t> m_bytes;
};

/// What one conversion is tried with.
struct Case {
    std::uint32_t code;
    std::uint32_t targetCode;
    std::uint32_t widthPx;
    std::uint32_t heightPx;
    std::uint32_t targetWidthPx;
    std::uint32_t targetHeightPx;
    std::size_t sourcePadding;
    std::size_t targetPadding;
    VxRowOrder order;
};

reference::Picture ReferenceOf(std::uint32_t code, const reference::Source& source)
{
    const std::string name(VxFindPixelFormat(code)->name);
    if (name == "Mono8")
        return reference::FromChannels(source, "Y");
    if (name.starts_with("BayerGR"))
        return reference::FromBayer(source, "GRBG");
    if (name.starts_with("BayerRG"))
        return reference::FromBayer(source, "RGGB");
    if (name.starts_with("BayerGB"))
        return reference::FromBayer(source, "GBRG");
    if (name.starts_with("BayerBG"))
        return reference::FromBayer(source, "BGGR");
    if (name.starts_with("Y")) {
        const auto matrix = name.starts_with("YCbCr601")    ? reference::kLimited601
                            : name.starts_with("YCbCr709")  ? reference::kLimited709
                            : name.starts_with("YCbCr2020") ? reference::kLimited2020
                                                            : reference::kFull601;
        return reference::FromPairs(source, name.ends_with("Y") ? "UYVY" : "YUYV", matrix);
    }
    return reference::FromChannels(source, std::string_view(name).substr(0, name.size() - 1));
}

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
                                                  0x021000FB};
    return codes;
}

/// Differences that rounding explains; integer formulas must agree exactly, which a difference below 1/2
/// says.
constexpr double kRounding = 0.52;

void ExpectPixels(const Case& tried, const reference::Picture& expected, const GuardedPicture& actual)
{
    const std::size_t bytesPerPixel = tried.targetCode == VxPfnc::kBgr8 ? 3 : 4;
    const std::size_t columns = std::min(tried.widthPx, tried.targetWidthPx);
    const std::size_t rows = std::min(tried.heightPx, tried.targetHeightPx);
    for (std::size_t y = 0; y < rows; ++y) {
        const std::size_t memoryRow = tried.order == VxRowOrder::BottomUp ? tried.targetHeightPx - 1 - y : y;
        const auto row = actual.MemoryRow(memoryRow);
        for (std::size_t x = 0; x < columns; ++x)
            for (std::size_t channel = 0; channel < bytesPerPixel; ++channel)
                ASSERT_NEAR(row[x * bytesPerPixel + channel], expected.At(x, y)[channel], kRounding)
                    << "pixel " << x << ", " << y << ", channel " << channel;
    }
    const std::size_t firstRow = tried.order == VxRowOrder::BottomUp ? tried.targetHeightPx - rows : 0;
    EXPECT_TRUE(actual.IsIntactOutside(columns * bytesPerPixel, firstRow, firstRow + rows));
}

void Try(VxPixelConverter& converter, const Case& tried)
{
    SCOPED_TRACE(std::string(VxFindPixelFormat(tried.code)->name) + " " + std::to_string(tried.widthPx) +
                 "x" + std::to_string(tried.heightPx) + " to " +
                 std::string(VxFindPixelFormat(tried.targetCode)->name) + " " +
                 std::to_string(tried.targetWidthPx) + "x" + std::to_string(tried.targetHeightPx));
    const auto source = reference::RandomSource(tried.widthPx, tried.heightPx, VxBitsPerPixel(tried.code) / 8,
                                                tried.widthPx * 1000 + tried.heightPx);
    GuardedPicture from(tried.code, tried.widthPx, tried.heightPx, tried.sourcePadding);
    from.SetRows(source.bytes);
    GuardedPicture to(tried.targetCode, tried.targetWidthPx, tried.targetHeightPx, tried.targetPadding);

    const VxResult result = converter.Convert(from.ConstView(), to.View(), tried.order);

    ASSERT_TRUE(result.IsOK()) << result.GetDescription().GetAscii();
    ExpectPixels(tried, ReferenceOf(tried.code, source), to);
}

std::vector<pixel::InstructionSet> AvailableSets()
{
    std::vector<pixel::InstructionSet> sets;
    for (const auto set : {pixel::InstructionSet::Scalar, pixel::InstructionSet::Sse41,
                           pixel::InstructionSet::Avx2, pixel::InstructionSet::Avx512Vbmi})
        if (pixel::IsAvailable(set))
            sets.push_back(set);
    return sets;
}

/// Converts a small picture given by its bytes to BGR8.
std::vector<std::uint8_t> ToBgr(std::uint32_t code, std::uint32_t widthPx, std::uint32_t heightPx,
                                const std::vector<std::uint8_t>& bytes,
                                VxRowOrder order = VxRowOrder::TopDown)
{
    std::vector<std::uint8_t> converted(std::size_t{widthPx} * heightPx * 3);
    VxPixelConverter converter;
    const VxResult result = converter.Convert({bytes, code, widthPx, heightPx, 0},
                                              {converted, VxPfnc::kBgr8, widthPx, heightPx, 0}, order);
    EXPECT_TRUE(result.IsOK()) << result.GetDescription().GetAscii();
    return converted;
}

} // namespace

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

TEST(VxPixelConverterTest, EveryFormatOfEverySizeEqualsTheReference)
{
    constexpr std::array<std::uint32_t, 7> kHeightsPx{1, 2, 3, 4, 5, 6, 17};
    constexpr std::array<std::uint32_t, 14> kWidthsPx{1, 2, 3, 4, 5, 15, 16, 17, 33, 64, 66, 67, 97, 131};
    for (const auto set : AvailableSets()) {
        VxPixelConverter converter(set);
        for (const std::uint32_t code : ConvertedCodes())
            for (const std::uint32_t targetCode : {VxPfnc::kBgr8, VxPfnc::kBgra8})
                for (const std::uint32_t widthPx : kWidthsPx)
                    for (const std::uint32_t heightPx : kHeightsPx) {
                        const bool isOdd = (widthPx + heightPx) % 2 != 0;
                        Try(converter,
                            {code, targetCode, widthPx, heightPx, widthPx, heightPx, isOdd ? 5u : 0u,
                             isOdd ? 0u : 3u, isOdd ? VxRowOrder::TopDown : VxRowOrder::BottomUp});
                        if (HasFatalFailure())
                            return;
                    }
    }
}

TEST(VxPixelConverterTest, CommonPartIsWrittenWhenSizesDiffer)
{
    constexpr std::array<std::uint32_t, 5> kTargetWidthsPx{1, 33, 69, 70, 90};
    constexpr std::array<std::uint32_t, 5> kTargetHeightsPx{1, 2, 5, 6, 9};
    for (const auto set : AvailableSets()) {
        VxPixelConverter converter(set);
        for (const std::uint32_t code : ConvertedCodes())
            for (const std::uint32_t widthPx : kTargetWidthsPx)
                for (const std::uint32_t heightPx : kTargetHeightsPx)
                    for (const VxRowOrder order : {VxRowOrder::TopDown, VxRowOrder::BottomUp}) {
                        Try(converter, {code, VxPfnc::kBgr8, 70, 6, widthPx, heightPx, 0, 4, order});
                        if (HasFatalFailure())
                            return;
                    }
    }
}

TEST(VxPixelConverterTest, PicturesOfManySizesCanFollowEachOther)
{
    VxPixelConverter converter;
    for (const std::uint32_t widthPx : {9u, 200u, 1u, 80u})
        for (const std::uint32_t code : ConvertedCodes())
            Try(converter, {code, VxPfnc::kBgra8, widthPx, 3, widthPx, 3, 0, 0, VxRowOrder::BottomUp});
}

TEST(VxPixelConverterTest, SecondPictureOfTheSameSizeTakesNoMemory)
{
    constexpr std::uint32_t kBayerGB12Packed = 0x010C002C;
    for (const std::uint32_t code :
         {VxPfnc::kMono8, VxPfnc::kBayerRG8, kBayerGB12Packed, VxPfnc::kYuv422_8}) {
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

// Every row of the table: either it is converted, or the refusal names both formats; memory is never left.
TEST(VxPixelConverterTest, EveryFormatIsConvertedOrRefusedByName)
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

TEST(VxPixelConverterTest, RefusesOtherTargets)
{
    const GuardedPicture from(VxPfnc::kMono8, 4, 4, 0);
    GuardedPicture to(VxPfnc::kRgb8, 4, 4, 0);

    const VxResult result = VxPixelConverter().Convert(from.ConstView(), to.View(), VxRowOrder::TopDown);

    EXPECT_EQ(result.Code(), VxError::NotSupported);
    EXPECT_THAT(result.GetDescription().GetAscii(), HasSubstr("RGB8 (0x02180014)"));
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
