#pragma once

#include "VxCamera/pixel/VxPixelFormat.h"

#include <cstdint>

namespace pixel {

/// Numbers that turn brightness and colour differences into red, green and blue, in units of 1/8192:
///
///   c = Cb - 128, d = Cr - 128, y = luma * (Y - black)
///   R = (y + redFromCr * d + 4096) / 8192, rounded down
///   G = (y + greenFromCb * c + greenFromCr * d + 4096) / 8192, rounded down
///   B = (y + blueFromCb * c + 4096) / 8192, rounded down
///
/// each then limited to 0..255. The result differs from that of the exact real numbers by a fiftieth of a
/// level at most before rounding.
struct ColorCoefficients {
    std::int16_t black;
    std::int16_t luma;
    std::int16_t redFromCr;
    std::int16_t greenFromCb;
    std::int16_t greenFromCr;
    std::int16_t blueFromCb;
};

// Chosen: the largest power of two with which every coefficient fits into 16 bits, as multiplication of pairs
// wants.
constexpr int kCoefficientBits = 13;
constexpr int kCoefficientHalf = 1 << (kCoefficientBits - 1);

// Fixed by 8-bit video: the value of a colour difference of nothing.
constexpr int kChromaCentre = 128;

/// @param matrix  not None
[[nodiscard]] const ColorCoefficients& CoefficientsOf(VxColorMatrix matrix);

} // namespace pixel
