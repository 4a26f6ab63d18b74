#include "VxDSSource/overlay/FrameRows.h"

#include <cstdlib>

namespace vxds {

std::optional<FrameRows> FrameRows::Of(const OverlayFrame& frame)
{
    constexpr std::uint64_t kBitsPerByte = 8;
    const BITMAPINFOHEADER& header = frame.header;
    if (header.biWidth <= 0 || header.biHeight == 0 || header.biBitCount == 0 ||
        header.biBitCount % kBitsPerByte != 0)
        return std::nullopt;
    const auto width = static_cast<std::uint64_t>(header.biWidth); // positive
    const auto count = static_cast<std::uint64_t>(std::abs(std::int64_t{header.biHeight}));
    const std::uint64_t rowBytes = width * (header.biBitCount / kBitsPerByte); // 31 and 13 bits at most
    if (rowBytes > frame.memory.size() / count)
        return std::nullopt;

    FrameRows rows;
    rows.m_memory = frame.memory;
    rows.m_widthPx = width;
    rows.m_count = count;
    rows.m_rowBytes = rowBytes;
    rows.m_isBottomUp = header.biHeight > 0;
    return rows;
}

} // namespace vxds
