#pragma once

#include "VxCamera/transport/IUdpSocket.h"
#include "support/network/FakeClock.h"

#include <cstddef>
#include <deque>
#include <functional>
#include <optional>
#include <vector>

/// A socket whose peers are the test: waiting for a datagram moves the clock to its arrival or to the
/// time-out.
///
/// Owner:  the code under test, or the test. Borrows the clock.
/// Thread: one.
class FakeUdpSocket final : public transport::IUdpSocket {
public:
    /// Called for every datagram that is sent.
    using Peer = std::function<void(FakeUdpSocket& socket, std::span<const std::byte> bytes,
                                    const transport::Ipv4Endpoint& destination)>;

    FakeUdpSocket(FakeClock& clock, const transport::Ipv4Endpoint& local, Peer peer)
        : m_clock(clock), m_local(local), m_peer(std::move(peer))
    {
    }

    /// Lets a datagram arrive after a delay from now on.
    void Arrive(const transport::Ipv4Endpoint& sender, std::span<const std::byte> bytes,
                std::chrono::microseconds delay);

    VxResult SendTo(std::span<const std::byte> bytes, const transport::Ipv4Endpoint& destination) override;
    VxExpected<std::size_t> Receive(std::span<transport::Datagram> datagrams,
                                    std::chrono::microseconds timeout) override;
    void Gather(std::chrono::microseconds) override {}
    void Wake() override { m_isWoken = true; }
    [[nodiscard]] transport::Ipv4Endpoint LocalEndpoint() const override { return m_local; }
    [[nodiscard]] std::size_t ReceiveBufferBytes() const override { return 0; }
    VxResult JoinGroup(transport::Ipv4Address, transport::Ipv4Address interfaceAddress) override
    {
        joinedOn.push_back(interfaceAddress);
        return VxResult::Ok();
    }
    VxResult LeaveGroup(transport::Ipv4Address, transport::Ipv4Address) override { return VxResult::Ok(); }

    std::vector<transport::Ipv4Address> joinedOn; ///< addresses of the interfaces, in order

    /// From when on Receive does not wait; none = for ever, as things stand.
    [[nodiscard]] std::optional<IVxClock::Time> ReadyFrom() const;

    /// What Receive returns from now on, instead of receiving.
    void FailReceiving(const VxResult& result) { m_receiveResult = result; }

    /// What SendTo returns from now on, instead of sending.
    void FailSending(const VxResult& result) { m_sendResult = result; }
    /// Lets only one SendTo fail: after so many others.
    void FailOnceAfter(std::size_t sends) { m_sendsToFailure = sends; }

private:
    struct Arrival {
        IVxClock::Time time;
        transport::Ipv4Endpoint sender;
        std::vector<std::byte> bytes;
    };

    FakeClock& m_clock;
    const transport::Ipv4Endpoint m_local;
    const Peer m_peer;
    std::deque<Arrival> m_arrivals; // by time
    VxResult m_sendResult = VxResult::Ok();
    std::optional<std::size_t> m_sendsToFailure;
    VxResult m_receiveResult = VxResult::Ok();
    bool m_isWoken = false;
};
