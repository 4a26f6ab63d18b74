#pragma once

#include "vxgrab/Event.h"
#include "vxgrab/FilmWriter.h"
#include "vxgrab/FrameTally.h"
#include "vxgrab/PictureQueue.h"

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>

namespace vxgrab {

/// One frame as the graph hands it over; valid during the call only.
struct DeliveredFrame {
    std::span<const std::byte> bytes;
    bool hasMediaTime = false;            ///< the filter gave the frame a number
    std::optional<FrameFormat> newFormat; ///< from this frame on
};

/// What is to be recorded.
struct RecordingPlan {
    FrameFormat format;       ///< of the connection
    bool isOurFilter = false; ///< our filter marks its zero frames; for any other the bytes are looked at
    std::uint64_t wantedPictures = 0; ///< 0 = not limited
    bool isPictureFileWanted = false;
    std::uint64_t pictureEvery = 0; ///< 0: only the first picture goes to a file
};

/// What was recorded up to now.
struct RecordingState {
    FrameTally tally;
    std::uint64_t skippedPictures = 0; ///< meant for a file, but the disk was too slow
    VxResult film = VxResult::Ok();    ///< the first thing that went wrong with the film
    FrameTally::TimePoint lastPicture; ///< when the last picture came; the start when none came
};

/// Takes every frame of the graph: counts it, copies the pictures that go to files, and adds it to the film.
///
/// Owner:  the session; outlives the graph.
/// Thread: OnFrame on the streaming thread; the others on the main thread; locked inside.
class FrameRecorder final {
public:
    /// @param start  when waiting for pictures begins
    /// @param film   gets every frame; null for none; must outlive the recorder
    FrameRecorder(const RecordingPlan& plan, FrameTally::TimePoint start, FilmWriter* film = nullptr);

    void OnFrame(const DeliveredFrame& frame, FrameTally::TimePoint arrival);

    [[nodiscard]] RecordingState State() const;
    [[nodiscard]] bool IsComplete() const;

    /// @return  the next picture to write; nothing when none waits
    [[nodiscard]] std::optional<QueuedPicture> TakePicture() { return m_queue.Take(); }

    /// Set when something waits to be written or the wanted number is reached.
    [[nodiscard]] HANDLE News() const { return m_news.Handle(); }

private:
    [[nodiscard]] FrameContent ContentOf(const DeliveredFrame& frame) const;
    [[nodiscard]] std::optional<FrameFormat> CountFrame(const DeliveredFrame& frame,
                                                        FrameTally::TimePoint arrival);
    [[nodiscard]] bool IsForFile(std::uint64_t number) const;
    [[nodiscard]] bool IsCompleteLocked() const VX_REQUIRES(m_mutex);

    const RecordingPlan m_plan;
    FilmWriter* const m_film; // borrowed: the session's; used on the streaming thread only
    Event m_news{Event::Reset::Automatic};
    PictureQueue m_queue;
    mutable VxMutex m_mutex;
    FrameFormat m_format VX_GUARDED_BY(m_mutex);
    RecordingState m_state VX_GUARDED_BY(m_mutex);
};

} // namespace vxgrab
