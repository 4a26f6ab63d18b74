#include "AskingFixture.h"
#include "ChunkPackets.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <random>
#include <string>
#include <tuple>
#include <vector>

namespace receive {
namespace {

using namespace std::chrono_literals;
using Packet = StreamPackets::Packet;

/// A picture with chunks behind it, of every payload type that has them.
class CutChunksTest : public testing::TestWithParam<std::tuple<gvsp::IdMode, std::uint16_t>>,
                      protected AskingFixture {
protected:
    CutChunksTest()
    {
        m_stream.idMode = std::get<0>(GetParam());
        m_stream.payloadType = {std::get<1>(GetParam())};
        m_assembler.SetCameraPicture(
            PictureShape{0x01080001, ChunkPackets::kWidthPx, ChunkPackets::kHeightPx});
    }

    [[nodiscard]] bool IsChunkData() const
    {
        return m_stream.payloadType.Type() == gvsp::PayloadType::kChunkData;
    }
    void ExpectPayload(std::uint64_t blockId)
    {
        ASSERT_EQ(LastCode(), VxError::Ok);
        const auto payload = m_stream.PayloadOf(blockId);
        const auto& memory = m_sink.delivered.back().memory;
        EXPECT_TRUE(std::equal(payload.begin(), payload.end(), memory.begin()));
        EXPECT_EQ(m_sink.delivered.back().info.receivedBytes, payload.size());
    }

    ChunkPackets m_stream;
};

TEST_P(CutChunksTest, ALastPacketCutToAnyLengthIsNeverGood)
{
    EXPECT_EQ(CodeWithout(m_stream.Block(1)), VxError::Ok);
    std::uint64_t id = 1;
    const std::size_t lastBytes = m_stream.LastBytes();
    for (std::size_t left = 1; left < lastBytes; ++left) {
        ASSERT_EQ(CodeWithout(m_stream.BlockWithLastCutTo(++id, left)), VxError::MissingPackets) << left;
        ASSERT_EQ(m_sink.delivered.back().info.packetsMissing, 1u) << left;
        m_sink.delivered.clear();
    }
    EXPECT_EQ(m_counters.packetsWrongSize.Value(), lastBytes - 1);
}

TEST_P(CutChunksTest, ALastPacketCutExactlyBetweenTwoChunksIsAskedForAndTaken)
{
    std::uint64_t id = 0;
    for (const std::size_t left : m_stream.ChunkEndsInLastPacket()) {
        SendAll(m_stream.BlockWithLastCutTo(++id, left));
        ASSERT_EQ(Asked(), Ranges({{m_stream.LastId(), m_stream.LastId()}})) << left;
        EXPECT_EQ(m_channel.lastMode, m_stream.idMode);
        EXPECT_EQ(m_sink.delivered.size(), id - 1) << "it may be sent again";
        Send(m_stream.Payload(id, m_stream.LastId()));

        ASSERT_EQ(m_sink.delivered.size(), id);
        ExpectPayload(id);
    }
    EXPECT_EQ(m_counters.packetsRecovered.Value(), id);
}

TEST_P(CutChunksTest, APacketInFrontCutInItsChunksIsAskedForAndTaken)
{
    auto packets = m_stream.Block(1);
    packets[ChunkPackets::kPacketWithPictureEnd].resize(gvsp::HeaderBytes(m_stream.idMode) + 70);
    SendAll(packets);
    const auto id = static_cast<std::uint32_t>(ChunkPackets::kPacketWithPictureEnd);
    EXPECT_EQ(Asked(), Ranges({{id, id}}));
    Send(m_stream.Payload(1, id));

    ASSERT_EQ(m_sink.delivered.size(), 1u);
    ExpectPayload(1);

    packets = m_stream.Block(2);
    packets[ChunkPackets::kPacketWithPictureEnd].pop_back();
    EXPECT_EQ(CodeWithout(packets), VxError::MissingPackets);
}

TEST_P(CutChunksTest, ALastPacketThatComesCutAgainAndAgainElsewhereIsNotGood)
{
    SendAll(m_stream.BlockWithLastCutTo(1, 100));
    for (std::size_t left = 101; left < 106; ++left) {
        EXPECT_EQ(Asked(), Ranges({{m_stream.LastId(), m_stream.LastId()}})) << left;
        Send(m_stream.BlockWithLastCutTo(1, left)[m_stream.LastId()]);
    }
    Wait(300ms);

    ASSERT_EQ(m_sink.delivered.size(), 1u);
    EXPECT_EQ(LastCode(), VxError::MissingPackets);
}

TEST_P(CutChunksTest, ALastPacketCutShortIsNotGoodInWhateverOrderTheyCome)
{
    std::mt19937 chance(5);
    for (std::uint64_t id = 1; id <= 200; ++id) {
        const std::size_t left = 1 + chance() % (m_stream.LastBytes() - 1);
        auto packets = m_stream.BlockWithLastCutTo(id, left);
        std::ranges::shuffle(packets, chance);
        ASSERT_EQ(CodeWithout(packets), VxError::MissingPackets) << id;
    }
}

TEST_P(CutChunksTest, WhereTheTrailerTellsNothingTheListOfChunksTellsOfACut)
{
    // Of the chunk that was cut nothing is left behind these.
    const auto ends = m_stream.ChunkEndsInLastPacket();
    std::uint64_t id = 0;
    for (const ChunkPackets::Told told : {ChunkPackets::Told::Zero, ChunkPackets::Told::Short}) {
        m_stream.told = told;
        for (std::size_t left = 1; left < m_stream.LastBytes(); ++left) {
            const bool isBetween = std::ranges::find(ends, left) != ends.end();
            ASSERT_EQ(CodeWithout(m_stream.BlockWithLastCutTo(++id, left)),
                      isBetween ? VxError::Ok : VxError::MissingPackets)
                << left;
            m_sink.delivered.clear();
        }
        EXPECT_EQ(CodeWithout(m_stream.Block(++id)), VxError::Ok);
    }
}

TEST_P(CutChunksTest, ACutThatTheListOfChunksTellsOfIsAskedFor)
{
    m_stream.told = ChunkPackets::Told::Zero;
    SendAll(m_stream.BlockWithLastCutTo(1, 50));
    EXPECT_EQ(Asked(), Ranges({{m_stream.LastId(), m_stream.LastId()}}));
    Send(m_stream.Payload(1, m_stream.LastId()));

    ASSERT_EQ(m_sink.delivered.size(), 1u);
    ExpectPayload(1);
}

TEST_P(CutChunksTest, AChunkOfZerosThatIsCutDoesNotLeadToTheOneBefore)
{
    m_stream.told = ChunkPackets::Told::Zero;
    m_stream.isLastChunkZero = true;
    EXPECT_EQ(CodeWithout(m_stream.Block(1)), VxError::Ok);
    const std::size_t begin = m_stream.ChunkEndsInLastPacket().back();
    for (std::size_t left = begin + 1; left < m_stream.LastBytes(); ++left)
        ASSERT_EQ(CodeWithout(m_stream.BlockWithLastCutTo(left, left)), VxError::MissingPackets) << left;
}

TEST_P(CutChunksTest, ACameraThatFillsItsLastPacketUpLosesNoPicture)
{
    m_stream.fillBytes = ChunkPackets::kStepBytes - m_stream.LastBytes();
    EXPECT_EQ(CodeWithout(m_stream.Block(1)), VxError::Ok);
    m_stream.fillBytes = 3;
    EXPECT_EQ(CodeWithout(m_stream.Block(2)), VxError::Ok);
    m_stream.fillBytes = ChunkPackets::kStepBytes - (m_stream.LastBytes() - 3);
    m_stream.told = ChunkPackets::Told::Zero;
    // Chunk data cannot be read from an end that is none.
    EXPECT_EQ(CodeWithout(m_stream.Block(3)), IsChunkData() ? VxError::NotAnImage : VxError::Ok);
}

TEST_P(CutChunksTest, ACameraWhoseTrailersTellTooMuchIsAskedOnce)
{
    m_stream.told = ChunkPackets::Told::TooMany;
    SendAll(m_stream.Block(1));
    EXPECT_EQ(Asked(), Ranges({{m_stream.LastId(), m_stream.LastId()}}));
    Send(m_stream.Payload(1, m_stream.LastId()));
    ASSERT_EQ(m_sink.delivered.size(), 1u);
    ExpectPayload(1);

    m_channel.asked.clear();
    for (std::uint64_t id = 2; id < 6; ++id) {
        m_stream.chunks.back() += 10; // elsewhere, too
        EXPECT_EQ(CodeWithout(m_stream.Block(id)), VxError::Ok) << id;
        ExpectPayload(id);
    }
    EXPECT_TRUE(m_channel.asked.empty());
}

TEST_P(CutChunksTest, ALastPacketThatComesTwiceWithoutBeingAskedForIsNotBelieved)
{
    auto packets = m_stream.BlockWithLastCutTo(1, 100);
    packets.push_back(packets[m_stream.LastId()]);
    packets.push_back(packets.back());
    EXPECT_EQ(CodeWithout(packets), VxError::MissingPackets);
}

TEST_P(CutChunksTest, ACameraOfWhichOnePacketWasCutIsNotBelievedAfterwards)
{
    for (std::uint64_t id = 1; id < 6; ++id) {
        SendAll(m_stream.BlockWithLastCutTo(id, 100));
        ASSERT_EQ(Asked(), Ranges({{m_stream.LastId(), m_stream.LastId()}})) << id;
        Send(m_stream.Payload(id, m_stream.LastId()));
        ASSERT_EQ(m_sink.delivered.size(), id);
        ExpectPayload(id);
    }
    EXPECT_EQ(CodeWithout(m_stream.BlockWithLastCutTo(6, 100)), VxError::MissingPackets);
}

TEST_P(CutChunksTest, CutsAtTheSameByteAreNotBelievedWhereTheyCanBeAskedFor)
{
    auto packets = m_stream.Block(1);
    packets.erase(packets.begin() + 2);
    SendAll(packets);
    ASSERT_EQ(Asked(), Ranges({{2, 2}}));
    Send(m_stream.Payload(1, 2)); // once is enough: it can be asked
    ExpectPayload(1);
    for (std::uint64_t id = 2; id < 7; ++id)
        EXPECT_EQ(CodeWithout(m_stream.BlockWithLastCutTo(id, 100)), VxError::MissingPackets) << id;
}

TEST_P(CutChunksTest, APictureThatIsCutIsAskedForAlsoWhereEndsAreBelieved)
{
    m_stream.told = ChunkPackets::Told::TooMany;
    m_stream.chunks = {ChunkPackets::kPictureBytes, 100}; // the picture ends in the last packet
    SendAll(m_stream.Block(1));
    EXPECT_EQ(Asked(), Ranges({{m_stream.LastId(), m_stream.LastId()}}));
    Send(m_stream.Payload(1, m_stream.LastId()));
    ASSERT_EQ(m_sink.delivered.size(), 1u);
    ExpectPayload(1);

    const std::size_t left = ChunkPackets::kPictureBytes - (m_stream.LastId() - 1) * ChunkPackets::kStepBytes;
    SendAll(m_stream.BlockWithLastCutTo(2, left - 1));
    EXPECT_EQ(Asked(), Ranges({{m_stream.LastId(), m_stream.LastId()}}));
    Send(m_stream.BlockWithLastCutTo(2, left - 1)[m_stream.LastId()]); // so again: it is no whole picture
    EXPECT_EQ(m_sink.delivered.size(), 1u);
    EXPECT_FALSE(Asked().empty());
    Send(m_stream.Payload(2, m_stream.LastId()));
    ASSERT_EQ(m_sink.delivered.size(), 2u);
    ExpectPayload(2);
}

TEST_P(CutChunksTest, ANewAcquisitionIsNotBelievedForTheOneBefore)
{
    m_stream.told = ChunkPackets::Told::TooMany;
    SendAll(m_stream.Block(1));
    EXPECT_FALSE(Asked().empty());
    Send(m_stream.Payload(1, m_stream.LastId()));
    EXPECT_EQ(CodeWithout(m_stream.Block(2)), VxError::Ok);
    m_assembler.Abort();
    EXPECT_EQ(CodeWithout(m_stream.Block(1)), VxError::MissingPackets);
}

INSTANTIATE_TEST_SUITE_P(PayloadTypes, CutChunksTest,
                         testing::Combine(testing::Values(gvsp::IdMode::Standard, gvsp::IdMode::Extended),
                                          testing::Values(std::uint16_t{0x4001},
                                                          gvsp::PayloadType::kChunkData,
                                                          gvsp::PayloadType::kExtendedChunkData)),
                         [](const auto& each) {
                             return IdsOf(std::get<0>(each.param)) + "Type" +
                                    std::to_string(std::get<1>(each.param));
                         });

/// A picture with chunks as not every camera sends it.
class UnusualChunksTest : public testing::TestWithParam<gvsp::IdMode>, protected AskingFixture {
protected:
    UnusualChunksTest() { m_stream.idMode = GetParam(); }

