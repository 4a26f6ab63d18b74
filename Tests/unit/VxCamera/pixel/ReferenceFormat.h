#pragma once

#include "unit/VxCamera/pixel/ReferencePicture.h"

#include <optional>
#include <span>
#include <string>
#include <string_view>

namespace reference {

enum class Packing { Cells, Signed, Stream, OldPacked, Word32, Word565, OldWord32 };
enum class Planes { One, PerComponent, HalfChroma, QuarterChroma };

/// What a format's name says.
struct Format {
    std::string order; ///< letters of the components of a group of pixels; "Y" grey; Bayer: of the 2x2 cell
    unsigned bits;
    Packing packing = Packing::Cells;
    Planes planes = Planes::One;
    bool isBayer = false;
    bool isBiColor = false;
};

/// @return  empty for names of what is no picture, or whose bytes nobody describes
[[nodiscard]] std::optional<Format> ParseName(std::string_view name);

[[nodiscard]] Matrix MatrixOf(std::string_view name);

/// How many pixels share a group of components.
[[nodiscard]] std::size_t PixelsPerGroup(const Format& format);

/// Components of a row of one plane.
[[nodiscard]] std::size_t ComponentsPerRow(const Format& format, std::size_t widthPx);

/// Bytes of a row of the first plane, without padding.
[[nodiscard]] std::size_t BytesPerRow(const Format& format, std::size_t widthPx);

/// A component as 0..255: the most significant 8 bits, or a shallow one stretched.
[[nodiscard]] double Level(const Format& format, std::span<const std::uint8_t> row, std::size_t index);

} // namespace reference
