#include "VxBase/VxClock.h"

#include <gtest/gtest.h>

namespace {

TEST(VxClockTest, TheSteadyClockNeverRunsBackwards)
{
    const VxSteadyClock clock;
    auto last = clock.Now();
    for (int i = 0; i < 1000; ++i) {
        const auto now = clock.Now();
        EXPECT_GE(now, last);
        last = now;
    }
}

TEST(VxClockTest, TheSteadyClockIsTheSystemsMonotonicClock)
{
    const VxSteadyClock clock;

    const auto before = std::chrono::steady_clock::now();
    const auto now = clock.Now();
    const auto after = std::chrono::steady_clock::now();

    EXPECT_LE(before, now);
    EXPECT_LE(now, after);
}

} // namespace
