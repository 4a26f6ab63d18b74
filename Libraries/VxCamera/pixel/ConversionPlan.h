#pragma once

#include "VxCamera/pixel/RowKernels.h"
#include "VxCamera/pixel/UnpackRows.h"
#include "VxCamera/pixel/VxPixelFormat.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>

namespace pixel {

/// Which group of kernels the rows of bytes go through.
enum class RowKind : std::uint8_t { Interleaved, Pairs, Triples, Semiplanar, Planes, BiColor, Bayer };

/// The way from a source format to a target: unpack each row to bytes where necessary, then one kernel.
struct ConversionPlan {
    std::optional<UnpackKind> unpack; ///< empty: the rows are bytes
    std::size_t bytesPerPixel; ///< of a row of bytes, of the first plane; only for rows that are unpacked
    RowKind kind;
    InterleavedRow interleaved;      ///< Interleaved only
    PairRow pairs;                   ///< Pairs only
    TripleRow triples;               ///< Triples only
    ChromaRow chroma;                ///< Semiplanar only
    std::size_t rowsPerChromaRow;    ///< Semiplanar only: 1, or 2 where colours have half the height
    BiColorPhase biColor;            ///< BiColor only: of the picture's first row
    BayerPhase phase;                ///< Bayer only: of the picture's first row
    const ColorCoefficients* matrix; ///< where there are colour differences; has static storage
    Target target;
};

/// @return  empty when there is no way
[[nodiscard]] std::optional<ConversionPlan> PlanConversion(std::uint32_t sourceCode,
                                                           std::uint32_t targetCode);

} // namespace pixel
