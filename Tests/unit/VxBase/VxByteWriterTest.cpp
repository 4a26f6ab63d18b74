#include "VxBase/VxByteWriter.h"

#include "support/Bytes.h"

#include <gtest/gtest.h>

namespace {

using bytes::FromHex;

TEST(VxByteWriterTest, WritesOneValueAfterTheOther)
{
    bytes::Vector memory(20);
    VxByteWriter out(memory);

    out.U8(0x01);
    out.U16be(0x0203);
    out.U32be(0x04050607);
    out.U64be(0x08090A0B0C0D0E0F);

    EXPECT_TRUE(out.Ok());
    EXPECT_EQ(bytes::Copy(out.Written()), FromHex("01 02 03 04 05 06 07 08 09 0A 0B 0C 0D 0E 0F"));
}

TEST(VxByteWriterTest, WritesBytesAndZeros)
{
    bytes::Vector memory(6, std::byte{0xEE});
    VxByteWriter out(memory);

    out.Bytes(FromHex("01 02"));
    out.Zeros(3);

    EXPECT_EQ(bytes::Copy(out.Written()), FromHex("01 02 00 00 00"));
    EXPECT_EQ(memory.back(), std::byte{0xEE});
}

TEST(VxByteWriterTest, ATextIsCutOrFilledToItsField)
{
    bytes::Vector memory(8, std::byte{0xEE});
    VxByteWriter out(memory);

    out.Text("ab", 4);
    out.Text("abcde", 4);

    EXPECT_EQ(bytes::Copy(out.Written()), FromHex("61 62 00 00 61 62 63 64"));
    EXPECT_TRUE(out.Ok());
}

TEST(VxByteWriterTest, WhatDoesNotFitIsNotWrittenAndMakesEveryLaterWriteFail)
{
    bytes::Vector memory(3, std::byte{0xEE});
    VxByteWriter out(memory);
    out.U8(1);

    out.U32be(0x02030405);
    out.U8(6);
    out.Zeros(1);
    out.Bytes(FromHex("07"));
    out.Text("a", 1);

    EXPECT_FALSE(out.Ok());
    EXPECT_EQ(bytes::Copy(out.Written()), FromHex("01"));
    EXPECT_EQ(memory, FromHex("01 EE EE"));
}

TEST(VxByteWriterTest, FillsItsMemoryToTheLastByte)
{
    bytes::Vector memory(4);
    VxByteWriter out(memory);

    out.U32be(0x01020304);
    EXPECT_TRUE(out.Ok());
    out.U8(5);
    EXPECT_FALSE(out.Ok());
    EXPECT_EQ(memory, FromHex("01 02 03 04"));
}

TEST(VxByteWriterTest, ASizeThatOverflowsDoesNotLeaveTheMemory)
{
    bytes::Vector memory(4);
    VxByteWriter out(memory);
    out.U8(1);

    out.Zeros(SIZE_MAX);

    EXPECT_FALSE(out.Ok());
}

} // namespace
