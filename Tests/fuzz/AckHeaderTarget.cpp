#include "fuzz/FuzzTarget.h"

#include "VxCamera/wire/gvcp/AckHeader.h"

namespace {

/// The head of every acknowledge: what it says of its length is what there is.
void ParseHeader(fuzz::Bytes bytes)
{
    const auto packet = gvcp::ParseAck(bytes);
    if (packet)
        fuzz::Require(packet->payload.size() == packet->header.payloadBytes &&
                          packet->payload.size() + gvcp::kHeaderBytes <= bytes.size(),
                      "the payload reaches beyond the packet");
}

const fuzz::Registration kTarget("ack-header", ParseHeader);

} // namespace
