#pragma once

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <utility>
#include <vector>

/// Slow, plain pictures to compare with: rows from top to bottom, 3 bytes a pixel (blue, green, red).
struct ReferencePicture {
    std::size_t width = 0;
    std::size_t height = 0;
    std::vector<std::array<std::uint8_t, 3>> pixels;

    [[nodiscard]] const std::array<std::uint8_t, 3>& At(std::size_t x, std::size_t y) const
    {
        return pixels[y * width + x];
    }
};

/// A picture in which every pixel is different from its neighbours, and no two corners are alike.
inline ReferencePicture TestPicture(std::size_t width, std::size_t height)
{
    ReferencePicture picture{width, height, {}};
    std::uint32_t noise = 12345;
    for (std::size_t y = 0; y < height; ++y) {
        for (std::size_t x = 0; x < width; ++x) {
            noise = noise * 1664525 + 1013904223;
            picture.pixels.push_back({static_cast<std::uint8_t>(x * 7 + y),
                                      static_cast<std::uint8_t>(noise >> 24),
                                      static_cast<std::uint8_t>(y * 11 + (noise >> 16 & 31))});
        }
    }
    return picture;
}

/// The picture as a camera sends it in BGR8.
inline std::vector<std::uint8_t> AsBgr8(const ReferencePicture& picture)
{
    std::vector<std::uint8_t> bytes;
    for (const auto& pixel : picture.pixels)
        bytes.insert(bytes.end(), pixel.begin(), pixel.end());
    return bytes;
}

/// The picture as a bitmap's bytes: bottom-up or top-down, 3 or 4 bytes a pixel (the fourth is 255).
inline std::vector<std::uint8_t> AsBitmap(const ReferencePicture& picture, std::size_t bytesPerPixel,
                                          bool isBottomUp)
{
    std::vector<std::uint8_t> bytes;
    for (std::size_t row = 0; row < picture.height; ++row) {
        const std::size_t y = isBottomUp ? picture.height - 1 - row : row;
        for (std::size_t x = 0; x < picture.width; ++x) {
            bytes.insert(bytes.end(), picture.At(x, y).begin(), picture.At(x, y).end());
            if (bytesPerPixel == 4)
                bytes.push_back(255);
        }
    }
    return bytes;
}

/// Median of the square around each pixel, for each colour alone; beyond the edge the edge is repeated.
inline ReferencePicture Median(const ReferencePicture& picture, int aperture)
{
    ReferencePicture result = picture;
    const int radius = aperture / 2;
    const auto width = static_cast<int>(picture.width);
    const auto height = static_cast<int>(picture.height);
    std::vector<std::uint8_t> around;
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
            for (std::size_t colour = 0; colour < 3; ++colour) {
                around.clear();
                for (int dy = -radius; dy <= radius; ++dy)
                    for (int dx = -radius; dx <= radius; ++dx)
                        around.push_back(
                            picture.At(static_cast<std::size_t>(std::clamp(x + dx, 0, width - 1)),
                                       static_cast<std::size_t>(std::clamp(y + dy, 0, height - 1)))[colour]);
                std::ranges::nth_element(around,
                                         around.begin() + static_cast<std::ptrdiff_t>(around.size() / 2));
                result.pixels[static_cast<std::size_t>(y * width + x)][colour] = around[around.size() / 2];
            }
        }
    }
    return result;
}

/// Every pixel the mean of a block of so many by so many, rounded to the nearest.
inline ReferencePicture Halved(const ReferencePicture& picture)
{
    ReferencePicture result{picture.width / 2, picture.height / 2, {}};
    for (std::size_t y = 0; y < result.height; ++y) {
        for (std::size_t x = 0; x < result.width; ++x) {
            std::array<std::uint8_t, 3> mean{};
            for (std::size_t colour = 0; colour < 3; ++colour) {
                const int sum = picture.At(2 * x, 2 * y)[colour] + picture.At(2 * x + 1, 2 * y)[colour] +
                                picture.At(2 * x, 2 * y + 1)[colour] +
                                picture.At(2 * x + 1, 2 * y + 1)[colour];
                mean[colour] = static_cast<std::uint8_t>((sum + 2) / 4);
            }
            result.pixels.push_back(mean);
        }
    }
    return result;
}

/// The part of a picture from (left, top).
inline ReferencePicture Cropped(const ReferencePicture& picture, std::size_t left, std::size_t top,
                                std::size_t width, std::size_t height)
{
    ReferencePicture result{width, height, {}};
    for (std::size_t y = 0; y < height; ++y)
        for (std::size_t x = 0; x < width; ++x)
            result.pixels.push_back(picture.At(left + x, top + y));
    return result;
}

