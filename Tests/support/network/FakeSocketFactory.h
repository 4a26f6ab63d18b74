#pragma once

#include "VxCamera/transport/ISocketFactory.h"
#include "VxCamera/transport/IUdpSocketGroup.h"
#include "support/network/FakeUdpSocket.h"
#include "support/network/FakeUdpSocketGroup.h"

#include <set>
#include <utility>
#include <vector>

/// Opens fake sockets that all have the same peer, alone or in groups.
///
/// Owner:  the test; outlives its groups. Borrows the clock.
/// Thread: one.
class FakeSocketFactory final : public transport::ISocketFactory, public transport::ISocketGroupFactory {
public:
    FakeSocketFactory(FakeClock& clock, FakeUdpSocket::Peer peer) : m_clock(clock), m_peer(std::move(peer)) {}

    VxExpected<std::unique_ptr<transport::IUdpSocket>>
    OpenUdp(const transport::UdpSocketOptions& options) override
    {
        auto socket = Open(options);
        if (!socket)
            return socket.Error();
        return std::unique_ptr<transport::IUdpSocket>(std::move(*socket));
    }

    VxExpected<std::unique_ptr<transport::IUdpSocketGroup>> MakeGroup() override
    {
        const auto open = [this](const transport::UdpSocketOptions& options) { return Open(options); };
        return std::unique_ptr<transport::IUdpSocketGroup>(
            std::make_unique<FakeUdpSocketGroup>(m_clock, open));
    }

    std::vector<transport::UdpSocketOptions> opened;
    std::set<std::uint16_t> portsInUse;
    FakeUdpSocket* lastSocket = nullptr; ///< borrowed from its owner

private:
    VxExpected<std::unique_ptr<FakeUdpSocket>> Open(const transport::UdpSocketOptions& options)
    {
        opened.push_back(options);
        if (portsInUse.contains(options.local.port))
            return VxResult(VxError::PortInUse, "in use");
        transport::Ipv4Endpoint local = options.local;
        if (local.port == 0)
            local.port = ++m_lastPort;
        auto socket = std::make_unique<FakeUdpSocket>(m_clock, local, m_peer);
        lastSocket = socket.get();
        return socket;
    }

    FakeClock& m_clock;
    const FakeUdpSocket::Peer m_peer;
    std::uint16_t m_lastPort = 40000;
};
