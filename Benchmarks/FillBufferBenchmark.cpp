#include "MedianTable.h"
#include "StandingPicture.h"

#include "BaseClasses/CSource.h"
#include "VxCamera/pixel/VxPixelFormat.h"
#include "VxDSSource/stream/VxDSStream.h"
#include "support/directshow/ComApartment.h"
#include "support/directshow/TestObject.h"
#include "support/registry/PrivateUserRegistry.h"
#include "unit/VxDSSource/stream/CanarySample.h"

#include <benchmark/benchmark.h>
#include <opencv2/core.hpp>
#include <opencv2/imgproc.hpp>

#include <cstdint>
#include <cstring>
#include <functional>
#include <string>
#include <vector>

// One whole FillBuffer for a full HD picture that is in memory already: mutex, choice of the buffer,
// conversion into the sample, time stamps. Beside it a plain copy of as many bytes as are written, and
// OpenCV's conversion of the same picture.

namespace {

constexpr std::uint32_t kWidthPx = 1920;
constexpr std::uint32_t kHeightPx = 1080;
constexpr std::size_t kSampleBytes = std::size_t{kWidthPx} * kHeightPx * 3; // RGB24
constexpr const char* kCopyName = "memcpy/6220800";                         // kSampleBytes

// Chosen: what is left for mutex, buffer, time stamp and a picture turned over.
constexpr const char* kGoal = "1.3 x";

class BenchmarkFilter final : public CSource {
public:
    BenchmarkFilter() : CSource("benchmark", nullptr, CLSID_NULL)
    {
        HRESULT hr = S_OK;
        m_pin = new VxDSStream(&hr, this, L"Output");
    }
    [[nodiscard]] VxDSStream& Pin() { return *m_pin; }

private:
    VxDSStream* m_pin = nullptr; // owned by CSource
};

struct Work {
    const char* name;
    std::uint32_t pixelType;
    int channels;
    std::function<void(const cv::Mat& source, cv::Mat& destination)> openCv;
};

const std::vector<Work>& Works()
{
    constexpr int kAboutTheHorizontalAxis = 0;
    static const std::vector<Work> works{
        {"FillBuffer_Mono8_to_RGB24", VxPfnc::kMono8, 1,
         [](const cv::Mat& s, cv::Mat& d) { cv::cvtColor(s, d, cv::COLOR_GRAY2BGR); }},
        {"FillBuffer_BayerRG8_to_RGB24", VxPfnc::kBayerRG8, 1, // OpenCV's BG: see ConversionBenchmark
         [](const cv::Mat& s, cv::Mat& d) { cv::cvtColor(s, d, cv::COLOR_BayerBG2BGR); }},
        {"FillBuffer_BGR8_to_RGB24", VxPfnc::kBgr8, 3,
         [](const cv::Mat& s, cv::Mat& d) { cv::flip(s, d, kAboutTheHorizontalAxis); }},
    };
    return works;
}

/// Puts the pin into role 1 with a picture of the delivered size: the direct path.
void SetUp(VxDSStream& pin)
{
    using vxds::Setting;
    pin.Settings().Store(Setting::Role, 1);
    pin.Settings().Store(Setting::DeviceId, std::wstring(L"camera"));
    pin.Settings().Store(Setting::Width, kWidthPx);
    pin.Settings().Store(Setting::Height, kHeightPx);
    pin.ApplyConnection();
    CMediaType type;
    pin.GetMediaType(0, &type);
    pin.SetMediaType(&type);
}

void MeasureOurs(benchmark::State& state, const Work& work)
{
    if (!StandingPicture::Show(work.pixelType, kWidthPx, kHeightPx)) {
        state.SkipWithError("no picture");
        return;
    }
    auto* const filter = new BenchmarkFilter;
    filter->NonDelegatingAddRef();
    SetUp(filter->Pin());
    CanarySample sample(kSampleBytes);
    while (state.KeepRunning()) {
        filter->Pin().FillBuffer(&sample);
        benchmark::ClobberMemory();
    }
    if (!sample.mediaTime || sample.IsAll(0))
        state.SkipWithError("the frame is a zero frame");
    filter->NonDelegatingRelease();
}

void MeasureOpenCv(benchmark::State& state, const Work& work)
{
    cv::Mat source(kHeightPx, kWidthPx, CV_8UC(work.channels));
    cv::randu(source, 0, 256);
    CanarySample sample(kSampleBytes); // the same kind of memory for everybody
    cv::Mat destination(kHeightPx, kWidthPx, CV_8UC3, sample.Bytes().data());
    while (state.KeepRunning()) {
        work.openCv(source, destination);
        benchmark::ClobberMemory();
    }
}

void MeasureCopy(benchmark::State& state)
{
    const std::vector<std::uint8_t> source(kSampleBytes, std::uint8_t{1});
    CanarySample sample(kSampleBytes);
    while (state.KeepRunning()) {
        std::memcpy(sample.Bytes().data(), source.data(), kSampleBytes);
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
    const ComApartment com;
    const PrivateUserRegistry registry; // a saved default would connect to a camera
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv))
        return 1;
    cv::setNumThreads(1);
    MedianTable table;
    Register(kCopyName, MeasureCopy);
    for (const Work& work : Works()) {
        Register(work.name + std::string("/ours"),
                 [&work](benchmark::State& state) { MeasureOurs(state, work); });
        Register(work.name + std::string("/OpenCV"),
                 [&work](benchmark::State& state) { MeasureOpenCv(state, work); });
        table.AddWork(work.name, kCopyName);
        MedianTable::AddGoal(work.name, kGoal);
    }
    benchmark::RunSpecifiedBenchmarks(&table);
    benchmark::Shutdown();
    return 0;
}
