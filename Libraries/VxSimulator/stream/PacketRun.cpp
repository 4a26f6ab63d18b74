#include "VxSimulator/stream/PacketRun.h"

#include <algorithm>

namespace simulator {

namespace {

// Fixed by UDP: neither a datagram nor what the system takes as a run of them is longer.
constexpr std::size_t kMostBytes = 65507;

} // namespace

PacketRun::PacketRun(std::size_t mostPackets) : m_mostPackets(mostPackets), m_memory(kMostBytes) {}

bool PacketRun::Takes(std::span<const std::byte> packet) const
{
    if (m_count == 0)
        return true;
    return m_count < m_mostPackets && !m_isEnded && packet.size() <= m_packetBytes &&
           m_size + packet.size() <= kMostBytes;
}

void PacketRun::Add(std::span<const std::byte> packet)
{
    std::ranges::copy(packet, std::span(m_memory).subspan(m_size).begin());
    if (m_count == 0)
        m_packetBytes = packet.size();
    m_isEnded = packet.size() < m_packetBytes;
    m_size += packet.size();
    ++m_count;
}

void PacketRun::Clear()
{
    m_size = 0;
    m_count = 0;
    m_isEnded = false;
}

} // namespace simulator
