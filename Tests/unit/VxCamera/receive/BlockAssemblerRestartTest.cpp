#include "AskingFixture.h"
#include "BlockAssemblerFixture.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <initializer_list>

namespace receive {
namespace {

using namespace std::chrono_literals;
using Packet = StreamPackets::Packet;

/// A camera whose acquisitions begin with the same block ids again and again.
class BlockAssemblerRestartTest : public BlockAssemblerFixture {
protected:
    /// @param timestamp  of the camera's clock, in ticks
    [[nodiscard]] std::vector<Packet> BlockAt(std::uint64_t timestamp, std::uint64_t blockId)
    {
        m_stream.leader.start.timestampTicks = timestamp;
        return m_stream.Block(blockId);
    }
    void SendBlockAt(std::uint64_t timestamp, std::uint64_t blockId) { SendAll(BlockAt(timestamp, blockId)); }

    /// The same in one packet.
    [[nodiscard]] Packet AllInAt(std::uint64_t timestamp, std::uint64_t blockId)
    {
        m_stream.stepBytes = m_stream.payloadBytes;
        const std::size_t headerBytes = gvsp::HeaderBytes(m_stream.idMode);
        const auto block = BlockAt(timestamp, blockId);
        Packet packet = m_stream.Header(blockId, gvsp::PacketFormat::AllIn, 0);
        for (const std::size_t part : {0u, 2u, 1u}) // leader, trailer, payload
            packet.insert(packet.end(), block[part].begin() + static_cast<std::ptrdiff_t>(headerBytes),
                          block[part].end());
        return packet;
    }

