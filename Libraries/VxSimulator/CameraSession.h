#pragma once

#include "VxBase/VxClock.h"
#include "VxBase/VxExpected.h"
#include "VxBase/VxMutex.h"

#include "VxCamera/transport/ISocketFactory.h"

#include "VxSimulator/VxSimulatorOptions.h"
#include "VxSimulator/device/SimulatedDevice.h"
#include "VxSimulator/stream/StreamSender.h"

#include <atomic>
#include <condition_variable>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <thread>
#include <vector>

namespace simulator {

/// Sockets of a running camera.
struct CameraSockets {
    std::unique_ptr<transport::IUdpSocket> control;
    std::unique_ptr<transport::IUdpSocket> stream;
    std::vector<std::unique_ptr<transport::IUdpSocket>>
        broadcast; ///< for discovery; on some systems none is needed
};

/// A camera that is switched on: the device with its sockets and threads.
///
/// Owner:  VxSimulatedCamera.
/// Thread: any. Its own threads: one per control and broadcast socket, ended by waking the socket; one for
///         the stream, ended through its condition variable, or after the packet that it is sending.
class CameraSession {
public:
    using EventSink = std::function<void(const std::string&)>;

    /// @param clock      borrowed: outlives this
    /// @param eventSink  called from the session's threads with no lock held; may be empty
    CameraSession(CameraSockets sockets, const VxSimulatorOptions& options, const NetworkFacts& network,
                  const IVxClock& clock, EventSink eventSink);

    /// Switches the camera off; nobody is told.
    ~CameraSession();
    CameraSession(const CameraSession&) = delete;
    CameraSession& operator=(const CameraSession&) = delete;

    [[nodiscard]] transport::Ipv4Endpoint ControlEndpoint() const
    {
        return m_sockets.control->LocalEndpoint();
    }
    [[nodiscard]] std::optional<transport::Ipv4Endpoint> ControlOwner() const;
    [[nodiscard]] bool IsAcquiring() const;
    [[nodiscard]] std::uint64_t FramesSent() const { return m_framesSent; }
    [[nodiscard]] std::uint64_t CommandsReceived() const { return m_commandsReceived; }
    [[nodiscard]] const StreamSender& Sender() const { return m_sender; }
    void Vanish();

private:
    struct State {
        std::optional<transport::Ipv4Endpoint> owner;
        bool isAcquiring = false;
    };
    void Serve(transport::IUdpSocket& socket);
    void Handle(std::span<const std::byte> datagram, const transport::Ipv4Endpoint& sender);
    void SendAnswer(const Reaction& reaction, const transport::Ipv4Endpoint& sender);
    void Advance();
    void Stream();
    void TellChange(const State& before, const State& after) const;
    [[nodiscard]] State CurrentState() const VX_REQUIRES(m_mutex);
    [[nodiscard]] std::chrono::microseconds TimeToAdvance() const;
    void FrameSent();

    CameraSockets m_sockets;
    const VxSimulatorOptions m_options;
    const NetworkFacts m_network;
    const IVxClock& m_clock; // borrowed, see the constructor
    const EventSink m_eventSink;
    StreamSender m_sender;

    mutable VxMutex m_mutex;
    std::condition_variable_any m_changed; // the device's state, or m_isStopping
    SimulatedDevice m_device VX_GUARDED_BY(m_mutex);

    std::atomic<bool> m_isStopping = false;
    std::atomic<std::uint64_t> m_framesSent = 0;
    std::atomic<std::uint64_t> m_commandsReceived = 0;
    std::vector<std::thread> m_threads; // last: they use all of the above
};

} // namespace simulator
