#include "fuzz/FuzzTarget.h"

#include "unit/VxCamera/receive/LandingReceiver.h"

#include <algorithm>
#include <chrono>
#include <vector>

namespace {

constexpr unsigned kIsForeign = 1; // of a datagram's flags
constexpr unsigned kEndsCall = 2;
constexpr unsigned kIsTruncated = 4;

/// The same stream on the common way, where every packet is copied into the picture.
struct CommonReceiver {
    void Receive(const std::vector<receive::Arrived>& arrived, receive::BlockAssembler::Time now)
    {
        for (const receive::Arrived& one : arrived) {
            if (one.sender != receive::kCamera)
                continue;
            const std::size_t step = one.segmentBytes != 0 ? one.segmentBytes : one.bytes.size();
            fuzz::Bytes rest(one.bytes);
            do {
                const auto packet = rest.first(std::min(step, rest.size()));
                assembler.OnPacket(packet, now);
                rest = rest.subspan(packet.size());
            } while (!rest.empty());
        }
    }

    /// Whether a picture that passed as good is one of this way, too.
    [[nodiscard]] bool Has(const receive::FakeSink::Delivered& landed) const
    {
        const std::size_t bytes = std::min(landed.info.receivedBytes, landed.info.geometry.memoryBytes);
        return std::ranges::any_of(sink.delivered, [&](const receive::FakeSink::Delivered& each) {
            return each.info.code == VxError::Ok && each.info.blockId == landed.info.blockId &&
                   each.info.geometry == landed.info.geometry &&
                   std::equal(each.memory.begin(), each.memory.begin() + static_cast<std::ptrdiff_t>(bytes),
                              landed.memory.begin());
        });
    }

    receive::FakeSink sink{4, 64 * 48};
    receive::StreamCounters counters;
    receive::BlockAssembler assembler{{}, sink, counters};
};

/// A stream whose packets land in the picture, alone or in runs as a system coalesces them. The input is a
/// list of: flags (1 byte), length of each packet (2 bytes, big endian; 0: there is one), length of all of
/// them (2 bytes), the packets.
void ReceiveRuns(fuzz::Bytes bytes)
{
    receive::LandingReceiver receiver;
    CommonReceiver common;
    bool isAnyTruncated = false; // what is left of it depends on where it landed
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
        isAnyTruncated = isAnyTruncated || one.isTruncated;
        sent += isRun ? (packets.size() - 1) / one.segmentBytes + 1 : 1;
        arrived.push_back(std::move(one));
        if ((flags & kEndsCall) != 0 || input.IsEmpty()) {
            receiver.Receive(arrived);
            common.Receive(arrived, receiver.now);
            arrived.clear();
            receiver.now += std::chrono::milliseconds(1);
            receiver.assembler.OnTime(receiver.now);
            common.assembler.OnTime(receiver.now);
        }
    }
    const auto& counters = receiver.counters;
    fuzz::Require(counters.packets.Value() + counters.packetsForeign.Value() == sent, "a packet got lost");
    receiver.now += std::chrono::hours(1);
    receiver.assembler.OnTime(receiver.now);
    common.assembler.OnTime(receiver.now);
    for (const receive::FakeSink::Delivered& each : receiver.sink.delivered) {
        if (each.info.code == VxError::Ok && !isAnyTruncated)
            fuzz::Require(common.Has(each), "another picture than on the common way");
    }
    fuzz::Require(!receiver.assembler.NextDeadline(), "blocks wait for ever");
    receiver.assembler.Abort();
    fuzz::Require(receiver.sink.FreeCount() == buffers, "a buffer was lost");
}

const fuzz::Registration kTarget("stream-runs", ReceiveRuns);

} // namespace
