#include "BlockAssemblerFixture.h"
#include "support/Bytes.h"

#include <array>

namespace receive {
namespace {

using namespace std::chrono_literals;
using Packet = StreamPackets::Packet;

/// Payload that is more than a picture, or none: chunks, blocks in one packet, several parts.
class BlockAssemblerPayloadTest : public BlockAssemblerFixture {};

TEST_F(BlockAssemblerPayloadTest, APayloadThatIsNoImageIsDeliveredWithoutPicture)
{
    m_stream.leader.start.payloadType = {gvsp::PayloadType::kJpeg};
    auto packets = m_stream.Block(1);
    // The writer of image leaders writes any type; a JPEG's leader has the same start.
    SendAll(packets);

    ASSERT_EQ(m_sink.delivered.size(), 1u);
    EXPECT_EQ(CodeOf(0), VxError::NotAnImage);
    EXPECT_EQ(m_counters.blocksNotAnImage.Value(), 1u);
}

TEST_F(BlockAssemblerPayloadTest, ChunksBehindThePictureAreReceivedAsFarAsTheBufferGoes)
{
    m_stream.leader = StreamPackets::Mono8(64, 40);
    m_stream.leader.start.payloadType = {gvsp::PayloadType::kImage | gvsp::PayloadType::kChunksFollow};
    m_stream.payloadBytes = 64 * 40 + 100;
    SendBlock(1);
    m_stream.payloadBytes = 64 * 48 + 100; // more than fits
    SendBlock(2);

    ASSERT_EQ(m_sink.delivered.size(), 2u);
    EXPECT_EQ(CodeOf(0), VxError::Ok);
    EXPECT_EQ(m_sink.delivered[0].info.receivedBytes, 64u * 40 + 100);
    EXPECT_EQ(CodeOf(1), VxError::Ok);
    EXPECT_EQ(m_sink.delivered[1].info.receivedBytes, 64u * 48);
}

TEST_F(BlockAssemblerPayloadTest, AMissingChunkPacketIsMissed)
{
    m_stream.leader = StreamPackets::Mono8(64, 40);
    m_stream.leader.start.payloadType = {gvsp::PayloadType::kImage | gvsp::PayloadType::kChunksFollow};
    m_stream.payloadBytes = 64 * 40 + 600;
    auto packets = m_stream.Block(1);
    packets.erase(packets.end() - 2);
    SendAll(packets);
    Wait(300ms);

    EXPECT_EQ(CodeOf(0), VxError::MissingPackets);
}

TEST_F(BlockAssemblerPayloadTest, AChunkPacketUnderAnIdBehindTheTrailerHidesNoHole)
{
    m_stream.leader = StreamPackets::Mono8(64, 40);
    m_stream.leader.start.payloadType = {gvsp::PayloadType::kImage | gvsp::PayloadType::kChunksFollow};
    m_stream.payloadBytes = 64 * 40 + 440; // 6 packets, all full
    const auto packets = m_stream.Block(1);
    for (const int wrongId : {7, 9, 200}) { // the trailer's own, and further behind
        Packet astray = packets[3];
        astray[7] = static_cast<std::byte>(wrongId); // fits
        SendAll({packets[0], packets[1], packets[2], packets[4], packets[5], packets[6], astray, packets[7]});
        Wait(300ms);

        ASSERT_FALSE(m_sink.delivered.empty());
        EXPECT_EQ(m_sink.delivered.back().info.code, VxError::MissingPackets) << wrongId;
        EXPECT_EQ(m_sink.delivered.back().info.packetsMissing, 1u) << wrongId;
        m_assembler.Abort(); // the same id comes again
    }
}

TEST_F(BlockAssemblerPayloadTest, PaddingBehindThePictureNeedsNoBuffer)
{
    m_stream.leader.imagePaddingBytes = 1500; // the buffer ends with the last pixel
    m_stream.payloadBytes = 64 * 48 + 1500;
    SendBlock(1);
    auto packets = m_stream.Block(2);
    packets.erase(packets.end() - 3); // of the padding
    SendAll(packets);
    Wait(300ms);

    ASSERT_EQ(m_sink.delivered.size(), 2u);
    EXPECT_EQ(CodeOf(0), VxError::Ok);
    EXPECT_EQ(m_sink.delivered[0].info.receivedBytes, 64u * 48);
    EXPECT_EQ(m_counters.packetsOutOfRange.Value(), 0u);
    EXPECT_EQ(CodeOf(1), VxError::MissingPackets);
}

TEST_F(BlockAssemblerPayloadTest, ABlockInOnePacketIsAPicture)
{
    // Mono8, 4 x 2 pixels: header, leader, trailer, payload.
    Send(bytes::FromHex("0000 0007 04 000000 | 0000 0001 00000001 23456789 01080001 00000004 00000002 "
                        "00000000 00000000 0000 0000 | 0000 0001 00000002 | 01020304 05060708"));
    // With chunks behind it the trailer is longer by 8 bytes.
    Send(bytes::FromHex("0000 0008 04 000000 | 0000 4001 00000001 2345678A 01080001 00000004 00000002 "
                        "00000000 00000000 0000 0000 | 0000 4001 00000002 00000000 00000000 | "
                        "11121314 15161718 AABBCCDD 00000001 00000004"));

    ASSERT_EQ(m_sink.delivered.size(), 2u);
    EXPECT_EQ(CodeOf(0), VxError::Ok);
    EXPECT_EQ(m_sink.delivered[0].info.blockId, 7u);
    EXPECT_EQ(bytes::Copy(bytes::First(m_sink.delivered[0].memory, 8)), bytes::FromHex("0102030405060708"));
    EXPECT_EQ(CodeOf(1), VxError::Ok);
    EXPECT_EQ(bytes::Copy(bytes::First(m_sink.delivered[1].memory, 8)), bytes::FromHex("1112131415161718"));
}

TEST_F(BlockAssemblerPayloadTest, ABlockInOnePacketThatIsCutIsNotGood)
{
    const auto whole =
        bytes::FromHex("0000 0007 04 000000 | 0000 0001 00000001 23456789 01080001 00000004 00000002 "
                       "00000000 00000000 0000 0000 | 0000 0001 00000002 | 01020304 05060708");
    for (std::size_t size = 8; size < whole.size(); ++size) {
        Send(bytes::Copy(bytes::First(whole, size)));
        Wait(300ms);
        m_assembler.Abort();
    }
    EXPECT_EQ(m_counters.blocksComplete.Value(), 0u);
    EXPECT_EQ(m_sink.FreeCount(), 4u);
}

TEST_F(BlockAssemblerPayloadTest, ABlockInOnePacketThatIsCutInItsChunksIsNotGoodBeforeItComesAgain)
{
    // 8 bytes of picture, and a chunk of 4 behind them: 0x14 bytes.
    const auto whole =
        bytes::FromHex("0000 0008 04 000000 | 0000 4001 00000001 2345678A 01080001 00000004 00000002 "
                       "00000000 00000000 0000 0000 | 0000 4001 00000002 00000014 00000001 | "
                       "11121314 15161718 AABBCCDD 00000001 00000004");
    std::size_t delivered = 0;
    for (std::size_t size = 8 + 36 + 16 + 1; size < whole.size(); ++size) {
        Send(bytes::Copy(bytes::First(whole, size)));
        ASSERT_EQ(m_sink.delivered.size(), delivered) << size;
        Send(whole);
        ASSERT_EQ(m_sink.delivered.size(), ++delivered) << size;
        EXPECT_EQ(m_sink.delivered.back().info.code, VxError::Ok) << size;
        m_assembler.Abort(); // the same id comes again
    }
    Send(bytes::Copy(bytes::First(whole, whole.size() - 1)));
    Wait(300ms);
    EXPECT_EQ(m_sink.delivered.back().info.code, VxError::MissingPackets);
}

TEST_F(BlockAssemblerPayloadTest, ABlockInOnePacketThatWasCutIsTakenWhenItComesAgain)
{
    const auto whole =
        bytes::FromHex("0000 0007 04 000000 | 0000 0001 00000001 23456789 01080001 00000004 00000002 "
                       "00000000 00000000 0000 0000 | 0000 0001 00000002 | 01020304 05060708");
    std::size_t delivered = 0;
    for (std::size_t size = 8 + 36; size < whole.size(); ++size) { // the leader is whole
        Send(bytes::Copy(bytes::First(whole, size)));
        ASSERT_EQ(m_sink.delivered.size(), delivered) << "it may be sent again";
        Send(whole);

        ASSERT_EQ(m_sink.delivered.size(), ++delivered) << size;
        EXPECT_EQ(m_sink.delivered.back().info.code, VxError::Ok) << size;
        EXPECT_EQ(bytes::Copy(bytes::First(m_sink.delivered.back().memory, 8)),
                  bytes::FromHex("0102030405060708"));
        m_assembler.Abort(); // the same id comes again
    }
}

/// Two parts: a map that is no picture, and a picture of Mono8, 4 x 2 pixels.
Packet MultiPartLeader()
{
    return bytes::FromHex("0000 0001 01 000000 | 0000 000A 00000000 00000007 |"
                          "0009 0000 00000003 01080001 0000 00 00 00000000 0000 0000"
                          "00000003 00000001 00000000 00000000 0000 0000 00000000 |"
                          "0001 0000 00000008 01080001 0000 00 00 00000000 0000 0000"
                          "00000004 00000002 00000000 00000000 0000 0000 00000000");
}

TEST_F(BlockAssemblerPayloadTest, TheFirstImageOfAMultiPartBlockIsItsPicture)
{
    Send(MultiPartLeader());
    Send(bytes::FromHex("0000 0001 07 000001 | 00 40 000000000000 | EEEEEE"));
    Send(bytes::FromHex("0000 0001 07 000003 | 01 40 000000000005 | 060708"));
    Send(bytes::FromHex("0000 0001 07 000002 | 01 00 000000000000 | 0102030405"));
    Send(bytes::FromHex("0000 0001 02 000004 | 0000 000A"));

    ASSERT_EQ(m_sink.delivered.size(), 1u);
    EXPECT_EQ(CodeOf(0), VxError::Ok);
    EXPECT_EQ(m_sink.delivered[0].info.geometry.widthPx, 4u);
    EXPECT_EQ(bytes::Copy(bytes::First(m_sink.delivered[0].memory, 8)), bytes::FromHex("0102030405060708"));
}

TEST_F(BlockAssemblerPayloadTest, AMultiPartBlockIsIncompleteWithoutAnyOfItsPackets)
{
    const std::vector<Packet> packets{MultiPartLeader(),
                                      bytes::FromHex("0000 0001 07 000001 | 00 40 000000000000 | EEEEEE"),
                                      bytes::FromHex("0000 0001 07 000002 | 01 00 000000000000 | 0102030405"),
                                      bytes::FromHex("0000 0001 07 000003 | 01 40 000000000005 | 060708"),
                                      bytes::FromHex("0000 0001 02 000004 | 0000 000A")};
    for (std::size_t missing = 0; missing < packets.size(); ++missing) {
        for (std::size_t i = 0; i < packets.size(); ++i) {
            if (i != missing)
                Send(packets[i]);
        }
        Wait(300ms);
        const bool isTrailer = missing + 1 == packets.size(); // the picture is whole without it
        ASSERT_EQ(m_sink.delivered.size(), missing + 1);
        EXPECT_EQ(CodeOf(missing), isTrailer ? VxError::Ok : VxError::MissingPackets) << missing;
        m_assembler.Abort(); // the same id comes again
    }
}

TEST_F(BlockAssemblerPayloadTest, APartUnderAnIdBehindTheTrailerHidesNoHole)
{
    Send(MultiPartLeader());
    Send(bytes::FromHex("0000 0001 07 000001 | 00 40 000000000000 | EEEEEE"));
    Send(bytes::FromHex("0000 0001 07 000003 | 01 40 000000000005 | 060708"));
    Send(bytes::FromHex("0000 0001 07 000005 | 01 40 000000000003 | 0405060708"));
    Send(bytes::FromHex("0000 0001 02 000004 | 0000 000A"));
    Wait(300ms);

    ASSERT_EQ(m_sink.delivered.size(), 1u);
    EXPECT_EQ(CodeOf(0), VxError::MissingPackets);
}

TEST_F(BlockAssemblerPayloadTest, APartThatIsCutIsNotGood)
{
    Send(MultiPartLeader());
    Send(bytes::FromHex("0000 0001 07 000001 | 00 40 000000000000 | EEEEEE"));
    Send(bytes::FromHex("0000 0001 07 000002 | 01 00 000000000000 | 01020304"));
    Send(bytes::FromHex("0000 0001 07 000003 | 01 40 000000000005 | 060708"));
    Send(bytes::FromHex("0000 0001 02 000004 | 0000 000A"));
    Wait(300ms);

    EXPECT_EQ(CodeOf(0), VxError::MissingPackets);
    EXPECT_EQ(m_sink.delivered[0].info.packetsMissing, 1u);
}

/// The same with four bytes behind the picture, as parts have that end with a page of memory.
Packet PaddedPartLeader()
{
    Packet leader = MultiPartLeader();
    leader[8 + 12 + 48 + 7] = std::byte{12};
    return leader;
}

const auto kMapPiece = bytes::FromHex("0000 0001 07 000001 | 00 40 000000000000 | EEEEEE");
const auto kFirstPiece = bytes::FromHex("0000 0001 07 000002 | 01 00 000000000000 | 0102030405");
const auto kLastPiece = bytes::FromHex("0000 0001 07 000003 | 01 40 000000000005 | 060708 EEEEEEEE");
const auto kPartTrailer = bytes::FromHex("0000 0001 02 000004 | 0000 000A");

Packet CutBy(Packet packet, std::size_t count)
{
    packet.resize(packet.size() - count);
    return packet;
}

TEST_F(BlockAssemblerPayloadTest, WhatIsBehindAPictureDoesNotMakeUpForAPartThatIsCut)
{
    for (std::size_t cut = 1; cut <= 5; ++cut) {
        SendAll({PaddedPartLeader(), kMapPiece, CutBy(kFirstPiece, cut), kLastPiece, kPartTrailer});
        Wait(300ms);

        ASSERT_EQ(m_sink.delivered.size(), cut);
        EXPECT_EQ(CodeOf(cut - 1), VxError::MissingPackets) << cut;
        m_assembler.Abort(); // the same id comes again
    }
    SendAll({PaddedPartLeader(), kMapPiece, kFirstPiece, CutBy(kLastPiece, 1), kPartTrailer});
    EXPECT_EQ(CodeOf(5), VxError::Ok) << "nothing of the picture is missing";
}

TEST_F(BlockAssemblerPayloadTest, APartThatIsCutIsTakenWhenItComesAgain)
{
    SendAll({PaddedPartLeader(), kMapPiece, CutBy(kFirstPiece, 2), kLastPiece, kPartTrailer});
    EXPECT_TRUE(m_sink.delivered.empty()) << "it may be sent again";
    Send(kFirstPiece);
    m_assembler.Abort();
    SendAll({PaddedPartLeader(), kMapPiece, kFirstPiece, kPartTrailer, CutBy(kLastPiece, 5)});
    EXPECT_EQ(m_sink.delivered.size(), 1u) << "it may be sent again";
    Send(kLastPiece);

    ASSERT_EQ(m_sink.delivered.size(), 2u);
    for (const auto& delivered : m_sink.delivered) {
        EXPECT_EQ(delivered.info.code, VxError::Ok);
        EXPECT_EQ(bytes::Copy(bytes::First(delivered.memory, 8)), bytes::FromHex("0102030405060708"));
    }
    EXPECT_EQ(m_counters.packetsWrongSize.Value(), 2u);
}

TEST_F(BlockAssemblerPayloadTest, PartsAreJudgedByTheirOwnLeaderHoweverLateItComes)
{
    const auto sendAs = [this](int blockId, std::vector<Packet> packets) {
        for (Packet& packet : packets) {
            packet[3] = static_cast<std::byte>(blockId); // fits
            Send(packet);
        }
        Wait(300ms);
        return m_sink.delivered.back().info.code;
    };
    const Packet large = PaddedPartLeader();
    Packet small = large; // one line, and behind it what is the second one above
    small[8 + 12 + 48 + 31] = std::byte{1};
    const Packet cut = CutBy(kFirstPiece, 2); // less than a line

    EXPECT_EQ(sendAs(1, {large, kMapPiece, kFirstPiece, kLastPiece, kPartTrailer}), VxError::Ok);
    EXPECT_EQ(sendAs(2, {kMapPiece, kFirstPiece, kLastPiece, kPartTrailer, large}), VxError::Ok);
    EXPECT_EQ(sendAs(3, {kMapPiece, cut, kLastPiece, kPartTrailer, small}), VxError::MissingPackets);
    EXPECT_EQ(sendAs(4, {kMapPiece, kFirstPiece, kLastPiece, kPartTrailer, small}), VxError::Ok);
    EXPECT_EQ(sendAs(5, {kMapPiece, cut, large, kLastPiece, kPartTrailer}), VxError::MissingPackets);
    EXPECT_EQ(sendAs(6, {kMapPiece, cut, small, kLastPiece, kPartTrailer}), VxError::MissingPackets);
    EXPECT_EQ(m_sink.delivered.size(), 6u);
}

TEST_F(BlockAssemblerPayloadTest, PartsOutsideTheBufferAreNotWritten)
{
    Send(MultiPartLeader());
    Send(bytes::FromHex("0000 0001 07 000001 | 01 40 FFFFFFFFFFFF | EEEEEE"));
    Send(
        bytes::FromHex("0000 0001 07 000002 | 01 40 000000000BFF | EEEEEE")); // the sanitizer watches the end
    Send(bytes::FromHex("0000 0001 03 000003 | EEEEEE"));                     // not of this block's kind
    Send(bytes::FromHex("0000 0001 07 000003 | 01 40 0000"));                 // cut

    EXPECT_EQ(m_counters.packetsUnsupported.Value(), 1u);
    EXPECT_EQ(m_counters.packetsMalformed.Value(), 1u);
}

TEST_F(BlockAssemblerPayloadTest, AMultiPartBlockWithoutAnImageIsNone)
{
    Packet leader = MultiPartLeader();
    leader.resize(8 + 12 + 48); // the map alone
    Send(leader);
    Send(bytes::FromHex("0000 0001 07 000001 | 00 40 000000000000 | EEEEEE"));
    Send(bytes::FromHex("0000 0001 02 000002 | 0000 000A"));

    ASSERT_EQ(m_sink.delivered.size(), 1u);
    EXPECT_EQ(CodeOf(0), VxError::NotAnImage);
}

TEST_F(BlockAssemblerPayloadTest, TheOldExtendedChunkDataHaveAPictureToo)
{
    m_stream.leader = StreamPackets::Mono8(64, 40);
    m_stream.leader.start.payloadType = {gvsp::PayloadType::kExtendedChunkData};
    m_stream.payloadBytes = 64 * 40 + 100;
    auto packets = m_stream.Block(1);
    packets.back() = m_stream.Header(1, gvsp::PacketFormat::Trailer, m_stream.PayloadCount() + 1);
    for (const std::byte byte : bytes::FromHex("0000 0005 00000A64 00000028 00000001"))
        packets.back().push_back(byte);
    SendAll(packets);

    ASSERT_EQ(m_sink.delivered.size(), 1u);
    EXPECT_EQ(CodeOf(0), VxError::Ok);
    EXPECT_EQ(m_sink.delivered[0].info.geometry.heightPx, 40u);
}

TEST_F(BlockAssemblerPayloadTest, ChunksOfManyPacketsBehindAPictureThatFillsItsBufferDoNoHarm)
{
    m_stream.leader.start.payloadType = {gvsp::PayloadType::kImage | gvsp::PayloadType::kChunksFollow};
    m_stream.payloadBytes = 64 * 48 + 2000; // the buffer ends with the picture
    SendBlock(1);

    ASSERT_EQ(m_sink.delivered.size(), 1u);
    EXPECT_EQ(CodeOf(0), VxError::Ok);
    EXPECT_EQ(m_sink.delivered[0].info.receivedBytes, 64u * 48);
    EXPECT_EQ(m_counters.packetsOutOfRange.Value(), 0u);
}

/// Chunk data with a picture of Mono8, 4 x 2 pixels, and a chunk of three bytes behind it.
const auto kChunkLeader = bytes::FromHex("0000 0001 01 000000 | 0000 0004 00000000 00000007");
const auto kChunkPayload = bytes::FromHex("0000 0001 03 000001 | 0102030405060708 | 00000001 00000008 |"
                                          "AABBCC 00000002 00000003");
const auto kChunkTrailer = bytes::FromHex("0000 0001 02 000002 | 0000 0004 0000001B");
constexpr PictureShape kSmallPicture{0x01080001, 4, 2};

TEST_F(BlockAssemblerPayloadTest, ChunkDataBeginWithThePictureThatTheFeaturesAnnounce)
{
    m_assembler.SetCameraPicture(kSmallPicture);
    SendAll({kChunkLeader, kChunkPayload, kChunkTrailer});

    ASSERT_EQ(m_sink.delivered.size(), 1u);
    EXPECT_EQ(CodeOf(0), VxError::Ok);
    EXPECT_EQ(m_sink.delivered[0].info.geometry.widthPx, 4u);
    EXPECT_EQ(m_sink.delivered[0].info.geometry.heightPx, 2u);
    EXPECT_EQ(bytes::Copy(bytes::First(m_sink.delivered[0].memory, 8)), bytes::FromHex("0102030405060708"));
}

TEST_F(BlockAssemblerPayloadTest, ChunkDataWhoseFirstChunkIsNotThatPictureAreNoImage)
{
    m_assembler.SetCameraPicture(PictureShape{0x01080001, 4, 3});
    SendAll({kChunkLeader, kChunkPayload, kChunkTrailer});
    m_assembler.Abort(); // the same id comes again
    m_assembler.SetCameraPicture(kSmallPicture);
    auto broken = kChunkPayload;
    broken.back() = std::byte{4}; // the list of chunks leads nowhere
    SendAll({kChunkLeader, broken, kChunkTrailer});

    ASSERT_EQ(m_sink.delivered.size(), 2u);
    EXPECT_EQ(CodeOf(0), VxError::NotAnImage);
    EXPECT_EQ(CodeOf(1), VxError::NotAnImage);
    EXPECT_EQ(m_sink.delivered[1].info.geometry.payloadType.bits, gvsp::PayloadType::kChunkData);
}

TEST_F(BlockAssemblerPayloadTest, ChunkDataWithoutTheirPayloadOrTrailerAreIncomplete)
{
    m_assembler.SetCameraPicture(kSmallPicture);
    SendAll({kChunkLeader, kChunkTrailer});
    Wait(300ms);
    m_assembler.Abort();
    SendAll({kChunkLeader, kChunkPayload});
    Wait(300ms);

    ASSERT_EQ(m_sink.delivered.size(), 2u);
    EXPECT_EQ(CodeOf(0), VxError::MissingPackets);
    EXPECT_EQ(CodeOf(1), VxError::MissingPackets);
}

TEST_F(BlockAssemblerPayloadTest, ChunkDataLargerThanTheBufferSayHowMuchTheyTake)
{
    m_assembler.SetCameraPicture(PictureShape{0x01080001, 64, 48}); // fills the buffer
    m_stream.leader.start.payloadType = {gvsp::PayloadType::kChunkData};
    m_stream.payloadBytes = 64 * 48 + 2000;
    SendBlock(1);
    SendBlock(2);

    ASSERT_EQ(m_sink.delivered.size(), 2u);
    EXPECT_EQ(CodeOf(0), VxError::BufferTooSmall);
    EXPECT_EQ(m_sink.delivered[0].info.geometry.memoryBytes, 64u * 48 + 2000);
    EXPECT_EQ(m_sink.wanted, (std::vector<std::size_t>{64 * 48, 64 * 48 + 2000})) << "of the next block";
}

TEST_F(BlockAssemblerPayloadTest, ChunkDataWithoutALeaderOfAnImageAreNoImage)
{
    m_stream.leader.start.payloadType = {gvsp::PayloadType::kChunkData};
    SendBlock(1);

    EXPECT_EQ(CodeOf(0), VxError::NotAnImage);
}

TEST_F(BlockAssemblerPayloadTest, PayloadOfEveryOtherKindIsNoImageAndDoesNotHoldUpTheStream)
{
    std::uint64_t id = 0;
    constexpr std::array<std::uint16_t, 8> kTypes{0x0002, 0x0003, 0x0006, 0x0007,
                                                  0x0008, 0x0009, 0x000B, 0x8001};
    for (const std::uint16_t type : kTypes) {
        m_stream.leader.start.payloadType = {type};
        SendBlock(++id);
        ASSERT_EQ(m_sink.delivered.size(), id);
        EXPECT_EQ(m_sink.delivered.back().info.code, VxError::NotAnImage) << type;
    }
}

} // namespace
} // namespace receive
