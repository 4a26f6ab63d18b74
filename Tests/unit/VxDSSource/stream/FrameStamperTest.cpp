#include "VxDSSource/stream/FrameStamper.h"

#include <gtest/gtest.h>

namespace vxds {
namespace {

TEST(FrameStamperTest, StartsTheFirstFrameAtZero)
{
    FrameStamper stamper;

    const FrameTimes times = stamper.Next(123456789);

    EXPECT_EQ(times.start, 0);
    EXPECT_EQ(times.stop, 0);
    EXPECT_EQ(times.mediaStart, 0);
    EXPECT_EQ(times.mediaStop, 1);
}

TEST(FrameStamperTest, RunsEachFrameFromTheArrivalOfTheOneBeforeToItsOwn)
{
    FrameStamper stamper;
    (void)stamper.Next(1000000);

    const FrameTimes second = stamper.Next(1333333);
    const FrameTimes third = stamper.Next(1700000);

    EXPECT_EQ(second.start, 0);
    EXPECT_EQ(second.stop, 333333);
    EXPECT_EQ(third.start, 333333);
    EXPECT_EQ(third.stop, 700000);
    EXPECT_EQ(third.mediaStart, 2);
    EXPECT_EQ(third.mediaStop, 3);
}

TEST(FrameStamperTest, StampsZeroWithoutAClockAndStillCounts)
{
    FrameStamper stamper;
    for (std::int64_t frame = 0; frame < 3; ++frame) {
        const FrameTimes times = stamper.Next(0);
        EXPECT_EQ(times.start, 0);
        EXPECT_EQ(times.stop, 0);
        EXPECT_EQ(times.mediaStart, frame);
        EXPECT_EQ(times.mediaStop, frame + 1);
    }
    EXPECT_EQ(stamper.FrameCount(), 3u);
}

TEST(FrameStamperTest, BeginsAgainAfterAReset)
{
    FrameStamper stamper;
    (void)stamper.Next(1000);
    (void)stamper.Next(2000);

    stamper.Reset();
    const FrameTimes times = stamper.Next(5000);

    EXPECT_EQ(times.start, 0);
    EXPECT_EQ(times.stop, 0);
    EXPECT_EQ(times.mediaStart, 0);
}

} // namespace
} // namespace vxds
