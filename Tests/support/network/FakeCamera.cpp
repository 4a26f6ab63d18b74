#include "support/network/FakeCamera.h"

#include "VxCamera/wire/gvcp/AckHeader.h"
#include "VxCamera/wire/gvcp/ForceIp.h"
#include "VxCamera/wire/gvcp/PendingAck.h"
#include "VxCamera/wire/gvcp/ReadMem.h"
#include "VxCamera/wire/gvcp/ReadReg.h"
#include "VxCamera/wire/gvcp/WriteMem.h"
#include "VxCamera/wire/gvcp/WriteReg.h"
#include "VxCamera/wire/registers/BootstrapBits.h"
#include "VxCamera/wire/registers/BootstrapRegisters.h"

#include <algorithm>

namespace {

constexpr std::size_t kMemoryBytes = 256 * 1024; // chosen: registers and a small description
constexpr std::uint32_t kHeartbeatMs = 3000;

} // namespace

FakeCamera::FakeCamera(FakeClock& clock) : memory(kMemoryBytes), m_clock(clock)
{
    identity.mac = {0x02, 0x00, 0x00, 0x00, 0x00, 0x01};
    identity.ipAddress = endpoint.address.Value();
    identity.modelName = "Fake";
    identity.serialNumber = "SN-1";
    identity.userDefinedName = "left";
    SetRegister(bootstrap::kHeartbeatTimeout, kHeartbeatMs);
    SetRegister(bootstrap::kGvcpCapability,
                bootstrap::kCapabilityWriteMem | bootstrap::kCapabilityPrimaryApplication);
    SetRegister(bootstrap::kStreamChannelCount, 1);
}

void FakeCamera::SetRegister(std::uint32_t address, std::uint32_t value)
{
    VxStoreBe<std::uint32_t>(std::span(memory).subspan(address).first<4>(), value);
}

std::uint32_t FakeCamera::Register(std::uint32_t address) const
{
    return VxLoadBe<std::uint32_t>(std::span(memory).subspan(address).first<4>());
}

void FakeCamera::SetMemory(std::uint32_t address, std::string_view text)
{
    std::ranges::copy(std::as_bytes(std::span(text.data(), text.size())), memory.begin() + address);
}

std::size_t FakeCamera::Count(gvcp::Command command) const
{
    return static_cast<std::size_t>(std::ranges::count(seen, command, &Seen::command)); // never negative
}

void FakeCamera::OnDatagram(FakeUdpSocket& socket, std::span<const std::byte> bytes,
                            const transport::Ipv4Endpoint& destination)
{
    const bool isBroadcast = (destination.address.Value() & 0xFF) == 0xFF; // all test subnets end there
    if (isGone || destination.port != endpoint.port || (destination != endpoint && !isBroadcast))
        return;
    const auto packet = gvcp::ParseCommand(bytes);
    if (!packet || dropCommands-- > 0)
        return;
    dropCommands = std::max(dropCommands, 0);
    Answer(socket, *packet);
}

void FakeCamera::Answer(FakeUdpSocket& socket, const gvcp::CommandPacket& packet)
{
    LetHeartbeatExpire();
    const std::uint16_t id = packet.header.requestId;
    if (busy > 0 && packet.header.command != gvcp::Command::Discovery) {
        --busy;
        socket.Arrive(endpoint,
                      gvcp::MakeEmptyAck(gvcp::Status::Busy, gvcp::AckOf(packet.header.command), id).Bytes(),
                      delay);
        return;
    }
    const bool isWrite = packet.header.command == gvcp::Command::WriteReg;
    if (isIgnoringWritesOfOthers && isWrite && controller && controller != socket.LocalEndpoint())
        return;
    const gvcp::Datagram answer = Execute(packet, socket.LocalEndpoint());
    if (controller == socket.LocalEndpoint())
        lastCommandOfController = m_clock.Now();
    if (isSilentAboutForceIp && packet.header.command == gvcp::Command::ForceIp)
        return;
    if (dropAnswers > 0) {
        --dropAnswers;
        return;
    }
    std::chrono::microseconds when = delay;
    for (const std::uint16_t ms : pendingMs) {
        const auto announced = std::chrono::milliseconds(ms);
        socket.Arrive(endpoint, gvcp::MakePendingAck(id, {announced}).Bytes(), when);
        when += announced;
    }
    pendingMs.clear();
    socket.Arrive(endpoint, answer.Bytes(), when);
}

gvcp::Datagram FakeCamera::Execute(const gvcp::CommandPacket& packet, const transport::Ipv4Endpoint& sender)
{
    using gvcp::Command;
    switch (packet.header.command) {
    case Command::Discovery:
        seen.push_back({Command::Discovery, packet.header.requestId, 0, 0, m_clock.Now()});
        return gvcp::MakeDiscoveryAck(packet.header.requestId, identity);
    case Command::ForceIp:
        return ForceIp(packet);
    case Command::ReadReg:
        return Read(packet, gvcp::ParseReadRegCommand(packet.payload)->addresses.front(), 4);
    case Command::ReadMem: {
        const auto command = gvcp::ParseReadMemCommand(packet.payload);
        return Read(packet, command->address, command->count);
    }
    case Command::WriteReg:
    case Command::WriteMem: // both begin with the address
        return Write(packet, VxLoadBe<std::uint32_t>(packet.payload.first<4>()), packet.payload.subspan(4),
                     sender);
    default:
        return gvcp::MakeEmptyAck(gvcp::Status::NotImplemented, gvcp::AckOf(packet.header.command),
                                  packet.header.requestId);
    }
}

