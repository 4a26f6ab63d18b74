#include "MedianTable.h"

#include "VxCamera/pixel/VxPixelFormat.h"
#include "VxDSSource/stream/AcquisitionMutex.h"
#include "VxDSSource/stream/VxDSStream.h"
#include "VxDSSource/yuv422/Yuv422Formula.h"
#include "support/camera/StandingPicture.h"
#include "support/directshow/ComApartment.h"
#include "support/directshow/TestObject.h"
#include "support/registry/PrivateUserRegistry.h"
#include "unit/VxDSSource/stream/CanarySample.h"
#include "unit/VxDSSource/stream/HostFilter.h"

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

// Fixed by the order in which the pin offers its types.
enum class Output : int { Rgb24 = 0, Rgb32 = 1, Yuy2 = 3 };

struct Work {
    std::string name;
    std::uint32_t pixelType;
    int channels; ///< bytes of a pixel of the camera
    Output output;
    std::string goal; ///< chosen: a multiple of the better of a copy and OpenCV
    std::uint32_t kernelSize = 0;
    std::function<void(const cv::Mat& source, cv::Mat& destination)> openCv;
};

using OpenCvConversion = std::function<void(const cv::Mat& source, cv::Mat& destination)>;

OpenCvConversion CvtColor(int code)
{
    return [code](const cv::Mat& source, cv::Mat& destination) { cv::cvtColor(source, destination, code); };
}

void FlipRows(const cv::Mat& source, cv::Mat& destination)
{
    constexpr int kAboutTheHorizontalAxis = 0;
    cv::flip(source, destination, kAboutTheHorizontalAxis);
}

const std::vector<Work>& Works()
{
    // OpenCV names Bayer patterns otherwise: see ConversionBenchmark. YUY2 of the formula it has no way to.
    static const std::vector<Work> works{
        {"FillBuffer_Mono8_to_RGB24", VxPfnc::kMono8, 1, Output::Rgb24, "1.3 x", 0,
         CvtColor(cv::COLOR_GRAY2BGR)},
        {"FillBuffer_BGR8_to_RGB24", VxPfnc::kBgr8, 3, Output::Rgb24, "1.3 x", 0, FlipRows},
        {"FillBuffer_BGR8_to_RGB32", VxPfnc::kBgr8, 3, Output::Rgb32, "1.3 x", 0,
         CvtColor(cv::COLOR_BGR2BGRA)},
        {"FillBuffer_BayerRG8_to_RGB24", VxPfnc::kBayerRG8, 1, Output::Rgb24, "1.3 x", 0,
         CvtColor(cv::COLOR_BayerBG2BGR)},
        {"FillBuffer_YUV422_8_to_YUY2", VxPfnc::kYuv422_8, 2, Output::Yuy2, "12 x", 0, {}},
        {"FillBuffer_BGR8_median_3", VxPfnc::kBgr8, 3, Output::Rgb24, "8 x", 3,
         [](const cv::Mat& s, cv::Mat& d) { cv::medianBlur(s, d, 3); }},
    };
    return works;
}

std::size_t BytesPerPixel(Output output)
{
    if (output == Output::Yuy2)
        return 2;
    return output == Output::Rgb32 ? 4 : 3;
}

std::size_t SampleBytes(Output output)
{
    return std::size_t{kWidthPx} * kHeightPx * BytesPerPixel(output);
}

std::string CopyName(Output output)
{
    return "memcpy/" + std::to_string(SampleBytes(output));
}

void CountOutput(benchmark::State& state, Output output)
{
    state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations()) *
                            static_cast<std::int64_t>(SampleBytes(output)));
}

/// Puts the pin into role 1 with a picture of the delivered size.
void SetUp(VxDSStream& pin, const Work& work)
{
    using vxds::Setting;
    pin.Settings().Store(Setting::Role, 1);
    pin.Settings().Store(Setting::DeviceId, std::wstring(L"camera"));
    pin.Settings().Store(Setting::Width, kWidthPx);
    pin.Settings().Store(Setting::Height, kHeightPx);
    pin.Settings().Store(Setting::KernelSize, work.kernelSize);
    pin.Settings().Store(Setting::OutputPixelType, work.output == Output::Yuy2 ? 1 : 0);
    pin.ApplyConnection();
    CMediaType type;
    pin.GetMediaType(static_cast<int>(work.output), &type);
    pin.SetMediaType(&type);
}

