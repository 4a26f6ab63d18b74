#include "system/CameraColours.h"
#include "system/RoadTest.h"

#include "vxgrab/ComText.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <ostream>
#include <string>
#include <vector>

namespace {

using simulator::PictureFormat;
using vxgrab::ComPtr;
using vxgrab::ComText;
using Rows = GrabberGraph::Rows;

struct Output {
    const char* name;
    const GUID* subtype;
    std::size_t bytesPerPixel;
};

constexpr std::array kOutputs{
    Output{"RGB24", &MEDIASUBTYPE_RGB24, 3}, Output{"RGB32", &MEDIASUBTYPE_RGB32, 4},
    Output{"ARGB32", &MEDIASUBTYPE_ARGB32, 4}, Output{"YUY2", &MEDIASUBTYPE_YUY2, 2}};

struct Size {
    const char* name;
    std::uint32_t widthPx;
    std::uint32_t heightPx;
};

// Chosen: no side of the outputs is a simple part of the camera's. The smaller one is flatter than the
// camera's, so that some zooms enlarge it in one direction only; and rows of neither are whole 32-bit words
// in RGB24.
constexpr std::uint32_t kCameraWidthPx = 132;
constexpr std::uint32_t kCameraHeightPx = 66;
constexpr std::array kSizes{Size{"", kCameraWidthPx, kCameraHeightPx}, Size{"Larger", 150, 90},
                            Size{"Smaller", 101, 40}};

/// One way from a camera to an application.
struct Road {
    PictureFormat camera;
    Output output;
    Size size;
    Rows rows;
};

std::string NameOf(const Road& road)
{
    return std::string(road.camera.name) + "To" + road.output.name + road.size.name +
           (road.rows == Rows::TopDown ? "TopDown" : "");
}

void PrintTo(const Road& road, std::ostream* out)
{
    *out << NameOf(road);
}

/// Every camera with every output, and of sizes and directions so many that every pair of two values occurs;
/// with VX_LONG_TESTS all of them.
std::vector<Road> Roads()
{
    const bool isComplete = !EnvironmentText(L"VX_LONG_TESTS").empty();
    const auto cameras = simulator::PictureFormats();
    constexpr std::array kRows{Rows::AsOffered, Rows::TopDown};
    std::vector<Road> roads;
    for (std::size_t i = 0; i < cameras.size() * kOutputs.size() * kSizes.size() * kRows.size(); ++i) {
        const std::size_t rows = i % kRows.size();
        const std::size_t size = i / kRows.size() % kSizes.size();
        const std::size_t output = i / kRows.size() / kSizes.size() % kOutputs.size();
        const std::size_t camera = i / kRows.size() / kSizes.size() / kOutputs.size();
        const bool isOfPairs =
            size == (camera + output) % kSizes.size() && rows == (camera + output / 2) % kRows.size();
        if (isComplete || isOfPairs)
            roads.push_back({cameras[camera], kOutputs[output], kSizes[size], kRows[rows]});
    }
    return roads;
}

/// By how much a byte may be off. One level for each step that rounds on its way through its own arithmetic.
struct Tolerance {
    int even; ///< of bytes 0, 2, 4 ...
    int odd;
};

// Chosen: rounding differs in one byte of ten at most as a rule; what is off everywhere is not rounding.
constexpr std::size_t kInexactPart = 4;

class MatrixTest : public RoadTest, public testing::WithParamInterface<Road> {
protected:
    [[nodiscard]] static bool IsYuvOutput() { return GetParam().output.bytesPerPixel == 2; }
    [[nodiscard]] static bool IsYuvCamera() { return simulator::SharesColour(GetParam().camera.layout); }

    static bool IsResized(std::uint32_t zoom)
    {
        return zoom > 0 || GetParam().size.widthPx != kCameraWidthPx ||
               GetParam().size.heightPx != kCameraHeightPx;
    }

    /// What the application has to get, as bytes in the order of its memory.
    static std::vector<std::uint8_t> Expected(std::uint64_t frameNumber, std::uint32_t zoom, int kernel)
    {
        const Road& road = GetParam();
        if (IsYuvOutput() && !IsYuvCamera())
            return std::vector<std::uint8_t>(
                road.size.widthPx * road.size.heightPx * road.output.bytesPerPixel, 0);
        ReferencePicture picture = ColoursOfCamera(frameNumber, kCameraWidthPx, kCameraHeightPx, road.camera,
                                                   IsYuvOutput() ? YuvRange::Limited : YuvRange::Full);
        if (road.rows == Rows::AsOffered && !IsYuvOutput())
            picture = TurnedOver(picture);
        if (IsResized(zoom)) {
            const auto width = static_cast<std::size_t>(kCameraWidthPx * (10.0 - zoom) * 0.1);
            const auto height = static_cast<std::size_t>(kCameraHeightPx * (10.0 - zoom) * 0.1);
            picture =
                Cropped(picture, (kCameraWidthPx - width) / 2, (kCameraHeightPx - height) / 2, width, height);
            picture = Resized(picture, road.size.widthPx, road.size.heightPx);
        }
        if (kernel > 0)
            picture = Median(picture, kernel);
        return IsYuvOutput() ? AsYuy2(picture) : AsBitmap(picture, road.output.bytesPerPixel, false);
    }

