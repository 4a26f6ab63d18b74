#pragma once

#include <windows.h>

#include <strmif.h>

#include <cstdint>

namespace vxds {

/// What frame production needs of a media type.
///
/// Owner:  anybody, by value.
/// Thread: immutable.
struct FrameFormat {
    /// @param type  any: what has no usable format block gives a format that is not usable
    [[nodiscard]] static FrameFormat Of(const AM_MEDIA_TYPE& type);

    bool isUsable = false;
    std::int32_t bitmapWidthPx = 0;
    std::int32_t bitmapHeightPx = 0; ///< positive: bottom-up
    std::uint16_t bitCount = 0;      ///< bits a pixel
    std::uint32_t imageBytes = 0;    ///< as the type says; the sample may be smaller
    BITMAPINFOHEADER bitmap{};       ///< all of the type's; zero when it is not usable
};

} // namespace vxds
