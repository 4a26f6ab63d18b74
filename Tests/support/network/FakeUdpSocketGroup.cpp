#include "support/network/FakeUdpSocketGroup.h"

#include <algorithm>
#include <utility>

FakeUdpSocketGroup::FakeUdpSocketGroup(FakeClock& clock, Open open) : m_clock(clock), m_open(std::move(open))
{
}

VxExpected<transport::IUdpSocket*> FakeUdpSocketGroup::OpenUdp(const transport::UdpSocketOptions& options)
{
    auto socket = m_open(options);
    if (!socket)
        return socket.Error();
    m_sockets.push_back(std::move(*socket));
    return static_cast<transport::IUdpSocket*>(m_sockets.back().get());
}

void FakeUdpSocketGroup::Close(const transport::IUdpSocket& socket)
{
    std::erase_if(m_sockets, [&](const auto& each) { return each.get() == &socket; });
}

VxResult FakeUdpSocketGroup::WaitForAny(std::chrono::microseconds timeout)
{
    const auto end = m_clock.Now() + timeout;
    auto earliest = IVxClock::Time::max();
    for (const auto& socket : m_sockets)
        earliest = std::min(earliest, socket->ReadyFrom().value_or(earliest));
    m_clock.AdvanceTo(std::min(earliest, end));
    return earliest <= end ? VxResult::Ok() : VxError::Timeout;
}
