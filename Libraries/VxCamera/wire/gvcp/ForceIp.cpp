#include "VxCamera/wire/gvcp/ForceIp.h"

#include "VxBase/VxByteReader.h"

#include "VxCamera/wire/gvcp/CommandHeader.h"

namespace gvcp {

namespace {

// Fixed by the protocol: unused bytes in front of each field.
constexpr std::size_t kBeforeMac = 2;
constexpr std::size_t kBeforeIpAddress = 12;
constexpr std::size_t kBeforeSubnetMask = 12;
constexpr std::size_t kBeforeGateway = 12;
constexpr std::uint16_t kPayloadBytes = 56;

} // namespace

//   offset  bytes  field            (big endian)
//        2      6  MAC of the device that is meant
//       20      4  IP address
//       36      4  subnet mask
//       52      4  default gateway
VxExpected<ForceIpCommand> ParseForceIpCommand(std::span<const std::byte> payload)
{
    VxByteReader in(payload);
    ForceIpCommand command;
    in.Skip(kBeforeMac);
    for (std::uint8_t& part : command.mac)
        part = in.U8();
    in.Skip(kBeforeIpAddress);
    command.ipAddress = in.U32be();
    in.Skip(kBeforeSubnetMask);
    command.subnetMask = in.U32be();
    in.Skip(kBeforeGateway);
    command.defaultGateway = in.U32be();

    if (!in.Ok())
        return VxResult(VxError::Truncated, "force IP command");
    return command;
}

Datagram MakeForceIpCommand(std::uint16_t requestId, DiscoveryAnswer answer, const ForceIpCommand& command)
{
    CommandHeader header{.command = Command::ForceIp, .payloadBytes = kPayloadBytes, .requestId = requestId};
    if (answer == DiscoveryAnswer::BroadcastAllowed)
        header.flags |= kBroadcastAckAllowed;

    Datagram datagram;
    auto out = datagram.Open();
    WriteCommandHeader(out, header);
    out.Zeros(kBeforeMac);
    out.Bytes(std::as_bytes(std::span(command.mac)));
    out.Zeros(kBeforeIpAddress);
    out.U32be(command.ipAddress);
    out.Zeros(kBeforeSubnetMask);
    out.U32be(command.subnetMask);
    out.Zeros(kBeforeGateway);
    out.U32be(command.defaultGateway);
    datagram.Close(out);
    return datagram;
}

} // namespace gvcp
