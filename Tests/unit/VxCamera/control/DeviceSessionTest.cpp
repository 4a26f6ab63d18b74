#include "VxCamera/control/DeviceSession.h"

#include "VxCamera/wire/registers/BootstrapBits.h"
#include "VxCamera/wire/registers/BootstrapRegisters.h"
#include "support/Bytes.h"
#include "support/network/FakeCamera.h"
#include "support/network/FakeSocketFactory.h"

#include <gtest/gtest.h>

namespace control {
namespace {

using namespace std::chrono_literals;
using gvcp::Command;

constexpr transport::Ipv4Address kHost(192, 168, 1, 1);

transport::NetworkInterface Via()
{
    transport::NetworkInterface via;
    via.name = "eth0";
    via.index = 2;
    via.address = kHost;
    return via;
}

class DeviceSessionTest : public testing::Test {
protected:
    VxExpected<std::unique_ptr<DeviceSession>> Connect()
    {
        return DeviceSession::Connect({m_sockets, m_clock}, m_camera.endpoint, Via());
    }
    std::unique_ptr<DeviceSession> Connected()
    {
        auto session = Connect();
        EXPECT_TRUE(session) << session.Result().GetDescription().Narrow();
        m_camera.seen.clear();
        return std::move(*session);
    }
    /// Does what the heartbeat thread does, for so long.
    /// @return  when the session ended; none when it did not
    std::optional<std::chrono::milliseconds> BeatFor(DeviceSession& session,
                                                     std::chrono::milliseconds duration)
    {
        const auto start = m_clock.Now();
        while (m_clock.Now() < start + duration) {
            const auto next = session.Beat();
            if (!next)
                return std::chrono::duration_cast<std::chrono::milliseconds>(m_clock.Now() - start);
            m_clock.AdvanceTo(std::min(*next, start + duration));
        }
        return std::nullopt;
    }
    void HoldBy(const transport::Ipv4Endpoint& application)
    {
        m_camera.controller = application;
        m_camera.lastCommandOfController = m_clock.Now();
        m_camera.SetRegister(bootstrap::kControlChannelPrivilege, bootstrap::kPrivilegeControl);
        m_camera.SetRegister(bootstrap::kPrimaryApplicationIp, application.address.Value());
        m_camera.SetRegister(bootstrap::kPrimaryApplicationPort, application.port);
    }

