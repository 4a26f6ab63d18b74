#include "VxCamera/pixel/ConversionPlan.h"

#include <array>

namespace pixel {

namespace {

/// A family and an order of components that can be converted, and its kernels.
struct Way {
    VxPixelFamily family;
    VxPixelOrder order;
    std::size_t componentsPerPixel;
    RowKind kind;
    InterleavedRow interleaved = InterleavedRow::Mono;
    PairRow pairs = PairRow::Yuyv;
    BayerPhase phase = {};
};

using Family = VxPixelFamily;
using Order = VxPixelOrder;

constexpr auto kNoPair = PairRow::Yuyv;
constexpr auto kNoPixel = InterleavedRow::Mono;
constexpr bool kRedRow = true;
constexpr bool kBlueRow = false;
constexpr bool kGreenFirst = true;
constexpr bool kGreenSecond = false;

constexpr std::array kWays{
    Way{Family::Mono, Order::Single, 1, RowKind::Interleaved, InterleavedRow::Mono},
    Way{Family::Rgb, Order::Rgb, 3, RowKind::Interleaved, InterleavedRow::Rgb},
    Way{Family::Rgb, Order::Bgr, 3, RowKind::Interleaved, InterleavedRow::Bgr},
    Way{Family::Rgb, Order::Rgba, 4, RowKind::Interleaved, InterleavedRow::Rgba},
    Way{Family::Rgb, Order::Bgra, 4, RowKind::Interleaved, InterleavedRow::Bgra},
    Way{Family::YCbCr, Order::Yuyv, 2, RowKind::Pairs, kNoPixel, PairRow::Yuyv},
    Way{Family::YCbCr, Order::Uyvy, 2, RowKind::Pairs, kNoPixel, PairRow::Uyvy},
    Way{Family::Bayer, Order::BayerGR, 1, RowKind::Bayer, kNoPixel, kNoPair, {kRedRow, kGreenFirst}},
    Way{Family::Bayer, Order::BayerRG, 1, RowKind::Bayer, kNoPixel, kNoPair, {kRedRow, kGreenSecond}},
    Way{Family::Bayer, Order::BayerGB, 1, RowKind::Bayer, kNoPixel, kNoPair, {kBlueRow, kGreenFirst}},
    Way{Family::Bayer, Order::BayerBG, 1, RowKind::Bayer, kNoPixel, kNoPair, {kBlueRow, kGreenSecond}},
};

const Way* FindWay(const VxPixelFormat& format)
{
    if (format.planes != VxPixelPlanes::One || format.number != VxPixelNumber::Unsigned)
        return nullptr;
    for (const Way& way : kWays)
        if (way.family == format.family && way.order == format.order)
            return &way;
    return nullptr;
}

std::optional<Target> TargetOf(std::uint32_t code)
{
    if (code == VxPfnc::kBgr8)
        return Target::Bgr;
    if (code == VxPfnc::kBgra8)
        return Target::Bgra;
    return std::nullopt;
}

} // namespace

std::optional<ConversionPlan> PlanConversion(std::uint32_t sourceCode, std::uint32_t targetCode)
{
    const VxPixelFormat* const format = VxFindPixelFormat(sourceCode);
    const std::optional<Target> target = TargetOf(targetCode);
    if (format == nullptr || !target)
        return std::nullopt;
    const Way* const way = FindWay(*format);
    const std::optional<Unpacking> unpacking = UnpackingOf(format->packing, format->bitsPerComponent);
    if (way == nullptr || !unpacking)
        return std::nullopt;
    const ColorCoefficients* const matrix =
        way->kind == RowKind::Pairs ? &CoefficientsOf(format->matrix) : nullptr;
    return ConversionPlan{
        unpacking->kernel,       way->kind, way->interleaved, way->pairs, matrix, way->phase,
        way->componentsPerPixel, *target};
}

} // namespace pixel
