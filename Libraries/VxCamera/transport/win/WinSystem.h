#pragma once

#include "VxBase/VxExpected.h"
#include "VxBase/VxResult.h"
#include "VxCamera/transport/Ipv4Endpoint.h"

#include <winsock2.h>

#include <chrono>
#include <memory>
#include <string_view>

namespace transport {

/// @param error  from WSAGetLastError or GetLastError
/// @return  NETWORK_ERROR: what was tried, and the system's reason
[[nodiscard]] VxResult SystemFailure(std::string_view what, int error);

[[nodiscard]] sockaddr_in ToSystem(const Ipv4Endpoint& endpoint);
[[nodiscard]] Ipv4Endpoint FromSystem(const sockaddr_in& address);

/// One use of Winsock. Whoever opens a socket holds one for as long as the socket lives: the module is loaded
/// into programs whose own use of Winsock is not known, so every start must have its end.
///
/// Owner:  by value; moves.
/// Thread: any.
class WinsockUse final {
public:
    WinsockUse();
    WinsockUse(WinsockUse&& other) noexcept;
    WinsockUse& operator=(WinsockUse&&) = delete;
    ~WinsockUse();

    /// OK, or why Winsock cannot be used.
    [[nodiscard]] VxResult Result() const;

private:
    int m_error; // 0: started, to be ended
};

/// Closes a kernel handle at the end of its scope.
///
/// Owner:  by value; moves.
/// Thread: one at a time.
class KernelHandle final {
public:
    explicit KernelHandle(HANDLE handle) : m_handle(handle) {}
    KernelHandle(KernelHandle&& other) noexcept;
    KernelHandle& operator=(KernelHandle&&) = delete;
    ~KernelHandle();

    [[nodiscard]] HANDLE Get() const { return m_handle; }

private:
    HANDLE m_handle; // null: none
};

/// An event for sockets, which resets itself.
/// @return  OUT_OF_MEMORY when the system has none left
[[nodiscard]] VxExpected<std::shared_ptr<const KernelHandle>> MakeSocketEvent();

/// A time for the system's waits, in ms: rounded up, so that the last wait does not end just before the
/// deadline and spin; cut at the longest that is not for ever. 0 when it is negative.
[[nodiscard]] DWORD ToWaitMs(std::chrono::nanoseconds duration);

/// Closes a socket at the end of its scope.
///
/// Owner:  by value; moves.
/// Thread: one at a time.
class SocketHandle final {
public:
    explicit SocketHandle(SOCKET socket) : m_socket(socket) {}
    SocketHandle(SocketHandle&& other) noexcept;
    SocketHandle& operator=(SocketHandle&&) = delete;
    ~SocketHandle();

    [[nodiscard]] SOCKET Get() const { return m_socket; }
    [[nodiscard]] bool IsValid() const { return m_socket != INVALID_SOCKET; }

private:
    SOCKET m_socket;
};

} // namespace transport
