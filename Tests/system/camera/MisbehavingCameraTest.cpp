#include "CameraLink.h"

#include "VxBase/VxResult.h"
#include "VxCamera/control/DeviceSession.h"
#include "VxCamera/transport/SystemNetwork.h"
#include "VxCamera/wire/registers/BootstrapRegisters.h"
#include "VxDSSource/camera/VxGenParameter.h"
#include "VxDSSource/camera/VxGenParameterArray.h"
#include "VxSimulator/VxSimulatedCamera.h"
#include "VxSimulator/device/SimulatedRegisters.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <chrono>
#include <memory>
#include <string>
#include <thread>

namespace {

using namespace std::chrono_literals;
using Clock = std::chrono::steady_clock;

constexpr const char* kAddress = "127.0.0.1";

/// What a user must never wait longer than, whatever a camera does; sanitizers and a busy machine included.
constexpr auto kPatience = 10s;

std::chrono::milliseconds Since(Clock::time_point start)
{
    return std::chrono::duration_cast<std::chrono::milliseconds>(Clock::now() - start);
}

class MisbehavingCameraTest : public testing::Test {
protected:
    void Start(const VxSimulatorOptions& options)
    {
        const VxResult started = m_camera.Start(options);
        ASSERT_TRUE(started.IsOK()) << started.GetDescription().Narrow();
    }
    void StartWith(const VxSimulatorFaults& faults)
    {
        VxSimulatorOptions options;
        options.faults = faults;
        Start(options);
    }
    /// Control without the feature tree.
    VxExpected<std::unique_ptr<control::DeviceSession>> Session()
    {
        transport::NetworkInterface loopback;
        loopback.address = transport::Ipv4Address::Loopback();
        return control::DeviceSession::Connect({*m_sockets, m_clock}, m_camera.ControlEndpoint(), loopback);
    }
    static VxResult Connect(DevicePointer& device) { return ConnectPatiently(device, kAddress); }

