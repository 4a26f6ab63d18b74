#pragma once

#include "VxSimulator/picture/Colour.h"

#include <cstddef>
#include <cstdint>
#include <span>

namespace simulator {

enum class RowOrder {
    TopDown,  ///< the first row in memory is the uppermost
    BottomUp, ///< as in Windows bitmaps
};

/// A received picture, as somebody who looks at it sees it. Borrows the pixels.
struct PictureView {
    std::span<const std::byte> pixels;
    std::uint32_t widthPx = 0;
    std::uint32_t heightPx = 0;
    std::size_t strideBytes = 0;
    std::uint32_t bytesPerPixel = 3; ///< 1: grey; 3: blue, green, red; 4: and one more that does not count
    RowOrder rowOrder = RowOrder::TopDown;

    /// @return  whether memory, size and stride fit together
    [[nodiscard]] bool IsValid() const
    {
        const std::size_t rowBytes = std::size_t{widthPx} * bytesPerPixel;
        const bool isKnown = bytesPerPixel == 1 || bytesPerPixel == 3 || bytesPerPixel == 4;
        return isKnown && widthPx > 0 && heightPx > 0 && strideBytes >= rowBytes &&
               pixels.size() >= rowBytes && (pixels.size() - rowBytes) / strideBytes >= heightPx - 1;
    }

    /// @param xPx, yPx  inside the picture, counted from the upper left corner; the view is valid
    [[nodiscard]] Colour At(std::uint32_t xPx, std::uint32_t yPx) const
    {
        const std::size_t row = rowOrder == RowOrder::TopDown ? yPx : heightPx - 1 - yPx;
        const auto pixel =
            pixels.subspan(row * strideBytes + std::size_t{xPx} * bytesPerPixel, bytesPerPixel);
        if (bytesPerPixel == 1)
            return Grey(static_cast<std::uint8_t>(pixel[0]));
        return {static_cast<std::uint8_t>(pixel[2]), static_cast<std::uint8_t>(pixel[1]),
                static_cast<std::uint8_t>(pixel[0])};
    }
};

} // namespace simulator
