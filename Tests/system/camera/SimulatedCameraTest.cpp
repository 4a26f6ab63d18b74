#include "CameraLink.h"

#include "VxBase/VxResult.h"
#include "VxCamera/control/CommandClient.h"
#include "VxCamera/pixel/VxPixelFormat.h"
#include "VxCamera/transport/SystemNetwork.h"
#include "VxCamera/wire/registers/BootstrapBits.h"
#include "VxCamera/wire/registers/BootstrapRegisters.h"
#include "VxDSSource/camera/VxDeviceInfo.h"
#include "VxDSSource/camera/VxGenParameter.h"
#include "VxDSSource/camera/VxGenParameterArray.h"
#include "VxDSSource/camera/VxImage.h"
#include "VxDSSource/camera/VxInterface.h"
#include "VxDSSource/camera/VxSystem.h"
#include "VxSimulator/VxSimulatedCamera.h"
#include "VxSimulator/picture/FrameNumberStrip.h"
#include "VxSimulator/picture/TestPicture.h"

#include "support/Latch.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <chrono>
#include <fstream>
#include <iterator>
#include <optional>
#include <span>
#include <string>
#include <thread>
#include <tuple>
#include <vector>

namespace {

using namespace std::chrono_literals;
using Clock = std::chrono::steady_clock;

constexpr const char* kAddress = "127.0.0.1";
constexpr const char* kGroup = "239.255.42.99";
constexpr std::uint16_t kGroupPort = 27'312;
constexpr std::uint32_t kWidthPx = 640; // as the camera starts
constexpr std::uint32_t kHeightPx = 480;

/// The picture in a buffer as the bytes that the camera sent.
std::span<const std::byte> BytesOf(const VxBuffer& buffer)
{
    const VxImage* const image = buffer.GetImage();
    return std::as_bytes(std::span(image->GetDataPointer(), image->GetSize()));
}

/// @param picture  Mono8 of the usual size
std::optional<std::uint32_t> NumberIn(std::span<const std::byte> picture)
{
    simulator::PictureView view;
    view.pixels = picture;
    view.widthPx = kWidthPx;
    view.heightPx = kHeightPx;
    view.strideBytes = kWidthPx;
    view.bytesPerPixel = 1;
    return simulator::ReadFrameNumber(view);
}

/// Whether a Mono8 buffer holds exactly the picture that the camera sent under the number that is in it.
testing::AssertionResult IsWholePicture(const VxBuffer& buffer)
{
    const VxResult result = buffer.GetOperationResult();
    if (!result.IsOK())
        return testing::AssertionFailure() << result.GetDescription().Narrow();
    const auto number = NumberIn(BytesOf(buffer));
    if (!number)
        return testing::AssertionFailure() << "no frame number in the picture";
    const VxImage* const image = buffer.GetImage();
    const auto sent =
        simulator::TestPicture(*number, image->GetWidth(), image->GetHeight(), image->GetPixelType());
    if (!std::ranges::equal(BytesOf(buffer), sent))
        return testing::AssertionFailure() << "frame " << *number << " differs from what was sent";
    return testing::AssertionSuccess();
}

class SimulatedCameraTest : public testing::Test {
protected:
    void StartCamera(const VxSimulatorOptions& options)
    {
        const VxResult started = m_camera.Start(options);
        ASSERT_TRUE(started.IsOK()) << started.GetDescription().Narrow();
    }
    void StartCamera()
    {
        VxSimulatorOptions options;
        options.frameRateHz = 100;
        StartCamera(options);
    }
    /// Camera, stream and pipeline, running.
    void StartAll()
    {
        StartCamera();
        m_link.Connect(kAddress);
        m_link.OpenStream(kAddress);
        m_link.Start();
    }
    static std::chrono::milliseconds Since(Clock::time_point start)
    {
        return std::chrono::duration_cast<std::chrono::milliseconds>(Clock::now() - start);
    }

