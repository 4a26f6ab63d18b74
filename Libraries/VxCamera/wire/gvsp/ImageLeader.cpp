#include "VxCamera/wire/gvsp/ImageLeader.h"

namespace gvsp {

//   offset  bytes  field            (big endian)
//        0     12  start of every leader
//       12      4  pixel format
//       16      4  width, pixels
//       20      4  height, pixels
//       24      4  offset x, pixels
//       28      4  offset y, pixels
//       32      2  padding after each line, bytes
//       34      2  padding after the image, bytes
VxExpected<ImageLeader> ParseImageLeader(std::span<const std::byte> data)
{
    VxByteReader in(data);
    ImageLeader leader;
    leader.start = ReadLeaderStart(in);
    leader.pixelFormat = in.U32be();
    leader.widthPx = in.U32be();
    leader.heightPx = in.U32be();
    leader.offsetXPx = in.U32be();
    leader.offsetYPx = in.U32be();
    leader.linePaddingBytes = in.U16be();
    leader.imagePaddingBytes = in.U16be();

    if (!in.Ok())
        return VxError::Truncated;
    if (!leader.start.payloadType.HasImageLeader())
        return VxError::InvalidData;
    return leader;
}

void WriteImageLeader(VxByteWriter& out, const ImageLeader& leader)
{
    WriteLeaderStart(out, leader.start);
    out.U32be(leader.pixelFormat);
    out.U32be(leader.widthPx);
    out.U32be(leader.heightPx);
    out.U32be(leader.offsetXPx);
    out.U32be(leader.offsetYPx);
    out.U16be(leader.linePaddingBytes);
    out.U16be(leader.imagePaddingBytes);
}

} // namespace gvsp
