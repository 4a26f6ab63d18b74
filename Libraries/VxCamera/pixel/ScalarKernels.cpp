#include "VxCamera/pixel/PixelArithmetic.h"
#include "VxCamera/pixel/RowKernels.h"

#include <utility>

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

template <InterleavedRow layout, Target target>
void Fields565(std::span<const std::uint8_t> source, std::span<std::uint8_t> destination)
{
    Convert565<layout, target>(source, destination, 0, destination.size() / kTargetBytes<target>);
}

template <TripleRow layout, Target target>
void Triples(std::span<const std::uint8_t> source, std::span<std::uint8_t> destination,
             const ColorCoefficients& coefficients)
{
    ConvertTriples<layout, target>(source, destination, 0, destination.size() / kTargetBytes<target>,
                                   coefficients);
}

template <ChromaRow layout, Target target>
void Semiplanar(const SemiplanarRows& rows, std::span<std::uint8_t> destination,
                const ColorCoefficients& coefficients)
{
    ConvertSemiplanar<layout, target>(rows, destination, 0, destination.size() / kTargetBytes<target>,
                                      coefficients);
}

template <Target target>
void Planes(const ColorRows& rows, std::span<std::uint8_t> destination)
{
    ConvertPlanes<target>(rows, destination, 0, destination.size() / kTargetBytes<target>);
}

template <Target target>
void BiColor(const BiColorRows& rows, BiColorPhase phase, std::span<std::uint8_t> destination)
{
    ConvertBiColor<target>(rows, phase, destination, 0, destination.size() / kTargetBytes<target>);
}

template <Target target>
void Bayer(const BayerRows& rows, BayerPhase phase, std::span<std::uint8_t> first,
           std::span<std::uint8_t> second)
{
    DemosaicPixels<target>(rows, phase, 0, first.size() / kTargetBytes<target>, first, second);
}

template <UnpackKind kind>
void Unpack(std::span<const std::uint8_t> packed, std::span<std::uint8_t> components)
{
    static constexpr PackedGroup kGroup = GroupOf(kind);
    UnpackComponents(kGroup, packed, components, 0);
}

template <std::size_t... kinds>
constexpr std::array<UnpackKernel, kUnpackKindCount> UnpackKernels(std::index_sequence<kinds...>)
{
    return {Unpack<static_cast<UnpackKind>(kinds)>...};
}

} // namespace

const RowKernels& ScalarKernels()
{
    using enum InterleavedRow;
    constexpr Target kBgr = Target::Bgr;
    constexpr Target kBgra = Target::Bgra;
    static constexpr RowKernels kKernels{
        UnpackKernels(std::make_index_sequence<kUnpackKindCount>()),
        {{{Interleaved<Mono, kBgr>, Interleaved<Mono, kBgra>},
          {Interleaved<Rgb, kBgr>, Interleaved<Rgb, kBgra>},
          {CopyRow, Interleaved<Bgr, kBgra>},
          {Interleaved<Rgba, kBgr>, Interleaved<Rgba, kBgra>},
          {Interleaved<Bgra, kBgr>, CopyRow},
          {Interleaved<Rgbx, kBgr>, Interleaved<Rgbx, kBgra>},
          {Interleaved<Xbgr, kBgr>, Interleaved<Xbgr, kBgra>},
          {Interleaved<Mono32, kBgr>, Interleaved<Mono32, kBgra>},
          {Fields565<Rgb565, kBgr>, Fields565<Rgb565, kBgra>},
          {Fields565<Bgr565, kBgr>, Fields565<Bgr565, kBgra>}}},
        {{{Pairs<PairRow::Yuyv, kBgr>, Pairs<PairRow::Yuyv, kBgra>},
          {Pairs<PairRow::Uyvy, kBgr>, Pairs<PairRow::Uyvy, kBgra>}}},
        {{{Triples<TripleRow::Yuv, kBgr>, Triples<TripleRow::Yuv, kBgra>},
          {Triples<TripleRow::Uyv, kBgr>, Triples<TripleRow::Uyv, kBgra>}}},
        {{{Semiplanar<ChromaRow::Uv, kBgr>, Semiplanar<ChromaRow::Uv, kBgra>},
          {Semiplanar<ChromaRow::Vu, kBgr>, Semiplanar<ChromaRow::Vu, kBgra>}}},
        {Planes<kBgr>, Planes<kBgra>},
        {BiColor<kBgr>, BiColor<kBgra>},
        {Bayer<kBgr>, Bayer<kBgra>}};
    return kKernels;
}

} // namespace pixel
