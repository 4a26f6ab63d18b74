#include "hosts/HostTest.h"

#include "VxDSSource/filter/IVxDSSource.h"
#include "VxDSSource/filter/Identifiers.h"
#include "VxSimulator/picture/FrameNumberStrip.h"
#include "VxSimulator/picture/PictureView.h"
#include "VxSimulator/picture/TestPicture.h"
#include "system/RoadTest.h"

#include <algorithm>
#include <cstdlib>

namespace {

std::wstring ReadText(IPropertyBag& bag, const wchar_t* property)
{
    VARIANT value;
    ::VariantInit(&value);
    std::wstring text;
    if (SUCCEEDED(bag.Read(property, &value, nullptr)) && value.vt == VT_BSTR)
        text = value.bstrVal;
    ::VariantClear(&value);
    return text;
}

simulator::PictureView ViewOf(std::span<const std::byte> bytes, const BITMAPINFOHEADER& header)
{
    simulator::PictureView view;
    view.pixels = bytes;
    view.widthPx = static_cast<std::uint32_t>(header.biWidth);
    view.heightPx = static_cast<std::uint32_t>(std::abs(header.biHeight));
    view.bytesPerPixel = header.biBitCount / 8U;
    view.strideBytes = std::size_t{view.widthPx} * view.bytesPerPixel; // no padding, whatever the width
    view.rowOrder = header.biHeight > 0 ? simulator::RowOrder::BottomUp : simulator::RowOrder::TopDown;
    return view;
}

} // namespace

BITMAPINFOHEADER& HeaderOf(const AM_MEDIA_TYPE& type)
{
    EXPECT_TRUE(type.formattype == FORMAT_VideoInfo && type.cbFormat >= sizeof(VIDEOINFOHEADER));
    return reinterpret_cast<VIDEOINFOHEADER*>(type.pbFormat)->bmiHeader;
}

CMediaType BuiltType(const GUID& subtype, WORD bitCount, DWORD compression, std::uint32_t widthPx,
                     std::uint32_t heightPx)
{
    CMediaType type(&MEDIATYPE_Video);
    type.SetSubtype(&subtype);
    type.SetFormatType(&FORMAT_VideoInfo);
    auto* const format = reinterpret_cast<VIDEOINFOHEADER*>(type.AllocFormatBuffer(sizeof(VIDEOINFOHEADER)));
    *format = {};
    format->AvgTimePerFrame = 333333; // 30 frames a second, in 100 ns
    format->bmiHeader.biSize = sizeof(BITMAPINFOHEADER);
    format->bmiHeader.biWidth = static_cast<LONG>(widthPx);
    format->bmiHeader.biHeight = static_cast<LONG>(heightPx);
    format->bmiHeader.biPlanes = 1;
    format->bmiHeader.biBitCount = bitCount;
    format->bmiHeader.biCompression = compression;
    format->bmiHeader.biSizeImage = widthPx * heightPx * bitCount / 8;
    type.SetSampleSize(format->bmiHeader.biSizeImage);
    return type;
}

HostTest::HostTest(HostCamera camera)
{
    VxSimulatorOptions options = SmallCamera(camera.pixelFormat);
    options.widthPx = kWidthPx;
    options.heightPx = kHeightPx;
    options.userDefinedName =
        std::string(kCameraName, kCameraName + std::char_traits<wchar_t>::length(kCameraName));
    Start(simulated, options);
    m_module = ::LoadLibraryW(ModuleUnderTest::File().c_str());
    EXPECT_NE(m_module, nullptr) << "the variable VX_MODULE has to name the module";
    EXPECT_EQ(CallModule("DllRegisterServer"), S_OK);
    SaveCameraAsDefault(camera.outputPixelType);
}

HostTest::~HostTest()
{
    if (graph) {
        graph->RemoveFilter(&sink.Filter());
        graph.Reset();
    }
    ::CoFreeUnusedLibraries();
    EXPECT_EQ(CallModule("DllCanUnloadNow"), S_OK) << "objects of the module are left";
    EXPECT_EQ(CallModule("DllUnregisterServer"), S_OK);
    ::FreeLibrary(m_module);
}

