#pragma once

#include "VxCamera/pixel/PixelArithmetic.h"
#include "VxCamera/pixel/RowKernels.h"

// The inner loops for every instruction set, written once over a vector type. The file of each set includes
// this one after it has defined VX_KERNEL: the attribute that lets the compiler use the set in one function.
// It stands at every function here, and no lambda is used: lambdas do not inherit it. The rest of a file
// keeps the plain set, so that no function shared with other files can end up with instructions that the
// processor lacks.
//
// A vector type is a class without state:
//   Bytes, kBytes                          a register and its size; Mask chooses between bytes of two
//   registers Load, Average, Xor, And, Or, Subtract  bytes; Splat8 fills a register EvenBytes, OddBytes
//   masks; Select(mask, a, b): bytes of a where the mask is set, else of b StoreBgr, StoreBgra kBytes pixels
//   from one register per colour ExpandMono                             kBytes pixels from kBytes bytes in
//   memory kLanes, kLaneBytes                     parts of a register within which bytes can go anywhere
//   LoadLaneIndices, ShuffleLanes          sends bytes from memory to memory: each lane from an address of
//   its own LowBytes, HighBytes, PackWords         bytes 0, 2, ... or 1, 3, ... as 16-bit numbers, and back
//   with limits AddWords, MultiplyPairs, AddDwords     16-bit sums; sums of two 16-bit products in 32 bits;
//   32-bit sums ShiftAndMerge                          two registers of 32-bit numbers to one of 16-bit
//   numbers, alternating Splat32, SplatPair                     one 32-bit number, or two 16-bit numbers,
//   everywhere
#if !defined(VX_KERNEL)
#error "VX_KERNEL names the instruction set"
#endif
#define VX_KERNEL_PART VX_KERNEL __attribute__((always_inline)) inline

namespace pixel {

/// @return  the mean of four bytes with halves rounded up, from the means of two pairs and the differing bits
///          of each pair: a mean of means is one too large exactly when a pair was rounded and the means are
///          rounded, too
template <typename V>
VX_KERNEL_PART typename V::Bytes AverageOfFour(typename V::Bytes mean1, typename V::Bytes bits1,
                                               typename V::Bytes mean2, typename V::Bytes bits2)
{
    const auto roundedTwice = V::And(V::And(V::Or(bits1, bits2), V::Xor(mean1, mean2)), V::Splat8(1));
    return V::Subtract(V::Average(mean1, mean2), roundedTwice);
}

/// A block of one row: its pixels and the means of their neighbours left and right.
template <typename V>
struct BayerBlock {
    typename V::Bytes pixels;
    typename V::Bytes sides;    ///< means of left and right
    typename V::Bytes sideBits; ///< bits in which left and right differ

