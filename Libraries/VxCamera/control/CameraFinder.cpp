#include "VxCamera/control/CameraFinder.h"

#include "VxCamera/control/InterfaceMemory.h"
#include "VxCamera/control/InterfaceScans.h"

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

// Chosen: far more than anybody has; an answer can be forged, and memory must not be filled with them. Those
// that match what is looked for have as much room of their own, so that nobody crowds it out.
constexpr std::size_t kMostCameras = 1000;

/// Cameras found so far, each once per interface.
class Findings {
public:
    void Add(const FoundCamera& found, bool isWanted)
    {
        const Key key{found.via.address, ConnectionId::Of(found.camera), found.camera.ipAddress};
        std::size_t& count = isWanted ? m_wantedCount : m_otherCount;
        if (count < kMostCameras && m_cameras.emplace(key, found).second)
            ++count;
    }

    /// All cameras in the order of interface address and connection id.
    [[nodiscard]] std::vector<FoundCamera> Take()
    {
        std::vector<FoundCamera> all;
        std::ranges::transform(m_cameras, std::back_inserter(all),
                               [](const auto& entry) { return entry.second; });
        return all;
    }

private:
    using Key = std::tuple<transport::Ipv4Address, std::string, std::uint32_t>;
    std::map<Key, FoundCamera> m_cameras;
    std::size_t m_wantedCount = 0;
    std::size_t m_otherCount = 0;
};

/// A camera that answers at several addresses of an interface is one camera, reached from the address in
/// whose subnet it is.
void AddOnce(std::vector<FoundCamera>& cameras, const FoundCamera& found)
{
    const auto isSame = [&](const FoundCamera& other) {
        return other.camera.mac == found.camera.mac && other.camera.ipAddress == found.camera.ipAddress;
    };
    const auto known = std::ranges::find_if(cameras, isSame);
    if (known == cameras.end())
        cameras.push_back(found);
    else if (!known->IsConfigurationValid() && found.IsConfigurationValid())
        *known = found;
}

/// @param described  interfaces by number, one entry for each of their addresses
std::vector<ScannedInterface> Group(const std::vector<NetworkInterface>& described,
                                    std::vector<FoundCamera> all)
{
    MarkConfigurations(all);
    std::vector<ScannedInterface> groups;
    for (const NetworkInterface& each : described) {
        const bool isNew = groups.empty() || each.index == 0 || groups.back().description.index != each.index;
        if (isNew)
            groups.push_back({each});
        groups.back().addresses.push_back(each.address);
        for (const FoundCamera& found : all)
            if (found.via == each)
                AddOnce(groups.back().cameras, found);
    }
    for (ScannedInterface& group : groups)
        std::ranges::stable_sort(group.cameras, {},
                                 [](const FoundCamera& found) { return ConnectionId::Of(found.camera); });
    return groups;
}

bool IsInSubnetOf(const NetworkInterface& described, transport::Ipv4Address address)
{
    return !described.mask.IsUnspecified() && !address.IsUnspecified() &&
           address.IsSameSubnet(described.address, described.mask);
}

VxResult NotFound(const ConnectionId& id)
{
    return {VxError::NotFound, "no camera \"" + id.Text() +
                                   "\" answers; check its power, its cable and this machine's firewall"};
}

VxResult WrongConfiguration(const ConnectionId& id, const FoundCamera& found)
{
    const std::string camera = "camera \"" + id.Text() + "\" ";
    const std::string on = found.via.name + " (" + found.via.address.ToString() + ")";
    const std::string remedy = "; give it an address of its own in that subnet";
    switch (found.fault) {
    case ConfigurationFault::NoAddress:
        return {VxError::InvalidConfiguration,
                camera + "on the interface " + on + " has no address" + remedy};
    case ConfigurationFault::SharedAddress:
        return {VxError::InvalidConfiguration, camera + "on the interface " + on + " has the address " +
                                                   found.Address().ToString() +
                                                   ", which another camera has as well" + remedy};
    default:
        return {VxError::InvalidConfiguration, camera + "has the address " + found.Address().ToString() +
                                                   ", which cannot be reached from the interface " + on +
                                                   remedy};
    }
}

VxResult SeveralFound(const ConnectionId& id, const FoundCamera& one, const FoundCamera& other)
{
    return {VxError::Ambiguous, "several cameras are called \"" + id.Text() +
                                    "\": " + ConnectionId::Of(one.camera) + " and " +
                                    ConnectionId::Of(other.camera) + "; name one by its MAC address"};
}

VxExpected<FoundCamera> Choose(const ConnectionId& id, const std::vector<ScannedInterface>& interfaces)
{
    std::optional<FoundCamera> chosen;
    for (const ScannedInterface& scanned : interfaces) {
        for (const FoundCamera& found : scanned.cameras) {
            if (!id.Matches(found.camera))
                continue;
            if (chosen && ConnectionId::Of(chosen->camera) != ConnectionId::Of(found.camera))
                return SeveralFound(id, *chosen, found);
            if (!chosen || (!chosen->IsConfigurationValid() && found.IsConfigurationValid()))
                chosen = found; // a camera can answer on several interfaces
        }
    }
    if (!chosen)
        return NotFound(id);
    if (!chosen->IsConfigurationValid())
        return WrongConfiguration(id, *chosen);
    return *chosen;
}

} // namespace

VxExpected<std::vector<NetworkInterface>> CameraFinder::Interfaces()
{
    auto interfaces = m_network.interfaces.Interfaces();
    if (interfaces) // systems list them in the order of their metrics, which change
        std::ranges::stable_sort(*interfaces, {}, &NetworkInterface::index);
    return interfaces;
}

void CameraFinder::Remember(const FoundCamera& found)
{
    if (m_network.memory != nullptr)
        m_network.memory->Remember(found.device.address, found.via.address);
}

