#pragma once

#include "VxCamera/pixel/VxPixelFormat.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>

namespace pixel {

/// Turns a row of packed or deep components into one byte per component: the most significant bits of deep
/// ones, and shallow ones stretched to 0..255. Writes as many components as the destination has.
using UnpackKernel = void (*)(std::span<const std::uint8_t> packed, std::span<std::uint8_t> components);

/// In what way a row is packed. The number of the enumerator selects a kernel.
enum class UnpackKind : std::uint8_t {
    Signed8, ///< -128..127 becomes 0..255
    Cells10, ///< little-endian 16-bit cells, the value in the low bits; bits above it are ignored
    Cells12,
    Cells14,
    Cells16,
    Stream1, ///< a stream of bits from bit 0 of the first byte on; a component's lowest bit comes first
    Stream2,
    Stream4,
    Stream10,
    Stream12,
    Stream14,
    Gev,      ///< two components in three bytes, their high bits in bytes 0 and 2
    Rgb10p32, ///< three of 10 bits in a little-endian 32-bit word; becomes four components, the last of no
              ///< meaning
    Uyyvyy,   ///< 4:1:1 becomes 4:2:2, Y U Y V
    Yyuyyv,
};
constexpr std::size_t kUnpackKindCount = 15;

/// Where one component lies in its group: in a little-endian number of two bytes, from bit `shift` on.
struct PackedComponent {
    std::uint8_t byte;
    std::uint8_t shift;
};

// Chosen: eight components of any number of bits end with a byte.
constexpr std::size_t kUnpackGroup = 8;

/// Eight components as they lie in memory; a row is a sequence of such groups, of which the last one may be
/// cut short.
struct PackedGroup {
    std::size_t bytes;
    std::array<PackedComponent, kUnpackGroup> components;
    unsigned bits = 8;         ///< of each that are kept: 1, 2, 4 or 8
    std::uint8_t inverted = 0; ///< bits that are turned over in the result
};

namespace detail {

constexpr unsigned kByteBits = 8;

/// Components of `bits` bits that start every `stepBits` bits; of more than 8 bits the highest 8 count.
[[nodiscard]] constexpr PackedGroup Regular(unsigned stepBits, unsigned bits)
{
    const unsigned kept = bits < kByteBits ? bits : kByteBits;
    PackedGroup group{stepBits, {}, kept};
    for (unsigned i = 0; i < kUnpackGroup; ++i) {
        const unsigned first = i * stepBits + bits - kept;
        group.components[i] = {static_cast<std::uint8_t>(first / kByteBits),  // at most 16 bytes per group
                               static_cast<std::uint8_t>(first % kByteBits)}; // less than 8
    }
    return group;
}

} // namespace detail

/// @return  how the groups of that kind look
[[nodiscard]] constexpr PackedGroup GroupOf(UnpackKind kind)
{
    constexpr std::uint8_t kSign = 0x80;
    switch (kind) {
    case UnpackKind::Signed8: {
        PackedGroup group = detail::Regular(8, 8);
        group.inverted = kSign;
        return group;
    }
    case UnpackKind::Cells10:
        return detail::Regular(16, 10);
    case UnpackKind::Cells12:
        return detail::Regular(16, 12);
    case UnpackKind::Cells14:
        return detail::Regular(16, 14);
    case UnpackKind::Cells16:
        return detail::Regular(16, 16);
    case UnpackKind::Stream1:
        return detail::Regular(1, 1);
    case UnpackKind::Stream2:
        return detail::Regular(2, 2);
    case UnpackKind::Stream4:
        return detail::Regular(4, 4);
    case UnpackKind::Stream10:
        return detail::Regular(10, 10);
    case UnpackKind::Stream12:
        return detail::Regular(12, 12);
    case UnpackKind::Stream14:
        return detail::Regular(14, 14);
    case UnpackKind::Gev:
        return {12, {{{0, 0}, {2, 0}, {3, 0}, {5, 0}, {6, 0}, {8, 0}, {9, 0}, {11, 0}}}};
    case UnpackKind::Rgb10p32:
        return {8, {{{0, 2}, {1, 4}, {2, 6}, {3, 0}, {4, 2}, {5, 4}, {6, 6}, {7, 0}}}};
    case UnpackKind::Uyyvyy:
        return {6, {{{1, 0}, {0, 0}, {2, 0}, {3, 0}, {4, 0}, {0, 0}, {5, 0}, {3, 0}}}};
    case UnpackKind::Yyuyyv:
        break;
    }
    return {6, {{{0, 0}, {2, 0}, {1, 0}, {5, 0}, {3, 0}, {2, 0}, {4, 0}, {5, 0}}}};
}

/// @return  the kind for a packing, or empty for one that is not read component by component; bytes need no
///          unpacking and have none
[[nodiscard]] std::optional<UnpackKind> UnpackKindOf(VxPixelPacking packing, unsigned bitsPerComponent);

} // namespace pixel
