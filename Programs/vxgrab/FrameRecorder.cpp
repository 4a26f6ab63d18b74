#include "vxgrab/FrameRecorder.h"

#include <algorithm>

namespace vxgrab {

FrameRecorder::FrameRecorder(const RecordingPlan& plan, FrameTally::TimePoint start, FilmWriter* film)
    : m_plan(plan), m_film(film), m_format(plan.format)
{
    m_state.lastPicture = start;
}

FrameContent FrameRecorder::ContentOf(const DeliveredFrame& frame) const
{
    if (m_plan.isOurFilter)
        return frame.hasMediaTime ? FrameContent::Picture : FrameContent::Zero;
    const bool isZero = std::all_of(frame.bytes.begin(), frame.bytes.end(),
                                    [](std::byte value) { return value == std::byte{0}; });
    return isZero ? FrameContent::Zero : FrameContent::Picture;
}

bool FrameRecorder::IsForFile(std::uint64_t number) const
{
    if (!m_plan.isPictureFileWanted)
        return false;
    return m_plan.pictureEvery == 0 ? number == 1 : (number - 1) % m_plan.pictureEvery == 0;
}

bool FrameRecorder::IsCompleteLocked() const
{
    return m_plan.wantedPictures != 0 && m_state.tally.Pictures() >= m_plan.wantedPictures;
}

void FrameRecorder::OnFrame(const DeliveredFrame& frame, FrameTally::TimePoint arrival)
{
    const auto format = CountFrame(frame, arrival);
    if (!format || m_film == nullptr)
        return;
    // Not under the lock: a slow disk holds up the stream, which the device counts, but not the main thread.
    const VxResult added = m_film->Add(*format, frame.bytes, arrival);
    if (added.IsOK())
        return;
    const VxLock lock(m_mutex);
    m_state.film = added;
    m_news.Set();
}

/// @return  the frame's format; nothing when the frame is not to be recorded
std::optional<FrameFormat> FrameRecorder::CountFrame(const DeliveredFrame& frame,
                                                     FrameTally::TimePoint arrival)
{
    const FrameContent content = ContentOf(frame);
    const VxLock lock(m_mutex);
    if (frame.newFormat)
        m_format = *frame.newFormat;
    if (IsCompleteLocked())
        return std::nullopt; // the graph runs on for a moment after the last picture that was wanted
    m_state.tally.Count(content, arrival);
    if (content == FrameContent::Zero)
        return m_format;
    m_state.lastPicture = arrival;
    const std::uint64_t number = m_state.tally.Pictures();
    if (IsForFile(number)) {
        // The queue's own lock is the inner one and is held for one copy only.
        if (!m_queue.Offer(number, m_format, frame.bytes))
            ++m_state.skippedPictures;
        m_news.Set();
    }
    if (IsCompleteLocked())
        m_news.Set();
    return m_format;
}

RecordingState FrameRecorder::State() const
{
    const VxLock lock(m_mutex);
    return m_state;
}

bool FrameRecorder::IsComplete() const
{
    const VxLock lock(m_mutex);
    return IsCompleteLocked();
}

} // namespace vxgrab
