#include "VxSimulator/stream/StreamSender.h"

#include "VxBase/VxByteWriter.h"

#include "VxCamera/wire/gvsp/BlockLayout.h"
#include "VxCamera/wire/gvsp/PacketHeader.h"

#include <algorithm>
#include <array>
#include <memory>
#include <thread>
#include <utility>

namespace simulator {

namespace {

// Fixed by UDP: no datagram is longer.
constexpr std::size_t kDatagramMax = 65536;

// Chosen: as many as a network card, or the system for it, hands over at once.
constexpr std::size_t kMostInRun = 64;

// Chosen: shorter waits are saved up; the system could not keep them anyway.
constexpr auto kShortestWait = std::chrono::microseconds(500);

gvsp::IdMode ModeOf(gvcp::IdWidth width)
{
    return width == gvcp::IdWidth::Extended ? gvsp::IdMode::Extended : gvsp::IdMode::Standard;
}

/// Time from the start of one packet to the start of the next.
std::chrono::nanoseconds PacketTime(const FrameOrder& order, std::uint32_t linkSpeedMbps)
{
    constexpr std::uint64_t kBitsPerByte = 8;
    constexpr std::uint64_t kNanosecondsPerMicrosecond = 1000; // 1 Mbit/s is 1 bit per microsecond
    const std::uint64_t onWire =
        order.packetSizeBytes * kBitsPerByte * kNanosecondsPerMicrosecond / linkSpeedMbps;
    return std::chrono::nanoseconds(onWire) + order.packetDelay;
}

} // namespace

StreamSender::StreamSender(transport::IUdpSocket& socket, const VxSimulatorOptions& options)
    : m_socket(socket),
      m_linkSpeedMbps(options.linkSpeedMbps),
      m_resendMemory(options.faults.resendMemory),
      m_packet(kDatagramMax),
      m_run(options.isSendingRuns ? kMostInRun : 1),
      m_random(options.faults.seed),
      m_path(options.faults, m_random),
      m_resendRandom(options.faults.seed + 1), // other chances than for the first sending
      m_resendPath(options.faults, m_resendRandom),
      m_resendPacket(kDatagramMax)
{
}

const TestPictureRenderer& StreamSender::RendererFor(const FrameOrder& order)
{
    const bool isSame = m_cached && m_cached->order.format.code == order.format.code &&
                        m_cached->order.widthPx == order.widthPx &&
                        m_cached->order.heightPx == order.heightPx &&
                        m_cached->order.pattern == order.pattern;
    if (!isSame)
        m_cached.emplace(
            Cached{order, TestPictureRenderer(order.format, order.widthPx, order.heightPx, order.pattern)});
    return m_cached->renderer;
}

std::shared_ptr<Block> StreamSender::MakeBlock(const FrameOrder& order)
{
    const TestPictureRenderer& renderer = RendererFor(order);
    std::vector<std::byte> picture;
    {
        const VxLock lock(m_storeMutex);
        picture = m_store.TakeMemory();
    }
    picture.resize(renderer.Bytes());
    renderer.Render(order.frameNumber, picture);
    return std::make_shared<Block>(order, std::move(picture));
}

void StreamSender::Send(std::span<const std::byte> packet, const transport::Ipv4Endpoint& destination)
{
    if (m_socket.SendTo(packet, destination).IsOK())
        ++m_packetsSent;
    else
        ++m_sendFailures;
}

/// Sends a packet together with the next ones.
void StreamSender::Collect(std::span<const std::byte> packet, const transport::Ipv4Endpoint& destination)
{
    if (!m_run.Takes(packet))
        SendCollected(destination);
    m_run.Add(packet);
}

void StreamSender::SendCollected(const transport::Ipv4Endpoint& destination)
{
    if (m_run.Count() == 0)
        return;
    const std::size_t sent = m_socket.SendRun(m_run.Bytes(), m_run.PacketBytes(), destination);
    m_packetsSent += sent;
    m_sendFailures += m_run.Count() - sent;
    m_run.Clear();
}

bool StreamSender::SendFrame(const FrameOrder& order)
{
    const auto block = MakeBlock(order);
    if (m_resendMemory)
        block->TakeNotes();
    {
        const VxLock lock(m_storeMutex);
        m_store.Add(block, std::chrono::steady_clock::now());
    }
    m_run.Clear(); // of a frame that was ended
    const auto output = [&](std::span<const std::byte> packet) { Collect(packet, order.destination); };
    const auto packetTime = PacketTime(order, m_linkSpeedMbps);
    auto due = std::chrono::steady_clock::now();
    for (std::uint32_t packetId = 0; packetId < block->PacketCount(); ++packetId) {
        if (m_isCancelled)
            return false;
        const std::uint64_t droppedBefore = m_path.Dropped();
        m_path.Pass(block->WritePacket(packetId, Sending::First, m_packet), output);
        m_packetsDropped += m_path.Dropped() - droppedBefore;
        if (m_resendMemory)
            block->NoteSent(packetId, std::chrono::steady_clock::now());
        due += packetTime;
        if (due - std::chrono::steady_clock::now() < kShortestWait)
            continue;
        SendCollected(order.destination);
        std::this_thread::sleep_until(due); // ends by itself, after 0.1 s at the latest
    }
    m_path.Flush(output);
    SendCollected(order.destination);
    return true;
}

void StreamSender::Resend(const gvcp::PacketResendCommand& command,
                          const transport::Ipv4Endpoint& destination)
{
    const VxLock resendLock(m_resendMutex);
    std::shared_ptr<const Block> block;
    {
        const VxLock lock(m_storeMutex);
        block = m_store.Find(command.blockId, ModeOf(command.idWidth));
    }
    if (!block || command.firstPacketId >= block->PacketCount() ||
        IsForgotten(*block, command.firstPacketId)) {
        SendRefusal(command, destination);
        return;
    }
    const std::uint32_t last = std::min(command.lastPacketId, block->PacketCount() - 1);
    for (std::uint32_t packetId = command.firstPacketId; packetId <= last && !m_isCancelled; ++packetId) {
        const auto packet = block->WritePacket(packetId, Sending::Again, m_resendPacket);
        if (m_resendPath.Loses(packet)) {
            ++m_packetsDropped;
            continue;
        }
        Send(packet, destination);
        ++m_packetsResent;
    }
}

/// Packets are sent one after the other, so those behind it are remembered for longer.
bool StreamSender::IsForgotten(const Block& block, std::uint32_t packetId) const
{
    if (!m_resendMemory)
        return false;
    const auto sentAt = block.SentAt(packetId);
    return sentAt && std::chrono::steady_clock::now() - *sentAt > *m_resendMemory;
}

void StreamSender::SendRefusal(const gvcp::PacketResendCommand& command,
                               const transport::Ipv4Endpoint& destination)
{
    std::array<std::byte, gvsp::kExtendedHeaderBytes> memory{};
    VxByteWriter out(memory);
    gvsp::WritePacketHeader(out, {.status = gvsp::Status::PacketUnavailable,
                                  .idMode = ModeOf(command.idWidth),
                                  .flags = gvsp::kFlagIsResend,
                                  .blockId = command.blockId,
                                  .packetId = command.firstPacketId});
    Send(out.Written(), destination);
}

void StreamSender::SendTestPacket(const CameraModel::TestPacket& packet)
{
    std::vector<std::byte> memory(packet.packetSizeBytes - gvsp::kIpUdpHeaderBytes);
    VxByteWriter out(memory);
    gvsp::WritePacketHeader(out, {.blockId = gvsp::kTestBlockId});
    if (!m_path.IsTooLarge(memory))
        Send(memory, packet.destination);
}

} // namespace simulator
