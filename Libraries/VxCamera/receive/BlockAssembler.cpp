#include "VxCamera/receive/BlockAssembler.h"

#include "VxCamera/receive/PacketKinds.h"
#include "VxCamera/wire/gvsp/BlockLayout.h"

#include <algorithm>
#include <new>
#include <utility>

namespace receive {

namespace {

using namespace std::chrono_literals;
using gvsp::PacketFormat;

// Chosen: a camera that drops blocks skips few ids; a longer way is that of a camera that began anew.
constexpr std::int64_t kLargestGap = 10'000;

// Chosen: the next block in a row that looks cut at the same byte was sent so. Networks do not cut so evenly.
constexpr unsigned kSameCutEnds = 2;

} // namespace

BlockAssembler::BlockAssembler(const AssemblySettings& settings, IBlockSink& sink, StreamCounters& counters,
                               IResendChannel* resend)
    : m_sink(sink), m_counters(counters), m_resend(resend)
{
    SetSettings(settings);
    std::ranges::transform(m_blocks, m_open.begin(), [](OpenBlock& block) { return &block; });
}

void BlockAssembler::SetSettings(const AssemblySettings& settings)
{
    m_settings = settings;
    m_policy.SetSettings(settings.resend);
}

void BlockAssembler::SetMostOpen(std::size_t blocks)
{
    m_mostOpen = std::clamp<std::size_t>(blocks, 1, kMostOpen);
}

void BlockAssembler::OnPacket(std::span<const std::byte> datagram, Time now)
{
    const auto packet = gvsp::ParsePacket(datagram);
    if (packet) {
        OnPacket(*packet, {datagram.size(), Arrival::InDatagram}, now);
        return;
    }
    m_counters.packets.Add();
    m_counters.bytes.Add(datagram.size());
    m_counters.packetsMalformed.Add();
    m_lastPacketTime = now;
}

void BlockAssembler::OnPacket(const gvsp::Packet& packet, const Received& received, Time now)
{
    m_counters.packets.Add();
    m_counters.bytes.Add(received.datagramBytes);
    if (packet.header.blockId == gvsp::kTestBlockId)
        m_counters.packetsTest.Add();
    else if (!IsReadable(packet.header.format) && !IsAboutResend(packet.header.status))
        m_counters.packetsUnsupported.Add();
    else
        OnBlockPacket(packet, received.arrival, now);
    m_lastPacketTime = now;
}

void BlockAssembler::OnBlockPacket(const gvsp::Packet& packet, Arrival arrival, Time now)
{
    const gvsp::PacketHeader& header = packet.header;
    OpenBlock* const block = BlockOf(packet, now);
    if (!m_isAnswering && IsAsking() && IsAnswer(header, block))
        NoteThatItAnswers();
    if (block == nullptr) {
        m_counters.packetsLate.Add();
        if (IsSentAgain(header))
            m_policy.OnUselessAnswer(now);
        else if (IsAboutResend(header.status))
            m_policy.OnRefusal(now);
        else
            m_policy.OnLatePacket();
        return;
    }
    if (!gvcp::IsGood(header.status)) {
        TakeStatus(header, *block, now);
        if (IsAboutResend(header.status))
            return;
    }
    const OpenBlock::Effect effect = Take(*block, packet, arrival, now);
    Count(effect);
    const bool isUseless = effect == OpenBlock::Effect::Duplicate || effect == OpenBlock::Effect::WrongSize;
    if (isUseless && (IsSentAgain(header) || block->AsksFor(header.packetId) > 0))
        m_policy.OnUselessAnswer(now);
    if (gvsp::HasLeader(header.format) && block->HasLeader())
        m_restarts.OnLeader(*block);
    if (const auto& found = block->LastFound(); found && m_policy.OnArrival(*found, now))
        m_counters.packetsRecovered.Add();
    if (m_openCount > 1 || block->IsDone())
        FinishWhatIsOver(now);
}

OpenBlock::Effect BlockAssembler::Take(OpenBlock& block, const gvsp::Packet& packet, Arrival arrival,
                                       Time now)
{
    const gvsp::PacketHeader& header = packet.header;
    switch (header.format) {
    case PacketFormat::Leader: {
        if (header.packetId != 0)
            return OpenBlock::Effect::Malformed;
        const BlockGeometry geometry = ReadGeometry(packet.data, m_cameraPicture);
        MakeRoom(block, geometry, now);
        return block.OnLeader(geometry, now);
    }
    case PacketFormat::AllIn:
        return block.OnAllIn(packet.data, now);
    case PacketFormat::Trailer:
        return block.OnTrailer(header.packetId, packet.data, now);
    default:
        if (!block.HasBuffer())
            m_counters.packetsUnbuffered.Add();
        return block.OnPayload(packet, arrival, now);
    }
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
    case OpenBlock::Effect::Unsupported:
        m_counters.packetsUnsupported.Add();
        break;
    }
}

