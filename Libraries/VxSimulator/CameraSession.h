#pragma once

#include "VxBase/VxClock.h"
#include "VxBase/VxExpected.h"
#include "VxBase/VxMutex.h"

#include "VxCamera/transport/ISocketFactory.h"

#include "VxSimulator/MovableSocket.h"
#include "VxSimulator/VxSimulatorOptions.h"
#include "VxSimulator/device/SimulatedDevice.h"
#include "VxSimulator/stream/StreamSender.h"

#include <atomic>
#include <condition_variable>
#include <cstdint>
#include <deque>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <thread>
#include <vector>

namespace simulator {

/// Sockets of a camera at one address, and what it knows of its network there.
struct CameraSockets {
    std::unique_ptr<transport::IUdpSocket> control;
    std::unique_ptr<transport::IUdpSocket> stream;
    std::vector<std::unique_ptr<transport::IUdpSocket>>
        broadcast; ///< for discovery: of everybody, of the subnet; empty where one cannot be had
    NetworkFacts network;
};

/// A camera that is switched on: the device with its sockets and threads.
///
/// Owner:  VxSimulatedCamera.
/// Thread: any. Its own threads: one per control and broadcast socket, ended by waking the socket; one for
///         the stream, ended through its condition variable, or after the packet that it is sending.
class CameraSession {
public:
    using EventSink = std::function<void(const std::string&)>;

    /// Opens sockets at another address, when the camera is given one.
    using SocketOpener = std::function<VxExpected<CameraSockets>(transport::Ipv4Address)>;

    /// What a session asks of those around it; called from its threads with no lock held.
    struct Callbacks {
        EventSink eventSink; ///< may be empty
        SocketOpener openSockets;
    };

    /// @param clock      borrowed: outlives this
    CameraSession(CameraSockets sockets, const VxSimulatorOptions& options, const IVxClock& clock,
                  Callbacks callbacks);

    /// Switches the camera off; nobody is told.
    ~CameraSession();
    CameraSession(const CameraSession&) = delete;
    CameraSession& operator=(const CameraSession&) = delete;

    [[nodiscard]] transport::Ipv4Endpoint ControlEndpoint() const { return m_control.LocalEndpoint(); }
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
    void SendLate(const Reaction& reaction, const transport::Ipv4Endpoint& sender);
    void SendWhatIsDue();
    [[nodiscard]] VxResult MoveTo(const gvcp::ForceIpCommand& address);
    void Reboot();
    void Advance();
    void Stream();
    void TellChange(const State& before, const State& after) const;
    [[nodiscard]] State CurrentState() const VX_REQUIRES(m_mutex);
    [[nodiscard]] std::chrono::microseconds TimeToAdvance() const;
    void FrameSent();

    struct LateAnswer {
        IVxClock::Time due;
        gvcp::Datagram answer;
        transport::Ipv4Endpoint destination;
    };

    MovableSocket m_control;
    MovableSocket m_stream;
    std::vector<std::unique_ptr<MovableSocket>> m_broadcast; // as CameraSockets::broadcast
    const VxSimulatorOptions m_options;
    const IVxClock& m_clock; // borrowed, see the constructor
    const Callbacks m_callbacks;
    StreamSender m_sender;

    mutable VxMutex m_mutex;
    std::condition_variable_any m_changed; // the device's state, or m_isStopping
    SimulatedDevice m_device VX_GUARDED_BY(m_mutex);
    transport::Ipv4Address m_subnetMask VX_GUARDED_BY(m_mutex);
    std::deque<LateAnswer> m_lateAnswers VX_GUARDED_BY(m_mutex); // by time

    std::atomic<bool> m_isStopping = false;
    std::atomic<std::uint64_t> m_framesSent = 0;
    std::atomic<std::uint64_t> m_commandsReceived = 0;
    std::vector<std::thread> m_threads; // last: they use all of the above
};

} // namespace simulator
