#include "VxDSSource/stream/ZoomTable.h"

#include <algorithm>

namespace vxds {

namespace {

/// k tenths of a length, in double precision and truncated.
std::uint32_t Tenths(std::uint32_t lengthPx, std::size_t k)
{
    const auto tenths = static_cast<std::uint32_t>(lengthPx * static_cast<double>(k) * 0.1);
    return std::clamp(tenths, std::min(lengthPx, 1U), lengthPx); // a tenth of 5 pixels is still one pixel
}

} // namespace

ZoomTable::ZoomTable(PictureSize source)
{
    m_regions[0] = source;
    for (std::size_t step = 1; step < kSteps; ++step) {
        const std::size_t tenths = kSteps - step;
        m_regions[step] = {Tenths(source.widthPx, tenths), Tenths(source.heightPx, tenths)};
    }
}

PictureSize ZoomTable::RegionFor(std::int32_t zoomValue) const
{
    const auto step = std::clamp(zoomValue, 0, static_cast<std::int32_t>(kSteps) - 1);
    return m_regions[static_cast<std::size_t>(step)]; // not negative, clamped above
}

} // namespace vxds
