#pragma once

#include "VxBase/VxResult.h"
#include "VxCamera/transport/Ipv4Endpoint.h"

#include <cstddef>
#include <cstdint>

namespace transport {

/// The datagrams that come to one endpoint through one interface.
struct DatagramRoute {
    std::uint32_t interfaceIndex = 0; ///< the system's number of it; not 0
    Ipv4Endpoint destination;         ///< address of the interface, and the port; neither is 0
};

/// Lets a packet socket take the datagrams of a route, and nothing else.
/// @return  NETWORK_ERROR with the system's reason
[[nodiscard]] VxResult TakeOnly(int socket, const DatagramRoute& route);

/// Lets a UDP socket take everything but the datagrams of a route: exactly what TakeOnly takes, of any
/// length.
/// @return  NETWORK_ERROR with the system's reason
[[nodiscard]] VxResult LeaveOut(int socket, const DatagramRoute& route);

/// Lets a UDP socket take everything again.
void LeaveOutNothing(int socket);

} // namespace transport
