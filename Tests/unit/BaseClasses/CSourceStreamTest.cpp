#include "BaseClasses/CSourceStream.h"

#include "BaseClasses/VxComPtr.h"
#include "support/directshow/FakeAllocator.h"
#include "support/directshow/FakeClock.h"
#include "support/directshow/FakeGraph.h"
#include "support/directshow/SinkPin.h"
#include "unit/BaseClasses/FrameworkTest.h"
#include "unit/BaseClasses/TestSource.h"

#include <evcode.h>
#include <vfwmsgs.h>

#include <algorithm>
#include <stdexcept>
#include <thread>

namespace {

constexpr HRESULT kOwnError = MAKE_HRESULT(SEVERITY_ERROR, FACILITY_ITF, 0x777);
constexpr HRESULT kStrangeSuccess = 2;

class CSourceStreamTest : public FrameworkTest {
protected:
    CSourceStreamTest() { EXPECT_EQ(held->JoinFilterGraph(&graph, nullptr), S_OK); }
    ~CSourceStreamTest() override
    {
        EXPECT_EQ(held->Stop(), S_OK);
        stream.Disconnect();
        sink.Disconnect();
        held->SetSyncSource(nullptr);
    }
    void Connect() { ASSERT_EQ(stream.Connect(&sink, nullptr), S_OK); }
    CBasePin& Pin() { return stream; }

