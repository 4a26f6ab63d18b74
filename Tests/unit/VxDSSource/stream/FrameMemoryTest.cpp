#include "CanarySample.h"
#include "HostFilter.h"
#include "MemoryRequests.h"

#include "VxCamera/pixel/VxPixelFormat.h"
#include "VxDSSource/stream/ZoomTable.h"
#include "support/camera/StandingPicture.h"
#include "support/directshow/ComApartment.h"
#include "support/registry/PrivateUserRegistry.h"
#include "unit/VxDSSource/overlay/WorkingDirectory.h"

#include <gtest/gtest.h>
#include <opencv2/core.hpp>
#include <opencv2/imgproc.hpp>

#include <cstdlib>
#include <new>
#include <ostream>
#include <string>

// Frames of a whole pin, with the real conversion behind it, take no memory once the first ones have gone
// through.

namespace {

using vxds::Setting;

constexpr std::uint32_t kWidthPx = 320;
constexpr std::uint32_t kHeightPx = 240;

// Fixed by the order in which the pin offers its types.
enum class Output : int { Rgb24 = 0, Rgb32 = 1, Yuy2 = 3 };

struct Road {
    const char* name;
    std::uint32_t pixelType;
    Output output;
    std::uint32_t kernelSize = 0;
    int zoomValue = 0;
    std::uint32_t deliveredWidthPx = kWidthPx;

    std::uint32_t sourceWidthPx = kWidthPx;
    std::uint32_t rowPaddingBytes = 0; ///< of the camera's picture
    std::uint32_t role = 1;            ///< 0: the camera is controlled, too
    bool isConnected = true;
    bool hadDiagnostics = false;    ///< that were switched off
    std::uint32_t laterWidthPx = 0; ///< of the camera's pictures once its size was read; 0: that size

    [[nodiscard]] bool IsProcessed() const
    {
        return kernelSize > 0 || zoomValue != 0 || deliveredWidthPx != sourceWidthPx;
    }
};

std::ostream& operator<<(std::ostream& out, const Road& road)
{
    return out << road.name;
}

/// @return  how often OpenCV itself asks for memory for a frame of this road, everything it was given being
/// there
std::size_t RequestsOfOpenCv(const Road& road)
{
    const cv::Size delivered(static_cast<int>(road.deliveredWidthPx), static_cast<int>(kHeightPx));
    const int type = road.output == Output::Rgb32 ? CV_8UC4 : CV_8UC3;
    const vxds::PictureSize region =
        vxds::ZoomTable({road.sourceWidthPx, kHeightPx}).RegionFor(road.zoomValue);
    const cv::Mat shown(static_cast<int>(region.heightPx), static_cast<int>(region.widthPx), type,
                        cv::Scalar(1, 2, 3));
    cv::Mat resized(delivered, type, cv::Scalar(0, 0, 0));
    cv::Mat filtered = resized.clone();

    const std::size_t before = MemoryRequests();
    if (shown.size() != delivered)
        cv::resize(shown, resized, delivered, 0.0, 0.0, cv::INTER_AREA);
    if (road.kernelSize > 0)
        cv::medianBlur(resized, filtered, static_cast<int>(road.kernelSize));
    return MemoryRequests() - before;
}

class FrameMemoryTest : public testing::TestWithParam<Road> {
protected:
    FrameMemoryTest() { m_host->NonDelegatingAddRef(); }
    ~FrameMemoryTest() override
    {
        EXPECT_EQ(m_host->NonDelegatingRelease(), 0u);
        StandingPicture::AllowControl(false);
    }

    VxDSStream& Pin() { return m_host->Pin(); }

    void SetUpPin(const Road& road)
    {
        Pin().Settings().Store(Setting::Role, road.role);
        Pin().Settings().Store(Setting::DeviceId, std::wstring(L"camera"));
        // With control of the camera the output size counts, else the delivered one.
        for (const Setting width : {Setting::Width, Setting::OutputWidth})
            Pin().Settings().Store(width, road.deliveredWidthPx);
        for (const Setting height : {Setting::Height, Setting::OutputHeight})
            Pin().Settings().Store(height, kHeightPx);
        Pin().Settings().Store(Setting::KernelSize, road.kernelSize);
        Pin().Settings().Store(Setting::ZoomValue,
                               static_cast<std::uint32_t>(road.zoomValue)); // the same bits
        Pin().Settings().Store(Setting::OutputPixelType, road.output == Output::Yuy2 ? 1U : 0U);
        Pin().ApplyConnection();
        CMediaType type;
        ASSERT_EQ(Pin().GetMediaType(static_cast<int>(road.output), &type), S_OK);
        ASSERT_EQ(Pin().SetMediaType(&type), S_OK);
    }

