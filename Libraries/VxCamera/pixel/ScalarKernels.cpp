#include "VxCamera/pixel/PixelArithmetic.h"
#include "VxCamera/pixel/RowKernels.h"

namespace pixel {

namespace {

template <InterleavedRow layout, Target target>
void Interleaved(std::span<const std::uint8_t> source, std::span<std::uint8_t> destination)
{
    ConvertInterleaved<layout, target>(source, destination, 0, destination.size() / kTargetBytes<target>);
}

template <PairRow layout, Target target>
void Pairs(std::span<const std::uint8_t> source, std::span<std::uint8_t> destination,
           const ColorCoefficients& coefficients)
{
    ConvertPairs<layout, target>(source, destination, 0, destination.size() / kTargetBytes<target>,
                                 coefficients);
}

template <Target target>
void Bayer(const BayerRows& rows, BayerPhase phase, std::span<std::uint8_t> first,
           std::span<std::uint8_t> second)
{
    DemosaicPixels<target>(rows, phase, 0, first.size() / kTargetBytes<target>, first, second);
}

} // namespace

const RowKernels& ScalarKernels()
{
    using enum InterleavedRow;
    constexpr Target kBgr = Target::Bgr;
    constexpr Target kBgra = Target::Bgra;
    static constexpr RowKernels kKernels{{{{Interleaved<Mono, kBgr>, Interleaved<Mono, kBgra>},
                                           {Interleaved<Rgb, kBgr>, Interleaved<Rgb, kBgra>},
                                           {CopyRow, Interleaved<Bgr, kBgra>},
                                           {Interleaved<Rgba, kBgr>, Interleaved<Rgba, kBgra>},
                                           {Interleaved<Bgra, kBgr>, CopyRow}}},
                                         {{{Pairs<PairRow::Yuyv, kBgr>, Pairs<PairRow::Yuyv, kBgra>},
                                           {Pairs<PairRow::Uyvy, kBgr>, Pairs<PairRow::Uyvy, kBgra>}}},
                                         {Bayer<kBgr>, Bayer<kBgra>}};
    return kKernels;
}

} // namespace pixel
