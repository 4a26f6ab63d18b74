#pragma once

#include <cstdint>
#include <span>

namespace vxds {

/// Writes a row of YUY2 (Y U Y V) from a row of BGR.
///
/// The formula is fixed to the bit: luma in double precision rounded to single, chroma of each pixel alone (U
/// from even columns, V from odd ones), everything truncated. No value leaves 0 to 255.
///
/// @param bgr   3 bytes a pixel
/// @param yuy2  2 bytes a pixel; the shorter of the two ends the row
void BgrRowToYuy2(std::span<const std::uint8_t> bgr, std::span<std::uint8_t> yuy2);

} // namespace vxds
