#include "BaseClasses/BitmapSizes.h"
#include "VxDSSource/stream/VxMediaTypes.h"
#include "support/directshow/FakeClock.h"
#include "support/directshow/Gate.h"

#include "CanarySample.h"
#include "PinFixture.h"
#include "ReferencePictures.h"

#include <opencv2/imgproc.hpp>

#include <uuids.h>

#include <algorithm>
#include <thread>

namespace {

using vxds::Setting;

constexpr std::uint32_t kBgr8 = 0x02180015;
constexpr std::uint32_t kMono8 = 0x01080001;
constexpr std::uint32_t kYuyv = 0x02100032;
constexpr std::uint32_t kUyvy = 0x0210001F;

/// A pin that streams from a camera of a given size.
class VxDSStreamFramesTest : public PinFixture {
protected:
    ~VxDSStreamFramesTest() override
    {
        if (m_isStreaming)
            (void)Pin().OnThreadDestroy();
    }

    void Stream(int width, int height)
    {
        dynamic_cast<ScriptedInteger&>(*TheCamera().device->Get(VxString("Width"))).value = width;
        dynamic_cast<ScriptedInteger&>(*TheCamera().device->Get(VxString("Height"))).value = height;
        ConnectAndForget();
        (void)Pin().OnThreadCreate();
        m_isStreaming = true;
    }

    /// Makes one of the offered types, changed as wanted, the pin's own.
    void UseType(int position, int width, int height)
    {
        CMediaType type;
        ASSERT_TRUE(vxds::BuildOfferedType(
            position, {static_cast<std::uint32_t>(width), static_cast<std::uint32_t>(height)}, type));
        ASSERT_EQ(Pin().SetMediaType(&type), S_OK);
    }

    static ScriptedPicture AsScripted(const ReferencePicture& picture)
    {
        return {static_cast<std::uint32_t>(picture.width), static_cast<std::uint32_t>(picture.height), kBgr8,
                AsBgr8(picture), 0};
    }

    static void Queue(const ReferencePicture& picture) { TheCamera().QueuePicture(AsScripted(picture)); }

    static void QueueEmptyPicture()
    {
        TheCamera().QueuePicture({4, 2, kMono8, std::vector<std::uint8_t>(8, 200), 0});
    }

    /// Fills one sample and checks what always holds.
    void Fill(CanarySample& sample)
    {
        EXPECT_EQ(Pin().FillBuffer(&sample), S_OK);
        EXPECT_TRUE(sample.IsIntact());
    }

