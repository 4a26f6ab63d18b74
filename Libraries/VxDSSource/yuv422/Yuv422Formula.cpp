#include "VxDSSource/yuv422/Yuv422Formula.h"

#include "VxDSSource/yuv422/Yuv422Kernels.h"

#include <algorithm>
#include <cstddef>

namespace vxds {

namespace {

constexpr std::size_t kBgrBytes = 3;
constexpr std::size_t kYuy2Bytes = 2;

struct Pixel {
    std::uint8_t blue;
    std::uint8_t green;
    std::uint8_t red;
};

float Luma(const Pixel& pixel)
{
    return static_cast<float>(0.299 * pixel.red + 0.587 * pixel.green + 0.114 * pixel.blue);
}

/// @param difference  colour minus luma, in single precision
std::uint8_t Chroma(float difference, double factor)
{
    return static_cast<std::uint8_t>(difference * factor + 128.0);
}

/// Pixels [begin, end), one by one: the formula as it is defined.
void ConvertPixels(const std::uint8_t* bgr, std::uint8_t* yuy2, std::size_t begin, std::size_t end)
{
    const std::uint8_t* in = bgr + begin * kBgrBytes;
    std::uint8_t* out = yuy2 + begin * kYuy2Bytes;
    for (std::size_t x = begin; x < end; ++x, in += kBgrBytes, out += kYuy2Bytes) {
        const Pixel pixel{in[0], in[1], in[2]};
        const float luma = Luma(pixel);
        const bool isEven = x % 2 == 0;
        out[0] = static_cast<std::uint8_t>(luma);
        out[1] = isEven ? Chroma(static_cast<float>(pixel.blue) - luma, 0.565)
                        : Chroma(static_cast<float>(pixel.red) - luma, 0.713);
    }
}

Yuv422Set BestSet()
{
    for (const auto set : {Yuv422Set::Avx512Vbmi, Yuv422Set::Avx2, Yuv422Set::Sse41})
        if (IsAvailable(set))
            return set;
    return Yuv422Set::Scalar;
}

Yuv422Kernel KernelOf(Yuv422Set set)
{
    switch (set) {
    case Yuv422Set::Scalar:
        break;
    case Yuv422Set::Sse41:
        return Yuv422WithSse41;
    case Yuv422Set::Avx2:
        return Yuv422WithAvx2;
    case Yuv422Set::Avx512Vbmi:
        return Yuv422WithAvx512;
    }
    return nullptr;
}

} // namespace

bool IsAvailable(Yuv422Set set)
{
    __builtin_cpu_init();
    switch (set) {
    case Yuv422Set::Scalar:
        return true;
    case Yuv422Set::Sse41:
        return __builtin_cpu_supports("sse4.1") != 0;
    case Yuv422Set::Avx2:
        return __builtin_cpu_supports("avx2") != 0;
    case Yuv422Set::Avx512Vbmi:
        return __builtin_cpu_supports("avx512bw") != 0 && __builtin_cpu_supports("avx512vbmi") != 0;
    }
    return false;
}

void BgrRowToYuy2(std::span<const std::uint8_t> bgr, std::span<std::uint8_t> yuy2)
{
    static const Yuv422Set best = BestSet(); // has no destructor
    BgrRowToYuy2(bgr, yuy2, best);
}

void BgrRowToYuy2(std::span<const std::uint8_t> bgr, std::span<std::uint8_t> yuy2, Yuv422Set set)
{
    const std::size_t widthPx = std::min(bgr.size() / kBgrBytes, yuy2.size() / kYuy2Bytes);
    const Yuv422Kernel kernel = KernelOf(set);
    const std::size_t done = kernel != nullptr ? kernel(bgr.data(), yuy2.data(), widthPx) : 0;
    ConvertPixels(bgr.data(), yuy2.data(), done, widthPx);
}

} // namespace vxds
