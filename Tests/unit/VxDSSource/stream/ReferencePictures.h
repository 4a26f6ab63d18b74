#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
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
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
            for (std::size_t colour = 0; colour < 3; ++colour) {
                std::vector<std::uint8_t> around;
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