void BlockAssembler::TakeStatus(const gvsp::PacketHeader& header, OpenBlock& block, Time now)
{
    m_counters.packetsErrorStatus.Add();
    if (IsAboutResend(header.status))
        m_policy.OnRefusal(now);
    if (IsResendDelay(header.status))
        return; // it is asked for again after the usual time
    if (!IsResendRefusal(header.status)) {
        block.MarkDamaged();
        return;
    }
    m_counters.packetsRefused.Add();
    const bool isOfAllBefore = header.status == gvsp::Status::PacketAndPreviousRemoved;
    const bool isMissing = isOfAllBefore ? block.Missing().IsAnyAskedForUpTo(header.packetId)
                                         : block.Missing().IsMissing(header.packetId);
    if (isMissing) // without this packet the others are of no use
        block.asking.isGivenUp = block.asking.isRefused = true;
}

/// @return  the block of the packet, opened if it is a new one; null when that block is finished
OpenBlock* BlockAssembler::BlockOf(const gvsp::Packet& packet, Time now)
{
    const gvsp::PacketHeader& header = packet.header;
    for (std::size_t i = m_openCount; i-- > 0;) { // most packets are of the newest one
        if (m_open[i]->BlockId() != header.blockId)
            continue;
        if (!m_restarts.IsProven(packet))
            return IsOfBefore(header, m_open[i]->AsksFor(header.packetId), now) ? nullptr : m_open[i];
        BeginAnew(now); // with the same id
        return &Open(packet, now);
    }
    if (IsAboutResend(header.status) || IsOfBefore(header, 0, now))
        return nullptr; // of a block that is finished
    // Before any block is finished, the newest that is open tells where the camera was: it may be a leader
    // without more.
    const auto last = m_lastFinished || m_openCount == 0 ? m_lastFinished
                                                         : std::optional(m_open[m_openCount - 1]->BlockId());
    const std::int64_t step = last ? gvsp::BlockIdStep(*last, header.blockId, header.idMode) : 1;
    if (step <= 0) {
        const bool isRestart = m_restarts.IsRestart(packet, step, now - m_lastPacketTime, now);
        if (!isRestart && m_lastFinished)
            return nullptr;
        if (isRestart)
            BeginAnew(now);
    }
    return &Open(packet, now);
}

/// Whether a packet answers what was asked for before the camera began anew. The ids may be the same: it must
/// not get into another picture.
/// @param asks  how often the open block of its id has asked for it
bool BlockAssembler::IsOfBefore(const gvsp::PacketHeader& header, unsigned asks, Time now) const
{
    constexpr auto kLongestAnswer = 1s; // chosen: no camera keeps packets for longer
    return asks == 0 && IsAsking() && IsSentAgain(header) && !gvsp::HasLeader(header.format) &&
           m_begunAnewAt && now - *m_begunAnewAt < kLongestAnswer;
}

/// Of chunk data only the blocks before tell how much comes behind the picture.
std::size_t BlockAssembler::WantedBytes(const BlockGeometry& geometry) const
{
    if (geometry.code != VxError::Ok)
        return 0;
    const bool isChunkData = geometry.payloadType.Type() == gvsp::PayloadType::kChunkData;
    return isChunkData ? std::max(geometry.imageBytes, m_chunkDataBytes) : geometry.imageBytes;
}