    ChunkPackets m_stream;
};

TEST_P(UnusualChunksTest, ChunksThatAreCountedWithoutThePictureTellOfACut)
{
    m_stream.told = ChunkPackets::Told::BehindPicture;
    std::uint64_t id = 0;
    for (const bool isChunk : {true, false}) {
        m_stream.isPictureAChunk = isChunk;
        EXPECT_EQ(CodeWithout(m_stream.Block(++id)), VxError::Ok);
        for (std::size_t left = 1; left < m_stream.LastBytes(); ++left)
            ASSERT_EQ(CodeWithout(m_stream.BlockWithLastCutTo(++id, left)), VxError::MissingPackets) << left;
    }
}

TEST_P(UnusualChunksTest, AListWithoutThePictureTellsOfACutOnceOneWasRead)
{
    m_stream.told = ChunkPackets::Told::Short;
    m_stream.isPictureAChunk = false;
    EXPECT_EQ(CodeWithout(m_stream.Block(1)), VxError::Ok);
    EXPECT_EQ(CodeWithout(m_stream.BlockWithLastCutTo(2, 50)), VxError::MissingPackets);
    SendAll(m_stream.BlockWithLastCutTo(3, 50));
    EXPECT_EQ(Asked(), Ranges({{m_stream.LastId(), m_stream.LastId()}}));
    Send(m_stream.Payload(3, m_stream.LastId()));
    EXPECT_EQ(LastCode(), VxError::Ok);
}

TEST_P(UnusualChunksTest, ACameraWhoseListsCannotBeReadAndWhoseTrailersTellNothingLosesNoPicture)
{
    m_stream.isListReadable = false;
    std::uint64_t id = 0;
    for (const ChunkPackets::Told told : {ChunkPackets::Told::Zero, ChunkPackets::Told::Short}) {
        m_stream.told = told;
        for (int i = 0; i < 3; ++i)
            EXPECT_EQ(CodeWithout(m_stream.Block(++id)), VxError::Ok);
    }
    EXPECT_TRUE(m_channel.asked.empty());
}

TEST_P(UnusualChunksTest, ACameraThatFillsItsLastPacketUpAndTellsNothingIsAskedOnce)
{
    m_stream.told = ChunkPackets::Told::Zero;
    for (const std::size_t fillBytes : {1, 2, 3}) {
        m_stream.fillBytes = fillBytes;
        SendAll(m_stream.Block(1));
        EXPECT_EQ(Asked(), Ranges({{m_stream.LastId(), m_stream.LastId()}}));
        Send(m_stream.Payload(1, m_stream.LastId()));
        EXPECT_EQ(LastCode(), VxError::Ok);

        m_channel.asked.clear();
        EXPECT_EQ(CodeWithout(m_stream.Block(2)), VxError::Ok);
        EXPECT_EQ(CodeWithout(m_stream.Block(3)), VxError::Ok);
        EXPECT_TRUE(m_channel.asked.empty());
        m_assembler.Abort();
    }
}

TEST_P(UnusualChunksTest, ACameraWhoseTrailersTellTooMuchBehindFullPacketsIsBelievedFromTheThirdBlockOn)
{
    m_stream.chunks = {ChunkPackets::kPictureBytes, 700, 216};
    ASSERT_EQ(m_stream.LastBytes(), ChunkPackets::kStepBytes);
    m_stream.told = ChunkPackets::Told::TooMany;
    for (std::uint64_t id = 1; id < 6; ++id)
        EXPECT_EQ(CodeWithout(m_stream.Block(id)), id < 3 ? VxError::MissingPackets : VxError::Ok) << id;
    EXPECT_TRUE(m_channel.asked.empty()); // nothing of it can have been cut off
}

TEST_P(UnusualChunksTest, APictureWithoutChunksIsNotJudgedByWhatItsTrailerTellsOfThem)
{
    StreamPackets plain;
    plain.idMode = GetParam();
    auto packets = plain.Block(1);
    m_stream.told = ChunkPackets::Told::TooMany;
    const auto withChunks = m_stream.Trailer(1);
    const auto behindHeader = static_cast<std::ptrdiff_t>(gvsp::HeaderBytes(plain.idMode));
    packets.back().resize(gvsp::HeaderBytes(plain.idMode));
    packets.back().insert(packets.back().end(), withChunks.begin() + behindHeader, withChunks.end());
    // As many lines as the leader tells.
    packets.back()[gvsp::HeaderBytes(plain.idMode) + 7] = std::byte{48};
    EXPECT_EQ(CodeWithout(packets), VxError::Ok);
    EXPECT_TRUE(m_channel.asked.empty());
}

TEST_P(UnusualChunksTest, ListsThatCouldBeReadBeforeAnAcquisitionAreNotExpectedInTheNext)
{
    m_stream.told = ChunkPackets::Told::Zero;
    EXPECT_EQ(CodeWithout(m_stream.Block(1)), VxError::Ok);
    m_assembler.Abort();
    m_stream.isListReadable = false;
    EXPECT_EQ(CodeWithout(m_stream.Block(1)), VxError::Ok);
}

TEST_P(UnusualChunksTest, ChunkDataOfWhichNobodyKnowsThePictureAreNoneAndAreNotAskedFor)
{
    m_stream.payloadType = {gvsp::PayloadType::kChunkData};
    SendAll(m_stream.BlockWithLastCutTo(1, 50));

    ASSERT_EQ(m_sink.delivered.size(), 1u);
    EXPECT_EQ(LastCode(), VxError::NotAnImage);
    EXPECT_TRUE(Asked().empty());
}

/// A first block, of which nobody knows how long its chunks are, and whose end is lost.
class LostEndTest : public UnusualChunksTest {
protected:
    /// @param lost  packets, the trailer included
    void ExpectTheEndIsAskedFor(std::size_t lost)
    {
        const auto packets = m_stream.Block(1);
        SendAll({packets.begin(), packets.end() - static_cast<std::ptrdiff_t>(lost)});
        SendAll(m_stream.Block(2));
        for (std::size_t i = 0; i < lost; ++i) {
            for (const auto& [first, last] : Asked()) {
                for (std::uint32_t id = first; id <= last; ++id)
                    Send(packets.at(id));
            }
        }
        ASSERT_EQ(m_sink.delivered.size(), 2u);
        EXPECT_EQ(m_sink.delivered[0].info.code, VxError::Ok);
        EXPECT_EQ(m_sink.delivered[1].info.code, VxError::Ok);
        EXPECT_EQ(m_counters.packetsRequestedAgain.Value(), lost);
    }
};

TEST_P(LostEndTest, ALostTrailerIsAskedForWhenTheNextBlockHasCome)
{
    ExpectTheEndIsAskedFor(1);
}

TEST_P(LostEndTest, ALostLastPacketAndItsTrailerAreAskedForWhenTheNextBlockHasCome)
{
    ExpectTheEndIsAskedFor(2);
}

TEST_P(LostEndTest, ALostTrailerIsAskedForBesideALostLeader)
{
    const auto packets = m_stream.Block(1);
    SendAll({packets.begin() + 1, packets.end() - 1});
    SendAll(m_stream.Block(2));
    const std::uint32_t end = m_stream.LastId() + 1;
    EXPECT_EQ(Asked(), Ranges({{0, 0}, {end, end}}));
    SendAll({packets.front(), packets.back()});

    ASSERT_EQ(m_sink.delivered.size(), 2u);
    EXPECT_EQ(m_sink.delivered[0].info.code, VxError::Ok);
}

TEST_P(LostEndTest, MoreThanTheChunksIsAskedForWhenTheNextBlockHasCome)
{
    ExpectTheEndIsAskedFor(4);
}

INSTANTIATE_TEST_SUITE_P(Ids, LostEndTest, testing::Values(gvsp::IdMode::Standard, gvsp::IdMode::Extended),
                         [](const auto& each) { return IdsOf(each.param); });

TEST_P(UnusualChunksTest, ABlockWithFullPacketsAloneThatHasFewerBytesThanItTellsIsNotGood)
{
    m_stream.chunks = {ChunkPackets::kPictureBytes, 700, 216};
    ASSERT_EQ(m_stream.LastBytes(), ChunkPackets::kStepBytes);
    auto packets = m_stream.Block(1);
    EXPECT_EQ(CodeWithout(packets), VxError::Ok);
    packets = m_stream.Block(2);
    packets.back().end()[-6] = std::byte{0xFF}; // of the bytes of all chunks
    EXPECT_EQ(CodeWithout(packets), VxError::MissingPackets);
}

TEST_P(UnusualChunksTest, ChunksBehindFewerLinesThanAnnouncedAreNotShownAsLines)
{
    m_stream.leaderHeightPx = ChunkPackets::kHeightPx + 8; // with the chunks more than these lines come
    EXPECT_EQ(CodeWithout(m_stream.Block(1)), VxError::Ok);

    EXPECT_EQ(m_sink.delivered.back().info.geometry.heightPx, ChunkPackets::kHeightPx);
}

INSTANTIATE_TEST_SUITE_P(Ids, UnusualChunksTest,
                         testing::Values(gvsp::IdMode::Standard, gvsp::IdMode::Extended),
                         [](const auto& each) { return IdsOf(each.param); });

/// Pictures of two packets, with nothing behind them.
class TwoPacketsTest : public testing::TestWithParam<gvsp::IdMode>, protected AskingFixture {
protected:
    TwoPacketsTest() { m_stream.idMode = GetParam(); }