    static void ExpectZeroFrame(CanarySample& sample)
    {
        EXPECT_TRUE(sample.IsAll(0));
        EXPECT_FALSE(sample.time);
        EXPECT_FALSE(sample.mediaTime);
        EXPECT_FALSE(sample.isSyncPoint);
    }

private:
    bool m_isStreaming = false;
};

// --- Without a frame.

TEST_F(VxDSStreamFramesTest, DeliversAZeroFrameWithoutAStream)
{
    CanarySample sample(100);

    Fill(sample);

    ExpectZeroFrame(sample);
    EXPECT_EQ(Done(), Lines{});
}

TEST_F(VxDSStreamFramesTest, DeliversAZeroFrameWhenNothingArrives)
{
    Stream(4, 2);
    CanarySample sample(100);

    Fill(sample);

    ExpectZeroFrame(sample);
    EXPECT_EQ(Pin().Statistics().FrameCounter(), 0u);
}

TEST_F(VxDSStreamFramesTest, DeliversAZeroFrameWhenTheMutexIsBusyTooLong)
{
    Stream(4, 2);
    QueueEmptyPicture();
    Gate hasMutex;
    Gate isDone;
    // A connection change that takes longer than frame production waits.
    TheCamera().onConnect = [&] {
        hasMutex.Pass();
        EXPECT_TRUE(isDone.WaitFor());
    };
    Store(Setting::DeviceId, L"slow");
    std::thread other([&] { Pin().ApplyConnection(); });
    EXPECT_TRUE(hasMutex.WaitFor());
    CanarySample sample(24);

    Fill(sample);

    ExpectZeroFrame(sample);
    isDone.Pass();
    other.join();
}

TEST_F(VxDSStreamFramesTest, GivesWayToAConnectionChangeWhileOnlyIncompleteImagesArrive)
{
    Stream(4, 2);
    // Without end: each retrieval queues the next incomplete buffer.
    Gate first;
    std::thread other;
    TheCamera().onRetrieve = [&] {
        TheCamera().QueueIncomplete();
        first.Pass();
    };
    std::thread streaming([&] {
        CanarySample sample(24);
        (void)Pin().FillBuffer(&sample);
    });
    EXPECT_TRUE(first.WaitFor());

    Pin().CloseConnection(); // would wait for ever

    streaming.join();
    TheCamera().onRetrieve = nullptr;
}

// --- RGB, straight into the sample.

TEST_F(VxDSStreamFramesTest, WritesRgb24BottomUp)
{
    Stream(5, 3);
    UseType(0, 5, 3);
    const ReferencePicture picture = TestPicture(5, 3);
    Queue(picture);
    CanarySample sample(5 * 3 * 3);

    Fill(sample);

    EXPECT_EQ(sample.Copy(), AsBitmap(picture, 3, true));
    EXPECT_EQ(TheCamera().Pictures(), (Lines{"image.Attach 5x3 02180015 padding 0", "Convert #0 flipped"}));
}

TEST_F(VxDSStreamFramesTest, WritesRgb32BottomUp)
{
    Stream(5, 3);
    UseType(1, 5, 3);
    const ReferencePicture picture = TestPicture(5, 3);
    Queue(picture);
    CanarySample sample(5 * 3 * 4);

    Fill(sample);

    EXPECT_EQ(sample.Copy(), AsBitmap(picture, 4, true));
    EXPECT_EQ(TheCamera().Pictures(), (Lines{"image.Attach 5x3 02200017 padding 0", "Convert #0 flipped"}));
}

TEST_F(VxDSStreamFramesTest, WritesATopDownBitmapUpright)
{
    Stream(5, 3);
    UseType(0, 5, -3);
    const ReferencePicture picture = TestPicture(5, 3);
    Queue(picture);
    CanarySample sample(5 * 3 * 3);

    Fill(sample);

    EXPECT_EQ(sample.Copy(), AsBitmap(picture, 3, false));
}

TEST_F(VxDSStreamFramesTest, LeavesTheMarginOfALargerBitmapAlone)
{
    Stream(4, 2);
    UseType(0, 7, 3);
    const ReferencePicture picture = TestPicture(4, 2);
    Queue(picture);
    CanarySample sample(7 * 3 * 3);

    Fill(sample);

    const std::vector<std::uint8_t> drawn = AsBitmap(picture, 3, true);
    std::vector<std::uint8_t> expected(7 * 3 * 3, CanarySample::kStale);
    std::copy_n(drawn.begin(), 12, expected.begin());
    std::copy_n(drawn.begin() + 12, 12, expected.begin() + 21);
    EXPECT_EQ(sample.Copy(), expected);
    EXPECT_EQ(TheCamera().Pictures().front(), "image.Attach 4x2 02180015 padding 9");
}

TEST_F(VxDSStreamFramesTest, ClearsTheMarginWithDiagnostics)
{
    Stream(4, 2);
    UseType(0, 7, 3);
    Pin().SetDiagnosticsEnabled(true);
    const ReferencePicture picture = TestPicture(4, 2);
    Queue(picture);
    CanarySample sample(7 * 3 * 3);

    Fill(sample);

    const std::vector<std::uint8_t> drawn = AsBitmap(picture, 3, true);
    std::vector<std::uint8_t> expected(7 * 3 * 3, 0);
    std::copy_n(drawn.begin(), 12, expected.begin());
    std::copy_n(drawn.begin() + 12, 12, expected.begin() + 21);
    EXPECT_EQ(sample.Copy(), expected);
}

TEST_F(VxDSStreamFramesTest, ClearsTheNextFrameOnceWhenDiagnosticsAreSwitchedOff)
{
    Stream(4, 2);
    UseType(0, 7, 3);
    Pin().SetDiagnosticsEnabled(false);
    EXPECT_FALSE(Pin().Statistics().IsClearPending()) << "from off to off";
    Pin().SetDiagnosticsEnabled(true);
    Pin().SetDiagnosticsEnabled(false);
    EXPECT_TRUE(Pin().Statistics().IsClearPending());
    Queue(TestPicture(4, 2));
    Queue(TestPicture(4, 2));
    CanarySample first(7 * 3 * 3);
    CanarySample second(7 * 3 * 3);

    Fill(first);
    Fill(second);

    EXPECT_EQ(first.Bytes()[20], 0) << "the margin";
    EXPECT_EQ(second.Bytes()[20], CanarySample::kStale);
    EXPECT_FALSE(Pin().Statistics().IsClearPending());
}

TEST_F(VxDSStreamFramesTest, DrawsNothingIntoASmallerBitmap)
{
    Stream(5, 3);
    UseType(0, 4, 3);
    Queue(TestPicture(5, 3));
    CanarySample sample(4 * 3 * 3 + 10);

    Fill(sample);

    std::vector<std::uint8_t> expected(4 * 3 * 3 + 10, CanarySample::kStale);
    std::fill_n(expected.begin(), 4 * 3 * 3, std::uint8_t{0});
    EXPECT_EQ(sample.Copy(), expected) << "as many bytes as the type names, and no more";
    EXPECT_EQ(TheCamera().Pictures(), Lines{});
    EXPECT_TRUE(sample.time) << "it is a frame all the same";
}

TEST_F(VxDSStreamFramesTest, RemembersTheImageItTook)
{
    Stream(5, 3);
    UseType(1, 7, 3);
    Queue(TestPicture(5, 3));
    CanarySample sample(7 * 3 * 4);
    EXPECT_EQ(Pin().Statistics().LastImageSize(), vxds::PictureSize{});

    Fill(sample);

    EXPECT_EQ(Pin().Statistics().LastImageSize(), (vxds::PictureSize{5, 3}));
    EXPECT_EQ(Pin().Statistics().LastImageBytes(), (5u * 4 + 2 * 4) * 3);
}

TEST_F(VxDSStreamFramesTest, LeavesTheSampleAsItIsForAnotherPixelType)
{
    Stream(4, 2);
    Store(Setting::OutputPixelType, 7);
    QueueEmptyPicture();
    CanarySample sample(24);

    Fill(sample);

    EXPECT_TRUE(sample.IsAll(CanarySample::kStale));
    EXPECT_EQ(Pin().Statistics().FrameCounter(), 1u);
}

// --- Bounds.

TEST_F(VxDSStreamFramesTest, WritesNoByteBehindASampleThatIsSmallerThanItsType)
{
    Stream(16, 16);
    for (const int position : {0, 1}) {
        UseType(position, 16, 16);
        for (const std::size_t bytes : {1u, 15u, 47u, 48u, 100u, 16u * 16u * 3u - 1u}) {
            Queue(TestPicture(16, 16));
            CanarySample sample(bytes);
            Fill(sample);
            EXPECT_TRUE(sample.IsAll(0)) << bytes;
        }
    }
}

TEST_F(VxDSStreamFramesTest, WritesNoByteBehindASmallSampleWithProcessing)
{
    Stream(16, 16);
    Store(Setting::KernelSize, 3);
    UseType(0, 16, 16);
    for (const std::size_t bytes : {1u, 47u, 100u, 767u, 768u}) {
        Queue(TestPicture(16, 16));
        CanarySample sample(bytes);
        Fill(sample);
        EXPECT_FALSE(sample.IsAll(CanarySample::kStale));
    }
}

TEST_F(VxDSStreamFramesTest, WritesNoByteBehindASmallYuvSample)
{
    Stream(16, 16);
    Store(Setting::OutputPixelType, 1);
    UseType(3, 16, 16);
    for (const std::size_t bytes : {1u, 31u, 33u, 511u, 512u}) {
        TheCamera().QueuePicture({16, 16, kYuyv, std::vector<std::uint8_t>(512, 100), 0});
        CanarySample sample(bytes);
        Fill(sample);
    }
}

TEST_F(VxDSStreamFramesTest, WritesNoByteBehindASampleWhenTheTypesDepthIsNotThatOfTheFamily)
{
    Stream(16, 16);
    for (const int bits : {0, 1, 8, 16, 24, 32, 48, 64, 65535}) {
        for (const std::uint32_t family : {0u, 1u}) {
            for (const std::uint32_t kernel : {0u, 3u}) {
                Store(Setting::OutputPixelType, family);
                Store(Setting::KernelSize, kernel);
                CMediaType type;
                ASSERT_TRUE(vxds::BuildOfferedType(0, {16, 16}, type));
                HEADER(type.Format())->biBitCount = static_cast<WORD>(bits);
                HEADER(type.Format())->biSizeImage = 0xFFFFFFFF;
                ASSERT_EQ(Pin().SetMediaType(&type), S_OK);
                const ReferencePicture picture = TestPicture(16, 16);
                TheCamera().QueuePicture(family == 0 ? AsScripted(picture)
                                                     : ScriptedPicture{16, 16, kYuyv, AsBgr8(picture), 0});
                CanarySample sample(16 * 16 * 3);
                Fill(sample);
            }
        }
    }
}

TEST_F(VxDSStreamFramesTest, ZeroesAFrameWhoseTypeHasNoBlock)
{
    Stream(4, 2);
    CMediaType none;
    none.SetType(&MEDIATYPE_Video);
    ASSERT_EQ(Pin().SetMediaType(&none), S_OK);
    QueueEmptyPicture();
    CanarySample sample(24);

    Fill(sample);

    EXPECT_TRUE(sample.IsAll(0));
}

TEST_F(VxDSStreamFramesTest, TakesATypeThatComesWithTheSample)
{
    Stream(4, 2);
    UseType(0, 4, 2);
    CMediaType wider;
    ASSERT_TRUE(vxds::BuildOfferedType(1, {6, 2}, wider));
    const ReferencePicture picture = TestPicture(4, 2);
    Queue(picture);
    CanarySample sample(6 * 2 * 4);
    sample.attached.emplace(wider);

    Fill(sample);

    EXPECT_EQ(TheCamera().Pictures().front(), "image.Attach 4x2 02200017 padding 8");
    AM_MEDIA_TYPE* now = nullptr;
    ASSERT_EQ(Pin().GetFormat(&now), S_OK);
    EXPECT_EQ(HEADER(now->pbFormat)->biWidth, 6);
    DeleteMediaType(now);
}

TEST_F(VxDSStreamFramesTest, TakesEvenATypeOfNoUseThatComesWithTheSample)
{
    Stream(4, 2);
    UseType(0, 4, 2);
    QueueEmptyPicture();
    CanarySample sample(24);
    sample.attached.emplace();

    Fill(sample);

    EXPECT_TRUE(sample.IsAll(0));
}

TEST_F(VxDSStreamFramesTest, ZeroesAFrameForAHugeOutputSize)
{
    Stream(4, 2);
    Store(Setting::Width, 0x7FFFFFFF);
    Store(Setting::Height, 0x7FFFFFFF);
    UseType(0, 0x7FFFFFFF, 0x7FFFFFFF);
    QueueEmptyPicture();
    CanarySample sample(24);

    Fill(sample);

    EXPECT_TRUE(sample.IsAll(0));
}

TEST_F(VxDSStreamFramesTest, ZeroesAFrameForAnOutputSizeThatCannotBeDrawn)
{
    Stream(4, 2);
    UseType(0, 4, 2);
    for (const auto& [width, height] : {std::pair{0u, 2u}, {4u, 0u}, {0xFFFFFFFFu, 2u}, {0u, 0u}}) {
        Store(Setting::Width, width);
        Store(Setting::Height, height);
        QueueEmptyPicture();
        CanarySample sample(24);
        Fill(sample);
        EXPECT_TRUE(sample.IsAll(0)) << width << " x " << height;
    }
}

TEST_F(VxDSStreamFramesTest, DrawsATopDownOutputSize)
{
    Stream(4, 2);
    Store(Setting::Height, static_cast<std::uint32_t>(-2));
    UseType(0, 4, -2);
    const ReferencePicture picture = TestPicture(4, 2);
    Queue(picture);
    CanarySample sample(24);

    Fill(sample);

    EXPECT_EQ(sample.Copy(), AsBitmap(picture, 3, false));
}

TEST_F(VxDSStreamFramesTest, SurvivesACameraWhoseImagesChangeTheirSize)
{
    Stream(8, 8);
    for (const std::uint32_t kernel : {0u, 3u}) {
        Store(Setting::KernelSize, kernel);
        UseType(0, 8, 8);
        for (const std::size_t size : {1u, 4u, 8u, 9u, 64u}) {
            Queue(TestPicture(size, size));
            CanarySample sample(8 * 8 * 3);
            Fill(sample);
        }
    }
}

TEST_F(VxDSStreamFramesTest, ShowsNoRemainsBesideAnImageThatIsSmallerThanTheCamerasSize)
{
    Stream(8, 8);
    Store(Setting::ZoomValue, 0u);
    Store(Setting::KernelSize, 3);
    UseType(0, 8, 8);
    TheCamera().QueuePicture({8, 8, kMono8, std::vector<std::uint8_t>(64, 255), 0});
    TheCamera().QueuePicture({2, 2, kMono8, std::vector<std::uint8_t>(4, 255), 0});
    CanarySample first(8 * 8 * 3);
    CanarySample second(8 * 8 * 3);

    Fill(first);
    Fill(second);

    EXPECT_TRUE(first.IsAll(255));
    // Flipped, the small picture lies in the last two rows of the memory.
    EXPECT_TRUE(
        std::ranges::all_of(second.Bytes().first(5 * 8 * 3), [](std::uint8_t each) { return each == 0; }));
}

TEST_F(VxDSStreamFramesTest, ZeroesAFrameOfABufferWithoutAPicture)
{
    Stream(4, 2);
    UseType(0, 4, 2);
    TheCamera().QueuePicture({4, 2, kMono8, {}, 0});
    CanarySample sample(24);

    Fill(sample);

    EXPECT_TRUE(sample.IsAll(0));
}

// --- RGB with processing.

TEST_F(VxDSStreamFramesTest, FiltersAtSourceSize)
{
    Stream(12, 9);
    Store(Setting::KernelSize, 3);
    UseType(0, 12, 9);
    const ReferencePicture picture = TestPicture(12, 9);
    Queue(picture);
    CanarySample sample(12 * 9 * 3);

    Fill(sample);

    EXPECT_EQ(sample.Copy(), AsBitmap(Median(picture, 3), 3, true));
    EXPECT_EQ(TheCamera().Pictures(), (Lines{"image.Alloc 12x9 02180015 padding 0", "Convert #0 flipped"}));
}

TEST_F(VxDSStreamFramesTest, FiltersWithTheLargerKernelAndFourChannels)
{
    Stream(12, 9);
    Store(Setting::KernelSize, 5);
    UseType(1, 12, 9);
    const ReferencePicture picture = TestPicture(12, 9);
    Queue(picture);
    CanarySample sample(12 * 9 * 4);

    Fill(sample);

    EXPECT_EQ(sample.Copy(), AsBitmap(Median(picture, 5), 4, true));
}

TEST_F(VxDSStreamFramesTest, ScalesToTheOutputSize)
{
    ASSERT_TRUE(Settings().SetOutputSize(8, 6));
    Stream(16, 12);
    UseType(0, 8, 6);
    const ReferencePicture picture = TestPicture(16, 12);
    Queue(picture);
    CanarySample sample(8 * 6 * 3);

    Fill(sample);

    EXPECT_EQ(sample.Copy(), AsBitmap(Halved(picture), 3, true));
}

TEST_F(VxDSStreamFramesTest, FiltersAfterScaling)
{
    ASSERT_TRUE(Settings().SetOutputSize(8, 6));
    Stream(16, 12);
    Store(Setting::KernelSize, 3);
    UseType(0, 8, 6);
    const ReferencePicture picture = TestPicture(16, 12);
    Queue(picture);
    CanarySample sample(8 * 6 * 3);

    Fill(sample);

    EXPECT_EQ(sample.Copy(), AsBitmap(Median(Halved(picture), 3), 3, true));
}

TEST_F(VxDSStreamFramesTest, ShowsTheCentralPartWithZoom)
{
    ASSERT_TRUE(Settings().SetOutputSize(5, 4));
    Stream(20, 16);
    Store(Setting::ZoomValue, 5); // 10 x 8 from (5, 4), then halved
    UseType(0, 5, 4);
    const ReferencePicture picture = TestPicture(20, 16);
    Queue(picture);
    CanarySample sample(5 * 4 * 3);

    Fill(sample);

    EXPECT_EQ(sample.Copy(), AsBitmap(Halved(Cropped(picture, 5, 4, 10, 8)), 3, true));
}

TEST_F(VxDSStreamFramesTest, ScalesTheCentralTenthUpToTheWholeOutput)
{
    Stream(1000, 800);
    Store(Setting::ZoomValue, 9);
    UseType(0, 1000, 800);
    // Only the central 100 x 80 are white.
    ScriptedPicture picture{1000, 800, kMono8, std::vector<std::uint8_t>(800000, 0), 0};
    for (std::size_t y = 360; y < 440; ++y)
        std::fill_n(picture.bytes.begin() + static_cast<std::ptrdiff_t>(y * 1000 + 450), 100,
                    std::uint8_t{255});
    TheCamera().QueuePicture(picture);
    CanarySample sample(1000 * 800 * 3);

    Fill(sample);

    EXPECT_TRUE(sample.IsAll(255));
}

TEST_F(VxDSStreamFramesTest, CountsAStoredZoomOfTenAsNineAndANegativeOneAsNone)
{
    Stream(20, 10);
    UseType(0, 20, 10);
    const ReferencePicture picture = TestPicture(20, 10);
    const auto drawnWith = [&](std::int32_t zoom) {
        Store(Setting::ZoomValue, static_cast<std::uint32_t>(zoom));
        Queue(picture);
        CanarySample sample(20 * 10 * 3);
        Fill(sample);
        return sample.Copy();
    };

    EXPECT_EQ(drawnWith(10), drawnWith(9));
    EXPECT_NE(drawnWith(9), drawnWith(8));
    EXPECT_EQ(drawnWith(-3), AsBitmap(picture, 3, true));
}

TEST_F(VxDSStreamFramesTest, CopiesAProcessedPictureWithoutRowPadding)
{
    Stream(4, 2);
    Store(Setting::KernelSize, 3);
    UseType(0, 6, 3);
    const ReferencePicture picture = TestPicture(4, 2);
    Queue(picture);
    CanarySample sample(6 * 3 * 3);

    Fill(sample);

    std::vector<std::uint8_t> expected(6 * 3 * 3, CanarySample::kStale);
    std::ranges::copy(AsBitmap(Median(picture, 3), 3, true), expected.begin());
    EXPECT_EQ(sample.Copy(), expected) << "contiguously, whatever the bitmap's width";
}

TEST_F(VxDSStreamFramesTest, ZeroesAFrameForAKernelThatNoFilterTakes)
{
    Stream(8, 8);
    UseType(0, 8, 8);
    for (const std::uint32_t kernel : {2u, 4u, 257u, 0x7FFFFFFFu}) {
        Store(Setting::KernelSize, kernel); // restored from somewhere: a setter refuses it
        Queue(TestPicture(8, 8));
        CanarySample sample(8 * 8 * 3);

        Fill(sample);

        EXPECT_TRUE(sample.IsAll(0)) << kernel;
        EXPECT_TRUE(sample.time);
        EXPECT_TRUE(Done().back().starts_with("pipeline.Release(#"))
            << "the camera's buffer goes back all the same";
    }
}

TEST_F(VxDSStreamFramesTest, ShowsAPictureAsItArrivesWhenTheCameraItselfWasNeverSeen)
{
    Store(Setting::Role, 1);
    Store(Setting::Width, 8);
    Store(Setting::Height, 6);
    Stream(0, 0);
    UseType(0, 8, 6);
    const ReferencePicture same = TestPicture(8, 6);
    const ReferencePicture larger = TestPicture(16, 12);
    Queue(same);
    Queue(larger);
    CanarySample first(8 * 6 * 3);
    CanarySample second(8 * 6 * 3);

    Fill(first);
    Fill(second);

    EXPECT_EQ(first.Copy(), AsBitmap(same, 3, true));
    EXPECT_EQ(second.Copy(), AsBitmap(Halved(larger), 3, true));
}

// --- YUV.

/// Packed 4:2:2 of noise, as bytes in the order of the layout.
ScriptedPicture PackedPicture(int width, int height, std::uint32_t pixelType)
{
    ScriptedPicture picture{
        static_cast<std::uint32_t>(width), static_cast<std::uint32_t>(height), pixelType, {}, 0};
    std::uint32_t noise = 99;
    for (int i = 0; i < width * height * 2; ++i) {
        noise = noise * 1664525 + 1013904223;
        picture.bytes.push_back(static_cast<std::uint8_t>(noise >> 24));
    }
    return picture;
}

/// The colours of a packed picture, by the picture library's conversion.
ReferencePicture ColoursOf(const ScriptedPicture& picture, int code)
{
    cv::Mat packed(static_cast<int>(picture.heightPx), static_cast<int>(picture.widthPx), CV_8UC2,
                   const_cast<std::uint8_t*>(picture.bytes.data()));
    cv::Mat bgr;
    cv::cvtColor(packed, bgr, code);
    ReferencePicture colours{picture.widthPx, picture.heightPx, {}};
    for (int y = 0; y < bgr.rows; ++y)
        for (int x = 0; x < bgr.cols; ++x) {
            const auto pixel = bgr.at<cv::Vec3b>(y, x);
            colours.pixels.push_back({pixel[0], pixel[1], pixel[2]});
        }
    return colours;
}

/// The output's formula, pixel by pixel.
std::vector<std::uint8_t> AsYuy2(const ReferencePicture& picture)
{
    std::vector<std::uint8_t> bytes;
    for (std::size_t i = 0; i < picture.pixels.size(); ++i) {
        const auto& [blue, green, red] = picture.pixels[i];
        const auto luma = static_cast<float>(0.299 * red + 0.587 * green + 0.114 * blue);
        const double chroma = i % picture.width % 2 == 0
                                  ? static_cast<double>(static_cast<float>(blue) - luma) * 0.565 + 128
                                  : static_cast<double>(static_cast<float>(red) - luma) * 0.713 + 128;
        bytes.push_back(static_cast<std::uint8_t>(luma));
        bytes.push_back(static_cast<std::uint8_t>(chroma));
    }
    return bytes;
}

TEST_F(VxDSStreamFramesTest, WritesYuy2FromBothLayouts)
{
    Stream(8, 4);
    Store(Setting::OutputPixelType, 1);
    UseType(3, 8, 4);
    struct Layout {
        std::uint32_t pixelType;
        int code;
    };
    for (const Layout& each :
         {Layout{0x0210001F, cv::COLOR_YUV2BGR_UYVY}, Layout{0x02100043, cv::COLOR_YUV2BGR_UYVY},
          Layout{0x02100044, cv::COLOR_YUV2BGR_UYVY}, Layout{0x02100045, cv::COLOR_YUV2BGR_UYVY},
          Layout{0x02100032, cv::COLOR_YUV2BGR_YUY2}, Layout{0x0210003B, cv::COLOR_YUV2BGR_YUY2},
          Layout{0x0210003E, cv::COLOR_YUV2BGR_YUY2}, Layout{0x02100041, cv::COLOR_YUV2BGR_YUY2}}) {
        const ScriptedPicture picture = PackedPicture(8, 4, each.pixelType);
        TheCamera().QueuePicture(picture);
        CanarySample sample(8 * 4 * 2);

        Fill(sample);

        EXPECT_EQ(sample.Copy(), AsYuy2(ColoursOf(picture, each.code))) << std::hex << each.pixelType;
    }
    EXPECT_EQ(Pin().Statistics().LastImageSize(), vxds::PictureSize{}) << "this path does not note it";
}

TEST_F(VxDSStreamFramesTest, ProcessesYuvInItsColours)
{
    ASSERT_TRUE(Settings().SetOutputSize(8, 6));
    Stream(16, 12);
    Store(Setting::OutputPixelType, 1);
    Store(Setting::KernelSize, 3);
    UseType(3, 8, 6);
    const ScriptedPicture picture = PackedPicture(16, 12, kUyvy);
    TheCamera().QueuePicture(picture);
    CanarySample sample(8 * 6 * 2);

    Fill(sample);

    EXPECT_EQ(sample.Copy(), AsYuy2(Median(Halved(ColoursOf(picture, cv::COLOR_YUV2BGR_UYVY)), 3)));
}

TEST_F(VxDSStreamFramesTest, ReadsAPaddedYuvImageByItsRows)
{
    Stream(4, 2);
    Store(Setting::OutputPixelType, 1);
    UseType(3, 4, 2);
    const ScriptedPicture plain = PackedPicture(4, 2, kYuyv);
    ScriptedPicture padded = plain;
    padded.rowPaddingBytes = 3;
    padded.bytes.insert(padded.bytes.begin() + 8, 3, 0xEE);
    padded.bytes.insert(padded.bytes.end(), 3, 0xEE);
    TheCamera().QueuePicture(padded);
    CanarySample sample(16);

    Fill(sample);

    EXPECT_EQ(sample.Copy(), AsYuy2(ColoursOf(plain, cv::COLOR_YUV2BGR_YUY2)));
}

TEST_F(VxDSStreamFramesTest, RefusesACameraWithoutYuvWithAZeroFrameAndATextThatSaysSo)
{
    Stream(4, 2);
    Store(Setting::OutputPixelType, 1);
    UseType(3, 4, 2);
    QueueEmptyPicture(); // Mono8
    CanarySample sample(100);
    EXPECT_EQ(Pin().Statistics().LastErrorText(), L"");

    Fill(sample);

    EXPECT_TRUE(sample.IsAll(0)) << "the whole sample";
    EXPECT_EQ(Pin().Statistics().LastErrorText(), L"No pixel conversion available to YUV422");
    EXPECT_TRUE(sample.time) << "it is a frame all the same";
}

TEST_F(VxDSStreamFramesTest, DrawsYuvPicturesOfOddAndTinySizes)
{
    Store(Setting::OutputPixelType, 1);
    for (const auto& [width, height] : {std::pair{1, 1}, {3, 2}, {1, 5}, {5, 3}, {7, 1}}) {
        Store(Setting::OutputWidth, static_cast<std::uint32_t>(width));
        Store(Setting::OutputHeight, static_cast<std::uint32_t>(height));
        Stream(width, height);
        Pin().UpdateOutputSize();
        UseType(3, width, height);
        const ScriptedPicture picture = PackedPicture(width, height, kYuyv);
        TheCamera().QueuePicture(picture);
        CanarySample sample(static_cast<std::size_t>(width * height * 2));

        Fill(sample);

        EXPECT_FALSE(sample.IsAll(CanarySample::kStale)) << width << " x " << height;
    }
}

TEST_F(VxDSStreamFramesTest, KeepsGreyOfAnOddWidthGrey)
{
    Stream(5, 2);
    Store(Setting::OutputPixelType, 1);
    UseType(3, 5, 2);
    ScriptedPicture grey{5, 2, kYuyv, {}, 0};
    for (int i = 0; i < 10; ++i)
        grey.bytes.insert(grey.bytes.end(), {126, 128}); // luma 126 of 16 to 235 is 128 of 255
    TheCamera().QueuePicture(grey);
    CanarySample sample(5 * 2 * 2);

    Fill(sample);

    for (std::size_t pixel = 0; pixel < 10; ++pixel) {
        EXPECT_EQ(sample.Bytes()[pixel * 2], 128) << pixel;
        EXPECT_EQ(sample.Bytes()[pixel * 2 + 1], 128) << pixel;
    }
}

TEST_F(VxDSStreamFramesTest, ReadsNoByteBehindAYuvImageThatIsShorterThanItSays)
{
    Stream(16, 16);
    Store(Setting::OutputPixelType, 1);
    UseType(3, 16, 16);
    for (const std::size_t bytes : {1u, 31u, 32u, 100u, 511u}) {
        ScriptedPicture liar = PackedPicture(16, 16, kYuyv);
        liar.bytes.resize(bytes);
        liar.bytes.shrink_to_fit();
        TheCamera().QueuePicture(liar);
        CanarySample sample(16 * 16 * 2);
        Fill(sample);
    }
    TheCamera().QueuePicture(PackedPicture(3, 1, kYuyv));
    CanarySample sample(16 * 16 * 2);
    Fill(sample);
    EXPECT_EQ(sample.Bytes()[16 * 16 * 2 - 1], 128) << "black beside the small picture";
}

// --- Time stamps, counters, order.

TEST_F(VxDSStreamFramesTest, StampsFramesFromTheClock)
{
    FakeClock clock;
    ASSERT_EQ(Host().SetSyncSource(&clock), S_OK);
    Stream(4, 2);
    ASSERT_EQ(Pin().OnThreadStartPlay(), S_OK);
    UseType(0, 4, 2);
    const std::vector<std::pair<LONGLONG, LONGLONG>> expected = {{0, 0}, {0, 400000}, {400000, 700000}};
    LONGLONG frame = 0;
    for (const LONGLONG now : {1000000, 1400000, 1700000}) {
        clock.now = now;
        QueueEmptyPicture();
        CanarySample sample(24);
        Fill(sample);
        EXPECT_EQ(sample.time, expected[static_cast<std::size_t>(frame)]);
        EXPECT_EQ(sample.mediaTime, std::pair(frame, frame + 1));
        EXPECT_TRUE(sample.isSyncPoint);
        ++frame;
    }
    EXPECT_EQ(Pin().Statistics().FrameCounter(), 3u);

    (void)Pin().OnThreadDestroy();
    (void)Pin().OnThreadCreate();
    EXPECT_EQ(Pin().Statistics().FrameCounter(), 0u) << "counted from each start";
    ASSERT_EQ(Host().SetSyncSource(nullptr), S_OK);
}

TEST_F(VxDSStreamFramesTest, StampsZeroWithoutAClockAndStillCounts)
{
    Stream(4, 2);
    ASSERT_EQ(Pin().OnThreadStartPlay(), S_OK);
    UseType(0, 4, 2);
    for (LONGLONG frame = 0; frame < 3; ++frame) {
        QueueEmptyPicture();
        CanarySample sample(24);
        Fill(sample);
        EXPECT_EQ(sample.time, std::pair(0LL, 0LL));
        EXPECT_EQ(sample.mediaTime, std::pair(frame, frame + 1));
    }
}

TEST_F(VxDSStreamFramesTest, DoesNotCountZeroFrames)
{
    Stream(4, 2);
    UseType(0, 4, 2);
    QueueEmptyPicture();
    CanarySample first(24);
    CanarySample none(24);
    CanarySample second(24);
    Fill(first);
    Fill(none);
    QueueEmptyPicture();
    Fill(second);

    EXPECT_FALSE(none.mediaTime);
    EXPECT_EQ(second.mediaTime, std::pair(1LL, 2LL));
}

TEST_F(VxDSStreamFramesTest, GivesTheBufferBackAfterThePicture)
{
    Stream(4, 2);
    UseType(0, 4, 2);
    QueueEmptyPicture();
    TheCamera().log.Clear();
    CanarySample sample(24);

    Fill(sample);

    EXPECT_EQ(Done(), (Lines{"pipeline.Retrieve(1000)", "pipeline.Release(#0)"}));
}

TEST_F(VxDSStreamFramesTest, CountsSkippedBuffersUntilTheNextStart)
{
    Stream(4, 2);
    UseType(0, 4, 2);
    for (const std::size_t waiting : {2u, 1u})
        TheCamera().QueuePicture({4, 2, kMono8, std::vector<std::uint8_t>(8, 200), 0}, waiting);
    CanarySample sample(24);

    Fill(sample);

    EXPECT_EQ(Pin().Statistics().BlocksDroppedByFilter(), 1);
    (void)Pin().OnThreadDestroy();
    EXPECT_EQ(Pin().Statistics().BlocksDroppedByFilter(), 1) << "readable until the next start";
    (void)Pin().OnThreadCreate();
    EXPECT_EQ(Pin().Statistics().BlocksDroppedByFilter(), 0);
}

TEST_F(VxDSStreamFramesTest, MakesOneConverterForItsLife)
{
    Pin();

    EXPECT_EQ(TheCamera().Pictures(), Lines{"new VxBufferConverter(-1)"});
}

} // namespace
