#pragma once

#include <winsock2.h>

namespace transport {

/// What of the system hands over several datagrams as one: the real functions, or what a test puts there.
///
/// Owner:  the socket.
/// Thread: the socket's opener, then its receiving one.
class IRunReceiver {
public:
    IRunReceiver(const IRunReceiver&) = delete;
    IRunReceiver& operator=(const IRunReceiver&) = delete;
    virtual ~IRunReceiver() = default;

    /// Asks for datagrams that are put together to runs.
    /// @param mostBytes  of a run
    /// @return  whether the system does so; else nothing about the socket has changed
    virtual bool Ask(SOCKET socket, DWORD mostBytes) = 0;

    /// Receives what is there, without waiting: WSARecvMsg.
    /// @param received  out: bytes, as far as the system tells
    /// @return  0, or the error
    virtual int Receive(SOCKET socket, WSAMSG& message, DWORD& received) = 0;

protected:
    IRunReceiver() = default;
};

} // namespace transport
