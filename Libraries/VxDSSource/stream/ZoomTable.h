#pragma once

#include "VxDSSource/stream/PictureSize.h"

#include <array>
#include <cstdint>

namespace vxds {

/// Sizes of the region that each zoom step shows: the whole picture, then nine tenths, down to one tenth.
///
/// Owner:  VxDSStream, by value.
/// Thread: guarded by the acquisition mutex.
class ZoomTable {
public:
    static constexpr std::size_t kSteps = 10;

    ZoomTable() = default;
    explicit ZoomTable(PictureSize source);

    /// Size of the region for a zoom value.
    /// @param zoomValue  as stored: a value past the last step counts as the last one, a negative one as none
    /// @return  at least 1 x 1 unless the picture itself is empty
    [[nodiscard]] PictureSize RegionFor(std::int32_t zoomValue) const;

private:
    std::array<PictureSize, kSteps> m_regions{};
};

} // namespace vxds
