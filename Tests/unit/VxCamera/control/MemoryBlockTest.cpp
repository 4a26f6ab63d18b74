#include "VxCamera/control/MemoryBlock.h"

#include <gtest/gtest.h>

#include <ostream>

namespace control {

void PrintTo(const MemoryBlock& block, std::ostream* out)
{
    *out << std::hex << block.address << '+' << block.bytes << " skip " << block.skipBytes << " want "
         << block.wantedBytes;
}

namespace {

TEST(MemoryBlockTest, AlignedMemoryIsTakenInBlocksOf512)
{
    EXPECT_EQ(FirstBlock(0x200, 512), (MemoryBlock{0x200, 512, 0, 512}));
    EXPECT_EQ(FirstBlock(0x200, 2000), (MemoryBlock{0x200, 512, 0, 512}));
}

TEST(MemoryBlockTest, AnOddLengthIsRoundedUpToFour)
{
    EXPECT_EQ(FirstBlock(0x200, 1), (MemoryBlock{0x200, 4, 0, 1}));
    EXPECT_EQ(FirstBlock(0x200, 511), (MemoryBlock{0x200, 512, 0, 511}));
}

TEST(MemoryBlockTest, AnOddAddressBeginsAtTheWordBeforeIt)
{
    EXPECT_EQ(FirstBlock(0x203, 1), (MemoryBlock{0x200, 4, 3, 1}));
    EXPECT_EQ(FirstBlock(0x202, 4), (MemoryBlock{0x200, 8, 2, 4}));
    EXPECT_EQ(FirstBlock(0x201, 2000), (MemoryBlock{0x200, 512, 1, 511}));
}

TEST(MemoryBlockTest, TheLastBytesOfTheAddressSpaceFit)
{
    EXPECT_EQ(FirstBlock(0xFFFFFFFD, 3), (MemoryBlock{0xFFFFFFFC, 4, 1, 3}));
}

TEST(MemoryBlockTest, OnlyThirtyTwoBitsAreAddressable)
{
    EXPECT_TRUE(IsAddressable(0xFFFFFFFC, 4));
    EXPECT_FALSE(IsAddressable(0xFFFFFFFC, 5));
    EXPECT_FALSE(IsAddressable(0x100000000, 1));
    EXPECT_FALSE(IsAddressable(0xFFFFFFFFFFFFFFFF, 4));
    EXPECT_TRUE(IsAddressable(0, 0));
}

} // namespace
} // namespace control
