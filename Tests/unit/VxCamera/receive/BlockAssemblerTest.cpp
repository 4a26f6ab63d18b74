#include "BlockAssemblerFixture.h"
#include "support/Bytes.h"

#include <algorithm>
#include <random>

namespace receive {
namespace {

using namespace std::chrono_literals;
using Packet = StreamPackets::Packet;

class BlockAssemblerTest : public BlockAssemblerFixture {};

TEST_F(BlockAssemblerTest, PacketsInOrderMakeAPicture)
{
    SendBlock(1);

    ASSERT_EQ(m_sink.delivered.size(), 1u);
    ExpectPicture(0, 1);
    const BlockInfo& info = m_sink.delivered[0].info;
    EXPECT_EQ(info.timestampTicks, 4711u);
    EXPECT_EQ(info.geometry.widthPx, 64u);
    EXPECT_EQ(info.geometry.heightPx, 48u);
    EXPECT_EQ(info.receivedBytes, 64u * 48u);
    EXPECT_EQ(m_counters.blocksComplete.Value(), 1u);
    EXPECT_EQ(m_counters.packets.Value(), 9u); // leader, 3072 / 500 rounded up, trailer
}

TEST_F(BlockAssemblerTest, ReadsTheBytesOfTheProtocol)
{
    // Block 0x1234: Mono8, 4 x 2 pixels, two payload packets would be 64 bytes and more, so it is one of 8.
    Send(bytes::FromHex("0000 1234 01 000000 | 0000 0001 00000001 23456789 01080001 00000004 00000002 "
                        "00000000 00000000 0000 0000"));
    Send(bytes::FromHex("0000 1234 03 000001 | 01020304 05060708"));
    Send(bytes::FromHex("0000 1234 02 000002 | 0000 0001 00000002"));

    ASSERT_EQ(m_sink.delivered.size(), 1u);
    EXPECT_EQ(CodeOf(0), VxError::Ok);
    EXPECT_EQ(m_sink.delivered[0].info.blockId, 0x1234u);
    EXPECT_EQ(bytes::Copy(bytes::First(m_sink.delivered[0].memory, 8)), bytes::FromHex("0102030405060708"));
}

TEST_F(BlockAssemblerTest, AnyOrderMakesTheSamePicture)
{
    std::mt19937 chance(7);
    for (std::uint64_t id = 1; id <= 200; ++id) {
        auto packets = m_stream.Block(id);
        std::ranges::shuffle(packets, chance);
        SendAll(packets);
        // The last packet to arrive may be any, so a block may wait for the next one to be finished.
        Wait(300ms);
    }

    ASSERT_EQ(m_sink.delivered.size(), 200u);
    for (std::size_t i = 0; i < 200; ++i)
        ExpectPicture(i, i + 1);
}

TEST_F(BlockAssemblerTest, NeighbouringBlocksMayMix)
{
    SendBlock(1);
    auto packets = m_stream.Block(2);
    const auto next = m_stream.Block(3);
    packets.insert(packets.end() - 2, next.begin(),
                   next.begin() + 3); // overtaken by the start of the next block
    SendAll(packets);
    SendAll({next.begin() + 3, next.end()});

    ASSERT_EQ(m_sink.delivered.size(), 3u);
    ExpectPicture(1, 2);
    ExpectPicture(2, 3);
}

TEST_F(BlockAssemblerTest, ABlockThatIsOvertakenWholeIsLate)
{
    SendBlock(1);
    SendBlock(3);
    SendBlock(2);

    EXPECT_EQ(m_sink.delivered.size(), 2u);
    EXPECT_EQ(m_counters.packetsLate.Value(), 9u);
    EXPECT_EQ(m_counters.blocksLost.Value(), 1u);
}

TEST_F(BlockAssemblerTest, PacketsThatComeTwiceAreCountedAndIgnored)
{
    const auto packets = m_stream.Block(1);
    for (std::size_t i = 0; i + 1 < packets.size(); ++i) {
        Send(packets[i]);
        Send(packets[i]);
    }
    Send(packets.back());

    ExpectPicture(0, 1);
    EXPECT_EQ(m_counters.packetsDuplicate.Value(), packets.size() - 1);
}

TEST_F(BlockAssemblerTest, AMissingPacketIsToldWhenTheNextBlockIsComplete)
{
    auto packets = m_stream.Block(1);
    packets.erase(packets.begin() + 3);
    SendAll(packets);
    EXPECT_TRUE(m_sink.delivered.empty()); // it may still come

    SendBlock(2);

    ASSERT_EQ(m_sink.delivered.size(), 2u);
    EXPECT_EQ(CodeOf(0), VxError::MissingPackets);
    EXPECT_EQ(m_sink.delivered[0].info.packetsMissing, 1u);
    EXPECT_EQ(m_sink.delivered[0].info.blockId, 1u);
    ExpectPicture(1, 2);
    EXPECT_EQ(m_counters.packetsMissing.Value(), 1u);
}

TEST_F(BlockAssemblerTest, AMissingPacketIsToldWhenANewerBlockHasGoneFarEnough)
{
    m_stream.stepBytes = 64; // 48 packets, more than the network reorders
    auto packets = m_stream.Block(1);
    packets.erase(packets.begin() + 3);
    SendAll(packets);
    const auto next = m_stream.Block(2);

    SendAll({next.begin(), next.begin() + 32}); // leader and 31 payload packets
    EXPECT_TRUE(m_sink.delivered.empty());
    Send(next[32]);

    ASSERT_EQ(m_sink.delivered.size(), 1u);
    EXPECT_EQ(CodeOf(0), VxError::MissingPackets);
}

TEST_F(BlockAssemblerTest, AMissingPacketIsToldAfterATimeout)
{
    auto packets = m_stream.Block(1);
    packets.erase(packets.begin() + 3);
    SendAll(packets);

    ASSERT_EQ(m_assembler.NextDeadline(m_now), m_now + 250ms);
    Wait(249ms);
    EXPECT_TRUE(m_sink.delivered.empty());
    Wait(1ms);

    ASSERT_EQ(m_sink.delivered.size(), 1u);
    EXPECT_EQ(CodeOf(0), VxError::MissingPackets);
    EXPECT_EQ(m_assembler.NextDeadline(m_now), std::nullopt);
}

TEST_F(BlockAssemblerTest, EveryPacketOfABlockCanBeTheMissingOne)
{
    const std::size_t count = m_stream.Block(1).size();
    for (std::size_t missing = 0; missing < count; ++missing) {
        const std::uint64_t id = 1 + missing;
        auto packets = m_stream.Block(id);
        packets.erase(packets.begin() + static_cast<std::ptrdiff_t>(missing));
        SendAll(packets);
        Wait(300ms);

        const bool isTrailer = missing + 1 == count; // the picture is whole without it
        ASSERT_EQ(m_sink.delivered.size(), missing + 1);
        EXPECT_EQ(CodeOf(missing), isTrailer ? VxError::Ok : VxError::MissingPackets) << missing;
    }
}

TEST_F(BlockAssemblerTest, WithoutItsLeaderABlockHasTheGeometryBefore)
{
    SendBlock(1);
    auto packets = m_stream.Block(2);
    packets.erase(packets.begin());
    SendAll(packets);
    Wait(300ms);

    ASSERT_EQ(m_sink.delivered.size(), 2u);
    EXPECT_EQ(CodeOf(1), VxError::MissingPackets);
    EXPECT_EQ(m_sink.delivered[1].info.geometry.widthPx, 64u);
    EXPECT_EQ(m_sink.delivered[1].memory.back(), StreamPackets::ByteAt(2, 64 * 48 - 1));
}

TEST_F(BlockAssemblerTest, WithoutItsTrailerAWholePictureIsGoodAfterAShortWait)
{
    auto packets = m_stream.Block(1);
    packets.pop_back();
    SendAll(packets);

    EXPECT_TRUE(m_sink.delivered.empty());
    ASSERT_EQ(m_assembler.NextDeadline(m_now), m_now + 20ms);
    Wait(20ms);

    ExpectPicture(0, 1);
}

TEST_F(BlockAssemblerTest, AWaitingCameraMayHaveSentItsLeaderLongBefore)
{
    const auto packets = m_stream.Block(1);
    Send(packets.front());

    EXPECT_EQ(m_assembler.NextDeadline(m_now), std::nullopt);
    Wait(60s);
    SendAll({packets.begin() + 1, packets.end()});

    ExpectPicture(0, 1);
}

TEST_F(BlockAssemblerTest, AnotherPacketSizeFromBlockToBlockIsLearnt)
{
    std::uint64_t id = 0;
    for (const std::size_t step : {500u, 1464u, 200u, 3072u, 64u}) {
        m_stream.stepBytes = step;
        SendBlock(++id);
    }

    ASSERT_EQ(m_sink.delivered.size(), id);
    for (std::size_t i = 0; i < id; ++i)
        ExpectPicture(i, i + 1);
}

TEST_F(BlockAssemblerTest, BlockIdsWrapAndSkipZero)
{
    for (const std::uint64_t id : {65534u, 65535u, 1u, 2u})
        SendBlock(id);

    ASSERT_EQ(m_sink.delivered.size(), 4u);
    ExpectPicture(2, 1);
    EXPECT_EQ(m_counters.blocksLost.Value(), 0u);
}

TEST_F(BlockAssemblerTest, GapsInBlockIdsAreLostBlocks)
{
    for (const std::uint64_t id : {5u, 6u, 10u})
        SendBlock(id);

    EXPECT_EQ(m_sink.delivered.size(), 3u);
    EXPECT_EQ(m_counters.blocksLost.Value(), 3u);
}

TEST_F(BlockAssemblerTest, ACameraThatBeginsAnewIsFollowed)
{
    SendBlock(1000);
    SendBlock(1); // far back
    SendBlock(2);
    Wait(100ms);
    ++m_stream.leader.start.timestampTicks;
    SendBlock(1); // near, but after a pause

    ASSERT_EQ(m_sink.delivered.size(), 4u);
    ExpectPicture(3, 1);
    EXPECT_EQ(m_counters.blocksLost.Value(), 0u);
}

TEST_F(BlockAssemblerTest, ACameraThatBeginsAnewAfterALeaderAloneIsFollowed)
{
    Send(m_stream.Leader(30'000)); // a camera that waits for a trigger
    SendBlock(1);

    ASSERT_EQ(m_sink.delivered.size(), 2u) << "nothing of the old acquisition is waited for";
    EXPECT_EQ(CodeOf(0), VxError::MissingPackets);
    ExpectPicture(1, 1);
    EXPECT_EQ(m_sink.FreeCount(), 4u);
}

TEST_F(BlockAssemblerTest, TheRemainsOfAnAcquisitionBeforeAreNoBlockOfTheStream)
{
    const auto before = m_stream.Block(11);
    SendAll({before.begin() + 3, before.end()});
    SendBlock(1);

    ASSERT_EQ(m_sink.delivered.size(), 1u);
    ExpectPicture(0, 1);
    EXPECT_EQ(m_sink.FreeCount(), 4u);
}

TEST_F(BlockAssemblerTest, TheFirstBlocksOfAStreamMayOvertakeEachOther)
{
    const auto first = m_stream.Block(1);
    const auto second = m_stream.Block(2);
    Send(second.front());
    SendAll(first);
    SendAll({second.begin() + 1, second.end()});

    ASSERT_EQ(m_sink.delivered.size(), 2u);
    ExpectPicture(0, 1);
    ExpectPicture(1, 2);
}

TEST_F(BlockAssemblerTest, ALeaderSentAgainWithoutAMarkIsNoRestart)
{
    const auto older = m_stream.Leader(1);
    Send(m_stream.Payload(1, 1)); // its leader is lost
    ++m_stream.leader.start.timestampTicks;
    SendBlock(2);
    ASSERT_EQ(m_sink.delivered.size(), 2u);
    Wait(100ms);
    Send(older);
    Wait(300ms);

    EXPECT_EQ(m_sink.delivered.size(), 2u);
    EXPECT_EQ(m_counters.packetsLate.Value(), 1u);
}

TEST_F(BlockAssemblerTest, OfSmallBlocksThatAllLostAPacketTwoNewerOnesOvertakeAnOlderOne)
{
    const auto holed = [this](std::uint64_t id) {
        auto packets = m_stream.Block(id);
        packets.erase(packets.begin() + 3);
        return packets;
    };
    for (std::uint64_t id = 1; id <= 20; ++id)
        SendAll(holed(id)); // all at once

    EXPECT_EQ(m_sink.delivered.size(), 18u);
    EXPECT_EQ(m_counters.blocksUnbuffered.Value(), 0u);
}

TEST_F(BlockAssemblerTest, LatePacketsOfAFinishedBlockAreCountedAndIgnored)
{
    SendBlock(1);
    SendBlock(2);
    Send(m_stream.Payload(1, 3));
    Send(m_stream.Leader(1));

    EXPECT_EQ(m_sink.delivered.size(), 2u);
    EXPECT_EQ(m_counters.packetsLate.Value(), 2u);
}

TEST_F(BlockAssemblerTest, ExtendedIdsAreRead)
{
    m_stream.idMode = gvsp::IdMode::Extended;
    SendBlock(0x100001234);
    SendBlock(0x100001236);

    ASSERT_EQ(m_sink.delivered.size(), 2u);
    ExpectPicture(0, 0x100001234);
    EXPECT_EQ(m_counters.blocksLost.Value(), 1u);
}

TEST_F(BlockAssemblerTest, APictureThatIsTooLargeWritesNothing)
{
    m_stream.leader.heightPx = 49;
    m_stream.payloadBytes = 64 * 49;
    SendBlock(1);

    ASSERT_EQ(m_sink.delivered.size(), 1u);
    EXPECT_EQ(CodeOf(0), VxError::BufferTooSmall);
    EXPECT_TRUE(
        std::ranges::all_of(m_sink.delivered[0].memory, [](std::byte byte) { return byte == std::byte{0}; }));
    EXPECT_EQ(m_counters.blocksBufferTooSmall.Value(), 1u);
}

TEST_F(BlockAssemblerTest, ABufferIsAskedForWithTheSizeOfThePicture)
{
    m_stream.leader.linePaddingBytes = 3;
    Send(m_stream.Leader(1));
    Send(m_stream.Payload(2, 1)); // before its leader: as large as the one before

    EXPECT_EQ(m_sink.wanted, (std::vector<std::size_t>{67 * 48, 0}));
}

TEST_F(BlockAssemblerTest, PaddedLinesArriveWithTheirPadding)
{
    m_stream.leader = StreamPackets::Mono8(60, 48);
    m_stream.leader.linePaddingBytes = 4;
    SendBlock(1);

    ExpectPicture(0, 1);
    EXPECT_EQ(m_sink.delivered[0].info.geometry.linePaddingBytes, 4u);
}

TEST_F(BlockAssemblerTest, WithoutAFreeBufferTheNewestBlockIsDroppedAndCounted)
{
    m_sink.isKeeping = true;
    for (std::uint64_t id = 1; id <= 6; ++id)
        SendBlock(id);

    ASSERT_EQ(m_sink.delivered.size(), 4u);
    ExpectPicture(3, 4);
    EXPECT_EQ(m_counters.blocksUnbuffered.Value(), 2u);
    EXPECT_EQ(m_counters.packetsUnbuffered.Value(), 14u);
    EXPECT_EQ(m_counters.blocksLost.Value(), 0u);
}

TEST_F(BlockAssemblerTest, ALeaderThatMakesNoSenseWritesNothing)
{
    m_stream.leader.widthPx = 0;
    SendBlock(1);

    EXPECT_EQ(CodeOf(0), VxError::InvalidData);
    EXPECT_EQ(m_counters.blocksDamaged.Value(), 1u);
}

TEST_F(BlockAssemblerTest, FewerLinesThanAnnouncedAreAPictureOfThatHeight)
{
    m_stream.payloadBytes = 64 * 20;
    auto packets = m_stream.Block(1);
    packets.back() = m_stream.Trailer(1, 20);
    SendAll(packets);

    ASSERT_EQ(m_sink.delivered.size(), 1u);
    EXPECT_EQ(CodeOf(0), VxError::Ok);
    EXPECT_EQ(m_sink.delivered[0].info.geometry.heightPx, 20u);
}

TEST_F(BlockAssemblerTest, FewerLinesThanTheTrailerTellsAreIncomplete)
{
    m_stream.payloadBytes = 64 * 20;
    auto packets = m_stream.Block(1);
    packets.back() = m_stream.Trailer(1, 21);
    SendAll(packets);
    Wait(300ms);

    EXPECT_EQ(CodeOf(0), VxError::MissingPackets);
}

TEST_F(BlockAssemblerTest, ABlockThatTheCameraCallsDamagedIsNotGood)
{
    auto packets = m_stream.Block(1);
    packets.back()[0] = std::byte{0x80}; // status 0x800D: data overrun
    packets.back()[1] = std::byte{0x0D};
    SendAll(packets);

    EXPECT_EQ(CodeOf(0), VxError::CameraError);
    EXPECT_EQ(m_counters.packetsErrorStatus.Value(), 1u);
    EXPECT_EQ(m_counters.blocksDamaged.Value(), 1u);
}

TEST_F(BlockAssemblerTest, APacketSentAgainIsAsGoodAsAnyOther)
{
    auto packets = m_stream.Block(1);
    packets[2][0] = std::byte{0x01}; // status 0x0100
    SendAll(packets);

    ExpectPicture(0, 1);
}

TEST_F(BlockAssemblerTest, PacketsOutsideTheirBlockAreCountedAndIgnored)
{
    const auto packets = m_stream.Block(1);
    SendAll({packets.begin(), packets.begin() + 3});
    Packet far = m_stream.Header(1, gvsp::PacketFormat::Payload, 0xFFFFFF);
    far.insert(far.end(), m_stream.stepBytes, std::byte{0});
    Send(far);
    SendAll({packets.begin() + 3, packets.end()});

    ExpectPicture(0, 1);
    EXPECT_EQ(m_counters.packetsOutOfRange.Value(), 1u);
}

TEST_F(BlockAssemblerTest, OddPacketsAreCountedByTheirKind)
{
    Send(bytes::FromHex("0000 0000 01 000000 AAAA"));                    // block 0: a test packet
    Send(bytes::FromHex("0000 0001 09 000000 AAAA"));                    // no known format
    Send(bytes::FromHex("0000 0001 0F 000000 AAAA"));                    // no known format
    Send(bytes::FromHex("0000 0001 03"));                                // cut
    Send(bytes::FromHex("0000 0001 83 000000 0000000000000001 000000")); // cut in the extended header
    Send(Packet{});

    EXPECT_EQ(m_counters.packetsTest.Value(), 1u);
    EXPECT_EQ(m_counters.packetsUnsupported.Value(), 2u);
    EXPECT_EQ(m_counters.packetsMalformed.Value(), 3u);
    EXPECT_TRUE(m_sink.delivered.empty());
}

TEST_F(BlockAssemblerTest, AbortGivesAllBuffersBack)
{
    Send(m_stream.Leader(1));
    Send(m_stream.Leader(2));
    ASSERT_EQ(m_sink.FreeCount(), 2u);

    m_assembler.Abort();

    EXPECT_EQ(m_sink.FreeCount(), 4u);
    EXPECT_EQ(m_sink.givenBack, 2);
    SendBlock(1); // any id may follow
    ExpectPicture(0, 1);
}

TEST_F(BlockAssemblerTest, ALateLeaderThatIsSentAgainIsNoRestart)
{
    SendBlock(1);
    Wait(100ms);
    auto leader = m_stream.Leader(1);
    Send(leader); // the same time stamp
    leader[0] = std::byte{0x01};
    leader[20] = std::byte{0x7F}; // another one, but marked as sent again
    Send(leader);

    EXPECT_EQ(m_counters.packetsLate.Value(), 2u);
    EXPECT_EQ(m_assembler.NextDeadline(m_now), std::nullopt);
}

TEST_F(BlockAssemblerTest, AtMostAsManyBlocksAreOpenAsWasSaid)
{
    m_assembler.SetMostOpen(2);
    for (std::uint64_t id = 1; id <= 3; ++id)
        Send(m_stream.Leader(id));

    EXPECT_EQ(m_sink.FreeCount(), 2u);
    EXPECT_EQ(m_sink.delivered.size(), 1u);
}

TEST_F(BlockAssemblerTest, NoSequenceOfPacketsWritesOutsideABuffer)
{
    bytes::Random random; // the sanitizer watches the buffers
    for (int i = 0; i < 200'000; ++i) {
        m_sink.isGrowing = i >= 150'000;
        m_stream.leader.widthPx = static_cast<std::uint32_t>(random.UpTo(80));  // small
        m_stream.leader.heightPx = static_cast<std::uint32_t>(random.UpTo(60)); // small
        m_stream.idMode = random.UpTo(9) == 0 ? gvsp::IdMode::Extended : gvsp::IdMode::Standard;
        m_stream.stepBytes = 1 + random.UpTo(700);
        const std::uint64_t block = 1 + random.UpTo(5);
        const auto id = static_cast<std::uint32_t>(1 + random.UpTo(60)); // small
        Packet packet;
        switch (random.UpTo(3)) {
        case 0:
            packet = m_stream.Leader(block);
            break;
        case 1:
            packet = m_stream.Trailer(block);
            break;
        default:
            packet = m_stream.Header(block, gvsp::PacketFormat::Payload, id);
            packet.insert(packet.end(), random.UpTo(700), std::byte{0x55});
            break;
        }
        if (random.UpTo(20) == 0)
            packet[random.UpTo(packet.size() - 1)] = random.Number<std::byte>();
        m_now += std::chrono::milliseconds(random.UpTo(30));
        Send(packet);
        m_assembler.OnTime(m_now);
    }

    m_assembler.Abort();
    EXPECT_EQ(m_sink.FreeCount(), 4u);
    EXPECT_GT(m_sink.delivered.size(), 100u);
}

TEST_F(BlockAssemblerTest, ASteadyStreamLosesNothingForAnHour)
{
    m_stream.leader = StreamPackets::Mono8(8, 8);
    m_stream.payloadBytes = 64;
    m_stream.stepBytes = 64;
    std::uint64_t id = 0;
    for (int frame = 0; frame < 3600 * 50; ++frame) { // 50 blocks a second
        id = id == 65535 ? 1 : id + 1;
        SendBlock(id);
        ASSERT_EQ(m_sink.delivered.size(), 1u);
        ASSERT_EQ(CodeOf(0), VxError::Ok);
        m_sink.delivered.clear();
        m_sink.wanted.clear();
        Wait(20ms);
    }

    EXPECT_EQ(m_counters.blocksComplete.Value(), 180'000u);
    EXPECT_EQ(m_counters.blocksLost.Value(), 0u);
    EXPECT_EQ(m_counters.packetsLate.Value(), 0u);
}

} // namespace
} // namespace receive