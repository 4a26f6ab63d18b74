#include "VxCamera/pixel/RowKernels.h"

#include <immintrin.h>

#define VX_KERNEL __attribute__((target("sse4.1")))
#include "VxCamera/pixel/VectorKernels.h"

namespace pixel {

namespace {

/// Registers of 16 bytes; see VectorKernels.h.
struct Sse41Vector {
    using Bytes = __m128i;
    using Mask = __m128i;
    static constexpr std::size_t kBytes = 16;
    static constexpr std::size_t kLanes = 1;
    static constexpr std::size_t kLaneBytes = 16;

    VX_KERNEL_PART static Bytes Load(const std::uint8_t* from)
    {
        return _mm_loadu_si128(reinterpret_cast<const __m128i*>(from));
    }
    VX_KERNEL_PART static void Store(std::uint8_t* to, Bytes bytes)
    {
        _mm_storeu_si128(reinterpret_cast<__m128i*>(to), bytes);
    }
    VX_KERNEL_PART static Bytes Average(Bytes a, Bytes b) { return _mm_avg_epu8(a, b); }
    VX_KERNEL_PART static Bytes Xor(Bytes a, Bytes b) { return _mm_xor_si128(a, b); }
    VX_KERNEL_PART static Bytes And(Bytes a, Bytes b) { return _mm_and_si128(a, b); }
    VX_KERNEL_PART static Bytes Or(Bytes a, Bytes b) { return _mm_or_si128(a, b); }
    VX_KERNEL_PART static Bytes Subtract(Bytes a, Bytes b) { return _mm_sub_epi8(a, b); }
    VX_KERNEL_PART static Bytes Splat8(char value) { return _mm_set1_epi8(value); }
    VX_KERNEL_PART static Bytes Splat32(std::int32_t value) { return _mm_set1_epi32(value); }
    VX_KERNEL_PART static Bytes SplatPair(std::int16_t low, std::int16_t high)
    {
        return _mm_set1_epi32(high * 0x10000 + (low & 0xFFFF));
    }
    VX_KERNEL_PART static Mask EvenBytes() { return _mm_set1_epi16(0x00FF); }
    VX_KERNEL_PART static Mask OddBytes() { return _mm_xor_si128(EvenBytes(), _mm_set1_epi8(-1)); }
    VX_KERNEL_PART static Bytes Select(Mask mask, Bytes a, Bytes b) { return _mm_blendv_epi8(b, a, mask); }

    VX_KERNEL_PART static Bytes LowBytes(Bytes a) { return _mm_and_si128(a, _mm_set1_epi16(0x00FF)); }
    VX_KERNEL_PART static Bytes HighBytes(Bytes a) { return _mm_srli_epi16(a, 8); }
    VX_KERNEL_PART static Bytes PackWords(Bytes a, Bytes b) { return _mm_packus_epi16(a, b); }
    VX_KERNEL_PART static Bytes AddWords(Bytes a, Bytes b) { return _mm_add_epi16(a, b); }
    VX_KERNEL_PART static Bytes MultiplyPairs(Bytes a, Bytes b) { return _mm_madd_epi16(a, b); }
    VX_KERNEL_PART static Bytes AddDwords(Bytes a, Bytes b) { return _mm_add_epi32(a, b); }
    VX_KERNEL_PART static Bytes ShiftAndMerge(Bytes first, Bytes second)
    {
        constexpr int kOddWords = 0xAA;
        return _mm_blend_epi16(_mm_srli_epi32(first, kCoefficientBits),
                               _mm_slli_epi32(second, 16 - kCoefficientBits), kOddWords);
    }

    VX_KERNEL_PART static Bytes LoadWords(const std::uint8_t* from)
    {
        return _mm_cvtepu8_epi16(_mm_loadl_epi64(reinterpret_cast<const __m128i*>(from)));
    }
    VX_KERNEL_PART static Bytes MultiplyWords(Bytes a, Bytes b) { return _mm_mullo_epi16(a, b); }
    template <unsigned bits>
    VX_KERNEL_PART static Bytes ShiftWords(Bytes a)
    {
        return _mm_srli_epi16(a, bits);
    }
    VX_KERNEL_PART static Bytes ShiftDwords(Bytes a) { return _mm_srai_epi32(a, kCoefficientBits); }
    VX_KERNEL_PART static Bytes PackDwords(Bytes a, Bytes b, Bytes c, Bytes d)
    {
        return _mm_packus_epi16(_mm_packs_epi32(a, b), _mm_packs_epi32(c, d));
    }
    template <std::size_t step>
    VX_KERNEL_PART static Bytes GatherLanes(const std::uint8_t* from, Bytes indices)
    {
        return _mm_shuffle_epi8(Load(from), indices);
    }

