#pragma once

#include "VxCamera/pixel/PixelArithmetic.h"
#include "VxCamera/pixel/RowKernels.h"
#include "VxCamera/pixel/UnpackRows.h"

#include <algorithm>
#include <array>
#include <utility>

// Unpacking for every instruction set, written once over a vector type: see VectorKernels.h, which includes
// this.
#if !defined(VX_KERNEL)
#error "VX_KERNEL names the instruction set"
#endif
#define VX_KERNEL_PART VX_KERNEL __attribute__((always_inline)) inline

namespace pixel {

/// How packed components get into 16-bit numbers: the two bytes that each comes from, a factor that brings it
/// to the highest bits, and a shift back.
template <typename V, UnpackKind kind>
struct UnpackPlan {
    static constexpr PackedGroup kGroup = GroupOf(kind);
    static constexpr std::size_t kComponents = V::kLaneBytes / 2; // 16 bits each
    static constexpr std::size_t kStep = kComponents / kUnpackGroup * kGroup.bytes;
    static constexpr unsigned kWordBits = 16;
    static constexpr unsigned kShift = kWordBits - kGroup.bits;
    static constexpr std::uint8_t kStretch = 0xFF / ((1u << kGroup.bits) - 1); // exact for 1, 2, 4, 8 bits

    static constexpr std::array<std::uint8_t, V::kLaneBytes> MakeIndices()
    {
        std::array<std::uint8_t, V::kLaneBytes> indices{};
        for (std::size_t i = 0; i < kComponents; ++i) {
            const std::size_t first =
                i / kUnpackGroup * kGroup.bytes + kGroup.components[i % kUnpackGroup].byte;
            // A second byte behind the lane holds no bit that is kept.
            indices[2 * i] = static_cast<std::uint8_t>(first);
            indices[2 * i + 1] = static_cast<std::uint8_t>((first + 1) % V::kLaneBytes); // less than 64
        }
        return indices;
    }
    static constexpr std::array<std::uint8_t, V::kBytes> MakeFactors()
    {
        std::array<std::uint8_t, V::kBytes> factors{};
        for (std::size_t i = 0; i < V::kBytes / 2; ++i) {
            constexpr unsigned kByteBits = 8;
            const unsigned factor = 1u << (kShift - kGroup.components[i % kUnpackGroup].shift);
            factors[2 * i] = static_cast<std::uint8_t>(factor & 0xFF);
            factors[2 * i + 1] = static_cast<std::uint8_t>(factor >> kByteBits); // 0x80 at most
        }
        return factors;
    }
    static constexpr std::array<std::uint8_t, V::kLaneBytes> kIndices = MakeIndices();
    static constexpr std::array<std::uint8_t, V::kBytes> kFactors = MakeFactors();
};

template <typename V, UnpackKind kind>
VX_KERNEL_PART typename V::Bytes UnpackWords(const std::uint8_t* source, typename V::Bytes indices,
                                             typename V::Bytes factors)
{
    using Plan = UnpackPlan<V, kind>;
    const auto words = V::template ShiftWords<Plan::kShift>(
        V::MultiplyWords(V::template GatherLanes<Plan::kStep>(source, indices), factors));
    if constexpr (Plan::kStretch == 1)
        return words;
    else
        return V::MultiplyWords(words, V::SplatPair(Plan::kStretch, Plan::kStretch));
}

template <typename V, UnpackKind kind>
VX_KERNEL void UnpackRow(std::span<const std::uint8_t> packed, std::span<std::uint8_t> components)
{
    using Plan = UnpackPlan<V, kind>;
    const auto indices = V::LoadLaneIndices(Plan::kIndices.data());
    const auto factors = V::Load(Plan::kFactors.data());
    const auto inverted = V::Splat8(static_cast<char>(Plan::kGroup.inverted));
    constexpr std::size_t kStep = V::kLanes * Plan::kStep; // of a register of 16-bit numbers
    constexpr std::size_t kReach = kStep + (V::kLanes - 1) * Plan::kStep + V::kLaneBytes;
    const std::size_t blocks =
        std::min(components.size() / V::kBytes, BlocksIn(packed.size(), 2 * kStep, kReach));
    const std::uint8_t* from = packed.data();
    std::uint8_t* to = components.data();
    for (std::size_t i = 0; i < blocks; ++i, from += 2 * kStep, to += V::kBytes) {
        const auto bytes = V::PackWords(UnpackWords<V, kind>(from, indices, factors),
                                        UnpackWords<V, kind>(from + kStep, indices, factors));
        V::Store(to, Plan::kGroup.inverted == 0 ? bytes : V::Xor(bytes, inverted));
    }
    UnpackComponents(Plan::kGroup, packed, components, blocks * V::kBytes);
}

template <typename V, std::size_t... kinds>
[[nodiscard]] constexpr std::array<UnpackKernel, kUnpackKindCount>
MakeUnpackKernels(std::index_sequence<kinds...>)
{
    return {UnpackRow<V, static_cast<UnpackKind>(kinds)>...};
}

} // namespace pixel
