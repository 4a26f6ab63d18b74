#include "fuzz/FuzzTarget.h"

#include "VxCamera/wire/gvcp/ReadMem.h"

namespace {

void ParseReadMem(fuzz::Bytes bytes)
{
    const auto ack = gvcp::ParseReadMemAck(bytes);
    if (ack)
        fuzz::Require(ack->data.size() + sizeof(ack->address) <= bytes.size(),
                      "more data than there are bytes");
}

const fuzz::Registration kTarget("readmem-ack", ParseReadMem);

} // namespace
