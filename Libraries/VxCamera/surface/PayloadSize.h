#pragma once

#include "VxCamera/genapi/map/NodeMap.h"

#include <cstdint>

/// @return  bytes of a picture with all that comes with it: what the camera's PayloadSize says; where that
/// cannot
///          be read, what Width, Height and PixelFormat make of the picture alone; 0 when that is not known
///          either
[[nodiscard]] std::uint32_t PayloadSizeOf(genapi::NodeMap& map);
