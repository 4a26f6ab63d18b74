#include "VxCamera/receive/RateMeter.h"

#include <gtest/gtest.h>

namespace receive {
namespace {

using namespace std::chrono_literals;

class RateMeterTest : public testing::Test {
protected:
    void Feed(int blocks, std::chrono::milliseconds interval, std::uint64_t bytesPerBlock)
    {
        for (int i = 0; i < blocks; ++i) {
            m_now += interval;
            m_bytes += bytesPerBlock;
            m_meter.OnBlock(m_now, m_bytes);
        }
    }

    RateMeter m_meter;
    IVxClock::Time m_now{1h};
    std::uint64_t m_bytes = 0;
};

TEST_F(RateMeterTest, CountsBlocksAndBitsPerSecond)
{
    Feed(100, 20ms, 1000);

    EXPECT_DOUBLE_EQ(m_meter.Read(m_now).blocksPerSecond, 50.0);
    EXPECT_DOUBLE_EQ(m_meter.Read(m_now).bitsPerSecond, 50 * 8000.0);
}

TEST_F(RateMeterTest, FollowsAChange)
{
    Feed(100, 20ms, 1000);
    Feed(10, 1000ms, 1000);

    EXPECT_DOUBLE_EQ(m_meter.Read(m_now).blocksPerSecond, 1.0);
}

TEST_F(RateMeterTest, ManyBlocksInAShortTimeAreMeasuredToo)
{
    Feed(5000, 1ms, 10);

    EXPECT_NEAR(m_meter.Read(m_now).blocksPerSecond, 1000.0, 1e-6);
}

TEST_F(RateMeterTest, OneBlockHasNoRate)
{
    Feed(1, 20ms, 1000);

    EXPECT_EQ(m_meter.Read(m_now).blocksPerSecond, 0.0);
}

TEST_F(RateMeterTest, ARateSinksWhenBlocksStayAwayAndEndsAtZero)
{
    Feed(100, 20ms, 1000);

    EXPECT_DOUBLE_EQ(m_meter.Read(m_now + 20ms).blocksPerSecond, 50.0);
    EXPECT_LT(m_meter.Read(m_now + 1000ms).blocksPerSecond, 50.0);
    EXPECT_EQ(m_meter.Read(m_now + 10s).blocksPerSecond, 0.0);
}

TEST_F(RateMeterTest, BlocksOfOneInstantHaveNoRate)
{
    Feed(10, 0ms, 1000);

    EXPECT_EQ(m_meter.Read(m_now).blocksPerSecond, 0.0);
}

TEST_F(RateMeterTest, ResetForgets)
{
    Feed(100, 20ms, 1000);

    m_meter.Reset();

    EXPECT_EQ(m_meter.Read(m_now).blocksPerSecond, 0.0);
}

} // namespace
} // namespace receive
