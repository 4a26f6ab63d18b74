#pragma once

#include "VxCamera/pixel/UnpackRows.h"
#include "VxCamera/pixel/VxPictureView.h"
#include "VxCamera/pixel/VxPixelFormat.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>

namespace pixel {

// Fixed by demosaicing two rows at a time: they and one on either side.
constexpr std::size_t kRowsHeld = 4;

/// Where the rows of one plane of a picture lie.
struct PlaneLayout {
    std::size_t firstByte;   ///< of the plane in the picture
    std::size_t rowBytes;    ///< without padding
    std::size_t strideBytes; ///< from one row to the next
};

/// How the rows of a plane become bytes.
struct RowUnpacking {
    UnpackKernel kernel;            ///< null: rows are handed out where they lie
    std::size_t bytesPerRow;        ///< of an unpacked row
    std::span<std::uint8_t> memory; ///< kRowsHeld unpacked rows; may be empty when there is nothing to unpack
    /// Where rows run together: bytes of kUnpackGroup components, and so bits of one. 0: each row begins with
    /// a byte. Each unpacked row then takes kMostBefore bytes more.
    std::size_t joinedGroupBytes = 0;
};

// Fixed by kUnpackGroup: as many components of the row before can stand in front of a row in its group.
constexpr std::size_t kMostBefore = kUnpackGroup - 1;

/// The rows of one plane of a source picture as one byte per component, unpacked on the way where necessary.
///
/// Owner:  one conversion. Borrows the picture and the memory for unpacked rows.
/// Thread: one.
class SourceRows {
public:
    /// @param picture  its bytes suffice for the plane
    SourceRows(std::span<const std::uint8_t> picture, const PlaneLayout& plane,
               const RowUnpacking& unpacking);

    /// @return  row y, valid until a row is asked for whose number differs by kRowsHeld
    [[nodiscard]] std::span<const std::uint8_t> Row(std::size_t y);

private:
    static constexpr std::size_t kNoRow = SIZE_MAX;

    [[nodiscard]] std::span<const std::uint8_t> PackedRow(std::size_t y, std::size_t before) const;

    std::span<const std::uint8_t> m_picture; // borrowed
    PlaneLayout m_plane;
    RowUnpacking m_unpacking; // its memory is borrowed
    std::array<std::size_t, kRowsHeld> m_held;
};

/// The rows of a destination picture, in the order in which they are seen.
///
/// Owner:  one conversion. Borrows the picture.
/// Thread: one.
class TargetRows {
public:
    /// The part of the picture that is written.
    struct Part {
        std::size_t rows;
        std::size_t bytesPerRow;
    };

    /// @param layout      of the picture, whose bytes suffice for it
    /// @param isBottomUp  the row that is seen first is the last one in memory
    TargetRows(const VxWritablePictureView& picture, const VxPictureLayout& layout, Part part,
               bool isBottomUp);

    /// @return  how many rows are to be written
    [[nodiscard]] std::size_t Count() const { return m_part.rows; }

    [[nodiscard]] std::span<std::uint8_t> Row(std::size_t y) const
    {
        return m_bytes.subspan((m_isBottomUp ? m_lastRow - y : y) * m_strideBytes, m_part.bytesPerRow);
    }

private:
    std::span<std::uint8_t> m_bytes; // borrowed
    std::size_t m_strideBytes;
    Part m_part;
    std::size_t m_lastRow;
    bool m_isBottomUp;
};

} // namespace pixel
