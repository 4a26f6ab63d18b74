#include "VxSimulator/picture/PixelEncoder.h"

#include "support/Bytes.h"

#include <gtest/gtest.h>

#include <array>

namespace {

using namespace simulator;
using bytes::FromHex;

constexpr std::array kTwo{Colour{0x10, 0x20, 0x30}, Colour{0x40, 0x50, 0x60}};

bytes::Vector Encode(PixelLayout layout, std::span<const Colour> colours, std::size_t size,
                     std::uint32_t x = 0, std::uint32_t y = 0)
{
    bytes::Vector out(size);
    EncodePixels(layout, colours, x, y, out);
    return out;
}

TEST(PixelEncoderTest, RgbHasRedFirst)
{
    EXPECT_EQ(Encode(PixelLayout::Rgb, kTwo, 6), FromHex("10 20 30 40 50 60"));
    EXPECT_EQ(Encode(PixelLayout::Rgba, kTwo, 8), FromHex("10 20 30 FF 40 50 60 FF"));
}

TEST(PixelEncoderTest, BgrHasBlueFirst)
{
    EXPECT_EQ(Encode(PixelLayout::Bgr, kTwo, 6), FromHex("30 20 10 60 50 40"));
    EXPECT_EQ(Encode(PixelLayout::Bgra, kTwo, 8), FromHex("30 20 10 FF 60 50 40 FF"));
}

TEST(PixelEncoderTest, GreyIsTheBrightness)
{
    constexpr std::array kColours{kBlack, kWhite, Colour{255, 0, 0}, Colour{0, 255, 0}, Colour{0, 0, 255}};

    // 0.299, 0.587 and 0.114 of 255, rounded: 76.2, 149.7, 29.1; in 1/256 blue is 29/256 * 255 = 28.9.
    EXPECT_EQ(Encode(PixelLayout::Grey, kColours, 5), FromHex("00 FF 4D 95 1D"));
}

TEST(PixelEncoderTest, EveryGreyKeepsItsValue)
{
    for (int value = 0; value < 256; ++value) {
        const Colour colour = Grey(static_cast<std::uint8_t>(value));

        EXPECT_EQ(Encode(PixelLayout::Grey, std::array{colour}, 1)[0], static_cast<std::byte>(value));
    }
}

TEST(PixelEncoderTest, ABayerNameTellsTheFirstTwoPixelsOfTheFirstLine)
{
    EXPECT_EQ(Encode(PixelLayout::BayerRG, kTwo, 2, 0, 0), FromHex("10 50"));
    EXPECT_EQ(Encode(PixelLayout::BayerGR, kTwo, 2, 0, 0), FromHex("20 40"));
    EXPECT_EQ(Encode(PixelLayout::BayerGB, kTwo, 2, 0, 0), FromHex("20 60"));
    EXPECT_EQ(Encode(PixelLayout::BayerBG, kTwo, 2, 0, 0), FromHex("30 50"));
}

TEST(PixelEncoderTest, TheSecondBayerLineCompletesTheCell)
{
    EXPECT_EQ(Encode(PixelLayout::BayerRG, kTwo, 2, 0, 1), FromHex("20 60"));
    EXPECT_EQ(Encode(PixelLayout::BayerGR, kTwo, 2, 0, 1), FromHex("30 50"));
    EXPECT_EQ(Encode(PixelLayout::BayerGB, kTwo, 2, 0, 1), FromHex("10 50"));
    EXPECT_EQ(Encode(PixelLayout::BayerBG, kTwo, 2, 0, 1), FromHex("20 40"));
}

TEST(PixelEncoderTest, ABayerPixelShowsTheColourOfItsPlace)
{
    EXPECT_EQ(Encode(PixelLayout::BayerRG, kTwo, 2, 7, 4), FromHex("20 40"));
    EXPECT_EQ(Encode(PixelLayout::BayerRG, kTwo, 2, 7, 5), FromHex("30 50"));
}

TEST(PixelEncoderTest, YuyvAndUyvyDifferInTheOrderOfTheirBytes)
{
    constexpr std::array kRedPair{Colour{255, 0, 0}, Colour{255, 0, 0}};

    // BT.601, full range: Y 76.2, U 128 - 43.03, V 128 + 127.5 and not above 255.
    EXPECT_EQ(Encode(PixelLayout::Yuyv, kRedPair, 4), FromHex("4C 55 4C FF"));
    EXPECT_EQ(Encode(PixelLayout::Uyvy, kRedPair, 4), FromHex("55 4C FF 4C"));
}

TEST(PixelEncoderTest, GreyHasNoChroma)
{
    constexpr std::array kPair{kBlack, kWhite};

    EXPECT_EQ(Encode(PixelLayout::Yuyv, kPair, 4), FromHex("00 80 FF 80"));
}

TEST(PixelEncoderTest, APairSharesTheMeanOfItsChroma)
{
    constexpr std::array kPair{Colour{0, 0, 255}, kBlack};

    // Blue: Y 29.07, U 255.5, V 107.27; black: 0, 128, 128. Means: U 191.75, V 117.6.
    EXPECT_EQ(Encode(PixelLayout::Yuyv, kPair, 4), FromHex("1D C0 00 76"));
}

TEST(PixelEncoderTest, NoColourLeavesTheRangeOfAByte)
{
    constexpr std::array kCorners{kBlack,
                                  kWhite,
                                  Colour{255, 0, 0},
                                  Colour{0, 255, 0},
                                  Colour{0, 0, 255},
                                  Colour{255, 255, 0},
                                  Colour{0, 255, 255},
                                  Colour{255, 0, 255}};
    constexpr std::array<double, 3> kU{-0.168736, -0.331264, 0.5};
    constexpr std::array<double, 3> kV{0.5, -0.418688, -0.081312};

    for (const Colour& c : kCorners) {
        const auto pair = Encode(PixelLayout::Yuyv, std::array{c, c}, 4);

        const double u = 128 + kU[0] * c.red + kU[1] * c.green + kU[2] * c.blue;
        const double v = 128 + kV[0] * c.red + kV[1] * c.green + kV[2] * c.blue;
        EXPECT_NEAR(static_cast<double>(pair[1]), u, 0.51);
        EXPECT_NEAR(static_cast<double>(pair[3]), v, 0.51);
    }
}

} // namespace