    VxSimulatedCamera m_camera;
    CameraLink m_link;
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
    m_link.Connect(info->GetConnectionID().GetAscii());
    m_link.OpenStream(info->GetConnectionID().GetAscii());
    EXPECT_EQ(m_link.stream.GetLocalIPAddress(), kAddress);
}

TEST_F(SimulatedCameraTest, ACameraThatVanishesIsNoticedAndEverythingEnds)
{
    StartAll();
    ASSERT_TRUE(m_link.Features().SetIntegerValue("GevHeartbeatTimeout", 500).IsOK());
    ASSERT_NE(m_link.Next(), nullptr);

    m_camera.Vanish();
    const auto vanished = Clock::now();
    while (m_link.device->IsConnected() && Since(vanished) < 10s)
        std::this_thread::yield();

    EXPECT_LT(Since(vanished), 1000ms); // its heartbeat time-out, and as much again for a busy machine
    const auto start = Clock::now();
    std::int64_t width = 0;
    EXPECT_EQ(m_link.Features().ExecuteCommand("AcquisitionStop").Code(), VxError::LinkLost);
    std::ignore = m_link.Features().GetIntegerValue("Width", width);
    EXPECT_LT(Since(start), 100ms);
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

TEST_F(SimulatedCameraTest, APassiveReceiverOnAFixedPortReceives)
{
    StartAll();
    m_link.Stop();
    VxStreamGEV passive;
    ASSERT_TRUE(passive.Open("nobody", 0, 0, kAddress, 8).IsOK()); // an unknown camera is no error
    VxPipeline pipeline(&passive);
    pipeline.SetHandleBufferTooSmall(true);
    ASSERT_TRUE(pipeline.SetBufferCount(4).IsOK());
    ASSERT_TRUE(pipeline.Start().IsOK());

    ASSERT_TRUE(m_link.Gev().SetStreamDestination(kAddress, passive.GetLocalPort(), 0).IsOK());
    ASSERT_TRUE(m_link.Features().ExecuteCommand("AcquisitionStart").IsOK());
    VxBuffer* buffer = nullptr;
    ASSERT_TRUE(pipeline.RetrieveNextBuffer(&buffer, 10'000).IsOK());

    EXPECT_TRUE(IsWholePicture(*buffer));
    VxString camera;
    EXPECT_TRUE(passive.GetParameters()->Get("CameraIPAddress")->ToString(camera).IsOK());
    EXPECT_EQ(camera, kAddress);
    VxStreamGEV second;
    EXPECT_EQ(second.Open("nobody", passive.GetLocalPort(), 0, kAddress, 8).Code(), VxError::PortInUse);
    EXPECT_FALSE(second.IsOpen());
    EXPECT_TRUE(pipeline.Stop().IsOK());
}

TEST_F(SimulatedCameraTest, TwoMulticastReceiversReceiveTheSameFrames)
{
    StartAll();
    m_link.Stop();
    std::array<VxStreamGEV, 2> streams;
    std::array<std::unique_ptr<VxPipeline>, 2> pipelines;
    for (std::size_t i = 0; i < 2; ++i) {
        const VxResult opened = streams[i].Open(kAddress, kGroup, kGroupPort, 0, VxString(), 64);
        ASSERT_TRUE(opened.IsOK()) << opened.GetDescription().Narrow();
        pipelines[i] = std::make_unique<VxPipeline>(&streams[i]);
        pipelines[i]->SetBufferSize(m_link.device->GetPayloadSize());
        ASSERT_TRUE(pipelines[i]->SetBufferCount(8).IsOK());
        ASSERT_TRUE(pipelines[i]->Start().IsOK());
    }

    ASSERT_TRUE(m_link.Gev().SetStreamDestination(kGroup, kGroupPort, 0).IsOK());
    ASSERT_TRUE(m_link.Features().ExecuteCommand("AcquisitionStart").IsOK());

    std::array<std::optional<std::uint32_t>, 2> first;
    for (std::size_t i = 0; i < 2; ++i) {
        VxBuffer* buffer = nullptr;
        ASSERT_TRUE(pipelines[i]->RetrieveNextBuffer(&buffer, 10'000).IsOK());
        EXPECT_TRUE(IsWholePicture(*buffer));
        first[i] = NumberIn(BytesOf(*buffer));
    }
    EXPECT_EQ(first[0], first[1]);
    for (const auto& pipeline : pipelines)
        EXPECT_TRUE(pipeline->Stop().IsOK());
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
    for (int i = 0; i < 20; ++i) {
        m_link.Start();
        ASSERT_TRUE(IsWholePicture(*m_link.Next())) << i;
        ASSERT_TRUE(IsWholePicture(*m_link.Next())) << i;
        m_link.Stop();
        EXPECT_EQ(m_link.pipeline->GetOutputQueueSize(), 0u);
    }
    EXPECT_EQ(m_link.Statistic("ErrorCount"), 0);
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

TEST_F(SimulatedCameraTest, AFrameWithLostPacketsIsNeverPassedAsGood)
{
    VxSimulatorOptions options;
    options.frameRateHz = 200;
    options.faults.dropShare = 0.02;
    options.faults.duplicateShare = 0.02;
    options.faults.reorderShare = 0.02;
    StartCamera(options);
    m_link.Connect(kAddress);
    m_link.OpenStream(kAddress);
    ASSERT_TRUE(m_link.stream.GetParameters()->Get("ResendEnabled")->FromString("false").IsOK());
    m_link.Start();

    int whole = 0;
    int incomplete = 0;
    for (int i = 0; i < 300; ++i) {
        const VxBuffer* const buffer = m_link.Next();
        ASSERT_NE(buffer, nullptr);
        const VxError code = buffer->GetOperationResult().Code();
        if (code == VxError::Ok) {
            ASSERT_TRUE(IsWholePicture(*buffer));
            ++whole;
        } else {
            EXPECT_EQ(code, VxError::MissingPackets);
            ++incomplete;
        }
    }

    EXPECT_GT(whole, 0);
    EXPECT_GT(incomplete, 0);
    EXPECT_GT(m_link.Statistic("PacketsMissing"), 0);
    EXPECT_GT(m_link.Statistic("PacketsDuplicate"), 0);
    m_link.Stop();
}

TEST_F(SimulatedCameraTest, LostPacketsAreAskedForAgainAndFramesAreWhole)
{
    VxSimulatorOptions options;
    options.frameRateHz =
        20; // measured: a call on a socket takes 20 us under Wine, and camera and receiver share it
    options.faults.dropShare = 0.02; // those sent again included
    StartCamera(options);
    m_link.Connect(kAddress);
    m_link.OpenStream(kAddress);
    ASSERT_TRUE(m_link.Features().SetIntegerValue("GevSCPSPacketSize", 1500).IsOK());
    VxString isPossible;
    EXPECT_TRUE(m_link.stream.GetParameters()->Get("ResendPossible")->ToString(isPossible).IsOK());
    EXPECT_EQ(isPossible, "true");
    m_link.Start();

    int whole = 0;
    for (int i = 0; i < 100; ++i) // 210 packets each
        whole += IsWholePicture(*m_link.Next()) ? 1 : 0;

    // All, unless the machine stands still for longer than the camera keeps packets.
    EXPECT_GE(whole, 98) << "missing " << m_link.Statistic("PacketsMissing") << ", requested again "
                         << m_link.Statistic("PacketsRequestedAgain") << ", recovered "
                         << m_link.Statistic("PacketsRecovered") << ", dropped in the pipeline "
                         << m_link.Statistic("PipelineBlocksDropped") << ", refused "
                         << m_link.Statistic("PacketsRefused") << ", late " << m_link.Statistic("PacketsLate")
                         << ", lost blocks " << m_link.Statistic("BlocksDropped");
    EXPECT_GT(m_link.Statistic("PacketsRecovered"), 100);
    EXPECT_GE(m_link.Statistic("PacketsRequestedAgain"), m_link.Statistic("PacketsRecovered"));
    m_link.Stop();
}

TEST_F(SimulatedCameraTest, WithoutControlNothingIsAskedFor)
{
    VxSimulatorOptions options;
    options.frameRateHz = 100;
    options.faults.dropShare = 0.05;
    StartCamera(options);
    m_link.Connect(kAddress);
    VxStreamGEV passive;
    ASSERT_TRUE(passive.Open("nobody", kGroup, kGroupPort, 0, kAddress, 8).IsOK());
    EXPECT_EQ(passive.GetLocalIPAddress(), kAddress);
    VxPipeline pipeline(&passive);
    pipeline.SetBufferSize(m_link.device->GetPayloadSize());
    ASSERT_TRUE(pipeline.Start().IsOK());
    ASSERT_TRUE(m_link.Gev().SetStreamDestination(kGroup, kGroupPort, 0).IsOK());
    ASSERT_TRUE(m_link.Features().SetIntegerValue("GevSCPSPacketSize", 1500).IsOK());
    ASSERT_TRUE(m_link.Features().ExecuteCommand("AcquisitionStart").IsOK());

    int incomplete = 0;
    for (int i = 0; i < 30; ++i) {
        VxBuffer* buffer = nullptr;
        ASSERT_TRUE(pipeline.RetrieveNextBuffer(&buffer, 10'000).IsOK());
        incomplete += buffer->GetOperationResult().IsOK() ? 0 : 1;
        ASSERT_TRUE(pipeline.ReleaseBuffer(buffer).IsOK());
    }

    EXPECT_GT(incomplete, 0);
    std::int64_t requests = -1;
    EXPECT_TRUE(passive.GetParameters()->GetIntegerValue("ResendRequests", requests).IsOK());
    EXPECT_EQ(requests, 0);
    EXPECT_EQ(m_camera.Counters().packetsResent, 0u);
    VxString source;
    EXPECT_TRUE(passive.GetParameters()->GetEnumValue("CameraIPAddressSource", source).IsOK());
    EXPECT_EQ(source, "FirstLeader");
    EXPECT_TRUE(pipeline.Stop().IsOK());
}

#ifndef _WIN32 // the system tells who is a member of what
/// @return  whether any socket of this network has joined the group
bool IsJoined()
{
    std::ifstream memberships("/proc/net/igmp");
    const std::string text((std::istreambuf_iterator<char>(memberships)), {});
    return text.find("632AFFEF") != std::string::npos; // 239.255.42.99, last byte first
}

TEST_F(SimulatedCameraTest, AGroupIsJoinedWhileTheStreamIsOpen)
{
    VxStreamGEV stream;
    EXPECT_FALSE(IsJoined());
    ASSERT_TRUE(stream.Open("nobody", kGroup, kGroupPort, 0, VxString(), 64).IsOK());
    EXPECT_TRUE(IsJoined()); // on every interface: nobody knows the camera
    ASSERT_TRUE(stream.Close().IsOK());
    EXPECT_FALSE(IsJoined());
    EXPECT_TRUE(stream.GetLocalIPAddress().IsEmpty());
}
#endif

TEST_F(SimulatedCameraTest, ASecondWithoutAPacketSaysWhatMayBeWrong)
{
    StartCamera();
    m_link.Connect(kAddress);
    m_link.OpenStream(kAddress);
    ASSERT_TRUE(m_link.pipeline->Start().IsOK()); // the camera is not told to send
    VxBuffer* buffer = nullptr;
    EXPECT_EQ(m_link.pipeline->RetrieveNextBuffer(&buffer, 1300).Code(), VxError::Timeout);

    VxString error;
    VxString description;
    EXPECT_TRUE(m_link.stream.GetParameters()->GetEnumValue("LastError", error).IsOK());
    EXPECT_EQ(error, "TIMEOUT");
    EXPECT_TRUE(m_link.stream.GetParameters()->Get("LastErrorDescription")->ToString(description).IsOK());
    for (const char* cause : {"firewall", "packets are larger", "destination", "another host"})
        EXPECT_NE(description.Narrow().find(cause), std::string::npos) << cause;
}

TEST_F(SimulatedCameraTest, TheSocketsBufferIsLargeAndToldAsGranted)
{
    ASSERT_TRUE(m_link.stream.Open("nobody").IsOK());

    EXPECT_GE(m_link.Statistic("SocketBufferSize"), std::int64_t{1} << 20); // what every system grants
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
