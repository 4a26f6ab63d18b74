#include "VxCamera/transport/posix/PosixUdpSocket.h"

#include "support/Bytes.h"

#include <linux/capability.h>
#include <linux/filter.h>
#include <netinet/in.h>
#include <netinet/ip.h>
#include <netinet/udp.h>
#include <sched.h>
#include <sys/socket.h>
#include <sys/syscall.h>
#include <time.h>
#include <unistd.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <functional>
#include <memory>
#include <random>
#include <string>
#include <thread>
#include <vector>

namespace transport {
namespace {

using namespace std::chrono_literals;

constexpr auto kArrives = std::chrono::microseconds(10s); // loopback hands over at once

UdpSocketOptions OptionsAt(Ipv4Address address, bool isRingWanted)
{
    UdpSocketOptions options;
    options.local.address = address;
    options.isCoalescing = isRingWanted;
    options.isRingWanted = isRingWanted;
    return options;
}

std::unique_ptr<PosixUdpSocket> Open(const UdpSocketOptions& options)
{
    auto socket = PosixUdpSocket::Open(options);
    EXPECT_TRUE(socket) << socket.Result().GetDescription().Narrow();
    return socket ? std::move(*socket) : nullptr;
}

bytes::Vector BytesOf(std::size_t size, std::size_t seed)
{
    bytes::Vector result(size);
    for (std::size_t i = 0; i < size; ++i)
        result[i] = static_cast<std::byte>(i * 7 + i / 251 + seed * 13);
    return result;
}

/// Runs it in a network of its own, with a loopback that carries that much in a packet.
void InNetworkOfItsOwn(std::size_t mtuBytes, const std::function<void()>& run)
{
    std::thread([&] {
        ASSERT_EQ(::unshare(CLONE_NEWNET), 0);
        const std::string begin = "ip link set lo up mtu " + std::to_string(mtuBytes);
        ASSERT_EQ(std::system(begin.c_str()), 0); // a child of this thread, so in its network
        run();
    }).join();
}

class PacketRingTest : public testing::Test {
protected:
    /// Sockets of the network in which the test's thread is now.
    void OpenBoth(Ipv4Address address)
    {
        m_sender = Open(OptionsAt(address, false));
        m_receiver = Open(OptionsAt(address, true));
        ASSERT_TRUE(m_receiver->IsBacklogNear());
    }
    void SetUp() override { OpenBoth(Ipv4Address::Loopback()); }

    void Send(std::size_t size, std::size_t seed)
    {
        ASSERT_TRUE(m_sender->SendTo(BytesOf(size, seed), m_receiver->LocalEndpoint()).IsOK());
    }
    void Expect(std::size_t size, std::size_t seed)
    {
        ASSERT_TRUE(m_receiver->Receive({&m_datagram, 1}, kArrives));
        ASSERT_EQ(m_datagram.size, size);
        EXPECT_TRUE(std::ranges::equal(m_datagram.Bytes(), BytesOf(size, seed)));
        EXPECT_EQ(m_datagram.sender, m_sender->LocalEndpoint());
        EXPECT_FALSE(m_datagram.isTruncated);
    }
    [[nodiscard]] bool IsNothingThere()
    {
        return m_receiver->Receive({&m_datagram, 1}, 0us).Result().Code() == VxError::Timeout;
    }

