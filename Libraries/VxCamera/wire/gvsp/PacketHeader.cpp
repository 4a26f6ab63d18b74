#include "VxCamera/wire/gvsp/PacketHeader.h"

#include "VxBase/VxByteReader.h"

namespace gvsp {

namespace {

// Fixed by the protocol: the word with the format, in both headers.
constexpr std::uint32_t kExtendedIdsBit = 0x80000000;
constexpr unsigned kFormatShift = 24;
constexpr std::uint32_t kFormatMask = 0x0F;
constexpr std::uint32_t kPacketIdMask = 0x00FFFFFF;
constexpr std::uint32_t kPartCountMask = 0x1F;

} // namespace

//   offset  bytes  standard header           |  offset  bytes  extended header      (big endian)
//        0      2  status                    |       0      2  status
//        2      2  block id                  |       2      2  flags
//        4      1  format, bit 7 clear       |       4      1  format, bit 7 set
//        5      3  packet id                 |       7      1  leader: number of parts or zones
//                                            |       8      8  block id
//                                            |      16      4  packet id
VxExpected<Packet> ParsePacket(std::span<const std::byte> datagram)
{
    VxByteReader in(datagram);
    Packet packet;
    PacketHeader& header = packet.header;
    header.status = static_cast<Status>(in.U16be()); // every number is a Status
    const std::uint16_t blockIdOrFlags = in.U16be();
    const std::uint32_t word = in.U32be();
    header.format = static_cast<PacketFormat>((word >> kFormatShift) & kFormatMask); // four bits fit
    if ((word & kExtendedIdsBit) != 0) {
        header.idMode = IdMode::Extended;
        header.flags = blockIdOrFlags;
        header.partCount = static_cast<std::uint8_t>(word & kPartCountMask); // five bits fit
        header.blockId = in.U64be();
        header.packetId = in.U32be();
    } else {
        header.blockId = blockIdOrFlags;
        header.packetId = word & kPacketIdMask;
    }
    packet.data = in.Rest();

    if (!in.Ok())
        return VxError::Truncated; // no text: this is called for every packet
    return packet;
}

void WritePacketHeader(VxByteWriter& out, const PacketHeader& header)
{
    const std::uint32_t format = (static_cast<std::uint32_t>(header.format) & kFormatMask) << kFormatShift;
    out.U16be(static_cast<std::uint16_t>(header.status));
    if (header.idMode == IdMode::Extended) {
        out.U16be(header.flags);
        out.U32be(kExtendedIdsBit | format | (header.partCount & kPartCountMask));
        out.U64be(header.blockId);
        out.U32be(header.packetId);
    } else {
        out.U16be(static_cast<std::uint16_t>(header.blockId)); // as documented: the low bits
        out.U32be(format | (header.packetId & kPacketIdMask));
    }
}

} // namespace gvsp
