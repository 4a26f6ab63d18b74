#include "VxCamera/control/AddressForcer.h"

#include "support/network/FakeCamera.h"
#include "support/network/FakeInterfaceList.h"
#include "support/network/FakeSocketFactory.h"

#include <gtest/gtest.h>

#include <string>

namespace control {
namespace {

using namespace std::chrono_literals;
using transport::Ipv4Address;

class AddressForcerTest : public testing::Test {
protected:
    AddressForcerTest()
    {
        transport::NetworkInterface eth0;
        eth0.name = "eth0";
        eth0.index = 2;
        eth0.address = Ipv4Address(192, 168, 1, 1);
        eth0.mask = Ipv4Address(255, 255, 255, 0);
        m_interfaces.interfaces.push_back(eth0);
        MoveTo(m_camera, Ipv4Address(10, 9, 9, 9));
        MoveTo(m_other, Ipv4Address(192, 168, 1, 21));
        m_other.identity.mac = {0x02, 0, 0, 0, 0, 0x02};
        m_other.identity.serialNumber = "SN-2";
        m_other.identity.userDefinedName = "right";
    }
    static void MoveTo(FakeCamera& camera, Ipv4Address address)
    {
        camera.endpoint.address = address;
        camera.identity.ipAddress = address.Value();
    }
    VxExpected<FoundCamera> Force(const char* id, Ipv4Address address, Ipv4Address mask = {255, 255, 255, 0},
                                  Ipv4Address gateway = {})
    {
        return m_forcer.Force(ConnectionId(id), {address, mask, gateway}, 1000ms);
    }

