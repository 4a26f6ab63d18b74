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
    case InterleavedRow::Rgbx:
        return {4, 2, 1, 0, 4};
    case InterleavedRow::Xbgr:
        return {4, 1, 2, 3, 4};
    case InterleavedRow::Mono32:
        return {4, 3, 3, 3, 4}; // the most significant byte
    case InterleavedRow::Bgra:
    case InterleavedRow::Rgb565: // has no whole bytes
    case InterleavedRow::Bgr565:
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

/// Fields of 5, 6 and 5 bits of a 16-bit number, and how they are stretched to 0..255: the nearest to
/// field * 255 / 31 or / 63, which these factors give for every field (chosen by trying all of them).
namespace rgb565 {
constexpr unsigned kLowMask = 0x1F;
constexpr unsigned kMiddleMask = 0x3F;
constexpr unsigned kMiddleShift = 5;
constexpr unsigned kHighShift = 11;
constexpr unsigned kFactor5 = 527;
constexpr unsigned kOffset5 = 23;
constexpr unsigned kFactor6 = 259;
constexpr unsigned kOffset6 = 33;
constexpr unsigned kShift = 6;
} // namespace rgb565

/// Converts the pixels [begin, end) of a row of 5, 6 and 5 bits.
template <InterleavedRow layout, Target target>
constexpr void Convert565(std::span<const std::uint8_t> source, std::span<std::uint8_t> destination,
                          std::size_t begin, std::size_t end)
{
    using namespace rgb565;
    const auto stretch5 = [](unsigned field) {
        return static_cast<std::uint8_t>((field * kFactor5 + kOffset5) >> kShift); // at most 255
    };
    for (std::size_t x = begin; x < end; ++x) {
        constexpr unsigned kByteBits = 8;
        const unsigned pixel = source[2 * x] | static_cast<unsigned>(source[2 * x + 1]) << kByteBits;
        const std::uint8_t low = stretch5(pixel & kLowMask);
        const std::uint8_t high = stretch5(pixel >> kHighShift);
        const unsigned middle = ((pixel >> kMiddleShift & kMiddleMask) * kFactor6 + kOffset6) >> kShift;
        const auto green = static_cast<std::uint8_t>(middle); // at most 255
        constexpr bool kIsRedLow = layout == InterleavedRow::Rgb565;
        PutColor<target>(destination, x, {kIsRedLow ? high : low, green, kIsRedLow ? low : high, kOpaque});
    }
}

/// The bytes of a pixel with brightness and both colour differences.
struct TripleOffsets {
    std::size_t luma;
    std::size_t cb;
    std::size_t cr;
};

[[nodiscard]] constexpr TripleOffsets OffsetsOf(TripleRow layout)
{
    return layout == TripleRow::Yuv ? TripleOffsets{0, 1, 2} : TripleOffsets{1, 0, 2};
}

// Fixed by 4:4:4: three bytes per pixel.
constexpr std::size_t kTripleBytes = 3;

/// Converts the pixels [begin, end) of a row of brightness and both differences.
template <TripleRow layout, Target target>
constexpr void ConvertTriples(std::span<const std::uint8_t> source, std::span<std::uint8_t> destination,
                              std::size_t begin, std::size_t end, const ColorCoefficients& coefficients)
{
    constexpr TripleOffsets kAt = OffsetsOf(layout);
    for (std::size_t x = begin; x < end; ++x) {
        const auto from = source.subspan(x * kTripleBytes, kTripleBytes);
        PutColor<target>(destination, x, ColorOf(from[kAt.luma], from[kAt.cb], from[kAt.cr], coefficients));
    }
}

/// Converts the pixels [begin, end) of a row whose differences lie in a row of their own.
template <ChromaRow layout, Target target>
constexpr void ConvertSemiplanar(const SemiplanarRows& rows, std::span<std::uint8_t> destination,
                                 std::size_t begin, std::size_t end, const ColorCoefficients& coefficients)
{
    constexpr std::size_t kCb = layout == ChromaRow::Uv ? 0 : 1;
    for (std::size_t x = begin; x < end; ++x) {
        const auto pair = rows.chroma.subspan(x / 2 * 2, 2);
        PutColor<target>(destination, x, ColorOf(rows.luma[x], pair[kCb], pair[1 - kCb], coefficients));
    }
}

/// Converts the pixels [begin, end) of a picture in planes.
template <Target target>
constexpr void ConvertPlanes(const ColorRows& rows, std::span<std::uint8_t> destination, std::size_t begin,
                             std::size_t end)
{
    for (std::size_t x = begin; x < end; ++x)
        PutColor<target>(destination, x, {rows.blue[x], rows.green[x], rows.red[x], kOpaque});
}

/// Converts the pixels [begin, end) of a row of two colours per pixel.
template <Target target>
constexpr void ConvertBiColor(const BiColorRows& rows, BiColorPhase phase,
                              std::span<std::uint8_t> destination, std::size_t begin, std::size_t end)
{
    for (std::size_t x = begin; x < end; ++x) {
        const std::uint8_t own = rows.row[2 * x];
        const std::uint8_t green = rows.row[2 * x + 1];
        const auto other =
            static_cast<std::uint8_t>(Average(rows.above[2 * x], rows.below[2 * x])); // of bytes
        const bool isRed = phase == BiColorPhase::Red;
        PutColor<target>(destination, x, {isRed ? other : own, green, isRed ? own : other, kOpaque});
    }
}

/// One component of a group. A byte that a row lacks is taken from the group before, as the next nearest
/// colour difference; where there is none it is the difference of nothing. Only 4:1:1 lacks any.
[[nodiscard]] constexpr std::uint8_t UnpackComponent(const PackedGroup& group,
                                                     std::span<const std::uint8_t> packed, std::size_t index)
{
    constexpr unsigned kByteBits = 8;
    constexpr unsigned kByteMask = 0xFF;
    const PackedComponent at = group.components[index % kUnpackGroup];
    std::size_t first = index / kUnpackGroup * group.bytes + at.byte;
    if (first >= packed.size()) {
        if (first < group.bytes)
            return static_cast<std::uint8_t>(kChromaCentre); // 128
        first -= group.bytes;
    }
    const unsigned next = first + 1 < packed.size() ? packed[first + 1] : 0u;
    const unsigned kept = (packed[first] | next << kByteBits) >> at.shift & ((1u << group.bits) - 1);
    const unsigned value = kept * (kByteMask / ((1u << group.bits) - 1)); // exact for 1, 2, 4 and 8 bits
    return static_cast<std::uint8_t>(value ^ group.inverted);             // at most 255
}

/// Unpacks the components from `begin` on.
constexpr void UnpackComponents(const PackedGroup& group, std::span<const std::uint8_t> packed,
                                std::span<std::uint8_t> components, std::size_t begin)
{
    for (std::size_t i = begin; i < components.size(); ++i)
        components[i] = UnpackComponent(group, packed, i);
}

/// @return  how many blocks fit into a row when each starts `step` bytes after the one before and takes
/// `reach` bytes
[[nodiscard]] constexpr std::size_t BlocksIn(std::size_t rowBytes, std::size_t step, std::size_t reach)
{
    return rowBytes < reach ? 0 : (rowBytes - reach) / step + 1;
}

} // namespace pixel
