#include "VxCamera/control/InterfaceMemory.h"

#include <algorithm>

namespace control {

void InterfaceMemory::Remember(transport::Ipv4Address camera, transport::Ipv4Address via)
{
    if (camera.IsUnspecified())
        return;
    const VxLock lock(m_mutex);
    const auto known = std::ranges::find(m_entries, camera, &Entry::camera);
    if (known != m_entries.end()) {
        known->via = via;
        return;
    }
    m_entries[m_next] = {camera, via};
    m_next = (m_next + 1) % m_entries.size();
}

std::optional<transport::Ipv4Address> InterfaceMemory::Find(transport::Ipv4Address camera) const
{
    if (camera.IsUnspecified())
        return std::nullopt;
    const VxLock lock(m_mutex);
    const auto known = std::ranges::find(m_entries, camera, &Entry::camera);
    return known != m_entries.end() ? std::optional(known->via) : std::nullopt;
}

} // namespace control
