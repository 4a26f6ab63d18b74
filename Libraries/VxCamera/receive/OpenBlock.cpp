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
    m_pictureBytes = 0;
    m_earlyPieces.clear();
    m_lastPiece = {};
    m_cutPiece = {};
    m_highestId = 0;
    m_shortId = 0;
    m_shortBytes = 0;
    m_trailerId = 0;
    m_trailerHeightPx = 0;
    m_longestPause = {};
    m_hasLeader = false;
    m_hasTrailer = false;
    m_isDamaged = false;
    m_isMixedUp = false;
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
    if (m_hasLeader && geometry == m_geometry) {
        m_lastPacketTime = now;
        return Effect::Duplicate;
    }
    const bool isOtherPart = !m_hasLeader && m_payloadPackets > 0 && PartId() != geometry.partId;
    if (m_hasLeader || isOtherPart)
        Forget(); // another block under the same id, or not the kind that it was taken for without its leader
    m_geometry = geometry;
    m_hasLeader = true;
    CountEarlyPieces();
    Follow(0, now);
    WithdrawCutEnd(now);
    WithdrawCutPiece(now);
    return Effect::Stored;
}

/// Whether payload goes into the buffer.
bool OpenBlock::IsStored() const
{
    const bool fits =
        !m_hasLeader || (m_geometry.code == VxError::Ok && m_geometry.memoryBytes <= Capacity());
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
    if (offset < Capacity())
        Store(static_cast<std::size_t>(offset), data); // below the capacity
    else
        m_payloadBytes += data.size();
    Count(packetId, now);
    return Effect::Stored;
}

OpenBlock::Effect OpenBlock::OnPartPayload(std::uint32_t packetId, std::span<const std::byte> data, Time now)
{
    const auto part = gvsp::ParsePartPayload(data);
    if (!part)
        return Effect::Malformed;
    if (packetId > kMostPackets)
        return Effect::OutOfRange;
    if (part->partId == *PartId()) {
        if (part->offsetBytes < Capacity())
            Store(static_cast<std::size_t>(part->offsetBytes), part->data); // below the capacity
        FollowPiece({packetId, part->offsetBytes, part->data.size()});
    }
    Count(packetId, now);
    WithdrawCutPiece(now);
    return Effect::Stored;
}

/// Keeps account of what is here of the picture's lines, and of where a packet may have been cut.
void OpenBlock::FollowPiece(const Piece& piece)
{
    if (m_hasLeader)
        m_pictureBytes += PictureBytesOf(piece);
    else
        m_earlyPieces.push_back(piece);
    if (piece.packetId < m_lastPiece.packetId)
        return;
    const bool isNext =
        m_lastPiece.packetId != 0 && piece.packetId == m_lastPiece.packetId + std::uint64_t{1};
    if (isNext && piece.offset > m_lastPiece.End())
        m_cutPiece = m_lastPiece;
    m_lastPiece = piece;
}

/// How much of a piece lies in the lines, of which the leader tells. What a part announces behind them must
/// not make up for what is missing in them.
std::size_t OpenBlock::PictureBytesOf(const Piece& piece) const
{
    const std::uint64_t end = m_geometry.leastImageBytes;
    return piece.offset < end
               ? static_cast<std::size_t>(std::min<std::uint64_t>(piece.bytes, end - piece.offset))
               : 0;
}

void OpenBlock::CountEarlyPieces()
{
    for (const Piece& piece : m_earlyPieces)
        m_pictureBytes += PictureBytesOf(piece);
    m_earlyPieces.clear();
}

/// Packets of a multi-part block may have any length and come with any offset. So none counts as cut before
/// all of them are here and do not make the picture; then it is the one behind which there is a hole.
void OpenBlock::WithdrawCutPiece(Time now)
{
    if (!PartId() || !IsStored() || !HasAllPackets())
        return;
    const bool isWhole = m_pictureBytes >= m_geometry.leastImageBytes;
    if (isWhole || m_geometry.IsJoined(m_payloadBytes))
        return;
    const Piece cut = m_cutPiece.packetId != 0 ? m_cutPiece : m_lastPiece;
    m_cutPiece = {};
    const bool isHere = cut.packetId != 0 && m_received.IsSet(cut.packetId); // no piece has an id above all
    if (!isHere || cut.End() >= m_geometry.leastImageBytes)
        return;
    Withdraw(cut.packetId, cut.offset < Capacity() ? cut.bytes : 0, now);
    m_pictureBytes -= PictureBytesOf(cut);
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
    // The step that the only packet so far told is replaced.
    const bool isTold = m_highestId == 1 || m_stepBytes != m_start.stepBytes;
    const bool isLonger = bytes > m_stepBytes;
    if (m_payloadPackets != 1 || !m_received.IsSet(m_highestId) || (isLonger && !isTold))
        return false;
    // It was cut, or lies where the step of the block before put it. Either way the packets that belong there
    // overwrite it.
    Withdraw(m_highestId, m_payloadBytes, now);
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
    if (isInFront || IsCutEnd(packetId, bytes))
        return false;
    m_shortId = packetId;
    m_shortBytes = bytes;
    return true;
}

