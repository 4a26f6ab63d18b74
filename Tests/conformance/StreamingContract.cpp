#include "conformance/FilterConformanceTest.h"
#include "support/graph/ProcessUse.h"

#include <uuids.h>
#include <vfwmsgs.h>

#include <limits>
#include <mutex>
#include <thread>

namespace {

TEST_P(FilterConformanceTest, DeliversWhileItRuns)
{
    Connect();

    ASSERT_EQ(filter->Run(0), S_OK);
    EXPECT_EQ(State(), State_Running);

    EXPECT_TRUE(sink.samples.WaitFor(3));
}

TEST_P(FilterConformanceTest, PausesWithTheFirstFrameAtThePeer)
{
    Connect();

    ASSERT_EQ(filter->Pause(), S_OK);
    EXPECT_EQ(State(), State_Paused);

    EXPECT_TRUE(sink.samples.WaitFor(1));
}

TEST_P(FilterConformanceTest, NothingIsDeliveredAfterStop)
{
    Connect();
    ASSERT_EQ(filter->Run(0), S_OK);
    ASSERT_TRUE(sink.samples.WaitFor(2));

    EXPECT_EQ(filter->Stop(), S_OK);
    const int atStop = sink.samples.Count();
    Disconnect(); // would wait for nobody

    EXPECT_EQ(sink.samples.Count(), atStop);
    EXPECT_EQ(State(), State_Stopped);
}

TEST_P(FilterConformanceTest, SamplesKeepWithinTheirBuffersAndTimes)
{
    std::mutex mutex;
    int wrong = 0;
    sink.onReceive = [&](IMediaSample* sample) {
        BYTE* data = nullptr;
        REFERENCE_TIME start = 0;
        REFERENCE_TIME stop = 0;
        const HRESULT timed = sample->GetTime(&start, &stop);
        const bool isRight = sample->GetPointer(&data) == S_OK && data != nullptr && sample->GetSize() > 0 &&
                             sample->GetActualDataLength() > 0 &&
                             sample->GetActualDataLength() <= sample->GetSize() &&
                             (timed != S_OK || start <= stop);
        const std::lock_guard lock(mutex);
        wrong += isRight ? 0 : 1;
        return S_OK;
    };
    Connect();

    ASSERT_EQ(filter->Run(0), S_OK);
    ASSERT_TRUE(sink.samples.WaitFor(5));
    ASSERT_EQ(filter->Stop(), S_OK);

    EXPECT_EQ(wrong, 0);
}

TEST_P(FilterConformanceTest, ActiveFilterRefusesToChangeItsConnection)
{
    SinkPin other;
    EXPECT_EQ(filter->Pause(), S_OK);
    EXPECT_EQ(pin->Connect(&other, nullptr), VFW_E_NOT_STOPPED);
    EXPECT_EQ(filter->Stop(), S_OK);
    Connect();

    EXPECT_EQ(filter->Pause(), S_OK);
    EXPECT_EQ(pin->Disconnect(), VFW_E_NOT_STOPPED);
    EXPECT_EQ(pin->Connect(&other, nullptr), VFW_E_ALREADY_CONNECTED);
    EXPECT_EQ(filter->Run(0), S_OK);
    EXPECT_EQ(pin->Disconnect(), VFW_E_NOT_STOPPED);
}

TEST_P(FilterConformanceTest, StopsWhileThePeerKeepsEverySample)
{
    std::vector<VxComPtr<IMediaSample>> kept;
    sink.onReceive = [&](IMediaSample* sample) {
        kept.emplace_back(sample);
        return S_OK;
    };
    VxComPtr<IMemAllocator> allocator;
    sink.onNotifyAllocator = [&](IMemAllocator* told, BOOL) {
        allocator = VxComPtr<IMemAllocator>(told);
        return S_OK;
    };
    Connect();
    ALLOCATOR_PROPERTIES properties = {};
    ASSERT_EQ(allocator->GetProperties(&properties), S_OK);

    ASSERT_EQ(filter->Run(0), S_OK);
    ASSERT_TRUE(sink.samples.WaitFor(static_cast<int>(properties.cBuffers))); // now it waits for a free one

    EXPECT_EQ(filter->Stop(), S_OK);
    EXPECT_EQ(sink.samples.Count(), static_cast<int>(properties.cBuffers));
    kept.clear();
}

TEST_P(FilterConformanceTest, StopWaitsForAPeerThatHoldsTheCall)
{
    Gate received;
    Gate open;
    sink.onReceive = [&](IMediaSample*) {
        received.Pass();
        return open.WaitFor() ? S_OK : E_FAIL;
    };
    Connect();
    ASSERT_EQ(filter->Run(0), S_OK);
    ASSERT_TRUE(received.WaitFor());

    Gate stopped;
    HRESULT stopping = E_PENDING;
    std::thread stopper([&] {
        stopping = filter->Stop();
        stopped.Pass();
    });
    open.Pass(); // as a renderer does, which is stopped before its source
    EXPECT_TRUE(stopped.WaitFor());
    stopper.join();

    EXPECT_EQ(stopping, S_OK);
    EXPECT_EQ(State(), State_Stopped);
}

TEST_P(FilterConformanceTest, PeerThatWantsNoMoreGetsNoMoreUntilTheNextStart)
{
    sink.onReceive = [](IMediaSample*) { return S_FALSE; };
    Connect();
    ASSERT_EQ(filter->Run(0), S_OK);
    ASSERT_TRUE(sink.samples.WaitFor(1));
    EXPECT_EQ(filter->Stop(), S_OK);
    EXPECT_EQ(sink.samples.Count(), 1);
    EXPECT_EQ(sink.ends.Count(), 0);

    sink.onReceive = [](IMediaSample*) { return S_OK; };
    EXPECT_EQ(filter->Run(0), S_OK);

    EXPECT_TRUE(sink.samples.WaitFor(4));
}

TEST_P(FilterConformanceTest, StartsAndStopsInQuickSuccession)
{
    Connect();

    for (int round = 0; round < 100; ++round) {
        ASSERT_EQ(filter->Pause(), S_OK);
        ASSERT_EQ(filter->Stop(), S_OK);
    }
}

TEST_P(FilterConformanceTest, StopsOnAnotherThreadThanItWasStarted)
{
    Connect();
    HRESULT running = E_PENDING;
    std::thread starter([&] {
        ::CoInitializeEx(nullptr, COINIT_MULTITHREADED);
        running = filter->Run(0);
        ::CoUninitialize();
    });
    starter.join();
    ASSERT_EQ(running, S_OK);
    ASSERT_TRUE(sink.samples.WaitFor(1));

    EXPECT_EQ(filter->Stop(), S_OK);
}

TEST_P(FilterConformanceTest, StreamsAgainAfterANewConnection)
{
    for (int round = 1; round <= 2; ++round) {
        Connect();
        ASSERT_EQ(filter->Run(0), S_OK);
        ASSERT_TRUE(sink.samples.WaitFor(sink.samples.Count() + 1));
        ASSERT_EQ(filter->Stop(), S_OK);
        Disconnect();
    }
}

TEST_P(FilterConformanceTest, TwoHundredLivesLeaveNothingBehind)
{
    const auto live = [&] {
        auto one = CreateFilter();
        VxComPtr<IEnumPins> pins;
        VxComPtr<IPin> output;
        one->EnumPins(pins.Put());
        pins->Next(1, output.Put(), nullptr);
        SinkPin peer;
        EXPECT_EQ(output->Connect(&peer, nullptr), S_OK);
        EXPECT_EQ(one->Run(0), S_OK);
        EXPECT_TRUE(peer.samples.WaitFor(1));
        EXPECT_EQ(one->Stop(), S_OK);
        EXPECT_EQ(output->Disconnect(), S_OK);
        peer.Disconnect();
        output.Reset();
        pins.Reset();
        EXPECT_EQ(one.Detach()->Release(), 0u);
    };
    // Chosen: by then the system has what it keeps (its thread pool, its allocator's caches).
    constexpr int kWarmUp = 20;
    constexpr std::size_t kSlack = 2; // chosen: two locks that live on get their event late
    for (int round = 0; round < kWarmUp; ++round)
        live();
    ProcessUse limit = MeasureProcess();
    limit.AllowEvents(kSlack);
    limit.udpSockets =
        std::numeric_limits<std::size_t>::max(); // not only this process's; they are handles, too

    for (int round = 0; round < 200; ++round) {
        live();
        if (HasFailure())
            FAIL() << "in round " << round;
    }

    const ProcessUse after = MeasureProcessUntilWithin(limit);
    EXPECT_TRUE(IsWithin(after, limit)) << Describe(after) << "\nallowed: " << Describe(limit);
}

} // namespace
