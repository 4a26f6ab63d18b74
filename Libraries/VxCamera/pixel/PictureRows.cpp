#include "VxCamera/pixel/PictureRows.h"

namespace pixel {

SourceRows::SourceRows(std::span<const std::uint8_t> picture, const PlaneLayout& plane,
                       const RowUnpacking& unpacking)
    : m_picture(picture), m_plane(plane), m_unpacking(unpacking)
{
    m_held.fill(kNoRow);
}

std::span<const std::uint8_t> SourceRows::Row(std::size_t y)
{
    const auto row = m_picture.subspan(m_plane.firstByte + y * m_plane.strideBytes, m_plane.rowBytes);
    if (m_unpacking.kernel == nullptr)
        return row;
    const std::size_t place = y % kRowsHeld;
    const auto unpacked =
        m_unpacking.memory.subspan(place * m_unpacking.bytesPerRow, m_unpacking.bytesPerRow);
    if (m_held[place] != y) {
        m_unpacking.kernel(row, unpacked);
        m_held[place] = y;
    }
    return unpacked;
}

TargetRows::TargetRows(const VxWritablePictureView& picture, const VxPictureLayout& layout, Part part,
                       bool isBottomUp)
    : m_bytes(picture.bytes),
      m_strideBytes(layout.strideBytes),
      m_part(part),
      m_lastRow(picture.heightPx - std::size_t{1}),
      m_isBottomUp(isBottomUp)
{
}

} // namespace pixel