    VX_KERNEL_PART explicit BayerBlock(const std::uint8_t* row)
    {
        const auto left = V::Load(row - 1);
        const auto right = V::Load(row + 1);
        pixels = V::Load(row);
        sides = V::Average(left, right);
        sideBits = V::Xor(left, right);
    }
};

template <typename V, Target target>
VX_KERNEL_PART void StoreColors(std::uint8_t* destination, typename V::Bytes blue, typename V::Bytes green,
                                typename V::Bytes red)
{
    if constexpr (target == Target::Bgr)
        V::StoreBgr(destination, blue, green, red);
    else
        V::StoreBgra(destination, blue, green, red);
}

template <typename V, Target target, bool isRowRed>
VX_KERNEL_PART void DemosaicBlock(const BayerBlock<V>& above, const BayerBlock<V>& row,
                                  const BayerBlock<V>& below, typename V::Mask isGreen,
                                  std::uint8_t* destination)
{
    const auto upright = V::Average(above.pixels, below.pixels);
    const auto uprightBits = V::Xor(above.pixels, below.pixels);
    const auto cross = AverageOfFour<V>(row.sides, row.sideBits, upright, uprightBits);
    const auto corners = AverageOfFour<V>(above.sides, above.sideBits, below.sides, below.sideBits);
    const auto green = V::Select(isGreen, row.pixels, cross);
    const auto own = V::Select(isGreen, row.sides, row.pixels);
    const auto other = V::Select(isGreen, upright, corners);
    if constexpr (isRowRed)
        StoreColors<V, target>(destination, other, green, own);
    else
        StoreColors<V, target>(destination, own, green, other);
}

template <typename V, Target target, bool isFirstRowRed>
VX_KERNEL_PART void DemosaicBlocks(const BayerRows& rows, bool isFirstPixelGreen, std::size_t x,
                                   std::uint8_t* first, std::uint8_t* second)
{
    const BayerBlock<V> above(rows.above.data() + x);
    const BayerBlock<V> middle1(rows.first.data() + x);
    const BayerBlock<V> middle2(rows.second.data() + x);
    const BayerBlock<V> below(rows.below.data() + x);
    const bool isEvenGreen = isFirstPixelGreen == (x % 2 == 0);
    const auto isGreen1 = isEvenGreen ? V::EvenBytes() : V::OddBytes();
    const auto isGreen2 = isEvenGreen ? V::OddBytes() : V::EvenBytes();
    DemosaicBlock<V, target, isFirstRowRed>(above, middle1, middle2, isGreen1,
                                            first + x * kTargetBytes<target>);
    DemosaicBlock<V, target, !isFirstRowRed>(middle1, middle2, below, isGreen2,
                                             second + x * kTargetBytes<target>);
}

template <typename V, Target target, bool isFirstRowRed>
VX_KERNEL void DemosaicInner(const BayerRows& rows, bool isFirstPixelGreen, std::size_t end,
                             std::uint8_t* first, std::uint8_t* second)
{
    // Pixel 0 has no left neighbour. From the second block on, blocks start at multiples of their size, which
    // keeps stores aligned where the destination is; the last one ends with the row and overlaps the one
    // before it.
    DemosaicBlocks<V, target, isFirstRowRed>(rows, isFirstPixelGreen, 1, first, second);
    std::size_t x = V::kBytes;
    for (; x + V::kBytes < end; x += V::kBytes)
        DemosaicBlocks<V, target, isFirstRowRed>(rows, isFirstPixelGreen, x, first, second);
    DemosaicBlocks<V, target, isFirstRowRed>(rows, isFirstPixelGreen, end - V::kBytes, first, second);
}

template <typename V, Target target>
VX_KERNEL void BayerRowPair(const BayerRows& rows, BayerPhase phase, std::span<std::uint8_t> first,
                            std::span<std::uint8_t> second)
{
    const std::size_t widthPx = first.size() / kTargetBytes<target>;
    const std::size_t end =
        widthPx < rows.first.size() ? widthPx : widthPx - 1; // the last that has a right neighbour
    if (end < V::kBytes + 1) {
        DemosaicPixels<target>(rows, phase, 0, widthPx, first, second);
        return;
    }
    if (phase.isFirstRowRed)
        DemosaicInner<V, target, true>(rows, phase.isFirstPixelGreen, end, first.data(), second.data());
    else
        DemosaicInner<V, target, false>(rows, phase.isFirstPixelGreen, end, first.data(), second.data());
    DemosaicPixels<target>(rows, phase, 0, 1, first, second);
    DemosaicPixels<target>(rows, phase, end, widthPx, first, second);
}

template <typename V, Target target>
VX_KERNEL void MonoRow(std::span<const std::uint8_t> source, std::span<std::uint8_t> destination)
{
    const std::size_t widthPx = destination.size() / kTargetBytes<target>;
    std::size_t x = 0;
    for (; x + V::kBytes <= widthPx; x += V::kBytes)
        V::template ExpandMono<target>(source.data() + x, destination.data() + x * kTargetBytes<target>);
    ConvertInterleaved<InterleavedRow::Mono, target>(source, destination, x, widthPx);
}

// Fixed by the order of BGRa in a little-endian number.
constexpr std::int32_t kOpaqueAlpha = std::int32_t{kOpaque} << 24;

/// The byte of the source row that each byte of the destination row takes.
template <InterleavedRow layout, Target target>
[[nodiscard]] constexpr std::size_t SourceByteOf(std::size_t destinationByte)
{
    constexpr ChannelOffsets kAt = OffsetsOf(layout);
    constexpr std::array<std::size_t, 4> kOffsets{kAt.blue, kAt.green, kAt.red, kAt.alpha};
    const std::size_t pixel = destinationByte / kTargetBytes<target>;
    return pixel * kAt.bytesPerPixel + kOffsets[destinationByte % kTargetBytes<target>];
}

/// How whole pixels go from one lane to another.
template <typename V, InterleavedRow layout, Target target>
struct LanePlan {
    static constexpr std::size_t kSourceBytes = OffsetsOf(layout).bytesPerPixel;
    static constexpr bool kMakesAlpha = target == Target::Bgra && OffsetsOf(layout).alpha >= kSourceBytes;
    static constexpr std::size_t kPixels = V::kLaneBytes / std::max(kSourceBytes, kTargetBytes<target>);
    static constexpr std::size_t kSourceStep = kPixels * kSourceBytes;
    static constexpr std::size_t kTargetStep = kPixels * kTargetBytes<target>;
    // Lanes are read and written whole, also where the pixels take less.
    static constexpr std::size_t kSourceReach = (V::kLanes - 1) * kSourceStep + V::kLaneBytes;
    static constexpr std::size_t kTargetReach = (V::kLanes - 1) * kTargetStep + V::kLaneBytes;

