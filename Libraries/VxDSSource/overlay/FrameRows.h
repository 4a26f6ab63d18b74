#pragma once

#include "VxDSSource/overlay/OverlayFrame.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>

namespace vxds {

/// Where the rows of a frame lie, counted from the top of the picture.
///
/// Owner:  the streaming thread, for one frame.
/// Thread: the streaming thread.
class FrameRows {
public:
    /// @return  empty when the header describes no picture of whole bytes, or one that is larger than the
    ///          memory
    [[nodiscard]] static std::optional<FrameRows> Of(const OverlayFrame& frame);

    [[nodiscard]] std::size_t WidthPx() const { return m_widthPx; }
    [[nodiscard]] std::size_t Count() const { return m_count; }
    [[nodiscard]] std::size_t PixelBytes() const { return m_rowBytes / m_widthPx; }
    /// Bytes of a row: rows follow each other without a gap.
    [[nodiscard]] std::size_t RowBytes() const { return m_rowBytes; }
    /// All rows.
    [[nodiscard]] std::span<std::uint8_t> Bytes() const { return m_memory.first(m_count * m_rowBytes); }
    /// @param fromTop  0: the row that a viewer sees at the top; less than Count
    [[nodiscard]] std::span<std::uint8_t> Row(std::size_t fromTop) const
    {
        const std::size_t inMemory = m_isBottomUp ? m_count - 1 - fromTop : fromTop;
        return m_memory.subspan(inMemory * m_rowBytes, m_rowBytes);
    }

private:
    FrameRows() = default;

    std::span<std::uint8_t> m_memory;
    std::size_t m_widthPx = 0;
    std::size_t m_count = 0;
    std::size_t m_rowBytes = 0;
    bool m_isBottomUp = false;
};

} // namespace vxds
