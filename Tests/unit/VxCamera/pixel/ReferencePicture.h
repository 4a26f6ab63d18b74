#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <random>
#include <string>
#include <string_view>
#include <vector>

/// Slow, obvious conversions to compare the library's with. They know formats by their names only.
namespace reference {

/// Blue, green, red, alpha as real numbers: what the formulas give before they are rounded.
using Pixel = std::array<double, 4>;

/// A picture of real numbers.
struct Picture {
    std::size_t widthPx = 0;
    std::size_t heightPx = 0;
    std::vector<Pixel> pixels;

    [[nodiscard]] const Pixel& At(std::size_t x, std::size_t y) const { return pixels[y * widthPx + x]; }
};

/// Bytes of a picture, and its size.
struct Source {
    std::size_t widthPx = 0;
    std::size_t heightPx = 0;
    std::vector<std::uint8_t> bytes;
    std::size_t rowPaddingBytes = 0; ///< behind each row of each plane
    bool areRowsJoined = false;      ///< they are one sequence of components
};

/// A picture of random bytes without padding; every seed gives another one, the same on every system.
[[nodiscard]] Source RandomSource(std::size_t widthPx, std::size_t heightPx, std::size_t bytesPerPixel,
                                  unsigned seed);

/// The picture that the name of a format says; empty for names of what is no picture, or whose bytes nobody
/// describes.
[[nodiscard]] std::optional<Picture> FromFormat(std::string_view name, const Source& source);

/// Brightness and colour differences as real numbers, and how they become colours.
struct Matrix {
    double black;
    double luma;
    double redFromCr;
    double greenFromCb;
    double greenFromCr;
    double blueFromCb;
};
constexpr Matrix kFull601{0, 1, 1.402, -0.344136, -0.714136, 1.772};
constexpr Matrix kLimited601{16, 1.164384, 1.596027, -0.391762, -0.812968, 2.017232};
constexpr Matrix kLimited709{16, 1.164384, 1.792741, -0.213249, -0.532909, 2.112402};
constexpr Matrix kLimited2020{16, 1.164384, 1.678674, -0.187326, -0.650424, 2.141772};

[[nodiscard]] Pixel FromYCbCr(double y, double cb, double cr, const Matrix& matrix);

} // namespace reference
