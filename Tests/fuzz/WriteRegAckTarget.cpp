#include "fuzz/FuzzTarget.h"

#include "VxCamera/wire/gvcp/WriteReg.h"

namespace {

void ParseWriteReg(fuzz::Bytes bytes)
{
    const auto ack = gvcp::ParseWriteRegAck(bytes);
    if (!ack)
        fuzz::Require(!ack.Error().IsOK(), "refused with OK");
}

const fuzz::Registration kTarget("writereg-ack", ParseWriteReg);

} // namespace
