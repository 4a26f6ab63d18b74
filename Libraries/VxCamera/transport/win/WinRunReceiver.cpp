#include "VxCamera/transport/win/WinRunReceiver.h"

namespace transport {

bool WinRunReceiver::Ask(SOCKET socket, DWORD mostBytes)
{
    GUID id = WSAID_WSARECVMSG;
    DWORD returned = 0;
    const int failed = ::WSAIoctl(socket, SIO_GET_EXTENSION_FUNCTION_POINTER, &id, sizeof id, &m_receive,
                                  sizeof m_receive, &returned, nullptr, nullptr);
    if (failed != 0 || m_receive == nullptr)
        return false;
    return ::setsockopt(socket, IPPROTO_UDP, kMostCoalescedBytes, reinterpret_cast<const char*>(&mostBytes),
                        sizeof mostBytes) == 0;
}

int WinRunReceiver::Receive(SOCKET socket, WSAMSG& message, DWORD& received)
{
    return m_receive(socket, &message, &received, nullptr, nullptr) == 0 ? 0 : ::WSAGetLastError();
}

} // namespace transport
