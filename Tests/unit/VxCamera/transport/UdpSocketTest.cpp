#include "VxCamera/transport/SystemNetwork.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

namespace transport {
namespace {

using namespace std::chrono_literals;

// Longer than any test may take: a wait that only ends by time-out fails by the time limit of the test
// program.
constexpr auto kForever = std::chrono::microseconds(1h);
// For datagrams that are already on their way: loopback hands them over before SendTo returns, or at once
// after it.
constexpr auto kArrives = std::chrono::microseconds(10s);

std::span<const std::byte> AsBytes(std::string_view text)
{
    return std::as_bytes(std::span(text.data(), text.size()));
}

/// One datagram's room and result, with the memory owned.
struct Received {
    std::array<std::byte, 64> memory{};
    Datagram datagram{memory};

    [[nodiscard]] std::string Text() const
    {
        return {reinterpret_cast<const char*>(memory.data()), datagram.size};
    }
};

class UdpSocketTest : public testing::Test {
protected:
    std::unique_ptr<IUdpSocket> Open() { return Open(OnLoopback(0)); }
    std::unique_ptr<IUdpSocket> Open(const UdpSocketOptions& options)
    {
        auto socket = m_factory->OpenUdp(options);
        EXPECT_TRUE(socket) << socket.Result().GetDescription().Narrow();
        return socket ? std::move(*socket) : nullptr;
    }
    static UdpSocketOptions OnLoopback(std::uint16_t port)
    {
        UdpSocketOptions options;
        options.local = {Ipv4Address::Loopback(), port};
        return options;
    }