    static constexpr std::array<std::uint8_t, V::kLaneBytes> MakeIndices()
    {
        std::array<std::uint8_t, V::kLaneBytes> indices{};
        for (std::size_t i = 0; i < kTargetStep; ++i)
            // An index behind the lane belongs to alpha that is made: what it takes is overwritten.
            indices[i] =
                static_cast<std::uint8_t>(SourceByteOf<layout, target>(i) % V::kLaneBytes); // below 64
        return indices;
    }
    static constexpr std::array<std::uint8_t, V::kLaneBytes> kIndices = MakeIndices();
};

/// @return  how many blocks fit into a row when each starts `step` bytes after the one before and takes
/// `reach` bytes
[[nodiscard]] constexpr std::size_t BlocksIn(std::size_t rowBytes, std::size_t step, std::size_t reach)
{
    return rowBytes < reach ? 0 : (rowBytes - reach) / step + 1;
}

/// Whole pixels with their bytes in another order. A lane can be longer than its pixels: the loop ends where
/// the excess would leave a row, and what is written in excess is overwritten by what follows.
template <typename V, InterleavedRow layout, Target target>
VX_KERNEL void ShuffledRow(std::span<const std::uint8_t> source, std::span<std::uint8_t> destination)
{
    using Plan = LanePlan<V, layout, target>;
    const std::size_t widthPx = destination.size() / kTargetBytes<target>;
    const auto indices = V::LoadLaneIndices(Plan::kIndices.data());
    const auto alpha = V::Splat32(kOpaqueAlpha);
    constexpr std::size_t kSourceStep = V::kLanes * Plan::kSourceStep;
    constexpr std::size_t kTargetStep = V::kLanes * Plan::kTargetStep;
    const std::size_t blocks = std::min(BlocksIn(source.size(), kSourceStep, Plan::kSourceReach),
                                        BlocksIn(destination.size(), kTargetStep, Plan::kTargetReach));
    const std::uint8_t* from = source.data();
    std::uint8_t* to = destination.data();
    for (std::size_t i = 0; i < blocks; ++i, from += kSourceStep, to += kTargetStep) {
        if constexpr (Plan::kMakesAlpha)
            V::template ShuffleLanes<Plan::kSourceStep, Plan::kTargetStep>(from, indices, alpha, to);
        else
            V::template ShuffleLanes<Plan::kSourceStep, Plan::kTargetStep>(from, indices, to);
    }
    const std::size_t x = blocks * V::kLanes * Plan::kPixels;
    ConvertInterleaved<layout, target>(source, destination, x, widthPx);
}

/// The pixels whose bytes of one colour go to a lane when three colours are interleaved into three lanes, by
/// position in the lane.
/// @param lane     0 to 2
/// @param channel  0 = blue, 1 = green, 2 = red
/// @param nothing  stands at the positions of other colours
template <std::size_t laneBytes>
[[nodiscard]] constexpr std::array<std::uint8_t, laneBytes>
InterleaveIndices(std::size_t lane, std::size_t channel, std::uint8_t nothing)
{
    std::array<std::uint8_t, laneBytes> indices{};
    for (std::size_t i = 0; i < laneBytes; ++i) {
        const std::size_t position = lane * laneBytes + i;
        indices[i] =
            position % 3 == channel ? static_cast<std::uint8_t>(position / 3) : nothing; // below laneBytes
    }
    return indices;
}

// Fixed by the instruction that rearranges 16 bytes: an index with this bit gives 0.
constexpr std::uint8_t kGivesZero = 0x80;

/// @return  the pixel that each byte of a lane takes
/// @param firstByte   position of the lane in the destination
/// @param firstPixel  the pixel that counts as 0
template <std::size_t laneBytes>
[[nodiscard]] constexpr std::array<std::uint8_t, laneBytes>
ExpandIndices(std::size_t bytesPerPixel, std::size_t firstByte, std::size_t firstPixel)
{
    std::array<std::uint8_t, laneBytes> indices{};
    for (std::size_t i = 0; i < laneBytes; ++i)
        indices[i] =
            static_cast<std::uint8_t>((firstByte + i) / bytesPerPixel - firstPixel); // less than laneBytes
    return indices;
}

/// The coefficients as pairs of 16-bit numbers in every 32 bits, in the order of the bytes of a pair of
/// pixels.
template <typename V>
struct PairFactors {
    typename V::Bytes firstLuma;
    typename V::Bytes secondLuma;
    typename V::Bytes red;
    typename V::Bytes green;
    typename V::Bytes blue;
    typename V::Bytes offset; ///< rounding and black level, 32 bits
    typename V::Bytes centre; ///< to be added to colour differences, 16 bits

