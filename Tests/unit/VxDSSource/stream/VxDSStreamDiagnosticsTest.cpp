#include "VxDSSource/overlay/OverlayText.h"
#include "VxDSSource/stream/VxMediaTypes.h"
#include "support/directshow/Gate.h"
#include "unit/VxDSSource/overlay/WorkingDirectory.h"

#include "CanarySample.h"
#include "PinFixture.h"
#include "support/picture/ReferencePictures.h"

#include <opencv2/core.hpp>
#include <opencv2/imgcodecs.hpp>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <functional>
#include <initializer_list>
#include <string>
#include <thread>
#include <tuple>
#include <utility>

namespace {

using vxds::Setting;

constexpr std::uint32_t kBgr8 = 0x02180015;
constexpr std::uint32_t kMono8 = 0x01080001;
constexpr std::uint32_t kYuyv = 0x02100032;

constexpr wchar_t kStreamingText[] = L"Device: cam\r\n"
                                     L"Role: controller and data receiver\r\n"
                                     L"Device controller: connected\r\n"
                                     L"Stream receiver: opened\r\n"
                                     L"Render size: 641 x 480\r\n"
                                     L"Last image size: 641 x 480\r\n"
                                     L"Acquisition rate: 29.9 FPS\r\n"
                                     L"Bandwidth: 0.0 Mb/s\r\n"
                                     L"Blocks dropped by device: N/A\r\n"
                                     L"Blocks dropped by acquisition pipeline: 0\r\n"
                                     L"Blocks dropped by filter: 1\r\n"
                                     L"Error count: 0\r\n"
                                     L"Last error: N/A\r\n"
                                     L"Last warning: N/A\r\n";

constexpr wchar_t kUnconnectedText[] = L"Device: N/A\r\n"
                                       L"Role: controller and data receiver\r\n"
                                       L"Device controller: not allocated\r\n"
                                       L"Stream receiver: not allocated\r\n"
                                       L"Render size: 1280 x 720\r\n"
                                       L"Last image size: N/A\r\n"
                                       L"Acquisition rate: 0.0 FPS\r\n"
                                       L"Bandwidth: 0.0 Mb/s\r\n"
                                       L"Blocks dropped by device: N/A\r\n"
                                       L"Blocks dropped by acquisition pipeline: 0\r\n"
                                       L"Blocks dropped by filter: 0\r\n"
                                       L"Error count: 0\r\n"
                                       L"Last error: N/A\r\n"
                                       L"Last warning: N/A\r\n";

/// A text with some of its parts replaced, each where it is found first.
std::wstring Changed(std::wstring text, std::initializer_list<std::pair<std::wstring, std::wstring>> changes)
{
    for (const auto& [from, to] : changes) {
        const std::size_t at = text.find(from);
        EXPECT_NE(at, std::wstring::npos);
        if (at != std::wstring::npos)
            text.replace(at, from.size(), to);
    }
    return text;
}

/// What a camera that streams without statistics shows.
std::wstring QuietText(const std::wstring& renderSize, const std::wstring& lastImageSize)
{
    return Changed(kStreamingText, {{L"Render size: 641 x 480", L"Render size: " + renderSize},
                                    {L"Last image size: 641 x 480", L"Last image size: " + lastImageSize},
                                    {L"29.9", L"0.0"},
                                    {L"filter: 1", L"filter: 0"}});
}

/// A pin with diagnostics on, in a directory of its own.
class VxDSStreamDiagnosticsTest : public PinFixture {
protected:
    VxDSStreamDiagnosticsTest() { Pin().SetDiagnosticsEnabled(true); }
    ~VxDSStreamDiagnosticsTest() override
    {
        if (m_isStreaming)
            std::ignore = Pin().OnThreadDestroy();
    }

    void Stream(int width, int height)
    {
        dynamic_cast<ScriptedInteger&>(*TheCamera().device->Get(VxString("Width"))).value = width;
        dynamic_cast<ScriptedInteger&>(*TheCamera().device->Get(VxString("Height"))).value = height;
        ConnectAndForget();
        std::ignore = Pin().OnThreadCreate();
        m_isStreaming = true;
    }

