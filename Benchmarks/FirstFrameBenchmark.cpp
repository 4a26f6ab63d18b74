#include "MedianTable.h"
#include "RegisteredModule.h"

#include "VxSimulator/VxSimulatedCamera.h"
#include "VxSimulator/VxSimulatorOptions.h"
#include "support/directshow/ComApartment.h"
#include "support/graph/FrameCatcher.h"
#include "support/graph/GrabberGraph.h"
#include "support/graph/ModuleUnderTest.h"
#include "support/registry/PrivateUserRegistry.h"

#include <benchmark/benchmark.h>
#include <gtest/gtest.h>
#include <uuids.h>

#include <chrono>
#include <cstdio>
#include <string>
#include <utility>

// What a user waits for: from CoCreateInstance over connect, graph and run to the first picture that leaves
// the graph. The camera is simulated, in this process.

namespace {

constexpr std::chrono::seconds kPatience{10}; // chosen: a hundred times what it takes

void MeasureFirstFrame(benchmark::State& state)
{
    while (state.KeepRunning()) {
        FrameCatcher catcher;
        {
            auto filter = RegisteredModule::CreateFilter();
            auto control = ControlOf(filter);
            BSTR address = ::SysAllocString(L"127.0.0.1");
            control->SetDeviceId(address);
            ::SysFreeString(address);
            control->Connect();
            control.Reset();
            GrabberGraph graph(std::move(filter), MEDIASUBTYPE_RGB24, catcher, GrabberGraph::Clock::None);
            if (!graph.IsBuilt() || FAILED(graph.Run()) || !catcher.WaitForPicture(kPatience))
                state.SkipWithError("no picture came");
            state.PauseTiming(); // the way down is not measured
        }
        state.ResumeTiming();
    }
}

} // namespace

int main(int argc, char** argv)
{
    testing::InitGoogleTest(&argc, argv); // the helpers report through it
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv))
        return 1;
    const ComApartment com;
    const PrivateUserRegistry registry; // a saved default would connect to another camera
    VxSimulatedCamera camera;
    VxSimulatorOptions options;
    options.frameRateHz = 100; // the wait for the camera's next frame is not what is measured
    if (const VxResult started = camera.Start(options); !started.IsOK()) {
        std::fprintf(stderr, "error: %s\n", started.GetDescription().GetAscii());
        return 1;
    }
    const RegisteredModule module(argv[0]);
    MedianTable table;
    const std::string name = "first_frame/ours";
    benchmark::RegisterBenchmark(name.c_str(), MeasureFirstFrame)
        ->Unit(benchmark::kMicrosecond)
        ->UseRealTime()
        ->Iterations(5);
    table.AddWork("first_frame", {});
    benchmark::RunSpecifiedBenchmarks(&table);
    benchmark::Shutdown();
    return 0;
}
