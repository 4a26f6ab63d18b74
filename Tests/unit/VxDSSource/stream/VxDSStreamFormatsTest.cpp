#include "BaseClasses/BitmapSizes.h"
#include "VxDSSource/stream/VxMediaTypes.h"
#include "support/directshow/FakeAllocator.h"
#include "support/directshow/FakeGraph.h"

#include "PinFixture.h"
#include "RenegotiatingSink.h"

#include <uuids.h>

#include <cstring>
#include <memory>

namespace {

using vxds::Setting;

struct DeleteType {
    void operator()(AM_MEDIA_TYPE* type) const { DeleteMediaType(type); }
};
using OwnedType = std::unique_ptr<AM_MEDIA_TYPE, DeleteType>;

CMediaType Offered(int position, vxds::PictureSize size = {1280, 720})
{
    CMediaType type;
    EXPECT_TRUE(vxds::BuildOfferedType(position, size, type));
    return type;
}

class VxDSStreamFormatsTest : public PinFixture {
protected:
    OwnedType Format()
    {
        AM_MEDIA_TYPE* type = nullptr;
        EXPECT_EQ(Pin().GetFormat(&type), S_OK);
        return OwnedType(type);
    }

    static const BITMAPINFOHEADER& BitmapOf(const AM_MEDIA_TYPE& type)
    {
        EXPECT_GE(type.cbFormat, sizeof(VIDEOINFOHEADER));
        return *HEADER(type.pbFormat);
    }

