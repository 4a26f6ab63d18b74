#include "support/directshow/FakeClock.h"
#include "support/directshow/Gate.h"

#include "FramesFixture.h"

#include <algorithm>
#include <atomic>
#include <chrono>
#include <thread>
#include <utility>

namespace {

using vxds::Setting;

class VxDSStreamFramesTest : public FramesFixture {
protected:
    /// How long so many frames take.
    std::chrono::steady_clock::duration TimeOf(int frames)
    {
        CanarySample sample(24);
        const auto began = std::chrono::steady_clock::now();
        for (int frame = 0; frame < frames; ++frame)
            Fill(sample);
        return std::chrono::steady_clock::now() - began;
    }
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

    const auto began = std::chrono::steady_clock::now();
    Fill(sample);
    const auto taken = std::chrono::steady_clock::now() - began;

    ExpectZeroFrame(sample);
    EXPECT_GE(taken, std::chrono::milliseconds(450)) << "500, less what a coarse clock takes off";
    EXPECT_LE(taken, std::chrono::seconds(10)) << "500 ms on a machine that has nothing else to do";
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

// --- Pace of frames for which nothing is waited.

TEST_F(VxDSStreamFramesTest, PacesFramesWithoutAStream)
{
    EXPECT_GE(TimeOf(10), std::chrono::milliseconds(300))
        << "10 times 33 ms, less what a coarse clock takes off";
    EXPECT_EQ(Done(), Lines{});
}

TEST_F(VxDSStreamFramesTest, PacesFramesOfAPipelineThatAnswersAtOnce)
{
    Stream(4, 2);

    EXPECT_GE(TimeOf(10), std::chrono::milliseconds(300));
}

TEST_F(VxDSStreamFramesTest, DoesNotPacePictures)
{
    Stream(4, 2);
    UseType(0, 4, 2);
    for (int frame = 0; frame < 50; ++frame)
        QueueEmptyPicture();

    EXPECT_LT(TimeOf(50), std::chrono::milliseconds(50 * 33 / 2));
}

TEST_F(VxDSStreamFramesTest, EndsThePaceAtOnceWhenACommandIsPending)
{
    ::SetEvent(Pin().GetRequestHandle());

    EXPECT_LT(TimeOf(50), std::chrono::milliseconds(50 * 33 / 2));
    ::ResetEvent(Pin().GetRequestHandle());
}

TEST_F(VxDSStreamFramesTest, LetsOthersHaveTheMutexDuringThePace)
{
    Pin();
    Gate filled;
    std::atomic<bool> isOver = false;
    std::thread streaming([&] {
        while (!isOver) {
            CanarySample sample(24);
            (void)Pin().FillBuffer(&sample);
            filled.Pass();
        }
    });
    EXPECT_TRUE(filled.WaitFor());

    const auto began = std::chrono::steady_clock::now();
    for (int time = 0; time < 50; ++time)
        Pin().CloseConnection();
    const auto taken = std::chrono::steady_clock::now() - began;

    EXPECT_LT(taken, std::chrono::milliseconds(50 * 33 / 2));
    isOver = true;
    streaming.join();
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

/// A frame of 4 x 2 in a bitmap of 7 x 3 whose bytes were this value before.
std::vector<std::uint8_t> InTheCorner(const std::vector<std::uint8_t>& drawn, std::size_t bytesPerPixel,
                                      std::uint8_t beside)
{
    std::vector<std::uint8_t> frame(7 * 3 * bytesPerPixel, beside);
    const auto rowBytes = static_cast<std::ptrdiff_t>(4 * bytesPerPixel);
    std::copy_n(drawn.begin(), rowBytes, frame.begin());
    std::copy_n(drawn.begin() + rowBytes, rowBytes,
                frame.begin() + static_cast<std::ptrdiff_t>(7 * bytesPerPixel));
    return frame;
}

TEST_F(VxDSStreamFramesTest, ClearsTheNextFrameOnceWhenDiagnosticsAreSwitchedOff)
{
    Stream(4, 2);
    const ReferencePicture picture = TestPicture(4, 2);
    for (const std::size_t bytesPerPixel : {3U, 4U}) {
        UseType(static_cast<int>(bytesPerPixel) - 3, 7, 3);
        Pin().SetDiagnosticsEnabled(false);
        EXPECT_FALSE(Pin().Statistics().IsClearPending()) << "from off to off";
        Pin().SetDiagnosticsEnabled(true);
        Pin().SetDiagnosticsEnabled(false);
        EXPECT_TRUE(Pin().Statistics().IsClearPending());
        Queue(picture);
        Queue(picture);
        CanarySample first(7 * 3 * bytesPerPixel);
        CanarySample second(7 * 3 * bytesPerPixel);

        Fill(first);
        Fill(second);

        const std::vector<std::uint8_t> drawn = AsBitmap(picture, bytesPerPixel, true);
        EXPECT_EQ(first.Copy(), InTheCorner(drawn, bytesPerPixel, 0));
        EXPECT_EQ(second.Copy(), InTheCorner(drawn, bytesPerPixel, CanarySample::kStale));
        EXPECT_FALSE(Pin().Statistics().IsClearPending());
    }
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

TEST_F(VxDSStreamFramesTest, LeavesWhatTheConverterLeavesWhenItCannotConvert)
{
    Stream(4, 2);
    UseType(0, 4, 2);
    TheCamera().QueuePicture(
        {4, 2, kYuyv, std::vector<std::uint8_t>(16, 100), 0}); // the double has no such conversion
    CanarySample sample(24);

    Fill(sample);

    EXPECT_TRUE(sample.IsAll(CanarySample::kStale));
    EXPECT_TRUE(sample.time) << "it is a frame all the same";
    EXPECT_EQ(Pin().Statistics().LastErrorText(), L"") << "and nobody is told";
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

TEST_F(VxDSStreamFramesTest, LetsTheClockGoWithoutHoldingTheLink)
{
    FakeClock clock;
    ASSERT_EQ(Host().SetSyncSource(&clock), S_OK);
    Stream(4, 2);
    ASSERT_EQ(Pin().OnThreadStartPlay(), S_OK);
    ASSERT_EQ(Host().SetSyncSource(nullptr), S_OK);
    Gate isAsked;
    Gate isAnswered;
    std::thread other([&] {
        EXPECT_TRUE(isAsked.WaitFor());
        UINT count = 0;
        EXPECT_EQ(Pin().GetFeatureCount(count), S_OK); // needs the link
        isAnswered.Pass();
    });
    clock.onLastRelease = [&] {
        isAsked.Pass();
        EXPECT_TRUE(isAnswered.WaitFor());
    };

    EXPECT_EQ(Pin().OnThreadDestroy(), S_OK);

    other.join();
    EXPECT_EQ(isAnswered.Count(), 1);
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

TEST_F(VxDSStreamFramesTest, TakesTheStampsOfAnEarlierPictureOffAZeroFrame)
{
    Stream(4, 2);
    UseType(0, 4, 2);
    QueueEmptyPicture();
    CanarySample sample(24);
    Fill(sample);
    ASSERT_TRUE(sample.mediaTime);
    ASSERT_TRUE(sample.isSyncPoint);

    sample.time = {1, 2}; // as with a clock
    Fill(sample);

    EXPECT_FALSE(sample.time);
    EXPECT_FALSE(sample.mediaTime);
    EXPECT_FALSE(sample.isSyncPoint);
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
