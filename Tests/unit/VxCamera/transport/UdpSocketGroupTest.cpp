#include "VxCamera/transport/IUdpSocketGroup.h"

#include "VxCamera/transport/SystemNetwork.h"

#include <gtest/gtest.h>

#include <array>
#include <chrono>
#include <string_view>
#include <vector>

namespace transport {
namespace {

using namespace std::chrono_literals;

// Longer than any test may take: a wait that only ends by time-out fails by the time limit of the test
// program.
constexpr auto kForever = std::chrono::microseconds(1h);
// For datagrams that are already on their way.
constexpr auto kArrives = std::chrono::microseconds(10s);
// Chosen: so that a wait really waits.
constexpr auto kShort = std::chrono::microseconds(10ms);

class UdpSocketGroupTest : public testing::Test {
protected:
    IUdpSocket& Open()
    {
        const auto socket = m_group->OpenUdp(OnLoopback());
        EXPECT_TRUE(socket) << socket.Result().GetDescription().Narrow();
        return **socket;
    }
    static UdpSocketOptions OnLoopback()
    {
        UdpSocketOptions options;
        options.local.address = Ipv4Address::Loopback();
        return options;
    }
    static void Send(const Ipv4Endpoint& destination)
    {
        const std::array<std::byte, 4> bytes{};
        const auto sender = MakeSystemSocketFactory()->OpenUdp(OnLoopback());
        ASSERT_TRUE(sender);
        ASSERT_TRUE((*sender)->SendTo(bytes, destination).IsOK());
    }
    static VxError Receive(IUdpSocket& socket, std::chrono::microseconds timeout = 0us)
    {
        std::array<std::byte, 64> memory;
        Datagram datagram{memory};
        return socket.Receive({&datagram, 1}, timeout).Result().Code();
    }

    std::unique_ptr<IUdpSocketGroup> m_group = std::move(*MakeSystemSocketGroupFactory()->MakeGroup());
};

TEST_F(UdpSocketGroupTest, ADatagramAtAnySocketEndsTheWait)
{
    IUdpSocket& first = Open();
    IUdpSocket& second = Open();
    for (IUdpSocket* receiver : {&first, &second}) {
        IUdpSocket& other = receiver == &first ? second : first;
        Send(receiver->LocalEndpoint());

        ASSERT_TRUE(m_group->WaitForAny(kForever).IsOK());

        EXPECT_EQ(Receive(*receiver), VxError::Ok);
        EXPECT_EQ(Receive(other), VxError::Timeout);
    }
}

TEST_F(UdpSocketGroupTest, AWaitWithoutDatagramsLastsAsLongAsItWasTo)
{
    Open();
    Open();
    const auto start = std::chrono::steady_clock::now();

    EXPECT_EQ(m_group->WaitForAny(kShort).Code(), VxError::Timeout);

    EXPECT_GE(std::chrono::steady_clock::now() - start, kShort);
    EXPECT_EQ(m_group->WaitForAny(0us).Code(), VxError::Timeout);
}

TEST_F(UdpSocketGroupTest, AGroupWithoutSocketsWaitsInVain)
{
    EXPECT_EQ(m_group->WaitForAny(kShort).Code(), VxError::Timeout);
}

TEST_F(UdpSocketGroupTest, WhatWasNotReceivedEndsTheNextWaitToo)
{
    IUdpSocket& socket = Open();
    Send(socket.LocalEndpoint());
    Send(socket.LocalEndpoint());
    ASSERT_TRUE(m_group->WaitForAny(kForever).IsOK());
    ASSERT_TRUE(m_group->WaitForAny(kForever).IsOK());

    ASSERT_EQ(Receive(socket, kArrives), VxError::Ok);
    ASSERT_TRUE(m_group->WaitForAny(kForever).IsOK());
    ASSERT_EQ(Receive(socket, kArrives), VxError::Ok);
    EXPECT_EQ(m_group->WaitForAny(kShort).Code(), VxError::Timeout);
}

TEST_F(UdpSocketGroupTest, ASocketThatWaitsForItselfDoesNotTakeAnothersDatagram)
{
    IUdpSocket& waiting = Open();
    IUdpSocket& receiver = Open();
    Send(receiver.LocalEndpoint());

    EXPECT_EQ(Receive(waiting, kShort), VxError::Timeout);

    EXPECT_TRUE(m_group->WaitForAny(kForever).IsOK());
    EXPECT_EQ(Receive(receiver), VxError::Ok);
}

TEST_F(UdpSocketGroupTest, AWakeOfAnySocketEndsTheWait)
{
    Open();
    IUdpSocket& woken = Open();

    woken.Wake();

    ASSERT_TRUE(m_group->WaitForAny(kForever).IsOK());
    EXPECT_EQ(Receive(woken), VxError::Aborted);
    EXPECT_EQ(m_group->WaitForAny(kShort).Code(), VxError::Timeout);
}

TEST_F(UdpSocketGroupTest, AClosedSocketIsNotWaitedFor)
{
    IUdpSocket& socket = Open();
    Send(socket.LocalEndpoint());
    ASSERT_TRUE(m_group->WaitForAny(kForever).IsOK());

    m_group->Close(socket);

    EXPECT_EQ(m_group->WaitForAny(kShort).Code(), VxError::Timeout);
}

TEST_F(UdpSocketGroupTest, MoreSocketsThanWindowsWaitsForAtOnceAreWaitedForAllTheSame)
{
    constexpr int kMany = 70; // fixed by Windows: a wait takes 64 objects
    IUdpSocket* last = nullptr;
    for (int i = 0; i < kMany; ++i)
        last = &Open();
    Send(last->LocalEndpoint());

    ASSERT_TRUE(m_group->WaitForAny(kForever).IsOK());

    EXPECT_EQ(Receive(*last), VxError::Ok);
}

TEST_F(UdpSocketGroupTest, APortThatIsTakenIsRefused)
{
    UdpSocketOptions options;
    options.local = Open().LocalEndpoint();

    EXPECT_EQ(m_group->OpenUdp(options).Result().Code(), VxError::PortInUse);
}

} // namespace
} // namespace transport
