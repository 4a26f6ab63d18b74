#pragma once

#include "VxDSSource/stream/FrameStamper.h"
#include "VxDSSource/stream/PictureSize.h"

#include <atomic>
#include <cstdint>
#include <string>

namespace vxds {

/// What frame production counts and remembers for others.
///
/// Owner:  VxDSStream, by value.
/// Thread: written on the streaming thread, and by ResetCounters when acquisition starts; the counters and
///         sizes are read from any thread, each as one access.
class FrameStatistics {
public:
    /// A new start: time stamps and counters begin again. Sizes and the error text stay.
    void ResetCounters();

    [[nodiscard]] FrameTimes StampFrame(std::int64_t now);
    void CountDroppedBlock() { ++m_blocksDroppedByFilter; }

    /// Good buffers that were skipped because more were waiting.
    [[nodiscard]] std::int64_t BlocksDroppedByFilter() const { return m_blocksDroppedByFilter.load(); }
    /// Frames delivered with time stamps.
    [[nodiscard]] std::uint64_t FrameCounter() const { return m_frameCounter.load(); }

    /// @param bytes  of the image at the output's bit depth, with the bitmap's row padding
    void NoteImage(PictureSize size, std::uint32_t bytes);
    /// Size of the last image taken for RGB output; 0 x 0 before the first.
    [[nodiscard]] PictureSize LastImageSize() const
    {
        return {m_lastImageWidth.load(), m_lastImageHeight.load()};
    }
    [[nodiscard]] std::uint32_t LastImageBytes() const { return m_lastImageBytes.load(); }

    /// What the hot pixel diagnostic counted, and in pictures of what size. Streaming thread only.
    void NotePixelVariation(std::int32_t count, PictureSize picture)
    {
        m_pixelVariationCount = count;
        m_analysedSize = picture;
    }
    [[nodiscard]] std::int32_t PixelVariationCount() const { return m_pixelVariationCount; }
    [[nodiscard]] PictureSize AnalysedSize() const { return m_analysedSize; }

    /// Streaming thread only.
    void NoteError(const wchar_t* text) { m_lastErrorText = text; }
    [[nodiscard]] const std::wstring& LastErrorText() const { return m_lastErrorText; }

    /// Asks the next picture to clear the whole frame first.
    void RequestClear() { m_clearPending = true; }
    [[nodiscard]] bool IsClearPending() const { return m_clearPending.load(); }
    void NoteCleared() { m_clearPending = false; }

private:
    FrameStamper m_stamper;
    std::atomic<std::uint64_t> m_frameCounter = 0;
    std::atomic<std::int64_t> m_blocksDroppedByFilter = 0;
    std::atomic<std::uint32_t> m_lastImageWidth = 0;
    std::atomic<std::uint32_t> m_lastImageHeight = 0;
    std::atomic<std::uint32_t> m_lastImageBytes = 0;
    std::wstring m_lastErrorText;
    std::int32_t m_pixelVariationCount = 0;
    PictureSize m_analysedSize;
    std::atomic<bool> m_clearPending = false;
};

} // namespace vxds
