#include "hosts/HostTest.h"

#include "VxSimulator/picture/FrameNumberStrip.h"
#include "VxSimulator/picture/PictureView.h"
#include "system/CameraColours.h"

#include <algorithm>
#include <array>
#include <cstdlib>

// Browsers: their sink proposes complete types of the size that they want, in formats of which the filter has
// few; both pins are disconnected at the end, and the next capture connects again.

namespace {

// FOURCC 'I420'; declared in no header of the tool chain.
constexpr GUID kSubtypeI420 = {0x30323449, 0x0000, 0x0010, {0x80, 0x00, 0x00, 0xAA, 0x00, 0x38, 0x9B, 0x71}};

class BrowserHostTest : public HostTest {
protected:
    explicit BrowserHostTest(HostCamera camera = {}) : HostTest(camera) {}

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
    void SetCapability(IPin& pin, const GUID& subtype = MEDIASUBTYPE_RGB24)
    {
        const auto config = VxComPtr<IPin>(&pin).As<IAMStreamConfig>(IID_IAMStreamConfig);
        ASSERT_TRUE(config);
        VIDEO_STREAM_CONFIG_CAPS caps{};
        CMediaType type = Capability(*config.Get(), caps);
        ASSERT_TRUE(type.majortype == MEDIATYPE_Video && type.formattype == FORMAT_VideoInfo);
        ASSERT_TRUE(type.subtype == subtype); // one that browsers know
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
        ASSERT_NO_FATAL_FAILURE(ExpectPictures(capture * 3)); // those of the captures before, too
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
        ASSERT_NO_FATAL_FAILURE(ExpectPicture(picture));
    }
}

/// The same with a camera whose pictures are 4:2:2, delivered as such.
class BrowserOfYuvHostTest : public BrowserHostTest {
protected:
    static constexpr const char* kPixelFormat = "YUV422_8_UYVY";

    BrowserOfYuvHostTest() : BrowserHostTest({kPixelFormat, 1}) {}

    /// The number that the picture's brightness shows.
    static std::optional<std::uint64_t> NumberOf(const HostSample& sample)
    {
        std::vector<std::byte> brightness;
        for (std::size_t i = 0; i < sample.bytes.size(); i += 2)
            brightness.push_back(sample.bytes[i]);
        simulator::PictureView grey; // this format has no bottom-up form
        grey.pixels = brightness;
        grey.widthPx = kWidthPx;
        grey.heightPx = kHeightPx;
        grey.strideBytes = kWidthPx;
        grey.bytesPerPixel = 1;
        return simulator::ReadFrameNumber(grey);
    }

    /// Every byte is what the formula makes of the colours of the camera's frame; by two levels at most it
    /// differs where rounding on the way to these colours does.
    static void ExpectYuy2(const HostSample& sample)
    {
        const auto number = NumberOf(sample);
        ASSERT_TRUE(number) << "the picture does not show its number";
        const std::vector<std::uint8_t> expected = AsYuy2(ColoursOfCamera(
            *number, kWidthPx, kHeightPx, *simulator::FindPictureFormat(kPixelFormat), YuvRange::Limited));
        ASSERT_EQ(sample.bytes.size(), expected.size());
        std::size_t inexact = 0;
        for (std::size_t i = 0; i < expected.size(); ++i) {
            const int distance = std::abs(static_cast<int>(sample.bytes[i]) - expected[i]);
            ASSERT_LE(distance, 2) << "byte " << i;
            inexact += distance > 0 ? 1 : 0;
        }
        EXPECT_LE(inexact, expected.size() / 4) << "what is off everywhere is not rounding";
    }
};

TEST_F(BrowserOfYuvHostTest, ChromiumGetsTheYuy2ThatItProposes)
{
    const VxComPtr<IBaseFilter> camera = ChooseCamera();
    BuildGraph(camera);
    const VxComPtr<IPin> pin = CapturePin(*camera.Get());
    SetCapability(*pin.Get(), MEDIASUBTYPE_YUY2);
    ProposeFormats(kWidthPx, kHeightPx);

    ASSERT_EQ(graph->ConnectDirect(pin.Get(), &sink.Pin(), nullptr), S_OK);
    Run();
    ASSERT_TRUE(sink.WaitForSamples(5));
    StopAndSeeNothingMore();

    const CMediaType type = sink.Type();
    EXPECT_TRUE(type.subtype == MEDIASUBTYPE_YUY2);
    EXPECT_EQ(HeaderOf(type).biCompression, kYuy2);
    for (const HostSample& sample : sink.Samples())
        ASSERT_NO_FATAL_FAILURE(ExpectYuy2(sample));
}

} // namespace
