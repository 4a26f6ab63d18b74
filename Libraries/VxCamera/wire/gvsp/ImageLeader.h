#pragma once

#include "VxBase/VxByteWriter.h"
#include "VxBase/VxExpected.h"

#include "VxCamera/wire/gvsp/Leader.h"

#include <cstddef>
#include <cstdint>
#include <span>

namespace gvsp {

/// Leader of a block that carries an image (and of one with the old extended chunk data).
struct ImageLeader {
    LeaderStart start;
    std::uint32_t pixelFormat = 0; ///< PFNC code
    std::uint32_t widthPx = 0;
    std::uint32_t heightPx = 0; ///< the trailer may tell fewer lines
    std::uint32_t offsetXPx = 0;
    std::uint32_t offsetYPx = 0;
    std::uint16_t linePaddingBytes = 0;  ///< after each line
    std::uint16_t imagePaddingBytes = 0; ///< after the image

    bool operator==(const ImageLeader&) const = default;
};

// Fixed by the protocol.
constexpr std::size_t kImageLeaderBytes = 36;

/// Sizes are not judged. Does not allocate.
/// @param data  at least 36 bytes; more is allowed and ignored
/// @return  VxError::Truncated; VxError::InvalidData when the payload type has another kind of leader
[[nodiscard]] VxExpected<ImageLeader> ParseImageLeader(std::span<const std::byte> data);

void WriteImageLeader(VxByteWriter& out, const ImageLeader& leader);

} // namespace gvsp
