#pragma once

#include "VxBase/VxExpected.h"

#include "VxCamera/wire/gvcp/Datagram.h"
#include "VxCamera/wire/gvcp/Discovery.h"

#include <cstddef>
#include <cstdint>
#include <span>

namespace gvcp {

/// Gives the device of this MAC another IP address until it is switched off. Its acknowledge has no payload.
struct ForceIpCommand {
    MacAddress mac{};
    std::uint32_t ipAddress = 0;
    std::uint32_t subnetMask = 0;
    std::uint32_t defaultGateway = 0;

    bool operator==(const ForceIpCommand&) const = default;
};

/// @return  VxError::Truncated
[[nodiscard]] VxExpected<ForceIpCommand> ParseForceIpCommand(std::span<const std::byte> payload);

[[nodiscard]] Datagram MakeForceIpCommand(std::uint16_t requestId, DiscoveryAnswer answer,
                                          const ForceIpCommand& command);

} // namespace gvcp
