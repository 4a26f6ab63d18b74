#include "VxCamera/pixel/VxPixelFormat.h"

#include "VxCamera/pixel/PixelFormatTable.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <limits>

namespace {

constexpr std::uint64_t kBitsPerByte = 8;

/// Rows of one plane.
struct Plane {
    std::uint64_t rowBytes;
    std::uint64_t rows;
};

std::uint64_t BytesOfBits(std::uint64_t bits)
{
    return (bits + kBitsPerByte - 1) / kBitsPerByte;
}

VxPixelPlanes PlanesOf(std::uint32_t code)
{
    const VxPixelFormat* const format = VxFindPixelFormat(code);
    return format != nullptr ? format->planes : VxPixelPlanes::One;
}

std::uint64_t ComponentCount(VxPixelOrder order)
{
    return order == VxPixelOrder::Ac ? 2 : 3; // the only orders that exist as one plane per component
}

/// Whether each pixel takes the bits that the format's code tells, wherever it stands.
bool IsSequenceOfBits(const VxPixelFormat& format)
{
    using Order = VxPixelOrder;
    constexpr std::array kShared{Order::Yuyv, Order::Uyvy, Order::Uyyvyy, Order::Yyuyyv};
    const bool isPacked =
        format.packing == VxPixelPacking::LsbPacked || format.packing == VxPixelPacking::GevPacked;
    return isPacked && format.planes == VxPixelPlanes::One &&
           std::ranges::find(kShared, format.order) == kShared.end();
}

/// Appends `planes` times the plane to the layout; false when a size does not fit.
bool AppendPlanes(VxPictureLayout& layout, Plane plane, std::uint64_t planes, std::size_t rowPaddingBytes)
{
    const auto padding = static_cast<std::uint64_t>(rowPaddingBytes);
    constexpr std::uint64_t kLimit = std::numeric_limits<std::size_t>::max();
    std::uint64_t stride = 0;
    std::uint64_t rows = 0;
    std::uint64_t bytes = 0;
    std::uint64_t total = 0;
    if (__builtin_add_overflow(plane.rowBytes, padding, &stride) ||
        __builtin_mul_overflow(plane.rows, planes, &rows) || __builtin_mul_overflow(stride, rows, &bytes) ||
        __builtin_add_overflow(bytes, static_cast<std::uint64_t>(layout.totalBytes), &total) ||
        total > kLimit)
        return false;
    layout.totalBytes = static_cast<std::size_t>(total); // at most kLimit, tested above
    layout.usedBytes = layout.totalBytes - rowPaddingBytes;
    return true;
}

} // namespace

const VxPixelFormat* VxFindPixelFormat(std::uint32_t code)
{
    const auto table = pixel::FormatTable();
    const auto row = std::ranges::lower_bound(table, code, {}, &VxPixelFormat::code);
    return row != table.end() && row->code == code ? &*row : nullptr;
}

const VxPixelFormat* VxFindPixelFormat(std::string_view name)
{
    const auto table = pixel::FormatTable();
    // From the end: where a name was given a second code, the first one is deprecated.
    for (auto row = table.rbegin(); row != table.rend(); ++row)
        if (row->name == name)
            return &*row;
    return nullptr;
}

std::string VxPixelFormatText(std::uint32_t code)
{
    constexpr std::size_t kTextBytes = sizeof "0x12345678";
    char number[kTextBytes];
    std::snprintf(number, sizeof number, "0x%08X", code);
    const VxPixelFormat* const format = VxFindPixelFormat(code);
    return format != nullptr ? std::string(format->name) + " (" + number + ")"
                             : "pixel format " + std::string(number);
}

std::uint64_t VxRowBytes(std::uint32_t code, std::uint32_t widthPx)
{
    const std::uint64_t width = widthPx;
    const std::uint64_t bits = VxBitsPerPixel(code);
    const VxPixelFormat* const format = VxFindPixelFormat(code);
    if (format == nullptr || format->planes == VxPixelPlanes::One)
        return BytesOfBits(width * bits);
    if (format->planes == VxPixelPlanes::PerComponent)
        return BytesOfBits(width * (bits / ComponentCount(format->order)));
    return BytesOfBits(width * format->bitsPerComponent);
}

std::optional<std::size_t> VxJoinedPictureBytes(std::uint32_t code, std::uint32_t widthPx,
                                                std::uint32_t heightPx)
{
    const std::uint64_t bits = VxBitsPerPixel(code);
    const VxPixelFormat* const format = VxFindPixelFormat(code);
    const bool isReadable = bits % kBitsPerByte != 0 && format != nullptr && IsSequenceOfBits(*format);
    const std::uint64_t pixels = std::uint64_t{widthPx} * heightPx; // 32 bits each
    constexpr std::uint64_t kMostPixels = std::numeric_limits<std::size_t>::max() >> kBitsPerByte;
    if (!isReadable || pixels == 0 || pixels > kMostPixels)
        return std::nullopt;
    return static_cast<std::size_t>(BytesOfBits(pixels * bits)); // below 2^56 times 255
}

std::optional<VxPictureLayout> VxLayOutPicture(std::uint32_t code, std::uint32_t widthPx,
                                               std::uint32_t heightPx, std::size_t rowPaddingBytes)
{
    if (widthPx == 0 || heightPx == 0 || VxBitsPerPixel(code) == 0)
        return std::nullopt;
    const VxPixelPlanes planes = PlanesOf(code);
    const Plane first{VxRowBytes(code, widthPx), heightPx};
    const std::uint64_t equalPlanes =
        planes == VxPixelPlanes::PerComponent ? ComponentCount(VxFindPixelFormat(code)->order) : 1;
    VxPictureLayout layout{};
    if (!AppendPlanes(layout, first, equalPlanes, rowPaddingBytes))
        return std::nullopt;
    if (planes == VxPixelPlanes::ChromaHalf || planes == VxPixelPlanes::ChromaQuarter) {
        const std::uint64_t chromaRows =
            planes == VxPixelPlanes::ChromaHalf ? heightPx : (std::uint64_t{heightPx} + 1) / 2;
        const Plane chroma{VxChromaRowBytes(static_cast<std::size_t>(first.rowBytes)), chromaRows}; // fits
        if (!AppendPlanes(layout, chroma, 1, rowPaddingBytes))
            return std::nullopt;
    }
    layout.rowBytes = static_cast<std::size_t>(first.rowBytes); // less than totalBytes, which fits
    layout.strideBytes = layout.rowBytes + rowPaddingBytes;
    return layout;
}
