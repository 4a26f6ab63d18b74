#pragma once

#include "VxBase/VxExpected.h"

#include <strmif.h>

#include <cstddef>
#include <string>
#include <string_view>

namespace vxgrab {

/// What the frames of a connection look like.
struct FrameFormat {
    GUID subtype{};
    int widthPx = 0;
    int heightPx = 0;
    bool isBottomUp = false;       ///< the first row in memory is the lowest of the picture
    std::size_t bytesPerPixel = 0; ///< 0 for a subtype whose pixels this program cannot read
};

/// @return  the frame's shape, or an error for a media type that is no uncompressed video
[[nodiscard]] VxExpected<FrameFormat> ReadFrameFormat(const AM_MEDIA_TYPE& type);

/// Rows in memory may be padded to 4 bytes, or not at all: filters differ. The number of bytes tells.
///
/// @param frameBytes  bytes of the whole frame
/// @return  bytes from one row to the next; 0 when the frame is too short for the format
[[nodiscard]] std::size_t RowBytes(const FrameFormat& format, std::size_t frameBytes);

/// @return  "RGB24", "YUY2", ...; the four characters, or the number, of any other subtype
[[nodiscard]] std::string SubtypeName(const GUID& subtype);

/// @param name  "rgb24", "rgb32", "argb32" or "yuy2"
/// @return  the subtype, or an error that lists the names
[[nodiscard]] VxExpected<GUID> SubtypeFromName(std::string_view name);

} // namespace vxgrab
