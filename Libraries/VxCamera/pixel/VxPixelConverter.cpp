#include "VxCamera/pixel/VxPixelConverter.h"

#include "VxCamera/pixel/ConversionPlan.h"
#include "VxCamera/pixel/PictureRows.h"
#include "VxCamera/pixel/RowKernels.h"
#include "VxCamera/pixel/VxPixelFormat.h"

#include <algorithm>
#include <functional>
#include <new>
#include <optional>
#include <string>

using pixel::ConversionPlan;
using pixel::RowKind;
using pixel::SourceRows;
using pixel::TargetRows;

namespace {

constexpr std::size_t kColors = 3;

template <typename Byte>
std::string PictureText(const VxBasicPictureView<Byte>& picture)
{
    return std::to_string(picture.widthPx) + "x" + std::to_string(picture.heightPx) + " " +
           VxPixelFormatText(picture.code) +
           (picture.areRowsJoined
                ? " with rows that run together"
                : " with " + std::to_string(picture.rowPaddingBytes) + " bytes of row padding");
}

template <typename Byte>
std::optional<VxPictureLayout> LayoutOf(const VxBasicPictureView<Byte>& picture)
{
    if (!picture.areRowsJoined)
        return VxLayOutPicture(picture.code, picture.widthPx, picture.heightPx, picture.rowPaddingBytes);
    const auto bytes = VxJoinedPictureBytes(picture.code, picture.widthPx, picture.heightPx);
    if (!bytes)
        return std::nullopt;
    return VxPictureLayout{0, 0, *bytes, *bytes}; // no row has bytes of its own
}

/// Bytes that an unpacked row takes of the memory for such rows.
std::size_t HeldBytes(const ConversionPlan& plan, const VxPictureView& source)
{
    return plan.bytesPerPixel * source.widthPx + (source.areRowsJoined ? pixel::kMostBefore : 0);
}

VxResult NoConversion(std::uint32_t source, std::uint32_t destination)
{
    return {VxError::NotSupported, "There is no conversion from " + VxPixelFormatText(source) + " to " +
                                       VxPixelFormatText(destination) + "."};
}

VxResult NoConversion(const VxPictureView& source, const VxWritablePictureView& destination)
{
    return {VxError::NotSupported,
            "There is no conversion from " + PictureText(source) + " to " + PictureText(destination) + "."};
}

template <typename Byte>
VxResult NoLayout(const char* which, const VxBasicPictureView<Byte>& picture)
{
    return {VxError::InvalidParameter,
            std::string("The ") + which +
                " picture has no size, one that is too large, or rows that cannot run together: " +
                PictureText(picture) + "."};
}

VxResult TooSmallSource(const VxPictureView& source, const VxWritablePictureView& destination,
                        std::size_t needed)
{
    return {VxError::InvalidParameter, "The source picture, " + PictureText(source) + ", needs " +
                                           std::to_string(needed) + " bytes of memory and has " +
                                           std::to_string(source.bytes.size()) + "; it was to become " +
                                           PictureText(destination) + "."};
}

VxResult TooSmallDestination(const VxPictureView& source, const VxWritablePictureView& destination,
                             std::size_t needed)
{
    return {VxError::BufferTooSmall, "The destination picture, " + PictureText(destination) + ", needs " +
                                         std::to_string(needed) + " bytes of memory and has " +
                                         std::to_string(destination.bytes.size()) + "; the source is " +
                                         PictureText(source) + "."};
}

VxResult NoMemory(const VxPictureView& source, const VxWritablePictureView& destination)
try {
    return {VxError::OutOfMemory,
            "There is no memory to convert " + PictureText(source) + " to " + PictureText(destination) + "."};
} catch (const std::bad_alloc&) {
    return VxError::OutOfMemory; // nor for the text
}

bool Overlap(std::span<const std::uint8_t> a, std::span<const std::uint8_t> b)
{
    const std::less<const std::uint8_t*> isBefore; // total also for pointers into different memory
    return isBefore(a.data(), b.data() + b.size()) && isBefore(b.data(), a.data() + a.size());
}

/// The row that stands for row y + step in a picture that is continued by its mirror image.
std::size_t NeighbourRow(std::size_t y, int step, std::size_t rows)
{
    const std::size_t last = rows - 1;
    const auto inside = std::min<std::size_t>(1, last); // a picture of one row has no other to offer
    if (step < 0)
        return y > 0 ? y - 1 : inside;
    return y < last ? y + 1 : last - inside;
}

template <typename Kernels, typename Layout>
auto KernelFor(const Kernels& kernels, Layout layout, pixel::Target target)
{
    return kernels[static_cast<std::size_t>(layout)][static_cast<std::size_t>(target)];
}

} // namespace

