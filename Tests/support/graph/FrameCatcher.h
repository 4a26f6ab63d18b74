#pragma once

#include "support/directshow/TestObject.h"

#include <windows.h>

#include <qedit.h>

#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <functional>
#include <mutex>
#include <optional>
#include <vector>

/// One frame as it came out of a graph.
struct CaughtFrame {
    std::uint64_t number = 0; ///< 0 for the first frame that the catcher saw
    std::vector<std::byte> bytes;
    std::optional<LONGLONG> mediaTime; ///< start; empty when the sample has none
    std::optional<REFERENCE_TIME> startTime;
    std::optional<REFERENCE_TIME> endTime;
    bool isSyncPoint = false;
    std::chrono::steady_clock::time_point arrival;

    /// @return  whether every byte is zero
    [[nodiscard]] bool IsZero() const;
};

/// The Sample Grabber's callback of a test: keeps the newest frames until the test asks for them.
///
/// Owner:  the test; at its end nobody may hold a reference any more.
/// Thread: SampleCB on the streaming thread, the others on any; locked inside.
class FrameCatcher final : public TestObject<ISampleGrabberCB> {
public:
    using Duration = std::chrono::steady_clock::duration;

    // Chosen: a test that looks at every frame in order is never that far behind.
    static constexpr std::size_t kUsualFramesKept = 64;

    /// @param framesKept  as many wait for the test; of more the oldest is forgotten
    explicit FrameCatcher(std::size_t framesKept = kUsualFramesKept) : m_framesKept(framesKept) {}

    /// Waits for the next frame that has not been asked for yet.
    /// @return  the oldest such frame; nothing when none came in time
    [[nodiscard]] std::optional<CaughtFrame> Next(Duration patience);

    /// Waits for a frame of a certain kind; frames before it are forgotten.
    /// @return  the frame; nothing when none came in time
    [[nodiscard]] std::optional<CaughtFrame> WaitFor(const std::function<bool(const CaughtFrame&)>& isWanted,
                                                     Duration patience);

    /// Waits for a frame that is not all zero, and for one that is.
    [[nodiscard]] std::optional<CaughtFrame> WaitForPicture(Duration patience);
    [[nodiscard]] std::optional<CaughtFrame> WaitForZeroFrame(Duration patience);

    /// Forgets the frames that wait, so that what is asked for next came after this call.
    void Forget();

    /// @return  frames that came until now
    [[nodiscard]] std::uint64_t Count() const;

    STDMETHODIMP SampleCB(double startSeconds, IMediaSample* sample) override;
    STDMETHODIMP BufferCB(double startSeconds, BYTE* bytes, LONG length) override;

private:
    const std::size_t m_framesKept;
    mutable std::mutex m_mutex;
    std::condition_variable m_arrived;
    std::deque<CaughtFrame> m_frames; // guarded by m_mutex
    std::uint64_t m_count = 0;        // guarded by m_mutex
};
