#include "VxCamera/pixel/RowKernels.h"

#include <immintrin.h>

#define VX_KERNEL __attribute__((target("avx2")))
#include "VxCamera/pixel/VectorKernels.h"

namespace pixel {

namespace {

/// Registers of 32 bytes in two lanes of 16; see VectorKernels.h.
struct Avx2Vector {
    using Bytes = __m256i;
    using Mask = __m256i;
    static constexpr std::size_t kBytes = 32;
    static constexpr std::size_t kLanes = 2;
    static constexpr std::size_t kLaneBytes = 16;

    VX_KERNEL_PART static Bytes Load(const std::uint8_t* from)
    {
        return _mm256_loadu_si256(reinterpret_cast<const __m256i*>(from));
    }
    /// The same 16 bytes in both lanes.
    VX_KERNEL_PART static Bytes LoadTwice(const std::uint8_t* from)
    {
        return _mm256_broadcastsi128_si256(_mm_loadu_si128(reinterpret_cast<const __m128i*>(from)));
    }
    VX_KERNEL_PART static void Store(std::uint8_t* to, Bytes bytes)
    {
        _mm256_storeu_si256(reinterpret_cast<__m256i*>(to), bytes);
    }
    VX_KERNEL_PART static void StoreLanes(std::uint8_t* low, std::uint8_t* high, Bytes bytes)
    {
        _mm_storeu_si128(reinterpret_cast<__m128i*>(low), _mm256_castsi256_si128(bytes));
        _mm_storeu_si128(reinterpret_cast<__m128i*>(high), _mm256_extracti128_si256(bytes, 1));
    }
    VX_KERNEL_PART static Bytes Average(Bytes a, Bytes b) { return _mm256_avg_epu8(a, b); }
    VX_KERNEL_PART static Bytes Xor(Bytes a, Bytes b) { return _mm256_xor_si256(a, b); }
    VX_KERNEL_PART static Bytes And(Bytes a, Bytes b) { return _mm256_and_si256(a, b); }
    VX_KERNEL_PART static Bytes Or(Bytes a, Bytes b) { return _mm256_or_si256(a, b); }
    VX_KERNEL_PART static Bytes Subtract(Bytes a, Bytes b) { return _mm256_sub_epi8(a, b); }
    VX_KERNEL_PART static Bytes Splat8(char value) { return _mm256_set1_epi8(value); }
    VX_KERNEL_PART static Bytes Splat32(std::int32_t value) { return _mm256_set1_epi32(value); }
    VX_KERNEL_PART static Bytes SplatPair(std::int16_t low, std::int16_t high)
    {
        return _mm256_set1_epi32(high * 0x10000 + (low & 0xFFFF));
    }
    VX_KERNEL_PART static Mask EvenBytes() { return _mm256_set1_epi16(0x00FF); }
    VX_KERNEL_PART static Mask OddBytes() { return _mm256_xor_si256(EvenBytes(), _mm256_set1_epi8(-1)); }
    VX_KERNEL_PART static Bytes Select(Mask mask, Bytes a, Bytes b) { return _mm256_blendv_epi8(b, a, mask); }

    VX_KERNEL_PART static Bytes LowBytes(Bytes a) { return _mm256_and_si256(a, _mm256_set1_epi16(0x00FF)); }
    VX_KERNEL_PART static Bytes HighBytes(Bytes a) { return _mm256_srli_epi16(a, 8); }
    VX_KERNEL_PART static Bytes PackWords(Bytes a, Bytes b)
    {
        constexpr int kSwapInnerQuarters = 0xD8; // packing works within lanes
        return _mm256_permute4x64_epi64(_mm256_packus_epi16(a, b), kSwapInnerQuarters);
    }
    VX_KERNEL_PART static Bytes AddWords(Bytes a, Bytes b) { return _mm256_add_epi16(a, b); }
    VX_KERNEL_PART static Bytes MultiplyPairs(Bytes a, Bytes b) { return _mm256_madd_epi16(a, b); }
    VX_KERNEL_PART static Bytes AddDwords(Bytes a, Bytes b) { return _mm256_add_epi32(a, b); }
    VX_KERNEL_PART static Bytes ShiftAndMerge(Bytes first, Bytes second)
    {
        constexpr int kOddWords = 0xAA;
        return _mm256_blend_epi16(_mm256_srli_epi32(first, kCoefficientBits),
                                  _mm256_slli_epi32(second, 16 - kCoefficientBits), kOddWords);
    }

