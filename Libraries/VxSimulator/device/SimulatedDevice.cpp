#include "VxSimulator/device/SimulatedDevice.h"

#include "VxCamera/wire/gvcp/AckHeader.h"

#include <algorithm>

namespace simulator {

SimulatedDevice::SimulatedDevice(const VxSimulatorOptions& options, const NetworkFacts& network, Time now)
    : m_options(options),
      m_network(network),
      m_model(options, network, now),
      m_server(m_model),
      m_faults(options.faults)
{
}

void SimulatedDevice::Reboot(Time now, Time silentUntil)
{
    m_model = CameraModel(m_options, m_network, now);
    m_server.emplace(m_model);
    m_silentUntil = silentUntil;
}

Reaction SimulatedDevice::Handle(std::span<const std::byte> datagram, const transport::Ipv4Endpoint& sender,
                                 Time now)
{
    if (IsSilent(now))
        return {};
    const auto packet = gvcp::ParseCommand(datagram);
    if (!packet || m_faults.LosesCommand(*packet))
        return {};
    if (packet->header.command == gvcp::Command::ForceIp)
        return ForceIp(*packet);
    Reaction reaction;
    const bool isDiscovery = packet->header.command == gvcp::Command::Discovery;
    reaction.isBroadcastAllowed = isDiscovery && (packet->header.flags & gvcp::kBroadcastAckAllowed) != 0;
    if (packet->header.command == gvcp::Command::PacketResend) {
        Advance(now);
        m_server->Touch(sender, now);
        reaction.resend = ResendOf(*packet, sender);
        return reaction;
    }
    reaction.answer = m_faults.Refusal(*packet);
    if (!reaction.answer)
        reaction.answer = m_server->Answer(datagram, sender, now);
    reaction.testPacket = m_model.TakeTestPacket();
    AnswerWithFaults(reaction, *packet, now);
    return reaction;
}

void SimulatedDevice::AnswerWithFaults(Reaction& reaction, const gvcp::CommandPacket& packet, Time now)
{
    if (!reaction.answer)
        return;
    reaction.later = m_faults.Pass(packet, *reaction.answer, now);
    reaction.answer.reset();
    if (!reaction.later.empty() && reaction.later.front().due <= now) {
        reaction.answer = reaction.later.front().answer;
        reaction.later.erase(reaction.later.begin());
    }
}

Reaction SimulatedDevice::ForceIp(const gvcp::CommandPacket& packet)
{
    Reaction reaction;
    const auto command = gvcp::ParseForceIpCommand(packet.payload);
    if (!command || command->mac != MacOf(m_options))
        return reaction; // another camera's, and everybody hears it
    auto status = gvcp::Status::Success;
    if (ControlOwner())
        status = gvcp::Status::AccessDenied;
    else
        reaction.newAddress = *command;
    reaction.isBroadcastAllowed = (packet.header.flags & gvcp::kBroadcastAckAllowed) != 0;
    reaction.answer = gvcp::MakeEmptyAck(status, gvcp::Ack::ForceIp, packet.header.requestId);
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
    m_server->CheckHeartbeat(now);
}

std::optional<SimulatedDevice::Time> SimulatedDevice::NextAdvance() const
{
    return m_isVanished ? std::nullopt : m_server->HeartbeatDeadline();
}

std::optional<SimulatedDevice::Time> SimulatedDevice::NextFrameDue() const
{
    return m_isVanished ? std::nullopt : m_model.NextFrameDue();
}

std::optional<FrameOrder> SimulatedDevice::TakeFrame(Time now)
{
    return IsSilent(now) ? std::nullopt : m_model.TakeFrame(now);
}

} // namespace simulator