    std::unique_ptr<ISocketFactory> m_factory = MakeSystemSocketFactory();
};

TEST_F(UdpSocketTest, AnyPortBecomesARealOne)
{
    const auto socket = Open();

    EXPECT_EQ(socket->LocalEndpoint().address, Ipv4Address::Loopback());
    EXPECT_NE(socket->LocalEndpoint().port, 0);
}

TEST_F(UdpSocketTest, ADatagramArrivesWithItsBytesAndSender)
{
    const auto sender = Open();
    const auto receiver = Open();
    Received received;

    ASSERT_TRUE(sender->SendTo(AsBytes("hello"), receiver->LocalEndpoint()).IsOK());
    const auto count = receiver->Receive({&received.datagram, 1}, kArrives);

    ASSERT_TRUE(count);
    EXPECT_EQ(*count, 1u);
    EXPECT_EQ(received.Text(), "hello");
    EXPECT_FALSE(received.datagram.isTruncated);
    EXPECT_EQ(received.datagram.sender, sender->LocalEndpoint());
}

TEST_F(UdpSocketTest, AnEmptyDatagramArrives)
{
    const auto socket = Open();
    Received received;
    received.datagram.size = 7;

    ASSERT_TRUE(socket->SendTo({}, socket->LocalEndpoint()).IsOK());

    ASSERT_TRUE(socket->Receive({&received.datagram, 1}, kArrives));
    EXPECT_EQ(received.datagram.size, 0u);
}

TEST_F(UdpSocketTest, ALongDatagramIsCutAndMarked)
{
    const auto socket = Open();
    Received received;
    const std::string text(received.memory.size() + 1, 'x');

    ASSERT_TRUE(socket->SendTo(AsBytes(text), socket->LocalEndpoint()).IsOK());

    ASSERT_TRUE(socket->Receive({&received.datagram, 1}, kArrives));
    EXPECT_TRUE(received.datagram.isTruncated);
    EXPECT_EQ(received.Text(), text.substr(0, received.memory.size()));
}

TEST_F(UdpSocketTest, ADatagramCanBeSpreadOverItsBody)
{
    const auto a = Open();
    const auto b = Open();
    for (const std::string_view text : {"", "ab", "head", "headbod", "headbody", "headbodyandmore"}) {
        ASSERT_TRUE(a->SendTo(AsBytes(text), b->LocalEndpoint()).IsOK());
        Received received;
        std::array<std::byte, 4> body{};
        const std::array<std::span<std::byte>, 1> bodies{body};
        received.datagram.bodies = bodies;
        received.datagram.headBytes = 4;

        ASSERT_TRUE(b->Receive(std::span(&received.datagram, 1), kArrives)) << text;

        EXPECT_EQ(received.datagram.size, text.size());
        EXPECT_EQ(received.datagram.Head().size(), std::min<std::size_t>(text.size(), 4));
        if (text.size() >= 8) {
            EXPECT_EQ(std::string(reinterpret_cast<const char*>(body.data()), 4), "body");
        }
        received.datagram.Join();
        EXPECT_EQ(received.Text(), text);
    }
}

TEST_F(UdpSocketTest, ADatagramThatIsSpreadIsCutAndMarkedToo)
{
    const auto a = Open();
    const auto b = Open();
    const std::string text(100, 'x');
    ASSERT_TRUE(a->SendTo(AsBytes(text), b->LocalEndpoint()).IsOK());
    Received received;
    std::array<std::byte, 4> body{};
    const std::array<std::span<std::byte>, 1> bodies{body};
    received.datagram.bodies = bodies;
    received.datagram.headBytes = 4;

    ASSERT_TRUE(b->Receive(std::span(&received.datagram, 1), kArrives));

    EXPECT_TRUE(received.datagram.isTruncated);
    EXPECT_EQ(received.datagram.size, received.memory.size());
}

TEST_F(UdpSocketTest, ADatagramCanBeSpreadOverManyBodies)
{
    const auto a = Open();
    const auto b = Open();
    std::string text;
    for (std::size_t i = 0; i < 3 * Datagram::kMostBodies + 7; ++i)
        text += static_cast<char>('a' + i % 26);
    ASSERT_TRUE(a->SendTo(AsBytes(text), b->LocalEndpoint()).IsOK());
    std::array<std::byte, 3 * Datagram::kMostBodies + 50> memory{};
    std::array<std::array<std::byte, 2>, Datagram::kMostBodies> places{};
    std::array<std::span<std::byte>, Datagram::kMostBodies> bodies;
    std::ranges::copy(places, bodies.begin());
    Datagram datagram{.memory = memory, .bodies = bodies, .headBytes = 1};

    ASSERT_TRUE(b->Receive({&datagram, 1}, kArrives));

    EXPECT_EQ(static_cast<char>(places[1][0]), text[4]);
    datagram.Join();
    EXPECT_EQ(std::string(reinterpret_cast<const char*>(memory.data()), datagram.size), text);
}

TEST_F(UdpSocketTest, ARunArrivesAsItsDatagrams)
{
    const auto a = Open();
    const auto b = Open();
    std::string text;
    for (int i = 0; i < 703; ++i) // more than the system takes at once
        text += static_cast<char>('a' + i % 26);

    ASSERT_EQ(a->SendRun(AsBytes(text), 7, b->LocalEndpoint()), 101u);

    std::string all;
    for (int i = 0; i < 101; ++i) {
        Received received;
        ASSERT_TRUE(b->Receive({&received.datagram, 1}, kArrives)) << i;
        EXPECT_EQ(received.datagram.size, i < 100 ? 7u : 3u);
        EXPECT_EQ(received.datagram.SegmentCount(), 1u);
        EXPECT_EQ(received.datagram.sender, a->LocalEndpoint());
        all += received.Text();
    }
    EXPECT_EQ(all, text);
    Received more;
    EXPECT_EQ(b->Receive({&more.datagram, 1}, 0us).Result().Code(), VxError::Timeout);
}

TEST_F(UdpSocketTest, ARunOfLongDatagramsArrives)
{
    const auto a = Open();
    const auto b = Open();
    const std::string text(65'000 * 2 + 5, 'x');

    ASSERT_EQ(a->SendRun(AsBytes(text), 65'000, b->LocalEndpoint()), 3u);

    std::vector<std::byte> memory(65'536);
    for (const std::size_t size : {65'000u, 65'000u, 5u}) {
        Datagram datagram{.memory = memory};
        ASSERT_TRUE(b->Receive({&datagram, 1}, kArrives));
        EXPECT_EQ(datagram.size, size);
    }
}

TEST_F(UdpSocketTest, OneCallTakesAllDatagramsThatAreThere)
{
    const auto socket = Open();
    std::array<Received, 4> received;
    std::vector<Datagram> room;
    for (Received& one : received)
        room.push_back(one.datagram);
    for (const char* text : {"a", "b", "c"})
        ASSERT_TRUE(socket->SendTo(AsBytes(text), socket->LocalEndpoint()).IsOK());

    std::string texts;
    while (texts.size() < 3) { // the system may hand them over one by one
        const auto count = socket->Receive(room, kArrives);
        ASSERT_TRUE(count);
        for (std::size_t i = 0; i < *count; ++i)
            texts += static_cast<char>(room[i].Bytes().front());
    }

    EXPECT_EQ(texts, "abc");
}

TEST_F(UdpSocketTest, NothingThereIsATimeout)
{
    const auto socket = Open();
    Received received;

    EXPECT_EQ(socket->Receive({&received.datagram, 1}, 0us).Result().Code(), VxError::Timeout);
    EXPECT_EQ(socket->Receive({&received.datagram, 1}, 1500us).Result().Code(), VxError::Timeout);
}

TEST_F(UdpSocketTest, AWaitThatIsOverBeforeItBeginsStillBringsWhatHasCome)
{
    const auto sender = Open();
    const auto receiver = Open();
    const auto later = Open();
    for (int i = 0; i < 200; ++i) {
        Received received;
        ASSERT_EQ(receiver->Receive({&received.datagram, 1}, 0us).Result().Code(), VxError::Timeout);
        ASSERT_TRUE(sender->SendTo(AsBytes("hello"), receiver->LocalEndpoint()).IsOK());
        ASSERT_TRUE(sender->SendTo(AsBytes("sent behind it"), later->LocalEndpoint()).IsOK());
        ASSERT_TRUE(later->Receive({&received.datagram, 1}, kArrives));

        ASSERT_TRUE(receiver->Receive({&received.datagram, 1}, 1us)) << i;
        EXPECT_EQ(received.Text(), "hello");
    }
}

TEST_F(UdpSocketTest, AWakeBeforeReceiveEndsItOnce)
{
    const auto socket = Open();
    Received received;

    socket->Wake();
    socket->Wake();

    EXPECT_EQ(socket->Receive({&received.datagram, 1}, kForever).Result().Code(), VxError::Aborted);
    EXPECT_EQ(socket->Receive({&received.datagram, 1}, 0us).Result().Code(), VxError::Timeout);
}

TEST_F(UdpSocketTest, AWakeEndsAWaitingReceiveEveryTime)
{
    constexpr int kRounds = 2000;
    const auto socket = Open();
    const auto ready = Open();
    std::thread waiter([&] {
        Received received;
        for (int i = 0; i < kRounds; ++i) {
            EXPECT_TRUE(socket->SendTo(AsBytes("!"), ready->LocalEndpoint()).IsOK());
            EXPECT_EQ(socket->Receive({&received.datagram, 1}, kForever).Result().Code(), VxError::Aborted);
        }
    });

    Received received;
    for (int i = 0; i < kRounds; ++i) {
        EXPECT_TRUE(ready->Receive({&received.datagram, 1}, kArrives));
        if (i % 2 == 1)
            std::this_thread::yield(); // now and then later, so that both sides of the race are met
        socket->Wake();
    }

    waiter.join();
}

TEST_F(UdpSocketTest, ADatagramEndsAWaitingReceiveEveryTime)
{
    constexpr int kRounds = 2000;
    const auto here = Open();
    const auto there = Open();
    std::thread echo([&] {
        Received received;
        for (int i = 0; i < kRounds; ++i) {
            EXPECT_TRUE(there->Receive({&received.datagram, 1}, kForever));
            EXPECT_TRUE(there->SendTo(received.datagram.Bytes(), here->LocalEndpoint()).IsOK());
        }
    });

    for (int i = 0; i < kRounds; ++i) {
        Received received;
        const std::string text = std::to_string(i);
        EXPECT_TRUE(here->SendTo(AsBytes(text), there->LocalEndpoint()).IsOK());
        EXPECT_TRUE(here->Receive({&received.datagram, 1}, kForever));
        EXPECT_EQ(received.Text(), text);
    }

    echo.join();
}

TEST_F(UdpSocketTest, AnUnreachablePeerDoesNotEndReception)
{
    const auto socket = Open();
    auto gone = Open();
    const Ipv4Endpoint nobody = gone->LocalEndpoint();
    gone.reset();
    Received received;

    std::ignore = socket->SendTo(AsBytes("anybody there?"), nobody);
    ASSERT_TRUE(socket->SendTo(AsBytes("me"), socket->LocalEndpoint()).IsOK());

    ASSERT_TRUE(socket->Receive({&received.datagram, 1}, kArrives));
    EXPECT_EQ(received.Text(), "me");
}

TEST_F(UdpSocketTest, AnExclusivePortCannotBeOpenedTwice)
{
    const auto first = Open();

    const auto second = m_factory->OpenUdp(OnLoopback(first->LocalEndpoint().port));

    ASSERT_FALSE(second);
    EXPECT_EQ(second.Error().Code(), VxError::PortInUse);
    EXPECT_NE(second.Error().GetDescription().Narrow().find(first->LocalEndpoint().ToString()),
              std::string::npos);
}

TEST_F(UdpSocketTest, AClosedPortCanBeOpenedAgain)
{
    auto first = Open();
    const std::uint16_t port = first->LocalEndpoint().port;
    first.reset();

    EXPECT_TRUE(m_factory->OpenUdp(OnLoopback(port)));
}

TEST_F(UdpSocketTest, ALargerReceiveBufferIsGrantedAndReadBack)
{
    const auto plain = Open();
    UdpSocketOptions options = OnLoopback(0);
    options.receiveBufferBytes = 1024 * 1024;

    const auto large = Open(options);

    EXPECT_GT(plain->ReceiveBufferBytes(), 0u);
    EXPECT_GT(large->ReceiveBufferBytes(), plain->ReceiveBufferBytes());
}

class UdpMulticastTest : public UdpSocketTest {
protected:
    static constexpr Ipv4Address kGroup{239, 255, 71, 3};

    std::unique_ptr<IUdpSocket> OpenReceiver(std::uint16_t port)
    {
        UdpSocketOptions options;
        options.local.port = port;
        options.sharing = PortSharing::Shared;
        return Open(options);
    }
    std::unique_ptr<IUdpSocket> OpenSender()
    {
        UdpSocketOptions options = OnLoopback(0);
        options.multicastInterface = Ipv4Address::Loopback();
        return Open(options);
    }
};

TEST_F(UdpMulticastTest, EveryMemberOfAGroupReceives)
{
    const auto first = OpenReceiver(0);
    const std::uint16_t port = first->LocalEndpoint().port;
    const auto second = OpenReceiver(port);
    const auto sender = OpenSender();
    ASSERT_TRUE(first->JoinGroup(kGroup, Ipv4Address::Loopback()).IsOK());
    ASSERT_TRUE(second->JoinGroup(kGroup, Ipv4Address::Loopback()).IsOK());

    ASSERT_TRUE(sender->SendTo(AsBytes("all"), {kGroup, port}).IsOK());

    for (IUdpSocket* member : {first.get(), second.get()}) {
        Received received;
        ASSERT_TRUE(member->Receive({&received.datagram, 1}, kArrives));
        EXPECT_EQ(received.Text(), "all");
        EXPECT_EQ(received.datagram.sender, sender->LocalEndpoint());
    }
}

TEST_F(UdpMulticastTest, AMemberThatLeftReceivesNoMore)
{
    const auto member = OpenReceiver(0);
    const std::uint16_t port = member->LocalEndpoint().port;
    const auto sender = OpenSender();
    ASSERT_TRUE(member->JoinGroup(kGroup, Ipv4Address::Loopback()).IsOK());
    ASSERT_TRUE(member->LeaveGroup(kGroup, Ipv4Address::Loopback()).IsOK());
    Received received;

    ASSERT_TRUE(sender->SendTo(AsBytes("group"), {kGroup, port}).IsOK());
    ASSERT_TRUE(sender->SendTo(AsBytes("you"), {Ipv4Address::Loopback(), port}).IsOK());

    ASSERT_TRUE(member->Receive({&received.datagram, 1}, kArrives));
    EXPECT_EQ(received.Text(), "you");
}

TEST_F(UdpMulticastTest, JoiningWhatIsNoGroupFails)
{
    const auto socket = OpenReceiver(0);

    const auto joined = socket->JoinGroup(Ipv4Address(10, 0, 0, 1), Ipv4Address::Loopback());

    EXPECT_EQ(joined.Code(), VxError::NetworkError);
    EXPECT_NE(joined.GetDescription().Narrow().find("10.0.0.1"), std::string::npos);
}

} // namespace
} // namespace transport
