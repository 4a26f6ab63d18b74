#pragma once

#include "VxBase/VxMutex.h"

#include "VxCamera/transport/IUdpSocket.h"

#include <memory>

namespace simulator {

/// A socket that can be moved to another address while others use it: what a camera has whose address
/// changes.
///
/// Owner:  CameraSession.
/// Thread: as IUdpSocket; MoveTo from any thread.
class MovableSocket final : public transport::IUdpSocket {
public:
    /// @param socket  where it is at first
    explicit MovableSocket(std::unique_ptr<transport::IUdpSocket> socket) : m_socket(std::move(socket)) {}

    /// Uses this socket from now on. A Receive that waits at the old one ends with ABORTED.
    void MoveTo(std::unique_ptr<transport::IUdpSocket> socket);

    VxResult SendTo(std::span<const std::byte> bytes, const transport::Ipv4Endpoint& destination) override
    {
        return Socket()->SendTo(bytes, destination);
    }
    std::size_t SendRun(std::span<const std::byte> bytes, std::size_t segmentBytes,
                        const transport::Ipv4Endpoint& destination) override
    {
        return Socket()->SendRun(bytes, segmentBytes, destination);
    }
    VxExpected<std::size_t> Receive(std::span<transport::Datagram> datagrams,
                                    std::chrono::microseconds timeout) override
    {
        return Socket()->Receive(datagrams, timeout);
    }
    void Gather(std::chrono::microseconds duration) override { Socket()->Gather(duration); }
    void Wake() override { Socket()->Wake(); }
    [[nodiscard]] transport::Ipv4Endpoint LocalEndpoint() const override { return Socket()->LocalEndpoint(); }
    [[nodiscard]] std::size_t ReceiveBufferBytes() const override { return Socket()->ReceiveBufferBytes(); }
    VxResult JoinGroup(transport::Ipv4Address group, transport::Ipv4Address interfaceAddress) override
    {
        return Socket()->JoinGroup(group, interfaceAddress);
    }
    VxResult LeaveGroup(transport::Ipv4Address group, transport::Ipv4Address interfaceAddress) override
    {
        return Socket()->LeaveGroup(group, interfaceAddress);
    }

private:
    [[nodiscard]] std::shared_ptr<transport::IUdpSocket> Socket() const;

    mutable VxMutex m_mutex;
    // Shared with those who are inside a method of it: it may be replaced meanwhile.
    std::shared_ptr<transport::IUdpSocket> m_socket VX_GUARDED_BY(m_mutex);
};

} // namespace simulator
