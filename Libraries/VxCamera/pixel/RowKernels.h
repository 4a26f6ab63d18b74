#pragma once

#include "VxCamera/pixel/ColorCoefficients.h"
#include "VxCamera/pixel/UnpackRows.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>

namespace pixel {

/// What a processor can do, from less to more. Every set gives the same bytes.
enum class InstructionSet : std::uint8_t {
    Scalar,
    Sse41,      ///< 16 bytes at a time
    Avx2,       ///< 32 bytes at a time
    Avx512Vbmi, ///< 64 bytes at a time, with free rearrangement of bytes
};
constexpr std::size_t kInstructionSetCount = 4;

/// Rows of whole pixels.
enum class InterleavedRow : std::uint8_t {
    Mono,
    Rgb,
    Bgr,
    Rgba,
    Bgra,
    Rgbx,   ///< red, green, blue and a byte without meaning
    Xbgr,   ///< a byte without meaning, blue, green, red
    Mono32, ///< brightness of 32 bits, little endian
    Rgb565, ///< red, green, blue of 5, 6 and 5 bits from bit 0 of a little-endian number on
    Bgr565, ///< the same, blue first
};
constexpr std::size_t kInterleavedRowCount = 10;
constexpr std::array<std::size_t, kInterleavedRowCount> kInterleavedBytesPerPixel{1, 3, 3, 4, 4,
                                                                                  4, 4, 4, 2, 2};

/// Rows of pairs of pixels that share their colour.
enum class PairRow : std::uint8_t { Yuyv, Uyvy };
constexpr std::size_t kPairRowCount = 2;

/// Rows of pixels with brightness and both colour differences.
enum class TripleRow : std::uint8_t { Yuv, Uyv };
constexpr std::size_t kTripleRowCount = 2;

/// Rows of colour differences for every second pixel, beside a row of brightness.
enum class ChromaRow : std::uint8_t { Uv, Vu };
constexpr std::size_t kChromaRowCount = 2;

/// What every conversion ends in. The number of the enumerator selects a kernel.
enum class Target : std::uint8_t { Bgr, Bgra };
constexpr std::size_t kTargetCount = 2;
constexpr std::array<std::size_t, kTargetCount> kTargetBytesPerPixel{3, 4};

// Fixed by the meaning of alpha: opaque. Written where the source has no alpha of its own.
constexpr std::uint8_t kOpaque = 0xFF;

/// Four rows of a Bayer picture around the two that are converted, all of the picture's full width.
struct BayerRows {
    std::span<const std::uint8_t> above;
    std::span<const std::uint8_t> first;
    std::span<const std::uint8_t> second;
    std::span<const std::uint8_t> below;
};

/// The 2x2 cell of a Bayer picture, told from the first of the two rows that are converted.
struct BayerPhase {
    bool isFirstRowRed; ///< the first row holds green and red, the second green and blue; else the other way
    bool isFirstPixelGreen; ///< of the first row; the second row then starts with the other kind
};

/// Three rows of a picture with two colours per pixel: green behind red in one row and behind blue in the
/// next. All of the picture's full width, and of the same length.
struct BiColorRows {
    std::span<const std::uint8_t> above;
    std::span<const std::uint8_t> row;
    std::span<const std::uint8_t> below;
};

/// What the row in the middle holds beside green.
enum class BiColorPhase : std::uint8_t { Red, Blue };

/// One row per colour.
struct ColorRows {
    std::span<const std::uint8_t> blue;
    std::span<const std::uint8_t> green;
    std::span<const std::uint8_t> red;
};

/// Brightness of every pixel, and both colour differences of every second one.
struct SemiplanarRows {
    std::span<const std::uint8_t> luma;
    std::span<const std::uint8_t> chroma; ///< whole pairs
};

/// Converts the first pixels of a row, as many as the destination has.
using InterleavedKernel = void (*)(std::span<const std::uint8_t> source, std::span<std::uint8_t> destination);

/// The same for 4:2:2. A row of an odd number of pixels ends with a pair that lacks its last two bytes: its
/// last pixel takes the missing difference from the pair before, or none when there is no pair before.
using PairKernel = void (*)(std::span<const std::uint8_t> source, std::span<std::uint8_t> destination,
                            const ColorCoefficients& coefficients);

/// Converts two rows of a Bayer picture, as many pixels of each as the destinations have, which is the same
/// number.
using BayerKernel = void (*)(const BayerRows& rows, BayerPhase phase, std::span<std::uint8_t> first,
                             std::span<std::uint8_t> second);

/// The same for pixels that share nothing, for 4:2:2 and 4:2:0 in two planes, and for one plane per colour.
using TripleKernel = void (*)(std::span<const std::uint8_t> source, std::span<std::uint8_t> destination,
                              const ColorCoefficients& coefficients);
using SemiplanarKernel = void (*)(const SemiplanarRows& rows, std::span<std::uint8_t> destination,
                                  const ColorCoefficients& coefficients);
using PlanesKernel = void (*)(const ColorRows& rows, std::span<std::uint8_t> destination);

/// The colour that a row lacks is the mean of those above and below.
using BiColorKernel = void (*)(const BiColorRows& rows, BiColorPhase phase,
                               std::span<std::uint8_t> destination);

/// The inner loops of all conversions for one instruction set.
struct RowKernels {
    std::array<UnpackKernel, kUnpackKindCount> unpack;
    std::array<std::array<InterleavedKernel, kTargetCount>, kInterleavedRowCount> interleaved;
    std::array<std::array<PairKernel, kTargetCount>, kPairRowCount> pairs;
    std::array<std::array<TripleKernel, kTargetCount>, kTripleRowCount> triples;
    std::array<std::array<SemiplanarKernel, kTargetCount>, kChromaRowCount> semiplanar;
    std::array<PlanesKernel, kTargetCount> planes;
    std::array<BiColorKernel, kTargetCount> biColor;
    std::array<BayerKernel, kTargetCount> bayer;
};

/// @return  whether this processor and system can run the set
[[nodiscard]] bool IsAvailable(InstructionSet set);

/// @return  the best set that is available
[[nodiscard]] InstructionSet BestInstructionSet();

/// @param set  must be available to be run
[[nodiscard]] const RowKernels& KernelsOf(InstructionSet set);

/// For rows that need no conversion: as many bytes as the destination has.
void CopyRow(std::span<const std::uint8_t> source, std::span<std::uint8_t> destination);

/// One table per set; each is defined in the file named after it.
[[nodiscard]] const RowKernels& ScalarKernels();
[[nodiscard]] const RowKernels& Sse41Kernels();
[[nodiscard]] const RowKernels& Avx2Kernels();
[[nodiscard]] const RowKernels& Avx512Kernels();

} // namespace pixel
