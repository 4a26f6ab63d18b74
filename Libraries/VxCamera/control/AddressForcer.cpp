#include "VxCamera/control/AddressForcer.h"

#include "VxCamera/wire/gvcp/AckHeader.h"
#include "VxCamera/wire/gvcp/Command.h"
#include "VxCamera/wire/gvcp/ForceIp.h"

#include <algorithm>
#include <array>
#include <bit>
#include <optional>
#include <string>

namespace control {

namespace {

using namespace std::chrono_literals;
using transport::Ipv4Address;

// Chosen: any number but 0; each socket sends one command.
constexpr std::uint16_t kRequestId = 1;

// Chosen: commands and acknowledges get lost; a camera that is told twice has the address all the same.
constexpr int kTries = 3;
constexpr auto kAckTimeout = 100ms;

// Chosen: larger than any acknowledge.
constexpr std::size_t kReceiveBytes = 1024;

constexpr unsigned kAddressBits = 32;

bool IsMask(Ipv4Address mask)
{
    // Ones, then zeros; at least two addresses must be left for hosts.
    const auto ones = static_cast<unsigned>(std::countl_one(mask.Value())); // 0 to 32
    const std::uint32_t rest = ones < kAddressBits ? mask.Value() << ones : 0;
    return ones > 0 && rest == 0 && ones <= kAddressBits - 2;
}

VxResult CheckPlausible(const AddressAssignment& wanted)
{
    const auto wrong = [](Ipv4Address address, const char* why) {
        return VxResult(VxError::InvalidParameter, address.ToString() + why);
    };
    if (!IsMask(wanted.mask))
        return wrong(wanted.mask, " is no subnet mask with room for cameras");
    const bool isHost = !wanted.address.IsUnspecified() && !wanted.address.IsMulticast() &&
                        wanted.address.Value() >> 24 != 0 && wanted.address.Value() >> 28 != 0xF;
    if (!isHost)
        return wrong(wanted.address, " is no address that a camera can have");
    const std::uint32_t hostPart = wanted.address.Value() & ~wanted.mask.Value();
    if (hostPart == 0 || hostPart == ~wanted.mask.Value())
        return wrong(wanted.address, " is the name or the broadcast address of its subnet");
    if (!wanted.gateway.IsUnspecified() && !wanted.gateway.IsSameSubnet(wanted.address, wanted.mask))
        return wrong(wanted.gateway, " is a gateway outside of the camera's subnet");
    return VxResult::Ok();
}

/// A camera that answers on several interfaces is one camera; it is told where its set-up is right, if it is
/// anywhere.
VxExpected<FoundCamera> ChooseAny(const ConnectionId& id, const std::vector<ScannedInterface>& scanned)
{
    std::optional<FoundCamera> chosen;
    for (const ScannedInterface& each : scanned) {
        for (const FoundCamera& found : each.cameras) {
            if (!id.Matches(found.camera))
                continue;
            if (chosen && ConnectionId::Of(chosen->camera) != ConnectionId::Of(found.camera))
                return VxResult(VxError::Ambiguous, "several cameras are called \"" + id.Text() +
                                                        "\": " + ConnectionId::Of(chosen->camera) + " and " +
                                                        ConnectionId::Of(found.camera) +
                                                        "; name one by its MAC address");
            if (!chosen || found.IsConfigurationValid())
                chosen = found;
        }
    }
    if (!chosen)
        return VxResult(VxError::NotFound, "no camera \"" + id.Text() +
                                               "\" answers; check its power, its cable and this machine's "
                                               "firewall");
    return *chosen;
}

VxResult Refusal(const FoundCamera& camera, gvcp::Status status)
{
    if (gvcp::IsGood(status))
        return VxResult::Ok();
    const VxError code = status == gvcp::Status::AccessDenied     ? VxError::AccessDenied
                         : status == gvcp::Status::NotImplemented ? VxError::NotSupported
                                                                  : VxError::CameraError;
    return {code, "camera " + ConnectionId::Of(camera.camera) +
                      " refuses another address: " + gvcp::StatusText(status)};
}

} // namespace

VxExpected<FoundCamera> AddressForcer::Force(const ConnectionId& id, const AddressAssignment& wanted,
                                             std::chrono::milliseconds timeout)
{
    if (id.IsEmpty())
        return VxResult(VxError::InvalidParameter, "the connection id of a camera is empty");
    if (auto plausible = CheckPlausible(wanted); !plausible.IsOK())
        return plausible;
    const auto scanned = m_finder.FindAll(timeout);
    if (!scanned)
        return scanned.Error();
    const auto camera = ChooseAny(id, *scanned);
    if (!camera)
        return camera;
    if (camera->camera.mac == gvcp::MacAddress{}) // the command names its camera by that alone
        return VxResult(VxError::InvalidParameter,
                        "camera " + ConnectionId::Of(camera->camera) +
                            " tells no MAC address, so no other address can be given to it");
    if (auto isFree = CheckNobodyHas(wanted, *camera, *scanned); !isFree.IsOK())
        return isFree;
    if (auto told = Tell(*camera, wanted); !told.IsOK())
        return told;
    return Await(*camera, wanted, timeout);
}

VxResult AddressForcer::CheckNobodyHas(const AddressAssignment& wanted, const FoundCamera& camera,
                                       const std::vector<ScannedInterface>& scanned)
{
    const std::string address = wanted.address.ToString();
    for (const ScannedInterface& each : scanned) {
        // A simulated camera lives at this machine's own addresses.
        const bool isOwn = std::ranges::find(each.addresses, wanted.address) != each.addresses.end() &&
                           !each.description.isLoopback;
        if (isOwn && camera.device.address != camera.via.address)
            return {VxError::InvalidParameter,
                    "the interface " + each.description.name + " of this machine has the address " + address};
        for (const FoundCamera& other : each.cameras)
            if (other.Address() == wanted.address &&
                ConnectionId::Of(other.camera) != ConnectionId::Of(camera.camera))
                return {VxError::InvalidParameter,
                        "camera " + ConnectionId::Of(other.camera) + " has the address " + address};
    }
    return VxResult::Ok();
}

/// A camera may stay silent, because its answer comes from the new address: only a refusal is a failure.
VxResult AddressForcer::Tell(const FoundCamera& camera, const AddressAssignment& wanted)
{
    transport::UdpSocketOptions options;
    options.local.address = camera.via.address;
    options.interfaceIndex = camera.via.index;
    options.isBroadcastAllowed = true;
    options.isBroadcastReceived = true;
    const auto sockets = m_network.sockets.MakeGroup();
    if (!sockets)
        return sockets.Error();
    const auto socket = (*sockets)->OpenUdp(options);
    if (!socket)
        return socket.Error();
    const auto command = gvcp::MakeForceIpCommand(
        kRequestId, gvcp::DiscoveryAnswer::BroadcastAllowed,
        {camera.camera.mac, wanted.address.Value(), wanted.mask.Value(), wanted.gateway.Value()});
    const Ipv4Address everybody =
        camera.via.isLoopback ? camera.via.SubnetBroadcast() : Ipv4Address::LimitedBroadcast();
    std::array<std::byte, kReceiveBytes> memory;
    for (int i = 0; i < kTries; ++i) {
        if (auto sent = (*socket)->SendTo(command.Bytes(), {everybody, gvcp::kPort}); !sent.IsOK())
            return sent;
        const auto end = m_network.clock.Now() + kAckTimeout;
        for (auto now = m_network.clock.Now(); now < end; now = m_network.clock.Now()) {
            transport::Datagram datagram{memory};
            const auto rest = std::chrono::ceil<std::chrono::microseconds>(end - now);
            if (!(*socket)->Receive({&datagram, 1}, rest))
                break;
            const auto ack = gvcp::ParseAck(datagram.Bytes());
            const bool isIts =
                datagram.sender.port == gvcp::kPort && (datagram.sender.address == wanted.address ||
                                                        datagram.sender.address == camera.device.address);
            if (ack && isIts && ack->header.ack == gvcp::Ack::ForceIp && ack->header.ackId == kRequestId)
                return Refusal(camera, ack->header.status);
        }
    }
    return VxResult::Ok();
}

VxExpected<FoundCamera> AddressForcer::Await(const FoundCamera& camera, const AddressAssignment& wanted,
                                             std::chrono::milliseconds timeout)
{
    const auto isIt = [&](const FoundCamera& found) {
        return found.camera.mac == camera.camera.mac && found.Address() == wanted.address;
    };
    // Asked again and again: a camera is away for a while when its address changes, and a search asks only at
    // its beginning.
    const auto end = m_network.clock.Now() + timeout;
    for (auto now = m_network.clock.Now(); now < end; now = m_network.clock.Now()) {
        const auto rest = std::chrono::ceil<std::chrono::milliseconds>(end - now);
        const auto scanned = m_finder.FindUntil(
            std::min<std::chrono::milliseconds>(rest, 500ms),
            [&](const FoundCamera& found) { return isIt(found) ? std::optional(0ms) : std::nullopt; });
        if (!scanned)
            return scanned.Error();
        for (const ScannedInterface& each : *scanned)
            if (const auto found = std::ranges::find_if(each.cameras, isIt); found != each.cameras.end())
                return *found;
    }
    return VxResult(VxError::Timeout, "camera " + ConnectionId::Of(camera.camera) +
                                          " was given the address " + wanted.address.ToString() +
                                          ", but does not answer with it");
}

} // namespace control
