#include "VxCamera/wire/gvcp/ReadMem.h"

#include "VxBase/VxByteReader.h"

#include "VxCamera/wire/gvcp/AckHeader.h"
#include "VxCamera/wire/gvcp/CommandHeader.h"

namespace gvcp {

namespace {

// Fixed by the protocol.
constexpr std::uint16_t kCommandPayloadBytes = 8;
constexpr std::size_t kBeforeCount = 2;
constexpr std::size_t kAddressBytes = 4;

} // namespace

//   offset  bytes  field            (big endian)
//        0      4  address
//        6      2  count, bytes
VxExpected<ReadMemCommand> ParseReadMemCommand(std::span<const std::byte> payload)
{
    VxByteReader in(payload);
    ReadMemCommand command;
    command.address = in.U32be();
    in.Skip(kBeforeCount);
    command.count = in.U16be();
    if (!in.Ok())
        return VxResult(VxError::Truncated, "memory read");
    return command;
}

VxExpected<Datagram> MakeReadMemCommand(std::uint16_t requestId, const ReadMemCommand& command)
{
    if (command.count == 0 || command.count > kMaxMemoryBytes)
        return VxResult(VxError::InvalidParameter, "number of bytes to read");

    Datagram datagram;
    auto out = datagram.Open();
    WriteCommandHeader(
        out, {.command = Command::ReadMem, .payloadBytes = kCommandPayloadBytes, .requestId = requestId});
    out.U32be(command.address);
    out.Zeros(kBeforeCount);
    out.U16be(command.count);
    datagram.Close(out);
    return datagram;
}

//   offset  bytes  field            (big endian)
//        0      4  address
//        4      n  data
VxExpected<ReadMemAck> ParseReadMemAck(std::span<const std::byte> payload)
{
    VxByteReader in(payload);
    ReadMemAck ack;
    ack.address = in.U32be();
    ack.data = in.Rest();
    if (!in.Ok())
        return VxResult(VxError::Truncated, "acknowledge of a memory read");
    return ack;
}

VxExpected<Datagram> MakeReadMemAck(std::uint16_t ackId, const ReadMemAck& ack)
{
    if (ack.data.size() > kMaxMemoryBytes)
        return VxResult(VxError::InvalidParameter, "number of bytes read");

    Datagram datagram;
    auto out = datagram.Open();
    WriteAckHeader(
        out, {.ack = Ack::ReadMem,
              .payloadBytes = static_cast<std::uint16_t>(kAddressBytes + ack.data.size()), // tested above
              .ackId = ackId});
    out.U32be(ack.address);
    out.Bytes(ack.data);
    datagram.Close(out);
    return datagram;
}

} // namespace gvcp
