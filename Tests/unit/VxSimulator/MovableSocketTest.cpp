#include "VxSimulator/MovableSocket.h"

#include "MemoryNetwork.h"
#include "support/Bytes.h"

#include <gtest/gtest.h>

#include <array>
#include <future>
#include <vector>

namespace {

using namespace std::chrono_literals;
using simulator::MovableSocket;
using transport::Ipv4Address;
using transport::Ipv4Endpoint;

constexpr Ipv4Endpoint kHere{Ipv4Address(10, 0, 0, 1), 3956};
constexpr Ipv4Endpoint kThere{Ipv4Address(10, 0, 0, 2), 3956};

std::unique_ptr<transport::IUdpSocket> Open(MemoryNetwork& network, const Ipv4Endpoint& local)
{
    transport::UdpSocketOptions options;
    options.local = local;
    return *network.OpenUdp(options);
}

TEST(MovableSocketTest, ReceivesAndSendsAtItsNewAddress)
{
    MemoryNetwork network;
    MovableSocket socket(Open(network, kHere));
    const auto peer = Open(network, {Ipv4Address(10, 0, 0, 9), 50000});

    socket.MoveTo(Open(network, kThere));

    EXPECT_EQ(socket.LocalEndpoint(), kThere);
    EXPECT_EQ(network.OpenSockets(), 2u) << "the old one is closed";
    ASSERT_TRUE(peer->SendTo(bytes::FromHex("01"), kThere).IsOK());
    bytes::Vector memory(8);
    std::array datagrams{transport::Datagram{.memory = memory}};
    ASSERT_TRUE(socket.Receive(datagrams, 10s));
    ASSERT_TRUE(socket.SendTo(bytes::FromHex("02"), peer->LocalEndpoint()).IsOK());
    ASSERT_TRUE(peer->Receive(datagrams, 10s));
    EXPECT_EQ(datagrams[0].sender, kThere);
}

/// What was given to a socket to be sent in one call.
struct SentRun {
    bytes::Vector bytes;
    std::size_t segmentBytes;
    Ipv4Endpoint destination;

    bool operator==(const SentRun&) const = default;
};

/// A socket whose system sends runs in one call.
class RunSocket final : public transport::IUdpSocket {
public:
    /// @param runs  borrowed
    explicit RunSocket(std::vector<SentRun>& runs) : m_runs(runs) {}

    VxResult SendTo(std::span<const std::byte>, const Ipv4Endpoint&) override
    {
        return VxError::NetworkError;
    }
    std::size_t SendRun(std::span<const std::byte> bytes, std::size_t segmentBytes,
                        const Ipv4Endpoint& destination) override
    {
        m_runs.push_back({bytes::Copy(bytes), segmentBytes, destination});
        return kSent;
    }
    VxExpected<std::size_t> Receive(std::span<transport::Datagram>, std::chrono::microseconds) override
    {
        return VxError::Timeout;
    }
    void Gather(std::chrono::microseconds) override {}
    void Wake() override {}
    [[nodiscard]] Ipv4Endpoint LocalEndpoint() const override { return kHere; }
    [[nodiscard]] std::size_t ReceiveBufferBytes() const override { return 0; }
    VxResult JoinGroup(Ipv4Address, Ipv4Address) override { return VxResult::Ok(); }
    VxResult LeaveGroup(Ipv4Address, Ipv4Address) override { return VxResult::Ok(); }

    static constexpr std::size_t kSent = 2; // of three: the third was refused

private:
    std::vector<SentRun>& m_runs;
};

TEST(MovableSocketTest, ARunStaysOneCallAndTellsHowManyWereSent)
{
    std::vector<SentRun> runs;
    MovableSocket socket(std::make_unique<RunSocket>(runs));
    const auto three = bytes::FromHex("0102030405");

    EXPECT_EQ(socket.SendRun(three, 2, kThere), RunSocket::kSent);
    EXPECT_EQ(runs, (std::vector<SentRun>{{three, 2, kThere}}));
}

TEST(MovableSocketTest, ARunIsSentFromTheNewAddress)
{
    std::vector<SentRun> runs;
    std::vector<SentRun> runsOfOld;
    MovableSocket socket(std::make_unique<RunSocket>(runsOfOld));

    socket.MoveTo(std::make_unique<RunSocket>(runs));
    socket.SendRun(bytes::FromHex("0102"), 1, kThere);

    EXPECT_EQ(runs.size(), 1u);
    EXPECT_TRUE(runsOfOld.empty());
}

TEST(MovableSocketTest, AMoveEndsAReceiveThatWaitsAtTheOldAddress)
{
    MemoryNetwork network;
    MovableSocket socket(Open(network, kHere));
    auto received = std::async(std::launch::async, [&] {
        bytes::Vector memory(8);
        std::array datagrams{transport::Datagram{.memory = memory}};
        return socket.Receive(datagrams, 1h).Result().Code();
    });

    // Whether the wait has begun or not, it ends: a wake before it is kept by the old socket.
    std::uint16_t port = 5000;
    while (received.wait_for(1ms) != std::future_status::ready)
        socket.MoveTo(Open(network, {kThere.address, port++}));
}

} // namespace