VxExpected<std::vector<ScannedInterface>> CameraFinder::FindAll(std::chrono::milliseconds timeout)
{
    return FindUntil(timeout, [](const FoundCamera&) { return std::nullopt; });
}

VxExpected<std::vector<ScannedInterface>> CameraFinder::FindUntil(std::chrono::milliseconds timeout,
                                                                  const Enough& enough)
{
    return Search(timeout, [&](const FoundCamera& found) {
        const auto rest = enough(found);
        return Verdict{rest.has_value(), rest};
    });
}

VxExpected<std::vector<ScannedInterface>> CameraFinder::Search(std::chrono::milliseconds timeout,
                                                               const Judge& judge)
{
    const auto interfaces = Interfaces();
    if (!interfaces)
        return interfaces.Error();
    const auto sockets = m_network.sockets.MakeGroup();
    if (!sockets)
        return sockets.Error();
    InterfaceScans scans(**sockets, m_network.clock);
    std::vector<NetworkInterface> usable;
    std::ranges::copy_if(*interfaces, std::back_inserter(usable),
                         [&](const NetworkInterface& described) { return scans.AddEverybody(described); });
    Findings findings;
    scans.Run(m_network.clock.Now() + timeout, [&](const FoundCamera& found, InterfaceScans::Asked) {
        const Verdict verdict = judge(found);
        findings.Add(found, verdict.isWanted);
        if (IsInSubnetOf(found.via, found.Address()))
            Remember(found);
        if (verdict.rest)
            scans.EndAt(m_network.clock.Now() + *verdict.rest);
    });
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
    const auto interfaces = Interfaces();
    if (!interfaces)
        return interfaces.Error();
    const auto sockets = m_network.sockets.MakeGroup();
    if (!sockets)
        return sockets.Error();
    InterfaceScans scans(**sockets, m_network.clock);
    const std::size_t localCount = AddLocal(*interfaces, id.IpAddress(), scans);
    // Behind another interface, another camera may have the same address.
    const auto grace = localCount > 1 ? kAmbiguityGrace : 0ms;
    std::optional<FoundCamera> found;
    std::optional<FoundCamera> other;
    Findings heard;
    const auto onCamera = [&](const FoundCamera& answer, InterfaceScans::Asked asked) {
        if (answer.device.address != id.IpAddress())
            return;
        heard.Add(answer, true);
        const bool isReachable = asked == InterfaceScans::Asked::ItAlone;
        if (isReachable && !found)
            found = answer;
        if (isReachable && ConnectionId::Of(answer.camera) != ConnectionId::Of(found->camera))
            other = answer;
        scans.EndAt(m_network.clock.Now() + (isReachable ? grace : kAmbiguityGrace));
    };
    const auto start = m_network.clock.Now();
    if (localCount > 0)
        scans.Run(start + timeout / 2, onCamera);
    else
        AddRouted(id.IpAddress(), scans);
    if (!found) {
        for (const NetworkInterface& described : *interfaces)
            scans.AddEverybody(described);
        scans.Run(start + timeout, onCamera);
    }
    if (other)
        return SeveralFound(id, *found, *other);
    auto chosen = found ? VxExpected<FoundCamera>(*found) : Choose(id, Group(*interfaces, heard.Take()));
    if (chosen)
        Remember(*chosen);
    return chosen;
}

/// Asks the address alone on each interface in whose subnet it is.
/// @return  the number of interfaces on which it is asked
std::size_t CameraFinder::AddLocal(const std::vector<NetworkInterface>& interfaces,
                                   transport::Ipv4Address camera, InterfaceScans& scans)
{
    std::size_t count = 0;
    std::uint32_t last = 0; // one interface can have several addresses in the subnet; 0: nobody's number
    for (const NetworkInterface& described : interfaces) {
        if (!IsInSubnetOf(described, camera) || !scans.AddOne(described, camera))
            continue;
        count += described.index == 0 || described.index != last ? 1 : 0;
        last = described.index;
    }
    return count;
}

/// An address in nobody's subnet may be behind a router.
void CameraFinder::AddRouted(transport::Ipv4Address camera, InterfaceScans& scans)
{
    if (const auto via = InterfaceTowards(camera))
        scans.AddOne(*via, camera);
}

VxExpected<FoundCamera> CameraFinder::FindByScan(const ConnectionId& id, std::chrono::milliseconds timeout)
{
    const bool isUnique = id.GetKind() == ConnectionId::Kind::MacAddress;
    const auto scanned = Search(timeout, [&](const FoundCamera& found) {
        // One that answers where it cannot be reached may also answer where it can.
        const bool isWanted = id.Matches(found.camera);
        const bool isIt = isWanted && IsInSubnetOf(found.via, found.Address());
        return Verdict{isWanted, isIt ? std::optional(isUnique ? 0ms : kAmbiguityGrace) : std::nullopt};
    });
    return scanned ? Choose(id, *scanned) : scanned.Error();
}

VxExpected<NetworkInterface> CameraFinder::InterfaceTowards(transport::Ipv4Address remote)
{
    const auto interfaces = Interfaces();
    if (!interfaces)
        return interfaces.Error();
    const auto known = m_network.memory != nullptr ? m_network.memory->Find(remote) : std::nullopt;
    if (known) {
        const auto remembered = std::ranges::find(*interfaces, *known, &NetworkInterface::address);
        if (remembered != interfaces->end())
            return *remembered;
    }
    const NetworkInterface* best = nullptr;
    for (const NetworkInterface& described : *interfaces) {
        const bool isNearer =
            best == nullptr || std::popcount(described.mask.Value()) > std::popcount(best->mask.Value());
        if (IsInSubnetOf(described, remote) && isNearer)
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