    VX_KERNEL_PART explicit PairFactors(const ColorCoefficients& k)
    {
        firstLuma = V::SplatPair(k.luma, 0);
        secondLuma = V::SplatPair(0, k.luma);
        red = V::SplatPair(0, k.redFromCr);
        green = V::SplatPair(k.greenFromCb, k.greenFromCr);
        blue = V::SplatPair(k.blueFromCb, 0);
        offset = V::Splat32(kCoefficientHalf - k.luma * k.black);
        centre = V::SplatPair(-kChromaCentre, -kChromaCentre);
    }
};

/// The colours of V::kBytes / 2 pixels, 16 bits each.
template <typename V>
struct PairColors {
    typename V::Bytes blue;
    typename V::Bytes green;
    typename V::Bytes red;
};

template <typename V, PairRow layout>
VX_KERNEL_PART PairColors<V> ColorsOfPairs(const std::uint8_t* source, const PairFactors<V>& factors)
{
    const auto bytes = V::Load(source);
    const auto luma = layout == PairRow::Yuyv ? V::LowBytes(bytes) : V::HighBytes(bytes);
    const auto chroma =
        V::AddWords(layout == PairRow::Yuyv ? V::HighBytes(bytes) : V::LowBytes(bytes), factors.centre);
    const auto first = V::AddDwords(V::MultiplyPairs(luma, factors.firstLuma), factors.offset);
    const auto second = V::AddDwords(V::MultiplyPairs(luma, factors.secondLuma), factors.offset);
    const auto red = V::MultiplyPairs(chroma, factors.red);
    const auto green = V::MultiplyPairs(chroma, factors.green);
    const auto blue = V::MultiplyPairs(chroma, factors.blue);
    return {V::ShiftAndMerge(V::AddDwords(first, blue), V::AddDwords(second, blue)),
            V::ShiftAndMerge(V::AddDwords(first, green), V::AddDwords(second, green)),
            V::ShiftAndMerge(V::AddDwords(first, red), V::AddDwords(second, red))};
}

template <typename V, PairRow layout, Target target>
VX_KERNEL void PairsRow(std::span<const std::uint8_t> source, std::span<std::uint8_t> destination,
                        const ColorCoefficients& coefficients)
{
    const std::size_t widthPx = destination.size() / kTargetBytes<target>;
    const PairFactors<V> factors(coefficients);
    std::size_t x = 0;
    for (; x + V::kBytes <= widthPx; x += V::kBytes) {
        const std::uint8_t* const from = source.data() + x * 2;
        const PairColors<V> low = ColorsOfPairs<V, layout>(from, factors);
        const PairColors<V> high = ColorsOfPairs<V, layout>(from + V::kBytes, factors);
        StoreColors<V, target>(destination.data() + x * kTargetBytes<target>,
                               V::PackWords(low.blue, high.blue), V::PackWords(low.green, high.green),
                               V::PackWords(low.red, high.red));
    }
    ConvertPairs<layout, target>(source, destination, x, widthPx, coefficients);
}

template <typename V>
[[nodiscard]] constexpr RowKernels MakeVectorKernels()
{
    using enum InterleavedRow;
    constexpr Target kBgr = Target::Bgr;
    constexpr Target kBgra = Target::Bgra;
    return {{{{MonoRow<V, kBgr>, MonoRow<V, kBgra>},
              {ShuffledRow<V, Rgb, kBgr>, ShuffledRow<V, Rgb, kBgra>},
              {CopyRow, ShuffledRow<V, Bgr, kBgra>},
              {ShuffledRow<V, Rgba, kBgr>, ShuffledRow<V, Rgba, kBgra>},
              {ShuffledRow<V, Bgra, kBgr>, CopyRow}}},
            {{{PairsRow<V, PairRow::Yuyv, kBgr>, PairsRow<V, PairRow::Yuyv, kBgra>},
              {PairsRow<V, PairRow::Uyvy, kBgr>, PairsRow<V, PairRow::Uyvy, kBgra>}}},
            {BayerRowPair<V, kBgr>, BayerRowPair<V, kBgra>}};
}

} // namespace pixel
