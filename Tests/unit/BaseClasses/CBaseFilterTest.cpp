#include "BaseClasses/CBaseFilter.h"

#include "BaseClasses/VxComPtr.h"
#include "support/directshow/FakeClock.h"
#include "support/directshow/FakeGraph.h"
#include "support/directshow/SinkPin.h"
#include "unit/BaseClasses/FrameworkTest.h"
#include "unit/BaseClasses/TestFilter.h"

#include <evcode.h>
#include <vfwmsgs.h>

#include <stdexcept>
#include <string>
#include <thread>

namespace {

class CBaseFilterTest : public FrameworkTest {
protected:
    ~CBaseFilterTest() override
    {
        filter.SetState(State_Stopped);
        for (CBasePin* const pin : filter.pins) {
            if (pin != nullptr)
                pin->Disconnect();
        }
    }

    /// A pin connected to a sink of its own.
    TestPin& AddConnectedPin()
    {
        TestPin& pin = filter.AddTestPin();
        sinks.push_back(std::make_unique<SinkPin>());
        pin.types = {TypeNumber(1)};
        EXPECT_EQ(pin.Connect(sinks.back().get(), nullptr), S_OK);
        sinks.back()->Disconnect(); // the sink's own end: it does not matter here
        return pin;
    }
    FILTER_STATE State()
    {
        FILTER_STATE state = State_Running;
        EXPECT_EQ(filter.GetState(0, &state), S_OK);
        return state;
    }

