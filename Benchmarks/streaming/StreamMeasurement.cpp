// Receives a stream with one receiver and prints one line of JSON: what it cost this program and the machine,
// what arrived, how late, and how much memory it held early and at the end.
//
// Usage: StreamMeasurement ours|aravis NAME=VALUE...   (address, packet, width, height, fps, frames)

#include "ReceiverRun.h"

#include <sys/resource.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <string>
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

/// @return  of all processors together, since the machine was started
double MachineBusySeconds()
{
    std::ifstream file("/proc/stat");
    std::string name;
    std::array<double, 8> ticks{}; // user, nice, system, idle, waiting, interrupts, soft interrupts, stolen
    file >> name;
    for (double& each : ticks)
        file >> each;
    const double busy =
        ticks[0] + ticks[1] + ticks[2] + ticks[5] + ticks[6] + ticks[7]; // neither idle nor waiting
    return busy / static_cast<double>(::sysconf(_SC_CLK_TCK));
}

/// @return  what this process holds of the machine's memory
long ResidentKib()
{
    std::ifstream file("/proc/self/statm");
    long total = 0;
    long resident = 0;
    file >> total >> resident;
    constexpr long kBytesPerKib = 1024;
    return resident * (::sysconf(_SC_PAGESIZE) / kBytesPerKib);
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

/// @return  the frames from one block to a later one; block ids of 16 bits begin again at 1
std::uint64_t FramesBetween(std::uint64_t earlier, std::uint64_t later)
{
    constexpr std::uint64_t kLargestId = 0xFFFF;
    if (later >= earlier)
        return later - earlier;
    return earlier <= kLargestId && earlier - later > kLargestId / 2 ? later + kLargestId - earlier : 0;
}

struct Outcome {
    std::uint64_t complete = 0;
    std::uint64_t incomplete = 0;
    std::uint64_t bytes = 0;
    std::uint64_t frames = 0; // sent meanwhile, by their ids
    double cpuSeconds = 0;
    double machineSeconds = 0;
    double seconds = 0;
    std::vector<double> latenciesMs; // from the camera's timestamp to the consumer, of complete frames
    long earlyKib = 0;               // resident after a tenth of the frames
    long lateKib = 0;                // resident at the end
};

Outcome Measure(IMeasuredReceiver& receiver, const ReceiverOrder& order)
{
    const std::int64_t offset = ClockOffsetNs(receiver);
    ReceivedFrame frame;
    for (std::uint64_t i = 0; i < kUnmeasuredFrames && receiver.Next(frame, kPatience); ++i) {
    }
    Outcome outcome;
    std::uint64_t lastId = frame.blockId;
    outcome.latenciesMs.assign(order.frames, 0); // so that its memory is there before any is counted
    outcome.latenciesMs.clear();
    const double cpuBefore = CpuSeconds();
    const double machineBefore = MachineBusySeconds();
    const auto begin = Clock::now();
    while (outcome.frames < order.frames && receiver.Next(frame, kPatience)) {
        constexpr double kMsPerNs = 1e-6;
        constexpr std::uint64_t kTenth = 10;
        if (const std::uint64_t further = FramesBetween(lastId, frame.blockId); further > 0) {
            outcome.frames += further;
            lastId = frame.blockId;
        }
        if (outcome.earlyKib == 0 && outcome.frames >= order.frames / kTenth)
            outcome.earlyKib = ResidentKib();
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
    outcome.machineSeconds = MachineBusySeconds() - machineBefore;
    outcome.lateKib = ResidentKib();
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
        "\"machine_s\": %.2f, \"seconds\": %.6f, \"latency_ms\": [%.4f, %.4f, %.4f], "
        "\"memory_kib\": [%ld, %ld]}\n",
        static_cast<unsigned long long>(outcome.frames), static_cast<unsigned long long>(outcome.complete),
        static_cast<unsigned long long>(outcome.incomplete), static_cast<unsigned long long>(outcome.bytes),
        outcome.cpuSeconds, outcome.machineSeconds, outcome.seconds, Quantile(outcome.latenciesMs, 0.5),
        Quantile(outcome.latenciesMs, 0.99), Quantile(outcome.latenciesMs, 0.999), outcome.earlyKib,
        outcome.lateKib);
    return 0;
}
