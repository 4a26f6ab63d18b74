#include "VxCamera/pixel/RowKernels.h"

#include <immintrin.h>

// The compiler's own header leaves the pass-through operand of unmasked instructions uninitialised on
// purpose, and warns about it where optimised (GCC PR 105593).
#pragma GCC diagnostic ignored "-Wmaybe-uninitialized"
#pragma GCC diagnostic ignored "-Wuninitialized"

#define VX_KERNEL __attribute__((target("avx512bw,avx512vbmi")))
#include "VxCamera/pixel/VectorKernels.h"

namespace pixel {

namespace {

/// Registers of 64 bytes, in which a byte can go anywhere; see VectorKernels.h.
struct Avx512Vector {
    using Bytes = __m512i;
    using Mask = __mmask64;
    static constexpr std::size_t kBytes = 64;
    static constexpr std::size_t kLanes = 1;
    static constexpr std::size_t kLaneBytes = 64;

    VX_KERNEL_PART static Bytes Load(const std::uint8_t* from) { return _mm512_loadu_si512(from); }
    VX_KERNEL_PART static void Store(std::uint8_t* to, Bytes bytes) { _mm512_storeu_si512(to, bytes); }
    VX_KERNEL_PART static Bytes Average(Bytes a, Bytes b) { return _mm512_avg_epu8(a, b); }
    VX_KERNEL_PART static Bytes Xor(Bytes a, Bytes b) { return _mm512_xor_si512(a, b); }
    VX_KERNEL_PART static Bytes And(Bytes a, Bytes b) { return _mm512_and_si512(a, b); }
    VX_KERNEL_PART static Bytes Or(Bytes a, Bytes b) { return _mm512_or_si512(a, b); }
    VX_KERNEL_PART static Bytes Subtract(Bytes a, Bytes b) { return _mm512_sub_epi8(a, b); }
    VX_KERNEL_PART static Bytes Splat8(char value) { return _mm512_set1_epi8(value); }
    VX_KERNEL_PART static Bytes Splat32(std::int32_t value) { return _mm512_set1_epi32(value); }
    VX_KERNEL_PART static Bytes SplatPair(std::int16_t low, std::int16_t high)
    {
        return _mm512_set1_epi32(high * 0x10000 + (low & 0xFFFF));
    }
    VX_KERNEL_PART static Mask EvenBytes() { return 0x5555555555555555u; }
    VX_KERNEL_PART static Mask OddBytes() { return 0xAAAAAAAAAAAAAAAAu; }
    VX_KERNEL_PART static Bytes Select(Mask mask, Bytes a, Bytes b)
    {
        return _mm512_mask_blend_epi8(mask, b, a);
    }

    VX_KERNEL_PART static Bytes LowBytes(Bytes a) { return _mm512_and_si512(a, _mm512_set1_epi16(0x00FF)); }
    VX_KERNEL_PART static Bytes HighBytes(Bytes a) { return _mm512_srli_epi16(a, 8); }
    VX_KERNEL_PART static Bytes PackWords(Bytes a, Bytes b)
    {
        // Packing works within 16 bytes: the eight quarters come out alternating.
        const Bytes order = _mm512_setr_epi64(0, 2, 4, 6, 1, 3, 5, 7);
        return _mm512_permutexvar_epi64(order, _mm512_packus_epi16(a, b));
    }
    VX_KERNEL_PART static Bytes AddWords(Bytes a, Bytes b) { return _mm512_add_epi16(a, b); }
    VX_KERNEL_PART static Bytes MultiplyPairs(Bytes a, Bytes b) { return _mm512_madd_epi16(a, b); }
    VX_KERNEL_PART static Bytes AddDwords(Bytes a, Bytes b) { return _mm512_add_epi32(a, b); }
    VX_KERNEL_PART static Bytes ShiftAndMerge(Bytes first, Bytes second)
    {
        constexpr __mmask32 kOddWords = 0xAAAAAAAA;
        return _mm512_mask_blend_epi16(kOddWords, _mm512_srli_epi32(first, kCoefficientBits),
                                       _mm512_slli_epi32(second, 16 - kCoefficientBits));
    }

    VX_KERNEL_PART static Bytes LoadWords(const std::uint8_t* from)
    {
        return _mm512_cvtepu8_epi16(_mm256_loadu_si256(reinterpret_cast<const __m256i*>(from)));
    }
    VX_KERNEL_PART static Bytes MultiplyWords(Bytes a, Bytes b) { return _mm512_mullo_epi16(a, b); }
    template <unsigned bits>
    VX_KERNEL_PART static Bytes ShiftWords(Bytes a)
    {
        return _mm512_srli_epi16(a, bits);
    }
    VX_KERNEL_PART static Bytes ShiftDwords(Bytes a) { return _mm512_srai_epi32(a, kCoefficientBits); }
    VX_KERNEL_PART static Bytes PackDwords(Bytes a, Bytes b, Bytes c, Bytes d)
    {
        // Packing works within 16 bytes: the sixteen parts come out alternating.
        const Bytes order = _mm512_setr_epi32(0, 4, 8, 12, 1, 5, 9, 13, 2, 6, 10, 14, 3, 7, 11, 15);
        return _mm512_permutexvar_epi32(
            order, _mm512_packus_epi16(_mm512_packs_epi32(a, b), _mm512_packs_epi32(c, d)));
    }
    template <std::size_t step>
    VX_KERNEL_PART static Bytes GatherLanes(const std::uint8_t* from, Bytes indices)
    {
        return _mm512_permutexvar_epi8(indices, Load(from));
    }

