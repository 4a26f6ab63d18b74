#include "MedianTable.h"

#include "VxDSSource/overlay/GdiPlusSession.h"
#include "VxDSSource/overlay/OverlayText.h"
#include "VxDSSource/overlay/StatusSummary.h"
#include "unit/VxDSSource/stream/CanarySample.h"

#include <benchmark/benchmark.h>

#include <cstdint>
#include <cstring>
#include <string>
#include <vector>

// What diagnostics add to a full HD frame: the status summary, composed and drawn into a picture. Beside it a
// plain copy of that frame.

namespace {

constexpr LONG kWidthPx = 1920;
constexpr LONG kHeightPx = 1080;
constexpr const char* kCopyName = "memcpy/6220800"; // a frame with 24 bits a pixel

// Fixed: with diagnostics on and no kernel a frame takes so much longer at most.
constexpr const char* kGoal = "2 ms";

struct Work {
    const char* name;
    WORD bits;
    LONG heightPx; ///< positive: bottom-up
};

constexpr Work kWorks[] = {
    {"Overlay_on_RGB24", 24, kHeightPx},
    {"Overlay_on_RGB24_top_down", 24, -kHeightPx},
    {"Overlay_on_RGB32", 32, kHeightPx},
    {"Overlay_on_YUY2", 16, kHeightPx},
};

vxds::SummaryValues UsualValues()
{
    vxds::SummaryValues values;
    values.deviceId = L"02-00-00-00-00-01";
    values.renderWidthPx = kWidthPx;
    values.renderHeightPx = kHeightPx;
    values.lastImageWidthPx = kWidthPx;
    values.lastImageHeightPx = kHeightPx;
    values.lastErrorText = L"No pixel conversion available to YUV422";
    return values;
}

void MeasureOurs(benchmark::State& state, const Work& work)
{
    vxds::GdiPlusSession session;
    const vxds::SummaryValues values = UsualValues();
    CanarySample sample(std::size_t{kWidthPx} * kHeightPx * work.bits / 8);
    vxds::OverlayFrame frame;
    frame.memory = sample.Bytes();
    frame.header.biSize = sizeof(BITMAPINFOHEADER);
    frame.header.biWidth = kWidthPx;
    frame.header.biHeight = work.heightPx;
    frame.header.biPlanes = 1;
    frame.header.biBitCount = work.bits;
    vxds::DrawStatusSummary(session, values, frame); // the first is like no other: GDI+ looks around
    while (state.KeepRunning()) {
        vxds::DrawStatusSummary(session, values, frame);
        benchmark::ClobberMemory();
    }
    if (sample.IsAll(CanarySample::kStale))
        state.SkipWithError("nothing was drawn");
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

template <typename Measure>
void Register(const std::string& name, Measure measure)
{
    benchmark::RegisterBenchmark(name.c_str(), measure)->Unit(benchmark::kMicrosecond)->UseRealTime();
}

} // namespace

int main(int argc, char** argv)
{
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv))
        return 1;
    MedianTable table;
    Register(kCopyName, MeasureCopy);
    for (const Work& work : kWorks) {
        Register(work.name + std::string("/ours"),
                 [&work](benchmark::State& state) { MeasureOurs(state, work); });
        table.AddWork(work.name, kCopyName);
        MedianTable::AddGoal(work.name, kGoal);
    }
    benchmark::RunSpecifiedBenchmarks(&table);
    benchmark::Shutdown();
    return 0;
}
