#include "VxCamera/receive/BlockGeometry.h"

#include "StreamPackets.h"
#include "support/Bytes.h"

#include <gtest/gtest.h>

namespace receive {
namespace {

BlockGeometry Read(const gvsp::ImageLeader& leader)
{
    std::vector<std::byte> data(gvsp::kImageLeaderBytes);
    VxByteWriter out(data);
    gvsp::WriteImageLeader(out, leader);
    return ReadGeometry(data);
}

// Mono8 640 x 480 at (8, 4), 2 bytes behind each line and 6 behind the picture, tick 0x123456789.
const auto kLeader =
    bytes::FromHex("0000 0001 00000001 23456789 01080001 00000280 000001E0 00000008 00000004 0002 0006");

TEST(BlockGeometryTest, ReadsTheFieldsOfALeader)
{
    const BlockGeometry geometry = ReadGeometry(kLeader);

    EXPECT_EQ(geometry.code, VxError::Ok);
    EXPECT_EQ(geometry.timestampTicks, 0x123456789u);
    EXPECT_EQ(geometry.pixelFormat, 0x01080001u);
    EXPECT_EQ(geometry.widthPx, 640u);
    EXPECT_EQ(geometry.heightPx, 480u);
    EXPECT_EQ(geometry.offsetXPx, 8u);
    EXPECT_EQ(geometry.offsetYPx, 4u);
    EXPECT_EQ(geometry.linePaddingBytes, 2u);
}

TEST(BlockGeometryTest, PaddingCountsOnTheWireButNotBehindTheLastPixel)
{
    const BlockGeometry geometry = ReadGeometry(kLeader);

    EXPECT_EQ(geometry.imageBytes, 642u * 480u + 6u);
    EXPECT_EQ(geometry.memoryBytes, 642u * 480u - 2u);
}

TEST(BlockGeometryTest, ACutLeaderIsTruncated)
{
    for (std::size_t size = 0; size < kLeader.size(); ++size)
        EXPECT_EQ(ReadGeometry(bytes::First(kLeader, size)).code, VxError::Truncated) << size;
}

TEST(BlockGeometryTest, AnotherPayloadIsNoImage)
{
    std::vector<std::byte> data = kLeader;
    data[3] = std::byte{gvsp::PayloadType::kJpeg};

    EXPECT_EQ(ReadGeometry(data).code, VxError::NotAnImage);
}

TEST(BlockGeometryTest, APictureWithoutPixelsIsInvalid)
{
    EXPECT_EQ(Read(StreamPackets::Mono8(0, 480)).code, VxError::InvalidData);
    EXPECT_EQ(Read(StreamPackets::Mono8(640, 0)).code, VxError::InvalidData);
    auto leader = StreamPackets::Mono8(640, 480);
    leader.pixelFormat = 0; // no bits per pixel
    EXPECT_EQ(Read(leader).code, VxError::InvalidData);
}

TEST(BlockGeometryTest, SizesThatNoMemoryHasAreInvalid)
{
    auto leader = StreamPackets::Mono8(0xFFFFFFFF, 0xFFFFFFFF);
    leader.pixelFormat = 0x02300000; // 48 bits per pixel

    EXPECT_EQ(Read(leader).code, VxError::InvalidData);
}

TEST(BlockGeometryTest, PackedLinesThatRunTogetherTakeLess)
{
    auto leader = StreamPackets::Mono8(3, 3);
    leader.pixelFormat = 0x010A0046; // Mono10p: 30 bits a line

    const BlockGeometry geometry = Read(leader);

    EXPECT_EQ(geometry.imageBytes, 3u * 4u); // each line rounded up
    EXPECT_EQ(geometry.leastImageBytes, 3u * 4u);
    EXPECT_EQ(geometry.joinedImageBytes, 12u); // 90 bits in one stream take as much
    EXPECT_FALSE(geometry.IsJoined(12));
}

TEST(BlockGeometryTest, LinesThatRunTogetherAreRoundedUpOnce)
{
    auto leader = StreamPackets::Mono8(3, 5);
    leader.pixelFormat = 0x010A0046; // Mono10p: 150 bits

    const BlockGeometry geometry = Read(leader);

    EXPECT_EQ(geometry.leastImageBytes, 5u * 4u);
    EXPECT_EQ(geometry.joinedImageBytes, 19u);
    EXPECT_TRUE(geometry.IsJoined(19));
    EXPECT_FALSE(geometry.IsJoined(18));
    EXPECT_FALSE(geometry.IsJoined(20));
}

TEST(BlockGeometryTest, JoinedLinesCanBeTakenBack)
{
    auto leader = StreamPackets::Mono8(3, 5);
    leader.pixelFormat = 0x010A0046; // Mono10p: 150 bits
    leader.imagePaddingBytes = 7;
    const BlockGeometry rounded = Read(leader);

    const BlockGeometry joined = WithJoinedLines(rounded);

    EXPECT_EQ(joined.imageBytes, 19u + 7);
    EXPECT_EQ(joined.leastImageBytes, 19u + 7);
    EXPECT_EQ(joined.memoryBytes, 19u);
    EXPECT_TRUE(joined.areLinesJoined);
    EXPECT_EQ(WithRoundedLines(joined), rounded);
    EXPECT_EQ(WithHeight(joined, 3).memoryBytes, 12u); // 90 bits
    EXPECT_TRUE(WithHeight(joined, 3).areLinesJoined);
}

TEST(BlockGeometryTest, FewerLinesAreASmallerPicture)
{
    const BlockGeometry shorter = WithHeight(ReadGeometry(kLeader), 100);

    EXPECT_EQ(shorter.heightPx, 100u);
    EXPECT_EQ(shorter.imageBytes, 642u * 100u);
    EXPECT_EQ(shorter.widthPx, 640u);
}

} // namespace
} // namespace receive
