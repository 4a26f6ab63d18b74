#include "fuzz/FuzzTarget.h"

#include "VxCamera/wire/gvcp/PendingAck.h"

namespace {

void ParsePending(fuzz::Bytes bytes)
{
    const auto ack = gvcp::ParsePendingAck(bytes);
    if (ack)
        fuzz::Require(ack->timeToCompletion.count() >= 0 && ack->timeToCompletion.count() <= UINT16_MAX,
                      "a time that the packet cannot hold");
}

const fuzz::Registration kTarget("pending-ack", ParsePending);

} // namespace
