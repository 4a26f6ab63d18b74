#include "VxCamera/control/HeartbeatMonitor.h"

#include <gtest/gtest.h>

namespace control {
namespace {

using namespace std::chrono_literals;

const IVxClock::Time kStart{1h};

TEST(HeartbeatMonitorTest, BeatsAtAThirdOfTheTimeout)
{
    EXPECT_EQ(HeartbeatMonitor({3000ms}, kStart).NextBeat(), kStart + 1000ms);
    EXPECT_EQ(HeartbeatMonitor({600ms}, kStart).NextBeat(), kStart + 200ms);
}

TEST(HeartbeatMonitorTest, BeatsAsOftenAsItIsToldTo)
{
    EXPECT_EQ(HeartbeatMonitor({3000ms, 250ms}, kStart).NextBeat(), kStart + 250ms);
    EXPECT_EQ(HeartbeatMonitor({3000ms, 1200ms}, kStart).NextBeat(), kStart + 1200ms);
}

TEST(HeartbeatMonitorTest, NeverBeatsSoSeldomThatOneFailureCostsTheCamera)
{
    EXPECT_EQ(HeartbeatMonitor({3000ms, 1h}, kStart).NextBeat(), kStart + 1500ms);
    EXPECT_EQ(HeartbeatMonitor::IntervalOf({600ms, 1000ms}), 300ms);
}

TEST(HeartbeatMonitorTest, ACameraThatDoesNotTellGetsTheUsualTimeout)
{
    EXPECT_EQ(HeartbeatMonitor({0ms}, kStart).NextBeat(), kStart + 1000ms);
}

TEST(HeartbeatMonitorTest, AVeryLongTimeoutDoesNotDelayTheNews)
{
    EXPECT_EQ(HeartbeatMonitor({1h}, kStart).NextBeat(), kStart + 1000ms);
}

TEST(HeartbeatMonitorTest, AnAbsurdlyShortTimeoutDoesNotFloodTheCamera)
{
    EXPECT_EQ(HeartbeatMonitor({1ms}, kStart).NextBeat(), kStart + 50ms);
    EXPECT_EQ(HeartbeatMonitor({1ms}, kStart).BeatSettings().ackTimeout, 25ms);
}

TEST(HeartbeatMonitorTest, AnswersToOtherCommandsDoNotPostponeTheNextBeat)
{
    HeartbeatMonitor monitor({3000ms}, kStart);

    monitor.OnAnswer(kStart + 900ms);

    EXPECT_EQ(monitor.NextBeat(), kStart + 1000ms);
}

TEST(HeartbeatMonitorTest, ABeatThatIsAnsweredIsFollowedByTheNextAfterTheInterval)
{
    HeartbeatMonitor monitor({3000ms}, kStart);

    monitor.OnBeat(kStart + 1010ms);

    EXPECT_EQ(monitor.NextBeat(), kStart + 2010ms);
}

TEST(HeartbeatMonitorTest, AnotherTimingKeepsWhatIsKnownOfTheLink)
{
    HeartbeatMonitor monitor({3000ms}, kStart);
    monitor.OnBeat(kStart + 500ms);

    monitor.SetTiming({600ms});

    EXPECT_EQ(monitor.NextBeat(), kStart + 700ms);
    EXPECT_EQ(monitor.BeatSettings().ackTimeout, 100ms);
}

TEST(HeartbeatMonitorTest, AFailedBeatIsRepeatedSoon)
{
    HeartbeatMonitor monitor({3000ms}, kStart);

    monitor.OnFailure(kStart + 1500ms);

    EXPECT_EQ(monitor.NextBeat(), kStart + 1550ms);
}

TEST(HeartbeatMonitorTest, TheLinkIsLostBeforeTheCamerasTimeoutEnds)
{
    HeartbeatMonitor monitor({3000ms}, kStart);
    monitor.OnFailure(kStart + 2500ms);

    EXPECT_FALSE(monitor.IsLost(kStart + 2699ms));
    EXPECT_TRUE(monitor.IsLost(kStart + 2700ms));
}

TEST(HeartbeatMonitorTest, SilenceAloneIsNoLoss)
{
    const HeartbeatMonitor monitor({3000ms},
                                   kStart); // a program that was stopped for an hour has not asked yet

    EXPECT_FALSE(monitor.IsLost(kStart + 1h));
}

TEST(HeartbeatMonitorTest, AnAnswerForgivesFailures)
{
    HeartbeatMonitor monitor({3000ms}, kStart);
    monitor.OnFailure(kStart + 2600ms);

    monitor.OnAnswer(kStart + 2650ms);

    EXPECT_FALSE(monitor.IsLost(kStart + 4000ms));
    EXPECT_LE(monitor.NextBeat(), kStart + 2650ms) << "who controls the camera is still not known";
}

TEST(HeartbeatMonitorTest, AnOldAnswerForgivesNothing)
{
    HeartbeatMonitor monitor({3000ms}, kStart);
    monitor.OnFailure(kStart + 2600ms);

    monitor.OnAnswer(kStart);

    EXPECT_TRUE(monitor.IsLost(kStart + 2700ms));
}

TEST(HeartbeatMonitorTest, ABeatIsTriedOnceAndShort)
{
    EXPECT_EQ(HeartbeatMonitor({3000ms}, kStart).BeatSettings().ackTimeout, 500ms);
    EXPECT_EQ(HeartbeatMonitor({600ms}, kStart).BeatSettings().ackTimeout, 100ms);
    EXPECT_EQ(HeartbeatMonitor({3000ms}, kStart).BeatSettings().retries, 0u);
}

} // namespace
} // namespace control
