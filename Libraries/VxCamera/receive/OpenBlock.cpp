#include "VxCamera/receive/OpenBlock.h"

#include "VxCamera/wire/gvsp/BlockLayout.h"
#include "VxCamera/wire/gvsp/ChunkData.h"
#include "VxCamera/wire/gvsp/ImageLeader.h"
#include "VxCamera/wire/gvsp/ImageTrailer.h"
#include "VxCamera/wire/gvsp/MultiPart.h"

#include <algorithm>
#include <cstring>

namespace receive {

namespace {

using gvsp::PacketFormat;

// Chosen: far below what any camera sends. It bounds the number of packets that a buffer can have.
constexpr std::size_t kSmallestStepBytes = 64;

// Chosen: more than 1 GiB in packets of 1,500 bytes. Parts that are no picture, and chunks, are not bounded
// by the buffer.
constexpr std::uint32_t kMostPackets = 1 << 20;

} // namespace

void OpenBlock::Begin(const Start& start)
{
    m_start = start;
    m_buffer = nullptr;
    m_stepBytes = start.stepBytes;
    m_lastPacketTime = start.now;
    m_lastAdvance = start.now;
    asking = {};
    overtakenAt.reset();
    Forget();
}

/// Forgets all packets, but not the buffer.
void OpenBlock::Forget()
{
    m_geometry = {};
    m_received.Reset(0);
    m_missing.Clear();
    m_lastFound.reset();
    m_payloadPackets = 0;
    m_withdrawnPackets = 0;
    m_payloadBytes = 0;
    m_pieces.Clear();
    m_aside.clear();
    m_highestId = 0;
    m_shortId = 0;
    m_shortBytes = 0;
    m_trailerId = 0;
    m_trailerHeightPx = 0;
    m_trailerChunkBytes = 0;
    m_cutEnd = 0;
    m_cutAsks = 0;
    m_longestPause = {};
    m_hasLeader = false;
    m_hasTrailer = false;
    m_isDamaged = false;
    m_isEndBelieved = false;
    m_isMixedUp = false;
}

BlockBuffer& OpenBlock::MoveTo(BlockBuffer& larger, Time now)
{
    BlockBuffer& before = *m_buffer;
    const std::uint64_t end =
        PartId() ? Capacity() : std::min<std::uint64_t>(Capacity(), std::uint64_t{m_highestId} * m_stepBytes);
    std::ranges::copy(before.memory.first(static_cast<std::size_t>(end)), larger.memory.begin());
    // Of the packet that lay over the end of the buffer only a part was kept. Behind it there is none.
    const std::uint64_t over = m_stepBytes > 0 ? Capacity() / m_stepBytes + 1 : 0;
    if (!PartId() && over > 0 && over < m_received.Size() &&
        m_received.IsSet(static_cast<std::size_t>(over))) {
        const auto id = static_cast<std::uint32_t>(over); // of a packet that came
        const std::size_t bytes = id == m_shortId ? m_shortBytes : m_stepBytes;
        if (gvsp::PayloadOffset(id, m_stepBytes) + bytes > Capacity()) {
            Withdraw(id, bytes, now);
            m_shortId = id == m_shortId ? 0 : m_shortId;
        }
    }
    m_buffer = &larger;
    return before;
}

/// Keeps account of what is missing.
void OpenBlock::Follow(std::uint32_t packetId, Time now)
{
    m_lastPacketTime = now;
    const std::uint64_t next = m_missing.Next();
    m_lastFound = m_missing.Arrived(packetId, now);
    if (packetId < next)
        return;
    m_longestPause = next > 0 ? std::max(m_longestPause, now - m_lastAdvance) : m_longestPause;
    m_lastAdvance = now;
}

OpenBlock::Effect OpenBlock::OnLeader(const BlockGeometry& geometry, Time now)
{
    m_lastFound.reset();
    if (geometry.code == VxError::Truncated)
        return Effect::Malformed;
    const auto rounded = [](const BlockGeometry& of) {
        return of.areLinesJoined ? WithRoundedLines(of) : of; // as the leader tells it, whatever was learnt
    };
    if (m_hasLeader && rounded(geometry) == rounded(m_geometry)) {
        m_lastPacketTime = now;
        return Effect::Duplicate;
    }
    const bool isOtherPart = !m_hasLeader && m_payloadPackets > 0 && PartId() != geometry.partId;
    if (m_hasLeader || isOtherPart)
        Forget(); // another block under the same id, or not the kind that it was taken for without its leader
    m_geometry = geometry;
    m_hasLeader = true;
    if (m_start.believed.joinedFormat == geometry.pixelFormat)
        JoinLines();
    Follow(0, now);
    WithdrawCutEnd(now);
    WithdrawCutPieces(now);
    return Effect::Stored;
}

/// Whether payload goes into the buffer.
bool OpenBlock::IsStored() const
{
    const std::size_t least = IsJoinable() ? m_geometry.joinedMemoryBytes : m_geometry.memoryBytes;
    const bool fits = !m_hasLeader || (m_geometry.code == VxError::Ok && least <= Capacity());
    return m_buffer != nullptr && fits;
}

/// The part of a multi-part block that is the picture. A block whose leader is late is taken for one like the
/// block before.
std::optional<std::uint8_t> OpenBlock::PartId() const
{
    return m_hasLeader ? m_geometry.partId : m_start.lastGeometry.partId;
}

std::span<std::byte> OpenBlock::PlaceOf(std::uint32_t packetId) const
{
    const bool isCertain = m_hasLeader && m_payloadPackets > 0 && IsStored() && !PartId();
    if (!isCertain || (packetId < m_received.Size() && m_received.IsSet(packetId)))
        return {};
    const std::uint64_t offset = gvsp::PayloadOffset(packetId, m_stepBytes);
    const std::size_t end = std::min(m_geometry.imageBytes, Capacity());
    if (offset >= end)
        return {};
    return m_buffer->memory.subspan(static_cast<std::size_t>(offset), // below the capacity
                                    std::min(m_stepBytes, end - static_cast<std::size_t>(offset)));
}

OpenBlock::Effect OpenBlock::OnPayload(const gvsp::Packet& packet, Arrival arrival, Time now)
{
    m_lastFound.reset();
    const std::uint32_t packetId = packet.header.packetId;
    if (packetId == 0 || packet.data.empty())
        return Effect::Malformed;
    if (!IsStored()) {
        m_lastPacketTime = now;
        ++m_payloadPackets;
        return Effect::Stored;
    }
    const bool isPart = packet.header.format == PacketFormat::PayloadMultiPart;
    if (isPart != PartId().has_value() || (!isPart && packet.header.format != PacketFormat::Payload))
        return Effect::Unsupported;
    if (m_hasTrailer && packetId >= m_trailerId)
        return Effect::OutOfRange;
    if (packetId < m_received.Size() && m_received.IsSet(packetId)) {
        m_lastPacketTime = now;
        return Effect::Duplicate;
    }
    if (arrival == Arrival::AtPlace && PlaceOf(packetId).data() != packet.data.data())
        return Effect::OutOfRange; // the block is not the one any more for which the place was told
    return isPart ? OnPartPayload(packetId, packet.data, now) : OnPlainPayload(packetId, packet.data, now);
}

OpenBlock::Effect OpenBlock::OnPlainPayload(std::uint32_t packetId, std::span<const std::byte> data, Time now)
{
    KeepAside(packetId, data);
    if (MakesTwo(packetId, data.size())) {
        StoreTwo(data, now);
        return Effect::Stored;
    }
    if (!FitStep(packetId, data.size(), now))
        return Effect::WrongSize;
    const std::uint64_t offset = gvsp::PayloadOffset(packetId, m_stepBytes);
    // Chunks and padding come behind the picture for which the buffer is; no leader tells of the former.
    const bool isBehind = m_geometry.payloadType.HasChunks() || offset < m_geometry.imageBytes;
    const bool mayEndOutside = m_hasLeader && isBehind && packetId <= kMostPackets;
    if (offset >= Capacity() && !mayEndOutside)
        return Effect::OutOfRange;
    if (!FitLength(packetId, data.size(), now))
        return Effect::WrongSize;
    Store(offset, data);
    Count(packetId, now);
    WithdrawCutEnd(now);
    return Effect::Stored;
}

/// Where the second packet belongs is not known before the first one is here: the step may be another one
/// than that of the block before, and the place even outside of the buffer.
void OpenBlock::KeepAside(std::uint32_t packetId, std::span<const std::byte> data)
{
    if (packetId == 2 && m_payloadPackets == 0)
        m_aside.assign(data.begin(), data.end());
}

/// Whether a first packet that came behind the second one is as long as it was sent, whatever the step was:
/// two packets of which one was cut do not make a whole block.
bool OpenBlock::MakesTwo(std::uint32_t packetId, std::size_t bytes) const
{
    const bool isBoth = packetId == 1 && !m_aside.empty() && m_highestId <= 2;
    const bool isWholeKnown = m_hasTrailer || !m_geometry.payloadType.HasChunks();
    return isBoth && m_hasLeader && isWholeKnown && bytes >= std::max(kSmallestStepBytes, m_aside.size()) &&
           bytes + m_aside.size() == WholeBytes();
}

void OpenBlock::StoreTwo(std::span<const std::byte> first, Time now)
{
    m_stepBytes = first.size();
    m_shortId = m_aside.size() < m_stepBytes ? 2 : 0;
    m_shortBytes = m_aside.size();
    m_payloadPackets = 0; // the second one is stored anew
    m_payloadBytes = 0;
    Store(0, first); // before the second one, over which it may lie
    Store(m_stepBytes, m_aside);
    Count(2, now);
    Count(1, now);
}

OpenBlock::Effect OpenBlock::OnPartPayload(std::uint32_t packetId, std::span<const std::byte> data, Time now)
{
    const auto part = gvsp::ParsePartPayload(data);
    if (!part)
        return Effect::Malformed;
    if (packetId > kMostPackets)
        return Effect::OutOfRange;
    if (part->partId == *PartId()) {
        // A larger picture than the one before gets its buffer with its leader.
        if (!m_hasLeader && part->offsetBytes + part->data.size() > Capacity())
            return Effect::OutOfRange;
        Store(part->offsetBytes, part->data);
        m_pieces.Add({packetId, part->offsetBytes, part->data.size()});
    }
    Count(packetId, now);
    WithdrawCutPieces(now);
    return Effect::Stored;
}

/// Packets of a multi-part block may have any length and come with any offset. So none counts as cut before
/// all of them are here and do not make the picture; then it is each behind which there is a hole. What a
/// part announces behind its lines does not make up for what is missing in them.
void OpenBlock::WithdrawCutPieces(Time now)
{
    if (!PartId() || !IsStored() || !HasAllPackets())
        return;
    const std::size_t end = m_geometry.leastImageBytes;
    if (m_pieces.Cover(end) || m_geometry.IsJoined(m_payloadBytes))
        return;
    for (const PartPieces::Piece& cut : m_pieces.TakeCut(end))
        Withdraw(cut.packetId, cut.bytes, now);
}

/// Learns the step from the packets.
/// @return  false for a packet that is longer than those before it
bool OpenBlock::FitStep(std::uint32_t packetId, std::size_t bytes, Time now)
{
    const bool isFirst = m_payloadPackets == 0;
    if (isFirst && (bytes > m_stepBytes || packetId == 1)) {
        // The first packet of a block is full, unless it is the only one, whose place does not depend on the
        // step.
        m_stepBytes = std::max(bytes, kSmallestStepBytes);
        return true;
    }
    if (bytes <= m_stepBytes && !IsStepTooLong(packetId, bytes))
        return true;
    // The step that the only full packet so far told is replaced.
    const bool isFirstWithLast = m_payloadPackets == 2 && m_shortId != 0 && m_received.IsSet(1);
    const std::uint32_t fullId = isFirstWithLast ? 1 : m_highestId;
    const bool isTold = fullId == 1 || m_stepBytes != m_start.stepBytes;
    const bool isLonger = bytes > m_stepBytes;
    const bool isOnlyOne = (m_payloadPackets == 1 || isFirstWithLast) && m_received.IsSet(fullId);
    if (!isOnlyOne || (isLonger && !isTold) || (isFirstWithLast && !isLonger))
        return false;
    // It was cut, or lies where the step of the block before put it. Either way the packets that belong there
    // overwrite it.
    if (isFirstWithLast)
        Withdraw(m_shortId, m_shortBytes, now);
    Withdraw(fullId, m_payloadBytes, now);
    m_shortId = 0;
    m_stepBytes = bytes;
    return true;
}

/// Whether the step of the block before is longer than the packets of this one: no two that were cut have the
/// same length.
bool OpenBlock::IsStepTooLong(std::uint32_t packetId, std::size_t bytes) const
{
    const bool isOnlyOne = m_payloadPackets == 1 && m_shortId != 0 && m_shortId == m_highestId;
    return isOnlyOne && packetId > m_shortId && bytes == m_shortBytes && bytes >= kSmallestStepBytes;
}

/// Keeps packets out that were cut: none but the last one of a block is shorter than the step.
/// @return  false for a packet that was cut
bool OpenBlock::FitLength(std::uint32_t packetId, std::size_t bytes, Time now)
{
    if (m_shortId != 0 && packetId > m_shortId) {
        Withdraw(m_shortId, m_shortBytes, now);
        m_shortId = 0;
    }
    if (bytes >= m_stepBytes)
        return true;
    const bool isInFront = packetId < m_highestId || (m_hasTrailer && packetId + 1 < m_trailerId);
    const bool isCut = IsCutEnd(packetId, bytes) && !IsEndAgain(packetId, bytes, AsksFor(packetId));
    if (isInFront || isCut)
        return false;
    m_shortId = packetId;
    m_shortBytes = bytes;
    return true;
}

/// A last packet that was cut shows when both leader and trailer are here or, where only the list of chunks
/// tells of it, when everything is.
void OpenBlock::WithdrawCutEnd(Time now)
{
    if (!m_hasTrailer || !m_hasLeader || m_trailerId < 2)
        return;
    const std::uint32_t last = m_trailerId - 1;
    const bool isHere = last < m_received.Size() && m_received.IsSet(last);
    // One that is full has not been cut, unless no other one tells what full is.
    const bool isShort = m_shortId == last;
    const bool isFirstInDoubt = last == 2 && m_received.IsSet(1) && m_stepBytes != m_start.stepBytes;
    if (!isHere)
        return;
    const bool isInDoubt = isShort || last == 1 || isFirstInDoubt;
    const std::size_t ofOnlyOne = last == 1 ? m_payloadBytes : m_stepBytes;
    const std::size_t bytes = isShort ? m_shortBytes : ofOnlyOne;
    const bool isCut = IsCutEnd(last, bytes) || (isInDoubt && IsChunkListCut());
    const unsigned asks = isInDoubt && m_lastFound ? m_lastFound->asks : 0;
    if (!isCut || IsEndAgain(last, bytes, asks))
        return;
    if (!isInDoubt) {
        if (IsCutAtJoinedEnd())
            JoinLines();
        return;
    }
    Withdraw(last, bytes, now);
    m_cutAsks = 0; // it begins anew
    m_shortId = 0;
    if (isFirstInDoubt)
        Withdraw(1, m_stepBytes, now);
}

/// What lies outside of the buffer is only counted.
void OpenBlock::Store(std::uint64_t offset, std::span<const std::byte> data)
{
    m_payloadBytes += data.size();
    if (m_geometry.areLinesJoined && m_payloadBytes > m_geometry.imageBytes)
        m_geometry = WithRoundedLines(m_geometry); // they do not run together in this one
    if (offset >= Capacity())
        return;
    const auto place = m_buffer->memory.subspan(static_cast<std::size_t>(offset)); // below the capacity
    if (place.data() != data.data()) // may overlap what landed where the step was still another one
        std::memmove(place.data(), data.data(), std::min(data.size(), place.size()));
}

void OpenBlock::Count(std::uint32_t packetId, Time now)
{
    m_received.Grow(std::size_t{packetId} + 1);
    m_received.Set(packetId);
    m_highestId = std::max(m_highestId, packetId);
    ++m_payloadPackets;
    Follow(packetId, now);
}

void OpenBlock::Withdraw(std::uint32_t packetId, std::size_t bytes, Time now)
{
    m_received.Clear(packetId);
    m_missing.Lost(packetId, now);
    --m_payloadPackets;
    ++m_withdrawnPackets;
    m_payloadBytes -= bytes;
}

/// Takes back what came under ids that the block does not have: each would stand for a packet that is
/// missing.
void OpenBlock::WithdrawBehindTrailer(Time now)
{
    if (m_shortId >= m_trailerId) {
        Withdraw(m_shortId, m_shortBytes, now);
        m_shortId = 0;
    }
    for (std::uint64_t id = m_trailerId; id <= m_highestId; ++id) {
        if (!m_received.IsSet(static_cast<std::size_t>(id))) // not above m_highestId
            continue;
        // Of a part it is not known any more which bytes it wrote.
        m_isMixedUp = m_isMixedUp || PartId();
        Withdraw(static_cast<std::uint32_t>(id), PartId() ? 0 : m_stepBytes, now);
    }
    m_highestId = std::min(m_highestId, m_trailerId - 1);
}

OpenBlock::Effect OpenBlock::OnTrailer(std::uint32_t packetId, std::span<const std::byte> data, Time now)
{
    m_lastFound.reset();
    if (packetId == 0 || !gvsp::ParseTrailerPayloadType(data))
        return Effect::Malformed;
    if (m_hasTrailer) {
        m_lastPacketTime = now;
        return Effect::Duplicate;
    }
    m_hasTrailer = true;
    m_trailerId = packetId;
    if (const auto trailer = gvsp::ParseImageTrailer(data))
        m_trailerHeightPx = trailer->heightPx;
    m_trailerChunkBytes = gvsp::ParseTrailerChunkBytes(data);
    if (m_shortId != 0 && m_shortId + std::uint64_t{1} < m_trailerId) {
        Withdraw(m_shortId, m_shortBytes, now);
        m_shortId = 0;
    }
    Follow(packetId, now);
    WithdrawBehindTrailer(now);
    m_missing.EndAt(packetId);
    WithdrawCutEnd(now);
    WithdrawCutPieces(now);
    return Effect::Stored;
}

OpenBlock::Effect OpenBlock::OnAllIn(std::span<const std::byte> data, Time now)
{
    const BlockGeometry geometry = ReadGeometry(data);
    const Effect leader = OnLeader(geometry, now);
    // One that comes again may be whole where the first one was cut.
    const bool isWanted = leader == Effect::Stored || (leader == Effect::Duplicate && !IsDone());
    if (!isWanted || !geometry.payloadType.HasImageLeader()) {
        m_hasTrailer = leader == Effect::Stored || m_hasTrailer; // nothing more comes
        return leader;
    }
    const auto behindLeader = data.subspan(std::min(data.size(), gvsp::kImageLeaderBytes));
    const std::size_t trailerBytes = gvsp::ImageTrailerBytes(geometry.payloadType);
    if (behindLeader.size() <= trailerBytes)
        return Effect::Malformed;
    gvsp::Packet payload;
    payload.header.packetId = 1;
    payload.data = behindLeader.subspan(trailerBytes);
    const Effect stored = OnPayload(payload, Arrival::InDatagram, now);
    const bool isHere = stored == Effect::Stored || stored == Effect::Duplicate;
    if (!isHere || m_hasTrailer)
        return stored;
    constexpr std::uint32_t kTrailerId = 2; // as if they had come one by one
    return OnTrailer(kTrailerId, behindLeader.first(trailerBytes), now);
}

} // namespace receive
