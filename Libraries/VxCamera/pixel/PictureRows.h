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

/// The rows of a source picture as one byte per component, unpacked on the way where necessary.
///
/// Owner:  one conversion. Borrows the picture and the memory for unpacked rows.
/// Thread: one.
class SourceRows {
public:
    /// @param layout           of the picture, whose bytes suffice for it
    /// @param unpack           null: rows are handed out where they lie
    /// @param componentsPerRow bytes of an unpacked row
    /// @param memory           kRowsHeld unpacked rows; may be empty when there is nothing to unpack
    SourceRows(const VxPictureView& picture, const VxPictureLayout& layout, UnpackKernel unpack,
               std::size_t componentsPerRow, std::span<std::uint8_t> memory);

    /// @return  row y, valid until a row is asked for whose number differs by kRowsHeld
    [[nodiscard]] std::span<const std::uint8_t> Row(std::size_t y);

private:
    static constexpr std::size_t kNoRow = SIZE_MAX;

    std::span<const std::uint8_t> m_bytes; // borrowed
    std::size_t m_rowBytes;
    std::size_t m_strideBytes;
    UnpackKernel m_unpack;
    std::size_t m_componentsPerRow;
    std::span<std::uint8_t> m_memory; // borrowed
    std::array<std::size_t, kRowsHeld> m_held;
};

/// The rows of a destination picture, in the order in which they are seen.
///
/// Owner:  one conversion. Borrows the picture.
/// Thread: one.
class TargetRows {
public:
    /// @param layout      of the picture, whose bytes suffice for it
    /// @param usedBytes   bytes to be written of each row
    /// @param isBottomUp  the row that is seen first is the last one in memory
    TargetRows(const VxWritablePictureView& picture, const VxPictureLayout& layout, std::size_t usedBytes,
               bool isBottomUp);

    [[nodiscard]] std::span<std::uint8_t> Row(std::size_t y) const
    {
        return m_bytes.subspan((m_isBottomUp ? m_lastRow - y : y) * m_strideBytes, m_usedBytes);
    }

private:
    std::span<std::uint8_t> m_bytes; // borrowed
    std::size_t m_strideBytes;
    std::size_t m_usedBytes;
    std::size_t m_lastRow;
    bool m_isBottomUp;
};

} // namespace pixel
