#include "fuzz/FuzzTarget.h"

#include "VxCamera/receive/BlockAssembler.h"

#include "unit/VxCamera/receive/FakeSink.h"

#include <algorithm>
#include <chrono>
#include <tuple>

namespace {

// Chosen: room for a small picture, so that packets can reach its end and beyond.
constexpr std::size_t kBuffers = 3;
constexpr std::size_t kBufferBytes = 4096;

/// A camera that can be asked, as far as what it is asked for makes sense.
class CheckingChannel final : public receive::IResendChannel {
public:
    [[nodiscard]] bool IsOpen() const override { return isOpen; }
    void Ask(gvsp::IdMode idMode, std::uint64_t blockId, std::uint32_t first, std::uint32_t last) override
    {
        constexpr std::uint32_t kLastStandardId = 0xFF'FFFF;
        fuzz::Require(isOpen, "asked although nobody may be asked");
        fuzz::Require(first <= last, "asked for a range that is none");
        fuzz::Require(blockId != gvsp::kTestBlockId, "asked for a test packet");
        fuzz::Require(idMode == gvsp::IdMode::Extended || last <= kLastStandardId,
                      "asked for a packet that cannot be");
    }

    bool isOpen = true;
};

/// Lets time pass step by step, as far as the assembler wants to be called.
void Pass(receive::BlockAssembler& assembler, receive::BlockAssembler::Time& now,
          std::chrono::milliseconds duration)
{
    const auto end = now + duration;
    constexpr int kMostSteps = 100; // chosen: more often than it asks for within a millisecond
    for (int i = 0; i < kMostSteps && now < end; ++i) {
        const auto deadline = assembler.NextDeadline(now);
        now = std::clamp(deadline.value_or(end), now, end);
        assembler.OnTime(now);
    }
    now = end;
    assembler.OnTime(now);
}

/// A second passes in which nobody looks for packets.
void StandStill(receive::BlockAssembler& assembler, receive::BlockAssembler::Time& now)
{
    now += std::chrono::seconds(1);
    std::ignore = assembler.OnTimeBehind(now);
}

/// A stream whose camera sends again. The input is the one of the target "stream", in which a wait of 254
/// makes the camera one that is not asked, or one that is.
void Receive(fuzz::Bytes bytes)
{
    receive::FakeSink sink(kBuffers, kBufferBytes);
    receive::StreamCounters counters;
    CheckingChannel channel;
    receive::BlockAssembler assembler({}, sink, counters, &channel);
    receive::BlockAssembler::Time now{std::chrono::hours(1)};
    for (fuzz::Input input(bytes); !input.IsEmpty();) {
        const unsigned wait = input.Byte();
        if (wait == 254)
            channel.isOpen = !channel.isOpen;
        else if (wait == 253)
            StandStill(assembler, now);
        else
            Pass(assembler, now,
                 wait == 255 ? std::chrono::milliseconds(1000) : std::chrono::milliseconds(wait));
        assembler.OnPacket(input.Take(input.Word()), now);
    }
    Pass(assembler, now, std::chrono::hours(1));
    fuzz::Require(!assembler.NextDeadline(now), "blocks wait for ever");
    assembler.Abort();
    fuzz::Require(sink.FreeCount() == kBuffers, "a buffer was lost");
}

const fuzz::Registration kTarget("stream-resend", Receive);

} // namespace
