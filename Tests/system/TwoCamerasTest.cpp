#include "system/RoadTest.h"

#include "VxSimulator/picture/FrameNumberStrip.h"
#include "VxSimulator/picture/PictureFormat.h"
#include "VxSimulator/picture/TestPicture.h"

#include <algorithm>

namespace {

using vxgrab::ComPtr;

/// A grey camera in this process and a coloured, wider one that run-with-camera has started.
class TwoCamerasTest : public RoadTest {
protected:
    static constexpr int kOtherWidthPx = 400; // as run-with-camera starts it
    static constexpr int kOtherHeightPx = 240;

    /// @return  whether the frame is a whole picture, which shows its number
    static bool IsNumbered(const CaughtFrame& frame, const vxgrab::FrameFormat& format)
    {
        return ReadFrameNumber(ViewOf(frame, format)).has_value();
    }

    /// @return  whether a pixel of the second bar, which is yellow, has a colour
    static bool IsColoured(const CaughtFrame& frame, const vxgrab::FrameFormat& format)
    {
        const auto view = ViewOf(frame, format);
        if (!view.IsValid())
            return false;
        const auto colour = view.At(view.widthPx * 3 / 16, 4);
        return colour.red != colour.blue;
    }

    /// @return  whether the frame is, pixel for pixel, what a camera of this format and the other camera's
    ///          size sends as this number
    static bool IsPictureOf(const char* pixelFormat, std::uint32_t number, const CaughtFrame& frame,
                            const vxgrab::FrameFormat& format)
    {
        const auto view = ViewOf(frame, format);
        const auto sent = simulator::TestPictureBgr(number, kOtherWidthPx, kOtherHeightPx,
                                                    simulator::FindPictureFormat(pixelFormat)->code);
        const std::size_t rowBytes = std::size_t{kOtherWidthPx} * 3;
        if (sent.size() != view.pixels.size() || view.strideBytes != rowBytes)
            return false;
        for (std::uint32_t y = 0; y < kOtherHeightPx; ++y) {
            const std::size_t row =
                view.rowOrder == simulator::RowOrder::BottomUp ? kOtherHeightPx - 1 - y : y;
            if (!std::ranges::equal(view.pixels.subspan(row * rowBytes, rowBytes),
                                    std::span(sent).subspan(y * rowBytes, rowBytes)))
                return false;
        }
        return true;
    }
};

TEST_F(TwoCamerasTest, TwoFiltersDeliverTheirOwnCamerasAtOnce)
{
    VxSimulatedCamera grey;
    Start(grey, SmallCamera("Mono8"));
    FrameCatcher greyFrames;
    FrameCatcher colouredFrames;
    GrabberGraph greyGraph(FilterFor(grey), MEDIASUBTYPE_RGB24, greyFrames);
    GrabberGraph colouredGraph(FilterFor(CameraOfTheDriver()), MEDIASUBTYPE_RGB32, colouredFrames);
    ASSERT_TRUE(greyGraph.IsBuilt() && colouredGraph.IsBuilt());

    ASSERT_HRESULT_SUCCEEDED(greyGraph.Run());
    ASSERT_HRESULT_SUCCEEDED(colouredGraph.Run());
    for (int i = 0; i < 20; ++i) {
        const auto greyFrame = greyFrames.WaitForPicture(kPatience);
        const auto colouredFrame = colouredFrames.WaitForPicture(kPatience);
        ASSERT_TRUE(greyFrame && colouredFrame);
        EXPECT_EQ(greyFrame->bytes.size(), 320u * 240 * 3);
        EXPECT_EQ(colouredFrame->bytes.size(), std::size_t{kOtherWidthPx} * kOtherHeightPx * 4);
        EXPECT_TRUE(IsNumbered(*greyFrame, greyGraph.Format()));
        EXPECT_TRUE(IsNumbered(*colouredFrame, colouredGraph.Format()));
        EXPECT_FALSE(IsColoured(*greyFrame, greyGraph.Format()));
        EXPECT_TRUE(IsColoured(*colouredFrame, colouredGraph.Format()));
    }

    EXPECT_LT(greyGraph.TimedStop(), kStopLimit);
    colouredFrames.Forget();
    EXPECT_TRUE(colouredFrames.WaitForPicture(kPatience)) << "the one stops when the other does";
    EXPECT_LT(colouredGraph.TimedStop(), kStopLimit);
}

TEST_F(TwoCamerasTest, ChangesToAnotherCameraWhileStreaming)
{
    VxSimulatedCamera first;
    Start(first, SmallCamera("Mono8"));
    FrameCatcher catcher;
    GrabberGraph graph(FilterFor(first), MEDIASUBTYPE_RGB24, catcher);
    ASSERT_TRUE(graph.IsBuilt());
    ASSERT_HRESULT_SUCCEEDED(graph.Run());
    ASSERT_TRUE(catcher.WaitForPicture(kPatience));

    Connect(ComPtr<IBaseFilter>::Share(&graph.Source()), CameraOfTheDriver());

    // The wider picture is fitted into the size that was agreed upon with the first camera.
    catcher.Forget();
    const auto frame = catcher.WaitFor(
        [&](const CaughtFrame& caught) { return IsColoured(caught, graph.Format()); }, kPatience);
    ASSERT_TRUE(frame) << "no picture of the second camera";
    SavePicture(*frame, graph.Format(), "road-second-camera");
    EXPECT_EQ(frame->bytes.size(), 320u * 240 * 3);
    EXPECT_FALSE(first.ControlOwner()) << "the first camera is not given back";
    EXPECT_FALSE(first.IsAcquiring());
    EXPECT_LT(graph.TimedStop(), kStopLimit);
}

TEST_F(TwoCamerasTest, EveryFrameOfAChangeWhileStreamingIsOfOneCamera)
{
    VxSimulatedCamera first;
    VxSimulatorOptions options = SmallCamera("Mono8");
    options.widthPx = kOtherWidthPx;
    options.heightPx = kOtherHeightPx;
    Start(first, options);
    constexpr std::size_t kAllFrames = 1000; // of a few seconds
    FrameCatcher catcher(kAllFrames);
    GrabberGraph graph(FilterFor(first), MEDIASUBTYPE_RGB24, catcher);
    ASSERT_TRUE(graph.IsBuilt());
    ASSERT_HRESULT_SUCCEEDED(graph.Run());
    ASSERT_TRUE(BecomesTrue([&] { return catcher.Count() >= 10; }));

    Connect(ComPtr<IBaseFilter>::Share(&graph.Source()), CameraOfTheDriver());

    EXPECT_FALSE(first.IsAcquiring());
    const std::uint64_t sent = first.FramesSent();
    const std::uint64_t atChange = catcher.Count();
    ASSERT_TRUE(BecomesTrue([&] { return catcher.Count() >= atChange + 20; }));
    EXPECT_LT(graph.TimedStop(), kStopLimit);
    EXPECT_EQ(first.FramesSent(), sent) << "the first camera went on";
    ASSERT_LE(catcher.Count(), kAllFrames);
    std::uint32_t ofFirst = 0;
    std::uint32_t ofSecond = 0;
    while (const auto frame = catcher.Next(std::chrono::seconds(0))) {
        if (!frame->mediaTime) {
            EXPECT_TRUE(frame->IsZero()) << "frame " << frame->number;
            continue;
        }
        const auto number = ReadFrameNumber(ViewOf(*frame, graph.Format()));
        ASSERT_TRUE(number) << "frame " << frame->number << " shows no number";
        const bool isOfSecond = IsPictureOf("BGR8", *number, *frame, graph.Format());
        EXPECT_NE(isOfSecond, IsPictureOf("Mono8", *number, *frame, graph.Format()))
            << "frame " << frame->number << " is of neither camera";
        EXPECT_TRUE(isOfSecond || ofSecond == 0) << "frame " << frame->number << " comes too late";
        ++(isOfSecond ? ofSecond : ofFirst);
    }
    EXPECT_GE(ofFirst, 8u);
    EXPECT_GE(ofSecond, 10u);
}

TEST_F(TwoCamerasTest, ChangingToAndFroWhileStreamingLeavesNothingBehind)
{
    VxSimulatedCamera first;
    Start(first, SmallCamera("Mono8"));
    ExpectNothingIsLeftBy([&] {
        FrameCatcher catcher;
        GrabberGraph graph(FilterFor(first), MEDIASUBTYPE_RGB24, catcher);
        ASSERT_TRUE(graph.IsBuilt());
        ASSERT_HRESULT_SUCCEEDED(graph.Run());
        for (const std::string& camera :
             {CameraOfTheDriver(), first.ControlEndpoint().address.ToString(), CameraOfTheDriver()}) {
            const bool isColoured = camera == CameraOfTheDriver();
            Connect(ComPtr<IBaseFilter>::Share(&graph.Source()), camera);
            catcher.Forget();
            EXPECT_TRUE(catcher.WaitFor(
                [&](const CaughtFrame& caught) {
                    return !caught.IsZero() && IsColoured(caught, graph.Format()) == isColoured;
                },
                kPatience))
                << "no picture of " << camera;
        }
        EXPECT_LT(graph.TimedStop(), kStopLimit);
    });
}

} // namespace