    std::unique_ptr<PosixUdpSocket> m_sender;
    std::unique_ptr<PosixUdpSocket> m_receiver;
    bytes::Vector m_memory = bytes::Vector(65'536);
    Datagram m_datagram{m_memory};
};

TEST_F(PacketRingTest, IsForASocketAtOneAddressThatWantsIt)
{
    EXPECT_FALSE(m_sender->IsBacklogNear());
    EXPECT_FALSE(Open(OptionsAt(Ipv4Address(), true))->IsBacklogNear());
    EXPECT_TRUE(Open(OptionsAt(Ipv4Address(127, 0, 0, 9), true))->IsBacklogNear());

    auto shared = OptionsAt(Ipv4Address::Loopback(), true);
    shared.sharing = PortSharing::Shared;
    EXPECT_FALSE(Open(shared)->IsBacklogNear());

    auto alone = OptionsAt(Ipv4Address::Loopback(), true); // a ring gives runs where they come
    alone.isCoalescing = false;
    EXPECT_FALSE(Open(alone)->IsBacklogNear());
}

TEST_F(PacketRingTest, ADatagramOfAnyLengthComesWhole)
{
    // 9,216 bytes of a slot, of which 90 come in front of the IP header and 28 are headers: up to 9,098.
    for (const std::size_t size : {0, 1, 3, 1472, 8972, 9097, 9098, 9099, 9100, 65'507}) {
        Send(size, size);
        Expect(size, size);
    }
    EXPECT_TRUE(IsNothingThere());
}

TEST_F(PacketRingTest, DatagramsOfAllLengthsComeInTheirOrder)
{
    std::mt19937 chance(1); // any
    std::vector<std::size_t> sizes;
    const std::array<std::size_t, 4> kLengths{40, 1472, 8972, 20'000};
    for (int round = 0; round < 100; ++round) {
        sizes.clear();
        for (int i = 0; i < 20; ++i) {
            sizes.push_back(kLengths[chance() % kLengths.size()]);
            Send(sizes.back(), sizes.size());
        }
        for (std::size_t i = 0; i < sizes.size(); ++i)
            Expect(sizes[i], i + 1);
    }
}

// While the receiver looks, and not only before.
TEST_F(PacketRingTest, DatagramsThatComeMeanwhileComeInTheirOrder)
{
    constexpr std::uint32_t kCount = 20'000;
    std::atomic<std::uint32_t> taken = 0;
    std::thread sender([&] {
        for (std::uint32_t i = 0; i < kCount; ++i) {
            while (i - taken > 50) // far fewer than there is room for
                std::this_thread::yield();
            bytes::Vector bytes(i % 3 == 0 ? 40 : i % 3 == 1 ? 3000 : 12'000);
            std::memcpy(bytes.data(), &i, sizeof i);
            EXPECT_TRUE(m_sender->SendTo(bytes, m_receiver->LocalEndpoint()).IsOK());
        }
    });
    bool isInOrder = true;
    for (; taken < kCount && isInOrder; ++taken) {
        std::uint32_t number = 0;
        isInOrder = m_receiver->Receive({&m_datagram, 1}, kArrives).Result().IsOK();
        std::memcpy(&number, m_memory.data(), sizeof number);
        isInOrder = isInOrder && number == taken;
        EXPECT_TRUE(isInOrder) << number << " instead of " << taken;
    }
    taken = kCount;
    sender.join();
}

TEST_F(PacketRingTest, OneCallTakesAsManyAsThereIsRoomFor)
{
    std::vector<bytes::Vector> memory(10, bytes::Vector(100));
    std::vector<Datagram> datagrams;
    for (auto& each : memory)
        datagrams.push_back({each});
    for (std::size_t i = 0; i < 15; ++i)
        Send(100, i);

    EXPECT_EQ(*m_receiver->Receive(datagrams, kArrives), 10u);
    EXPECT_TRUE(std::ranges::equal(datagrams[9].Bytes(), BytesOf(100, 9)));
    EXPECT_EQ(*m_receiver->Receive(datagrams, kArrives), 5u);
}

TEST_F(PacketRingTest, ADatagramEndsAWaitingReceive)
{
    for (const std::size_t size : {10, 3000, 12'000}) {
        std::thread sender([&] {
            std::this_thread::sleep_for(
                20ms); // so that it waits; a shorter wait proves less, and nothing wrong
            Send(size, 1);
        });
        Expect(size, 1);
        sender.join();
    }
}

TEST_F(PacketRingTest, AWakeEndsAWaitingReceiveAndIsTakenOnce)
{
    std::thread waker([&] {
        std::this_thread::sleep_for(20ms); // as above
        m_receiver->Wake();
    });
    EXPECT_EQ(m_receiver->Receive({&m_datagram, 1}, kArrives).Result().Code(), VxError::Aborted);
    waker.join();
    EXPECT_TRUE(IsNothingThere());
}

TEST_F(PacketRingTest, SeesNeitherOtherPortsNorWhatItsSocketSends)
{
    const auto other = Open(OptionsAt(Ipv4Address::Loopback(), true));
    ASSERT_TRUE(m_sender->SendTo(BytesOf(10, 1), other->LocalEndpoint()).IsOK());
    ASSERT_TRUE(m_receiver->SendTo(BytesOf(10, 2), m_sender->LocalEndpoint()).IsOK());

    EXPECT_TRUE(IsNothingThere());
    EXPECT_TRUE(other->Receive({&m_datagram, 1}, kArrives));
}

TEST_F(PacketRingTest, AFullRingKeepsTheFirstDatagramsAndTakesMoreLater)
{
    constexpr std::size_t kRoom = 7168; // 64 MiB in blocks of 256 KiB, each with 28 slots of 9 KiB
    for (std::size_t i = 0; i < kRoom + 100; ++i)
        Send(4, i);
    for (std::size_t i = 0; i < kRoom; ++i)
        Expect(4, i);
    EXPECT_TRUE(IsNothingThere());

    for (std::size_t i = 0; i < 10; ++i)
        Send(4, i);
    for (std::size_t i = 0; i < 10; ++i)
        Expect(4, i);
}

TEST_F(PacketRingTest, ADatagramThatIsTooLongIsCutAndMarked)
{
    Send(2000, 1);
    m_datagram.memory = std::span(m_memory).first(500);

    ASSERT_TRUE(m_receiver->Receive({&m_datagram, 1}, kArrives));

    EXPECT_EQ(m_datagram.size, 500u);
    EXPECT_TRUE(m_datagram.isTruncated);
}

/// Does something in a thread that lacks a right of the system's (CAP_...).
void Without(int right, const std::function<void()>& work)
{
    std::thread([&] {
        __user_cap_header_struct whose{_LINUX_CAPABILITY_VERSION_3, 0};
        std::array<__user_cap_data_struct, 2> rights{};
        ASSERT_EQ(::syscall(SYS_capget, &whose, rights.data()), 0);
        rights[0].effective &= ~(1U << right);
        ASSERT_EQ(::syscall(SYS_capset, &whose, rights.data()), 0); // of this thread alone
        work();
    }).join();
}

TEST_F(PacketRingTest, WithoutTheRightToItTheSocketReceives)
{
    Without(CAP_NET_RAW, [] {
        const auto socket = Open(OptionsAt(Ipv4Address::Loopback(), true));
        std::array<std::byte, 8> memory{};
        Datagram datagram{memory};

        EXPECT_FALSE(socket->IsBacklogNear());
        ASSERT_TRUE(socket->SendTo(memory, socket->LocalEndpoint()).IsOK());
        EXPECT_TRUE(socket->Receive({&datagram, 1}, kArrives));
    });
}

/// @return  how many UDP sockets of this process have the system collect runs
int CollectingSockets()
{
    int sockets = 0;
    for (int file = 0; file < 1024; ++file) {
        int isCollecting = 0;
        socklen_t length = sizeof isCollecting;
        const bool isUdp = ::getsockopt(file, IPPROTO_UDP, UDP_GRO, &isCollecting, &length) == 0;
        sockets += isUdp && isCollecting != 0 ? 1 : 0;
    }
    return sockets;
}

// Runs have no slots: they would wait where there is little room for them.
TEST_F(PacketRingTest, AsksForNoRunsWhereTheSystemGrantsThemLittleRoom)
{
    // What it grants everybody; a machine that was tuned for cameras may have enough. It counts twice.
    std::size_t limit = 0;
    std::ifstream("/proc/sys/net/core/rmem_max") >> limit;
    const bool isLittle = 2 * limit < m_receiver->ReceiveBufferBytes();
    ASSERT_EQ(CollectingSockets(), 1); // of the ring that the test has
    Without(CAP_NET_ADMIN, [isLittle] {
        const auto socket = Open(OptionsAt(Ipv4Address::Loopback(), true));

        EXPECT_TRUE(socket->IsBacklogNear());
        EXPECT_EQ(CollectingSockets(), isLittle ? 1 : 2);
    });
    const auto socket = Open(OptionsAt(Ipv4Address::Loopback(), true));
    EXPECT_EQ(CollectingSockets(), 2);
}

TEST_F(PacketRingTest, FragmentsComeAsOneDatagram)
{
    InNetworkOfItsOwn(1500, [this] {
        OpenBoth(Ipv4Address::Loopback());
        for (const std::size_t size : {1480, 8000, 30'000}) {
            Send(size, size);
            Expect(size, size);
        }
        EXPECT_TRUE(IsNothingThere());
    });
}

// A system takes what comes to any of its addresses, whatever the interface.
TEST_F(PacketRingTest, WhatComesThroughAnotherInterfaceIsReceivedToo)
{
    InNetworkOfItsOwn(65'536, [this] {
        ASSERT_EQ(
            std::system("ip link add vx1 type veth peer name vx2 && ip address add 10.9.9.1/24 dev vx1 &&"
                        "ip link set vx1 up && ip link set vx2 up"),
            0);
        OpenBoth(Ipv4Address(10, 9, 9, 1));
        Send(100, 1); // to an address of its own machine: through loopback

        Expect(100, 1);
        EXPECT_TRUE(IsNothingThere());
    });
}

/// Sends "ip" in a packet with options of IP, which a ring leaves to the socket.
void SendWithOptions(const Ipv4Endpoint& receiver)
{
    const FileDescriptor sender(::socket(AF_INET, SOCK_DGRAM, 0));
    const std::array<std::uint8_t, 4> noOperations{1, 1, 1, 1};
    ASSERT_EQ(::setsockopt(sender.Get(), IPPROTO_IP, IP_OPTIONS, noOperations.data(), noOperations.size()),
              0);
    const sockaddr_in to = ToSystem(receiver);
    ASSERT_EQ(::sendto(sender.Get(), "ip", 2, 0, reinterpret_cast<const sockaddr*>(&to), sizeof to), 2);
}

TEST_F(PacketRingTest, OptionsOfIpAreNoHindrance)
{
    SendWithOptions(m_receiver->LocalEndpoint());

    ASSERT_TRUE(m_receiver->Receive({&m_datagram, 1}, kArrives));

    EXPECT_EQ(m_datagram.size, 2u);
}

TEST_F(PacketRingTest, WhatComesToTheSocketIsReceivedAlsoWhileTheRingIsNeverEmpty)
{
    for (int i = 0; i < 1000; ++i)
        Send(100, 1);
    SendWithOptions(m_receiver->LocalEndpoint());

    bool hasCome = false;
    int fromRing = 0;
    while (!hasCome && m_receiver->Receive({&m_datagram, 1}, 0us)) {
        hasCome = m_datagram.size == 2;
        fromRing += hasCome ? 0 : 1;
    }

    EXPECT_TRUE(hasCome);
    EXPECT_LT(fromRing, 1000); // not only when the ring was empty
    for (; fromRing < 1000; ++fromRing)
        Expect(100, 1);
    EXPECT_TRUE(IsNothingThere());
}

/// Sends a whole IP packet: "hello" with this checksum of UDP, for 127.0.0.1 only.
void SendWithChecksum(std::uint16_t port, bool isRight)
{
    auto packet = bytes::FromHex(
        "45 00 0021 0000 0000 40 11 0000 7F000001 7F000001 | 0F74 0000 000D 0000 | 68656C6C6F");
    packet[22] = static_cast<std::byte>(port >> 8);
    packet[23] = static_cast<std::byte>(port);
    // 7F00+0001+7F00+0001+0011+000D+0F74+000D and 6865+6C6C+6F00 are 25172; the port comes to it.
    std::uint32_t sum = 0x25172 + std::uint32_t{port};
    while (sum > 0xFFFF)
        sum = (sum >> 16) + (sum & 0xFFFF);
    const std::uint32_t checksum = ~sum ^ (isRight ? 0U : 0x0100U);
    packet[26] = static_cast<std::byte>(checksum >> 8);
    packet[27] = static_cast<std::byte>(checksum);
    const int raw = ::socket(AF_INET, SOCK_RAW, IPPROTO_RAW);
    const sockaddr_in to = ToSystem({Ipv4Address::Loopback(), 0});
    EXPECT_EQ(
        ::sendto(raw, packet.data(), packet.size(), 0, reinterpret_cast<const sockaddr*>(&to), sizeof to),
        static_cast<ssize_t>(packet.size()));
    ::close(raw);
}

TEST_F(PacketRingTest, ADatagramWithAWrongChecksumIsDropped)
{
    const std::uint16_t port = m_receiver->LocalEndpoint().port;
    SendWithChecksum(port, false);
    EXPECT_TRUE(IsNothingThere());

    SendWithChecksum(port, true);
    SendWithChecksum(port, false);
    SendWithChecksum(port, true);

    for (int i = 0; i < 2; ++i) {
        ASSERT_TRUE(m_receiver->Receive({&m_datagram, 1}, kArrives));
        EXPECT_EQ(m_datagram.size, 5u);
    }
    EXPECT_TRUE(IsNothingThere());
}

TEST_F(PacketRingTest, AnInterfaceMayGoDownAndComeUpAgain)
{
    InNetworkOfItsOwn(65'536, [this] {
        OpenBoth(Ipv4Address::Loopback());
        for (const std::size_t size : {12'000, 100, 12'001}) // the long ones lie elsewhere
            Send(size, size);
        ASSERT_EQ(std::system("ip link set lo down"), 0);
        for (const std::size_t size : {12'000, 100, 12'001})
            Expect(size, size);
        timespec before{};
        timespec after{};
        ::clock_gettime(CLOCK_THREAD_CPUTIME_ID, &before);
        EXPECT_EQ(m_receiver->Receive({&m_datagram, 1}, 300ms).Result().Code(), VxError::Timeout);
        ::clock_gettime(CLOCK_THREAD_CPUTIME_ID, &after);
        const auto worked = std::chrono::seconds(after.tv_sec - before.tv_sec) +
                            std::chrono::nanoseconds(after.tv_nsec - before.tv_nsec);
        EXPECT_LT(worked, 100ms); // it waits, and does not look again and again

        ASSERT_EQ(std::system("ip link set lo up"), 0);
        for (const std::size_t size : {1000, 12'002}) {
            Send(size, size);
            Expect(size, size);
        }
        EXPECT_TRUE(IsNothingThere());
    });
}

// As where the system translates addresses: the ring sees other packets than the socket's filter.
TEST_F(PacketRingTest, ARingThatGetsNothingIsLeft)
{
    sock_filter nothing{BPF_RET | BPF_K, 0, 0, 0};
    const sock_fprog program{1, &nothing};
    int rings = 0;
    for (int file = 0; file < 1024; ++file) { // the test's own ring is among them, and no other
        int domain = 0;
        socklen_t length = sizeof domain;
        if (::getsockopt(file, SOL_SOCKET, SO_DOMAIN, &domain, &length) == 0 && domain == AF_PACKET &&
            ::setsockopt(file, SOL_SOCKET, SO_ATTACH_FILTER, &program, sizeof program) == 0)
            ++rings;
    }
    ASSERT_EQ(rings, 1);
    ASSERT_TRUE(m_receiver->IsBacklogNear());
    const std::size_t ringBytes = m_receiver->ReceiveBufferBytes();

    bool hasArrived = false;
    for (int i = 0; i < 100 && !hasArrived; ++i) {
        Send(100, 7);
        hasArrived = m_receiver->Receive({&m_datagram, 1}, 100ms).Result().IsOK();
    }
    ASSERT_TRUE(hasArrived);
    EXPECT_TRUE(std::ranges::equal(m_datagram.Bytes(), BytesOf(100, 7)));
    Send(3000, 8);
    Expect(3000, 8);
    EXPECT_FALSE(m_receiver->IsBacklogNear());
    EXPECT_LT(m_receiver->ReceiveBufferBytes(), ringBytes); // the socket's
}

TEST_F(PacketRingTest, NothingIsLeftOfIt)
{
    const auto openFiles = [] {
        return std::distance(std::filesystem::directory_iterator("/proc/self/fd"), {});
    };
    const auto before = openFiles();
    for (int i = 0; i < 20; ++i)
        ASSERT_TRUE(Open(OptionsAt(Ipv4Address::Loopback(), true))->IsBacklogNear());
    EXPECT_EQ(openFiles(), before);
}

} // namespace
} // namespace transport
