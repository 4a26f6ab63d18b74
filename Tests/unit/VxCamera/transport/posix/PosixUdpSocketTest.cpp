#include "VxCamera/transport/posix/PosixUdpSocket.h"

#include "support/Bytes.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <memory>
#include <span>
#include <string>
#include <vector>

namespace transport {
namespace {

// Not among the tests of every system: Wine opens such a socket on all interfaces, where Windows refuses.
TEST(PosixUdpSocketTest, AnAddressOfNoInterfaceCannotBeBound)
{
    UdpSocketOptions options;
    options.local.address = Ipv4Address(203, 0, 113, 1); // fixed: reserved for documentation, so nobody's

    const auto socket = PosixUdpSocket::Open(options);

    ASSERT_FALSE(socket);
    EXPECT_EQ(socket.Error().Code(), VxError::NetworkError);
    EXPECT_NE(socket.Error().GetDescription().Narrow().find("203.0.113.1"), std::string::npos);
}

class GatheringSocketTest : public testing::Test {
protected:
    GatheringSocketTest()
    {
        UdpSocketOptions options;
        options.local.address = Ipv4Address(127, 0, 0, 1);
        m_socket = *PosixUdpSocket::Open(options);
    }

    std::unique_ptr<IUdpSocket> m_socket;
    std::array<std::byte, 8> m_memory{};
    Datagram m_datagram{m_memory};
};

TEST_F(GatheringSocketTest, DatagramsDoNotEndIt)
{
    ASSERT_TRUE(m_socket->SendTo(m_memory, m_socket->LocalEndpoint()).IsOK());
    const auto began = std::chrono::steady_clock::now();

    m_socket->Gather(std::chrono::milliseconds(5));

    EXPECT_GE(std::chrono::steady_clock::now() - began, std::chrono::milliseconds(5));
    EXPECT_TRUE(m_socket->Receive({&m_datagram, 1}, std::chrono::seconds(0)));
}

TEST_F(GatheringSocketTest, AWakeEndsItAndStaysForTheNextReceive)
{
    m_socket->Wake();

    m_socket->Gather(std::chrono::hours(1)); // would last as long

    EXPECT_EQ(m_socket->Receive({&m_datagram, 1}, std::chrono::hours(1)).Error().Code(), VxError::Aborted);
}

enum class Way { Socket, Ring };

class CoalescingSocketTest : public testing::TestWithParam<Way> {
protected:
    static std::unique_ptr<IUdpSocket> Open(bool isCoalescing)
    {
        UdpSocketOptions options;
        options.local.address = Ipv4Address(127, 0, 0, 1);
        options.isCoalescing = isCoalescing;
        options.isRingWanted = isCoalescing && GetParam() == Way::Ring;
        return *PosixUdpSocket::Open(options);
    }

    /// Sends so many datagrams of this length, and one of 40 bytes, together.
    void SendRun(std::size_t count, std::size_t size = 100)
    {
        for (std::size_t i = 0; i < size * count + 40; ++i)
            m_sent.push_back(static_cast<std::byte>(i * 7 + i / 100));
        ASSERT_EQ(m_sender->SendRun(m_sent, size, m_socket->LocalEndpoint()), count + 1);
    }

