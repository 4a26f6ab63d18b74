#pragma once

#include "VxBase/VxClock.h"
#include "VxBase/VxExpected.h"
#include "VxBase/VxResult.h"

#include "VxCamera/transport/IInterfaceList.h"
#include "VxCamera/transport/ISocketFactory.h"

#include "VxSimulator/VxSimulatorOptions.h"

#include <array>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>

namespace simulator {
class CameraSession;
struct CameraSockets;
} // namespace simulator

/// What a simulated camera has done since it was started.
struct VxSimulatorCounters {
    std::uint64_t framesSent = 0;       ///< all packets of the frame, except those that a fault took
    std::uint64_t packetsSent = 0;      ///< of the stream, those sent again included
    std::uint64_t packetsResent = 0;    ///< sent again because somebody asked
    std::uint64_t packetsDropped = 0;   ///< by a fault
    std::uint64_t sendFailures = 0;     ///< stream packets that the system refused to send
    std::uint64_t commandsReceived = 0; ///< control datagrams of any kind
};

/// A GigE Vision camera in this process: whoever asks at its address finds, controls and receives it like a
/// real one.
///
/// Owner:  a test or a program. Several may run at once, at different addresses or ports.
/// Thread: Start, Stop and SetEventSink from one thread at a time; the rest from any, while no Start or Stop
/// runs.
class VxSimulatedCamera {
public:
    using EventSink = std::function<void(const std::string&)>;

    /// With the system's network and clock.
    VxSimulatedCamera();

    /// @param sockets, interfaces, clock  borrowed: outlive this
    VxSimulatedCamera(transport::ISocketFactory& sockets, transport::IInterfaceList& interfaces,
                      const IVxClock& clock);

    /// Stops.
    ~VxSimulatedCamera();
    VxSimulatedCamera(const VxSimulatedCamera&) = delete;
    VxSimulatedCamera& operator=(const VxSimulatedCamera&) = delete;

    /// @param sink  is told in words, from the camera's threads, who takes and loses control and when
    ///              acquisition starts and stops; counts from the next Start on
    void SetEventSink(EventSink sink) { m_eventSink = std::move(sink); }

    /// Switches the camera on; when this returns it answers.
    /// @return  ALREADY_OPEN; INVALID_PARAMETER for options that cannot be; PORT_IN_USE; NETWORK_ERROR for
    ///          instance when the address is none of this machine's
    VxResult Start(const VxSimulatorOptions& options);

    /// Switches the camera off, without a word to anybody. Harmless when it is off.
    void Stop();

    /// From now on no answer and no packet, but sockets and threads stay: as if its cable had been pulled.
    void Vanish();

    [[nodiscard]] bool IsRunning() const { return m_session != nullptr; }

    // All below: nothing, or zero, while the camera is off.

    /// Where it takes commands.
    [[nodiscard]] transport::Ipv4Endpoint ControlEndpoint() const;
    [[nodiscard]] std::array<std::uint8_t, 6> Mac() const;
    /// @return  "00:11:22:33:44:55"
    [[nodiscard]] std::string MacText() const;
    /// The application in control.
    [[nodiscard]] std::optional<transport::Ipv4Endpoint> ControlOwner() const;
    [[nodiscard]] bool IsAcquiring() const;
    [[nodiscard]] std::uint64_t FramesSent() const { return Counters().framesSent; }
    [[nodiscard]] VxSimulatorCounters Counters() const;

private:
    struct OwnNetwork;
    [[nodiscard]] VxExpected<simulator::CameraSockets> OpenSockets(const transport::Ipv4Endpoint& at) const;

    std::unique_ptr<OwnNetwork> m_ownNetwork; // empty when everything is borrowed
    transport::ISocketFactory& m_sockets;     // ours or borrowed, see the constructors
    transport::IInterfaceList& m_interfaces;
    const IVxClock& m_clock;
    EventSink m_eventSink;
    std::array<std::uint8_t, 6> m_mac{};
    std::unique_ptr<simulator::CameraSession> m_session;
};
