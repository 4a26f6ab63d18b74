#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

namespace vxds {

/// What a processor can do, from less to more. Every set gives the same bytes.
enum class Yuv422Set : std::uint8_t {
    Scalar,
    Sse41,      ///< 8 pixels at a time
    Avx2,       ///< 16 pixels at a time
    Avx512Vbmi, ///< 32 pixels at a time
};

/// @return  whether this processor and system can run the set
[[nodiscard]] bool IsAvailable(Yuv422Set set);

/// Writes a row of YUY2 (Y U Y V) from a row of BGR, with the best set that is available.
///
/// The formula is fixed to the bit: luma in double precision rounded to single, chroma of each pixel alone (U
/// from even columns, V from odd ones), everything truncated. No value leaves 0 to 255.
///
/// @param bgr   3 bytes a pixel
/// @param yuy2  2 bytes a pixel; the shorter of the two ends the row
void BgrRowToYuy2(std::span<const std::uint8_t> bgr, std::span<std::uint8_t> yuy2);

/// The same with a set of the caller's choice.
/// @param set  must be available
void BgrRowToYuy2(std::span<const std::uint8_t> bgr, std::span<std::uint8_t> yuy2, Yuv422Set set);

} // namespace vxds
