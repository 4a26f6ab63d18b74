#include "VxDSSource/camera/VxBuffer.h"

#include "VxCamera/surface/VxBufferImpl.h"

VxBuffer::VxBuffer(VxPayloadType payloadType) : m_impl(std::make_unique<VxBufferImpl>())
{
    m_impl->payloadType = payloadType;
}

VxBuffer::~VxBuffer() = default;

VxResult VxBuffer::GetOperationResult() const
{
    return m_impl->OperationResult();
}

VxImage* VxBuffer::GetImage()
{
    return m_impl->payloadType == VxPayloadType::Image ? &m_impl->picture : nullptr;
}

const VxImage* VxBuffer::GetImage() const
{
    return m_impl->payloadType == VxPayloadType::Image ? &m_impl->picture : nullptr;
}

VxPayloadType VxBuffer::GetPayloadType() const
{
    return m_impl->payloadType;
}

std::uint64_t VxBuffer::GetBlockID() const
{
    return m_impl->blockId;
}

std::uint64_t VxBuffer::GetTimestamp() const
{
    return m_impl->timestampTicks;
}
