#pragma once

#include "VxBase/VxExpected.h"

#include "VxCamera/wire/gvcp/Datagram.h"

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <span>

namespace gvcp {

/// "Still at work": the real acknowledge comes later and carries the same id.
struct PendingAck {
    std::chrono::milliseconds timeToCompletion{0}; ///< 0 to 65535

    bool operator==(const PendingAck&) const = default;
};

/// @return  VxError::Truncated
[[nodiscard]] VxExpected<PendingAck> ParsePendingAck(std::span<const std::byte> payload);

/// Times outside the range are clamped.
[[nodiscard]] Datagram MakePendingAck(std::uint16_t ackId, const PendingAck& ack);

} // namespace gvcp
