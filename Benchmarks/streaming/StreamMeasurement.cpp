// Receives a stream with one receiver and prints one line of JSON: what it cost, what arrived, and how late.
// Usage: StreamMeasurement ours|aravis NAME=VALUE...   (address, packet, width, height, fps, frames)

#include "ReceiverRun.h"

#include <sys/resource.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <string_view>

namespace {

using Clock = std::chrono::steady_clock;

constexpr std::uint64_t kUnmeasuredFrames = 10; // chosen: until buffers and caches are warm
constexpr std::chrono::milliseconds kPatience{2000};

double CpuSeconds()
{
    rusage use{};
    ::getrusage(RUSAGE_SELF, &use);
    const auto seconds = [](const timeval& time) {
        constexpr double kMicro = 1e-6;
        return static_cast<double>(time.tv_sec) + kMicro * static_cast<double>(time.tv_usec);
    };
    return seconds(use.ru_utime) + seconds(use.ru_stime);
}

std::uint64_t HostNowNs()
{
    const auto now = Clock::now().time_since_epoch();
    return static_cast<std::uint64_t>(std::chrono::duration_cast<std::chrono::nanoseconds>(now).count());
}

/// @return  what has to be added to the camera's clock
std::int64_t ClockOffsetNs(IMeasuredReceiver& receiver)
{
    std::int64_t best = 0;
    std::uint64_t bestTook = UINT64_MAX;
    for (int i = 0; i < 20; ++i) { // chosen: one of them is not disturbed
        const std::uint64_t before = HostNowNs();
        const std::uint64_t camera = receiver.CameraNowNs();
        const std::uint64_t took = HostNowNs() - before;
        if (took >= bestTook)
            continue;
        bestTook = took;
        best = static_cast<std::int64_t>(before) - static_cast<std::int64_t>(camera);
    }
    return best;
}

ReceiverOrder ReadOrder(int argc, char** argv)
{
    ReceiverOrder order;
    for (int i = 2; i < argc; ++i) {
        const std::string_view text(argv[i]);
        const std::size_t equals = text.find('=');
        const std::string_view name = text.substr(0, equals);
        const std::string value(equals == std::string_view::npos ? "" : text.substr(equals + 1));
        if (name == "address")
            order.address = value;
        else if (name == "packet")
            order.packetBytes = std::stoll(value);
        else if (name == "width")
            order.widthPx = std::stoll(value);
        else if (name == "height")
            order.heightPx = std::stoll(value);
        else if (name == "fps")
            order.framesPerSecond = std::stod(value);
        else if (name == "frames")
            order.frames = std::stoull(value);
    }
    return order;
}

struct Outcome {
    std::uint64_t complete = 0;
    std::uint64_t incomplete = 0;
    std::uint64_t bytes = 0;
    std::uint64_t firstId = 0;
    std::uint64_t lastId = 0;
    double cpuSeconds = 0;
    double seconds = 0;
    std::vector<double> latenciesMs; // from the camera's timestamp to the consumer, of complete frames
};

Outcome Measure(IMeasuredReceiver& receiver, const ReceiverOrder& order)
{
    const std::int64_t offset = ClockOffsetNs(receiver);
    ReceivedFrame frame;
    for (std::uint64_t i = 0; i < kUnmeasuredFrames && receiver.Next(frame, kPatience); ++i) {
    }
    Outcome outcome;
    outcome.firstId = frame.blockId;
    outcome.lastId = frame.blockId;
    const double cpuBefore = CpuSeconds();
    const auto begin = Clock::now();
    while (outcome.lastId - outcome.firstId < order.frames && receiver.Next(frame, kPatience)) {
        constexpr double kMsPerNs = 1e-6;
        outcome.lastId = std::max(outcome.lastId, frame.blockId);
        if (!frame.isComplete) {
            ++outcome.incomplete;
            continue;
        }
        ++outcome.complete;
        outcome.bytes += frame.bytes;
        const std::int64_t sent = static_cast<std::int64_t>(frame.timestampNs) + offset;
        outcome.latenciesMs.push_back(static_cast<double>(static_cast<std::int64_t>(HostNowNs()) - sent) *
                                      kMsPerNs);
    }
    outcome.cpuSeconds = CpuSeconds() - cpuBefore;
    outcome.seconds = std::chrono::duration<double>(Clock::now() - begin).count();
    std::ranges::sort(outcome.latenciesMs);
    return outcome;
}

double Quantile(const std::vector<double>& sorted, double share)
{
    if (sorted.empty())
        return -1;
    const auto index =
        static_cast<std::size_t>(share * static_cast<double>(sorted.size() - 1)); // not negative
    return sorted[index];
}

} // namespace

int main(int argc, char** argv)
{
    const std::string_view who = argc > 1 ? argv[1] : "";
    if (who != "ours" && who != "aravis") {
        std::fputs("usage: StreamMeasurement ours|aravis NAME=VALUE...\n", stderr);
        return 2;
    }
    const ReceiverOrder order = ReadOrder(argc, argv);
    const auto receiver = who == "ours" ? MakeOurReceiver() : MakeAravisReceiver();
    if (const std::string failure = receiver->Start(order); !failure.empty()) {
        std::fprintf(stderr, "error: %s\n", failure.c_str());
        return 1;
    }
    const Outcome outcome = Measure(*receiver, order);
    std::fprintf(stderr, "%s\n", receiver->Counts().c_str());
    std::printf(
        "{\"frames\": %llu, \"complete\": %llu, \"incomplete\": %llu, \"bytes\": %llu, \"cpu_s\": %.6f, "
        "\"seconds\": %.6f, \"latency_ms\": [%.4f, %.4f, %.4f]}\n",
        static_cast<unsigned long long>(outcome.lastId - outcome.firstId),
        static_cast<unsigned long long>(outcome.complete),
        static_cast<unsigned long long>(outcome.incomplete), static_cast<unsigned long long>(outcome.bytes),
        outcome.cpuSeconds, outcome.seconds, Quantile(outcome.latenciesMs, 0.5),
        Quantile(outcome.latenciesMs, 0.99), Quantile(outcome.latenciesMs, 0.999));
    return 0;
}
