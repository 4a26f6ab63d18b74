#include "VxSimulator/stream/PacketRun.h"

#include "support/Bytes.h"

#include <gtest/gtest.h>

namespace {

using bytes::Copy;
using bytes::FromHex;
using simulator::PacketRun;

TEST(PacketRunTest, TakesPacketsOfOneLengthAndAShorterOneAsTheLast)
{
    PacketRun run(64);
    for (const char* packet : {"010203", "040506", "07"}) {
        ASSERT_TRUE(run.Takes(FromHex(packet)));
        run.Add(FromHex(packet));
    }

    EXPECT_FALSE(run.Takes(FromHex("08"))); // the shorter one ended it
    EXPECT_EQ(run.Count(), 3u);
    EXPECT_EQ(run.PacketBytes(), 3u);
    EXPECT_EQ(Copy(run.Bytes()), FromHex("01020304050607"));
}

TEST(PacketRunTest, TakesNoLongerPacket)
{
    PacketRun run(64);
    run.Add(FromHex("0102"));

    EXPECT_FALSE(run.Takes(FromHex("010203")));
    run.Clear();
    EXPECT_TRUE(run.Takes(FromHex("010203")));
}

TEST(PacketRunTest, HoldsNoMoreThanItMay)
{
    PacketRun alone(1);
    alone.Add(FromHex("01"));
    EXPECT_FALSE(alone.Takes(FromHex("02")));

    PacketRun large(64);
    const bytes::Vector packet(9000);
    while (large.Takes(packet))
        large.Add(packet);
    EXPECT_EQ(large.Count(), 7u); // 63,000 bytes; the next ones would be more than a datagram has
}

} // namespace
