#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

/// A picture in somebody else's memory: rows from the lowest address upwards, each followed by its padding,
/// or packed ones that run together.
///
/// Owner:  the caller, who keeps the memory for as long as the view.
/// Thread: that of the memory.
template <typename Byte>
struct VxBasicPictureView {
    std::span<Byte> bytes;       ///< at least the picture without the padding behind its last row
    std::uint32_t code;          ///< pixel format
    std::uint32_t widthPx;       ///< pixels
    std::uint32_t heightPx;      ///< pixels
    std::size_t rowPaddingBytes; ///< bytes between the end of a row's pixels and the next row
    bool areRowsJoined = false;  ///< each begins at the bit behind the last one; no padding counts then
};

using VxPictureView = VxBasicPictureView<const std::uint8_t>;
using VxWritablePictureView = VxBasicPictureView<std::uint8_t>;
