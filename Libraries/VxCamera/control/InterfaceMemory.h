#pragma once

#include "VxBase/VxMutex.h"
#include "VxCamera/transport/Ipv4Address.h"

#include <array>
#include <cstddef>
#include <optional>

namespace control {

/// On which of this machine's interfaces each camera answered last. A route cannot tell where two interfaces
/// are in one subnet, as they are with link-local addresses.
///
/// Owner:  the process: a stream is opened by another object than the one that found the camera.
/// Thread: any.
class InterfaceMemory {
public:
    /// @param via  the interface's address
    void Remember(transport::Ipv4Address camera, transport::Ipv4Address via);

    /// @return  the address of the interface, which may be gone meanwhile
    [[nodiscard]] std::optional<transport::Ipv4Address> Find(transport::Ipv4Address camera) const;

private:
    struct Entry {
        transport::Ipv4Address camera; ///< 0.0.0.0 = free
        transport::Ipv4Address via;
    };

    // Chosen: more cameras than one program uses; the oldest makes room.
    static constexpr std::size_t kEntries = 64;

    mutable VxMutex m_mutex;
    std::array<Entry, kEntries> m_entries VX_GUARDED_BY(m_mutex){};
    std::size_t m_next VX_GUARDED_BY(m_mutex) = 0;
};

} // namespace control
