#include "support/directshow/Gate.h"

#include "CanarySample.h"
#include "PinFixture.h"
#include "RenegotiatingSink.h"

#include <algorithm>
#include <functional>
#include <new>
#include <thread>
#include <utility>

namespace {

using vxds::Setting;

/// What happens while a reconnect is under way: a peer that looks at the new size is called in its midst.
class VxDSStreamReconnectTest : public PinFixture {
protected:
    static constexpr const char* kDestination = "device.SetStreamDestination(127.0.0.1, 50000, 0)";
    static constexpr const char* kStart = "device.AcquisitionStart()";

    VxDSStreamReconnectTest() { EXPECT_EQ(Pin().Connect(&m_sink, nullptr), S_OK); }
    ~VxDSStreamReconnectTest() override
    {
        m_sink.onRenegotiate = nullptr;
        EXPECT_EQ(Pin().Disconnect(), S_OK);
        EXPECT_EQ(m_sink.Disconnect(), S_OK);
    }

    /// Applies a camera whose size the pin's type does not have.
    void ApplyWhile(std::function<void()> peerDoes)
    {
        m_sink.onRenegotiate = std::move(peerDoes);
        Store(Setting::DeviceId, L"cam");
        Pin().ApplyConnection();
    }

    static std::ptrdiff_t Count(const Lines& done, const char* call)
    {
        return std::ranges::count(done, call);
    }