/// Which pixels of a line one pixel of a resized line is made of, and with what weights: they add up to 1.
using PixelShares = std::vector<std::pair<std::size_t, double>>;

/// Each new pixel is the mean of what it covers of the old line.
inline std::vector<PixelShares> SharesByArea(std::size_t from, std::size_t to)
{
    std::vector<PixelShares> line(to);
    // In units of 1/to of an old pixel, so that all numbers are whole: a new pixel is as wide as `from` of
    // them.
    for (std::size_t i = 0; i < to; ++i) {
        for (std::size_t at = i * from; at < (i + 1) * from;) {
            const std::size_t end = std::min((at / to + 1) * to, (i + 1) * from);
            line[i].emplace_back(at / to, static_cast<double>(end - at) / static_cast<double>(from));
            at = end;
        }
    }
    return line;
}

/// Each new pixel is made of two neighbours, the second of which has the share of the new pixel that lies
/// beyond the first: the mean of what it covers where the line grows, and a sample of it where it shrinks.
///
/// In double precision with the reciprocal of the ratio, as the picture library does it: where a new pixel
/// begins just where an old one does, rounding decides which of the two neighbours it shows.
inline std::vector<PixelShares> SharesOfTwo(std::size_t from, std::size_t to)
{
    const double growth = static_cast<double>(to) / static_cast<double>(from);
    const double step = 1.0 / growth;
    std::vector<PixelShares> line(to);
    for (std::size_t i = 0; i < to; ++i) {
        const auto first = static_cast<std::size_t>(static_cast<double>(i) * step);
        auto share = static_cast<float>(static_cast<double>(i + 1) - static_cast<double>(first + 1) * growth);
        share = share > 0 ? share - std::floor(share) : 0.0F;
        if (first + 1 < from)
            line[i] = {{first, 1.0 - share}, {first + 1, share}};
        else
            line[i] = {{from - 1, 1.0}};
    }
    return line;
}

/// The picture in another size by area interpolation, each colour rounded to the nearest. Where one side
/// grows, the other is made of two neighbours too, even if it shrinks: that is how the picture library
/// defines it.
inline ReferencePicture Resized(const ReferencePicture& picture, std::size_t width, std::size_t height)
{
    const bool shrinks = width <= picture.width && height <= picture.height;
    const auto columns = shrinks ? SharesByArea(picture.width, width) : SharesOfTwo(picture.width, width);
    const auto rows = shrinks ? SharesByArea(picture.height, height) : SharesOfTwo(picture.height, height);
    ReferencePicture result{width, height, {}};
    for (const PixelShares& row : rows) {
        for (const PixelShares& column : columns) {
            std::array<double, 3> sum{};
            for (const auto& [y, rowShare] : row)
                for (const auto& [x, columnShare] : column)
                    for (std::size_t colour = 0; colour < 3; ++colour)
                        sum[colour] += picture.At(x, y)[colour] * rowShare * columnShare;
            std::array<std::uint8_t, 3> pixel{};
            for (std::size_t colour = 0; colour < 3; ++colour)
                pixel[colour] = static_cast<std::uint8_t>(std::lround(sum[colour])); // a mean of bytes
            result.pixels.push_back(pixel);
        }
    }
    return result;
}

/// The picture upside down.
inline ReferencePicture TurnedOver(const ReferencePicture& picture)
{
    ReferencePicture result{picture.width, picture.height, {}};
    for (std::size_t y = picture.height; y-- > 0;)
        for (std::size_t x = 0; x < picture.width; ++x)
            result.pixels.push_back(picture.At(x, y));
    return result;
}

/// The picture as packed 4:2:2 by the output's formula, pixel by pixel.
inline std::vector<std::uint8_t> AsYuy2(const ReferencePicture& picture)
{
    std::vector<std::uint8_t> bytes;
    for (std::size_t i = 0; i < picture.pixels.size(); ++i) {
        const auto& [blue, green, red] = picture.pixels[i];
        const auto luma = static_cast<float>(0.299 * red + 0.587 * green + 0.114 * blue);
        const double chroma = i % picture.width % 2 == 0
                                  ? static_cast<double>(static_cast<float>(blue) - luma) * 0.565 + 128
                                  : static_cast<double>(static_cast<float>(red) - luma) * 0.713 + 128;
        bytes.push_back(static_cast<std::uint8_t>(luma));
        bytes.push_back(static_cast<std::uint8_t>(chroma));
    }
    return bytes;
}
