#include "VxCamera/wire/gvcp/PendingAck.h"

#include "VxBase/VxByteReader.h"

#include "VxCamera/wire/gvcp/AckHeader.h"

#include <algorithm>

namespace gvcp {

namespace {

// Fixed by the protocol.
constexpr std::size_t kBeforeTime = 2;
constexpr std::uint16_t kPayloadBytes = 4;

} // namespace

//   offset  bytes  field            (big endian)
//        2      2  time to completion, ms
VxExpected<PendingAck> ParsePendingAck(std::span<const std::byte> payload)
{
    VxByteReader in(payload);
    in.Skip(kBeforeTime);
    const PendingAck ack{std::chrono::milliseconds(in.U16be())};
    if (!in.Ok())
        return VxResult(VxError::Truncated, "pending acknowledge");
    return ack;
}

Datagram MakePendingAck(std::uint16_t ackId, const PendingAck& ack)
{
    using Milliseconds = std::chrono::milliseconds;
    const auto time = std::clamp(ack.timeToCompletion, Milliseconds(0), Milliseconds(UINT16_MAX));

    Datagram datagram;
    auto out = datagram.Open();
    WriteAckHeader(out, {.ack = Ack::Pending, .payloadBytes = kPayloadBytes, .ackId = ackId});
    out.Zeros(kBeforeTime);
    out.U16be(static_cast<std::uint16_t>(time.count())); // clamped above
    datagram.Close(out);
    return datagram;
}

} // namespace gvcp
