#include "VxSimulator/VxSimulatedCamera.h"

#include "VxCamera/wire/gvcp/AckHeader.h"
#include "VxCamera/wire/gvcp/Discovery.h"
#include "VxCamera/wire/gvcp/ForceIp.h"
#include "VxCamera/wire/gvcp/PacketResend.h"
#include "VxCamera/wire/gvcp/ReadReg.h"
#include "VxCamera/wire/gvcp/WriteReg.h"
#include "VxCamera/wire/gvsp/ImageLeader.h"
#include "VxCamera/wire/gvsp/PacketHeader.h"
#include "VxCamera/wire/registers/BootstrapRegisters.h"

#include "VxSimulator/device/SimulatedRegisters.h"
#include "VxSimulator/picture/TestPicture.h"

#include "MemoryNetwork.h"
#include "support/Bytes.h"
#include "support/network/FakeInterfaceList.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>
#include <future>

namespace {

using namespace std::chrono_literals;
using testing::HasSubstr;
using transport::Ipv4Address;
using transport::Ipv4Endpoint;

constexpr Ipv4Address kCamera(10, 0, 0, 9);
constexpr Ipv4Endpoint kControl{kCamera, 3956};

// Chosen: longer than any machine needs; a test that waits so long fails.
constexpr auto kLongestWait = 20s;

class VxSimulatedCameraTest : public testing::Test {
protected:
    VxSimulatedCameraTest()
    {
        m_interfaces.interfaces.push_back(
            {.name = "eth0", .address = kCamera, .mask = Ipv4Address(255, 255, 255, 0), .mtuBytes = 1500});
        m_client = Open({Ipv4Address(10, 0, 0, 1), 50000});
    }

    std::unique_ptr<transport::IUdpSocket> Open(const Ipv4Endpoint& local)
    {
        transport::UdpSocketOptions options;
        options.local = local;
        auto socket = m_network.OpenUdp(options);
        EXPECT_TRUE(socket);
        return *std::move(socket);
    }

    static VxSimulatorOptions Options()
    {
        VxSimulatorOptions options;
        options.address = kCamera;
        options.widthPx = 128;
        options.heightPx = 64;
        options.frameRateHz = 1000;
        return options;
    }

    bytes::Vector Receive(transport::IUdpSocket& socket, std::chrono::microseconds timeout = kLongestWait)
    {
        bytes::Vector memory(65536);
        std::array datagrams{transport::Datagram{.memory = memory}};
        if (!socket.Receive(datagrams, timeout))
            return {};
        return bytes::Copy(datagrams[0].Bytes());
    }

    gvcp::Status Write(std::uint32_t address, std::uint32_t value)
    {
        const std::array writes{gvcp::RegisterValue{address, value}};
        m_requestId = gvcp::NextRequestId(m_requestId);
        EXPECT_TRUE(
            m_client->SendTo(gvcp::MakeWriteRegCommand(m_requestId, writes)->Bytes(), kControl).IsOK());
        const auto datagram = Receive(*m_client);
        const auto ack = gvcp::ParseAck(datagram);
        return ack ? ack->header.status : gvcp::Status::Error;
    }

    void StartStreaming()
    {
        m_receiver = Open({Ipv4Address(10, 0, 0, 1), 40000});
        ASSERT_EQ(Write(bootstrap::kControlChannelPrivilege, 2), gvcp::Status::Success);
        ASSERT_EQ(Write(bootstrap::kStreamChannelDestination, 0x0A000001), gvcp::Status::Success);
        ASSERT_EQ(Write(bootstrap::kStreamChannelPort, 40000), gvcp::Status::Success);
        ASSERT_EQ(Write(simulator::kAcquisitionStart, 1), gvcp::Status::Success);
    }

