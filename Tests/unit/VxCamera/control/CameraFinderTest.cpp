#include "VxCamera/control/CameraFinder.h"

#include "VxCamera/control/InterfaceMemory.h"
#include "VxCamera/wire/gvcp/AckHeader.h"
#include "support/network/FakeCamera.h"
#include "support/network/FakeInterfaceList.h"
#include "support/network/FakeSocketFactory.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <new>
#include <string>
#include <tuple>

namespace control {
namespace {

using namespace std::chrono_literals;
using transport::Ipv4Address;

class CameraFinderTest : public testing::Test {
protected:
    CameraFinderTest()
    {
        m_interfaces.interfaces.push_back(Interface("eth0", {192, 168, 1, 1}, {255, 255, 255, 0}));
        m_other.endpoint.address = Ipv4Address(192, 168, 1, 21);
        m_other.identity.ipAddress = m_other.endpoint.address.Value();
        m_other.identity.mac = {0x02, 0, 0, 0, 0, 0x02};
        m_other.identity.serialNumber = "SN-2";
        m_other.isGone = true;
    }
    static transport::NetworkInterface Interface(const char* name, Ipv4Address address, Ipv4Address mask)
    {
        transport::NetworkInterface described;
        described.name = name;
        described.index = 7;
        described.address = address;
        described.mask = mask;
        return described;
    }
    std::chrono::milliseconds Elapsed() const
    {
        return std::chrono::duration_cast<std::chrono::milliseconds>(m_clock.Now() - m_start);
    }

