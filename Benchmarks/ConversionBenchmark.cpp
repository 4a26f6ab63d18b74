#include "MedianTable.h"

#include "VxCamera/pixel/PixelFormatTable.h"
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
#include <span>
#include <string>
#include <utility>
#include <vector>

// Conversion of one full HD picture on one core, bottom up as for a Windows bitmap, beside a plain copy of as
// many bytes as are written and beside OpenCV's conversion of the same picture, which does not turn it over.

namespace {

constexpr std::uint32_t kWidthPx = 1920;
constexpr std::uint32_t kHeightPx = 1080;

// Chosen: 5 to 80 conversions per repetition, so that all of them take two minutes.
constexpr const char* kMinimumTime = "--benchmark_min_time=0.02"; // seconds

using OpenCvConversion = std::function<void(const cv::Mat& source, cv::Mat& destination)>;

/// OpenCV's way to do the same amount of work.
struct OpenCvWay {
    int type = -1; ///< of a pixel of the source; -1: there is no way
    OpenCvConversion convert;
};

struct Work {
    std::string name;
    std::string row; ///< of the table: works of one row differ in order, phase or matrix only
    std::uint32_t sourceCode;
    std::uint32_t targetCode;
    OpenCvWay openCv;
};

// Measured with every instruction set; the others with the best one only.
constexpr std::array kWithEverySet{"Mono8_to_BGR8",    "RGB8_to_BGR8",     "BGRa8_to_BGR8",
                                   "BayerRG8_to_BGR8", "YUV422_8_to_BGR8", "Mono12_to_BGR8",
                                   "Mono10p_to_BGR8",  "BGR8_to_BGRa8"};

OpenCvConversion CvtColor(int code, int channels = 0)
{
    return [code, channels](const cv::Mat& source, cv::Mat& destination) {
        cv::cvtColor(source, destination, code, channels);
    };
}

void FlipRows(const cv::Mat& source, cv::Mat& destination)
{
    constexpr int kAboutTheHorizontalAxis = 0;
    cv::flip(source, destination, kAboutTheHorizontalAxis);
}

/// To bytes first, which is the faster way round, and then as with bytes.
OpenCvConversion Deep(double scale, double offset, const OpenCvConversion& bytes)
{
    return [scale, offset, bytes, high = cv::Mat()](const cv::Mat& source, cv::Mat& destination) mutable {
        source.convertTo(bytes ? high : destination, CV_8U, scale, offset);
        if (bytes)
            bytes(high, destination);
    };
}

/// Of four bytes of a number the highest.
OpenCvConversion HighestByte(const OpenCvConversion& bytes)
{
    constexpr int kHighest = 3;
    return [bytes, high = cv::Mat()](const cv::Mat& source, cv::Mat& destination) mutable {
        cv::extractChannel(source, high, kHighest);
        bytes(high, destination);
    };
}

/// The source's memory as three planes of one component: red, green, blue.
OpenCvConversion MergePlanes(bool hasAlpha)
{
    const int rows = static_cast<int>(kHeightPx);
    const int columns = static_cast<int>(kWidthPx);
    const cv::Mat opaque(rows, columns, CV_8UC1, cv::Scalar(255));
    return [=](const cv::Mat& source, cv::Mat& destination) {
        const cv::Mat planes(3 * rows, columns, source.depth(), source.data);
        const std::array<cv::Mat, 4> colors{planes.rowRange(2 * rows, 3 * rows),
                                            planes.rowRange(rows, 2 * rows), planes.rowRange(0, rows),
                                            opaque};
        cv::merge(colors.data(), hasAlpha ? 4 : 3, destination);
    };
}

OpenCvConversion TwoPlanes(int code)
{
    return [code](const cv::Mat& source, cv::Mat& destination) {
        const int rows = static_cast<int>(kHeightPx);
        const int columns = static_cast<int>(kWidthPx);
        const cv::Mat luma(rows, columns, CV_8UC1, source.data);
        const cv::Mat chroma(rows / 2, columns / 2, CV_8UC2, source.data + luma.total());
        cv::cvtColorTwoPlane(luma, chroma, destination, code);
    };
}

/// A way from bytes to BGR8 and one to BGRa8.
struct Ways {
    VxPixelFamily family;
    VxPixelOrder order;
    int channels;
    OpenCvConversion toBgr;
    OpenCvConversion toBgra;
};

using Family = VxPixelFamily;
using Order = VxPixelOrder;

// OpenCV names Bayer patterns by the second row from its second column on: its BG is RG here. Where it knows
// one order of the components or one matrix only, the amount of work is the same.
const std::vector<Ways>& BytesWays()
{
    static const std::vector<Ways> ways{
        {Family::Rgb, Order::Rgb, 3, CvtColor(cv::COLOR_RGB2BGR), CvtColor(cv::COLOR_RGB2BGRA)},
        {Family::Rgb, Order::Bgr, 3, FlipRows, CvtColor(cv::COLOR_BGR2BGRA)},
        {Family::Rgb, Order::Rgba, 4, CvtColor(cv::COLOR_RGBA2BGR), CvtColor(cv::COLOR_RGBA2BGRA)},
        {Family::Rgb, Order::Bgra, 4, CvtColor(cv::COLOR_BGRA2BGR), FlipRows},
        {Family::YCbCr, Order::Yuyv, 2, CvtColor(cv::COLOR_YUV2BGR_YUY2), CvtColor(cv::COLOR_YUV2BGRA_YUY2)},
        {Family::YCbCr, Order::Uyvy, 2, CvtColor(cv::COLOR_YUV2BGR_UYVY), CvtColor(cv::COLOR_YUV2BGRA_UYVY)},
        {Family::YCbCr, Order::Yuv, 3, CvtColor(cv::COLOR_YCrCb2BGR, 3), CvtColor(cv::COLOR_YCrCb2BGR, 4)},
        {Family::YCbCr, Order::Uyv, 3, CvtColor(cv::COLOR_YCrCb2BGR, 3), CvtColor(cv::COLOR_YCrCb2BGR, 4)},
        {Family::Bayer, Order::BayerRG, 1, CvtColor(cv::COLOR_BayerBG2BGR), CvtColor(cv::COLOR_BayerBG2BGRA)},
        {Family::Bayer, Order::BayerGR, 1, CvtColor(cv::COLOR_BayerGB2BGR), CvtColor(cv::COLOR_BayerGB2BGRA)},
        {Family::Bayer, Order::BayerGB, 1, CvtColor(cv::COLOR_BayerGR2BGR), CvtColor(cv::COLOR_BayerGR2BGRA)},
        {Family::Bayer, Order::BayerBG, 1, CvtColor(cv::COLOR_BayerRG2BGR), CvtColor(cv::COLOR_BayerRG2BGRA)},
    };
    return ways;
}

/// @param isBytes  the components are bytes; a BGR picture of deeper ones is done when they are
OpenCvWay WayFromCells(const VxPixelFormat& format, bool toBgra, bool isBytes)
{
    if (format.planes == VxPixelPlanes::PerComponent)
        return {3, MergePlanes(toBgra)};
    if (format.planes == VxPixelPlanes::ChromaQuarter) {
        if (format.order == Order::YThenUv)
            return {1, TwoPlanes(toBgra ? cv::COLOR_YUV2BGRA_NV12 : cv::COLOR_YUV2BGR_NV12)};
        return {1, TwoPlanes(toBgra ? cv::COLOR_YUV2BGRA_NV21 : cv::COLOR_YUV2BGR_NV21)};
    }
    if (format.planes != VxPixelPlanes::One)
        return {};
    if (format.family == Family::Mono || format.family == Family::Plane || format.family == Family::Sparse)
        return {1, CvtColor(toBgra ? cv::COLOR_GRAY2BGRA : cv::COLOR_GRAY2BGR)};
    if (!isBytes && format.order == (toBgra ? Order::Bgra : Order::Bgr))
        return {toBgra ? 4 : 3, {}};
    for (const Ways& ways : BytesWays()) {
        if (ways.family == format.family && ways.order == format.order)
            return {ways.channels, toBgra ? ways.toBgra : ways.toBgr};
    }
    return {};
}

/// @return  none for what OpenCV does not know: the packed formats, and a few orders
OpenCvWay WayOf(const VxPixelFormat& format, bool toBgra)
{
    if (format.packing == VxPixelPacking::LsbPacked565) {
        if (format.order == Order::Bgr)
            return {CV_8UC2, CvtColor(toBgra ? cv::COLOR_BGR5652BGRA : cv::COLOR_BGR5652BGR)};
        return {CV_8UC2, CvtColor(toBgra ? cv::COLOR_BGR5652RGBA : cv::COLOR_BGR5652RGB)};
    }
    if (format.packing != VxPixelPacking::Cells)
        return {};
    const int bits = format.bitsPerComponent;
    OpenCvWay way = WayFromCells(format, toBgra, bits == 8);
    if (way.type < 0)
        return {};
    if (format.number == VxPixelNumber::Signed)
        return {CV_8SC(way.type), Deep(1, 128, way.convert)};
    if (bits == 32)
        return {CV_8UC4, HighestByte(way.convert)};
    if (bits > 8)
        return {CV_16UC(way.type), Deep(1.0 / (1 << (bits - 8)), 0, way.convert)};
    return {CV_8UC(way.type), way.convert};
}

/// Whether two formats are one under two names.
bool IsSame(const VxPixelFormat& a, const VxPixelFormat& b)
{
    return a.family == b.family && a.order == b.order && a.packing == b.packing &&
           a.bitsPerComponent == b.bitsPerComponent && a.planes == b.planes && a.matrix == b.matrix &&
           a.number == b.number;
}

/// The same for formats that differ in order, phase or matrix only.
std::string RowOf(const VxPixelFormat& format)
{
    const auto number = [](auto value) { return std::to_string(static_cast<int>(value)) + "."; };
    return number(format.family) + number(format.packing) + number(format.planes) + number(format.number) +
           number(VxBitsPerPixel(format.code)) + number(format.bitsPerComponent);
}

void AddWorks(std::vector<Work>& works, std::uint32_t target)
{
    const VxPixelFormat& to = *VxFindPixelFormat(target);
    std::vector<const VxPixelFormat*> known;
    for (const VxPixelFormat& format : pixel::FormatTable()) {
        const bool isKnown =
            std::ranges::any_of(known, [&](const VxPixelFormat* each) { return IsSame(*each, format); });
        if (isKnown || !VxPixelConverter::CheckFormats(format.code, target).IsOK())
            continue;
        known.push_back(&format);
        works.push_back({std::string(format.name) + "_to_" + std::string(to.name),
                         RowOf(format) + std::string(to.name), format.code, target,
                         WayOf(format, target == VxPfnc::kBgra8)});
    }
}

/// Every conversion that there is, each once.
const std::vector<Work>& Works()
{
    static const std::vector<Work> works = [] {
        std::vector<Work> list;
        AddWorks(list, VxPfnc::kBgr8);
        AddWorks(list, VxPfnc::kBgra8);
        return list;
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

/// The same bytes for every measurement: to make them takes longer than to convert them.
std::span<std::uint8_t> RandomPicture(std::size_t size)
{
    static std::vector<std::uint8_t> bytes = [] {
        std::mt19937 random(1);
        std::vector<std::uint8_t> made(kWidthPx * kHeightPx * 8); // four components of 16 bits
        std::ranges::generate(made, [&] { return static_cast<std::uint8_t>(random() & 0xFF); });
        return made;
    }();
    return std::span(bytes).first(size);
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
    const auto sourceBytes = RandomPicture(PictureBytes(work.sourceCode));
    std::vector<std::uint8_t> destinationBytes(PictureBytes(work.targetCode));
    const auto typeOf = [](std::uint32_t code) { return CV_8UC(static_cast<int>(VxBitsPerPixel(code) / 8)); };
    const cv::Mat source(kHeightPx, kWidthPx, work.openCv.type, sourceBytes.data());
    cv::Mat destination(kHeightPx, kWidthPx, typeOf(work.targetCode), destinationBytes.data());
    const OpenCvConversion& convert = work.openCv.convert;
    while (state.KeepRunning()) {
        convert(source, destination);
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
    const bool hasEverySet = std::ranges::find(kWithEverySet, name) != kWithEverySet.end();
    for (const auto& [setName, set] : kSets)
        if (hasEverySet && pixel::IsAvailable(set) && set != best)
            Register(name + "/" + setName,
                     [&work, set = set](benchmark::State& state) { MeasureOurs(state, work, set); });
    if (work.openCv.type >= 0)
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
        MedianTable::SetRow(work.name, work.row);
        // Chosen: two equally fast ones differ by less from run to run; the time is for a machine where a
        // copy of the result takes 0.12 ms.
        if (work.openCv.type >= 0)
            MedianTable::AddGoal(work.name,
                                 work.name == "BayerRG8_to_BGR8" ? "1.05 x OpenCV, 0.8 ms" : "1.05 x OpenCV");
    }
    benchmark::RunSpecifiedBenchmarks(&table);
    benchmark::Shutdown();
    return 0;
}
