#pragma once

#include "VxBase/VxExpected.h"
#include "VxCamera/transport/IUdpSocket.h"
#include "VxCamera/transport/Ipv4Endpoint.h"

#include <cstddef>
#include <memory>

namespace transport {

/// Whether others may bind the same port at the same time.
enum class PortSharing {
    Exclusive, ///< for unicast: a second socket gets PORT_IN_USE
    Shared,    ///< for multicast groups: each socket receives every datagram
};

struct UdpSocketOptions {
    Ipv4Endpoint local; ///< 0.0.0.0 = every interface; port 0 = any free one
    PortSharing sharing = PortSharing::Exclusive;
    bool isBroadcastAllowed = false;    ///< SendTo may address a broadcast
    bool isSendingAtOnce = false;       ///< SendTo fails rather than wait for a full queue
    std::size_t receiveBufferBytes = 0; ///< asked for, the system may grant less; 0 = the system's default
    Ipv4Address multicastInterface; ///< through which SendTo reaches groups; 0.0.0.0 = the system's choice
    /// Number of the interface through which SendTo goes, whatever the system's routes say; 0 = as they say.
    std::uint32_t interfaceIndex = 0;
    /// Also takes what is broadcast to the socket's port. Some systems hand that only to sockets that are not
    /// bound to an address; local stays the address from which SendTo sends.
    bool isBroadcastReceived = false;
    /// Receive may hand over several datagrams as one, where the system can; see Datagram.
    bool isCoalescing = false;
    /// Much will come: where the system and the rights of this process allow, datagrams are taken from memory
    /// that is shared with the system (Linux, CAP_NET_RAW). Only for a socket that is coalescing and bound to
    /// an address.
    bool isRingWanted = false;
    /// Receive waits for a few milliseconds, and more than a part of one matters: where the system's own
    /// waits are coarser (Windows), the socket keeps a timer.
    bool hasShortWaits = false;
};

/// Opens sockets: the real ones, or those of a test.
///
/// Owner:  the composition root; outlives nothing: sockets live on without it.
/// Thread: any.
class ISocketFactory {
public:
    ISocketFactory(const ISocketFactory&) = delete;
    ISocketFactory& operator=(const ISocketFactory&) = delete;
    virtual ~ISocketFactory() = default;

    /// @return  PORT_IN_USE; NETWORK_ERROR with the system's reason (for instance no interface has this
    /// address)
    virtual VxExpected<std::unique_ptr<IUdpSocket>> OpenUdp(const UdpSocketOptions& options) = 0;

protected:
    ISocketFactory() = default;
};

} // namespace transport
