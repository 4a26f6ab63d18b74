#include "VxSimulator/VxSimulatedCamera.h"

#include "VxCamera/transport/SystemNetwork.h"

#include "VxSimulator/CameraSession.h"
#include "VxSimulator/CheckOptions.h"
#include "VxSimulator/device/InitialMemory.h"

#include <algorithm>
#include <cstdio>
#include <utility>

using transport::Ipv4Address;
using transport::Ipv4Endpoint;

struct VxSimulatedCamera::OwnNetwork {
    std::unique_ptr<transport::ISocketFactory> sockets = transport::MakeSystemSocketFactory();
    std::unique_ptr<transport::IInterfaceList> interfaces = transport::MakeSystemInterfaceList();
    VxSteadyClock clock;
};

namespace {

/// @return  the interface with this address, or whose subnet it is in: all of 127.0.0.0/8 is this machine's
std::optional<transport::NetworkInterface> InterfaceOf(transport::IInterfaceList& interfaces,
                                                       Ipv4Address address)
{
    const auto all = interfaces.Interfaces();
    if (!all)
        return std::nullopt;
    const auto found = std::ranges::find_if(*all, [address](const transport::NetworkInterface& each) {
        return each.address == address || (each.isLoopback && each.address.IsSameSubnet(address, each.mask));
    });
    return found != all->end() ? std::optional(*found) : std::nullopt;
}

/// Broadcasts reach a socket that is bound to one address on Windows, but not on other systems: there each
/// broadcast address needs a socket. Without it the camera is found only by those who know its address, so
/// failure is no error.
std::vector<std::unique_ptr<transport::IUdpSocket>>
OpenBroadcastSockets(transport::ISocketFactory& sockets, const Ipv4Endpoint& control, Ipv4Address mask)
{
    std::vector<std::unique_ptr<transport::IUdpSocket>> opened;
    const Ipv4Address ofSubnet(control.address.Value() | ~mask.Value());
    for (const Ipv4Address address : {Ipv4Address::LimitedBroadcast(), ofSubnet}) {
        opened.emplace_back();
        if (address == control.address)
            continue; // a subnet of one host
        transport::UdpSocketOptions options;
        options.local = {address, control.port};
        options.sharing = transport::PortSharing::Shared;
        auto socket = sockets.OpenUdp(options);
        if (socket)
            opened.back() = *std::move(socket);
    }
    return opened;
}

VxResult WithRemedy(const VxResult& failure)
{
    const char* remedy = failure.Code() == VxError::PortInUse
                             ? ": end that program, or choose another address or port"
                             : ": choose an address of this machine";
    return VxResult(failure.Code(), failure.GetDescription().Narrow() + remedy);
}

} // namespace

VxSimulatedCamera::VxSimulatedCamera()
    : m_ownNetwork(std::make_unique<OwnNetwork>()),
      m_sockets(*m_ownNetwork->sockets),
      m_interfaces(*m_ownNetwork->interfaces),
      m_clock(m_ownNetwork->clock)
{
}

VxSimulatedCamera::VxSimulatedCamera(transport::ISocketFactory& sockets,
                                     transport::IInterfaceList& interfaces, const IVxClock& clock)
    : m_sockets(sockets), m_interfaces(interfaces), m_clock(clock)
{
}

VxSimulatedCamera::~VxSimulatedCamera() = default;

VxResult VxSimulatedCamera::Start(const VxSimulatorOptions& options)
{
    if (m_session)
        return VxResult(VxError::AlreadyOpen, "the simulated camera is running");
    if (auto checked = simulator::CheckOptions(options); !checked.IsOK())
        return checked;

    auto sockets = OpenSockets({options.address, options.controlPort});
    if (!sockets)
        return WithRemedy(sockets.Error());
    VxSimulatorOptions fixed = options;
    fixed.mac = simulator::MacOf(options); // stays the same when the address changes
    m_mac = *fixed.mac;
    const auto reopen = [this, port = sockets->control->LocalEndpoint().port](Ipv4Address address) {
        return OpenSockets({address, port});
    };
    m_session = std::make_unique<simulator::CameraSession>(
        *std::move(sockets), fixed, m_clock, simulator::CameraSession::Callbacks{m_eventSink, reopen});
    return VxResult::Ok();
}

VxExpected<simulator::CameraSockets> VxSimulatedCamera::OpenSockets(const Ipv4Endpoint& at) const
{
    transport::UdpSocketOptions controlOptions;
    controlOptions.local = at;
    controlOptions.isBroadcastAllowed = true;
    auto control = m_sockets.OpenUdp(controlOptions);
    if (!control)
        return control.Error();
    transport::UdpSocketOptions streamOptions;
    streamOptions.local = {at.address, 0};
    streamOptions.multicastInterface = at.address;
    auto stream = m_sockets.OpenUdp(streamOptions);
    if (!stream)
        return stream.Error();

    simulator::CameraSockets opened;
    opened.control = *std::move(control);
    opened.stream = *std::move(stream);
    if (const auto found = InterfaceOf(m_interfaces, at.address)) {
        opened.network.subnetMask = found->mask;
        opened.network.mtuBytes = found->mtuBytes != 0 ? found->mtuBytes : opened.network.mtuBytes;
    }
    opened.network.streamSourcePort = opened.stream->LocalEndpoint().port;
    opened.broadcast =
        OpenBroadcastSockets(m_sockets, opened.control->LocalEndpoint(), opened.network.subnetMask);
    return opened;
}

void VxSimulatedCamera::Stop()
{
    m_session.reset();
    m_mac = {};
}

void VxSimulatedCamera::Vanish()
{
    if (m_session)
        m_session->Vanish();
}

Ipv4Endpoint VxSimulatedCamera::ControlEndpoint() const
{
    return m_session ? m_session->ControlEndpoint() : Ipv4Endpoint{};
}

std::array<std::uint8_t, 6> VxSimulatedCamera::Mac() const
{
    return m_mac;
}

std::string VxSimulatedCamera::MacText() const
{
    std::array<char, sizeof("00:11:22:33:44:55")> text{};
    std::snprintf(text.data(), text.size(), "%02X:%02X:%02X:%02X:%02X:%02X", m_mac[0], m_mac[1], m_mac[2],
                  m_mac[3], m_mac[4], m_mac[5]);
    return text.data();
}

std::optional<Ipv4Endpoint> VxSimulatedCamera::ControlOwner() const
{
    return m_session ? m_session->ControlOwner() : std::nullopt;
}

bool VxSimulatedCamera::IsAcquiring() const
{
    return m_session && m_session->IsAcquiring();
}

VxSimulatorCounters VxSimulatedCamera::Counters() const
{
    if (!m_session)
        return {};
    const simulator::StreamSender& sender = m_session->Sender();
    return {.framesSent = m_session->FramesSent(),
            .packetsSent = sender.PacketsSent(),
            .packetsResent = sender.PacketsResent(),
            .packetsDropped = sender.PacketsDropped(),
            .sendFailures = sender.SendFailures(),
            .commandsReceived = m_session->CommandsReceived()};
}
