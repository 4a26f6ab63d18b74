#include "VxDSSource/stream/FrameStamper.h"

namespace vxds {

FrameTimes FrameStamper::Next(std::int64_t now)
{
    std::int64_t streamTime = 0;
    if (m_firstFrameTime == 0)
        m_firstFrameTime = now;
    else
        streamTime = now - m_firstFrameTime;

    FrameTimes times;
    times.start = m_previousFrameTime;
    times.stop = streamTime;
    times.mediaStart = static_cast<std::int64_t>(m_frameCounter); // counts frames: never near 2^63
    times.mediaStop = times.mediaStart + 1;
    ++m_frameCounter;
    m_previousFrameTime = streamTime;
    return times;
}

} // namespace vxds
