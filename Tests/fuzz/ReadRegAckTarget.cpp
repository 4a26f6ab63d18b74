#include "fuzz/FuzzTarget.h"

#include "VxCamera/wire/gvcp/ReadReg.h"

namespace {

void ParseReadReg(fuzz::Bytes bytes)
{
    const auto ack = gvcp::ParseReadRegAck(bytes);
    if (ack)
        fuzz::Require(!ack->values.empty() && ack->values.size() * sizeof(std::uint32_t) <= bytes.size(),
                      "more values than there are bytes");
}

const fuzz::Registration kTarget("readreg-ack", ParseReadReg);

} // namespace