    /// @return  the picture of a block of that size
    std::vector<Packet> Block(std::uint64_t blockId, std::uint32_t bytes, std::size_t stepBytes)
    {
        m_stream.leader = StreamPackets::Mono8(bytes, 1);
        m_stream.payloadBytes = bytes;
        m_stream.stepBytes = stepBytes;
        return m_stream.Block(blockId);
    }
    void ExpectPicture(std::uint64_t blockId) const
    {
        const auto& delivered = m_sink.delivered.back();
        ASSERT_EQ(delivered.info.blockId, blockId);
        ASSERT_EQ(delivered.info.code, VxError::Ok);
        for (std::size_t offset = 0; offset < m_stream.payloadBytes; ++offset)
            ASSERT_EQ(delivered.memory[offset], StreamPackets::ByteAt(blockId, offset)) << offset;
    }

    StreamPackets m_stream;
};

TEST_P(TwoPacketsTest, OtherPacketsThanBeforeAreTakenAlsoWhenTheFirstOneIsLate)
{
    struct Size {
        std::uint32_t bytes;
        std::size_t before;
        std::size_t now;
    };
    std::uint64_t id = 0;
    // Lower: the second packet's place was in front of the end, at it, and behind it; then higher.
    for (const Size size : {Size{700, 500, 400},
                            {500, 500, 300},
                            {500, 900, 300},
                            {600, 300, 300},
                            {800, 300, 500},
                            {800, 400, 700}}) {
        for (const bool isTrailerBefore : {false, true}) {
            EXPECT_EQ(CodeWithout(Block(++id, 2000, size.before)), VxError::Ok);
            const auto packets = Block(++id, size.bytes, size.now);
            ASSERT_EQ(packets.size(), 4u);
            SendAll({packets[0], packets[2]});
            SendAll({packets[isTrailerBefore ? 3 : 1], packets[isTrailerBefore ? 1 : 3]});
            ASSERT_EQ(m_sink.delivered.size(), id) << size.bytes << " " << size.before;
            ExpectPicture(id);
        }
    }
    EXPECT_TRUE(m_channel.asked.empty());
}

TEST_P(TwoPacketsTest, AFirstPacketThatIsLateAndWasCutIsNotTakenButAskedForAgain)
{
    EXPECT_EQ(CodeWithout(Block(1, 2000, 500)), VxError::Ok);
    std::uint64_t id = 1;
    for (std::size_t left = 1; left < 400; ++left) {
        auto packets = Block(++id, 700, 400);
        packets[1].resize(gvsp::HeaderBytes(m_stream.idMode) + left);
        const Packet whole = Block(id, 700, 400)[1];
        SendAll({packets[0], packets[2], packets[1], packets[3]});
        ASSERT_EQ(Asked(), Ranges({{1, 1}})) << left;
        ASSERT_EQ(m_sink.delivered.size(), id - 1) << left;
        if (left % 2 == 0) {
            Send(packets[1]); // cut again
            Wait(300ms);
            ASSERT_EQ(LastCode(), VxError::MissingPackets) << left;
        } else {
            Send(whole);
            ExpectPicture(id);
        }
        EXPECT_EQ(CodeWithout(Block(++id, 2000, 500)), VxError::Ok); // larger packets again
    }
}

TEST_P(TwoPacketsTest, WhicheverOfTheTwoWasCutIsAskedForAndTaken)
{
    std::uint64_t id = 0;
    for (const std::size_t cut : {1, 2}) {
        for (const std::size_t left : {100, 299, 300, 301, 399}) {
            const auto packets = Block(++id, 800, 500);
            auto damaged = packets;
            damaged[cut].resize(gvsp::HeaderBytes(m_stream.idMode) +
                                std::min<std::size_t>(left, cut == 2 ? 299 : left));
            SendAll(damaged);
            for (int round = 0; round < 2; ++round) { // where the first is longer, the other was misplaced
                for (const auto& [first, last] : Asked()) {
                    for (std::uint32_t packet = first; packet <= last; ++packet)
                        Send(packets[packet]);
                }
            }
            ASSERT_EQ(m_sink.delivered.size(), id) << cut << " " << left;
            ExpectPicture(id);
            m_assembler.Abort();
        }
    }
}

TEST_P(TwoPacketsTest, AFirstPacketThatWasCutIsTakenAgainBesideTheLastOfThree)
{
    EXPECT_EQ(CodeWithout(Block(1, 2000, 500)), VxError::Ok);
    const auto packets = Block(2, 1100, 500);
    auto cut = packets[1];
    cut.resize(gvsp::HeaderBytes(m_stream.idMode) + 400);
    SendAll({packets[0], cut, packets[3]});
    Send(packets[2]); // longer: the first one was cut
    EXPECT_EQ(Asked(), Ranges({{1, 1}, {3, 3}, {4, 4}}));
    SendAll({packets[1], packets[3], packets[4]});

    ASSERT_EQ(m_sink.delivered.size(), 2u);
    ExpectPicture(2);
}

INSTANTIATE_TEST_SUITE_P(Ids, TwoPacketsTest, testing::Values(gvsp::IdMode::Standard, gvsp::IdMode::Extended),
                         [](const auto& each) { return IdsOf(each.param); });

} // namespace
} // namespace receive