HRESULT HostTest::CallModule(const char* function) const
{
    const auto call = reinterpret_cast<HRESULT(STDAPICALLTYPE*)()>(
        reinterpret_cast<void*>(::GetProcAddress(m_module, function)));
    return call != nullptr ? call() : E_NOTIMPL;
}

void HostTest::SaveCameraAsDefault(UINT outputPixelType)
{
    VxComPtr<IVxDSSource> control;
    ASSERT_EQ(::CoCreateInstance(CLSID_VxDSSource, nullptr, CLSCTX_INPROC_SERVER, IID_IVxDSSource,
                                 control.PutVoid()),
              S_OK);
    const std::string address = simulated.ControlEndpoint().address.ToString();
    BSTR const deviceId = ::SysAllocString(std::wstring(address.begin(), address.end()).c_str());
    EXPECT_EQ(control->SetDeviceId(deviceId), S_OK);
    ::SysFreeString(deviceId);
    EXPECT_EQ(control->SetOutputPixelType(outputPixelType), S_OK);
    EXPECT_EQ(control->SaveDefault(), S_OK);
}

std::vector<ListedCamera> HostTest::ListCameras()
{
    std::vector<ListedCamera> cameras;
    VxComPtr<ICreateDevEnum> system;
    EXPECT_EQ(::CoCreateInstance(CLSID_SystemDeviceEnum, nullptr, CLSCTX_INPROC_SERVER, IID_ICreateDevEnum,
                                 system.PutVoid()),
              S_OK);
    VxComPtr<IEnumMoniker> monikers;
    EXPECT_EQ(system->CreateClassEnumerator(CLSID_VideoInputDeviceCategory, monikers.Put(), 0), S_OK);
    VxComPtr<IMoniker> moniker;
    while (monikers && monikers->Next(1, moniker.Put(), nullptr) == S_OK) {
        ListedCamera camera;
        VxComPtr<IPropertyBag> bag;
        EXPECT_EQ(moniker->BindToStorage(nullptr, nullptr, IID_IPropertyBag, bag.PutVoid()), S_OK);
        camera.friendlyName = ReadText(*bag.Get(), L"FriendlyName");
        EXPECT_EQ(moniker->BindToObject(nullptr, nullptr, IID_IBaseFilter, camera.filter.PutVoid()), S_OK);
        cameras.push_back(std::move(camera));
    }
    return cameras;
}

VxComPtr<IBaseFilter> HostTest::ChooseCamera()
{
    std::vector<ListedCamera> cameras = ListCameras();
    std::erase_if(cameras, [](const ListedCamera& each) { return each.friendlyName != kFilterName; });
    EXPECT_EQ(cameras.size(), 1u);
    return cameras.empty() ? VxComPtr<IBaseFilter>() : cameras.front().filter;
}

void HostTest::BuildGraph(const VxComPtr<IBaseFilter>& camera)
{
    ASSERT_TRUE(camera);
    ASSERT_EQ(::CoCreateInstance(CLSID_FilterGraph, nullptr, CLSCTX_INPROC_SERVER, IID_IGraphBuilder,
                                 graph.PutVoid()),
              S_OK);
    ASSERT_EQ(graph->AddFilter(camera.Get(), kFilterName), S_OK);
    ASSERT_EQ(graph->AddFilter(&sink.Filter(), L"Sink"), S_OK);
}

VxComPtr<IPin> HostTest::CapturePin(IBaseFilter& camera)
{
    VxComPtr<IEnumPins> pins;
    EXPECT_EQ(camera.EnumPins(pins.Put()), S_OK);
    VxComPtr<IPin> pin;
    while (pins->Next(1, pin.Put(), nullptr) == S_OK) {
        PIN_DIRECTION direction = PINDIR_INPUT;
        GUID category = GUID_NULL;
        DWORD bytes = 0;
        const auto properties = pin.As<IKsPropertySet>(IID_IKsPropertySet);
        if (pin->QueryDirection(&direction) == S_OK && direction == PINDIR_OUTPUT && properties &&
            properties->Get(AMPROPSETID_Pin, AMPROPERTY_PIN_CATEGORY, nullptr, 0, &category, sizeof(category),
                            &bytes) == S_OK &&
            category == PIN_CATEGORY_CAPTURE)
            return pin;
    }
    ADD_FAILURE() << "no pin is for capturing";
    return {};
}

