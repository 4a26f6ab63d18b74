#pragma once

#include "VxBase/VxExpected.h"

#include "VxCamera/wire/gvcp/Datagram.h"
#include "VxCamera/wire/gvcp/Status.h"

#include <cstddef>
#include <cstdint>
#include <span>

namespace gvcp {

/// Writes device memory. Borrows the data. Devices refuse an address or a size that is no multiple of 4.
struct WriteMemCommand {
    std::uint32_t address = 0;
    std::span<const std::byte> data; ///< 1 to kMaxMemoryBytes
};

struct WriteMemAck {
    std::uint16_t index = 0; ///< bytes written

    bool operator==(const WriteMemAck&) const = default;
};

/// @return  VxError::Truncated when there is no address or not one byte to write
[[nodiscard]] VxExpected<WriteMemCommand> ParseWriteMemCommand(std::span<const std::byte> payload);

/// @return  VxError::InvalidParameter when there are no data or more than kMaxMemoryBytes
[[nodiscard]] VxExpected<Datagram> MakeWriteMemCommand(std::uint16_t requestId,
                                                       const WriteMemCommand& command);

/// @return  VxError::Truncated
[[nodiscard]] VxExpected<WriteMemAck> ParseWriteMemAck(std::span<const std::byte> payload);

[[nodiscard]] Datagram MakeWriteMemAck(Status status, std::uint16_t ackId, const WriteMemAck& ack);

} // namespace gvcp
