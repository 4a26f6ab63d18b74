#pragma once

#include "VxCamera/pixel/PixelArithmetic.h"
#include "VxCamera/pixel/RowKernels.h"
#include "VxCamera/pixel/VectorUnpack.h"

#include <utility>

// The inner loops for every instruction set, written once over a vector type. The file of each set includes
// this one after it has defined VX_KERNEL: the attribute that lets the compiler use the set in one function.
// It stands at every function here, and no lambda is used: lambdas do not inherit it. The rest of a file
// keeps the plain set, so that no function shared with other files can end up with instructions that the
// processor lacks.
//
// A vector type is a class without state:
//   Bytes, kBytes        a register and its size
//   Mask                 chooses between the bytes of two registers: EvenBytes, OddBytes; Select(mask, a, b)
//   is
//                        a where the mask is set, else b
//   Load, Store, Average, Xor, And, Or, Subtract, Splat8          bytes
//   Splat32, SplatPair   one 32-bit number, or two 16-bit numbers, everywhere
//   LoadWords            kBytes / 2 bytes as 16-bit numbers
//   LowBytes, HighBytes  bytes 0, 2, ... or 1, 3, ... as 16-bit numbers; PackWords back, with limits
//   AddWords, MultiplyWords, ShiftWords                           16 bits; shifts go right
//   MultiplyPairs, AddDwords                                      sums of two 16-bit products in 32 bits
//   ShiftAndMerge        two registers of 32-bit numbers, shifted by kCoefficientBits, to one of 16-bit
//                        numbers, alternating
//   ShiftDwords          32-bit numbers shifted by kCoefficientBits; PackDwords makes bytes of them, with
//   limits kLanes, kLaneBytes   parts of a register within which bytes can go anywhere LoadLaneIndices the
//   same order of bytes for every lane GatherLanes, ShuffleLanes  bytes from memory in that order, each lane
//   from an address of its own, to a
//                        register or to memory
//   ExpandMono           kBytes pixels from kBytes bytes in memory
//   StoreBgr, StoreBgra  kBytes pixels from one register per colour
#if !defined(VX_KERNEL)
#error "VX_KERNEL names the instruction set"
#endif

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

    VX_KERNEL_PART PairFactors(const ColorCoefficients& k, ChromaRow order)
    {
        firstLuma = V::SplatPair(k.luma, 0);
        secondLuma = V::SplatPair(0, k.luma);
        const bool isCbFirst = order == ChromaRow::Uv;
        red = isCbFirst ? V::SplatPair(0, k.redFromCr) : V::SplatPair(k.redFromCr, 0);
        green = isCbFirst ? V::SplatPair(k.greenFromCb, k.greenFromCr)
                          : V::SplatPair(k.greenFromCr, k.greenFromCb);
        blue = isCbFirst ? V::SplatPair(k.blueFromCb, 0) : V::SplatPair(0, k.blueFromCb);
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

/// @param luma    16 bits each
/// @param chroma  16 bits each, the pair of every two pixels
template <typename V>
VX_KERNEL_PART PairColors<V> ColorsOfWords(typename V::Bytes luma, typename V::Bytes chroma,
                                           const PairFactors<V>& factors)
{
    const auto centred = V::AddWords(chroma, factors.centre);
    const auto first = V::AddDwords(V::MultiplyPairs(luma, factors.firstLuma), factors.offset);
    const auto second = V::AddDwords(V::MultiplyPairs(luma, factors.secondLuma), factors.offset);
    const auto red = V::MultiplyPairs(centred, factors.red);
    const auto green = V::MultiplyPairs(centred, factors.green);
    const auto blue = V::MultiplyPairs(centred, factors.blue);
    return {V::ShiftAndMerge(V::AddDwords(first, blue), V::AddDwords(second, blue)),
            V::ShiftAndMerge(V::AddDwords(first, green), V::AddDwords(second, green)),
            V::ShiftAndMerge(V::AddDwords(first, red), V::AddDwords(second, red))};
}

template <typename V, PairRow layout>
VX_KERNEL_PART PairColors<V> ColorsOfPairs(const std::uint8_t* source, const PairFactors<V>& factors)
{
    const auto bytes = V::Load(source);
    if constexpr (layout == PairRow::Yuyv)
        return ColorsOfWords<V>(V::LowBytes(bytes), V::HighBytes(bytes), factors);
    else
        return ColorsOfWords<V>(V::HighBytes(bytes), V::LowBytes(bytes), factors);
}

template <typename V, Target target>
VX_KERNEL_PART void StoreWords(std::uint8_t* destination, const PairColors<V>& low, const PairColors<V>& high)
{
    StoreColors<V, target>(destination, V::PackWords(low.blue, high.blue),
                           V::PackWords(low.green, high.green), V::PackWords(low.red, high.red));
}

template <typename V, PairRow layout, Target target>
VX_KERNEL void PairsRow(std::span<const std::uint8_t> source, std::span<std::uint8_t> destination,
                        const ColorCoefficients& coefficients)
{
    const std::size_t widthPx = destination.size() / kTargetBytes<target>;
    const PairFactors<V> factors(coefficients, ChromaRow::Uv);
    std::size_t x = 0;
    for (; x + V::kBytes <= widthPx; x += V::kBytes) {
        const std::uint8_t* const from = source.data() + x * 2;
        StoreWords<V, target>(destination.data() + x * kTargetBytes<target>,
                              ColorsOfPairs<V, layout>(from, factors),
                              ColorsOfPairs<V, layout>(from + V::kBytes, factors));
    }
    ConvertPairs<layout, target>(source, destination, x, widthPx, coefficients);
}

template <typename V, ChromaRow layout, Target target>
VX_KERNEL void SemiplanarRow(const SemiplanarRows& rows, std::span<std::uint8_t> destination,
                             const ColorCoefficients& coefficients)
{
    const std::size_t widthPx = destination.size() / kTargetBytes<target>;
    const PairFactors<V> factors(coefficients, layout);
    constexpr std::size_t kHalf = V::kBytes / 2;
    std::size_t x = 0;
    for (; x + V::kBytes <= widthPx; x += V::kBytes) {
        const std::uint8_t* const luma = rows.luma.data() + x;
        const std::uint8_t* const chroma = rows.chroma.data() + x;
        StoreWords<V, target>(
            destination.data() + x * kTargetBytes<target>,
            ColorsOfWords<V>(V::LoadWords(luma), V::LoadWords(chroma), factors),
            ColorsOfWords<V>(V::LoadWords(luma + kHalf), V::LoadWords(chroma + kHalf), factors));
    }
    ConvertSemiplanar<layout, target>(rows, destination, x, widthPx, coefficients);
}

/// Where the brightness of each 32 bits, or its differences as 16-bit numbers, come from in a lane; what lies
/// between them has no meaning.
template <typename V, TripleRow layout>
struct TriplePlan {
    static constexpr std::size_t kPixels = V::kLaneBytes / 4; // 32 bits each
    static constexpr std::size_t kStep = kPixels * kTripleBytes;

    static constexpr std::array<std::uint8_t, V::kLaneBytes> Indices(std::size_t low, std::size_t high)
    {
        std::array<std::uint8_t, V::kLaneBytes> indices{};
        for (std::size_t x = 0; x < kPixels; ++x) {
            indices[4 * x] = static_cast<std::uint8_t>(x * kTripleBytes + low); // less than kStep
            indices[4 * x + 2] = static_cast<std::uint8_t>(x * kTripleBytes + high);
        }
        return indices;
    }
    static constexpr TripleOffsets kAt = OffsetsOf(layout);
    static constexpr std::array<std::uint8_t, V::kLaneBytes> kLuma = Indices(kAt.luma, kAt.luma);
    static constexpr std::array<std::uint8_t, V::kLaneBytes> kChroma = Indices(kAt.cb, kAt.cr);
};

/// The colours of V::kBytes / 4 pixels, 32 bits each.
template <typename V, TripleRow layout>
VX_KERNEL_PART PairColors<V> ColorsOfTriples(const std::uint8_t* source, typename V::Bytes lumaIndices,
                                             typename V::Bytes chromaIndices, const PairFactors<V>& factors)
{
    using Plan = TriplePlan<V, layout>;
    constexpr std::int32_t kLowOfWords = 0x00FF00FF;
    const auto words = V::Splat32(kLowOfWords);
    const auto luma = V::And(V::template GatherLanes<Plan::kStep>(source, lumaIndices), words);
    const auto chroma = V::AddWords(
        V::And(V::template GatherLanes<Plan::kStep>(source, chromaIndices), words), factors.centre);
    const auto y = V::AddDwords(V::MultiplyPairs(luma, factors.firstLuma), factors.offset);
    return {V::ShiftDwords(V::AddDwords(y, V::MultiplyPairs(chroma, factors.blue))),
            V::ShiftDwords(V::AddDwords(y, V::MultiplyPairs(chroma, factors.green))),
            V::ShiftDwords(V::AddDwords(y, V::MultiplyPairs(chroma, factors.red)))};
}

template <typename V, TripleRow layout, Target target>
VX_KERNEL void TriplesRow(std::span<const std::uint8_t> source, std::span<std::uint8_t> destination,
                          const ColorCoefficients& coefficients)
{
    using Plan = TriplePlan<V, layout>;
    const std::size_t widthPx = destination.size() / kTargetBytes<target>;
    const PairFactors<V> factors(coefficients, ChromaRow::Uv);
    const auto luma = V::LoadLaneIndices(Plan::kLuma.data());
    const auto chroma = V::LoadLaneIndices(Plan::kChroma.data());
    constexpr std::size_t kStep = V::kLanes * Plan::kStep; // of a register of 32-bit numbers
    constexpr std::size_t kReach = 3 * kStep + (V::kLanes - 1) * Plan::kStep + V::kLaneBytes;
    const std::size_t blocks =
        std::min(widthPx / V::kBytes, BlocksIn(source.size(), V::kBytes * kTripleBytes, kReach));
    for (std::size_t i = 0; i < blocks; ++i) {
        const std::uint8_t* const from = source.data() + i * V::kBytes * kTripleBytes;
        const auto a = ColorsOfTriples<V, layout>(from, luma, chroma, factors);
        const auto b = ColorsOfTriples<V, layout>(from + kStep, luma, chroma, factors);
        const auto c = ColorsOfTriples<V, layout>(from + 2 * kStep, luma, chroma, factors);
        const auto d = ColorsOfTriples<V, layout>(from + 3 * kStep, luma, chroma, factors);
        StoreColors<V, target>(destination.data() + i * V::kBytes * kTargetBytes<target>,
                               V::PackDwords(a.blue, b.blue, c.blue, d.blue),
                               V::PackDwords(a.green, b.green, c.green, d.green),
                               V::PackDwords(a.red, b.red, c.red, d.red));
    }
    ConvertTriples<layout, target>(source, destination, blocks * V::kBytes, widthPx, coefficients);
}

template <typename V, Target target>
VX_KERNEL void PlanesRow(const ColorRows& rows, std::span<std::uint8_t> destination)
{
    const std::size_t widthPx = destination.size() / kTargetBytes<target>;
    std::size_t x = 0;
    for (; x + V::kBytes <= widthPx; x += V::kBytes)
        StoreColors<V, target>(destination.data() + x * kTargetBytes<target>, V::Load(rows.blue.data() + x),
                               V::Load(rows.green.data() + x), V::Load(rows.red.data() + x));
    ConvertPlanes<target>(rows, destination, x, widthPx);
}

template <typename V, Target target>
VX_KERNEL void BiColorRow(const BiColorRows& rows, BiColorPhase phase, std::span<std::uint8_t> destination)
{
    const std::size_t widthPx = destination.size() / kTargetBytes<target>;
    std::size_t x = 0;
    for (; x + V::kBytes <= widthPx; x += V::kBytes) {
        const std::size_t at = 2 * x;
        const auto low = V::Load(rows.row.data() + at);
        const auto high = V::Load(rows.row.data() + at + V::kBytes);
        const auto otherLow = V::Average(V::Load(rows.above.data() + at), V::Load(rows.below.data() + at));
        const auto otherHigh = V::Average(V::Load(rows.above.data() + at + V::kBytes),
                                          V::Load(rows.below.data() + at + V::kBytes));
        const auto own = V::PackWords(V::LowBytes(low), V::LowBytes(high));
        const auto green = V::PackWords(V::HighBytes(low), V::HighBytes(high));
        const auto other = V::PackWords(V::LowBytes(otherLow), V::LowBytes(otherHigh));
        std::uint8_t* const to = destination.data() + x * kTargetBytes<target>;
        if (phase == BiColorPhase::Red)
            StoreColors<V, target>(to, other, green, own);
        else
            StoreColors<V, target>(to, own, green, other);
    }
    ConvertBiColor<target>(rows, phase, destination, x, widthPx);
}

/// The three fields of V::kBytes / 2 pixels, stretched, 16 bits each; the names are those of Bgr565.
template <typename V>
VX_KERNEL_PART PairColors<V> ColorsOf565(const std::uint8_t* source)
{
    using namespace rgb565;
    const auto factor5 = V::SplatPair(kFactor5, kFactor5);
    const auto offset5 = V::SplatPair(kOffset5, kOffset5);
    const auto factor6 = V::SplatPair(kFactor6, kFactor6);
    const auto offset6 = V::SplatPair(kOffset6, kOffset6);
    const auto pixels = V::Load(source);
    const auto low = V::And(pixels, V::SplatPair(kLowMask, kLowMask));
    const auto middle =
        V::And(V::template ShiftWords<kMiddleShift>(pixels), V::SplatPair(kMiddleMask, kMiddleMask));
    const auto high = V::template ShiftWords<kHighShift>(pixels);
    return {V::template ShiftWords<kShift>(V::AddWords(V::MultiplyWords(low, factor5), offset5)),
            V::template ShiftWords<kShift>(V::AddWords(V::MultiplyWords(middle, factor6), offset6)),
            V::template ShiftWords<kShift>(V::AddWords(V::MultiplyWords(high, factor5), offset5))};
}

template <typename V, InterleavedRow layout, Target target>
VX_KERNEL void Row565(std::span<const std::uint8_t> source, std::span<std::uint8_t> destination)
{
    const std::size_t widthPx = destination.size() / kTargetBytes<target>;
    std::size_t x = 0;
    for (; x + V::kBytes <= widthPx; x += V::kBytes) {
        PairColors<V> low = ColorsOf565<V>(source.data() + 2 * x);
        PairColors<V> high = ColorsOf565<V>(source.data() + 2 * x + V::kBytes);
        if constexpr (layout == InterleavedRow::Rgb565) {
            low = {low.red, low.green, low.blue};
            high = {high.red, high.green, high.blue};
        }
        StoreWords<V, target>(destination.data() + x * kTargetBytes<target>, low, high);
    }
    Convert565<layout, target>(source, destination, x, widthPx);
}

template <typename V>
[[nodiscard]] constexpr RowKernels MakeVectorKernels()
{
    using enum InterleavedRow;
    constexpr Target kBgr = Target::Bgr;
    constexpr Target kBgra = Target::Bgra;
    return {MakeUnpackKernels<V>(std::make_index_sequence<kUnpackKindCount>()),
            {{{MonoRow<V, kBgr>, MonoRow<V, kBgra>},
              {ShuffledRow<V, Rgb, kBgr>, ShuffledRow<V, Rgb, kBgra>},
              {CopyRow, ShuffledRow<V, Bgr, kBgra>},
              {ShuffledRow<V, Rgba, kBgr>, ShuffledRow<V, Rgba, kBgra>},
              {ShuffledRow<V, Bgra, kBgr>, CopyRow},
              {ShuffledRow<V, Rgbx, kBgr>, ShuffledRow<V, Rgbx, kBgra>},
              {ShuffledRow<V, Xbgr, kBgr>, ShuffledRow<V, Xbgr, kBgra>},
              {ShuffledRow<V, Mono32, kBgr>, ShuffledRow<V, Mono32, kBgra>},
              {Row565<V, Rgb565, kBgr>, Row565<V, Rgb565, kBgra>},
              {Row565<V, Bgr565, kBgr>, Row565<V, Bgr565, kBgra>}}},
            {{{PairsRow<V, PairRow::Yuyv, kBgr>, PairsRow<V, PairRow::Yuyv, kBgra>},
              {PairsRow<V, PairRow::Uyvy, kBgr>, PairsRow<V, PairRow::Uyvy, kBgra>}}},
            {{{TriplesRow<V, TripleRow::Yuv, kBgr>, TriplesRow<V, TripleRow::Yuv, kBgra>},
              {TriplesRow<V, TripleRow::Uyv, kBgr>, TriplesRow<V, TripleRow::Uyv, kBgra>}}},
            {{{SemiplanarRow<V, ChromaRow::Uv, kBgr>, SemiplanarRow<V, ChromaRow::Uv, kBgra>},
              {SemiplanarRow<V, ChromaRow::Vu, kBgr>, SemiplanarRow<V, ChromaRow::Vu, kBgra>}}},
            {PlanesRow<V, kBgr>, PlanesRow<V, kBgra>},
            {BiColorRow<V, kBgr>, BiColorRow<V, kBgra>},
            {BayerRowPair<V, kBgr>, BayerRowPair<V, kBgra>}};
}

} // namespace pixel
