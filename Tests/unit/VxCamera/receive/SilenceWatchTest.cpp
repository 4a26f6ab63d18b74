#include "VxCamera/receive/SilenceWatch.h"

#include <gtest/gtest.h>

namespace receive {
namespace {

using namespace std::chrono_literals;

constexpr IVxClock::Time kStart{1h};

TEST(SilenceWatchTest, ASecondWithoutAPacketIsToldOnce)
{
    SilenceWatch watch;
    watch.Start(kStart);
    EXPECT_EQ(watch.NextDue(), kStart); // the way has to be opened
    EXPECT_FALSE(watch.OnTime(kStart).isSilent);

    EXPECT_EQ(watch.NextDue(), kStart + 1s);
    EXPECT_FALSE(watch.OnTime(kStart + 999ms).isSilent);
    EXPECT_TRUE(watch.OnTime(kStart + 1s).isSilent);
    EXPECT_FALSE(watch.OnTime(kStart + 2s).isSilent);
}

TEST(SilenceWatchTest, APacketEndsASilence)
{
    SilenceWatch watch;
    watch.Start(kStart);
    EXPECT_TRUE(watch.OnTime(kStart + 1s).isSilent);

    watch.OnPacket(kStart + 2s);

    EXPECT_FALSE(watch.OnTime(kStart + 2500ms).isSilent);
    EXPECT_TRUE(watch.OnTime(kStart + 3s).isSilent);
}

TEST(SilenceWatchTest, ASilenceCanBeToldAgainAfterAnotherSecond)
{
    SilenceWatch watch;
    watch.Start(kStart);
    ASSERT_TRUE(watch.OnTime(kStart + 1s).isSilent);

    watch.TellAgain(kStart + 1500ms);

    EXPECT_EQ(watch.NextDue(), kStart + 2500ms);
    EXPECT_FALSE(watch.OnTime(kStart + 2499ms).isSilent);
    EXPECT_TRUE(watch.OnTime(kStart + 2500ms).isSilent);
    EXPECT_FALSE(watch.OnTime(kStart + 9s).isSilent);
}

TEST(SilenceWatchTest, ToldAgainOrNotTheWayIsOpenedWhenItIsDue)
{
    SilenceWatch watch;
    watch.Start(kStart);
    ASSERT_TRUE(watch.OnTime(kStart).opensWay);

    watch.TellAgain(kStart + 2900ms);

    EXPECT_EQ(watch.NextDue(), kStart + 3s);
    EXPECT_TRUE(watch.OnTime(kStart + 3s).opensWay);
}

TEST(SilenceWatchTest, PacketsOfOthersInASilenceAreTold)
{
    SilenceWatch watch;
    watch.Start(kStart);
    watch.OnForeignPacket();
    EXPECT_FALSE(watch.OnTime(kStart + 999ms).isSilent);
    const auto first = watch.OnTime(kStart + 1s);
    EXPECT_TRUE(first.isSilent);
    EXPECT_TRUE(first.haveOthersCome);

    watch.OnPacket(kStart + 2s); // the camera is there again
    const auto second = watch.OnTime(kStart + 3s);
    EXPECT_TRUE(second.isSilent);
    EXPECT_FALSE(second.haveOthersCome);
}

TEST(SilenceWatchTest, PacketsOfOthersThatComeLaterInASilenceAreToldOnce)
{
    SilenceWatch watch;
    watch.Start(kStart);
    EXPECT_FALSE(watch.OnTime(kStart + 1s).haveOthersCome);

    watch.OnForeignPacket();

    const auto later = watch.OnTime(kStart + 5s);
    EXPECT_TRUE(later.isSilent);
    EXPECT_TRUE(later.haveOthersCome);
    watch.OnForeignPacket();
    EXPECT_FALSE(watch.OnTime(kStart + 6s).isSilent);
}

TEST(SilenceWatchTest, TheWayIsOpenedAtOnceAndAgainWhileNothingComes)
{
    SilenceWatch watch;
    watch.Start(kStart);

    EXPECT_TRUE(watch.OnTime(kStart).opensWay);
    EXPECT_FALSE(watch.OnTime(kStart + 2999ms).opensWay); // the second of silence is told, too
    EXPECT_EQ(watch.NextDue(), kStart + 3s);
    EXPECT_TRUE(watch.OnTime(kStart + 3s).opensWay);
    EXPECT_FALSE(watch.OnTime(kStart + 4s).opensWay);
    EXPECT_TRUE(watch.OnTime(kStart + 6s).opensWay);
}

TEST(SilenceWatchTest, TheWayStaysAloneWhilePacketsCome)
{
    SilenceWatch watch;
    watch.Start(kStart);
    ASSERT_TRUE(watch.OnTime(kStart).opensWay);

    for (auto time = kStart; time < kStart + 20s; time += 500ms) {
        watch.OnPacket(time);
        EXPECT_FALSE(watch.OnTime(time).opensWay);
    }
}

TEST(SilenceWatchTest, ANewEndOfTheWayIsOpenedAtOnce)
{
    SilenceWatch watch;
    watch.Start(kStart);
    ASSERT_TRUE(watch.OnTime(kStart).opensWay);

    watch.OpenWayAgain();

    EXPECT_LE(watch.NextDue(), kStart + 1ms);
    EXPECT_TRUE(watch.OnTime(kStart + 1ms).opensWay);
}

TEST(SilenceWatchTest, GroupsAreJoinedAtOnceAndAgainWhileNothingComes)
{
    SilenceWatch watch;
    watch.Start(kStart);

    EXPECT_TRUE(watch.OnTime(kStart).joins);
    EXPECT_FALSE(watch.OnTime(kStart + 2999ms).joins);
    EXPECT_TRUE(watch.OnTime(kStart + 3s).joins);
    watch.OnPacket(kStart + 5s);
    EXPECT_FALSE(watch.OnTime(kStart + 7s).joins);
    EXPECT_TRUE(watch.OnTime(kStart + 8s).joins);
}

TEST(SilenceWatchTest, ANewEndOfTheWayNeitherJoinsNorPutsThatOff)
{
    SilenceWatch watch;
    watch.Start(kStart);
    ASSERT_TRUE(watch.OnTime(kStart).joins);

    watch.OpenWayAgain();
    const auto due = watch.OnTime(kStart + 2900ms);
    EXPECT_TRUE(due.opensWay);
    EXPECT_FALSE(due.joins);

    EXPECT_EQ(watch.NextDue(), kStart + 3s);
    EXPECT_TRUE(watch.OnTime(kStart + 3s).joins);
}

} // namespace
} // namespace receive
