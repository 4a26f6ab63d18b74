#include "VxCamera/transport/SystemNetwork.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace transport {
namespace {

TEST(InterfaceListTest, ContainsLoopbackWithItsMask)
{
    const auto interfaces = MakeSystemInterfaceList()->Interfaces();

    ASSERT_TRUE(interfaces);
    const auto loopback = std::ranges::find(*interfaces, Ipv4Address::Loopback(), &NetworkInterface::address);
    ASSERT_NE(loopback, interfaces->end());
    EXPECT_TRUE(loopback->isLoopback);
    EXPECT_EQ(loopback->mask, Ipv4Address(255, 0, 0, 0));
    EXPECT_FALSE(loopback->name.empty());
}

TEST(InterfaceListTest, IsTheSameWhenReadTwice)
{
    const auto list = MakeSystemInterfaceList();

    const auto first = list->Interfaces();
    const auto second = list->Interfaces();

    ASSERT_TRUE(first && second);
    EXPECT_EQ(*first, *second);
}

TEST(InterfaceListTest, LoopbackIsReachedFromLoopback)
{
    const auto local = MakeSystemInterfaceList()->LocalAddressTowards(Ipv4Address(127, 0, 0, 9));

    ASSERT_TRUE(local);
    EXPECT_TRUE(local->IsLoopback());
}

} // namespace
} // namespace transport
