#include "VxCamera/transport/posix/PosixInterfaceList.h"

#include "VxCamera/transport/posix/PosixSystem.h"

#include <ifaddrs.h>
#include <net/if.h>
#include <netpacket/packet.h>
#include <sys/ioctl.h>
#include <sys/socket.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <fstream>
#include <memory>
#include <string>

namespace transport {

namespace {

// Chosen: connecting a UDP socket sends nothing, so any port that is not 0 will do; this one discards by
// convention.
constexpr std::uint16_t kDiscardPort = 9;

Ipv4Address AddressOf(const sockaddr* address)
{
    sockaddr_in ipv4{};
    std::memcpy(&ipv4, address, sizeof ipv4);
    return FromSystem(ipv4).address;
}

std::array<std::uint8_t, 6> MacAddressOf(const ifaddrs* all, const char* name)
{
    std::array<std::uint8_t, 6> mac{};
    for (const ifaddrs* entry = all; entry != nullptr; entry = entry->ifa_next) {
        if (entry->ifa_addr == nullptr || entry->ifa_addr->sa_family != AF_PACKET)
            continue;
        if (std::strcmp(entry->ifa_name, name) != 0)
            continue;
        sockaddr_ll link{};
        std::memcpy(&link, entry->ifa_addr, sizeof link);
        if (link.sll_halen == mac.size())
            std::copy_n(link.sll_addr, mac.size(), mac.begin());
    }
    return mac;
}

std::uint32_t MtuOf(const std::string& name)
{
    const FileDescriptor socket(::socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0));
    ifreq request{};
    name.copy(request.ifr_name, IFNAMSIZ - 1);
    if (!socket.IsValid() || ::ioctl(socket.Get(), SIOCGIFMTU, &request) != 0 || request.ifr_mtu < 0)
        return 0;
    return static_cast<std::uint32_t>(request.ifr_mtu); // not negative, tested above
}

std::uint32_t LinkSpeedOf(const std::string& name)
{
    std::ifstream file("/sys/class/net/" + name + "/speed");
    long speedMbps = 0; // -1 where the link is down, unreadable where there is no such thing
    file >> speedMbps;
    return speedMbps > 0 ? static_cast<std::uint32_t>(speedMbps) : 0; // positive, and far from the limit
}

} // namespace

VxExpected<std::vector<NetworkInterface>> PosixInterfaceList::Interfaces()
{
    ifaddrs* first = nullptr;
    if (::getifaddrs(&first) != 0)
        return SystemFailure("list the network interfaces", errno);
    const std::unique_ptr<ifaddrs, void (*)(ifaddrs*)> owner(first, ::freeifaddrs);

    std::vector<NetworkInterface> interfaces;
    for (const ifaddrs* entry = first; entry != nullptr; entry = entry->ifa_next) {
        const bool isIpv4 = entry->ifa_addr != nullptr && entry->ifa_addr->sa_family == AF_INET;
        if (!isIpv4 || (entry->ifa_flags & IFF_UP) == 0)
            continue;
        NetworkInterface found;
        found.name = entry->ifa_name;
        found.index = ::if_nametoindex(entry->ifa_name);
        found.address = AddressOf(entry->ifa_addr);
        if (entry->ifa_netmask != nullptr)
            found.mask = AddressOf(entry->ifa_netmask);
        found.macAddress = MacAddressOf(first, entry->ifa_name);
        found.mtuBytes = MtuOf(found.name);
        found.linkSpeedMbps = LinkSpeedOf(found.name);
        found.isLoopback = (entry->ifa_flags & IFF_LOOPBACK) != 0;
        interfaces.push_back(std::move(found));
    }
    return interfaces;
}

VxExpected<Ipv4Address> PosixInterfaceList::LocalAddressTowards(Ipv4Address remote)
{
    const FileDescriptor socket(::socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, IPPROTO_UDP));
    if (!socket.IsValid())
        return SystemFailure("open a UDP socket", errno);
    sockaddr_in address = ToSystem({remote, kDiscardPort});
    if (::connect(socket.Get(), reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0)
        return SystemFailure("find the way to " + remote.ToString(), errno);
    socklen_t length = sizeof address;
    if (::getsockname(socket.Get(), reinterpret_cast<sockaddr*>(&address), &length) != 0)
        return SystemFailure("read the own address towards " + remote.ToString(), errno);
    return FromSystem(address).address;
}

} // namespace transport
