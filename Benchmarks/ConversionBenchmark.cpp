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

// Chosen: 20 to 200 conversions per repetition, so that a table takes less than a minute.
constexpr const char* kMinimumTime = "--benchmark_min_time=0.02"; // seconds

using OpenCvConversion = std::function<void(const cv::Mat& source, cv::Mat& destination)>;

struct Work {
    std::string name;
    std::uint32_t sourceCode;
    std::uint32_t targetCode;
    OpenCvConversion openCv;  ///< empty: it has no way
    int openCvType = -1;      ///< of a pixel of the source; not negative where there is a way
    bool hasEverySet = false; ///< measured with every instruction set
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

/// To bytes first, which is the faster way round, and then as with bytes.
OpenCvConversion Deep(int bits, const OpenCvConversion& bytes)
{
    return [bits, bytes, high = cv::Mat()](const cv::Mat& source, cv::Mat& destination) mutable {
        source.convertTo(bytes ? high : destination, CV_8U, 1.0 / (1 << (bits - 8)));
        if (bytes)
            bytes(high, destination);
    };
}

void MergePlanes(const cv::Mat& source, cv::Mat& destination)
{
    // The source's memory as three planes of one component: red, green, blue.
    const int rows = static_cast<int>(kHeightPx);
    const cv::Mat planes(3 * rows, static_cast<int>(kWidthPx), source.depth(), source.data);
    const std::array<cv::Mat, 3> colors{planes.rowRange(2 * rows, 3 * rows), planes.rowRange(rows, 2 * rows),
                                        planes.rowRange(0, rows)};
    cv::merge(colors.data(), colors.size(), destination);
}

void ConvertTwoPlanes(const cv::Mat& source, cv::Mat& destination)
{
    const int rows = static_cast<int>(kHeightPx);
    const int columns = static_cast<int>(kWidthPx);
    const cv::Mat luma(rows, columns, CV_8UC1, source.data);
    const cv::Mat chroma(rows / 2, columns / 2, CV_8UC2, source.data + luma.total());
    cv::cvtColorTwoPlane(luma, chroma, destination, cv::COLOR_YUV2BGR_NV12);
}

std::uint32_t CodeOf(const std::string& format)
{
    return VxFindPixelFormat(format)->code;
}

class WorkList {
public:
    /// @param openCvType  of a pixel of the source; -1 where OpenCV has no way
    Work& Add(const std::string& source, std::uint32_t target = VxPfnc::kBgr8, int openCvType = -1,
              OpenCvConversion openCv = {})
    {
        const std::string name = source + "_to_" + std::string(VxFindPixelFormat(target)->name);
        m_works.push_back({name, CodeOf(source), target, std::move(openCv), openCvType});
        return m_works.back();
    }
    std::vector<Work> Take() { return std::move(m_works); }

private:
    std::vector<Work> m_works;
};

// OpenCV names Bayer patterns by the second row from its second column on: its BG is RG here.
void AddBytes(WorkList& works)
{
    constexpr auto kBgr = VxPfnc::kBgr8;
    constexpr auto kBgra = VxPfnc::kBgra8;
    works.Add("Mono8", kBgr, CV_8UC1, CvtColor(cv::COLOR_GRAY2BGR)).hasEverySet = true;
    works.Add("BGR8", kBgr, CV_8UC3, FlipRows);
    works.Add("RGB8", kBgr, CV_8UC3, CvtColor(cv::COLOR_RGB2BGR)).hasEverySet = true;
    works.Add("BGRa8", kBgr, CV_8UC4, CvtColor(cv::COLOR_BGRA2BGR)).hasEverySet = true;
    works.Add("RGBa8", kBgr, CV_8UC4, CvtColor(cv::COLOR_RGBA2BGR));
    works.Add("BayerRG8", kBgr, CV_8UC1, CvtColor(cv::COLOR_BayerBG2BGR)).hasEverySet = true;
    works.Add("BayerGR8", kBgr, CV_8UC1, CvtColor(cv::COLOR_BayerGB2BGR));
    works.Add("BayerGB8", kBgr, CV_8UC1, CvtColor(cv::COLOR_BayerGR2BGR));
    works.Add("BayerBG8", kBgr, CV_8UC1, CvtColor(cv::COLOR_BayerRG2BGR));
    works.Add("RGB8_Planar", kBgr, CV_8UC3, MergePlanes);
    works.Add("YUV422_8", kBgr, CV_8UC2, CvtColor(cv::COLOR_YUV2BGR_YUY2)).hasEverySet = true;
    works.Add("YUV422_8_UYVY", kBgr, CV_8UC2, CvtColor(cv::COLOR_YUV2BGR_UYVY));
    works.Add("YCbCr8", kBgr, CV_8UC3, CvtColor(cv::COLOR_YCrCb2BGR));
    works.Add("YUV8_UYV", kBgr, CV_8UC3, CvtColor(cv::COLOR_YCrCb2BGR));
    works.Add("YCbCr420_8_YY_CbCr_Semiplanar", kBgr, CV_8UC1, ConvertTwoPlanes);
    for (const char* name :
         {"YCbCr422_8_YY_CbCr_Semiplanar", "YUV411_8_UYYVYY", "YCbCr411_8", "Mono8s", "BiColorRGBG8"})
        works.Add(name);
    works.Add("Mono8", kBgra, CV_8UC1, CvtColor(cv::COLOR_GRAY2BGRA));
    works.Add("BGR8", kBgra, CV_8UC3, CvtColor(cv::COLOR_BGR2BGRA)).hasEverySet = true;
    works.Add("RGB8", kBgra, CV_8UC3, CvtColor(cv::COLOR_RGB2BGRA));
    works.Add("BGRa8", kBgra, CV_8UC4, FlipRows);
    works.Add("RGBa8", kBgra, CV_8UC4, CvtColor(cv::COLOR_RGBA2BGRA));
    works.Add("BayerRG8", kBgra, CV_8UC1, CvtColor(cv::COLOR_BayerBG2BGRA));
    works.Add("YUV422_8", kBgra, CV_8UC2, CvtColor(cv::COLOR_YUV2BGRA_YUY2));
    works.Add("YUV422_8_UYVY", kBgra, CV_8UC2, CvtColor(cv::COLOR_YUV2BGRA_UYVY));
}

void AddDeep(WorkList& works)
{
    constexpr auto kBgr = VxPfnc::kBgr8;
    for (const int bits : {10, 12, 14, 16}) {
        const std::string depth = std::to_string(bits);
        works.Add("Mono" + depth, kBgr, CV_16UC1, Deep(bits, CvtColor(cv::COLOR_GRAY2BGR))).hasEverySet =
            bits == 12;
        works.Add("BayerRG" + depth, kBgr, CV_16UC1, Deep(bits, CvtColor(cv::COLOR_BayerBG2BGR)));
        works.Add("RGB" + depth, kBgr, CV_16UC3, Deep(bits, CvtColor(cv::COLOR_RGB2BGR)));
        works.Add("BGR" + depth, kBgr, CV_16UC3, Deep(bits, {}));
        works.Add("RGBa" + depth, kBgr, CV_16UC4, Deep(bits, CvtColor(cv::COLOR_RGBA2BGR)));
        works.Add("BGRa" + depth, kBgr, CV_16UC4, Deep(bits, CvtColor(cv::COLOR_BGRA2BGR)));
    }
    for (const int bits : {10, 12}) {
        const std::string depth = std::to_string(bits);
        works.Add("YCbCr422_" + depth, kBgr, CV_16UC2, Deep(bits, CvtColor(cv::COLOR_YUV2BGR_YUY2)));
        works.Add("YCbCr" + depth + "_CbYCr", kBgr, CV_16UC3, Deep(bits, CvtColor(cv::COLOR_YCrCb2BGR)));
    }
    works.Add("RGB12_Planar", kBgr, CV_16UC3, Deep(12, MergePlanes));
    works.Add("RGB565p", kBgr, CV_8UC2, CvtColor(cv::COLOR_BGR5652RGB));
    works.Add("BGR565p", kBgr, CV_8UC2, CvtColor(cv::COLOR_BGR5652BGR));
    works.Add("Mono32");
}

void AddPacked(WorkList& works)
{
    for (const char* packing : {"4p", "10p", "10Packed", "12p", "12Packed", "14p"}) {
        works.Add(std::string("Mono") + packing).hasEverySet = std::string(packing) == "10p";
        works.Add(std::string("BayerRG") + packing);
    }
    for (const char* name : {"Mono1p", "Mono2p", "RGB10p", "RGB12p", "RGBa10p", "RGB10p32", "RGB10V1Packed",
                             "YCbCr422_10p", "YCbCr10p_CbYCr"})
        works.Add(name);
}

const std::vector<Work>& Works()
{
    static const std::vector<Work> works = [] {
        WorkList list;
        AddBytes(list);
        AddDeep(list);
        AddPacked(list);
        return list.Take();
    }();
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

void CountOutput(benchmark::State& state, std::size_t bytesPerIteration)
{
    state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations()) *
                            static_cast<std::int64_t>(bytesPerIteration));
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
    CountOutput(state, destination.size());
}