    FakeClock m_clock;
    const IVxClock::Time m_start = m_clock.Now();
    FakeCamera m_camera{m_clock};
    FakeCamera m_other{m_clock};
    std::vector<transport::Ipv4Endpoint> m_asked;
    FakeSocketFactory m_sockets{m_clock, [this](FakeUdpSocket& socket, std::span<const std::byte> datagram,
                                                const transport::Ipv4Endpoint& destination) {
                                    m_asked.push_back(destination);
                                    m_camera.OnDatagram(socket, datagram, destination);
                                    m_other.OnDatagram(socket, datagram, destination);
                                }};
    FakeInterfaceList m_interfaces;
    CameraFinder m_finder{{m_sockets, m_interfaces, m_clock}};
};

TEST_F(CameraFinderTest, ListsEveryCameraOnceHoweverOftenItAnswers)
{
    m_other.isGone = false;

    const auto found = m_finder.FindAll(1500ms);

    ASSERT_TRUE(found);
    ASSERT_EQ(found->size(), 1u);
    ASSERT_EQ(found->front().cameras.size(), 2u);
    EXPECT_EQ(found->front().cameras[0].camera.serialNumber, "SN-1");
    EXPECT_EQ(found->front().cameras[1].camera.serialNumber, "SN-2");
    EXPECT_TRUE(found->front().cameras[0].IsConfigurationValid());
    EXPECT_EQ(Elapsed(), 1500ms);
}

TEST_F(CameraFinderTest, AsksSubnetAndEverybodyFromTheInterfaceItself)
{
    ASSERT_TRUE(m_finder.FindAll(100ms));

    EXPECT_EQ(m_asked, (std::vector<transport::Ipv4Endpoint>{{Ipv4Address(192, 168, 1, 255), 3956},
                                                             {Ipv4Address(255, 255, 255, 255), 3956}}));
    EXPECT_EQ(m_sockets.opened.front().local.address, Ipv4Address(192, 168, 1, 1));
}

TEST_F(CameraFinderTest, ALostQuestionIsRepeated)
{
    m_camera.dropCommands = 3; // the first question goes to two addresses

    const auto found = m_finder.FindAll(400ms);

    EXPECT_EQ(found->front().cameras.size(), 1u);
}

TEST_F(CameraFinderTest, AnInterfaceWithoutCameraIsListed)
{
    m_camera.isGone = true;

    const auto found = m_finder.FindAll(100ms);

    ASSERT_TRUE(found);
    ASSERT_EQ(found->size(), 1u);
    EXPECT_TRUE(found->front().cameras.empty());
}

TEST_F(CameraFinderTest, AnInterfaceThatCannotBeUsedIsLeftOut)
{
    m_sockets.portsInUse.insert(0);

    const auto found = m_finder.FindAll(100ms);

    ASSERT_TRUE(found);
    EXPECT_TRUE(found->empty());
}

TEST_F(CameraFinderTest, AnInterfaceThatRefusesToSendDoesNotFailTheScan)
{
    FakeSocketFactory sockets(
        m_clock, [](FakeUdpSocket& socket, std::span<const std::byte>, const transport::Ipv4Endpoint&) {
            socket.FailSending({VxError::NetworkError, "network is down"});
        });

    EXPECT_TRUE(CameraFinder({sockets, m_interfaces, m_clock}).FindAll(1500ms));
}

TEST_F(CameraFinderTest, FindsByMacAddressSerialNumberAndName)
{
    for (const char* id : {"02-00-00-00-00-01", "SN-1", "left"}) {
        const auto found = m_finder.Find(ConnectionId(id), 400ms);
        ASSERT_TRUE(found) << id;
        EXPECT_EQ(found->device, m_camera.endpoint);
        EXPECT_EQ(found->via.name, "eth0");
    }
}

TEST_F(CameraFinderTest, EndsTheSearchAsSoonAsTheCameraHasAnswered)
{
    ASSERT_TRUE(m_finder.Find(ConnectionId("02-00-00-00-00-01"), 400ms));

    EXPECT_LT(Elapsed(), 10ms);
}

TEST_F(CameraFinderTest, AnUnknownCameraIsNotFoundWithinTheTimeGiven)
{
    for (const char* id : {"02-00-00-00-00-99", "nobody", "192.168.1.99"}) {
        const auto start = m_clock.Now();
        const auto found = m_finder.Find(ConnectionId(id), 400ms);
        ASSERT_FALSE(found);
        EXPECT_EQ(found.Error().Code(), VxError::NotFound);
        EXPECT_NE(found.Error().GetDescription().Narrow().find(id), std::string::npos);
        EXPECT_EQ(m_clock.Now() - start, 400ms);
    }
}

TEST_F(CameraFinderTest, AnEmptyIdIsRefused)
{
    EXPECT_EQ(m_finder.Find(ConnectionId(""), 400ms).Result().Code(), VxError::InvalidParameter);
    EXPECT_TRUE(m_asked.empty());
}

TEST_F(CameraFinderTest, ByIpAddressOnlyThatAddressIsAsked)
{
    ASSERT_TRUE(m_finder.Find(ConnectionId("192.168.1.20"), 400ms));

    EXPECT_EQ(m_asked, std::vector{m_camera.endpoint});
}

TEST_F(CameraFinderTest, ByIpAddressACameraBehindARouterIsFound)
{
    m_camera.endpoint.address = Ipv4Address(10, 9, 8, 7);
    m_interfaces.route = Ipv4Address(192, 168, 1, 1);

    const auto found = m_finder.Find(ConnectionId("10.9.8.7"), 400ms);

    ASSERT_TRUE(found);
    EXPECT_EQ(found->via.name, "eth0");
}

TEST_F(CameraFinderTest, AnAddressInNoSubnetIsLookedForOnEveryInterface)
{
    EXPECT_EQ(m_finder.Find(ConnectionId("10.9.8.7"), 400ms).Result().Code(), VxError::NotFound);

    EXPECT_EQ(Elapsed(), 400ms);
    EXPECT_EQ(m_asked.front().address, Ipv4Address(192, 168, 1, 255));
}

TEST_F(CameraFinderTest, ByIpAddressACameraInAWrongSubnetIsToldFromOneThatIsNotThere)
{
    m_camera.identity.ipAddress = Ipv4Address(169, 254, 3, 4).Value();
    m_camera.endpoint.address = Ipv4Address(169, 254, 3, 4);

    const auto found = m_finder.Find(ConnectionId("169.254.3.4"), 400ms);

    ASSERT_FALSE(found);
    EXPECT_EQ(found.Error().Code(), VxError::InvalidConfiguration);
    EXPECT_NE(found.Error().GetDescription().Narrow().find("eth0"), std::string::npos);
    EXPECT_LT(Elapsed(), 100ms);
}

TEST_F(CameraFinderTest, ADiscoverySocketSendsThroughItsInterfaceAndHearsBroadcasts)
{
    ASSERT_TRUE(m_finder.FindAll(100ms));

    EXPECT_EQ(m_sockets.opened.front().interfaceIndex, 7u);
    EXPECT_TRUE(m_sockets.opened.front().isBroadcastReceived);
}

TEST_F(CameraFinderTest, InterfacesKeepTheirOrderWhateverTheSystemsIs)
{
    m_sockets.portsInUse.clear();
    m_camera.isGone = true;
    transport::NetworkInterface second = m_interfaces.interfaces.front();
    m_interfaces.interfaces.front().index = 9;
    second.name = "eth1";

    m_interfaces.interfaces.insert(m_interfaces.interfaces.end(), second);
    EXPECT_EQ(m_finder.InterfaceTowards(Ipv4Address(192, 168, 1, 9))->name, "eth1");
    std::ranges::reverse(m_interfaces.interfaces);
    EXPECT_EQ(m_finder.InterfaceTowards(Ipv4Address(192, 168, 1, 9))->name, "eth1");
}

TEST_F(CameraFinderTest, TwoCamerasOfOneNameAreAmbiguous)
{
    m_other.isGone = false;
    m_other.delay = 20ms;

    const auto found = m_finder.Find(ConnectionId("left"), 400ms);

    ASSERT_FALSE(found);
    EXPECT_EQ(found.Error().Code(), VxError::Ambiguous);
    EXPECT_EQ(
        found.Error().GetDescription().Narrow(),
        "several cameras are called \"left\": 02-00-00-00-00-01 and 02-00-00-00-00-02; name one by its MAC "
        "address");
}

TEST_F(CameraFinderTest, ACameraOutsideTheSubnetIsListedAsInvalid)
{
    m_camera.identity.ipAddress = Ipv4Address(169, 254, 3, 4).Value();

    const auto found = m_finder.FindAll(100ms);

    ASSERT_EQ(found->front().cameras.size(), 1u);
    EXPECT_EQ(found->front().cameras.front().fault, ConfigurationFault::OtherSubnet);
}

TEST_F(CameraFinderTest, ACameraWithoutAnAddressIsListedAsInvalid)
{
    m_camera.identity.ipAddress = 0;

    const auto found = m_finder.FindAll(100ms);

    ASSERT_EQ(found->front().cameras.size(), 1u);
    EXPECT_EQ(found->front().cameras.front().fault, ConfigurationFault::NoAddress);
    const auto connected = m_finder.Find(ConnectionId("SN-1"), 400ms);
    EXPECT_EQ(connected.Result().Code(), VxError::InvalidConfiguration);
    EXPECT_NE(connected.Error().GetDescription().Narrow().find("no address"), std::string::npos);
}

TEST_F(CameraFinderTest, ACameraOutsideTheSubnetCannotBeConnected)
{
    m_camera.identity.ipAddress = Ipv4Address(169, 254, 3, 4).Value();

    const auto found = m_finder.Find(ConnectionId("SN-1"), 400ms);

    ASSERT_FALSE(found);
    EXPECT_EQ(found.Error().Code(), VxError::InvalidConfiguration);
    EXPECT_NE(found.Error().GetDescription().Narrow().find("169.254.3.4"), std::string::npos);
}

TEST_F(CameraFinderTest, TwoCamerasOfOneAddressAreInvalid)
{
    m_other.isGone = false;
    m_other.identity.ipAddress = m_camera.identity.ipAddress;

    const auto found = m_finder.FindAll(100ms);

    ASSERT_EQ(found->front().cameras.size(), 2u);
    EXPECT_EQ(found->front().cameras[0].fault, ConfigurationFault::SharedAddress);
    EXPECT_EQ(found->front().cameras[1].fault, ConfigurationFault::SharedAddress);
}

TEST_F(CameraFinderTest, GarbageIsNoCamera)
{
    FakeSocketFactory sockets(
        m_clock, [](FakeUdpSocket& socket, std::span<const std::byte>, const transport::Ipv4Endpoint&) {
            const transport::Ipv4Endpoint sender{Ipv4Address(192, 168, 1, 66), 3956};
            std::vector<std::byte> garbage(300, std::byte{0x5A});
            socket.Arrive(sender, garbage, 1us);
            socket.Arrive(sender, std::span(garbage).first(3), 2us);
            socket.Arrive(sender, gvcp::MakeEmptyAck(gvcp::Status::Success, gvcp::Ack::Discovery, 1).Bytes(),
                          3us);
        });

    const auto found = CameraFinder({sockets, m_interfaces, m_clock}).FindAll(100ms);

    ASSERT_TRUE(found);
    EXPECT_TRUE(found->front().cameras.empty());
}

TEST_F(CameraFinderTest, WhereACameraHasAnsweredIsTheWayToItWhateverTheSubnetsSay)
{
    InterfaceMemory memory;
    CameraFinder finder({m_sockets, m_interfaces, m_clock, &memory});
    ASSERT_TRUE(finder.Find(ConnectionId("SN-1"), 400ms));
    transport::NetworkInterface other = Interface("eth1", {192, 168, 1, 2}, {255, 255, 255, 0});
    other.index = 1; // comes first
    m_interfaces.interfaces.push_back(other);

    EXPECT_EQ(finder.InterfaceTowards(m_camera.endpoint.address)->name, "eth0");
    EXPECT_EQ(finder.InterfaceTowards(Ipv4Address(192, 168, 1, 99))->name, "eth1") << "never seen";
    std::erase_if(m_interfaces.interfaces, [](const auto& each) { return each.name == "eth0"; });
    EXPECT_EQ(finder.InterfaceTowards(m_camera.endpoint.address)->name, "eth1") << "the other one is gone";
}

TEST_F(CameraFinderTest, TheNearestSubnetIsTheWayToAnAddress)
{
    m_interfaces.interfaces = {Interface("wide", {10, 0, 0, 1}, {255, 0, 0, 0}),
                               Interface("near", {10, 1, 2, 1}, {255, 255, 255, 0})};

    EXPECT_EQ(m_finder.InterfaceTowards(Ipv4Address(10, 1, 2, 9))->name, "near");
    EXPECT_EQ(m_finder.InterfaceTowards(Ipv4Address(10, 1, 3, 9))->name, "wide");
}

TEST_F(CameraFinderTest, TwoCamerasOfOneNameAreAmbiguousAlsoWithoutMacAddresses)
{
    m_other.isGone = false;
    m_camera.identity.mac = {};
    m_other.identity.mac = {};
    m_other.identity.serialNumber = "SN-1";

    EXPECT_EQ(m_finder.Find(ConnectionId("SN-1"), 350ms).Result().Code(), VxError::Ambiguous);
}

TEST_F(CameraFinderTest, AllInterfacesAreSearchedAtOnce)
{
    for (std::uint8_t i = 2; i <= 9; ++i) {
        m_interfaces.interfaces.push_back(Interface("eth", {192, 168, i, 1}, {255, 255, 255, 0}));
        m_interfaces.interfaces.back().index = i + 10u;
    }
    m_other.isGone = false;

    const auto found = m_finder.FindAll(1500ms);

    ASSERT_TRUE(found);
    ASSERT_EQ(found->size(), 9u);
    for (const ScannedInterface& each : *found)
        EXPECT_EQ(each.cameras.size(), 2u) << each.description.address.ToString();
    EXPECT_EQ(Elapsed(), 1500ms) << "not a multiple of it";
}

TEST_F(CameraFinderTest, AnAnswerThatComesWithTheDeadlineCounts)
{
    m_camera.delay = 100ms;

    EXPECT_EQ(m_finder.FindAll(100ms)->front().cameras.size(), 1u);
    EXPECT_EQ(Elapsed(), 100ms);
}

TEST_F(CameraFinderTest, AnInterfaceThatGoesDownMeanwhileLeavesTheOthersToDecide)
{
    m_interfaces.interfaces.push_back(Interface("eth1", {192, 168, 2, 1}, {255, 255, 255, 0}));
    const VxResult down(VxError::NetworkError, "network is down");
    for (const bool isReceiving : {false, true}) {
        FakeSocketFactory sockets(m_clock, [&](FakeUdpSocket& socket, std::span<const std::byte> datagram,
                                               const transport::Ipv4Endpoint& destination) {
            const bool isGoingDown = socket.LocalEndpoint().address == Ipv4Address(192, 168, 1, 1);
            if (isGoingDown && isReceiving)
                socket.FailReceiving(down);
            else if (isGoingDown)
                socket.FailSending(down); // from the next question on
            else
                m_camera.OnDatagram(socket, datagram, destination);
        });
        const auto start = m_clock.Now();

        const auto found = CameraFinder({sockets, m_interfaces, m_clock}).FindAll(400ms);

        ASSERT_TRUE(found);
        EXPECT_TRUE(found->front().addresses ==
                    std::vector({Ipv4Address(192, 168, 1, 1), Ipv4Address(192, 168, 2, 1)}));
        EXPECT_EQ(found->front().cameras.size(), 1u);
        EXPECT_EQ(m_clock.Now() - start, 400ms);
    }
}

TEST_F(CameraFinderTest, WhenEveryInterfaceIsDownTheSearchIsOver)
{
    FakeSocketFactory sockets(
        m_clock, [](FakeUdpSocket& socket, std::span<const std::byte>, const transport::Ipv4Endpoint&) {
            socket.FailReceiving({VxError::NetworkError, "network is down"});
        });

    const auto found = CameraFinder({sockets, m_interfaces, m_clock}).FindAll(1500ms);

    ASSERT_TRUE(found);
    EXPECT_EQ(found->size(), 1u);
}

TEST_F(CameraFinderTest, AnExceptionReachesTheCallerAndTheNextSearchIsAsEver)
{
    bool isMemoryFull = true;
    FakeSocketFactory sockets(m_clock, [&](FakeUdpSocket& socket, std::span<const std::byte> datagram,
                                           const transport::Ipv4Endpoint& destination) {
        if (isMemoryFull)
            throw std::bad_alloc();
        m_camera.OnDatagram(socket, datagram, destination);
    });
    CameraFinder finder({sockets, m_interfaces, m_clock});

    EXPECT_THROW(std::ignore = finder.FindAll(400ms), std::bad_alloc);
    EXPECT_THROW(std::ignore = finder.Find(ConnectionId("192.168.1.20"), 400ms), std::bad_alloc);
    isMemoryFull = false;
    EXPECT_TRUE(finder.Find(ConnectionId("192.168.1.20"), 400ms));
}

TEST_F(CameraFinderTest, ACameraAskedDirectlyWinsOverOneThatIsOnlyHeard)
{
    m_camera.endpoint.address = Ipv4Address(10, 9, 8, 7);
    m_camera.identity.ipAddress = m_camera.endpoint.address.Value();
    m_interfaces.route = Ipv4Address(192, 168, 1, 1);
    for (const auto lag : {0us, 30000us}) { // of the direct answer, behind the one that is heard
        FakeSocketFactory sockets(m_clock, [&](FakeUdpSocket& socket, std::span<const std::byte> datagram,
                                               const transport::Ipv4Endpoint& destination) {
            m_camera.delay = 100us + (destination == m_camera.endpoint ? lag : 0us);
            m_camera.OnDatagram(socket, datagram, destination);
        });

        EXPECT_TRUE(CameraFinder({sockets, m_interfaces, m_clock}).Find(ConnectionId("10.9.8.7"), 400ms));
    }
}

class WrongPlugTest : public CameraFinderTest {
protected:
    WrongPlugTest()
    {
        m_interfaces.interfaces.push_back(Interface("eth1", {10, 0, 0, 1}, {255, 255, 255, 0}));
        m_interfaces.interfaces.back().index = 8;
    }
    /// @param plug  address of the interface that the camera is connected to; it takes broadcasts there,
    ///              and what is sent to its own address nowhere
    FakeSocketFactory SocketsWithCameraAt(Ipv4Address plug)
    {
        return {m_clock, [this, plug](FakeUdpSocket& socket, std::span<const std::byte> datagram,
                                      const transport::Ipv4Endpoint& destination) {
                    m_asked.push_back(destination);
                    m_askedAt.push_back(Elapsed());
                    if (socket.LocalEndpoint().address == plug && destination != m_camera.endpoint)
                        m_camera.OnDatagram(socket, datagram, destination);
                }};
    }
    std::vector<std::chrono::milliseconds> m_askedAt;
};

TEST_F(WrongPlugTest, ByIpAddressACameraBehindAnotherInterfaceIsToldWithThatInterface)
{
    auto sockets = SocketsWithCameraAt({10, 0, 0, 1});

    const auto found =
        CameraFinder({sockets, m_interfaces, m_clock}).Find(ConnectionId("192.168.1.20"), 400ms);

    ASSERT_FALSE(found);
    EXPECT_EQ(found.Error().Code(), VxError::InvalidConfiguration);
    EXPECT_NE(found.Error().GetDescription().Narrow().find("eth1 (10.0.0.1)"), std::string::npos);
    EXPECT_LT(Elapsed(), 300ms);
}

TEST_F(WrongPlugTest, EverybodyIsAskedOnlyAfterHalfOfTheTime)
{
    m_camera.isGone = true;
    auto sockets = SocketsWithCameraAt({10, 0, 0, 1});

    const auto found =
        CameraFinder({sockets, m_interfaces, m_clock}).Find(ConnectionId("192.168.1.20"), 400ms);

    EXPECT_EQ(found.Result().Code(), VxError::NotFound);
    EXPECT_EQ(Elapsed(), 400ms);
    for (std::size_t i = 0; i < m_asked.size(); ++i)
        EXPECT_TRUE(m_asked[i] == m_camera.endpoint || m_askedAt[i] >= 200ms) << m_asked[i].ToString();
    EXPECT_EQ(std::ranges::count(m_asked, Ipv4Address(10, 0, 0, 255), &transport::Ipv4Endpoint::address), 2);
}

TEST_F(WrongPlugTest, ACameraThatOnlyTakesBroadcastsIsFoundWhereItsAddressIsRight)
{
    auto sockets = SocketsWithCameraAt({192, 168, 1, 1});

    const auto found =
        CameraFinder({sockets, m_interfaces, m_clock}).Find(ConnectionId("192.168.1.20"), 400ms);

    ASSERT_TRUE(found);
    EXPECT_EQ(found->via.name, "eth0");
}

TEST_F(CameraFinderTest, ASearchWithoutTimeAsksOnce)
{
    ASSERT_TRUE(m_finder.FindAll(0ms));

    EXPECT_EQ(m_asked.size(), 2u) << "one question to the subnet, one to everybody";
    EXPECT_EQ(Elapsed(), 0ms);
}

TEST_F(CameraFinderTest, TheCameraThatIsLookedForIsKeptHoweverManyOthersAnswer)
{
    FakeSocketFactory sockets(m_clock, [&](FakeUdpSocket& socket, std::span<const std::byte> datagram,
                                           const transport::Ipv4Endpoint& destination) {
        FakeCamera forged(m_clock);
        forged.identity.serialNumber = "SN-2";
        for (int i = 0; i < 1000; ++i) {
            forged.identity.mac = {
                0x06, 0, 0, 0, static_cast<std::uint8_t>(i / 256), static_cast<std::uint8_t>(i % 256)};
            forged.OnDatagram(socket, datagram, destination);
        }
        m_camera.delay = 1ms; // after all of them
        m_camera.OnDatagram(socket, datagram, destination);
    });
    m_camera.identity.ipAddress = Ipv4Address(192, 168, 1, 33).Value(); // shared with none of them

    const auto found = CameraFinder({sockets, m_interfaces, m_clock}).Find(ConnectionId("SN-1"), 400ms);

    ASSERT_TRUE(found) << found.Result().GetDescription().Narrow();
    EXPECT_EQ(ConnectionId::Of(found->camera), "02-00-00-00-00-01");
}

/// Two interfaces into subnets of the same addresses, with a camera of the same address behind each.
class SameSubnetTest : public CameraFinderTest {
protected:
    SameSubnetTest()
    {
        m_interfaces.interfaces.push_back(Interface("eth1", {192, 168, 1, 2}, {255, 255, 255, 0}));
        m_interfaces.interfaces.back().index = 8;
        m_other.endpoint = m_camera.endpoint;
        m_other.identity.ipAddress = m_camera.identity.ipAddress;
        m_other.isGone = false;
        m_other.delay = 5ms;
    }
    FakeSocketFactory m_two{m_clock, [this](FakeUdpSocket& socket, std::span<const std::byte> datagram,
                                            const transport::Ipv4Endpoint& destination) {
                                const bool isFirst =
                                    socket.LocalEndpoint().address == Ipv4Address(192, 168, 1, 1);
                                (isFirst ? m_camera : m_other).OnDatagram(socket, datagram, destination);
                            }};
};

TEST_F(SameSubnetTest, ByIpAddressTwoCamerasOfOneAddressAreAmbiguous)
{
    const auto found = CameraFinder({m_two, m_interfaces, m_clock}).Find(ConnectionId("192.168.1.20"), 400ms);

    ASSERT_FALSE(found);
    EXPECT_EQ(found.Error().Code(), VxError::Ambiguous);
    EXPECT_NE(found.Error().GetDescription().Narrow().find("name one by its MAC address"), std::string::npos);
    EXPECT_LT(Elapsed(), 100ms);
}

TEST_F(SameSubnetTest, ByIpAddressTheOnlyCameraIsFoundAfterAMoment)
{
    for (const bool isBehindBoth : {false, true}) {
        m_other.isGone = !isBehindBoth;
        m_other.identity = m_camera.identity;
        const auto start = m_clock.Now();

        const auto found =
            CameraFinder({m_two, m_interfaces, m_clock}).Find(ConnectionId("192.168.1.20"), 400ms);

        ASSERT_TRUE(found) << isBehindBoth;
        EXPECT_EQ(found->via.name, "eth0") << "where it has answered first";
        EXPECT_LT(m_clock.Now() - start, 100ms);
    }
}

} // namespace
} // namespace control