    template <Target target>
    VX_KERNEL_PART static void ExpandMono(const std::uint8_t* from, std::uint8_t* to)
    {
        const Bytes mono = Load(from);
        const Bytes alpha = _mm_set1_epi32(target == Target::Bgra ? kOpaqueAlpha : 0);
        alignas(kBytes) static constexpr std::array kIndices{
            ExpandIndices<kBytes>(kTargetBytes<target>, 0, 0),
            ExpandIndices<kBytes>(kTargetBytes<target>, kBytes, 0),
            ExpandIndices<kBytes>(kTargetBytes<target>, 2 * kBytes, 0),
            ExpandIndices<kBytes>(kTargetBytes<target>, 3 * kBytes, 0)};
        for (std::size_t i = 0; i < kTargetBytes<target>; ++i)
            Store(to + i * kBytes, Or(_mm_shuffle_epi8(mono, Load(kIndices[i].data())), alpha));
    }

    VX_KERNEL_PART static Bytes LoadLaneIndices(const std::uint8_t* from) { return Load(from); }

    template <std::size_t sourceStep, std::size_t targetStep>
    VX_KERNEL_PART static void ShuffleLanes(const std::uint8_t* from, Bytes indices, std::uint8_t* to)
    {
        Store(to, _mm_shuffle_epi8(Load(from), indices));
    }

    template <std::size_t sourceStep, std::size_t targetStep>
    VX_KERNEL_PART static void ShuffleLanes(const std::uint8_t* from, Bytes indices, Bytes alpha,
                                            std::uint8_t* to)
    {
        Store(to, Or(_mm_shuffle_epi8(Load(from), indices), alpha));
    }

    /// The lane of that number of the three that hold the colours of kLaneBytes pixels.
    template <std::size_t lane>
    VX_KERNEL_PART static Bytes InterleavedLane(Bytes blue, Bytes green, Bytes red)
    {
        static constexpr std::array kIndices{InterleaveIndices<kLaneBytes>(lane, 0, kGivesZero),
                                             InterleaveIndices<kLaneBytes>(lane, 1, kGivesZero),
                                             InterleaveIndices<kLaneBytes>(lane, 2, kGivesZero)};
        const Bytes b = _mm_shuffle_epi8(blue, LoadLaneIndices(kIndices[0].data()));
        const Bytes g = _mm_shuffle_epi8(green, LoadLaneIndices(kIndices[1].data()));
        const Bytes r = _mm_shuffle_epi8(red, LoadLaneIndices(kIndices[2].data()));
        return Or(Or(b, g), r);
    }

    VX_KERNEL_PART static void StoreBgr(std::uint8_t* to, Bytes blue, Bytes green, Bytes red)
    {
        Store(to, InterleavedLane<0>(blue, green, red));
        Store(to + kBytes, InterleavedLane<1>(blue, green, red));
        Store(to + 2 * kBytes, InterleavedLane<2>(blue, green, red));
    }

    VX_KERNEL_PART static void StoreBgra(std::uint8_t* to, Bytes blue, Bytes green, Bytes red)
    {
        const Bytes alpha = _mm_set1_epi8(static_cast<char>(kOpaque));
        const Bytes blueGreenLow = _mm_unpacklo_epi8(blue, green);
        const Bytes blueGreenHigh = _mm_unpackhi_epi8(blue, green);
        const Bytes redAlphaLow = _mm_unpacklo_epi8(red, alpha);
        const Bytes redAlphaHigh = _mm_unpackhi_epi8(red, alpha);
        Store(to, _mm_unpacklo_epi16(blueGreenLow, redAlphaLow));
        Store(to + kBytes, _mm_unpackhi_epi16(blueGreenLow, redAlphaLow));
        Store(to + 2 * kBytes, _mm_unpacklo_epi16(blueGreenHigh, redAlphaHigh));
        Store(to + 3 * kBytes, _mm_unpackhi_epi16(blueGreenHigh, redAlphaHigh));
    }
};

} // namespace

const RowKernels& Sse41Kernels()
{
    static constexpr RowKernels kKernels = MakeVectorKernels<Sse41Vector>();
    return kKernels;
}

} // namespace pixel