    /// Makes one of the offered types, with this height, the pin's own.
    void UseType(int position, int width, int height)
    {
        CMediaType type;
        ASSERT_TRUE(vxds::BuildOfferedType(
            position, {static_cast<std::uint32_t>(width), static_cast<std::uint32_t>(height)}, type));
        ASSERT_EQ(Pin().SetMediaType(&type), S_OK);
    }

    static void Queue(const ReferencePicture& picture, std::size_t waitingAfter = 0)
    {
        TheCamera().QueuePicture({static_cast<std::uint32_t>(picture.width),
                                  static_cast<std::uint32_t>(picture.height), kBgr8, AsBgr8(picture), 0},
                                 waitingAfter);
    }

    /// A frame that is all zero but for the text.
    std::vector<std::uint8_t> ZeroWithText(CanarySample& sample, const std::wstring& text, LONG width,
                                           LONG height, WORD bits)
    {
        return WithText(std::vector<std::uint8_t>(sample.Bytes().size(), 0), text, width, height, bits);
    }

    /// Fills a sample while another thread holds the mutex and the link, in the midst of what it does there.
    /// @param arm  makes the other thread's work call this in its midst
    void FillWhile(CanarySample& sample, const std::function<void(std::function<void()>)>& arm,
                   const std::function<void()>& work)
    {
        Gate hasMutex;
        Gate isDone;
        arm([&] {
            hasMutex.Pass();
            EXPECT_TRUE(isDone.WaitFor());
        });
        std::thread other(work);
        EXPECT_TRUE(hasMutex.WaitFor());
        Fill(sample); // waits less long than the other thread has the mutex
        isDone.Pass();
        other.join();
    }

    void Fill(CanarySample& sample) { EXPECT_EQ(Pin().FillBuffer(&sample), S_OK); }

    /// A frame of these bytes with the text on it; once for each frame that the pin draws on.
    std::vector<std::uint8_t> WithText(std::vector<std::uint8_t> bytes, const std::wstring& text, LONG width,
                                       LONG height, WORD bits)
    {
        vxds::OverlayFrame frame;
        frame.memory = bytes;
        frame.header.biSize = sizeof(BITMAPINFOHEADER);
        frame.header.biWidth = width;
        frame.header.biHeight = height;
        frame.header.biPlanes = 1;
        frame.header.biBitCount = bits;
        EXPECT_EQ(vxds::DrawOverlayText(m_gdiPlus, frame, text), Gdiplus::Ok);
        return bytes;
    }

    [[nodiscard]] std::int32_t PixelVariation() { return Pin().Statistics().PixelVariationCount(); }

