#include "conformance/FilterConformanceTest.h"
#include "support/directshow/FakeClock.h"
#include "support/directshow/FakeGraph.h"

#include <ocidl.h>

#include <array>

namespace {

TEST_P(FilterConformanceTest, FilterHasOneReferenceAtFirst)
{
    auto other = CreateFilter();

    EXPECT_EQ(other.Detach()->Release(), 0u);
}

TEST_P(FilterConformanceTest, EveryInterfaceLeadsToEveryOther)
{
    const std::array interfaces = {IID_IUnknown, IID_IPersist, IID_IMediaFilter, IID_IBaseFilter};
    VxComPtr<IUnknown> identity;
    ASSERT_EQ(filter->QueryInterface(IID_IUnknown, identity.PutVoid()), S_OK);

    for (const IID& from : interfaces) {
        VxComPtr<IUnknown> first;
        ASSERT_EQ(filter->QueryInterface(from, first.PutVoid()), S_OK);
        for (const IID& to : interfaces) {
            VxComPtr<IUnknown> second;
            ASSERT_EQ(first->QueryInterface(to, second.PutVoid()), S_OK);
            VxComPtr<IUnknown> again;
            ASSERT_EQ(second->QueryInterface(IID_IUnknown, again.PutVoid()), S_OK);
            EXPECT_EQ(again.Get(), identity.Get());
        }
    }
}

TEST_P(FilterConformanceTest, ForeignInterfacesAreRefused)
{
    const IID nobodys = {0x7E0B6C3D, 0x11F5, 0x4D2C, {0x9A, 0x0E, 0x3B, 0x5D, 0x2A, 0x61, 0xC4, 0x77}};
    for (const IID& iid : {nobodys, IID_IPin, IID_IReferenceClock, IID_IAMStreamConfig}) {
        void* object = &object;
        EXPECT_EQ(filter->QueryInterface(iid, &object), E_NOINTERFACE);
        EXPECT_EQ(object, nullptr);
    }
    EXPECT_EQ(filter->QueryInterface(IID_IBaseFilter, nullptr), E_POINTER);
}

TEST_P(FilterConformanceTest, FilterHasTheInterfacesItClaims)
{
    VxComPtr<IUnknown> pages;
    VxComPtr<IUnknown> persist;

    EXPECT_EQ(filter->QueryInterface(IID_ISpecifyPropertyPages, pages.PutVoid()),
              GetParam().hasPages ? S_OK : E_NOINTERFACE);
    EXPECT_EQ(filter->QueryInterface(IID_IPersistStream, persist.PutVoid()),
              GetParam().isPersistent ? S_OK : E_NOINTERFACE);
}

TEST_P(FilterConformanceTest, CanBeAggregated)
{
    class Outer final : public TestObject<IUnknown> {};
    Outer outer;
    VxComPtr<IUnknown> inner;

    ASSERT_EQ(module.Create(GetParam().clsid, &outer, IID_IUnknown, inner.PutVoid()), S_OK);
    {
        VxComPtr<IBaseFilter> aggregated;
        ASSERT_EQ(inner->QueryInterface(IID_IBaseFilter, aggregated.PutVoid()), S_OK);
        EXPECT_EQ(outer.References(), 1);
        VxComPtr<IUnknown> identity;
        EXPECT_EQ(aggregated->QueryInterface(IID_IUnknown, identity.PutVoid()), S_OK);
        EXPECT_EQ(identity.Get(), &outer);
    }
    EXPECT_EQ(inner.Detach()->Release(), 0u);
    void* object = &object;
    EXPECT_TRUE(FAILED(module.Create(GetParam().clsid, &outer, IID_IBaseFilter, &object)));
    EXPECT_EQ(object, nullptr);
}

TEST_P(FilterConformanceTest, FilterTellsItsClass)
{
    CLSID clsid = {};

    EXPECT_EQ(filter->GetClassID(&clsid), S_OK);
    EXPECT_EQ(clsid, GetParam().clsid);
    EXPECT_EQ(filter->GetClassID(nullptr), E_POINTER);
}

TEST_P(FilterConformanceTest, FilterStartsStopped)
{
    EXPECT_EQ(State(), State_Stopped);
    EXPECT_EQ(filter->GetState(0, nullptr), E_POINTER);
}

TEST_P(FilterConformanceTest, UnconnectedFilterTakesEveryState)
{
    EXPECT_EQ(filter->Pause(), S_OK);
    EXPECT_EQ(State(), State_Paused);
    EXPECT_EQ(filter->Run(0), S_OK);
    EXPECT_EQ(State(), State_Running);
    EXPECT_EQ(filter->Pause(), S_OK);
    EXPECT_EQ(State(), State_Paused);
    EXPECT_EQ(filter->Stop(), S_OK);
    EXPECT_EQ(State(), State_Stopped);
    EXPECT_EQ(filter->Run(0), S_OK);
    EXPECT_EQ(State(), State_Running);
    EXPECT_EQ(filter->Stop(), S_OK);
    EXPECT_EQ(filter->Stop(), S_OK);
    EXPECT_EQ(State(), State_Stopped);
}

TEST_P(FilterConformanceTest, FilterHoldsItsClock)
{
    FakeClock clock;
    VxComPtr<IReferenceClock> got;
    EXPECT_EQ(filter->GetSyncSource(got.Put()), S_OK);
    EXPECT_EQ(got.Get(), nullptr);

    EXPECT_EQ(filter->SetSyncSource(&clock), S_OK);
    EXPECT_GE(clock.References(), 1);
    EXPECT_EQ(filter->GetSyncSource(got.Put()), S_OK);
    EXPECT_EQ(got.Get(), &clock);
    got.Reset();
    EXPECT_EQ(filter->SetSyncSource(nullptr), S_OK);
    EXPECT_EQ(clock.References(), 0);
    EXPECT_EQ(filter->GetSyncSource(nullptr), E_POINTER);
}

TEST_P(FilterConformanceTest, FilterKnowsItsGraphWithoutHoldingIt)
{
    FakeGraph graph;
    FILTER_INFO info = {};

    EXPECT_EQ(filter->JoinFilterGraph(&graph, L"A name"), S_OK);
    EXPECT_EQ(graph.References(), 0);
    EXPECT_EQ(filter->QueryFilterInfo(&info), S_OK);
    EXPECT_STREQ(info.achName, L"A name");
    EXPECT_EQ(info.pGraph, static_cast<IFilterGraph*>(&graph));
    EXPECT_EQ(graph.References(), 1);
    info.pGraph->Release();

    EXPECT_EQ(filter->JoinFilterGraph(nullptr, nullptr), S_OK);
    EXPECT_EQ(filter->QueryFilterInfo(&info), S_OK);
    EXPECT_EQ(info.pGraph, nullptr);
    EXPECT_EQ(filter->QueryFilterInfo(nullptr), E_POINTER);
}

TEST_P(FilterConformanceTest, PinEnumeratorReturnsEachPinOnce)
{
    VxComPtr<IEnumPins> pins;
    ASSERT_EQ(filter->EnumPins(pins.Put()), S_OK);
    std::array<IPin*, 16> got{};
    ULONG fetched = 99;

    EXPECT_EQ(pins->Next(got.size(), got.data(), &fetched), S_FALSE);
    ASSERT_GE(fetched, 1u);
    for (ULONG n = 0; n < fetched; ++n) {
        for (ULONG other = 0; other < n; ++other)
            EXPECT_NE(got[n], got[other]);
    }
    EXPECT_EQ(got[0], pin.Get());
    for (ULONG n = 0; n < fetched; ++n)
        got[n]->Release();

    EXPECT_EQ(pins->Next(1, got.data(), &fetched), S_FALSE);
    EXPECT_EQ(fetched, 0u);
    EXPECT_EQ(pins->Reset(), S_OK);
    EXPECT_EQ(pins->Skip(1), S_OK);
    EXPECT_EQ(pins->Skip(1000), S_FALSE);
}

TEST_P(FilterConformanceTest, PinEnumeratorChecksItsArguments)
{
    VxComPtr<IEnumPins> pins;
    ASSERT_EQ(filter->EnumPins(pins.Put()), S_OK);
    std::array<IPin*, 2> got{};
    ULONG fetched = 0;

    EXPECT_EQ(pins->Next(1, nullptr, &fetched), E_POINTER);
    EXPECT_EQ(pins->Next(2, got.data(), nullptr), E_INVALIDARG);
    EXPECT_EQ(pins->Next(0, got.data(), &fetched), S_OK);
    EXPECT_EQ(pins->Clone(nullptr), E_POINTER);
    EXPECT_EQ(filter->EnumPins(nullptr), E_POINTER);
}

TEST_P(FilterConformanceTest, CloneOfThePinEnumeratorHasItsPlace)
{
    VxComPtr<IEnumPins> pins;
    ASSERT_EQ(filter->EnumPins(pins.Put()), S_OK);
    VxComPtr<IEnumPins> atStart;
    VxComPtr<IEnumPins> atEnd;
    ASSERT_EQ(pins->Clone(atStart.Put()), S_OK);
    while (pins->Skip(1) == S_OK) {
    }
    ASSERT_EQ(pins->Clone(atEnd.Put()), S_OK);
    VxComPtr<IPin> got;

    EXPECT_EQ(atStart->Next(1, got.Put(), nullptr), S_OK);
    EXPECT_EQ(got.Get(), pin.Get());
    EXPECT_EQ(atEnd->Next(1, got.Put(), nullptr), S_FALSE);
}

TEST_P(FilterConformanceTest, EnumeratorsKeepTheFilterAlive)
{
    auto other = CreateFilter();
    VxComPtr<IEnumPins> pins;
    ASSERT_EQ(other->EnumPins(pins.Put()), S_OK);

    other.Reset();

    VxComPtr<IPin> got;
    EXPECT_EQ(pins->Next(1, got.Put(), nullptr), S_OK);
    VxComPtr<IEnumMediaTypes> types;
    ASSERT_EQ(got->EnumMediaTypes(types.Put()), S_OK);
    got.Reset();
    pins.Reset();
    AM_MEDIA_TYPE* type = nullptr;
    EXPECT_EQ(types->Next(1, &type, nullptr), S_OK);
    DeleteMediaType(type);
    EXPECT_EQ(types.Detach()->Release(), 0u);
}

} // namespace
