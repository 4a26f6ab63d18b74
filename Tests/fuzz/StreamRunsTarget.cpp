#include "fuzz/FuzzTarget.h"

#include "unit/VxCamera/receive/LandingReceiver.h"

#include <chrono>
#include <vector>

namespace {

constexpr unsigned kIsForeign = 1; // of a datagram's flags
constexpr unsigned kEndsCall = 2;
constexpr unsigned kIsTruncated = 4;

/// A stream whose packets land in the picture, alone or in runs as a system coalesces them. The input is a
/// list of: flags (1 byte), length of each packet (2 bytes, big endian; 0: there is one), length of all of
/// them (2 bytes), the packets.
void ReceiveRuns(fuzz::Bytes bytes)
{
    receive::LandingReceiver receiver;
    const std::size_t buffers = receiver.sink.FreeCount();
    std::vector<receive::Arrived> arrived;
    std::size_t sent = 0;
    for (fuzz::Input input(bytes); !input.IsEmpty();) {
        const unsigned flags = input.Byte();
        receive::Arrived one;
        one.segmentBytes = input.Word();
        const auto packets = input.Take(input.Word());
        one.bytes.assign(packets.begin(), packets.end());
        one.sender = (flags & kIsForeign) != 0 ? receive::kStranger : receive::kCamera;
        one.isTruncated = (flags & kIsTruncated) != 0;
        const bool isRun = one.segmentBytes != 0 && !packets.empty();
        sent += isRun ? (packets.size() - 1) / one.segmentBytes + 1 : 1;
        arrived.push_back(std::move(one));
        if ((flags & kEndsCall) != 0 || input.IsEmpty()) {
            receiver.Receive(arrived);
            arrived.clear();
            receiver.now += std::chrono::milliseconds(1);
            receiver.assembler.OnTime(receiver.now);
        }
    }
    const auto& counters = receiver.counters;
    fuzz::Require(counters.packets.Value() + counters.packetsForeign.Value() == sent, "a packet got lost");
    receiver.now += std::chrono::hours(1);
    receiver.assembler.OnTime(receiver.now);
    fuzz::Require(!receiver.assembler.NextDeadline(), "blocks wait for ever");
    receiver.assembler.Abort();
    fuzz::Require(receiver.sink.FreeCount() == buffers, "a buffer was lost");
}

const fuzz::Registration kTarget("stream-runs", ReceiveRuns);

} // namespace
