#include "VxCamera/pixel/PictureRows.h"

namespace pixel {

SourceRows::SourceRows(std::span<const std::uint8_t> picture, const PlaneLayout& plane,
                       const RowUnpacking& unpacking)
    : m_picture(picture), m_plane(plane), m_unpacking(unpacking)
{
    m_held.fill(kNoRow);
}

/// @param before  components of the row before that stand in the same group as the row's first one
std::span<const std::uint8_t> SourceRows::PackedRow(std::size_t y, std::size_t before) const
{
    const std::size_t groupBytes = m_unpacking.joinedGroupBytes;
    if (groupBytes == 0)
        return m_picture.subspan(m_plane.firstByte + y * m_plane.strideBytes, m_plane.rowBytes);
    constexpr std::size_t kByteBits = 8;
    const std::size_t first = (y * m_unpacking.bytesPerRow - before) / kUnpackGroup * groupBytes;
    const std::size_t bits = (before + m_unpacking.bytesPerRow) * groupBytes; // of so many bits each
    return m_picture.subspan(first, (bits + kByteBits - 1) / kByteBits);
}

std::span<const std::uint8_t> SourceRows::Row(std::size_t y)
{
    if (m_unpacking.kernel == nullptr)
        return PackedRow(y, 0);
    // Groups begin with a byte, rows that run together do not: what stands in front of such a row in its
    // first group is unpacked with it, and stepped over. No bit has to be shifted for that, and components
    // that lie crosswise, as those of two in three bytes, need no rule of their own.
    const bool isJoined = m_unpacking.joinedGroupBytes != 0;
    const std::size_t before = isJoined ? y * m_unpacking.bytesPerRow % kUnpackGroup : 0;
    const std::size_t heldBytes = m_unpacking.bytesPerRow + (isJoined ? kMostBefore : 0);
    const std::size_t place = y % kRowsHeld;
    const auto unpacked = m_unpacking.memory.subspan(place * heldBytes, before + m_unpacking.bytesPerRow);
    if (m_held[place] != y) {
        m_unpacking.kernel(PackedRow(y, before), unpacked);
        m_held[place] = y;
    }
    return unpacked.subspan(before);
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
