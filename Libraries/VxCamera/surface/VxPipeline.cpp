#include "VxDSSource/camera/VxPipeline.h"

#include "VxCamera/surface/NoThrow.h"
#include "VxCamera/surface/VxPipelineImpl.h"
#include "VxCamera/surface/VxStreamImpl.h"
#include "VxDSSource/camera/VxStream.h"

VxPipeline::VxPipeline(VxStream* stream) : m_impl(std::make_unique<VxPipelineImpl>(*stream->m_impl)) {}

VxPipeline::~VxPipeline() = default;

void VxPipeline::SetBufferSize(std::uint32_t bytes)
{
    m_impl->SetBufferSize(bytes);
}

VxResult VxPipeline::SetBufferCount(std::uint32_t count)
{
    return NoThrow([&] { return m_impl->SetBufferCount(count); });
}

void VxPipeline::SetHandleBufferTooSmall(bool handle)
{
    m_impl->SetGrowing(handle);
}

VxResult VxPipeline::Start()
{
    return NoThrow([&] { return m_impl->Start(); });
}

VxResult VxPipeline::Stop()
{
    return NoThrow([&] { return m_impl->Stop(); });
}

bool VxPipeline::IsStarted() const
{
    return m_impl->IsStarted();
}

VxResult VxPipeline::RetrieveNextBuffer(VxBuffer** buffer, std::uint32_t timeoutMs, VxResult* operationResult)
{
    return NoThrow([&] {
        VxResult retrieved = m_impl->Retrieve(buffer, std::chrono::milliseconds(timeoutMs));
        if (retrieved.IsOK() && operationResult != nullptr)
            *operationResult = (*buffer)->GetOperationResult();
        return retrieved;
    });
}

VxResult VxPipeline::ReleaseBuffer(VxBuffer* buffer)
{
    return NoThrow([&] { return m_impl->Release(buffer); });
}

std::size_t VxPipeline::GetOutputQueueSize() const
{
    return m_impl->ReadyCount();
}
