#include "VxCamera/transport/win/WinUdpSocket.h"

#include "CollectingReceiver.h"

#include <windows.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <memory>
#include <span>
#include <thread>
#include <tuple>
#include <vector>

namespace transport {
namespace {

using namespace std::chrono_literals;

// Longer than any test may take.
constexpr auto kForever = std::chrono::microseconds(1h);

constexpr int kForeignType = 19; // any other control message

UdpSocketOptions OnLoopback(bool isCoalescing)
{
    UdpSocketOptions options;
    options.local.address = Ipv4Address::Loopback();
    options.isCoalescing = isCoalescing;
    return options;
}

std::unique_ptr<WinUdpSocket> Open(bool isCoalescing, std::unique_ptr<IRunReceiver> runs)
{
    auto event = MakeSocketEvent();
    if (!event)
        return nullptr;
    auto socket = WinUdpSocket::Open(OnLoopback(isCoalescing), *event, std::move(runs));
    EXPECT_TRUE(socket) << socket.Result().GetDescription().Narrow();
    return socket ? *std::move(socket) : nullptr;
}

class RunSocketTest : public testing::Test {
protected:
    void SetUp() override
    {
        ASSERT_NE(m_sender, nullptr);
        ASSERT_NE(m_socket, nullptr);
    }

    /// Sends so many datagrams of 100 bytes, and one of 40.
    void SendRun(std::size_t count)
    {
        MakeRun(count);
        ASSERT_EQ(m_sender->SendRun(m_sent, 100, m_socket->LocalEndpoint()), count + 1);
    }
    void MakeRun(std::size_t count)
    {
        m_sent.clear();
        for (std::size_t i = 0; i < 100 * count + 40; ++i)
            m_sent.push_back(static_cast<std::byte>(i * 7 + i / 100)); // any pattern; the low byte is enough
        m_system.expected = count + 1;
    }
    void Send(std::size_t bytes)
    {
        m_sent.assign(bytes, std::byte{7});
        ASSERT_TRUE(m_sender->SendTo(m_sent, m_socket->LocalEndpoint()).IsOK());
    }
    bool Receive() { return m_socket->Receive({&m_datagram, 1}, kForever).Result().IsOK(); }
    /// Sends a run of five and one, and receives it.
    bool ReceiveRun()
    {
        SendRun(5);
        return Receive();
    }
    void Spread()
    {
        std::ranges::copy(m_places, m_bodies.begin());
        m_datagram.bodies = m_bodies;
        m_datagram.headBytes = 8;
    }

