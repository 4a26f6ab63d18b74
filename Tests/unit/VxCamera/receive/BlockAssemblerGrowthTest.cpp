#include "AskingFixture.h"
#include "BlockAssemblerFixture.h"

#include <gtest/gtest.h>

#include <chrono>
#include <cstddef>
#include <vector>

namespace receive {
namespace {

using namespace std::chrono_literals;

/// A picture that the buffers hold, and then larger ones of 13 packets. The buffers end in the 7th.
class BlockAssemblerGrowthTest : public BlockAssemblerFixture {
protected:
    BlockAssemblerGrowthTest()
    {
        m_sink.isGrowing = true;
        SendBlock(1);
        Enlarge(m_stream);
        m_sink.wanted.clear();
    }
    static void Enlarge(StreamPackets& stream)
    {
        stream.leader = StreamPackets::Mono8(64, 96);
        stream.payloadBytes = 64 * 96;
    }
};

TEST_F(BlockAssemblerGrowthTest, PayloadThatOvertookALargerPicturesLeaderIsKept)
{
    const auto packets = m_stream.Block(2);
    SendAll({packets.begin() + 1, packets.begin() + 4});
    Send(packets[0]);
    SendAll({packets.begin() + 4, packets.end()});

    ExpectPicture(1, 2);
    EXPECT_EQ(m_sink.wanted, (std::vector<std::size_t>{64 * 48, 64 * 96}));
    EXPECT_EQ(m_sink.grown, 1);
    EXPECT_EQ(m_sink.FreeCount(), 4u);
}

TEST_F(BlockAssemblerGrowthTest, WhatLayOutsideOfTheSmallerBufferIsMissingUntilItComesAgain)
{
    const auto packets = m_stream.Block(2);
    SendAll({packets.begin() + 1, packets.begin() + 10});
    EXPECT_EQ(m_counters.packetsOutOfRange.Value(), 2u); // 8 and 9
    Send(packets[0]);
    SendAll({packets.begin() + 10, packets.end()});
    Wait(100ms);
    ASSERT_EQ(m_sink.delivered.size(), 1u);
    SendAll({packets.begin() + 7, packets.begin() + 10});

    ExpectPicture(1, 2);
    EXPECT_EQ(m_counters.packetsDuplicate.Value(), 0u);
}

TEST_F(BlockAssemblerGrowthTest, WhatLayOutsideOfTheSmallerBufferIsToldAsMissing)
{
    const auto packets = m_stream.Block(2);
    SendAll({packets.begin() + 1, packets.begin() + 10});
    Send(packets[0]);
    SendAll({packets.begin() + 10, packets.end()});
    Wait(250ms);

    ASSERT_EQ(m_sink.delivered.size(), 2u);
    EXPECT_EQ(CodeOf(1), VxError::MissingPackets);
    EXPECT_EQ(m_sink.delivered[1].info.packetsMissing, 3u);
}

TEST_F(BlockAssemblerGrowthTest, InTheSteadyStateNothingGrowsAndNothingIsMoved)
{
    for (std::uint64_t id = 2; id <= 20; ++id) {
        const auto packets = m_stream.Block(id);
        Send(packets[1]);
        Send(packets[0]);
        SendAll({packets.begin() + 2, packets.end()});
    }

    ASSERT_EQ(m_sink.delivered.size(), 20u);
    for (std::size_t i = 1; i < 20; ++i)
        ExpectPicture(i, i + 1);
    EXPECT_EQ(m_sink.grown, 1);
    EXPECT_EQ(m_sink.wanted.size(), 19u + 1); // one of each block, and one for the first
    EXPECT_EQ(m_sink.givenBack, 1);
}

TEST_F(BlockAssemblerGrowthTest, BuffersThatDoNotGrowAreAskedForOnce)
{
    m_sink.isGrowing = false;
    const auto packets = m_stream.Block(2);
    Send(packets[1]);
    Send(packets[0]);
    Send(packets[0]);
    SendAll({packets.begin() + 2, packets.end()});

    ASSERT_EQ(m_sink.delivered.size(), 2u);
    EXPECT_EQ(CodeOf(1), VxError::BufferTooSmall);
    EXPECT_EQ(m_sink.wanted.size(), 2u);
    EXPECT_EQ(m_sink.FreeCount(), 4u);
}

TEST_F(BlockAssemblerGrowthTest, WithoutAnotherFreeBufferThePictureIsTooLarge)
{
    m_sink.isKeeping = true;
    for (std::uint64_t id = 2; id <= 4; ++id)
        SendBlock(id);
    ASSERT_EQ(m_sink.FreeCount(), 1u);
    m_stream.leader = StreamPackets::Mono8(64, 192);
    m_stream.payloadBytes = 64 * 192;
    const auto packets = m_stream.Block(5);
    Send(packets[1]);
    Send(packets[0]);
    SendAll({packets.begin() + 2, packets.end()});

    ASSERT_EQ(m_sink.delivered.size(), 5u);
    EXPECT_EQ(CodeOf(4), VxError::BufferTooSmall);
}

class AskingGrowthTest : public AskingFixture, public testing::Test {};

TEST_F(AskingGrowthTest, ALargerPictureWhoseLeaderWasLostIsWholeWhenItComesAgain)
{
    m_sink.isGrowing = true;
    StreamPackets stream;
    SendAll(stream.Block(1));
    ASSERT_EQ(LastCode(), VxError::Ok);
    stream.leader = StreamPackets::Mono8(64, 96);
    stream.payloadBytes = 64 * 96;
    const auto packets = stream.Block(2);
    SendAll({packets.begin() + 1, packets.begin() + 12}); // the buffer ends behind the 10th

    EXPECT_EQ(Asked().front(), (NotingChannel::Range{0, 0}));
    Send(packets[0]);
    SendAll({packets.begin() + 12, packets.end()});
    EXPECT_EQ(Asked(), (Ranges{{11, 11}}));
    Send(packets[11]);

    ASSERT_EQ(m_sink.delivered.size(), 2u);
    const auto& picture = m_sink.delivered[1];
    EXPECT_EQ(picture.info.code, VxError::Ok);
    for (std::size_t offset = 0; offset < stream.payloadBytes; ++offset)
        ASSERT_EQ(picture.memory[offset], StreamPackets::ByteAt(2, offset)) << offset;
}

} // namespace
} // namespace receive