void MeasureOpenCv(benchmark::State& state, const Work& work)
{
    auto sourceBytes = RandomPicture(PictureBytes(work.sourceCode));
    std::vector<std::uint8_t> destinationBytes(PictureBytes(work.targetCode));
    const auto typeOf = [](std::uint32_t code) { return CV_8UC(static_cast<int>(VxBitsPerPixel(code) / 8)); };
    const cv::Mat source(kHeightPx, kWidthPx, work.openCvType, sourceBytes.data());
    cv::Mat destination(kHeightPx, kWidthPx, typeOf(work.targetCode), destinationBytes.data());
    while (state.KeepRunning()) {
        work.openCv(source, destination);
        benchmark::ClobberMemory();
    }
    if (destination.data != destinationBytes.data())
        state.SkipWithError("OpenCV wrote into other memory than it was given");
    CountOutput(state, destinationBytes.size());
}

void MeasureCopy(benchmark::State& state, std::size_t size)
{
    const auto source = RandomPicture(size);
    std::vector<std::uint8_t> destination(size);
    while (state.KeepRunning()) {
        std::memcpy(destination.data(), source.data(), size);
        benchmark::ClobberMemory();
    }
    CountOutput(state, size);
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
        if (work.hasEverySet && pixel::IsAvailable(set) && set != best)
            Register(name + "/" + setName,
                     [&work, set = set](benchmark::State& state) { MeasureOurs(state, work, set); });
    if (work.openCvType >= 0)
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
        // Chosen: two equally fast ones differ by less from run to run; the time is for a machine where a
        // copy of the result takes 0.12 ms.
        if (work.openCvType >= 0)
            MedianTable::AddGoal(work.name,
                                 work.name == "BayerRG8_to_BGR8" ? "1.05 x OpenCV, 0.8 ms" : "1.05 x OpenCV");
    }
    benchmark::RunSpecifiedBenchmarks(&table);
    benchmark::Shutdown();
    return 0;
}
