#include "VxCamera/wire/gvsp/Leader.h"

#include "support/Bytes.h"

#include <gtest/gtest.h>

namespace {

using namespace gvsp;
using bytes::ErrorOf;
using bytes::First;
using bytes::FromHex;

const auto kStart = FromHex("12 80 40 01 01 23 45 67 89 AB CD EF");

TEST(LeaderTest, ReadsEveryField)
{
    const auto start = ParseLeaderStart(kStart);

    ASSERT_TRUE(start);
    EXPECT_EQ(start->fieldInfo, 0x12);
    EXPECT_EQ(start->genericFlags, 0x80);
    EXPECT_EQ(start->payloadType.bits, 0x4001);
    EXPECT_EQ(start->timestampTicks, 0x0123456789ABCDEFu);
}

TEST(LeaderTest, LeavesAloneWhatFollows)
{
    EXPECT_TRUE(ParseLeaderStart(bytes::Join(kStart, FromHex("FF FF FF"))));
}

TEST(LeaderTest, RejectsEveryShorterLength)
{
    for (std::size_t length = 0; length < kStart.size(); ++length)
        EXPECT_EQ(ErrorOf(ParseLeaderStart(First(kStart, length))), VxError::Truncated) << length;
}

TEST(LeaderTest, ReadsBackWhatItWrites)
{
    bytes::Random random;
    for (int i = 0; i < 500; ++i) {
        const LeaderStart written{.fieldInfo = random.Number<std::uint8_t>(),
                                  .genericFlags = random.Number<std::uint8_t>(),
                                  .payloadType = {random.Number<std::uint16_t>()},
                                  .timestampTicks = random.Number<std::uint64_t>()};
        bytes::Vector memory(kLeaderStartBytes);
        VxByteWriter out(memory);

        WriteLeaderStart(out, written);

        ASSERT_TRUE(out.Ok());
        const auto read = ParseLeaderStart(out.Written());
        ASSERT_TRUE(read);
        EXPECT_EQ(*read, written);
    }
}

} // namespace
