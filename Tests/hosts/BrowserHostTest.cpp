#include "hosts/HostTest.h"

#include "VxSimulator/picture/FrameNumberStrip.h"
#include "VxSimulator/picture/PictureView.h"

// Browsers: their sink proposes complete types of the size that they want, in formats of which the filter has
// few; both pins are disconnected at the end, and the next capture connects again.

namespace {

// FOURCC 'I420'; declared in no header of the tool chain.
constexpr GUID kSubtypeI420 = {0x30323449, 0x0000, 0x0010, {0x80, 0x00, 0x00, 0xAA, 0x00, 0x38, 0x9B, 0x71}};

class BrowserHostTest : public HostTest {
protected:
    static constexpr DWORD kI420 = 0x30323449;
    static constexpr DWORD kYuy2 = 0x32595559;
    static constexpr DWORD kUyvy = 0x59565955;

    /// The sink's proposals, in a browser's order.
    void ProposeFormats(std::uint32_t widthPx, std::uint32_t heightPx)
    {
        sink.Pin().offers = {
            BuiltType(kSubtypeI420, 12, kI420, widthPx, heightPx),
            BuiltType(MEDIASUBTYPE_YUY2, 16, kYuy2, widthPx, heightPx),
            BuiltType(MEDIASUBTYPE_UYVY, 16, kUyvy, widthPx, heightPx),
            BuiltType(MEDIASUBTYPE_RGB24, 24, BI_RGB, widthPx, heightPx),
            BuiltType(MEDIASUBTYPE_RGB32, 32, BI_RGB, widthPx, heightPx),
        };
    }

    /// Enumerates the capabilities and sets the one that fits.
    void SetCapability(IPin& pin)
    {
        const auto config = VxComPtr<IPin>(&pin).As<IAMStreamConfig>(IID_IAMStreamConfig);
        ASSERT_TRUE(config);
        VIDEO_STREAM_CONFIG_CAPS caps{};
        CMediaType type = Capability(*config.Get(), caps);
        ASSERT_TRUE(type.majortype == MEDIATYPE_Video && type.formattype == FORMAT_VideoInfo);
        ASSERT_TRUE(type.subtype == MEDIASUBTYPE_RGB24); // one that browsers know
        HeaderOf(type).biWidth = static_cast<LONG>(kWidthPx);
        HeaderOf(type).biHeight = static_cast<LONG>(kHeightPx);
        ASSERT_EQ(config->SetFormat(&type), S_OK);
    }
};

TEST_F(BrowserHostTest, ChromiumGetsTheOneProposalThatTheFilterHas)
{
    const VxComPtr<IBaseFilter> camera = ChooseCamera();
    BuildGraph(camera);
    const VxComPtr<IPin> pin = CapturePin(*camera.Get());
    SetCapability(*pin.Get());
    ProposeFormats(kWidthPx, kHeightPx);

    ASSERT_EQ(graph->ConnectDirect(pin.Get(), &sink.Pin(), nullptr), S_OK);
    Pause();
    Run();
    ASSERT_TRUE(sink.WaitForSamples(10));
    EXPECT_TRUE(sink.Type().subtype == MEDIASUBTYPE_RGB24);
    StopAndSeeNothingMore();
    ExpectPictures(10);

    EXPECT_EQ(graph->Disconnect(pin.Get()), S_OK);
    EXPECT_EQ(graph->Disconnect(&sink.Pin()), S_OK);
}

TEST_F(BrowserHostTest, WebRtcConnectsWithACompleteType)
{
    const VxComPtr<IBaseFilter> camera = ChooseCamera();
    BuildGraph(camera);
    const VxComPtr<IPin> pin = CapturePin(*camera.Get());
    SetCapability(*pin.Get());
    const CMediaType type = BuiltType(MEDIASUBTYPE_RGB32, 32, BI_RGB, kWidthPx, kHeightPx);

    ASSERT_EQ(graph->ConnectDirect(pin.Get(), &sink.Pin(), &type), S_OK);
    Pause();
    Run();
    ASSERT_TRUE(sink.WaitForSamples(10));
    EXPECT_TRUE(sink.Type().subtype == MEDIASUBTYPE_RGB32);
    StopAndSeeNothingMore();

    ExpectPictures(10);
}

TEST_F(BrowserHostTest, SecondCaptureConnectsTheSameFilterAgain)
{
    const VxComPtr<IBaseFilter> camera = ChooseCamera();
    BuildGraph(camera);
    const VxComPtr<IPin> pin = CapturePin(*camera.Get());
    ProposeFormats(kWidthPx, kHeightPx);

    for (std::size_t capture = 1; capture <= 3; ++capture) {
        SetCapability(*pin.Get());
        ASSERT_EQ(graph->ConnectDirect(pin.Get(), &sink.Pin(), nullptr), S_OK);
        Run();
        ASSERT_TRUE(sink.WaitForSamples(sink.Samples().size() + 3));
        EXPECT_HRESULT_SUCCEEDED(graph.As<IMediaControl>(IID_IMediaControl)->Stop());
        EXPECT_EQ(graph->Disconnect(pin.Get()), S_OK);
        EXPECT_EQ(graph->Disconnect(&sink.Pin()), S_OK);
    }
}

TEST_F(BrowserHostTest, ProposalOfAnotherSizeIsTakenAndHoldsThePicture)
{
    // Capabilities ignored: the bitmap is larger than the picture, which lies in its first rows.
    const VxComPtr<IBaseFilter> camera = ChooseCamera();
    BuildGraph(camera);
    const VxComPtr<IPin> pin = CapturePin(*camera.Get());
    ProposeFormats(kWidthPx * 2, kHeightPx * 2);

    ASSERT_EQ(graph->ConnectDirect(pin.Get(), &sink.Pin(), nullptr), S_OK);
    Run();
    ASSERT_TRUE(sink.WaitForSamples(5));
    StopAndSeeNothingMore();

    for (const HostSample& sample : sink.Samples()) {
        ASSERT_EQ(sample.bytes.size(), std::size_t{kWidthPx} * 2 * kHeightPx * 2 * 3);
        simulator::PictureView picture; // the lower left quarter, as a viewer sees a bottom-up bitmap
        picture.pixels = sample.bytes;
        picture.widthPx = kWidthPx;
        picture.heightPx = kHeightPx;
        picture.strideBytes = std::size_t{kWidthPx} * 2 * 3;
        picture.rowOrder = simulator::RowOrder::BottomUp;
        EXPECT_TRUE(simulator::ReadFrameNumber(picture)) << "the picture does not show its number";
    }
}

} // namespace
