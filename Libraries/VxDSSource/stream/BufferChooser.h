#pragma once

#include "VxDSSource/camera/VxBuffer.h"
#include "VxDSSource/stream/FrameStatistics.h"

#include <concepts>
#include <cstdint>
#include <utility>

class VxPipeline;

namespace vxds {

/// A camera buffer that goes back to its pipeline at the end.
///
/// Owner:  the streaming thread, for one frame.
/// Thread: the streaming thread.
class HeldBuffer {
public:
    HeldBuffer() = default;
    HeldBuffer(VxPipeline& pipeline, VxBuffer* buffer) : m_pipeline(&pipeline), m_buffer(buffer) {}
    HeldBuffer(HeldBuffer&& other) noexcept;
    HeldBuffer& operator=(HeldBuffer&& other) noexcept;
    ~HeldBuffer() { Release(); }

    void Release();

    explicit operator bool() const { return m_buffer != nullptr; }
    [[nodiscard]] VxBuffer& operator*() const { return *m_buffer; }

private:
    VxPipeline* m_pipeline = nullptr; // borrowed: outlives the frame
    VxBuffer* m_buffer = nullptr;     // borrowed from the pipeline until Release
};

/// Waits for the next buffer, good or not.
/// @return  empty when none came in time
[[nodiscard]] HeldBuffer RetrieveNext(VxPipeline& pipeline);

/// @param dropThreshold  compared as a signed number
[[nodiscard]] bool AreTooManyWaiting(const VxPipeline& pipeline, std::uint32_t dropThreshold);

/// Takes the newest good buffer, skipping older ones while too many wait.
///
/// A buffer that arrived incomplete goes back at once and counts nowhere; a good one that is skipped counts
/// as dropped. At most one good buffer is held at a time.
///
/// @param dropThreshold  with more buffers than this waiting, the one in hand is skipped; 0 = take the first
///                       good one. Compared as a signed number.
/// @param isWantedElsewhere  asked between buffers: true ends the search with what is in hand. Without it a
///                           camera that sends incomplete images only, or faster than they are skipped, would
///                           never let go.
/// @return  empty when no good buffer arrived in time
template <std::predicate Question>
[[nodiscard]] HeldBuffer ChooseBuffer(VxPipeline& pipeline, std::uint32_t dropThreshold,
                                      FrameStatistics& statistics, const Question& isWantedElsewhere)
{
    HeldBuffer held;
    while (HeldBuffer next = RetrieveNext(pipeline)) {
        if ((*next).GetOperationResult().IsOK()) {
            held = std::move(next);
            if (dropThreshold == 0 || !AreTooManyWaiting(pipeline, dropThreshold) || isWantedElsewhere())
                break;
            statistics.CountDroppedBlock();
        } else {
            next.Release();
            if (isWantedElsewhere())
                break;
        }
    }
    return held;
}

} // namespace vxds
