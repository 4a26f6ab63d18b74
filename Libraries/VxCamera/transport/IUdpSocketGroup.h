#pragma once

#include "VxBase/VxExpected.h"
#include "VxBase/VxResult.h"
#include "VxCamera/transport/ISocketFactory.h"
#include "VxCamera/transport/IUdpSocket.h"

#include <chrono>
#include <memory>

namespace transport {

/// UDP sockets that one thread waits for together.
///
/// Owner:  whoever made it; owns its sockets.
/// Thread: one; its sockets can be woken from any.
class IUdpSocketGroup {
public:
    IUdpSocketGroup(const IUdpSocketGroup&) = delete;
    IUdpSocketGroup& operator=(const IUdpSocketGroup&) = delete;
    virtual ~IUdpSocketGroup() = default;

    /// Opens one more socket.
    /// @return  borrowed, until it is closed or the group ends; failures as ISocketFactory has them
    virtual VxExpected<IUdpSocket*> OpenUdp(const UdpSocketOptions& options) = 0;

    /// Closes a socket of this group, for instance one that fails and would end every wait.
    virtual void Close(const IUdpSocket& socket) = 0;

    /// Waits until the Receive of one of the sockets would not wait: a datagram is there, or a Wake.
    ///
    /// @param timeout  longest wait; 0 = only looks. Without sockets all of it.
    /// @return  OK: receive from each socket with no time-out to learn from which; TIMEOUT; NETWORK_ERROR
    virtual VxResult WaitForAny(std::chrono::microseconds timeout) = 0;

protected:
    IUdpSocketGroup() = default;
};

/// Makes groups of sockets: the real ones, or those of a test.
///
/// Owner:  the composition root; outlives nothing: groups live on without it.
/// Thread: any.
class ISocketGroupFactory {
public:
    ISocketGroupFactory(const ISocketGroupFactory&) = delete;
    ISocketGroupFactory& operator=(const ISocketGroupFactory&) = delete;
    virtual ~ISocketGroupFactory() = default;

    /// A group without sockets.
    virtual VxExpected<std::unique_ptr<IUdpSocketGroup>> MakeGroup() = 0;

protected:
    ISocketGroupFactory() = default;
};

} // namespace transport
