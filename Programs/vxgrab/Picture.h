#pragma once

#include "vxgrab/FrameFormat.h"

#include "VxBase/VxResult.h"

#include <cstddef>
#include <filesystem>
#include <span>

namespace vxgrab {

/// Writes one frame as a PNG file, upright, 8 bits for each of red, green and blue.
///
/// RGB frames keep their pixel values. YUY2 frames are converted by the rule of ITU-R BT.601 for video range.
///
/// @param frame  bytes of the whole frame, in the format given
/// @return  NOT_SUPPORTED for a subtype that cannot be read, TRUNCATED for a frame shorter than its format,
///          FAILED when the file cannot be written; the description names the file and the reason
[[nodiscard]] VxResult WritePng(const FrameFormat& format, std::span<const std::byte> frame,
                                const std::filesystem::path& file);

} // namespace vxgrab
