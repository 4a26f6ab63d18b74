#pragma once

#include "VxBase/VxResult.h"
#include "VxCamera/transport/Ipv4Endpoint.h"

#include <netinet/in.h>

#include <chrono>
#include <ctime>
#include <string_view>

namespace transport {

/// @return  NETWORK_ERROR: what was tried, and the system's reason
[[nodiscard]] VxResult SystemFailure(std::string_view what, int error);

[[nodiscard]] sockaddr_in ToSystem(const Ipv4Endpoint& endpoint);
[[nodiscard]] Ipv4Endpoint FromSystem(const sockaddr_in& address);

/// @param duration  not negative
[[nodiscard]] timespec ToTimespec(std::chrono::nanoseconds duration);

/// Closes a file descriptor at the end of its scope.
///
/// Owner:  by value; moves.
/// Thread: one at a time.
class FileDescriptor final {
public:
    explicit FileDescriptor(int descriptor) : m_descriptor(descriptor) {}
    FileDescriptor(FileDescriptor&& other) noexcept;
    FileDescriptor& operator=(FileDescriptor&&) = delete;
    ~FileDescriptor();

    [[nodiscard]] int Get() const { return m_descriptor; }
    [[nodiscard]] bool IsValid() const { return m_descriptor >= 0; }

private:
    int m_descriptor; // -1: none, as the system says it
};

} // namespace transport