VxPixelConverter::VxPixelConverter() : VxPixelConverter(pixel::BestInstructionSet()) {}

VxPixelConverter::VxPixelConverter(pixel::InstructionSet set) : m_kernels(pixel::KernelsOf(set)) {}

VxResult VxPixelConverter::CheckFormats(std::uint32_t sourceCode, std::uint32_t destinationCode)
{
    return pixel::PlanConversion(sourceCode, destinationCode) ? VxResult::Ok()
                                                              : NoConversion(sourceCode, destinationCode);
}

VxResult VxPixelConverter::Convert(const VxPictureView& source, const VxWritablePictureView& destination,
                                   VxRowOrder order)
{
    const auto plan = pixel::PlanConversion(source.code, destination.code);
    if (!plan)
        return NoConversion(source, destination);
    const auto sourceLayout = LayoutOf(source);
    if (!sourceLayout)
        return NoLayout("source", source);
    const auto targetLayout = LayoutOf(destination);
    if (!targetLayout)
        return NoLayout("destination", destination);
    if (source.bytes.size() < sourceLayout->usedBytes)
        return TooSmallSource(source, destination, sourceLayout->usedBytes);
    if (destination.bytes.size() < targetLayout->usedBytes)
        return TooSmallDestination(source, destination, targetLayout->usedBytes);
    if (Overlap(source.bytes.first(sourceLayout->usedBytes),
                destination.bytes.first(targetLayout->usedBytes)))
        return {VxError::InvalidParameter, "The source and the destination picture overlap in memory."};

    const std::size_t columns = std::min(source.widthPx, destination.widthPx);
    const std::size_t rows = std::min(source.heightPx, destination.heightPx);
    const std::size_t targetBytes =
        columns * pixel::kTargetBytesPerPixel[static_cast<std::size_t>(plan->target)];
    if (!PrepareMemory(*plan, source, targetBytes))
        return NoMemory(source, destination);
    const TargetRows to(destination, *targetLayout, {rows, targetBytes}, order == VxRowOrder::BottomUp);
    SourceRows from = RowsOf(*plan, source, *sourceLayout, 0);
    switch (plan->kind) {
    case RowKind::Bayer:
        ConvertBayer(*plan, from, source.heightPx, to);
        break;
    case RowKind::BiColor:
        ConvertBiColor(*plan, from, source.heightPx, to);
        break;
    case RowKind::Planes:
        ConvertPlanes(*plan, source, *sourceLayout, to);
        break;
    case RowKind::Semiplanar:
        ConvertSemiplanar(*plan, source, *sourceLayout, to);
        break;
    case RowKind::Interleaved:
    case RowKind::Pairs:
    case RowKind::Triples:
        ConvertRows(*plan, from, to);
        break;
    }
    return VxResult::Ok();
}

bool VxPixelConverter::PrepareMemory(const ConversionPlan& plan, const VxPictureView& source,
                                     std::size_t targetRowBytes)
try {
    const std::size_t planes = plan.kind == RowKind::Planes ? kColors : 1;
    const std::size_t unpackedBytes = plan.unpack ? planes * pixel::kRowsHeld * HeldBytes(plan, source) : 0;
    if (m_unpackedRows.size() < unpackedBytes)
        m_unpackedRows.resize(unpackedBytes);
    if (plan.kind == RowKind::Bayer && m_spareRow.size() < targetRowBytes)
        m_spareRow.resize(targetRowBytes);
    return true;
} catch (const std::bad_alloc&) {
    return false;
}

SourceRows VxPixelConverter::RowsOf(const ConversionPlan& plan, const VxPictureView& source,
                                    const VxPictureLayout& layout, std::size_t plane)
{
    const pixel::PlaneLayout rows{plane * source.heightPx * layout.strideBytes, layout.rowBytes,
                                  layout.strideBytes};
    if (!plan.unpack)
        return {source.bytes, rows, {nullptr, 0, {}}};
    const std::size_t bytesPerRow = plan.bytesPerPixel * source.widthPx;
    const std::size_t held = pixel::kRowsHeld * HeldBytes(plan, source);
    return {source.bytes,
            rows,
            {m_kernels.unpack[static_cast<std::size_t>(*plan.unpack)], bytesPerRow,
             std::span(m_unpackedRows).subspan(plane * held, held),
             source.areRowsJoined ? pixel::GroupOf(*plan.unpack).bytes : 0}};
}

