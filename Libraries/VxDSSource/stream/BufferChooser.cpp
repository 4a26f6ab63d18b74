#include "VxDSSource/stream/BufferChooser.h"

#include "VxDSSource/camera/VxPipeline.h"

#include <tuple>
#include <utility>

namespace vxds {

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

HeldBuffer RetrieveNext(VxPipeline& pipeline)
{
    constexpr std::uint32_t kTimeoutMs = 1000; // chosen: one frame of the slowest usual camera
    VxBuffer* buffer = nullptr;
    if (!pipeline.RetrieveNextBuffer(&buffer, kTimeoutMs).IsOK() || buffer == nullptr)
        return {};
    return {pipeline, buffer};
}

bool AreTooManyWaiting(const VxPipeline& pipeline, std::uint32_t dropThreshold)
{
    const auto waiting =
        static_cast<std::int32_t>(pipeline.GetOutputQueueSize()); // a few dozen buffers at most
    return waiting > static_cast<std::int32_t>(dropThreshold);
}

} // namespace vxds
