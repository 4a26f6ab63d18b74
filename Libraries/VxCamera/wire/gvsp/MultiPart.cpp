#include "VxCamera/wire/gvsp/MultiPart.h"

#include "VxBase/VxByteReader.h"

namespace gvsp {

namespace {

constexpr unsigned kHighPartShift = 32; // a number of 48 bits: 16 above 32
constexpr std::size_t kAfterFormat = 2;
constexpr std::size_t kZoneBytes = 1 + 4; // additional zones, zone directions
constexpr std::size_t kAfterPadding = 4;

std::uint64_t ReadU48be(VxByteReader& in)
{
    const std::uint64_t high = in.U16be();
    return high << kHighPartShift | in.U32be();
}

void WriteU48be(VxByteWriter& out, std::uint64_t value)
{
    out.U16be(static_cast<std::uint16_t>(value >> kHighPartShift)); // 48 bits are meant
    out.U32be(static_cast<std::uint32_t>(value));                   // the low half
}

} // namespace

//   offset  bytes  field, from the start of the descriptor   (big endian)
//        0      2  kind of data
//        2      6  length of the part, bytes
//        8      4  pixel format, or data format
//       14      1  source id
//       15      1  additional zones
//       16      4  zone directions
//       20      2  purpose id
//       22      2  region id
//       24      4  width, pixels
//       28      4  height, pixels
//       32      4  offset x, pixels
//       36      4  offset y, pixels
//       40      2  padding after each line, bytes
//       42      2  padding after the image, bytes
VxExpected<PartDescriptor> ParsePartDescriptor(std::span<const std::byte> leader, std::size_t index)
{
    if (index >= PartCount(leader))
        return VxError::Truncated;
    VxByteReader in(leader.subspan(kLeaderStartBytes + index * kPartDescriptorBytes));
    PartDescriptor part;
    part.dataType = in.U16be();
    part.lengthBytes = ReadU48be(in);
    part.pixelFormat = in.U32be();
    in.Skip(kAfterFormat);
    part.sourceId = in.U8();
    in.Skip(kZoneBytes);
    part.purposeId = in.U16be();
    part.regionId = in.U16be();
    part.widthPx = in.U32be();
    part.heightPx = in.U32be();
    part.offsetXPx = in.U32be();
    part.offsetYPx = in.U32be();
    part.linePaddingBytes = in.U16be();
    part.imagePaddingBytes = in.U16be();
    return part;
}

void WritePartDescriptor(VxByteWriter& out, const PartDescriptor& part)
{
    out.U16be(part.dataType);
    WriteU48be(out, part.lengthBytes);
    out.U32be(part.pixelFormat);
    out.Zeros(kAfterFormat);
    out.U8(part.sourceId);
    out.Zeros(kZoneBytes);
    out.U16be(part.purposeId);
    out.U16be(part.regionId);
    out.U32be(part.widthPx);
    out.U32be(part.heightPx);
    out.U32be(part.offsetXPx);
    out.U32be(part.offsetYPx);
    out.U16be(part.linePaddingBytes);
    out.U16be(part.imagePaddingBytes);
    out.Zeros(kAfterPadding);
}

//   offset  bytes  field, after the packet's header   (big endian)
//        0      1  part id
//        1      1  zone information
//        2      6  offset of the data inside the part
//        8      -  data
VxExpected<PartPayload> ParsePartPayload(std::span<const std::byte> data)
{
    VxByteReader in(data);
    PartPayload payload;
    payload.partId = in.U8();
    payload.zoneInfo = in.U8();
    payload.offsetBytes = ReadU48be(in);
    payload.data = in.Rest();

    if (!in.Ok())
        return VxError::Truncated;
    return payload;
}

void WritePartPrefix(VxByteWriter& out, const PartPayload& payload)
{
    out.U8(payload.partId);
    out.U8(payload.zoneInfo);
    WriteU48be(out, payload.offsetBytes);
}

} // namespace gvsp
