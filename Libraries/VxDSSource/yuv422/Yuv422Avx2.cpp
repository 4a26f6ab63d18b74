#include "VxDSSource/yuv422/Yuv422Kernels.h"

#include <immintrin.h>

#define VX_KERNEL __attribute__((target("avx2")))
#include "VxDSSource/yuv422/Yuv422Lanes.h"
#include "VxDSSource/yuv422/Yuv422Vector.h"

namespace vxds {

namespace {

/// Registers of 16 pixels; see Yuv422Vector.h.
struct Yuv422Avx2Vector {
    using Words = __m256i;
    static constexpr std::size_t kPixels = 16;

    VX_KERNEL_PART static Words Add(Words a, Words b) { return _mm256_add_epi16(a, b); }
    VX_KERNEL_PART static Words Subtract(Words a, Words b) { return _mm256_sub_epi16(a, b); }
    VX_KERNEL_PART static Words And(Words a, Words b) { return _mm256_and_si256(a, b); }
    VX_KERNEL_PART static Words Or(Words a, Words b) { return _mm256_or_si256(a, b); }
    VX_KERNEL_PART static Words Multiply(Words a, Words b) { return _mm256_mullo_epi16(a, b); }
    VX_KERNEL_PART static Words MultiplyHigh(Words a, Words b) { return _mm256_mulhi_epu16(a, b); }
    template <int bits>
    VX_KERNEL_PART static Words ShiftLeft(Words a)
    {
        return _mm256_slli_epi16(a, bits);
    }
    template <int bits>
    VX_KERNEL_PART static Words ShiftRight(Words a)
    {
        return _mm256_srli_epi16(a, bits);
    }
    template <int bits>
    VX_KERNEL_PART static Words ShiftRightSigned(Words a)
    {
        return _mm256_srai_epi16(a, bits);
    }
    VX_KERNEL_PART static Words Splat(int value) { return _mm256_set1_epi16(static_cast<short>(value)); }
    VX_KERNEL_PART static Words SplatPair(int even, int odd)
    {
        return _mm256_set1_epi32(
            static_cast<int>(static_cast<unsigned>(odd) << 16 | static_cast<unsigned>(even)));
    }
    VX_KERNEL_PART static Words MultiplyBytes(Words bytes, int low, int high)
    {
        return _mm256_maddubs_epi16(bytes, Splat(high << 8 | low));
    }
    VX_KERNEL_PART static void Store(std::uint8_t* to, Words words)
    {
        _mm256_storeu_si256(reinterpret_cast<__m256i*>(to), words);
    }

    VX_KERNEL_PART static Yuv422Pixels<Yuv422Avx2Vector> LoadPixels(const std::uint8_t* bgr)
    {
        constexpr std::size_t kLastBytes = kYuv422LastPart;
        const Words first = LoadLanes(bgr);
        const Words last = LoadLanes(bgr + kLastBytes);
        return {Gather(first, last, kYuv422GreenRed), Gather(first, last, kYuv422Blue),
                Gather(first, last, kYuv422Chroma)};
    }

private:
    VX_KERNEL_PART static Words LoadLanes(const std::uint8_t* bgr)
    {
        constexpr std::size_t kLaneBytes = 24;
        const __m128i low = _mm_loadu_si128(reinterpret_cast<const __m128i*>(bgr));
        const __m128i high = _mm_loadu_si128(reinterpret_cast<const __m128i*>(bgr + kLaneBytes));
        return _mm256_inserti128_si256(_mm256_castsi128_si256(low), high, 1);
    }
    VX_KERNEL_PART static Words Indices(const std::uint8_t* from)
    {
        return _mm256_broadcastsi128_si256(_mm_load_si128(reinterpret_cast<const __m128i*>(from)));
    }
    VX_KERNEL_PART static Words Gather(Words first, Words last, const Yuv422LaneIndices& indices)
    {
        return Or(_mm256_shuffle_epi8(first, Indices(indices.first.data())),
                  _mm256_shuffle_epi8(last, Indices(indices.last.data())));
    }
};

} // namespace

VX_KERNEL std::size_t Yuv422WithAvx2(const std::uint8_t* bgr, std::uint8_t* yuy2, std::size_t widthPx)
{
    return Yuv422Row<Yuv422Avx2Vector>(bgr, yuy2, widthPx);
}

} // namespace vxds
