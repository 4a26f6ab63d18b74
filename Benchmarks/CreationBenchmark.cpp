#include "MedianTable.h"
#include "RegisteredModule.h"

#include "support/directshow/ComApartment.h"
#include "support/graph/ModuleUnderTest.h"
#include "support/registry/PrivateUserRegistry.h"

#include <benchmark/benchmark.h>
#include <gtest/gtest.h>
#include <ocidl.h>

#include <string>

// What an application waits for that only looks which capture filters there are: it creates each of them,
// asks what it can, and releases it. Most of them do that at their start, and some keep lists of filters that
// take too long.

namespace {

using vxgrab::ComPtr;

/// Creates the filter, asks for what applications ask for, and lets go.
/// @return  whether all of it was there
bool LookAtFilter()
{
    const ComPtr<IBaseFilter> filter = RegisteredModule::CreateFilter();
    if (!filter)
        return false;
    for (const IID* const iid :
         {&IID_IVxDSSource, &IID_ISpecifyPropertyPages, &IID_IPersistStream, &IID_IAMDroppedFrames}) {
        ComPtr<IUnknown> face;
        if (FAILED(filter.Query(*iid, face)))
            return false;
    }
    ComPtr<IEnumPins> pins;
    ComPtr<IPin> pin;
    return filter->EnumPins(pins.Put()) == S_OK && pins->Next(1, pin.Put(), nullptr) == S_OK;
}

void MeasureLook(benchmark::State& state)
{
    while (state.KeepRunning()) {
        if (!LookAtFilter())
            state.SkipWithError("the filter cannot be created, or lacks an interface");
    }
}

/// As the first application to look does: the module is not in memory yet.
void MeasureFirstLook(benchmark::State& state, RegisteredModule& module)
{
    while (state.KeepRunning()) {
        state.PauseTiming();
        module.Unload();
        if (::GetModuleHandleW(L"VxDSSource.dll") != nullptr)
            state.SkipWithError("the module stays in memory");
        state.ResumeTiming();
        if (!LookAtFilter())
            state.SkipWithError("the filter cannot be created, or lacks an interface");
    }
}

/// Saves a camera that nobody has as this user's default.
void SaveAbsentDefault(const wchar_t* deviceId)
{
    const ComPtr<IVxDSSource> control = ControlOf(RegisteredModule::CreateFilter());
    BSTR text = ::SysAllocString(deviceId);
    control->SetDeviceId(text);
    ::SysFreeString(text);
    control->SaveDefault();
}

void MeasureLookWithAbsentDefault(benchmark::State& state, const wchar_t* deviceId)
{
    SaveAbsentDefault(deviceId);
    while (state.KeepRunning()) {
        if (!LookAtFilter())
            state.SkipWithError("the filter cannot be created, or lacks an interface");
    }
    const ComPtr<IVxDSSource> control = ControlOf(RegisteredModule::CreateFilter());
    BSTR summary = nullptr;
    control->GetDefaultSummary(&summary);
    if (::SysStringLen(summary) == 0)
        state.SkipWithError("there was no saved default");
    ::SysFreeString(summary);
    control->ClearDefault();
}

template <typename Measure>
void Register(MedianTable& table, const std::string& work, const char* goal, Measure measure)
{
    constexpr int kIterations = 5; // chosen: the repetitions make the median
    benchmark::RegisterBenchmark((work + "/ours").c_str(), measure)
        ->Unit(benchmark::kMicrosecond)
        ->UseRealTime()
        ->Iterations(kIterations);
    table.AddWork(work, {});
    MedianTable::AddGoal(work, goal);
}

} // namespace

int main(int argc, char** argv)
{
    testing::InitGoogleTest(&argc, argv); // the registry's owner reports through it
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv))
        return 1;
    const ComApartment com;
    const PrivateUserRegistry registry; // what this user has saved is not to be measured
    RegisteredModule module(argv[0]);
    MedianTable table;
    Register(table, "look_at_filter", "10 ms", MeasureLook);
    Register(table, "look_at_filter_first", "10 ms",
             [&](benchmark::State& state) { MeasureFirstLook(state, module); });
    // An address is asked for by itself first; any other name is searched for twice, by camera and by stream.
    Register(table, "look_at_filter_absent_default", "500 ms",
             [](benchmark::State& state) { MeasureLookWithAbsentDefault(state, L"127.0.0.99"); });
    Register(table, "look_at_filter_absent_default_mac", "500 ms",
             [](benchmark::State& state) { MeasureLookWithAbsentDefault(state, L"02-00-00-00-00-99"); });
    benchmark::RunSpecifiedBenchmarks(&table);
    benchmark::Shutdown();
    return 0;
}
