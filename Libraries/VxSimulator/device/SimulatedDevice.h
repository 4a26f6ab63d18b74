#pragma once

#include "VxBase/VxClock.h"

#include "VxCamera/transport/Ipv4Endpoint.h"
#include "VxCamera/wire/gvcp/ForceIp.h"
#include "VxCamera/wire/gvcp/PacketResend.h"

#include "VxSimulator/VxSimulatorOptions.h"
#include "VxSimulator/device/CameraModel.h"
#include "VxSimulator/device/ControlFaults.h"
#include "VxSimulator/device/ControlServer.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <vector>

namespace simulator {

/// What the camera does after a control datagram.
struct Reaction {
    std::optional<gvcp::Datagram> answer; ///< to the sender
    std::vector<TimedAnswer> later{};     ///< more answers to the sender
    /// The address that the camera is to have before it answers; whether it has is told by SetAddress.
    std::optional<gvcp::ForceIpCommand> newAddress{};
    bool isBroadcastAllowed = false; ///< the answer may be broadcast if the sender is in another subnet
    std::optional<CameraModel::TestPacket> testPacket;
    std::optional<gvcp::PacketResendCommand> resend; ///< of packets of the stream
};

/// The whole camera without sockets and threads: bytes and time in, bytes and orders out.
///
/// Owner:  VxSimulatedCamera, by value.
/// Thread: one at a time.
class SimulatedDevice {
public:
    using Time = IVxClock::Time;

    SimulatedDevice(const VxSimulatorOptions& options, const NetworkFacts& network, Time now);

    [[nodiscard]] Reaction Handle(std::span<const std::byte> datagram, const transport::Ipv4Endpoint& sender,
                                  Time now);

    /// Does what is due by itself: the heartbeat.
    void Advance(Time now);

    /// @return  when Advance will have something to do; none: not before a datagram is handled
    [[nodiscard]] std::optional<Time> NextAdvance() const;

    /// @return  when TakeFrame will next have a frame; none: not before a datagram is handled
    [[nodiscard]] std::optional<Time> NextFrameDue() const;

    /// @return  the frame to send now, or none
    [[nodiscard]] std::optional<FrameOrder> TakeFrame(Time now);

    /// The application in control.
    [[nodiscard]] const std::optional<transport::Ipv4Endpoint>& ControlOwner() const
    {
        return m_server->Owner();
    }

    [[nodiscard]] bool IsAcquiring() const { return m_model.IsAcquiring(); }

    /// Where frames go, and packets that are sent again; port 0: nowhere.
    [[nodiscard]] transport::Ipv4Endpoint StreamDestination() const { return m_model.StreamDestination(); }

    /// The camera has the address that a reaction asked for.
    void SetAddress(const gvcp::ForceIpCommand& address, std::uint16_t streamSourcePort)
    {
        m_model.ShowAddress(address, streamSourcePort);
    }

    /// Starts anew: silent until then, and every register as at first.
    void Reboot(Time now, Time silentUntil);

    /// From now on as if switched off: no answer, no frame.
    void Vanish() { m_isVanished = true; }
    [[nodiscard]] bool IsSilent(Time now) const { return m_isVanished || now < m_silentUntil; }

    SimulatedDevice(const SimulatedDevice&) = delete;
    SimulatedDevice& operator=(const SimulatedDevice&) = delete;

private:
    [[nodiscard]] Reaction ForceIp(const gvcp::CommandPacket& packet);
    void AnswerWithFaults(Reaction& reaction, const gvcp::CommandPacket& packet, Time now);
    [[nodiscard]] std::optional<gvcp::PacketResendCommand>
    ResendOf(const gvcp::CommandPacket& packet, const transport::Ipv4Endpoint& sender) const;

    const VxSimulatorOptions m_options;
    const NetworkFacts m_network;
    CameraModel m_model;
    std::optional<ControlServer> m_server; // never empty; made anew by a reboot
    ControlFaults m_faults;
    bool m_isVanished = false;
    Time m_silentUntil{};
};

} // namespace simulator
