#include "LandingReceiver.h"

#include "support/Bytes.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>

namespace receive {
namespace {

using Packets = std::vector<StreamPackets::Packet>;
using bytes::FromHex;

/// The common way: each packet alone, and copied.
struct PlainReceiver {
    explicit PlainReceiver(std::span<const StreamPackets::Packet> packets)
    {
        for (const auto& packet : packets)
            assembler.OnPacket(packet, now);
        assembler.OnTime(now + std::chrono::seconds(1));
    }

    FakeSink sink{4, 64 * 48};
    StreamCounters counters;
    BlockAssembler assembler{{}, sink, counters};
    IVxClock::Time now{std::chrono::hours(1)};
};

/// Whether the same has become of the same packets.
void ExpectSame(LandingReceiver& landed, const PlainReceiver& plain)
{
    landed.assembler.OnTime(landed.now + std::chrono::seconds(1));
    const StreamCounters& ours = landed.counters;
    const StreamCounters& theirs = plain.counters;
    EXPECT_EQ(ours.packets.Value(), theirs.packets.Value());
    EXPECT_EQ(ours.bytes.Value(), theirs.bytes.Value());
    EXPECT_EQ(ours.packetsMalformed.Value(), theirs.packetsMalformed.Value());
    EXPECT_EQ(ours.packetsDuplicate.Value(), theirs.packetsDuplicate.Value());
    EXPECT_EQ(ours.packetsWrongSize.Value(), theirs.packetsWrongSize.Value());
    EXPECT_EQ(ours.packetsOutOfRange.Value(), theirs.packetsOutOfRange.Value());
    EXPECT_EQ(ours.packetsMissing.Value(), theirs.packetsMissing.Value());
    ASSERT_EQ(landed.sink.delivered.size(), plain.sink.delivered.size());
    for (std::size_t i = 0; i < plain.sink.delivered.size(); ++i) {
        const auto& our = landed.sink.delivered[i];
        const auto& their = plain.sink.delivered[i];
        EXPECT_EQ(our.info.code, their.info.code) << i;
        EXPECT_EQ(our.info.blockId, their.info.blockId) << i;
        EXPECT_EQ(our.info.receivedBytes, their.info.receivedBytes) << i;
        const auto size = static_cast<std::ptrdiff_t>(their.info.receivedBytes); // in the buffer
        const bool isSame = std::equal(our.memory.begin(), our.memory.begin() + size, their.memory.begin());
        EXPECT_TRUE(isSame || our.info.code != VxError::Ok) << i;
    }
}

class RunLandingTest : public testing::TestWithParam<gvsp::IdMode> {
protected:
    RunLandingTest()
    {
        m_stream.idMode = GetParam();
        m_stream.stepBytes = 64;                         // 48 packets
        m_receiver.Receive(Coalesce(m_stream.Block(1))); // from now on runs are expected
        EXPECT_EQ(m_receiver.sink.delivered.size(), 1u);
        m_receiver.atPlace = 0;
    }

    /// Sends the leader and the first two packets of block 2, so that the next ones are expected.
    void BeginBlock() { m_receiver.Receive(Coalesce(std::span(m_packets).first(3))); }

    /// Sends these packets of block 2, and then the end; the outcome is that of the common way.
    void EndBlock(const std::vector<Arrived>& arrived, const Packets& packets, std::size_t restBegin)
    {
        const auto rest = std::span(m_packets).subspan(restBegin);
        m_receiver.Receive(arrived);
        m_receiver.Receive(Coalesce(rest));
        Packets all = m_stream.Block(1);
        all.insert(all.end(), m_packets.begin(), m_packets.begin() + 3);
        all.insert(all.end(), packets.begin(), packets.end());
        all.insert(all.end(), rest.begin(), rest.end());
        ExpectSame(m_receiver, PlainReceiver(all));
    }

    /// Block 2 with the packets 3 to 19 replaced by these, in one run as long as can be.
    void ReplaceMiddle(const Packets& packets)
    {
        BeginBlock();
        EndBlock(Coalesce(packets), packets, 20);
    }
    [[nodiscard]] Packets Middle() const { return {m_packets.begin() + 3, m_packets.begin() + 20}; }
    [[nodiscard]] VxError CodeOfSecond() const { return m_receiver.sink.delivered.at(1).info.code; }

