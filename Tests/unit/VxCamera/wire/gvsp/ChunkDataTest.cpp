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

} // namespace
} // namespace gvsp