OpenBlock& BlockAssembler::Open(const gvsp::Packet& packet, Time now)
{
    if (m_openCount >= m_mostOpen)
        FinishOldest(now);
    const gvsp::PacketHeader& header = packet.header;
    m_idMode = header.idMode;

    OpenBlock* const block = m_open[m_openCount];
    block->Begin({header.blockId, header.idMode, m_stepBytes, m_lastGeometry, m_lastEndId, m_hasChunkLists,
                  m_believed, now});
    const BlockGeometry geometry =
        gvsp::HasLeader(header.format) ? ReadGeometry(packet.data, m_cameraPicture) : m_lastGeometry;
    block->wantedBytes = WantedBytes(geometry);
    block->SetBuffer(m_sink.TakeFree(block->wantedBytes));

    // Sorted in: a block that was overtaken comes in front of the one that overtook it.
    std::size_t place = m_openCount++;
    while (place > 0 && gvsp::BlockIdStep(m_open[place - 1]->BlockId(), header.blockId, m_idMode) < 0) {
        std::swap(m_open[place], m_open[place - 1]);
        --place;
    }
    return *block;
}

/// A block whose leader did not come first has a buffer for a picture like the one before. The sink may have
/// a larger one.
void BlockAssembler::MakeRoom(OpenBlock& block, const BlockGeometry& geometry, Time now)
{
    const std::size_t wanted = WantedBytes(geometry);
    if (!block.HasBuffer() || wanted <= block.wantedBytes || geometry.memoryBytes <= block.Capacity())
        return;
    block.wantedBytes = wanted;
    BlockBuffer* const larger = m_sink.TakeFree(wanted);
    if (larger == nullptr)
        return;
    BlockBuffer* unused = larger;
    try {
        if (larger->memory.size() >= geometry.memoryBytes)
            unused = &block.MoveTo(*larger, now);
    } catch (const std::bad_alloc&) {
        m_sink.GiveBack(*larger); // the block has still the other one
        throw;
    }
    m_sink.GiveBack(*unused);
}

std::size_t BlockAssembler::Expect(std::span<ExpectedPacket> expected) const
{
    if (m_openCount == 0)
        return 0;
    const OpenBlock& block = *m_open[m_openCount - 1];
    std::size_t count = 0;
    std::uint32_t packetId = block.HighestId();
    while (count < expected.size()) {
        const auto place = block.PlaceOf(++packetId);
        if (place.empty())
            break;
        expected[count++] = {block.BlockId(), packetId, place};
    }
    return count;
}

std::optional<PacketGathering::Progress> BlockAssembler::NewestProgress() const
{
    if (m_openCount == 0)
        return std::nullopt;
    const OpenBlock& block = *m_open[m_openCount - 1];
    const bool goesOn =
        block.HasLeader() && block.IsStored() && block.PayloadPackets() > 0 && !block.IsEnded();
    if (!goesOn || block.EndId() == 0)
        return std::nullopt;
    return PacketGathering::Progress{block.BlockId(), block.HighestId(), block.EndId(), block.StepBytes(),
                                     block.LastAdvance()};
}

/// The camera has begun anew: nothing more comes of the blocks that are open.
void BlockAssembler::BeginAnew(Time now)
{
    const bool isFirst = !m_lastFinished;
    while (m_openCount > 0) {
        // The end of an acquisition that was over before this stream began is no block of it.
        const bool isRemains = isFirst && !m_open[0]->HasLeader();
        if (!isRemains) {
            FinishOldest(now);
            continue;
        }
        if (BlockBuffer* const buffer = TakeOldest().Finish(m_lastGeometry))
            m_sink.GiveBack(*buffer);
    }
    ForgetAcquisition();
    m_begunAnewAt = now;
}

/// The next block may have any id, and its chunks may be others.
void BlockAssembler::ForgetAcquisition()
{
    m_lastFinished.reset();
    m_restarts.Forget();
    m_hasChunkLists = false;
    ForgetEnds();
    m_isAnswering = false;
    m_policy.BeginAnew();
}

void BlockAssembler::ForgetEnds()
{
    m_believed = {};
    m_isSilenceBelieved = false;
    m_lastCutEnd = 0;
    m_sameCutEnds = 0;
}

