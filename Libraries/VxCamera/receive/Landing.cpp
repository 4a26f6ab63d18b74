#include "VxCamera/receive/Landing.h"

#include <algorithm>
#include <cstring>
#include <utility>

namespace receive {

namespace {

// Fixed by UDP: no datagram is longer.
constexpr std::size_t kSlotBytes = 64 * 1024;

template <std::size_t... indices>
std::array<VxExpected<gvsp::Packet>, sizeof...(indices)> NoPackets(std::index_sequence<indices...>)
{
    return {((void)indices, VxExpected<gvsp::Packet>(gvsp::Packet{}))...};
}

} // namespace

Landing::Landing()
    : m_memory(new std::byte[kSlots * kSlotBytes]), m_packets(NoPackets(std::make_index_sequence<kSlots>()))
{
    for (std::size_t i = 0; i < kSlots; ++i)
        m_slots[i].memory = {m_memory.get() + i * kSlotBytes, kSlotBytes};
}

std::span<transport::Datagram> Landing::Plain()
{
    m_expectedCount = 0;
    for (transport::Datagram& slot : m_slots)
        slot.bodies = {};
    return m_slots;
}

std::span<transport::Datagram> Landing::Prepare(const BlockAssembler& assembler)
{
    const std::size_t headBytes = gvsp::HeaderBytes(assembler.IdMode());
    m_expectedCount = assembler.Expect(m_expected);
    m_isOfRuns = m_areRunsNext;
    for (std::size_t i = 0; i < m_expectedCount; ++i)
        m_places[i] = m_expected[i].place;
    m_landedAt.fill({});
    if (m_isOfRuns) {
        SpreadRun(headBytes);
        return std::span(m_slots).first(1);
    }
    const bool fits = m_expectedCount > 0 && headBytes + m_places[0].size() <= kSlotBytes;
    for (std::size_t i = 0; i < kSlots; ++i) {
        m_slots[i].headBytes = headBytes;
        m_slots[i].bodies = std::span(m_places).subspan(i, fits && i < m_expectedCount ? 1 : 0);
    }
    return m_slots;
}

/// Prepares the first slot for as many packets as one datagram can bring.
void Landing::SpreadRun(std::size_t headBytes)
{
    std::size_t count = 0;
    for (std::size_t bytes = 0; count < m_expectedCount; ++count) {
        bytes += headBytes + m_places[count].size();
        if (bytes > kSlotBytes)
            break;
    }
    m_slots[0].headBytes = headBytes;
    m_slots[0].bodies = std::span(m_places).first(count);
}

void Landing::Settle(std::size_t received,
                     const std::function<bool(const transport::Ipv4Endpoint&)>& isOfCamera)
{
    // From the last one on: a packet that is moved goes to a later packet's landing place, and that one has
    // left it by then.
    for (std::size_t i = received; i-- > 0;)
        SettleSlot(i, isOfCamera(m_slots[i].sender));
    LearnRuns(received);
}

void Landing::SettleSlot(std::size_t slotIndex, bool isOfCamera)
{
    transport::Datagram& slot = m_slots[slotIndex];
    if (slot.bodies.empty())
        return;
    const std::size_t step = slot.headBytes + slot.bodies.front().size();
    const bool isAsSpread = slot.segmentBytes == 0 ? slot.size <= step : slot.segmentBytes == step;
    if (!isOfCamera || !isAsSpread) {
        slot.Join();
        return;
    }
    for (std::size_t k = std::min(slot.SegmentCount(), slot.bodies.size()); k-- > 0;)
        SettleSegment(slot, k, FirstPlaceOf(slotIndex) + k);
}

void Landing::SettleSegment(const transport::Datagram& slot, std::size_t segment, std::size_t index)
{
    const auto bytes = slot.Segment(segment);
    m_packets[index] = gvsp::ParsePacket(bytes.first(std::min(bytes.size(), slot.headBytes)));
    const auto target = TargetOf(slot, bytes.size(), index);
    if (target.empty()) {
        slot.Join(segment);
        m_packets[index] = gvsp::ParsePacket(bytes);
        return;
    }
    if (target.data() != m_places[index].data())
        std::memcpy(target.data(), m_places[index].data(), target.size());
    m_landedAt[index] = target;
    m_packets[index]->data = target;
}

/// @return  where the data of a packet belong that landed in the place of this index; empty when they take
/// the common way
std::span<std::byte> Landing::TargetOf(const transport::Datagram& slot, std::size_t bytes,
                                       std::size_t index) const
{
    const auto& packet = m_packets[index];
    if (!packet || slot.isTruncated)
        return {};
    const gvsp::PacketHeader& header = packet->header;
    const ExpectedPacket& expected = m_expected[index];
    const bool isPayload = header.format == gvsp::PacketFormat::Payload && gvcp::IsGood(header.status) &&
                           gvsp::HeaderBytes(header.idMode) == slot.headBytes;
    if (!isPayload || header.blockId != expected.blockId || header.packetId < expected.packetId)
        return {};
    const std::size_t target = index + (header.packetId - expected.packetId);
    if (target >= m_expectedCount)
        return {};
    const auto place = m_expected[target].place;
    // What is longer than the place that it landed in lies partly behind it.
    if (bytes != slot.headBytes + place.size() || place.size() > m_places[index].size())
        return {};
    // The packet that landed there, and stays there, has the same id: this one is its duplicate.
    const bool isTaken = target > index && m_landedAt[target].data() == place.data();
    return isTaken ? std::span<std::byte>() : place;
}

/// Decides from what has come whether the system hands over runs of packets.
void Landing::LearnRuns(std::size_t received)
{
    m_lateDatagrams += received;
    for (std::size_t i = 0; i < received; ++i)
        m_latePackets += m_slots[i].SegmentCount();
    // Chosen: the first packets of a block come alone even where the others come in runs.
    constexpr std::size_t kEnough = 64;
    const bool areRuns =
        m_latePackets >= 2 * m_lateDatagrams; // chosen: below that a slot for each costs less
    if (!areRuns && m_areRunsNext && m_lateDatagrams < kEnough)
        return;
    m_areRunsNext = areRuns;
    m_lateDatagrams = 0;
    m_latePackets = 0;
}

} // namespace receive
