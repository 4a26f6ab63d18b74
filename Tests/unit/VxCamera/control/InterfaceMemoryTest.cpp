#include "VxCamera/control/InterfaceMemory.h"

#include <gtest/gtest.h>

namespace control {
namespace {

using transport::Ipv4Address;

constexpr Ipv4Address kCamera(169, 254, 3, 4);
constexpr Ipv4Address kFirst(169, 254, 0, 1);
constexpr Ipv4Address kSecond(169, 254, 0, 2);

TEST(InterfaceMemoryTest, TellsWhereACameraAnsweredLast)
{
    InterfaceMemory memory;
    EXPECT_FALSE(memory.Find(kCamera));

    memory.Remember(kCamera, kFirst);
    memory.Remember(kCamera, kSecond);

    EXPECT_EQ(memory.Find(kCamera), kSecond);
    EXPECT_FALSE(memory.Find(kFirst));
}

TEST(InterfaceMemoryTest, ACameraWithoutAddressIsNotRemembered)
{
    InterfaceMemory memory;

    memory.Remember(Ipv4Address(), kFirst);

    EXPECT_FALSE(memory.Find(Ipv4Address()));
}

TEST(InterfaceMemoryTest, AFloodOfCamerasPushesOutTheOldest)
{
    InterfaceMemory memory;
    memory.Remember(kCamera, kFirst);

    for (std::uint8_t i = 1; i <= 64; ++i)
        memory.Remember(Ipv4Address(10, 0, 0, i), kSecond);

    EXPECT_FALSE(memory.Find(kCamera));
    EXPECT_EQ(memory.Find(Ipv4Address(10, 0, 0, 1)), kSecond);
    EXPECT_EQ(memory.Find(Ipv4Address(10, 0, 0, 64)), kSecond);
}

} // namespace
} // namespace control
