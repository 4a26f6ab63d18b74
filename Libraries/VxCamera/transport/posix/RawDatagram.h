#pragma once

#include "VxCamera/transport/Ipv4Endpoint.h"

#include <cstddef>
#include <optional>
#include <span>

namespace transport {

/// A UDP datagram as it is found in an IP packet.
struct RawDatagram {
    std::span<const std::byte> payload; ///< borrowed from the packet; as much as is there
    std::size_t payloadBytes = 0;       ///< of the whole datagram
    Ipv4Endpoint sender;
};

/// Who has looked at the checksum of a UDP datagram.
enum class UdpChecksum {
    Unchecked,
    Trusted, ///< the network card has checked it, or the packet never left this machine
};

/// @param packet  IPv4, from its first byte on; what follows behind its length is padding
/// @return  none: it is no whole UDP datagram, or a checksum is wrong
[[nodiscard]] std::optional<RawDatagram> ParseUdp(std::span<const std::byte> packet, UdpChecksum checksum);

/// The same for the beginning of a packet, of which the rest lies elsewhere. Its UDP checksum is not looked
/// at.
/// @param packet  IPv4, from its first byte on
/// @return  with as much of the payload as is there; none: no UDP datagram begins here
[[nodiscard]] std::optional<RawDatagram> ParseBeginningOfUdp(std::span<const std::byte> packet);

} // namespace transport
