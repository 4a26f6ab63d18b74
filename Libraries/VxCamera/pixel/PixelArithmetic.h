#pragma once

#include "VxCamera/pixel/ColorCoefficients.h"
#include "VxCamera/pixel/RowKernels.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <span>

namespace pixel {

/// One pixel at a time: what every kernel computes, and what the fast ones use at the ends of rows.

struct Color {
    std::uint8_t blue;
    std::uint8_t green;
    std::uint8_t red;
    std::uint8_t alpha;
};

/// @return  the mean, halves rounded up
[[nodiscard]] constexpr unsigned Average(unsigned a, unsigned b)
{
    return (a + b + 1) / 2;
}

/// @return  the mean, halves rounded up
[[nodiscard]] constexpr unsigned Average(unsigned a, unsigned b, unsigned c, unsigned d)
{
    return (a + b + c + d + 2) / 4;
}

template <Target target>
constexpr std::size_t kTargetBytes = kTargetBytesPerPixel[static_cast<std::size_t>(target)];

/// Writes pixel x of a row.
template <Target target>
constexpr void PutColor(std::span<std::uint8_t> row, std::size_t x, Color color)
{
    const auto pixel = row.subspan(x * kTargetBytes<target>);
    pixel[0] = color.blue;
    pixel[1] = color.green;
    pixel[2] = color.red;
    if constexpr (target == Target::Bgra)
        pixel[3] = color.alpha;
}

/// Colour of one pixel of the row in the middle of three. Where there is no neighbour the one on the other
/// side counts instead, which has the same colour; in a picture of one row or column the pixel itself does.
/// @param above, row, below  same length, not empty
/// @param isRowRed           whether the row in the middle holds red
/// @param isPixelGreen       whether pixel x does
[[nodiscard]] constexpr Color DemosaicPixel(std::span<const std::uint8_t> above,
                                            std::span<const std::uint8_t> row,
                                            std::span<const std::uint8_t> below, std::size_t x, bool isRowRed,
                                            bool isPixelGreen)
{
    const std::size_t last = row.size() - 1;
    const std::size_t before = x > 0 ? x - 1 : std::min<std::size_t>(1, last);
    const std::size_t after = x < last ? x + 1 : last - std::min<std::size_t>(1, last);
    unsigned own = row[x];
    unsigned green = row[x];
    unsigned other = 0;
    if (isPixelGreen) {
        own = Average(row[before], row[after]);
        other = Average(above[x], below[x]);
    } else {
        green = Average(row[before], row[after], above[x], below[x]);
        other = Average(above[before], above[after], below[before], below[after]);
    }
    const unsigned red = isRowRed ? own : other;
    const unsigned blue = isRowRed ? other : own;
    return {static_cast<std::uint8_t>(blue), static_cast<std::uint8_t>(green), // averages of bytes are bytes
            static_cast<std::uint8_t>(red), kOpaque};
}

/// Pixels [begin, end) of both rows, one by one.
template <Target target>
constexpr void DemosaicPixels(const BayerRows& rows, BayerPhase phase, std::size_t begin, std::size_t end,
                              std::span<std::uint8_t> first, std::span<std::uint8_t> second)
{
    for (std::size_t x = begin; x < end; ++x) {
        const bool isFirstGreen = phase.isFirstPixelGreen == (x % 2 == 0);
        PutColor<target>(
            first, x,
            DemosaicPixel(rows.above, rows.first, rows.second, x, phase.isFirstRowRed, isFirstGreen));
        PutColor<target>(
            second, x,
            DemosaicPixel(rows.first, rows.second, rows.below, x, !phase.isFirstRowRed, !isFirstGreen));
    }
}

/// Colour from brightness and colour differences, by the formula at ColorCoefficients.
[[nodiscard]] constexpr Color ColorOf(std::uint8_t luma, std::uint8_t cb, std::uint8_t cr,
                                      const ColorCoefficients& k)
{
    const int y = k.luma * (luma - k.black) + kCoefficientHalf;
    const int c = cb - kChromaCentre;
    const int d = cr - kChromaCentre;
    const auto limited = [](int value) {
        constexpr int kLargest = 255;
        return static_cast<std::uint8_t>(
            std::min(std::max(value >> kCoefficientBits, 0), kLargest)); // fits: 0..255
    };
    return {limited(y + k.blueFromCb * c), limited(y + k.greenFromCb * c + k.greenFromCr * d),
            limited(y + k.redFromCr * d), kOpaque};
}

/// Bytes 0..3 of a group of two pixels that share their colour.
struct PairOffsets {
    std::size_t firstLuma;
    std::size_t cb;
    std::size_t secondLuma;
    std::size_t cr;
};

[[nodiscard]] constexpr PairOffsets OffsetsOf(PairRow layout)
{
    return layout == PairRow::Yuyv ? PairOffsets{0, 1, 2, 3} : PairOffsets{1, 0, 3, 2};
}

// Fixed by 4:2:2: two pixels in four bytes.
constexpr std::size_t kPairBytes = 4;

/// Converts the pixels [begin, end) of a row of pairs; begin is even.
template <PairRow layout, Target target>
constexpr void ConvertPairs(std::span<const std::uint8_t> source, std::span<std::uint8_t> destination,
                            std::size_t begin, std::size_t end, const ColorCoefficients& coefficients)
{
    constexpr PairOffsets kAt = OffsetsOf(layout);
    for (std::size_t x = begin; x < end; x += 2) {
        const std::size_t group = x / 2 * kPairBytes;
        const bool isWhole = group + kPairBytes <= source.size();
        const std::uint8_t cb = source[group + kAt.cb];
        const std::uint8_t cr = isWhole     ? source[group + kAt.cr]
                                : group > 0 ? source[group - kPairBytes + kAt.cr]
                                            : static_cast<std::uint8_t>(kChromaCentre); // fits: 128
        PutColor<target>(destination, x, ColorOf(source[group + kAt.firstLuma], cb, cr, coefficients));
        if (x + 1 < end)
            PutColor<target>(destination, x + 1,
                             ColorOf(source[group + kAt.secondLuma], cb, cr, coefficients));
    }
}

/// The bytes of a pixel of a row of whole pixels.
struct ChannelOffsets {
    std::size_t bytesPerPixel;
    std::size_t blue;
    std::size_t green;
    std::size_t red;
    std::size_t alpha; ///< bytesPerPixel when there is none
};

[[nodiscard]] constexpr ChannelOffsets OffsetsOf(InterleavedRow layout)
{
    switch (layout) {
    case InterleavedRow::Mono:
        return {1, 0, 0, 0, 1};
    case InterleavedRow::Rgb:
        return {3, 2, 1, 0, 3};
    case InterleavedRow::Bgr:
        return {3, 0, 1, 2, 3};
    case InterleavedRow::Rgba:
        return {4, 2, 1, 0, 3};
    case InterleavedRow::Bgra:
        break;
    }
    return {4, 0, 1, 2, 3};
}

/// Converts the pixels [begin, end) of a row of whole pixels.
template <InterleavedRow layout, Target target>
constexpr void ConvertInterleaved(std::span<const std::uint8_t> source, std::span<std::uint8_t> destination,
                                  std::size_t begin, std::size_t end)
{
    constexpr ChannelOffsets kAt = OffsetsOf(layout);
    for (std::size_t x = begin; x < end; ++x) {
        const auto from = source.subspan(x * kAt.bytesPerPixel, kAt.bytesPerPixel);
        const std::uint8_t alpha = kAt.alpha < kAt.bytesPerPixel ? from[kAt.alpha] : kOpaque;
        PutColor<target>(destination, x, {from[kAt.blue], from[kAt.green], from[kAt.red], alpha});
    }
}

} // namespace pixel