/// Whether the last packet ends before the picture does; not known before leader and trailer are here.
bool OpenBlock::IsCutEnd(std::uint32_t packetId, std::size_t bytes) const
{
    const bool isPlainPicture = m_hasLeader && m_geometry.code == VxError::Ok && !PartId();
    if (!isPlainPicture || !m_hasTrailer || packetId + std::uint64_t{1} != m_trailerId ||
        m_geometry.payloadType.Type() == gvsp::PayloadType::kChunkData)
        return false;
    const BlockGeometry sent = GeometryAsSent();
    const std::uint64_t end = gvsp::PayloadOffset(packetId, m_stepBytes) + bytes;
    return end < sent.leastImageBytes && !sent.IsJoined(static_cast<std::size_t>(end)); // smaller: fits
}

/// A last packet that was cut shows when both leader and trailer are here.
void OpenBlock::WithdrawCutEnd(Time now)
{
    if (!m_hasTrailer || !m_hasLeader || m_trailerId < 2)
        return;
    const std::uint32_t last = m_trailerId - 1;
    // One that is full has not been cut, unless there is no other one that tells what full is.
    const bool isShort = m_shortId == last || last == 1;
    const bool isHere = last < m_received.Size() && m_received.IsSet(last);
    const std::size_t bytes = m_shortId == last ? m_shortBytes : m_payloadBytes;
    if (!isShort || !isHere || !IsCutEnd(last, bytes))
        return;
    Withdraw(last, bytes, now);
    m_shortId = 0;
}

