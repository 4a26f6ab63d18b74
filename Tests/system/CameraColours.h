#pragma once

#include "VxSimulator/picture/PictureFormat.h"

#include "support/picture/ReferencePictures.h"

#include <cstdint>

/// What the numbers of a 4:2:2 picture stand for.
enum class YuvRange {
    Full,    ///< brightness from 0 to 255
    Limited, ///< brightness from 16 to 235, colour from 16 to 240
};

/// @param frameNumber  as the camera counts: the first frame after it was switched on has 0
/// @return  the colours of a frame of the simulated camera, worked out anew for tests from the bytes that it
///          sends: slowly, from the definitions
[[nodiscard]] ReferencePicture ColoursOfCamera(std::uint64_t frameNumber, std::uint32_t widthPx,
                                               std::uint32_t heightPx, const simulator::PictureFormat& format,
                                               YuvRange range);