    std::vector<std::unique_ptr<SinkPin>> sinks; // outlive the filter
    TestFilter& filter = *new TestFilter;
    VxComPtr<IBaseFilter> held{&filter};
    std::string order;
};

TEST_F(CBaseFilterTest, AnswersTheInterfacesOfAFilter)
{
    for (const IID& iid : {IID_IBaseFilter, IID_IMediaFilter, IID_IPersist}) {
        VxComPtr<IBaseFilter> answer;
        EXPECT_EQ(held->QueryInterface(iid, answer.PutVoid()), S_OK);
        EXPECT_EQ(answer.Get(), held.Get());
    }
    VxComPtr<IAMovieSetup> setup;
    EXPECT_EQ(held->QueryInterface(IID_IAMovieSetup, setup.PutVoid()), S_OK);
    void* none = &none;
    EXPECT_EQ(held->QueryInterface(IID_IReferenceClock, &none), E_NOINTERFACE);
    EXPECT_EQ(none, nullptr);
}

TEST_F(CBaseFilterTest, TellsItsClass)
{
    CLSID clsid = {};

    EXPECT_EQ(held->GetClassID(&clsid), S_OK);
    EXPECT_EQ(clsid, kTestClass);
    EXPECT_EQ(held->GetClassID(nullptr), E_POINTER);
}

TEST_F(CBaseFilterTest, StartsStopped)
{
    EXPECT_EQ(State(), State_Stopped);
    EXPECT_TRUE(filter.IsStopped());
    EXPECT_FALSE(filter.IsActive());
    EXPECT_EQ(held->GetState(INFINITE, nullptr), E_POINTER);
}

TEST_F(CBaseFilterTest, HoldsItsClock)
{
    FakeClock first;
    FakeClock second;

    EXPECT_EQ(held->SetSyncSource(&first), S_OK);
    EXPECT_EQ(first.References(), 1);
    EXPECT_EQ(held->SetSyncSource(&second), S_OK);
    EXPECT_EQ(first.References(), 0);
    {
        VxComPtr<IReferenceClock> clock;
        EXPECT_EQ(held->GetSyncSource(clock.Put()), S_OK);
        EXPECT_EQ(clock.Get(), &second);
    }
    EXPECT_EQ(held->SetSyncSource(nullptr), S_OK);
    EXPECT_EQ(second.References(), 0);
}

TEST_F(CBaseFilterTest, ReleasesItsClockAtTheEnd)
{
    FakeClock clock;
    VxComPtr<IBaseFilter> other(new TestFilter);
    other->SetSyncSource(&clock);

    other.Reset();

    EXPECT_EQ(clock.References(), 0);
}

TEST_F(CBaseFilterTest, TellsThatThereIsNoClock)
{
    IReferenceClock* clock = reinterpret_cast<IReferenceClock*>(&filter);

    EXPECT_EQ(held->GetSyncSource(&clock), S_OK);
    EXPECT_EQ(clock, nullptr);
    EXPECT_EQ(held->GetSyncSource(nullptr), E_POINTER);
}

// A worker asks for the clock while a Stop, which waits for that worker, holds the state lock.
TEST_F(CBaseFilterTest, GivesItsClockWhileTheStateLockIsHeld)
{
    FakeClock clock;
    held->SetSyncSource(&clock);
    HRESULT got = E_PENDING;
    HRESULT told = E_PENDING;
    Gate asked;

    filter.Lock().Lock();
    std::thread worker([&] {
        VxComPtr<IReferenceClock> mine;
        got = held->GetSyncSource(mine.Put());
        CRefTime time;
        told = filter.StreamTime(time);
        asked.Pass();
    });
    EXPECT_TRUE(asked.WaitFor());
    filter.Lock().Unlock();
    worker.join();

    EXPECT_EQ(got, S_OK);
    EXPECT_EQ(told, S_OK);
    held->SetSyncSource(nullptr);
}

TEST_F(CBaseFilterTest, PauseActivatesConnectedPinsInOrder)
{
    AddConnectedPin().onActive = [&] {
        order += "first ";
        return S_FALSE; // a success like any other
    };
    filter.AddTestPin().onActive = [&] {
        order += "unconnected ";
        return S_OK;
    };
    AddConnectedPin().onActive = [&] {
        order += "third ";
        return S_OK;
    };

    EXPECT_EQ(held->Pause(), S_OK);

    EXPECT_EQ(order, "first third ");
    EXPECT_EQ(State(), State_Paused);
    EXPECT_TRUE(filter.IsActive());
}

TEST_F(CBaseFilterTest, PauseWhenPausedDoesNothing)
{
    AddConnectedPin().onActive = [&] {
        order += "active ";
        return S_OK;
    };
    held->Pause();

    EXPECT_EQ(held->Pause(), S_OK);

    EXPECT_EQ(order, "active ");
}

TEST_F(CBaseFilterTest, FailingPauseStaysStoppedAndLeavesTheOthersActive)
{
    AddConnectedPin().onInactive = [&] {
        order += "inactive ";
        return S_OK;
    };
    AddConnectedPin().onActive = [] { return E_ACCESSDENIED; };
    AddConnectedPin().onActive = [&] {
        order += "third ";
        return S_OK;
    };

    EXPECT_EQ(held->Pause(), E_ACCESSDENIED);

    EXPECT_EQ(order, "");
    EXPECT_EQ(State(), State_Stopped);
}

TEST_F(CBaseFilterTest, StopMakesEveryPinInactiveAndReturnsTheFirstFailure)
{
    AddConnectedPin().onInactive = [&] {
        order += "first ";
        return E_ACCESSDENIED;
    };
    AddConnectedPin().onInactive = [&] {
        order += "second ";
        return E_ABORT;
    };
    AddConnectedPin().onInactive = [&] {
        order += "third ";
        return S_OK;
    };
    held->Pause();

    EXPECT_EQ(held->Stop(), E_ACCESSDENIED);

    EXPECT_EQ(order, "first second third ");
    EXPECT_EQ(State(), State_Stopped);
}

TEST_F(CBaseFilterTest, StopWhenStoppedCallsNothing)
{
    AddConnectedPin().onInactive = [&] {
        order += "inactive ";
        return S_OK;
    };

    EXPECT_EQ(held->Stop(), S_OK);

    EXPECT_EQ(order, "");
}

TEST_F(CBaseFilterTest, MissingPinEndsTheList)
{
    AddConnectedPin().onActive = [&] {
        order += "first ";
        return S_OK;
    };
    filter.pins.push_back(nullptr);
    AddConnectedPin().onActive = [&] {
        order += "third ";
        return S_OK;
    };

    EXPECT_EQ(held->Pause(), S_OK);

    EXPECT_EQ(order, "first ");
    EXPECT_EQ(held->Stop(), S_OK);
}

TEST_F(CBaseFilterTest, RunFromStoppedPausesFirst)
{
    TestPin& pin = AddConnectedPin();
    pin.onActive = [&] {
        order += "active ";
        return S_OK;
    };
    pin.onRun = [&] {
        order += "run ";
        return S_OK;
    };

    EXPECT_EQ(held->Run(42), S_OK);

    EXPECT_EQ(order, "active run ");
    EXPECT_EQ(pin.runStart, 42);
    EXPECT_EQ(State(), State_Running);
}

TEST_F(CBaseFilterTest, RunWhenRunningOnlyTakesTheNewStart)
{
    FakeClock clock;
    clock.now = 100;
    held->SetSyncSource(&clock);
    TestPin& pin = AddConnectedPin();
    held->Run(10);

    pin.onRun = [&] {
        order += "run ";
        return S_OK;
    };
    EXPECT_EQ(held->Run(30), S_OK);

    EXPECT_EQ(order, "");
    CRefTime time;
    EXPECT_EQ(filter.StreamTime(time), S_OK);
    EXPECT_EQ(time.GetUnits(), 70);
    held->SetSyncSource(nullptr);
}

TEST_F(CBaseFilterTest, FailingRunKeepsTheStateButTakesTheStart)
{
    FakeClock clock;
    clock.now = 100;
    held->SetSyncSource(&clock);
    AddConnectedPin().onRun = [] { return E_ACCESSDENIED; };
    TestPin& second = AddConnectedPin();
    held->Pause();

    EXPECT_EQ(held->Run(40), E_ACCESSDENIED);

    EXPECT_EQ(State(), State_Paused);
    EXPECT_EQ(second.runStart, -1);
    CRefTime time;
    EXPECT_EQ(filter.StreamTime(time), S_OK);
    EXPECT_EQ(time.GetUnits(), 60);
    held->SetSyncSource(nullptr);
}

TEST_F(CBaseFilterTest, FailingPauseInsideRunIsReturned)
{
    AddConnectedPin().onActive = [] { return E_ACCESSDENIED; };

    EXPECT_EQ(held->Run(0), E_ACCESSDENIED);

    EXPECT_EQ(State(), State_Stopped);
}

TEST_F(CBaseFilterTest, PauseFromRunningOnlyChangesTheState)
{
    TestPin& pin = AddConnectedPin();
    held->Run(0);
    pin.onActive = pin.onInactive = pin.onRun = [&] {
        order += "called ";
        return S_OK;
    };

    EXPECT_EQ(held->Pause(), S_OK);

    EXPECT_EQ(order, "");
    EXPECT_EQ(State(), State_Paused);
}

TEST_F(CBaseFilterTest, ExceptionsOfPinsBecomeFailures)
{
    TestPin& pin = AddConnectedPin();
    pin.onActive = []() -> HRESULT { throw std::bad_alloc(); };
    EXPECT_EQ(held->Pause(), E_OUTOFMEMORY);

    pin.onActive = [] { return S_OK; };
    pin.onRun = []() -> HRESULT { throw std::runtime_error("by the test"); };
    EXPECT_EQ(held->Run(0), E_UNEXPECTED);
    pin.onInactive = []() -> HRESULT { throw std::runtime_error("by the test"); };
    EXPECT_EQ(held->Stop(), E_UNEXPECTED);
    EXPECT_EQ(State(), State_Stopped);
}

TEST_F(CBaseFilterTest, StreamTimeNeedsAClock)
{
    CRefTime time;
    EXPECT_EQ(filter.StreamTime(time), VFW_E_NO_CLOCK);

    FakeClock clock;
    clock.telling = E_ABORT;
    held->SetSyncSource(&clock);
    EXPECT_EQ(filter.StreamTime(time), E_ABORT);
    held->SetSyncSource(nullptr);
}

TEST_F(CBaseFilterTest, FindsPinsByName)
{
    filter.AddTestPin(PINDIR_OUTPUT, L"First");
    TestPin& second = filter.AddTestPin(PINDIR_OUTPUT, L"Second");
    VxComPtr<IPin> pin;

    EXPECT_EQ(held->FindPin(L"Second", pin.Put()), S_OK);
    EXPECT_EQ(pin.Get(), &second);
    EXPECT_EQ(held->FindPin(L"second", pin.Put()), VFW_E_NOT_FOUND);
    EXPECT_EQ(pin.Get(), nullptr);
    EXPECT_EQ(held->FindPin(nullptr, pin.Put()), VFW_E_NOT_FOUND);
    EXPECT_EQ(held->FindPin(L"Second", nullptr), E_POINTER);
}

TEST_F(CBaseFilterTest, EnumeratesItsPins)
{
    TestPin& pin = filter.AddTestPin();
    VxComPtr<IEnumPins> enumerator;
    ASSERT_EQ(held->EnumPins(enumerator.Put()), S_OK);
    VxComPtr<IPin> found;

    EXPECT_EQ(enumerator->Next(1, found.Put(), nullptr), S_OK);
    EXPECT_EQ(found.Get(), &pin);
    EXPECT_EQ(held->EnumPins(nullptr), E_POINTER);
}

TEST_F(CBaseFilterTest, TellsNothingBeforeItIsInAGraph)
{
    FILTER_INFO info;
    info.achName[0] = L'x';
    info.pGraph = reinterpret_cast<IFilterGraph*>(&filter);

    EXPECT_EQ(held->QueryFilterInfo(&info), S_OK);

    EXPECT_STREQ(info.achName, L"");
    EXPECT_EQ(info.pGraph, nullptr);
    EXPECT_EQ(held->QueryFilterInfo(nullptr), E_POINTER);
}

TEST_F(CBaseFilterTest, KnowsItsGraphWithoutHoldingIt)
{
    FakeGraph graph;

    EXPECT_EQ(held->JoinFilterGraph(&graph, L"Camera"), S_OK);

    EXPECT_EQ(graph.References(), 0);
    EXPECT_EQ(filter.GetFilterGraph(), &graph);
    FILTER_INFO info;
    EXPECT_EQ(held->QueryFilterInfo(&info), S_OK);
    EXPECT_STREQ(info.achName, L"Camera");
    EXPECT_EQ(info.pGraph, static_cast<IFilterGraph*>(&graph));
    info.pGraph->Release();
    EXPECT_EQ(held->JoinFilterGraph(nullptr, nullptr), S_OK);
    EXPECT_EQ(filter.GetFilterGraph(), nullptr);
    EXPECT_EQ(filter.StoredName(), nullptr);
}

TEST_F(CBaseFilterTest, LongNameIsCutInTheFilterInfo)
{
    const std::wstring name(200, L'n');
    held->JoinFilterGraph(nullptr, name.c_str());
    FILTER_INFO info;

    EXPECT_EQ(held->QueryFilterInfo(&info), S_OK);

    EXPECT_EQ(std::wstring(info.achName), std::wstring(127, L'n'));
    EXPECT_EQ(std::wstring(filter.StoredName()), name);
}

TEST_F(CBaseFilterTest, SendsEventsToItsGraph)
{
    EXPECT_EQ(filter.NotifyEvent(EC_ERRORABORT, 1, 2), E_NOTIMPL);
    FakeGraph graph;
    held->JoinFilterGraph(&graph, nullptr);

    EXPECT_EQ(filter.NotifyEvent(EC_ERRORABORT, 1, 2), S_OK);
    EXPECT_EQ(filter.NotifyEvent(EC_COMPLETE, S_OK, 0), S_OK);

    const auto events = graph.Events();
    ASSERT_EQ(events.size(), 2u);
    EXPECT_EQ(events[0].code, EC_ERRORABORT);
    EXPECT_EQ(events[0].param1, 1);
    EXPECT_EQ(events[0].param2, 2);
    EXPECT_EQ(events[1].code, EC_COMPLETE);
    EXPECT_EQ(events[1].param2, reinterpret_cast<LONG_PTR>(held.Get()));
    held->JoinFilterGraph(nullptr, nullptr);
    EXPECT_EQ(filter.NotifyEvent(EC_ERRORABORT, 1, 2), E_NOTIMPL);
}

TEST_F(CBaseFilterTest, GraphWithoutEventsGetsNone)
{
    FakeGraph graph;
    graph.takesEvents = false;
    held->JoinFilterGraph(&graph, nullptr);

    EXPECT_EQ(filter.NotifyEvent(EC_ERRORABORT, 1, 2), E_NOTIMPL);
}

TEST_F(CBaseFilterTest, ReconnectsThroughTheGraph)
{
    const CMediaType type = TypeNumber(1);
    TestPin& pin = filter.AddTestPin();
    EXPECT_EQ(filter.ReconnectPin(&pin, &type), E_NOINTERFACE);
    FakeGraph graph;
    held->JoinFilterGraph(&graph, nullptr);

    EXPECT_EQ(filter.ReconnectPin(&pin, &type), S_OK);
    EXPECT_EQ(graph.reconnectsWithType, 1);
    graph.isNew = false;
    EXPECT_EQ(filter.ReconnectPin(&pin, &type), S_OK);
    EXPECT_EQ(graph.reconnects, 1);
}

TEST_F(CBaseFilterTest, PinVersionStartsAtOneAndGrows)
{
    EXPECT_EQ(filter.GetPinVersion(), 1);

    filter.IncrementPinVersion();

    EXPECT_EQ(filter.GetPinVersion(), 2);
}

TEST_F(CBaseFilterTest, HasNoVendorAndNothingToRegister)
{
    LPWSTR vendor = nullptr;
    EXPECT_EQ(held->QueryVendorInfo(&vendor), E_NOTIMPL);
    const auto setup = held.As<IAMovieSetup>();
    EXPECT_EQ(setup->Register(), S_FALSE);
    EXPECT_EQ(setup->Unregister(), S_FALSE);
}

TEST_F(CBaseFilterTest, CanBeAggregated)
{
    class Outer final : public TestObject<IUnknown> {};
    Outer outer;
    auto* const inner = new TestFilter(&outer);
    VxComPtr<IUnknown> own;
    inner->NonDelegatingAddRef();
    ASSERT_EQ(inner->NonDelegatingQueryInterface(IID_IUnknown, own.PutVoid()), S_OK);
    inner->NonDelegatingRelease();
    TestPin& pin = inner->AddTestPin();

    VxComPtr<IPin> heldPin(&pin); // pins count on the filter, hence on the outer object

    EXPECT_EQ(outer.References(), 1);
}

} // namespace
