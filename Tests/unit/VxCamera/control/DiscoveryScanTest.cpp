#include "VxCamera/control/DiscoveryScan.h"

#include "support/network/FakeUdpSocket.h"

#include <gtest/gtest.h>

namespace control {
namespace {

using namespace std::chrono_literals;
using transport::Ipv4Address;
using transport::Ipv4Endpoint;

class DiscoveryScanTest : public testing::Test {
protected:
    FakeClock m_clock;
    int m_sent = 0;
    FakeUdpSocket m_socket{
        m_clock,
        {Ipv4Address(192, 168, 1, 1), 40000},
        [this](FakeUdpSocket&, std::span<const std::byte>, const Ipv4Endpoint&) { ++m_sent; }};
    DiscoveryScan m_scan{m_socket, {{{Ipv4Address(192, 168, 1, 255), 3956}}, gvcp::DiscoveryAnswer::Unicast}};
};

TEST_F(DiscoveryScanTest, AsksThreeTimesAtMostWithAPauseBetween)
{
    EXPECT_FALSE(m_scan.HasAsked());
    EXPECT_LE(m_scan.NextQuestion(), m_clock.Now());
    const auto now = m_clock.Now();

    ASSERT_TRUE(m_scan.Ask(now).IsOK());
    EXPECT_TRUE(m_scan.HasAsked());
    EXPECT_EQ(m_scan.NextQuestion(), now + 120ms);
    ASSERT_TRUE(m_scan.Ask(now + 120ms).IsOK());
    ASSERT_TRUE(m_scan.Ask(now + 240ms).IsOK());

    EXPECT_EQ(m_scan.NextQuestion(), DiscoveryScan::Time::max());
    EXPECT_EQ(m_sent, 3);
}

TEST_F(DiscoveryScanTest, TakesWhatIsThereAndDoesNotWait)
{
    const gvcp::DiscoveryAck camera;
    const Ipv4Endpoint sender{Ipv4Address(192, 168, 1, 20), 3956};
    m_socket.Arrive(sender, gvcp::MakeDiscoveryAck(1, camera).Bytes(), 0us);
    m_socket.Arrive(sender, gvcp::MakeDiscoveryAck(1, camera).Bytes(), 1ms);
    const auto start = m_clock.Now();
    int answers = 0;

    ASSERT_TRUE(m_scan
                    .TakeAnswers([&](const CameraAnswer& answer) {
                        ++answers;
                        EXPECT_EQ(answer.sender, sender);
                    })
                    .IsOK());

    EXPECT_EQ(answers, 1);
    EXPECT_EQ(m_clock.Now(), start);
}

TEST_F(DiscoveryScanTest, AFloodIsTakenInPieces)
{
    const std::vector<std::byte> garbage(300, std::byte{0x5A});
    for (int i = 0; i < 1000; ++i)
        m_socket.Arrive({Ipv4Address(192, 168, 1, 66), 3956}, garbage, 0us);

    ASSERT_TRUE(m_scan.TakeAnswers([](const CameraAnswer&) { FAIL(); }).IsOK());

    EXPECT_TRUE(m_socket.ReadyFrom()) << "the rest stays for later";
}

TEST_F(DiscoveryScanTest, ASocketThatFailsSaysSo)
{
    m_socket.FailReceiving({VxError::NetworkError, "network is down"});
    m_socket.FailSending({VxError::NetworkError, "network is down"});

    EXPECT_EQ(m_scan.TakeAnswers([](const CameraAnswer&) {}).Code(), VxError::NetworkError);
    EXPECT_EQ(m_scan.Ask(m_clock.Now()).Code(), VxError::NetworkError);
}

} // namespace
} // namespace control
