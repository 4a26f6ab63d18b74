#include "VxCamera/surface/VxStreamImpl.h"

#include <algorithm>
#include <utility>

#include "VxCamera/surface/StreamLinks.h"
#include "VxCamera/surface/StreamStatistics.h"

namespace {

/// Whether an address is one of this host.
bool IsOwn(CameraNetwork& network, transport::Ipv4Address address)
{
    const auto interfaces = network.Parts().interfaces.Interfaces();
    // Where the system does not tell, whoever directs a stream knows better.
    return address.IsLoopback() || !interfaces ||
           std::ranges::find(*interfaces, address, &transport::NetworkInterface::address) !=
               interfaces->end();
}

/// Whether what is sent to an address and port comes to this receiver.
bool ReceivesAt(const receive::StreamReceiver& receiver, CameraNetwork& network,
                const transport::Ipv4Endpoint& sentTo)
{
    const auto local = receiver.Socket().LocalEndpoint();
    if (local.port != sentTo.port)
        return false;
    if (receiver.Group() || sentTo.address.IsMulticast())
        return receiver.Group() == sentTo.address;
    return local.address == sentTo.address ||
           (local.address.IsUnspecified() && IsOwn(network, sentTo.address));
}

} // namespace

VxStreamImpl::VxStreamImpl()
{
    ListStreamStatistics(*this, m_parameters);
    StreamLinks::Add(*this);
}

VxStreamImpl::~VxStreamImpl()
{
    StreamLinks::Remove(*this);
}

bool VxStreamImpl::IsOpen() const
{
    const VxLock lock(m_mutex);
    return m_receiver != nullptr;
}

VxResult VxStreamImpl::Attach(std::unique_ptr<receive::StreamReceiver> receiver)
{
    const auto local = receiver->Socket().LocalEndpoint().address;
    return Attach(std::move(receiver), local);
}

VxResult VxStreamImpl::Attach(std::unique_ptr<receive::StreamReceiver> receiver,
                              transport::Ipv4Address reachedAt)
{
    const VxLock lock(m_mutex);
    if (m_receiver != nullptr)
        return VxResult(VxError::AlreadyOpen, "the stream is open; close it first");
    m_receiver = std::move(receiver);
    m_receiver->SetSettings(m_settings);
    m_reachedAt = reachedAt;
    return VxResult::Ok();
}

transport::Ipv4Address VxStreamImpl::ReachedAt() const
{
    const VxLock lock(m_mutex);
    return m_reachedAt;
}

receive::AssemblySettings VxStreamImpl::Settings() const
{
    const VxLock lock(m_mutex);
    return m_settings;
}

void VxStreamImpl::ChangeSettings(const std::function<void(receive::AssemblySettings&)>& change)
{
    const VxLock lock(m_mutex);
    change(m_settings);
    if (m_receiver != nullptr)
        m_receiver->SetSettings(m_settings);
}

void VxStreamImpl::TakeLink(const transport::Ipv4Endpoint& receiver,
                            const std::shared_ptr<const receive::StreamLink>& link)
{
    const VxLock lock(m_mutex);
    if (m_receiver == nullptr || !ReceivesAt(*m_receiver, m_network, receiver))
        return;
    m_link = link;
    m_receiver->SetLink(link);
}

void VxStreamImpl::DropLink(const std::shared_ptr<const receive::StreamLink>& link)
{
    const VxLock lock(m_mutex);
    if (m_link != link)
        return;
    m_link.reset();
    if (m_receiver != nullptr)
        m_receiver->SetLink(nullptr);
}

void VxStreamImpl::TakePicture(const std::shared_ptr<const receive::StreamLink>& link,
                               const std::optional<receive::PictureShape>& picture)
{
    const VxLock lock(m_mutex);
    if (m_link == link && m_receiver != nullptr)
        m_receiver->SetCameraPicture(picture);
}

void VxStreamImpl::Close()
{
    const VxLock lock(m_mutex);
    m_receiver.reset();
    m_link.reset();
    m_reachedAt = {};
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

bool VxStreamImpl::IsReceivingFor(const receive::IBlockSink& sink) const
{
    const VxLock lock(m_mutex);
    return m_receiver != nullptr && m_receiver->Serves(sink);
}

void VxStreamImpl::WithReceiver(const std::function<void(receive::StreamReceiver&)>& use) const
{
    const VxLock lock(m_mutex);
    if (m_receiver != nullptr)
        use(*m_receiver);
}