    StreamPackets m_stream;
    Packets m_packets = (m_stream.idMode = GetParam(), m_stream.stepBytes = 64, m_stream.Block(2));
    LandingReceiver m_receiver;
};

TEST_P(RunLandingTest, ARunTakesOneSlotAndLandsInThePicture)
{
    ReplaceMiddle(Middle());

    EXPECT_EQ(m_receiver.mostSlots, 1u);
    EXPECT_EQ(m_receiver.atPlace, 46u); // all but the two with which the block began
    EXPECT_EQ(CodeOfSecond(), VxError::Ok);
}

TEST_P(RunLandingTest, TheTrailerMayEndARun)
{
    BeginBlock();
    const auto end = Coalesce(std::span(m_packets).subspan(3), 64);
    ASSERT_EQ(end.size(), 1u); // the last packet of the picture is as long as the others, the trailer shorter
    EndBlock(end, {m_packets.begin() + 3, m_packets.end()}, m_packets.size());

    EXPECT_EQ(m_receiver.atPlace, 46u);
}

TEST_P(RunLandingTest, ALastPacketThatIsShortLandsToo)
{
    m_stream.stepBytes = 500;
    m_packets = m_stream.Block(2);
    m_receiver.Receive(Coalesce(m_packets)); // another step than that of the block before
    m_receiver.atPlace = 0;
    m_packets = m_stream.Block(3);
    BeginBlock();
    m_receiver.Receive(Coalesce(std::span(m_packets).subspan(3)));

    ASSERT_EQ(m_receiver.sink.delivered.size(), 3u);
    EXPECT_EQ(m_receiver.sink.delivered[2].info.code, VxError::Ok);
    EXPECT_EQ(m_receiver.atPlace, 5u); // 3 to 7
}

TEST_P(RunLandingTest, BehindAMissingPacketTheOthersOfARunAreMovedToTheirPlaces)
{
    Packets packets = Middle();
    const auto late = packets[4];
    packets.erase(packets.begin() + 4);
    packets.push_back(late);
    ReplaceMiddle(packets);

    EXPECT_EQ(CodeOfSecond(), VxError::Ok);
    EXPECT_EQ(m_receiver.atPlace, 45u); // all but the two at the beginning and the late one
}

TEST_P(RunLandingTest, APacketThatNeverComesIsMissing)
{
    Packets packets = Middle();
    packets.erase(packets.begin());
    ReplaceMiddle(packets);

    EXPECT_EQ(CodeOfSecond(), VxError::MissingPackets);
}

TEST_P(RunLandingTest, PacketsOfARunMayComeInAnyOrder)
{
    Packets packets = Middle();
    std::ranges::reverse(packets);
    ReplaceMiddle(packets);

    EXPECT_EQ(CodeOfSecond(), VxError::Ok);
}

TEST_P(RunLandingTest, PacketsOfARunMayComeTwice)
{
    Packets packets = Middle();
    packets.insert(packets.begin() + 5, packets[2]);
    packets.insert(packets.begin() + 9, packets[9]);
    ReplaceMiddle(packets);

    EXPECT_EQ(CodeOfSecond(), VxError::Ok);
    EXPECT_EQ(m_receiver.counters.packetsDuplicate.Value(), 2u);
}

TEST_P(RunLandingTest, AnswersToRequestsMayCloseTheGapWithinARun)
{
    Packets packets = Middle();
    auto late = packets[4];
    packets.erase(packets.begin() + 4);
    late[0] = std::byte{0x01}; // status: sent again
    late[1] = std::byte{0x00};
    packets.push_back(late);
    ReplaceMiddle(packets);

    EXPECT_EQ(CodeOfSecond(), VxError::Ok);
}

TEST_P(RunLandingTest, ARefusalWithinARunCarriesNothing)
{
    Packets packets = Middle();
    packets[4][0] = std::byte{0x80}; // status: not available, for ever
    packets[4][1] = std::byte{0x0C};
    ReplaceMiddle(packets);

    EXPECT_EQ(CodeOfSecond(), VxError::MissingPackets);
}

TEST_P(RunLandingTest, ARunOfAStrangerDoesNotStayInThePicture)
{
    BeginBlock();
    Packets foreign = Middle();
    for (auto& packet : foreign)
        std::fill(packet.begin() + static_cast<std::ptrdiff_t>(gvsp::HeaderBytes(GetParam())), packet.end(),
                  std::byte{0xFF});
    auto arrived = Coalesce(foreign);
    arrived[0].sender = kStranger;
    const auto own = Coalesce(Middle());
    arrived.insert(arrived.end(), own.begin(), own.end());
    EndBlock(arrived, Middle(), 20);

    EXPECT_EQ(CodeOfSecond(), VxError::Ok);
    EXPECT_EQ(m_receiver.counters.packetsForeign.Value(), foreign.size());
}

TEST_P(RunLandingTest, ARunOfShorterPacketsThanExpectedIsNotGood)
{
    Packets packets = Middle();
    for (auto& packet : packets)
        packet.resize(packet.size() - 3);
    ReplaceMiddle(packets);

    EXPECT_EQ(CodeOfSecond(), VxError::MissingPackets);
    EXPECT_EQ(m_receiver.atPlace, 29u); // those behind the run
}

TEST_P(RunLandingTest, ARunOfLongerPacketsThanExpectedIsNotGood)
{
    Packets packets = Middle();
    for (auto& packet : packets)
        packet.resize(packet.size() + 3);
    ReplaceMiddle(packets);

    EXPECT_EQ(CodeOfSecond(), VxError::MissingPackets);
}

TEST_P(RunLandingTest, APacketThatIsCutAtTheEndOfARunIsNotGood)
{
    Packets packets = Middle();
    packets.back().resize(packets.back().size() - 1);
    ReplaceMiddle(packets);

    EXPECT_EQ(CodeOfSecond(), VxError::MissingPackets);
}

TEST_P(RunLandingTest, ARestThatIsNoPacketIsCounted)
{
    Packets packets = Middle();
    packets.push_back(FromHex("0000 00"));
    ReplaceMiddle(packets);

    EXPECT_EQ(m_receiver.counters.packetsMalformed.Value(), 1u);
    EXPECT_EQ(CodeOfSecond(), VxError::Ok);
}

TEST_P(RunLandingTest, ADatagramThatTheSystemCutIsTakenAsFarAsItWent)
{
    BeginBlock();
    auto arrived = Coalesce(Middle());
    arrived[0].bytes.resize(arrived[0].bytes.size() - 10);
    arrived[0].isTruncated = true;
    Packets packets = Middle();
    packets.back().resize(packets.back().size() - 10);
    EndBlock(arrived, packets, 20);

    EXPECT_EQ(CodeOfSecond(), VxError::MissingPackets);
}

TEST_P(RunLandingTest, APacketAloneLandsWhereARunIsExpected)
{
    BeginBlock();
    EndBlock({{m_packets[3]}, {m_packets[4]}}, {m_packets[3], m_packets[4]}, 5);

    EXPECT_EQ(m_receiver.atPlace, 46u);
}

TEST_P(RunLandingTest, APacketAloneThatIsLongerThanSeveralPlacesIsNotGood)
{
    auto packet = m_packets[3];
    packet.resize(3 * packet.size() + 5, std::byte{0xEE});
    ReplaceMiddle({packet});

    EXPECT_EQ(CodeOfSecond(), VxError::MissingPackets);
    EXPECT_EQ(m_receiver.counters.packetsWrongSize.Value(), 1u);
}

TEST_P(RunLandingTest, ARunMayReachIntoTheNextBlock)
{
    BeginBlock();
    Packets packets(m_packets.begin() + 3, m_packets.end());
    const auto next = m_stream.Block(3);
    packets.insert(packets.end(), next.begin() + 1, next.end()); // its leader comes later
    packets.push_back(next[0]);
    std::vector<Arrived> arrived(1);
    arrived[0].segmentBytes = m_packets[3].size();
    for (const auto& packet : packets) { // a run as no system makes it: all but the trailers are equally long
        if (packet.size() == arrived[0].segmentBytes)
            arrived[0].bytes.insert(arrived[0].bytes.end(), packet.begin(), packet.end());
        else
            arrived.push_back({packet});
    }
    Packets inOrder;
    std::ranges::copy_if(packets, std::back_inserter(inOrder),
                         [&](const auto& packet) { return packet.size() == m_packets[3].size(); });
    std::ranges::copy_if(packets, std::back_inserter(inOrder),
                         [&](const auto& packet) { return packet.size() != m_packets[3].size(); });
    EndBlock(arrived, inOrder, m_packets.size());
}

TEST_P(RunLandingTest, ARunLongerThanThePlacesIsTakenWhole)
{
    BeginBlock();
    Packets packets(m_packets.begin() + 3, m_packets.end() - 1);
    packets.insert(packets.end(), 40, packets.back()); // the same again and again
    EndBlock(Coalesce(packets, 200), packets, m_packets.size() - 1);

    EXPECT_EQ(CodeOfSecond(), VxError::Ok);
    EXPECT_EQ(m_receiver.counters.packetsDuplicate.Value(), 40u);
}

TEST_P(RunLandingTest, ARunInASlotForOnePacketIsTakenWhole)
{
    LandingReceiver fresh;
    const auto first = m_stream.Block(1);
    fresh.Receive(std::span(first).first(2)); // nothing says yet that runs come
    ASSERT_EQ(fresh.mostSlots, Landing::kSlots);
    fresh.Receive(Coalesce(std::span(first).subspan(2)));

    ExpectSame(fresh, PlainReceiver(first));
}

TEST_P(RunLandingTest, WithoutRunsEachPacketHasASlotAgain)
{
    for (std::uint64_t id = 2; id < 5; ++id)
        m_receiver.Receive(m_stream.Block(id));
    EXPECT_EQ(m_receiver.mostSlots, Landing::kSlots);

    m_receiver.Receive(Coalesce(m_stream.Block(5)));
    m_receiver.Receive(Coalesce(m_stream.Block(6)));
    EXPECT_EQ(m_receiver.mostSlots, 1u);
    EXPECT_EQ(m_receiver.counters.blocksComplete.Value(), 6u);
}

TEST_P(RunLandingTest, LeadersAndTrailersBetweenShortRunsAreNoReasonForOtherSlots)
{
    m_stream.stepBytes = 500; // 7 packets
    for (std::uint64_t id = 2; id < 100; ++id)
        m_receiver.Receive(Coalesce(m_stream.Block(id)));

    EXPECT_EQ(m_receiver.mostSlots, 1u);
}

TEST_P(RunLandingTest, NothingButARunOfNoPacketsIsCounted)
{
    m_receiver.Receive(std::vector<Arrived>{{{}, 0}, {bytes::Vector(100), 1}});

    EXPECT_EQ(m_receiver.counters.packetsMalformed.Value(), 101u);
}

TEST_P(RunLandingTest, WhateverComesTheOutcomeIsThatOfTheCommonWay)
{
    std::mt19937 chance(7);
    const auto upTo = [&](std::size_t limit) { return chance() % (limit + 1); };
    for (int round = 0; round < 400; ++round) {
        m_stream.stepBytes = 64 + upTo(300);
        Packets packets;
        for (std::uint64_t id = 1; id <= 6; ++id)
            std::ranges::copy(m_stream.Block(id), std::back_inserter(packets));
        for (std::size_t i = upTo(12); i > 0; --i) {
            const auto at = static_cast<std::ptrdiff_t>(upTo(packets.size() - 2));
            switch (upTo(3)) {
            case 0:
                packets.erase(packets.begin() + at);
                break;
            case 1:
                packets.insert(packets.begin() + static_cast<std::ptrdiff_t>(upTo(packets.size() - 1)),
                               StreamPackets::Packet(packets[static_cast<std::size_t>(at)]));
                break;
            case 2:
                std::swap(packets[static_cast<std::size_t>(at)], packets[static_cast<std::size_t>(at) + 1]);
                break;
            default:
                packets[static_cast<std::size_t>(at)].resize(
                    upTo(packets[static_cast<std::size_t>(at)].size()));
                break;
            }
        }
        LandingReceiver landed;
        const auto arrived = Coalesce(packets, 1 + upTo(60));
        for (std::size_t begin = 0; begin < arrived.size();) {
            const std::size_t size = std::min(1 + upTo(20), arrived.size() - begin);
            landed.Receive(std::span(arrived).subspan(begin, size));
            begin += size;
        }
        ExpectSame(landed, PlainReceiver(packets));
        ASSERT_FALSE(HasFailure()) << round;
    }
}

INSTANTIATE_TEST_SUITE_P(Headers, RunLandingTest,
                         testing::Values(gvsp::IdMode::Standard, gvsp::IdMode::Extended));

/// Blocks that are more than a picture, or none; in runs as long as can be.
class RunPayloadTest : public testing::Test {
protected:
    void Expect(const Packets& packets)
    {
        // Twice: the first block lets the receiver expect runs.
        LandingReceiver landed;
        landed.Receive(Coalesce(packets));
        ExpectSame(landed, PlainReceiver(packets));
        EXPECT_GT(landed.counters.blocksComplete.Value(), 0u);
    }
    [[nodiscard]] Packets Blocks(std::uint64_t count) const
    {
        Packets packets;
        for (std::uint64_t id = 1; id <= count; ++id)
            std::ranges::copy(m_stream.Block(id), std::back_inserter(packets));
        return packets;
    }

