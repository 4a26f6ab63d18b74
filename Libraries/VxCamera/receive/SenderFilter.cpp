#include "VxCamera/receive/SenderFilter.h"

#include "VxCamera/wire/gvsp/PacketHeader.h"

namespace receive {

using transport::Ipv4Address;

SenderFilter::SenderFilter(std::optional<Ipv4Address> camera)
    : m_given(camera), m_camera(camera.value_or(Ipv4Address()).Value())
{
}

bool SenderFilter::IsCamera(const transport::Ipv4Endpoint& sender) const
{
    const std::uint32_t camera = m_camera.load(std::memory_order_relaxed);
    return camera != 0 && sender.address.Value() == camera;
}

bool SenderFilter::Accepts(const transport::Ipv4Endpoint& sender, const VxExpected<gvsp::Packet>& packet)
{
    const std::uint32_t camera = m_camera.load(std::memory_order_relaxed);
    if (camera != 0)
        return sender.address.Value() == camera;
    const bool hasLeader =
        packet && gvsp::HasLeader(packet->header.format) && packet->header.blockId != gvsp::kTestBlockId;
    if (hasLeader)
        m_camera = sender.address.Value();
    return hasLeader;
}

void SenderFilter::Forget()
{
    m_camera = m_given.value_or(Ipv4Address()).Value();
}

std::optional<Ipv4Address> SenderFilter::Camera() const
{
    const Ipv4Address camera(m_camera.load());
    return camera.IsUnspecified() ? std::nullopt : std::optional(camera);
}

} // namespace receive
