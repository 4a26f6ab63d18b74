#pragma once

#include "VxCamera/transport/ISocketFactory.h"
#include "VxCamera/transport/win/WinSystem.h"

#include <atomic>

namespace transport {

/// A UDP socket of Windows. Owner and thread: see IUdpSocket.
class WinUdpSocket final : public IUdpSocket {
public:
    /// What a socket is made of; closed in the reverse of this order.
    struct Parts {
        WinsockUse winsock;
        KernelHandle readable; // signalled by the system when data arrives; resets itself
        KernelHandle woken;    // signalled by Wake; resets itself
        SocketHandle socket;
    };

    [[nodiscard]] static VxExpected<std::unique_ptr<IUdpSocket>> Open(const UdpSocketOptions& options);

    WinUdpSocket(Parts parts, const Ipv4Endpoint& local, bool isSendingAtOnce);

    VxResult SendTo(std::span<const std::byte> bytes, const Ipv4Endpoint& destination) override;
    VxExpected<std::size_t> Receive(std::span<Datagram> datagrams,
                                    std::chrono::microseconds timeout) override;
    void Wake() override;
    [[nodiscard]] Ipv4Endpoint LocalEndpoint() const override { return m_local; }
    [[nodiscard]] std::size_t ReceiveBufferBytes() const override;
    VxResult JoinGroup(Ipv4Address group, Ipv4Address interfaceAddress) override;
    VxResult LeaveGroup(Ipv4Address group, Ipv4Address interfaceAddress) override;

private:
    VxExpected<std::size_t> ReceiveWhatIsThere(std::span<Datagram> datagrams);
    VxResult ReceiveOne(Datagram& datagram);
    VxResult WaitForData(std::chrono::nanoseconds timeout);
    VxResult ChangeMembership(int option, Ipv4Address group, Ipv4Address interfaceAddress);

    const Parts m_parts;
    const Ipv4Endpoint m_local;
    const bool m_isSendingAtOnce;
    std::atomic<bool> m_isWoken =
        false; // set before the event is, so that a consumed wake leaves no second one
};

} // namespace transport
