#pragma once

#include "VxBase/VxMutex.h"

#include "VxCamera/transport/IUdpSocket.h"
#include "VxCamera/wire/gvcp/PacketResend.h"

#include "VxSimulator/VxSimulatorOptions.h"
#include "VxSimulator/device/CameraModel.h"
#include "VxSimulator/picture/TestPictureRenderer.h"
#include "VxSimulator/stream/Block.h"
#include "VxSimulator/stream/BlockStore.h"
#include "VxSimulator/stream/FaultyPath.h"
#include "VxSimulator/stream/PacketRun.h"
#include "VxSimulator/stream/SeededRandomSource.h"

#include <atomic>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <vector>

namespace simulator {

/// Makes frames and sends their packets.
///
/// Owner:  CameraSession, by value.
/// Thread: SendFrame from the stream thread; the rest from any thread.
class StreamSender {
public:
    /// @param socket  borrowed: outlives this
    StreamSender(transport::IUdpSocket& socket, const VxSimulatorOptions& options);

    /// Sends a whole frame, not faster than link and packet delay allow.
    /// @return  false when Cancel ended it early
    bool SendFrame(const FrameOrder& order);

    /// Sends the packets asked for once more, or tells that the block is gone.
    void Resend(const gvcp::PacketResendCommand& command, const transport::Ipv4Endpoint& destination);

    void SendTestPacket(const CameraModel::TestPacket& packet);

    /// Ends the SendFrame that is under way within one packet, and every later one.
    void Cancel() { m_isCancelled = true; }

    [[nodiscard]] std::uint64_t PacketsSent() const { return m_packetsSent; }
    [[nodiscard]] std::uint64_t PacketsResent() const { return m_packetsResent; }
    [[nodiscard]] std::uint64_t PacketsDropped() const { return m_packetsDropped; }
    [[nodiscard]] std::uint64_t SendFailures() const { return m_sendFailures; }

private:
    [[nodiscard]] std::shared_ptr<Block> MakeBlock(const FrameOrder& order);
    const TestPictureRenderer& RendererFor(const FrameOrder& order);
    void Send(std::span<const std::byte> packet, const transport::Ipv4Endpoint& destination);
    void Collect(std::span<const std::byte> packet, const transport::Ipv4Endpoint& destination);
    void SendCollected(const transport::Ipv4Endpoint& destination);
    [[nodiscard]] bool IsForgotten(const Block& block, std::uint32_t packetId) const;
    void SendRefusal(const gvcp::PacketResendCommand& command, const transport::Ipv4Endpoint& destination);

    transport::IUdpSocket& m_socket; // borrowed, see the constructor
    const std::uint32_t m_linkSpeedMbps;
    const std::optional<std::chrono::milliseconds> m_resendMemory; // none: as long as blocks are stored
    std::atomic<bool> m_isCancelled = false;

    // Of the stream thread alone.
    struct Cached {
        FrameOrder order;
        TestPictureRenderer renderer;
    };
    std::optional<Cached> m_cached;
    std::vector<std::byte> m_packet;
    PacketRun m_run;
    SeededRandomSource m_random;
    FaultyPath m_path;

    VxMutex m_resendMutex; // before m_storeMutex
    SeededRandomSource m_resendRandom VX_GUARDED_BY(m_resendMutex);
    FaultyPath m_resendPath VX_GUARDED_BY(m_resendMutex);
    std::vector<std::byte> m_resendPacket VX_GUARDED_BY(m_resendMutex);

    VxMutex m_storeMutex;
    BlockStore m_store VX_GUARDED_BY(m_storeMutex);

    std::atomic<std::uint64_t> m_packetsSent = 0;
    std::atomic<std::uint64_t> m_packetsResent = 0;
    std::atomic<std::uint64_t> m_packetsDropped = 0;
    std::atomic<std::uint64_t> m_sendFailures = 0;
};

} // namespace simulator