    void ExpectPictures(const std::vector<std::uint64_t>& blockIds) const
    {
        ASSERT_EQ(m_sink.delivered.size(), blockIds.size());
        for (std::size_t i = 0; i < blockIds.size(); ++i)
            ExpectPicture(i, blockIds[i]);
    }
};

TEST_F(BlockAssemblerRestartTest, SinglePicturesInALoopAreTakenHoweverSoonTheyFollow)
{
    std::uint64_t timestamp = 1000;
    for (const auto pause : {0ms, 5ms, 15ms, 19ms, 20ms, 100ms}) {
        SendBlockAt(++timestamp, 1);
        Wait(pause);
    }

    ExpectPictures({1, 1, 1, 1, 1, 1});
    EXPECT_EQ(m_counters.packetsLate.Value(), 0u);
    EXPECT_EQ(m_counters.blocksLost.Value(), 0u);
}

TEST_F(BlockAssemblerRestartTest, AFewPicturesInALoopAreTakenHoweverSoonTheyFollow)
{
    for (const std::uint64_t begin : {100u, 200u, 300u}) {
        for (std::uint64_t id = 1; id <= 3; ++id)
            SendBlockAt(begin + id, id);
        Wait(5ms);
    }

    ExpectPictures({1, 2, 3, 1, 2, 3, 1, 2, 3});
    EXPECT_EQ(m_counters.packetsLate.Value(), 0u);
}

TEST_F(BlockAssemblerRestartTest, PicturesInOnePacketInALoopAreTakenAndTheirRepetitionsAreLate)
{
    for (const std::uint64_t timestamp : {1001u, 1002u, 1002u, 1003u, 1001u}) {
        Send(AllInAt(timestamp, 1));
        Wait(5ms);
    }

    ExpectPictures({1, 1, 1});
    EXPECT_EQ(m_counters.packetsLate.Value(), 2u);
}

TEST_F(BlockAssemblerRestartTest, PicturesInOnePacketWithExtendedIdsAreToldApartToo)
{
    m_stream.idMode = gvsp::IdMode::Extended;
    for (const std::uint64_t timestamp : {1001u, 1002u, 1002u, 1003u})
        Send(AllInAt(timestamp, 1));
    Packet marked = AllInAt(1004, 1);
    marked[3] = std::byte{0x01}; // flag of a packet that is sent again
    Send(marked);

    ExpectPictures({1, 1, 1});
    EXPECT_EQ(m_counters.packetsLate.Value(), 2u);
}

TEST_F(BlockAssemblerRestartTest, WhatIsLeftOfTheAcquisitionBeforeIsDeliveredBeforeTheNext)
{
    auto before = BlockAt(1000, 1);
    before.erase(before.begin() + 3);
    SendAll(before);
    Wait(5ms);
    SendBlockAt(2000, 1);

    ASSERT_EQ(m_sink.delivered.size(), 2u);
    EXPECT_EQ(CodeOf(0), VxError::MissingPackets);
    EXPECT_EQ(m_sink.delivered[0].info.timestampTicks, 1000u);
    EXPECT_EQ(m_sink.delivered[0].info.packetsMissing, 1u);
    ExpectPicture(1, 1);
    EXPECT_EQ(m_sink.delivered[1].info.timestampTicks, 2000u);
}

TEST_F(BlockAssemblerRestartTest, ABlockThatWasOvertakenIsLate)
{
    const auto overtaken = BlockAt(1001, 2);
    SendBlockAt(1000, 1);
    SendBlockAt(1002, 3);
    SendAll(overtaken);

    ExpectPictures({1, 3});
    EXPECT_EQ(m_counters.packetsLate.Value(), overtaken.size());
}

TEST_F(BlockAssemblerRestartTest, ALeaderThatComesTwiceIsLateOrADuplicate)
{
    const auto block = BlockAt(1000, 1);
    Send(block.front());
    Send(block.front());
    SendAll({block.begin() + 1, block.end()});
    Send(block.front());
    Wait(5ms);
    Send(block.front());

    ExpectPictures({1});
    EXPECT_EQ(m_counters.packetsDuplicate.Value(), 1u);
    EXPECT_EQ(m_counters.packetsLate.Value(), 2u);
}

TEST_F(BlockAssemblerRestartTest, ALeaderThatIsMarkedAsSentAgainIsNone)
{
    SendBlockAt(1000, 1);
    Packet leader = BlockAt(2000, 1).front();
    leader[0] = std::byte{0x01}; // status 0x0100
    Send(leader);
    Wait(100ms);
    Send(leader);

    ExpectPictures({1});
    EXPECT_EQ(m_counters.packetsLate.Value(), 2u);
    EXPECT_EQ(m_assembler.NextDeadline(m_now), std::nullopt);
}

TEST_F(BlockAssemblerRestartTest, ALateLeaderOfABlockThatHadNoneIsNone)
{
    m_stream.stepBytes = 64; // 48 packets, more than the network reorders
    SendBlockAt(1000, 4);
    const auto older = BlockAt(1001, 5);
    const auto newer = BlockAt(1002, 6);
    SendAll({older.begin() + 1, older.end()});
    SendAll({newer.begin() + 1, newer.end()});
    ASSERT_EQ(m_sink.delivered.size(), 2u) << "the newer one may still get its leader";

    Send(older.front()); // later than all leaders before it, and not marked
    EXPECT_EQ(m_counters.packetsLate.Value(), 1u);
    Send(newer.front());

    ASSERT_EQ(m_sink.delivered.size(), 3u);
    EXPECT_EQ(CodeOf(1), VxError::MissingPackets);
    ExpectPicture(2, 6);
}

TEST_F(BlockAssemblerRestartTest, TheFirstLeaderOfAnOpenBlockIsNone)
{
    SendBlockAt(1000, 4);
    const auto block = BlockAt(1001, 5);
    const auto next = BlockAt(1002, 6);
    SendAll({block.begin() + 1, block.begin() + 4});
    Send(next.front());
    Send(block.front());
    SendAll({block.begin() + 4, block.end()});
    SendAll({next.begin() + 1, next.end()});

    ExpectPictures({4, 5, 6});
    EXPECT_EQ(m_counters.packetsLate.Value(), 0u);
}

TEST_F(BlockAssemblerRestartTest, WithoutATimeOnlyAPauseTells)
{
    SendBlockAt(0, 1);
    Wait(19ms);
    SendBlockAt(0, 1);
    EXPECT_EQ(m_counters.packetsLate.Value(), 9u);
    Wait(20ms);
    SendBlockAt(0, 1);

    ExpectPictures({1, 1});
    EXPECT_EQ(m_counters.packetsLate.Value(), 9u);
}

TEST_F(BlockAssemblerRestartTest, WithATimeThatStandsStillOnlyAWayBackInTheIdsAndAPauseTell)
{
    for (std::uint64_t id = 1; id <= 3; ++id)
        SendBlockAt(4711, id);
    Wait(19ms);
    SendBlockAt(4711, 1);
    EXPECT_EQ(m_counters.packetsLate.Value(), 9u);
    Wait(20ms);
    SendBlockAt(4711, 1);

    ExpectPictures({1, 2, 3, 1});
    EXPECT_EQ(m_counters.packetsLate.Value(), 9u);
}

TEST_F(BlockAssemblerRestartTest, WithAClockThatIsSetBackOnlyAPauseTellsOnce)
{
    SendBlockAt(1000, 1);
    Wait(19ms);
    SendBlockAt(10, 1);
    EXPECT_EQ(m_counters.packetsLate.Value(), 9u);
    Wait(20ms);
    SendBlockAt(11, 1);
    SendBlockAt(12, 1); // the new time counts from now on

    ExpectPictures({1, 1, 1});
    EXPECT_EQ(m_counters.packetsLate.Value(), 9u);
}

TEST_F(BlockAssemblerRestartTest, AClockThatIsSetBackAmongBlocksMakesNoLateOneARestart)
{
    const auto overtaken = BlockAt(990, 9);
    SendBlockAt(1000, 10);
    SendBlockAt(5, 11);
    SendAll(overtaken);
    EXPECT_EQ(m_counters.packetsLate.Value(), overtaken.size());
    for (std::uint64_t id = 12; id <= 19; ++id)
        SendBlockAt(id, id);
    ASSERT_EQ(m_sink.delivered.size(), 10u);

    SendBlockAt(20, 15); // by now the new time counts

    ASSERT_EQ(m_sink.delivered.size(), 11u);
    ExpectPicture(10, 15);
}

TEST_F(BlockAssemblerRestartTest, AfterAnAbortNothingOfBeforeCounts)
{
    SendBlockAt(900, 50);
    m_assembler.Abort();
    const auto block = BlockAt(1000, 1);
    Send(block[1]); // overtook the leader
    Send(block[0]);
    SendAll({block.begin() + 2, block.end()});

    ExpectPictures({50, 1});
}

/// A camera that is asked for packets, and begins anew before it has answered.
class AskingRestartTest : public AskingFixture, public testing::Test {
protected:
    AskingRestartTest() { m_stream.leader.start.timestampTicks = 1000; }

