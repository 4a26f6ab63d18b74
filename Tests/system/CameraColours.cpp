#include "system/CameraColours.h"

#include "system/BilinearDemosaic.h"

#include "VxSimulator/picture/TestPicture.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <span>
#include <vector>

namespace {

using simulator::PixelLayout;
using Pixel = std::array<std::uint8_t, 3>; // blue, green, red

ReferencePicture ColoursOfMosaic(std::span<const std::byte> bytes, std::uint32_t widthPx,
                                 std::uint32_t heightPx, PixelLayout layout)
{
    using enum BilinearDemosaic::Filter;
    BilinearDemosaic::Filter rows[2][2] = {{Red, Green}, {Green, Blue}};
    if (layout == PixelLayout::BayerGR || layout == PixelLayout::BayerBG)
        std::swap(rows[0][0], rows[0][1]), std::swap(rows[1][0], rows[1][1]);
    if (layout == PixelLayout::BayerGB || layout == PixelLayout::BayerBG)
        std::swap(rows[0], rows[1]);
    const BilinearDemosaic colours(bytes, widthPx, rows[0], rows[1]);
    ReferencePicture picture{widthPx, heightPx, {}};
    for (std::uint32_t y = 0; y < heightPx; ++y) {
        for (std::uint32_t x = 0; x < widthPx; ++x) {
            const simulator::Colour colour = colours.At(x, y);
            picture.pixels.push_back({colour.blue, colour.green, colour.red});
        }
    }
    return picture;
}

std::uint8_t Level(double value)
{
    return static_cast<std::uint8_t>(std::lround(std::clamp(value, 0.0, 255.0)));
}

/// The inverse of BT.601's sums, which are 0.299 R + 0.587 G + 0.114 B for brightness.
Pixel ColourOf(double y, double u, double v, YuvRange range)
{
    if (range == YuvRange::Limited) {
        y = (y - 16) * 255 / 219;
        u = (u - 128) * 255 / 224 + 128;
        v = (v - 128) * 255 / 224 + 128;
    }
    const double blue = y + 2 * (1 - 0.114) * (u - 128);
    const double red = y + 2 * (1 - 0.299) * (v - 128);
    const double green = (y - 0.299 * red - 0.114 * blue) / 0.587;
    return {Level(blue), Level(green), Level(red)};
}

/// @param layout  of two pixels, which share their colour
ReferencePicture ColoursOfPairs(std::span<const std::byte> bytes, std::uint32_t widthPx,
                                std::uint32_t heightPx, PixelLayout layout, YuvRange range)
{
    const std::size_t luma = layout == PixelLayout::Uyvy ? 1 : 0;
    const std::size_t chroma = 1 - luma;
    ReferencePicture picture{widthPx, heightPx, {}};
    for (std::size_t at = 0; at + 4 <= bytes.size(); at += 4) {
        const auto value = [&](std::size_t offset) { return static_cast<double>(bytes[at + offset]); };
        for (const std::size_t pixel : {std::size_t{0}, std::size_t{2}})
            picture.pixels.push_back(ColourOf(value(luma + pixel), value(chroma), value(chroma + 2), range));
    }
    return picture;
}

/// @param order  where the blue, the green and the red byte of a pixel lie
ReferencePicture ColoursOfBytes(std::span<const std::byte> bytes, std::uint32_t widthPx,
                                std::uint32_t heightPx, std::size_t bytesPerPixel,
                                const std::array<std::size_t, 3>& order)
{
    ReferencePicture picture{widthPx, heightPx, {}};
    for (std::size_t at = 0; at + bytesPerPixel <= bytes.size(); at += bytesPerPixel)
        picture.pixels.push_back({static_cast<std::uint8_t>(bytes[at + order[0]]),
                                  static_cast<std::uint8_t>(bytes[at + order[1]]),
                                  static_cast<std::uint8_t>(bytes[at + order[2]])});
    return picture;
}

} // namespace

ReferencePicture ColoursOfCamera(std::uint64_t frameNumber, std::uint32_t widthPx, std::uint32_t heightPx,
                                 const simulator::PictureFormat& format, YuvRange range)
{
    const std::vector<std::byte> sent = simulator::TestPicture(frameNumber, widthPx, heightPx, format.code);
    EXPECT_EQ(sent.size(), simulator::PictureBytes(format, widthPx, heightPx));
    if (simulator::IsBayer(format.layout))
        return ColoursOfMosaic(sent, widthPx, heightPx, format.layout);
    if (simulator::SharesColour(format.layout))
        return ColoursOfPairs(sent, widthPx, heightPx, format.layout, range);
    std::array<std::size_t, 3> order{0, 1, 2};
    if (format.layout == PixelLayout::Grey)
        order = {0, 0, 0};
    else if (format.layout == PixelLayout::Rgb || format.layout == PixelLayout::Rgba)
        order = {2, 1, 0};
    return ColoursOfBytes(sent, widthPx, heightPx, format.bytesPerPixel, order);
}