    VxSteadyClock m_clock;
    std::unique_ptr<transport::ISocketFactory> m_sockets = transport::MakeSystemSocketFactory();
    VxSimulatedCamera m_camera;
    CameraLink m_link;
};

TEST_F(MisbehavingCameraTest, AnswersThatComeAfterTheRetryCountAndTheirDoublesDoNot)
{
    StartWith({.answerDelay = 250ms}); // the first try waits for 200 ms

    const auto session = Session();

    ASSERT_TRUE(session) << session.Error().GetDescription().Narrow();
    for (std::uint32_t address : {bootstrap::kHeartbeatTimeout, bootstrap::kStreamChannelCount}) {
        const auto value = (*session)->Client().ReadRegister(address);
        ASSERT_TRUE(value);
        EXPECT_EQ(*value, address == bootstrap::kHeartbeatTimeout ? 3000u : 1u);
    }
}

TEST_F(MisbehavingCameraTest, AWriteThatIsPendingIsWaitedForAndNotSentAgain)
{
    StartWith({.pendingTime = 900ms}); // more than all tries together without it
    const auto session = Session();
    ASSERT_TRUE(session) << session.Error().GetDescription().Narrow();
    const auto before = m_camera.Counters().commandsReceived;
    const auto start = Clock::now();

    ASSERT_TRUE((*session)->Client().WriteRegister(bootstrap::kHeartbeatTimeout, 1234).IsOK());

    EXPECT_GE(Since(start), 850ms);
    EXPECT_EQ(m_camera.Counters().commandsReceived, before + 1);
    EXPECT_EQ((*session)->Client().ReadRegister(bootstrap::kHeartbeatTimeout).ValueOr(0), 1234u);
}

TEST_F(MisbehavingCameraTest, LostCommandsAndAnswersAreBridged)
{
    StartWith({.dropCommandShare = 0.03, .dropAnswerShare = 0.03});

    m_link.Connect(kAddress);

    ASSERT_TRUE(m_link.Features().SetIntegerValue("Width", 320).IsOK());
    std::int64_t width = 0;
    ASSERT_TRUE(m_link.Features().GetIntegerValue("Width", width).IsOK());
    EXPECT_EQ(width, 320);
}

TEST_F(MisbehavingCameraTest, ARefusedFeatureIsNamedAndTheOthersWork)
{
    StartWith({.refusedAddress = simulator::kWidth, .refusal = gvcp::Status::InvalidAddress});
    m_link.Connect(kAddress);

    std::int64_t value = 0;
    EXPECT_TRUE(m_link.Features().GetIntegerValue("Height", value).IsOK());
    const VxResult refused = m_link.Features().GetIntegerValue("Width", value);
    EXPECT_EQ(refused.Code(), VxError::CameraError);
    EXPECT_NE(refused.GetDescription().Narrow().find("0x0000A108"), std::string::npos)
        << refused.GetDescription().Narrow();
    EXPECT_TRUE(m_link.device->IsConnected());
}

TEST_F(MisbehavingCameraTest, ACameraThatRefusesControlIsAccessDenied)
{
    StartWith({.refusedAddress = bootstrap::kControlChannelPrivilege});
    DevicePointer device;
    const auto start = Clock::now();

    const VxResult result = Connect(device);

    EXPECT_EQ(result.Code(), VxError::AccessDenied);
    EXPECT_EQ(device, nullptr);
    EXPECT_LT(Since(start), 1s);
}

TEST_F(MisbehavingCameraTest, ACameraThatStartsAnewIsNoticedAndCanBeConnectedAgain)
{
    VxSimulatorOptions options;
    options.frameRateHz = 100;
    options.faults.rebootAfterFrames = 5;
    Start(options);
    m_link.Connect(kAddress);
    std::int64_t width = 0;
    ASSERT_TRUE(m_link.Features().GetIntegerValue("Width", width).IsOK());
    m_link.OpenStream(kAddress);
    m_link.Start();
    const auto start = Clock::now();

    while (m_link.device->IsConnected() && Since(start) < kPatience)
        std::this_thread::sleep_for(10ms);

    EXPECT_LT(Since(start), 4s); // its heartbeat time-out of 3 s, and a second for a busy machine
    EXPECT_FALSE(m_link.device->IsConnected());
    // Who was away for a moment only has forgotten who controls it.
    const auto isEnd = testing::AnyOf(VxError::AccessDenied, VxError::LinkLost);
    EXPECT_THAT(m_link.Features().ExecuteCommand("AcquisitionStop").Code(), isEnd);
    EXPECT_THAT(m_link.Features().GetIntegerValue("Width", width).Code(), isEnd) << "a value that was kept";
    m_link.device.reset();
    m_link.Connect(kAddress);
    EXPECT_TRUE(m_link.Features().GetIntegerValue("Width", width).IsOK());
}

TEST_F(MisbehavingCameraTest, AnswersThatLieAboutTheirLengthFailTheConnectInTime)
{
    for (const int error : {4, 1, 100, 60'000, -1, -2, -4, -100}) {
        StartWith({.answerLengthError = error});
        DevicePointer device;
        const auto start = Clock::now();

        const VxResult result = Connect(device);

        EXPECT_FALSE(result.IsOK()) << error;
        EXPECT_TRUE(result.Code() == VxError::Timeout || result.Code() == VxError::InvalidData)
            << error << ": " << result.GetCodeString().Narrow();
        EXPECT_NE(result.GetDescription().Narrow().find(kAddress), std::string::npos);
        EXPECT_LT(Since(start), kPatience);
        m_camera.Stop();
    }
}

TEST_F(MisbehavingCameraTest, ADescriptionThatIsSaidToBeLongerThanItIsLoads)
{
    StartWith({.descriptionLengthError = 1'000'000});

    m_link.Connect(kAddress);

    EXPECT_NE(m_link.Features().Get("Width"), nullptr);
}

TEST_F(MisbehavingCameraTest, ADescriptionOfAnAbsurdOrTooShortLengthIsInvalid)
{
    for (const std::int64_t error :
         {std::int64_t{100} << 20, std::int64_t{4'000'000'000}, std::int64_t{-1000}}) {
        StartWith({.descriptionLengthError = error});
        DevicePointer device;

        const VxResult result = Connect(device);

        EXPECT_EQ(result.Code(), VxError::InvalidData) << error;
        EXPECT_NE(result.GetDescription().Narrow().find(kAddress), std::string::npos)
            << result.GetDescription().Narrow();
        EXPECT_FALSE(m_camera.ControlOwner()) << "control is given back";
        m_camera.Stop();
    }
}

TEST_F(MisbehavingCameraTest, ConnectingToACameraWithADescriptionOfAMegabyteTakesASecondAtMost)
{
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
    constexpr int kSlowness = 4; // chosen: what sanitizers cost
#else
    constexpr int kSlowness = 1;
#endif
    constexpr auto kLimit = kSlowness * 1000ms;
    // A machine that is busy with something else makes one attempt slow, but hardly three.
    auto best = std::chrono::milliseconds::max();
    for (int attempt = 0; attempt < 3 && best >= kLimit; ++attempt) {
        VxSimulatorOptions options;
        options.descriptionBytes = (1 << 20) + attempt; // another text each time: none has been read before
        Start(options);
        {
            CameraLink link;
            const auto start = Clock::now();
            link.Connect(kAddress);
            best = std::min(best, Since(start));
        }
        m_camera.Stop();
    }

    EXPECT_LT(best, kLimit);
    RecordProperty("connectMs", static_cast<int>(best.count()));
}

TEST_F(MisbehavingCameraTest, ThePacketSizeIsTheUsersWhereHeSaysSo)
{
    Start({});
    m_link.Connect(kAddress);
    VxGenParameterArray& link = *m_link.device->GetCommunicationParameters();
    ASSERT_TRUE(link.Get("PacketSize")->FromString("1400").IsOK());
    ASSERT_TRUE(link.Get("PacketSizeMode")->FromString("Fixed").IsOK());
    const auto inForce = [this] {
        std::int64_t bytes = 0;
        EXPECT_TRUE(m_link.Features().GetIntegerValue("GevSCPSPacketSize", bytes).IsOK());
        return bytes;
    };

    m_link.OpenStream(kAddress);
    EXPECT_EQ(inForce(), 1400);
    ASSERT_TRUE(link.Get("PacketSizeMode")->FromString("Automatic").IsOK());
    EXPECT_EQ(inForce(), 65'532) << "at once, while the camera does not stream";
    m_link.Start();
    ASSERT_TRUE(link.Get("PacketSizeMode")->FromString("Fixed").IsOK());
    EXPECT_EQ(inForce(), 65'532) << "not while it does";
    m_link.Stop();
    m_link.Start();
    EXPECT_EQ(inForce(), 1400) << "but with the next start";
    m_link.Stop();
}

TEST_F(MisbehavingCameraTest, ACameraWithoutTestPacketsGetsWhatTheInterfaceCarries)
{
    VxSimulatorOptions options;
    options.hasTestPackets = false;
    Start(options);
    m_link.Connect(kAddress);

    m_link.OpenStream(kAddress);

    std::int64_t bytes = 0;
    ASSERT_TRUE(m_link.Features().GetIntegerValue("GevSCPSPacketSize", bytes).IsOK());
    EXPECT_EQ(bytes, 65'532); // the largest that IPv4 has, in the camera's steps of 4
    m_link.Start();
    EXPECT_TRUE(m_link.Next()->GetOperationResult().IsOK());
    m_link.Stop();
}

} // namespace
