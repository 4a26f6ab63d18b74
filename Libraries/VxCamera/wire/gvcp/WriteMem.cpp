#include "VxCamera/wire/gvcp/WriteMem.h"

#include "VxBase/VxByteReader.h"

#include "VxCamera/wire/gvcp/AckHeader.h"
#include "VxCamera/wire/gvcp/CommandHeader.h"

namespace gvcp {

namespace {

// Fixed by the protocol.
constexpr std::size_t kAddressBytes = 4;
constexpr std::size_t kBeforeIndex = 2;
constexpr std::uint16_t kAckPayloadBytes = 4;

} // namespace

//   offset  bytes  field            (big endian)
//        0      4  address
//        4      n  data
VxExpected<WriteMemCommand> ParseWriteMemCommand(std::span<const std::byte> payload)
{
    VxByteReader in(payload);
    WriteMemCommand command;
    command.address = in.U32be();
    command.data = in.Rest();
    if (!in.Ok() || command.data.empty())
        return VxResult(VxError::Truncated, "memory write");
    return command;
}

VxExpected<Datagram> MakeWriteMemCommand(std::uint16_t requestId, const WriteMemCommand& command)
{
    if (command.data.empty() || command.data.size() > kMaxMemoryBytes)
        return VxResult(VxError::InvalidParameter, "number of bytes to write");

    Datagram datagram;
    auto out = datagram.Open();
    const auto payloadBytes = static_cast<std::uint16_t>(kAddressBytes + command.data.size()); // tested above
    WriteCommandHeader(out,
                       {.command = Command::WriteMem, .payloadBytes = payloadBytes, .requestId = requestId});
    out.U32be(command.address);
    out.Bytes(command.data);
    datagram.Close(out);
    return datagram;
}

//   offset  bytes  field            (big endian)
//        2      2  bytes written
VxExpected<WriteMemAck> ParseWriteMemAck(std::span<const std::byte> payload)
{
    VxByteReader in(payload);
    in.Skip(kBeforeIndex);
    const WriteMemAck ack{in.U16be()};
    if (!in.Ok())
        return VxResult(VxError::Truncated, "acknowledge of a memory write");
    return ack;
}

Datagram MakeWriteMemAck(Status status, std::uint16_t ackId, const WriteMemAck& ack)
{
    Datagram datagram;
    auto out = datagram.Open();
    WriteAckHeader(
        out, {.status = status, .ack = Ack::WriteMem, .payloadBytes = kAckPayloadBytes, .ackId = ackId});
    out.Zeros(kBeforeIndex);
    out.U16be(ack.index);
    datagram.Close(out);
    return datagram;
}

} // namespace gvcp
