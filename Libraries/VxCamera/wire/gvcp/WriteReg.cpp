#include "VxCamera/wire/gvcp/WriteReg.h"

#include "VxBase/VxByteReader.h"

#include "VxCamera/wire/gvcp/AckHeader.h"
#include "VxCamera/wire/gvcp/CommandHeader.h"

namespace gvcp {

namespace {

// Fixed by the protocol.
constexpr std::size_t kWriteBytes = 8; // an address and a value
constexpr std::size_t kBeforeIndex = 2;
constexpr std::uint16_t kAckPayloadBytes = 4;

} // namespace

//   offset  bytes  field            (big endian)
//      8 i      4  address of register i
//  8 i + 4      4  its value
VxExpected<WriteRegCommand> ParseWriteRegCommand(std::span<const std::byte> payload)
{
    if (payload.size() < kWriteBytes)
        return VxResult(VxError::Truncated, "register write");
    if (payload.size() % kWriteBytes != 0 || payload.size() > kMaxPayloadBytes)
        return VxResult(VxError::InvalidData, "register write");

    VxByteReader in(payload);
    WriteRegCommand command;
    command.writes.resize(payload.size() / kWriteBytes);
    for (RegisterValue& write : command.writes) {
        write.address = in.U32be();
        write.value = in.U32be();
    }
    return command;
}

VxExpected<Datagram> MakeWriteRegCommand(std::uint16_t requestId, std::span<const RegisterValue> writes)
{
    if (writes.empty() || writes.size() > kMaxWriteRegisters)
        return VxResult(VxError::InvalidParameter, "number of registers to write");

    Datagram datagram;
    auto out = datagram.Open();
    WriteCommandHeader(
        out, {.command = Command::WriteReg,
              .payloadBytes = static_cast<std::uint16_t>(writes.size() * kWriteBytes), // tested above
              .requestId = requestId});
    for (const RegisterValue& write : writes) {
        out.U32be(write.address);
        out.U32be(write.value);
    }
    datagram.Close(out);
    return datagram;
}

//   offset  bytes  field            (big endian)
//        2      2  index
VxExpected<WriteRegAck> ParseWriteRegAck(std::span<const std::byte> payload)
{
    VxByteReader in(payload);
    in.Skip(kBeforeIndex);
    const WriteRegAck ack{in.U16be()};
    if (!in.Ok())
        return VxResult(VxError::Truncated, "acknowledge of a register write");
    return ack;
}

Datagram MakeWriteRegAck(Status status, std::uint16_t ackId, const WriteRegAck& ack)
{
    Datagram datagram;
    auto out = datagram.Open();
    WriteAckHeader(
        out, {.status = status, .ack = Ack::WriteReg, .payloadBytes = kAckPayloadBytes, .ackId = ackId});
    out.Zeros(kBeforeIndex);
    out.U16be(ack.index);
    datagram.Close(out);
    return datagram;
}

} // namespace gvcp
