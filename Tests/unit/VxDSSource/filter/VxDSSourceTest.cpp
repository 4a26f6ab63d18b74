#include "VxDSSource/filter/VxDSSource.h"

#include "BaseClasses/MediaTypeMemory.h"
#include "VxDSSource/stream/VxDSStream.h"
#include "support/directshow/FakeGraph.h"
#include "support/directshow/SinkPin.h"

#include "FailingMemory.h"
#include "FilterFixture.h"
#include "TaskMemorySpy.h"

#include <uuids.h>

#include <algorithm>
#include <array>
#include <stdexcept>

namespace {

class VxDSSourceTest : public FilterFixture {};

TEST_F(VxDSSourceTest, AnswersItsInterfaces)
{
    for (const IID& iid :
         {IID_IVxDSSource, IID_ISpecifyPropertyPages, IID_IPersistStream, IID_IAMDroppedFrames,
          IID_IBaseFilter, IID_IMediaFilter, IID_IPersist, IID_IUnknown}) {
        VxComPtr<IUnknown> object;
        EXPECT_EQ(Filter().QueryInterface(iid, object.PutVoid()), S_OK);
        EXPECT_TRUE(object);
    }
}

TEST_F(VxDSSourceTest, AnswersNoInterfaceOfItsPin)
{
    for (const IID& iid : {IID_IAMStreamConfig, IID_IKsPropertySet, IID_IPin, IID_IReferenceClock}) {
        VxComPtr<IUnknown> object;
        EXPECT_EQ(Filter().QueryInterface(iid, object.PutVoid()), E_NOINTERFACE);
        EXPECT_FALSE(object);
    }
    EXPECT_EQ(Filter().QueryInterface(IID_IVxDSSource, nullptr), E_POINTER);
}

TEST_F(VxDSSourceTest, IsOneObjectThroughAllInterfaces)
{
    const auto first = As<IUnknown>(IID_IUnknown);
    VxComPtr<IUnknown> second;
    ASSERT_EQ(Control().QueryInterface(IID_IUnknown, second.PutVoid()), S_OK);
    VxComPtr<IUnknown> third;
    ASSERT_EQ(As<IAMDroppedFrames>(IID_IAMDroppedFrames)->QueryInterface(IID_IUnknown, third.PutVoid()),
              S_OK);

    EXPECT_EQ(first.Get(), second.Get());
    EXPECT_EQ(first.Get(), third.Get());
}

TEST_F(VxDSSourceTest, NamesItsClassThroughBothTables)
{
    CLSID clsid{};
    EXPECT_EQ(Filter().GetClassID(&clsid), S_OK);
    EXPECT_EQ(clsid, CLSID_VxDSSource);

    clsid = {};
    const auto persist = As<IPersistStream>(IID_IPersistStream);
    EXPECT_EQ(persist->GetClassID(&clsid), S_OK);
    EXPECT_EQ(clsid, CLSID_VxDSSource);
    EXPECT_EQ(persist->GetClassID(nullptr), E_POINTER);
}

TEST_F(VxDSSourceTest, HasItsPartsInTheOrderInWhichTheyAreMade)
{
    // And ends them the other way round: persistence before the source, which ends the pin.
    HRESULT result = S_OK;
    CUnknown* const object = VxDSSource::CreateInstance(nullptr, &result);
    auto* const filter = static_cast<VxDSSource*>(object);
    const std::array<const void*, 5> parts = {
        static_cast<CSource*>(filter), static_cast<ISpecifyPropertyPages*>(filter),
        static_cast<CPersistStream*>(filter), static_cast<IVxDSSource*>(filter),
        static_cast<IAMDroppedFrames*>(filter)};

    EXPECT_TRUE(std::ranges::is_sorted(parts));

    object->NonDelegatingAddRef();
    EXPECT_EQ(object->NonDelegatingRelease(), 0u);
}

TEST_F(VxDSSourceTest, ListsItsThreePagesInTheOrderOfTheirTabs)
{
    const auto specify = As<ISpecifyPropertyPages>(IID_ISpecifyPropertyPages);
    CAUUID pages{};

    ASSERT_EQ(specify->GetPages(&pages), S_OK);

    ASSERT_EQ(pages.cElems, 3u);
    EXPECT_EQ(pages.pElems[0], CLSID_ParametersPage);
    EXPECT_EQ(pages.pElems[1], CLSID_BrowserPage);
    EXPECT_EQ(pages.pElems[2], CLSID_AboutPage);
    ::CoTaskMemFree(pages.pElems);
    EXPECT_EQ(specify->GetPages(nullptr), E_POINTER);
}

TEST_F(VxDSSourceTest, ListsNoPagesWithoutTaskMemory)
{
    const auto specify = As<ISpecifyPropertyPages>(IID_ISpecifyPropertyPages);
    CAUUID pages{7, nullptr};

    TheTaskMemory().isExhausted = true;
    const HRESULT result = specify->GetPages(&pages);
    TheTaskMemory().isExhausted = false;

    EXPECT_EQ(result, E_OUTOFMEMORY);
    EXPECT_EQ(pages.cElems, 7u);
    EXPECT_EQ(pages.pElems, nullptr);
}

TEST_F(VxDSSourceTest, HasOneOutputPin)
{
    VxComPtr<IEnumPins> pins;
    ASSERT_EQ(Filter().EnumPins(pins.Put()), S_OK);
    VxComPtr<IPin> pin;
    ASSERT_EQ(pins->Next(1, pin.Put(), nullptr), S_OK);
    VxComPtr<IPin> other;
    EXPECT_EQ(pins->Next(1, other.Put(), nullptr), S_FALSE);

    PIN_INFO info{};
    ASSERT_EQ(pin->QueryPinInfo(&info), S_OK);
    EXPECT_STREQ(info.achName, L"Output");
    EXPECT_EQ(info.dir, PINDIR_OUTPUT);
    info.pFilter->Release();
    LPWSTR id = nullptr;
    ASSERT_EQ(pin->QueryId(&id), S_OK);
    EXPECT_STREQ(id, L"1");
    ::CoTaskMemFree(id);
}

TEST_F(VxDSSourceTest, ChangesStatesUnconnected)
{
    EXPECT_EQ(Filter().Pause(), S_OK);
    EXPECT_EQ(Filter().Run(0), S_OK);
    FILTER_STATE state{};
    EXPECT_EQ(Filter().GetState(0, &state), S_OK);
    EXPECT_EQ(state, State_Running);
    EXPECT_EQ(Filter().Stop(), S_OK);
}

TEST_F(VxDSSourceTest, StartsAndStopsTheCameraWithTheGraph)
{
    Connect();
    SinkPin sink;
    VxComPtr<IPin> pin;
    ASSERT_EQ(Filter().FindPin(L"1", pin.Put()), S_OK);
    ASSERT_EQ(pin->Connect(&sink, nullptr), S_OK);

    ASSERT_EQ(Filter().Pause(), S_OK);
    EXPECT_TRUE(sink.samples.WaitFor(3));
    ASSERT_EQ(Filter().Stop(), S_OK);

    const Lines done = Done();
    const Lines start = {"device.GetPayloadSize",  "stream.Reset()",         "pipeline.SetBufferSize(921600)",
                         "pipeline.Start",         "device.StreamEnable(0)", "device.AcquisitionStart()",
                         "pipeline.Retrieve(1000)"};
    ASSERT_GE(done.size(), start.size());
    EXPECT_EQ(Lines(done.begin(), done.begin() + static_cast<std::ptrdiff_t>(start.size())), start);
    EXPECT_EQ(Lines(done.end() - 3, done.end()),
              (Lines{"device.AcquisitionStop()", "device.StreamDisable(0)", "pipeline.Stop"}));
    EXPECT_EQ(pin->Disconnect(), S_OK);
    EXPECT_EQ(sink.Disconnect(), S_OK);
}

TEST_F(VxDSSourceTest, StopsWhileOnlyIncompleteImagesArrive)
{
    Connect();
    TheCamera().onRetrieve = [] { TheCamera().QueueIncomplete(); }; // without end
    SinkPin sink;
    VxComPtr<IPin> pin;
    ASSERT_EQ(Filter().FindPin(L"1", pin.Put()), S_OK);
    ASSERT_EQ(pin->Connect(&sink, nullptr), S_OK);
    ASSERT_EQ(Filter().Pause(), S_OK);

    EXPECT_EQ(Filter().Stop(), S_OK); // would wait for ever

    TheCamera().onRetrieve = nullptr;
    EXPECT_EQ(pin->Disconnect(), S_OK);
    EXPECT_EQ(sink.Disconnect(), S_OK);
}

TEST_F(VxDSSourceTest, IsMadeWithoutAPinWhenThereIsNoMemoryForOne)
{
    failing_memory::FailSize(sizeof(VxDSStream));
    Filter();
    failing_memory::FailSize(0);

    VxComPtr<IEnumPins> pins;
    ASSERT_EQ(Filter().EnumPins(pins.Put()), S_OK);
    VxComPtr<IPin> pin;
    EXPECT_EQ(pins->Next(1, pin.Put(), nullptr), S_FALSE);
    EXPECT_EQ(Filter().FindPin(L"1", pin.Put()), VFW_E_NOT_FOUND);
    UINT role = 7;
    EXPECT_EQ(Control().GetRole(&role), E_OUTOFMEMORY);
    EXPECT_EQ(role, 7u);
}

TEST_F(VxDSSourceTest, IsNotMadeWhenThereIsNoMemoryForItself)
{
    failing_memory::FailSize(sizeof(VxDSSource));
    HRESULT result = S_OK;

    EXPECT_EQ(VxDSSource::CreateInstance(nullptr, &result), nullptr);

    failing_memory::FailSize(0);
    EXPECT_EQ(result, S_OK) << "the factory knows what a missing object means";
}

TEST_F(VxDSSourceTest, IsMadeOrLeavesNothingWhicheverAllocationFails)
{
    constexpr int kMost = 2000; // allocations of a filter that connects
    ASSERT_EQ(Control().SetDeviceId(TestText(L"a camera with a long name")), S_OK);
    ASSERT_EQ(Control().SaveDefault(), S_OK);
    DestroyFilter();
    TheCamera().log.Reserve(1000);
    int failures = 0;
    for (bool hasFailed = true; hasFailed && failures < kMost; failures += hasFailed ? 1 : 0) {
        TheCamera().log.Clear();
        const long before = failing_memory::LiveAllocations();
        HRESULT result = S_OK;
        CUnknown* object = nullptr;
        {
            const failing_memory::FailOnce failure(failures);
            object = VxDSSource::CreateInstance(nullptr, &result);
            hasFailed = failure.HasFailed();
        }
        if (object != nullptr) {
            EXPECT_TRUE(result == S_OK || result == E_OUTOFMEMORY) << std::hex << result;
            object->NonDelegatingAddRef();
            EXPECT_EQ(object->NonDelegatingRelease(), 0u);
        } else if (failures > 0) {
            EXPECT_EQ(result, E_OUTOFMEMORY);
        }
        TheCamera().log.Clear();
        EXPECT_EQ(failing_memory::LiveAllocations(), before) << "allocation " << failures;
    }
    EXPECT_GT(failures, 20) << "the test made nothing fail";
    EXPECT_LT(failures, kMost);
}

TEST_F(VxDSSourceTest, TurnsAnExceptionDuringConstructionIntoAFailureCode)
{
    ASSERT_EQ(Control().SetDeviceId(TestText(L"cam")), S_OK);
    ASSERT_EQ(Control().SaveDefault(), S_OK);
    DestroyFilter();
    TheCamera().onConnect = [] { throw std::bad_alloc(); };
    const LONG objects = CBaseObject::ObjectsActive();
    HRESULT result = S_OK;

    EXPECT_EQ(VxDSSource::CreateInstance(nullptr, &result), nullptr);

    EXPECT_EQ(result, E_OUTOFMEMORY);

    TheCamera().onConnect = [] { throw std::runtime_error("the camera library's own"); };
    result = S_OK;

    EXPECT_EQ(VxDSSource::CreateInstance(nullptr, &result), nullptr);

    EXPECT_EQ(result, E_UNEXPECTED);
    EXPECT_EQ(CBaseObject::ObjectsActive(), objects) << "what was built is taken apart";
}

TEST_F(VxDSSourceTest, ConnectsToTheSavedDefaultWhileItIsMade)
{
    ASSERT_EQ(Control().SetDeviceId(TestText(L"cam")), S_OK);
    ASSERT_EQ(Control().SaveDefault(), S_OK);
    DestroyFilter();
    TheCamera().log.Clear();

    Filter();

    EXPECT_EQ(Done().front(), "CreateAndConnect(cam)");
}

TEST_F(VxDSSourceTest, TakesASavedDefaultWhoseCameraIsAbsent)
{
    ASSERT_EQ(Control().SetDeviceId(TestText(L"gone")), S_OK);
    ASSERT_EQ(Control().SetZoomValue(4), S_OK);
    ASSERT_EQ(Control().SaveDefault(), S_OK);
    DestroyFilter();
    TheCamera().kind = DeviceKind::None;
    TheCamera().connecting = VxError::NotFound;
    TheCamera().opening = VxError::NotFound;

    UINT zoom = 0;
    EXPECT_EQ(Control().GetZoomValue(&zoom), S_OK);

    EXPECT_EQ(zoom, 4u);
    TestText summary;
    EXPECT_EQ(Control().GetDefaultSummary(summary.Put()), S_OK);
    EXPECT_EQ(summary.Get(), L"Controlling and receiving from gone");
}

/// What programs do with every capture filter on a machine, only to list it.
class VxDSSourceListingTest : public FilterFixture {};

TEST_F(VxDSSourceListingTest, AsksTheCameraLibraryNothing)
{
    VxComPtr<IEnumPins> pins;
    ASSERT_EQ(Filter().EnumPins(pins.Put()), S_OK);
    VxComPtr<IPin> pin;
    ASSERT_EQ(pins->Next(1, pin.Put(), nullptr), S_OK);
    auto config = pin.As<IAMStreamConfig>(IID_IAMStreamConfig);
    AM_MEDIA_TYPE* type = nullptr;
    VIDEO_STREAM_CONFIG_CAPS caps{};
    EXPECT_EQ(config->GetStreamCaps(0, &type, reinterpret_cast<BYTE*>(&caps)), S_OK);
    DeleteMediaType(type);
    UINT number = 0;
    EXPECT_EQ(Control().GetSourceCount(&number), S_OK);
    EXPECT_EQ(Control().GetParameterCount(&number), E_UNEXPECTED);
    CAUUID pages{};
    EXPECT_EQ(As<ISpecifyPropertyPages>(IID_ISpecifyPropertyPages)->GetPages(&pages), S_OK);
    ::CoTaskMemFree(pages.pElems);
    config.Reset();
    pin.Reset();
    pins.Reset();
    DestroyFilter();

    EXPECT_EQ(Done(), Lines{}) << "nothing was connected, opened or sought";
    EXPECT_EQ(TheCamera().log.Of(CallKind::Query), Lines{});
}

class VxDSSourceDroppedFramesTest : public FilterFixture {};

TEST_F(VxDSSourceDroppedFramesTest, CountsDeliveredAndDroppedFrames)
{
    Connect();
    for (const std::size_t waiting : {2u, 0u, 0u})
        TheCamera().QueuePicture({4, 2, 0x01080001, std::vector<std::uint8_t>(8), 0}, waiting);
    SinkPin sink;
    VxComPtr<IPin> pin;
    ASSERT_EQ(Filter().FindPin(L"1", pin.Put()), S_OK);
    ASSERT_EQ(pin->Connect(&sink, nullptr), S_OK);
    ASSERT_EQ(Filter().Pause(), S_OK);
    EXPECT_TRUE(sink.samples.WaitFor(3)); // the third is a zero frame
    ASSERT_EQ(Filter().Stop(), S_OK);
    const auto frames = As<IAMDroppedFrames>(IID_IAMDroppedFrames);
    long dropped = -1;
    long delivered = -1;

    EXPECT_EQ(frames->GetNumDropped(&dropped), S_OK);
    EXPECT_EQ(frames->GetNumNotDropped(&delivered), S_OK);

    EXPECT_EQ(dropped, 1);
    EXPECT_EQ(delivered, 2);
    EXPECT_EQ(pin->Disconnect(), S_OK);
    EXPECT_EQ(sink.Disconnect(), S_OK);
}

TEST_F(VxDSSourceDroppedFramesTest, ListsNoFramesAndTellsNoSize)
{
    const auto frames = As<IAMDroppedFrames>(IID_IAMDroppedFrames);
    long numbers[4] = {1, 2, 3, 4};
    long copied = 9;
    long bytes = 1234;

    EXPECT_EQ(frames->GetDroppedInfo(4, numbers, &copied), S_OK);
    EXPECT_EQ(copied, 0);
    EXPECT_EQ(numbers[0], 1);
    EXPECT_EQ(frames->GetAverageFrameSize(&bytes), S_OK);
    EXPECT_EQ(bytes, 1234);
    EXPECT_EQ(frames->GetNumDropped(nullptr), E_POINTER);
    EXPECT_EQ(frames->GetNumNotDropped(nullptr), E_POINTER);
    EXPECT_EQ(frames->GetDroppedInfo(0, nullptr, nullptr), E_POINTER);
}

} // namespace
