#include "VxSimulator/MovableSocket.h"

#include "MemoryNetwork.h"
#include "support/Bytes.h"

#include <gtest/gtest.h>

#include <array>
#include <future>

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
