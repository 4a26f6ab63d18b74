#include "system/ListeningNetwork.h"

#include "VxCamera/transport/SystemNetwork.h"

#include <utility>

namespace {

using transport::Datagram;
using transport::Ipv4Address;
using transport::Ipv4Endpoint;
using transport::IUdpSocket;

/// A socket of the system, with notes of what it receives.
///
/// Owner:  the camera.
/// Thread: as the socket's.
class ListeningSocket final : public IUdpSocket {
public:
    ListeningSocket(std::unique_ptr<IUdpSocket> socket, ListeningNetwork& network)
        : m_socket(std::move(socket)), m_network(network)
    {
    }

    VxResult SendTo(std::span<const std::byte> bytes, const Ipv4Endpoint& destination) override
    {
        return m_socket->SendTo(bytes, destination);
    }
    VxExpected<std::size_t> Receive(std::span<Datagram> datagrams, std::chrono::microseconds timeout) override
    {
        auto received = m_socket->Receive(datagrams, timeout);
        for (std::size_t i = 0; received && i < *received; ++i)
            Note(datagrams[i]);
        return received;
    }
    void Gather(std::chrono::microseconds duration) override { m_socket->Gather(duration); }
    void Wake() override { m_socket->Wake(); }
    [[nodiscard]] Ipv4Endpoint LocalEndpoint() const override { return m_socket->LocalEndpoint(); }
    [[nodiscard]] std::size_t ReceiveBufferBytes() const override { return m_socket->ReceiveBufferBytes(); }
    VxResult JoinGroup(Ipv4Address group, Ipv4Address interfaceAddress) override
    {
        return m_socket->JoinGroup(group, interfaceAddress);
    }
    VxResult LeaveGroup(Ipv4Address group, Ipv4Address interfaceAddress) override
    {
        return m_socket->LeaveGroup(group, interfaceAddress);
    }

private:
    void Note(const Datagram& datagram)
    {
        // Fixed by the protocol: the code of a command lies in the third and fourth byte, high byte first.
        const auto bytes = datagram.Head();
        if (bytes.size() < gvcp::kHeaderBytes)
            return;
        const auto code = static_cast<std::uint16_t>(std::to_integer<unsigned>(bytes[2]) << 8 |
                                                     std::to_integer<unsigned>(bytes[3]));
        m_network.Note({datagram.sender, static_cast<gvcp::Command>(code)});
    }

    std::unique_ptr<IUdpSocket> m_socket;
    ListeningNetwork& m_network;
};

} // namespace

ListeningNetwork::ListeningNetwork() : m_system(transport::MakeSystemSocketFactory()) {}

ListeningNetwork::~ListeningNetwork() = default;

VxExpected<std::unique_ptr<IUdpSocket>> ListeningNetwork::OpenUdp(const transport::UdpSocketOptions& options)
{
    auto opened = m_system->OpenUdp(options);
    if (!opened)
        return opened;
    return std::unique_ptr<IUdpSocket>(std::make_unique<ListeningSocket>(std::move(*opened), *this));
}

std::vector<ListeningNetwork::Received> ListeningNetwork::Commands() const
{
    const std::lock_guard lock(m_mutex);
    return m_commands;
}

void ListeningNetwork::Note(const Received& command)
{
    const std::lock_guard lock(m_mutex);
    m_commands.push_back(command);
}
