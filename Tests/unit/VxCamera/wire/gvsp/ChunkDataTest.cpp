#include "VxCamera/wire/gvsp/ChunkData.h"

#include "support/Bytes.h"

#include <gtest/gtest.h>

namespace gvsp {
namespace {

TEST(ChunkDataTest, TheListLeadsToTheFirstChunk)
{
    // Three bytes with id 1, none with id 2, four with id A0000003.
    const auto payload =
        bytes::FromHex("010203 00000001 00000003 | 00000002 00000000 | 0A0B0C0D A0000003 00000004");

    EXPECT_EQ(FirstChunkBytes(payload), 3u);
    EXPECT_EQ(FirstChunkBytes(bytes::First(payload, 11)), 3u);
}

TEST(ChunkDataTest, AnEmptyFirstChunkIsOne)
{
    EXPECT_EQ(FirstChunkBytes(bytes::FromHex("00000001 00000000")), 0u);
}

TEST(ChunkDataTest, AListThatIsCutOrLeadsElsewhereIsNone)
{
    const auto payload = bytes::FromHex("010203 00000001 00000003 | 0A0B0C0D A0000003 00000004");

    for (std::size_t size = 0; size < payload.size(); ++size) {
        const bool isFirstAlone = size == 11;
        EXPECT_EQ(FirstChunkBytes(bytes::First(payload, size)).has_value(), isFirstAlone) << size;
    }
    EXPECT_EQ(FirstChunkBytes(bytes::FromHex("00000001 FFFFFFFF")), std::nullopt);
    EXPECT_EQ(FirstChunkBytes(bytes::FromHex("01 00000001 00000000")), std::nullopt);
}

TEST(ChunkDataTest, ZerosAreNoChunk)
{
    const auto payload = bytes::FromHex("010203 00000001 00000003 | 00000000 00000000");

    EXPECT_EQ(FirstChunkBytes(payload), std::nullopt);
    EXPECT_EQ(FirstChunkBytes(bytes::FromHex("00000000 00000000")), std::nullopt);
}

TEST(ChunkDataTest, WhatStandsBehindTheFirstChunkTellsItsLength)
{
    const auto payload = bytes::FromHex("010203 00000001 00000003 | 0A0B");

    EXPECT_TRUE(BeginsWithChunk(payload, 3));
    EXPECT_FALSE(BeginsWithChunk(payload, 2));
    EXPECT_FALSE(BeginsWithChunk(payload, 5));
    EXPECT_FALSE(BeginsWithChunk(payload, 1000));
    for (std::size_t size = 0; size < 11; ++size)
        EXPECT_FALSE(BeginsWithChunk(bytes::First(payload, size), 3)) << size;
}

TEST(ChunkDataTest, TrailersTellTheBytesOfAllChunks)
{
    const auto image = bytes::FromHex("0000 4001 000001E0 00001234 00000007");
    const auto chunkData = bytes::FromHex("0000 0004 00001234");
    const auto extended = bytes::FromHex("0000 0005 00001234 000001E0 00000007");

    EXPECT_EQ(ParseTrailerChunkBytes(image), 0x1234u);
    EXPECT_EQ(ParseTrailerChunkBytes(chunkData), 0x1234u);
    EXPECT_EQ(ParseTrailerChunkBytes(extended), 0x1234u);
    for (std::size_t size = 0; size < 12; ++size)
        EXPECT_EQ(ParseTrailerChunkBytes(bytes::First(image, size)), 0u) << size;
    for (std::size_t size = 0; size < 8; ++size) {
        EXPECT_EQ(ParseTrailerChunkBytes(bytes::First(chunkData, size)), 0u) << size;
        EXPECT_EQ(ParseTrailerChunkBytes(bytes::First(extended, size)), 0u) << size;
    }
}

TEST(ChunkDataTest, TrailersWithoutChunksTellNothing)
{
    EXPECT_EQ(ParseTrailerChunkBytes(bytes::FromHex("0000 0001 000001E0 00001234")), 0u);
    EXPECT_EQ(ParseTrailerChunkBytes(bytes::FromHex("0000 4006 00001234 00001234")), 0u);
}

TEST(ChunkDataTest, WritesTheGoldenBytes)
{
    bytes::Vector memory(24);
    VxByteWriter out(memory);

    WriteChunkTrailer(out, 0xA0000003, 4);
    WriteTrailerChunkFields(out, 0x1234, 7);
    WriteChunkDataTrailer(out, 0x1234);

    EXPECT_TRUE(out.Ok());
    EXPECT_EQ(memory, bytes::FromHex("A0000003 00000004 | 00001234 00000007 | 0000 0004 00001234"));
}

} // namespace
} // namespace gvsp