    /// Lets so many frames go through; the last one is a picture.
    void Fill(CanarySample& sample, int frames)
    {
        for (int i = 0; i < frames; ++i)
            ASSERT_EQ(Pin().FillBuffer(&sample), S_OK);
        ASSERT_TRUE(sample.mediaTime) << "a frame without a picture shows nothing";
        ASSERT_FALSE(sample.IsAll(0));
    }

private:
    const TemporaryFolder m_folder{L"frame-memory-"}; // for what diagnostics write
    const WorkingDirectory m_current{m_folder.Path()};
    ComApartment m_com;
    PrivateUserRegistry m_registry;
    HostFilter* m_host = new HostFilter; // by its reference
};

TEST_P(FrameMemoryTest, AFrameTakesNoMemoryOnceSomeHaveGoneThrough)
{
    constexpr int kFirstFrames = 3;
    constexpr std::size_t kFrames = 10;
    const Road& road = GetParam();
    StandingPicture::AllowControl(road.role == 0);
    ASSERT_TRUE(StandingPicture::Show(road.pixelType, road.sourceWidthPx, kHeightPx, road.rowPaddingBytes));
    SetUpPin(road);
    if (road.laterWidthPx != 0) {
        ASSERT_TRUE(StandingPicture::Show(road.pixelType, road.laterWidthPx, kHeightPx));
    }
    CanarySample sample(std::size_t{road.deliveredWidthPx} * kHeightPx * 4); // enough for each output
    if (road.hadDiagnostics) {
        Pin().SetDiagnosticsEnabled(true);
        ASSERT_NO_FATAL_FAILURE(Fill(sample, kFirstFrames));
        Pin().SetDiagnosticsEnabled(false);
    }
    ASSERT_NO_FATAL_FAILURE(Fill(sample, kFirstFrames));

    if (!GetParam().IsProcessed()) {
        ASSERT_EQ(RequestsOfOpenCv(GetParam()), 0u);
    }
    const std::size_t before = MemoryRequests();
    for (std::size_t i = 0; i < kFrames; ++i)
        Pin().FillBuffer(&sample);
    const std::size_t after = MemoryRequests();

    EXPECT_LE(after - before, RequestsOfOpenCv(GetParam()) * kFrames) << "in " << kFrames << " frames";
}

class EmptyFrameMemoryTest : public FrameMemoryTest {};

TEST_P(EmptyFrameMemoryTest, AFrameThatShowsNothingTakesNoMemoryEither)
{
    constexpr int kFrames = 5; // few: without a stream each takes its nominal time
    const Road& road = GetParam();
    ASSERT_TRUE(StandingPicture::Show(road.pixelType, road.sourceWidthPx, kHeightPx));
    if (road.isConnected)
        SetUpPin(road);
    CanarySample sample(std::size_t{kWidthPx} * kHeightPx * 4);
    ASSERT_EQ(Pin().FillBuffer(&sample), S_OK);
    ASSERT_TRUE(sample.IsAll(0));

    const std::size_t before = MemoryRequests();
    for (int i = 0; i < kFrames; ++i)
        Pin().FillBuffer(&sample);

    EXPECT_EQ(MemoryRequests() - before, 0U) << "in " << kFrames << " frames";
}

INSTANTIATE_TEST_SUITE_P(Roads, EmptyFrameMemoryTest,
                         testing::Values(Road{"GreyCameraToYuy2", VxPfnc::kMono8, Output::Yuy2},
                                         Road{"KernelThatNoFilterTakes", VxPfnc::kBgr8, Output::Rgb24, 4},
                                         Road{.name = "NoStream",
                                              .pixelType = VxPfnc::kMono8,
                                              .output = Output::Rgb24,
                                              .isConnected = false}),
                         [](const auto& test) { return std::string(test.param.name); });

INSTANTIATE_TEST_SUITE_P(
    Roads, FrameMemoryTest,
    testing::Values(
        Road{"Mono8ToRgb24", VxPfnc::kMono8, Output::Rgb24},
        Road{"Mono8ToRgb32", VxPfnc::kMono8, Output::Rgb32},
        Road{"Bgr8ToRgb24", VxPfnc::kBgr8, Output::Rgb24}, Road{"Bgr8ToRgb32", VxPfnc::kBgr8, Output::Rgb32},
        Road{"BayerRg8ToRgb24", VxPfnc::kBayerRG8, Output::Rgb24},
        Road{"Yuv422ToRgb24", VxPfnc::kYuv422_8, Output::Rgb24},
        Road{"Yuv422ToYuy2", VxPfnc::kYuv422_8, Output::Yuy2},
        Road{"Median3", VxPfnc::kBgr8, Output::Rgb24, 3}, Road{"Median5", VxPfnc::kBgr8, Output::Rgb24, 5},
        Road{"Median7", VxPfnc::kBgr8, Output::Rgb24, 7}, Road{"Zoom", VxPfnc::kBgr8, Output::Rgb24, 0, 2},
        Road{"Resize", VxPfnc::kBgr8, Output::Rgb24, 0, 0, kWidthPx / 2},
        Road{"ResizeAndMedian", VxPfnc::kBgr8, Output::Rgb24, 3, 0, kWidthPx / 2},
        Road{"YuvMedian3", VxPfnc::kYuv422_8, Output::Yuy2, 3},
        Road{"YuvResize", VxPfnc::kYuv422_8, Output::Yuy2, 0, 0, kWidthPx / 2},
        Road{"Median3ToRgb32", VxPfnc::kBgr8, Output::Rgb32, 3},
        Road{"Median5ToRgb32", VxPfnc::kBgr8, Output::Rgb32, 5},
        Road{"ZoomToRgb32", VxPfnc::kBgr8, Output::Rgb32, 0, 9},
        Road{"ResizeAndMedianToRgb32", VxPfnc::kMono8, Output::Rgb32, 3, 0, kWidthPx * 2},
        Road{"ZoomOfTheWholeSizeAndMedian", VxPfnc::kBayerRG8, Output::Rgb24, 5, 3},
        Road{"UyvyToRgb24", VxPfnc::kYuv422_8_Uyvy, Output::Rgb24},
        Road{"UyvyToYuy2", VxPfnc::kYuv422_8_Uyvy, Output::Yuy2},
        Road{"YuvZoom", VxPfnc::kYuv422_8, Output::Yuy2, 0, 4},
        Road{"YuvMedian5", VxPfnc::kYuv422_8_Uyvy, Output::Yuy2, 5},
        Road{"YuvResizeAndMedian", VxPfnc::kYuv422_8_Uyvy, Output::Yuy2, 3, 0, kWidthPx / 2},
        Road{"YuvZoomAndMedian", VxPfnc::kYuv422_8, Output::Yuy2, 3, 7},
        Road{.name = "YuvWithPaddedRows",
             .pixelType = VxPfnc::kYuv422_8,
             .output = Output::Yuy2,
             .rowPaddingBytes = 6},
        Road{.name = "YuvOfOddWidth",
             .pixelType = VxPfnc::kYuv422_8,
             .output = Output::Yuy2,
             .deliveredWidthPx = kWidthPx - 1,
             .sourceWidthPx = kWidthPx - 1},
        Road{.name = "YuvOfOddWidthResizedAndMedian",
             .pixelType = VxPfnc::kYuv422_8_Uyvy,
             .output = Output::Yuy2,
             .kernelSize = 3,
             .sourceWidthPx = kWidthPx - 1},
        Road{.name = "ControlledCamera", .pixelType = VxPfnc::kBgr8, .output = Output::Rgb24, .role = 0},
        Road{.name = "ControlledCameraZoomAndMedian",
             .pixelType = VxPfnc::kBgr8,
             .output = Output::Rgb24,
             .kernelSize = 3,
             .zoomValue = 2,
             .role = 0},
        Road{
            .name = "ControlledYuvCamera", .pixelType = VxPfnc::kYuv422_8, .output = Output::Yuy2, .role = 0},
        Road{.name = "SmallerThanTheCamera",
             .pixelType = VxPfnc::kBgr8,
             .output = Output::Rgb24,
             .kernelSize = 3,
             .role = 0,
             .laterWidthPx = kWidthPx / 2},
        Road{.name = "YuvSmallerThanTheCamera",
             .pixelType = VxPfnc::kYuv422_8,
             .output = Output::Yuy2,
             .role = 0,
             .laterWidthPx = kWidthPx / 2},
        Road{.name = "AfterDiagnostics",
             .pixelType = VxPfnc::kBgr8,
             .output = Output::Rgb24,
             .hadDiagnostics = true},
        Road{.name = "Median3AfterDiagnostics",
             .pixelType = VxPfnc::kBgr8,
             .output = Output::Rgb32,
             .kernelSize = 3,
             .hadDiagnostics = true},
        Road{.name = "YuvMedian3AfterDiagnostics",
             .pixelType = VxPfnc::kYuv422_8,
             .output = Output::Yuy2,
             .kernelSize = 3,
             .hadDiagnostics = true}),
    [](const auto& test) { return std::string(test.param.name); });

TEST(MemoryRequestsTest, CountsEveryWayOfTakingMemory)
{
    const auto countOf = [](auto take) {
        const std::size_t before = MemoryRequests();
        take();
        return MemoryRequests() - before;
    };

    void* volatile block = nullptr; // the compiler may leave out what nobody looks at
    EXPECT_GT(countOf([&] { block = ::operator new(100); }), 0u);
    ::operator delete(block);
    EXPECT_GT(countOf([&] { block = std::malloc(100); }), 0u);
    EXPECT_GT(countOf([&] { block = std::realloc(block, 200); }), 0u);
    std::free(block);
    EXPECT_GT(countOf([&] { block = std::calloc(10, 10); }), 0u);
    std::free(block);
    EXPECT_GT(countOf([&] { block = cv::fastMalloc(100); }), 0u);
    cv::fastFree(block);
    EXPECT_GT(countOf([] { const cv::Mat picture(100, 100, CV_8UC3); }), 0u);
    EXPECT_EQ(countOf([] {}), 0u);
}

} // namespace
