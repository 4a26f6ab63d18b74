#pragma once

#include <cstdint>

namespace vxds {

/// Width and height in pixels.
struct PictureSize {
    std::uint32_t widthPx = 0;
    std::uint32_t heightPx = 0;

    friend bool operator==(const PictureSize&, const PictureSize&) = default;
};

} // namespace vxds