    TemporaryFolder m_folder{L"diagnostics-"};
    WorkingDirectory m_current{m_folder.Path()};
    vxds::GdiPlusSession m_gdiPlus; // sees the same frames as the pin's, and so learns the same
    bool m_isStreaming = false;
};

// --- The summary.

TEST_F(VxDSStreamDiagnosticsTest, ShowsTheSummaryOverThePicture)
{
    for (const int position : {0, 1, 2}) { // RGB24, RGB32, ARGB32
        for (const int height : {480, -480}) {
            TheCamera().stream->Add<ScriptedFloat>("AcquisitionRate").value = 29.9;
            Stream(641, 480);
            UseType(position, 641, height);
            const WORD bits = position == 0 ? 24 : 32;
            const ReferencePicture picture = TestPicture(641, 480);
            Queue(TestPicture(641, 480), 2); // skipped
            Queue(picture);
            CanarySample sample(std::size_t{641} * 480 * bits / 8);

            Fill(sample);

            EXPECT_EQ(sample.Copy(),
                      WithText(AsBitmap(picture, bits / 8U, height > 0), kStreamingText, 641, height, bits))
                << bits << " bits, height " << height;
            for (std::size_t i = 3; bits == 32 && i < sample.Bytes().size(); i += 4)
                ASSERT_EQ(sample.Bytes()[i], 255) << "opaque, also under the text";
            EXPECT_TRUE(sample.mediaTime);
            std::ignore = Pin().OnThreadDestroy();
            m_isStreaming = false;
            Pin().CloseConnection();
        }
    }
}

TEST_F(VxDSStreamDiagnosticsTest, ShowsTheSummaryOnAZeroFrame)
{
    CanarySample sample(std::size_t{1280} * 720 * 4); // the type that a pin has at first

    Fill(sample);

    EXPECT_EQ(sample.Copy(),
              WithText(std::vector<std::uint8_t>(sample.Bytes().size(), 0), kUnconnectedText, 1280, 720, 32));
    EXPECT_FALSE(sample.IsAll(0));
    EXPECT_FALSE(sample.mediaTime);
}

TEST_F(VxDSStreamDiagnosticsTest, ShowsTheSummaryWhileSomebodyElseConnects)
{
    Store(Setting::DeviceId, L"slow");
    CanarySample sample(std::size_t{1280} * 720 * 4);

    FillWhile(
        sample, [](std::function<void()> midst) { TheCamera().onConnect = std::move(midst); },
        [this] { Pin().ApplyConnection(); });

    EXPECT_EQ(
        sample.Copy(),
        ZeroWithText(sample, Changed(kUnconnectedText, {{L"Device: N/A", L"Device: slow"}}), 1280, 720, 32));
}

TEST_F(VxDSStreamDiagnosticsTest, ShowsTheLastResultsWhileSomebodyElseReconnects)
{
    TheCamera().connecting = VxError::AccessDenied;
    ConnectAndForget();
    Store(Setting::DeviceId, L"slow");
    CanarySample sample(std::size_t{1280} * 720 * 4);

    FillWhile(
        sample, [](std::function<void()> midst) { TheCamera().onConnect = std::move(midst); },
        [this] { Pin().ApplyConnection(); });

    EXPECT_EQ(sample.Copy(),
              ZeroWithText(sample,
                           Changed(kUnconnectedText,
                                   {{L"Device: N/A", L"Device: slow"},
                                    {L"controller: not allocated",
                                     L"controller: not allocated, last connect ACCESS_DENIED"},
                                    {L"receiver: not allocated", L"receiver: not allocated, last open OK"}}),
                           1280, 720, 32));
}

TEST_F(VxDSStreamDiagnosticsTest, ShowsTheLinkThatIsThereWhileSomebodyElseUsesIt)
{
    TheCamera().stream->Add<ScriptedFloat>("AcquisitionRate").value = 29.9; // cannot be read meanwhile
    Stream(640, 480);
    UseType(0, 640, 480);
    CanarySample sample(640 * 480 * 3);

    FillWhile(
        sample,
        [](const std::function<void()>& midst) {
            TheCamera().log.onCall = [midst](const std::string& call) {
                if (call.starts_with("writer.Store(device"))
                    midst();
            };
        },
        [this] { std::ignore = Pin().StoreConfiguration(VxConfigurationForm::Full); });

    EXPECT_EQ(sample.Copy(), ZeroWithText(sample, QuietText(L"640 x 480", L"N/A"), 640, 480, 24));
}

TEST_F(VxDSStreamDiagnosticsTest, ShowsALinkThatIsLostAlsoWhileItIsUsed)
{
    Stream(640, 480);
    UseType(0, 640, 480);
    TheCamera().isConnected = false;
    CanarySample before(640 * 480 * 3);
    CanarySample meanwhile(640 * 480 * 3);
    const std::wstring text =
        Changed(QuietText(L"640 x 480", L"N/A"), {{L"controller: connected", L"controller: not connected"}});

    Fill(before);
    FillWhile(
        meanwhile,
        [](const std::function<void()>& midst) {
            TheCamera().log.onCall = [midst](const std::string& call) {
                if (call.starts_with("writer.Store(stream"))
                    midst();
            };
        },
        [this] { std::ignore = Pin().StoreConfiguration(VxConfigurationForm::Full); });

    EXPECT_EQ(before.Copy(), ZeroWithText(before, text, 640, 480, 24));
    EXPECT_EQ(meanwhile.Copy(), ZeroWithText(meanwhile, text, 640, 480, 24));
}

TEST_F(VxDSStreamDiagnosticsTest, ShowsTheSummaryOnAFrameThatCouldNotBeDrawn)
{
    Stream(4, 2);
    UseType(0, 641, 480);
    Store(Setting::KernelSize, 4); // from a configuration: no setter takes it
    Queue(TestPicture(4, 2));
    CanarySample sample(641 * 480 * 3);

    Fill(sample);

    EXPECT_EQ(sample.Copy(), ZeroWithText(sample, QuietText(L"4 x 2", L"N/A"), 641, 480, 24));
    EXPECT_EQ(PixelVariation(), 0);
}

TEST_F(VxDSStreamDiagnosticsTest, DrawsIntoYuy2AsIfItWereRgb)
{
    Store(Setting::OutputPixelType, 1);
    Stream(640, 480);
    UseType(3, 640, 480);
    const std::vector<std::uint8_t> grey(std::size_t{640} * 480 * 2, 128);
    TheCamera().QueuePicture({640, 480, kYuyv, grey, 0});
    TheCamera().QueuePicture({640, 480, kYuyv, grey, 0});
    CanarySample with(grey.size());
    CanarySample without(grey.size());

    Fill(with);
    Pin().SetDiagnosticsEnabled(false);
    Fill(without);

    // The last image size is of the RGB path only.
    EXPECT_EQ(with.Copy(), WithText(without.Copy(), QuietText(L"640 x 480", L"N/A"), 640, 480, 16));
    EXPECT_NE(with.Copy(), without.Copy());
}

TEST_F(VxDSStreamDiagnosticsTest, ShowsWhyThereIsNoPicture)
{
    Store(Setting::OutputPixelType, 1);
    Stream(640, 480);
    UseType(3, 640, 480);
    TheCamera().QueuePicture({640, 480, kMono8, std::vector<std::uint8_t>(640 * 480, 200), 0});
    CanarySample sample(640 * 480 * 2);

    Fill(sample);

    const std::wstring text =
        Changed(QuietText(L"640 x 480", L"N/A"),
                {{L"warning: N/A", L"warning: No pixel conversion available to YUV422"}});
    EXPECT_EQ(sample.Copy(), ZeroWithText(sample, text, 640, 480, 16));
}

TEST_F(VxDSStreamDiagnosticsTest, GivesTheBufferBackBeforeItDraws)
{
    Stream(4, 2);
    UseType(0, 4, 2);
    Queue(TestPicture(4, 2));
    TheCamera().log.Clear();
    CanarySample sample(24);

    Fill(sample);

    const Lines calls = TheCamera().log.All();
    const auto released = std::ranges::find(calls, "pipeline.Release(#0)");
    const auto asked = std::ranges::find(calls, "device.IsConnected");
    ASSERT_NE(released, calls.end());
    ASSERT_NE(asked, calls.end());
    EXPECT_LT(released, asked);
}

TEST_F(VxDSStreamDiagnosticsTest, AsksForNothingWhileDiagnosticsAreOff)
{
    Stream(641, 480);
    UseType(0, 641, 480);
    const ReferencePicture picture = TestPicture(641, 480);
    Queue(picture);
    Queue(picture);
    CanarySample with(641 * 480 * 3);
    CanarySample without(641 * 480 * 3);
    TheCamera().log.Clear();

    Fill(with);
    const Lines callsWith = TheCamera().log.All();
    Pin().SetDiagnosticsEnabled(false);
    TheCamera().log.Clear();
    Fill(without);
    const Lines callsWithout = TheCamera().log.All();

    EXPECT_EQ(without.Copy(), AsBitmap(picture, 3, true));
    EXPECT_EQ(callsWithout, (Lines{"pipeline.Retrieve(1000)", "pipeline.GetOutputQueueSize",
                                   "image.Attach 641x480 02180015 padding 0", "Convert #1 flipped",
                                   "pipeline.Release(#1)"}));
    EXPECT_EQ(callsWith, (Lines{"pipeline.Retrieve(1000)", "pipeline.GetOutputQueueSize",
                                "image.Attach 641x480 02180015 padding 0", "Convert #0 flipped",
                                "pipeline.Release(#0)", "device.IsConnected", "stream.IsOpen"}));
}

TEST_F(VxDSStreamDiagnosticsTest, DrawsNoTextOnASampleThatIsSmallerThanItsType)
{
    Stream(4, 2);
    for (const int position : {0, 1}) {
        UseType(position, 640, 480);
        for (const std::size_t bytes : {1u, 100u, 640u * 480u * 3u - 1u}) {
            Queue(TestPicture(4, 2));
            Queue(TestPicture(4, 2));
            CanarySample with(bytes);
            CanarySample without(bytes);
            Pin().SetDiagnosticsEnabled(true);

            Fill(with);
            Pin().SetDiagnosticsEnabled(false); // the next frame is cleared, too
            Fill(without);

            EXPECT_EQ(with.Copy(), without.Copy()) << position << ", " << bytes;
            EXPECT_EQ(std::ranges::count(with.Bytes(), CanarySample::kStale), 0) << position << ", " << bytes;
        }
    }
}

TEST_F(VxDSStreamDiagnosticsTest, SurvivesATypeWithoutABlock)
{
    Stream(4, 2);
    CMediaType none;
    ASSERT_EQ(Pin().SetMediaType(&none), S_OK);
    Queue(TestPicture(4, 2));
    CanarySample sample(24);

    Fill(sample);

    EXPECT_TRUE(sample.IsAll(0));
}

// --- Hot pixels.

TEST_F(VxDSStreamDiagnosticsTest, CountsHotPixelsAtSourceSizeBeforeTheFilter)
{
    Stream(40, 30);
    Store(Setting::KernelSize, 3);
    Store(Setting::ZoomValue, 9); // the defect lies outside of what is shown
    for (const int position : {0, 1}) {
        UseType(position, 40, 30);
        ReferencePicture picture{40, 30, {}};
        picture.pixels.assign(1200, {100, 100, 100});
        picture.pixels[40 * 2 + 3] = {255, 255, 255};
        Queue(picture);
        CanarySample sample(40 * 30 * 4);

        Fill(sample);

        EXPECT_EQ(PixelVariation(), 1);
        EXPECT_EQ(Pin().Statistics().AnalysedSize(), (vxds::PictureSize{40, 30}));
        EXPECT_EQ(sample.Bytes()[0], 100) << "the delivered frame is not the diagnostic's";
        EXPECT_EQ(std::filesystem::exists(L"HotPixelDiagnostic\\visual_map.png"), true);
        std::filesystem::remove_all(L"HotPixelDiagnostic");
    }
}

TEST_F(VxDSStreamDiagnosticsTest, CountsHotPixelsOfAYuvPicture)
{
    Store(Setting::OutputPixelType, 1);
    Store(Setting::KernelSize, 5);
    Stream(40, 30);
    UseType(3, 40, 30);
    std::vector<std::uint8_t> grey(std::size_t{40} * 30 * 2, 128);
    grey[(40 * 10 + 20) * 2] = 235; // white, in luma
    TheCamera().QueuePicture({40, 30, kYuyv, grey, 0});
    CanarySample sample(grey.size());

    Fill(sample);

    EXPECT_EQ(PixelVariation(), 1);
}

TEST_F(VxDSStreamDiagnosticsTest, ShowsTheScore)
{
    Stream(640, 480);
    Store(Setting::KernelSize, 3);
    UseType(0, 640, 480);
    ReferencePicture picture{640, 480, {}};
    picture.pixels.assign(640 * 480, {100, 100, 100});
    for (std::size_t y = 400; y < 480; y += 4) // 20 rows of 160 pixels: 1.04 %
        for (std::size_t x = 0; x < 640; x += 4)
            picture.pixels[y * 640 + x] = {255, 255, 255};
    Queue(picture);
    CanarySample sample(640 * 480 * 3);

    Fill(sample);

    EXPECT_EQ(PixelVariation(), 3200);
    const std::wstring text = QuietText(L"640 x 480", L"640 x 480") + L"Pixel variation score(%): 1.0\r\n";
    EXPECT_EQ(sample.Copy(),
              WithText(std::vector<std::uint8_t>(sample.Bytes().size(), 100), text, 640, 480, 24))
        << "the median has taken the defects away";
}

// No receiver is told the camera's size: the score is that of the picture as it arrived.
TEST_F(VxDSStreamDiagnosticsTest, ShowsTheScoreOfAReceiver)
{
    for (const std::uint32_t role : {1u, 2u}) {
        Store(Setting::Role, role);
        Store(Setting::UnicastPort, 50000);
        Store(Setting::Width, 640);
        Store(Setting::Height, 480);
        Store(Setting::KernelSize, 3);
        Stream(1, 1); // what the camera would say; nobody asks it
        UseType(0, 640, 480);
        ReferencePicture picture{640, 480, {}};
        picture.pixels.assign(640 * 480, {100, 100, 100});
        for (std::size_t x = 0; x < 616; x += 2) // 308 pixels of 307200: 0.1 %
            picture.pixels[470 * 640 + x] = {255, 255, 255};
        Queue(picture);
        CanarySample sample(640 * 480 * 3);

        Fill(sample);

        EXPECT_EQ(PixelVariation(), 308);
        const std::wstring text =
            Changed(QuietText(L"640 x 480", L"640 x 480"),
                    {{L"controller and data receiver",
                      role == 1 ? L"unicast receiver, port 50000" : L"multicast receiver, 239.192.1.1:1042"},
                     {L"Device controller: connected", L"Device controller: not allocated"}}) +
            L"Pixel variation score(%): 0.1\r\n";
        EXPECT_EQ(sample.Copy(),
                  WithText(std::vector<std::uint8_t>(sample.Bytes().size(), 100), text, 640, 480, 24))
            << role;
        std::ignore = Pin().OnThreadDestroy();
        m_isStreaming = false;
        Pin().CloseConnection();
    }
}

TEST_F(VxDSStreamDiagnosticsTest, CountsNothingWithoutAKernel)
{
    Stream(40, 30);
    UseType(0, 40, 30);
    for (const std::uint32_t zoom : {0u, 5u}) { // without and with processing
        Store(Setting::ZoomValue, zoom);
        Store(Setting::KernelSize, 3);
        Queue(TestPicture(40, 30));
        CanarySample first(40 * 30 * 3);
        Fill(first);
        EXPECT_GT(PixelVariation(), 0);
        Store(Setting::KernelSize, 0U);
        Queue(TestPicture(40, 30));
        std::filesystem::remove_all(L"HotPixelDiagnostic");
        CanarySample second(40 * 30 * 3);

        Fill(second);

        EXPECT_EQ(PixelVariation(), 0);
        EXPECT_FALSE(std::filesystem::exists(L"HotPixelDiagnostic"));
    }
}

TEST_F(VxDSStreamDiagnosticsTest, CountsNothingWhileDiagnosticsAreOff)
{
    Stream(40, 30);
    UseType(0, 40, 30);
    Store(Setting::KernelSize, 3);
    Queue(TestPicture(40, 30));
    CanarySample first(40 * 30 * 3);
    Fill(first);
    const std::int32_t before = PixelVariation();
    Pin().SetDiagnosticsEnabled(false);
    std::filesystem::remove_all(L"HotPixelDiagnostic");
    Queue(TestPicture(40, 30));
    CanarySample second(40 * 30 * 3);

    Fill(second);

    EXPECT_GT(before, 0);
    EXPECT_EQ(PixelVariation(), before) << "stays until the next run";
    EXPECT_FALSE(std::filesystem::exists(L"HotPixelDiagnostic"));
}

// --- For people.

TEST_F(VxDSStreamDiagnosticsTest, LeavesAPictureOfAnOverlaidFrame)
{
    const char* const output = std::getenv("VX_TEST_OUTPUT"); // a path of this machine
    ASSERT_NE(output, nullptr) << "run by ctest, or name a folder in VX_TEST_OUTPUT";
    Stream(1280, 720);
    UseType(0, 1280, 720);
    ReferencePicture picture{1280, 720, {}};
    for (std::size_t y = 0; y < 720; ++y)
        for (std::size_t x = 0; x < 1280; ++x)
            picture.pixels.push_back({static_cast<std::uint8_t>(x / 8), static_cast<std::uint8_t>(y / 4),
                                      static_cast<std::uint8_t>((x / 80 + y / 80) % 2 * 60)});
    Queue(picture);
    CanarySample sample(std::size_t{1280} * 720 * 3);

    Fill(sample);

    cv::Mat upright;
    cv::flip(cv::Mat(720, 1280, CV_8UC3, sample.Bytes().data()), upright, 0);
    const std::string folder = std::string(output[0] == '/' ? "Z:" : "") + output;
    std::filesystem::create_directories(folder);
    EXPECT_TRUE(cv::imwrite(folder + "/overlay.png", upright));
}

} // namespace
