#pragma once

#include "VxCamera/transport/Ipv4Endpoint.h"

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>

namespace receive {

/// Lets only the camera's packets through.
///
/// Ports do not count: cameras send from any. Where the camera's address is not known, the first sender of a
/// leader is taken for the camera, until Forget.
///
/// Owner:  StreamReceiver, by value.
/// Thread: the receiver's; Camera can be called from any.
class SenderFilter {
public:
    /// @param camera  none: to be learnt
    explicit SenderFilter(std::optional<transport::Ipv4Address> camera);

    [[nodiscard]] bool Accepts(const transport::Ipv4Endpoint& sender, std::span<const std::byte> datagram);

    /// Forgets a camera that was learnt; one that was given stays.
    void Forget();

    /// @return  none while it is not known
    [[nodiscard]] std::optional<transport::Ipv4Address> Camera() const;

private:
    const std::optional<transport::Ipv4Address> m_given;
    std::atomic<std::uint32_t> m_camera; // 0: not known
};

} // namespace receive
