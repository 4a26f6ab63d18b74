#include "system/ChildProcess.h"
#include "system/RoadTest.h"

#include "VxSimulator/picture/FrameNumberStrip.h"
#include "VxSimulator/picture/TestPicture.h"

#include "vxgrab/AviLayout.h"

#include <gmock/gmock.h>

#include <opencv2/core.hpp>
#include <opencv2/imgcodecs.hpp>

#include <array>
#include <fstream>
#include <iterator>
#include <sstream>

namespace {

using testing::HasSubstr;

/// vxgrab as a user runs it, with a simulated camera.
class ProgramTest : public RoadTest {
protected:
    static constexpr std::uint32_t kWidthPx = 320;
    static constexpr std::uint32_t kHeightPx = 240;

    static VxSimulatorOptions ColouredCamera() { return SmallCamera("BGR8"); }

    static ProgramRun VxGrab(std::vector<std::wstring> arguments)
    {
        arguments.insert(arguments.begin(), {L"--dll", ModuleUnderTest::File().wstring(), L"--quiet"});
        return RunProgram(WindowsPath(EnvironmentText(L"VX_GRABBER")), arguments, std::chrono::seconds(60));
    }

    static std::vector<std::byte> ContentOf(const std::filesystem::path& file)
    {
        std::ifstream in(file, std::ios::binary);
        const std::vector<char> content{std::istreambuf_iterator<char>(in), {}};
        const auto bytes = std::as_bytes(std::span(content));
        return {bytes.begin(), bytes.end()};
    }

