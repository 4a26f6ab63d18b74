#include "hosts/HostTest.h"

// OBS's capture library: binds every device to list it, sets a changed capability, connects directly to a
// sink that offers a half type first.

namespace {

class ObsHostTest : public HostTest {
protected:
    /// Lets the sink offer a type that names major type and subtype only, and then the pin's own types of
    /// that subtype.
    void OfferHalfTypeFirst(IPin& pin, const GUID& subtype)
    {
        CMediaType half(&MEDIATYPE_Video);
        half.SetSubtype(&subtype);
        sink.Pin().offers = {half};
        VxComPtr<IEnumMediaTypes> types;
        ASSERT_EQ(pin.EnumMediaTypes(types.Put()), S_OK);
        AM_MEDIA_TYPE* type = nullptr;
        while (types->Next(1, &type, nullptr) == S_OK) {
            if (type->subtype == subtype)
                sink.Pin().offers.emplace_back(*type);
            DeleteMediaType(type);
        }
        ASSERT_EQ(sink.Pin().offers.size(), 2u);
        sink.Pin().onReceiveConnection = [subtype](IPin*, const AM_MEDIA_TYPE* offered) {
            return offered->subtype == subtype && offered->formattype == FORMAT_VideoInfo
                       ? S_OK
                       : VFW_E_TYPE_NOT_ACCEPTED;
        };
    }
};

TEST_F(ObsHostTest, ListsTheDeviceWithItsNameAndFormats)
{
    const VxComPtr<IBaseFilter> camera = ChooseCamera();
    const auto config = CapturePin(*camera.Get()).As<IAMStreamConfig>(IID_IAMStreamConfig);
    ASSERT_TRUE(config);
    VIDEO_STREAM_CONFIG_CAPS caps{};

    const CMediaType type = Capability(*config.Get(), caps);

    ASSERT_TRUE(type.formattype == FORMAT_VideoInfo); // others are left out of its list
    EXPECT_GT(caps.MinOutputSize.cx, 0);              // else the bitmap header's size would count
    EXPECT_EQ(caps.MaxOutputSize.cx, static_cast<LONG>(kWidthPx));
    EXPECT_EQ(caps.MaxOutputSize.cy, static_cast<LONG>(kHeightPx));
}

TEST_F(ObsHostTest, ConnectsWithTheHalfTypeRefused)
{
    const VxComPtr<IBaseFilter> camera = ChooseCamera();
    BuildGraph(camera);
    const VxComPtr<IPin> pin = CapturePin(*camera.Get());
    const auto config = pin.As<IAMStreamConfig>(IID_IAMStreamConfig);
    const CMediaType current = Format(*config.Get());
    ASSERT_TRUE(current.majortype == MEDIATYPE_Video);
    VIDEO_STREAM_CONFIG_CAPS caps{};
    CMediaType closest = Capability(*config.Get(), caps);
    HeaderOf(closest).biWidth = caps.MaxOutputSize.cx;
    HeaderOf(closest).biHeight = caps.MaxOutputSize.cy;
    reinterpret_cast<VIDEOINFOHEADER*>(closest.Format())->AvgTimePerFrame = caps.MinFrameInterval;
    ASSERT_EQ(config->SetFormat(&closest), S_OK);
    OfferHalfTypeFirst(*pin.Get(), closest.subtype);

    ASSERT_EQ(graph->ConnectDirect(pin.Get(), &sink.Pin(), nullptr), S_OK);
    Run();
    ASSERT_TRUE(sink.WaitForSamples(10));
    StopAndSeeNothingMore();

    ExpectPictures(10);
}

TEST_F(ObsHostTest, GetsNothingMoreAfterItSaidThatItIsFlushing)
{
    const VxComPtr<IBaseFilter> camera = ChooseCamera();
    BuildGraph(camera);
    const VxComPtr<IPin> pin = CapturePin(*camera.Get());
    Gate refused;
    sink.Pin().onReceive = [&](IMediaSample*) {
        refused.Pass();
        return S_FALSE;
    };
    ASSERT_EQ(graph->ConnectDirect(pin.Get(), &sink.Pin(), nullptr), S_OK);

    Run();
    ASSERT_TRUE(refused.WaitFor());
    // As many frames as would have come meanwhile.
    const std::uint64_t sent = simulated.FramesSent();
    while (simulated.IsRunning() && simulated.FramesSent() < sent + 10)
        ::Sleep(1);

    EXPECT_EQ(refused.Count(), 1);
    StopAndSeeNothingMore();
}

} // namespace
