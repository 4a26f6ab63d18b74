#include "CameraLink.h"

#include "VxCamera/wire/registers/BootstrapRegisters.h"
#include "VxDSSource/camera/VxConfigurationReader.h"
#include "VxDSSource/camera/VxConfigurationWriter.h"
#include "VxDSSource/camera/VxGenParameter.h"
#include "VxDSSource/camera/VxGenParameterArray.h"
#include "VxSimulator/VxSimulatedCamera.h"
#include "VxSimulator/device/SimulatedRegisters.h"
#include "support/Latch.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <chrono>
#include <functional>
#include <string>
#include <thread>
#include <tuple>
#include <vector>

// One camera that several threads use at once. Short, so that it can be run with the thread sanitizer, too.

namespace {

using Clock = std::chrono::steady_clock;

constexpr const char* kAddress = "127.0.0.1";

/// Lets all functions begin at the same time, each in a thread of its own, and waits for all to end.
void RunAtOnce(const std::vector<std::function<void()>>& actions)
{
    Latch all(static_cast<std::ptrdiff_t>(actions.size())); // a few
    std::vector<std::thread> threads;
    threads.reserve(actions.size());
    for (const auto& action : actions)
        threads.emplace_back([&all, &action] {
            all.count_down();
            all.wait();
            action();
        });
    for (std::thread& thread : threads)
        thread.join();
}

class DeviceThreadsTest : public testing::Test {
protected:
    void Start(const VxSimulatorOptions& options)
    {
        const VxResult started = m_camera.Start(options);
        ASSERT_TRUE(started.IsOK()) << started.GetDescription().Narrow();
        m_link.Connect(kAddress);
    }

    VxSimulatedCamera m_camera;
    CameraLink m_link;
};

TEST_F(DeviceThreadsTest, TwoThreadsMayDisconnectAtOnceWhileOthersUseTheCamera)
{
    Start({});
    for (int round = 0; round < 5; ++round) {
        std::array<VxResult, 2> results;
        const auto disconnect = [&](std::size_t i) {
            results[i] = m_link.device->Disconnect();
            EXPECT_FALSE(m_link.device->IsConnected()) << "it has returned before the other one was done";
        };
        const auto use = [&] {
            std::int64_t value = 0;
            while (m_link.device->IsConnected())
                std::ignore = m_link.Features().GetIntegerValue("GevHeartbeatTimeout", value);
        };

        RunAtOnce({[&] { disconnect(0); }, [&] { disconnect(1); }, use});

        EXPECT_TRUE(results[0].IsOK()) << results[0].GetDescription().Narrow();
        EXPECT_TRUE(results[1].IsOK()) << results[1].GetDescription().Narrow();
        m_link.Connect(kAddress); // would be refused, had control not been given back
    }
}

TEST_F(DeviceThreadsTest, ThePacketSizeIsReadWithoutWaitingForASearchForIt)
{
    VxSimulatorOptions options;
    options.hasTestPackets = false; // each size is waited for in vain: a quarter of a second in all
    Start(options);
    VxGenParameterArray& parameters = *m_link.device->GetCommunicationParameters();
    std::atomic<bool> isFound = false;
    Clock::duration search{};
    Clock::duration longestRead{};

    RunAtOnce({[&] {
                   const auto start = Clock::now();
                   EXPECT_TRUE(m_link.Gev().SetStreamDestination(kAddress, 50000, 0).IsOK());
                   search = Clock::now() - start;
                   isFound = true;
               },
               [&] {
                   while (!isFound) {
                       const auto start = Clock::now();
                       VxString text;
                       EXPECT_TRUE(parameters.Get("PacketSizeMode")->ToString(text).IsOK());
                       EXPECT_TRUE(parameters.Get("PacketSize")->ToString(text).IsOK());
                       longestRead = std::max(longestRead, Clock::now() - start);
                   }
               }});

    EXPECT_GE(search, std::chrono::milliseconds(200)) << "there was no search";
    EXPECT_LT(longestRead, search / 2);
}

TEST_F(DeviceThreadsTest, SettingsOfTheLinkMadeAtOnceAreAllKept)
{
    Start({});
    VxGenParameterArray& parameters = *m_link.device->GetCommunicationParameters();

    for (std::int64_t i = 1; i <= 50; ++i) {
        RunAtOnce({[&] { EXPECT_TRUE(parameters.SetIntegerValue("CommandAckTimeout", 200 + i).IsOK()); },
                   [&] { EXPECT_TRUE(parameters.SetIntegerValue("CommandRetries", i % 20).IsOK()); },
                   [&] { EXPECT_TRUE(parameters.SetIntegerValue("PacketSize", 1000 + i).IsOK()); },
                   [&] {
                       const char* const mode = i % 2 == 0 ? "Fixed" : "Camera";
                       EXPECT_TRUE(parameters.Get("PacketSizeMode")->FromString(mode).IsOK());
                   }});

        const auto number = [&](const char* name) {
            std::int64_t value = 0;
            EXPECT_TRUE(parameters.GetIntegerValue(name, value).IsOK());
            return value;
        };
        VxString mode;
        EXPECT_TRUE(parameters.Get("PacketSizeMode")->ToString(mode).IsOK());
        EXPECT_EQ(number("CommandAckTimeout"), 200 + i);
        EXPECT_EQ(number("CommandRetries"), i % 20);
        EXPECT_EQ(number("PacketSize"), 1000 + i);
        EXPECT_EQ(mode, i % 2 == 0 ? "Fixed" : "Camera");
    }
}

/// A camera that needs long for writing one register, and says so.
class PatientDeviceTest : public DeviceThreadsTest {
protected:
    void Start(std::uint32_t slowAddress, std::uint32_t widthPx = 640)
    {
        VxSimulatorOptions options;
        options.widthPx = widthPx;
        options.faults.pendingTime = kLong;
        options.faults.pendingAddress = slowAddress;
        DeviceThreadsTest::Start(options);
        // So that the next command that arrives is that of the test.
        VxGenParameterArray& link = *m_link.device->GetCommunicationParameters();
        ASSERT_TRUE(link.Get("HeartbeatEnabled")->FromString("false").IsOK());
    }