/// @return  the oldest open block, which is not open any more
OpenBlock& BlockAssembler::TakeOldest()
{
    OpenBlock* const block = m_open[0];
    std::rotate(m_open.begin(), m_open.begin() + 1,
                m_open.begin() + static_cast<std::ptrdiff_t>(m_openCount));
    --m_openCount;
    return *block;
}

void BlockAssembler::FinishOldest(Time now)
{
    OpenBlock* const block = &TakeOldest();

    if (m_lastFinished) {
        const std::int64_t step = gvsp::BlockIdStep(*m_lastFinished, block->BlockId(), m_idMode);
        if (step > 1 && step <= kLargestGap)
            m_counters.blocksLost.Add(static_cast<std::uint64_t>(step - 1)); // positive
    }
    m_lastFinished = block->BlockId();
    m_restarts.OnFinished(*block, now);
    m_counters.packetsWrongSize.Add(block->WithdrawnPackets());
    LearnFrom(*block);

    BlockBuffer* const buffer = block->Finish(m_lastGeometry);
    if (buffer == nullptr) {
        m_counters.blocksUnbuffered.Add();
        return;
    }
    buffer->info.took = now - block->FirstPacketTime();
    CountBlock(buffer->info);
    m_sink.Deliver(*buffer);
}

void BlockAssembler::LearnFrom(const OpenBlock& block)
{
    if (block.PayloadPackets() > 0 && block.IsStored())
        m_stepBytes = block.StepBytes();
    if (block.HasLeader() && block.Geometry().code == VxError::Ok)
        m_lastGeometry = block.Geometry();
    LearnEnd(block);
    if (!block.HasLeader() || !block.IsStored() || !block.IsDone())
        return;
    if (block.Geometry().payloadType.Type() == gvsp::PayloadType::kChunkData)
        m_chunkDataBytes = block.PayloadBytes();
    m_hasChunkLists = m_hasChunkLists || block.HasChunkList();
    m_lastEndId = block.EndId();
    constexpr int kForgetting = 8; // chosen: after some dozen blocks a long pause counts no more
    m_longestPause = std::max(block.LongestPause(), m_longestPause - m_longestPause / kForgetting);
}

/// A camera that tells more chunks than it sends, or fills its last packets up, must not lose its pictures.
void BlockAssembler::LearnEnd(const OpenBlock& block)
{
    // Where the last packet can be asked for, only that tells whether it was cut; but not of a camera that
    // has never answered.
    const bool isAsked = IsAsking() && !block.IsDone();
    const bool isUnanswered = isAsked && !m_isAnswering && block.AsksForLast() > 0;
    const std::uint64_t end = isAsked && !isUnanswered ? 0 : block.CutEnd();
    m_sameCutEnds = end == m_lastCutEnd ? m_sameCutEnds + 1 : 1;
    m_lastCutEnd = end;
    m_isSilenceBelieved = m_isSilenceBelieved || (isUnanswered && end != 0);
    m_believed.areAll = m_believed.areAll || (block.IsDone() && block.IsEndBelieved());
    m_believed.same = m_sameCutEnds >= kSameCutEnds ? end : 0;
    if (const auto areJoined = block.AreLinesJoined())
        m_believed.joinedFormat = *areJoined ? block.Geometry().pixelFormat : 0;
    for (std::size_t i = 0; i < m_openCount; ++i)
        m_open[i]->Believe(m_believed);
}

/// Whether the camera may have sent the packet because it was asked to. Not every one marks such packets:
/// what comes late may be one.
bool BlockAssembler::IsAnswer(const gvsp::PacketHeader& header, const OpenBlock* block) const
{
    return IsSentAgain(header) || IsAboutResend(header.status) || block == nullptr ||
           block->AsksFor(header.packetId) > 0;
}

/// From now on only what it is asked for tells whether a last packet was cut.
void BlockAssembler::NoteThatItAnswers()
{
    m_isAnswering = true;
    if (!m_isSilenceBelieved)
        return;
    ForgetEnds();
    for (std::size_t i = 0; i < m_openCount; ++i)
        m_open[i]->Believe(m_believed);
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
    ForgetAcquisition();
}

} // namespace receive
