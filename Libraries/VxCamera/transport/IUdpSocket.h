#pragma once

#include "VxBase/VxExpected.h"
#include "VxBase/VxResult.h"
#include "VxCamera/transport/Datagram.h"
#include "VxCamera/transport/Ipv4Endpoint.h"

#include <algorithm>
#include <chrono>
#include <cstddef>
#include <span>

namespace transport {

/// A bound UDP socket.
///
/// Owner:  whoever opened it.
/// Thread: SendTo, Wake and what is constant from any thread; Receive from one thread at a time; the rest
///         before the first Receive or from the receiving thread. Nobody may be inside a method when it is
///         destroyed.
class IUdpSocket {
public:
    IUdpSocket(const IUdpSocket&) = delete;
    IUdpSocket& operator=(const IUdpSocket&) = delete;
    virtual ~IUdpSocket() = default;

    /// Sends one datagram; never waits for the network. While the system's queue is full it waits for a few
    /// milliseconds, unless the socket was opened not to.
    /// @return  NETWORK_ERROR with the system's reason (no route, message too long, ...)
    virtual VxResult SendTo(std::span<const std::byte> bytes, const Ipv4Endpoint& destination) = 0;

    /// Sends several datagrams, in as few calls of the system as it allows; how they arrive is the same. Each
    /// is tried, also behind one that cannot be sent.
    /// @param bytes  one datagram behind the other
    /// @param segmentBytes  length of each; the last one may be shorter. Not 0
    /// @return  how many of them were sent
    virtual std::size_t SendRun(std::span<const std::byte> bytes, std::size_t segmentBytes,
                                const Ipv4Endpoint& destination)
    {
        std::size_t sent = 0;
        while (!bytes.empty()) {
            const std::size_t size = std::min(segmentBytes, bytes.size());
            sent += SendTo(bytes.first(size), destination).IsOK() ? 1 : 0;
            bytes = bytes.subspan(size);
        }
        return sent;
    }

    /// Waits for at least one datagram, then takes as many as are there and as there is room for.
    ///
    /// Nothing a peer does (an unreachable port, a reset) ends reception.
    ///
    /// @param datagrams  not empty; the first N of them are filled
    /// @param timeout    longest wait; 0 = only what is there already
    /// @return  N, at least 1; TIMEOUT; ABORTED after a Wake; NETWORK_ERROR
    virtual VxExpected<std::size_t> Receive(std::span<Datagram> datagrams,
                                            std::chrono::microseconds timeout) = 0;

    /// Lets datagrams gather in the system for a while, so that the next Receive takes many at once.
    ///
    /// Ends early after a Wake, which stays for the next Receive. A system whose timers are too coarse
    /// returns at once. Thread: the receiving one.
    virtual void Gather(std::chrono::microseconds duration) = 0;

    /// Makes the Receive that waits, or else the next one, return ABORTED at once. Wakes before that Receive
    /// are one.
    virtual void Wake() = 0;

    /// Where the socket is bound; the port is never 0.
    [[nodiscard]] virtual Ipv4Endpoint LocalEndpoint() const = 0;

    /// Bytes that the system grants for datagrams waiting to be received (as the system counts them). From
    /// any thread.
    [[nodiscard]] virtual std::size_t ReceiveBufferBytes() const = 0;

    /// Whether datagrams wait in memory of this process, so that it costs little to receive many of them.
    /// Ends when the system turns out to bring none there. From any thread.
    [[nodiscard]] virtual bool IsBacklogNear() const { return false; }

    /// Joins or leaves a multicast group on the interface with this address; membership ends with the socket.
    virtual VxResult JoinGroup(Ipv4Address group, Ipv4Address interfaceAddress) = 0;
    virtual VxResult LeaveGroup(Ipv4Address group, Ipv4Address interfaceAddress) = 0;

protected:
    IUdpSocket() = default;
};

} // namespace transport
