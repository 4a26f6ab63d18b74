#include "StreamReceiverFixture.h"

#include "VxCamera/receive/Landing.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <tuple>
#include <utility>

// A receiver whose thread stood still, or that does not catch up with its camera.

namespace receive {
namespace {

using namespace std::chrono_literals;

/// A receiver that waits for a packet that is missing, when time passes without it.
class StandingStillTest : public testing::Test, protected StreamReceiverFixture {
protected:
    static constexpr std::size_t kSocketBytes = 100'000;

    StandingStillTest() { m_socket->SetBufferBytes(kSocketBytes); }

    [[nodiscard]] StreamPackets::Packet OfNoBlock() const
    {
        return m_stream.Header(0, gvsp::PacketFormat::Payload, 0);
    }
    /// @return  the packet of the block that was not put in
    StreamPackets::Packet PutBlockButOne(std::uint64_t blockId)
    {
        auto packets = m_stream.Block(blockId);
        auto missing = std::move(packets[3]);
        packets.erase(packets.begin() + 3);
        for (auto& packet : packets)
            m_socket->Put(kCamera, std::move(packet));
        return missing;
    }
    /// Time passes in which packets come and are not taken, longer than any block is waited for.
    /// @param last    of them
    /// @param others  in front of it; more than one call takes
    void StandStill(StreamPackets::Packet last, std::size_t others = 2 * Landing::kSlots)
    {
        m_socket->WaitUntilIdle();
        m_socket->Hold(true);
        for (std::size_t i = 0; i < others; ++i)
            m_socket->Put(kCamera, OfNoBlock());
        m_socket->Put(kCamera, std::move(last));
        m_clock.Advance(2s);
    }
    /// @return  as what the block is delivered when the receiver goes on, without any more time
    VxError GoOn(OneBufferSink& sink)
    {
        m_socket->Hold(false);
        sink.delivered.wait();
        m_receiver.Stop();
        return sink.last.code;
    }
};

TEST_F(StandingStillTest, AllPacketsAreLookedAtBeforeABlockIsGivenUp)
{
    OneBufferSink sink(1);
    ASSERT_TRUE(m_receiver.Start(sink).IsOK());
    StandStill(PutBlockButOne(1));

    EXPECT_EQ(GoOn(sink), VxError::Ok);
}

TEST_F(StandingStillTest, AWakeIsNoLookForPackets)
{
    OneBufferSink sink(1);
    ASSERT_TRUE(m_receiver.Start(sink).IsOK());
    StandStill(PutBlockButOne(1));
    m_receiver.ResetStatistics(); // it wakes the receiver, which then looks

    EXPECT_EQ(GoOn(sink), VxError::Ok);
}

TEST_F(StandingStillTest, ABlockIsGivenUpAsSoonAsNoPacketIsLeft)
{
    OneBufferSink sink(1);
    ASSERT_TRUE(m_receiver.Start(sink).IsOK());
    std::ignore = PutBlockButOne(1);
    StandStill(OfNoBlock());

    EXPECT_EQ(GoOn(sink), VxError::MissingPackets);
}

TEST_F(StandingStillTest, WhoHasTakenAsMuchAsTheSocketHoldsGoesByTheClock)
{
    OneBufferSink sink(2);
    ASSERT_TRUE(m_receiver.Start(sink).IsOK());
    std::ignore = PutBlockButOne(1);
    m_socket->WaitUntilIdle();

    const std::size_t bytes = OfNoBlock().size();
    std::atomic<std::size_t> sent = 0;
    std::atomic<std::size_t> sentBetween = 0;
    m_clock.Advance(2s);
    m_socket->PutEndlessly(kCamera, OfNoBlock(), [&] {
        sent += sink.Count() == 0 ? 1 : 0;
        if (sink.Count() != 1)
            return;
        if (++sentBetween == 1)
            std::ignore = PutBlockButOne(2);
        else if (sentBetween == 2)
            m_clock.Advance(2s);
    });
    sink.delivered.wait();
    m_receiver.Stop();

    EXPECT_GE(sent * bytes, kSocketBytes);
    EXPECT_LT(sentBetween * bytes, kSocketBytes / 10) << "it has not caught up since";
    EXPECT_EQ(sink.last.code, VxError::MissingPackets);
}

TEST_F(StandingStillTest, WhoDoesNotCatchUpWithinASecondGoesByTheClock)
{
    OneBufferSink sink(1);
    ASSERT_TRUE(m_receiver.Start(sink).IsOK());
    std::ignore = PutBlockButOne(1);
    m_socket->WaitUntilIdle();

    std::atomic<int> sent = 0;
    m_clock.Advance(2s);
    m_socket->PutEndlessly(kCamera, OfNoBlock(), [&] {
        sent += sink.Count() == 0 ? 1 : 0;
        m_clock.Advance(10ms);
    });
    sink.delivered.wait();
    m_receiver.Stop();

    EXPECT_EQ(sink.last.code, VxError::MissingPackets);
    EXPECT_GE(sent, 99);
    EXPECT_LE(sent, 101);
}

TEST_F(StandingStillTest, ALookThatFindsNothingEndsGoingByTheClock)
{
    m_socket->SetBufferBytes(100 * OfNoBlock().size());
    OneBufferSink sink(1);
    ASSERT_TRUE(m_receiver.Start(sink).IsOK());
    StandStill(PutBlockButOne(1), 3 * Landing::kSlots); // too much to be taken for what has waited
    m_socket->Hold(false);
    sink.delivered.wait();
    m_socket->WaitUntilIdle();
    EXPECT_EQ(sink.last.code, VxError::MissingPackets);

    StandStill(PutBlockButOne(2), Landing::kSlots);
    m_socket->Hold(false);
    m_socket->WaitUntilIdle();
    m_receiver.Stop();
    EXPECT_EQ(sink.Count(), 2);
    EXPECT_EQ(sink.last.code, VxError::Ok);
}

} // namespace
} // namespace receive
