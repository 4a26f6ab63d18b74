#pragma once

#include "VxCamera/pixel/RowKernels.h"
#include "VxCamera/pixel/UnpackRows.h"
#include "VxCamera/pixel/VxPixelFormat.h"

#include <cstddef>
#include <cstdint>
#include <optional>

namespace pixel {

/// Which group of kernels a row of bytes goes through.
enum class RowKind : std::uint8_t { Interleaved, Pairs, Bayer };

/// The way from a source format to a target: unpack each row to bytes where necessary, then one kernel.
struct ConversionPlan {
    UnpackKernel unpack; ///< null: the rows are bytes
    RowKind kind;
    InterleavedRow interleaved;      ///< Interleaved only
    PairRow pairs;                   ///< Pairs only
    const ColorCoefficients* matrix; ///< Pairs only; has static storage
    BayerPhase phase;                ///< Bayer only: of the picture's first row
    std::size_t componentsPerPixel;  ///< bytes of a pixel in an unpacked row
    Target target;
};

/// @return  empty when there is no way
[[nodiscard]] std::optional<ConversionPlan> PlanConversion(std::uint32_t sourceCode,
                                                           std::uint32_t targetCode);

} // namespace pixel
