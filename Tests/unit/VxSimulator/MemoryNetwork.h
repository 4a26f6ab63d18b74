#pragma once

#include "VxBase/VxMutex.h"

#include "VxCamera/transport/ISocketFactory.h"

#include <condition_variable>
#include <cstddef>
#include <deque>
#include <functional>
#include <memory>
#include <mutex>
#include <vector>

/// A network in memory: its sockets reach each other, and nothing else. Waiting really waits, so that threads
/// can be tested, but for nothing other than datagrams and Wake.
///
/// Owner:  the test; outlives its sockets.
/// Thread: any.
class MemoryNetwork final : public transport::ISocketFactory {
public:
    VxExpected<std::unique_ptr<transport::IUdpSocket>>
    OpenUdp(const transport::UdpSocketOptions& options) override
    {
        const VxLock lock(m_mutex);
        auto local = options.local;
        if (local.port == 0)
            local.port = ++m_lastPort;
        for (const Socket* each : m_sockets)
            if (each->LocalEndpoint() == local)
                return VxResult(VxError::PortInUse, "UDP port " + local.ToString() + " is in use");
        auto socket = std::make_unique<Socket>(*this, local);
        m_sockets.push_back(socket.get());
        return std::unique_ptr<transport::IUdpSocket>(std::move(socket));
    }

    [[nodiscard]] std::size_t OpenSockets() const
    {
        const VxLock lock(m_mutex);
        return m_sockets.size();
    }

private:
    class Socket final : public transport::IUdpSocket {
    public:
        Socket(MemoryNetwork& network, const transport::Ipv4Endpoint& local)
            : m_network(network), m_local(local)
        {
        }

        ~Socket() override
        {
            const VxLock lock(m_network.m_mutex);
            std::erase(m_network.m_sockets, this);
        }

        VxResult SendTo(std::span<const std::byte> bytes, const transport::Ipv4Endpoint& destination) override
        {
            const VxLock lock(m_network.m_mutex);
            for (Socket* each : m_network.m_sockets)
                if (each->m_local == destination)
                    each->m_queue.push_back({m_local, {bytes.begin(), bytes.end()}});
            m_network.m_changed.notify_all();
            return VxResult::Ok();
        }

        VxExpected<std::size_t> Receive(std::span<transport::Datagram> datagrams,
                                        std::chrono::microseconds timeout) override
        {
            std::unique_lock lock(m_network.m_mutex);
            m_network.m_changed.wait_for(lock, timeout, [this] { return m_isWoken || !m_queue.empty(); });
            if (m_isWoken) {
                m_isWoken = false;
                return VxError::Aborted;
            }
            if (m_queue.empty())
                return VxError::Timeout;
            const Arrival arrival = std::move(m_queue.front());
            m_queue.pop_front();
            auto& datagram = datagrams.front();
            datagram.size = std::min(arrival.bytes.size(), datagram.memory.size());
            std::copy_n(arrival.bytes.begin(), datagram.size, datagram.memory.begin());
            datagram.sender = arrival.sender;
            return std::size_t{1};
        }

        void Gather(std::chrono::microseconds) override {}
        void Wake() override
        {
            const VxLock lock(m_network.m_mutex);
            m_isWoken = true;
            m_network.m_changed.notify_all();
        }

        [[nodiscard]] transport::Ipv4Endpoint LocalEndpoint() const override { return m_local; }
        [[nodiscard]] std::size_t ReceiveBufferBytes() const override { return 0; }
        VxResult JoinGroup(transport::Ipv4Address, transport::Ipv4Address) override { return VxResult::Ok(); }
        VxResult LeaveGroup(transport::Ipv4Address, transport::Ipv4Address) override
        {
            return VxResult::Ok();
        }

    private:
        struct Arrival {
            transport::Ipv4Endpoint sender;
            std::vector<std::byte> bytes;
        };
        MemoryNetwork& m_network;
        const transport::Ipv4Endpoint m_local;
        std::deque<Arrival> m_queue; // under the network's mutex
        bool m_isWoken = false;      // under the network's mutex
    };

    mutable VxMutex m_mutex;
    std::condition_variable_any m_changed;
    std::vector<Socket*> m_sockets VX_GUARDED_BY(m_mutex);
    std::uint16_t m_lastPort VX_GUARDED_BY(m_mutex) = 30000;
};
