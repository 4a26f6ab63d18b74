#include "system/ChildProcess.h"
#include "system/RoadTest.h"

#include "VxDSSource/camera/VxDevice.h"

#include <memory>

namespace {

using vxgrab::ComPtr;

/// Another application that controls a camera.
class OtherController {
public:
    explicit OtherController(const std::string& connectionId)
        : m_device(VxDevice::CreateAndConnect(VxString(connectionId), &m_result))
    {
        EXPECT_TRUE(m_result.IsOK()) << m_result.GetDescription().GetAscii();
    }
    ~OtherController() { VxDevice::Free(m_device); }
    OtherController(const OtherController&) = delete;
    OtherController& operator=(const OtherController&) = delete;

    [[nodiscard]] bool IsConnected() const { return m_device != nullptr && m_device->IsConnected(); }

private:
    VxResult m_result;
    VxDevice* m_device;
};

/// A simulated camera in a process of its own, which a test can end.
class CameraProcess {
public:
    explicit CameraProcess(const std::string& address)
        : m_process(WindowsPath(EnvironmentText(L"VX_SIMULATOR")),
                    {L"--address", std::wstring(address.begin(), address.end()), L"--width", L"320",
                     L"--height", L"240", L"--fps", L"50"})
    {
        EXPECT_TRUE(m_process.WaitForOutput("ready " + address, std::chrono::seconds(30)))
            << m_process.Output();
    }

    void Kill() { m_process.Kill(); }

private:
    ChildProcess m_process;
};

class CameraTroubleTest : public RoadTest {
protected:
    /// Nobody has this address.
    static constexpr const char* kNobody = "127.0.0.99";

    /// Runs a graph whose camera gives nothing, and demands zero frames and a stop in time.
    void ExpectZeroFramesFrom(const std::string& deviceId)
    {
        FrameCatcher catcher;
        {
            GrabberGraph graph(FilterFor(deviceId), MEDIASUBTYPE_RGB24, catcher);
            ASSERT_TRUE(graph.IsBuilt());
            ASSERT_HRESULT_SUCCEEDED(graph.Run());
            for (int i = 0; i < 2; ++i) {
                const auto frame = catcher.Next(kPatience);
                ASSERT_TRUE(frame) << "the graph stands still";
                EXPECT_FALSE(frame->bytes.empty());
                EXPECT_TRUE(frame->IsZero());
                EXPECT_FALSE(frame->mediaTime) << "a zero frame has no number";
                EXPECT_FALSE(frame->startTime) << "a zero frame has no time";
            }
            EXPECT_LT(graph.TimedStop(), kStopLimit);
        }
        EXPECT_TRUE(m_module.IsUnused());
    }
};

TEST_F(CameraTroubleTest, AbsentCameraGivesZeroFramesAndLeavesNothingBehind)
{
    ExpectNothingIsLeftBy([&] { ExpectZeroFramesFrom(kNobody); });
}

TEST_F(CameraTroubleTest, NoCameraSetGivesZeroFramesAndLeavesNothingBehind)
{
    constexpr Repetition kMany{2, 20}; // a round takes a tenth of a second
    ExpectNothingIsLeftBy([&] { ExpectZeroFramesFrom(""); }, kMany);
}

TEST_F(CameraTroubleTest, CameraControlledBySomebodyElseGivesZeroFramesAndStaysTheirs)
{
    VxSimulatedCamera camera;
    Start(camera, SmallCamera("Mono8"));
    const std::string address = camera.ControlEndpoint().address.ToString();
    OtherController other(address);
    const auto owner = camera.ControlOwner();
    ASSERT_TRUE(owner);

    ExpectNothingIsLeftBy([&] { ExpectZeroFramesFrom(address); });

    EXPECT_TRUE(other.IsConnected());
    EXPECT_EQ(camera.ControlOwner(), owner);
}

TEST_F(CameraTroubleTest, CameraIsFreeAgainAfterTheFilterIsGone)
{
    VxSimulatedCamera camera;
    Start(camera, SmallCamera("Mono8"));

    GrabOnePicture(camera);

    EXPECT_FALSE(camera.ControlOwner());
    EXPECT_FALSE(camera.IsAcquiring());
}

TEST_F(CameraTroubleTest, CameraWhoseProcessEndsWhileStreamingGivesZeroFramesAndLeavesNothingBehind)
{
    const auto streamUntilTheCameraIsGone = [&] {
        auto camera = std::make_unique<CameraProcess>("127.0.0.1");
        FrameCatcher catcher;
        GrabberGraph graph(FilterFor("127.0.0.1"), MEDIASUBTYPE_RGB24, catcher);
        ASSERT_TRUE(graph.IsBuilt());
        ASSERT_HRESULT_SUCCEEDED(graph.Run());
        ASSERT_TRUE(catcher.WaitForPicture(kPatience));

        camera->Kill();
        ASSERT_TRUE(catcher.WaitForZeroFrame(kPatience)) << "the graph stands still";
        ASSERT_TRUE(catcher.WaitForZeroFrame(kPatience)) << "the graph stands still after one zero frame";
        EXPECT_LT(graph.TimedStop(), kStopLimit);
    };
    ExpectNothingIsLeftBy(streamUntilTheCameraIsGone);
}

TEST_F(CameraTroubleTest, StoppingRightAfterTheCameraWentSilentTakesNoLonger)
{
    const auto stopAtOnce = [&] {
        VxSimulatedCamera camera;
        Start(camera, SmallCamera("Mono8"));
        FrameCatcher catcher;
        GrabberGraph graph(FilterFor(camera), MEDIASUBTYPE_RGB24, catcher);
        ASSERT_TRUE(graph.IsBuilt());
        ASSERT_HRESULT_SUCCEEDED(graph.Run());
        ASSERT_TRUE(catcher.WaitForPicture(kPatience));

        camera.Vanish(); // nothing says so: the next command to the camera finds out
        EXPECT_LT(graph.TimedStop(), kStopLimit);
    };
    ExpectNothingIsLeftBy(stopAtOnce);
}

TEST_F(CameraTroubleTest, ACameraThatComesBackDeliversAgainAfterAConnect)
{
    FrameCatcher catcher;
    {
        VxSimulatedCamera camera;
        Start(camera, SmallCamera("Mono8"));
        const std::string address = camera.ControlEndpoint().address.ToString();
        GrabberGraph graph(FilterFor(camera), MEDIASUBTYPE_RGB24, catcher);
        ASSERT_TRUE(graph.IsBuilt());
        ASSERT_HRESULT_SUCCEEDED(graph.Run());
        ASSERT_TRUE(catcher.WaitForPicture(kPatience));
        camera.Stop();
        ASSERT_TRUE(catcher.WaitForZeroFrame(kPatience));

        Start(camera, SmallCamera("Mono8"));
        {
            vxgrab::ComPtr<IBaseFilter> filter = vxgrab::ComPtr<IBaseFilter>::Share(&graph.Source());
            EXPECT_HRESULT_SUCCEEDED(ControlOf(filter)->Disconnect());
            EXPECT_HRESULT_SUCCEEDED(ControlOf(filter)->Connect());
        }
        catcher.Forget();
        EXPECT_TRUE(catcher.WaitForPicture(kPatience)) << "no picture after the camera came back";
        EXPECT_LT(graph.TimedStop(), kStopLimit);
    }
}

} // namespace
