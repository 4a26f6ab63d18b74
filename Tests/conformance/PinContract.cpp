#include "conformance/FilterConformanceTest.h"

#include <amvideo.h>
#include <objbase.h>
#include <uuids.h>
#include <vfwmsgs.h>

#include <array>
#include <string>

namespace {

TEST_P(FilterConformanceTest, PinTellsAboutItself)
{
    PIN_INFO info = {};
    PIN_DIRECTION direction = PINDIR_INPUT;

    ASSERT_EQ(pin->QueryPinInfo(&info), S_OK);
    EXPECT_EQ(info.pFilter, filter.Get());
    info.pFilter->Release();
    EXPECT_EQ(info.dir, PINDIR_OUTPUT);
    EXPECT_EQ(std::wstring(info.achName), GetParam().pinName);
    EXPECT_EQ(pin->QueryDirection(&direction), S_OK);
    EXPECT_EQ(direction, PINDIR_OUTPUT);
}

TEST_P(FilterConformanceTest, PinIsFoundByItsId)
{
    LPWSTR id = nullptr;
    ASSERT_EQ(pin->QueryId(&id), S_OK);
    VxComPtr<IPin> found;

    EXPECT_EQ(filter->FindPin(id, found.Put()), S_OK);
    EXPECT_EQ(found.Get(), pin.Get());
    ::CoTaskMemFree(id);
    EXPECT_EQ(filter->FindPin(L"no such pin", found.Put()), VFW_E_NOT_FOUND);
    EXPECT_EQ(found.Get(), nullptr);
    EXPECT_EQ(filter->FindPin(L"1", nullptr), E_POINTER);
}

TEST_P(FilterConformanceTest, PinHasItsOwnIdentityAndTheFiltersLife)
{
    VxComPtr<IUnknown> ofPin;
    VxComPtr<IUnknown> ofFilter;
    ASSERT_EQ(pin->QueryInterface(IID_IUnknown, ofPin.PutVoid()), S_OK);
    ASSERT_EQ(filter->QueryInterface(IID_IUnknown, ofFilter.PutVoid()), S_OK);
    EXPECT_NE(ofPin.Get(), ofFilter.Get());
    ofPin.Reset();
    ofFilter.Reset();

    const ULONG before = References();
    const VxComPtr<IPin> again(pin);
    EXPECT_EQ(References(), before + 1);
}

TEST_P(FilterConformanceTest, PinHasTheInterfacesItClaims)
{
    VxComPtr<IUnknown> answer;

    EXPECT_EQ(pin->QueryInterface(IID_IAMStreamConfig, answer.PutVoid()),
              GetParam().hasStreamConfig ? S_OK : E_NOINTERFACE);
    EXPECT_EQ(pin->QueryInterface(IID_IKsPropertySet, answer.PutVoid()),
              GetParam().hasCategory ? S_OK : E_NOINTERFACE);
    EXPECT_EQ(pin->QueryInterface(IID_IQualityControl, answer.PutVoid()), S_OK);
    EXPECT_EQ(pin->QueryInterface(IID_IMemInputPin, answer.PutVoid()), E_NOINTERFACE);
    EXPECT_EQ(pin->QueryInterface(IID_IBaseFilter, answer.PutVoid()), E_NOINTERFACE);
}

TEST_P(FilterConformanceTest, PinChecksItsPointers)
{
    const CMediaType type;

    EXPECT_EQ(pin->Connect(nullptr, nullptr), E_POINTER);
    EXPECT_EQ(pin->ReceiveConnection(nullptr, &type), E_POINTER);
    EXPECT_EQ(pin->ReceiveConnection(&sink, nullptr), E_POINTER);
    EXPECT_EQ(pin->ConnectedTo(nullptr), E_POINTER);
    EXPECT_EQ(pin->ConnectionMediaType(nullptr), E_POINTER);
    EXPECT_EQ(pin->QueryPinInfo(nullptr), E_POINTER);
    EXPECT_EQ(pin->QueryDirection(nullptr), E_POINTER);
    EXPECT_EQ(pin->QueryId(nullptr), E_POINTER);
    EXPECT_EQ(pin->QueryAccept(nullptr), E_POINTER);
    EXPECT_EQ(pin->EnumMediaTypes(nullptr), E_POINTER);
}

TEST_P(FilterConformanceTest, UnconnectedPinSaysSo)
{
    IPin* peer = pin.Get();
    AM_MEDIA_TYPE type = {};

    EXPECT_EQ(pin->ConnectedTo(&peer), VFW_E_NOT_CONNECTED);
    EXPECT_EQ(peer, nullptr);
    EXPECT_EQ(pin->ConnectionMediaType(&type), VFW_E_NOT_CONNECTED);
    EXPECT_EQ(type.pbFormat, nullptr);
    EXPECT_EQ(pin->Disconnect(), S_FALSE);
}

TEST_P(FilterConformanceTest, EventsOfAStreamAreUnexpectedAtAnOutput)
{
    EXPECT_EQ(pin->EndOfStream(), E_UNEXPECTED);
    EXPECT_EQ(pin->BeginFlush(), E_UNEXPECTED);
    EXPECT_EQ(pin->EndFlush(), E_UNEXPECTED);
}

TEST_P(FilterConformanceTest, OfferedTypesAreComplete)
{
    const auto types = TypesOf(*pin.Get());

    ASSERT_GE(types.size(), 1u);
    for (const CMediaType& type : types) {
        EXPECT_EQ(*type.Type(), MEDIATYPE_Video);
        EXPECT_NE(*type.Subtype(), GUID_NULL);
        ASSERT_EQ(*type.FormatType(), FORMAT_VideoInfo);
        ASSERT_GE(type.FormatLength(), sizeof(VIDEOINFOHEADER));
        const auto& info = *reinterpret_cast<const VIDEOINFOHEADER*>(type.Format());
        EXPECT_GT(info.bmiHeader.biWidth, 0);
        EXPECT_NE(info.bmiHeader.biHeight, 0);
        EXPECT_GT(info.AvgTimePerFrame, 0);
        EXPECT_EQ(type.GetSampleSize(), info.bmiHeader.biSizeImage);
    }
}

TEST_P(FilterConformanceTest, TypeEnumeratorKeepsItsContract)
{
    const auto count = static_cast<ULONG>(TypesOf(*pin.Get()).size());
    VxComPtr<IEnumMediaTypes> types;
    ASSERT_EQ(pin->EnumMediaTypes(types.Put()), S_OK);
    std::array<AM_MEDIA_TYPE*, 64> got{};
    ULONG fetched = 99;
    ASSERT_LT(count, got.size());

    EXPECT_EQ(types->Next(1, nullptr, &fetched), E_POINTER);
    EXPECT_EQ(types->Next(2, got.data(), nullptr), E_INVALIDARG);
    EXPECT_EQ(types->Next(count, got.data(), &fetched), S_OK);
    EXPECT_EQ(fetched, count);
    for (ULONG n = 0; n < fetched; ++n)
        DeleteMediaType(got[n]);
    EXPECT_EQ(types->Next(1, got.data(), &fetched), S_FALSE);
    EXPECT_EQ(fetched, 0u);

    EXPECT_EQ(types->Reset(), S_OK);
    EXPECT_EQ(types->Skip(count), S_OK);
    EXPECT_EQ(types->Skip(1), S_FALSE);
    EXPECT_EQ(types->Reset(), S_OK);
    VxComPtr<IEnumMediaTypes> copy;
    EXPECT_EQ(types->Clone(copy.Put()), S_OK);
    EXPECT_EQ(copy->Next(1, got.data(), &fetched), S_OK);
    EXPECT_TRUE(TypesOf(*pin.Get()).front() == CMediaType(*got[0]));
    DeleteMediaType(got[0]);
    EXPECT_EQ(types->Clone(nullptr), E_POINTER);
}

TEST_P(FilterConformanceTest, AcceptsAtLeastOneTypeThatItOffers)
{
    int accepted = 0;
    for (const CMediaType& type : TypesOf(*pin.Get()))
        accepted += pin->QueryAccept(&type) == S_OK ? 1 : 0;

    EXPECT_GE(accepted, 1);
}

/// Damages of a type as strangers propose them.
std::vector<CMediaType> Damaged(const CMediaType& whole)
{
    std::vector<CMediaType> damaged(4, whole);
    damaged[0].SetFormatType(&GUID_NULL);
    damaged[0].ResetFormatBuffer();
    damaged[1].ResetFormatBuffer();
    damaged[2].ReallocFormatBuffer(sizeof(VIDEOINFOHEADER) - 1);
    damaged[3].SetType(&MEDIATYPE_Audio);
    return damaged;
}

TEST_P(FilterConformanceTest, DamagedTypesAreRefused)
{
    EXPECT_NE(pin->QueryAccept(&static_cast<const AM_MEDIA_TYPE&>(AM_MEDIA_TYPE{})), S_OK);
    for (const CMediaType& whole : TypesOf(*pin.Get())) {
        for (const CMediaType& damaged : Damaged(whole))
            EXPECT_NE(pin->QueryAccept(&damaged), S_OK);

        AM_MEDIA_TYPE pretended = whole; // a length, but no block
        pretended.pbFormat = nullptr;
        EXPECT_NE(pin->QueryAccept(&pretended), S_OK);
    }
}

TEST_P(FilterConformanceTest, ConnectsWithEachTypeThatItAccepts)
{
    for (const CMediaType& type : TypesOf(*pin.Get())) {
        if (pin->QueryAccept(&type) != S_OK) {
            EXPECT_EQ(pin->Connect(&sink, &type), VFW_E_TYPE_NOT_ACCEPTED);
            continue;
        }
        ASSERT_EQ(pin->Connect(&sink, &type), S_OK);
        AM_MEDIA_TYPE got = {};
        EXPECT_EQ(pin->ConnectionMediaType(&got), S_OK);
        EXPECT_TRUE(type == CMediaType(got));
        FreeMediaType(got);
        VxComPtr<IPin> peer;
        EXPECT_EQ(pin->ConnectedTo(peer.Put()), S_OK);
        EXPECT_EQ(peer.Get(), &sink);
        Disconnect();
    }
}

TEST_P(FilterConformanceTest, ConnectionIsThereWhileThePeerIsAsked)
{
    IPin* seen = nullptr;
    sink.onReceiveConnection = [&](IPin* connector, const AM_MEDIA_TYPE*) {
        VxComPtr<IPin> peer;
        connector->ConnectedTo(peer.Put());
        seen = peer.Get();
        return S_OK;
    };

    Connect();

    EXPECT_EQ(seen, &sink);
}

TEST_P(FilterConformanceTest, SecondConnectionIsRefused)
{
    Connect();
    SinkPin other;

    EXPECT_EQ(pin->Connect(&other, nullptr), VFW_E_ALREADY_CONNECTED);
    EXPECT_EQ(pin->Connect(&sink, nullptr), VFW_E_ALREADY_CONNECTED);

    EXPECT_EQ(sink.Connected(), pin.Get());
}

TEST_P(FilterConformanceTest, ConnectsAgainAfterADisconnect)
{
    for (int round = 0; round < 3; ++round) {
        Connect();
        EXPECT_EQ(pin->Disconnect(), S_OK);
        EXPECT_EQ(pin->Disconnect(), S_FALSE);
        EXPECT_EQ(sink.References(), 0);
        sink.Disconnect();
    }
}

TEST_P(FilterConformanceTest, UnsuitablePeersAreRefused)
{
    sink.direction = PINDIR_OUTPUT;
    EXPECT_EQ(pin->Connect(&sink, nullptr), VFW_E_INVALID_DIRECTION);
    sink.direction = PINDIR_INPUT;
    sink.takesSamples = false;
    EXPECT_TRUE(FAILED(pin->Connect(&sink, nullptr)));

    IPin* peer = nullptr;
    EXPECT_EQ(pin->ConnectedTo(&peer), VFW_E_NOT_CONNECTED);
    EXPECT_EQ(sink.References(), 0);
}

TEST_P(FilterConformanceTest, RefusingPeerLeavesThePinUnconnected)
{
    sink.onReceiveConnection = [](IPin*, const AM_MEDIA_TYPE*) { return VFW_E_TYPE_NOT_ACCEPTED; };

    EXPECT_EQ(pin->Connect(&sink, nullptr), VFW_E_NO_ACCEPTABLE_TYPES);

    EXPECT_EQ(pin->Disconnect(), S_FALSE);
    EXPECT_EQ(sink.References(), 0);
}

TEST_P(FilterConformanceTest, RefusedAllocatorLeavesThePinUnconnected)
{
    sink.onNotifyAllocator = [](IMemAllocator*, BOOL) { return E_ACCESSDENIED; };

    EXPECT_EQ(pin->Connect(&sink, nullptr), E_ACCESSDENIED);

    EXPECT_GE(sink.disconnects, 1);
    EXPECT_EQ(pin->Disconnect(), S_FALSE);
    EXPECT_EQ(sink.References(), 0);
}

TEST_P(FilterConformanceTest, BuffersHoldAFrame)
{
    VxComPtr<IMemAllocator> allocator;
    BOOL isReadOnly = TRUE;
    sink.onNotifyAllocator = [&](IMemAllocator* told, BOOL readOnly) {
        allocator = VxComPtr<IMemAllocator>(told);
        isReadOnly = readOnly;
        return S_OK;
    };
    Connect();
    ASSERT_TRUE(allocator);

    ALLOCATOR_PROPERTIES properties = {};
    EXPECT_EQ(allocator->GetProperties(&properties), S_OK);
    AM_MEDIA_TYPE type = {};
    ASSERT_EQ(pin->ConnectionMediaType(&type), S_OK);
    EXPECT_GE(properties.cbBuffer, static_cast<long>(type.lSampleSize));
    FreeMediaType(type);
    EXPECT_GE(properties.cBuffers, 1);
    EXPECT_GE(properties.cbAlign, 1);
    EXPECT_FALSE(isReadOnly);
    VxComPtr<IMediaSample> sample;
    EXPECT_EQ(allocator->GetBuffer(sample.Put(), nullptr, nullptr, 0), VFW_E_NOT_COMMITTED);
}

TEST_P(FilterConformanceTest, PeersAllocatorIsUsed)
{
    ASSERT_EQ(::CoCreateInstance(CLSID_MemoryAllocator, nullptr, CLSCTX_INPROC_SERVER, IID_IMemAllocator,
                                 sink.allocator.PutVoid()),
              S_OK);
    IMemAllocator* told = nullptr;
    sink.onNotifyAllocator = [&](IMemAllocator* allocator, BOOL) {
        told = allocator;
        return S_OK;
    };

    Connect();

    EXPECT_EQ(told, sink.allocator.Get());
}

} // namespace