    FakeClock m_clock;
    FakeCamera m_camera{m_clock};
    FakeCamera m_other{m_clock};
    FakeSocketFactory m_sockets{m_clock, [this](FakeUdpSocket& socket, std::span<const std::byte> datagram,
                                                const transport::Ipv4Endpoint& destination) {
                                    m_camera.OnDatagram(socket, datagram, destination);
                                    const auto packet = gvcp::ParseCommand(datagram);
                                    // The fake does not look at the MAC; only the first one is ever meant.
                                    if (packet->header.command != gvcp::Command::ForceIp)
                                        m_other.OnDatagram(socket, datagram, destination);
                                }};
    FakeInterfaceList m_interfaces;
    AddressForcer m_forcer{{m_sockets, m_interfaces, m_clock}};
};

TEST_F(AddressForcerTest, ACameraInAWrongSubnetGetsAnAddressInTheRightOne)
{
    const auto forced = Force("02:00:00:00:00:01", {192, 168, 1, 20}, {255, 255, 255, 0}, {192, 168, 1, 254});

    ASSERT_TRUE(forced) << forced.Error().GetDescription().Narrow();
    EXPECT_TRUE(forced->IsConfigurationValid());
    EXPECT_EQ(forced->device.ToString(), "192.168.1.20:3956");
    EXPECT_EQ(m_camera.identity.subnetMask, Ipv4Address(255, 255, 255, 0).Value());
    EXPECT_EQ(m_camera.identity.defaultGateway, Ipv4Address(192, 168, 1, 254).Value());
    EXPECT_EQ(m_camera.Count(gvcp::Command::ForceIp), 1u);
}

TEST_F(AddressForcerTest, ACameraWithoutAddressGetsOne)
{
    m_camera.identity.ipAddress = 0;

    EXPECT_TRUE(Force("SN-1", {192, 168, 1, 20}));
}

TEST_F(AddressForcerTest, ACommandThatGetsLostIsRepeated)
{
    m_camera.forceIpStatus = gvcp::Status::Success;
    int lost = 2;
    FakeSocketFactory sockets{m_clock, [&](FakeUdpSocket& socket, std::span<const std::byte> datagram,
                                           const transport::Ipv4Endpoint& destination) {
                                  const auto packet = gvcp::ParseCommand(datagram);
                                  if (packet->header.command == gvcp::Command::ForceIp && lost-- > 0)
                                      return;
                                  m_camera.OnDatagram(socket, datagram, destination);
                              }};

    EXPECT_TRUE(AddressForcer({sockets, m_interfaces, m_clock})
                    .Force(ConnectionId("SN-1"), {{192, 168, 1, 20}, {255, 255, 255, 0}, {}}, 1000ms));
}

TEST_F(AddressForcerTest, ACameraThatDoesNotAcknowledgeIsLookedForAtItsNewAddress)
{
    m_camera.isSilentAboutForceIp = true;

    const auto forced = Force("SN-1", {192, 168, 1, 20});

    ASSERT_TRUE(forced);
    EXPECT_EQ(forced->Address(), Ipv4Address(192, 168, 1, 20));
}

TEST_F(AddressForcerTest, ARefusalIsTold)
{
    m_camera.forceIpStatus = gvcp::Status::AccessDenied;

    const auto forced = Force("SN-1", {192, 168, 1, 20});

    ASSERT_FALSE(forced);
    EXPECT_EQ(forced.Error().Code(), VxError::AccessDenied);
    EXPECT_NE(forced.Error().GetDescription().Narrow().find("02-00-00-00-00-01"), std::string::npos);
}

TEST_F(AddressForcerTest, ACameraThatDoesNotComeBackIsATimeout)
{
    FakeSocketFactory sockets{m_clock, [&](FakeUdpSocket& socket, std::span<const std::byte> datagram,
                                           const transport::Ipv4Endpoint& destination) {
                                  m_camera.OnDatagram(socket, datagram, destination);
                                  if (m_camera.Count(gvcp::Command::ForceIp) > 0)
                                      m_camera.isGone = true;
                              }};

    const auto forced = AddressForcer({sockets, m_interfaces, m_clock})
                            .Force(ConnectionId("SN-1"), {{192, 168, 1, 20}, {255, 255, 255, 0}, {}}, 1000ms);

    ASSERT_FALSE(forced);
    EXPECT_EQ(forced.Error().Code(), VxError::Timeout);
}

TEST_F(AddressForcerTest, AnUnknownCameraIsNotFoundAndNobodyIsTold)
{
    EXPECT_EQ(Force("nobody", {192, 168, 1, 20}).Result().Code(), VxError::NotFound);
    EXPECT_EQ(m_camera.Count(gvcp::Command::ForceIp), 0u);
}

TEST_F(AddressForcerTest, OneOfTwoCamerasWithTheSameAddressIsNamedByItsMac)
{
    MoveTo(m_camera, Ipv4Address(192, 168, 1, 21));

    EXPECT_EQ(Force("192.168.1.21", {192, 168, 1, 20}).Result().Code(), VxError::Ambiguous);
    EXPECT_EQ(m_camera.Count(gvcp::Command::ForceIp), 0u);
    EXPECT_TRUE(Force("02-00-00-00-00-01", {192, 168, 1, 20}));
}

TEST_F(AddressForcerTest, AnAddressThatSomebodyHasIsRefused)
{
    const auto camera = Force("SN-1", {192, 168, 1, 21});
    const auto host = Force("SN-1", {192, 168, 1, 1});

    EXPECT_EQ(camera.Result().Code(), VxError::InvalidParameter);
    EXPECT_NE(camera.Error().GetDescription().Narrow().find("02-00-00-00-00-02"), std::string::npos);
    EXPECT_EQ(host.Result().Code(), VxError::InvalidParameter);
    EXPECT_NE(host.Error().GetDescription().Narrow().find("eth0"), std::string::npos);
    EXPECT_EQ(m_camera.Count(gvcp::Command::ForceIp), 0u);
}

TEST_F(AddressForcerTest, AnAddressThatNoCameraCanHaveIsRefusedBeforeAnybodyIsAsked)
{
    struct Row {
        Ipv4Address address;
        Ipv4Address mask;
        Ipv4Address gateway;
    };
    const Ipv4Address usual(255, 255, 255, 0);
    const Row rows[]{
        {{0, 0, 0, 0}, usual, {}},
        {{0, 0, 1, 2}, usual, {}},
        {{224, 0, 0, 1}, usual, {}},
        {{255, 255, 255, 255}, usual, {}},
        {{192, 168, 1, 0}, usual, {}},
        {{192, 168, 1, 255}, usual, {}},
        {{192, 168, 1, 20}, {255, 0, 255, 0}, {}},
        {{192, 168, 1, 20}, {0, 0, 0, 0}, {}},
        {{192, 168, 1, 20}, {255, 255, 255, 255}, {}},
        {{192, 168, 1, 20}, {255, 255, 255, 254}, {}},
        {{192, 168, 1, 20}, usual, {192, 168, 2, 1}},
    };
    for (const Row& row : rows)
        EXPECT_EQ(Force("SN-1", row.address, row.mask, row.gateway).Result().Code(),
                  VxError::InvalidParameter)
            << row.address.ToString() << " " << row.mask.ToString() << " " << row.gateway.ToString();
    EXPECT_TRUE(m_camera.seen.empty());
}

TEST_F(AddressForcerTest, ACameraWithoutMacAddressCannotBeTold)
{
    m_camera.identity.mac = {};

    EXPECT_EQ(Force("SN-1", {192, 168, 1, 20}).Result().Code(), VxError::InvalidParameter);

    EXPECT_EQ(m_camera.Count(gvcp::Command::ForceIp), 0u);
}

TEST_F(AddressForcerTest, TwoCamerasWithoutMacAddressAreTwo)
{
    m_camera.identity.mac = {};
    m_other.identity.mac = {};
    m_other.identity.serialNumber = "SN-1";

    EXPECT_EQ(Force("SN-1", {192, 168, 1, 20}).Result().Code(), VxError::Ambiguous);
}

} // namespace
} // namespace control
