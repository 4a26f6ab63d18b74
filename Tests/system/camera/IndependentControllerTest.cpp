#include "CameraLink.h"

#include "VxDSSource/camera/VxGenParameterArray.h"
#include "VxSimulator/VxSimulatedCamera.h"

#include <gtest/gtest.h>

#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <csignal>
#include <cstdio>
#include <string>
#include <thread>

namespace {

using namespace std::chrono_literals;
using Clock = std::chrono::steady_clock;

constexpr const char* kAddress = "127.0.0.1";
constexpr auto kPatience = 20s; // chosen: longer than any step takes

/// An independent client (of aravis-tools) that controls the camera and streams from it.
///
/// Owner:  the test; the program does not outlive it.
/// Thread: one.
class IndependentController {
public:
    IndependentController()
    {
        m_process = ::fork();
        if (m_process != 0)
            return;
        std::freopen("/dev/null", "w", stdout);
        std::freopen("/dev/null", "w", stderr);
        ::execlp("arv-camera-test-0.8", "arv-camera-test-0.8", "--name", kAddress, nullptr);
        std::_Exit(127); // as shells say that there is no such program
    }
    ~IndependentController() { End(SIGKILL); }
    IndependentController(const IndependentController&) = delete;
    IndependentController& operator=(const IndependentController&) = delete;

    void End(int signal)
    {
        if (m_process <= 0)
            return;
        ::kill(m_process, signal);
        ::waitpid(m_process, nullptr, 0);
        m_process = 0;
    }

private:
    pid_t m_process = 0; // 0: none
};

class IndependentControllerTest : public testing::Test {
protected:
    void SetUp() override { ASSERT_TRUE(m_camera.Start({}).IsOK()); }

    void AwaitControlBySomebody()
    {
        const auto start = Clock::now();
        while (!m_camera.ControlOwner() && Clock::now() - start < kPatience)
            std::this_thread::sleep_for(10ms);
        ASSERT_TRUE(m_camera.ControlOwner()) << "arv-camera-test-0.8 is missing, or does not find the camera";
    }

    VxSimulatedCamera m_camera;
    CameraLink m_link;
};

TEST_F(IndependentControllerTest, WhileAnotherClientControlsTheCameraWeAreDeniedAtOnceAndToldWhoItIs)
{
    IndependentController other;
    AwaitControlBySomebody();
    const std::string owner = m_camera.ControlOwner()->ToString();
    const auto start = Clock::now();

    VxResult result;
    const DevicePointer device(VxDevice::CreateAndConnect(kAddress, &result));

    EXPECT_LT(Clock::now() - start, 1s);
    EXPECT_EQ(result.Code(), VxError::AccessDenied);
    EXPECT_EQ(device, nullptr);
    EXPECT_NE(result.GetDescription().Narrow().find(owner), std::string::npos)
        << result.GetDescription().Narrow();
    ASSERT_TRUE(m_camera.ControlOwner());
    EXPECT_EQ(m_camera.ControlOwner()->ToString(), owner) << "it was not disturbed";
}

TEST_F(IndependentControllerTest, AClientOfThisMachineThatHasCrashedIsWaitedFor)
{
    IndependentController other;
    AwaitControlBySomebody();
    other.End(SIGKILL);
    const auto start = Clock::now();

    m_link.Connect(kAddress);

    EXPECT_LT(Clock::now() - start, 5s); // the camera's heartbeat time-out of 3 s, and what comes after it
}

TEST_F(IndependentControllerTest, WhatWeControlAnotherClientDoesNotTakeAway)
{
    m_link.Connect(kAddress);
    const std::string owner = m_camera.ControlOwner()->ToString();
    const auto commands = m_camera.Counters().commandsReceived;

    IndependentController other;
    const auto start = Clock::now();
    while (m_camera.Counters().commandsReceived < commands + 5 && Clock::now() - start < kPatience)
        std::this_thread::sleep_for(10ms);
    std::this_thread::sleep_for(500ms); // chosen: it gives up long before

    EXPECT_TRUE(m_link.device->IsConnected());
    ASSERT_TRUE(m_camera.ControlOwner());
    EXPECT_EQ(m_camera.ControlOwner()->ToString(), owner);
    std::int64_t width = 0;
    EXPECT_TRUE(m_link.Features().GetIntegerValue("Width", width).IsOK());
}

} // namespace
