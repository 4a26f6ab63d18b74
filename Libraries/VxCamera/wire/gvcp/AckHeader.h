#pragma once

#include "VxBase/VxByteWriter.h"
#include "VxBase/VxExpected.h"

#include "VxCamera/wire/gvcp/Command.h"
#include "VxCamera/wire/gvcp/Datagram.h"
#include "VxCamera/wire/gvcp/Status.h"

#include <cstddef>
#include <cstdint>
#include <span>

namespace gvcp {

/// Header of every acknowledge.
struct AckHeader {
    Status status = Status::Success;
    Ack ack{};
    std::uint16_t payloadBytes = 0;
    std::uint16_t ackId = 0; ///< request id of the command that is answered

    bool operator==(const AckHeader&) const = default;
};

/// An acknowledge as received. Borrows the payload from the datagram.
struct AckPacket {
    AckHeader header;
    std::span<const std::byte> payload;
};

/// Takes a datagram apart; the ack code is not judged.
/// @param datagram  bytes after the payload are ignored
/// @return  VxError::Truncated when the header ends early, or the payload of a good acknowledge; that of an
///          error acknowledge may be short, devices differ there
[[nodiscard]] VxExpected<AckPacket> ParseAck(std::span<const std::byte> datagram);

void WriteAckHeader(VxByteWriter& out, const AckHeader& header);

/// @return  an acknowledge without payload: the answer to a force-IP command, or a refusal
[[nodiscard]] Datagram MakeEmptyAck(Status status, Ack ack, std::uint16_t ackId);

} // namespace gvcp
