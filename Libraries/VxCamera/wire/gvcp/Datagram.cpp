#include "VxCamera/wire/gvcp/Datagram.h"

#include <algorithm>

namespace gvcp {

Datagram::Datagram(std::span<const std::byte> bytes) : m_size(std::min(bytes.size(), kMaxDatagramBytes))
{
    std::ranges::copy(bytes.first(m_size), m_bytes.begin());
}

} // namespace gvcp
