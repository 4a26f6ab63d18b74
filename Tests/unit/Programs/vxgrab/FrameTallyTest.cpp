#include "vxgrab/FrameTally.h"

#include <gtest/gtest.h>

namespace vxgrab {
namespace {

using namespace std::chrono_literals;

FrameTally::TimePoint At(std::chrono::milliseconds time)
{
    return FrameTally::TimePoint(time);
}

TEST(FrameTallyTest, CountsPicturesAndZeroFramesApart)
{
    FrameTally tally;
    tally.Count(FrameContent::Zero, At(0ms));
    tally.Count(FrameContent::Picture, At(10ms));
    tally.Count(FrameContent::Picture, At(20ms));

    EXPECT_EQ(tally.Delivered(), 3u);
    EXPECT_EQ(tally.Pictures(), 2u);
    EXPECT_EQ(tally.ZeroFrames(), 1u);
}

TEST(FrameTallyTest, RateIsIntervalsOverTimeNotFramesOverTime)
{
    FrameTally tally;
    for (int i = 0; i <= 10; ++i)
        tally.Count(FrameContent::Picture, At(i * 100ms));

    EXPECT_DOUBLE_EQ(tally.FramesPerSecond(), 10.0);
}

TEST(FrameTallyTest, ThereIsNoRateWithoutAnInterval)
{
    FrameTally tally;
    EXPECT_EQ(tally.FramesPerSecond(), 0.0);

    tally.Count(FrameContent::Picture, At(5ms));
    EXPECT_EQ(tally.FramesPerSecond(), 0.0);

    tally.Count(FrameContent::Picture, At(5ms));
    EXPECT_EQ(tally.FramesPerSecond(), 0.0);
}

} // namespace
} // namespace vxgrab
