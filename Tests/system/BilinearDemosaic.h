#pragma once

#include "VxSimulator/picture/Colour.h"

#include <cstddef>
#include <cstdint>
#include <span>

/// Colours of a Bayer picture, worked out anew for tests: slowly, from the definition.
class BilinearDemosaic {
public:
    enum class Filter { Red, Green, Blue };

    /// @param mosaic       one byte a pixel, top-down, without padding; at least 2 x 2 pixels
    /// @param firstRow     filters of the first two pixels of the first row
    /// @param secondRow    and of the second row
    BilinearDemosaic(std::span<const std::byte> mosaic, std::uint32_t widthPx, Filter firstRow[2],
                     Filter secondRow[2]);

    /// @return  each component as the mean of the nearest pixels that have it, rounded; at the edges of the
    ///          picture continued as its mirror image about the outermost pixel
    [[nodiscard]] simulator::Colour At(std::uint32_t xPx, std::uint32_t yPx) const;

private:
    [[nodiscard]] Filter FilterAt(std::uint32_t xPx, std::uint32_t yPx) const
    {
        return m_filters[yPx % 2][xPx % 2];
    }
    [[nodiscard]] std::uint8_t MeanOf(Filter wanted, std::uint32_t xPx, std::uint32_t yPx) const;

    std::span<const std::byte> m_mosaic;
    std::uint32_t m_widthPx;
    std::uint32_t m_heightPx;
    Filter m_filters[2][2];
};