    /// Disconnects while another thread is in a call that waits for the camera, and joins that one.
    /// @return  what the call answers
    VxResult DisconnectDuring(const std::function<VxResult()>& call)
    {
        const auto before = m_camera.Counters().commandsReceived;
        VxResult answer;
        std::thread caller([&] { answer = call(); });
        while (m_camera.Counters().commandsReceived == before)
            std::this_thread::yield();

        const auto start = Clock::now();
        EXPECT_TRUE(m_link.device->Disconnect().IsOK());
        caller.join();
        const auto duration = Clock::now() - start;

        EXPECT_GT(duration, kDisconnectTime / 2) << "nobody waited for the camera";
        EXPECT_LT(duration, kDisconnectLimit);
        EXPECT_FALSE(m_link.device->IsConnected());
        return answer;
    }

    static constexpr std::chrono::milliseconds kLong{9000};           // the longest that is believed is 10 s
    static constexpr std::chrono::milliseconds kDisconnectTime{2000}; // see Docs/Threads.md
    // As much again for a busy machine; less than half of what the camera asks for.
    static constexpr auto kDisconnectLimit = 2 * kDisconnectTime;
};

TEST_F(PatientDeviceTest, ADisconnectEndsTheWriteThatAnotherThreadWaitsFor)
{
    Start(simulator::kWidth);

    const VxResult written =
        DisconnectDuring([&] { return m_link.Features().SetIntegerValue("Width", 320); });

    EXPECT_EQ(written.Code(), VxError::NotConnected);
    EXPECT_EQ(written.GetDescription().Narrow().find("Width: "), 0u) << written.GetDescription().Narrow();
}

TEST_F(PatientDeviceTest, ADisconnectEndsTheStoringOfAConfiguration)
{
    Start(simulator::kTriggerSelector);
    VxConfigurationWriter writer;

    const VxResult stored = DisconnectDuring([&] { return writer.Store(m_link.device.get(), VxString()); });

    EXPECT_EQ(stored.Code(), VxError::NotConnected) << stored.GetDescription().Narrow();
    VxString text;
    ASSERT_TRUE(writer.SaveToString(text).IsOK());
    VxConfigurationReader reader;
    ASSERT_TRUE(reader.LoadFromString(text).IsOK());
    EXPECT_EQ(reader.GetDeviceCount(), 0u) << "a half of a configuration";
}

TEST_F(PatientDeviceTest, ADisconnectEndsTheRestoringOfAConfiguration)
{
    Start(simulator::kWidth, 640);
    VxConfigurationWriter writer;
    ASSERT_TRUE(writer.Store(m_link.device.get(), VxString()).IsOK());
    VxString text;
    ASSERT_TRUE(writer.SaveToString(text).IsOK());
    VxConfigurationReader reader;
    ASSERT_TRUE(reader.LoadFromString(text).IsOK());
    m_link.device.reset();
    m_camera.Stop();
    Start(simulator::kWidth, 320); // so that the width is written

    const VxResult restored =
        DisconnectDuring([&] { return reader.Restore(std::size_t{0}, m_link.device.get()); });

    EXPECT_EQ(restored.Code(), VxError::NotConnected);
    EXPECT_NE(restored.GetDescription().Narrow().find("not reached: "), std::string::npos)
        << restored.GetDescription().Narrow();
}

TEST_F(PatientDeviceTest, ADeviceIsFreedThoughItsCameraNeedsLongToGiveControlBack)
{
    VxSimulatorOptions options;
    // Long enough to tell; taking control takes as long.
    options.faults.pendingTime = kDisconnectLimit + std::chrono::milliseconds(1000);
    options.faults.pendingAddress = bootstrap::kControlChannelPrivilege;
    DeviceThreadsTest::Start(options);
    const auto start = Clock::now();

    m_link.device.reset();

    EXPECT_GT(Clock::now() - start, kDisconnectTime / 2) << "it did not wait for the camera";
    EXPECT_LT(Clock::now() - start, kDisconnectLimit);
}

} // namespace
