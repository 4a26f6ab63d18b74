#pragma once

#include "VxBase/VxClock.h"

#include "VxCamera/wire/gvcp/ForceIp.h"

#include "VxSimulator/VxSimulatorOptions.h"
#include "VxSimulator/device/DeviceMemory.h"
#include "VxSimulator/device/FeatureLimits.h"
#include "VxSimulator/device/FramePacer.h"
#include "VxSimulator/device/InitialMemory.h"
#include "VxSimulator/stream/FrameOrder.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>

namespace simulator {

/// The camera behind the control protocol: its registers, what they do, and when frames are taken.
///
/// Owner:  SimulatedDevice, by value.
/// Thread: one at a time; time is an argument.
class CameraModel {
public:
    using Time = IVxClock::Time;

    CameraModel(const VxSimulatorOptions& options, const NetworkFacts& network, Time now);

    // Registers, as an application sees them. Who may do so has been asked before.

    [[nodiscard]] gvcp::Status Read(std::uint32_t address, std::span<std::byte> out, Time now);
    [[nodiscard]] gvcp::Status Write(std::uint32_t address, std::span<const std::byte> bytes, Time now);

    /// The registers that tell who controls the camera are kept by the control server.
    void ShowPrivilege(std::uint32_t value, std::uint32_t address, std::uint16_t port);

    /// The camera has another address from now on.
    void ShowAddress(const gvcp::ForceIpCommand& address, std::uint16_t streamSourcePort);

    /// Nobody controls the camera any more: acquisition ends, unless it is to go on unconditionally.
    void ControlLost();

    void CountRefusal() { ++m_refusals; }

    [[nodiscard]] std::chrono::milliseconds HeartbeatTimeout() const;
    [[nodiscard]] bool IsHeartbeatDisabled() const;

    // Frames.

    /// @return  where a test packet of this size is to be sent, if one was asked for; asks once
    struct TestPacket {
        transport::Ipv4Endpoint destination;
        std::size_t packetSizeBytes = 0;
    };
    [[nodiscard]] std::optional<TestPacket> TakeTestPacket();

    [[nodiscard]] bool IsAcquiring() const { return m_pacer.IsActive(); }

    /// @return  when TakeFrame will next have a frame; none: not before a register changes
    [[nodiscard]] std::optional<Time> NextFrameDue() const;

    /// @return  what to send now, or none
    [[nodiscard]] std::optional<FrameOrder> TakeFrame(Time now);

    /// Where frames go; port 0: nowhere.
    [[nodiscard]] transport::Ipv4Endpoint StreamDestination() const;

private:
    [[nodiscard]] AcquisitionState State() const;
    [[nodiscard]] std::uint64_t Ticks(Time now) const;
    [[nodiscard]] std::chrono::nanoseconds FramePeriod() const;
    [[nodiscard]] bool IsBeyondLimit() const;
    [[nodiscard]] FrameOrder MakeOrder(Time now) const;
    [[nodiscard]] ChunkOrder Chunks() const;
    void AfterWrite(std::uint32_t address, Time now);
    void AfterFeatureWrite(std::uint32_t address, Time now);
    void StartAcquisition(Time now);
    void WriteTimestampControl(Time now);
    void KeepBits(std::uint32_t address, std::uint32_t mask);
    void KeepPacketSize();
    void KeepPayloadSize();
    void RefreshVolatile(Time now);

    VxSimulatorOptions m_options;
    std::uint16_t m_streamSourcePort;
    DeviceMemory m_memory;
    FramePacer m_pacer;
    Time m_ticksBegin;
    std::uint64_t m_frameNumber = 0;
    std::uint64_t m_blockId = 1;
    std::uint64_t m_refusals = 0;
    bool m_isTestPacketWanted = false;
};

} // namespace simulator
