#include "VxCamera/transport/posix/PosixUdpSocketGroup.h"

#include <algorithm>
#include <cerrno>
#include <span>

namespace transport {

VxExpected<IUdpSocket*> PosixUdpSocketGroup::OpenUdp(const UdpSocketOptions& options)
{
    UdpSocketOptions taken = options;
    taken.isRingWanted = false; // WaitForAny does not wait for rings
    auto socket = PosixUdpSocket::Open(taken);
    if (!socket)
        return socket.Error();
    m_sockets.push_back(std::move(*socket));
    return static_cast<IUdpSocket*>(m_sockets.back().get());
}

void PosixUdpSocketGroup::Close(const IUdpSocket& socket)
{
    std::erase_if(m_sockets, [&](const auto& each) { return each.get() == &socket; });
}

VxResult PosixUdpSocketGroup::WaitForAny(std::chrono::microseconds timeout)
{
    using Clock = std::chrono::steady_clock;
    const auto deadline = Clock::now() + timeout;
    for (;;) {
        m_waiting.clear();
        for (const auto& socket : m_sockets)
            std::ranges::copy(socket->WhatToWaitFor(), std::back_inserter(m_waiting));
        const auto limit =
            ToTimespec(std::max<std::chrono::nanoseconds>(deadline - Clock::now(), Clock::duration::zero()));
        const int signalled = ::ppoll(m_waiting.data(), m_waiting.size(), &limit, nullptr);
        if (signalled < 0 && errno != EINTR)
            return SystemFailure("wait at several UDP ports", errno);
        bool isAny = false;
        std::span<const pollfd> rest(m_waiting);
        for (const auto& socket : m_sockets) {
            isAny = (signalled > 0 && socket->IsReady(rest.first<PosixUdpSocket::kDescriptors>())) || isAny;
            rest = rest.subspan(PosixUdpSocket::kDescriptors);
        }
        if (isAny)
            return VxResult::Ok();
        if (Clock::now() >= deadline)
            return VxError::Timeout;
    }
}

} // namespace transport