    /// @return  the value behind "name: " in a summary
    static std::string ValueOf(const std::string& summary, const std::string& name)
    {
        std::istringstream lines(summary);
        for (std::string line; std::getline(lines, line);) {
            if (line.starts_with(name + ": "))
                return line.substr(name.size() + 2);
        }
        ADD_FAILURE() << "no line '" << name << "' in:\n" << summary;
        return {};
    }
};

/// Rows from the top down, blue, green, red, as OpenCV and the test picture have them.
simulator::PictureView ViewOf(const cv::Mat& picture)
{
    simulator::PictureView view;
    view.pixels = {reinterpret_cast<const std::byte*>(picture.data), picture.total() * picture.elemSize()};
    view.widthPx = static_cast<std::uint32_t>(picture.cols);
    view.heightPx = static_cast<std::uint32_t>(picture.rows);
    view.strideBytes = picture.step;
    return view;
}

TEST_F(ProgramTest, WritesThePictureThatTheCameraSent)
{
    VxSimulatedCamera camera;
    Start(camera, ColouredCamera());
    const auto file = OutputFolder() / L"vxgrab-\u043a\u0430\u0434\u0440.png";

    const ProgramRun run = VxGrab({L"--device-id", L"127.0.0.1", L"--png", file.wstring()});

    ASSERT_EQ(run.exitCode, 0u) << run.output;
    const auto content = ContentOf(file);
    const cv::Mat picture = cv::imdecode(
        cv::Mat(1, static_cast<int>(content.size()), CV_8U, const_cast<std::byte*>(content.data())),
        cv::IMREAD_UNCHANGED);
    ASSERT_EQ(picture.size(), cv::Size(kWidthPx, kHeightPx));
    ASSERT_EQ(picture.type(), CV_8UC3);
    const auto number = simulator::ReadFrameNumber(ViewOf(picture));
    ASSERT_TRUE(number);
    const auto sent = simulator::TestPictureBgr(*number, kWidthPx, kHeightPx, ColouredCamera().pixelFormat);
    const auto received = ViewOf(picture).pixels;
    EXPECT_TRUE(std::equal(sent.begin(), sent.end(), received.begin(), received.end()));
}

TEST_F(ProgramTest, SumsUpWhatWasGrabbed)
{
    VxSimulatedCamera camera;
    Start(camera, ColouredCamera());

    const ProgramRun run =
        VxGrab({L"--device-id", L"127.0.0.1", L"--frames", L"25", L"--subtype", L"rgb32", L"--summary"});

    ASSERT_EQ(run.exitCode, 0u) << run.output;
    EXPECT_THAT(ValueOf(run.output, "camera"), HasSubstr("127.0.0.1"));
    EXPECT_THAT(ValueOf(run.output, "camera"), HasSubstr(ColouredCamera().modelName));
    EXPECT_EQ(ValueOf(run.output, "format"), "RGB32 320 x 240");
    const int delivered = std::stoi(ValueOf(run.output, "frames delivered"));
    EXPECT_EQ(delivered - std::stoi(ValueOf(run.output, "zero frames")), 25);
    EXPECT_GT(std::stod(ValueOf(run.output, "frames per second")), 0.0);
    EXPECT_GE(std::stoi(ValueOf(run.output, "frames dropped")), 0);
    EXPECT_EQ(ValueOf(run.output, "files written"), "none");
}

TEST_F(ProgramTest, FilmHoldsThePicturesThatTheCameraSentInOrder)
{
    VxSimulatedCamera camera;
    Start(camera, ColouredCamera());
    const auto file = OutputFolder() / L"vxgrab.avi";

    const ProgramRun run =
        VxGrab({L"--device-id", L"127.0.0.1", L"--frames", L"10", L"--avi", file.wstring(), L"--summary"});

    ASSERT_EQ(run.exitCode, 0u) << run.output;
    const auto content = ContentOf(file);
    constexpr std::size_t kChunkBytes = vxgrab::kAviChunkHeadBytes + std::size_t{kWidthPx} * kHeightPx * 3;
    const std::size_t frames = static_cast<std::size_t>(std::stoi(ValueOf(run.output, "frames delivered")));
    ASSERT_GE(content.size(), vxgrab::kAviHeaderBytes + frames * kChunkBytes);
    std::uint32_t before = 0;
    std::size_t pictures = 0;
    for (std::size_t i = 0; i < frames; ++i) {
        simulator::PictureView view;
        view.pixels =
            std::span(content).subspan(vxgrab::kAviHeaderBytes + i * kChunkBytes + vxgrab::kAviChunkHeadBytes,
                                       kChunkBytes - vxgrab::kAviChunkHeadBytes);
        view.widthPx = kWidthPx;
        view.heightPx = kHeightPx;
        view.strideBytes = std::size_t{kWidthPx} * 3;
        view.rowOrder = simulator::RowOrder::BottomUp;
        const auto number = simulator::ReadFrameNumber(view);
        if (!number)
            continue; // a zero frame before the camera's first picture
        EXPECT_TRUE(pictures == 0 || *number > before);
        before = *number;
        ++pictures;
    }
    EXPECT_EQ(pictures, 10u);
}

TEST_F(ProgramTest, ReadsAndChangesFeaturesOfTheCamera)
{
    VxSimulatedCamera camera;
    Start(camera, ColouredCamera());

    const ProgramRun run = VxGrab({L"--device-id", L"127.0.0.1", L"--set", L"Width=256", L"--get", L"Width",
                                   L"--get", L"DeviceModelName", L"--features"});

    ASSERT_EQ(run.exitCode, 0u) << run.output;
    EXPECT_THAT(run.output, HasSubstr("Width=256\n"));
    EXPECT_THAT(run.output, HasSubstr("DeviceModelName=" + ColouredCamera().modelName + "\n"));
    EXPECT_THAT(run.output, HasSubstr("AcquisitionStart"));
}

TEST_F(ProgramTest, NamesAFeatureThatIsNotThere)
{
    VxSimulatedCamera camera;
    Start(camera, ColouredCamera());

    const ProgramRun run = VxGrab({L"--device-id", L"127.0.0.1", L"--get", L"Widht"});

    EXPECT_EQ(run.exitCode, 2u);
    EXPECT_THAT(run.output, HasSubstr("there is no feature 'Widht'"));
}

TEST_F(ProgramTest, SaysThatNoPictureArrivedWhenTheCameraIsAbsent)
{
    const ProgramRun run = VxGrab({L"--device-id", L"127.0.0.99", L"--seconds", L"3", L"--summary"});

    EXPECT_EQ(run.exitCode, 1u) << run.output;
    EXPECT_THAT(run.output, HasSubstr("no connection to camera '127.0.0.99'"));
    EXPECT_THAT(run.output, HasSubstr("no picture arrived"));
    EXPECT_EQ(ValueOf(run.output, "frames delivered"), ValueOf(run.output, "zero frames"));
}

TEST_F(ProgramTest, GivesUpAfterTheTimeThatWasSet)
{
    const ProgramRun run = VxGrab({L"--device-id", L"127.0.0.99", L"--png",
                                   (OutputFolder() / L"never.png").wstring(), L"--timeout", L"1"});

    EXPECT_EQ(run.exitCode, 1u) << run.output;
    EXPECT_FALSE(std::filesystem::exists(OutputFolder() / L"never.png"));
}

TEST_F(ProgramTest, ShowsThePropertyPagesUntilTheyAreClosed)
{
    VxSimulatedCamera camera;
    Start(camera, ColouredCamera());
    ChildProcess program(
        WindowsPath(EnvironmentText(L"VX_GRABBER")),
        {L"--dll", ModuleUnderTest::File().wstring(), L"--device-id", L"127.0.0.1", L"--properties"});
    HWND frame = nullptr;
    const auto end = std::chrono::steady_clock::now() + kPatience;
    while (frame == nullptr && std::chrono::steady_clock::now() < end) {
        // The system puts words of its own before the filter's name.
        ::EnumWindows(
            [](HWND window, LPARAM found) -> BOOL {
                std::array<wchar_t, 200> title{};
                ::GetWindowTextW(window, title.data(), 200);
                if (::IsWindowVisible(window) &&
                    std::wstring(title.data()).find(L"Vexa DirectShow Source") != std::wstring::npos)
                    *reinterpret_cast<HWND*>(found) = window;
                return TRUE;
            },
            reinterpret_cast<LPARAM>(&frame));
        ::Sleep(20);
    }
    ASSERT_NE(frame, nullptr) << program.Output();
    EXPECT_TRUE(camera.ControlOwner()) << "connected before the pages are shown";

    ::PostMessageW(frame, WM_CLOSE, 0, 0);

    EXPECT_EQ(program.WaitForEnd(kPatience), 0u) << program.Output();
    EXPECT_FALSE(camera.ControlOwner());
}

TEST_F(ProgramTest, AsksForACameraWhenNoneIsSet)
{
    const ProgramRun run = VxGrab({L"--seconds", L"1"});

    EXPECT_EQ(run.exitCode, 2u) << run.output;
    EXPECT_THAT(run.output, HasSubstr("--device-id"));
}

TEST_F(ProgramTest, SaysWhenTheModuleIsNone)
{
    const ProgramRun run =
        RunProgram(WindowsPath(EnvironmentText(L"VX_GRABBER")),
                   {L"--dll", L"C:\\windows\\system32\\kernel32.dll"}, std::chrono::seconds(60));

    EXPECT_EQ(run.exitCode, 2u);
    EXPECT_THAT(run.output, HasSubstr("it is no COM module"));
}

} // namespace
