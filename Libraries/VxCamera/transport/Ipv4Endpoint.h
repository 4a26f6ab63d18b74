#pragma once

#include "VxCamera/transport/Ipv4Address.h"

#include <compare>
#include <cstdint>
#include <string>

namespace transport {

/// An address and a UDP port.
struct Ipv4Endpoint {
    Ipv4Address address;
    std::uint16_t port = 0; ///< 0: any

    /// @return  "127.0.0.1:3956"
    [[nodiscard]] std::string ToString() const;

    friend constexpr auto operator<=>(const Ipv4Endpoint&, const Ipv4Endpoint&) = default;
};

} // namespace transport
