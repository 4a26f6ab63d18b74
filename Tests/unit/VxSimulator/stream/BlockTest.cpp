#include "VxSimulator/stream/Block.h"

#include "support/Bytes.h"

#include <gtest/gtest.h>

namespace {

using namespace simulator;
using bytes::FromHex;

FrameOrder Order()
{
    FrameOrder order;
    order.blockId = 0x1234;
    order.timestampTicks = 0x123456789;
    order.format = *FindPictureFormat("Mono8");
    order.widthPx = 640;
    order.heightPx = 480;
    order.packetSizeBytes = 1500;
    return order;
}

bytes::Vector Packet(const Block& block, std::uint32_t packetId, Sending sending = Sending::First)
{
    bytes::Vector memory(block.Order().packetSizeBytes);
    return bytes::Copy(block.WritePacket(packetId, sending, memory));
}

Block MakeBlock(const FrameOrder& order)
{
    bytes::Random random;
    return Block(order, random.Bytes(640 * 480));
}

TEST(BlockTest, BeginsWithALeader)
{
    EXPECT_EQ(Packet(MakeBlock(Order()), 0), FromHex("00 00 12 34 01 00 00 00 | 00 00 00 01 00 00 00 01 23 "
                                                     "45 67 89 01 08 00 01 00 00 02 80 00 00 01 E0"
                                                     "00 00 00 00 00 00 00 00 00 00 00 00"));
}

TEST(BlockTest, EndsWithATrailer)
{
    const auto block = MakeBlock(Order());

    ASSERT_EQ(block.PacketCount(), 212u);
    EXPECT_EQ(Packet(block, 211), FromHex("00 00 12 34 02 00 00 D3 | 00 00 00 01 00 00 01 E0"));
}

TEST(BlockTest, PayloadPacketsAreFullExceptTheLast)
{
    const auto block = MakeBlock(Order());

    EXPECT_EQ(Packet(block, 1).size(), 8u + 1464);
    EXPECT_EQ(bytes::Copy(std::span<const std::byte>(Packet(block, 1)).first(8)),
              FromHex("00 00 12 34 03 00 00 01"));
    EXPECT_EQ(Packet(block, 209).size(), 8u + 1464);
    EXPECT_EQ(Packet(block, 210).size(), 8u + 1224);
}

TEST(BlockTest, ThePayloadIsThePicture)
{
    bytes::Random random;
    const auto picture = random.Bytes(640 * 480);
    const Block block(Order(), picture);
    bytes::Vector joined;
    for (std::uint32_t packetId = 1; packetId + 1 < block.PacketCount(); ++packetId) {
        const auto packet = Packet(block, packetId);
        joined.insert(joined.end(), packet.begin() + 8, packet.end());
    }

    EXPECT_EQ(joined, picture);
}

TEST(BlockTest, ExtendedIdsLeaveLessRoom)
{
    auto order = Order();
    order.idMode = gvsp::IdMode::Extended;
    order.blockId = 0x100001234;
    const auto block = MakeBlock(order);

    ASSERT_EQ(block.PacketCount(), 214u);
    EXPECT_EQ(bytes::Copy(std::span<const std::byte>(Packet(block, 0)).first(20)),
              FromHex("00 00 00 00 81 00 00 00 | 00 00 00 01 00 00 12 34 | 00 00 00 00"));
    EXPECT_EQ(Packet(block, 1).size(), 20u + 1452);
    EXPECT_EQ(Packet(block, 212).size(), 20u + 828);
    EXPECT_EQ(bytes::Copy(std::span<const std::byte>(Packet(block, 213)).first(20)),
              FromHex("00 00 00 00 82 00 00 00 | 00 00 00 01 00 00 12 34 | 00 00 00 D5"));
}

TEST(BlockTest, APacketThatIsSentAgainSaysSo)
{
    auto order = Order();
    EXPECT_EQ(bytes::Copy(std::span<const std::byte>(Packet(MakeBlock(order), 7, Sending::Again)).first(8)),
              FromHex("01 00 12 34 03 00 00 07"));

    order.idMode = gvsp::IdMode::Extended;
    EXPECT_EQ(bytes::Copy(std::span<const std::byte>(Packet(MakeBlock(order), 7, Sending::Again)).first(8)),
              FromHex("01 00 00 01 83 00 00 00"));
}

/// @return  the same with both chunks that a camera can add
FrameOrder WithChunks(FrameOrder order, ChunkOrder::Way way)
{
    order.chunks = {.way = way, .hasFrameId = true, .hasTimestamp = true};
    return order;
}

bytes::Vector LastPayload(const Block& block)
{
    return Packet(block, block.PacketCount() - 2);
}

TEST(BlockTest, ChunksComeBehindAnImageThatSaysSo)
{
    const auto block = MakeBlock(WithChunks(Order(), ChunkOrder::Way::BehindImage));

    ASSERT_EQ(block.PacketCount(), 212u);
    EXPECT_EQ(Packet(block, 0),
              FromHex("00 00 12 34 01 00 00 00 | 00 00 40 01 00 00 00 01 23 45 67 89"
                      "01 08 00 01 00 00 02 80 00 00 01 E0 00 00 00 00 00 00 00 00 00 00 00 00"));
    const auto last = LastPayload(block);
    ASSERT_EQ(last.size(), 8u + 1224 + 40);
    EXPECT_EQ(bytes::Copy(std::span<const std::byte>(last).last(40)),
              FromHex("00000001 0004B000 | 00000000 00001234 | 00000002 00000008 |"
                      "00000001 23456789 | 00000003 00000008"));
    EXPECT_EQ(Packet(block, 211), FromHex("00 00 12 34 02 00 00 D3 | 0000 4001 000001E0 0004B028 00000007"));
}

TEST(BlockTest, ChunkDataTellNothingOfThePictureThatIsTheFirstOfThem)
{
    const auto block = MakeBlock(WithChunks(Order(), ChunkOrder::Way::AsPayload));

    EXPECT_EQ(Packet(block, 0), FromHex("00 00 12 34 01 00 00 00 | 00 00 00 04 00 00 00 01 23 45 67 89"));
    EXPECT_EQ(LastPayload(block).size(), 8u + 1224 + 40);
    EXPECT_EQ(Packet(block, 211), FromHex("00 00 12 34 02 00 00 D3 | 0000 0004 0004B028"));
}

TEST(BlockTest, OnlyChunksThatAreSwitchedOnCome)
{
    auto order = WithChunks(Order(), ChunkOrder::Way::BehindImage);
    order.chunks.hasFrameId = false;
    EXPECT_EQ(bytes::Copy(std::span<const std::byte>(LastPayload(MakeBlock(order))).last(24)),
              FromHex("00000001 0004B000 | 00000001 23456789 | 00000003 00000008"));
    order.chunks.hasTimestamp = false;
    const auto block = MakeBlock(order);
    EXPECT_EQ(LastPayload(block).size(), 8u + 1224 + 8);
    EXPECT_EQ(Packet(block, 211), FromHex("00 00 12 34 02 00 00 D3 | 0000 4001 000001E0 0004B008 00000001"));
}

TEST(BlockTest, ChunksThatDoNotFitIntoTheLastPacketOfThePictureTakeAnother)
{
    auto order = WithChunks(Order(), ChunkOrder::Way::BehindImage);
    order.packetSizeBytes = 240 + 8 + 28; // the picture takes full packets
    const auto block = MakeBlock(order);

    EXPECT_EQ(block.PacketCount(), 640u * 480 / 240 + 1 + 2);
    EXPECT_EQ(LastPayload(block).size(), 8u + 40);
}

TEST(BlockTest, NoPacketIsLongerThanThePacketSize)
{
    auto order = Order();
    for (const std::size_t size : {220u, 1500u, 9000u, 65532u}) {
        order.packetSizeBytes = size;
        const auto block = MakeBlock(order);
        for (std::uint32_t packetId = 0; packetId < block.PacketCount(); ++packetId)
            ASSERT_LE(Packet(block, packetId).size() + 28, size);
    }
}

} // namespace
