#include "VxCamera/wire/gvcp/AckHeader.h"

#include "VxBase/VxByteReader.h"

#include <algorithm>

namespace gvcp {

//   offset  bytes  field           (big endian)
//        0      2  status
//        2      2  acknowledge code
//        4      2  payload, bytes
//        6      2  request id of the command
VxExpected<AckPacket> ParseAck(std::span<const std::byte> datagram)
{
    VxByteReader in(datagram);
    AckPacket packet;
    packet.header.status = static_cast<Status>(in.U16be()); // every number is a Status
    packet.header.ack = static_cast<Ack>(in.U16be());       // and an Ack
    packet.header.payloadBytes = in.U16be();
    packet.header.ackId = in.U16be();
    if (!in.Ok())
        return VxResult(VxError::Truncated, "control acknowledge");

    const std::size_t present = std::min<std::size_t>(packet.header.payloadBytes, in.Rest().size());
    if (present < packet.header.payloadBytes && IsGood(packet.header.status))
        return VxResult(VxError::Truncated, "payload of a control acknowledge");
    packet.payload = in.Bytes(present);
    return packet;
}

void WriteAckHeader(VxByteWriter& out, const AckHeader& header)
{
    out.U16be(static_cast<std::uint16_t>(header.status));
    out.U16be(static_cast<std::uint16_t>(header.ack));
    out.U16be(header.payloadBytes);
    out.U16be(header.ackId);
}

Datagram MakeEmptyAck(Status status, Ack ack, std::uint16_t ackId)
{
    Datagram datagram;
    auto out = datagram.Open();
    WriteAckHeader(out, {.status = status, .ack = ack, .payloadBytes = 0, .ackId = ackId});
    datagram.Close(out);
    return datagram;
}

} // namespace gvcp
