#include "system/RoadTest.h"

#include <gtest/gtest-spi.h>

#include <atomic>
#include <string>
#include <thread>
#include <tuple>
#include <vector>

namespace {

class LifetimeTest : public RoadTest {};

TEST_F(LifetimeTest, TwoHundredTimesCreatedRunStoppedAndReleasedLeavesNothingBehind)
{
    constexpr Repetition kTwoHundred{100, 100, 3};
    VxSimulatedCamera camera;
    VxSimulatorOptions options = SmallCamera("Mono8");
    options.frameRateHz = 200;
    Start(camera, options);
    const std::size_t graphs = GrabberGraph::BuiltUntilNow();

    ExpectNothingIsLeftBy([&] { GrabOnePicture(camera); }, kTwoHundred);

    EXPECT_GE(GrabberGraph::BuiltUntilNow() - graphs, 200u);
}

/// Keeps events until its end.
class EventKeeper {
public:
    ~EventKeeper()
    {
        for (const HANDLE event : m_events)
            ::CloseHandle(event);
    }
    void Keep() { m_events.push_back(::CreateEventW(nullptr, FALSE, FALSE, nullptr)); }

private:
    std::vector<HANDLE> m_events;
};

TEST_F(LifetimeTest, ALossOfAnEventInEveryOtherRoundIsSeen)
{
    EventKeeper events;
    int rounds = 0;
    testing::TestPartResultArray results;
    {
        const testing::ScopedFakeTestPartResultReporter intercepting(
            testing::ScopedFakeTestPartResultReporter::INTERCEPT_ONLY_CURRENT_THREAD, &results);
        ExpectNothingIsLeftBy(
            [&] {
                if (++rounds % 2 == 0)
                    events.Keep();
            },
            {.series = 1});
    }

    ASSERT_EQ(results.size(), 1);
    EXPECT_NE(std::string(results.GetTestPartResult(0).message()).find("left something behind"),
              std::string::npos);
}

TEST_F(LifetimeTest, EventsThatComeOnceAreNoLoss)
{
    EventKeeper events;
    int rounds = 0;
    ExpectNothingIsLeftBy([&] {
        if (++rounds <= 3)
            events.Keep();
    });
}

TEST_F(LifetimeTest, BeingLookedAtStartsNoThreadAndOpensNoSocket)
{
    const auto look = [&] {
        const auto filter = m_module.CreateFilter();
        EXPECT_TRUE(ControlOf(filter));
        EXPECT_TRUE(FirstPin(*filter.Get(), PINDIR_OUTPUT));
        return MeasureProcess();
    };
    std::ignore = look(); // loads what is loaded once
    const ProcessUse before = MeasureProcess();

    const ProcessUse during = look();

    EXPECT_EQ(during.threads, before.threads);
    EXPECT_EQ(during.udpSockets, before.udpSockets);
    EXPECT_TRUE(m_module.IsUnused());
}

TEST_F(LifetimeTest, OneFilterRunsAndStopsManyTimes)
{
    constexpr int kRounds = 20;
    VxSimulatedCamera camera;
    Start(camera, SmallCamera("Mono8"));
    FrameCatcher catcher;
    GrabberGraph graph(FilterFor(camera), MEDIASUBTYPE_RGB24, catcher);
    ASSERT_TRUE(graph.IsBuilt());

    for (int i = 0; i < kRounds; ++i) {
        catcher.Forget();
        ASSERT_HRESULT_SUCCEEDED(graph.Run());
        ASSERT_TRUE(catcher.WaitForPicture(kPatience)) << "in round " << i;
        ASSERT_LT(graph.TimedStop(), kStopLimit) << "in round " << i;
    }
}

TEST_F(LifetimeTest, OtherThreadsMayPauseRunAndStop)
{
    constexpr int kRounds = 15;
    VxSimulatedCamera camera;
    Start(camera, SmallCamera("Mono8"));
    FrameCatcher catcher;
    GrabberGraph graph(FilterFor(camera), MEDIASUBTYPE_RGB24, catcher);
    ASSERT_TRUE(graph.IsBuilt());

    std::atomic<int> failures = 0;
    for (int i = 0; i < kRounds; ++i) {
        // Each call from a thread of its own, one after the other, some without a frame between them.
        const auto fromAnotherThread = [&](auto call) {
            std::thread([&] {
                const ComApartment apartment;
                failures += FAILED(call()) ? 1 : 0;
            }).join();
        };
        catcher.Forget();
        fromAnotherThread([&] { return graph.Pause(); });
        fromAnotherThread([&] { return graph.Run(); });
        if (i % 3 != 0) {
            ASSERT_TRUE(catcher.WaitForPicture(kPatience)) << "in round " << i;
        }
        fromAnotherThread([&] { return graph.Pause(); });
        fromAnotherThread([&] { return graph.Stop(); });
    }
    EXPECT_EQ(failures, 0);

    catcher.Forget();
    ASSERT_HRESULT_SUCCEEDED(graph.Run());
    EXPECT_TRUE(catcher.WaitForPicture(kPatience)) << "the graph still works afterwards";
}

TEST_F(LifetimeTest, ReleasingARunningFilterWithItsGraphStopsTheCamera)
{
    VxSimulatedCamera camera;
    Start(camera, SmallCamera("Mono8"));
    FrameCatcher catcher;
    {
        GrabberGraph graph(FilterFor(camera), MEDIASUBTYPE_RGB24, catcher);
        ASSERT_TRUE(graph.IsBuilt());
        ASSERT_HRESULT_SUCCEEDED(graph.Run());
        ASSERT_TRUE(catcher.WaitForPicture(kPatience));
    }
    EXPECT_TRUE(m_module.IsUnused());
    EXPECT_FALSE(camera.ControlOwner());
    EXPECT_FALSE(camera.IsAcquiring());
}

} // namespace
