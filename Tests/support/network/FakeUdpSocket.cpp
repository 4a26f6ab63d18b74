#include "support/network/FakeUdpSocket.h"

#include <algorithm>

void FakeUdpSocket::Arrive(const transport::Ipv4Endpoint& sender, std::span<const std::byte> bytes,
                           std::chrono::microseconds delay)
{
    const Arrival arrival{m_clock.Now() + delay, sender, {bytes.begin(), bytes.end()}};
    const auto later = std::ranges::upper_bound(m_arrivals, arrival.time, {}, &Arrival::time);
    m_arrivals.insert(later, arrival);
}

VxResult FakeUdpSocket::SendTo(std::span<const std::byte> bytes, const transport::Ipv4Endpoint& destination)
{
    if (!m_sendResult.IsOK())
        return m_sendResult;
    if (m_sendsToFailure && (*m_sendsToFailure)-- == 0) {
        m_sendsToFailure.reset();
        return VxResult(VxError::NetworkError, "the queue is full");
    }
    m_peer(*this, bytes, destination);
    return VxResult::Ok();
}

VxExpected<std::size_t> FakeUdpSocket::Receive(std::span<transport::Datagram> datagrams,
                                               std::chrono::microseconds timeout)
{
    if (!m_receiveResult.IsOK())
        return m_receiveResult;
    if (std::exchange(m_isWoken, false))
        return VxError::Aborted;
    const auto end = m_clock.Now() + timeout;
    if (m_arrivals.empty() || m_arrivals.front().time > end) {
        m_clock.AdvanceTo(end);
        return VxError::Timeout;
    }
    const Arrival arrival = m_arrivals.front();
    m_arrivals.pop_front();
    m_clock.AdvanceTo(arrival.time);
    transport::Datagram& datagram = datagrams.front();
    datagram.size = std::min(arrival.bytes.size(), datagram.memory.size());
    datagram.isTruncated = datagram.size < arrival.bytes.size();
    datagram.sender = arrival.sender;
    std::copy_n(arrival.bytes.begin(), datagram.size, datagram.memory.begin());
    return std::size_t{1};
}

std::optional<IVxClock::Time> FakeUdpSocket::ReadyFrom() const
{
    if (m_isWoken || !m_receiveResult.IsOK())
        return m_clock.Now();
    return m_arrivals.empty() ? std::nullopt : std::optional(m_arrivals.front().time);
}
