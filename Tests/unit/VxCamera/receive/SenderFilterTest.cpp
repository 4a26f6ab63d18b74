#include "VxCamera/receive/SenderFilter.h"

#include "support/Bytes.h"

#include <gtest/gtest.h>

namespace receive {
namespace {

constexpr transport::Ipv4Address kCamera(192, 168, 1, 20);
constexpr transport::Ipv4Address kStranger(192, 168, 1, 66);
const auto kLeader = bytes::FromHex("0000 0001 01 000000 00");
const auto kPayload = bytes::FromHex("0000 0001 03 000001 00");
const auto kTestPacket = bytes::FromHex("0000 0000 01 000000 00");

TEST(SenderFilterTest, OnlyTheCameraItWasGivenCounts)
{
    SenderFilter filter(kCamera);

    EXPECT_TRUE(filter.Accepts({kCamera, 1}, gvsp::ParsePacket(kPayload)));
    EXPECT_TRUE(filter.Accepts({kCamera, 2}, gvsp::ParsePacket(kPayload))); // from any port
    EXPECT_FALSE(filter.Accepts({kStranger, 1}, gvsp::ParsePacket(kLeader)));
}

TEST(SenderFilterTest, TheFirstSenderOfALeaderIsLearnt)
{
    SenderFilter filter(std::nullopt);
    EXPECT_EQ(filter.Camera(), std::nullopt);

    EXPECT_FALSE(filter.Accepts({kStranger, 1}, gvsp::ParsePacket(kPayload)));
    EXPECT_FALSE(filter.Accepts({kStranger, 1}, gvsp::ParsePacket(kTestPacket)));
    EXPECT_FALSE(filter.Accepts({kStranger, 1}, gvsp::ParsePacket(bytes::First(kLeader, 3))));
    EXPECT_TRUE(filter.Accepts({kCamera, 1}, gvsp::ParsePacket(kLeader)));

    EXPECT_EQ(filter.Camera(), kCamera);
    EXPECT_TRUE(filter.Accepts({kCamera, 1}, gvsp::ParsePacket(kPayload)));
    EXPECT_FALSE(filter.Accepts({kStranger, 1}, gvsp::ParsePacket(kLeader)));
}

TEST(SenderFilterTest, ABlockInOnePacketTeachesTheCameraToo)
{
    SenderFilter filter(std::nullopt);

    EXPECT_TRUE(filter.Accepts({kCamera, 1}, gvsp::ParsePacket(bytes::FromHex("0000 0001 04 000000 00"))));

    EXPECT_EQ(filter.Camera(), kCamera);
}

TEST(SenderFilterTest, ForgetsWhatItLearntButNotWhatItWasGiven)
{
    SenderFilter learning(std::nullopt);
    SenderFilter given(kCamera);
    ASSERT_TRUE(learning.Accepts({kCamera, 1}, gvsp::ParsePacket(kLeader)));

    learning.Forget();
    given.Forget();

    EXPECT_EQ(learning.Camera(), std::nullopt);
    EXPECT_EQ(given.Camera(), kCamera);
}

} // namespace
} // namespace receive
