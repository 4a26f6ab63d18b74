#include "VxCamera/control/CameraFinder.h"

#include "VxBase/VxMutex.h"
#include "VxCamera/control/DiscoveryScan.h"
#include "VxCamera/control/InterfaceScans.h"
#include "VxCamera/wire/gvcp/Command.h"

#include <algorithm>
#include <bit>
#include <iterator>
#include <map>
#include <optional>
#include <string>

namespace control {

namespace {

using namespace std::chrono_literals;
using transport::NetworkInterface;

// Chosen: time for a second camera of the same name to show itself; those on a local network answer within 10
// ms.
constexpr auto kAmbiguityGrace = 50ms;

// Chosen: far more than anybody has; an answer can be forged, and memory must not be filled with them.
constexpr std::size_t kMostCameras = 1000;

/// Cameras found so far, each once per interface.
class Findings {
public:
    void Add(const FoundCamera& found)
    {
        const VxLock lock(m_mutex);
        const Key key{found.via.address, ConnectionId::Of(found.camera), found.camera.ipAddress};
        if (m_cameras.size() < kMostCameras)
            m_cameras.emplace(key, found);
    }

    /// All cameras in the order of interface address and connection id.
    [[nodiscard]] std::vector<FoundCamera> Take()
    {
        const VxLock lock(m_mutex);
        std::vector<FoundCamera> all;
        std::ranges::transform(m_cameras, std::back_inserter(all),
                               [](const auto& entry) { return entry.second; });
        return all;
    }

private:
    using Key = std::tuple<transport::Ipv4Address, std::string, std::uint32_t>;
    VxMutex m_mutex;
    std::map<Key, FoundCamera> m_cameras VX_GUARDED_BY(m_mutex);
};

std::vector<ScannedInterface> Group(const std::vector<NetworkInterface>& interfaces,
                                    const std::vector<FoundCamera>& all)
{
    std::vector<ScannedInterface> groups;
    for (const NetworkInterface& described : interfaces) {
        ScannedInterface group{described, {}};
        std::ranges::copy_if(all, std::back_inserter(group.cameras),
                             [&](const FoundCamera& found) { return found.via == described; });
        groups.push_back(std::move(group));
    }
    MarkConfigurations(groups);
    return groups;
}

VxResult NotFound(const ConnectionId& id)
{
    return {VxError::NotFound, "no camera \"" + id.Text() +
                                   "\" answers; check its power, its cable and this machine's firewall"};
}

VxResult WrongConfiguration(const ConnectionId& id, const FoundCamera& found)
{
    return {VxError::InvalidConfiguration, "camera \"" + id.Text() + "\" has the address " +
                                               transport::Ipv4Address(found.camera.ipAddress).ToString() +
                                               ", which cannot be reached from the interface " +
                                               found.via.name + " (" + found.via.address.ToString() +
                                               "); give the camera an address of its own in that subnet"};
}

VxExpected<FoundCamera> Choose(const ConnectionId& id, const std::vector<ScannedInterface>& interfaces)
{
    std::optional<FoundCamera> chosen;
    for (const ScannedInterface& scanned : interfaces) {
        for (const FoundCamera& found : scanned.cameras) {
            if (!id.Matches(found.camera))
                continue;
            if (chosen && chosen->camera.mac != found.camera.mac)
                return VxResult(VxError::Ambiguous, "several cameras are called \"" + id.Text() +
                                                        "\": " + ConnectionId::Of(chosen->camera) + " and " +
                                                        ConnectionId::Of(found.camera));
            if (!chosen || (!chosen->isConfigurationValid && found.isConfigurationValid))
                chosen = found; // a camera can answer on several interfaces
        }
    }
    if (!chosen)
        return NotFound(id);
    if (!chosen->isConfigurationValid)
        return WrongConfiguration(id, *chosen);
    return *chosen;
}

} // namespace

VxExpected<std::vector<ScannedInterface>> CameraFinder::FindAll(std::chrono::milliseconds timeout)
{
    const auto interfaces = m_network.interfaces.Interfaces();
    if (!interfaces)
        return interfaces.Error();
    InterfaceScans scans(m_network.sockets, m_network.clock, m_network.clock.Now() + timeout);
    std::vector<NetworkInterface> usable;
    std::ranges::copy_if(*interfaces, std::back_inserter(usable),
                         [&](const NetworkInterface& described) { return scans.Add(described); });
    Findings findings;
    scans.Run([&](const FoundCamera& found) { findings.Add(found); });
    return Group(usable, findings.Take());
}

VxExpected<FoundCamera> CameraFinder::Find(const ConnectionId& id, std::chrono::milliseconds timeout)
{
    if (id.IsEmpty())
        return VxResult(VxError::InvalidParameter, "the connection id of a camera is empty");
    return id.GetKind() == ConnectionId::Kind::IpAddress ? FindByAddress(id, timeout)
                                                         : FindByScan(id, timeout);
}

VxExpected<FoundCamera> CameraFinder::FindByAddress(const ConnectionId& id, std::chrono::milliseconds timeout)
{
    const auto via = InterfaceTowards(id.IpAddress());
    if (!via)
        return VxResult(VxError::NotFound,
                        "no way to camera \"" + id.Text() + "\": " + via.Error().GetDescription().Narrow());
    transport::UdpSocketOptions options;
    options.local.address = via->address;
    const auto socket = m_network.sockets.OpenUdp(options);
    if (!socket)
        return socket.Error();
    const transport::Ipv4Endpoint device{id.IpAddress(), gvcp::kPort};
    DiscoveryScan scan(**socket, m_network.clock, {{device}, gvcp::DiscoveryAnswer::Unicast});
    const auto end = m_network.clock.Now() + timeout;
    std::optional<FoundCamera> found;
    const auto scanned = scan.Run([&] { return found ? IVxClock::Time{} : end; },
                                  [&](const CameraAnswer& answer) {
                                      if (answer.sender != device || found)
                                          return;
                                      found = FoundCamera{answer.camera, device, *via, true};
                                      (*socket)->Wake();
                                  });
    if (found)
        return *found;
    return scanned.IsOK() ? NotFound(id) : scanned;
}

VxExpected<FoundCamera> CameraFinder::FindByScan(const ConnectionId& id, std::chrono::milliseconds timeout)
{
    const auto interfaces = m_network.interfaces.Interfaces();
    if (!interfaces)
        return interfaces.Error();
    InterfaceScans scans(m_network.sockets, m_network.clock, m_network.clock.Now() + timeout);
    std::vector<NetworkInterface> usable;
    std::ranges::copy_if(*interfaces, std::back_inserter(usable),
                         [&](const NetworkInterface& described) { return scans.Add(described); });
    const bool isUnique = id.GetKind() == ConnectionId::Kind::MacAddress;
    Findings findings;
    scans.Run([&](const FoundCamera& found) {
        findings.Add(found);
        const bool isReachable =
            transport::Ipv4Address(found.camera.ipAddress).IsSameSubnet(found.via.address, found.via.mask);
        // One that answers where it cannot be reached may also answer where it can.
        if (id.Matches(found.camera) && isReachable)
            scans.EndAt(m_network.clock.Now() + (isUnique ? 0ms : kAmbiguityGrace));
    });
    return Choose(id, Group(usable, findings.Take()));
}

VxExpected<NetworkInterface> CameraFinder::InterfaceTowards(transport::Ipv4Address remote)
{
    const auto interfaces = m_network.interfaces.Interfaces();
    if (!interfaces)
        return interfaces.Error();
    const NetworkInterface* best = nullptr;
    for (const NetworkInterface& described : *interfaces) {
        const bool isNearer =
            best == nullptr || std::popcount(described.mask.Value()) > std::popcount(best->mask.Value());
        if (remote.IsSameSubnet(described.address, described.mask) && !described.mask.IsUnspecified() &&
            isNearer)
            best = &described;
    }
    if (best != nullptr)
        return *best;
    const auto local = m_network.interfaces.LocalAddressTowards(remote);
    if (!local)
        return local.Error();
    const auto routed = std::ranges::find(*interfaces, *local, &NetworkInterface::address);
    if (routed == interfaces->end())
        return VxResult(VxError::NetworkError, "no interface has the address " + local->ToString());
    return *routed;
}

} // namespace control
