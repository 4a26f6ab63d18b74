#pragma once

#include "VxBase/VxExpected.h"

#include "VxCamera/wire/gvcp/Datagram.h"

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace gvcp {

/// Reads one register, or several where the device can do so.
struct ReadRegCommand {
    std::vector<std::uint32_t> addresses; ///< 1 to kMaxReadRegisters

    bool operator==(const ReadRegCommand&) const = default;
};

struct ReadRegAck {
    std::vector<std::uint32_t> values; ///< in the order of the addresses

    bool operator==(const ReadRegAck&) const = default;
};

/// @return  VxError::Truncated when there is no address; VxError::InvalidData when the last one is cut or
///          there are more than one datagram can hold
[[nodiscard]] VxExpected<ReadRegCommand> ParseReadRegCommand(std::span<const std::byte> payload);

/// @param addresses  1 to kMaxReadRegisters; others give VxError::InvalidParameter
[[nodiscard]] VxExpected<Datagram> MakeReadRegCommand(std::uint16_t requestId,
                                                      std::span<const std::uint32_t> addresses);

/// @return  VxError::Truncated when there is no value; VxError::InvalidData as above
[[nodiscard]] VxExpected<ReadRegAck> ParseReadRegAck(std::span<const std::byte> payload);

/// @param values  1 to kMaxReadRegisters; others give VxError::InvalidParameter
[[nodiscard]] VxExpected<Datagram> MakeReadRegAck(std::uint16_t ackId, std::span<const std::uint32_t> values);

} // namespace gvcp
