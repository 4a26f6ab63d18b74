#pragma once

#include "VxDSSource/yuv422/Yuv422Kernels.h"
#include "VxDSSource/yuv422/Yuv422Layout.h"

#include <cstddef>
#include <cstdint>

// The formula in 16-bit integers, many pixels at a time, written once over a vector type. The file of each
// instruction set includes this one after it has defined VX_KERNEL, the attribute that lets the compiler use
// the set in one function; it stands at every function here, so that no function shared with other files can
// end up with instructions that the processor lacks.
//
// With thousandths of luma N = 299 R + 587 G + 114 B the formula in real numbers is
//
//   Y = N / 1000            U = 128 + 0.565 (B - N / 1000)            V = 128 + 0.713 (R - N / 1000)
//
// truncated. All of it is a multiple of 1/1000000, the errors of single precision stay below that wherever
// the result is next to a whole number, and so whole numbers give the same bytes: for all 16777216 colours,
// which a test tries in even and odd columns. With r = N mod 1000 and d = B - Y (or R - Y)
//
//   U = 128 + (565 d - ceil(0.565 r)) / 1000, rounded down, and the same with 713 for V.
//
// Numbers of more than 16 bits are never formed: n / 1000 = (n / 8) / 125, rounding down each time, and n / 8
// is summed from the eighths of its terms and the remainders of these.
//
// A vector type is a class without state: Words, kPixels of 16 bits each; Add, Subtract, And, Or, Multiply
// (low half), MultiplyHigh (unsigned, high half), ShiftLeft, ShiftRight, ShiftRightSigned; MultiplyBytes
// (sums of two products of bytes); Splat; SplatPair (one number for even and one for odd pixels); Store;
// LoadPixels.
#if !defined(VX_KERNEL)
#error "VX_KERNEL names the instruction set"
#endif
#define VX_KERNEL_PART VX_KERNEL __attribute__((always_inline)) inline

namespace vxds {

/// The colours of V::kPixels pixels, 16 bits each.
template <typename V>
struct Yuv422Pixels {
    typename V::Words greenRed; ///< green in the low byte, red in the high one
    typename V::Words blue;
    typename V::Words chroma; ///< blue of even pixels, red of odd ones
};

/// n / 125 of numbers below 59000, rounded down: with 33555 / 2^22, which is larger by so little (chosen: the
/// smallest power of two that does).
template <typename V>
VX_KERNEL_PART typename V::Words Yuv422By125(typename V::Words n)
{
    constexpr int kFactor = 33555;
    constexpr int kShift = 6;
    return V::template ShiftRight<kShift>(V::MultiplyHigh(n, V::Splat(kFactor)));
}

/// ceil(0.565 r) of even and ceil(0.713 r) of odd pixels, from r / 8 and r mod 8, r below 1000.
template <typename V>
VX_KERNEL_PART typename V::Words Yuv422ChromaOfRemainder(typename V::Words eighths, typename V::Words ones)
{
    // Chosen by trying: (25 r + 44) 47396 / 2^21 and (25 r + 35) 59811 / 2^21 round down to these for every
    // r.
    constexpr int kScale = 25;
    constexpr int kShift = 5;
    const auto scaled =
        V::Add(V::Multiply(eighths, V::Splat(8 * kScale)), V::Multiply(ones, V::Splat(kScale)));
    return V::template ShiftRight<kShift>(
        V::MultiplyHigh(V::Add(scaled, V::SplatPair(44, 35)), V::SplatPair(47396, 59811)));
}

template <typename V>
VX_KERNEL_PART typename V::Words Yuv422OfPixels(const Yuv422Pixels<V>& pixels)
{
    // N / 8: 299 = 8 * 37 + 3, 587 = 8 * 73 + 3, 114 = 8 * 14 + 2.
    const auto rest = V::Add(V::MultiplyBytes(pixels.greenRed, 3, 3), V::Add(pixels.blue, pixels.blue));
    const auto eighths =
        V::Add(V::Add(V::MultiplyBytes(pixels.greenRed, 73, 37), V::Multiply(pixels.blue, V::Splat(14))),
               V::template ShiftRight<3>(rest));
    const auto luma = Yuv422By125<V>(eighths);
    const auto remainder = Yuv422ChromaOfRemainder<V>(V::Subtract(eighths, V::Multiply(luma, V::Splat(125))),
                                                      V::And(rest, V::Splat(7)));
    // 128000 + 565 d - remainder, in eighths: 565 = 8 * 70 + 5, 713 = 8 * 89 + 1.
    const auto difference = V::Subtract(pixels.chroma, luma);
    const auto ones = V::Subtract(V::Multiply(difference, V::SplatPair(5, 1)), remainder);
    const auto scaled = V::Add(V::Add(V::Multiply(difference, V::SplatPair(70, 89)), V::Splat(16000)),
                               V::template ShiftRightSigned<3>(ones));
    return V::Or(luma, V::template ShiftLeft<8>(Yuv422By125<V>(scaled)));
}

template <typename V>
VX_KERNEL_PART std::size_t Yuv422Row(const std::uint8_t* bgr, std::uint8_t* yuy2, std::size_t widthPx)
{
    std::size_t x = 0;
    for (; x + V::kPixels <= widthPx; x += V::kPixels)
        V::Store(yuy2 + x * kYuv422Yuy2Bytes, Yuv422OfPixels<V>(V::LoadPixels(bgr + x * kYuv422BgrBytes)));
    return x;
}

} // namespace vxds