    /// Ends a connection as a graph does: on both sides.
    void Disconnect(IPin& sink)
    {
        EXPECT_EQ(Pin().Disconnect(), S_OK);
        EXPECT_EQ(sink.Disconnect(), S_OK);
    }
};

TEST_F(VxDSStreamFormatsTest, StartsWithRgb32Of1280By720)
{
    const OwnedType type = Format();

    EXPECT_EQ(type->majortype, MEDIATYPE_Video);
    EXPECT_EQ(type->subtype, MEDIASUBTYPE_RGB32);
    EXPECT_EQ(type->formattype, FORMAT_VideoInfo);
    EXPECT_EQ(type->bTemporalCompression, FALSE);
    EXPECT_EQ(type->lSampleSize, 1280u * 720u * 4u);
    VIDEOINFOHEADER expected{};
    expected.AvgTimePerFrame = 333333;
    expected.bmiHeader = {40, 1280, 720, 1, 32, BI_RGB, 1280 * 720 * 4, 0, 0, 0, 0};
    ASSERT_EQ(type->cbFormat, sizeof(expected));
    EXPECT_EQ(std::memcmp(type->pbFormat, &expected, sizeof(expected)), 0);
}

TEST_F(VxDSStreamFormatsTest, EnumeratesExactlyFourTypesWhateverTheFamily)
{
    for (const std::uint32_t family : {0u, 1u}) {
        Store(Setting::OutputPixelType, family);
        VxComPtr<IEnumMediaTypes> types;
        ASSERT_EQ(Pin().EnumMediaTypes(types.Put()), S_OK);
        std::vector<GUID> subtypes;
        AM_MEDIA_TYPE* type = nullptr;
        while (types->Next(1, &type, nullptr) == S_OK) {
            subtypes.push_back(type->subtype);
            DeleteMediaType(type);
        }
        EXPECT_EQ(subtypes, (std::vector<GUID>{MEDIASUBTYPE_RGB24, MEDIASUBTYPE_RGB32, MEDIASUBTYPE_ARGB32,
                                               MEDIASUBTYPE_YUY2}));
    }
    CMediaType type;
    EXPECT_EQ(Pin().GetMediaType(4, &type), VFW_S_NO_MORE_ITEMS);
    EXPECT_EQ(Pin().GetMediaType(1000, &type), VFW_S_NO_MORE_ITEMS);
    EXPECT_EQ(Pin().GetMediaType(&type), E_UNEXPECTED);
}

TEST_F(VxDSStreamFormatsTest, RefusesANegativePosition)
{
    CMediaType type;

    EXPECT_EQ(Pin().GetMediaType(-1, &type), E_INVALIDARG);
}

TEST_F(VxDSStreamFormatsTest, OffersTheDeliveredSize)
{
    Store(Setting::Width, 641);
    Store(Setting::Height, 479);
    CMediaType type;

    ASSERT_EQ(Pin().GetMediaType(0, &type), S_OK);

    EXPECT_EQ(BitmapOf(type).biWidth, 641);
    EXPECT_EQ(BitmapOf(type).biHeight, 479);
    EXPECT_EQ(BitmapOf(type).biSizeImage, 641u * 479u * 3u);
}

TEST_F(VxDSStreamFormatsTest, RefusesTheOtherFamilyWithASuccessCode)
{
    const CMediaType yuy2 = Offered(3);
    const CMediaType rgb24 = Offered(0);

    EXPECT_EQ(Pin().CheckMediaType(&yuy2), S_FALSE);
    EXPECT_EQ(Pin().CheckMediaType(&rgb24), S_OK);
    Store(Setting::OutputPixelType, 1);
    EXPECT_EQ(Pin().CheckMediaType(&yuy2), S_OK);
    EXPECT_EQ(Pin().CheckMediaType(&rgb24), S_FALSE);
    EXPECT_EQ(Pin().QueryAccept(&rgb24), S_FALSE);
}

TEST_F(VxDSStreamFormatsTest, SetsARefusedTypeAllTheSame)
{
    const CMediaType yuy2 = Offered(3, {64, 32});

    EXPECT_EQ(Pin().SetMediaType(&yuy2), S_OK);

    const OwnedType type = Format();
    EXPECT_EQ(type->subtype, MEDIASUBTYPE_YUY2);
    EXPECT_EQ(BitmapOf(*type).biWidth, 64);
}

TEST_F(VxDSStreamFormatsTest, AsksForOneBufferOfTheImagesSize)
{
    const CMediaType rgb24 = Offered(0, {641, 479});
    ASSERT_EQ(Pin().SetMediaType(&rgb24), S_OK);
    FakeAllocator allocator;
    ALLOCATOR_PROPERTIES properties{7, 1, 32, 5};

    EXPECT_EQ(Pin().DecideBufferSize(&allocator, &properties), S_OK);

    EXPECT_EQ(allocator.asked.cBuffers, 1);
    EXPECT_EQ(allocator.asked.cbBuffer, 641 * 479 * 3);
    EXPECT_EQ(allocator.asked.cbAlign, 32) << "as the allocator proposed";
    EXPECT_EQ(allocator.asked.cbPrefix, 5) << "as the allocator proposed";
}

TEST_F(VxDSStreamFormatsTest, PassesOnWhyAnAllocatorRefuses)
{
    FakeAllocator allocator;
    allocator.setting = VFW_E_ALREADY_COMMITTED;
    ALLOCATOR_PROPERTIES properties{};

    EXPECT_EQ(Pin().DecideBufferSize(&allocator, &properties), VFW_E_ALREADY_COMMITTED);
}

/// An allocator that gives less than it was asked for.
class StingyAllocator final : public TestObject<IMemAllocator> {
public:
    STDMETHODIMP SetProperties(ALLOCATOR_PROPERTIES* request, ALLOCATOR_PROPERTIES* actual) override
    {
        *actual = *request;
        actual->cbBuffer -= 1;
        return S_OK;
    }
    STDMETHODIMP GetProperties(ALLOCATOR_PROPERTIES*) override { return E_NOTIMPL; }
    STDMETHODIMP Commit() override { return E_NOTIMPL; }
    STDMETHODIMP Decommit() override { return E_NOTIMPL; }
    STDMETHODIMP GetBuffer(IMediaSample**, REFERENCE_TIME*, REFERENCE_TIME*, DWORD) override
    {
        return E_NOTIMPL;
    }
    STDMETHODIMP ReleaseBuffer(IMediaSample*) override { return E_NOTIMPL; }
};

TEST_F(VxDSStreamFormatsTest, RefusesAnAllocatorWithSmallerBuffers)
{
    StingyAllocator allocator;
    ALLOCATOR_PROPERTIES properties{};

    EXPECT_EQ(Pin().DecideBufferSize(&allocator, &properties), E_FAIL);
}

TEST_F(VxDSStreamFormatsTest, AsksForNoBufferLargerThanASampleCanBe)
{
    const CMediaType huge = Offered(0, {65535, 65535});
    ASSERT_EQ(Pin().SetMediaType(&huge), S_OK);
    FakeAllocator allocator;
    ALLOCATOR_PROPERTIES properties{};

    EXPECT_EQ(Pin().DecideBufferSize(&allocator, &properties), E_OUTOFMEMORY);
}

TEST_F(VxDSStreamFormatsTest, ConnectsWithItsFirstTypeOfTheFamily)
{
    for (const auto& [family, subtype] : {std::pair{0u, MEDIASUBTYPE_RGB24}, {1u, MEDIASUBTYPE_YUY2}}) {
        Store(Setting::OutputPixelType, family);
        SinkPin sink;
        ASSERT_EQ(Pin().Connect(&sink, nullptr), S_OK);
        CMediaType type;
        EXPECT_EQ(Pin().ConnectionMediaType(&type), S_OK);
        EXPECT_EQ(type.subtype, subtype);
        Disconnect(sink);
    }
}

TEST_F(VxDSStreamFormatsTest, SetsAFormatWithoutATestAndReconnectsWhenConnected)
{
    const CMediaType odd = Offered(3, {3, 5});
    CMediaType wanted(odd);
    EXPECT_EQ(Pin().SetFormat(&wanted), S_OK);
    EXPECT_EQ(BitmapOf(*Format()).biWidth, 3);

    FakeGraph graph;
    ASSERT_EQ(Host().JoinFilterGraph(&graph, L"host"), S_OK);
    EXPECT_EQ(Pin().SetFormat(&wanted), S_OK);
    EXPECT_EQ(graph.reconnects, 0) << "nothing to reconnect";

    SinkPin sink;
    ASSERT_EQ(Pin().Connect(&sink, nullptr), S_OK);
    EXPECT_EQ(Pin().SetFormat(&wanted), S_OK);
    EXPECT_EQ(graph.reconnects, 1);

    ASSERT_EQ(Host().JoinFilterGraph(nullptr, nullptr), S_OK);
    EXPECT_EQ(Pin().SetFormat(&wanted), S_OK) << "connected in no graph";
    Disconnect(sink);
}

TEST_F(VxDSStreamFormatsTest, SurvivesFormatsWithoutABlock)
{
    CMediaType none;
    EXPECT_EQ(Pin().SetFormat(&none), S_OK);
    EXPECT_EQ(Format()->cbFormat, 0u);

    AM_MEDIA_TYPE* type = nullptr;
    VIDEO_STREAM_CONFIG_CAPS caps{};
    EXPECT_EQ(Pin().GetStreamCaps(0, &type, reinterpret_cast<BYTE*>(&caps)), S_OK);
    EXPECT_EQ(type->cbFormat, sizeof(VIDEOINFOHEADER));
    DeleteMediaType(type);
    FakeAllocator allocator;
    ALLOCATOR_PROPERTIES properties{};
    EXPECT_EQ(Pin().DecideBufferSize(&allocator, &properties), S_OK);
    EXPECT_EQ(allocator.asked.cbBuffer, 0);
}

TEST_F(VxDSStreamFormatsTest, ReportsOneCapabilityForEveryIndex)
{
    int count = 0;
    int size = 0;
    EXPECT_EQ(Pin().GetNumberOfCapabilities(&count, &size), S_OK);
    EXPECT_EQ(count, 1);
    EXPECT_EQ(size, 128);

    for (const int index : {0, 1, 100000, -1}) {
        AM_MEDIA_TYPE* type = nullptr;
        VIDEO_STREAM_CONFIG_CAPS caps{};
        ASSERT_EQ(Pin().GetStreamCaps(index, &type, reinterpret_cast<BYTE*>(&caps)), S_OK) << index;
        EXPECT_EQ(type->subtype, MEDIASUBTYPE_RGB24);
        EXPECT_EQ(BitmapOf(*type).biWidth, 1280);
        EXPECT_EQ(caps.MaxOutputSize.cx, 1280);
        EXPECT_EQ(caps.MaxOutputSize.cy, 720);
        EXPECT_EQ(caps.OutputGranularityX, 0);
        DeleteMediaType(type);
    }
}

TEST_F(VxDSStreamFormatsTest, AnswersNullArgumentsWithAnError)
{
    int number = 0;
    AM_MEDIA_TYPE* type = nullptr;
    BYTE caps[sizeof(VIDEO_STREAM_CONFIG_CAPS)];

    EXPECT_EQ(Pin().SetFormat(nullptr), E_POINTER);
    EXPECT_EQ(Pin().GetFormat(nullptr), E_POINTER);
    EXPECT_EQ(Pin().GetNumberOfCapabilities(nullptr, &number), E_POINTER);
    EXPECT_EQ(Pin().GetNumberOfCapabilities(&number, nullptr), E_POINTER);
    EXPECT_EQ(Pin().GetStreamCaps(0, nullptr, caps), E_POINTER);
    EXPECT_EQ(Pin().GetStreamCaps(0, &type, nullptr), E_POINTER);
    EXPECT_EQ(Pin().QueryAccept(nullptr), E_POINTER);
}

TEST_F(VxDSStreamFormatsTest, OffersItsInterfaces)
{
    VxComPtr<IPin> pin(&Pin());
    EXPECT_TRUE(pin.As<IAMStreamConfig>());
    EXPECT_TRUE(pin.As<IKsPropertySet>());
    EXPECT_TRUE(pin.As<IQualityControl>());
    EXPECT_FALSE(pin.As<IMemInputPin>());
    EXPECT_EQ(Pin().NonDelegatingQueryInterface(IID_IAMStreamConfig, nullptr), E_POINTER);
}

class VxDSStreamCategoryTest : public PinFixture {
protected:
    HRESULT Get(const GUID& set, DWORD id, void* data, DWORD bytes, DWORD* returned)
    {
        return Pin().Get(set, id, nullptr, 0, data, bytes, returned);
    }
};

TEST_F(VxDSStreamCategoryTest, IsCapture)
{
    GUID category{};
    DWORD returned = 0;

    EXPECT_EQ(Get(AMPROPSETID_Pin, AMPROPERTY_PIN_CATEGORY, &category, sizeof(category), &returned), S_OK);

    EXPECT_EQ(category, PIN_CATEGORY_CAPTURE);
    EXPECT_EQ(returned, 16u);
    EXPECT_EQ(Get(AMPROPSETID_Pin, AMPROPERTY_PIN_CATEGORY, &category, 100, nullptr), S_OK);
}

TEST_F(VxDSStreamCategoryTest, TellsItsSizeAlone)
{
    DWORD returned = 0;

    EXPECT_EQ(Get(AMPROPSETID_Pin, AMPROPERTY_PIN_CATEGORY, nullptr, 0, &returned), S_OK);
    EXPECT_EQ(returned, 16u);
}

TEST_F(VxDSStreamCategoryTest, RefusesWhatItIsNot)
{
    GUID category{};
    DWORD returned = 99;

    EXPECT_EQ(Get(GUID_NULL, AMPROPERTY_PIN_CATEGORY, &category, 16, &returned), E_PROP_SET_UNSUPPORTED);
    EXPECT_EQ(Get(AMPROPSETID_Pin, 1, &category, 16, &returned), E_PROP_ID_UNSUPPORTED);
    EXPECT_EQ(Get(AMPROPSETID_Pin, AMPROPERTY_PIN_CATEGORY, nullptr, 16, nullptr), E_POINTER);
    EXPECT_EQ(returned, 99u);
    EXPECT_EQ(Get(AMPROPSETID_Pin, AMPROPERTY_PIN_CATEGORY, &category, 15, &returned), E_UNEXPECTED);
    EXPECT_EQ(returned, 16u);
    EXPECT_EQ(category, GUID_NULL);
}

TEST_F(VxDSStreamCategoryTest, CanOnlyBeRead)
{
    GUID category{};
    DWORD support = 0;

    EXPECT_EQ(Pin().Set(AMPROPSETID_Pin, AMPROPERTY_PIN_CATEGORY, nullptr, 0, &category, 16), E_NOTIMPL);
    EXPECT_EQ(Pin().Set(GUID_NULL, 7, nullptr, 0, nullptr, 0), E_NOTIMPL);
    EXPECT_EQ(Pin().QuerySupported(AMPROPSETID_Pin, AMPROPERTY_PIN_CATEGORY, &support), S_OK);
    EXPECT_EQ(support, static_cast<DWORD>(KSPROPERTY_SUPPORT_GET));
    EXPECT_EQ(Pin().QuerySupported(GUID_NULL, AMPROPERTY_PIN_CATEGORY, &support), E_PROP_SET_UNSUPPORTED);
    EXPECT_EQ(Pin().QuerySupported(AMPROPSETID_Pin, 5, &support), E_PROP_ID_UNSUPPORTED);
}

class VxDSStreamRenegotiationTest : public VxDSStreamFormatsTest {};

TEST_F(VxDSStreamRenegotiationTest, TakesTheNewSizeThatThePeerAccepts)
{
    RenegotiatingSink sink;
    ASSERT_EQ(Pin().Connect(&sink, nullptr), S_OK);

    ConnectAndForget();

    ASSERT_EQ(sink.renegotiated.size(), 1u);
    EXPECT_EQ(sink.renegotiated[0].subtype, MEDIASUBTYPE_RGB24);
    EXPECT_EQ(BitmapOf(sink.renegotiated[0]).biWidth, 640);
    EXPECT_EQ(BitmapOf(*Format()).biWidth, 640);
    EXPECT_EQ(BitmapOf(*Format()).biSizeImage, 640u * 480u * 3u);
    Disconnect(sink);
}

TEST_F(VxDSStreamRenegotiationTest, KeepsTheOldTypeWhenThePeerRefuses)
{
    RenegotiatingSink sink;
    sink.renegotiating = VFW_E_ALREADY_CONNECTED;
    ASSERT_EQ(Pin().Connect(&sink, nullptr), S_OK);

    ConnectAndForget();

    EXPECT_EQ(sink.renegotiated.size(), 1u);
    EXPECT_EQ(BitmapOf(*Format()).biWidth, 1280);
    Disconnect(sink);
}

TEST_F(VxDSStreamRenegotiationTest, KeepsTheOldTypeWhileUnconnected)
{
    ConnectAndForget();

    EXPECT_EQ(Settings().Number(Setting::Width), 640u);
    EXPECT_EQ(BitmapOf(*Format()).biWidth, 1280);
}

TEST_F(VxDSStreamRenegotiationTest, AsksNobodyWhenTheSizeIsTheSame)
{
    TheCamera().device->Get(std::size_t{0})->FromString("1280");
    TheCamera().device->Get(std::size_t{1})->FromString("720");
    RenegotiatingSink sink;
    ASSERT_EQ(Pin().Connect(&sink, nullptr), S_OK);

    ConnectAndForget();

    EXPECT_EQ(sink.renegotiated.size(), 0u);
    Disconnect(sink);
}

TEST_F(VxDSStreamRenegotiationTest, FollowsTheOutputSize)
{
    RenegotiatingSink sink;
    ASSERT_EQ(Pin().Connect(&sink, nullptr), S_OK);
    ConnectAndForget();
    sink.renegotiated.clear();

    EXPECT_EQ(Pin().SetOutputSize(100, 50), S_OK);

    ASSERT_EQ(sink.renegotiated.size(), 1u);
    EXPECT_EQ(BitmapOf(sink.renegotiated[0]).biWidth, 100);
    EXPECT_EQ(BitmapOf(*Format()).biHeight, 50);
    EXPECT_EQ(Pin().SetOutputSize(0, 50), E_FAIL);
    EXPECT_EQ(sink.renegotiated.size(), 1u);
    Disconnect(sink);
}

TEST_F(VxDSStreamRenegotiationTest, FollowsTheCamerasWidthOnlyWhileTheOutputSizeIsTheCameras)
{
    RenegotiatingSink sink;
    ASSERT_EQ(Pin().Connect(&sink, nullptr), S_OK);
    ConnectAndForget(); // the output size becomes 640 x 480 for good

    EXPECT_EQ(Pin().SetCameraSize("Width", 320), S_OK);

    EXPECT_EQ(Done(), Lines{"device.Width = 320"});
    EXPECT_EQ(Settings().Number(Setting::Width), 640u);
    EXPECT_EQ(Settings().Number(Setting::OutputWidth), 640u);
    Disconnect(sink);
}

TEST_F(VxDSStreamRenegotiationTest, CannotWriteASizeWithoutACameraOrAgainstIt)
{
    EXPECT_EQ(Pin().SetCameraSize("Width", 320), E_FAIL);
    ConnectAndForget();
    dynamic_cast<ScriptedInteger*>(TheCamera().device->Get(VxString("Height")))->writing =
        VxError::OutOfRange;

    EXPECT_EQ(Pin().SetCameraSize("Height", 7), E_FAIL);
}

} // namespace
