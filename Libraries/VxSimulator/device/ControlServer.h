#pragma once

#include "VxBase/VxClock.h"

#include "VxCamera/transport/Ipv4Endpoint.h"
#include "VxCamera/wire/gvcp/AckHeader.h"
#include "VxCamera/wire/gvcp/CommandHeader.h"
#include "VxCamera/wire/gvcp/Datagram.h"

#include "VxSimulator/device/AnswerMemory.h"
#include "VxSimulator/device/CameraModel.h"
#include "VxSimulator/device/ControlPrivilege.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>

namespace simulator {

/// Answers control commands: who may do what, and the protocol's rules for registers and memory.
///
/// Owner:  SimulatedDevice, by value.
/// Thread: one at a time; time is an argument.
class ControlServer {
public:
    using Time = IVxClock::Time;
    using Application = transport::Ipv4Endpoint;

    /// @param model  borrowed: outlives this
    explicit ControlServer(CameraModel& model) : m_model(model) {}

    /// @param datagram  as received; what is no command gets no answer
    /// @return  the answer, if there is one
    [[nodiscard]] std::optional<gvcp::Datagram> Answer(std::span<const std::byte> datagram,
                                                       const Application& application, Time now);

    /// Another command than those answered here: it keeps up the heartbeat, too.
    void Touch(const Application& application, Time now) { m_privilege.Touch(application, now); }

    /// Takes control away from an application that has been silent for too long.
    void CheckHeartbeat(Time now);

    /// @return  when that will be; none while nobody has control or the heartbeat is switched off
    [[nodiscard]] std::optional<Time> HeartbeatDeadline() const;

    [[nodiscard]] const std::optional<Application>& Owner() const { return m_privilege.Owner(); }

private:
    struct Request {
        gvcp::CommandPacket packet;
        Application application;
        Time now;
        [[nodiscard]] std::uint16_t Id() const { return packet.header.requestId; }
    };

    [[nodiscard]] gvcp::Datagram Execute(const Request& request);
    [[nodiscard]] gvcp::Datagram Refuse(const Request& request, gvcp::Status status);
    [[nodiscard]] gvcp::Datagram Discover(const Request& request);
    [[nodiscard]] gvcp::Datagram ReadReg(const Request& request);
    [[nodiscard]] gvcp::Datagram WriteReg(const Request& request);
    [[nodiscard]] gvcp::Datagram ReadMem(const Request& request);
    [[nodiscard]] gvcp::Datagram WriteMem(const Request& request);
    [[nodiscard]] gvcp::Status WriteRegister(const Request& request, std::uint32_t address,
                                             std::uint32_t value);
    [[nodiscard]] gvcp::Status WritePrivilege(const Request& request, std::uint32_t value);
    void ShowPrivilege();

    CameraModel& m_model; // borrowed, see the constructor
    ControlPrivilege m_privilege;
    AnswerMemory m_answers;
};

} // namespace simulator
