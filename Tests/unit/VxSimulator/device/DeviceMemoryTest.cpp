#include "VxSimulator/device/DeviceMemory.h"

#include "support/Bytes.h"

#include <gtest/gtest.h>

namespace {

using namespace simulator;
using bytes::FromHex;
using gvcp::Status;
using Access = DeviceMemory::Access;

class DeviceMemoryTest : public testing::Test {
protected:
    DeviceMemoryTest()
    {
        m_memory.Add(0x100, 8, Access::ReadWrite);
        m_memory.Add(0x108, 4, Access::ReadOnly); // next to the first
        m_memory.Add(0x200, 4, Access::WriteOnly);
    }

    Status Read(std::uint32_t address, std::size_t size)
    {
        m_read.assign(size, std::byte{0xEE});
        return m_memory.Read(address, m_read);
    }

    DeviceMemory m_memory;
    bytes::Vector m_read;
};

TEST_F(DeviceMemoryTest, IsZeroAtFirst)
{
    EXPECT_EQ(Read(0x100, 8), Status::Success);
    EXPECT_EQ(m_read, bytes::Vector(8));
}

TEST_F(DeviceMemoryTest, KeepsNumbersWithTheirMostSignificantByteFirst)
{
    m_memory.Store32(0x100, 0x12345678);

    EXPECT_EQ(Read(0x100, 4), Status::Success);
    EXPECT_EQ(m_read, FromHex("12 34 56 78"));
    EXPECT_EQ(m_memory.Load32(0x100), 0x12345678u);
}

TEST_F(DeviceMemoryTest, KeepsFloatingPointNumbersWithTheirMostSignificantByteFirst)
{
    m_memory.StoreDouble(0x100, 25.0);
    EXPECT_EQ(Read(0x100, 8), Status::Success);
    EXPECT_EQ(m_read, FromHex("40 39 00 00 00 00 00 00"));
    EXPECT_EQ(m_memory.LoadDouble(0x100), 25.0);

    m_memory.StoreFloat(0x108, 1.0F);
    EXPECT_EQ(Read(0x108, 4), Status::Success);
    EXPECT_EQ(m_read, FromHex("3F 80 00 00"));
}

TEST_F(DeviceMemoryTest, ATextFillsItsPlaceWithNul)
{
    m_memory.StoreText(0x100, 8, "previous");
    m_memory.StoreText(0x100, 8, "abc");
    EXPECT_EQ(Read(0x100, 8), Status::Success);
    EXPECT_EQ(m_read, FromHex("61 62 63 00 00 00 00 00"));
}

TEST_F(DeviceMemoryTest, ATextThatIsTooLongIsCut)
{
    m_memory.StoreText(0x100, 8, "123456789");
    EXPECT_EQ(Read(0x100, 12), Status::Success);
    EXPECT_EQ(m_read, FromHex("31 32 33 34 35 36 37 38 00 00 00 00"));
}

TEST_F(DeviceMemoryTest, ReadsOverNeighbouringBlocks)
{
    m_memory.Store32(0x104, 1);
    m_memory.Store32(0x108, 2);

    EXPECT_EQ(Read(0x104, 8), Status::Success);
    EXPECT_EQ(m_read, FromHex("00 00 00 01 00 00 00 02"));
}

TEST_F(DeviceMemoryTest, RefusesGaps)
{
    EXPECT_EQ(Read(0x0FC, 4), Status::InvalidAddress);
    EXPECT_EQ(Read(0x10C, 4), Status::InvalidAddress);
    EXPECT_EQ(Read(0x108, 8), Status::InvalidAddress);
    EXPECT_EQ(m_memory.CheckWrite(0x300, 4), Status::InvalidAddress);
}

TEST_F(DeviceMemoryTest, RefusesToGoBeyondTheLastAddress)
{
    DeviceMemory memory;
    memory.Add(0xFFFFFFF8, 8, Access::ReadWrite);
    bytes::Vector out(12);

    EXPECT_EQ(memory.Read(0xFFFFFFFC, std::span(out).first(4)), Status::Success);
    EXPECT_EQ(memory.Read(0xFFFFFFF8, out), Status::InvalidAddress);
}

TEST_F(DeviceMemoryTest, RefusesWhatIsNotAligned)
{
    EXPECT_EQ(Read(0x102, 4), Status::BadAlignment);
    EXPECT_EQ(Read(0x100, 3), Status::BadAlignment);
    EXPECT_EQ(m_memory.CheckWrite(0x101, 4), Status::BadAlignment);
    EXPECT_EQ(m_memory.CheckWrite(0x100, 5), Status::BadAlignment);
}

TEST_F(DeviceMemoryTest, EnforcesAccess)
{
    EXPECT_EQ(Read(0x200, 4), Status::AccessDenied);
    EXPECT_EQ(m_memory.CheckWrite(0x200, 4), Status::Success);
    EXPECT_EQ(m_memory.CheckWrite(0x108, 4), Status::WriteProtect);
    EXPECT_EQ(m_memory.CheckWrite(0x104, 8), Status::WriteProtect) << "the second half";
    EXPECT_EQ(m_memory.CheckWrite(0x100, 8), Status::Success);
}

TEST_F(DeviceMemoryTest, RoundsABlockUpToWholeWords)
{
    m_memory.Add(0x300, 5, Access::ReadOnly);

    EXPECT_EQ(Read(0x304, 4), Status::Success);
    EXPECT_EQ(Read(0x308, 4), Status::InvalidAddress);
}

} // namespace
