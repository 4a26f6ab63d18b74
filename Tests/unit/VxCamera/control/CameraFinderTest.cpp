#include "VxCamera/control/CameraFinder.h"

#include "VxCamera/control/InterfaceMemory.h"
#include "VxCamera/wire/gvcp/AckHeader.h"
#include "support/network/FakeCamera.h"
#include "support/network/FakeInterfaceList.h"
#include "support/network/FakeSocketFactory.h"

#include <gtest/gtest.h>

#include <algorithm>

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
    EXPECT_NE(found.Error().GetDescription().Narrow().find("02-00-00-00-00-02"), std::string::npos);
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

TEST_F(CameraFinderTest, ASearchWithoutTimeAsksOnce)
{
    ASSERT_TRUE(m_finder.FindAll(0ms));

    EXPECT_EQ(m_asked.size(), 2u) << "one question to the subnet, one to everybody";
    EXPECT_EQ(Elapsed(), 0ms);
}

} // namespace
} // namespace control
