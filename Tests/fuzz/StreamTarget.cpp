#include "fuzz/FuzzTarget.h"

#include "VxCamera/receive/BlockAssembler.h"

#include "unit/VxCamera/receive/FakeSink.h"

#include <chrono>
#include <tuple>

namespace {

// Chosen: room for a small picture, so that packets can reach its end and beyond.
constexpr std::size_t kBuffers = 3;
constexpr std::size_t kBufferBytes = 4096;

/// A stream of packets. The input is a list of: milliseconds since the packet before (1 byte; 255 stands for
/// a second, 253 for one in which the receiver stands still), length (2 bytes, big endian), packet.
void Receive(fuzz::Bytes bytes)
{
    receive::FakeSink sink(kBuffers, kBufferBytes);
    receive::StreamCounters counters;
    receive::BlockAssembler assembler({}, sink, counters);
    assembler.SetCameraPicture(receive::PictureShape{0x01080001, 16, 8}); // for chunk data
    receive::BlockAssembler::Time now{};
    for (fuzz::Input input(bytes); !input.IsEmpty();) {
        const unsigned wait = input.Byte();
        now += std::chrono::milliseconds(wait == 255 || wait == 253 ? 1000 : wait);
        if (wait == 253)
            std::ignore = assembler.OnTimeBehind(now);
        else
            assembler.OnTime(now);
        assembler.OnPacket(input.Take(input.Word()), now);
        if (const auto deadline = assembler.NextDeadline(); deadline && wait != 253)
            fuzz::Require(*deadline > now - std::chrono::hours(1), "a deadline long ago");
    }
    now += std::chrono::hours(1);
    assembler.OnTime(now);
    fuzz::Require(!assembler.NextDeadline(), "blocks wait for ever");
    assembler.Abort();
    fuzz::Require(sink.FreeCount() == kBuffers, "a buffer was lost");
}

const fuzz::Registration kTarget("stream", Receive);

} // namespace