    template <Target target>
    VX_KERNEL_PART static void ExpandMono(const std::uint8_t* from, std::uint8_t* to)
    {
        static constexpr std::array kIndices{ExpandIndices<kBytes>(kTargetBytes<target>, 0, 0),
                                             ExpandIndices<kBytes>(kTargetBytes<target>, kBytes, 0),
                                             ExpandIndices<kBytes>(kTargetBytes<target>, 2 * kBytes, 0),
                                             ExpandIndices<kBytes>(kTargetBytes<target>, 3 * kBytes, 0)};
        const Bytes mono = Load(from);
        const Bytes alpha = Splat32(target == Target::Bgra ? kOpaqueAlpha : 0);
        for (std::size_t i = 0; i < kTargetBytes<target>; ++i)
            Store(to + i * kBytes, Or(_mm512_permutexvar_epi8(Load(kIndices[i].data()), mono), alpha));
    }

    VX_KERNEL_PART static Bytes LoadLaneIndices(const std::uint8_t* from) { return Load(from); }

    template <std::size_t sourceStep, std::size_t targetStep>
    VX_KERNEL_PART static void ShuffleLanes(const std::uint8_t* from, Bytes indices, std::uint8_t* to)
    {
        Store(to, _mm512_permutexvar_epi8(indices, Load(from)));
    }

    template <std::size_t sourceStep, std::size_t targetStep>
    VX_KERNEL_PART static void ShuffleLanes(const std::uint8_t* from, Bytes indices, Bytes alpha,
                                            std::uint8_t* to)
    {
        Store(to, Or(_mm512_permutexvar_epi8(indices, Load(from)), alpha));
    }

    /// Where the bytes of one colour go: every lane has another third of the positions for this colour, so
    /// that one order of the bytes serves all three.
    static constexpr std::array<std::uint8_t, kBytes> SpreadIndices(std::size_t channel)
    {
        std::array<std::uint8_t, kBytes> indices{};
        for (std::size_t lane = 0; lane < 3; ++lane)
            for (std::size_t i = 0; i < kBytes; ++i)
                if (const auto index = InterleaveIndices<kBytes>(lane, channel, kBytes)[i]; index < kBytes)
                    indices[i] = index;
        return indices;
    }

    VX_KERNEL_PART static void StoreBgr(std::uint8_t* to, Bytes blue, Bytes green, Bytes red)
    {
        static constexpr std::array kIndices{SpreadIndices(0), SpreadIndices(1), SpreadIndices(2)};
        constexpr Mask kFirst = 0x9249249249249249u;  // bytes 0, 3, 6, ...
        constexpr Mask kSecond = 0x2492492492492492u; // bytes 1, 4, 7, ...
        const Bytes b = _mm512_permutexvar_epi8(Load(kIndices[0].data()), blue);
        const Bytes g = _mm512_permutexvar_epi8(Load(kIndices[1].data()), green);
        const Bytes r = _mm512_permutexvar_epi8(Load(kIndices[2].data()), red);
        Store(to, Select(kFirst, b, Select(kSecond, g, r)));
        Store(to + kBytes, Select(kFirst, g, Select(kSecond, r, b)));
        Store(to + 2 * kBytes, Select(kFirst, r, Select(kSecond, b, g)));
    }

    VX_KERNEL_PART static void StoreBgra(std::uint8_t* to, Bytes blue, Bytes green, Bytes red)
    {
        // Unpacking works within 16 bytes: each of these gets four pixels of every quarter first.
        const Bytes order = _mm512_setr_epi32(0, 4, 8, 12, 1, 5, 9, 13, 2, 6, 10, 14, 3, 7, 11, 15);
        const Bytes alpha = _mm512_set1_epi8(static_cast<char>(kOpaque));
        const Bytes b = _mm512_permutexvar_epi32(order, blue);
        const Bytes g = _mm512_permutexvar_epi32(order, green);
        const Bytes r = _mm512_permutexvar_epi32(order, red);
        const Bytes blueGreenLow = _mm512_unpacklo_epi8(b, g);
        const Bytes blueGreenHigh = _mm512_unpackhi_epi8(b, g);
        const Bytes redAlphaLow = _mm512_unpacklo_epi8(r, alpha);
        const Bytes redAlphaHigh = _mm512_unpackhi_epi8(r, alpha);
        Store(to, _mm512_unpacklo_epi16(blueGreenLow, redAlphaLow));
        Store(to + kBytes, _mm512_unpackhi_epi16(blueGreenLow, redAlphaLow));
        Store(to + 2 * kBytes, _mm512_unpacklo_epi16(blueGreenHigh, redAlphaHigh));
        Store(to + 3 * kBytes, _mm512_unpackhi_epi16(blueGreenHigh, redAlphaHigh));
    }
};

} // namespace

const RowKernels& Avx512Kernels()
{
    static constexpr RowKernels kKernels = MakeVectorKernels<Avx512Vector>();
    return kKernels;
}

} // namespace pixel
