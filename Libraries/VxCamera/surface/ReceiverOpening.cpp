#include "VxCamera/surface/ReceiverOpening.h"

#include <chrono>
#include <tuple>
#include <utility>
#include <vector>

#include "VxCamera/control/ConnectionId.h"
#include "VxCamera/surface/CameraNetwork.h"
#include "VxCamera/surface/NoThrow.h"

namespace {

using transport::Ipv4Address;
using transport::IUdpSocket;

// Chosen: a camera on the network answers within a few milliseconds. One that does not is no error here, and
// a connect may have waited for it before, so that both together stay below half a second.
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

/// Joins on the interface through which the camera is reached, else on every interface. Where the group was
/// joined before, the system refuses, and nothing changes.
/// @return  the own address of the first interface joined on
VxExpected<Ipv4Address> JoinEverywhere(CameraNetwork& network, IUdpSocket& socket, Ipv4Address group,
                                       Ipv4Address local)
{
    if (!local.IsUnspecified()) {
        const VxResult joined = socket.JoinGroup(group, local);
        return joined.IsOK() ? VxExpected<Ipv4Address>(local) : joined;
    }
    const auto interfaces = network.Parts().interfaces.Interfaces();
    if (!interfaces)
        return interfaces.Error();
    VxResult last(VxError::NetworkError, "no network interface is up");
    Ipv4Address first;
    for (const transport::NetworkInterface& each : *interfaces) {
        last = socket.JoinGroup(group, each.address);
        // Loopback carries no camera but a simulated one.
        if (last.IsOK() && (first.IsUnspecified() || (first.IsLoopback() && !each.isLoopback)))
            first = each.address;
    }
    return first.IsUnspecified() ? last : VxExpected<Ipv4Address>(first);
}

/// @param local  own address towards the camera, or the one that was asked for
/// @return  to which the socket is bound; 0.0.0.0: none
Ipv4Address BoundAddress(const ReceiverRequest& request, Ipv4Address local)
{
    // A group's packets carry its own address as destination.
    if (request.group)
        return {};
    // Whoever controls the camera knows of this receiver only its port, and may name any address of this
    // host.
    const bool isNamedElsewhere = request.port != 0 && request.localIpAddress.IsEmpty();
    return isNamedElsewhere ? Ipv4Address() : local;
}

transport::UdpSocketOptions SocketOptions(const ReceiverRequest& request, Ipv4Address local)
{
    transport::UdpSocketOptions options;
    options.local = {BoundAddress(request, local), request.port};
    options.sharing = request.group ? transport::PortSharing::Shared : transport::PortSharing::Exclusive;
    options.receiveBufferBytes = kSocketBufferBytes;
    options.isCoalescing = true; // the packets of a block are equally long
    options.isRingWanted = true;
    options.hasShortWaits = true; // for packets that are missing
    return options;
}

} // namespace

VxExpected<OpenedReceiver> OpenReceiver(CameraNetwork& network, const ReceiverRequest& request)
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
    OpenedReceiver opened;
    opened.reachedAt = ends.local;
    if (request.group) {
        const auto joined = JoinEverywhere(network, **socket, *request.group, ends.local);
        if (!joined)
            return joined.Error();
        opened.reachedAt = *joined;
    }
    const auto camera = ends.camera.IsUnspecified() ? std::nullopt : std::optional(ends.camera);
    opened.receiver = std::make_unique<receive::StreamReceiver>(*std::move(socket), network.Clock(), camera);
    if (request.group) {
        opened.receiver->SetGroup(*request.group);
        opened.receiver->SetJoiner([&network, group = *request.group, local = ends.local](IUdpSocket& own) {
            // Interfaces may have come up, or have got their address, since the group was joined.
            std::ignore = NoThrow([&] { return JoinEverywhere(network, own, group, local).Result(); });
        });
    }
    if (request.mostOpenBlocks > 0)
        opened.receiver->SetMostOpen(request.mostOpenBlocks);
    return opened;
}
