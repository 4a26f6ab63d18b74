#include "VxCamera/pixel/PictureRows.h"

namespace pixel {

SourceRows::SourceRows(const VxPictureView& picture, const VxPictureLayout& layout, UnpackKernel unpack,
                       std::size_t componentsPerRow, std::span<std::uint8_t> memory)
    : m_bytes(picture.bytes),
      m_rowBytes(layout.rowBytes),
      m_strideBytes(layout.strideBytes),
      m_unpack(unpack),
      m_componentsPerRow(componentsPerRow),
      m_memory(memory)
{
    m_held.fill(kNoRow);
}

std::span<const std::uint8_t> SourceRows::Row(std::size_t y)
{
    const auto row = m_bytes.subspan(y * m_strideBytes, m_rowBytes);
    if (m_unpack == nullptr)
        return row;
    const std::size_t place = y % kRowsHeld;
    const auto unpacked = m_memory.subspan(place * m_componentsPerRow, m_componentsPerRow);
    if (m_held[place] != y) {
        m_unpack(row, unpacked);
        m_held[place] = y;
    }
    return unpacked;
}

TargetRows::TargetRows(const VxWritablePictureView& picture, const VxPictureLayout& layout,
                       std::size_t usedBytes, bool isBottomUp)
    : m_bytes(picture.bytes),
      m_strideBytes(layout.strideBytes),
      m_usedBytes(usedBytes),
      m_lastRow(picture.heightPx - std::size_t{1}),
      m_isBottomUp(isBottomUp)
{
}

} // namespace pixel
