#include "VxCamera/receive/PacketGathering.h"

#include "support/network/FakeClock.h"

#include <gtest/gtest.h>

namespace receive {
namespace {

using namespace std::chrono_literals;

constexpr std::size_t kLargeBuffer = 32 * 1024 * 1024;

/// A block of 1,000 packets, one every 10 us.
class PacketGatheringTest : public testing::Test {
protected:
    PacketGatheringTest() { m_gathering.SetSocket(kLargeBuffer, PacketGathering::Backlog::InSystem); }

    PacketGathering::Progress At(std::uint32_t packetId) const
    {
        return {7, packetId, 1000, 1464, m_begin + packetId * 10us};
    }
    std::chrono::microseconds TimeAt(std::uint32_t packetId) { return m_gathering.TimeFor(At(packetId)); }

    FakeClock m_clock;
    const IVxClock::Time m_begin = m_clock.Now();
    PacketGathering m_gathering;
};

TEST_F(PacketGatheringTest, DoesNotSleepBeforeThePaceIsKnown)
{
    EXPECT_EQ(TimeAt(1), 0us);
    EXPECT_EQ(TimeAt(8), 0us);
}

TEST_F(PacketGatheringTest, SleepsForAMillisecondInALongBlock)
{
    TimeAt(1);

    EXPECT_EQ(TimeAt(100), 1ms); // 9 ms are left
}

TEST_F(PacketGatheringTest, SleepsForHalfOfTheRestNearTheEnd)
{
    TimeAt(1);

    EXPECT_EQ(TimeAt(900), 500us);
    EXPECT_EQ(TimeAt(950), 250us);
}

TEST_F(PacketGatheringTest, SleepsForTwoThirdsOfTheRestWhereTheBacklogIsNear)
{
    m_gathering.SetSocket(kLargeBuffer, PacketGathering::Backlog::Near);
    TimeAt(1);

    EXPECT_EQ(TimeAt(910), 600us);
    EXPECT_EQ(TimeAt(998), 0us); // 20 us are left
}

TEST_F(PacketGatheringTest, IsAwakeWhenTheEndComes)
{
    TimeAt(1);

    EXPECT_EQ(TimeAt(995), 25us); // half of 50 us
    EXPECT_EQ(TimeAt(997), 0us);
    EXPECT_EQ(TimeAt(1000), 0us);
    EXPECT_EQ(TimeAt(1001), 0us); // more packets than there should be
}

TEST_F(PacketGatheringTest, NeverSleepsUntilTheSocketsBufferIsFull)
{
    m_gathering.SetSocket(
        212'992, PacketGathering::Backlog::InSystem); // a usual default of Linux: some 40 packets are 400 us
    TimeAt(1);

    const auto time = TimeAt(100);

    EXPECT_GT(time, 0us);
    EXPECT_LE(time, 200us);
}

TEST_F(PacketGatheringTest, DoesNotSleepWithoutASocketBuffer)
{
    m_gathering.SetSocket(0, PacketGathering::Backlog::InSystem);
    TimeAt(1);

    EXPECT_EQ(TimeAt(100), 0us);
}

TEST_F(PacketGatheringTest, ABlockBeginsWithAQuarterByThePaceOfTheOneBefore)
{
    TimeAt(1);
    TimeAt(900);

    PacketGathering::Progress next = At(950);
    next.blockId = 8;

    EXPECT_EQ(m_gathering.TimeFor(next), 125us); // 500 us are left
}

TEST_F(PacketGatheringTest, GoesByTheBlocksOwnPaceAsSoonAsThatIsKnown)
{
    TimeAt(1);
    TimeAt(900);
    PacketGathering::Progress next = At(900);
    next.blockId = 8;
    EXPECT_EQ(m_gathering.TimeFor(next), 250us); // 1 ms would be left

    next.highestId = 910; // within 400 us, four times as long as in the block before
    next.lastAdvance += 400us;

    EXPECT_EQ(m_gathering.TimeFor(next), 1ms); // 3.6 ms are left
}

TEST_F(PacketGatheringTest, ThePaceOfPacketsOfAnotherLengthTellsNothing)
{
    TimeAt(1);
    TimeAt(900);
    PacketGathering::Progress next = At(950);
    next.blockId = 8;
    next.stepBytes = 8964;

    EXPECT_EQ(m_gathering.TimeFor(next), 0us);
}

TEST_F(PacketGatheringTest, ABlockThatBeginsAgainUnderItsIdIsMeasuredAnew)
{
    TimeAt(500);

    EXPECT_EQ(TimeAt(100), 0us);
    EXPECT_EQ(TimeAt(200), 1ms);
}

// Cameras that send one frame at a time count each of them as the first.
TEST_F(PacketGatheringTest, TheNextBlockUnderTheSameIdIsMeasuredAnew)
{
    TimeAt(1);
    TimeAt(900);
    PacketGathering::Progress next = At(1);
    next.lastAdvance += 10s;
    EXPECT_EQ(m_gathering.TimeFor(next), 1ms); // by the pace of the one before
    next.highestId = 950;
    next.lastAdvance += 9490us;

    EXPECT_EQ(m_gathering.TimeFor(next), 250us);
}

TEST_F(PacketGatheringTest, ANewAcquisitionBeginsWithoutAPace)
{
    TimeAt(1);
    TimeAt(900);
    m_gathering.SetSocket(kLargeBuffer, PacketGathering::Backlog::InSystem);

    EXPECT_EQ(TimeAt(950), 0us);
}

TEST_F(PacketGatheringTest, PacketsThatCameAllAtOnceTellNothing)
{
    TimeAt(1);
    PacketGathering::Progress burst = At(1);
    burst.highestId = 500;

    EXPECT_EQ(m_gathering.TimeFor(burst), 0us);
}

} // namespace
} // namespace receive