    VX_KERNEL_PART static Bytes LoadWords(const std::uint8_t* from)
    {
        return _mm256_cvtepu8_epi16(_mm_loadu_si128(reinterpret_cast<const __m128i*>(from)));
    }
    VX_KERNEL_PART static Bytes MultiplyWords(Bytes a, Bytes b) { return _mm256_mullo_epi16(a, b); }
    template <unsigned bits>
    VX_KERNEL_PART static Bytes ShiftWords(Bytes a)
    {
        return _mm256_srli_epi16(a, bits);
    }
    VX_KERNEL_PART static Bytes ShiftDwords(Bytes a) { return _mm256_srai_epi32(a, kCoefficientBits); }
    VX_KERNEL_PART static Bytes PackDwords(Bytes a, Bytes b, Bytes c, Bytes d)
    {
        // Packing works within lanes: the eight quarters come out alternating.
        const Bytes order = _mm256_setr_epi32(0, 4, 1, 5, 2, 6, 3, 7);
        return _mm256_permutevar8x32_epi32(
            _mm256_packus_epi16(_mm256_packs_epi32(a, b), _mm256_packs_epi32(c, d)), order);
    }

    template <Target target>
    VX_KERNEL_PART static void ExpandMono(const std::uint8_t* from, std::uint8_t* to)
    {
        // Each register takes its pixels from 16 of the 32 that hold all of them, first to last.
        constexpr std::size_t kPixel = kTargetBytes<target>;
        constexpr std::array<std::size_t, 4> kFirstPixels = target == Target::Bgr
                                                                ? std::array<std::size_t, 4>{0, 8, 16, 16}
                                                                : std::array<std::size_t, 4>{0, 0, 16, 16};
        static constexpr std::array kIndices{ExpandIndices<kBytes>(kPixel, 0, kFirstPixels[0]),
                                             ExpandIndices<kBytes>(kPixel, kBytes, kFirstPixels[1]),
                                             ExpandIndices<kBytes>(kPixel, 2 * kBytes, kFirstPixels[2]),
                                             ExpandIndices<kBytes>(kPixel, 3 * kBytes, kFirstPixels[3])};
        const Bytes alpha = Splat32(target == Target::Bgra ? kOpaqueAlpha : 0);
        for (std::size_t i = 0; i < kPixel; ++i) {
            const Bytes mono = LoadTwice(from + kFirstPixels[i]);
            Store(to + i * kBytes, Or(_mm256_shuffle_epi8(mono, Load(kIndices[i].data())), alpha));
        }
    }

    VX_KERNEL_PART static Bytes LoadLaneIndices(const std::uint8_t* from) { return LoadTwice(from); }

    template <std::size_t step>
    VX_KERNEL_PART static Bytes LoadLanes(const std::uint8_t* from)
    {
        if constexpr (step == kLaneBytes)
            return Load(from);
        const __m128i low = _mm_loadu_si128(reinterpret_cast<const __m128i*>(from));
        const __m128i high = _mm_loadu_si128(reinterpret_cast<const __m128i*>(from + step));
        return _mm256_inserti128_si256(_mm256_castsi128_si256(low), high, 1);
    }
    template <std::size_t step>
    VX_KERNEL_PART static void StoreLanesAtStep(std::uint8_t* to, Bytes bytes)
    {
        if constexpr (step == kLaneBytes)
            Store(to, bytes);
        else
            StoreLanes(to, to + step, bytes);
    }

