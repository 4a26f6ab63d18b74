#include "VxSimulator/device/SimulatedDevice.h"

namespace simulator {

SimulatedDevice::SimulatedDevice(const VxSimulatorOptions& options, const NetworkFacts& network, Time now)
    : m_model(options, network, now), m_server(m_model)
{
}

Reaction SimulatedDevice::Handle(std::span<const std::byte> datagram, const transport::Ipv4Endpoint& sender,
                                 Time now)
{
    if (m_isVanished)
        return {};
    Reaction reaction;
    if (const auto packet = gvcp::ParseCommand(datagram)) {
        const bool isDiscovery = packet->header.command == gvcp::Command::Discovery;
        reaction.isBroadcastAllowed = isDiscovery && (packet->header.flags & gvcp::kBroadcastAckAllowed) != 0;
        if (packet->header.command == gvcp::Command::PacketResend) {
            Advance(now);
            m_server.Touch(sender, now);
            reaction.resend = ResendOf(*packet, sender);
            return reaction;
        }
    }
    reaction.answer = m_server.Answer(datagram, sender, now);
    reaction.testPacket = m_model.TakeTestPacket();
    return reaction;
}

std::optional<gvcp::PacketResendCommand>
SimulatedDevice::ResendOf(const gvcp::CommandPacket& packet, const transport::Ipv4Endpoint& sender) const
{
    // Often asked for from the socket of the stream, whose port nobody has announced: the address has to do.
    const auto command = gvcp::ParsePacketResendCommand(packet);
    const auto destination = m_model.StreamDestination();
    const bool isOwner = ControlOwner() && ControlOwner()->address == sender.address;
    if (!command || command->channel != 0 || destination.port == 0 ||
        (!isOwner && destination.address != sender.address))
        return std::nullopt;
    return *command;
}

void SimulatedDevice::Advance(Time now)
{
    m_server.CheckHeartbeat(now);
}

std::optional<SimulatedDevice::Time> SimulatedDevice::NextAdvance() const
{
    return m_isVanished ? std::nullopt : m_server.HeartbeatDeadline();
}

std::optional<SimulatedDevice::Time> SimulatedDevice::NextFrameDue() const
{
    return m_isVanished ? std::nullopt : m_model.NextFrameDue();
}

std::optional<FrameOrder> SimulatedDevice::TakeFrame(Time now)
{
    return m_isVanished ? std::nullopt : m_model.TakeFrame(now);
}

} // namespace simulator
