#include "VxCamera/transport/Ipv4Address.h"
#include "VxCamera/transport/Ipv4Endpoint.h"
#include "VxCamera/transport/NetworkInterface.h"

#include <gtest/gtest.h>

namespace transport {
namespace {

TEST(Ipv4AddressTest, ReadsDottedDecimalIntoANumberInHostOrder)
{
    EXPECT_EQ(Ipv4Address::Parse("192.168.1.20")->Value(), 0xC0A80114u);
    EXPECT_EQ(Ipv4Address::Parse("0.0.0.0")->Value(), 0u);
    EXPECT_EQ(Ipv4Address::Parse("255.255.255.255")->Value(), 0xFFFFFFFFu);
}

TEST(Ipv4AddressTest, RejectsTextThatIsNoAddress)
{
    for (const char* text :
         {"", "1", "1.2.3", "1.2.3.", "1.2.3.4.", "1.2.3.4.5", "256.1.1.1", "1.2.3.1000", "1.2.3.0004",
          " 1.2.3.4", "1.2.3.4 ", "-1.2.3.4", "+1.2.3.4", "1..2.3", "a.b.c.d", "1,2,3,4", "camera-1"})
        EXPECT_FALSE(Ipv4Address::Parse(text)) << text;
}

TEST(Ipv4AddressTest, WritesWhatItReads)
{
    EXPECT_EQ(Ipv4Address(10, 0, 255, 1).ToString(), "10.0.255.1");
    EXPECT_EQ(Ipv4Address::Parse(Ipv4Address(203, 0, 113, 9).ToString()), Ipv4Address(203, 0, 113, 9));
}

TEST(Ipv4AddressTest, KnowsTheRangesOfLoopbackAndMulticast)
{
    EXPECT_TRUE(Ipv4Address(127, 3, 2, 1).IsLoopback());
    EXPECT_FALSE(Ipv4Address(128, 0, 0, 1).IsLoopback());
    EXPECT_TRUE(Ipv4Address(224, 0, 0, 0).IsMulticast());
    EXPECT_TRUE(Ipv4Address(239, 255, 255, 255).IsMulticast());
    EXPECT_FALSE(Ipv4Address(240, 0, 0, 0).IsMulticast());
    EXPECT_FALSE(Ipv4Address(223, 255, 255, 255).IsMulticast());
}

TEST(Ipv4AddressTest, ComparesSubnetsByMask)
{
    const Ipv4Address mask(255, 255, 0, 0);

    EXPECT_TRUE(Ipv4Address(169, 254, 1, 2).IsSameSubnet(Ipv4Address(169, 254, 9, 9), mask));
    EXPECT_FALSE(Ipv4Address(169, 254, 1, 2).IsSameSubnet(Ipv4Address(169, 253, 1, 2), mask));
}

TEST(NetworkInterfaceTest, SubnetBroadcastHasAllHostBitsSet)
{
    NetworkInterface described;
    described.address = Ipv4Address(192, 168, 10, 7);
    described.mask = Ipv4Address(255, 255, 255, 240);

    EXPECT_EQ(described.SubnetBroadcast(), Ipv4Address(192, 168, 10, 15));
}

TEST(Ipv4EndpointTest, TextIsAddressColonPort)
{
    EXPECT_EQ((Ipv4Endpoint{Ipv4Address(127, 0, 0, 1), 3956}.ToString()), "127.0.0.1:3956");
}

} // namespace
} // namespace transport
