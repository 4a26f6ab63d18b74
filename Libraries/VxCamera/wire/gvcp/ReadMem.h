#pragma once

#include "VxBase/VxExpected.h"

#include "VxCamera/wire/gvcp/Datagram.h"

#include <cstddef>
#include <cstdint>
#include <span>

namespace gvcp {

/// Reads device memory. Devices refuse an address or a count that is no multiple of 4.
struct ReadMemCommand {
    std::uint32_t address = 0;
    std::uint16_t count = 0; ///< bytes, 1 to kMaxMemoryBytes

    bool operator==(const ReadMemCommand&) const = default;
};

/// Borrows the data from the datagram.
struct ReadMemAck {
    std::uint32_t address = 0;
    std::span<const std::byte> data;
};

/// @return  VxError::Truncated. Address and count are not judged: that is the device's business.
[[nodiscard]] VxExpected<ReadMemCommand> ParseReadMemCommand(std::span<const std::byte> payload);

/// @return  VxError::InvalidParameter when count is 0 or above kMaxMemoryBytes
[[nodiscard]] VxExpected<Datagram> MakeReadMemCommand(std::uint16_t requestId, const ReadMemCommand& command);

/// @return  VxError::Truncated when the address is cut; the number of data bytes is not judged
[[nodiscard]] VxExpected<ReadMemAck> ParseReadMemAck(std::span<const std::byte> payload);

/// @return  VxError::InvalidParameter when there are more than kMaxMemoryBytes
[[nodiscard]] VxExpected<Datagram> MakeReadMemAck(std::uint16_t ackId, const ReadMemAck& ack);

} // namespace gvcp