CMediaType HostTest::Format(IAMStreamConfig& config)
{
    AM_MEDIA_TYPE* type = nullptr;
    EXPECT_EQ(config.GetFormat(&type), S_OK);
    CMediaType copy;
    if (type != nullptr)
        copy = *type;
    DeleteMediaType(type);
    return copy;
}

CMediaType HostTest::Capability(IAMStreamConfig& config, VIDEO_STREAM_CONFIG_CAPS& caps)
{
    int count = 0;
    int bytes = 0;
    EXPECT_EQ(config.GetNumberOfCapabilities(&count, &bytes), S_OK);
    EXPECT_EQ(count, 1);
    EXPECT_EQ(bytes, static_cast<int>(sizeof(caps)));
    AM_MEDIA_TYPE* type = nullptr;
    // S_OK and nothing else: browsers take S_FALSE for the end of the list.
    EXPECT_EQ(config.GetStreamCaps(0, &type, reinterpret_cast<BYTE*>(&caps)), S_OK);
    CMediaType copy;
    if (type != nullptr)
        copy = *type;
    DeleteMediaType(type);
    return copy;
}

void HostTest::Run()
{
    EXPECT_HRESULT_SUCCEEDED(graph.As<IMediaControl>(IID_IMediaControl)->Run());
}

void HostTest::Pause()
{
    EXPECT_HRESULT_SUCCEEDED(graph.As<IMediaControl>(IID_IMediaControl)->Pause());
}

void HostTest::StopAndSeeNothingMore()
{
    EXPECT_HRESULT_SUCCEEDED(graph.As<IMediaControl>(IID_IMediaControl)->Stop());
    const std::size_t atStop = sink.Samples().size();
    simulated.Stop(); // whatever still is to come comes while this waits for the camera's threads
    EXPECT_EQ(sink.Samples().size(), atStop) << "a sample came after the stop";
}

void HostTest::ExpectPictures(std::size_t atLeast)
{
    const CMediaType type = sink.Type();
    const BITMAPINFOHEADER& header = HeaderOf(type);
    const std::vector<HostSample> samples = sink.Samples();
    ASSERT_GE(samples.size(), atLeast);
    for (std::size_t i = 0; i < samples.size(); ++i) {
        SCOPED_TRACE("frame " + std::to_string(i));
        ASSERT_EQ(samples[i].timed, S_OK);
        ASSERT_LE(samples[i].start, samples[i].stop);
        ASSERT_FALSE(samples[i].hasNewType);
        ASSERT_NO_FATAL_FAILURE(ExpectPicture(samples[i].bytes, header));
    }
}

void HostTest::ExpectPicture(std::span<const std::byte> bytes, const BITMAPINFOHEADER& header)
{
    ASSERT_EQ(header.biWidth, static_cast<LONG>(kWidthPx));
    ASSERT_EQ(std::abs(header.biHeight), static_cast<LONG>(kHeightPx));
    ASSERT_EQ(bytes.size(), header.biSizeImage);
    ExpectPicture(ViewOf(bytes, header));
}

void HostTest::ExpectPicture(const simulator::PictureView& picture)
{
    const auto number = simulator::ReadFrameNumber(picture);
    ASSERT_TRUE(number) << "the picture does not show its number";
    const auto sent = simulator::TestPictureBgr(*number, kWidthPx, kHeightPx, 0x02180015 /* BGR8 */);
    for (std::uint32_t y = 0; y < kHeightPx; ++y) {
        for (std::uint32_t x = 0; x < kWidthPx; ++x) {
            const simulator::Colour pixel = picture.At(x, y);
            const std::byte* const expected = &sent[(std::size_t{y} * kWidthPx + x) * 3];
            ASSERT_TRUE(std::byte{pixel.blue} == expected[0] && std::byte{pixel.green} == expected[1] &&
                        std::byte{pixel.red} == expected[2])
                << "at " << x << ", " << y;
        }
    }
}
