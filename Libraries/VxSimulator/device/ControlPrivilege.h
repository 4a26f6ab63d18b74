#pragma once

#include "VxBase/VxClock.h"

#include "VxCamera/transport/Ipv4Endpoint.h"
#include "VxCamera/wire/gvcp/Status.h"

#include <chrono>
#include <cstdint>
#include <optional>

namespace simulator {

/// Who controls the camera: at most one application, named by its address and port.
///
/// Owner:  ControlServer, by value.
/// Thread: one at a time; time is an argument.
class ControlPrivilege {
public:
    using Time = IVxClock::Time;

    /// An application writes the privilege register.
    /// @return  AccessDenied when another one has control
    [[nodiscard]] gvcp::Status Write(const transport::Ipv4Endpoint& application, std::uint32_t value,
                                     Time now);

    /// An application sent a command: when it is the one in control, the heartbeat begins anew.
    void Touch(const transport::Ipv4Endpoint& application, Time now);

    /// @return  whether control was lost just now, by silence for longer than the timeout
    [[nodiscard]] bool Expire(Time now, std::chrono::milliseconds timeout);

    /// @return  when control is lost if the application stays silent; none when nobody has control
    [[nodiscard]] std::optional<Time> ExpiryTime(std::chrono::milliseconds timeout) const;

    [[nodiscard]] bool MayRead(const transport::Ipv4Endpoint& application) const;
    [[nodiscard]] bool MayWrite(const transport::Ipv4Endpoint& application) const;

    /// Value of the privilege register.
    [[nodiscard]] std::uint32_t Value() const { return m_value; }

    /// The application in control.
    [[nodiscard]] const std::optional<transport::Ipv4Endpoint>& Owner() const { return m_owner; }

private:
    void Release();

    std::optional<transport::Ipv4Endpoint> m_owner;
    std::uint32_t m_value = 0;
    Time m_lastHeard{};
};

} // namespace simulator
