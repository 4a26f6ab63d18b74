#include "VxCamera/wire/gvcp/Command.h"

#include <gtest/gtest.h>

namespace {

using namespace gvcp;

TEST(CommandTest, AckIsTheNextNumber)
{
    EXPECT_EQ(AckOf(Command::Discovery), Ack::Discovery);
    EXPECT_EQ(AckOf(Command::ForceIp), Ack::ForceIp);
    EXPECT_EQ(AckOf(Command::ReadReg), Ack::ReadReg);
    EXPECT_EQ(AckOf(Command::WriteReg), Ack::WriteReg);
    EXPECT_EQ(AckOf(Command::ReadMem), Ack::ReadMem);
    EXPECT_EQ(AckOf(Command::WriteMem), Ack::WriteMem);
}

TEST(CommandTest, RequestIdSkipsZeroWhenItWraps)
{
    EXPECT_EQ(NextRequestId(1), 2);
    EXPECT_EQ(NextRequestId(0xFFFE), 0xFFFF);
    EXPECT_EQ(NextRequestId(0xFFFF), 1);
}

TEST(CommandTest, LimitsFollowFromTheSmallestDatagramEveryHostTakes)
{
    EXPECT_EQ(kMaxDatagramBytes, 548u);
    EXPECT_EQ(kMaxPayloadBytes, 540u);
    EXPECT_EQ(kMaxMemoryBytes, 536u);
    EXPECT_EQ(kMaxReadRegisters, 135u);
    EXPECT_EQ(kMaxWriteRegisters, 67u);
}

} // namespace
