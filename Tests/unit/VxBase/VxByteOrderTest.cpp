#include "VxBase/VxByteOrder.h"

#include "support/Bytes.h"

#include <gtest/gtest.h>

namespace {

using bytes::FromHex;

const auto kBytes = FromHex("12 34 56 78 9A BC DE F0");

template <std::size_t size>
std::span<const std::byte, size> FirstBytes()
{
    return std::span<const std::byte>(kBytes).first<size>();
}

TEST(VxByteOrderTest, BigEndianHasTheMostSignificantByteFirst)
{
    EXPECT_EQ(VxLoadBe<std::uint8_t>(FirstBytes<1>()), 0x12);
    EXPECT_EQ(VxLoadBe<std::uint16_t>(FirstBytes<2>()), 0x1234);
    EXPECT_EQ(VxLoadBe<std::uint32_t>(FirstBytes<4>()), 0x12345678u);
    EXPECT_EQ(VxLoadBe<std::uint64_t>(FirstBytes<8>()), 0x123456789ABCDEF0u);
}

TEST(VxByteOrderTest, LittleEndianHasTheLeastSignificantByteFirst)
{
    EXPECT_EQ(VxLoadLe<std::uint8_t>(FirstBytes<1>()), 0x12);
    EXPECT_EQ(VxLoadLe<std::uint16_t>(FirstBytes<2>()), 0x3412);
    EXPECT_EQ(VxLoadLe<std::uint32_t>(FirstBytes<4>()), 0x78563412u);
    EXPECT_EQ(VxLoadLe<std::uint64_t>(FirstBytes<8>()), 0xF0DEBC9A78563412u);
}

TEST(VxByteOrderTest, StoresBigEndian)
{
    bytes::Vector out(8);
    VxStoreBe<std::uint64_t>(std::span(out).first<8>(), 0x123456789ABCDEF0);
    EXPECT_EQ(out, kBytes);

    VxStoreBe<std::uint16_t>(std::span(out).first<2>(), 0xAABB);
    EXPECT_EQ(out, FromHex("AA BB 56 78 9A BC DE F0"));
}

TEST(VxByteOrderTest, StoresLittleEndian)
{
    bytes::Vector out(8);
    VxStoreLe<std::uint64_t>(std::span(out).first<8>(), 0xF0DEBC9A78563412);
    EXPECT_EQ(out, kBytes);

    VxStoreLe<std::uint32_t>(std::span(out).first<4>(), 0xAABBCCDD);
    EXPECT_EQ(out, FromHex("DD CC BB AA 9A BC DE F0"));
}

TEST(VxByteOrderTest, LoadsWhatItStored)
{
    bytes::Random random;
    bytes::Vector memory(8);
    for (int i = 0; i < 1000; ++i) {
        const auto value = random.Number<std::uint64_t>();
        const auto place = std::span(memory).first<8>();
        VxStoreBe<std::uint64_t>(place, value);
        EXPECT_EQ(VxLoadBe<std::uint64_t>(place), value);
        VxStoreLe<std::uint64_t>(place, value);
        EXPECT_EQ(VxLoadLe<std::uint64_t>(place), value);
    }
}

} // namespace
