#include "AskingFixture.h"
#include "ChunkPackets.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace receive {
namespace {

using namespace std::chrono_literals;
using Packet = StreamPackets::Packet;

/// Pictures with chunks of a camera that cannot be asked.
class UnaskedChunksTest : public testing::TestWithParam<gvsp::IdMode>, protected AskingFixture {
protected:
    UnaskedChunksTest() { m_stream.idMode = GetParam(); }

    /// @return  what a block becomes behind which nothing more comes
    [[nodiscard]] VxError CodeOf(const std::vector<Packet>& packets)
    {
        for (const Packet& packet : packets)
            m_unasked.OnPacket(packet, m_now);
        m_now += 300ms;
        m_unasked.OnTime(m_now);
        return LastCode();
    }

    BlockAssembler m_unasked{{}, m_sink, m_counters};
    ChunkPackets m_stream;
};

TEST_P(UnaskedChunksTest, EndsAtTheSameByteAreBelievedFromTheThirdBlockOn)
{
    m_stream.told = ChunkPackets::Told::TooMany;
    std::uint64_t id = 0;
    for (int i = 0; i < 2; ++i)
        EXPECT_EQ(CodeOf(m_stream.Block(++id)), VxError::MissingPackets);
    for (int i = 0; i < 3; ++i)
        EXPECT_EQ(CodeOf(m_stream.Block(++id)), VxError::Ok);
    m_stream.chunks.back() += 10;
    EXPECT_EQ(CodeOf(m_stream.Block(++id)), VxError::Ok);
    m_stream.told = ChunkPackets::Told::Zero;
    m_stream.fillBytes = 2;
    EXPECT_EQ(CodeOf(m_stream.Block(++id)), VxError::Ok);
}

TEST_P(UnaskedChunksTest, BlocksThatFollowEachOtherWithoutPauseAreBelievedAfterAFew)
{
    m_stream.told = ChunkPackets::Told::TooMany;
    for (std::uint64_t id = 1; id <= 10; ++id) {
        for (const Packet& packet : m_stream.Block(id))
            m_unasked.OnPacket(packet, m_now);
        m_now += 10ms;
        m_unasked.OnTime(m_now);
    }
    ASSERT_EQ(m_sink.delivered.size(), 10u);
    for (std::size_t i = 3; i < 10; ++i) // the end of the third had come before the second was given up
        EXPECT_EQ(m_sink.delivered[i].info.code, VxError::Ok) << i;
}

TEST_P(UnaskedChunksTest, ListsThatCannotBeReadAreBelievedFromTheThirdBlockOn)
{
    m_stream.told = ChunkPackets::Told::Zero;
    m_stream.fillBytes = 2;
    for (std::uint64_t id = 1; id < 6; ++id)
        EXPECT_EQ(CodeOf(m_stream.Block(id)), id < 3 ? VxError::MissingPackets : VxError::Ok) << id;
}

TEST_P(UnaskedChunksTest, EndsAtOtherBytesAreNotBelieved)
{
    std::uint64_t id = 0;
    for (int i = 0; i < 4; ++i) {
        for (const std::size_t left : {100, 100, 101})
            EXPECT_EQ(CodeOf(m_stream.BlockWithLastCutTo(++id, left)), VxError::MissingPackets) << id;
    }
    // In a row: neither is there a good block between, nor one that lacks more.
    for (int i = 0; i < 4; ++i) {
        for (int k = 0; k < 2; ++k)
            EXPECT_EQ(CodeOf(m_stream.BlockWithLastCutTo(++id, 100)), VxError::MissingPackets) << id;
        auto packets = m_stream.BlockWithLastCutTo(++id, 100);
        if (i % 2 == 0)
            packets = m_stream.Block(id);
        else
            packets.erase(packets.begin() + 2);
        EXPECT_EQ(CodeOf(packets), i % 2 == 0 ? VxError::Ok : VxError::MissingPackets) << id;
    }
}

TEST_P(UnaskedChunksTest, APictureThatIsCutAtTheSameByteIsNeverBelieved)
{
    m_stream.chunks = {ChunkPackets::kPictureBytes, 100};
    for (std::uint64_t id = 1; id < 6; ++id)
        EXPECT_EQ(CodeOf(m_stream.BlockWithLastCutTo(id, 59)), VxError::MissingPackets) << id;
    EXPECT_EQ(CodeOf(m_stream.BlockWithLastCutTo(6, 70)), VxError::MissingPackets); // behind the picture
}

TEST_P(UnaskedChunksTest, ANewAcquisitionBeginsAnew)
{
    m_stream.told = ChunkPackets::Told::TooMany;
    for (int round = 0; round < 2; ++round) {
        for (std::uint64_t id = 1; id < 3; ++id)
            EXPECT_EQ(CodeOf(m_stream.Block(id)), VxError::MissingPackets) << id;
        m_unasked.Abort();
    }
}

/// Pictures with chunks of a camera that is asked.
class UnansweredChunksTest : public testing::TestWithParam<gvsp::IdMode>, protected AskingFixture {
protected:
    UnansweredChunksTest() { m_stream.idMode = GetParam(); }