void OpenBlock::Store(std::size_t offset, std::span<const std::byte> data)
{
    const auto place = m_buffer->memory.subspan(offset);
    if (place.data() != data.data()) // may overlap what landed where the step was still another one
        std::memmove(place.data(), data.data(), std::min(data.size(), place.size()));
    m_payloadBytes += data.size();
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
    if (m_shortId != 0 && m_shortId + std::uint64_t{1} < m_trailerId) {
        Withdraw(m_shortId, m_shortBytes, now);
        m_shortId = 0;
    }
    Follow(packetId, now);
    WithdrawBehindTrailer(now);
    m_missing.EndAt(packetId);
    WithdrawCutEnd(now);
    WithdrawCutPiece(now);
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

bool OpenBlock::IsPictureWhole() const
{
    if (!m_hasLeader || !IsStored() || m_geometry.payloadType.HasChunks() || m_missing.IsOverfull())
        return false;
    if (PartId())
        return m_missing.IsEmpty() && m_payloadBytes >= m_geometry.imageBytes &&
               m_pictureBytes >= m_geometry.leastImageBytes;
    if (m_stepBytes == 0)
        return false;
    // Packets behind the picture do not count, however many came.
    const std::uint64_t last = gvsp::PayloadPackets(m_geometry.imageBytes, m_stepBytes);
    const bool isInRow =
        m_missing.Next() > last && (m_missing.IsEmpty() || m_missing.All().front().first > last);
    return isInRow && (m_shortId != last || EndOfLast(last) >= m_geometry.imageBytes);
}

bool OpenBlock::IsDone() const
{
    return m_hasTrailer && (!IsStored() || HasAllPackets());
}

/// Whether every packet in front of the trailer is here.
bool OpenBlock::HasAllPackets() const
{
    return m_hasTrailer && m_hasLeader && m_missing.IsEmpty() && !m_missing.IsOverfull() && !m_isMixedUp;
}

/// @return  where the data of the packet end, if it is the last one
std::uint64_t OpenBlock::EndOfLast(std::uint64_t packetId) const
{
    return packetId * m_stepBytes - (m_shortId == packetId ? m_stepBytes - m_shortBytes : 0);
}

std::uint32_t OpenBlock::EndId() const
{
    if (m_hasTrailer)
        return m_trailerId;
    if (m_start.lastEndId != 0 && (!m_hasLeader || IsSameShape(m_geometry, m_start.lastGeometry)))
        return m_start.lastEndId;
    const bool isPlainPicture = m_hasLeader && m_geometry.code == VxError::Ok && !PartId();
    if (!isPlainPicture || m_stepBytes == 0 || m_geometry.payloadType.HasChunks())
        return 0;
    const std::uint64_t packets = gvsp::PayloadPackets(m_geometry.imageBytes, m_stepBytes);
    constexpr std::uint64_t kMostIds = 0xFF'FFFF; // fixed by the standard header; more is no picture
    return packets < kMostIds ? static_cast<std::uint32_t>(packets + 1) : 0;
}

void OpenBlock::ExpectEnd(Time now)
{
    const std::uint32_t end = EndId();
    if (end != 0)
        m_missing.ExpectUpTo(end, now);
}

bool OpenBlock::IsEnded() const
{
    const std::uint32_t end = EndId();
    return m_hasTrailer || (end != 0 && m_missing.Next() > end);
}

/// @return  at least 1: it is asked of incomplete blocks only
std::uint64_t OpenBlock::PacketsMissing() const
{
    const std::uint64_t end =
        m_hasTrailer ? m_trailerId : std::max(EndId(), m_highestId + std::uint32_t{1}); // 24 or 32 bits
    if (m_missing.IsOverfull()) // not all ranges are known
        return std::max<std::uint64_t>(end - std::min(end, m_payloadPackets + (m_hasLeader ? 1 : 0)), 1);
    std::uint64_t missing = end - std::min(end, m_missing.Next());
    for (const MissingRange& range : m_missing.All()) {
        if (range.first < end)
            missing += std::min<std::uint64_t>(range.last + std::uint64_t{1}, end) - range.first;
    }
    return std::max<std::uint64_t>(missing, 1);
}

/// The leader announces the largest picture; the trailer tells how many lines there really were.
BlockGeometry OpenBlock::GeometryAsSent() const
{
    // The trailer of a multi-part block does not tell it.
    const bool isShorter =
        !m_geometry.partId && m_trailerHeightPx > 0 && m_trailerHeightPx < m_geometry.heightPx;
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
    const bool isChunkData = m_geometry.payloadType.Type() == gvsp::PayloadType::kChunkData;
    if (!HasAllPackets())
        return VxError::MissingPackets;
    if (isChunkData)
        return CodeOfChunkData();
    if (IsJoined(sent))
        return VxError::NotSupported;
    const std::size_t bytes = PartId() ? m_pictureBytes : m_payloadBytes;
    return bytes >= sent.leastImageBytes ? VxError::Ok : VxError::MissingPackets;
}

/// Whether the lines of the picture run together, so that it cannot be read by lines.
bool OpenBlock::IsJoined(const BlockGeometry& sent) const
{
    if (!m_geometry.payloadType.HasChunks())
        return sent.IsJoined(m_payloadBytes);
    // Only the list of chunks tells where the picture ends.
    const auto first = m_payloadBytes <= Capacity()
                           ? gvsp::FirstChunkBytes(m_buffer->memory.first(m_payloadBytes))
                           : std::nullopt;
    return first && sent.IsJoined(*first);
}

/// Whether the first chunk is the picture that the camera's features announce.
VxError OpenBlock::CodeOfChunkData() const
{
    if (m_payloadBytes > Capacity())
        return VxError::BufferTooSmall; // the list of chunks is at its end
    const auto first = gvsp::FirstChunkBytes(m_buffer->memory.first(m_payloadBytes));
    if (first && m_geometry.IsJoined(*first))
        return VxError::NotSupported;
    return first && *first == m_geometry.leastImageBytes ? VxError::Ok : VxError::NotAnImage;
}

BlockBuffer* OpenBlock::Finish(const BlockGeometry& lastGeometry)
{
    BlockBuffer* const buffer = m_buffer;
    if (buffer == nullptr)
        return nullptr;
    const BlockGeometry sent = GeometryAsSent();
    BlockInfo& info = buffer->info;
    info.code = Code(sent);
    info.blockId = m_start.blockId;
    info.timestampTicks = m_geometry.timestampTicks;
    info.geometry = m_hasLeader ? sent : lastGeometry;
    if (info.code == VxError::BufferTooSmall)
        info.geometry.memoryBytes = std::max(info.geometry.memoryBytes, m_payloadBytes);
    info.packetsMissing = info.code == VxError::MissingPackets ? PacketsMissing() : 0;
    info.receivedBytes = std::min(m_payloadBytes, Capacity());
    m_buffer = nullptr;
    return buffer;
}

} // namespace receive
