#include "VxCamera/pixel/UnpackRows.h"

#include <array>

namespace pixel {

namespace {

constexpr unsigned kByteBits = 8;
constexpr unsigned kByteMask = 0xFF;

/// A byte of a component of `bits` bits.
template <unsigned bits>
constexpr std::uint8_t ToByte(unsigned value)
{
    if constexpr (bits >= kByteBits)
        return static_cast<std::uint8_t>(value >>
                                         (bits - kByteBits)); // the component has no more than `bits` bits
    constexpr unsigned kLargest = (1u << bits) - 1;
    return static_cast<std::uint8_t>(value * kByteMask / kLargest); // at most 255
}

/// Little-endian 16-bit cells, the value in the low bits; bits above it are ignored.
template <unsigned bits>
void UnpackCells(std::span<const std::uint8_t> packed, std::span<std::uint8_t> components)
{
    constexpr unsigned kMask = (1u << bits) - 1;
    for (std::size_t i = 0; i < components.size(); ++i) {
        const unsigned cell = packed[2 * i] | static_cast<unsigned>(packed[2 * i + 1]) << kByteBits;
        components[i] = ToByte<bits>(cell & kMask);
    }
}

/// A stream of bits that starts with bit 0 of the first byte; a component's lowest bit comes first.
template <unsigned bits>
void UnpackStream(std::span<const std::uint8_t> packed, std::span<std::uint8_t> components)
{
    constexpr unsigned kMask = (1u << bits) - 1;
    std::size_t next = 0;
    unsigned held = 0;
    unsigned heldBits = 0;
    for (std::uint8_t& component : components) {
        while (heldBits < bits) {
            held |= static_cast<unsigned>(packed[next++]) << heldBits;
            heldBits += kByteBits;
        }
        component = ToByte<bits>(held & kMask);
        held >>= bits;
        heldBits -= bits;
    }
}

/// Two components in three bytes, the first in byte 0 and the second in byte 2 with their eight highest bits;
/// what remains of both is in byte 1 and not wanted here.
void UnpackGev(std::span<const std::uint8_t> packed, std::span<std::uint8_t> components)
{
    for (std::size_t i = 0; i < components.size(); ++i)
        components[i] = packed[i / 2 * 3 + i % 2 * 2];
}

struct Row {
    VxPixelPacking packing;
    unsigned bits;
    UnpackKernel kernel;
};

using Packing = VxPixelPacking;

constexpr std::array kRows{
    Row{Packing::Cells, 8, nullptr},
    Row{Packing::Cells, 10, UnpackCells<10>},
    Row{Packing::Cells, 12, UnpackCells<12>},
    Row{Packing::Cells, 14, UnpackCells<14>},
    Row{Packing::Cells, 16, UnpackCells<16>},
    Row{Packing::LsbPacked, 1, UnpackStream<1>},
    Row{Packing::LsbPacked, 2, UnpackStream<2>},
    Row{Packing::LsbPacked, 4, UnpackStream<4>},
    Row{Packing::LsbPacked, 10, UnpackStream<10>},
    Row{Packing::LsbPacked, 12, UnpackStream<12>},
    Row{Packing::LsbPacked, 14, UnpackStream<14>},
    Row{Packing::GevPacked, 10, UnpackGev},
    Row{Packing::GevPacked, 12, UnpackGev},
};

} // namespace

std::optional<Unpacking> UnpackingOf(VxPixelPacking packing, unsigned bitsPerComponent)
{
    for (const Row& row : kRows)
        if (row.packing == packing && row.bits == bitsPerComponent)
            return Unpacking{row.kernel};
    return std::nullopt;
}

} // namespace pixel
