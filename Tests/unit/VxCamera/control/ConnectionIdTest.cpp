#include "VxCamera/control/ConnectionId.h"

#include <gtest/gtest.h>

namespace control {
namespace {

using Kind = ConnectionId::Kind;

gvcp::DiscoveryAck Camera()
{
    gvcp::DiscoveryAck camera;
    camera.mac = {0x02, 0x00, 0xAB, 0xCD, 0xEF, 0x01};
    camera.ipAddress = transport::Ipv4Address(10, 0, 0, 5).Value();
    camera.serialNumber = "S123";
    camera.userDefinedName = "left";
    return camera;
}

TEST(ConnectionIdTest, IsTheMacAddressWithDashes)
{
    EXPECT_EQ(ConnectionId::Of(Camera()), "02-00-AB-CD-EF-01");
}

TEST(ConnectionIdTest, IsTheIpAddressWhereThereIsNoMacAddress)
{
    auto camera = Camera();
    camera.mac = {};

    EXPECT_EQ(ConnectionId::Of(camera), "10.0.0.5");
}

TEST(ConnectionIdTest, MatchesTheMacAddressWithEitherSeparatorInAnyCase)
{
    for (const char* text : {"02-00-AB-CD-EF-01", "02:00:ab:cd:ef:01", " 02-00-ab-CD-ef-01 "}) {
        EXPECT_EQ(ConnectionId(text).GetKind(), Kind::MacAddress) << text;
        EXPECT_TRUE(ConnectionId(text).Matches(Camera())) << text;
    }
    EXPECT_FALSE(ConnectionId("02-00-AB-CD-EF-02").Matches(Camera()));
}

TEST(ConnectionIdTest, MatchesTheIpAddress)
{
    EXPECT_EQ(ConnectionId("10.0.0.5").GetKind(), Kind::IpAddress);
    EXPECT_TRUE(ConnectionId("10.0.0.5").Matches(Camera()));
    EXPECT_FALSE(ConnectionId("10.0.0.50").Matches(Camera()));
}

TEST(ConnectionIdTest, MatchesSerialNumberAndUserDefinedNameExactly)
{
    EXPECT_EQ(ConnectionId("S123").GetKind(), Kind::Name);
    EXPECT_TRUE(ConnectionId("S123").Matches(Camera()));
    EXPECT_TRUE(ConnectionId("left").Matches(Camera()));
    EXPECT_FALSE(ConnectionId("s123").Matches(Camera()));
    EXPECT_FALSE(ConnectionId("lef").Matches(Camera()));
}

TEST(ConnectionIdTest, TextThatIsAlmostAMacAddressIsAName)
{
    for (const char* text : {"02-00-AB-CD-EF-0", "02-00-AB-CD-EF-011", "02-00:AB-CD-EF-01",
                             "02_00_AB_CD_EF_01", "0G-00-AB-CD-EF-01", "0200ABCDEF01"})
        EXPECT_EQ(ConnectionId(text).GetKind(), Kind::Name) << text;
}

TEST(ConnectionIdTest, NothingMatchesNothing)
{
    gvcp::DiscoveryAck nameless;

    EXPECT_TRUE(ConnectionId("  ").IsEmpty());
    EXPECT_FALSE(ConnectionId("").Matches(nameless));
}

TEST(ConnectionIdTest, BlanksAroundACamerasNamesDoNotCount)
{
    auto camera = Camera();
    camera.serialNumber = "S123  ";
    camera.userDefinedName = " front left ";

    EXPECT_TRUE(ConnectionId("S123").Matches(camera));
    EXPECT_TRUE(ConnectionId("front left").Matches(camera));
    camera.userDefinedName = "  ";
    EXPECT_FALSE(ConnectionId(" ").Matches(camera));
}

} // namespace
} // namespace control
