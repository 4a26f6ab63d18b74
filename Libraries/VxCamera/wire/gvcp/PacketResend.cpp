#include "VxCamera/wire/gvcp/PacketResend.h"

#include "VxBase/VxByteReader.h"

namespace gvcp {

namespace {

// Fixed by the protocol.
constexpr std::uint16_t kStandardPayloadBytes = 12;
constexpr std::uint16_t kExtendedPayloadBytes = 20;
constexpr std::size_t kAfterExtendedChannel = 2;
constexpr std::uint32_t kStandardPacketIdMask = 0x00FFFFFF;

} // namespace

//   offset  bytes  standard           |  offset  bytes  extended      (big endian)
//        0      2  channel            |       0      2  channel
//        2      2  block id           |       4      4  first packet id
//        4      4  first packet id    |       8      4  last packet id
//        8      4  last packet id     |      12      8  block id
VxExpected<PacketResendCommand> ParsePacketResendCommand(const CommandPacket& packet)
{
    VxByteReader in(packet.payload);
    PacketResendCommand command;
    command.channel = in.U16be();
    if ((packet.header.flags & kExtendedIds) != 0) {
        command.idWidth = IdWidth::Extended;
        in.Skip(kAfterExtendedChannel);
        command.firstPacketId = in.U32be();
        command.lastPacketId = in.U32be();
        command.blockId = in.U64be();
    } else {
        command.blockId = in.U16be();
        command.firstPacketId = in.U32be() & kStandardPacketIdMask;
        command.lastPacketId = in.U32be() & kStandardPacketIdMask;
    }
    if (!in.Ok())
        return VxResult(VxError::Truncated, "packet resend command");
    return command;
}

Datagram MakePacketResendCommand(std::uint16_t requestId, const PacketResendCommand& command)
{
    const bool isExtended = command.idWidth == IdWidth::Extended;
    Datagram datagram;
    auto out = datagram.Open();
    WriteCommandHeader(out, {.flags = isExtended ? kExtendedIds : std::uint8_t{0},
                             .command = Command::PacketResend,
                             .payloadBytes = isExtended ? kExtendedPayloadBytes : kStandardPayloadBytes,
                             .requestId = requestId});
    out.U16be(command.channel);
    if (isExtended) {
        out.Zeros(kAfterExtendedChannel);
        out.U32be(command.firstPacketId);
        out.U32be(command.lastPacketId);
        out.U64be(command.blockId);
    } else {
        out.U16be(static_cast<std::uint16_t>(command.blockId)); // as documented: the low bits
        out.U32be(command.firstPacketId & kStandardPacketIdMask);
        out.U32be(command.lastPacketId & kStandardPacketIdMask);
    }
    datagram.Close(out);
    return datagram;
}

} // namespace gvcp
