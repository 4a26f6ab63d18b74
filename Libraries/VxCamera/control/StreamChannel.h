#pragma once

#include "VxBase/VxExpected.h"
#include "VxBase/VxResult.h"
#include "VxCamera/control/CommandClient.h"
#include "VxCamera/transport/Ipv4Endpoint.h"

#include <cstdint>

namespace control {

/// One stream channel of a camera: where it sends to, and in packets of which size.
///
/// Owner:  whoever sets it up, for a call. Borrows the client.
/// Thread: any, one at a time for one channel.
class StreamChannel {
public:
    /// @param channel  from 0, below the number of the camera's channels
    StreamChannel(CommandClient& client, std::uint32_t channel) : m_client(client), m_channel(channel) {}

    /// @return  bytes with the headers of IP, UDP and stream, without Ethernet
    [[nodiscard]] VxExpected<std::uint32_t> PacketSize();

    /// Whether routers and the camera itself may cut a packet into pieces.
    enum class Fragments { AsBefore, Never };

    /// @return  the size that the camera has made of it
    [[nodiscard]] VxExpected<std::uint32_t> SetPacketSize(std::uint32_t bytes, Fragments fragments);

    /// The register behind the packet size, other bits included, for whoever must leave it as it was.
    [[nodiscard]] VxExpected<std::uint32_t> PacketSizeRegister();
    [[nodiscard]] VxResult RestorePacketSizeRegister(std::uint32_t value);

    /// Asks for one packet of the size set last, which is sent whole or not at all.
    [[nodiscard]] VxResult FireTestPacket();

    /// Takes the next smaller size that networks usually carry.
    /// @return  the size that the camera has made of it; OUT_OF_RANGE when no smaller one makes sense
    [[nodiscard]] VxExpected<std::uint32_t> StepPacketSizeDown();

    /// Directs the channel to a receiver. The camera may send from then on.
    [[nodiscard]] VxResult Open(const transport::Ipv4Endpoint& receiver);

    /// The camera sends nothing more on this channel.
    [[nodiscard]] VxResult Close();

private:
    [[nodiscard]] std::uint32_t Register(std::uint32_t ofChannel0) const;

    CommandClient& m_client; // borrowed: outlives this
    const std::uint32_t m_channel;
};

} // namespace control
