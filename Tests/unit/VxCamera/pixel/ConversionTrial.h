#pragma once

#include "VxCamera/pixel/RowKernels.h"
#include "VxCamera/pixel/VxPixelConverter.h"

#include <cstddef>
#include <cstdint>
#include <vector>

/// What one conversion is tried with.
struct ConversionCase {
    std::uint32_t code;
    std::uint32_t targetCode;
    std::uint32_t widthPx;
    std::uint32_t heightPx;
    std::uint32_t targetWidthPx;
    std::uint32_t targetHeightPx;
    std::size_t sourcePadding;
    std::size_t targetPadding;
    VxRowOrder order;
    bool areRowsJoined = false; ///< of the source; then without padding
};

/// One converter for every set that this processor has.
[[nodiscard]] std::vector<VxPixelConverter> ConvertersOfAllSets();

/// Converts random bytes and fails the running test where the result differs from the reference by more than
/// rounding, or anything else was written.
void TryConversion(VxPixelConverter& converter, const ConversionCase& tried);

/// Converts a small picture given by its bytes to BGR8.
[[nodiscard]] std::vector<std::uint8_t> ToBgr(std::uint32_t code, std::uint32_t widthPx,
                                              std::uint32_t heightPx, const std::vector<std::uint8_t>& bytes,
                                              VxRowOrder order = VxRowOrder::TopDown);