void MeasureOurs(benchmark::State& state, const Work& work)
{
    if (!StandingPicture::Show(work.pixelType, kWidthPx, kHeightPx)) {
        state.SkipWithError("no picture");
        return;
    }
    auto* const filter = new HostFilter;
    filter->NonDelegatingAddRef();
    SetUp(filter->Pin(), work);
    CanarySample sample(SampleBytes(work.output));
    while (state.KeepRunning()) {
        filter->Pin().FillBuffer(&sample);
        benchmark::ClobberMemory();
    }
    if (!sample.mediaTime || sample.IsAll(0))
        state.SkipWithError("the frame is a zero frame");
    CountOutput(state, work.output);
    filter->NonDelegatingRelease();
}

void MeasureOpenCv(benchmark::State& state, const Work& work)
{
    cv::Mat source(kHeightPx, kWidthPx, CV_8UC(work.channels));
    cv::randu(source, 0, 256);
    CanarySample sample(SampleBytes(work.output)); // the same kind of memory for everybody
    cv::Mat destination(kHeightPx, kWidthPx, CV_8UC(static_cast<int>(BytesPerPixel(work.output))),
                        sample.Bytes().data());
    while (state.KeepRunning()) {
        work.openCv(source, destination);
        benchmark::ClobberMemory();
    }
}

void MeasureCopy(benchmark::State& state, Output output)
{
    const std::vector<std::uint8_t> source(SampleBytes(output), std::uint8_t{1});
    CanarySample sample(source.size());
    while (state.KeepRunning()) {
        std::memcpy(sample.Bytes().data(), source.data(), source.size());
        benchmark::ClobberMemory();
    }
    CountOutput(state, output);
}

/// The formula for YUV 4:2:2 alone, row by row as the pin does it.
void MeasureFormula(benchmark::State& state)
{
    cv::Mat source(kHeightPx, kWidthPx, CV_8UC3);
    cv::randu(source, 0, 256);
    CanarySample sample(SampleBytes(Output::Yuy2));
    const std::size_t rowBytes = kWidthPx * BytesPerPixel(Output::Yuy2);
    while (state.KeepRunning()) {
        for (int y = 0; y < source.rows; ++y)
            vxds::BgrRowToYuy2({source.ptr(y), kWidthPx * source.elemSize()},
                               sample.Bytes().subspan(static_cast<std::size_t>(y) * rowBytes, rowBytes));
        benchmark::ClobberMemory();
    }
    CountOutput(state, Output::Yuy2);
}

/// What each frame pays for the acquisition mutex, and a copy does not.
void MeasureMutex(benchmark::State& state)
{
    vxds::AcquisitionMutex mutex;
    while (state.KeepRunning()) {
        const vxds::AcquisitionMutex::Lock lock(mutex, 500);
        benchmark::DoNotOptimize(lock.IsHeld());
    }
}

/// What it would pay for a kernel mutex. Measured under Wine: from 7 to 141 us, by where the process runs
/// that keeps the mutexes there.
void MeasureKernelMutex(benchmark::State& state)
{
    const HANDLE mutex = ::CreateMutexW(nullptr, FALSE, nullptr);
    while (state.KeepRunning()) {
        ::WaitForSingleObject(mutex, 500);
        ::ReleaseMutex(mutex);
    }
    ::CloseHandle(mutex);
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
    for (const Output output : {Output::Rgb24, Output::Rgb32, Output::Yuy2})
        Register(CopyName(output), [output](benchmark::State& state) { MeasureCopy(state, output); });
    for (const Work& work : Works()) {
        Register(work.name + "/ours", [&work](benchmark::State& state) { MeasureOurs(state, work); });
        if (work.openCv)
            Register(work.name + "/OpenCV", [&work](benchmark::State& state) { MeasureOpenCv(state, work); });
        table.AddWork(work.name, CopyName(work.output));
        MedianTable::AddGoal(work.name, work.goal);
    }
    Register("Mutex_of_one_frame/ours", MeasureMutex);
    table.AddWork("Mutex_of_one_frame", CopyName(Output::Rgb24));
    Register("Kernel_mutex_instead/ours", MeasureKernelMutex);
    table.AddWork("Kernel_mutex_instead", CopyName(Output::Rgb24));
    Register("Formula_BGR8_to_YUY2/ours", MeasureFormula);
    table.AddWork("Formula_BGR8_to_YUY2", CopyName(Output::Yuy2));
    MedianTable::AddGoal("Formula_BGR8_to_YUY2", "5 x");
    benchmark::RunSpecifiedBenchmarks(&table);
    benchmark::Shutdown();
    return 0;
}
