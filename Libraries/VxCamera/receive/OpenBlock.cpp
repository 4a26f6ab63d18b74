#include "VxCamera/receive/OpenBlock.h"

#include "VxCamera/wire/gvsp/BlockLayout.h"
#include "VxCamera/wire/gvsp/ImageTrailer.h"

#include <algorithm>
#include <cstring>

namespace receive {

namespace {

// Chosen: far below what any camera sends. It bounds the number of packets that a buffer can have.
constexpr std::size_t kSmallestStepBytes = 64;

} // namespace

void OpenBlock::Begin(const Start& start)
{
    m_blockId = start.blockId;
    m_buffer = nullptr;
    m_stepBytes = start.stepBytes;
    m_lastPacketTime = start.now;
    Forget();
}

/// Forgets all packets, but not the buffer.
void OpenBlock::Forget()
{
    m_geometry = {};
    m_received.Reset(0);
    m_payloadPackets = 0;
    m_withdrawnPackets = 0;
    m_payloadBytes = 0;
    m_highestId = 0;
    m_shortId = 0;
    m_shortBytes = 0;
    m_trailerId = 0;
    m_trailerHeightPx = 0;
    m_hasLeader = false;
    m_hasTrailer = false;
    m_isDamaged = false;
}

OpenBlock::Effect OpenBlock::OnLeader(const BlockGeometry& geometry, Time now)
{
    if (geometry.code == VxError::Truncated)
        return Effect::Malformed;
    m_lastPacketTime = now;
    if (m_hasLeader && geometry == m_geometry)
        return Effect::Duplicate;
    if (m_hasLeader)
        Forget(); // another block under the same id: the camera began anew
    m_geometry = geometry;
    m_hasLeader = true;
    return Effect::Stored;
}

/// Whether payload goes into the buffer.
bool OpenBlock::IsStored() const
{
    const bool fits =
        !m_hasLeader || (m_geometry.code == VxError::Ok && m_geometry.memoryBytes <= Capacity());
    return m_buffer != nullptr && fits;
}

OpenBlock::Effect OpenBlock::OnPayload(std::uint32_t packetId, std::span<const std::byte> data, Time now)
{
    if (packetId == 0 || data.empty())
        return Effect::Malformed;
    m_lastPacketTime = now;
    if (!IsStored()) {
        ++m_payloadPackets;
        return Effect::Stored;
    }
    if (m_hasTrailer && packetId >= m_trailerId)
        return Effect::OutOfRange;
    if (packetId < m_received.Size() && m_received.IsSet(packetId))
        return Effect::Duplicate;
    if (!FitStep(packetId, data.size()))
        return Effect::WrongSize;
    const std::uint64_t offset = gvsp::PayloadOffset(packetId, m_stepBytes);
    if (offset >= Capacity())
        return Effect::OutOfRange;
    if (!FitLength(packetId, data.size()))
        return Effect::WrongSize;
    Store(packetId, static_cast<std::size_t>(offset), data); // below the capacity
    return Effect::Stored;
}

/// Learns the step from the packets.
/// @return  false for a packet that is longer than those before it
bool OpenBlock::FitStep(std::uint32_t packetId, std::size_t bytes)
{
    const bool isFirst = m_payloadPackets == 0;
    if (isFirst && (bytes > m_stepBytes || packetId == 1)) {
        // The first packet of a block is full, unless it is the only one, whose place does not depend on the
        // step.
        m_stepBytes = std::max(bytes, kSmallestStepBytes);
        return true;
    }
    if (bytes <= m_stepBytes)
        return true;
    if (m_payloadPackets != 1 || m_highestId != 1)
        return false;
    // The only packet so far is the shorter one, so it was cut. Its bytes, at the very beginning, do no harm.
    Withdraw(1, m_payloadBytes);
    m_stepBytes = bytes;
    return true;
}

/// Keeps packets out that were cut: none but the last one of a block is shorter than the step.
/// @return  false for a packet that was cut
bool OpenBlock::FitLength(std::uint32_t packetId, std::size_t bytes)
{
    if (m_shortId != 0 && packetId > m_shortId) {
        Withdraw(m_shortId, m_shortBytes);
        m_shortId = 0;
    }
    if (bytes >= m_stepBytes)
        return true;
    const bool isInFront = packetId < m_highestId || (m_hasTrailer && packetId + 1 < m_trailerId);
    if (isInFront)
        return false;
    m_shortId = packetId;
    m_shortBytes = bytes;
    return true;
}

void OpenBlock::Store(std::uint32_t packetId, std::size_t offset, std::span<const std::byte> data)
{
    const auto place = m_buffer->memory.subspan(offset);
    std::memcpy(place.data(), data.data(), std::min(data.size(), place.size()));
    m_received.Grow(std::size_t{packetId} + 1);
    m_received.Set(packetId);
    m_highestId = std::max(m_highestId, packetId);
    ++m_payloadPackets;
    m_payloadBytes += data.size();
}

void OpenBlock::Withdraw(std::uint32_t packetId, std::size_t bytes)
{
    m_received.Clear(packetId);
    --m_payloadPackets;
    ++m_withdrawnPackets;
    m_payloadBytes -= bytes;
}

OpenBlock::Effect OpenBlock::OnTrailer(std::uint32_t packetId, std::span<const std::byte> data, Time now)
{
    if (packetId == 0 || !gvsp::ParseTrailerPayloadType(data))
        return Effect::Malformed;
    m_lastPacketTime = now;
    if (m_hasTrailer)
        return Effect::Duplicate;
    m_hasTrailer = true;
    m_trailerId = packetId;
    if (const auto trailer = gvsp::ParseImageTrailer(data))
        m_trailerHeightPx = trailer->heightPx;
    if (m_shortId != 0 && m_shortId + std::uint64_t{1} < m_trailerId) {
        Withdraw(m_shortId, m_shortBytes);
        m_shortId = 0;
    }
    return Effect::Stored;
}

bool OpenBlock::IsPictureWhole() const
{
    return m_hasLeader && IsStored() && !m_geometry.payloadType.HasChunks() &&
           m_payloadBytes >= m_geometry.imageBytes;
}

bool OpenBlock::IsDone() const
{
    return m_hasTrailer && (!IsStored() || PacketsMissing() == 0);
}

std::uint64_t OpenBlock::PacketsMissing() const
{
    std::uint64_t expected = 0;
    if (m_hasTrailer)
        expected = m_trailerId - 1;
    else if (m_hasLeader && m_stepBytes > 0)
        expected = gvsp::PayloadPackets(m_geometry.imageBytes, m_stepBytes);
    const std::uint64_t payload = expected > m_payloadPackets ? expected - m_payloadPackets : 0;
    return payload + (m_hasLeader ? 0 : 1);
}

/// The leader announces the largest picture; the trailer tells how many lines there really were.
BlockGeometry OpenBlock::GeometryAsSent() const
{
    const bool isShorter = m_trailerHeightPx > 0 && m_trailerHeightPx < m_geometry.heightPx;
    if (m_geometry.code != VxError::Ok || !isShorter || m_payloadBytes >= m_geometry.imageBytes)
        return m_geometry;
    return WithHeight(m_geometry, m_trailerHeightPx);
}

VxError OpenBlock::Code(const BlockGeometry& sent) const
{
    if (!m_hasLeader)
        return VxError::MissingPackets;
    if (m_geometry.code != VxError::Ok)
        return m_geometry.code;
    if (m_geometry.memoryBytes > Capacity())
        return VxError::BufferTooSmall;
    if (m_isDamaged)
        return VxError::CameraError;
    if (!m_hasTrailer)
        return IsPictureWhole() ? VxError::Ok : VxError::MissingPackets;
    return PacketsMissing() == 0 && m_payloadBytes >= sent.leastImageBytes ? VxError::Ok
                                                                           : VxError::MissingPackets;
}

BlockBuffer* OpenBlock::Finish(const BlockGeometry& lastGeometry)
{
    BlockBuffer* const buffer = m_buffer;
    if (buffer == nullptr)
        return nullptr;
    const BlockGeometry sent = GeometryAsSent();
    BlockInfo& info = buffer->info;
    info.code = Code(sent);
    info.blockId = m_blockId;
    info.timestampTicks = m_geometry.timestampTicks;
    info.geometry = m_hasLeader ? sent : lastGeometry;
    info.packetsMissing = info.code == VxError::MissingPackets ? PacketsMissing() : 0;
    info.receivedBytes = std::min(m_payloadBytes, Capacity());
    m_buffer = nullptr;
    return buffer;
}

} // namespace receive
