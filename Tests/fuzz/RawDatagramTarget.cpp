#include "fuzz/FuzzTarget.h"

#include "VxCamera/transport/posix/RawDatagram.h"

namespace {

using transport::UdpChecksum;

/// What is found lies in the packet, and a beginning tells the same as the whole.
void Parse(fuzz::Bytes bytes)
{
    const auto trusted = transport::ParseUdp(bytes, UdpChecksum::Trusted);
    const auto checked = transport::ParseUdp(bytes, UdpChecksum::Unchecked);
    const auto beginning = transport::ParseBeginningOfUdp(bytes);
    fuzz::Require(trusted || !checked, "a wrong datagram has a right checksum");
    fuzz::Require(beginning || !trusted, "a whole datagram has no beginning");
    if (beginning)
        fuzz::Require(beginning->payload.size() <= beginning->payloadBytes,
                      "more is there than the datagram has");
    if (!trusted)
        return;
    const std::byte* const end = bytes.data() + bytes.size();
    fuzz::Require(trusted->payload.data() >= bytes.data() &&
                      trusted->payload.data() + trusted->payload.size() <= end,
                  "the payload lies outside of the packet");
    fuzz::Require(trusted->payload.size() == trusted->payloadBytes && trusted->sender == beginning->sender,
                  "beginning and whole differ");
}

const fuzz::Registration kTarget("raw-datagram", Parse);

} // namespace