    RunSystem m_system;
    std::unique_ptr<WinUdpSocket> m_sender = Open(false, nullptr);
    std::unique_ptr<WinUdpSocket> m_socket = Open(true, std::make_unique<CollectingReceiver>(m_system));
    std::vector<std::byte> m_sent;
    std::vector<std::byte> m_memory = std::vector<std::byte>(65'536);
    std::array<std::array<std::byte, 92>, 4> m_places{};
    std::array<std::span<std::byte>, 4> m_bodies;
    Datagram m_datagram{m_memory};
};

TEST_F(RunSocketTest, ARunArrivesAsOneDatagramThatTellsTheLengthOfEach)
{
    ASSERT_TRUE(ReceiveRun());

    EXPECT_EQ(m_datagram.segmentBytes, 100u);
    ASSERT_EQ(m_datagram.SegmentCount(), 6u);
    EXPECT_EQ(m_datagram.Segment(5).size(), 40u);
    EXPECT_TRUE(std::ranges::equal(m_datagram.Bytes(), m_sent));
    EXPECT_EQ(m_datagram.sender, m_sender->LocalEndpoint());
    EXPECT_FALSE(m_datagram.isTruncated);
}

TEST_F(RunSocketTest, ARunIsSpreadOverItsBodies)
{
    Spread();
    ASSERT_TRUE(ReceiveRun());

    for (std::size_t i = 0; i < m_places.size(); ++i) {
        const auto sent = std::span(m_sent).subspan(100 * i, 100);
        EXPECT_TRUE(std::ranges::equal(m_places[i], sent.subspan(8))) << i;
        EXPECT_TRUE(std::ranges::equal(m_datagram.Segment(i).first(8), sent.first(8))) << i;
    }
    m_datagram.Join();
    EXPECT_TRUE(std::ranges::equal(m_datagram.Bytes(), m_sent));
}

TEST_F(RunSocketTest, ADatagramAloneIsNoRun)
{
    m_datagram.segmentBytes = 7;
    Send(100);

    ASSERT_TRUE(Receive());

    EXPECT_EQ(m_datagram.size, 100u);
    EXPECT_EQ(m_datagram.segmentBytes, 0u);
    EXPECT_FALSE(m_datagram.isTruncated);
}

TEST_F(RunSocketTest, ADatagramWithoutBytesIsOne)
{
    Send(0);

    ASSERT_TRUE(Receive());

    EXPECT_EQ(m_datagram.size, 0u);
    EXPECT_FALSE(m_datagram.isTruncated);
}

TEST_F(RunSocketTest, ARunForWhichThereIsNoRoomIsCutAndMarked)
{
    m_datagram.memory = std::span(m_memory).first(250);
    ASSERT_TRUE(ReceiveRun());

    EXPECT_EQ(m_datagram.size, 250u);
    EXPECT_EQ(m_datagram.segmentBytes, 100u);
    EXPECT_TRUE(m_datagram.isTruncated);
    EXPECT_EQ(m_datagram.Segment(2).size(), 50u);
}

TEST_F(RunSocketTest, ARunOfWhichOnlyAPartOfTheFirstHasRoomIsNone)
{
    m_datagram.memory = std::span(m_memory).first(60);
    ASSERT_TRUE(ReceiveRun());

    EXPECT_EQ(m_datagram.size, 60u);
    EXPECT_EQ(m_datagram.segmentBytes, 0u);
    EXPECT_TRUE(m_datagram.isTruncated);
}

TEST_F(RunSocketTest, SeveralRunsComeInOneCall)
{
    std::vector<std::byte> more(65'536);
    std::array<Datagram, 3> datagrams{m_datagram, Datagram{more}, Datagram{}};
    SendRun(2);
    SendRun(2);
    m_system.expected = 3;

    const auto received = m_socket->Receive(datagrams, kForever);

    ASSERT_TRUE(received);
    EXPECT_EQ(*received, 2u);
    EXPECT_EQ(datagrams[0].SegmentCount(), 3u);
    EXPECT_EQ(datagrams[1].SegmentCount(), 3u);
}

TEST_F(RunSocketTest, AControlMessageOfAnotherKindIsPassedOver)
{
    m_system.notes = {{IPPROTO_IP, kForeignType, 30}, {}};
    ASSERT_TRUE(ReceiveRun());
    EXPECT_EQ(m_datagram.segmentBytes, 100u);

    m_system.notes = {{IPPROTO_UDP, kForeignType, 30}};
    ASSERT_TRUE(ReceiveRun());
    EXPECT_EQ(m_datagram.segmentBytes, 0u);
    EXPECT_EQ(m_datagram.size, 540u);

    m_system.notes = {{IPPROTO_IP, kCoalescedInfo, 30}};
    ASSERT_TRUE(ReceiveRun());
    EXPECT_EQ(m_datagram.segmentBytes, 0u);
}

TEST_F(RunSocketTest, ALengthThatMakesNoRunIsNone)
{
    for (const DWORD length : {0ul, 540ul, 541ul, 0xFFFF'FFFFul}) {
        m_system.notes = {{.value = length}};
        ASSERT_TRUE(ReceiveRun());
        EXPECT_EQ(m_datagram.segmentBytes, 0u) << length;
        EXPECT_EQ(m_datagram.SegmentCount(), 1u) << length;
        EXPECT_FALSE(m_datagram.isTruncated) << length;
    }
}

TEST_F(RunSocketTest, ARunWhoseControlMessagesAreCutCountsAsCut)
{
    const RunSystem::Note foreign{IPPROTO_IP, kForeignType, 30};
    m_system.notes = {foreign, foreign, {}};
    ASSERT_TRUE(ReceiveRun());

    EXPECT_TRUE(m_datagram.isTruncated);
    EXPECT_EQ(m_datagram.segmentBytes, 0u);
    EXPECT_EQ(m_datagram.size, 540u); // its bytes are all there
}

TEST_F(RunSocketTest, WhereNothingIsThereAWaitEndsByItsTime)
{
    EXPECT_EQ(m_socket->Receive({&m_datagram, 1}, 0us).Error().Code(), VxError::Timeout);
    EXPECT_EQ(m_socket->Receive({&m_datagram, 1}, 1ms).Error().Code(), VxError::Timeout);
}

TEST_F(RunSocketTest, ARunThatComesLaterEndsTheWait)
{
    MakeRun(5);
    for (int i = 0; i < 50; ++i) { // an event that tells only once would be used up
        std::thread sending(
            [this] { EXPECT_EQ(m_sender->SendRun(m_sent, 100, m_socket->LocalEndpoint()), 6u); });
        const bool isReceived = Receive();
        sending.join();
        ASSERT_TRUE(isReceived);
        ASSERT_EQ(m_datagram.SegmentCount(), 6u);
        ASSERT_EQ(m_socket->Receive({&m_datagram, 1}, 0us).Error().Code(), VxError::Timeout);
    }
}

TEST_F(RunSocketTest, WhatComesAfterTheLastLookIsSeenAlthoughTheEventWasUsedUp)
{
    Send(100);
    m_system.errors = {WSAEWOULDBLOCK, WSAEWOULDBLOCK, WSAEWOULDBLOCK, WSAEWOULDBLOCK};

    ASSERT_TRUE(Receive());

    EXPECT_EQ(m_datagram.size, 100u);
}

TEST_F(RunSocketTest, AWakeEndsTheWait)
{
    m_socket->Wake();

    EXPECT_EQ(m_socket->Receive({&m_datagram, 1}, kForever).Error().Code(), VxError::Aborted);
}

TEST_F(RunSocketTest, ResetsArePassedOver)
{
    m_system.errors = {WSAECONNRESET, WSAENETRESET, WSAECONNRESET};
    Send(100);

    ASSERT_TRUE(Receive());

    EXPECT_EQ(m_datagram.size, 100u);
    EXPECT_EQ(m_system.calls, 4);
}

TEST_F(RunSocketTest, AnyOtherFailureIsToldWithItsReason)
{
    ASSERT_TRUE(ReceiveRun()); // so that the system is known to do it
    m_system.errors = {WSAENETDOWN};

    const auto received = m_socket->Receive({&m_datagram, 1}, kForever);

    ASSERT_FALSE(received);
    EXPECT_EQ(received.Error().Code(), VxError::NetworkError);
    EXPECT_NE(received.Error().GetDescription().Narrow().find(std::to_string(WSAENETDOWN)),
              std::string::npos);
}

TEST_F(RunSocketTest, ASystemThatTakesFewerPiecesGetsOne)
{
    m_system.mostPieces = 8;
    Spread();
    ASSERT_TRUE(ReceiveRun());

    EXPECT_TRUE(m_datagram.bodies.empty());
    EXPECT_EQ(m_datagram.segmentBytes, 100u);
    EXPECT_TRUE(std::ranges::equal(m_datagram.Bytes(), m_sent));

    m_system.calls = 0;
    Spread();
    ASSERT_TRUE(ReceiveRun());
    EXPECT_TRUE(std::ranges::equal(m_datagram.Bytes(), m_sent));
    EXPECT_EQ(m_system.calls, 1) << "it was tried again";
}

TEST_F(RunSocketTest, ASystemThatAgreesAndThenRefusesHandsOverEachDatagramAlone)
{
    Spread();
    m_system.errors = {WSAEINVAL, WSAEOPNOTSUPP}; // with pieces, and without
    SendRun(2);

    for (const std::size_t bytes : {100u, 100u, 40u}) {
        ASSERT_TRUE(Receive());
        EXPECT_EQ(m_datagram.size, bytes);
        EXPECT_EQ(m_datagram.segmentBytes, 0u);
    }
    EXPECT_EQ(m_system.mostBytes, 0u); // asked to put no more together
    EXPECT_EQ(m_socket->Receive({&m_datagram, 1}, 0us).Result().Code(), VxError::Timeout);
}

TEST_F(RunSocketTest, AFailureOfASystemThatHasHandedOverRunsIsTold)
{
    ASSERT_TRUE(ReceiveRun());
    m_system.errors = {WSAEINVAL, WSAEINVAL};

    EXPECT_EQ(m_socket->Receive({&m_datagram, 1}, kForever).Error().Code(), VxError::NetworkError);
}

TEST_F(RunSocketTest, NoLongerRunsAreAskedForThanADatagramCanBe)
{
    EXPECT_EQ(m_system.mostBytes, 65'507u); // fixed: 65,535 less the headers of IPv4 and UDP
}

TEST_F(RunSocketTest, ASystemThatRefusesHandsOverEachDatagramAlone)
{
    RunSystem system;
    system.isGranting = false;
    m_socket = Open(true, std::make_unique<CollectingReceiver>(system));
    ASSERT_NE(m_socket, nullptr);
    SendRun(1);

    ASSERT_TRUE(Receive());
    EXPECT_EQ(m_datagram.size, 100u);
    ASSERT_TRUE(Receive());
    EXPECT_EQ(m_datagram.size, 40u);
    EXPECT_EQ(m_datagram.segmentBytes, 0u);
    EXPECT_EQ(system.calls, 0);
}

TEST_F(RunSocketTest, WhoDoesNotWantRunsGetsNone)
{
    m_socket = Open(false, std::make_unique<CollectingReceiver>(m_system));
    ASSERT_NE(m_socket, nullptr);
    m_system.mostBytes = 0;
    SendRun(1);

    ASSERT_TRUE(Receive());
    EXPECT_EQ(m_datagram.size, 100u);
    EXPECT_EQ(m_system.mostBytes, 0u);
    EXPECT_EQ(m_system.calls, 0);
}

/// The system's own receiving function, whether the system makes runs or not.
class GrantingReceiver final : public IRunReceiver {
public:
    bool Ask(SOCKET socket, DWORD mostBytes) override
    {
        m_isAgreed = m_real.Ask(socket, mostBytes);
        return true;
    }
    int Receive(SOCKET socket, WSAMSG& message, DWORD& received) override
    {
        return m_real.Receive(socket, message, received);
    }
    [[nodiscard]] bool IsAgreed() const { return m_isAgreed; }

private:
    WinRunReceiver m_real;
    bool m_isAgreed = false;
};

class SystemRunSocketTest : public RunSocketTest {
protected:
    SystemRunSocketTest() { m_socket = Open(true, std::move(m_owned)); }

    std::unique_ptr<GrantingReceiver> m_owned = std::make_unique<GrantingReceiver>();
    GrantingReceiver& m_receiver = *m_owned;
};

TEST_F(SystemRunSocketTest, WineDoesNotKnowOfRuns)
{
    const bool isWine = ::GetProcAddress(::GetModuleHandleW(L"ntdll.dll"), "wine_get_version") != nullptr;
    // Elsewhere it depends on the version.
    EXPECT_FALSE(isWine && m_receiver.IsAgreed()) << "the system itself can stand for Windows now";
}

TEST_F(SystemRunSocketTest, ItsDatagramsArriveSpreadWithTheirSender)
{
    Spread();
    Send(150);

    ASSERT_TRUE(Receive());

    EXPECT_EQ(m_datagram.size, 150u);
    EXPECT_EQ(m_datagram.segmentBytes, 0u);
    EXPECT_FALSE(m_datagram.isTruncated);
    EXPECT_EQ(m_datagram.sender, m_sender->LocalEndpoint());
    m_datagram.Join();
    EXPECT_TRUE(std::ranges::equal(m_datagram.Bytes(), m_sent));
}

TEST_F(SystemRunSocketTest, ADatagramForWhichThereIsNoRoomIsCutAndMarked)
{
    m_datagram.memory = std::span(m_memory).first(60);
    Send(100);

    ASSERT_TRUE(Receive());

    EXPECT_EQ(m_datagram.size, 60u);
    EXPECT_TRUE(m_datagram.isTruncated);
}

TEST_F(SystemRunSocketTest, DatagramsThatComeLaterEndTheWait)
{
    for (int i = 0; i < 50; ++i) {
        ASSERT_EQ(m_socket->Receive({&m_datagram, 1}, 0us).Error().Code(), VxError::Timeout);
        std::thread sending([this] { Send(100); });
        const bool isReceived = Receive();
        sending.join();
        ASSERT_TRUE(isReceived);
        ASSERT_EQ(m_datagram.size, 100u);
    }
}

TEST(WinUdpSocketRunsTest, ASocketThatAsksTheRealSystemReceives)
{
    auto event = MakeSocketEvent();
    ASSERT_TRUE(event);
    const auto socket = WinUdpSocket::Open(OnLoopback(true), *event);
    ASSERT_TRUE(socket);
    std::array<std::byte, 100> sent{};
    ASSERT_TRUE((*socket)->SendTo(sent, (*socket)->LocalEndpoint()).IsOK());
    std::vector<std::byte> memory(65'536);
    Datagram datagram{memory};

    ASSERT_TRUE((*socket)->Receive({&datagram, 1}, kForever));

    EXPECT_EQ(datagram.size, 100u);
    EXPECT_FALSE(datagram.isTruncated);
}

} // namespace
} // namespace transport