    MemoryNetwork m_network;
    FakeInterfaceList m_interfaces;
    VxSteadyClock m_clock;
    std::unique_ptr<transport::IUdpSocket> m_client;
    std::unique_ptr<transport::IUdpSocket> m_receiver;
    std::uint16_t m_requestId = 0;
    VxSimulatedCamera m_camera{m_network, m_interfaces, m_clock}; // after what it borrows
};

TEST_F(VxSimulatedCameraTest, IsOffAtFirst)
{
    EXPECT_FALSE(m_camera.IsRunning());
    EXPECT_EQ(m_camera.FramesSent(), 0u);
    EXPECT_EQ(m_camera.ControlEndpoint(), Ipv4Endpoint{});
    EXPECT_FALSE(m_camera.ControlOwner());
}

TEST_F(VxSimulatedCameraTest, AnswersAsSoonAsItIsStarted)
{
    ASSERT_TRUE(m_camera.Start(Options()).IsOK());
    EXPECT_TRUE(m_camera.IsRunning());
    EXPECT_EQ(m_camera.ControlEndpoint(), kControl);
    EXPECT_EQ(m_camera.MacText(), "02:00:0A:00:00:09");

    for (const auto address : {kCamera, Ipv4Address::LimitedBroadcast(), Ipv4Address(10, 0, 0, 255)}) {
        const auto command = gvcp::MakeDiscoveryCommand(7, gvcp::DiscoveryAnswer::Unicast);
        ASSERT_TRUE(m_client->SendTo(command.Bytes(), {address, 3956}).IsOK());

        const auto answer = Receive(*m_client);

        const auto ack = gvcp::ParseAck(answer);
        ASSERT_TRUE(ack) << address.ToString();
        const auto identity = gvcp::ParseDiscoveryAck(ack->payload);
        ASSERT_TRUE(identity);
        EXPECT_EQ(identity->ipAddress, kCamera.Value());
        EXPECT_EQ(identity->subnetMask, 0xFFFFFF00u);
    }
}

TEST_F(VxSimulatedCameraTest, AnswersAForeignSubnetByBroadcast)
{
    ASSERT_TRUE(m_camera.Start(Options()).IsOK());
    const auto stranger = Open({Ipv4Address(192, 168, 0, 1), 50000});
    const auto everybody = Open({Ipv4Address::LimitedBroadcast(), 50000});
    const auto command = gvcp::MakeDiscoveryCommand(7, gvcp::DiscoveryAnswer::BroadcastAllowed);

    ASSERT_TRUE(stranger->SendTo(command.Bytes(), {Ipv4Address::LimitedBroadcast(), 3956}).IsOK());

    EXPECT_EQ(Receive(*everybody).size(), 256u);
}

TEST_F(VxSimulatedCameraTest, StreamsTestPictures)
{
    ASSERT_TRUE(m_camera.Start(Options()).IsOK());
    StartStreaming();

    std::uint64_t frames = 0;
    bytes::Vector picture;
    while (frames < 3) {
        const auto datagram = Receive(*m_receiver);
        const auto packet = gvsp::ParsePacket(datagram);
        ASSERT_TRUE(packet);
        if (packet->header.format == gvsp::PacketFormat::Leader) {
            const auto leader = gvsp::ParseImageLeader(packet->data);
            ASSERT_TRUE(leader);
            EXPECT_EQ(leader->widthPx, 128u);
            picture.clear();
        } else if (packet->header.format == gvsp::PacketFormat::Payload) {
            picture.insert(picture.end(), packet->data.begin(), packet->data.end());
        } else {
            EXPECT_EQ(picture, simulator::TestPicture(frames, 128, 64, 0x01080001)) << frames;
            ++frames;
        }
    }

    EXPECT_TRUE(m_camera.IsAcquiring());
    EXPECT_EQ(m_camera.ControlOwner(), m_client->LocalEndpoint());
    EXPECT_GE(m_camera.Counters().packetsSent, 3u * 8 - 1);
    EXPECT_GE(m_camera.FramesSent(), 2u);
}

TEST_F(VxSimulatedCameraTest, SendsPacketsAgain)
{
    auto options = Options();
    options.frameLimit = 1;
    ASSERT_TRUE(m_camera.Start(options).IsOK());
    StartStreaming();
    for (int i = 0; i < 8; ++i)
        ASSERT_FALSE(Receive(*m_receiver).empty());

    const auto command =
        gvcp::MakePacketResendCommand(9, {.blockId = 1, .firstPacketId = 3, .lastPacketId = 3});
    ASSERT_TRUE(m_client->SendTo(command.Bytes(), kControl).IsOK());

    const auto datagram = Receive(*m_receiver);
    const auto packet = gvsp::ParsePacket(datagram);
    ASSERT_TRUE(packet);
    EXPECT_EQ(packet->header.status, gvsp::Status::PacketResend);
    EXPECT_EQ(packet->header.packetId, 3u);
}

TEST_F(VxSimulatedCameraTest, SendsATestPacket)
{
    ASSERT_TRUE(m_camera.Start(Options()).IsOK());
    m_receiver = Open({Ipv4Address(10, 0, 0, 1), 40000});
    ASSERT_EQ(Write(bootstrap::kControlChannelPrivilege, 2), gvcp::Status::Success);
    ASSERT_EQ(Write(bootstrap::kStreamChannelDestination, 0x0A000001), gvcp::Status::Success);
    ASSERT_EQ(Write(bootstrap::kStreamChannelPort, 40000), gvcp::Status::Success);

    ASSERT_EQ(Write(bootstrap::kStreamChannelPacketSize, 0xC00005DC), gvcp::Status::Success);

    EXPECT_EQ(Receive(*m_receiver).size(), 1472u);
}

TEST_F(VxSimulatedCameraTest, IsSilentWhenItHasVanished)
{
    ASSERT_TRUE(m_camera.Start(Options()).IsOK());

    m_camera.Vanish();

    const auto command = gvcp::MakeDiscoveryCommand(7, gvcp::DiscoveryAnswer::Unicast);
    ASSERT_TRUE(m_client->SendTo(command.Bytes(), kControl).IsOK());
    // The command has been taken when the counter says so, and an answer would have been sent before the
    // next.
    while (m_camera.Counters().commandsReceived == 0)
        std::this_thread::yield();
    m_camera.Stop();
    EXPECT_TRUE(Receive(*m_client, 0us).empty());
}

TEST_F(VxSimulatedCameraTest, VanishesAfterItsFrames)
{
    auto options = Options();
    options.faults.vanishAfterFrames = 2;
    std::promise<void> vanished;
    m_camera.SetEventSink([&vanished](const std::string& event) {
        if (event == "vanished")
            vanished.set_value();
    });
    ASSERT_TRUE(m_camera.Start(options).IsOK());
    StartStreaming();

    ASSERT_EQ(vanished.get_future().wait_for(kLongestWait), std::future_status::ready);

    EXPECT_EQ(m_camera.FramesSent(), 2u);
}

TEST_F(VxSimulatedCameraTest, TellsItsEvents)
{
    VxMutex mutex;
    std::vector<std::string> events;
    m_camera.SetEventSink([&](const std::string& event) {
        const VxLock lock(mutex);
        events.push_back(event);
    });
    ASSERT_TRUE(m_camera.Start(Options()).IsOK());
    StartStreaming();
    ASSERT_EQ(Write(simulator::kAcquisitionStop, 1), gvcp::Status::Success);
    ASSERT_EQ(Write(bootstrap::kControlChannelPrivilege, 0), gvcp::Status::Success);
    m_camera.Stop();

    ASSERT_EQ(events.size(), 4u);
    EXPECT_EQ(events[0], "control taken by 10.0.0.1:50000");
    EXPECT_EQ(events[1], "acquisition started");
    EXPECT_THAT(events[2], HasSubstr("acquisition stopped after"));
    EXPECT_EQ(events[3], "control released or lost by 10.0.0.1:50000");
}

TEST_F(VxSimulatedCameraTest, ClosesItsSocketsWhenItStops)
{
    const std::size_t before = m_network.OpenSockets();
    for (int i = 0; i < 20; ++i) {
        ASSERT_TRUE(m_camera.Start(Options()).IsOK());
        EXPECT_GT(m_network.OpenSockets(), before);
        m_camera.Stop();
        EXPECT_EQ(m_network.OpenSockets(), before);
    }
    m_camera.Stop();
    EXPECT_FALSE(m_camera.IsRunning());
}

TEST_F(VxSimulatedCameraTest, CannotBeStartedTwice)
{
    ASSERT_TRUE(m_camera.Start(Options()).IsOK());

    EXPECT_EQ(m_camera.Start(Options()).Code(), VxError::AlreadyOpen);
    EXPECT_TRUE(m_camera.IsRunning());
}

TEST_F(VxSimulatedCameraTest, SaysWhatToDoWhenThePortIsInUse)
{
    const auto other = Open(kControl);

    const auto started = m_camera.Start(Options());

    EXPECT_EQ(started.Code(), VxError::PortInUse);
    EXPECT_THAT(started.GetDescription().Narrow(), HasSubstr("10.0.0.9:3956"));
    EXPECT_THAT(started.GetDescription().Narrow(), HasSubstr("choose another address or port"));
    EXPECT_FALSE(m_camera.IsRunning());
}

TEST_F(VxSimulatedCameraTest, RefusesWrongOptions)
{
    auto options = Options();
    options.widthPx = 1;

    EXPECT_EQ(m_camera.Start(options).Code(), VxError::InvalidParameter);
    EXPECT_FALSE(m_camera.IsRunning());
}

TEST_F(VxSimulatedCameraTest, SeveralRunBesideEachOther)
{
    VxSimulatedCamera second(m_network, m_interfaces, m_clock);
    auto options = Options();
    ASSERT_TRUE(m_camera.Start(options).IsOK());
    options.address = Ipv4Address(10, 0, 0, 10);

    ASSERT_TRUE(second.Start(options).IsOK());

    EXPECT_NE(second.MacText(), m_camera.MacText());
}

TEST_F(VxSimulatedCameraTest, MovesToTheAddressItIsGivenAndAnswersFromThere)
{
    ASSERT_TRUE(m_camera.Start(Options()).IsOK());
    const auto mac = m_camera.Mac();
    const gvcp::ForceIpCommand address{mac, Ipv4Address(10, 0, 0, 77).Value(), 0xFFFFFF00u, 0};

    ASSERT_TRUE(m_client
                    ->SendTo(gvcp::MakeForceIpCommand(9, gvcp::DiscoveryAnswer::Unicast, address).Bytes(),
                             {Ipv4Address::LimitedBroadcast(), 3956})
                    .IsOK());

    EXPECT_EQ(Receive(*m_client), bytes::FromHex("00 00 00 05 00 00 00 09"));
    EXPECT_EQ(m_camera.ControlEndpoint().ToString(), "10.0.0.77:3956");
    EXPECT_EQ(m_camera.Mac(), mac);
    const auto discovery = gvcp::MakeDiscoveryCommand(7, gvcp::DiscoveryAnswer::Unicast);
    ASSERT_TRUE(m_client->SendTo(discovery.Bytes(), {Ipv4Address(10, 0, 0, 77), 3956}).IsOK());
    const auto answer = Receive(*m_client);
    const auto ack = gvcp::ParseAck(answer);
    ASSERT_TRUE(ack);
    EXPECT_EQ(gvcp::ParseDiscoveryAck(ack->payload)->ipAddress, Ipv4Address(10, 0, 0, 77).Value());
}

TEST_F(VxSimulatedCameraTest, AnAnswerThatIsLateComesLate)
{
    VxSimulatorOptions options = Options();
    options.faults.answerDelay = 30ms;
    ASSERT_TRUE(m_camera.Start(options).IsOK());
    const auto start = m_clock.Now();

    EXPECT_EQ(Write(bootstrap::kControlChannelPrivilege, 2), gvcp::Status::Success);

    EXPECT_GE(m_clock.Now() - start, 30ms);
}

} // namespace
