#include "VxBase/VxByteReader.h"

#include "support/Bytes.h"

#include <gtest/gtest.h>

namespace {

using bytes::FromHex;

TEST(VxByteReaderTest, ReadsOneValueAfterTheOther)
{
    const auto memory = FromHex("01 | 02 03 | 04 05 06 07 | 08 09 0A 0B 0C 0D 0E 0F | 10");
    VxByteReader in(memory);

    EXPECT_EQ(in.U8(), 0x01);
    EXPECT_EQ(in.U16be(), 0x0203);
    EXPECT_EQ(in.U32be(), 0x04050607u);
    EXPECT_EQ(in.U64be(), 0x08090A0B0C0D0E0Fu);
    EXPECT_EQ(bytes::Copy(in.Rest()), FromHex("10"));
    EXPECT_TRUE(in.Ok());
}

TEST(VxByteReaderTest, ReadsLittleEndianValues)
{
    const auto memory = FromHex("01 02 | 03 04 05 06 | 07");
    VxByteReader in(memory);

    EXPECT_EQ(in.U16le(), 0x0201);
    EXPECT_EQ(in.U32le(), 0x06050403u);
    EXPECT_TRUE(in.Ok());
    EXPECT_EQ(in.U16le(), 0u);
    EXPECT_FALSE(in.Ok());
}

TEST(VxByteReaderTest, GivesBytesAndSkipsBytes)
{
    const auto memory = FromHex("01 02 03 04 05");
    VxByteReader in(memory);

    EXPECT_EQ(bytes::Copy(in.Bytes(2)), FromHex("01 02"));
    in.Skip(1);
    EXPECT_EQ(bytes::Copy(in.Bytes(2)), FromHex("04 05"));
    EXPECT_TRUE(in.Bytes(0).empty());
    EXPECT_TRUE(in.Ok());
}

TEST(VxByteReaderTest, AValueThatIsCutIsZeroAndMakesEveryLaterReadFail)
{
    const auto memory = FromHex("01 02 03");
    VxByteReader in(memory);

    EXPECT_EQ(in.U32be(), 0u);
    EXPECT_FALSE(in.Ok());
    EXPECT_EQ(in.U8(), 0) << "although there are bytes";
    EXPECT_TRUE(in.Bytes(1).empty());
    EXPECT_TRUE(in.Rest().empty());
}

TEST(VxByteReaderTest, ASkipBeyondTheEndFails)
{
    const auto memory = FromHex("01 02 03");
    VxByteReader in(memory);

    in.Skip(4);

    EXPECT_FALSE(in.Ok());
}

TEST(VxByteReaderTest, ASizeThatOverflowsDoesNotLeaveTheBytes)
{
    const auto memory = FromHex("01 02 03");
    VxByteReader in(memory);
    in.Skip(1);

    EXPECT_TRUE(in.Bytes(SIZE_MAX).empty());
    EXPECT_FALSE(in.Ok());
}

TEST(VxByteReaderTest, ATextEndsAtItsFirstNulButTakesItsWholeField)
{
    const auto memory = FromHex("61 62 00 63 | 64");
    VxByteReader in(memory);

    EXPECT_EQ(in.Text(4), "ab");
    EXPECT_EQ(in.U8(), 0x64);
}

TEST(VxByteReaderTest, ATextMayFillItsField)
{
    const auto memory = FromHex("61 62 63");
    VxByteReader in(memory);

    EXPECT_EQ(in.Text(3), "abc");
    EXPECT_TRUE(in.Ok());
}

TEST(VxByteReaderTest, ATextThatIsCutIsEmpty)
{
    const auto memory = FromHex("61 62 63");
    VxByteReader in(memory);

    EXPECT_EQ(in.Text(4), "");
    EXPECT_FALSE(in.Ok());
}

} // namespace
