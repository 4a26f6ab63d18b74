#pragma once

#include "VxSimulator/picture/PictureView.h"

#include <cstddef>
#include <cstdint>
#include <optional>

namespace simulator {

/// The frame number as blocks of black and white pixels: 32 bits of number, then 16 bits of checksum, most
/// significant bit first, 12 in a row.
///
/// Blocks are so large that their middle keeps its value through demosaicing and subsampled colour.
class FrameNumberStrip {
public:
    // All chosen.
    static constexpr std::uint32_t kBlockPx = 8;
    static constexpr std::uint32_t kColumns = 12;
    static constexpr std::uint32_t kRows = 4;
    static constexpr std::uint32_t kWidthPx = kBlockPx * kColumns;
    static constexpr std::uint32_t kHeightPx = kBlockPx * kRows;

    explicit FrameNumberStrip(std::uint32_t frameNumber);

    /// @param xPx, yPx  inside the strip
    [[nodiscard]] bool IsWhite(std::uint32_t xPx, std::uint32_t yPx) const
    {
        const std::uint32_t index = yPx / kBlockPx * kColumns + xPx / kBlockPx;
        return ((m_bits >> (kRows * kColumns - 1 - index)) & 1u) != 0;
    }

    /// @return  the number, or none when the checksum is wrong
    [[nodiscard]] static std::optional<std::uint32_t> Decode(std::uint64_t bits);

private:
    std::uint64_t m_bits; // 48 of them
};

/// Reads the frame number from a received picture that shows the whole test picture.
/// @return  none when the picture is too small, upside down, mirrored, damaged there, or another picture
[[nodiscard]] std::optional<std::uint32_t> ReadFrameNumber(const PictureView& picture);

} // namespace simulator
