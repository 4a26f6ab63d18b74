#pragma once

#include "VxCamera/transport/Ipv4Endpoint.h"
#include "VxCamera/transport/NetworkInterface.h"
#include "VxCamera/wire/gvcp/Discovery.h"

#include <vector>

namespace control {

/// Why a camera's network set-up does not allow a connection.
enum class ConfigurationFault {
    None,
    NoAddress,     ///< 0.0.0.0
    OtherSubnet,   ///< not in the subnet of the interface on which it answered
    SharedAddress, ///< another camera has the same one
};

/// A camera that answered discovery, and how it is reached.
struct FoundCamera {
    gvcp::DiscoveryAck camera;
    transport::Ipv4Endpoint device;  ///< where it takes commands
    transport::NetworkInterface via; ///< the interface on which it answered
    ConfigurationFault fault{};      ///< None at first

    [[nodiscard]] bool IsConfigurationValid() const { return fault == ConfigurationFault::None; }
    [[nodiscard]] transport::Ipv4Address Address() const { return transport::Ipv4Address(camera.ipAddress); }
};

/// One network interface and the cameras found on it.
struct ScannedInterface {
    transport::NetworkInterface description;         ///< with its first address
    std::vector<transport::Ipv4Address> addresses{}; ///< all it has
    std::vector<FoundCamera> cameras{};              ///< by connection id, each once
};

/// Marks the cameras whose network set-up does not allow a connection: without an address, outside the subnet
/// of the interface they answered on, or with an address that another camera has as well.
void MarkConfigurations(std::vector<FoundCamera>& cameras);

} // namespace control