    StreamPackets m_stream;
};

TEST_F(RunPayloadTest, ChunksBehindThePicture)
{
    m_stream.leader = StreamPackets::Mono8(64, 40);
    m_stream.leader.start.payloadType = {gvsp::PayloadType::kImage | gvsp::PayloadType::kChunksFollow};
    m_stream.stepBytes = 100;
    m_stream.payloadBytes = 64 * 40 + 444;
    Expect(Blocks(3));
    m_stream.payloadBytes = 64 * 48 + 444; // more than fits
    Expect(Blocks(3));
}

TEST_F(RunPayloadTest, BlocksInOnePacket)
{
    Packets packets;
    auto block = FromHex("0000 0007 04 000000 | 0000 0001 00000001 23456789 01080001 00000004 00000002 "
                         "00000000 00000000 0000 0000 | 0000 0001 00000002 | 01020304 05060708");
    for (int id = 1; id < 20; ++id) {
        block[3] = static_cast<std::byte>(id);
        packets.push_back(block);
    }
    Expect(packets);
}

TEST_F(RunPayloadTest, PartsOfABlock)
{
    Packets packets;
    for (int id = 1; id < 20; ++id) {
        const std::size_t begin = packets.size();
        packets.push_back(FromHex("0000 0001 01 000000 | 0000 000A 00000000 00000007 |"
                                  "0001 0000 00000008 01080001 0000 00 00 00000000 0000 0000"
                                  "00000004 00000002 00000000 00000000 0000 0000 00000000"));
        packets.push_back(FromHex("0000 0001 07 000001 | 00 00 000000000000 | 01020304"));
        packets.push_back(FromHex("0000 0001 07 000002 | 00 40 000000000004 | 05060708"));
        packets.push_back(FromHex("0000 0001 02 000003 | 0000 000A"));
        for (std::size_t i = begin; i < packets.size(); ++i)
            packets[i][3] = static_cast<std::byte>(id);
    }
    Expect(packets);
}

TEST_F(RunPayloadTest, BlocksOfOtherSizesInTurn)
{
    Packets packets;
    for (std::uint64_t id = 1; id <= 12; ++id) {
        m_stream.stepBytes = id % 3 == 0 ? 700 : 90 * (1 + id % 2);
        m_stream.leader = StreamPackets::Mono8(64, id % 2 == 0 ? 48 : 20);
        m_stream.payloadBytes = 64 * (id % 2 == 0 ? 48 : 20);
        std::ranges::copy(m_stream.Block(id), std::back_inserter(packets));
    }
    Expect(packets);
}

} // namespace
} // namespace receive
