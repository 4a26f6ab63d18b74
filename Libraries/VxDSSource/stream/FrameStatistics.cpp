#include "VxDSSource/stream/FrameStatistics.h"

namespace vxds {

void FrameStatistics::ResetCounters()
{
    m_stamper.Reset();
    m_frameCounter = 0;
    m_blocksDroppedByFilter = 0;
}

FrameTimes FrameStatistics::StampFrame(std::int64_t now)
{
    const FrameTimes times = m_stamper.Next(now);
    m_frameCounter = m_stamper.FrameCount();
    return times;
}

void FrameStatistics::NoteImage(PictureSize size, std::uint32_t bytes)
{
    m_lastImageWidth = size.widthPx;
    m_lastImageHeight = size.heightPx;
    m_lastImageBytes = bytes;
}

} // namespace vxds
