#include "fuzz/FuzzTarget.h"

#include "VxCamera/wire/gvcp/Discovery.h"

namespace {

/// What is parsed and written again says the same.
void ParseDiscovery(fuzz::Bytes bytes)
{
    const auto ack = gvcp::ParseDiscoveryAck(bytes);
    if (!ack)
        return;
    const gvcp::Datagram written = gvcp::MakeDiscoveryAck(1, *ack);
    const auto again = gvcp::ParseDiscoveryAck(written.Bytes().subspan(gvcp::kHeaderBytes));
    fuzz::Require(again.HasValue() && again->mac == ack->mac && again->ipAddress == ack->ipAddress,
                  "what was written reads as something else");
}

const fuzz::Registration kTarget("discovery-ack", ParseDiscovery);

} // namespace
