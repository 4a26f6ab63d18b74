#include "MedianTable.h"

#include "VxDSSource/camera/VxStreamGEV.h"
#include "VxDSSource/overlay/GdiPlusSession.h"
#include "VxDSSource/overlay/OverlayText.h"
#include "VxDSSource/overlay/StatusSummary.h"
#include "unit/VxDSSource/stream/CanarySample.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <cstring>
#include <iomanip>
#include <iostream>
#include <map>
#include <memory>
#include <string>
#include <vector>

// What diagnostics add to a full HD frame: the status summary, composed and drawn into a picture. Beside it a
// plain copy of that frame. Behind the table stands how long single frames took: a median hides the frame
// that comes late.

namespace {

using Clock = std::chrono::steady_clock;

constexpr LONG kWidthPx = 1920;
constexpr LONG kHeightPx = 1080;
constexpr LONG kOddWidthPx = kWidthPx - 1;          // rows that are no multiples of four bytes
constexpr const char* kCopyName = "memcpy/6220800"; // a frame with 24 bits a pixel

// Fixed: with diagnostics on and no kernel a frame takes so much longer at most.
constexpr const char* kGoal = "2 ms";

/// Which frames of a pin are measured.
enum class Frames {
    First, ///< on which it is found out how GDI+ treats bits
    Later,
};

struct Work {
    const char* name;
    WORD bits;
    LONG widthPx;
    LONG heightPx; ///< positive: bottom-up
    Frames frames;
};

constexpr Work kWorks[] = {
    {"Overlay_on_RGB24", 24, kWidthPx, kHeightPx, Frames::Later},
    {"Overlay_on_RGB24_top_down", 24, kWidthPx, -kHeightPx, Frames::Later},
    {"Overlay_on_RGB24_odd_width", 24, kOddWidthPx, kHeightPx, Frames::Later},
    {"Overlay_on_RGB32", 32, kWidthPx, kHeightPx, Frames::Later},
    {"Overlay_on_RGB32_odd_width", 32, kOddWidthPx, kHeightPx, Frames::Later},
    {"Overlay_on_YUY2", 16, kWidthPx, kHeightPx, Frames::Later},
    {"Overlay_on_YUY2_odd_width", 16, kOddWidthPx, kHeightPx, Frames::Later},
    {"Overlay_on_first_RGB24", 24, kWidthPx, kHeightPx, Frames::First},
    {"Overlay_on_first_RGB32", 32, kWidthPx, kHeightPx, Frames::First},
    {"Overlay_on_first_YUY2", 16, kWidthPx, kHeightPx, Frames::First},
};

/// Times of single frames, of all runs.
std::map<std::string, std::vector<Clock::duration>> g_frameTimes;

/// @param stream  whose statistics are read for every text, as a pin's are
vxds::SummaryValues UsualValues(VxStreamGEV& stream)
{
    vxds::SummaryValues values;
    values.statistics = stream.GetParameters();
    values.deviceId = L"02-00-00-00-00-01";
    values.renderWidthPx = kWidthPx;
    values.renderHeightPx = kHeightPx;
    values.lastImageWidthPx = kWidthPx;
    values.lastImageHeightPx = kHeightPx;
    values.lastErrorText = L"No pixel conversion available to YUV422";
    return values;
}

vxds::OverlayFrame FrameOver(CanarySample& sample, const Work& work)
{
    vxds::OverlayFrame frame;
    frame.memory = sample.Bytes();
    frame.header.biSize = sizeof(BITMAPINFOHEADER);
    frame.header.biWidth = work.widthPx;
    frame.header.biHeight = work.heightPx;
    frame.header.biPlanes = 1;
    frame.header.biBitCount = work.bits;
    return frame;
}

std::size_t BytesOf(const Work& work)
{
    return static_cast<std::size_t>(work.widthPx) * kHeightPx * work.bits / 8; // positive
}

Clock::duration TimeToDraw(vxds::GdiPlusSession& session, const vxds::SummaryValues& values,
                           const vxds::OverlayFrame& frame)
{
    const Clock::time_point began = Clock::now();
    vxds::DrawStatusSummary(session, values, frame);
    benchmark::ClobberMemory();
    return Clock::now() - began;
}

void MeasureOurs(benchmark::State& state, const Work& work)
{
    auto session = std::make_unique<vxds::GdiPlusSession>();
    VxStreamGEV stream;
    const vxds::SummaryValues values = UsualValues(stream);
    CanarySample sample(BytesOf(work));
    const vxds::OverlayFrame frame = FrameOver(sample, work);
    std::vector<Clock::duration>& times = g_frameTimes[work.name];
    if (work.frames == Frames::Later)
        vxds::DrawStatusSummary(*session, values, frame);
    while (state.KeepRunning()) {
        if (work.frames == Frames::First) {
            state.PauseTiming(); // a pin has started GDI+ long before
            session = std::make_unique<vxds::GdiPlusSession>();
            state.ResumeTiming();
        }
        times.push_back(TimeToDraw(*session, values, frame));
    }
    if (sample.IsAll(CanarySample::kStale))
        state.SkipWithError("nothing was drawn");
}

/// GDI+ finds its fonts when it draws for the first time in a process: nothing else takes so long.
void PrintFirstOfAll()
{
    vxds::GdiPlusSession session;
    CanarySample sample(BytesOf(kWorks[0]));
    VxStreamGEV stream;
    const Clock::duration time = TimeToDraw(session, UsualValues(stream), FrameOver(sample, kWorks[0]));
    std::cout << "First frame in this process: "
              << std::chrono::duration_cast<std::chrono::microseconds>(time).count() << " us\n";
}

void PrintFrameTimes()
{
    std::cout << "Single frames, microseconds: median, 99 of 100 within, longest; frames\n";
    for (auto& [name, times] : g_frameTimes) {
        std::ranges::sort(times);
        const auto at = [&times = times](double share) {
            const auto index = static_cast<std::size_t>(share * static_cast<double>(times.size() - 1));
            return std::chrono::duration_cast<std::chrono::microseconds>(times[index]).count();
        };
        if (!times.empty())
            std::cout << std::left << std::setw(32) << name << std::right << std::setw(8) << at(0.5)
                      << std::setw(8) << at(0.99) << std::setw(8) << at(1.0) << std::setw(10) << times.size()
                      << "\n";
    }
}

void MeasureCopy(benchmark::State& state)
{
    CanarySample sample(std::size_t{kWidthPx} * kHeightPx * 3);
    const std::vector<std::uint8_t> source = sample.Copy();
    while (state.KeepRunning()) {
        std::memcpy(sample.Bytes().data(), source.data(), source.size());
        benchmark::ClobberMemory();
    }
}

} // namespace

int main(int argc, char** argv)
{
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv))
        return 1;
    PrintFirstOfAll();
    MedianTable table;
    benchmark::RegisterBenchmark(kCopyName, MeasureCopy)->Unit(benchmark::kMicrosecond)->UseRealTime();
    for (const Work& work : kWorks) {
        benchmark::RegisterBenchmark((work.name + std::string("/ours")).c_str(),
                                     [&work](benchmark::State& state) { MeasureOurs(state, work); })
            ->Unit(benchmark::kMicrosecond)
            ->UseRealTime();
        table.AddWork(work.name, kCopyName);
        if (work.frames == Frames::Later)
            MedianTable::AddGoal(work.name, kGoal);
    }
    benchmark::RunSpecifiedBenchmarks(&table);
    benchmark::Shutdown();
    PrintFrameTimes();
    return 0;
}
