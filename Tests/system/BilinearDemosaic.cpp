#include "system/BilinearDemosaic.h"

#include <cmath>

namespace {

/// @param step  -1, 0 or 1
/// @return  where a neighbour lies: beyond the edge the picture is its own mirror image about the outermost
/// pixel
std::uint32_t Mirrored(std::uint32_t place, int step, std::uint32_t count)
{
    const std::int64_t neighbour = std::int64_t{place} + step;
    const bool isBeyond = neighbour < 0 || neighbour >= std::int64_t{count};
    return static_cast<std::uint32_t>(isBeyond ? std::int64_t{place} - step : neighbour);
}

} // namespace

BilinearDemosaic::BilinearDemosaic(std::span<const std::byte> mosaic, std::uint32_t widthPx,
                                   Filter firstRow[2], Filter secondRow[2])
    : m_mosaic(mosaic),
      m_widthPx(widthPx),
      m_heightPx(static_cast<std::uint32_t>(mosaic.size() / widthPx)), // whole rows
      m_filters{{firstRow[0], firstRow[1]}, {secondRow[0], secondRow[1]}}
{
}

simulator::Colour BilinearDemosaic::At(std::uint32_t xPx, std::uint32_t yPx) const
{
    return {MeanOf(Filter::Red, xPx, yPx), MeanOf(Filter::Green, xPx, yPx), MeanOf(Filter::Blue, xPx, yPx)};
}

std::uint8_t BilinearDemosaic::MeanOf(Filter wanted, std::uint32_t xPx, std::uint32_t yPx) const
{
    if (FilterAt(xPx, yPx) == wanted)
        return static_cast<std::uint8_t>(m_mosaic[std::size_t{yPx} * m_widthPx + xPx]);
    // Nearest first: neighbours that share a side (distance 1), then those that share a corner (distance 2,
    // squared).
    for (const int distance : {1, 2}) {
        double sum = 0;
        int count = 0;
        for (int dy = -1; dy <= 1; ++dy) {
            for (int dx = -1; dx <= 1; ++dx) {
                const std::uint32_t x = Mirrored(xPx, dx, m_widthPx);
                const std::uint32_t y = Mirrored(yPx, dy, m_heightPx);
                if (dx * dx + dy * dy != distance || FilterAt(x, y) != wanted)
                    continue;
                sum += static_cast<double>(m_mosaic[std::size_t{y} * m_widthPx + x]);
                ++count;
            }
        }
        if (count > 0)
            return static_cast<std::uint8_t>(
                std::lround(sum / count)); // of two or four: halves are exact, and go up
    }
    return 0; // every 2 x 2 pixels have every colour
}
