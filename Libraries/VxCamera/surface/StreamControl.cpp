#include "VxCamera/surface/StreamControl.h"

#include <utility>

#include "VxCamera/surface/StreamLinks.h"
#include "VxCamera/wire/registers/BootstrapBits.h"
#include "VxCamera/wire/registers/BootstrapRegisters.h"

namespace {

/// @return  the port from which the camera sends a channel; 0 when it does not tell
std::uint16_t SourcePortOf(control::DeviceSession& session, std::uint32_t channel)
{
    if ((session.Facts().streamChannelCapability & bootstrap::kCapabilitySourcePort) == 0)
        return 0;
    const auto port = session.Client().ReadRegister(
        bootstrap::StreamChannelRegister(bootstrap::kStreamChannelSourcePort, channel));
    return port ? static_cast<std::uint16_t>(*port & bootstrap::kStreamPortMask)
                : std::uint16_t{0}; // 16 bits
}

/// @return  a socket for requests; null when the camera sends nothing again
std::unique_ptr<transport::IUdpSocket> ResendSocket(const StreamControl::Camera& camera)
{
    if ((camera.session.Facts().capability & bootstrap::kCapabilityPacketResend) == 0)
        return nullptr;
    // Not the one for commands: a request must neither wait for a command nor delay one.
    transport::UdpSocketOptions options;
    options.local.address = camera.via.address;
    options.interfaceIndex = camera.via.index;
    options.isSendingAtOnce = true;
    auto socket = camera.sockets.OpenUdp(options);
    return socket ? *std::move(socket) : nullptr;
}

} // namespace

StreamControl::~StreamControl()
{
    Disconnect();
}

void StreamControl::Connect(const Camera& camera, const transport::Ipv4Endpoint& receiver,
                            std::uint32_t channel, std::function<void()> stepDown)
{
    Disconnect();
    if (receiver.port == 0)
        return;
    auto link = std::make_shared<receive::StreamLink>();
    link->command = camera.session.Client().Device();
    link->channel = static_cast<std::uint16_t>(channel); // cameras have far fewer
    if (!receiver.address.IsMulticast()) { // who has joined a group never sends: others receive the same
        link->sourcePort = SourcePortOf(camera.session, channel);
        link->resend = ResendSocket(camera);
    }
    m_smaller = std::make_shared<SmallerPackets>(std::move(stepDown));
    if (m_smaller->Start().IsOK()) // else the size stays as it is, and the stream is received all the same
        link->onPayloadMissing = [smaller = m_smaller] { smaller->Ask(); };
    m_link = std::move(link);
    StreamLinks::Connect(receiver, m_link);
}

void StreamControl::TellPicture(const std::optional<receive::PictureShape>& picture)
{
    if (m_link)
        StreamLinks::TellPicture(m_link, picture);
}

void StreamControl::Disconnect()
{
    if (m_link)
        StreamLinks::Disconnect(m_link);
    m_link.reset();
    if (m_smaller)
        m_smaller->End();
    m_smaller.reset();
}
