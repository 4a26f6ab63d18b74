#include "VxCamera/transport/win/WinUdpSocketGroup.h"

#include <winsock2.h>

#include <algorithm>
#include <utility>

namespace transport {

VxExpected<std::unique_ptr<WinUdpSocketGroup>> WinUdpSocketGroup::Make()
{
    auto event = MakeSocketEvent();
    if (!event)
        return event.Error();
    return std::make_unique<WinUdpSocketGroup>(std::move(*event));
}

VxExpected<IUdpSocket*> WinUdpSocketGroup::OpenUdp(const UdpSocketOptions& options)
{
    auto socket = WinUdpSocket::Open(options, m_event);
    if (!socket)
        return socket.Error();
    m_sockets.push_back(std::move(*socket));
    return static_cast<IUdpSocket*>(m_sockets.back().get());
}

void WinUdpSocketGroup::Close(const IUdpSocket& socket)
{
    std::erase_if(m_sockets, [&](const auto& each) { return each.get() == &socket; });
}

VxResult WinUdpSocketGroup::WaitForAny(std::chrono::microseconds timeout)
{
    using Clock = std::chrono::steady_clock;
    const auto deadline = Clock::now() + timeout;
    for (;;) {
        // What the event told of may have been received since, and what it told of before may still be there.
        const auto isAny = IsAnyReady();
        if (!isAny)
            return isAny.Error();
        if (*isAny)
            return VxResult::Ok();
        const auto rest = deadline - Clock::now();
        if (rest <= rest.zero())
            return VxError::Timeout;
        if (::WaitForSingleObject(m_event->Get(), ToWaitMs(rest)) == WAIT_FAILED)
            return SystemFailure("wait at several UDP ports", static_cast<int>(::GetLastError())); // small
    }
}

VxExpected<bool> WinUdpSocketGroup::IsAnyReady()
{
    m_polled.clear();
    for (const auto& socket : m_sockets) {
        if (socket->IsWoken())
            return true;
        m_polled.push_back({socket->Handle(), POLLRDNORM, 0});
    }
    if (m_polled.empty()) // which the system calls a mistake
        return false;
    const int ready = ::WSAPoll(m_polled.data(), static_cast<ULONG>(m_polled.size()), 0); // a few
    if (ready < 0)
        return SystemFailure("look at several UDP ports", ::WSAGetLastError());
    return ready > 0;
}

} // namespace transport