    FakeGraph graph;
    FakeClock clock;
    SinkPin sink;
    TestSource& source = *new TestSource;
    VxComPtr<IBaseFilter> held{&source};
    TestStream& stream = *new TestStream(&source);
};

TEST_F(CSourceStreamTest, ErasesAnEarlierErrorInItsConstructor)
{
    class Plain final : public CSourceStream {
    public:
        Plain(HRESULT* phr, CSource* filter) : CSourceStream(NAME("plain"), phr, filter, L"Plain") {}
        HRESULT FillBuffer(IMediaSample*) override { return S_FALSE; }
        HRESULT DecideBufferSize(IMemAllocator*, ALLOCATOR_PROPERTIES*) override { return S_OK; }
    };
    HRESULT hr = E_ACCESSDENIED;

    const Plain plain(&hr, &source);

    EXPECT_EQ(hr, S_OK);
}

TEST_F(CSourceStreamTest, WithoutAConnectionThereIsNoWorker)
{
    EXPECT_EQ(held->Run(0), S_OK);

    EXPECT_FALSE(stream.ThreadExists());
    EXPECT_EQ(held->Stop(), S_OK);
}

TEST_F(CSourceStreamTest, HooksRunInOrderOnOneWorker)
{
    Connect();

    ASSERT_EQ(held->Pause(), S_OK);
    ASSERT_TRUE(stream.ThreadExists());
    ASSERT_EQ(held->Run(0), S_OK);
    ASSERT_TRUE(sink.samples.WaitFor(3));
    ASSERT_EQ(held->Stop(), S_OK);

    EXPECT_FALSE(stream.ThreadExists());
    EXPECT_EQ(stream.Order(), "create play fill destroy");
    const auto calls = stream.Calls();
    for (const auto& call : calls) {
        EXPECT_EQ(call.thread, calls.front().thread);
        EXPECT_NE(call.thread, ::GetCurrentThreadId());
    }
    EXPECT_EQ(calls.front().state, State_Stopped); // Pause is still under way
    EXPECT_EQ(calls.back().state, State_Running);  // Stop is still under way
}

TEST_F(CSourceStreamTest, PausedFilterDeliversAlready)
{
    Connect();

    ASSERT_EQ(held->Pause(), S_OK);

    EXPECT_TRUE(sink.samples.WaitFor(2));
}

TEST_F(CSourceStreamTest, RunningDoesNotStartThePlayAgain)
{
    Connect();
    held->Pause();
    ASSERT_TRUE(sink.samples.WaitFor(1));

    EXPECT_EQ(held->Run(5), S_OK);
    ASSERT_TRUE(sink.samples.WaitFor(sink.samples.Count() + 2));
    EXPECT_EQ(held->Pause(), S_OK);
    ASSERT_TRUE(sink.samples.WaitFor(sink.samples.Count() + 2));

    EXPECT_EQ(held->Stop(), S_OK);
    EXPECT_EQ(stream.Order(), "create play fill destroy");
}

TEST_F(CSourceStreamTest, EachStartHasItsOwnWorker)
{
    Connect();

    for (int round = 1; round <= 2; ++round) {
        ASSERT_EQ(held->Pause(), S_OK);
        ASSERT_TRUE(sink.samples.WaitFor(sink.samples.Count() + 1));
        ASSERT_EQ(held->Stop(), S_OK);
    }

    EXPECT_EQ(stream.Order(), "create play fill destroy create play fill destroy");
}

TEST_F(CSourceStreamTest, ActivePinStaysAsItIs)
{
    Connect();
    ASSERT_EQ(held->Pause(), S_OK);

    EXPECT_EQ(Pin().Active(), S_FALSE);
}

TEST_F(CSourceStreamTest, FailureOfThreadCreateFailsTheStartAndLeavesNothing)
{
    Connect();
    stream.onCreate = [] { return kOwnError; };

    EXPECT_EQ(held->Pause(), kOwnError);

    EXPECT_TRUE(source.IsStopped());
    EXPECT_FALSE(stream.ThreadExists());
    EXPECT_EQ(stream.Order(), "create destroy");
    VxComPtr<IMediaSample> sample;
    EXPECT_EQ(stream.Allocator()->GetBuffer(sample.Put(), nullptr, nullptr, 0), VFW_E_NOT_COMMITTED);
}

TEST_F(CSourceStreamTest, StartSucceedsAfterAStartThatFailed)
{
    Connect();
    stream.onCreate = []() -> HRESULT { throw std::runtime_error("by the test"); };
    EXPECT_EQ(held->Pause(), E_UNEXPECTED);
    stream.onCreate = [] { return S_OK; };

    EXPECT_EQ(held->Pause(), S_OK);

    EXPECT_TRUE(sink.samples.WaitFor(1));
}

TEST_F(CSourceStreamTest, FailureOfStartPlayIsIgnored)
{
    Connect();
    stream.onStartPlay = [] { return kOwnError; };

    EXPECT_EQ(held->Pause(), S_OK);

    EXPECT_TRUE(sink.samples.WaitFor(1));
}

TEST_F(CSourceStreamTest, SampleIsReleasedAfterDelivery)
{
    Connect();
    stream.buffers = 1;
    ASSERT_EQ(stream.Disconnect(), S_OK);
    sink.Disconnect();
    Connect(); // now with one buffer

    ASSERT_EQ(held->Pause(), S_OK);

    EXPECT_TRUE(sink.samples.WaitFor(3));
}

TEST_F(CSourceStreamTest, PeerThatWantsNoMoreEndsTheStreamSilently)
{
    for (const HRESULT refusal : {S_FALSE, VFW_E_SAMPLE_REJECTED, kStrangeSuccess}) {
        Connect();
        sink.onReceive = [=](IMediaSample*) { return refusal; };
        const int before = sink.samples.Count();
        const int loopsBefore = stream.loops.Count();

        ASSERT_EQ(held->Run(0), S_OK);
        ASSERT_TRUE(stream.loops.WaitFor(loopsBefore + 1));

        EXPECT_EQ(stream.loopResult, S_OK);
        EXPECT_EQ(sink.samples.Count(), before + 1);
        EXPECT_EQ(sink.ends.Count(), 0);
        EXPECT_TRUE(graph.Events().empty());
        EXPECT_EQ(held->Stop(), S_OK);
        EXPECT_EQ(stream.Disconnect(), S_OK);
        sink.Disconnect();
    }
}

TEST_F(CSourceStreamTest, NextStartPlaysAgainAfterAPeerThatWantedNoMore)
{
    Connect();
    sink.onReceive = [](IMediaSample*) { return S_FALSE; };
    held->Pause();
    ASSERT_TRUE(stream.loops.WaitFor(1));
    EXPECT_EQ(held->Run(0), S_OK);
    EXPECT_EQ(sink.samples.Count(), 1); // running does not wake it

    EXPECT_EQ(held->Stop(), S_OK);
    sink.onReceive = [](IMediaSample*) { return S_OK; };
    EXPECT_EQ(held->Pause(), S_OK);

    EXPECT_TRUE(sink.samples.WaitFor(4));
}

TEST_F(CSourceStreamTest, FillBufferEndsTheStreamWithSFalse)
{
    Connect();
    stream.onFill = [](IMediaSample*) { return S_FALSE; };

    ASSERT_EQ(held->Run(0), S_OK);
    ASSERT_TRUE(stream.loops.WaitFor(1));

    EXPECT_EQ(stream.loopResult, S_OK);
    EXPECT_EQ(sink.ends.Count(), 1);
    EXPECT_EQ(sink.samples.Count(), 0);
    EXPECT_TRUE(graph.Events().empty());
}

TEST_F(CSourceStreamTest, FailureOfFillBufferAbortsTheGraph)
{
    for (const HRESULT failure : {kOwnError, E_FAIL, kStrangeSuccess}) {
        Connect();
        stream.onFill = [=](IMediaSample*) { return failure; };
        const std::size_t eventsBefore = graph.Events().size();
        const int loopsBefore = stream.loops.Count();
        const int endsBefore = sink.ends.Count();

        ASSERT_EQ(held->Run(0), S_OK);
        ASSERT_TRUE(stream.loops.WaitFor(loopsBefore + 1));

        EXPECT_EQ(stream.loopResult, failure);
        EXPECT_EQ(sink.ends.Count(), endsBefore + 1);
        const auto events = graph.Events();
        ASSERT_EQ(events.size(), eventsBefore + 1);
        EXPECT_EQ(events.back().code, EC_ERRORABORT);
        EXPECT_EQ(static_cast<HRESULT>(events.back().param1), failure);
        EXPECT_EQ(events.back().param2, 0);
        EXPECT_EQ(held->Stop(), S_OK);
        EXPECT_EQ(stream.Disconnect(), S_OK);
        sink.Disconnect();
    }
    EXPECT_EQ(sink.samples.Count(), 0);
}

TEST_F(CSourceStreamTest, ExceptionOfFillBufferAbortsTheGraph)
{
    Connect();
    stream.onFill = [](IMediaSample*) -> HRESULT { throw std::bad_alloc(); };

    ASSERT_EQ(held->Run(0), S_OK);
    ASSERT_TRUE(graph.notified.WaitFor(1));

    const auto events = graph.Events();
    EXPECT_EQ(events.front().code, EC_ERRORABORT);
    EXPECT_EQ(static_cast<HRESULT>(events.front().param1), E_OUTOFMEMORY);
}

TEST_F(CSourceStreamTest, StopsWhileItWaitsForASample)
{
    stream.buffers = 1;
    VxComPtr<IMediaSample> kept; // by the sink: so there is none left to fill
    sink.onReceive = [&](IMediaSample* sample) {
        kept = VxComPtr<IMediaSample>(sample);
        return S_OK;
    };
    Connect();
    ASSERT_EQ(held->Run(0), S_OK);
    ASSERT_TRUE(stream.requests.WaitFor(2));

    EXPECT_EQ(held->Stop(), S_OK);

    EXPECT_FALSE(stream.ThreadExists());
    EXPECT_EQ(sink.samples.Count(), 1);
}

TEST_F(CSourceStreamTest, StopWaitsForAPeerThatHoldsTheSample)
{
    Gate received;
    Gate open;
    sink.onReceive = [&](IMediaSample*) {
        received.Pass();
        return open.WaitFor() ? S_OK : E_FAIL;
    };
    Connect();
    ASSERT_EQ(held->Run(0), S_OK);
    ASSERT_TRUE(received.WaitFor());

    Gate stopped;
    HRESULT stopping = E_PENDING;
    std::thread stopper([&] {
        stopping = held->Stop();
        stopped.Pass();
    });
    EXPECT_EQ(stopped.Count(), 0);
    open.Pass(); // as a renderer does when it is stopped, before its source
    EXPECT_TRUE(stopped.WaitFor());
    stopper.join();

    EXPECT_EQ(stopping, S_OK);
    EXPECT_FALSE(stream.ThreadExists());
}

TEST_F(CSourceStreamTest, StopsWhileThereIsNeverASample)
{
    stream.onGetBuffer = [] { return E_FAIL; };
    Connect();
    ASSERT_EQ(held->Run(0), S_OK);
    ASSERT_TRUE(stream.requests.WaitFor(3)); // it keeps asking

    EXPECT_EQ(held->Stop(), S_OK);

    EXPECT_EQ(stream.fills.Count(), 0);
    EXPECT_TRUE(graph.Events().empty());
}

TEST_F(CSourceStreamTest, StopsOnAnotherThreadThanItWasStarted)
{
    Connect();
    HRESULT running = E_PENDING;
    std::thread starter([&] { running = held->Run(0); });
    starter.join();
    EXPECT_EQ(running, S_OK);
    ASSERT_TRUE(sink.samples.WaitFor(1));

    EXPECT_EQ(held->Stop(), S_OK);

    EXPECT_FALSE(stream.ThreadExists());
}

// The worker asks for the clock when it starts to play, which may be while Stop holds the state lock already.
TEST_F(CSourceStreamTest, ThousandStartsAndStopsInQuickSuccession)
{
    EXPECT_EQ(held->SetSyncSource(&clock), S_OK);
    stream.onStartPlay = [&] {
        VxComPtr<IReferenceClock> mine;
        return held->GetSyncSource(mine.Put());
    };
    Connect();

    for (int round = 0; round < 1000; ++round) {
        ASSERT_EQ(held->Pause(), S_OK);
        ASSERT_EQ(held->Stop(), S_OK);
    }

    EXPECT_EQ(clock.References(), 1);
}

TEST_F(CSourceStreamTest, FailureToDecommitIsTheResultOfStop)
{
    FakeAllocator allocator;
    sink.allocator = VxComPtr<IMemAllocator>(&allocator);
    Connect();
    ASSERT_EQ(held->Pause(), S_OK);
    allocator.decommitting = kOwnError;

    EXPECT_EQ(held->Stop(), kOwnError);

    EXPECT_TRUE(source.IsStopped()); // in any case
    EXPECT_TRUE(stream.ThreadExists());
    allocator.decommitting = S_OK;
    EXPECT_EQ(Pin().Inactive(), S_OK);
    EXPECT_FALSE(stream.ThreadExists());
    EXPECT_EQ(stream.Disconnect(), S_OK);
    sink.allocator.Reset();
}

TEST_F(CSourceStreamTest, CommandsBeforeInitAreUnexpected)
{
    ASSERT_TRUE(stream.Create());

    EXPECT_EQ(stream.Pause(), E_UNEXPECTED);
    EXPECT_EQ(stream.Run(), E_UNEXPECTED);
    EXPECT_EQ(stream.Stop(), E_UNEXPECTED);
    EXPECT_EQ(stream.Exit(), E_UNEXPECTED);
    EXPECT_EQ(stream.Init(), S_OK);
    EXPECT_EQ(stream.Exit(), S_OK);
    stream.Close();
    EXPECT_EQ(stream.Order(), "create destroy");
}

TEST_F(CSourceStreamTest, IdleWorkerAnswersItsCommands)
{
    ASSERT_TRUE(stream.Create());
    ASSERT_EQ(stream.Init(), S_OK);

    EXPECT_EQ(stream.Init(), E_NOTIMPL);
    EXPECT_EQ(static_cast<HRESULT>(stream.CallWorker(17)), E_NOTIMPL);
    EXPECT_EQ(stream.Stop(), S_OK);
    EXPECT_EQ(stream.Stop(), S_OK);
    EXPECT_EQ(stream.Exit(), S_OK);
    stream.Close();
    EXPECT_EQ(stream.Init(), E_FAIL); // no worker
}

TEST_F(CSourceStreamTest, PlayingWorkerAnswersItsCommands)
{
    Connect();
    ASSERT_EQ(held->Pause(), S_OK);

    EXPECT_EQ(stream.Run(), S_OK);
    EXPECT_EQ(stream.Pause(), S_OK);
    EXPECT_EQ(stream.Init(), E_UNEXPECTED);
    EXPECT_EQ(stream.Exit(), E_UNEXPECTED);
    ASSERT_TRUE(sink.samples.WaitFor(sink.samples.Count() + 2)); // and plays on

    EXPECT_EQ(stream.Stop(), S_OK);
    EXPECT_EQ(stream.loopResult, S_FALSE);
    EXPECT_EQ(stream.Order(), "create play fill");
}

TEST_F(CSourceStreamTest, PlaysAgainAfterStopAndPauseOfTheWorker)
{
    Connect();
    ASSERT_EQ(held->Pause(), S_OK);
    EXPECT_EQ(stream.Stop(), S_OK);

    EXPECT_EQ(stream.Run(), S_OK);
    ASSERT_TRUE(stream.fills.WaitFor(stream.fills.Count() + 1));

    EXPECT_EQ(held->Stop(), S_OK);
    const auto calls = stream.Calls();
    EXPECT_EQ(std::count_if(calls.begin(), calls.end(), [](const auto& call) { return call.hook == "play"; }),
              2);
}

TEST_F(CSourceStreamTest, FailureOfThreadDestroyDoesNotFailTheStop)
{
    Connect();
    stream.onDestroy = []() -> HRESULT { throw std::runtime_error("by the test"); };
    ASSERT_EQ(held->Pause(), S_OK);

    EXPECT_EQ(held->Stop(), S_OK);

    EXPECT_FALSE(stream.ThreadExists());
}

} // namespace
