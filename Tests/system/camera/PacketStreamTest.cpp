#include "CameraLink.h"

#include "VxCamera/surface/StreamLinks.h"
#include "VxCamera/transport/SystemNetwork.h"
#include "VxDSSource/camera/VxGenParameter.h"
#include "VxDSSource/camera/VxGenParameterArray.h"
#include "VxDSSource/camera/VxImage.h"
#include "VxSimulator/stream/FaultyPath.h"
#include "VxSimulator/stream/SeededRandomSource.h"
#include "unit/VxCamera/receive/StreamPackets.h"

#include "support/Bytes.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <memory>
#include <random>
#include <vector>

namespace {

using receive::StreamPackets;
using Packet = StreamPackets::Packet;
using Packets = std::vector<Packet>;

constexpr transport::Ipv4Address kCamera(127, 0, 0, 1);

// Chosen: nothing here depends on a time; whoever waits so long has failed.
constexpr std::uint32_t kPatienceMs = 30'000;
constexpr const char* kBlockTimeoutMs = "10000"; // the longest that can be set

/// Streams packet by packet, from a socket to a receiver's socket.
///
/// Nothing is judged by time: a block that is incomplete is told when the next one is complete.
class PacketStreamTest : public testing::Test {
protected:
    PacketStreamTest()
    {
        m_camera = OpenAt(kCamera);
        const VxResult opened = m_stream.Open("nobody", 0, 0, "127.0.0.1", 64);
        EXPECT_TRUE(opened.IsOK()) << opened.GetDescription().Narrow();
        // The machine may stand still between two packets.
        EXPECT_TRUE(m_stream.GetParameters()->Get("BlockTimeout")->FromString(kBlockTimeoutMs).IsOK());
        m_pipeline = std::make_unique<VxPipeline>(&m_stream);
        m_pipeline->SetBufferSize(kBufferBytes);
        EXPECT_TRUE(m_pipeline->SetBufferCount(64).IsOK());
        EXPECT_TRUE(m_pipeline->Start().IsOK());
    }
    ~PacketStreamTest() override { EXPECT_TRUE(m_pipeline->Stop().IsOK()); }

    static constexpr std::size_t kBufferBytes = 64 * 48; // the usual picture

    std::unique_ptr<transport::IUdpSocket> OpenAt(transport::Ipv4Address address)
    {
        transport::UdpSocketOptions options;
        options.local.address = address;
        auto socket = m_sockets->OpenUdp(options);
        EXPECT_TRUE(socket) << socket.Result().GetDescription().Narrow();
        return socket ? *std::move(socket) : nullptr;
    }
    [[nodiscard]] transport::Ipv4Endpoint Receiver() const { return {kCamera, m_stream.GetLocalPort()}; }
    void Send(const Packet& packet) { EXPECT_TRUE(m_camera->SendTo(packet, Receiver()).IsOK()); }
    void SendAll(const Packets& packets)
    {
        for (const Packet& packet : packets)
            Send(packet);
    }
    void SendBlock(std::uint64_t blockId) { SendAll(m_packets.Block(blockId)); }

    /// Takes the next block, which must have this id and this result.
    void Expect(std::uint64_t blockId, VxError code)
    {
        VxBuffer* buffer = nullptr;
        ASSERT_TRUE(m_pipeline->RetrieveNextBuffer(&buffer, kPatienceMs).IsOK()) << "block " << blockId;
        EXPECT_EQ(buffer->GetBlockID(), blockId);
        const VxResult result = buffer->GetOperationResult();
        EXPECT_EQ(result.Code(), code) << blockId << ": " << result.GetDescription().Narrow();
        if (result.IsOK())
            ExpectBytesOf(*buffer, blockId);
        EXPECT_TRUE(m_pipeline->ReleaseBuffer(buffer).IsOK());
    }
    /// Takes the next block, which must have this id, and be either right or marked.
    /// @return  whether it is whole
    bool TakeNext(std::uint64_t blockId)
    {
        VxBuffer* buffer = nullptr;
        if (!m_pipeline->RetrieveNextBuffer(&buffer, kPatienceMs).IsOK()) {
            ADD_FAILURE() << "block " << blockId << " does not come";
            return false;
        }
        EXPECT_EQ(buffer->GetBlockID(), blockId);
        const bool isWhole = buffer->GetOperationResult().IsOK();
        if (isWhole)
            ExpectBytesOf(*buffer, blockId);
        else
            EXPECT_EQ(buffer->GetOperationResult().Code(), VxError::MissingPackets) << blockId;
        EXPECT_TRUE(m_pipeline->ReleaseBuffer(buffer).IsOK());
        return isWhole;
    }
    void ExpectPicture(std::uint64_t blockId) { Expect(blockId, VxError::Ok); }

