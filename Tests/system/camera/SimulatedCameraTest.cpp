#include "SimulatedCameraFixture.h"
#include "VxCamera/control/CommandClient.h"
#include "VxCamera/pixel/VxPixelFormat.h"
#include "VxCamera/transport/SystemNetwork.h"
#include "VxCamera/wire/registers/BootstrapBits.h"
#include "VxCamera/wire/registers/BootstrapRegisters.h"
#include "VxDSSource/camera/VxConfigurationWriter.h"
#include "VxDSSource/camera/VxDeviceInfo.h"
#include "VxDSSource/camera/VxGenEnum.h"
#include "VxDSSource/camera/VxGenInteger.h"
#include "VxDSSource/camera/VxGenParameter.h"
#include "VxDSSource/camera/VxGenParameterArray.h"
#include "VxDSSource/camera/VxInterface.h"
#include "VxDSSource/camera/VxSystem.h"
#include "support/Latch.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <chrono>
#include <string>
#include <thread>
#include <tuple>
#include <vector>

namespace {

using namespace std::chrono_literals;
using Clock = std::chrono::steady_clock;

/// Control, buffers and formats.
class SimulatedCameraTest : public SimulatedCameraFixture {
protected:
    /// Of a device that is not connected any more: each operation fails with this reason. What this host
    /// knows of the link stays.
    void ExpectThatNothingWorks(VxError reason)
    {
        VxGenParameterArray& features = m_link.Features();
        ASSERT_GT(features.GetCount(), 30u);
        for (std::size_t i = 0; i < features.GetCount(); ++i) {
            VxGenParameter& feature = *features.Get(i);
            const std::string name = feature.GetName().Narrow();
            VxString text;
            EXPECT_EQ(feature.ToString(text).Code(), reason) << name;
            EXPECT_EQ(feature.FromString("1").Code(), reason) << name;
            EXPECT_FALSE(feature.IsAvailable() || feature.IsReadable() || feature.IsWritable()) << name;
        }
        std::int64_t number = 0;
        VxString entry;
        EXPECT_EQ(features.GetInteger("Width")->GetValue(number).Code(), reason);
        EXPECT_EQ(features.GetInteger("Width")->GetMax(number).Code(), reason);
        EXPECT_EQ(features.GetInteger("Width")->SetValue(320).Code(), reason);
        EXPECT_EQ(features.GetEnumValue("PixelFormat", entry).Code(), reason);
        EXPECT_EQ(features.GetEnum("PixelFormat")->SetValue("Mono8").Code(), reason);
        EXPECT_EQ(features.ExecuteCommand("AcquisitionStart").Code(), reason);
        EXPECT_EQ(m_link.device->GetPayloadSize(), 0u);
        EXPECT_EQ(m_link.device->StreamEnable(0).Code(), reason);
        EXPECT_EQ(m_link.device->StreamDisable(0).Code(), reason);
        EXPECT_EQ(m_link.Gev().SetStreamDestination(kAddress, 50000, 0).Code(), reason);
        VxConfigurationWriter writer;
        EXPECT_EQ(writer.Store(m_link.device.get(), VxString()).Code(), VxError::NotConnected);

        VxString address;
        EXPECT_TRUE(
            m_link.device->GetCommunicationParameters()->Get("DeviceIPAddress")->ToString(address).IsOK());
        EXPECT_EQ(address, kAddress);
    }
};

TEST_F(SimulatedCameraTest, ItsFeatureTreeLoads)
{
    StartCamera();
    m_link.Connect(kAddress);

    std::int64_t width = 0;
    EXPECT_TRUE(m_link.Features().GetIntegerValue("Width", width).IsOK());
    EXPECT_EQ(width, 640);
    EXPECT_EQ(m_link.device->GetPayloadSize(), 640u * 480u);
    EXPECT_GT(m_link.Features().GetCount(), 30u);
    EXPECT_NE(m_link.Features().Get("AcquisitionStart"), nullptr);
}

TEST_F(SimulatedCameraTest, FiftyFramesArriveWholeAndInOrder)
{
    StartAll();

    std::vector<std::vector<std::byte>>
        pictures; // looked at afterwards: drawing them takes longer than receiving
    for (int i = 0; i < 50; ++i) {
        const VxBuffer* const buffer = m_link.Next();
        ASSERT_NE(buffer, nullptr);
        ASSERT_TRUE(buffer->GetOperationResult().IsOK());
        const auto bytes = BytesOf(*buffer);
        pictures.emplace_back(bytes.begin(), bytes.end());
    }
    double rate = 0;
    EXPECT_TRUE(m_link.stream.GetParameters()->GetFloatValue("AcquisitionRate", rate).IsOK());
    m_link.Stop();

    const std::uint32_t first = *NumberIn(pictures.front());
    for (std::uint32_t i = 0; i < pictures.size(); ++i)
        EXPECT_EQ(pictures[i], simulator::TestPicture(first + i, kWidthPx, kHeightPx, VxPfnc::kMono8)) << i;
    EXPECT_NEAR(rate, 100, 30);
    EXPECT_EQ(m_link.Statistic("BlocksDropped"), 0);
    EXPECT_EQ(m_link.Statistic("ErrorCount"), 0);
    EXPECT_GE(m_link.Statistic("BlockCount"), 50);
}

TEST_F(SimulatedCameraTest, ADisconnectedCameraCanBeConnectedAgain)
{
    StartCamera();
    for (int i = 0; i < 3; ++i) {
        m_link.Connect(kAddress);
        ASSERT_TRUE(m_camera.ControlOwner());

        EXPECT_TRUE(m_link.device->Disconnect().IsOK());

        EXPECT_FALSE(m_link.device->IsConnected());
        EXPECT_FALSE(m_camera.ControlOwner());
        std::int64_t width = 0;
        EXPECT_EQ(m_link.Features().GetIntegerValue("Width", width).Code(), VxError::NotConnected);
        m_link.device.reset();
    }
}

TEST_F(SimulatedCameraTest, FreeingADeviceGivesControlBack)
{
    StartCamera();
    m_link.Connect(kAddress);

    m_link.device.reset();

    EXPECT_FALSE(m_camera.ControlOwner());
}

TEST_F(SimulatedCameraTest, ASecondControllerIsDeniedAtOnceAndToldWhoHasIt)
{
    StartCamera();
    m_link.Connect(kAddress);
    const auto start = Clock::now();

    VxResult result;
    const DevicePointer second(VxDevice::CreateAndConnect(kAddress, &result));

    EXPECT_EQ(result.Code(), VxError::AccessDenied);
    const std::string owner = m_camera.ControlOwner()->ToString();
    EXPECT_NE(result.GetDescription().Narrow().find(owner), std::string::npos)
        << result.GetDescription().Narrow();
    EXPECT_LT(Since(start), 1000ms);
    EXPECT_TRUE(m_link.device->IsConnected());
}

TEST_F(SimulatedCameraTest, AnAbsentCameraIsNotFoundWithinHalfASecondItsStreamIncluded)
{
    const auto start = Clock::now();

    VxResult result;
    const DevicePointer device(VxDevice::CreateAndConnect(kAddress, &result));
    const VxResult opened = m_link.stream.Open(kAddress);

    EXPECT_LT(Since(start), 500ms);
    EXPECT_EQ(result.Code(), VxError::NotFound);
    EXPECT_NE(result.GetDescription().Narrow().find(kAddress), std::string::npos);
    EXPECT_TRUE(opened.IsOK());
}

TEST_F(SimulatedCameraTest, DiscoveryListsItAndItsMacAddressConnects)
{
    StartCamera();
    VxSystem system;
    system.SetDetectionTimeout(500);
    const auto start = Clock::now();

    ASSERT_TRUE(system.Find().IsOK());

    EXPECT_LT(Since(start), 900ms);
    ASSERT_EQ(system.GetInterfaceCount(), 1u) << "run this in a network of its own: scripts/own-world";
    const VxInterface* const loopback = system.GetInterface(0);
    ASSERT_EQ(loopback->GetDeviceCount(), 1u);
    const VxDeviceInfo* const info = loopback->GetDeviceInfo(0);
    EXPECT_EQ(info->GetModelName(), "SimulatedCamera");
    EXPECT_EQ(info->GetIPAddress(), kAddress);
    EXPECT_TRUE(info->IsConfigurationValid());
    EXPECT_EQ(info->GetType(), VxDeviceInfoType::Gev);
    static_assert(static_cast<std::uint32_t>(VxDeviceInfoType::Gev) == 0, "shown as a number");
    static_assert(static_cast<std::uint32_t>(VxDeviceInfoType::U3v) == 3, "shown as a number");
    m_link.Connect(info->GetConnectionID().GetAscii());
    m_link.OpenStream(info->GetConnectionID().GetAscii());
    EXPECT_EQ(m_link.stream.GetLocalIPAddress(), kAddress);
}

TEST_F(SimulatedCameraTest, RecordsOfASearchStayValidUntilTheNextOne)
{
    StartCamera();
    VxSystem system;
    system.SetDetectionTimeout(500);
    ASSERT_TRUE(system.Find().IsOK());
    ASSERT_EQ(system.GetInterfaceCount(), 1u);
    const VxInterface* const loopback = system.GetInterface(0);
    ASSERT_EQ(loopback->GetDeviceCount(), 1u);
    const VxDeviceInfo* const info = loopback->GetDeviceInfo(0);

    m_camera.Stop();
    VxSystem other;
    other.SetDetectionTimeout(100);
    ASSERT_TRUE(other.Find().IsOK());

    EXPECT_EQ(info->GetModelName(), "SimulatedCamera"); // what was found, though it is gone
    EXPECT_EQ(info->GetIPAddress(), kAddress);
    EXPECT_EQ(system.GetInterface(0), loopback);
    EXPECT_EQ(loopback->GetDeviceInfo(0), info);
    system.SetDetectionTimeout(100);
    ASSERT_TRUE(system.Find().IsOK());
    ASSERT_EQ(system.GetInterfaceCount(), 1u);
    EXPECT_EQ(system.GetInterface(0)->GetDeviceCount(), 0u);
}

TEST_F(SimulatedCameraTest, ACameraThatVanishesIsNoticedAndEverythingEnds)
{
    StartAll();
    ASSERT_TRUE(m_link.Features().SetIntegerValue("GevHeartbeatTimeout", 500).IsOK());
    ASSERT_NE(m_link.Next(), nullptr);
    std::int64_t width = 0;
    ASSERT_TRUE(m_link.Features().GetIntegerValue("Width", width).IsOK());

    m_camera.Vanish();
    const auto vanished = Clock::now();
    while (m_link.device->IsConnected() && Since(vanished) < 10s)
        std::this_thread::yield();

    EXPECT_LT(Since(vanished), 1000ms); // its heartbeat time-out, and as much again for a busy machine
    const auto start = Clock::now();
    EXPECT_EQ(m_link.Features().GetIntegerValue("Width", width).Code(), VxError::LinkLost) << "it was read";
    ExpectThatNothingWorks(VxError::LinkLost);
    EXPECT_LT(Since(start), 1000ms) << "some hundred operations";
    VxBuffer* buffer = nullptr;
    while (m_link.pipeline->RetrieveNextBuffer(&buffer, 100).IsOK())
        EXPECT_TRUE(m_link.pipeline->ReleaseBuffer(buffer).IsOK());
    EXPECT_EQ(m_link.pipeline->RetrieveNextBuffer(&buffer, 10).Code(), VxError::Timeout);
    EXPECT_EQ(buffer, nullptr);
    EXPECT_TRUE(m_link.pipeline->Stop().IsOK());
    m_link.pipeline.reset();
    EXPECT_TRUE(m_link.stream.Close().IsOK());
    EXPECT_TRUE(m_link.device->Disconnect().IsOK());
    m_link.device.reset();
    EXPECT_LT(Since(start), 1500ms);
}

TEST_F(SimulatedCameraTest, NothingOfADeviceThatIsDisconnectedWorksButTheFactsOfItsLink)
{
    StartCamera();
    m_link.Connect(kAddress);
    ASSERT_TRUE(m_link.device->Disconnect().IsOK());

    ExpectThatNothingWorks(VxError::NotConnected);
}

TEST_F(SimulatedCameraTest, StoppingRightAfterItVanishedTakesLessThanTwoSeconds)
{
    StartAll();
    ASSERT_NE(m_link.Next(), nullptr);
    m_camera.Vanish();
    const auto start = Clock::now();

    std::ignore = m_link.Features().ExecuteCommand("AcquisitionStop");
    std::ignore = m_link.device->StreamDisable(0);
    std::ignore = m_link.pipeline->Stop();

    EXPECT_LT(Since(start), 2000ms);
}

TEST_F(SimulatedCameraTest, APredecessorThatDiedIsWaitedFor)
{
    StartCamera();
    {
        // A program that dies gives nothing back; its port is free again.
        transport::UdpSocketOptions options;
        options.local.address = transport::Ipv4Address::Loopback();
        const VxSteadyClock clock;
        control::CommandClient dying(std::move(*transport::MakeSystemSocketFactory()->OpenUdp(options)),
                                     m_camera.ControlEndpoint(), clock);
        ASSERT_TRUE(
            dying.WriteRegister(bootstrap::kControlChannelPrivilege, bootstrap::kPrivilegeControl).IsOK());
        ASSERT_TRUE(dying.WriteRegister(bootstrap::kHeartbeatTimeout, 500).IsOK());
    }
    ASSERT_TRUE(m_camera.ControlOwner());

    m_link.Connect(kAddress);

    EXPECT_TRUE(m_link.device->IsConnected());
}

TEST_F(SimulatedCameraTest, BuffersThatAreTooSmallGrow)
{
    StartCamera();
    m_link.Connect(kAddress);
    m_link.OpenStream(kAddress);
    m_link.pipeline->SetBufferSize(1000);
    m_link.pipeline->SetHandleBufferTooSmall(true);
    ASSERT_TRUE(m_link.pipeline->SetBufferCount(4).IsOK());
    ASSERT_TRUE(m_link.pipeline->Start().IsOK());
    ASSERT_TRUE(m_link.Features().ExecuteCommand("AcquisitionStart").IsOK());

    std::ignore = m_link.Next(); // one may be lost
    for (int i = 0; i < 10; ++i)
        ASSERT_TRUE(IsWholePicture(*m_link.Next()));
}

TEST_F(SimulatedCameraTest, BuffersThatMustNotGrowTellThatTheyAreTooSmall)
{
    StartCamera();
    m_link.Connect(kAddress);
    m_link.OpenStream(kAddress);
    m_link.pipeline->SetBufferSize(1000);
    ASSERT_TRUE(m_link.pipeline->Start().IsOK());
    ASSERT_TRUE(m_link.Features().ExecuteCommand("AcquisitionStart").IsOK());

    EXPECT_EQ(m_link.Next()->GetOperationResult().Code(), VxError::BufferTooSmall);

    VxString error;
    EXPECT_TRUE(m_link.stream.GetParameters()->GetEnumValue("LastError", error).IsOK());
    EXPECT_EQ(error, "BUFFER_TOO_SMALL");
    EXPECT_GE(m_link.Statistic("ErrorCount"), 1);
    ASSERT_TRUE(m_link.Features().ExecuteCommand("AcquisitionStop").IsOK());
    ASSERT_TRUE(m_link.pipeline->Stop().IsOK());
    EXPECT_TRUE(m_link.stream.GetParameters()->ExecuteCommand("Reset").IsOK());
    EXPECT_EQ(m_link.Statistic("ErrorCount"), 0);
}

TEST_F(SimulatedCameraTest, ABufferHandedOutSurvivesStopAndStart)
{
    StartAll();
    VxBuffer* held = nullptr;
    ASSERT_TRUE(m_link.pipeline->RetrieveNextBuffer(&held, 10'000).IsOK());
    ASSERT_TRUE(IsWholePicture(*held));

    m_link.Stop();
    m_link.Start();
    for (int i = 0; i < 20; ++i)
        ASSERT_TRUE(IsWholePicture(*m_link.Next()));

    EXPECT_TRUE(IsWholePicture(*held)); // nobody has written into it
    EXPECT_TRUE(m_link.pipeline->ReleaseBuffer(held).IsOK());
    EXPECT_EQ(m_link.pipeline->ReleaseBuffer(held).Code(), VxError::InvalidParameter);
    m_link.Stop();
}

TEST_F(SimulatedCameraTest, StartingAndStoppingAgainAndAgainLosesNothing)
{
    StartCamera();
    m_link.Connect(kAddress);
    m_link.OpenStream(kAddress);
    std::int64_t remains = 0;
    for (int i = 0; i < 20; ++i) {
        m_link.Start();
        VxBuffer* first = m_link.Next();
        // A camera that is stopped in the middle of a picture ends that first; of this one we are here too
        // late for the beginning. Its id goes on from before, and ids of an acquisition begin at 1.
        if (i > 0 && first->GetBlockID() > 1 && !IsWholePicture(*first)) {
            ++remains;
            first = m_link.Next();
        }
        ASSERT_TRUE(IsWholePicture(*first)) << i;
        ASSERT_TRUE(IsWholePicture(*m_link.Next())) << i;
        m_link.Stop();
        EXPECT_EQ(m_link.pipeline->GetOutputQueueSize(), 0u);
    }
    EXPECT_EQ(m_link.Statistic("ErrorCount"), remains);
}

TEST_F(SimulatedCameraTest, StopWakesAConsumerThatWaits)
{
    StartCamera();
    m_link.Connect(kAddress);
    m_link.OpenStream(kAddress);
    ASSERT_TRUE(m_link.pipeline->Start().IsOK()); // the camera is not told to send
    Latch waiting(1);
    VxResult result;
    std::thread consumer([&] {
        VxBuffer* buffer = nullptr;
        waiting.count_down();
        result = m_link.pipeline->RetrieveNextBuffer(&buffer, 3'600'000);
    });

    waiting.wait();
    EXPECT_TRUE(m_link.pipeline->Stop().IsOK());
    consumer.join(); // would take an hour

    const bool wasWaiting = result.Code() == VxError::Aborted;
    const bool cameLate = result.Code() == VxError::NotStarted;
    EXPECT_TRUE(wasWaiting || cameLate) << result.GetDescription().Narrow();
}

TEST_F(SimulatedCameraTest, WithoutFreeBuffersFramesAreDroppedAndCounted)
{
    StartAll();
    std::array<VxBuffer*, 8> held{};
    for (VxBuffer*& buffer : held)
        ASSERT_TRUE(m_link.pipeline->RetrieveNextBuffer(&buffer, 10'000).IsOK());

    const auto start = Clock::now();
    while (m_link.Statistic("PipelineBlocksDropped") < 3 && Since(start) < 10s)
        std::this_thread::yield();

    EXPECT_GE(m_link.Statistic("PipelineBlocksDropped"), 3);
    for (VxBuffer* const buffer : held)
        EXPECT_TRUE(m_link.pipeline->ReleaseBuffer(buffer).IsOK());
    EXPECT_TRUE(IsWholePicture(*m_link.Next()));
    m_link.Stop();
}

TEST_F(SimulatedCameraTest, FeaturesAreUsableWhileFramesArrive)
{
    StartAll();
    std::atomic<bool> isDone = false;
    std::thread user([&] {
        while (!isDone) {
            std::int64_t value = 0;
            EXPECT_TRUE(m_link.Features().GetIntegerValue("GevHeartbeatTimeout", value).IsOK());
            double rate = 0;
            EXPECT_TRUE(m_link.stream.GetParameters()->GetFloatValue("Bandwidth", rate).IsOK());
        }
    });

    for (int i = 0; i < 100; ++i)
        EXPECT_TRUE(IsWholePicture(*m_link.Next()));
    isDone = true;
    user.join();

    m_link.Stop();
}

TEST_F(SimulatedCameraTest, EveryFormatOfTheCameraArrivesAsItWasSent)
{
    for (const char* name : {"Mono8", "BayerRG8", "BGR8", "YUV422_8"}) {
        VxSimulatorOptions options;
        options.frameRateHz = 50;
        StartCamera(options);
        m_link.Connect(kAddress);
        ASSERT_TRUE(m_link.Features().Get("PixelFormat")->FromString(name).IsOK()) << name;
        m_link.OpenStream(kAddress);
        m_link.Start();

        const VxBuffer* const buffer = m_link.Next();
        ASSERT_NE(buffer, nullptr);
        ASSERT_TRUE(buffer->GetOperationResult().IsOK());
        const VxImage* const image = buffer->GetImage();
        bool isKnown = false;
        for (std::uint64_t number = 0; number < 20 && !isKnown; ++number)
            isKnown = std::ranges::equal(BytesOf(*buffer),
                                         simulator::TestPicture(number, 640, 480, image->GetPixelType()));
        EXPECT_TRUE(isKnown) << name;

        m_link.Stop();
        m_link.pipeline.reset();
        EXPECT_TRUE(m_link.stream.Close().IsOK());
        m_link.device.reset();
        m_camera.Stop();
    }
}

} // namespace