#include "VxCamera/transport/posix/PosixSystem.h"

#include <unistd.h>

#include <string>
#include <system_error>
#include <utility>

namespace transport {

VxResult SystemFailure(std::string_view what, int error)
{
    const std::string reason = std::system_category().message(error);
    return {VxError::NetworkError, std::string(what) + ": " + reason + " (" + std::to_string(error) + ")"};
}

sockaddr_in ToSystem(const Ipv4Endpoint& endpoint)
{
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(endpoint.address.Value());
    address.sin_port = htons(endpoint.port);
    return address;
}

Ipv4Endpoint FromSystem(const sockaddr_in& address)
{
    return {Ipv4Address(ntohl(address.sin_addr.s_addr)), ntohs(address.sin_port)};
}

timespec ToTimespec(std::chrono::nanoseconds duration)
{
    const auto seconds = std::chrono::duration_cast<std::chrono::seconds>(duration);
    return {static_cast<time_t>(seconds.count()), static_cast<long>((duration - seconds).count())};
}

FileDescriptor::FileDescriptor(FileDescriptor&& other) noexcept
    : m_descriptor(std::exchange(other.m_descriptor, -1))
{
}

FileDescriptor::~FileDescriptor()
{
    if (IsValid())
        ::close(m_descriptor);
}

} // namespace transport
