#pragma once

#include "VxCamera/control/CommandClient.h"
#include "VxCamera/wire/gvcp/AckHeader.h"
#include "VxCamera/wire/registers/BootstrapBits.h"
#include "VxCamera/wire/registers/BootstrapRegisters.h"
#include "support/network/FakeCamera.h"
#include "support/network/FakeSocketFactory.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <memory>
#include <vector>

namespace control {

/// A fake camera with a packet size register as cameras have it, test packets, and a network on the way that
/// carries only packets up to some size. Controlled through its client.
///
/// Owner:  the test.
/// Thread: one.
class StreamingFakeCamera {
public:
    StreamingFakeCamera()
    {
        transport::UdpSocketOptions options;
        options.local.address = transport::Ipv4Address(192, 168, 1, 1);
        client =
            std::make_unique<CommandClient>(std::move(*sockets.OpenUdp(options)), camera.endpoint, clock);
        (void)client->WriteRegister(bootstrap::kControlChannelPrivilege, bootstrap::kPrivilegeControl);
        camera.SetRegister(bootstrap::kStreamChannelPacketSize, 1500);
    }

    std::uint32_t smallest = 220; ///< as the camera limits and rounds the size
    std::uint32_t largest = 16384;
    std::uint32_t step = 4;
    std::uint32_t carried = 65535; ///< by what lies between the camera and us; 0: no test packets at all
    bool isRefusingTestPackets = false;
    int lost = 0; ///< of the next test packets
    std::vector<std::uint32_t> tested;

    FakeClock clock;
    FakeCamera camera{clock};
    FakeSocketFactory sockets{
        clock, [this](FakeUdpSocket& socket, std::span<const std::byte> datagram,
                      const transport::Ipv4Endpoint& destination) {
            if (isRefusingTestPackets && IsTestPacketCommand(datagram)) {
                const auto id = gvcp::ParseCommand(datagram)->header.requestId;
                socket.Arrive(
                    camera.endpoint,
                    gvcp::MakeEmptyAck(gvcp::Status::InvalidParameter, gvcp::Ack::WriteReg, id).Bytes(),
                    camera.delay);
                return;
            }
            camera.OnDatagram(socket, datagram, destination);
            AfterCommand();
        }};
    std::unique_ptr<CommandClient> client;

private:
    static bool IsTestPacketCommand(std::span<const std::byte> datagram)
    {
        const auto packet = gvcp::ParseCommand(datagram);
        if (packet->header.command != gvcp::Command::WriteReg)
            return false;
        const auto address = VxLoadBe<std::uint32_t>(packet->payload.first<4>());
        const auto value = VxLoadBe<std::uint32_t>(packet->payload.subspan(4).first<4>());
        return address == bootstrap::kStreamChannelPacketSize && (value & bootstrap::kFireTestPacket) != 0;
    }
    void AfterCommand()
    {
        const std::uint32_t written = camera.Register(bootstrap::kStreamChannelPacketSize);
        std::uint32_t size = std::clamp(written & bootstrap::kPacketSizeMask, smallest, largest);
        size -= size % step;
        camera.SetRegister(bootstrap::kStreamChannelPacketSize,
                           (written & ~(bootstrap::kFireTestPacket | bootstrap::kPacketSizeMask)) | size);
        const bool isOpen = camera.Register(bootstrap::kStreamChannelPort) != 0;
        if ((written & bootstrap::kFireTestPacket) == 0 || !isOpen)
            return;
        tested.push_back(size);
        EXPECT_NE(written & bootstrap::kDoNotFragment, 0u);
        if (size > carried || lost-- > 0)
            return;
        const std::vector<std::byte> packet(size - 28); // without the headers of IP and UDP
        sockets.lastSocket->Arrive({camera.endpoint.address, 20202}, packet, std::chrono::microseconds(300));
    }
};

} // namespace control
