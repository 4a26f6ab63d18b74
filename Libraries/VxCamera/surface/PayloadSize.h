#pragma once

#include "VxCamera/genapi/map/NodeMap.h"
#include "VxCamera/receive/BlockGeometry.h"

#include <cstdint>
#include <optional>

/// @return  bytes of a picture with all that comes with it: what the camera's PayloadSize says; where that
///          cannot be read, what Width, Height and PixelFormat make of the picture alone; 0 when that is not
///          known either
[[nodiscard]] std::uint32_t PayloadSizeOf(genapi::NodeMap& map);

/// @return  the picture that the camera's chunk data begin with: Width, Height and PixelFormat; none while it
/// sends no chunks (ChunkModeActive), or when that is not known
[[nodiscard]] std::optional<receive::PictureShape> PictureInChunksOf(genapi::NodeMap& map);
