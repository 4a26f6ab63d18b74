#include "VxSimulator/device/FramePacer.h"

#include <gtest/gtest.h>

namespace {

using namespace simulator;
using namespace std::chrono_literals;

constexpr FramePacer::Time kStart{1h};

FramePacer StartedPacer(std::optional<std::uint64_t> frames = std::nullopt)
{
    FramePacer pacer;
    pacer.SetPeriod(40ms);
    pacer.Start(kStart, frames);
    return pacer;
}

TEST(FramePacerTest, HasNothingDueBeforeTheStart)
{
    FramePacer pacer;

    EXPECT_FALSE(pacer.IsActive());
    EXPECT_FALSE(pacer.NextDue());
    EXPECT_FALSE(pacer.Take(kStart));
}

TEST(FramePacerTest, TheFirstFrameIsDueAtTheStartAndThenOneEveryPeriod)
{
    auto pacer = StartedPacer();

    EXPECT_EQ(pacer.NextDue(), kStart);
    EXPECT_TRUE(pacer.Take(kStart));
    EXPECT_EQ(pacer.NextDue(), kStart + 40ms);
    EXPECT_FALSE(pacer.Take(kStart + 39ms));
    EXPECT_TRUE(pacer.Take(kStart + 40ms));
    EXPECT_EQ(pacer.NextDue(), kStart + 80ms);
}

TEST(FramePacerTest, ASmallDelayDoesNotShiftTheFollowingFrames)
{
    auto pacer = StartedPacer();

    EXPECT_TRUE(pacer.Take(kStart + 10ms));

    EXPECT_EQ(pacer.NextDue(), kStart + 40ms);
}

TEST(FramePacerTest, WhoComesLateGetsOneFrameAndNotThoseMissed)
{
    auto pacer = StartedPacer();

    EXPECT_TRUE(pacer.Take(kStart + 1s));

    EXPECT_EQ(pacer.NextDue(), kStart + 1s + 40ms);
}

TEST(FramePacerTest, EndsByItselfAfterALimitedNumberOfFrames)
{
    auto pacer = StartedPacer(2);

    EXPECT_TRUE(pacer.Take(kStart));
    EXPECT_TRUE(pacer.IsActive());
    EXPECT_TRUE(pacer.Take(kStart + 40ms));
    EXPECT_FALSE(pacer.IsActive());
    EXPECT_FALSE(pacer.Take(kStart + 80ms));
}

TEST(FramePacerTest, HasNothingDueAfterTheStop)
{
    auto pacer = StartedPacer();

    pacer.Stop();

    EXPECT_FALSE(pacer.IsActive());
    EXPECT_FALSE(pacer.NextDue());
}

TEST(FramePacerTest, WaitsForATriggerWhenTriggered)
{
    auto pacer = StartedPacer();
    pacer.SetMode(FramePacer::Mode::Triggered);

    EXPECT_FALSE(pacer.NextDue());
    EXPECT_FALSE(pacer.Take(kStart + 1s));
    pacer.Trigger();
    EXPECT_TRUE(pacer.Take(kStart + 1s));
    EXPECT_FALSE(pacer.Take(kStart + 2s)) << "one trigger, one frame";
}

TEST(FramePacerTest, ATriggerCannotBeFasterThanThePeriod)
{
    auto pacer = StartedPacer();
    pacer.SetMode(FramePacer::Mode::Triggered);
    pacer.Trigger();
    ASSERT_TRUE(pacer.Take(kStart + 1s));

    pacer.Trigger();

    EXPECT_EQ(pacer.NextDue(), kStart + 1s + 40ms);
}

TEST(FramePacerTest, TriggersDoNotPileUp)
{
    auto pacer = StartedPacer();
    pacer.SetMode(FramePacer::Mode::Triggered);
    pacer.Trigger();
    pacer.Trigger();

    EXPECT_TRUE(pacer.Take(kStart));
    EXPECT_FALSE(pacer.NextDue());
}

TEST(FramePacerTest, ATriggerBeforeTheStartIsForgotten)
{
    FramePacer pacer;
    pacer.SetMode(FramePacer::Mode::Triggered);
    pacer.Trigger();

    pacer.Start(kStart, std::nullopt);

    EXPECT_FALSE(pacer.NextDue());
}

TEST(FramePacerTest, ANewPeriodHoldsFromTheNextFrameOn)
{
    auto pacer = StartedPacer();
    pacer.SetPeriod(100ms);

    EXPECT_TRUE(pacer.Take(kStart));

    EXPECT_EQ(pacer.NextDue(), kStart + 100ms);
}

} // namespace
