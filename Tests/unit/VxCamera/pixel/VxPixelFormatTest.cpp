#include "VxCamera/pixel/VxPixelFormat.h"
#include "VxCamera/pixel/PixelFormatTable.h"

#include <gmock/gmock.h>

#include <array>
#include <cstdint>
#include <limits>
#include <map>
#include <set>
#include <string>
#include <string_view>
#include <utility>

namespace {

constexpr std::uint32_t kMono10p = 0x010A0046;
constexpr std::uint32_t kMono12Packed = 0x010C0006;
constexpr std::uint32_t kRgb8Planar = 0x02180021;
constexpr std::uint32_t kYCbCr420Semiplanar = 0x020C0112;
constexpr std::uint32_t kCustom = 0x810C0001; // a maker's own, 12 bits per pixel
constexpr std::uint32_t kLargest = std::numeric_limits<std::uint32_t>::max();

std::size_t TotalBytes(std::uint32_t code, std::uint32_t widthPx, std::uint32_t heightPx)
{
    const auto layout = VxLayOutPicture(code, widthPx, heightPx, 0);
    return layout ? layout->totalBytes : 0;
}

} // namespace

TEST(VxPixelFormatTest, HasEveryFormatOfTheConvention)
{
    constexpr std::size_t kFormatsOfTheConvention = 276;

    EXPECT_EQ(pixel::FormatTable().size(), kFormatsOfTheConvention);
}

TEST(VxPixelFormatTest, FindsEveryRowByItsCode)
{
    for (const VxPixelFormat& format : pixel::FormatTable())
        EXPECT_EQ(VxFindPixelFormat(format.code), &format) << format.name;
}

TEST(VxPixelFormatTest, FindsFormatsByName)
{
    ASSERT_NE(VxFindPixelFormat("BayerRG8"), nullptr);
    EXPECT_EQ(VxFindPixelFormat("BayerRG8")->code, 0x01080009u);
    EXPECT_EQ(VxFindPixelFormat("bayerrg8"), nullptr);
}

TEST(VxPixelFormatTest, FindsTheNewCodeOfANameWithTwo)
{
    ASSERT_NE(VxFindPixelFormat("R10"), nullptr);
    EXPECT_EQ(VxFindPixelFormat("R10")->code, 0x01100120u);
}

TEST(VxPixelFormatTest, KnowsNoOtherCodes)
{
    EXPECT_EQ(VxFindPixelFormat(0u), nullptr);
    EXPECT_EQ(VxFindPixelFormat(kCustom), nullptr);
    EXPECT_EQ(VxFindPixelFormat(kLargest), nullptr);
}

TEST(VxPixelFormatTest, NamedCodesHaveTheirNames)
{
    const std::array names{std::pair{VxPfnc::kMono8, "Mono8"},
                           std::pair{VxPfnc::kBayerGR8, "BayerGR8"},
                           std::pair{VxPfnc::kBayerRG8, "BayerRG8"},
                           std::pair{VxPfnc::kBayerGB8, "BayerGB8"},
                           std::pair{VxPfnc::kBayerBG8, "BayerBG8"},
                           std::pair{VxPfnc::kRgb8, "RGB8"},
                           std::pair{VxPfnc::kBgr8, "BGR8"},
                           std::pair{VxPfnc::kRgba8, "RGBa8"},
                           std::pair{VxPfnc::kBgra8, "BGRa8"},
                           std::pair{VxPfnc::kYuv422_8, "YUV422_8"},
                           std::pair{VxPfnc::kYuv422_8_Uyvy, "YUV422_8_UYVY"}};
    for (const auto& [code, name] : names) {
        ASSERT_NE(VxFindPixelFormat(code), nullptr) << name;
        EXPECT_EQ(VxFindPixelFormat(code)->name, name);
    }
}

