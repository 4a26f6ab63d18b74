#include "VxCamera/surface/ReceiverOpening.h"

#include "VxCamera/surface/CameraNetwork.h"

#include "support/network/FakeClock.h"
#include "support/network/FakeInterfaceList.h"
#include "support/network/FakeSocketFactory.h"

#include <gmock/gmock.h>

#include <memory>
#include <utility>

namespace {

using testing::ElementsAre;
using transport::Ipv4Address;
using transport::PortSharing;

constexpr Ipv4Address kAny;
constexpr Ipv4Address kTowardsCamera(192, 168, 7, 1);
constexpr Ipv4Address kElsewhere(10, 0, 0, 1);
constexpr Ipv4Address kGroup(239, 255, 42, 99);
constexpr const char* kCamera = "192.168.7.20";
constexpr const char* kUnknownCamera = ""; // any other name would be searched for
constexpr std::uint16_t kPort = 5000;

/// A host with loopback and two networks, one of them the camera's.
class ReceiverOpeningTest : public testing::Test {
protected:
    ReceiverOpeningTest()
    {
        auto interfaces = std::make_unique<FakeInterfaceList>();
        const Ipv4Address mask(255, 255, 255, 0);
        transport::NetworkInterface loopback{"lo", 1, Ipv4Address::Loopback(), Ipv4Address(255, 0, 0, 0)};
        loopback.isLoopback = true;
        interfaces->interfaces = {loopback, {"eth0", 2, kElsewhere, mask}, {"eth1", 3, kTowardsCamera, mask}};
        interfaces->route = kElsewhere;
        m_interfaces = interfaces.get();
        auto sockets = std::make_unique<FakeSocketFactory>(m_clock, nullptr);
        auto groups = std::make_unique<FakeSocketFactory>(m_clock, nullptr);
        m_sockets = sockets.get();
        m_groups = groups.get();
        m_network =
            std::make_unique<CameraNetwork>(std::move(sockets), std::move(groups), std::move(interfaces));
    }

    /// @return  the socket that was opened for it
    const transport::UdpSocketOptions& Open(const ReceiverRequest& request)
    {
        auto opened = OpenReceiver(*m_network, request);
        EXPECT_TRUE(opened) << opened.Result().GetDescription().Narrow();
        if (opened)
            m_opened = std::move(*opened);
        EXPECT_EQ(m_sockets->opened.size(), 1u);
        return m_sockets->opened.back();
    }

    FakeClock m_clock;
    FakeInterfaceList* m_interfaces = nullptr; // these three borrowed from the network
    FakeSocketFactory* m_sockets = nullptr;
    FakeSocketFactory* m_groups = nullptr;
    std::unique_ptr<CameraNetwork> m_network;
    OpenedReceiver m_opened; // ends before what it borrows
};

TEST_F(ReceiverOpeningTest, ABufferOf16MebibytesIsAskedFor)
{
    for (const ReceiverRequest& request : {ReceiverRequest{kCamera, 0, {}, std::nullopt, 0},
                                           ReceiverRequest{kCamera, kPort, {}, std::nullopt, 0},
                                           ReceiverRequest{kCamera, kPort, {}, kGroup, 0}}) {
        EXPECT_EQ(Open(request).receiveBufferBytes, 16u * 1024 * 1024);
        m_sockets->opened.clear();
    }
}

TEST_F(ReceiverOpeningTest, TheSocketIsOneForManyPacketsAndForShortWaits)
{
    const auto& options = Open({kCamera, kPort, {}, std::nullopt, 0});

    EXPECT_TRUE(options.isCoalescing);
    EXPECT_TRUE(options.isRingWanted);
    EXPECT_TRUE(options.hasShortWaits);
}

TEST_F(ReceiverOpeningTest, AFreePortIsThatOfTheAddressTowardsTheCamera)
{
    EXPECT_EQ(Open({kCamera, 0, {}, std::nullopt, 0}).local.address, kTowardsCamera);
    EXPECT_EQ(m_opened.reachedAt, kTowardsCamera);
}

TEST_F(ReceiverOpeningTest, AFixedPortIsListenedOnAtEveryAddressAndTheOneTowardsTheCameraIsTold)
{
    const auto& options = Open({kCamera, kPort, {}, std::nullopt, 0});

    EXPECT_EQ(options.local, (transport::Ipv4Endpoint{kAny, kPort}));
    EXPECT_EQ(options.sharing, PortSharing::Exclusive);
    EXPECT_EQ(m_opened.reachedAt, kTowardsCamera);
}

TEST_F(ReceiverOpeningTest, AnAddressThatIsAskedForIsTheOneThatIsListenedOn)
{
    EXPECT_EQ(Open({kCamera, kPort, "10.0.0.1", std::nullopt, 0}).local,
              (transport::Ipv4Endpoint{kElsewhere, kPort}));
    EXPECT_EQ(m_opened.reachedAt, kElsewhere);
}

TEST_F(ReceiverOpeningTest, WithoutAKnownCameraEveryAddressIsListenedOn)
{
    EXPECT_EQ(Open({kUnknownCamera, kPort, {}, std::nullopt, 0}).local.address, kAny);
    EXPECT_EQ(m_opened.reachedAt, kAny);
}

TEST_F(ReceiverOpeningTest, TheGroupOfAKnownCameraIsJoinedOnItsInterfaceOnly)
{
    const auto& options = Open({kCamera, kPort, {}, kGroup, 0});

    EXPECT_EQ(options.local, (transport::Ipv4Endpoint{kAny, kPort}));
    EXPECT_EQ(options.sharing, PortSharing::Shared);
    EXPECT_THAT(m_sockets->lastSocket->joinedOn, ElementsAre(kTowardsCamera));
    EXPECT_EQ(m_opened.reachedAt, kTowardsCamera);
}

TEST_F(ReceiverOpeningTest, TheGroupOfAnUnknownCameraIsJoinedOnEveryInterface)
{
    Open({kUnknownCamera, kPort, {}, kGroup, 0});

    EXPECT_THAT(m_sockets->lastSocket->joinedOn,
                ElementsAre(Ipv4Address::Loopback(), kElsewhere, kTowardsCamera));
    EXPECT_EQ(m_opened.reachedAt, kElsewhere) << "not loopback, which carries no camera";
}

TEST_F(ReceiverOpeningTest, NothingIsSentForACameraThatIsGivenByItsAddress)
{
    Open({kCamera, kPort, {}, std::nullopt, 0});

    EXPECT_TRUE(m_groups->opened.empty()) << "no socket to search with";
}

} // namespace
