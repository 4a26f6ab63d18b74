#include "CameraLink.h"

#include "VxDSSource/camera/VxGenParameter.h"
#include "VxDSSource/camera/VxGenParameterArray.h"
#include "VxDSSource/camera/VxImage.h"
#include "VxSimulator/VxSimulatedCamera.h"

#include <gtest/gtest.h>

#include <array>
#include <atomic>
#include <chrono>
#include <functional>
#include <thread>
#include <tuple>
#include <vector>

// Everything that may run at the same time as a stream does so here. Short, so that it can be run with the
// thread sanitizer: preset linux-tsan, target VxCameraThreadsTest.

namespace {

using namespace std::chrono_literals;

constexpr const char* kAddress = "127.0.0.1";

/// Calls functions again and again, each in a thread of its own, until its end.
class Busy {
public:
    explicit Busy(const std::vector<std::function<void()>>& actions)
    {
        for (const auto& action : actions)
            m_threads.emplace_back([this, action] {
                while (!m_isDone)
                    action();
            });
    }
    ~Busy()
    {
        m_isDone = true;
        for (std::thread& thread : m_threads)
            thread.join();
    }
    Busy(const Busy&) = delete;
    Busy& operator=(const Busy&) = delete;

private:
    std::atomic<bool> m_isDone = false;
    std::vector<std::thread> m_threads;
};

class StreamThreadsTest : public testing::Test {
protected:
    void SetUp() override
    {
        VxSimulatorOptions options;
        options.frameRateHz = 100;
        options.widthPx = 320;
        options.heightPx = 240;
        options.faults.dropShare = 0.02;
        ASSERT_TRUE(m_camera.Start(options).IsOK());
        m_link.Connect(kAddress);
        m_link.OpenStream(kAddress);
        std::ignore = m_link.Features().SetIntegerValue("GevSCPSPacketSize", 1500);
    }

    VxSimulatedCamera m_camera;
    CameraLink m_link;
};

TEST_F(StreamThreadsTest, StatisticsSettingsAndFeaturesMayBeUsedWhileFramesArrive)
{
    m_link.Start(16);
    VxGenParameterArray& parameters = *m_link.stream.GetParameters();
    const Busy busy({
        [&] {
            std::int64_t value = 0;
            EXPECT_TRUE(m_link.Features().GetIntegerValue("GevHeartbeatTimeout", value).IsOK());
        },
        [&] {
            VxString text;
            for (std::size_t i = 0; i < parameters.GetCount(); ++i)
                EXPECT_TRUE(parameters.Get(i)->ToString(text).IsOK());
        },
        [&] {
            EXPECT_TRUE(parameters.SetIntegerValue("ResendGapTimeout", 500).IsOK());
            EXPECT_TRUE(parameters.SetIntegerValue("ResendGapTimeout", 1000).IsOK());
            EXPECT_TRUE(parameters.ExecuteCommand("Reset").IsOK());
            std::this_thread::sleep_for(1ms);
        },
        [&] { std::ignore = m_link.pipeline->GetOutputQueueSize(); },
    });
    // Of so many at least this many: all, unless the machine is very busy.
    constexpr int kFrames = 600;
    constexpr int kWhole = 50;
    int whole = 0;
    for (int i = 0; i < kFrames && whole < kWhole; ++i)
        whole += m_link.Next()->GetOperationResult().IsOK() ? 1 : 0;

    EXPECT_EQ(whole, kWhole);
}

TEST_F(StreamThreadsTest, AConsumerMayRetrieveWhileAnotherThreadStartsAndStops)
{
    std::atomic<int> retrieved = 0;
    const Busy busy({[&] {
        VxBuffer* buffer = nullptr;
        if (!m_link.pipeline->RetrieveNextBuffer(&buffer, 20).IsOK())
            return;
        ++retrieved;
        std::ignore = buffer->GetImage()->GetDataPointer()[0];
        EXPECT_TRUE(m_link.pipeline->ReleaseBuffer(buffer).IsOK());
    }});
    for (int i = 0; i < 10; ++i) {
        m_link.Start(4);
        std::this_thread::sleep_for(50ms);
        m_link.Stop();
    }

    EXPECT_GT(retrieved, 0);
}

TEST_F(StreamThreadsTest, ALinkMayComeAndGoWhileFramesArrive)
{
    m_link.Start(16);
    const VxString local = m_link.stream.GetLocalIPAddress();
    for (int i = 0; i < 10; ++i) {
        ASSERT_TRUE(m_link.Gev().SetStreamDestination(local, m_link.stream.GetLocalPort(), 0).IsOK());
        ASSERT_NE(m_link.Next(), nullptr);
    }
    EXPECT_TRUE(m_link.device->Disconnect().IsOK());
    VxString isPossible;
    EXPECT_TRUE(m_link.stream.GetParameters()->Get("ResendPossible")->ToString(isPossible).IsOK());
    EXPECT_EQ(isPossible, "false"); // the camera is not ours any more
}

} // namespace