TEST(VxPixelFormatTest, OrdersOfBayerFormatsAreThoseOfTheirNames)
{
    const std::map<std::string_view, VxPixelOrder> orders{{"GR", VxPixelOrder::BayerGR},
                                                          {"RG", VxPixelOrder::BayerRG},
                                                          {"GB", VxPixelOrder::BayerGB},
                                                          {"BG", VxPixelOrder::BayerBG}};
    constexpr std::size_t kBayerFormats = 4 * 11; // 4p, 8, 10, 10p, 10Packed, 12, 12p, 12Packed, 14, 14p, 16
    std::size_t count = 0;
    for (const VxPixelFormat& format : pixel::FormatTable())
        if (format.name.starts_with("Bayer")) {
            EXPECT_EQ(format.family, VxPixelFamily::Bayer) << format.name;
            EXPECT_EQ(format.order, orders.at(format.name.substr(5, 2))) << format.name;
            ++count;
        }
    EXPECT_EQ(count, kBayerFormats);
}

// Two ways to the same number: the bits that the code counts, and those that the row's columns add up to.
TEST(VxPixelFormatTest, ColumnsAgreeWithTheBitsInTheCode)
{
    const std::map<VxPixelOrder, double> components{
        {VxPixelOrder::Rgb, 3},      {VxPixelOrder::Bgr, 3},  {VxPixelOrder::Rgba, 4},
        {VxPixelOrder::Bgra, 4},     {VxPixelOrder::Uyv, 3},  {VxPixelOrder::Yuv, 3},
        {VxPixelOrder::Yuyv, 2},     {VxPixelOrder::Uyvy, 2}, {VxPixelOrder::Uyyvyy, 1.5},
        {VxPixelOrder::Yyuyyv, 1.5}, {VxPixelOrder::Rgbg, 2}, {VxPixelOrder::Bgrg, 2},
        {VxPixelOrder::Abc, 3},      {VxPixelOrder::Ac, 2}};
    for (const VxPixelFormat& format : pixel::FormatTable()) {
        const auto found = components.find(format.order);
        double perPixel = found != components.end() ? found->second : 1;
        if (format.planes == VxPixelPlanes::ChromaHalf)
            perPixel = 2;
        if (format.planes == VxPixelPlanes::ChromaQuarter)
            perPixel = 1.5;
        double bits = format.bitsPerComponent;
        if (format.packing == VxPixelPacking::Cells)
            bits = bits <= 8 ? 8 : bits <= 16 ? 16 : bits <= 32 ? 32 : 64;
        if (format.packing == VxPixelPacking::GevPacked)
            bits = 12;
        double expected = perPixel * bits;
        if (format.packing == VxPixelPacking::LsbPacked32 || format.name == "RGB10V1Packed")
            expected = 32;
        if (format.packing == VxPixelPacking::LsbPacked565)
            expected = 16;
        EXPECT_EQ(VxBitsPerPixel(format.code), expected) << format.name;
    }
}

TEST(VxPixelFormatTest, MatricesFollowTheNames)
{
    EXPECT_EQ(VxFindPixelFormat("YUV422_8")->matrix, VxColorMatrix::Bt601Full);
    EXPECT_EQ(VxFindPixelFormat("YCbCr422_8")->matrix, VxColorMatrix::Bt601Full);
    EXPECT_EQ(VxFindPixelFormat("YCbCr601_422_8")->matrix, VxColorMatrix::Bt601Limited);
    EXPECT_EQ(VxFindPixelFormat("YCbCr709_422_8_CbYCrY")->matrix, VxColorMatrix::Bt709Limited);
    EXPECT_EQ(VxFindPixelFormat("YCbCr2020_422_8")->matrix, VxColorMatrix::Bt2020Limited);
    EXPECT_EQ(VxFindPixelFormat("RGB8")->matrix, VxColorMatrix::None);
}

TEST(VxPixelFormatTest, CountsTheBitsOfUnknownFormats)
{
    EXPECT_EQ(VxBitsPerPixel(kCustom), 12u);
    EXPECT_EQ(VxRowBytes(kCustom, 10), 15u);
}

TEST(VxPixelFormatTest, RoundsRowsUpToWholeBytes)
{
    EXPECT_EQ(VxRowBytes(kMono10p, 4), 5u);
    EXPECT_EQ(VxRowBytes(kMono10p, 5), 7u); // 50 bits
    EXPECT_EQ(VxRowBytes(kMono12Packed, 1), 2u);
    EXPECT_EQ(VxRowBytes(VxPfnc::kYuv422_8, 3), 6u);
}

TEST(VxPixelFormatTest, RowsOfPlanesAreThoseOfTheFirst)
{
    EXPECT_EQ(VxRowBytes(kRgb8Planar, 10), 10u);
    EXPECT_EQ(VxRowBytes(kYCbCr420Semiplanar, 10), 10u);
}

