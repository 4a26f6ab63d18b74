#include "VxCamera/surface/VxStreamImpl.h"

#include <utility>

#include "VxCamera/surface/StreamStatistics.h"

VxStreamImpl::VxStreamImpl()
{
    ListStreamStatistics(*this, m_parameters);
}

VxStreamImpl::~VxStreamImpl() = default;

bool VxStreamImpl::IsOpen() const
{
    const VxLock lock(m_mutex);
    return m_receiver != nullptr;
}

VxResult VxStreamImpl::Attach(std::unique_ptr<receive::StreamReceiver> receiver)
{
    const VxLock lock(m_mutex);
    if (m_receiver != nullptr)
        return VxResult(VxError::AlreadyOpen, "the stream is open; close it first");
    m_receiver = std::move(receiver);
    return VxResult::Ok();
}

void VxStreamImpl::Close()
{
    const VxLock lock(m_mutex);
    m_receiver.reset();
}

VxResult VxStreamImpl::StartReceiver(receive::IBlockSink& sink)
{
    const VxLock lock(m_mutex);
    if (m_receiver == nullptr)
        return VxResult(VxError::NotOpen, "the stream is not open");
    return m_receiver->Start(sink);
}

void VxStreamImpl::StopReceiver(const receive::IBlockSink& sink)
{
    const VxLock lock(m_mutex);
    if (m_receiver != nullptr)
        m_receiver->Stop(sink);
}

void VxStreamImpl::WithReceiver(const std::function<void(receive::StreamReceiver&)>& use) const
{
    const VxLock lock(m_mutex);
    if (m_receiver != nullptr)
        use(*m_receiver);
}
