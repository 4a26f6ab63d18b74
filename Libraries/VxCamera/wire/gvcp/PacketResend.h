#pragma once

#include "VxBase/VxExpected.h"

#include "VxCamera/wire/gvcp/CommandHeader.h"
#include "VxCamera/wire/gvcp/Datagram.h"

#include <cstdint>

namespace gvcp {

enum class IdWidth {
    Standard, ///< block ids of 16 bits, packet ids of 24
    Extended, ///< block ids of 64 bits, packet ids of 32
};

/// Asks for packets of a block once more; the answer comes on the stream channel.
struct PacketResendCommand {
    IdWidth idWidth = IdWidth::Standard;
    std::uint16_t channel = 0;
    std::uint64_t blockId = 0;
    std::uint32_t firstPacketId = 0;
    std::uint32_t lastPacketId = 0; ///< included

    bool operator==(const PacketResendCommand&) const = default;
};

/// The flags of the header say which of the two layouts it is.
/// @return  VxError::Truncated
[[nodiscard]] VxExpected<PacketResendCommand> ParsePacketResendCommand(const CommandPacket& packet);

/// No acknowledge is asked for. Standard ids: the low 16 and 24 bits are sent.
[[nodiscard]] Datagram MakePacketResendCommand(std::uint16_t requestId, const PacketResendCommand& command);

} // namespace gvcp
