#include "VxSimulator/stream/FaultyPath.h"

#include "VxCamera/wire/gvsp/BlockLayout.h"

#include <utility>

namespace simulator {

FaultyPath::FaultyPath(const VxSimulatorFaults& faults, IRandomSource& random)
    : m_faults(faults), m_random(random)
{
}

bool FaultyPath::Happens(double share)
{
    return share > 0 && m_random.Next() < share;
}

bool FaultyPath::IsTooLarge(std::span<const std::byte> packet) const
{
    return m_faults.largestPacketBytes &&
           packet.size() + gvsp::kIpUdpHeaderBytes > *m_faults.largestPacketBytes;
}

bool FaultyPath::Loses(std::span<const std::byte> packet)
{
    const bool isDropped = IsTooLarge(packet) || Happens(m_faults.dropShare);
    m_dropped += isDropped ? 1 : 0;
    return isDropped;
}

void FaultyPath::Hold(std::span<const std::byte> packet, unsigned packets)
{
    // Counted down by this packet, too.
    m_held.push_back({std::vector<std::byte>(packet.begin(), packet.end()), packets + 1});
}

void FaultyPath::Flush(const Output& output)
{
    for (const Held& held : m_held)
        output(held.packet);
    m_held.clear();
}

void FaultyPath::Pass(std::span<const std::byte> packet, const Output& output)
{
    if (Loses(packet)) {
        // Gone.
    } else if (Happens(m_faults.delayShare)) {
        Hold(packet, kDelayPackets);
    } else if (Happens(m_faults.reorderShare)) {
        Hold(packet, 1);
    } else {
        output(packet);
        if (Happens(m_faults.duplicateShare))
            output(packet);
    }

    for (auto held = m_held.begin(); held != m_held.end();) {
        if (--held->packetsToGo > 0) {
            ++held;
            continue;
        }
        output(held->packet);
        held = m_held.erase(held);
    }
}

} // namespace simulator
