#include "VxCamera/surface/ReceiverOpening.h"

#include <chrono>
#include <utility>
#include <vector>

#include "VxCamera/control/ConnectionId.h"
#include "VxCamera/surface/CameraNetwork.h"

namespace {

using transport::Ipv4Address;
using transport::IUdpSocket;

// Chosen: a camera on the network answers within a few milliseconds. One that does not is no error here, and a
// connect may have waited for it before, so that both together stay below half a second.
constexpr std::chrono::milliseconds kFindTimeout{100};

// Measured: with the system's default 62 % of the frames of a 26 MB/s stream were lost on a two-core machine,
// with 16 MiB 1 in 762.
constexpr std::size_t kSocketBufferBytes = std::size_t{16} << 20;

/// The two ends of a stream, as far as they are known; 0.0.0.0 = not known.
struct StreamEnds {
    Ipv4Address camera;
    Ipv4Address local;
};

/// Finds out where the camera is. An address is taken as it stands, so that a passive receiver sends nothing
/// to a camera that others control.
StreamEnds FindEnds(CameraNetwork& network, const VxString& connectionId)
{
    const control::ConnectionId id(connectionId.Narrow());
    control::CameraFinder finder(network.Parts());
    if (id.IsEmpty())
        return {};
    if (id.GetKind() == control::ConnectionId::Kind::IpAddress) {
        const auto via = finder.InterfaceTowards(id.IpAddress());
        return {id.IpAddress(), via ? via->address : Ipv4Address()};
    }
    const auto found = finder.Find(id, kFindTimeout);
    if (!found)
        return {};
    return {found->device.address, found->via.address};
}

/// Joins on the interface through which the camera is reached, else on every interface.
VxResult JoinEverywhere(CameraNetwork& network, IUdpSocket& socket, Ipv4Address group, Ipv4Address local)
{
    if (!local.IsUnspecified())
        return socket.JoinGroup(group, local);
    const auto interfaces = network.Parts().interfaces.Interfaces();
    if (!interfaces)
        return interfaces.Error();
    VxResult last(VxError::NetworkError, "no network interface is up");
    bool isJoined = false;
    for (const transport::NetworkInterface& each : *interfaces) {
        last = socket.JoinGroup(group, each.address);
        isJoined = isJoined || last.IsOK();
    }
    return isJoined ? VxResult::Ok() : last;
}

transport::UdpSocketOptions SocketOptions(const ReceiverRequest& request, Ipv4Address local)
{
    transport::UdpSocketOptions options;
    // A group's packets carry its own address as destination, so the socket must not be bound to an
    // interface's.
    options.local = {request.group ? Ipv4Address() : local, request.port};
    options.sharing = request.group ? transport::PortSharing::Shared : transport::PortSharing::Exclusive;
    options.receiveBufferBytes = kSocketBufferBytes;
    return options;
}

} // namespace

VxExpected<std::unique_ptr<receive::StreamReceiver>> OpenReceiver(CameraNetwork& network,
                                                                  const ReceiverRequest& request)
{
    StreamEnds ends = FindEnds(network, request.connectionId);
    if (!request.localIpAddress.IsEmpty()) {
        const auto local = Ipv4Address::Parse(request.localIpAddress.Narrow());
        if (!local)
            return VxResult(VxError::InvalidParameter,
                            "\"" + request.localIpAddress.Narrow() + "\" is no IPv4 address");
        ends.local = *local;
    }
    auto socket = network.Sockets().OpenUdp(SocketOptions(request, ends.local));
    if (!socket)
        return socket.Error();
    if (request.group)
        if (const VxResult joined = JoinEverywhere(network, **socket, *request.group, ends.local);
            !joined.IsOK())
            return joined;
    const auto camera = ends.camera.IsUnspecified() ? std::nullopt : std::optional(ends.camera);
    return std::make_unique<receive::StreamReceiver>(*std::move(socket), network.Clock(), camera);
}
