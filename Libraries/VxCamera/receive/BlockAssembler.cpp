#include "VxCamera/receive/BlockAssembler.h"

#include "VxCamera/wire/gvsp/BlockLayout.h"

#include <algorithm>
#include <utility>

namespace receive {

namespace {

using namespace std::chrono_literals;
using gvsp::PacketFormat;

// Chosen: no packet is overtaken by this many blocks, so a leader from further back is that of a camera that
// began anew.
constexpr std::int64_t kLateBlocks = 8;

// Chosen: overtaken packets come within microseconds; a leader after this much silence is that of a new
// acquisition.
constexpr auto kRestartPause = 20ms;

// Chosen: a camera that drops blocks skips few ids; a longer way is that of a camera that began anew.
constexpr std::int64_t kLargestGap = 10'000;

constexpr bool IsReadable(PacketFormat format)
{
    return format == PacketFormat::Leader || format == PacketFormat::Trailer ||
           format == PacketFormat::Payload;
}

/// Whether the packet only tells that another one cannot be sent again.
constexpr bool IsResendRefusal(gvsp::Status status)
{
    switch (status) {
    case gvsp::Status::PacketUnavailable:
    case gvsp::Status::PacketNotYetAvailable:
    case gvsp::Status::PacketAndPreviousRemoved:
    case gvsp::Status::PacketRemoved:
    case gvsp::Status::PacketTemporarilyUnavailable:
        return true;
    default:
        return false;
    }
}

} // namespace

BlockAssembler::BlockAssembler(const AssemblySettings& settings, IBlockSink& sink, StreamCounters& counters)
    : m_settings(settings), m_sink(sink), m_counters(counters)
{
    std::ranges::transform(m_blocks, m_open.begin(), [](OpenBlock& block) { return &block; });
}

void BlockAssembler::OnPacket(std::span<const std::byte> datagram, Time now)
{
    m_counters.packets.Add();
    m_counters.bytes.Add(datagram.size());
    const auto packet = gvsp::ParsePacket(datagram);
    if (!packet)
        m_counters.packetsMalformed.Add();
    else if (packet->header.blockId == gvsp::kTestBlockId)
        m_counters.packetsTest.Add();
    else if (!IsReadable(packet->header.format))
        m_counters.packetsUnsupported.Add();
    else
        OnBlockPacket(*packet, now);
    m_lastPacketTime = now;
}

void BlockAssembler::OnBlockPacket(const gvsp::Packet& packet, Time now)
{
    const gvsp::PacketHeader& header = packet.header;
    OpenBlock* const block = BlockOf(packet, now);
    if (block == nullptr) {
        m_counters.packetsLate.Add();
        return;
    }
    if (!gvcp::IsGood(header.status)) {
        CountStatus(header.status, *block);
        if (IsResendRefusal(header.status))
            return;
    }
    switch (header.format) {
    case PacketFormat::Leader:
        Count(header.packetId == 0 ? block->OnLeader(ReadGeometry(packet.data), now)
                                   : OpenBlock::Effect::Malformed);
        break;
    case PacketFormat::Trailer:
        Count(block->OnTrailer(header.packetId, packet.data, now));
        break;
    default:
        if (!block->HasBuffer())
            m_counters.packetsUnbuffered.Add();
        Count(block->OnPayload(header.packetId, packet.data, now));
        break;
    }
    if (m_openCount > 1 || block->IsDone())
        FinishWhatIsDue(now);
}

void BlockAssembler::Count(OpenBlock::Effect effect)
{
    switch (effect) {
    case OpenBlock::Effect::Stored:
        break;
    case OpenBlock::Effect::Duplicate:
        m_counters.packetsDuplicate.Add();
        break;
    case OpenBlock::Effect::OutOfRange:
        m_counters.packetsOutOfRange.Add();
        break;
    case OpenBlock::Effect::WrongSize:
        m_counters.packetsWrongSize.Add();
        break;
    case OpenBlock::Effect::Malformed:
        m_counters.packetsMalformed.Add();
        break;
    }
}

void BlockAssembler::CountStatus(gvsp::Status status, OpenBlock& block)
{
    m_counters.packetsErrorStatus.Add();
    if (!IsResendRefusal(status))
        block.MarkDamaged();
}

/// @return  the block of the packet, opened if it is a new one; null when that block is finished
OpenBlock* BlockAssembler::BlockOf(const gvsp::Packet& packet, Time now)
{
    const gvsp::PacketHeader& header = packet.header;
    for (std::size_t i = 0; i < m_openCount; ++i) {
        if (m_open[i]->BlockId() == header.blockId)
            return m_open[i];
    }
    if (m_lastFinished) {
        const std::int64_t step = gvsp::BlockIdStep(*m_lastFinished, header.blockId, header.idMode);
        if (step <= 0 && !IsRestart(header, step, now))
            return nullptr;
        if (step <= 0) {
            while (m_openCount > 0)
                FinishOldest();
            m_lastFinished.reset();
        }
    }
    return &Open(packet, now);
}

bool BlockAssembler::IsRestart(const gvsp::PacketHeader& header, std::int64_t step, Time now) const
{
    const bool isLeader = header.format == PacketFormat::Leader;
    return isLeader && (step < -kLateBlocks || now - m_lastPacketTime >= kRestartPause);
}

OpenBlock& BlockAssembler::Open(const gvsp::Packet& packet, Time now)
{
    if (m_openCount == kMostOpen)
        FinishOldest();
    const gvsp::PacketHeader& header = packet.header;
    m_idMode = header.idMode;

    OpenBlock* const block = m_open[m_openCount];
    block->Begin({header.blockId, m_stepBytes, now});
    const bool isLeader = header.format == PacketFormat::Leader;
    const BlockGeometry geometry = isLeader ? ReadGeometry(packet.data) : m_lastGeometry;
    block->SetBuffer(m_sink.TakeFree(geometry.code == VxError::Ok ? geometry.imageBytes : 0));

    // Sorted in: a block that was overtaken comes in front of the one that overtook it.
    std::size_t place = m_openCount++;
    while (place > 0 && gvsp::BlockIdStep(m_open[place - 1]->BlockId(), header.blockId, m_idMode) < 0) {
        std::swap(m_open[place], m_open[place - 1]);
        --place;
    }
    return *block;
}

void BlockAssembler::FinishWhatIsDue(Time now)
{
    while (m_openCount > 0 && IsOldestDue(now))
        FinishOldest();
}

bool BlockAssembler::IsOldestDue(Time now) const
{
    if (m_open[0]->IsDone())
        return true;
    for (std::size_t i = 1; i < m_openCount; ++i) {
        if (m_open[i]->IsDone() || m_open[i]->PayloadPackets() >= m_settings.reorderPackets)
            return true;
    }
    const auto deadline = DeadlineOf(0);
    return deadline && now >= *deadline;
}

/// @return  none for a block that may wait for ever: the newest one, when the camera still waits for its
/// exposure
std::optional<BlockAssembler::Time> BlockAssembler::DeadlineOf(std::size_t index) const
{
    const OpenBlock& block = *m_open[index];
    if (block.IsPictureWhole())
        return block.LastPacketTime() + m_settings.trailerTimeout;
    if (block.IsLeaderOnly() && index + 1 == m_openCount)
        return std::nullopt;
    return block.LastPacketTime() + m_settings.blockTimeout;
}

void BlockAssembler::OnTime(Time now)
{
    FinishWhatIsDue(now);
}

std::optional<BlockAssembler::Time> BlockAssembler::NextDeadline() const
{
    return m_openCount > 0 ? DeadlineOf(0) : std::nullopt; // blocks are finished in order
}

void BlockAssembler::FinishOldest()
{
    OpenBlock* const block = m_open[0];
    std::rotate(m_open.begin(), m_open.begin() + 1,
                m_open.begin() + static_cast<std::ptrdiff_t>(m_openCount));
    --m_openCount;

    if (m_lastFinished) {
        const std::int64_t step = gvsp::BlockIdStep(*m_lastFinished, block->BlockId(), m_idMode);
        if (step > 1 && step <= kLargestGap)
            m_counters.blocksLost.Add(static_cast<std::uint64_t>(step - 1)); // positive
    }
    m_lastFinished = block->BlockId();
    m_counters.packetsWrongSize.Add(block->WithdrawnPackets());
    if (block->PayloadPackets() > 0)
        m_stepBytes = block->StepBytes();
    if (block->HasLeader() && block->Geometry().code == VxError::Ok)
        m_lastGeometry = block->Geometry();

    BlockBuffer* const buffer = block->Finish(m_lastGeometry);
    if (buffer == nullptr) {
        m_counters.blocksUnbuffered.Add();
        return;
    }
    CountBlock(buffer->info);
    m_sink.Deliver(*buffer);
}

void BlockAssembler::CountBlock(const BlockInfo& info)
{
    switch (info.code) {
    case VxError::Ok:
        m_counters.blocksComplete.Add();
        break;
    case VxError::MissingPackets:
        m_counters.blocksIncomplete.Add();
        m_counters.packetsMissing.Add(info.packetsMissing);
        break;
    case VxError::BufferTooSmall:
        m_counters.blocksBufferTooSmall.Add();
        break;
    case VxError::NotAnImage:
        m_counters.blocksNotAnImage.Add();
        break;
    default:
        m_counters.blocksDamaged.Add();
        break;
    }
}

void BlockAssembler::Abort()
{
    for (std::size_t i = 0; i < m_openCount; ++i) {
        if (BlockBuffer* const buffer = m_open[i]->Finish(m_lastGeometry))
            m_sink.GiveBack(*buffer);
    }
    m_openCount = 0;
    m_lastFinished.reset();
}

} // namespace receive
