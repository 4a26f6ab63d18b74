#include "VxCamera/wire/gvsp/BlockLayout.h"

#include <gtest/gtest.h>

namespace {

using namespace gvsp;

TEST(BlockLayoutTest, StandardPacketsOf1500BytesCarry1464)
{
    EXPECT_EQ(PayloadBytesPerPacket(1500, IdMode::Standard), 1464u);
    EXPECT_EQ(PayloadPackets(640 * 480, 1464), 210u);
}

TEST(BlockLayoutTest, ExtendedPacketsOf1500BytesCarry1452)
{
    EXPECT_EQ(PayloadBytesPerPacket(1500, IdMode::Extended), 1452u);
    EXPECT_EQ(PayloadPackets(640 * 480, 1452), 212u);
}

TEST(BlockLayoutTest, APacketWithoutRoomCarriesNothing)
{
    EXPECT_EQ(PayloadBytesPerPacket(0, IdMode::Standard), 0u);
    EXPECT_EQ(PayloadBytesPerPacket(36, IdMode::Standard), 0u);
    EXPECT_EQ(PayloadBytesPerPacket(37, IdMode::Standard), 1u);
    EXPECT_EQ(PayloadBytesPerPacket(48, IdMode::Extended), 0u);
}

TEST(BlockLayoutTest, ABlockThatFillsItsPacketsNeedsNoFurtherOne)
{
    EXPECT_EQ(PayloadPackets(0, 1464), 0u);
    EXPECT_EQ(PayloadPackets(1464, 1464), 1u);
    EXPECT_EQ(PayloadPackets(1465, 1464), 2u);
}

TEST(BlockLayoutTest, PayloadBeginsWithPacketOne)
{
    EXPECT_EQ(PayloadOffset(1, 1464), 0u);
    EXPECT_EQ(PayloadOffset(210, 1464), 640u * 480 - 1224);
}

TEST(BlockLayoutTest, OffsetsDoNotOverflow32Bits)
{
    EXPECT_EQ(PayloadOffset(0xFFFFFFFF, 65536), 0xFFFFFFFEull * 65536);
}

TEST(BlockLayoutTest, BlockIdsSkipZero)
{
    EXPECT_EQ(NextBlockId(1, IdMode::Standard), 2u);
    EXPECT_EQ(NextBlockId(65535, IdMode::Standard), 1u);
    EXPECT_EQ(NextBlockId(65535, IdMode::Extended), 65536u);
    EXPECT_EQ(NextBlockId(UINT64_MAX, IdMode::Extended), 1u);
}

TEST(BlockLayoutTest, StepsCountBlocksAcrossTheWrap)
{
    EXPECT_EQ(BlockIdStep(5, 5, IdMode::Standard), 0);
    EXPECT_EQ(BlockIdStep(5, 7, IdMode::Standard), 2);
    EXPECT_EQ(BlockIdStep(7, 5, IdMode::Standard), -2);
    EXPECT_EQ(BlockIdStep(65535, 1, IdMode::Standard), 1);
    EXPECT_EQ(BlockIdStep(1, 65535, IdMode::Standard), -1);
    EXPECT_EQ(BlockIdStep(65530, 10, IdMode::Standard), 15);
}

TEST(BlockLayoutTest, ExtendedStepsHaveNoWrapAt16Bits)
{
    EXPECT_EQ(BlockIdStep(65535, 65536, IdMode::Extended), 1);
    EXPECT_EQ(BlockIdStep(65535, 1, IdMode::Extended), -65534);
    EXPECT_EQ(BlockIdStep(0x100000000, 0x100000003, IdMode::Extended), 3);
}

TEST(BlockLayoutTest, StandardStepsOfExtendedIdsAreTakenModulo)
{
    EXPECT_EQ(BlockIdStep(0x8000'0000'0000'0000, 0x7FFF'FFFF'FFFF'FFFF, IdMode::Standard), -1);
    EXPECT_EQ(BlockIdStep(65535ull * 7 + 3, 5, IdMode::Standard), 2);
}

TEST(BlockLayoutTest, AStepIsOneForEveryNextId)
{
    std::uint64_t id = 1;
    for (int i = 0; i < 70000; ++i) {
        const std::uint64_t next = NextBlockId(id, IdMode::Standard);
        ASSERT_EQ(BlockIdStep(id, next, IdMode::Standard), 1) << id;
        id = next;
    }
}

} // namespace
