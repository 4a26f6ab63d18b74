#pragma once

#include "VxSimulator/picture/Colour.h"
#include "VxSimulator/picture/PictureFormat.h"

#include <cstddef>
#include <cstdint>
#include <span>

namespace simulator {

/// Writes neighbouring pixels of one row in a pixel format.
/// @param colours  for formats that share colour: an even number, of pixels from an even column on
/// @param xPx, yPx  where the first of them is: a Bayer pixel shows the colour of its place
/// @param out  exactly as long as the pixels are in this format
void EncodePixels(PixelLayout layout, std::span<const Colour> colours, std::uint32_t xPx, std::uint32_t yPx,
                  std::span<std::byte> out);

} // namespace simulator
