#pragma once

#include <windows.h>

#include <cstdint>
#include <span>

namespace vxds {

/// A frame that is drawn into.
///
/// Owner:  the streaming thread, for one frame.
/// Thread: the streaming thread.
struct OverlayFrame {
    std::span<std::uint8_t>
        memory;                ///< the sample's own: nothing beyond it is touched, whatever the header says
    BITMAPINFOHEADER header{}; ///< of the current media type; all zero when it has none
};

} // namespace vxds