    static Tolerance ToleranceFor(std::uint32_t zoom)
    {
        const int levels = (IsYuvCamera() ? 1 : 0) + (IsResized(zoom) ? 1 : 0);
        if (!IsYuvOutput() || levels == 0)
            return {levels, levels};
        // Brightness and colour are cut off; colour is a difference of two, times 0.713 at most.
        return {levels + 1, static_cast<int>(2 * levels * 0.713) + 1};
    }

    /// Demands that bytes differ by no more than the tolerance allows, and few at all.
    static void ExpectSame(const CaughtFrame& frame, const std::vector<std::uint8_t>& expected,
                           Tolerance tolerance, const std::string& settings)
    {
        ASSERT_EQ(frame.bytes.size(), expected.size()) << settings;
        std::size_t wrong = 0;
        std::size_t inexact = 0;
        std::size_t firstWrong = 0;
        for (std::size_t i = 0; i < expected.size(); ++i) {
            const int distance = std::abs(static_cast<int>(frame.bytes[i]) - expected[i]);
            inexact += distance > 0 ? 1 : 0;
            if (distance > (i % 2 == 0 ? tolerance.even : tolerance.odd) && wrong++ == 0)
                firstWrong = i;
        }
        EXPECT_EQ(wrong, 0u) << settings << ": of " << expected.size() << " bytes; the first is number "
                             << firstWrong;
        EXPECT_LE(inexact, expected.size() / kInexactPart) << settings << ": bytes that are off at all";
    }

    /// Switches a camera and a filter on as the road says, the camera so that it waits for triggers.
    void Prepare()
    {
        VxSimulatorOptions options = SmallCamera(GetParam().camera.name);
        options.widthPx = kCameraWidthPx;
        options.heightPx = kCameraHeightPx;
        options.frameRateHz = 1000;
        Start(m_camera, options);
        m_filter = m_module.CreateFilter();
        ASSERT_TRUE(m_filter);
        m_control = ControlOf(m_filter);
        ASSERT_TRUE(m_control);
        ASSERT_HRESULT_SUCCEEDED(m_control->SetOutputPixelType(IsYuvOutput() ? 1 : 0));
        const Size& size = GetParam().size;
        if (IsResized(0)) {
            ASSERT_HRESULT_SUCCEEDED(
                m_control->SetOutputSize(static_cast<INT>(size.widthPx), static_cast<INT>(size.heightPx)));
        }
        Connect(m_filter, m_camera.ControlEndpoint().address.ToString());
        ASSERT_HRESULT_SUCCEEDED(m_control->SetParameterArray(1)); // the camera's features
        SetTriggerMode("On");
    }

    void SetTriggerMode(const char* mode)
    {
        ComText error;
        ASSERT_HRESULT_SUCCEEDED(
            m_control->SetParameterValue(ComText("TriggerMode").Get(), ComText(mode).Get(), error.Put()))
            << error.Utf8();
    }

    void Trigger()
    {
        ComText error;
        ASSERT_HRESULT_SUCCEEDED(m_control->ExecuteCommand(ComText("TriggerSoftware").Get(), error.Put()))
            << error.Utf8();
    }

    VxSimulatedCamera m_camera;
    ComPtr<IBaseFilter> m_filter;
    ComPtr<IVxDSSource> m_control;
};

// One trigger, one frame: so it is known which picture the camera sent, however little of it is to be seen.
TEST_P(MatrixTest, EveryZoomAndKernelGivesTheReferencePicture)
{
    ASSERT_NO_FATAL_FAILURE(Prepare());
    FrameCatcher catcher;
    GrabberGraph graph(m_filter, *GetParam().output.subtype, catcher, GrabberGraph::Clock::SystemClock,
                       GetParam().rows);
    ASSERT_TRUE(graph.IsBuilt());
    EXPECT_EQ(graph.Format().widthPx, static_cast<int>(GetParam().size.widthPx));
    EXPECT_EQ(graph.Format().heightPx, static_cast<int>(GetParam().size.heightPx));
    ASSERT_HRESULT_SUCCEEDED(graph.Run());
    ASSERT_TRUE(BecomesTrue([&] { return m_camera.IsAcquiring(); }));

    std::uint64_t number = 0;
    for (std::uint32_t zoom = 0; zoom <= 9; ++zoom) {
        for (const int kernel : {0, 3, 5}) {
            const std::string settings = "zoom " + std::to_string(zoom) + " kernel " + std::to_string(kernel);
            ASSERT_HRESULT_SUCCEEDED(m_control->SetZoomValue(static_cast<INT>(zoom)));
            ASSERT_HRESULT_SUCCEEDED(m_control->SetKernelSize(kernel));
            ASSERT_NO_FATAL_FAILURE(Trigger());
            const auto frame = catcher.WaitFor(
                [](const CaughtFrame& each) { return each.mediaTime.has_value(); }, kPatience);
            ASSERT_TRUE(frame) << settings << ": no frame came";
            EXPECT_EQ(*frame->mediaTime, static_cast<LONGLONG>(number));
            ExpectSame(*frame, Expected(number, zoom, kernel), ToleranceFor(zoom), settings);
            ++number;
        }
    }
    EXPECT_TRUE(BecomesTrue([&] { return m_camera.FramesSent() >= number; })); // counted once it is sent
    EXPECT_EQ(m_camera.FramesSent(), number);
    SetTriggerMode("Off"); // else stopping waits for a frame
    EXPECT_LT(graph.TimedStop(), kStopLimit);
}

INSTANTIATE_TEST_SUITE_P(WholeRoad, MatrixTest, testing::ValuesIn(Roads()),
                         [](const auto& test) { return NameOf(test.param); });

} // namespace