    void ExpectMissing(std::uint64_t firstId, int blocks)
    {
        for (int i = 0; i < blocks; ++i, ++firstId)
            EXPECT_EQ(CodeWithout(m_stream.Block(firstId)), VxError::MissingPackets) << firstId;
    }
    /// Three blocks, of which the last one is whole.
    void ExpectBelief(std::uint64_t firstId)
    {
        ExpectMissing(firstId, 2);
        EXPECT_EQ(CodeWithout(m_stream.Block(firstId + 2)), VxError::Ok);
    }
    /// A block of which the second packet is asked for.
    void SendWithoutSecond(std::uint64_t id)
    {
        auto packets = m_stream.Block(id);
        packets.erase(packets.begin() + 2);
        SendAll(packets);
        EXPECT_FALSE(Asked().empty());
    }
    /// @param status  of the header
    [[nodiscard]] static Packet With(Packet packet, std::uint16_t status)
    {
        packet[0] = static_cast<std::byte>(status >> 8);
        packet[1] = static_cast<std::byte>(status & 0xFF);
        return packet;
    }

    ChunkPackets m_stream;
};

TEST_P(UnansweredChunksTest, ACameraThatNeverAnswersIsBelievedFromTheThirdBlockOn)
{
    m_stream.told = ChunkPackets::Told::TooMany;
    ExpectMissing(1, 2);
    EXPECT_FALSE(m_channel.asked.empty());

    m_channel.asked.clear();
    for (std::uint64_t id = 3; id < 8; ++id) {
        EXPECT_EQ(CodeWithout(m_stream.Block(id)), VxError::Ok) << id;
        const auto payload = m_stream.PayloadOf(id);
        const auto& delivered = m_sink.delivered.back();
        EXPECT_TRUE(std::equal(payload.begin(), payload.end(), delivered.memory.begin())) << id;
        EXPECT_EQ(delivered.info.receivedBytes, payload.size()) << id;
        m_stream.chunks.back() += 10; // elsewhere, too
    }
    EXPECT_TRUE(m_channel.asked.empty());
}

TEST_P(UnansweredChunksTest, ACameraThatNeverAnswersAndWhoseListsCannotBeReadIsBelievedFromTheThirdBlockOn)
{
    m_stream.told = ChunkPackets::Told::Zero;
    m_stream.fillBytes = 2;
    ExpectBelief(1);
}

TEST_P(UnansweredChunksTest, ACameraThatHasAnsweredAnythingIsNotBelieved)
{
    m_stream.told = ChunkPackets::Told::TooMany;
    constexpr std::uint16_t kSentAgain = 0x0100;
    const auto cutAgain = [&] { return m_stream.BlockWithLastCutTo(1, 20)[m_stream.LastId()]; };
    const std::vector<Packet> answers{m_stream.Payload(1, 2),                   // not every camera marks it
                                      With(m_stream.Payload(1, 1), kSentAgain), // it was here before
                                      With(m_stream.Payload(1, 2), 0x800C),     // it has not got it any more
                                      With(m_stream.Payload(1, 2), 0x8010),     // it has not got it yet
                                      cutAgain()};
    for (std::size_t i = 0; i < answers.size(); ++i) {
        SCOPED_TRACE(i);
        SendWithoutSecond(1);
        Send(answers[i]);
        Wait(300ms);
        ExpectMissing(2, 5);
        m_assembler.Abort();
    }
    ExpectMissing(1, 1);
    Send(m_stream.Payload(1, m_stream.LastId())); // too late
    ExpectMissing(2, 5);
}

TEST_P(UnansweredChunksTest, AnAnswerEndsTheBelief)
{
    m_stream.told = ChunkPackets::Told::TooMany;
    ExpectBelief(1);
    SendWithoutSecond(4);
    Send(m_stream.Payload(4, 2));
    Wait(300ms);
    ExpectMissing(5, 5);

    // It is believed again when the packet comes again as it was.
    SendAll(m_stream.Block(10));
    EXPECT_EQ(Asked(), Ranges({{m_stream.LastId(), m_stream.LastId()}}));
    Send(m_stream.Payload(10, m_stream.LastId()));
    EXPECT_EQ(LastCode(), VxError::Ok);
    EXPECT_EQ(CodeWithout(m_stream.Block(11)), VxError::Ok);
}

TEST_P(UnansweredChunksTest, EndsAtOtherBytesAreNotBelievedThoughNobodyAnswers)
{
    std::uint64_t id = 0;
    for (int i = 0; i < 4; ++i) {
        for (const std::size_t left : {100, 100, 101})
            EXPECT_EQ(CodeWithout(m_stream.BlockWithLastCutTo(++id, left)), VxError::MissingPackets) << id;
    }
}

TEST_P(UnansweredChunksTest, APictureThatIsCutAtTheSameByteIsNeverBelievedThoughNobodyAnswers)
{
    m_stream.chunks = {ChunkPackets::kPictureBytes, 100};
    std::uint64_t id = 0;
    for (int i = 0; i < 5; ++i)
        EXPECT_EQ(CodeWithout(m_stream.BlockWithLastCutTo(++id, 59)), VxError::MissingPackets) << id;
    // Nor where ends behind the picture are.
    m_stream.told = ChunkPackets::Told::TooMany;
    ExpectBelief(id + 1);
    id += 3;
    for (int i = 0; i < 5; ++i)
        EXPECT_EQ(CodeWithout(m_stream.BlockWithLastCutTo(++id, 59)), VxError::MissingPackets) << id;
}

TEST_P(UnansweredChunksTest, APacketThatIsMissingInFrontIsMissingThoughEndsAreBelieved)
{
    m_stream.told = ChunkPackets::Told::TooMany;
    ExpectBelief(1);
    for (const std::ptrdiff_t lost : {2, 6, 7}) { // of the picture, of chunks, and the last one
        auto packets = m_stream.Block(static_cast<std::uint64_t>(lost) + 2); // from 4 on
        packets.erase(packets.begin() + lost);
        EXPECT_EQ(CodeWithout(packets), VxError::MissingPackets) << lost;
    }
}

TEST_P(UnansweredChunksTest, WhetherACameraAnswersIsFoundOutAnewInEveryAcquisition)
{
    m_stream.told = ChunkPackets::Told::TooMany;
    ExpectBelief(1);
    m_assembler.Abort();
    ExpectBelief(1);
    m_assembler.Abort();
    SendWithoutSecond(1);
    Send(m_stream.Payload(1, 2));
    Wait(300ms);
    ExpectMissing(2, 5);
    m_assembler.Abort();
    ExpectBelief(1);
}

INSTANTIATE_TEST_SUITE_P(Ids, UnansweredChunksTest,
                         testing::Values(gvsp::IdMode::Standard, gvsp::IdMode::Extended),
                         [](const auto& each) { return IdsOf(each.param); });

INSTANTIATE_TEST_SUITE_P(Ids, UnaskedChunksTest,
                         testing::Values(gvsp::IdMode::Standard, gvsp::IdMode::Extended),
                         [](const auto& each) { return IdsOf(each.param); });

} // namespace
} // namespace receive
