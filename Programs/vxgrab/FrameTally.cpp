#include "vxgrab/FrameTally.h"

namespace vxgrab {

void FrameTally::Count(FrameContent content, TimePoint arrival)
{
    if (content == FrameContent::Picture)
        ++m_pictures;
    else
        ++m_zeroFrames;
    if (!m_first)
        m_first = arrival;
    m_last = arrival;
}

double FrameTally::FramesPerSecond() const
{
    if (Delivered() < 2 || m_last <= *m_first)
        return 0;
    const std::chrono::duration<double> span = m_last - *m_first;
    return static_cast<double>(Delivered() - 1) / span.count();
}

} // namespace vxgrab
