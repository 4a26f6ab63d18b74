#include "fuzz/FuzzTarget.h"

#include "VxCamera/wire/gvcp/WriteMem.h"

namespace {

void ParseWriteMem(fuzz::Bytes bytes)
{
    const auto ack = gvcp::ParseWriteMemAck(bytes);
    if (!ack)
        fuzz::Require(!ack.Error().IsOK(), "refused with OK");
}

const fuzz::Registration kTarget("writemem-ack", ParseWriteMem);

} // namespace
