#include "MedianTable.h"

#include "VxCamera/pixel/RowKernels.h"
#include "VxCamera/pixel/VxPixelConverter.h"
#include "VxCamera/pixel/VxPixelFormat.h"

#include <benchmark/benchmark.h>
#include <opencv2/core.hpp>
#include <opencv2/imgproc.hpp>

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>
#include <functional>
#include <random>
#include <string>
#include <utility>
#include <vector>

// Conversion of one full HD picture on one core, bottom up as for a Windows bitmap, beside a plain copy of as
// many bytes as are written and beside OpenCV's conversion of the same picture, which does not turn it over.

namespace {

constexpr std::uint32_t kWidthPx = 1920;
constexpr std::uint32_t kHeightPx = 1080;

// Chosen: 50 to 500 conversions per repetition, so that a table takes less than a minute.
constexpr const char* kMinimumTime = "--benchmark_min_time=0.05"; // seconds

using OpenCvConversion = std::function<void(const cv::Mat& source, cv::Mat& destination)>;

struct Work {
    const char* name;
    std::uint32_t sourceCode;
    std::uint32_t targetCode;
    OpenCvConversion openCv;
};

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
    // OpenCV names Bayer patterns by the second row from its second column on: its BG is RG here.
    static const std::vector<Work> works{
        {"Mono8_to_BGR8", VxPfnc::kMono8, VxPfnc::kBgr8, CvtColor(cv::COLOR_GRAY2BGR)},
        {"BGR8_to_BGR8", VxPfnc::kBgr8, VxPfnc::kBgr8, FlipRows},
        {"BayerRG8_to_BGR8", VxPfnc::kBayerRG8, VxPfnc::kBgr8, CvtColor(cv::COLOR_BayerBG2BGR)},
        {"RGB8_to_BGR8", VxPfnc::kRgb8, VxPfnc::kBgr8, CvtColor(cv::COLOR_RGB2BGR)},
        {"BGRa8_to_BGR8", VxPfnc::kBgra8, VxPfnc::kBgr8, CvtColor(cv::COLOR_BGRA2BGR)},
        {"YUV422_8_to_BGR8", VxPfnc::kYuv422_8, VxPfnc::kBgr8, CvtColor(cv::COLOR_YUV2BGR_YUY2)},
        {"YUV422_8_UYVY_to_BGR8", VxPfnc::kYuv422_8_Uyvy, VxPfnc::kBgr8, CvtColor(cv::COLOR_YUV2BGR_UYVY)},
        {"Mono8_to_BGRa8", VxPfnc::kMono8, VxPfnc::kBgra8, CvtColor(cv::COLOR_GRAY2BGRA)},
        {"BGR8_to_BGRa8", VxPfnc::kBgr8, VxPfnc::kBgra8, CvtColor(cv::COLOR_BGR2BGRA)},
        {"BayerRG8_to_BGRa8", VxPfnc::kBayerRG8, VxPfnc::kBgra8, CvtColor(cv::COLOR_BayerBG2BGRA)},
        {"YUV422_8_to_BGRa8", VxPfnc::kYuv422_8, VxPfnc::kBgra8, CvtColor(cv::COLOR_YUV2BGRA_YUY2)},
    };
    return works;
}

constexpr std::array kSets{std::pair{"AVX-512", pixel::InstructionSet::Avx512Vbmi},
                           std::pair{"AVX2", pixel::InstructionSet::Avx2},
                           std::pair{"SSE4.1", pixel::InstructionSet::Sse41}};

std::size_t PictureBytes(std::uint32_t code)
{
    return VxLayOutPicture(code, kWidthPx, kHeightPx, 0)->totalBytes;
}

std::vector<std::uint8_t> RandomPicture(std::size_t size)
{
    std::mt19937 random(1);
    std::vector<std::uint8_t> bytes(size);
    std::ranges::generate(bytes, [&] { return static_cast<std::uint8_t>(random() & 0xFF); });
    return bytes;
}

void MeasureOurs(benchmark::State& state, const Work& work, pixel::InstructionSet set)
{
    const auto source = RandomPicture(PictureBytes(work.sourceCode));
    std::vector<std::uint8_t> destination(PictureBytes(work.targetCode));
    VxPixelConverter converter(set);
    while (state.KeepRunning()) {
        const VxResult result =
            converter.Convert({source, work.sourceCode, kWidthPx, kHeightPx, 0},
                              {destination, work.targetCode, kWidthPx, kHeightPx, 0}, VxRowOrder::BottomUp);
        if (!result.IsOK())
            state.SkipWithError(result.GetDescription().GetAscii());
        benchmark::ClobberMemory();
    }
}

void MeasureOpenCv(benchmark::State& state, const Work& work)
{
    auto sourceBytes = RandomPicture(PictureBytes(work.sourceCode));
    std::vector<std::uint8_t> destinationBytes(PictureBytes(work.targetCode));
    const auto typeOf = [](std::uint32_t code) { return CV_8UC(static_cast<int>(VxBitsPerPixel(code) / 8)); };
    const cv::Mat source(kHeightPx, kWidthPx, typeOf(work.sourceCode), sourceBytes.data());
    cv::Mat destination(kHeightPx, kWidthPx, typeOf(work.targetCode), destinationBytes.data());
    while (state.KeepRunning()) {
        work.openCv(source, destination);
        benchmark::ClobberMemory();
    }
    if (destination.data != destinationBytes.data())
        state.SkipWithError("OpenCV wrote into other memory than it was given");
}

void MeasureCopy(benchmark::State& state, std::size_t size)
{
    const auto source = RandomPicture(size);
    std::vector<std::uint8_t> destination(size);
    while (state.KeepRunning()) {
        std::memcpy(destination.data(), source.data(), size);
        benchmark::ClobberMemory();
    }
}

template <typename Measure>
void Register(const std::string& name, Measure measure)
{
    benchmark::RegisterBenchmark(name.c_str(), measure)->Unit(benchmark::kMicrosecond)->UseRealTime();
}

void RegisterWork(const Work& work)
{
    const std::string name = work.name;
    const auto best = pixel::BestInstructionSet();
    Register(name + "/ours", [&work, best](benchmark::State& state) { MeasureOurs(state, work, best); });
    for (const auto& [setName, set] : kSets)
        if (pixel::IsAvailable(set) && set != best)
            Register(name + "/" + setName,
                     [&work, set = set](benchmark::State& state) { MeasureOurs(state, work, set); });
    Register(name + "/OpenCV", [&work](benchmark::State& state) { MeasureOpenCv(state, work); });
}

std::string CopyName(std::uint32_t targetCode)
{
    return "memcpy/" + std::to_string(PictureBytes(targetCode));
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
    cv::setNumThreads(1);
    MedianTable table;
    for (const std::uint32_t code : {VxPfnc::kBgr8, VxPfnc::kBgra8})
        Register(CopyName(code), [code](benchmark::State& state) { MeasureCopy(state, PictureBytes(code)); });
    for (const Work& work : Works()) {
        RegisterWork(work);
        table.AddWork(work.name, CopyName(work.targetCode));
    }
    benchmark::RunSpecifiedBenchmarks(&table);
    benchmark::Shutdown();
    return 0;
}