void VxPixelConverter::ConvertRows(const ConversionPlan& plan, SourceRows& source,
                                   const TargetRows& target) const
{
    const auto interleaved = KernelFor(m_kernels.interleaved, plan.interleaved, plan.target);
    const auto pairs = KernelFor(m_kernels.pairs, plan.pairs, plan.target);
    const auto triples = KernelFor(m_kernels.triples, plan.triples, plan.target);
    for (std::size_t y = 0; y < target.Count(); ++y) {
        if (plan.kind == RowKind::Pairs)
            pairs(source.Row(y), target.Row(y), *plan.matrix);
        else if (plan.kind == RowKind::Triples)
            triples(source.Row(y), target.Row(y), *plan.matrix);
        else
            interleaved(source.Row(y), target.Row(y));
    }
}

void VxPixelConverter::ConvertPlanes(const ConversionPlan& plan, const VxPictureView& source,
                                     const VxPictureLayout& layout, const TargetRows& target)
{
    const pixel::PlanesKernel kernel = m_kernels.planes[static_cast<std::size_t>(plan.target)];
    SourceRows red = RowsOf(plan, source, layout, 0);
    SourceRows green = RowsOf(plan, source, layout, 1);
    SourceRows blue = RowsOf(plan, source, layout, 2);
    for (std::size_t y = 0; y < target.Count(); ++y)
        kernel({blue.Row(y), green.Row(y), red.Row(y)}, target.Row(y));
}

void VxPixelConverter::ConvertSemiplanar(const ConversionPlan& plan, const VxPictureView& source,
                                         const VxPictureLayout& layout, const TargetRows& target)
{
    const auto kernel = KernelFor(m_kernels.semiplanar, plan.chroma, plan.target);
    SourceRows luma = RowsOf(plan, source, layout, 0);
    const std::size_t chromaBytes = VxChromaRowBytes(layout.rowBytes);
    SourceRows chroma(
        source.bytes,
        {source.heightPx * layout.strideBytes, chromaBytes, chromaBytes + source.rowPaddingBytes},
        {nullptr, 0, {}});
    for (std::size_t y = 0; y < target.Count(); ++y)
        kernel({luma.Row(y), chroma.Row(y / plan.rowsPerChromaRow)}, target.Row(y), *plan.matrix);
}

void VxPixelConverter::ConvertBiColor(const ConversionPlan& plan, SourceRows& source, std::size_t sourceRows,
                                      const TargetRows& target) const
{
    const pixel::BiColorKernel kernel = m_kernels.biColor[static_cast<std::size_t>(plan.target)];
    for (std::size_t y = 0; y < target.Count(); ++y) {
        const bool isRed = (plan.biColor == pixel::BiColorPhase::Red) == (y % 2 == 0);
        kernel({source.Row(NeighbourRow(y, -1, sourceRows)), source.Row(y),
                source.Row(NeighbourRow(y, 1, sourceRows))},
               isRed ? pixel::BiColorPhase::Red : pixel::BiColorPhase::Blue, target.Row(y));
    }
}

void VxPixelConverter::ConvertBayer(const ConversionPlan& plan, SourceRows& source, std::size_t sourceRows,
                                    const TargetRows& target)
{
    const pixel::BayerKernel kernel = m_kernels.bayer[static_cast<std::size_t>(plan.target)];
    const std::size_t rows = target.Count();
    const auto convertPair = [&](std::size_t y, std::span<std::uint8_t> second) {
        const std::size_t next = NeighbourRow(y, 1, sourceRows);
        const pixel::BayerRows four{source.Row(NeighbourRow(y, -1, sourceRows)), source.Row(y),
                                    source.Row(next), source.Row(NeighbourRow(next, 1, sourceRows))};
        const bool isOdd = y % 2 != 0;
        kernel(four, {plan.phase.isFirstRowRed != isOdd, plan.phase.isFirstPixelGreen != isOdd},
               target.Row(y), second);
    };
    for (std::size_t y = 0; y + 1 < rows; y += 2)
        convertPair(y, target.Row(y + 1));
    if (rows % 2 != 0)
        convertPair(rows - 1, std::span(m_spareRow).first(target.Row(0).size()));
}
