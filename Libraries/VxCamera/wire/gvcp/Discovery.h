#pragma once

#include "VxBase/VxExpected.h"

#include "VxCamera/wire/gvcp/Datagram.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string>

namespace gvcp {

using MacAddress = std::array<std::uint8_t, 6>; ///< in the order in which it is written and sent

// Fixed by the protocol: the answer is a copy of the first bootstrap registers.
constexpr std::size_t kDiscoveryAckBytes = 248;

enum class DiscoveryAnswer {
    Unicast,          ///< to the asking socket
    BroadcastAllowed, ///< so that a device in a foreign subnet is seen, too
};

/// What a device says of itself. IP addresses are numbers: 127.0.0.1 is 0x7F000001.
struct DiscoveryAck {
    std::uint16_t majorVersion = 0;
    std::uint16_t minorVersion = 0;
    std::uint32_t deviceMode = 0;
    MacAddress mac{};
    std::uint32_t supportedIpConfiguration = 0;
    std::uint32_t currentIpConfiguration = 0;
    std::uint32_t ipAddress = 0;
    std::uint32_t subnetMask = 0;
    std::uint32_t defaultGateway = 0;
    std::string manufacturerName;
    std::string modelName;
    std::string deviceVersion;
    std::string manufacturerInfo;
    std::string serialNumber;    ///< may be empty
    std::string userDefinedName; ///< may be empty

    bool operator==(const DiscoveryAck&) const = default;
};

[[nodiscard]] Datagram MakeDiscoveryCommand(std::uint16_t requestId, DiscoveryAnswer answer);

/// @param payload  at least 248 bytes; more is allowed and ignored
/// @return  VxError::Truncated
[[nodiscard]] VxExpected<DiscoveryAck> ParseDiscoveryAck(std::span<const std::byte> payload);

/// Texts are cut to the length of their fields.
[[nodiscard]] Datagram MakeDiscoveryAck(std::uint16_t ackId, const DiscoveryAck& ack);

} // namespace gvcp