    /// Takes the next block, which must be a picture with these bytes.
    void ExpectBytes(const std::vector<std::byte>& expected)
    {
        VxBuffer* buffer = nullptr;
        ASSERT_TRUE(m_pipeline->RetrieveNextBuffer(&buffer, kPatienceMs).IsOK());
        ASSERT_TRUE(buffer->GetOperationResult().IsOK())
            << buffer->GetOperationResult().GetDescription().Narrow();
        const VxImage& image = *buffer->GetImage();
        const auto picture = std::as_bytes(std::span(image.GetDataPointer(), image.GetSize()));
        EXPECT_EQ(bytes::Copy(picture), expected);
        EXPECT_TRUE(m_pipeline->ReleaseBuffer(buffer).IsOK());
    }
    [[nodiscard]] std::int64_t Statistic(const char* name)
    {
        std::int64_t value = -1;
        EXPECT_TRUE(m_stream.GetParameters()->GetIntegerValue(name, value).IsOK());
        return value;
    }

    StreamPackets m_packets;
    std::unique_ptr<transport::ISocketFactory> m_sockets = transport::MakeSystemSocketFactory();
    std::unique_ptr<transport::IUdpSocket> m_camera;
    VxStreamGEV m_stream;
    std::unique_ptr<VxPipeline> m_pipeline; // ends before its stream

private:
    static void ExpectBytesOf(const VxBuffer& buffer, std::uint64_t blockId)
    {
        const VxImage& image = *buffer.GetImage();
        for (std::size_t i = 0; i < image.GetSize(); ++i)
            ASSERT_EQ(std::byte{image.GetDataPointer()[i]}, StreamPackets::ByteAt(blockId, i)) << i;
    }
};

TEST_F(PacketStreamTest, StandardIds)
{
    for (const std::uint64_t id : {1u, 2u, 3u})
        SendBlock(id);
    for (const std::uint64_t id : {1u, 2u, 3u})
        ExpectPicture(id);
}

TEST_F(PacketStreamTest, ExtendedIds)
{
    m_packets.idMode = gvsp::IdMode::Extended;
    SendBlock(0x1'0000'1234);
    SendBlock(0x1'0000'1235);

    ExpectPicture(0x1'0000'1234);
    ExpectPicture(0x1'0000'1235);
    EXPECT_EQ(Statistic("BlocksDropped"), 0);
}

TEST_F(PacketStreamTest, ChunksBehindThePicture)
{
    for (const bool isExtended : {false, true}) {
        m_packets.idMode = isExtended ? gvsp::IdMode::Extended : gvsp::IdMode::Standard;
        m_packets.leader.start.payloadType = {gvsp::PayloadType::kImage | gvsp::PayloadType::kChunksFollow};
        m_packets.payloadBytes = kBufferBytes + 1100; // more than the buffer has
        SendBlock(1);
        SendBlock(2);
        ExpectPicture(1);
        ExpectPicture(2);
        m_packets.idMode = gvsp::IdMode::Standard;
        m_packets.payloadBytes = kBufferBytes;
        SendBlock(1000); // so that the ids begin anew
        ExpectPicture(1000);
    }
}

TEST_F(PacketStreamTest, OldExtendedChunkData)
{
    m_packets.leader = StreamPackets::Mono8(64, 40);
    m_packets.leader.start.payloadType = {gvsp::PayloadType::kExtendedChunkData};
    m_packets.payloadBytes = 64 * 40 + 100;
    Packets packets = m_packets.Block(1);
    packets.back() = m_packets.Header(1, gvsp::PacketFormat::Trailer, m_packets.PayloadCount() + 1);
    for (const std::byte byte : bytes::FromHex("0000 0005 00000A64 00000028 00000001"))
        packets.back().push_back(byte);
    SendAll(packets);

    ExpectPicture(1);
}

TEST_F(PacketStreamTest, ChunkData)
{
    const Packets packets{bytes::FromHex("0000 0001 01 000000 | 0000 0004 00000000 00000007"),
                          bytes::FromHex("0000 0001 03 000001 | 0102030405060708 | 00000001 00000008 |"
                                         "AABBCC 00000002 00000003"),
                          bytes::FromHex("0000 0001 02 000002 | 0000 0004 0000001B")};
    SendAll(packets);
    Expect(1, VxError::NotAnImage); // nobody knows what the first chunk is

    const auto link = std::make_shared<const receive::StreamLink>();
    StreamLinks::Connect(Receiver(), link);
    StreamLinks::TellPicture(link, receive::PictureShape{0x01080001, 4, 2});
    Packets next = packets;
    for (Packet& packet : next)
        packet[3] = std::byte{2};
    SendAll(next);

    ExpectBytes(bytes::FromHex("0102030405060708"));
    StreamLinks::Disconnect(link);
}

TEST_F(PacketStreamTest, TheFirstImageOfSeveralParts)
{
    SendAll({bytes::FromHex("0000 0001 01 000000 | 0000 000A 00000000 00000007 |"
                            "0009 0000 00000003 01080001 0000 00 00 00000000 0000 0000"
                            "00000003 00000001 00000000 00000000 0000 0000 00000000 |"
                            "0001 0000 00000008 01080001 0000 00 00 00000000 0000 0000"
                            "00000004 00000002 00000000 00000000 0000 0000 00000000"),
             bytes::FromHex("0000 0001 07 000001 | 00 40 000000000000 | EEEEEE"),
             bytes::FromHex("0000 0001 07 000003 | 01 40 000000000005 | 060708"),
             bytes::FromHex("0000 0001 07 000002 | 01 00 000000000000 | 0102030405"),
             bytes::FromHex("0000 0001 02 000004 | 0000 000A")});

    ExpectBytes(bytes::FromHex("0102030405060708"));
}

TEST_F(PacketStreamTest, ABlockInOnePacket)
{
    // The receiver learns its camera from it, too.
    Send(bytes::FromHex("0000 0007 04 000000 | 0000 0001 00000001 23456789 01080001 00000004 00000002 "
                        "00000000 00000000 0000 0000 | 0000 0001 00000002 | 01020304 05060708"));

    ExpectBytes(bytes::FromHex("0102030405060708"));
}

TEST_F(PacketStreamTest, PayloadThatIsNoImage)
{
    std::uint64_t id = 0;
    constexpr std::array<std::uint16_t, 8> kTypes{0x0002, 0x0003, 0x0006, 0x0007,
                                                  0x0008, 0x0009, 0x000B, 0x8001};
    for (const std::uint16_t type : kTypes) {
        m_packets.leader.start.payloadType = {type};
        SendBlock(++id);
        Expect(id, VxError::NotAnImage);
    }
}

TEST_F(PacketStreamTest, Paddings)
{
    m_packets.leader = StreamPackets::Mono8(60, 48);
    m_packets.leader.linePaddingBytes = 4;
    m_packets.leader.imagePaddingBytes = 1200; // behind the end of the buffer
    m_packets.payloadBytes = kBufferBytes + 1200;
    SendBlock(1);

    VxBuffer* buffer = nullptr;
    ASSERT_TRUE(m_pipeline->RetrieveNextBuffer(&buffer, kPatienceMs).IsOK());
    ASSERT_TRUE(buffer->GetOperationResult().IsOK());
    EXPECT_EQ(buffer->GetImage()->GetWidth(), 60u);
    EXPECT_EQ(buffer->GetImage()->GetRowPadding(), 4u);
}

TEST_F(PacketStreamTest, BlockIdsThatWrapAndSkipZero)
{
    for (const std::uint64_t id : {65'534u, 65'535u, 1u, 2u})
        SendBlock(id);
    for (const std::uint64_t id : {65'534u, 65'535u, 1u, 2u})
        ExpectPicture(id);
    EXPECT_EQ(Statistic("BlocksDropped"), 0);
}

TEST_F(PacketStreamTest, BlockIdsThatJump)
{
    for (const std::uint64_t id : {5u, 6u, 10u})
        SendBlock(id);
    for (const std::uint64_t id : {5u, 6u, 10u})
        ExpectPicture(id);
    EXPECT_EQ(Statistic("BlocksDropped"), 3);
}

TEST_F(PacketStreamTest, BlockIdsThatBeginAnew)
{
    for (const std::uint64_t id : {1'000u, 1u, 2u})
        SendBlock(id);
    for (const std::uint64_t id : {1'000u, 1u, 2u})
        ExpectPicture(id);
}

TEST_F(PacketStreamTest, BlockIdsThatBeginAnewAfterALeaderAlone)
{
    Send(m_packets.Leader(30'000)); // it waits for a trigger that never comes
    for (const std::uint64_t id : {1u, 2u})
        SendBlock(id);

    Expect(30'000, VxError::MissingPackets);
    for (const std::uint64_t id : {1u, 2u})
        ExpectPicture(id);
}

TEST_F(PacketStreamTest, PacketsThatComeTwice)
{
    for (const Packet& packet : m_packets.Block(1)) {
        Send(packet);
        Send(packet);
    }
    SendBlock(2);

    ExpectPicture(1);
    ExpectPicture(2);
    EXPECT_EQ(Statistic("PacketsDuplicate"), 8);
    EXPECT_EQ(Statistic("PacketsLate"), 1) << "the trailer: the block was done with the first";
}

TEST_F(PacketStreamTest, PacketsInAnyOrder)
{
    std::mt19937 chance(5);
    SendBlock(1); // from here on the camera is known
    for (std::uint64_t id = 2; id < 30; ++id) {
        Packets packets = m_packets.Block(id);
        std::ranges::shuffle(packets, chance);
        SendAll(packets);
    }
    SendBlock(30);

    for (std::uint64_t id = 1; id <= 30; ++id)
        ExpectPicture(id);
}

TEST_F(PacketStreamTest, PacketsThatAreDelayedInsideTheirBlock)
{
    simulator::SeededRandomSource chance(5);
    simulator::FaultyPath path({.delayShare = 0.2}, chance);
    m_packets.stepBytes = 64; // 48 packets and the two around them
    SendBlock(1);             // from here on the camera is known
    for (std::uint64_t id = 2; id <= 20; ++id) {
        const Packets packets = m_packets.Block(id);
        Packets late;
        for (const Packet& packet : packets)
            path.Pass(packet, [&](std::span<const std::byte> each) { late.push_back(bytes::Copy(each)); });
        path.Flush([&](std::span<const std::byte> each) { late.push_back(bytes::Copy(each)); });
        ASSERT_NE(late, packets);
        ASSERT_EQ(late.size(), packets.size());
        SendAll(late);
    }

    for (std::uint64_t id = 1; id <= 20; ++id)
        ExpectPicture(id);
    EXPECT_EQ(Statistic("PacketsMissing"), 0);
}

TEST_F(PacketStreamTest, PacketsThatAreDelayedIntoLaterBlocks)
{
    constexpr std::uint64_t kLast = 40;
    simulator::SeededRandomSource chance(5);
    simulator::FaultyPath path({.delayShare = 0.02}, chance); // 20 packets later: two blocks
    const auto send = [this](std::span<const std::byte> packet) { Send(bytes::Copy(packet)); };
    SendBlock(1);
    for (std::uint64_t id = 2; id < kLast; ++id) {
        for (const Packet& packet : m_packets.Block(id))
            path.Pass(packet, send);
    }
    path.Flush(send);
    SendBlock(kLast);

    std::size_t whole = 0;
    for (std::uint64_t id = 1; id <= kLast; ++id)
        whole += TakeNext(id) ? 1 : 0;
    EXPECT_GT(Statistic("PacketsLate"), 0);
    EXPECT_GT(whole, kLast / 2);
    EXPECT_LT(whole, kLast);
}

TEST_F(PacketStreamTest, PacketsOfAnOlderBlock)
{
    SendBlock(1);
    SendBlock(2);
    Send(m_packets.Payload(1, 3));
    Send(m_packets.Payload(2, 3));
    Send(m_packets.Trailer(1));
    SendBlock(3);

    for (const std::uint64_t id : {1u, 2u, 3u})
        ExpectPicture(id);
    EXPECT_EQ(Statistic("PacketsLate"), 3);
}

TEST_F(PacketStreamTest, AShortPacketIsNeverGood)
{
    SendBlock(1);
    ExpectPicture(1);
    std::uint64_t id = 1;
    for (std::uint32_t cut = 1; cut <= m_packets.PayloadCount(); ++cut) {
        Packets packets = m_packets.Block(++id);
        packets[cut].pop_back();
        SendAll(packets);
        SendBlock(++id);
        Expect(id - 1, VxError::MissingPackets);
        ExpectPicture(id);
    }
}

TEST_F(PacketStreamTest, ALongPacketIsNotStored)
{
    SendBlock(1);
    Packets packets = m_packets.Block(2);
    packets[3].push_back(std::byte{0xFF});
    SendAll(packets);
    SendBlock(3);

    ExpectPicture(1);
    Expect(2, VxError::MissingPackets);
    ExpectPicture(3);
    EXPECT_EQ(Statistic("PacketsWrongSize"), 1);
}

TEST_F(PacketStreamTest, EveryPacketCanBeTheMissingOne)
{
    SendBlock(1);
    ExpectPicture(1);
    std::uint64_t id = 1;
    const std::size_t count = m_packets.Block(1).size();
    for (std::size_t missing = 0; missing < count; ++missing) {
        Packets packets = m_packets.Block(++id);
        packets.erase(packets.begin() + static_cast<std::ptrdiff_t>(missing));
        SendAll(packets);
        SendBlock(++id);
        const bool isTrailer = missing + 1 == count; // the picture is whole without it
        Expect(id - 1, isTrailer ? VxError::Ok : VxError::MissingPackets);
        ExpectPicture(id);
    }
}

TEST_F(PacketStreamTest, APacketUnderAnIdBehindTheTrailerHidesNoHole)
{
    m_packets.leader.start.payloadType = {gvsp::PayloadType::kImage | gvsp::PayloadType::kChunksFollow};
    m_packets.payloadBytes = kBufferBytes + 428; // 7 full packets
    Packets packets = m_packets.Block(1);
    packets[3][7] = std::byte{9};
    SendAll(packets);
    SendBlock(2);

    Expect(1, VxError::MissingPackets);
    ExpectPicture(2);
}

TEST_F(PacketStreamTest, APictureThatIsTooLarge)
{
    m_packets.leader.heightPx = 49;
    m_packets.payloadBytes = 64 * 49;
    SendBlock(1);

    Expect(1, VxError::BufferTooSmall);
}

#ifndef _WIN32 // Wine sends from 127.0.0.1, whichever address of 127.0.0.0/8 a socket is bound to
TEST_F(PacketStreamTest, PacketsOfAStranger)
{
    const auto stranger = OpenAt(transport::Ipv4Address(127, 0, 0, 2));
    const Packets packets = m_packets.Block(1);
    Send(packets.front()); // from here on the camera is known
    Packet foreign = packets[1];
    std::ranges::fill(std::span(foreign).subspan(8), std::byte{0xFF});
    for (int i = 0; i < 5; ++i)
        ASSERT_TRUE(stranger->SendTo(foreign, Receiver()).IsOK());
    SendAll({packets.begin() + 1, packets.end()});

    ExpectPicture(1);
    EXPECT_EQ(Statistic("PacketsForeign"), 5);
}
#endif

} // namespace
