#include "AskingFixture.h"
#include "ChunkPackets.h"

#include <gtest/gtest.h>

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

INSTANTIATE_TEST_SUITE_P(Ids, UnaskedChunksTest,
                         testing::Values(gvsp::IdMode::Standard, gvsp::IdMode::Extended),
                         [](const auto& each) { return IdsOf(each.param); });

} // namespace
} // namespace receive
