#include "VxCamera/genapi/node/BitField.h"

#include <gtest/gtest.h>

#include <array>
#include <random>

namespace genapi {
namespace {

BitField Field(unsigned lsb, unsigned msb, unsigned bits, ByteOrder order,
               Signedness sign = Signedness::Unsigned)
{
    BitField field = BitField::FromBitNumbers(lsb, msb, bits, order);
    field.signedness = sign;
    return field;
}

constexpr std::uint64_t kBig = 0x12345678;    // bytes 12 34 56 78 as a big-endian number
constexpr std::uint64_t kLittle = 0x78563412; // and as a little-endian one

TEST(BitFieldTest, CountsBigEndianBitsFromTheMostSignificant)
{
    EXPECT_EQ(Field(31, 24, 32, ByteOrder::BigEndian).Extract(kBig), 0x78);
    EXPECT_EQ(Field(15, 8, 32, ByteOrder::BigEndian).Extract(kBig), 0x34);
    EXPECT_EQ(Field(3, 3, 32, ByteOrder::BigEndian).Extract(kBig), 1);
    EXPECT_EQ(Field(0, 0, 32, ByteOrder::BigEndian).Extract(0x80000000), 1);
    EXPECT_EQ(Field(31, 16, 32, ByteOrder::BigEndian).Extract(kBig), 0x5678);
}

TEST(BitFieldTest, CountsLittleEndianBitsFromTheLeastSignificant)
{
    EXPECT_EQ(Field(8, 15, 32, ByteOrder::LittleEndian).Extract(kLittle), 0x34);
    EXPECT_EQ(Field(0, 3, 32, ByteOrder::LittleEndian, Signedness::Signed).Extract(kLittle), 2);
    EXPECT_EQ(Field(0, 0, 8, ByteOrder::LittleEndian).Extract(0x01), 1);
}

TEST(BitFieldTest, TakesSwappedBitNumbers)
{
    EXPECT_EQ(Field(15, 8, 32, ByteOrder::LittleEndian).Extract(kLittle), 0x34);
    EXPECT_EQ(Field(24, 31, 32, ByteOrder::BigEndian).Extract(kBig), 0x78);
}

TEST(BitFieldTest, ExtendsTheSign)
{
    EXPECT_EQ(Field(31, 28, 32, ByteOrder::BigEndian, Signedness::Signed).Extract(0x0F), -1);
    EXPECT_EQ(Field(0, 63, 64, ByteOrder::LittleEndian, Signedness::Signed).Extract(~0ull), -1);
}

TEST(BitFieldTest, LeavesOtherBitsAlone)
{
    EXPECT_EQ(Field(8, 15, 32, ByteOrder::LittleEndian).Insert(0x78563412, 0xAB), 0x7856AB12u);
    EXPECT_EQ(Field(0, 3, 32, ByteOrder::LittleEndian).Insert(0xFFFFFFFF, -1), 0xFFFFFFFFu);
    EXPECT_EQ(Field(0, 0, 32, ByteOrder::BigEndian).Insert(0xFFFFFFFF, 0), 0x7FFFFFFFu);
}

TEST(BitFieldTest, KnowsItsLimits)
{
    const BitField four = Field(0, 3, 32, ByteOrder::LittleEndian);
    EXPECT_EQ(four.Minimum(), 0);
    EXPECT_EQ(four.Maximum(), 15);
    const BitField fourSigned = Field(0, 3, 32, ByteOrder::LittleEndian, Signedness::Signed);
    EXPECT_EQ(fourSigned.Minimum(), -8);
    EXPECT_EQ(fourSigned.Maximum(), 7);
    EXPECT_EQ(Field(0, 63, 64, ByteOrder::LittleEndian).Maximum(), INT64_MAX);
    EXPECT_EQ(Field(0, 62, 64, ByteOrder::LittleEndian).Maximum(), INT64_MAX);
    EXPECT_EQ(Field(0, 63, 64, ByteOrder::LittleEndian, Signedness::Signed).Minimum(), INT64_MIN);
    EXPECT_EQ(Field(0, 63, 64, ByteOrder::LittleEndian, Signedness::Signed).Maximum(), INT64_MAX);
}

TEST(BitFieldTest, ReadsBackWhatItInserted)
{
    std::mt19937_64 random(7);
    for (int i = 0; i < 10000; ++i) {
        const auto bytes = static_cast<unsigned>(random() % 8 + 1);
        const auto a = static_cast<unsigned>(random() % (bytes * 8));
        const auto b = static_cast<unsigned>(random() % (bytes * 8));
        const BitField field =
            Field(a, b, bytes * 8, i % 2 == 0 ? ByteOrder::BigEndian : ByteOrder::LittleEndian,
                  i % 3 == 0 ? Signedness::Signed : Signedness::Unsigned);
        const std::uint64_t before = random();
        const std::int64_t value = field.Extract(random());

        const std::uint64_t after = field.Insert(before, value);

        EXPECT_EQ(field.Extract(after), value);
        EXPECT_EQ(field.Insert(after, field.Extract(before)), before);
    }
}

TEST(BitFieldTest, LoadsAndStoresWordsOfEveryLength)
{
    constexpr std::array bytes{std::byte{0x12}, std::byte{0x34}, std::byte{0x56}};

    EXPECT_EQ(LoadWord(bytes, ByteOrder::BigEndian), 0x123456u);
    EXPECT_EQ(LoadWord(bytes, ByteOrder::LittleEndian), 0x563412u);

    for (std::size_t size = 1; size <= 8; ++size) {
        std::array<std::byte, 8> memory{};
        const auto used = std::span(memory).first(size);
        const std::uint64_t value = 0x8877665544332211u & (size == 8 ? ~0ull : (1ull << (8 * size)) - 1);
        for (const ByteOrder order : {ByteOrder::BigEndian, ByteOrder::LittleEndian}) {
            StoreWord(used, value, order);
            EXPECT_EQ(LoadWord(used, order), value);
        }
    }
}

} // namespace
} // namespace genapi
