#include "VxCamera/control/PacketSizeFinder.h"

#include <gtest/gtest.h>

#include "StreamingFakeCamera.h"

namespace control {
namespace {

using namespace std::chrono_literals;

class PacketSizeFinderTest : public testing::Test {
protected:
    PacketSizeFinderTest()
    {
        m_via.address = transport::Ipv4Address(192, 168, 1, 1);
        m_via.index = 3;
        m_via.mtuBytes = 9000;
    }
    std::uint32_t Find()
    {
        StreamChannel channel(*m_fake.client, 0);
        const auto found =
            PacketSizeFinder(channel, {m_fake.sockets, m_fake.clock, m_via, m_fake.camera.endpoint.address})
                .Find();
        EXPECT_TRUE(found) << found.Result().GetDescription().Narrow();
        return found.ValueOr(0);
    }
    [[nodiscard]] std::uint32_t InForce() const
    {
        return m_fake.camera.Register(bootstrap::kStreamChannelPacketSize) & bootstrap::kPacketSizeMask;
    }

    StreamingFakeCamera m_fake;
    transport::NetworkInterface m_via;
};

TEST_F(PacketSizeFinderTest, TakesTheInterfacesLargestWhenItGetsThrough)
{
    const auto start = m_fake.clock.Now();

    EXPECT_EQ(Find(), 9000u);

    EXPECT_EQ(InForce(), 9000u);
    EXPECT_EQ(m_fake.tested, std::vector<std::uint32_t>{9000});
    EXPECT_LT(m_fake.clock.Now() - start, 10ms);
    EXPECT_EQ(m_fake.sockets.opened.back().interfaceIndex, 3u);
    EXPECT_EQ(m_fake.sockets.opened.back().local.address, m_via.address);
}

TEST_F(PacketSizeFinderTest, FindsWhatASwitchCarriesToTheStep)
{
    m_fake.carried = 4078; // not a multiple of 4: 4076 gets through
    const auto start = m_fake.clock.Now();

    EXPECT_EQ(Find(), 4076u);

    EXPECT_EQ(InForce(), 4076u);
    EXPECT_LT(m_fake.clock.Now() - start, 1000ms);
}

TEST_F(PacketSizeFinderTest, FindsWhatATunnelCarries)
{
    m_via.mtuBytes = 1500;
    m_fake.carried = 1400;

    EXPECT_EQ(Find(), 1400u);
}

TEST_F(PacketSizeFinderTest, TakesTheSizeAsTheCameraRoundsIt)
{
    m_via.mtuBytes = 8999;
    m_fake.step = 16;

    EXPECT_EQ(Find(), 8992u);
}

TEST_F(PacketSizeFinderTest, TakesTheCamerasLargestWhereTheInterfaceCarriesMore)
{
    m_fake.largest = 8192;

    EXPECT_EQ(Find(), 8192u);
}

TEST_F(PacketSizeFinderTest, ACoarseCameraEndsTheSearchEarly)
{
    m_fake.step = 1024;
    m_fake.carried = 5000;

    EXPECT_EQ(Find(), 4096u);
    EXPECT_LT(m_fake.tested.size(), 20u);
}

TEST_F(PacketSizeFinderTest, ALostTestPacketIsAskedForAgain)
{
    m_fake.lost = 1;

    EXPECT_EQ(Find(), 9000u);
    EXPECT_EQ(m_fake.tested.size(), 2u);
}

TEST_F(PacketSizeFinderTest, ACameraWithoutTestPacketsGetsWhatTheInterfaceCarries)
{
    m_fake.carried = 0;
    const auto start = m_fake.clock.Now();

    EXPECT_EQ(Find(), 9000u);

    EXPECT_EQ(InForce(), 9000u);
    EXPECT_LT(m_fake.clock.Now() - start, 300ms);
}

TEST_F(PacketSizeFinderTest, APacketOfAnotherSizeOrSenderProvesNothing)
{
    m_fake.carried = 0;
    StreamChannel channel(*m_fake.client, 0);
    // Every wait at the probe's socket finds a late packet and a foreign one.
    struct Disturbed final : transport::ISocketFactory {
        explicit Disturbed(FakeClock& c) : clock(c) {}
        VxExpected<std::unique_ptr<transport::IUdpSocket>>
        OpenUdp(const transport::UdpSocketOptions& options) override
        {
            auto socket = std::make_unique<FakeUdpSocket>(
                clock, transport::Ipv4Endpoint{options.local.address, 40100},
                [](FakeUdpSocket&, std::span<const std::byte>, const transport::Ipv4Endpoint&) {});
            for (int i = 0; i < 200; ++i) {
                socket->Arrive({transport::Ipv4Address(192, 168, 1, 20), 20202}, std::vector<std::byte>(1000),
                               std::chrono::milliseconds(i));
                socket->Arrive({transport::Ipv4Address(192, 168, 1, 66), 20202},
                               std::vector<std::byte>(9000 - 28), std::chrono::milliseconds(i));
            }
            return std::unique_ptr<transport::IUdpSocket>(std::move(socket));
        }
        FakeClock& clock;
    } disturbed(m_fake.clock);

    const auto found =
        PacketSizeFinder(channel, {disturbed, m_fake.clock, m_via, m_fake.camera.endpoint.address}).Find();

    ASSERT_TRUE(found);
    EXPECT_EQ(m_fake.tested.size(), 6u) << "three sizes, each twice";
}

TEST_F(PacketSizeFinderTest, TheChannelIsClosedAfterwards)
{
    Find();

    EXPECT_EQ(m_fake.camera.Register(bootstrap::kStreamChannelPort), 0u);
}

TEST_F(PacketSizeFinderTest, OtherBitsOfTheRegisterStay)
{
    m_fake.camera.SetRegister(bootstrap::kStreamChannelPacketSize, bootstrap::kPixelsBigEndian | 1500);

    Find();

    EXPECT_NE(m_fake.camera.Register(bootstrap::kStreamChannelPacketSize) & bootstrap::kPixelsBigEndian, 0u);
}

TEST_F(PacketSizeFinderTest, ARefusalIsTold)
{
    m_fake.camera.refused[bootstrap::kStreamChannelPacketSize] = gvcp::Status::AccessDenied;
    StreamChannel channel(*m_fake.client, 0);

    const auto found =
        PacketSizeFinder(channel, {m_fake.sockets, m_fake.clock, m_via, m_fake.camera.endpoint.address})
            .Find();

    EXPECT_EQ(found.Result().Code(), VxError::AccessDenied);
    EXPECT_EQ(m_fake.camera.Register(bootstrap::kStreamChannelPort), 0u);
}

TEST_F(PacketSizeFinderTest, NoInterfaceIsTrustedBeyondWhatAPacketCanBe)
{
    transport::NetworkInterface via;
    EXPECT_EQ(PacketSizeFinder::LargestOn(via), 1500u) << "unknown";
    via.isLoopback = true;
    EXPECT_EQ(PacketSizeFinder::LargestOn(via), 65535u) << "unlimited";
    via.mtuBytes = 65536;
    EXPECT_EQ(PacketSizeFinder::LargestOn(via), 65535u);
    via.mtuBytes = 68;
    EXPECT_EQ(PacketSizeFinder::LargestOn(via), 576u);
}

TEST_F(PacketSizeFinderTest, AfterAFailureTheSizeIsAsItWas)
{
    constexpr std::uint32_t kBefore = bootstrap::kPixelsBigEndian | 1400;
    m_fake.camera.SetRegister(bootstrap::kStreamChannelPacketSize, kBefore);
    m_fake.isRefusingTestPackets = true;
    StreamChannel channel(*m_fake.client, 0);

    const auto found =
        PacketSizeFinder(channel, {m_fake.sockets, m_fake.clock, m_via, m_fake.camera.endpoint.address})
            .Find();

    EXPECT_EQ(found.Result().Code(), VxError::CameraError);
    EXPECT_EQ(m_fake.camera.Register(bootstrap::kStreamChannelPacketSize), kBefore);
}

} // namespace
} // namespace control