    FakeClock m_clock;
    FakeCamera m_camera{m_clock};
    FakeSocketFactory m_sockets{m_clock, [this](FakeUdpSocket& socket, std::span<const std::byte> datagram,
                                                const transport::Ipv4Endpoint& destination) {
                                    m_camera.OnDatagram(socket, datagram, destination);
                                }};
};

TEST_F(DeviceSessionTest, TakesControlFromTheAddressOfTheInterface)
{
    const auto session = Connected();

    ASSERT_TRUE(m_camera.controller);
    EXPECT_EQ(m_camera.controller->address, kHost);
    EXPECT_EQ(m_sockets.opened.front().interfaceIndex, 2u);
    EXPECT_TRUE(session->IsAlive());
    EXPECT_TRUE(session->IsOpen());
    EXPECT_TRUE(session->CloseReason().IsOK());
}

TEST_F(DeviceSessionTest, LearnsWhatTheCameraCanDo)
{
    m_camera.SetRegister(bootstrap::kTimestampFrequencyHigh, 1);
    m_camera.SetRegister(bootstrap::kTimestampFrequencyLow, 2);
    m_camera.SetRegister(bootstrap::kStreamChannelCapability, bootstrap::kCapabilitySourcePort);
    m_camera.SetRegister(bootstrap::kHeartbeatTimeout, 1234);

    const auto session = Connected();

    EXPECT_EQ(session->Facts().tickFrequencyHz, 0x100000002u);
    EXPECT_EQ(session->Facts().streamChannelCapability, bootstrap::kCapabilitySourcePort);
    EXPECT_EQ(session->HeartbeatTimeout(), 1234ms);
}

TEST_F(DeviceSessionTest, ANumberOfChannelsThatLiesIsCutToWhatTheProtocolHas)
{
    m_camera.SetRegister(bootstrap::kStreamChannelCount, 0xFFFFFFFF);

    EXPECT_EQ(Connected()->Facts().streamChannelCount, 512u);
}

TEST_F(DeviceSessionTest, ACameraWithoutOptionalRegistersIsUsable)
{
    for (const std::uint32_t address : {bootstrap::kGvcpCapability, bootstrap::kStreamChannelCapability,
                                        bootstrap::kTimestampFrequencyHigh, bootstrap::kHeartbeatTimeout})
        m_camera.refused[address] = gvcp::Status::InvalidAddress;

    EXPECT_TRUE(Connect());
}

TEST_F(DeviceSessionTest, AnotherHostsControlIsAccessDeniedWithItsAddress)
{
    HoldBy({transport::Ipv4Address(192, 168, 1, 77), 5000});
    const auto start = m_clock.Now();

    const auto session = Connect();

    ASSERT_FALSE(session);
    EXPECT_EQ(session.Error().Code(), VxError::AccessDenied);
    EXPECT_NE(session.Error().GetDescription().Narrow().find("192.168.1.77:5000"), std::string::npos);
    EXPECT_LT(m_clock.Now() - start, 100ms);
}

TEST_F(DeviceSessionTest, ACameraThatHidesItsOwnerIsAccessDeniedAtOnce)
{
    HoldBy({kHost, 5000});
    m_camera.SetRegister(bootstrap::kGvcpCapability, bootstrap::kCapabilityWriteMem);
    const auto start = m_clock.Now();

    const auto session = Connect();

    ASSERT_FALSE(session);
    EXPECT_EQ(session.Error().Code(), VxError::AccessDenied);
    EXPECT_LT(m_clock.Now() - start, 100ms);
}

TEST_F(DeviceSessionTest, ACameraThatIgnoresOthersWhileItIsControlledIsAccessDenied)
{
    HoldBy({transport::Ipv4Address(192, 168, 1, 77), 5000});
    m_camera.isIgnoringWritesOfOthers = true;

    const auto session = Connect();

    ASSERT_FALSE(session);
    EXPECT_EQ(session.Error().Code(), VxError::AccessDenied);
}

TEST_F(DeviceSessionTest, ACrashedPredecessorsHeartbeatIsWaitedFor)
{
    HoldBy({kHost, 5000});

    EXPECT_TRUE(Connect());
}

TEST_F(DeviceSessionTest, ACrashedPredecessorsHeartbeatIsWaitedForAlsoWhereTheCameraIgnoresOthers)
{
    HoldBy({kHost, 5000});
    m_camera.isIgnoringWritesOfOthers = true;

    const auto session = Connect();

    EXPECT_TRUE(session) << session.Result().GetDescription().Narrow();
}

TEST_F(DeviceSessionTest, ALivingProgramOfThisHostIsNotWaitedFor)
{
    HoldBy({kHost, 5000});
    m_sockets.portsInUse.insert(5000);
    const auto start = m_clock.Now();

    const auto session = Connect();

    ASSERT_FALSE(session);
    EXPECT_EQ(session.Error().Code(), VxError::AccessDenied);
    EXPECT_LT(m_clock.Now() - start, 100ms);
}

TEST_F(DeviceSessionTest, APredecessorThatNeverLetsGoIsGivenUpAfterItsHeartbeat)
{
    HoldBy({kHost, 5000});
    m_camera.refused[bootstrap::kControlChannelPrivilege] = gvcp::Status::AccessDenied;
    const auto start = m_clock.Now();

    const auto session = Connect();

    ASSERT_FALSE(session);
    EXPECT_EQ(session.Error().Code(), VxError::AccessDenied);
    EXPECT_GE(m_clock.Now() - start, 4000ms); // its time-out of 3 s and a second
    EXPECT_LT(m_clock.Now() - start, 4500ms);
}

TEST_F(DeviceSessionTest, ACameraThatFallsSilentDuringTheConnectFailsIt)
{
    m_camera.refused[bootstrap::kStreamChannelCount] = gvcp::Status::Success; // reached, then nothing more
    FakeSocketFactory sockets(m_clock, [&](FakeUdpSocket& socket, std::span<const std::byte> datagram,
                                           const transport::Ipv4Endpoint& destination) {
        m_camera.OnDatagram(socket, datagram, destination);
        m_camera.isGone = m_camera.seen.size() >= 3;
    });

    const auto session = DeviceSession::Connect({sockets, m_clock}, m_camera.endpoint, Via());

    ASSERT_FALSE(session);
    EXPECT_EQ(session.Error().Code(), VxError::Timeout);
}

TEST_F(DeviceSessionTest, AConnectThatFailsGivesControlBack)
{
    FakeSocketFactory sockets(m_clock, [&](FakeUdpSocket& socket, std::span<const std::byte> datagram,
                                           const transport::Ipv4Endpoint& destination) {
        const auto packet = gvcp::ParseCommand(datagram);
        if (packet->header.command == Command::ReadReg)
            return; // lost on the way
        m_camera.OnDatagram(socket, datagram, destination);
    });

    const auto session = DeviceSession::Connect({sockets, m_clock}, m_camera.endpoint, Via());

    ASSERT_FALSE(session);
    EXPECT_EQ(session.Error().Code(), VxError::Timeout);
    EXPECT_EQ(m_camera.Count(Command::WriteReg), 2u);
    EXPECT_FALSE(m_camera.controller);
}

TEST_F(DeviceSessionTest, AConnectToACameraThatAlwaysAsksForPatienceEnds)
{
    FakeSocketFactory sockets(m_clock, [&](FakeUdpSocket& socket, std::span<const std::byte> datagram,
                                           const transport::Ipv4Endpoint& destination) {
        m_camera.pendingMs = {9000, 9000};
        m_camera.OnDatagram(socket, datagram, destination);
    });
    const auto start = m_clock.Now();

    const auto session = DeviceSession::Connect({sockets, m_clock}, m_camera.endpoint, Via());

    ASSERT_FALSE(session);
    EXPECT_EQ(session.Error().Code(), VxError::Timeout);
    EXPECT_GE(m_clock.Now() - start, 45s);
    EXPECT_LE(m_clock.Now() - start, 47s) << "with control given back";
}

TEST_F(DeviceSessionTest, TheWaitForAPredecessorLengthensTheConnect)
{
    HoldBy({kHost, 5000});
    const auto start = m_clock.Now();

    const auto session = Connect();

    ASSERT_TRUE(session);
    EXPECT_EQ((*session)->ConnectEnd() - start, 45s + 4s) << "its time-out of 3 s and a second";
}

TEST_F(DeviceSessionTest, WhoeverDisconnectsDoesNotWaitForACameraThatAsksForPatience)
{
    const auto session = Connected();
    m_camera.pendingMs = {9000, 9000, 9000};
    const auto start = m_clock.Now();
    session->EndWithin(2s);
    bytes::Vector four(4);

    EXPECT_EQ(session->Read(0x1000, four).Code(), VxError::NotConnected);
    EXPECT_EQ(session->Write(0x1000, four).Code(), VxError::NotConnected);

    EXPECT_EQ(m_clock.Now() - start, 2s);
    EXPECT_FALSE(session->IsAlive());
}

TEST_F(DeviceSessionTest, RegistersAreReadAndWrittenAsRegisters)
{
    const auto session = Connected();
    const auto value = bytes::FromHex("12345678");

    ASSERT_TRUE(session->Write(0x1000, value).IsOK());
    bytes::Vector read(4);
    ASSERT_TRUE(session->Read(0x1000, read).IsOK());

    EXPECT_EQ(read, value);
    EXPECT_EQ(m_camera.Count(Command::WriteReg), 1u);
    EXPECT_EQ(m_camera.Count(Command::ReadReg), 1u);
    EXPECT_EQ(m_camera.Register(0x1000), 0x12345678u);
}

TEST_F(DeviceSessionTest, EverythingElseIsMemory)
{
    const auto session = Connected();
    bytes::Vector eight(8);
    bytes::Vector odd(4);

    EXPECT_TRUE(session->Read(0x1000, eight).IsOK());
    EXPECT_TRUE(session->Read(0x1002, odd).IsOK());

    EXPECT_EQ(m_camera.Count(Command::ReadMem), 2u);
    EXPECT_EQ(m_camera.Count(Command::ReadReg), 0u);
}

TEST_F(DeviceSessionTest, AddressesBeyondThirtyTwoBitsAreRefused)
{
    const auto session = Connected();
    bytes::Vector four(4);

    EXPECT_EQ(session->Read(0x100000000, four).Code(), VxError::InvalidParameter);
    EXPECT_EQ(session->Write(0xFFFFFFFFFFFFFFF0, four).Code(), VxError::InvalidParameter);
}

TEST_F(DeviceSessionTest, HeartbeatsKeepControlForAnHour)
{
    const auto session = Connected();

    EXPECT_EQ(BeatFor(*session, 1h), std::nullopt);

    EXPECT_TRUE(m_camera.controller);
}

TEST_F(DeviceSessionTest, AClientThatReadsAllTheTimeStillNoticesThatAnotherHostHasControl)
{
    const auto session = Connected();
    const auto readFor = [&](std::chrono::milliseconds duration) {
        const auto start = m_clock.Now();
        while (m_clock.Now() - start < duration) {
            bytes::Vector four(4);
            if (!session->Beat() || !session->Read(0x1000, four).IsOK())
                break;
            m_clock.Advance(100ms);
        }
        return m_clock.Now() - start;
    };
    ASSERT_GE(readFor(5s), 5s);

    HoldBy({transport::Ipv4Address(192, 168, 1, 77), 5000});
    const auto noticed = readFor(1min);

    EXPECT_LE(noticed, 3000ms);
    EXPECT_EQ(session->Client().EndReason().Code(), VxError::AccessDenied);
}

TEST_F(DeviceSessionTest, ARefusedWriteLetsControlBeCheckedAtOnce)
{
    const auto session = Connected();
    ASSERT_TRUE(session->Beat());
    int told = 0;
    session->SetTimingListener([&] { ++told; });
    HoldBy({transport::Ipv4Address(192, 168, 1, 77), 5000});
    const auto start = m_clock.Now();

    EXPECT_EQ(session->Write(0x1000, bytes::FromHex("00000001")).Code(), VxError::AccessDenied);
    EXPECT_EQ(told, 1);
    EXPECT_FALSE(session->Beat());

    EXPECT_EQ(session->Client().EndReason().Code(), VxError::AccessDenied);
    EXPECT_LT(m_clock.Now() - start, 10ms);
}

TEST_F(DeviceSessionTest, ARefusalOfWhatNobodyMayWriteCostsNoControl)
{
    const auto session = Connected();
    m_camera.refused[0x1000] = gvcp::Status::AccessDenied;

    EXPECT_EQ(session->Write(0x1000, bytes::FromHex("00000001")).Code(), VxError::AccessDenied);
    EXPECT_EQ(BeatFor(*session, 10s), std::nullopt);

    EXPECT_LT(m_camera.Count(Command::ReadReg), 40u) << "one check more than usual";
}

TEST_F(DeviceSessionTest, ACameraThatRefusesTheHeartbeatsRegisterIsNotFlooded)
{
    const auto session = Connected();
    m_camera.refused[bootstrap::kControlChannelPrivilege] = gvcp::Status::InvalidAddress;

    EXPECT_EQ(BeatFor(*session, 10s), std::nullopt);

    EXPECT_LE(m_camera.Count(Command::ReadReg), 11u);
}

TEST_F(DeviceSessionTest, AShortHeartbeatTimeoutIsKept)
{
    m_camera.SetRegister(bootstrap::kHeartbeatTimeout, 150);
    const auto session = Connected();

    EXPECT_EQ(BeatFor(*session, 1min), std::nullopt);
    EXPECT_TRUE(m_camera.controller);
}

TEST_F(DeviceSessionTest, AChangedHeartbeatTimeoutIsKept)
{
    const auto session = Connected();
    ASSERT_TRUE(session->Beat());

    ASSERT_TRUE(session->Write(bootstrap::kHeartbeatTimeout, bytes::FromHex("000000C8")).IsOK()); // 200 ms

    EXPECT_EQ(BeatFor(*session, 1min), std::nullopt);
    EXPECT_TRUE(m_camera.controller);
}

TEST_F(DeviceSessionTest, TheHeartbeatIntervalCanBeSet)
{
    const auto session = Connected();
    EXPECT_EQ(session->HeartbeatInterval(), 1000ms);

    session->SetHeartbeatInterval(250ms);
    ASSERT_FALSE(BeatFor(*session, 10s));

    EXPECT_EQ(session->HeartbeatInterval(), 250ms);
    EXPECT_NEAR(static_cast<double>(m_camera.Count(Command::ReadReg)), 40 * 3,
                6); // privilege, and who has it
    session->SetHeartbeatInterval(1h);
    EXPECT_EQ(session->HeartbeatInterval(), 1500ms);
}

TEST_F(DeviceSessionTest, ATimingThatChangesIsTold)
{
    const auto session = Connected();
    int told = 0;
    session->SetTimingListener([&] { ++told; });

    ASSERT_TRUE(session->Write(bootstrap::kHeartbeatTimeout, bytes::FromHex("000000C8")).IsOK());
    EXPECT_EQ(told, 1);
    ASSERT_TRUE(session->Write(0x1000, bytes::FromHex("000000C8")).IsOK());
    EXPECT_EQ(told, 1);
    session->SetHeartbeat(false);
    EXPECT_EQ(told, 2);
}

TEST_F(DeviceSessionTest, ALostLinkIsNoticedWithinTheHeartbeatTimeout)
{
    const auto session = Connected();
    ASSERT_EQ(BeatFor(*session, 10s), std::nullopt);

    m_camera.isGone = true;
    const auto noticed = BeatFor(*session, 1min);

    ASSERT_TRUE(noticed);
    EXPECT_LE(*noticed, 3000ms);
    EXPECT_FALSE(session->IsAlive());
    EXPECT_FALSE(session->IsOpen());
    EXPECT_EQ(session->CloseReason().Code(), VxError::LinkLost);
}

TEST_F(DeviceSessionTest, ALostLinkIsNoticedInTimeAlsoWhenAnApplicationWaitsForAnAnswer)
{
    const auto session = Connected();
    const auto gone = m_clock.Now();
    m_camera.isGone = true;
    m_clock.Advance(999ms); // just before the heartbeat is due, an application takes its turn
    bytes::Vector four(4);
    EXPECT_EQ(session->Read(0x1000, four).Code(), VxError::Timeout);

    ASSERT_TRUE(BeatFor(*session, 1min));

    EXPECT_LE(m_clock.Now() - gone, 3000ms);
}

TEST_F(DeviceSessionTest, AfterALossEveryOperationFailsAtOnce)
{
    const auto session = Connected();
    m_camera.isGone = true;
    ASSERT_TRUE(BeatFor(*session, 1min));
    const auto start = m_clock.Now();
    bytes::Vector four(4);

    EXPECT_EQ(session->Read(0x1000, four).Code(), VxError::LinkLost);
    EXPECT_EQ(session->Write(0x1000, four).Code(), VxError::LinkLost);
    EXPECT_TRUE(session->Release().IsOK());

    EXPECT_EQ(m_clock.Now(), start);
}

TEST_F(DeviceSessionTest, AFewLostHeartbeatsAreNoLoss)
{
    const auto session = Connected();
    m_camera.dropCommands = 2;

    EXPECT_EQ(BeatFor(*session, 10s), std::nullopt);
    EXPECT_TRUE(m_camera.controller);
}

TEST_F(DeviceSessionTest, ControlGivenToNobodyIsNoticed)
{
    const auto session = Connected();
    m_camera.controller.reset();
    m_camera.SetRegister(bootstrap::kControlChannelPrivilege, 0);

    const auto noticed = BeatFor(*session, 1min);

    ASSERT_TRUE(noticed);
    EXPECT_LE(*noticed, 3000ms);
    EXPECT_EQ(session->Client().EndReason().Code(), VxError::AccessDenied);
}

TEST_F(DeviceSessionTest, ControlTakenBySomebodyElseIsNoticed)
{
    const auto session = Connected();
    HoldBy({transport::Ipv4Address(192, 168, 1, 77), 5000});

    const auto noticed = BeatFor(*session, 1min);

    ASSERT_TRUE(noticed);
    EXPECT_LE(*noticed, 3000ms);
    EXPECT_EQ(session->Client().EndReason().Code(), VxError::AccessDenied);
}

TEST_F(DeviceSessionTest, WithTheHeartbeatOffNothingIsSent)
{
    const auto session = Connected();
    session->SetHeartbeat(false);

    EXPECT_EQ(BeatFor(*session, 1min), std::nullopt);

    EXPECT_TRUE(m_camera.seen.empty());
}

TEST_F(DeviceSessionTest, ReleaseGivesControlBack)
{
    const auto session = Connected();

    EXPECT_TRUE(session->Release().IsOK());

    EXPECT_FALSE(m_camera.controller);
    bytes::Vector four(4);
    EXPECT_EQ(session->Read(0x1000, four).Code(), VxError::NotConnected);
    EXPECT_FALSE(session->Beat());
}

} // namespace
} // namespace control
