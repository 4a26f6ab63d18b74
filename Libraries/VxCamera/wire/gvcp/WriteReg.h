#pragma once

#include "VxBase/VxExpected.h"

#include "VxCamera/wire/gvcp/Datagram.h"
#include "VxCamera/wire/gvcp/Status.h"

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace gvcp {

struct RegisterValue {
    std::uint32_t address = 0;
    std::uint32_t value = 0;

    bool operator==(const RegisterValue&) const = default;
};

/// Writes one register, or several where the device can do so.
struct WriteRegCommand {
    std::vector<RegisterValue> writes; ///< 1 to kMaxWriteRegisters, done in this order

    bool operator==(const WriteRegCommand&) const = default;
};

struct WriteRegAck {
    std::uint16_t index = 0; ///< registers written; on an error the index of the one that failed

    bool operator==(const WriteRegAck&) const = default;
};

/// @return  VxError::Truncated when there is nothing to write; VxError::InvalidData when the last one is cut
///          or there are more than one datagram can hold
[[nodiscard]] VxExpected<WriteRegCommand> ParseWriteRegCommand(std::span<const std::byte> payload);

/// @param writes  1 to kMaxWriteRegisters; others give VxError::InvalidParameter
[[nodiscard]] VxExpected<Datagram> MakeWriteRegCommand(std::uint16_t requestId,
                                                       std::span<const RegisterValue> writes);

/// @return  VxError::Truncated
[[nodiscard]] VxExpected<WriteRegAck> ParseWriteRegAck(std::span<const std::byte> payload);

[[nodiscard]] Datagram MakeWriteRegAck(Status status, std::uint16_t ackId, const WriteRegAck& ack);

} // namespace gvcp
