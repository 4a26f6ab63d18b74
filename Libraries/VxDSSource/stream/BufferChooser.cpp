#include "VxDSSource/stream/BufferChooser.h"

#include "VxDSSource/camera/VxBuffer.h"
#include "VxDSSource/camera/VxPipeline.h"

#include <tuple>
#include <utility>

namespace vxds {

namespace {

constexpr std::uint32_t kRetrieveTimeoutMs = 1000; // chosen: one frame of the slowest usual camera

/// Waits for the next buffer, good or not.
HeldBuffer Retrieve(VxPipeline& pipeline)
{
    VxBuffer* buffer = nullptr;
    if (!pipeline.RetrieveNextBuffer(&buffer, kRetrieveTimeoutMs).IsOK() || buffer == nullptr)
        return {};
    return {pipeline, buffer};
}

bool AreTooManyWaiting(const VxPipeline& pipeline, std::uint32_t dropThreshold)
{
    const auto waiting =
        static_cast<std::int32_t>(pipeline.GetOutputQueueSize()); // a few dozen buffers at most
    return waiting > static_cast<std::int32_t>(dropThreshold);
}

} // namespace

HeldBuffer::HeldBuffer(HeldBuffer&& other) noexcept
    : m_pipeline(other.m_pipeline), m_buffer(std::exchange(other.m_buffer, nullptr))
{
}

HeldBuffer& HeldBuffer::operator=(HeldBuffer&& other) noexcept
{
    Release();
    m_pipeline = other.m_pipeline;
    m_buffer = std::exchange(other.m_buffer, nullptr);
    return *this;
}

void HeldBuffer::Release()
{
    if (m_buffer != nullptr)
        std::ignore = m_pipeline->ReleaseBuffer(std::exchange(m_buffer, nullptr));
}

HeldBuffer ChooseBuffer(VxPipeline& pipeline, std::uint32_t dropThreshold, FrameStatistics& statistics,
                        const std::function<bool()>& isWantedElsewhere)
{
    HeldBuffer held;
    while (HeldBuffer next = Retrieve(pipeline)) {
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
