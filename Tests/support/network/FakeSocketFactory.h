#pragma once

#include "VxCamera/transport/ISocketFactory.h"
#include "support/network/FakeUdpSocket.h"

#include <set>
#include <utility>
#include <vector>

/// Opens fake sockets that all have the same peer.
///
/// Owner:  the test. Borrows the clock.
/// Thread: one.
class FakeSocketFactory final : public transport::ISocketFactory {
public:
    FakeSocketFactory(FakeClock& clock, FakeUdpSocket::Peer peer) : m_clock(clock), m_peer(std::move(peer)) {}

    VxExpected<std::unique_ptr<transport::IUdpSocket>>
    OpenUdp(const transport::UdpSocketOptions& options) override
    {
        opened.push_back(options);
        if (portsInUse.contains(options.local.port))
            return VxResult(VxError::PortInUse, "in use");
        transport::Ipv4Endpoint local = options.local;
        if (local.port == 0)
            local.port = ++m_lastPort;
        auto socket = std::make_unique<FakeUdpSocket>(m_clock, local, m_peer);
        lastSocket = socket.get();
        return std::unique_ptr<transport::IUdpSocket>(std::move(socket));
    }

    std::vector<transport::UdpSocketOptions> opened;
    std::set<std::uint16_t> portsInUse;
    FakeUdpSocket* lastSocket = nullptr; ///< borrowed from its owner

private:
    FakeClock& m_clock;
    const FakeUdpSocket::Peer m_peer;
    std::uint16_t m_lastPort = 40000;
};
