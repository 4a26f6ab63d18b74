#pragma once

#include "VxCamera/transport/Ipv4Address.h"

#include <array>
#include <cstdint>
#include <string>

namespace transport {

/// One IPv4 address of one network interface that is up.
struct NetworkInterface {
    std::string name;        ///< for people, UTF-8: "lo", "Ethernet 2"
    std::uint32_t index = 0; ///< the system's number of the interface; 0 = none
    Ipv4Address address;
    Ipv4Address mask;
    std::array<std::uint8_t, 6> macAddress{}; ///< all zero where there is none (loopback)
    std::uint32_t mtuBytes = 0;               ///< largest IP packet; 0 = the system does not tell
    std::uint32_t linkSpeedMbps = 0;          ///< Mbit/s; 0 = the system does not tell
    bool isLoopback = false;

    /// Address that reaches everybody in the subnet.
    [[nodiscard]] Ipv4Address SubnetBroadcast() const { return Ipv4Address(address.Value() | ~mask.Value()); }

    friend bool operator==(const NetworkInterface&, const NetworkInterface&) = default;
};

} // namespace transport