    std::unique_ptr<IUdpSocket> m_sender = Open(false);
    std::unique_ptr<IUdpSocket> m_socket = Open(true);
    std::vector<std::byte> m_sent;
    std::vector<std::byte> m_memory = std::vector<std::byte>(65'536);
    Datagram m_datagram{m_memory};
};

TEST_P(CoalescingSocketTest, ARunArrivesAsOneDatagramThatTellsTheLengthOfEach)
{
    SendRun(5);

    ASSERT_TRUE(m_socket->Receive({&m_datagram, 1}, std::chrono::seconds(10)));

    EXPECT_EQ(m_datagram.segmentBytes, 100u);
    ASSERT_EQ(m_datagram.SegmentCount(), 6u);
    EXPECT_EQ(m_datagram.Segment(5).size(), 40u);
    EXPECT_TRUE(std::ranges::equal(m_datagram.Bytes(), m_sent));
    EXPECT_EQ(m_datagram.sender, m_sender->LocalEndpoint());
    EXPECT_FALSE(m_datagram.isTruncated);
}

TEST_P(CoalescingSocketTest, ARunIsSpreadOverItsBodies)
{
    std::array<std::array<std::byte, 92>, 4> places{};
    std::array<std::span<std::byte>, 4> bodies;
    std::ranges::copy(places, bodies.begin());
    m_datagram.bodies = bodies;
    m_datagram.headBytes = 8;
    SendRun(5);

    ASSERT_TRUE(m_socket->Receive({&m_datagram, 1}, std::chrono::seconds(10)));

    for (std::size_t i = 0; i < places.size(); ++i) {
        const auto sent = std::span(m_sent).subspan(100 * i, 100);
        EXPECT_TRUE(std::ranges::equal(places[i], sent.subspan(8))) << i;
        EXPECT_TRUE(std::ranges::equal(m_datagram.Segment(i).first(8), sent.first(8))) << i;
    }
    m_datagram.Join();
    EXPECT_TRUE(std::ranges::equal(m_datagram.Bytes(), m_sent));
}

TEST_P(CoalescingSocketTest, TheLongestRunIsSpreadOverItsBodies)
{
    std::array<bytes::Vector, 30> places;
    places.fill(bytes::Vector(1464));
    std::array<std::span<std::byte>, places.size()> bodies;
    std::ranges::copy(places, bodies.begin());
    m_datagram.bodies = bodies;
    m_datagram.headBytes = 8;
    SendRun(43, 1472); // 63,336 bytes of 65,507

    ASSERT_TRUE(m_socket->Receive({&m_datagram, 1}, std::chrono::seconds(10)));

    EXPECT_EQ(m_datagram.segmentBytes, 1472u);
    EXPECT_EQ(m_datagram.SegmentCount(), 44u);
    EXPECT_EQ(m_datagram.sender, m_sender->LocalEndpoint());
    m_datagram.Join();
    EXPECT_TRUE(std::ranges::equal(m_datagram.Bytes(), m_sent));
}

TEST_P(CoalescingSocketTest, ADatagramAloneIsNoRun)
{
    m_datagram.segmentBytes = 7;
    ASSERT_TRUE(m_sender->SendTo(std::span(m_memory).first(100), m_socket->LocalEndpoint()).IsOK());

    ASSERT_TRUE(m_socket->Receive({&m_datagram, 1}, std::chrono::seconds(10)));

    EXPECT_EQ(m_datagram.size, 100u);
    EXPECT_EQ(m_datagram.segmentBytes, 0u);
}

TEST_P(CoalescingSocketTest, ARunForWhichThereIsNoRoomIsCutAndMarked)
{
    m_datagram.memory = std::span(m_memory).first(250);
    SendRun(5);

    ASSERT_TRUE(m_socket->Receive({&m_datagram, 1}, std::chrono::seconds(10)));

    EXPECT_EQ(m_datagram.size, 250u);
    EXPECT_EQ(m_datagram.segmentBytes, 100u);
    EXPECT_TRUE(m_datagram.isTruncated);
    EXPECT_EQ(m_datagram.Segment(2).size(), 50u);
}

INSTANTIATE_TEST_SUITE_P(, CoalescingSocketTest, testing::Values(Way::Socket, Way::Ring),
                         [](const auto& instance) {
                             return std::string(instance.param == Way::Ring ? "Ring" : "Socket");
                         });

class BroadcastSocketTest : public testing::Test {
protected:
    static std::unique_ptr<IUdpSocket> Open(Ipv4Address address)
    {
        UdpSocketOptions options;
        options.local.address = address;
        options.interfaceIndex = 1; // fixed by the system: loopback
        options.isBroadcastAllowed = true;
        options.isBroadcastReceived = true;
        auto socket = PosixUdpSocket::Open(options);
        EXPECT_TRUE(socket) << socket.Result().GetDescription().Narrow();
        return *std::move(socket);
    }
    static Ipv4Endpoint SenderOfNext(IUdpSocket& receiver)
    {
        std::array<std::byte, 8> memory{};
        Datagram datagram{memory};
        const auto received = receiver.Receive({&datagram, 1}, std::chrono::seconds(10));
        EXPECT_TRUE(received);
        return datagram.sender;
    }

    std::array<std::byte, 1> m_bytes{std::byte{7}};
};

TEST_F(BroadcastSocketTest, HearsWhatIsBroadcastToItsPort)
{
    const auto sender = Open(Ipv4Address(127, 0, 0, 1));
    const auto receiver = Open(Ipv4Address(127, 0, 0, 2));

    const Ipv4Endpoint everybody{Ipv4Address(127, 255, 255, 255), receiver->LocalEndpoint().port};
    ASSERT_TRUE(sender->SendTo(m_bytes, everybody).IsOK());

    EXPECT_EQ(SenderOfNext(*receiver), sender->LocalEndpoint());
}

TEST_F(BroadcastSocketTest, StillSendsFromItsOwnAddressAndIsReachedThere)
{
    const auto socket = Open(Ipv4Address(127, 0, 0, 3));
    const auto peer = Open(Ipv4Address(127, 0, 0, 1));

    EXPECT_EQ(socket->LocalEndpoint().address, Ipv4Address(127, 0, 0, 3));
    ASSERT_TRUE(socket->SendTo(m_bytes, peer->LocalEndpoint()).IsOK());
    EXPECT_EQ(SenderOfNext(*peer), socket->LocalEndpoint());
    ASSERT_TRUE(peer->SendTo(m_bytes, socket->LocalEndpoint()).IsOK());
    EXPECT_EQ(SenderOfNext(*socket), peer->LocalEndpoint());
}

TEST_F(BroadcastSocketTest, AnInterfaceThatIsNotThereCannotBeChosen)
{
    UdpSocketOptions options;
    options.local.address = Ipv4Address::Loopback();
    options.interfaceIndex = 0x7FFFFFFF; // no system has so many

    const auto socket = PosixUdpSocket::Open(options);

    ASSERT_FALSE(socket);
    EXPECT_EQ(socket.Error().Code(), VxError::NetworkError);
}

} // namespace
} // namespace transport
