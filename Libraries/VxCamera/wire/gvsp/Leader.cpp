#include "VxCamera/wire/gvsp/Leader.h"

namespace gvsp {

//   offset  bytes  field            (big endian)
//        0      1  field info
//        1      1  generic flags
//        2      2  payload type
//        4      8  timestamp, ticks
LeaderStart ReadLeaderStart(VxByteReader& in)
{
    LeaderStart start;
    start.fieldInfo = in.U8();
    start.genericFlags = in.U8();
    start.payloadType.bits = in.U16be();
    start.timestampTicks = in.U64be();
    return start;
}

VxExpected<LeaderStart> ParseLeaderStart(std::span<const std::byte> data)
{
    VxByteReader in(data);
    const LeaderStart start = ReadLeaderStart(in);
    if (!in.Ok())
        return VxError::Truncated;
    return start;
}

void WriteLeaderStart(VxByteWriter& out, const LeaderStart& start)
{
    out.U8(start.fieldInfo);
    out.U8(start.genericFlags);
    out.U16be(start.payloadType.bits);
    out.U64be(start.timestampTicks);
}

} // namespace gvsp