TEST(VxPixelFormatTest, LargestRowDoesNotOverflow)
{
    EXPECT_EQ(VxRowBytes(VxPfnc::kBgra8, kLargest), std::uint64_t{kLargest} * 4);
}

TEST(VxPixelFormatTest, SizesOfVgaPicturesAreThoseOfTheConvention)
{
    EXPECT_EQ(TotalBytes(VxPfnc::kMono8, 640, 480), 307200u);
    EXPECT_EQ(TotalBytes(kMono10p, 640, 480), 384000u);
    EXPECT_EQ(TotalBytes(kMono12Packed, 640, 480), 460800u);
    EXPECT_EQ(TotalBytes(0x01100007, 640, 480), 614400u); // Mono16
    EXPECT_EQ(TotalBytes(VxPfnc::kYuv422_8, 640, 480), 614400u);
    EXPECT_EQ(TotalBytes(0x020C001E, 640, 480), 460800u); // YUV411_8_UYYVYY
    EXPECT_EQ(TotalBytes(VxPfnc::kRgb8, 640, 480), 921600u);
    EXPECT_EQ(TotalBytes(0x02300018, 640, 480), 1843200u); // RGB10
    EXPECT_EQ(TotalBytes(0x021E005C, 640, 480), 1152000u); // RGB10p
    EXPECT_EQ(TotalBytes(0x0220001D, 640, 480), 1228800u); // RGB10p32
    EXPECT_EQ(TotalBytes(0x0224005D, 640, 480), 1382400u); // RGB12p
}

TEST(VxPixelFormatTest, PlanesAddUp)
{
    EXPECT_EQ(TotalBytes(kRgb8Planar, 640, 480), 3u * 640 * 480);
    EXPECT_EQ(TotalBytes(kYCbCr420Semiplanar, 640, 480), 640u * 480 * 3 / 2);
    EXPECT_EQ(TotalBytes(0x02100113, 640, 480), 2u * 640 * 480); // YCbCr422_8_YY_CbCr_Semiplanar
}

TEST(VxPixelFormatTest, OddPicturesOfHalfChromaHaveWholePairs)
{
    EXPECT_EQ(TotalBytes(kYCbCr420Semiplanar, 5, 3), 15u + 6 * 2);
}

TEST(VxPixelFormatTest, PaddingStandsBehindEveryRow)
{
    const auto layout = VxLayOutPicture(VxPfnc::kBgr8, 5, 4, 1);

    ASSERT_TRUE(layout);
    EXPECT_EQ(layout->rowBytes, 15u);
    EXPECT_EQ(layout->strideBytes, 16u);
    EXPECT_EQ(layout->totalBytes, 64u);
    EXPECT_EQ(layout->usedBytes, 63u);
}

TEST(VxPixelFormatTest, PicturesWithoutSizeHaveNoLayout)
{
    EXPECT_FALSE(VxLayOutPicture(VxPfnc::kMono8, 0, 480, 0));
    EXPECT_FALSE(VxLayOutPicture(VxPfnc::kMono8, 640, 0, 0));
    EXPECT_FALSE(VxLayOutPicture(0, 640, 480, 0));
}

TEST(VxPixelFormatTest, PicturesThatDoNotFitIntoMemoryHaveNoLayout)
{
    constexpr std::uint32_t kData64 = 0x0140011D;

    EXPECT_FALSE(VxLayOutPicture(kData64, kLargest, kLargest, 0));
    EXPECT_FALSE(VxLayOutPicture(VxPfnc::kMono8, 1, 1, std::numeric_limits<std::size_t>::max()));
    EXPECT_FALSE(VxLayOutPicture(VxPfnc::kMono8, 1, 2, std::numeric_limits<std::size_t>::max() - 1));
    EXPECT_FALSE(VxLayOutPicture(kRgb8Planar, kLargest, kLargest, kLargest));
}

TEST(VxPixelFormatTest, LargestPictureOf32BitSizesHasALayout)
{
    const auto layout = VxLayOutPicture(VxPfnc::kMono8, kLargest, kLargest, 0);

    ASSERT_TRUE(layout);
    EXPECT_EQ(layout->totalBytes, std::size_t{kLargest} * kLargest);
}
