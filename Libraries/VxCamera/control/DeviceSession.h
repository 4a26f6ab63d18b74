#pragma once

#include "VxBase/VxClock.h"
#include "VxBase/VxExpected.h"
#include "VxBase/VxMutex.h"
#include "VxCamera/control/CommandClient.h"
#include "VxCamera/control/ControlPrivilege.h"
#include "VxCamera/control/HeartbeatMonitor.h"
#include "VxCamera/genapi/IRegisterPort.h"
#include "VxCamera/transport/ISocketFactory.h"
#include "VxCamera/transport/NetworkInterface.h"

#include <atomic>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <utility>

namespace control {

/// What a camera can do, from its bootstrap registers; read once, after control was taken.
struct DeviceFacts {
    std::uint32_t capability = 0;              ///< bits of the GVCP capability register
    std::uint32_t streamChannelCapability = 0; ///< bits of the register of that name
    std::uint32_t streamChannelCount = 0;
    std::uint64_t tickFrequencyHz = 0; ///< 0: the camera has no clock
};

/// Control over one camera: registers and memory, the privilege, and the heartbeat's decisions.
///
/// Owner:  the device; its heartbeat thread borrows it. Borrows the clock and the sockets.
/// Thread: any, except that Beat belongs to the heartbeat thread.
class DeviceSession final : public genapi::IRegisterPort {
public:
    struct Network {
        transport::ISocketFactory& sockets;
        const IVxClock& clock;
    };

    /// Takes control of a camera.
    /// @param via  the interface through which the camera is reached, which all that is sent goes through
    /// @return  ACCESS_DENIED, TIMEOUT, NETWORK_ERROR, ...
    [[nodiscard]] static VxExpected<std::unique_ptr<DeviceSession>>
    Connect(const Network& network, const transport::Ipv4Endpoint& device,
            const transport::NetworkInterface& via);

    DeviceSession(const Network& network, std::unique_ptr<transport::IUdpSocket> socket,
                  const transport::Ipv4Endpoint& device);
    ~DeviceSession() override;

    /// False once control is lost or given back: like IsAlive, for the features.
    [[nodiscard]] bool IsOpen() const override { return IsAlive(); }
    [[nodiscard]] VxResult CloseReason() const override { return m_client.EndReason(); }

    /// Reads and writes anywhere; registers of 4 bytes by register access, anything else by memory access.
    [[nodiscard]] VxResult Read(std::uint64_t address, std::span<std::byte> bytes) override;
    [[nodiscard]] VxResult Write(std::uint64_t address, std::span<const std::byte> bytes) override;

    /// Sends a heartbeat if one is due; it is also due when the camera has refused to be written to, which
    /// happens when somebody else has taken control.
    ///
    /// @return  when to call again; none when control is lost or given back: every operation then fails at
    /// once
    [[nodiscard]] std::optional<IVxClock::Time> Beat();

    /// Whether we control the camera as far as is known.
    [[nodiscard]] bool IsAlive() const { return !m_client.IsEnded(); }

    /// Fails every command that takes longer than this from now on, also the one under way, with
    /// NOT_CONNECTED: for whoever disconnects and must not wait for a camera that asks for patience.
    void EndWithin(std::chrono::milliseconds limit);

    /// Gives control back; from then on every operation fails with NOT_CONNECTED.
    VxResult Release();

    /// When all that belongs to connecting must be done.
    [[nodiscard]] IVxClock::Time ConnectEnd() const { return m_connectEnd; }

    [[nodiscard]] CommandClient& Client() { return m_client; }
    [[nodiscard]] const DeviceFacts& Facts() const { return m_facts; }
    [[nodiscard]] std::chrono::milliseconds HeartbeatTimeout() const { return m_heartbeatTimeout.load(); }

    /// @param isOn  false: no heartbeats; the camera may then take control away
    void SetHeartbeat(bool isOn);

    /// @param interval  between heartbeats; 0 = a third of the camera's time-out, which is the usual. At most
    ///                  half of the time-out is used.
    void SetHeartbeatInterval(std::chrono::milliseconds interval);
    [[nodiscard]] std::chrono::milliseconds HeartbeatInterval() const;

    /// @param onTimingChanged  called, from any thread, when Beat must be called earlier than it said. Set
    ///                         before others use the session.
    void SetTimingListener(std::function<void()> onTimingChanged)
    {
        m_onTimingChanged = std::move(onTimingChanged);
    }
    [[nodiscard]] bool IsHeartbeatOn() const { return m_isHeartbeatOn; }

private:
    VxResult TakeControl();
    VxResult ReadFacts();
    VxResult ReadHeartbeatTimeout();
    VxResult ReadOr(std::uint32_t fallback, std::uint32_t address, std::uint32_t& value);
    void JudgeBeat(const VxResult& beat);
    [[nodiscard]] VxResult SendBeat();
    [[nodiscard]] HeartbeatMonitor::Timing Timing() const;

    const Network m_network;
    CommandClient m_client;
    DeviceFacts m_facts;                       // set by Connect, constant afterwards
    IVxClock::Time m_connectEnd;               // set by Connect, constant afterwards
    std::optional<ControlOwner> m_ownIdentity; // how the camera sees us; set by Connect
    std::atomic<std::chrono::milliseconds> m_heartbeatTimeout{};
    std::atomic<std::chrono::milliseconds> m_wantedInterval{}; // 0: the usual
    std::atomic<bool> m_isHeartbeatOn = true;
    std::atomic<bool> m_isCheckDue = false;    // a write was refused: do we still have control?
    std::function<void()> m_onTimingChanged;   // may be empty
    std::optional<HeartbeatMonitor> m_monitor; // heartbeat thread only
};

} // namespace control
