#include "VxSimulator/device/ControlServer.h"

#include "VxBase/VxByteOrder.h"

#include "VxCamera/wire/gvcp/Discovery.h"
#include "VxCamera/wire/gvcp/ReadMem.h"
#include "VxCamera/wire/gvcp/ReadReg.h"
#include "VxCamera/wire/gvcp/WriteMem.h"
#include "VxCamera/wire/gvcp/WriteReg.h"
#include "VxCamera/wire/registers/BootstrapRegisters.h"

#include <array>
#include <cassert>
#include <vector>

namespace simulator {

using gvcp::AckOf;
using gvcp::Command;
using gvcp::Datagram;
using gvcp::Status;

namespace {

bool ChangesSomething(Command command)
{
    return command == Command::WriteReg || command == Command::WriteMem;
}

} // namespace

std::optional<Datagram> ControlServer::Answer(std::span<const std::byte> datagram,
                                              const Application& application, Time now)
{
    CheckHeartbeat(now);
    const auto packet = gvcp::ParseCommand(datagram);
    if (!packet)
        return std::nullopt;
    const Command command = packet->header.command;
    if (command != Command::Discovery)
        m_privilege.Touch(application, now);

    const auto commandBytes = datagram.first(gvcp::kHeaderBytes + packet->payload.size());
    if (ChangesSomething(command)) {
        if (auto answer = m_answers.AnswerFor(application, commandBytes))
            return answer;
    }
    const Datagram answer = Execute({*packet, application, now});
    if (ChangesSomething(command))
        m_answers.Remember(application, commandBytes, answer);
    if ((packet->header.flags & gvcp::kAckRequired) == 0)
        return std::nullopt;
    return answer;
}

Datagram ControlServer::Execute(const Request& request)
{
    switch (request.packet.header.command) {
    case Command::Discovery:
        return Discover(request);
    case Command::ReadReg:
        return ReadReg(request);
    case Command::WriteReg:
        return WriteReg(request);
    case Command::ReadMem:
        return ReadMem(request);
    case Command::WriteMem:
        return WriteMem(request);
    default:
        return Refuse(request, Status::NotImplemented);
    }
}

Datagram ControlServer::Refuse(const Request& request, Status status)
{
    m_model.CountRefusal();
    return gvcp::MakeEmptyAck(status, AckOf(request.packet.header.command), request.Id());
}

Datagram ControlServer::Discover(const Request& request)
{
    // The acknowledge is a copy of the first registers.
    std::array<std::byte, gvcp::kDiscoveryAckBytes> identity{};
    const Status status = m_model.Read(bootstrap::kVersion, identity, request.now);
    assert(status == Status::Success);
    Datagram answer;
    auto out = answer.Open();
    gvcp::WriteAckHeader(out, {.status = status,
                               .ack = gvcp::Ack::Discovery,
                               .payloadBytes = gvcp::kDiscoveryAckBytes,
                               .ackId = request.Id()});
    out.Bytes(identity);
    answer.Close(out);
    return answer;
}

Datagram ControlServer::ReadReg(const Request& request)
{
    const auto command = gvcp::ParseReadRegCommand(request.packet.payload);
    if (!command)
        return Refuse(request, Status::InvalidHeader);
    if (!m_privilege.MayRead(request.application))
        return Refuse(request, Status::AccessDenied);
    std::vector<std::uint32_t> values;
    for (const std::uint32_t address : command->addresses) {
        std::array<std::byte, sizeof(std::uint32_t)> bytes{};
        const Status status = m_model.Read(address, bytes, request.now);
        if (status != Status::Success)
            return Refuse(request, status);
        values.push_back(VxLoadBe<std::uint32_t>(bytes));
    }
    return *gvcp::MakeReadRegAck(request.Id(), values); // as many as there were addresses: they fit
}

Datagram ControlServer::ReadMem(const Request& request)
{
    const auto command = gvcp::ParseReadMemCommand(request.packet.payload);
    if (!command)
        return Refuse(request, Status::InvalidHeader);
    if (!m_privilege.MayRead(request.application))
        return Refuse(request, Status::AccessDenied);
    if (command->count == 0 || command->count > gvcp::kMaxMemoryBytes)
        return Refuse(request, Status::InvalidParameter);
    std::vector<std::byte> data(command->count);
    const Status status = m_model.Read(command->address, data, request.now);
    if (status != Status::Success)
        return Refuse(request, status);
    return *gvcp::MakeReadMemAck(request.Id(),
                                 {.address = command->address, .data = data}); // the size was tested
}

Status ControlServer::WritePrivilege(const Request& request, std::uint32_t value)
{
    const bool wasControlled = m_privilege.Owner().has_value();
    const Status status = m_privilege.Write(request.application, value, request.now);
    if (wasControlled && !m_privilege.Owner())
        m_model.ControlLost();
    ShowPrivilege();
    return status;
}

Status ControlServer::WriteRegister(const Request& request, std::uint32_t address, std::uint32_t value)
{
    if (address == bootstrap::kControlChannelPrivilege)
        return WritePrivilege(request, value);
    if (!m_privilege.MayWrite(request.application))
        return Status::AccessDenied;
    std::array<std::byte, sizeof value> bytes{};
    VxStoreBe<std::uint32_t>(bytes, value);
    return m_model.Write(address, bytes, request.now);
}

Datagram ControlServer::WriteReg(const Request& request)
{
    const auto command = gvcp::ParseWriteRegCommand(request.packet.payload);
    if (!command)
        return Refuse(request, Status::InvalidHeader);
    Status status = Status::Success;
    std::uint16_t written = 0;
    for (const gvcp::RegisterValue& write : command->writes) {
        status = WriteRegister(request, write.address, write.value);
        if (status != Status::Success)
            break;
        ++written;
    }
    if (status != Status::Success)
        m_model.CountRefusal();
    return gvcp::MakeWriteRegAck(status, request.Id(), {.index = written});
}

Datagram ControlServer::WriteMem(const Request& request)
{
    const auto command = gvcp::ParseWriteMemCommand(request.packet.payload);
    if (!command)
        return Refuse(request, Status::InvalidHeader);
    Status status = Status::AccessDenied;
    if (command->address == bootstrap::kControlChannelPrivilege &&
        command->data.size() == sizeof(std::uint32_t))
        status =
            WritePrivilege(request, VxLoadBe<std::uint32_t>(command->data.first<sizeof(std::uint32_t)>()));
    else if (m_privilege.MayWrite(request.application))
        status = m_model.Write(command->address, command->data, request.now);
    if (status != Status::Success)
        m_model.CountRefusal();
    const std::size_t written = status == Status::Success ? command->data.size() : 0;
    return gvcp::MakeWriteMemAck(status, request.Id(),
                                 {.index = static_cast<std::uint16_t>(written)}); // one datagram
}

void ControlServer::ShowPrivilege()
{
    const Application owner = m_privilege.Owner().value_or(Application{});
    m_model.ShowPrivilege(m_privilege.Value(), owner.address.Value(), owner.port);
}

void ControlServer::CheckHeartbeat(Time now)
{
    if (m_model.IsHeartbeatDisabled() || !m_privilege.Expire(now, m_model.HeartbeatTimeout()))
        return;
    m_model.ControlLost();
    ShowPrivilege();
}

std::optional<ControlServer::Time> ControlServer::HeartbeatDeadline() const
{
    if (m_model.IsHeartbeatDisabled())
        return std::nullopt;
    return m_privilege.ExpiryTime(m_model.HeartbeatTimeout());
}

} // namespace simulator
