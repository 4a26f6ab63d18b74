#pragma once

#include "VxBase/VxExpected.h"
#include "VxBase/VxResult.h"
#include "VxCamera/control/CommandClient.h"
#include "VxCamera/transport/ISocketFactory.h"

#include <chrono>
#include <cstdint>
#include <optional>

namespace control {

/// Which application controls a camera, as the camera tells it.
struct ControlOwner {
    transport::Ipv4Endpoint application;

    friend bool operator==(const ControlOwner&, const ControlOwner&) = default;
};

/// Takes and gives back the right to write to a camera.
///
/// Owner:  DeviceSession, for a call. Borrows client, sockets and clock.
/// Thread: one.
class ControlPrivilege {
public:
    ControlPrivilege(CommandClient& client, transport::ISocketFactory& sockets, const IVxClock& clock)
        : m_client(client), m_sockets(sockets), m_clock(clock)
    {
    }

    /// Takes control.
    ///
    /// A camera that is still held by a program that ran on this machine and has ended (its port is free)
    /// lets go after its heartbeat time-out; that is waited for.
    ///
    /// @return  ACCESS_DENIED with the owner's address where the camera tells it
    VxResult Take();

    /// Gives control back. A failure leaves the camera to its heartbeat time-out.
    VxResult Release();

    /// @return  none when the camera does not tell, or nobody controls it
    [[nodiscard]] std::optional<ControlOwner> Owner();

private:
    [[nodiscard]] VxResult TryTake();
    [[nodiscard]] bool IsOwnPredecessor(const ControlOwner& owner);
    VxResult RetryUntilHeartbeatEnds(VxResult refusal);
    VxResult Refused(const VxResult& refusal, const std::optional<ControlOwner>& owner) const;

    CommandClient& m_client; // all three borrowed: outlive this
    transport::ISocketFactory& m_sockets;
    const IVxClock& m_clock;
};

} // namespace control