    template <std::size_t step>
    VX_KERNEL_PART static Bytes GatherLanes(const std::uint8_t* from, Bytes indices)
    {
        return _mm256_shuffle_epi8(LoadLanes<step>(from), indices);
    }

    template <std::size_t sourceStep, std::size_t targetStep>
    VX_KERNEL_PART static void ShuffleLanes(const std::uint8_t* from, Bytes indices, std::uint8_t* to)
    {
        StoreLanesAtStep<targetStep>(to, _mm256_shuffle_epi8(LoadLanes<sourceStep>(from), indices));
    }

    template <std::size_t sourceStep, std::size_t targetStep>
    VX_KERNEL_PART static void ShuffleLanes(const std::uint8_t* from, Bytes indices, Bytes alpha,
                                            std::uint8_t* to)
    {
        StoreLanesAtStep<targetStep>(to,
                                     Or(_mm256_shuffle_epi8(LoadLanes<sourceStep>(from), indices), alpha));
    }

    /// The lane of that number of the three that hold the colours of kLaneBytes pixels.
    template <std::size_t lane>
    VX_KERNEL_PART static Bytes InterleavedLane(Bytes blue, Bytes green, Bytes red)
    {
        static constexpr std::array kIndices{InterleaveIndices<kLaneBytes>(lane, 0, kGivesZero),
                                             InterleaveIndices<kLaneBytes>(lane, 1, kGivesZero),
                                             InterleaveIndices<kLaneBytes>(lane, 2, kGivesZero)};
        const Bytes b = _mm256_shuffle_epi8(blue, LoadLaneIndices(kIndices[0].data()));
        const Bytes g = _mm256_shuffle_epi8(green, LoadLaneIndices(kIndices[1].data()));
        const Bytes r = _mm256_shuffle_epi8(red, LoadLaneIndices(kIndices[2].data()));
        return Or(Or(b, g), r);
    }

    VX_KERNEL_PART static void StoreBgr(std::uint8_t* to, Bytes blue, Bytes green, Bytes red)
    {
        std::uint8_t* const high = to + 3 * kLaneBytes;
        StoreLanes(to, high, InterleavedLane<0>(blue, green, red));
        StoreLanes(to + kLaneBytes, high + kLaneBytes, InterleavedLane<1>(blue, green, red));
        StoreLanes(to + 2 * kLaneBytes, high + 2 * kLaneBytes, InterleavedLane<2>(blue, green, red));
    }

    VX_KERNEL_PART static void StoreBgra(std::uint8_t* to, Bytes blue, Bytes green, Bytes red)
    {
        const Bytes alpha = _mm256_set1_epi8(static_cast<char>(kOpaque));
        const Bytes blueGreenLow = _mm256_unpacklo_epi8(blue, green);
        const Bytes blueGreenHigh = _mm256_unpackhi_epi8(blue, green);
        const Bytes redAlphaLow = _mm256_unpacklo_epi8(red, alpha);
        const Bytes redAlphaHigh = _mm256_unpackhi_epi8(red, alpha);
        std::uint8_t* const high = to + 4 * kLaneBytes;
        StoreLanes(to, high, _mm256_unpacklo_epi16(blueGreenLow, redAlphaLow));
        StoreLanes(to + kLaneBytes, high + kLaneBytes, _mm256_unpackhi_epi16(blueGreenLow, redAlphaLow));
        StoreLanes(to + 2 * kLaneBytes, high + 2 * kLaneBytes,
                   _mm256_unpacklo_epi16(blueGreenHigh, redAlphaHigh));
        StoreLanes(to + 3 * kLaneBytes, high + 3 * kLaneBytes,
                   _mm256_unpackhi_epi16(blueGreenHigh, redAlphaHigh));
    }
};

} // namespace

const RowKernels& Avx2Kernels()
{
    static constexpr RowKernels kKernels = MakeVectorKernels<Avx2Vector>();
    return kKernels;
}

} // namespace pixel