    RenegotiatingSink m_sink;
};

TEST_F(VxDSStreamReconnectTest, DirectsTheStreamBeforeItStartsWhenTheThreadBeginsMeanwhile)
{
    ApplyWhile([this] {
        std::thread streaming([this] { EXPECT_EQ(Pin().OnThreadCreate(), S_OK); });
        streaming.join();
    });

    const Lines done = Done();
    EXPECT_EQ(Count(done, kStart), 1);
    ASSERT_EQ(Count(done, kDestination), 1);
    EXPECT_LT(std::ranges::find(done, kDestination), std::ranges::find(done, kStart));
    EXPECT_EQ(Count(done, "pipeline.Start"), 1);
    EXPECT_LT(std::ranges::find(done, kDestination), std::ranges::find(done, "pipeline.Start"));
    (void)Pin().OnThreadDestroy();
}

TEST_F(VxDSStreamReconnectTest, DoesNotStartWhenTheThreadHasEndedMeanwhile)
{
    ApplyWhile([this] {
        std::thread streaming([this] {
            EXPECT_EQ(Pin().OnThreadCreate(), S_OK);
            EXPECT_EQ(Pin().OnThreadDestroy(), S_OK);
        });
        streaming.join();
    });

    const Lines done = Done();
    EXPECT_EQ(Count(done, kDestination), 1);
    EXPECT_EQ(Count(done, kStart), 0);
}

TEST_F(VxDSStreamReconnectTest, LetsTheFilterPauseMeanwhile)
{
    ApplyWhile([this] {
        Gate isPaused;
        std::thread client([&] {
            EXPECT_EQ(Host().Pause(), S_OK); // holds the filter's state lock until the worker plays
            isPaused.Pass();
        });
        EXPECT_TRUE(isPaused.WaitFor());
        client.join();
    });

    Lines done = Done();
    EXPECT_EQ(Host().Stop(), S_OK);
    EXPECT_EQ(Count(done, kStart), 1);
    ASSERT_EQ(Count(done, kDestination), 1);
    EXPECT_LT(std::ranges::find(done, kDestination), std::ranges::find(done, kStart));
}

TEST_F(VxDSStreamReconnectTest, StartsOnceWhenThePeerAppliesOnceMore)
{
    Store(Setting::Role, 1);
    Store(Setting::UnicastPort, 5000); // so that each apply reconnects
    Store(Setting::Width, 320);
    bool isNested = false;
    (void)Pin().OnThreadCreate();
    ApplyWhile([&] {
        if (std::exchange(isNested, true))
            return;
        Pin().ApplyConnection();
    });

    EXPECT_EQ(Count(Done(), "pipeline.Start"), 1);
    EXPECT_TRUE(isNested);
    (void)Pin().OnThreadDestroy();
}

TEST_F(VxDSStreamReconnectTest, RestartsAcquisitionBeforeItLetsTheMutexGo)
{
    ConnectAndForget();
    (void)Pin().OnThreadCreate();
    TheCamera().log.Clear();
    bool isTried = false;
    TheCamera().log.onCall = [&](const std::string& call) {
        if (call != kStart || std::exchange(isTried, true))
            return;
        // Frame production would retrieve a buffer if it got the mutex now.
        std::thread streaming([this] {
            CanarySample sample(24);
            EXPECT_EQ(Pin().FillBuffer(&sample), S_OK);
            EXPECT_TRUE(sample.IsAll(0));
        });
        streaming.join();
    };

    Store(Setting::DeviceId, L"other");
    Pin().ApplyConnection();

    TheCamera().log.onCall = nullptr;
    EXPECT_TRUE(isTried);
    EXPECT_EQ(Done().back(), kStart) << "nothing was retrieved meanwhile";
    (void)Pin().OnThreadDestroy();
}

TEST_F(VxDSStreamReconnectTest, ClosesAllWhenItCannotBeFinishedAndConnectsAtTheNextApply)
{
    EXPECT_THROW(ApplyWhile([] { throw std::bad_alloc(); }), std::bad_alloc);
    EXPECT_EQ(TheCamera().liveDevices, 0);
    EXPECT_EQ(TheCamera().liveStreams, 0);
    EXPECT_EQ(TheCamera().livePipelines, 0);
    EXPECT_EQ(Count(Done(), kDestination), 0);

    m_sink.onRenegotiate = nullptr;
    (void)Pin().OnThreadCreate();
    Pin().ApplyConnection();

    const Lines done = Done();
    EXPECT_EQ(Count(done, kDestination), 1);
    EXPECT_EQ(Count(done, kStart), 1);
    (void)Pin().OnThreadDestroy();
}

TEST_F(VxDSStreamReconnectTest, ClosesTheLinkAlsoWhenTheCameraCannotBeStopped)
{
    ConnectAndForget();
    TheCamera().log.onCall = [](const std::string& call) {
        if (call == "device.AcquisitionStop()")
            throw std::bad_alloc();
    };

    EXPECT_THROW(Pin().CloseConnection(), std::bad_alloc);

    EXPECT_EQ(TheCamera().liveDevices, 0);
    EXPECT_EQ(TheCamera().liveStreams, 0);
    TheCamera().log.onCall = nullptr;
}

TEST_F(VxDSStreamReconnectTest, LeavesNoHalfOfALinkWhenClosingFails)
{
    for (const char* step : {"stream.Close", "device.Disconnect"}) {
        ConnectAndForget();
        TheCamera().log.onCall = [&](const std::string& call) {
            if (call == step)
                throw std::bad_alloc();
        };

        EXPECT_THROW(Pin().CloseConnection(), std::bad_alloc);

        TheCamera().log.onCall = nullptr;
        EXPECT_EQ(TheCamera().liveDevices, 0) << step;
        EXPECT_EQ(TheCamera().liveStreams, 0) << step;
        EXPECT_EQ(TheCamera().livePipelines, 0) << step;
    }
}

TEST_F(VxDSStreamReconnectTest, KeepsARunningLinkWhenOnlyItsSizeCannotBeFollowed)
{
    ConnectAndForget();
    Store(Setting::OutputWidth, 320);

    EXPECT_THROW(ApplyWhile([] { throw std::bad_alloc(); }), std::bad_alloc);

    EXPECT_EQ(Done(), Lines{});
    EXPECT_EQ(TheCamera().liveStreams, 1);
}

} // namespace
