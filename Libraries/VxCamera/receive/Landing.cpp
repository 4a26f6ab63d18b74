#include "VxCamera/receive/Landing.h"

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
        slot.body = {};
    return m_slots;
}

std::span<transport::Datagram> Landing::Prepare(const BlockAssembler& assembler)
{
    const std::size_t headBytes = gvsp::HeaderBytes(assembler.IdMode());
    m_expectedCount = assembler.Expect(m_expected);
    for (std::size_t i = 0; i < kSlots; ++i) {
        m_slots[i].headBytes = headBytes;
        m_slots[i].body = i < m_expectedCount ? m_expected[i].place : std::span<std::byte>();
    }
    return m_slots;
}

void Landing::Settle(std::size_t received,
                     const std::function<bool(const transport::Ipv4Endpoint&)>& isOfCamera)
{
    // From the last one on: a packet that is moved goes to a later packet's landing place, and that one has
    // left it by then.
    for (std::size_t i = received; i-- > 0;)
        SettleOne(i, received, isOfCamera(m_slots[i].sender));
}

void Landing::SettleOne(std::size_t index, std::size_t received, bool isOfCamera)
{
    transport::Datagram& slot = m_slots[index];
    if (!slot.body.empty() && isOfCamera) {
        m_packets[index] = gvsp::ParsePacket(slot.Head());
        if (const auto target = TargetOf(index, received); !target.empty()) {
            if (target.data() != slot.body.data())
                std::memcpy(target.data(), slot.body.data(), target.size());
            slot.body = target;
            m_packets[index]->data = target;
            return;
        }
    }
    slot.Join();
    m_packets[index] = gvsp::ParsePacket(slot.Bytes());
}

/// @return  where the data of a packet belong that landed in the place of this index; empty when they take
/// the common way
std::span<std::byte> Landing::TargetOf(std::size_t index, std::size_t received) const
{
    const auto& packet = m_packets[index];
    const transport::Datagram& slot = m_slots[index];
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
    if (slot.size != slot.headBytes + place.size())
        return {};
    // The packet that landed there, and stays there, has the same id: this one is its duplicate.
    const bool isTaken = target > index && target < received && m_slots[target].body.data() == place.data();
    return isTaken ? std::span<std::byte>() : place;
}

} // namespace receive
