#include "support/graph/FrameCatcher.h"

#include <algorithm>
#include <utility>

namespace {

CaughtFrame ReadSample(IMediaSample& sample)
{
    CaughtFrame frame;
    frame.arrival = std::chrono::steady_clock::now();
    BYTE* bytes = nullptr;
    if (SUCCEEDED(sample.GetPointer(&bytes))) {
        const auto* const begin = reinterpret_cast<const std::byte*>(bytes);
        frame.bytes.assign(begin, begin + std::max(sample.GetActualDataLength(), 0L));
    }
    LONGLONG start = 0;
    LONGLONG end = 0;
    if (SUCCEEDED(sample.GetMediaTime(&start, &end)))
        frame.mediaTime = start;
    if (SUCCEEDED(sample.GetTime(&start, &end))) {
        frame.startTime = start;
        frame.endTime = end;
    }
    frame.isSyncPoint = sample.IsSyncPoint() == S_OK;
    return frame;
}

} // namespace

bool CaughtFrame::IsZero() const
{
    return std::all_of(bytes.begin(), bytes.end(), [](std::byte value) { return value == std::byte{0}; });
}

std::optional<CaughtFrame> FrameCatcher::Next(Duration patience)
{
    std::unique_lock lock(m_mutex);
    if (!m_arrived.wait_for(lock, patience, [&] { return !m_frames.empty(); }))
        return std::nullopt;
    CaughtFrame frame = std::move(m_frames.front());
    m_frames.pop_front();
    return frame;
}

std::optional<CaughtFrame> FrameCatcher::WaitFor(const std::function<bool(const CaughtFrame&)>& isWanted,
                                                 Duration patience)
{
    const auto deadline = std::chrono::steady_clock::now() + patience;
    for (;;) {
        const auto left = deadline - std::chrono::steady_clock::now();
        std::optional<CaughtFrame> frame = Next(std::max(left, Duration::zero()));
        if (!frame || isWanted(*frame))
            return frame;
        if (std::chrono::steady_clock::now() >= deadline)
            return std::nullopt;
    }
}

std::optional<CaughtFrame> FrameCatcher::WaitForPicture(Duration patience)
{
    return WaitFor([](const CaughtFrame& frame) { return !frame.IsZero(); }, patience);
}

std::optional<CaughtFrame> FrameCatcher::WaitForZeroFrame(Duration patience)
{
    return WaitFor([](const CaughtFrame& frame) { return !frame.bytes.empty() && frame.IsZero(); }, patience);
}

void FrameCatcher::Forget()
{
    const std::lock_guard lock(m_mutex);
    m_frames.clear();
}

std::uint64_t FrameCatcher::Count() const
{
    const std::lock_guard lock(m_mutex);
    return m_count;
}

HRESULT FrameCatcher::SampleCB(double, IMediaSample* sample)
{
    CaughtFrame frame = ReadSample(*sample);
    const std::lock_guard lock(m_mutex);
    frame.number = m_count++;
    if (m_frames.size() >= m_framesKept)
        m_frames.pop_front();
    m_frames.push_back(std::move(frame));
    m_arrived.notify_all();
    return S_OK;
}

HRESULT FrameCatcher::BufferCB(double, BYTE*, LONG)
{
    return E_NOTIMPL;
}
