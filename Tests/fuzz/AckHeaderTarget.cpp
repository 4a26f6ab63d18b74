#include "fuzz/FuzzTarget.h"

#include "VxCamera/wire/gvcp/AckHeader.h"

namespace {

/// The head of every acknowledge: what it says of its length is what there is, unless it is a refusal, whose
/// payload nobody needs.
void ParseHeader(fuzz::Bytes bytes)
{
    const auto packet = gvcp::ParseAck(bytes);
    if (!packet)
        return;
    const std::size_t present = packet->payload.size();
    const std::size_t said = packet->header.payloadBytes;
    fuzz::Require(present + gvcp::kHeaderBytes <= bytes.size(), "the payload reaches beyond the packet");
    fuzz::Require(present == said || (present < said && !gvcp::IsGood(packet->header.status)),
                  "the payload is not what the head says");
}

const fuzz::Registration kTarget("ack-header", ParseHeader);

} // namespace
