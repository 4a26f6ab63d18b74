#pragma once

#include "VxBase/VxExpected.h"
#include "VxCamera/transport/Ipv4Endpoint.h"
#include "VxCamera/wire/gvsp/PacketHeader.h"

#include <atomic>
#include <cstdint>
#include <optional>

namespace receive {

/// Lets only the camera's packets through.
///
/// Ports do not count: cameras send from any. Where the camera's address is not known, the first sender of a
/// leader, alone or with all of its block, is taken for the camera, until Forget.
///
/// Owner:  StreamReceiver, by value.
/// Thread: the receiver's; Camera can be called from any.
class SenderFilter {
public:
    /// @param camera  none: to be learnt
    explicit SenderFilter(std::optional<transport::Ipv4Address> camera);

    /// @param packet  as parsed; a failure when it is none
    [[nodiscard]] bool Accepts(const transport::Ipv4Endpoint& sender, const VxExpected<gvsp::Packet>& packet);

    /// Whether it is the camera, as far as that is known; learns nothing.
    [[nodiscard]] bool IsCamera(const transport::Ipv4Endpoint& sender) const;

    /// Whether the camera's address was given.
    [[nodiscard]] bool IsGiven() const { return m_given.has_value(); }

    /// Forgets a camera that was learnt; one that was given stays.
    void Forget();

    /// @return  none while it is not known
    [[nodiscard]] std::optional<transport::Ipv4Address> Camera() const;

private:
    const std::optional<transport::Ipv4Address> m_given;
    std::atomic<std::uint32_t> m_camera; // 0: not known
};

} // namespace receive
