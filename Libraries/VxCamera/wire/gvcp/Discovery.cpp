#include "VxCamera/wire/gvcp/Discovery.h"

#include "VxBase/VxByteReader.h"

#include "VxCamera/wire/gvcp/AckHeader.h"
#include "VxCamera/wire/gvcp/CommandHeader.h"
#include "VxCamera/wire/registers/BootstrapRegisters.h"

namespace gvcp {

namespace {

// Fixed by the protocol: unused bytes in front of each address, and after the IP configuration.
constexpr std::size_t kBeforeMac = 2;
constexpr std::size_t kBeforeIpAddress = 12;
constexpr std::size_t kBeforeSubnetMask = 12;
constexpr std::size_t kBeforeGateway = 12;

MacAddress ReadMac(VxByteReader& in)
{
    MacAddress mac{};
    for (std::uint8_t& part : mac)
        part = in.U8();
    return mac;
}

} // namespace

Datagram MakeDiscoveryCommand(std::uint16_t requestId, DiscoveryAnswer answer)
{
    CommandHeader header{.command = Command::Discovery, .requestId = requestId};
    if (answer == DiscoveryAnswer::BroadcastAllowed)
        header.flags |= kBroadcastAckAllowed;

    Datagram datagram;
    auto out = datagram.Open();
    WriteCommandHeader(out, header);
    datagram.Close(out);
    return datagram;
}

//   offset  bytes  field                     (big endian; texts are filled with NUL, but need not end with
//   one)
//        0      2  protocol version, major
//        2      2  protocol version, minor
//        4      4  device mode
//       10      6  MAC
//       16      4  supported IP configuration
//       20      4  current IP configuration
//       36      4  IP address
//       52      4  subnet mask
//       68      4  default gateway
//       72     32  manufacturer name
//      104     32  model name
//      136     32  device version
//      168     48  manufacturer's information
//      216     16  serial number
//      232     16  user defined name
VxExpected<DiscoveryAck> ParseDiscoveryAck(std::span<const std::byte> payload)
{
    VxByteReader in(payload);
    DiscoveryAck ack;
    ack.majorVersion = in.U16be();
    ack.minorVersion = in.U16be();
    ack.deviceMode = in.U32be();
    in.Skip(kBeforeMac);
    ack.mac = ReadMac(in);
    ack.supportedIpConfiguration = in.U32be();
    ack.currentIpConfiguration = in.U32be();
    in.Skip(kBeforeIpAddress);
    ack.ipAddress = in.U32be();
    in.Skip(kBeforeSubnetMask);
    ack.subnetMask = in.U32be();
    in.Skip(kBeforeGateway);
    ack.defaultGateway = in.U32be();
    ack.manufacturerName = in.Text(bootstrap::kManufacturerNameBytes);
    ack.modelName = in.Text(bootstrap::kModelNameBytes);
    ack.deviceVersion = in.Text(bootstrap::kDeviceVersionBytes);
    ack.manufacturerInfo = in.Text(bootstrap::kManufacturerInfoBytes);
    ack.serialNumber = in.Text(bootstrap::kSerialNumberBytes);
    ack.userDefinedName = in.Text(bootstrap::kUserDefinedNameBytes);

    if (!in.Ok())
        return VxResult(VxError::Truncated, "discovery acknowledge");
    return ack;
}

Datagram MakeDiscoveryAck(std::uint16_t ackId, const DiscoveryAck& ack)
{
    Datagram datagram;
    auto out = datagram.Open();
    WriteAckHeader(out, {.ack = Ack::Discovery, .payloadBytes = kDiscoveryAckBytes, .ackId = ackId});
    out.U16be(ack.majorVersion);
    out.U16be(ack.minorVersion);
    out.U32be(ack.deviceMode);
    out.Zeros(kBeforeMac);
    out.Bytes(std::as_bytes(std::span(ack.mac)));
    out.U32be(ack.supportedIpConfiguration);
    out.U32be(ack.currentIpConfiguration);
    out.Zeros(kBeforeIpAddress);
    out.U32be(ack.ipAddress);
    out.Zeros(kBeforeSubnetMask);
    out.U32be(ack.subnetMask);
    out.Zeros(kBeforeGateway);
    out.U32be(ack.defaultGateway);
    out.Text(ack.manufacturerName, bootstrap::kManufacturerNameBytes);
    out.Text(ack.modelName, bootstrap::kModelNameBytes);
    out.Text(ack.deviceVersion, bootstrap::kDeviceVersionBytes);
    out.Text(ack.manufacturerInfo, bootstrap::kManufacturerInfoBytes);
    out.Text(ack.serialNumber, bootstrap::kSerialNumberBytes);
    out.Text(ack.userDefinedName, bootstrap::kUserDefinedNameBytes);
    datagram.Close(out);
    return datagram;
}

} // namespace gvcp
