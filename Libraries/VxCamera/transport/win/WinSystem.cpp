#include "VxCamera/transport/win/WinSystem.h"

#include <windows.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <string>
#include <utility>

namespace transport {

namespace {

constexpr int kNotStarted = WSANOTINITIALISED;

std::string ReasonText(int error)
{
    std::array<wchar_t, 512> text{}; // chosen: the system's sentences are far shorter
    const DWORD length =
        ::FormatMessageW(FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS, nullptr,
                         static_cast<DWORD>(error), 0, text.data(), // error codes are positive
                         static_cast<DWORD>(text.size()), nullptr);
    std::wstring_view reason(text.data(), length);
    while (!reason.empty() && (reason.back() == L'\n' || reason.back() == L'\r' || reason.back() == L'.'))
        reason.remove_suffix(1);
    return reason.empty() ? "the system gave no reason" : VxUtf8FromWide(reason);
}

} // namespace

VxResult SystemFailure(std::string_view what, int error)
{
    return {VxError::NetworkError,
            std::string(what) + ": " + ReasonText(error) + " (" + std::to_string(error) + ")"};
}

sockaddr_in ToSystem(const Ipv4Endpoint& endpoint)
{
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = ::htonl(endpoint.address.Value());
    address.sin_port = ::htons(endpoint.port);
    return address;
}

Ipv4Endpoint FromSystem(const sockaddr_in& address)
{
    return {Ipv4Address(::ntohl(address.sin_addr.s_addr)), ::ntohs(address.sin_port)};
}

WinsockUse::WinsockUse()
{
    WSADATA data{};
    m_error = ::WSAStartup(MAKEWORD(2, 2), &data);
}

WinsockUse::WinsockUse(WinsockUse&& other) noexcept : m_error(std::exchange(other.m_error, kNotStarted)) {}

WinsockUse::~WinsockUse()
{
    if (m_error == 0)
        ::WSACleanup();
}

VxResult WinsockUse::Result() const
{
    return m_error == 0 ? VxResult::Ok() : SystemFailure("start Winsock", m_error);
}

KernelHandle::KernelHandle(KernelHandle&& other) noexcept : m_handle(std::exchange(other.m_handle, nullptr))
{
}

KernelHandle::~KernelHandle()
{
    if (m_handle != nullptr)
        ::CloseHandle(m_handle);
}

VxExpected<std::shared_ptr<const KernelHandle>> MakeSocketEvent()
{
    constexpr BOOL kResetsByHand = FALSE;
    constexpr BOOL kIsSignalled = FALSE;
    auto event =
        std::make_shared<const KernelHandle>(::CreateEventW(nullptr, kResetsByHand, kIsSignalled, nullptr));
    if (event->Get() == nullptr)
        return VxResult(VxError::OutOfMemory, "no event for a UDP socket");
    return event;
}

DWORD ToWaitMs(std::chrono::nanoseconds duration)
{
    const auto ms = std::chrono::ceil<std::chrono::milliseconds>(duration).count();
    constexpr std::int64_t kLongest = 0x7FFFFFFF;                         // well below INFINITE
    return static_cast<DWORD>(std::clamp<std::int64_t>(ms, 0, kLongest)); // fits, it was cut
}

SocketHandle::SocketHandle(SocketHandle&& other) noexcept
    : m_socket(std::exchange(other.m_socket, INVALID_SOCKET))
{
}

SocketHandle::~SocketHandle()
{
    if (IsValid())
        ::closesocket(m_socket);
}

} // namespace transport
