#include "VxDSSource/yuv422/Yuv422Kernels.h"

#include <immintrin.h>

#include <array>

// The compiler's own header leaves the pass-through operand of unmasked instructions uninitialised on
// purpose, and warns about it where optimised (GCC PR 105593).
#pragma GCC diagnostic ignored "-Wmaybe-uninitialized"
#pragma GCC diagnostic ignored "-Wuninitialized"

#define VX_KERNEL __attribute__((target("avx512bw,avx512vbmi")))
#include "VxDSSource/yuv422/Yuv422Vector.h"

namespace vxds {

namespace {

constexpr std::size_t kRegisterPixels = 32;
constexpr std::size_t kBytes = 64;
// The second 64 bytes begin where they end with the last pixel: nothing behind it is read.
constexpr std::size_t kLastPart = kRegisterPixels * kYuv422BgrBytes - kBytes;

struct Indices {
    alignas(kBytes) std::array<std::uint8_t, kBytes> bytes{};
};
/// Bytes 0..63 are those of the first register, 64..127 those of the last.
constexpr Indices IndicesOf(Yuv422Source (*sourceOf)(std::size_t x))
{
    Indices indices;
    for (std::size_t i = 0; i < kBytes; ++i) {
        const Yuv422Source source = sourceOf(i / 2);
        const std::uint8_t byte = i % 2 == 0 ? source.low : source.high;
        indices.bytes[i] = byte == kYuv422Zero ? std::uint8_t{0}
                           : byte < kBytes
                               ? byte
                               : static_cast<std::uint8_t>(byte - kLastPart + kBytes); // below 128
    }
    return indices;
}

/// Registers of 32 pixels, whose bytes can come from anywhere in two registers; see Yuv422Vector.h.
struct Yuv422Avx512Vector {
    using Words = __m512i;
    static constexpr std::size_t kPixels = kRegisterPixels;

    VX_KERNEL_PART static Words Add(Words a, Words b) { return _mm512_add_epi16(a, b); }
    VX_KERNEL_PART static Words Subtract(Words a, Words b) { return _mm512_sub_epi16(a, b); }
    VX_KERNEL_PART static Words And(Words a, Words b) { return _mm512_and_si512(a, b); }
    VX_KERNEL_PART static Words Or(Words a, Words b) { return _mm512_or_si512(a, b); }
    VX_KERNEL_PART static Words Multiply(Words a, Words b) { return _mm512_mullo_epi16(a, b); }
    VX_KERNEL_PART static Words MultiplyHigh(Words a, Words b) { return _mm512_mulhi_epu16(a, b); }
    template <int bits>
    VX_KERNEL_PART static Words ShiftLeft(Words a)
    {
        return _mm512_slli_epi16(a, bits);
    }
    template <int bits>
    VX_KERNEL_PART static Words ShiftRight(Words a)
    {
        return _mm512_srli_epi16(a, bits);
    }
    template <int bits>
    VX_KERNEL_PART static Words ShiftRightSigned(Words a)
    {
        return _mm512_srai_epi16(a, bits);
    }
    VX_KERNEL_PART static Words Splat(int value) { return _mm512_set1_epi16(static_cast<short>(value)); }
    VX_KERNEL_PART static Words SplatPair(int even, int odd)
    {
        return _mm512_set1_epi32(
            static_cast<int>(static_cast<unsigned>(odd) << 16 | static_cast<unsigned>(even)));
    }
    VX_KERNEL_PART static Words MultiplyBytes(Words bytes, int low, int high)
    {
        return _mm512_maddubs_epi16(bytes, Splat(high << 8 | low));
    }
    VX_KERNEL_PART static void Store(std::uint8_t* to, Words words) { _mm512_storeu_si512(to, words); }

    VX_KERNEL_PART static Yuv422Pixels<Yuv422Avx512Vector> LoadPixels(const std::uint8_t* bgr)
    {
        constexpr __mmask64 kLowBytes = 0x5555555555555555u;
        static constexpr Indices kGreenRed = IndicesOf(GreenRedOf);
        static constexpr Indices kBlue = IndicesOf(BlueOf);
        static constexpr Indices kChroma = IndicesOf(ChromaOf);
        const Words first = _mm512_loadu_si512(bgr);
        const Words last = _mm512_loadu_si512(bgr + kLastPart);
        return {
            _mm512_permutex2var_epi8(first, _mm512_load_si512(kGreenRed.bytes.data()), last),
            _mm512_maskz_permutex2var_epi8(kLowBytes, first, _mm512_load_si512(kBlue.bytes.data()), last),
            _mm512_maskz_permutex2var_epi8(kLowBytes, first, _mm512_load_si512(kChroma.bytes.data()), last)};
    }
};

} // namespace

VX_KERNEL std::size_t Yuv422WithAvx512(const std::uint8_t* bgr, std::uint8_t* yuy2, std::size_t widthPx)
{
    return Yuv422Row<Yuv422Avx512Vector>(bgr, yuy2, widthPx);
}

} // namespace vxds
