#include "LargeDescription.h"
#include "MedianTable.h"
#if VX_HAS_ARAVIS
#include "AravisPeer.h"
#endif

#include "VxCamera/genapi/IRegisterPort.h"
#include "VxCamera/genapi/map/NodeMap.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

// A camera's description of 2,000 nodes: made a node map, and an integer read whose register's value is kept.

namespace {

constexpr const char* kFeature = "Width0";

constexpr const char* kMinimumTime =
    "--benchmark_min_time=0.1"; // seconds; chosen: a table takes some seconds

/// A camera whose registers all contain the same.
class StandingPort final : public genapi::IRegisterPort {
public:
    VxResult Read(std::uint64_t, std::span<std::byte> bytes) override
    {
        ++reads;
        std::ranges::fill(bytes, std::byte{1});
        return VxResult::Ok();
    }
    VxResult Write(std::uint64_t, std::span<const std::byte>) override { return VxResult::Ok(); }

    int reads = 0;
};

void MeasureLoad(benchmark::State& state, const std::string& xml)
{
    StandingPort port;
    while (state.KeepRunning()) {
        const auto map = genapi::NodeMap::Load(xml, port);
        if (!map || !(*map)->Find("Root"))
            state.SkipWithError(map.Result().GetDescription().GetAscii());
    }
}

void MeasureRead(benchmark::State& state, const std::string& xml)
{
    StandingPort port;
    const auto map = genapi::NodeMap::Load(xml, port);
    const auto node = map ? (*map)->Find(kFeature) : std::nullopt;
    if (!node) {
        state.SkipWithError("the feature is not there");
        return;
    }
    while (state.KeepRunning()) {
        const auto value = (*map)->GetInteger(*node);
        if (!value || *value != 0x01010101)
            state.SkipWithError("the value is wrong");
    }
    if (port.reads != 1)
        state.SkipWithError("the value was not kept");
}

template <typename Measure>
void Register(const std::string& name, benchmark::TimeUnit unit, Measure measure)
{
    benchmark::RegisterBenchmark(name.c_str(), measure)->Unit(unit)->UseRealTime();
}

} // namespace

int main(int argc, char** argv)
{
    std::string minimumTime = kMinimumTime;
    std::vector<char*> arguments{argv[0],
                                 minimumTime.data()}; // what the caller says comes after it and counts
    arguments.insert(arguments.end(), argv + 1, argv + argc);
    int count = static_cast<int>(arguments.size()); // argc + 1
    benchmark::Initialize(&count, arguments.data());
    if (benchmark::ReportUnrecognizedArguments(count, arguments.data()))
        return 1;
    const std::string xml = MakeLargeDescription();
    MedianTable table;
    table.AddWork("Load_2000_nodes", "");
    table.AddWork("Read_kept_integer", "");
    table.AddGoal("Load_2000_nodes", "20 ms");
    table.AddGoal("Read_kept_integer", "300 ns");
    Register("Load_2000_nodes/ours", benchmark::kMillisecond,
             [&](benchmark::State& state) { MeasureLoad(state, xml); });
    Register("Read_kept_integer/ours", benchmark::kNanosecond,
             [&](benchmark::State& state) { MeasureRead(state, xml); });
#if VX_HAS_ARAVIS
    Register("Load_2000_nodes/Aravis", benchmark::kMillisecond,
             [&](benchmark::State& state) { MeasureAravisLoad(state, xml); });
    Register("Read_kept_integer/Aravis", benchmark::kNanosecond,
             [&](benchmark::State& state) { MeasureAravisRead(state, xml, kFeature); });
#endif
    benchmark::RunSpecifiedBenchmarks(&table);
    benchmark::Shutdown();
    return 0;
}
