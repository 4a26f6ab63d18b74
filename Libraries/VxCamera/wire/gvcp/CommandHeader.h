#pragma once

#include "VxBase/VxByteWriter.h"
#include "VxBase/VxExpected.h"

#include "VxCamera/wire/gvcp/Command.h"

#include <cstddef>
#include <cstdint>
#include <span>

namespace gvcp {

/// Header of every command.
struct CommandHeader {
    std::uint8_t flags = kAckRequired;
    Command command{};
    std::uint16_t payloadBytes = 0;
    std::uint16_t requestId = 0; ///< 0 is not allowed on the wire

    bool operator==(const CommandHeader&) const = default;
};

/// A command as received: header and payload. Borrows the payload from the datagram.
struct CommandPacket {
    CommandHeader header;
    std::span<const std::byte> payload; ///< exactly header.payloadBytes bytes
};

/// Takes a datagram apart; the command code is not judged.
/// @param datagram  bytes after the payload are ignored
/// @return  VxError::Truncated when header or payload end early; VxError::InvalidData when the key is not
///          that of a command or the request id is 0
[[nodiscard]] VxExpected<CommandPacket> ParseCommand(std::span<const std::byte> datagram);

void WriteCommandHeader(VxByteWriter& out, const CommandHeader& header);

} // namespace gvcp
