#include "VxCamera/control/PacketSizeFinder.h"

#include <algorithm>
#include <array>
#include <tuple>
#include <vector>

namespace control {

namespace {

using namespace std::chrono_literals;

// Fixed by IPv4 and UDP: headers that count in the packet size but not in the datagram.
constexpr std::uint32_t kIpUdpHeaderBytes = 28;

// Fixed by IPv4: what its length field can tell.
constexpr std::uint32_t kLargestPacket = 0xFFFF;

// Used where the system does not tell: plain Ethernet.
constexpr std::uint32_t kUsualPacket = 1500;

// Fixed by IPv4: what every host must be able to take; a camera that sends nothing that small sends none at
// all.
constexpr std::uint32_t kSmallestPacket = 576;

// Chosen: a test packet may get lost like any other. Cameras send it within a few milliseconds, but this
// program may be slow to look.
constexpr int kTries = 2;
constexpr auto kArrivalTime = 40ms;

// Chosen: halving ends after 16 rounds; a camera that tells another size each time must not keep it going.
constexpr int kMostRounds = 32;

// Chosen: room for several of the largest, so that late ones do not keep the right one out.
constexpr std::size_t kReceiveBufferBytes = std::size_t{1} << 20;

} // namespace

std::uint32_t PacketSizeFinder::LargestOn(const transport::NetworkInterface& described)
{
    if (described.mtuBytes == 0)
        return described.isLoopback ? kLargestPacket : kUsualPacket;
    return std::clamp(described.mtuBytes, kSmallestPacket, kLargestPacket);
}

VxExpected<std::uint32_t> PacketSizeFinder::Find()
{
    transport::UdpSocketOptions options;
    options.local.address = m_network.via.address;
    options.interfaceIndex = m_network.via.index;
    options.receiveBufferBytes = kReceiveBufferBytes;
    auto socket = m_network.sockets.OpenUdp(options);
    if (!socket)
        return socket.Error();
    m_socket = *std::move(socket);
    const auto before = m_channel.PacketSizeRegister();
    if (!before)
        return before;
    if (auto opened = m_channel.Open(m_socket->LocalEndpoint()); !opened.IsOK())
        return opened;
    auto found = Search();
    if (!found)
        std::ignore =
            m_channel.RestorePacketSizeRegister(*before); // what failed the search may fail this, too
    std::ignore = m_channel.Close();                      // it is opened again, for the stream
    m_socket.reset();
    return found;
}

VxExpected<std::uint32_t> PacketSizeFinder::Search()
{
    const std::uint32_t largest = LargestOn(m_network.via);
    std::uint32_t failed = largest;
    for (const std::uint32_t size : {largest, kUsualPacket, kSmallestPacket}) {
        if (size > failed)
            continue;
        const auto set = m_channel.SetPacketSize(size, StreamChannel::Fragments::Never);
        if (!set)
            return set;
        const auto passed = GetsThrough(*set);
        if (!passed)
            return passed.Error();
        if (*passed)
            return SearchBetween(*set, failed == size ? *set : failed);
        failed = size;
    }
    // No test packets: the interface is all that is known of the way.
    return m_channel.SetPacketSize(largest, StreamChannel::Fragments::AsBefore);
}

/// Halves the distance until the camera knows no size in between.
VxExpected<std::uint32_t> PacketSizeFinder::SearchBetween(std::uint32_t passed, std::uint32_t failed)
{
    std::uint32_t low = passed; // nothing from here down needs to be tried
    for (int round = 0; round < kMostRounds && failed > low + 1; ++round) {
        const std::uint32_t middle = low + (failed - low) / 2;
        const auto set = m_channel.SetPacketSize(middle, StreamChannel::Fragments::Never);
        if (!set)
            return set;
        if (*set <= passed) {
            low = middle; // rounded down to a size that was tried
            continue;
        }
        if (*set >= failed) {
            failed = middle; // rounded up
            continue;
        }
        const auto gotThrough = GetsThrough(*set);
        if (!gotThrough)
            return gotThrough.Error();
        if (*gotThrough)
            low = passed = *set;
        else
            failed = std::min(middle, *set);
    }
    return m_channel.SetPacketSize(passed, StreamChannel::Fragments::Never);
}

VxExpected<bool> PacketSizeFinder::GetsThrough(std::uint32_t bytes)
{
    if (bytes > LargestOn(m_network.via))
        return false; // the camera cannot send smaller ones
    for (int i = 0; i < kTries; ++i) {
        if (auto fired = m_channel.FireTestPacket(); !fired.IsOK())
            return fired;
        if (HasArrived(bytes))
            return true;
    }
    return false;
}

/// Datagrams of another size are test packets that come late.
bool PacketSizeFinder::HasArrived(std::uint32_t bytes)
{
    std::vector<std::byte> memory(kLargestPacket);
    const auto end = m_network.clock.Now() + kArrivalTime;
    for (auto now = m_network.clock.Now(); now < end; now = m_network.clock.Now()) {
        transport::Datagram datagram{memory};
        const auto rest = std::chrono::ceil<std::chrono::microseconds>(end - now);
        if (!m_socket->Receive({&datagram, 1}, rest))
            return false;
        if (datagram.sender.address == m_network.camera && datagram.size + kIpUdpHeaderBytes == bytes)
            return true;
    }
    return false;
}

} // namespace control