gvcp::Datagram FakeCamera::ForceIp(const gvcp::CommandPacket& packet)
{
    const auto command = gvcp::ParseForceIpCommand(packet.payload);
    seen.push_back({gvcp::Command::ForceIp, packet.header.requestId, 0, 0, m_clock.Now()});
    if (forceIpStatus == gvcp::Status::Success) {
        endpoint.address = transport::Ipv4Address(command->ipAddress);
        identity.ipAddress = command->ipAddress;
        identity.subnetMask = command->subnetMask;
        identity.defaultGateway = command->defaultGateway;
    }
    return gvcp::MakeEmptyAck(forceIpStatus, gvcp::Ack::ForceIp, packet.header.requestId);
}

gvcp::Datagram FakeCamera::Read(const gvcp::CommandPacket& packet, std::uint32_t address, std::size_t bytes)
{
    const std::uint16_t id = packet.header.requestId;
    const gvcp::Ack ack = gvcp::AckOf(packet.header.command);
    seen.push_back({packet.header.command, id, address, bytes, m_clock.Now()});
    if (address % 4 != 0 || bytes % 4 != 0)
        return gvcp::MakeEmptyAck(gvcp::Status::BadAlignment, ack, id);
    if (address + bytes > memory.size())
        return gvcp::MakeEmptyAck(gvcp::Status::InvalidAddress, ack, id);
    if (const auto refusal = refused.find(address); refusal != refused.end())
        return gvcp::MakeEmptyAck(refusal->second, ack, id);
    const std::span<const std::byte> data = std::span(memory).subspan(address, bytes);
    if (packet.header.command == gvcp::Command::ReadMem)
        return *gvcp::MakeReadMemAck(id, {address, data});
    const std::uint32_t value = Register(address);
    return *gvcp::MakeReadRegAck(id, std::span(&value, 1));
}

gvcp::Datagram FakeCamera::Write(const gvcp::CommandPacket& packet, std::uint32_t address,
                                 std::span<const std::byte> bytes, const transport::Ipv4Endpoint& sender)
{
    const std::uint16_t id = packet.header.requestId;
    const gvcp::Ack ack = gvcp::AckOf(packet.header.command);
    seen.push_back({packet.header.command, id, address, bytes.size(), m_clock.Now()});
    gvcp::Status status = gvcp::Status::Success;
    if (address % 4 != 0 || bytes.size() % 4 != 0)
        status = gvcp::Status::BadAlignment;
    else if (address + bytes.size() > memory.size())
        status = gvcp::Status::InvalidAddress;
    else if (const auto refusal = refused.find(address); refusal != refused.end())
        status = refusal->second;
    else if (address == bootstrap::kControlChannelPrivilege)
        status = WritePrivilege(VxLoadBe<std::uint32_t>(bytes.first<4>()), sender);
    else if (controller != sender)
        status = gvcp::Status::AccessDenied;
    else
        std::ranges::copy(bytes, memory.begin() + address);
    if (status == gvcp::Status::Success && ack == gvcp::Ack::WriteMem) {
        const auto all = static_cast<std::uint16_t>(bytes.size()); // a command has at most 536 bytes
        return gvcp::MakeWriteMemAck(status, id, {writtenBytes.value_or(all)});
    }
    return gvcp::MakeEmptyAck(status, ack, id);
}

gvcp::Status FakeCamera::WritePrivilege(std::uint32_t value, const transport::Ipv4Endpoint& sender)
{
    if (controller && controller != sender)
        return gvcp::Status::AccessDenied;
    controller = value != 0 ? std::optional(sender) : std::nullopt;
    lastCommandOfController = m_clock.Now();
    SetRegister(bootstrap::kControlChannelPrivilege, value);
    SetRegister(bootstrap::kPrimaryApplicationIp, controller ? sender.address.Value() : 0);
    SetRegister(bootstrap::kPrimaryApplicationPort, controller ? sender.port : 0);
    return gvcp::Status::Success;
}

void FakeCamera::LetHeartbeatExpire()
{
    const std::chrono::milliseconds timeout(Register(bootstrap::kHeartbeatTimeout));
    if (!controller || m_clock.Now() - lastCommandOfController < timeout)
        return;
    controller.reset();
    SetRegister(bootstrap::kControlChannelPrivilege, 0);
    SetRegister(bootstrap::kPrimaryApplicationIp, 0);
    SetRegister(bootstrap::kPrimaryApplicationPort, 0);
}
