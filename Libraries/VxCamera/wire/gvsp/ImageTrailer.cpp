#include "VxCamera/wire/gvsp/ImageTrailer.h"

#include "VxBase/VxByteReader.h"

namespace gvsp {

namespace {

constexpr std::size_t kBeforePayloadType =
    2; // fixed by the protocol; not a status, although it looks like one

constexpr std::size_t kChunkLengthBytes = 4; // fixed by the protocol

PayloadType ReadTrailerStart(VxByteReader& in)
{
    in.Skip(kBeforePayloadType);
    return PayloadType{in.U16be()};
}

} // namespace

VxExpected<PayloadType> ParseTrailerPayloadType(std::span<const std::byte> data)
{
    VxByteReader in(data);
    const PayloadType type = ReadTrailerStart(in);
    if (!in.Ok())
        return VxError::Truncated;
    return type;
}

//   offset  bytes  image            |  offset  bytes  old extended chunk data      (big endian)
//        2      2  payload type     |       2      2  payload type
//        4      4  height, lines    |       4      4  bytes of all chunks
//                                   |       8      4  height, lines really sent
VxExpected<ImageTrailer> ParseImageTrailer(std::span<const std::byte> data)
{
    VxByteReader in(data);
    ImageTrailer trailer;
    trailer.payloadType = ReadTrailerStart(in);
    if (trailer.payloadType.Type() == PayloadType::kExtendedChunkData)
        in.Skip(kChunkLengthBytes);
    trailer.heightPx = in.U32be();

    if (!in.Ok())
        return VxError::Truncated;
    if (!trailer.payloadType.HasImageLeader())
        return VxError::InvalidData;
    return trailer;
}

void WriteImageTrailer(VxByteWriter& out, const ImageTrailer& trailer)
{
    out.Zeros(kBeforePayloadType);
    out.U16be(trailer.payloadType.bits);
    if (trailer.payloadType.Type() == PayloadType::kExtendedChunkData)
        out.Zeros(kChunkLengthBytes);
    out.U32be(trailer.heightPx);
}

} // namespace gvsp
