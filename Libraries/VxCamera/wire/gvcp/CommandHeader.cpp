#include "VxCamera/wire/gvcp/CommandHeader.h"

#include "VxBase/VxByteReader.h"

namespace gvcp {

namespace {

constexpr std::uint8_t kKey = 0x42; // fixed by the protocol: first byte of every command

}

//   offset  bytes  field           (big endian)
//        0      1  key, 0x42
//        1      1  flags
//        2      2  command
//        4      2  payload, bytes
//        6      2  request id
VxExpected<CommandPacket> ParseCommand(std::span<const std::byte> datagram)
{
    VxByteReader in(datagram);
    const std::uint8_t key = in.U8();
    CommandPacket packet;
    packet.header.flags = in.U8();
    packet.header.command = static_cast<Command>(in.U16be()); // every number is a Command
    packet.header.payloadBytes = in.U16be();
    packet.header.requestId = in.U16be();
    packet.payload = in.Bytes(packet.header.payloadBytes);

    if (!in.Ok())
        return VxResult(VxError::Truncated, "control command");
    if (key != kKey)
        return VxResult(VxError::InvalidData, "control command without its key");
    if (packet.header.requestId == 0)
        return VxResult(VxError::InvalidData, "control command with request id 0");
    return packet;
}

void WriteCommandHeader(VxByteWriter& out, const CommandHeader& header)
{
    out.U8(kKey);
    out.U8(header.flags);
    out.U16be(static_cast<std::uint16_t>(header.command));
    out.U16be(header.payloadBytes);
    out.U16be(header.requestId);
}

} // namespace gvcp
