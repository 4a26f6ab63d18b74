#include "VxCamera/pixel/ConversionPlan.h"

#include <algorithm>
#include <array>

namespace pixel {

namespace {

using Family = VxPixelFamily;
using Order = VxPixelOrder;
using Packing = VxPixelPacking;
using Planes = VxPixelPlanes;

/// What a family, an order and a division over planes that can be converted mean for the kernels.
struct Way {
    Family family;
    Order order;
    Planes planes;
    std::size_t bytesPerPixel;
    RowKind kind;
    InterleavedRow interleaved = InterleavedRow::Mono;
    PairRow pairs = PairRow::Yuyv;
    TripleRow triples = TripleRow::Yuv;
    ChromaRow chroma = ChromaRow::Uv;
    BiColorPhase biColor = BiColorPhase::Red;
    BayerPhase phase = {};
    std::optional<UnpackKind> unpack = std::nullopt; ///< for bytes in an order that no kernel reads
};

constexpr BayerPhase kGreenRed{true, true};
constexpr BayerPhase kRedGreen{true, false};
constexpr BayerPhase kGreenBlue{false, true};
constexpr BayerPhase kBlueGreen{false, false};

// A plane of one colour and a picture with a coloured pixel now and then are shown as brightness.
constexpr std::array kWays{
    Way{Family::Mono, Order::Single, Planes::One, 1, RowKind::Interleaved},
    Way{Family::Plane, Order::Single, Planes::One, 1, RowKind::Interleaved},
    Way{Family::Sparse, Order::Single, Planes::One, 1, RowKind::Interleaved},
    Way{Family::Rgb, Order::Rgb, Planes::One, 3, RowKind::Interleaved, InterleavedRow::Rgb},
    Way{Family::Rgb, Order::Bgr, Planes::One, 3, RowKind::Interleaved, InterleavedRow::Bgr},
    Way{Family::Rgb, Order::Rgba, Planes::One, 4, RowKind::Interleaved, InterleavedRow::Rgba},
    Way{Family::Rgb, Order::Bgra, Planes::One, 4, RowKind::Interleaved, InterleavedRow::Bgra},
    Way{Family::Rgb, Order::Rgb, Planes::PerComponent, 1, RowKind::Planes},
    Way{Family::YCbCr, Order::Yuyv, Planes::One, 2, RowKind::Pairs},
    Way{.family = Family::YCbCr,
        .order = Order::Uyvy,
        .planes = Planes::One,
        .bytesPerPixel = 2,
        .kind = RowKind::Pairs,
        .pairs = PairRow::Uyvy},
    Way{.family = Family::YCbCr,
        .order = Order::Uyyvyy,
        .planes = Planes::One,
        .bytesPerPixel = 2,
        .kind = RowKind::Pairs,
        .unpack = UnpackKind::Uyyvyy},
    Way{.family = Family::YCbCr,
        .order = Order::Yyuyyv,
        .planes = Planes::One,
        .bytesPerPixel = 2,
        .kind = RowKind::Pairs,
        .unpack = UnpackKind::Yyuyyv},
    Way{Family::YCbCr, Order::Yuv, Planes::One, 3, RowKind::Triples},
    Way{.family = Family::YCbCr,
        .order = Order::Uyv,
        .planes = Planes::One,
        .bytesPerPixel = 3,
        .kind = RowKind::Triples,
        .triples = TripleRow::Uyv},
    Way{Family::YCbCr, Order::YThenUv, Planes::ChromaHalf, 1, RowKind::Semiplanar},
    Way{Family::YCbCr, Order::YThenUv, Planes::ChromaQuarter, 1, RowKind::Semiplanar},
    Way{.family = Family::YCbCr,
        .order = Order::YThenVu,
        .planes = Planes::ChromaHalf,
        .bytesPerPixel = 1,
        .kind = RowKind::Semiplanar,
        .chroma = ChromaRow::Vu},
    Way{.family = Family::YCbCr,
        .order = Order::YThenVu,
        .planes = Planes::ChromaQuarter,
        .bytesPerPixel = 1,
        .kind = RowKind::Semiplanar,
        .chroma = ChromaRow::Vu},
    Way{.family = Family::BiColor,
        .order = Order::Rgbg,
        .planes = Planes::One,
        .bytesPerPixel = 2,
        .kind = RowKind::BiColor,
        .biColor = BiColorPhase::Red},
    Way{.family = Family::BiColor,
        .order = Order::Bgrg,
        .planes = Planes::One,
        .bytesPerPixel = 2,
        .kind = RowKind::BiColor,
        .biColor = BiColorPhase::Blue},
    Way{.family = Family::Bayer,
        .order = Order::BayerGR,
        .planes = Planes::One,
        .bytesPerPixel = 1,
        .kind = RowKind::Bayer,
        .phase = kGreenRed},
    Way{.family = Family::Bayer,
        .order = Order::BayerRG,
        .planes = Planes::One,
        .bytesPerPixel = 1,
        .kind = RowKind::Bayer,
        .phase = kRedGreen},
    Way{.family = Family::Bayer,
        .order = Order::BayerGB,
        .planes = Planes::One,
        .bytesPerPixel = 1,
        .kind = RowKind::Bayer,
        .phase = kGreenBlue},
    Way{.family = Family::Bayer,
        .order = Order::BayerBG,
        .planes = Planes::One,
        .bytesPerPixel = 1,
        .kind = RowKind::Bayer,
        .phase = kBlueGreen},
};

/// Packings of whole pixels, which have kernels of their own.
struct PackedPixel {
    Packing packing;
    unsigned bits;
    Order order;
    InterleavedRow interleaved;
    std::optional<UnpackKind> unpack = std::nullopt;
};

constexpr std::array kPackedPixels{
    PackedPixel{Packing::LsbPacked32, 10, Order::Rgb, InterleavedRow::Rgbx, UnpackKind::Rgb10p32},
    PackedPixel{Packing::LsbPacked565, 5, Order::Rgb, InterleavedRow::Rgb565},
    PackedPixel{Packing::LsbPacked565, 5, Order::Bgr, InterleavedRow::Bgr565},
    PackedPixel{Packing::GevPackedV1, 10, Order::Rgb, InterleavedRow::Xbgr},
    PackedPixel{Packing::Cells, 32, Order::Single, InterleavedRow::Mono32},
};

const Way* FindWay(const VxPixelFormat& format)
{
    const auto* const way = std::ranges::find_if(kWays, [&](const Way& candidate) {
        return candidate.family == format.family && candidate.order == format.order &&
               candidate.planes == format.planes;
    });
    return way != kWays.end() ? way : nullptr;
}

std::optional<Target> TargetOf(std::uint32_t code)
{
    if (code == VxPfnc::kBgr8)
        return Target::Bgr;
    if (code == VxPfnc::kBgra8)
        return Target::Bgra;
    return std::nullopt;
}

/// Whether the bytes of a format are not known well enough to be shown.
bool IsDoubtful(const VxPixelFormat& format)
{
    // The old codes of R10 to B12 count 10 and 12 bits per pixel for components that may fill 16.
    return format.family == Family::Plane && format.packing == Packing::LsbPacked;
}

/// Says how the format's rows become bytes that the plan's kernel reads.
/// @return  whether there is a way
bool PlanUnpacking(const VxPixelFormat& format, ConversionPlan& plan)
{
    constexpr unsigned kByteBits = 8;
    const auto* const packed = std::ranges::find_if(kPackedPixels, [&](const PackedPixel& pixel) {
        return pixel.packing == format.packing && pixel.bits == format.bitsPerComponent &&
               pixel.order == format.order;
    });
    if (packed != kPackedPixels.end()) {
        plan.interleaved = packed->interleaved;
        plan.unpack = packed->unpack;
        plan.bytesPerPixel = kInterleavedBytesPerPixel[static_cast<std::size_t>(packed->interleaved)];
        return true;
    }
    if (format.packing == Packing::Cells && format.bitsPerComponent == kByteBits) {
        if (format.number == VxPixelNumber::Signed)
            plan.unpack = UnpackKind::Signed8;
        return true;
    }
    plan.unpack = UnpackKindOf(format.packing, format.bitsPerComponent);
    return plan.unpack.has_value();
}

} // namespace

std::optional<ConversionPlan> PlanConversion(std::uint32_t sourceCode, std::uint32_t targetCode)
{
    const VxPixelFormat* const format = VxFindPixelFormat(sourceCode);
    const std::optional<Target> target = TargetOf(targetCode);
    if (format == nullptr || !target || IsDoubtful(*format))
        return std::nullopt;
    const Way* const way = FindWay(*format);
    if (way == nullptr)
        return std::nullopt;
    const bool hasMatrix = format->matrix != VxColorMatrix::None;
    ConversionPlan plan{.unpack = way->unpack,
                        .bytesPerPixel = way->bytesPerPixel,
                        .kind = way->kind,
                        .interleaved = way->interleaved,
                        .pairs = way->pairs,
                        .triples = way->triples,
                        .chroma = way->chroma,
                        .rowsPerChromaRow = way->planes == Planes::ChromaQuarter ? std::size_t{2} : 1,
                        .biColor = way->biColor,
                        .phase = way->phase,
                        .matrix = hasMatrix ? &CoefficientsOf(format->matrix) : nullptr,
                        .target = *target};
    if (!PlanUnpacking(*format, plan))
        return std::nullopt;
    return plan;
}

} // namespace pixel
