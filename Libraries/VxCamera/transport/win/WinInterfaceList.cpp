#include "VxCamera/transport/win/WinInterfaceList.h"

#include "VxCamera/transport/win/WinSystem.h"

#include <winsock2.h>
#include <ws2tcpip.h>

#include <iphlpapi.h>

#include <algorithm>
#include <cstring>
#include <limits>
#include <string>

namespace transport {

namespace {

// Chosen: connecting a UDP socket sends nothing, so any port that is not 0 will do; this one discards by
// convention.
constexpr std::uint16_t kDiscardPort = 9;

// Chosen: the list may grow between the two calls that read it; a list that grows more often is given up.
constexpr int kListAttempts = 4;
constexpr ULONG kFirstListBytes =
    16 * 1024; // the size that the system's documentation recommends to begin with

constexpr unsigned kAddressBits = 32;
constexpr ULONG64 kBitsPerMegabit = 1'000'000;

Ipv4Address MaskOf(unsigned prefixBits)
{
    if (prefixBits == 0)
        return Ipv4Address();
    return Ipv4Address(0xFFFFFFFFu << (kAddressBits - std::min(prefixBits, kAddressBits)));
}

std::uint32_t SpeedMbps(ULONG64 bitsPerSecond)
{
    if (bitsPerSecond == std::numeric_limits<ULONG64>::max())
        return 0; // the system's "unknown"
    const ULONG64 megabits = bitsPerSecond / kBitsPerMegabit;
    return static_cast<std::uint32_t>(std::min<ULONG64>(megabits, 0xFFFFFFFF)); // fits, it was cut
}

NetworkInterface Describe(const IP_ADAPTER_ADDRESSES& adapter, const IP_ADAPTER_UNICAST_ADDRESS& unicast)
{
    sockaddr_in address{};
    std::memcpy(&address, unicast.Address.lpSockaddr, sizeof address);
    NetworkInterface described;
    described.name = VxUtf8FromWide(adapter.FriendlyName != nullptr ? adapter.FriendlyName : L"");
    described.index = adapter.IfIndex;
    described.address = FromSystem(address).address;
    described.mask = MaskOf(unicast.OnLinkPrefixLength);
    if (adapter.PhysicalAddressLength == described.macAddress.size())
        std::copy_n(adapter.PhysicalAddress, described.macAddress.size(), described.macAddress.begin());
    described.mtuBytes = adapter.Mtu == 0xFFFFFFFF ? 0 : adapter.Mtu; // all ones: loopback has no limit
    described.linkSpeedMbps = SpeedMbps(adapter.TransmitLinkSpeed);
    described.isLoopback = adapter.IfType == IF_TYPE_SOFTWARE_LOOPBACK;
    return described;
}

/// Bytes in which the system has laid out its list of adapters.
VxExpected<std::vector<std::uint64_t>> ReadAdapters() // 64-bit units: as aligned as the structures in it
{
    constexpr ULONG kFlags = GAA_FLAG_SKIP_ANYCAST | GAA_FLAG_SKIP_MULTICAST | GAA_FLAG_SKIP_DNS_SERVER;
    ULONG bytes = kFirstListBytes;
    ULONG error = ERROR_BUFFER_OVERFLOW;
    std::vector<std::uint64_t> list;
    for (int i = 0; i < kListAttempts && error == ERROR_BUFFER_OVERFLOW; ++i) {
        list.assign(bytes / sizeof(std::uint64_t) + 1, 0);
        auto* first = reinterpret_cast<IP_ADAPTER_ADDRESSES*>(list.data());
        error = ::GetAdaptersAddresses(AF_INET, kFlags, nullptr, first, &bytes);
    }
    if (error == ERROR_NO_DATA)
        return std::vector<std::uint64_t>{};
    if (error != ERROR_SUCCESS)
        return SystemFailure("list the network interfaces", static_cast<int>(error)); // codes are small
    return list;
}

} // namespace

VxExpected<std::vector<NetworkInterface>> WinInterfaceList::Interfaces()
{
    const auto list = ReadAdapters();
    if (!list)
        return list.Error();
    std::vector<NetworkInterface> interfaces;
    const auto* first = list->empty() ? nullptr : reinterpret_cast<const IP_ADAPTER_ADDRESSES*>(list->data());
    for (const auto* adapter = first; adapter != nullptr; adapter = adapter->Next) {
        if (adapter->OperStatus != IfOperStatusUp)
            continue;
        for (const auto* unicast = adapter->FirstUnicastAddress; unicast != nullptr;
             unicast = unicast->Next) {
            if (unicast->Address.lpSockaddr != nullptr && unicast->Address.lpSockaddr->sa_family == AF_INET)
                interfaces.push_back(Describe(*adapter, *unicast));
        }
    }
    return interfaces;
}

VxExpected<Ipv4Address> WinInterfaceList::LocalAddressTowards(Ipv4Address remote)
{
    const WinsockUse winsock;
    if (auto started = winsock.Result(); !started.IsOK())
        return started;
    const SocketHandle socket(
        ::WSASocketW(AF_INET, SOCK_DGRAM, IPPROTO_UDP, nullptr, 0, WSA_FLAG_NO_HANDLE_INHERIT));
    if (!socket.IsValid())
        return SystemFailure("open a UDP socket", ::WSAGetLastError());
    sockaddr_in address = ToSystem({remote, kDiscardPort});
    if (::connect(socket.Get(), reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0)
        return SystemFailure("find the way to " + remote.ToString(), ::WSAGetLastError());
    int length = sizeof address;
    if (::getsockname(socket.Get(), reinterpret_cast<sockaddr*>(&address), &length) != 0)
        return SystemFailure("read the own address towards " + remote.ToString(), ::WSAGetLastError());
    return FromSystem(address).address;
}

} // namespace transport
