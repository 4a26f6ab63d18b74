#include "VxCamera/receive/OpenBlock.h"

#include "VxCamera/wire/gvsp/BlockLayout.h"
#include "VxCamera/wire/gvsp/ChunkData.h"

#include <algorithm>

// What is here of a block, what is not, and as what it is delivered. How its packets are taken is in
// OpenBlock.cpp.

namespace receive {

/// Some cameras send such a field behind pictures without chunks.
std::uint32_t OpenBlock::ToldChunkBytes() const
{
    return m_geometry.payloadType.HasChunks() ? m_trailerChunkBytes : 0;
}

/// What leader and trailer tell of the picture and of its chunks. Some cameras count the picture with the
/// chunks, others do not.
/// @return  0: not told
std::uint64_t OpenBlock::WholeBytes() const
{
    if (m_geometry.payloadType.Type() == gvsp::PayloadType::kChunkData)
        return m_trailerChunkBytes;
    const BlockGeometry sent = GeometryAsSent();
    const std::uint32_t told = ToldChunkBytes();
    const bool isPictureCounted = told >= sent.joinedImageBytes; // the least it can have
    return isPictureCounted ? told : sent.leastImageBytes + std::uint64_t{told};
}

/// How many bytes a complete block has at least: where ends are believed, those of the picture alone.
std::uint64_t OpenBlock::NeededBytes() const
{
    const std::uint64_t told = WholeBytes();
    if (!AreEndsBelieved())
        return told;
    const std::uint64_t picture = GeometryAsSent().leastImageBytes;
    return told == 0 ? picture : std::min(told, picture); // chunk data may be no picture
}

/// Whether the block has more than so many bytes.
bool OpenBlock::LacksBytes(std::uint64_t bytes) const
{
    const bool isPictureAlone = ToldChunkBytes() == 0;
    const bool isUnreadable = isPictureAlone && !IsJoinable() && bytes <= Capacity();
    const bool isJoined =
        isUnreadable && GeometryAsSent().IsJoined(static_cast<std::size_t>(bytes)); // below the capacity
    return bytes < NeededBytes() && !isJoined;
}

/// Notes where a last packet ends that looks cut. One that comes again as it was, although it was asked for,
/// was sent so; and so was one of a camera that cannot be asked when blocks before ended there. A picture
/// that is cut is never believed.
///
/// A picture of packed lines may end earlier: where it ends when they run together. That is one single byte
/// of all at which a packet may be cut, so one that ends there is taken for cut like any other, until it
/// comes again or blocks before ended there. To pass, a cut would have to hit that byte twice, or three times
/// where nobody answers, and nothing else of those blocks. Once it is known that lines of this pixel format
/// run together, the block has that size, and a packet cut short leaves it with less.
bool OpenBlock::IsEndAgain(std::uint32_t packetId, std::size_t bytes, unsigned asks)
{
    const bool isStepKnown = packetId == 1 || m_payloadPackets > 0;
    if (!isStepKnown)
        return false;
    const std::uint64_t end = gvsp::PayloadOffset(packetId, m_stepBytes) + bytes;
    const BlockGeometry sent = GeometryAsSent();
    const bool isJoined = IsJoinable() && sent.IsReadableJoined(end);
    const bool isPictureHere = isJoined || end >= sent.leastImageBytes;
    const bool isSentAgain = end == m_cutEnd && asks > m_cutAsks;
    const bool isFormatKnown = isJoined && m_start.believed.joinedFormat == sent.pixelFormat;
    const bool isAgain = isPictureHere && (isSentAgain || end == m_start.believed.same || isFormatKnown);
    m_isEndBelieved = isAgain && !isJoined; // such a picture ends where it has to
    m_cutEnd = isPictureHere ? end : 0;
    m_cutAsks = asks;
    if (isAgain && isJoined)
        JoinLines();
    return isAgain;
}

/// Whether only the length of the payload can tell that lines run together. Parts have a length of their own,
/// and chunks a list that tells where the picture ends.
bool OpenBlock::IsJoinable() const
{
    return m_hasLeader && m_geometry.code == VxError::Ok && m_geometry.joinedMemoryBytes != 0 && !PartId() &&
           !m_geometry.payloadType.HasChunks();
}

/// From now on the block has the size of a picture whose lines run together, unless more has come already.
void OpenBlock::JoinLines()
{
    if (IsJoinable() && m_payloadBytes <= m_geometry.joinedImageBytes)
        m_geometry = WithJoinedLines(m_geometry);
}

/// Whether the last packet was taken for one that was cut, where lines that run together end.
bool OpenBlock::IsCutAtJoinedEnd() const
{
    return IsJoinable() && GeometryAsSent().IsReadableJoined(CutEnd());
}

std::optional<bool> OpenBlock::AreLinesJoined() const
{
    if (!IsJoinable() || !IsStored() || !HasAllPackets())
        return std::nullopt;
    const BlockGeometry sent = GeometryAsSent();
    if (sent.areLinesJoined)
        return m_payloadBytes == sent.imageBytes ? std::optional(true) : std::nullopt;
    const bool isTold =
        sent.joinedImageBytes != sent.leastImageBytes && m_payloadBytes >= sent.leastImageBytes;
    return isTold ? std::optional(false) : std::nullopt;
}

unsigned OpenBlock::AsksFor(std::uint32_t packetId) const
{
    const auto found = std::ranges::lower_bound(m_missing.All(), packetId, {}, &MissingRange::last);
    return found != m_missing.All().end() && found->first <= packetId ? found->asks : 0;
}

std::uint64_t OpenBlock::CutEnd() const
{
    if (m_cutEnd == 0 || !m_hasLeader || m_isDamaged)
        return 0;
    const std::uint32_t last = m_trailerId - 1; // one that looks cut is in front of a trailer
    const bool isLastHere = last < m_received.Size() && m_received.IsSet(last);
    const bool isSo =
        isLastHere ? m_payloadPackets == last && m_payloadBytes == m_cutEnd : m_payloadPackets + 1 == last;
    return isSo ? m_cutEnd : 0;
}

/// Whether the last packet ends before the block does; not known before leader and trailer are here.
bool OpenBlock::IsCutEnd(std::uint32_t packetId, std::size_t bytes) const
{
    const bool isPlain = m_hasLeader && m_geometry.code == VxError::Ok && !PartId();
    return isPlain && m_hasTrailer && packetId + std::uint64_t{1} == m_trailerId &&
           LacksBytes(gvsp::PayloadOffset(packetId, m_stepBytes) + bytes);
}

bool OpenBlock::HasChunkList() const
{
    const bool isList = m_hasLeader && m_geometry.payloadType.HasChunks() && !PartId();
    if (!isList || !IsStored() || !HasAllPackets() || m_payloadBytes > Capacity())
        return false;
    // Of some cameras the picture is no chunk.
    const std::size_t picture = std::min(GeometryAsSent().leastImageBytes, m_payloadBytes);
    return FirstChunkBytes() ||
           gvsp::FirstChunkBytes(m_buffer->memory.first(m_payloadBytes).subspan(picture)).has_value();
}

/// @return  none when the list of chunks cannot be read
std::optional<std::size_t> OpenBlock::FirstChunkBytes() const
{
    if (m_payloadBytes > Capacity())
        return std::nullopt;
    const auto payload = m_buffer->memory.first(m_payloadBytes);
    const auto first = gvsp::FirstChunkBytes(payload);
    // Some cameras fill the last packet up.
    return first || m_trailerChunkBytes >= payload.size()
               ? first
               : gvsp::FirstChunkBytes(payload.first(m_trailerChunkBytes));
}

/// Whether a list of chunks that should be there, at the end of the block, is not. Needed of cameras that do
/// not tell how many bytes the chunks have.
bool OpenBlock::IsChunkListCut() const
{
    const bool isList = m_geometry.payloadType.HasChunks() && !PartId();
    if (!isList || AreEndsBelieved() || !IsStored() || !HasAllPackets() || m_payloadBytes > Capacity())
        return false;
    const bool isExact = m_trailerChunkBytes != 0 && m_payloadBytes == WholeBytes();
    if (isExact || HasChunkList())
        return false;
    // A camera whose lists can never be read is not asked for what it has not got.
    const auto payload = m_buffer->memory.first(m_payloadBytes);
    return m_start.hasChunkLists || gvsp::BeginsWithChunk(payload, GeometryAsSent().leastImageBytes);
}

bool OpenBlock::IsPictureWhole() const
{
    if (!m_hasLeader || !IsStored() || m_geometry.payloadType.HasChunks() || m_missing.IsOverfull())
        return false;
    if (PartId())
        return m_missing.IsEmpty() && m_payloadBytes >= m_geometry.imageBytes &&
               m_pieces.Cover(m_geometry.leastImageBytes);
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
    constexpr std::uint64_t kMostIds = 0xFF'FFFF; // fixed by the standard header; more is no picture
    const bool isPlainPicture =
        m_hasLeader && m_geometry.code == VxError::Ok && !PartId() && m_stepBytes != 0;
    const std::uint64_t packets =
        isPlainPicture ? gvsp::PayloadPackets(m_geometry.imageBytes, m_stepBytes) : 0;
    std::uint64_t end = packets + 1;
    if (!isPlainPicture || m_geometry.payloadType.HasChunks()) {
        // Nobody knows how many packets come behind; but one more does, the trailer if no other.
        if (!overtakenAt)
            return 0;
        end = std::max<std::uint64_t>(end, m_highestId + std::uint64_t{1});
    }
    return end <= kMostIds ? static_cast<std::uint32_t>(end) : 0;
}

std::uint64_t OpenBlock::LeastPackets() const
{
    const bool isPictureTold = m_hasLeader && m_geometry.code == VxError::Ok && !PartId() && m_stepBytes != 0;
    const std::uint64_t ofPicture =
        isPictureTold ? gvsp::PayloadPackets(m_geometry.imageBytes, m_stepBytes) : 0;
    return std::max<std::uint64_t>({EndId(), ofPicture, m_highestId});
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
    if (m_geometry.code != VxError::Ok || !isShorter)
        return m_geometry;
    const BlockGeometry shorter = WithHeight(m_geometry, m_trailerHeightPx);
    if (m_payloadBytes < m_geometry.imageBytes)
        return shorter;
    // What chunks take may be more than what the missing lines would.
    const bool isList = m_geometry.payloadType.HasChunks() && IsStored() && HasAllPackets();
    const auto first = isList ? FirstChunkBytes() : std::nullopt;
    return first == shorter.leastImageBytes ? shorter : m_geometry;
}

VxError OpenBlock::Code(const BlockGeometry& sent) const
{
    if (!m_hasLeader)
        return VxError::MissingPackets;
    if (m_geometry.code != VxError::Ok)
        return m_geometry.code;
    if (m_geometry.memoryBytes > Capacity() && !IsCutAtJoinedEnd())
        return VxError::BufferTooSmall;
    if (m_isDamaged)
        return VxError::CameraError;
    if (!m_hasTrailer)
        return IsPictureWhole() ? VxError::Ok : VxError::MissingPackets;
    const bool isChunkData = m_geometry.payloadType.Type() == gvsp::PayloadType::kChunkData;
    if (!HasAllPackets())
        return VxError::MissingPackets;
    if (isChunkData)
        return LacksBytes(m_payloadBytes) ? VxError::MissingPackets : CodeOfChunkData();
    if (IsJoined(sent)) // a list of chunks tells it; of a picture alone that could be read it were known
        return m_geometry.payloadType.HasChunks() ? CodeOfJoined() : VxError::NotSupported;
    const bool isWhole = PartId() ? m_pieces.Cover(sent.leastImageBytes)
                                  : m_payloadBytes >= sent.leastImageBytes && !LacksBytes(m_payloadBytes);
    return isWhole ? VxError::Ok : VxError::MissingPackets;
}

/// Whether the picture is as long as one whose lines run together.
bool OpenBlock::IsJoined(const BlockGeometry& sent) const
{
    if (!m_geometry.payloadType.HasChunks())
        return sent.IsJoined(m_payloadBytes);
    // Only the list of chunks tells where the picture ends.
    const auto first = FirstChunkBytes();
    return first && sent.IsJoined(*first);
}

/// Whether the first chunk is the picture that the camera's features announce.
VxError OpenBlock::CodeOfChunkData() const
{
    if (m_payloadBytes > Capacity())
        return VxError::BufferTooSmall; // the list of chunks is at its end
    const auto first = FirstChunkBytes();
    if (first && m_geometry.IsJoined(*first))
        return CodeOfJoined();
    return first && *first == m_geometry.leastImageBytes ? VxError::Ok : VxError::NotAnImage;
}

BlockBuffer* OpenBlock::Finish(const BlockGeometry& lastGeometry)
{
    BlockBuffer* const buffer = m_buffer;
    if (buffer == nullptr)
        return nullptr;
    BlockGeometry sent = GeometryAsSent();
    BlockInfo& info = buffer->info;
    info.code = Code(sent);
    const bool isJoined = info.code == VxError::Ok && IsJoined(sent);
    const bool isRoomForJoined = sent.memoryBytes > Capacity() && IsCutAtJoinedEnd(); // and for nothing more
    if (isJoined || isRoomForJoined)
        sent = WithJoinedLines(sent);
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