    /// As it is sent again, and with other bytes than another picture under the same ids has.
    [[nodiscard]] static Packet SentAgain(Packet packet)
    {
        packet[0] = std::byte{1}; // the status PACKET_RESEND, 0x0100
        packet[1] = std::byte{0};
        for (std::size_t i = gvsp::HeaderBytes(gvsp::IdMode::Standard); i < packet.size(); ++i)
            packet[i] ^= std::byte{0xFF};
        return packet;
    }
    void ExpectPicture(std::uint64_t blockId)
    {
        const auto& picture = m_sink.delivered.back();
        ASSERT_EQ(picture.info.code, VxError::Ok);
        EXPECT_EQ(picture.info.blockId, blockId);
        for (std::size_t offset = 0; offset < m_stream.payloadBytes; ++offset)
            ASSERT_EQ(picture.memory[offset], StreamPackets::ByteAt(blockId, offset)) << offset;
    }

    StreamPackets m_stream;
};

TEST_F(AskingRestartTest, AnAnswerOfBeforeDoesNotGetIntoTheNewPicture)
{
    auto old = m_stream.Block(1);
    const Packet lost = old[2];
    old.erase(old.begin() + 2);
    SendAll(old);
    ASSERT_EQ(Asked().front(), (NotingChannel::Range{2, 2}));
    m_stream.leader.start.timestampTicks = 2000;
    const auto block = m_stream.Block(1);

    Send(block[0]);
    Send(SentAgain(lost));
    SendAll({block.begin() + 1, block.end()});

    ASSERT_EQ(m_sink.delivered.size(), 2u);
    EXPECT_EQ(m_sink.delivered[0].info.code, VxError::MissingPackets);
    ExpectPicture(1);
    EXPECT_EQ(m_counters.packetsLate.Value(), 1u);
}

TEST_F(AskingRestartTest, AnAnswerOfBeforeMakesNoBlockOfItsOwn)
{
    SendAll(m_stream.Block(500));
    auto old = m_stream.Block(501);
    const Packet lost = old[2];
    old.erase(old.begin() + 2);
    SendAll(old);
    ASSERT_EQ(Asked().front(), (NotingChannel::Range{2, 2}));
    m_stream.leader.start.timestampTicks = 2000;
    const auto block = m_stream.Block(1);

    Send(block[0]);
    Send(SentAgain(lost));
    SendAll({block.begin() + 1, block.end()});
    ASSERT_EQ(m_sink.delivered.size(), 3u);
    ExpectPicture(1);
    SendAll(m_stream.Block(2));

    ASSERT_EQ(m_sink.delivered.size(), 4u);
    ExpectPicture(2);
}

TEST_F(AskingRestartTest, WhatTheNewPictureAsksForIsTaken)
{
    SendAll(m_stream.Block(1));
    m_stream.leader.start.timestampTicks = 2000;
    auto block = m_stream.Block(1);
    Packet lost = block[2];
    block.erase(block.begin() + 2);
    SendAll(block);
    ASSERT_EQ(Asked().front(), (NotingChannel::Range{2, 2}));
    lost[0] = std::byte{1};

    Send(lost);

    ASSERT_EQ(m_sink.delivered.size(), 2u);
    ExpectPicture(1);
}

} // namespace
} // namespace receive
